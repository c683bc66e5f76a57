// The one home of every page-control kind's rules. For each kind, one table
// entry says which window the dialog makes, which tag its document line
// carries, how a stored setting becomes the value the control shows, how a
// value text (a field's text, a document line's value) becomes a value, and
// how the command line prints and parses it. The dialog model, the settings
// reader, the settings document, the Windows controls and the command line
// ask here instead of deciding by kind themselves.
//
// Adding a kind (fill records, fountains, pickers, matrices) is one entry in
// the table plus that kind's own record code.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "controls/page_control.h"
#include "image/image.h"

namespace tess {

// The windows a page control becomes in the dialog: a label first when the
// kind has one, then the control, then an up-down after a number field.
enum class PageWindowRole : uint8_t {
  kLabel,         // static text left of its control
  kEdit,          // the number field of a spin
  kUpDown,        // its up-down, window text = the spin text
  kCheckBox,      // text is its own label
  kColourButton,  // plain colour
  kFillButton,    // a fill: swatch and kind menu
  kPicker,        // a direction picker of the control's picker class
  kFountain,      // a fountain button: the gradient, opening the fountain dialog
  kComboBox,      // index drop-down
  kPlaceholder,   // matrix buttons: shown, not yet editable
  kText,          // a page's plain label
};

// How a kind keeps its value in the settings.
enum class ControlStorage : uint8_t {
  kNone,          // stored in the control's own files, or nowhere
  kNumber,        // the 32-bit setting its key names
  kNumberOrText,  // a number, or its decimal text when the key holds text
};

struct ControlKindRules {
  const char* listing_name;  // the command line's KIND column
  // The document line tag; empty: takes no part.
  std::string_view (*tag)(const PageControl&);
  PageWindowRole window;     // the control's own window
  bool separate_label;       // a static label stands left of the control
  bool has_range;            // values are clamped to PageControl::range
  ControlStorage storage;

  // The value the control shows (and a document saves) for a stored setting.
  int32_t (*shown)(const PageControl&, int32_t stored);
  // What a value text means: a field's text as it reads, or the value of a
  // document line as the control takes it.
  int32_t (*of_text)(const PageControl&, std::string_view text);
  // What an effect reads for a stored setting through the matching
  // ParamReader call; `stored` is empty when the settings lack the key.
  int32_t (*effect_value)(const PageControl&, std::optional<int32_t> stored);
  // A document line's value text for a value the control shows.
  std::string (*line_text)(int32_t shown);
  // The command line's text for a value, exactly as ParseControlText takes it.
  std::string (*format)(const PageControl&, int32_t value);
  // The command line's value for a text, checked as the control would; on
  // failure `expected` says what would have been accepted.
  std::optional<int32_t> (*parse)(const PageControl&, std::string_view text, int32_t stored,
                                  std::string* expected);
  // Kinds whose value is a fill record (fills/fill_descriptor.h) beside the
  // setting that mirrors its colour: their line, text and swatch come from
  // the record's own code; the number rules above serve that setting.
  bool holds_fill = false;
  // A tag whose lines the kind also takes: the fill buttons' older colour
  // lines, whose colour becomes a Simple fill.
  std::string_view legacy_tag = {};
  // Kinds whose value is a fountain record (fills/fountain.h) kept in the
  // control's own pattern file, with no setting at all.
  bool holds_fountain = false;
};

const ControlKindRules& KindRules(ControlKind kind);
inline const ControlKindRules& KindRules(const PageControl& c) { return KindRules(c.kind); }

// ---------------------------------------------------------------- convenience over the table

inline int32_t ShownValue(const PageControl& c, int32_t stored) {
  return KindRules(c).shown(c, stored);
}
inline int32_t ValueOfText(const PageControl& c, std::string_view text) {
  return KindRules(c).of_text(c, text);
}
inline std::string LineText(const PageControl& c, int32_t shown) {
  return KindRules(c).line_text(shown);
}
inline std::string_view DocumentTag(const PageControl& c) { return KindRules(c).tag(c); }
inline bool TakesPartInDocuments(const PageControl& c) { return !DocumentTag(c).empty(); }

// A fill setting: the fill's kind in the top byte, its Simple colour in the
// low 24 bits, so the configuration file alone tells what a slot paints.
int32_t FillSettingValue(uint32_t fill_kind, Colour colour);

// The command line's range column: "min..max" for ranged kinds, "0..N-1"
// for drop-downs, "-" otherwise.
std::string RangeText(const PageControl& c);

// ---------------------------------------------------------------- value texts the kinds share

// An up-down's window text as a dialog template gives it, "%d,%d,%d" into
// min, max and default; min 0 and max 100 stand when the text does not parse.
// Declarations carry typed ranges: this is only for ranges that arrive as
// text from outside.
SpinRange ParseSpinText(std::string_view text);

// The colour a colour button's window text stands for, read as an unsigned
// conversion reads it: negative numbers wrap, numbers too large for 32 bits
// give the largest value.
uint32_t ColourTextValue(std::string_view text);

// The command line's switch words: 1/on/yes/true and 0/off/no/false, any case.
std::optional<int32_t> ParseSwitchText(std::string_view text);

// Decimal, or hexadecimal after "0x"; an optional sign; nothing may follow;
// at most 32 bits of magnitude.
std::optional<int64_t> ParseWholeNumber(std::string_view text);

// A whole number within min..max, and the words that say so.
std::optional<int32_t> ParseNumberIn(std::string_view text, int64_t min, int64_t max);
std::string NumberRangeWords(int64_t min, int64_t max);

bool SameTextIgnoringCase(std::string_view a, std::string_view b);

}  // namespace tess
