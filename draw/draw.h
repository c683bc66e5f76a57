// Pixel operations shared by the styles: wrap-around blends that keep every
// tile seamless, the colour mix, rolls, quarter turns and the scaling that
// finishes supersampled frames.
//
// Invariants: routines that make an image return a new block (never one of
// their arguments) or null, and free whatever they made on failure. Blends
// cannot fail; they accept any position, because every target pixel goes
// through WrapIndex. Rolls, turns and scaling keep the source's depth and
// colour table.
#pragma once

#include <cstdint>

#include "image/image.h"
#include "draw/raster.h"

namespace tess {

// Coordinate c on an axis of `length` > 0 pixels, folded into 0..length-1:
// c mod length, with negative c giving length - ((-c) mod length), or 0 when
// -c is a multiple of length.
int32_t WrapIndex(int64_t c, int32_t length);

// A 24-bit image of the rectangle's size, every pixel `colour`.
ImageBlock SolidImage(const Rect& rect, Colour colour);

// Paints `colour` through a grey mask whose top-left corner lands at (x, y),
// wrapping around the target's edges. Coverage is the mask's blue byte, scaled
// by opacity / 255 when opacity is below 255; each channel becomes
// c * a / 255 + d * (255 - a) / 255 with the two terms divided separately, so
// full coverage writes the colour exactly. Mask pixels are visited row by row,
// left to right: a mask larger than the target lands on itself, later pixels
// over earlier. Opacity is clamped to 0..255.
void MaskBlendWrap(ImageBlock& target, const ImageBlock& mask, int32_t x, int32_t y, Colour colour,
                   int opacity);

// MaskBlendWrap with a picture for ink: mask pixel (sx, sy) takes the colour
// of source pixel (wrap(source_x + sx), wrap(source_y + sy)), so the source
// repeats in both directions. A source the target's size placed at (x, y)
// paints each target pixel with the source pixel at the same place; a source
// placed at (0, 0) travels with the mask. Same coverage, opacity and
// arithmetic as MaskBlendWrap, c being the source pixel.
void MaskBlendImageWrap(ImageBlock& target, const ImageBlock& mask, int32_t x, int32_t y,
                        const ImageBlock& source, int32_t source_x, int32_t source_y,
                        int opacity);

// Places a 32-bit sprite whose top byte is coverage, wrapping like
// MaskBlendWrap: s * a / 255 + d * (255 - a) / 255 per channel.
void AlphaBlitWrap(ImageBlock& target, const ImageBlock& sprite, int32_t x, int32_t y);

// A 32-bit image of the colour image's size: its low three bytes are the
// colour image's pixel, its top byte the mask's blue byte at the same place.
ImageBlock AttachMask(const ImageBlock& colour, const ImageBlock& mask);

// (a * w + b * (255 - w)) / 255 per channel, one division, so w = 255 gives a
// and w = 0 gives b exactly. The top byte is 0. w is clamped to 0..255.
Colour ColourMix(Colour a, Colour b, int w);

// Cyclic rolls by n pixels (any n, negative included); n = 0 gives a copy.
ImageBlock RollDown(const ImageBlock& image, int32_t n);   // row y = source row y - n
ImageBlock RollUp(const ImageBlock& image, int32_t n);     // row y = source row y + n
ImageBlock RollRight(const ImageBlock& image, int32_t n);  // column x = source column x - n
ImageBlock RollLeft(const ImageBlock& image, int32_t n);   // column x = source column x + n

// Quarter turns into an image of swapped size. Anticlockwise sends source
// (x, y) to (y, new height - 1 - x); clockwise sends it to
// (new width - 1 - y, x). Each undoes the other.
ImageBlock TurnAnticlockwise(const ImageBlock& image);
ImageBlock TurnClockwise(const ImageBlock& image);

// Scales each axis by a whole percent (> 0): the horizontal pass first, then
// the vertical one; 100 on both axes gives a copy.
//
// Reducing an axis of length L to p percent gives trunc(L * p / 100) pixels;
// output pixel j averages the source pixels from where pixel j - 1 stopped (0
// for j = 0) up to, not including, (j + 1) * 100 / p, never past the last.
// Each byte of a pixel (blue, green, red, and coverage at 32 bits) is summed
// and divided by the count, truncated; at 1 to 8 bits the stored indices are
// averaged the same way.
//
// Enlarging repeats pixels (nearest neighbour): output pixel j is source pixel
// j * 100 / p. Styles only reduce; this keeps enlarged images exact copies of
// their source pixels.
ImageBlock ScaleByPercent(const ImageBlock& image, int horizontal_percent, int vertical_percent);

}  // namespace tess
