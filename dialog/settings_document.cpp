// Settings-backed document controls. Each control kind reads and writes its
// setting the way the dialog's control of that kind would: spins clamp to
// their range text, check boxes store 0 or 1, lists store -1 for an index they
// do not have, colour buttons keep all 32 bits.
#include "dialog/settings_document.h"

#include <algorithm>
#include <limits>
#include <new>

#include "shell/strings.h"
#include "styles/style_table.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- controls

// Common parts: the tag, the number and the setting's storage.
class BoundControl : public DocumentControl {
 public:
  BoundControl(std::string_view tag, int number, int32_t* slot)
      : m_tag(tag), m_number(number), m_slot(slot) {}
  std::string_view Tag() const override { return m_tag; }
  int Number() const override { return m_number; }

 protected:
  std::string_view m_tag;
  int m_number;
  int32_t* m_slot;
};

// The value an edit with this range shows for a stored number: taken as
// unsigned unless the range reaches below zero, then clamped.
int32_t ClampStored(const SpinRange& range, int32_t stored) {
  int64_t value = range.min < 0 ? int64_t{stored} : int64_t{static_cast<uint32_t>(stored)};
  return ClampSpin(range, value);
}

// "SPNBTN": a number field whose setting takes the clamped value.
class SpinControl final : public BoundControl {
 public:
  SpinControl(int number, int32_t* slot, std::string_view spin)
      : BoundControl(kTagSpin, number, slot), m_range(ParseSpinText(spin)) {}
  std::string ValueText() const override { return NumberValueText(ClampStored(m_range, *m_slot)); }
  bool TakeValue(std::string_view value) override {
    *m_slot = ClampSpin(m_range, ParseValueNumber(value));
    return true;
  }

 private:
  SpinRange m_range;
};

// "SPNSGN": as the spin, but a text setting takes the clamped value as
// decimal text; a number setting takes the number.
class SignedSpinControl final : public BoundControl {
 public:
  SignedSpinControl(int number, Settings& settings, int index, std::string_view spin)
      : BoundControl(kTagSignedSpin, number, settings.NumberSlot(index)),
        m_settings(&settings),
        m_index(index),
        m_range(ParseSpinText(spin)) {}
  std::string ValueText() const override {
    if (m_slot) return NumberValueText(ClampStored(m_range, *m_slot));
    return NumberValueText(ClampSpin(m_range, ParseValueNumber(m_settings->TextAt(m_index))));
  }
  bool TakeValue(std::string_view value) override {
    int32_t n = ClampSpin(m_range, ParseValueNumber(value));
    if (m_slot)
      *m_slot = n;
    else
      m_settings->SetTextAt(m_index, NumberValueText(n));
    return true;
  }

 private:
  Settings* m_settings;
  int m_index;
  SpinRange m_range;
};

// "CHKBOX": any non-zero number checks the box.
class CheckControl final : public BoundControl {
 public:
  CheckControl(int number, int32_t* slot) : BoundControl(kTagCheckBox, number, slot) {}
  std::string ValueText() const override { return NumberValueText(*m_slot != 0 ? 1 : 0); }
  bool TakeValue(std::string_view value) override {
    *m_slot = ParseValueNumber(value) != 0 ? 1 : 0;
    return true;
  }
};

// "CLRBTN": the colour as unsigned decimal, read back as an unsigned
// conversion would (negative numbers wrap, too-large ones give the maximum).
class ColourControl final : public BoundControl {
 public:
  ColourControl(int number, int32_t* slot) : BoundControl(kTagColourButton, number, slot) {}
  std::string ValueText() const override {
    return UnsignedValueText(static_cast<uint32_t>(*m_slot));
  }
  bool TakeValue(std::string_view value) override {
    constexpr int64_t kMax = std::numeric_limits<uint32_t>::max();
    int64_t n = ParseValueNumber(value);
    uint32_t colour = n > kMax || n < -kMax ? static_cast<uint32_t>(kMax) : static_cast<uint32_t>(n);
    *m_slot = static_cast<int32_t>(colour);
    return true;
  }
};

// "CMBBOX": the index of the selected item; an index the list does not have
// leaves it without a selection, which it saves and stores as -1.
class ListControl final : public BoundControl {
 public:
  ListControl(int number, int32_t* slot, int item_count)
      : BoundControl(kTagComboBox, number, slot), m_items(item_count) {}
  std::string ValueText() const override { return NumberValueText(Selected(*m_slot)); }
  bool TakeValue(std::string_view value) override {
    int64_t n = ParseValueNumber(value);
    *m_slot = n >= 0 && n < m_items ? static_cast<int32_t>(n) : -1;
    return true;
  }

 private:
  int32_t Selected(int32_t index) const { return index >= 0 && index < m_items ? index : -1; }
  int m_items;
};

// ---------------------------------------------------------------- the main dialog

constexpr int kPaletteCount = 9;  // the palette list's names

