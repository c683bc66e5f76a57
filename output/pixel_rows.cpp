// Row unpacking and packing for 1-, 4-, 8-, 24- and 32-bit image blocks.
#include "output/pixel_rows.h"

#include <cstring>

namespace tess {

const uint8_t* BgrRow(const ImageBlock& image, int y, uint8_t* scratch) {
  const int width = image.width();
  const uint8_t* row = image.Row(y);
  if (image.bits() == 24) return row;
  if (image.bits() == 32) {
    for (int x = 0; x < width; ++x) std::memcpy(scratch + 3 * x, row + 4 * x, 3);
    return scratch;
  }
  // Palettised: unpack the indices into the tail of the scratch row (they are
  // one byte per pixel, so expanding from the front never overwrites an index
  // not yet read), then look each one up.
  uint8_t* indices = scratch + 2 * width;
  UnpackIndexRow(image, y, indices);
  const uint8_t* table = image.colour_table();
  for (int x = 0; x < width; ++x) std::memcpy(scratch + 3 * x, table + 4 * indices[x], 3);
  return scratch;
}

void UnpackIndexRow(const ImageBlock& image, int y, uint8_t* indices) {
  const int width = image.width();
  const uint8_t* row = image.Row(y);
  switch (image.bits()) {
    case 8:
      std::memcpy(indices, row, static_cast<size_t>(width));
      break;
    case 4:
      for (int x = 0; x < width; ++x) indices[x] = (x & 1) ? (row[x / 2] & 0x0F) : (row[x / 2] >> 4);
      break;
    case 1:
      for (int x = 0; x < width; ++x) indices[x] = (row[x / 8] >> (7 - x % 8)) & 1;
      break;
    default:
      std::memset(indices, 0, static_cast<size_t>(width));
      break;
  }
}

void PackIndexRow(ImageBlock& image, int y, const uint8_t* indices) {
  const int width = image.width();
  uint8_t* row = image.Row(y);
  switch (image.bits()) {
    case 8:
      std::memcpy(row, indices, static_cast<size_t>(width));
      break;
    case 4:
      for (int x = 0; x + 1 < width; x += 2)
        row[x / 2] = static_cast<uint8_t>((indices[x] << 4) | (indices[x + 1] & 0x0F));
      if (width & 1) {
        uint8_t& last = row[width / 2];
        last = static_cast<uint8_t>((last & 0x0F) | (indices[width - 1] << 4));
      }
      break;
    case 1:
      for (int x = 0; x < width; x += 8) {
        int n = width - x < 8 ? width - x : 8;
        uint8_t bits = 0;
        for (int i = 0; i < n; ++i) bits |= static_cast<uint8_t>((indices[x + i] != 0) << (7 - i));
        // Padding bits past the last pixel keep what they held.
        uint8_t keep = static_cast<uint8_t>(0xFF >> n);
        row[x / 8] = static_cast<uint8_t>((row[x / 8] & keep) | bits);
      }
      break;
    default:
      break;
  }
}

}  // namespace tess
