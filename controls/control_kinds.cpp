// The kind table and the value rules it is made of. Each rule is written once
// and shared by the kinds that behave alike; the table says which kind uses
// which.
//
// Sections: value rules · command-line texts · the table · shared texts.
#include "controls/control_kinds.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <limits>

#include "image/image.h"
#include "shell/document.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- value rules

// A stored number as a field shows it: taken as unsigned unless the range
// reaches below zero (so a stored -1 is huge, not small), then clamped.
int32_t ShownNumber(const PageControl& c, int32_t stored) {
  int64_t value = c.range.min < 0 ? int64_t{stored} : int64_t{static_cast<uint32_t>(stored)};
  return ClampSpin(c.range, value);
}
int32_t ShownSwitch(const PageControl&, int32_t stored) { return stored != 0 ? 1 : 0; }
int32_t ShownAsStored(const PageControl&, int32_t stored) { return stored; }
// A list without that index shows no selection, which it saves as -1.
int32_t ShownIndex(const PageControl& c, int32_t stored) {
  return stored >= 0 && static_cast<size_t>(stored) < c.items.size() ? stored : -1;
}

int32_t NumberOfText(const PageControl& c, std::string_view text) {
  return ClampSpin(c.range, ParseValueNumber(text));
}
int32_t SwitchOfText(const PageControl&, std::string_view text) {
  return ParseValueNumber(text) != 0 ? 1 : 0;
}
int32_t ColourOfText(const PageControl&, std::string_view text) {
  return static_cast<int32_t>(ColourTextValue(text));
}
int32_t IndexOfText(const PageControl& c, std::string_view text) {
  int64_t n = ParseValueNumber(text);
  return n >= 0 && static_cast<uint64_t>(n) < c.items.size() ? static_cast<int32_t>(n) : -1;
}
int32_t NoValueOfText(const PageControl&, std::string_view) { return 0; }

// A key the settings lack reads as the page's default for ranged kinds.
int32_t EffectNumber(const PageControl& c, std::optional<int32_t> stored) {
  return stored ? ShownNumber(c, *stored) : ClampSpin(c.range, c.range.def);
}
int32_t EffectSwitch(const PageControl&, std::optional<int32_t> stored) {
  return stored.value_or(0) != 0 ? 1 : 0;
}
// The top byte belongs to a fill description, not to the colour.
int32_t EffectColour(const PageControl&, std::optional<int32_t> stored) {
  return static_cast<int32_t>(static_cast<uint32_t>(stored.value_or(0)) & 0xFFFFFFu);
}
// Each effect decides what an out-of-range choice draws.
int32_t EffectAsStored(const PageControl&, std::optional<int32_t> stored) {
  return stored.value_or(0);
}

// A picker keeps any value it is given, and no cell shows one out of range.
int32_t ShownAsKept(const PageControl&, int32_t stored) { return stored; }
int32_t KeptOfText(const PageControl&, std::string_view text) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(ParseValueNumber(text))));
}

std::string SignedLineText(int32_t shown) { return NumberValueText(shown); }
std::string UnsignedLineText(int32_t shown) { return UnsignedValueText(static_cast<uint32_t>(shown)); }

// ---------------------------------------------------------------- command-line texts

std::string FormatNumber(const PageControl&, int32_t value) { return std::to_string(value); }
std::string FormatSwitch(const PageControl&, int32_t value) { return value ? "on" : "off"; }
std::string FormatColour(const PageControl&, int32_t value) {
  char text[8];
  Colour c = static_cast<Colour>(value);
  std::snprintf(text, sizeof text, "#%02X%02X%02X", ColourRed(c), ColourGreen(c), ColourBlue(c));
  return text;
}

std::optional<int32_t> ParseNumber(const PageControl& c, std::string_view text, int32_t,
                                   std::string* expected) {
  *expected = NumberRangeWords(c.range.min, c.range.max);
  return ParseNumberIn(text, c.range.min, c.range.max);
}

std::optional<int32_t> ParseSwitch(const PageControl&, std::string_view text, int32_t,
                                   std::string* expected) {
  *expected = "on or off (1/0, yes/no, true/false)";
  return ParseSwitchText(text);
}