// Items of a drop-down's ';'-separated list.
int ItemCount(const char* items) {
  if (!items || !*items) return 0;
  return static_cast<int>(std::count(items, items + std::char_traits<char>::length(items), ';')) + 1;
}

using Controls = std::vector<std::unique_ptr<DocumentControl>>;

void AddMainControls(Controls& out, Settings& settings, int32_t* custom_palette,
                     uint32_t host_capabilities) {
  namespace m = main_dialog;
  auto slot = [&](Key key) { return settings.NumberSlot(KeyIndex(key)); };
  auto check = [&](int number, int32_t* s) { out.push_back(std::make_unique<CheckControl>(number, s)); };
  out.push_back(std::make_unique<SpinControl>(m::kDelay, slot(Key::MainDelay),
                                              DelaySpinText(host_capabilities)));
  check(m::kTruecolour, slot(Key::Truecolour));
  check(m::kCustomPalette, custom_palette);
  check(m::kDither, slot(Key::MainDither));
  check(m::kSupercompress, slot(Key::MainSupercompress));
  check(m::kComment, slot(Key::AddDescriptiveCommentBlock));
  check(m::kMaskBackground, slot(Key::MainMaskBackground));
  out.push_back(std::make_unique<ListControl>(m::kPalette, slot(Key::MainPalette), kPaletteCount));
  out.push_back(std::make_unique<ListControl>(m::kEffect, slot(Key::MainEffect), kStyleCount));
}

// ---------------------------------------------------------------- the pages

// The page control's document control, or null when it takes no part.
std::unique_ptr<DocumentControl> MakePageControl(Settings& settings, const StyleEntry& style,
                                                 const PageControl& c) {
  int index = c.key ? StyleKeyIndex(style.number, c.key) : -1;
  if (index < 0) return nullptr;
  const char* spin = c.spin ? c.spin : "";
  if (c.kind == ControlKind::kSignedSpin)
    return std::make_unique<SignedSpinControl>(c.id, settings, index, spin);
  int32_t* slot = settings.NumberSlot(index);
  if (!slot) return nullptr;
  switch (c.kind) {
    case ControlKind::kSpin: return std::make_unique<SpinControl>(c.id, slot, spin);
    case ControlKind::kCheck: return std::make_unique<CheckControl>(c.id, slot);
    case ControlKind::kColourButton:
    case ControlKind::kFillButton: return std::make_unique<ColourControl>(c.id, slot);
    case ControlKind::kDropDown: return std::make_unique<ListControl>(c.id, slot, ItemCount(c.spin));
    default: return nullptr;
  }
}

void AddPageControls(Controls& out, Settings& settings) {
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page)
      if (auto control = MakePageControl(settings, style, c)) out.push_back(std::move(control));
}

}  // namespace

std::string_view DelaySpinText(uint32_t host_capabilities) {
  return (host_capabilities & 1u) != 0 ? "1,25,4" : "1,250,40";
}

std::string_view PageControlTag(ControlKind kind) {
  switch (kind) {
    case ControlKind::kSpin: return kTagSpin;
    case ControlKind::kSignedSpin: return kTagSignedSpin;
    case ControlKind::kCheck: return kTagCheckBox;
    // Fill buttons save their colour until fill records exist.
    case ControlKind::kColourButton:
    case ControlKind::kFillButton: return kTagColourButton;
    case ControlKind::kDropDown: return kTagComboBox;
    default: return {};
  }
}

SettingsDocument::SettingsDocument(Settings& settings, uint32_t host_capabilities) {
  AddMainControls(m_controls, settings, &m_custom_palette, host_capabilities);
  AddPageControls(m_controls, settings);
}

SettingsDocument::~SettingsDocument() = default;

void SettingsDocument::ForEachControl(
    const std::function<void(const DocumentControl&)>& visit) const {
  for (const auto& control : m_controls) visit(*control);
}

DocumentControl* SettingsDocument::FindControl(int number) {
  for (const auto& control : m_controls)
    if (control->Number() == number) return control.get();
  return nullptr;
}

bool SaveSettingsDocument(const std::string& path, const Settings& settings,
                          uint32_t host_capabilities, Reporter& reporter) {
  try {
    // The controls bind to writable storage; saving only reads it.
    Settings copy = settings;
    SettingsDocument document(copy, host_capabilities);
    return SaveDocument(path, document, reporter);
  } catch (const std::bad_alloc&) {
    reporter.ShowMessage(StringText(kStrErrorCreatingDocument));
    return false;
  }
}

bool LoadDocumentIntoSettings(const std::string& path, Settings& settings,
                              uint32_t host_capabilities, Reporter& reporter) {
  try {
    SettingsDocument document(settings, host_capabilities);
    return LoadDocument(path, document, reporter);
  } catch (const std::bad_alloc&) {
    reporter.ShowMessage(StringText(kStrErrorOpeningDocument));
    return false;
  }
}

}  // namespace tess
