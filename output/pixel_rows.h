// Whole-row pixel access for the remap, dither and quantizer loops, which are
// too hot for the bounds-checked ImageGetPixel/ImageSetPixel. Every function
// here gives exactly what those two would give for each pixel of the row.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "image/image.h"

namespace tess {

// Picture row y (top-down) as blue, green, red bytes, three per pixel: the
// block's own row for 24 bits, otherwise `scratch` (3 * width bytes) filled
// from the 32-bit pixels (the fourth byte dropped) or from the colour table.
const uint8_t* BgrRow(const ImageBlock& image, int y, uint8_t* scratch);

// Pixel `x` of a BGR row of `width` pixels as one number, for telling colours
// apart in the hot loops (not a Colour: the byte order inside is the
// machine's). On little-endian machines every pixel but the row's last is one
// four-byte load.
inline uint32_t BgrKey(const uint8_t* row, int x, int width) {
  const uint8_t* p = row + 3 * static_cast<size_t>(x);
  if constexpr (std::endian::native == std::endian::little) {
    if (x + 1 < width) {
      uint32_t four;
      std::memcpy(&four, p, 4);
      return four & 0xFFFFFFu;
    }
  }
  return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16;
}

// The indices of row y of a 1-, 4- or 8-bit block, one byte per pixel.
void UnpackIndexRow(const ImageBlock& image, int y, uint8_t* indices);

// Stores one index per pixel into row y of a 1-, 4- or 8-bit block the way
// ImageSetPixel would: the low byte, the low nibble, or 1 for any non-zero.
void PackIndexRow(ImageBlock& image, int y, const uint8_t* indices);

}  // namespace tess
