// Glossy beads and blocks: the one sprite maker of the shaded-bead effects
// (Gridlock, Particles, Neural Network), so the three light their shapes
// alike, and the drop-shadow layer they share.
//
// A shape is a flat core grown by a rounded rim, lit from the upper left: the
// rim darkens with Shade and a specular spot brightens with Glare. Sprites
// come in 4 x 4 quarter-pixel phases, so an element placed at any quarter
// pixel is drawn at exactly that place: motion stays smooth without drawing
// at a higher resolution every frame. Every sprite and mask is made once per
// build; frames only place them, with wrap-around.
//
// Sections: shapes and samples · paints · sprites · shadow layer · frames.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/alloc.h"
#include "fills/fill_descriptor.h"
#include "image/image.h"
#include "styles/style.h"

namespace tess {

// ---------------------------------------------------------------- shapes and samples

// A footprint of width x height pixels whose rim is rounded with `radius`
// (at most half the smaller side): a bead when the radius is half a square's
// side, a block when it is smaller, whose top is then flat.
struct GlossShape {
  int32_t width = 0;
  int32_t height = 0;
  int32_t radius = 0;
};

// Page values, 0..255 each.
struct GlossLight {
  int32_t glare = 0;  // strength of the specular spot
  int32_t shade = 0;  // how dark the rim facing away from the light gets
};

// One sample of the lit surface.
struct GlossSample {
  bool inside = false;
  uint8_t light = 0;  // m: the paint is multiplied by m / 255
  uint8_t glare = 0;  // g: then moved towards white by g / 255
};

// The surface at (dx, dy) eighths of a pixel from the shape's centre. The rim
// is a quarter circle in cross-section, so the normal n leans out by
// e / radius, where e is the offset beyond the flat core, and a bead is a
// hemisphere. With light L = (-1, -1, 1) / sqrt 3 and the halfway vector H
// between L and the viewer (0, 0, 1):
//   m = trunc(255 * (1 - shade / 255 * (1 - clamp(n.L / Lz, 0, 1))))
//   g = trunc(255 * glare / 255 * max(0, n.H)^32)
// in double, unfused, so the bytes are the same on every platform. Inside is
// |e| < radius.
GlossSample GlossSampleAt(const GlossShape& shape, const GlossLight& light, int32_t dx8,
                          int32_t dy8);

// The colour a paint byte `base` takes under a pixel's averaged m and g.
constexpr uint8_t GlossTone(uint32_t base, uint32_t m, uint32_t g) {
  const uint32_t lit = base * m / 255;
  return static_cast<uint8_t>(lit + (255 - lit) * g / 255);
}

// ---------------------------------------------------------------- paints

// What a "Color N" slot paints with: its flat colour, or, for a fill that is
// not Simple, that fill rendered once per build (each element then carries
// the whole fill inside its shape, so the fill moves with it and stays
// seamless).
struct GlossPaint {
  Colour colour = 0;
  ImageBlock fill;  // null for a Simple fill
};

// The paint of `fill` for sprites up to width x height pixels; false when
// memory is short. Sprites take the middle of the rendered fill.
bool MakeGlossPaint(const FillDescriptor& fill, int32_t width, int32_t height, GlossPaint& paint);

// The paint colour under sprite pixel (x, y) of a sprite of width x height.
Colour GlossPaintAt(const GlossPaint& paint, int32_t x, int32_t y, int32_t width, int32_t height);

// The paints of the enabled slots in CollectFills' order (Color 1, then
// each enabled one), for sprites up to width x height; false when memory is
// short. Elements choose among them with a ColourPick over their count.
bool MakeSlotPaints(const ParamReader& reader, const int (&colour_ids)[5],
                    const int (&enable_ids)[4], int32_t width, int32_t height,
                    std::vector<GlossPaint>& paints);

// ---------------------------------------------------------------- sprites

constexpr int kGlossPhases = 4;  // per axis: quarter pixels

// Where to put a sprite so that its shape's centre lands at (x, y) quarter
// pixels: the top-left pixel and the phase variant, fy * 4 + fx.
struct GlossPlace {
  int32_t x = 0;
  int32_t y = 0;
  int phase = 0;
};

// A coverage mask, 0..255 per pixel, rows top-down.
struct GlossMask {
  int32_t width = 0;
  int32_t height = 0;
  Buffer<uint8_t> cover;
};

// Every sprite of one shape: for each paint the 16 phase variants as 32-bit
// sprites (colour, coverage in the top byte) of (width + 2) x (height + 2)
// pixels, and the 16 soft shadow masks. In phase (fx, fy) the shape's centre
// lies at (1 + width / 2 + fx / 4, 1 + height / 2 + fy / 4) in the sprite.
// Each pixel averages 4 x 4 samples at eighths (1, 3, 5, 7) of the pixel:
// coverage = inside * 255 / 16; m and g are the sums over the inside samples
// divided by their count; each colour byte is GlossTone(paint, m, g).
class GlossSprites {
 public:
  // False when memory is short; `shadows` false makes no masks.
  bool Make(const GlossShape& shape, const GlossLight& light, std::span<const GlossPaint> paints,
            bool shadows);