// "#RRGGBB" keeps the stored top byte, which belongs to a fill description;
// a number replaces all 32 bits.
std::optional<int32_t> ParseColour(const PageControl&, std::string_view text, int32_t stored,
                                   std::string* expected) {
  *expected = "a colour, #RRGGBB or a number";
  if (text.size() == 7 && text[0] == '#') {
    uint32_t rgb = 0;
    auto [end, ec] = std::from_chars(text.data() + 1, text.data() + 7, rgb, 16);
    if (ec != std::errc() || end != text.data() + 7) return std::nullopt;
    Colour colour = MakeColour(rgb >> 16, rgb >> 8, rgb);
    return static_cast<int32_t>((static_cast<uint32_t>(stored) & 0xFF000000u) | colour);
  }
  auto value = ParseWholeNumber(text);
  if (!value || *value < std::numeric_limits<int32_t>::min()) return std::nullopt;
  return static_cast<int32_t>(static_cast<uint32_t>(*value));
}

// An item's name (any case) or its index.
std::optional<int32_t> ParseIndex(const PageControl& c, std::string_view text, int32_t,
                                  std::string* expected) {
  for (size_t i = 0; i < c.items.size(); ++i)
    if (SameTextIgnoringCase(c.items[i], text)) return static_cast<int32_t>(i);
  *expected = "one of";
  for (size_t i = 0; i < c.items.size(); ++i)
    *expected += (i ? ", " : " ") + std::to_string(i) + " (" + std::string(c.items[i]) + ")";
  return ParseNumberIn(text, 0, static_cast<int64_t>(c.items.size()) - 1);
}

// A direction by its name or its cell number.
std::string FormatDirection(const PageControl& c, int32_t value) {
  std::string_view name = PickerDirectionName(c.picker, value);
  return name.empty() ? std::to_string(value) : std::string(name);
}
std::optional<int32_t> ParseDirection(const PageControl& c, std::string_view text, int32_t,
                                      std::string* expected) {
  const PickerKind& kind = PickerKindOf(c.picker);
  *expected = "one of";
  for (int i = 0; i < kind.cell_count(); ++i)
    *expected += (i ? ", " : " ") + std::to_string(i) + " (" +
                 std::string(kind.cells[static_cast<size_t>(i)].name) + ")";
  return ParsePickerDirection(c.picker, text);
}

// Document tags.
template <const std::string_view& kTag>
std::string_view FixedTag(const PageControl&) { return kTag; }
std::string_view NoTag(const PageControl&) { return {}; }
std::string_view PickerTag(const PageControl& c) { return PickerKindOf(c.picker).tag; }

// Kinds stored in files of their own have no text form yet.
std::optional<int32_t> ParseNothing(const PageControl&, std::string_view, int32_t,
                                    std::string* expected) {
  *expected = "nothing: this control is not set by key";
  return std::nullopt;
}

// ---------------------------------------------------------------- the table

using R = PageWindowRole;
using S = ControlStorage;

constexpr std::array<ControlKindRules, kControlKindCount> kRules = {{
    // kSpin
    {"number", FixedTag<kTagSpin>, R::kEdit, true, true, S::kNumber, ShownNumber, NumberOfText,
     EffectNumber, SignedLineText, FormatNumber, ParseNumber},
    // kSignedSpin: a number field whose key may hold text.
    {"number", FixedTag<kTagSignedSpin>, R::kEdit, true, true, S::kNumberOrText, ShownNumber,
     NumberOfText, EffectNumber, SignedLineText, FormatNumber, ParseNumber},
    // kCheck: its text is its label.
    {"switch", FixedTag<kTagCheckBox>, R::kCheckBox, false, false, S::kNumber, ShownSwitch,
     SwitchOfText, EffectSwitch, SignedLineText, FormatSwitch, ParseSwitch},
    // kColourButton
    {"colour", FixedTag<kTagColourButton>, R::kColourButton, true, false, S::kNumber,
     ShownAsStored, ColourOfText, EffectColour, UnsignedLineText, FormatColour, ParseColour},
    // kFillButton: the record is the value; the setting mirrors its kind and
    // colour. Documents saved before fills had records carry a plain colour.
    {"fill", FixedTag<kTagFillButton>, R::kFillButton, true, false, S::kNumber, ShownAsStored,
     ColourOfText, EffectColour, UnsignedLineText, FormatColour, ParseColour, true,
     kTagColourButton},
    // kFountain: the record in its own pattern file is the whole value.
    {"fountain", FixedTag<kTagFountain>, R::kFountain, true, false, S::kNone, ShownAsStored,
     NoValueOfText, EffectAsStored, SignedLineText, FormatNumber, ParseNothing, false, {}, true},
    // kPicker: a cell index of its picker class, any value kept as given;
    // the line carries it unsigned.
    {"direction", PickerTag, R::kPicker, true, false, S::kNumber, ShownAsKept, KeptOfText,
     EffectAsStored, UnsignedLineText, FormatDirection, ParseDirection},
    // kMatrix: keeps its own pattern file.
    {"matrix", NoTag, R::kPlaceholder, true, false, S::kNone, ShownAsStored, NoValueOfText,
     EffectAsStored, SignedLineText, FormatNumber, ParseNothing},
    // kDropDown
    {"choice", FixedTag<kTagComboBox>, R::kComboBox, true, false, S::kNumber, ShownIndex,
     IndexOfText, EffectAsStored, SignedLineText, FormatNumber, ParseIndex},
    // kLabel
    {"label", NoTag, R::kText, false, false, S::kNone, ShownAsStored, NoValueOfText,
     EffectAsStored, SignedLineText, FormatNumber, ParseNothing},
}};

}  // namespace

