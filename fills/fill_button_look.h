// The fill button ("BRNDFILB") without a window: how its client area splits
// into the swatch and the menu-arrow strip, how each part looks for the press
// flags, which part a press lands in, what the release does, and the kind
// menu. The Windows control asks here and only moves pixels.
//
// Invariants: rectangles are client pixels with right and bottom outside;
// the swatch image is rendered at exactly FillSwatchRect's size, which is
// where FillButtonLookOf draws it, so a swatch always fits its place.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "draw/raster.h"
#include "fills/fill_descriptor.h"

namespace tess {

// ---------------------------------------------------------------- look

inline constexpr int32_t kFillArrowStripWidth = 16;
// The soft edge of each part is two pixels wide; the swatch sits inside it.
inline constexpr int32_t kFillSwatchInset = 2;

enum class FillFace : uint8_t { kRaised, kSunken };

struct FillButtonLook {
  Rect frame;             // the client area: a 1-pixel black frame
  Rect arrow_strip;       // button face with a soft edge
  FillFace arrow_face;    // sunken while the arrow is held down
  std::array<Point, 3> triangle;  // filled with the 3-D dark shadow, no outline
  Point shadow_from;      // then a 1-pixel button-shadow line from the
  Point shadow_to;        // triangle's first point to its second
  Rect swatch_part;       // soft edge
  FillFace swatch_face;   // sunken while the swatch is held down
  Rect swatch;            // where the swatch image goes (its top-left corner)
};

// The parts lie inside the 1-pixel frame so that the frame stays visible:
// the strip is the inner area's right 16 pixels, the swatch part the rest.
// While the arrow is held, the triangle and its line move 1 pixel right and
// down.
FillButtonLook FillButtonLookOf(const Rect& client, uint32_t press_flags);

// The swatch's place and size for a client area: empty (no positive width
// or height) for a button too small to show one.
Rect FillSwatchRect(const Rect& client);

// ---------------------------------------------------------------- mouse

enum class FillButtonPart : uint8_t { kNone, kSwatch, kArrow };

// The part a press at `p` lands in: the arrow strip, else the swatch part;
// nothing outside the client area (a press there cannot reach the window,
// but a captured one can).
FillButtonPart FillButtonHit(const Rect& client, Point p);

// The press flags after a press on `part`: its bit is set, the other kept.
uint32_t FillButtonPress(uint32_t press_flags, FillButtonPart part);

// What releasing the mouse does, decided by the flags the press left, never
// by the release point: releasing outside the button still acts. The arrow
// wins when both bits are somehow set. The flags' bits 0 and 1 are cleared
// afterwards in every case.
enum class FillButtonAction : uint8_t { kNothing, kShowMenu, kEdit };
FillButtonAction FillButtonRelease(uint32_t press_flags);

// ---------------------------------------------------------------- kind menu

// WM_COMMAND ids the button sends itself: 99 opens the editor of the current
// kind, 100 + kind chooses a kind.
inline constexpr int kFillEditCommand = 99;
inline constexpr int kFillKindCommandFirst = 100;

struct FillKindMenuItem {
  int command;
  std::string_view text;
  bool checked;
};

// "Simple", "Gradient", "Texture", "Tile" with ids 100..103; only the
// current kind is checked (none for a kind no item names).
std::array<FillKindMenuItem, 4> FillKindMenu(uint32_t current_kind);

// The kind a menu command chooses; nothing for any other command.
std::optional<uint32_t> FillKindOfCommand(int command);

}  // namespace tess