  const GlossShape& shape() const { return m_shape; }
  int32_t sprite_width() const { return m_shape.width + 2; }
  int32_t sprite_height() const { return m_shape.height + 2; }
  const ImageBlock& Sprite(int paint, int phase) const {
    return m_sprites[static_cast<size_t>(paint * kGlossPhases * kGlossPhases + phase)];
  }
  const GlossMask& Shadow(int phase) const { return m_shadows[static_cast<size_t>(phase)]; }

  // The sprite's and the shadow mask's place for a centre at (x, y) quarter
  // pixels (any value: blits wrap).
  GlossPlace Place(int64_t x, int64_t y) const;
  GlossPlace PlaceShadow(int64_t x, int64_t y) const;

 private:
  GlossShape m_shape;
  int32_t m_shadow_margin = 0;
  std::vector<ImageBlock> m_sprites;
  std::vector<GlossMask> m_shadows;
};

// The soft shadow of a shape: a mask of (width + 2 + 2 * margin) x (height +
// 2 + 2 * margin) pixels, the shape's centre at margin + 1 + width / 2 + fx / 4
// (and likewise down), whose value at each pixel centre is GlossShadowAt.
int32_t GlossShadowMargin(const GlossShape& shape);
// At (dx8, dy8) eighths from the centre: 255 * (1/2 - s / soft), within
// 0..255, where s is the signed distance from the footprint's rim (negative
// inside) and soft = max(1, min(width, height) / 4) pixels.
uint8_t GlossShadowAt(const GlossShape& shape, int32_t dx8, int32_t dy8);

// ---------------------------------------------------------------- shadow layer

// The ground the shadows fall on: a plain colour darkened where any shadow
// lies, by the strongest one there (shadows of elements that overlap do not
// darken each other twice). Frames start from it.
class ShadowLayer {
 public:
  // False when memory is short. Opacity 0 (or no Add) paints the plain colour.
  bool Init(int32_t width, int32_t height, Colour background, int opacity);
  void Clear();
  // Takes the larger coverage at each pixel under the mask placed with its
  // top-left at (x, y), wrapping around the tile.
  void Add(const GlossMask& mask, int32_t x, int32_t y);
  // A new width x height 24-bit image of the ground: each pixel the
  // background blended towards black with coverage a * opacity / 255, as
  // MaskBlendWrap blends; null when memory is short.
  ImageBlock Paint() const;

  int opacity() const { return m_opacity; }

 private:
  int32_t m_width = 0;
  int32_t m_height = 0;
  int m_opacity = 0;
  bool m_used = false;
  Buffer<uint8_t> m_cover;
  uint8_t m_tone[256][3] = {};  // blue, green, red for each coverage
};

// ---------------------------------------------------------------- frames

// One element of a frame: its sprites, its paint and its shape's centre in
// quarter pixels (any value: it is drawn with wrap-around).
struct GlossItem {
  const GlossSprites* sprites = nullptr;
  int paint = 0;
  int64_t x = 0;
  int64_t y = 0;
};

// A frame of `items` on `ground`: the ground darkened by their shadows, cast
// `shadow_offset` pixels right and down (none at opacity 0), then the items
// in order. Null when memory is short.
ImageBlock GlossFrame(ShadowLayer& ground, std::span<const GlossItem> items, int32_t shadow_offset);

}  // namespace tess
