// Shaping one image the build hands to the host into what a GIF frame holds:
// palettised frames with a transparent index are cropped to the box of their
// visible pixels (unchanged pixels of a supercompressed frame need not be
// stored at all), and true-colour frames get a palette of their own from the
// engine's adaptive quantizer. Loops work on whole rows; the tests hold the
// per-pixel reference they must equal.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace tess::cli {

// A rectangle of pixels, top-down; empty when width or height is 0.
struct PixelBox {
  int32_t left = 0;
  int32_t top = 0;
  int32_t width = 0;
  int32_t height = 0;

  bool empty() const { return width <= 0 || height <= 0; }
  bool operator==(const PixelBox&) const = default;
};

// The smallest box holding every pixel of a 1-, 4- or 8-bit image whose index
// is not `transparent`; empty when every pixel is transparent.
PixelBox VisibleBounds(const ImageBlock& image, int transparent);

// The pixels of `box` (inside the image) as a new block of the same depth
// and colour table. Null when memory is short.
ImageBlock CropIndices(const ImageBlock& image, const PixelBox& box);

// A true-colour (24- or 32-bit) frame reduced to a palette of its own: at
// most 256 colours, exact when the frame has no more. `rgb` (768 bytes)
// receives the palette, *bits its GIF bit count (2..8). Null when memory is
// short.
ImageBlock PalettiseTrueColour(const ImageBlock& image, uint8_t* rgb, int* bits);

}  // namespace tess::cli
