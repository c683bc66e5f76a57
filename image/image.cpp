// Image block creation, pixel access and the small block helpers.
#include "image/image.h"

#include <cstring>
#include <utility>

#include "base/bytes.h"

namespace tess {
namespace {

// Offsets of the BITMAPINFOHEADER fields within the block.
enum HeaderOffset : size_t {
  kHdrSize = 0,
  kHdrWidth = 4,
  kHdrHeight = 8,
  kHdrPlanes = 12,
  kHdrBitCount = 14,
  kHdrCompression = 16,
  kHdrImageSize = 20,
  kHdrXResolution = 24,
  kHdrYResolution = 28,
  kHdrColoursUsed = 32,
  kHdrColoursImportant = 36,
};

// Larger pictures are refused as if memory were short: no tile, sample or
// frame comes near it, and it keeps every size computation inside 32 bits.
constexpr uint64_t kMaxImageBytes = 1ull << 30;

constexpr uint8_t kBitMask[8] = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};

size_t TableEntries(int bits) { return bits <= 8 ? size_t{1} << bits : 0; }

}  // namespace

int NormaliseBitCount(int bits) {
  if (bits == 1) return 1;
  if (bits >= 2 && bits <= 4) return 4;
  if (bits >= 5 && bits <= 8) return 8;
  if (bits >= 9 && bits <= 24) return 24;
  return 32;
}

ImageBlock::ImageBlock(Buffer<uint8_t> data, size_t size) : m_data(std::move(data)), m_size(size) {
  const uint8_t* h = m_data.get();
  m_width = get_i32le(h + kHdrWidth);
  m_height = get_i32le(h + kHdrHeight);
  m_bits = get_u16le(h + kHdrBitCount);
  m_stride = RowStride(m_bits, m_width);
  m_pixels = m_data.get() + kDibHeaderSize + 4 * TableEntries(m_bits);
}

ImageBlock ImageBlock::FromBytes(const uint8_t* bytes, size_t size) {
  if (!bytes || size < kDibHeaderSize) return {};
  int32_t width = get_i32le(bytes + kHdrWidth);
  int32_t height = get_i32le(bytes + kHdrHeight);
  int bits = get_u16le(bytes + kHdrBitCount);
  if (get_u32le(bytes + kHdrSize) != kDibHeaderSize || width <= 0 || height <= 0 ||
      get_u32le(bytes + kHdrCompression) != 0 || NormaliseBitCount(bits) != bits)
    return {};
  uint64_t need = kDibHeaderSize + 4 * TableEntries(bits) +
                  static_cast<uint64_t>(RowStride(bits, width)) * static_cast<uint64_t>(height);
  if (need > kMaxImageBytes || size < need) return {};
  Buffer<uint8_t> data = AllocBuffer<uint8_t>(size);
  if (!data) return {};
  std::memcpy(data.get(), bytes, size);
  return ImageBlock(std::move(data), size);
}

ImageBlock ImageCreate(int32_t width, int32_t height, const uint8_t* rgb_palette, int bits) {
  bits = NormaliseBitCount(bits);
  if (width <= 0 || height <= 0) return {};
  uint64_t image_size = static_cast<uint64_t>(RowStride(bits, width)) * static_cast<uint64_t>(height);
  size_t entries = TableEntries(bits);
  uint64_t total = kDibHeaderSize + 4 * entries + image_size;
  if (total > kMaxImageBytes) return {};

  Buffer<uint8_t> data = AllocBuffer<uint8_t>(static_cast<size_t>(total));
  if (!data) return {};
  uint8_t* h = data.get();
  put_u32le(h + kHdrSize, kDibHeaderSize);
  put_i32le(h + kHdrWidth, width);
  put_i32le(h + kHdrHeight, height);
  put_u16le(h + kHdrPlanes, 1);
  put_u16le(h + kHdrBitCount, static_cast<uint16_t>(bits));
  put_u32le(h + kHdrCompression, 0);
  put_u32le(h + kHdrImageSize, static_cast<uint32_t>(image_size));
  put_i32le(h + kHdrXResolution, 0);
  put_i32le(h + kHdrYResolution, 0);
  put_u32le(h + kHdrColoursUsed, static_cast<uint32_t>(entries));
  put_u32le(h + kHdrColoursImportant, static_cast<uint32_t>(entries));
  if (rgb_palette && entries) {
    uint8_t* table = h + kDibHeaderSize;
    for (size_t i = 0; i < entries; ++i) {
      table[4 * i + 0] = rgb_palette[3 * i + 2];
      table[4 * i + 1] = rgb_palette[3 * i + 1];
      table[4 * i + 2] = rgb_palette[3 * i + 0];
      table[4 * i + 3] = 0;
    }
  }
  return ImageBlock(std::move(data), static_cast<size_t>(total));
}

bool ImageGetInfo(const ImageBlock& image, int32_t* width, int32_t* height, int* bits,
                  uint8_t* rgb_palette) {
  if (!image) return false;
  if (width) *width = image.width();
  if (height) *height = image.height();
  if (bits) *bits = image.bits();
  if (rgb_palette) ImageGetPalette(image, rgb_palette);
  return true;
}

