// What the main dialog makes of the style table's page declarations: the
// windows each page control becomes (label, control, up-down) with their ids,
// and which page the effect selection shows. Every rule about a control's
// value belongs to its kind (controls/control_kinds.h). Front ends create
// windows from these; nothing here knows about windows.
//
// Invariants: every window id of every page is unique across all pages and
// never one of the main dialog's own ids; a selection always maps to a page
// index in 0..kPageIndexLimit, and only indices below the table size name a
// page.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "controls/control_kinds.h"
#include "styles/style.h"

namespace tess {

// ---------------------------------------------------------------- page selection

// The effect list's selection is clamped to 0..20 before it is used: a
// negative selection shows the first page, and 20, one past the table, shows
// none.
inline constexpr int kPageIndexLimit = 20;
int ClampPageIndex(int selection);

// The entry whose page a clamped index shows, or null past the table.
const StyleEntry* PageStyle(std::span<const StyleEntry> table, int page_index);

// ---------------------------------------------------------------- page windows

// A static label of a page control has the control's id plus this, beside
// the up-down's plus kUpDownIdOffset, so the two never meet.
inline constexpr int kPageLabelIdOffset = 20000;

struct PageWindow {
  int id = 0;
  PageWindowRole role = PageWindowRole::kLabel;
  const PageControl* control = nullptr;  // the declaration it comes from
  int16_t x = 0, y = 0, w = 0, h = 0;    // on the page, in dialog units
};

// The windows of one page in creation order: each control's label first,
// then the control, then its up-down. Creation order is also document order.
std::vector<PageWindow> PageWindows(const StyleEntry& style);

// The palette list's items, in palette-choice order: the string table's
// palette names.
ItemList PaletteListItems();

// The effect list's items: the style table's names in list order.
ItemList EffectListItems();

// ---------------------------------------------------------------- the main dialog's own controls

// The Delay field's range, which the dialog sets from the host's capability
// flags: bit 0 set gives 1..25 (default 4), clear 1..250 (default 40).
SpinRange DelayRange(uint32_t host_capabilities);

// The delay that holding Shift while the dialog opens resets to: 4 when the
// host's capability bit 0 is set, else 10.
int32_t ShiftResetDelay(uint32_t host_capabilities);

// The main dialog's controls that take part in documents, declared like page
// controls, in template order (which is also save order): 11 Delay, 10
// "Tr&ue color", 14 "&Custom palette" (no setting of its own), 15 "&Dither",
// 19 "&Supercompress", 20 "Add comme&nt", 21 "&Mask background", 13 Palette,
// 58 Effect. Keys are the general configuration keys.
std::span<const PageControl> MainDialogControls(uint32_t host_capabilities);

}  // namespace tess
