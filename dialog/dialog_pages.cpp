// Page windows, page selection and the main dialog's own control declarations.
#include "dialog/dialog_pages.h"

#include <algorithm>
#include <array>

#include "output/palette.h"
#include "shell/main_dialog_ids.h"
#include "shell/strings.h"
#include "styles/page_layout.h"
#include "styles/style_table.h"

namespace tess {
namespace {

PageWindow WindowAt(int id, PageWindowRole role, const PageControl& c) {
  return PageWindow{id, role, &c, c.x, c.y, c.w, c.h};
}

PageWindow LabelFor(const PageControl& c) {
  page::Place at = page::LabelPlace(c);
  return PageWindow{c.id + kPageLabelIdOffset, PageWindowRole::kLabel, &c, at.x, at.y, at.w, at.h};
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
    const ControlKindRules& rules = KindRules(c);
    if (rules.separate_label) windows.push_back(LabelFor(c));
    PageWindowRole role = rules.window;
    windows.push_back(WindowAt(c.id, role, c));
    if (role == PageWindowRole::kEdit)
      windows.push_back(WindowAt(c.id + kUpDownIdOffset, PageWindowRole::kUpDown, c));
  }
  return windows;
}

static_assert(kStrPaletteNameLast - kStrPaletteNameFirst + 1 == kPaletteChoices,
              "one palette name in the string table for each palette choice");

ItemList PaletteListItems() {
  static const std::array<std::string_view, kPaletteChoices> items = [] {
    std::array<std::string_view, kPaletteChoices> names{};
    for (int i = 0; i < kPaletteChoices; ++i) names[static_cast<size_t>(i)] = PaletteName(i);
    return names;
  }();
  return items;
}

ItemList EffectListItems() {
  static const std::array<std::string_view, kStyleCount> items = [] {
    std::array<std::string_view, kStyleCount> names{};
    std::span<const StyleEntry> table = StyleTable();
    for (size_t i = 0; i < names.size() && i < table.size(); ++i) names[i] = table[i].name;
    return names;
  }();
  return items;
}

// ---------------------------------------------------------------- the main dialog's own controls

SpinRange DelayRange(uint32_t host_capabilities) {
  return (host_capabilities & 1u) != 0 ? SpinRange{1, 25, 4} : SpinRange{1, 250, 40};
}

int32_t ShiftResetDelay(uint32_t host_capabilities) {
  return (host_capabilities & 1u) != 0 ? 4 : 10;
}

std::span<const PageControl> MainDialogControls(uint32_t host_capabilities) {
  auto declare = [](uint32_t caps) {
    auto control = [](int id, ControlKind kind, const char* key) {
      return PageControl{id, kind, nullptr, key, {}, {}, 0, 0, 0, 0};
    };
    std::array<PageControl, 9> controls = {
        control(kDelayEdit, ControlKind::kSpin, "MainDelay"),
        control(kTrueColour, ControlKind::kCheck, "Truecolour"),
        control(kCustomPalette, ControlKind::kCheck, nullptr),
        control(kDither, ControlKind::kCheck, "MainDither"),
        control(kSupercompress, ControlKind::kCheck, "MainSupercompress"),
        control(kAddComment, ControlKind::kCheck, "AddDescriptiveCommentBlock"),
        control(kMaskBackground, ControlKind::kCheck, "MainMaskBackground"),
        control(kPaletteList, ControlKind::kDropDown, "MainPalette"),
        control(kEffectList, ControlKind::kDropDown, "MainEffect"),
    };
    controls[0].range = DelayRange(caps);
    controls[7].items = PaletteListItems();
    controls[8].items = EffectListItems();
    return controls;
  };
  // Only bit 0 changes anything: one table for each of its two states.
  static const std::array<PageControl, 9> per_bit[2] = {declare(0), declare(1)};
  return per_bit[host_capabilities & 1u];
}

}  // namespace tess
