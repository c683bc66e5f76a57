// Supercompression masks. The frames of an animation are mostly alike, so the
// 24-bit comparison first tries whole rows with memcmp and only walks pixels
// in rows that changed; mask bytes are assembled eight pixels at a time.
#include "output/supercompress.h"

#include <algorithm>
#include <cstring>

namespace tess {
namespace {

constexpr uint8_t kBlackWhite[6] = {0, 0, 0, 255, 255, 255};

// Any depth, through the bounds-checked accessors: for frames that are not
// 24-bit, which no style produces today.
void CompareAnyDepth(const ImageBlock& frame, ImageBlock& previous, ImageBlock& mask) {
  for (int y = 0; y < frame.height(); ++y) {
    for (int x = 0; x < frame.width(); ++x) {
      Colour c = ImageGetPixel(frame, x, y);
      if (c == ImageGetPixel(previous, x, y)) {
        ImageSetPixel(mask, x, y, 1);
      } else {
        ImageSetPixel(previous, x, y, c);
      }
    }
  }
}

// One row of 24-bit pixels over `width` pixels; the mask row starts zeroed.
// Long because it is the inner loop of every supercompressed build.
void CompareRow24(const uint8_t* frame, uint8_t* previous, uint8_t* mask, int width) {
  size_t bytes = 3 * static_cast<size_t>(width);
  if (std::memcmp(frame, previous, bytes) == 0) {
    int full = width / 8;
    std::memset(mask, 0xFF, static_cast<size_t>(full));
    if (width % 8) mask[full] = static_cast<uint8_t>(0xFF00 >> (width % 8));
    return;
  }
  for (int x0 = 0; x0 < width; x0 += 8) {
    int end = std::min(width, x0 + 8);
    // Most of a changed row is still unchanged: eight equal pixels cost one
    // 24-byte comparison and need no copy.
    const size_t at = 3 * static_cast<size_t>(x0);
    if (end - x0 == 8 && std::memcmp(frame + at, previous + at, 24) == 0) {
      mask[x0 / 8] = 0xFF;
      continue;
    }
    uint8_t bits = 0;
    for (int x = x0; x < end; ++x) {
      const uint8_t* f = frame + 3 * static_cast<size_t>(x);
      uint8_t* p = previous + 3 * static_cast<size_t>(x);
      if (f[0] == p[0] && f[1] == p[1] && f[2] == p[2]) {
        bits |= static_cast<uint8_t>(0x80 >> (x - x0));
      } else {
        p[0] = f[0];
        p[1] = f[1];
        p[2] = f[2];
      }
    }
    mask[x0 / 8] = bits;
  }
}

// `index` is stored as ImageSetPixel stores a value: the low byte, the low
// nibble, or for one bit any non-zero value as 1.
// Mask bytes come whole: a clear byte skips eight pixels, and at eight bits a
// full one is a single store.
template <int kBits>
void ApplyRow(uint8_t* row, const uint8_t* mask, int width, int index) {
  for (int x = 0; x < width; ++x) {
    const uint8_t m = mask[x / 8];
    if (x % 8 == 0) {
      if (m == 0) {
        x += 7;
        continue;
      }
      if (kBits == 8 && m == 0xFF && width - x >= 8) {
        std::memset(row + x, index, 8);
        x += 7;
        continue;
      }
    }
    if (!(m & (0x80 >> (x % 8)))) continue;
    if constexpr (kBits == 8) {
      row[x] = static_cast<uint8_t>(index);
    } else if constexpr (kBits == 4) {
      uint8_t& b = row[x / 2];
      b = (x & 1) ? static_cast<uint8_t>((b & 0xF0) | (index & 0x0F))
                  : static_cast<uint8_t>((b & 0x0F) | ((index & 0x0F) << 4));
    } else {
      uint8_t bit = static_cast<uint8_t>(0x80 >> (x % 8));
      row[x / 8] = index != 0 ? static_cast<uint8_t>(row[x / 8] | bit)
                               : static_cast<uint8_t>(row[x / 8] & ~bit);
    }
  }
}

}  // namespace

ImageBlock SupercompressMask(const ImageBlock& frame, ImageBlock& previous) {
  if (!frame || !previous) return {};
  ImageBlock mask = ImageCreate(frame.width(), frame.height(), kBlackWhite, 1);
  if (!mask) return {};
  if (frame.bits() != 24 || previous.bits() != 24) {
    CompareAnyDepth(frame, previous, mask);
    return mask;
  }
  // Outside the previous frame nothing is unchanged, and the zeroed mask
  // already says so.
  int width = std::min(frame.width(), previous.width());
  int height = std::min(frame.height(), previous.height());
  for (int y = 0; y < height; ++y) CompareRow24(frame.Row(y), previous.Row(y), mask.Row(y), width);
  return mask;
}

void ApplySupercompressMask(ImageBlock& image, const ImageBlock& mask, int index) {
  if (!image || !mask || mask.bits() != 1) return;
  int width = std::min(image.width(), mask.width());
  int height = std::min(image.height(), mask.height());
  for (int y = 0; y < height; ++y) {
    uint8_t* row = image.Row(y);
    const uint8_t* bits = mask.Row(y);
    switch (image.bits()) {
      case 8: ApplyRow<8>(row, bits, width, index); break;
      case 4: ApplyRow<4>(row, bits, width, index); break;
      case 1: ApplyRow<1>(row, bits, width, index); break;
      default:
        for (int x = 0; x < width; ++x)
          if (bits[x / 8] & (0x80 >> (x % 8)))
            ImageSetPixel(image, x, y, static_cast<Colour>(index));
    }
  }
}

}  // namespace tess