int ImageGetPalette(const ImageBlock& image, uint8_t* rgb_palette) {
  std::memset(rgb_palette, 0, kPaletteBytes);
  if (!image || image.bits() > 8) return 0;
  int entries = image.colour_table_entries();
  const uint8_t* table = image.colour_table();
  for (int i = 0; i < entries; ++i) {
    rgb_palette[3 * i + 0] = table[4 * i + 2];
    rgb_palette[3 * i + 1] = table[4 * i + 1];
    rgb_palette[3 * i + 2] = table[4 * i + 0];
  }
  return entries;
}

Colour ImageGetPixel(const ImageBlock& image, int x, int y) {
  if (!image || x < 0 || y < 0 || x >= image.width() || y >= image.height()) return kNoColour;
  const uint8_t* row = image.Row(y);
  switch (image.bits()) {
    case 24: {
      const uint8_t* p = row + 3 * static_cast<size_t>(x);
      return MakeColour(p[2], p[1], p[0]);
    }
    case 32: {
      const uint8_t* p = row + 4 * static_cast<size_t>(x);
      return MakeColour(p[2], p[1], p[0]) | (static_cast<Colour>(p[3]) << 24);
    }
    case 8:
      return row[x];
    case 4: {
      uint8_t b = row[x / 2];
      return (x & 1) ? (b & 0x0F) : (b >> 4);
    }
    case 1:
      return (row[x / 8] & kBitMask[x % 8]) ? 1 : 0;
    default:
      return kNoColour;
  }
}

void ImageSetPixel(ImageBlock& image, int x, int y, Colour value) {
  if (!image || x < 0 || y < 0 || x >= image.width() || y >= image.height()) return;
  uint8_t* row = image.Row(y);
  switch (image.bits()) {
    case 24: {
      uint8_t* p = row + 3 * static_cast<size_t>(x);
      p[0] = ColourBlue(value);
      p[1] = ColourGreen(value);
      p[2] = ColourRed(value);
      break;
    }
    case 32: {
      uint8_t* p = row + 4 * static_cast<size_t>(x);
      p[0] = ColourBlue(value);
      p[1] = ColourGreen(value);
      p[2] = ColourRed(value);
      p[3] = static_cast<uint8_t>(value >> 24);
      break;
    }
    case 8:
      row[x] = static_cast<uint8_t>(value);
      break;
    case 4: {
      uint8_t& b = row[x / 2];
      b = (x & 1) ? static_cast<uint8_t>((b & 0xF0) | (value & 0x0F))
                  : static_cast<uint8_t>((b & 0x0F) | ((value & 0x0F) << 4));
      break;
    }
    case 1:
      if (value == 0)
        row[x / 8] &= static_cast<uint8_t>(~kBitMask[x % 8]);
      else
        row[x / 8] |= kBitMask[x % 8];
      break;
    default:
      break;
  }
}

bool ImageCopyRect(ImageBlock& dest, int dx, int dy, const ImageBlock& source, int sx, int sy,
                   int width, int height) {
  for (int j = 0; j < height; ++j)
    for (int i = 0; i < width; ++i)
      ImageSetPixel(dest, dx + i, dy + j, ImageGetPixel(source, sx + i, sy + j));
  return true;
}

bool ImageBlend(ImageBlock& dest, int dx, int dy, const ImageBlock& a_image, int ax, int ay,
                int width, int height, const ImageBlock& b_image, int bx, int by,
                const ImageBlock& alpha, int mx, int my) {
  for (int j = 0; j < height; ++j) {
    for (int i = 0; i < width; ++i) {
      // The alpha value is taken as the signed value the pixel read returns;
      // 64-bit products keep out-of-range values (such as -1 outside the
      // mask) from overflowing.
      int64_t a = static_cast<int32_t>(ImageGetPixel(alpha, mx + i, my + j));
      Colour ca = ImageGetPixel(a_image, ax + i, ay + j);
      Colour cb = ImageGetPixel(b_image, bx + i, by + j);
      Colour out = 0;
      for (int shift = 0; shift < 24; shift += 8) {
        int64_t va = (ca >> shift) & 0xFF;
        int64_t vb = (cb >> shift) & 0xFF;
        int64_t c = (va * (255 - a)) / 255 + (vb * a) / 255;
        out |= static_cast<Colour>(c & 0xFF) << shift;
      }
      ImageSetPixel(dest, dx + i, dy + j, out);
    }
  }
  return true;
}

ImageBlock DuplicateGlobalBlock(const ImageBlock& image) {
  if (!image || image.size() < 1) return {};
  Buffer<uint8_t> data = AllocBuffer<uint8_t>(image.size());
  if (!data) return {};
  std::memcpy(data.get(), image.data(), image.size());
  return ImageBlock(std::move(data), image.size());
}

int BitsForColours(int colours) {
  if (colours < 3) return 1;
  if (colours < 5) return 2;
  if (colours < 9) return 3;
  if (colours < 17) return 4;
  if (colours < 33) return 5;
  if (colours < 65) return 6;
  if (colours < 129) return 7;
  return 8;
}

void SortPaletteByLuminance(uint8_t* rgb_palette, int count, bool ascending) {
  bool swapped = true;
  while (swapped) {
    swapped = false;
    for (int i = 0; i + 1 < count; ++i) {
      uint8_t* p = rgb_palette + 3 * i;
      int first = Luminance(p[0], p[1], p[2]);
      int second = Luminance(p[3], p[4], p[5]);
      if (ascending ? second < first : second > first) {
        for (int c = 0; c < 3; ++c) std::swap(p[c], p[3 + c]);
        swapped = true;
      }
    }
  }
}

}  // namespace tess
