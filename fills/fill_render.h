// Turning a fill into pixels. RenderFill paints a record of any kind into a
// new 24-bit image of the size asked for; RenderGradient renders the gradient
// part alone at its grad_rect size. Both return null on failure (a size that
// is not positive, an unknown gradient type, short memory) and never leave an
// image half made.
#pragma once

#include <cstdint>

#include "fills/fill_descriptor.h"
#include "image/image.h"

namespace tess {

// A new width x height 24-bit image painted with the fill:
//   Simple    every pixel the record's colour;
//   Gradient  the gradient rendered at width x height (on a working copy, so
//             `record` is left as it was);
//   Texture   the texture generated as a square of side max(width, height),
//             from which the centre is taken: columns from (side - width) / 2
//             and rows from (side - height) / 2;
//   Tile      the tile pattern rendered at width x height;
//   any other kind: black, the image as created.
ImageBlock RenderFill(const FillDescriptor& record, int32_t width, int32_t height);

// The gradient of `record` at the size of its grad_rect:
//   linear, radial, square  through the texture engine's gradient request
//                           (textures/texture_engine.h has the formulas), as
//                           shape codes 0, 2 and 1;
//   conical                 the two-sided sweep below;
//   other types             null.
// Before asking the engine it writes the shape code into grad_type, so a
// radial record reads square afterwards and a square one radial. This is
// the record's long-standing contract, not a slip: every caller renders a
// working copy, where the crossing is harmless.
//
// Conical gradient, in doubles, every conversion to integer truncating:
//   r = 360 - rotation, plus 360 once if negative (a rotation beyond +-360 is
//   first reduced by whole turns, which bounds the loops below);
//   px = trunc(W * (centre_x * 0.01 + 0.5)), py = trunc(H * (0.5 - centre_y * 0.01));
//   per pixel dx = x - px, dy = y - py;
//   a = dx != 0 ? atan(dy / dx) * 57.29577951308232 (+ 180 when dx > 0,
//       then + 360 while negative) : (dy >= 1 ? 270 : 90);
//   a = r + a; - 360 while a > 360; a = 360 - a when a > 180;
//   t = trunc(a * (1 / 180) * 256) / 256, within 0..1;
//   each channel = trunc((1 - t) * start + t * end) & 0xFF.
// The start colour lies in the direction the rotation gives (0: left of the
// centre, 90: above it), the end colour opposite, mirrored on both sides.
ImageBlock RenderGradient(GradientRecord& record);

// Where the texture generator and the tile renderer plug in. Until those
// subsystems exist both draw a grey two-tone checker with an even number of
// cells across each side, so the picture wraps seamlessly at its edges: the
// texture with cells of about 16 pixels in medium greys, the tile with cells
// of about 8 pixels in darker ones.
//
// A new 24-bit image of the texture block's rectangle size (a square).
ImageBlock GenerateTexture(const FillTextureBlock& texture);
// A new 24-bit width x height image of the tile pattern.
ImageBlock RenderTile(const FillTileBlock& tile, int32_t width, int32_t height);

}  // namespace tess
