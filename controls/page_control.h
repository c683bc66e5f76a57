// Page-control declarations: what one control of a settings page is, as
// typed data. An effect declares its page once as a constant array of these;
// the dialog creates its windows from them, the settings reader, the settings
// document and the command line read ranges, items and keys from them.
//
// Invariants: a range and an item list are parsed when the page is written
// (they are numbers and a list here), never again; a control's kind decides
// every rule about its value, and those rules live in control_kinds.h alone.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fills/picker.h"

namespace tess {

// Kinds of page control. The numbering is stable: tests and dumps print it.
enum class ControlKind : uint8_t {
  kSpin,          // number field with an up-down
  kSignedSpin,    // as kSpin, stored as text
  kCheck,         // check box, 0 or 1
  kColourButton,  // plain colour (Background)
  kFillButton,    // Colour 1-5: a fill whose setting holds its colour
  kFountain,      // fountain gradient control
  kPicker,        // direction picker
  kMatrix,        // pixel-tile button
  kDropDown,      // index drop-down list
  kLabel,         // static text only
};
inline constexpr int kControlKindCount = 10;

// The range of a number: lower and upper bound and the value a fresh page
// shows. Also the range of a direction picker's cell index.
struct SpinRange {
  int32_t min = 0;
  int32_t max = 100;
  int32_t def = 0;
  friend constexpr bool operator==(const SpinRange&, const SpinRange&) = default;
};

// An out-of-range entry is never an error: it is used as the nearest bound.
constexpr int32_t ClampSpin(const SpinRange& range, int64_t value) {
  if (value < range.min) return range.min;
  if (value > range.max) return range.max;
  return static_cast<int32_t>(value);
}

// The text an up-down control carries in its window: "min,max,default".
std::string SpinText(const SpinRange& range);

// A drop-down's items, in list order (the stored value is the index).
using ItemList = std::span<const std::string_view>;

// One control of a style's page (or of the main dialog).
struct PageControl {
  int id;              // see PageControlId; fixed ids for the built-in fountains
  ControlKind kind;
  const char* label;   // as the page shows it, e.g. "Frames:"
  const char* key;     // setting suffix after "StyleNNN", e.g. "Frames"; null for none
  SpinRange range;     // spins and pickers
  ItemList items;      // drop-downs
  int16_t x, y, w, h;  // place on the page in dialog units
  PickerClass picker = PickerClass::kScroll4;  // direction pickers: which of the family
};

// Page controls of style number S are 3000 + 100*S + n (n = 1..99); each
// up-down control is its edit's id + 10000.
constexpr int PageControlId(int style_number, int n) { return 3000 + 100 * style_number + n; }
inline constexpr int kUpDownIdOffset = 10000;

}  // namespace tess