const ControlKindRules& KindRules(ControlKind kind) {
  size_t index = static_cast<size_t>(kind);
  return index < kRules.size() ? kRules[index] : kRules[static_cast<size_t>(ControlKind::kLabel)];
}

std::string RangeText(const PageControl& c) {
  if (KindRules(c).has_range) return std::to_string(c.range.min) + ".." + std::to_string(c.range.max);
  if (!c.items.empty()) return "0.." + std::to_string(c.items.size() - 1);
  if (c.kind == ControlKind::kPicker)
    return "0.." + std::to_string(PickerKindOf(c.picker).cell_count() - 1);
  return "-";
}

int32_t FillSettingValue(uint32_t fill_kind, Colour colour) {
  return static_cast<int32_t>(((fill_kind & 0xFFu) << 24) | (colour & 0xFFFFFFu));
}

std::string SpinText(const SpinRange& range) {
  return std::to_string(range.min) + "," + std::to_string(range.max) + "," +
         std::to_string(range.def);
}

// ---------------------------------------------------------------- shared texts

namespace {

// One signed decimal, sscanf-style: leading blanks, a sign, digits. Advances
// `text`; false when there is no number.
bool ScanInt(std::string_view& text, int32_t& out) {
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  size_t start = i;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  size_t digits = i;
  while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i;
  if (i == digits) return false;
  int64_t value = 0;
  std::string_view number = text.substr(start, i - start);
  if (number[0] == '+') number.remove_prefix(1);
  std::from_chars(number.data(), number.data() + number.size(), value);
  out = static_cast<int32_t>(value);
  text.remove_prefix(i);
  return true;
}

bool ScanComma(std::string_view& text) {
  if (text.empty() || text[0] != ',') return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

SpinRange ParseSpinText(std::string_view text) {
  SpinRange r;
  int32_t v = 0;
  if (!ScanInt(text, v)) return r;
  r.min = v;
  if (!ScanComma(text) || !ScanInt(text, v)) return r;
  r.max = v;
  if (!ScanComma(text) || !ScanInt(text, v)) return r;
  r.def = v;
  return r;
}

uint32_t ColourTextValue(std::string_view text) {
  constexpr int64_t kMax = std::numeric_limits<uint32_t>::max();
  int64_t n = ParseValueNumber(text);
  return n > kMax || n < -kMax ? static_cast<uint32_t>(kMax) : static_cast<uint32_t>(n);
}

bool SameTextIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

std::optional<int32_t> ParseSwitchText(std::string_view text) {
  for (std::string_view on : {"1", "on", "yes", "true"})
    if (SameTextIgnoringCase(text, on)) return 1;
  for (std::string_view off : {"0", "off", "no", "false"})
    if (SameTextIgnoringCase(text, off)) return 0;
  return std::nullopt;
}

std::optional<int64_t> ParseWholeNumber(std::string_view text) {
  bool negative = false;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
    negative = text[0] == '-';
    text.remove_prefix(1);
  }
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  if (text.empty()) return std::nullopt;
  uint64_t value = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (ec != std::errc() || end != text.data() + text.size() || value > 0xFFFFFFFFull)
    return std::nullopt;
  return negative ? -static_cast<int64_t>(value) : static_cast<int64_t>(value);
}

std::optional<int32_t> ParseNumberIn(std::string_view text, int64_t min, int64_t max) {
  auto value = ParseWholeNumber(text);
  if (!value || *value < min || *value > max) return std::nullopt;
  return static_cast<int32_t>(*value);
}

std::string NumberRangeWords(int64_t min, int64_t max) {
  return "a whole number from " + std::to_string(min) + " to " + std::to_string(max);
}

}  // namespace tess
