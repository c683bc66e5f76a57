// The fill button's geometry, mouse rules and kind menu. Pure arithmetic on
// client rectangles; nothing here is drawn.
#include "fills/fill_button_look.h"

namespace tess {
namespace {

Rect Inset(const Rect& r, int32_t by) {
  return {r.left + by, r.top + by, r.right - by, r.bottom - by};
}

bool Contains(const Rect& r, Point p) {
  return p.x >= r.left && p.x < r.right && p.y >= r.top && p.y < r.bottom;
}

// Inside the frame; on a button narrower than the strip the strip takes all.
struct Parts {
  Rect swatch_part;
  Rect arrow_strip;
};

Parts SplitClient(const Rect& client) {
  Rect inner = Inset(client, 1);
  int32_t strip_left = inner.right - kFillArrowStripWidth;
  if (strip_left < inner.left) strip_left = inner.left;
  return {{inner.left, inner.top, strip_left, inner.bottom},
          {strip_left, inner.top, inner.right, inner.bottom}};
}

}  // namespace

FillButtonLook FillButtonLookOf(const Rect& client, uint32_t press_flags) {
  Parts parts = SplitClient(client);
  const Rect& strip = parts.arrow_strip;
  const bool arrow_down = (press_flags & kFillArrowPressed) != 0;
  const int32_t shift = arrow_down ? 1 : 0;
  const int32_t middle = strip.top + (strip.bottom - strip.top) / 2;
  FillButtonLook look;
  look.frame = client;
  look.arrow_strip = strip;
  look.arrow_face = arrow_down ? FillFace::kSunken : FillFace::kRaised;
  look.triangle = {Point{strip.left + 5 + shift, strip.top + 5 + shift},
                   Point{strip.right - 6 + shift, middle + shift},
                   Point{strip.left + 5 + shift, strip.bottom - 5 + shift}};
  look.shadow_from = look.triangle[0];
  look.shadow_to = look.triangle[1];
  look.swatch_part = parts.swatch_part;
  look.swatch_face = (press_flags & kFillSwatchPressed) ? FillFace::kSunken : FillFace::kRaised;
  look.swatch = Inset(parts.swatch_part, kFillSwatchInset);
  return look;
}

Rect FillSwatchRect(const Rect& client) {
  return Inset(SplitClient(client).swatch_part, kFillSwatchInset);
}

FillButtonPart FillButtonHit(const Rect& client, Point p) {
  if (!Contains(client, p)) return FillButtonPart::kNone;
  // The frame belongs to the part it surrounds.
  return p.x >= SplitClient(client).arrow_strip.left ? FillButtonPart::kArrow
                                                     : FillButtonPart::kSwatch;
}

uint32_t FillButtonPress(uint32_t press_flags, FillButtonPart part) {
  switch (part) {
    case FillButtonPart::kArrow: return press_flags | kFillArrowPressed;
    case FillButtonPart::kSwatch: return press_flags | kFillSwatchPressed;
    case FillButtonPart::kNone: break;
  }
  return press_flags;
}

FillButtonAction FillButtonRelease(uint32_t press_flags) {
  if (press_flags & kFillArrowPressed) return FillButtonAction::kShowMenu;
  if (press_flags & kFillSwatchPressed) return FillButtonAction::kEdit;
  return FillButtonAction::kNothing;
}

std::array<FillKindMenuItem, 4> FillKindMenu(uint32_t current_kind) {
  constexpr std::string_view kNames[4] = {"Simple", "Gradient", "Texture", "Tile"};
  std::array<FillKindMenuItem, 4> items{};
  for (uint32_t kind = 0; kind < items.size(); ++kind)
    items[kind] = {kFillKindCommandFirst + static_cast<int>(kind), kNames[kind], kind == current_kind};
  return items;
}

std::optional<uint32_t> FillKindOfCommand(int command) {
  if (command < kFillKindCommandFirst || command > kFillKindCommandFirst + static_cast<int>(kFillTile))
    return std::nullopt;
  return static_cast<uint32_t>(command - kFillKindCommandFirst);
}

}  // namespace tess
