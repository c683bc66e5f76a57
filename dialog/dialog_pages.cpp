// Page windows, page selection and spin-field values for the main dialog.
#include "dialog/dialog_pages.h"

#include <algorithm>
#include <limits>

#include "shell/document.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

PageWindow WindowAt(int id, PageWindowRole role, const PageControl& c) {
  return PageWindow{id, role, &c, c.x, c.y, c.w, c.h};
}

PageWindow LabelFor(const PageControl& c) {
  page::Place at = page::LabelPlace(c);
  return PageWindow{c.id + kPageLabelIdOffset, PageWindowRole::kLabel, &c, at.x, at.y, at.w, at.h};
}

// The control window a declaration becomes, and whether an up-down follows.
PageWindowRole ControlRole(ControlKind kind) {
  switch (kind) {
    case ControlKind::kSpin:
    case ControlKind::kSignedSpin:
    case ControlKind::kPicker: return PageWindowRole::kEdit;
    case ControlKind::kCheck: return PageWindowRole::kCheckBox;
    case ControlKind::kColourButton:
    case ControlKind::kFillButton: return PageWindowRole::kColourButton;
    case ControlKind::kDropDown: return PageWindowRole::kComboBox;
    case ControlKind::kFountain:
    case ControlKind::kMatrix: return PageWindowRole::kPlaceholder;
    case ControlKind::kLabel: break;
  }
  return PageWindowRole::kText;
}

}  // namespace

// ---------------------------------------------------------------- page selection

int ClampPageIndex(int selection) { return std::clamp(selection, 0, kPageIndexLimit); }

const StyleEntry* PageStyle(std::span<const StyleEntry> table, int page_index) {
  if (page_index < 0 || static_cast<size_t>(page_index) >= table.size()) return nullptr;
  return &table[static_cast<size_t>(page_index)];
}

// ---------------------------------------------------------------- page windows

std::vector<PageWindow> PageWindows(const StyleEntry& style) {
  std::vector<PageWindow> windows;
  windows.reserve(style.page.size() * 3);
  for (const PageControl& c : style.page) {
    if (page::HasSeparateLabel(c)) windows.push_back(LabelFor(c));
    PageWindowRole role = ControlRole(c.kind);
    windows.push_back(WindowAt(c.id, role, c));
    if (role == PageWindowRole::kEdit)
      windows.push_back(WindowAt(c.id + kUpDownIdOffset, PageWindowRole::kUpDown, c));
  }
  return windows;
}

std::vector<std::string> SplitItems(const char* items) {
  std::vector<std::string> out;
  if (!items || !*items) return out;
  std::string_view rest(items);
  for (;;) {
    size_t semicolon = rest.find(';');
    out.emplace_back(rest.substr(0, semicolon));
    if (semicolon == std::string_view::npos) break;
    rest.remove_prefix(semicolon + 1);
  }
  return out;
}

// ---------------------------------------------------------------- spin fields

int32_t SpinFieldValue(std::string_view spin_text, std::string_view field_text) {
  return ClampSpin(ParseSpinText(spin_text), ParseValueNumber(field_text));
}

int32_t StoredSpinValue(const SpinRange& range, int32_t stored) {
  int64_t value = range.min < 0 ? int64_t{stored} : int64_t{static_cast<uint32_t>(stored)};
  return ClampSpin(range, value);
}

uint32_t ColourTextValue(std::string_view text) {
  constexpr int64_t kMax = std::numeric_limits<uint32_t>::max();
  int64_t n = ParseValueNumber(text);
  return n > kMax || n < -kMax ? static_cast<uint32_t>(kMax) : static_cast<uint32_t>(n);
}

int32_t ShiftResetDelay(uint32_t host_capabilities) {
  return (host_capabilities & 1u) != 0 ? 4 : 10;
}

}  // namespace tess
