// What the main dialog makes of the style table's page declarations: the
// windows each page control becomes (label, control, up-down) with their ids,
// which page the effect selection shows, and how a spin field's text becomes
// its clamped value. Front ends create windows from these; nothing here knows
// about windows.
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

enum class PageWindowRole : uint8_t {
  kLabel,         // static text left of its control
  kEdit,          // the number field of a spin (and, for now, of a direction picker)
  kUpDown,        // its up-down, window text = the spin text
  kCheckBox,      // text is its own label
  kColourButton,  // plain colour and, until fill records exist, fill buttons
  kComboBox,      // index drop-down, items from the ';' list
  kPlaceholder,   // fountain and matrix buttons: shown, not yet editable
  kText,          // a page's plain label
};

struct PageWindow {
  int id = 0;
  PageWindowRole role = PageWindowRole::kLabel;
  const PageControl* control = nullptr;  // the declaration it comes from
  int16_t x = 0, y = 0, w = 0, h = 0;    // on the page, in dialog units
};

// The windows of one page in creation order: each control's label first,
// then the control, then its up-down. Creation order is also document order.
std::vector<PageWindow> PageWindows(const StyleEntry& style);

// Items of a drop-down's ';'-separated list; empty for null or empty text.
std::vector<std::string> SplitItems(const char* items);

// The palette list's items, in palette-choice order, as one ';' string.
inline constexpr const char* kPaletteListItems =
    "Black and white;Sixteen-color Windows;32-color orthogonal;64-color orthogonal;"
    "128-color orthogonal;216-color safe;256-color orthogonal;256-color with gray;"
    "256 gray levels";

// ---------------------------------------------------------------- spin fields

// The value a spin field stands for: its text read as a number (leading
// spaces, sign, digits), clamped to the range its up-down's text gives. An
// unparsable range text gives 0..100, an empty field its lower bound.
int32_t SpinFieldValue(std::string_view spin_text, std::string_view field_text);

// What a field shows for a number stored in the settings: taken as unsigned
// unless the range reaches below zero (so a stored -1 is huge, not small),
// then clamped.
int32_t StoredSpinValue(const SpinRange& range, int32_t stored);

// The colour a colour button's window text stands for, read as an unsigned
// conversion reads it: negative numbers wrap, numbers too large for 32 bits
// give the largest value.
uint32_t ColourTextValue(std::string_view text);

// The delay that holding Shift while the dialog opens resets to: 4 when the
// host's capability bit 0 is set (its Delay range is then "1,25,4"), else 10.
// DelaySpinText (styles/settings_document.h) gives the range text itself.
int32_t ShiftResetDelay(uint32_t host_capabilities);

}  // namespace tess
