// Image blocks: every picture the engine renders, remaps or hands to a host is
// one packed device-independent bitmap (40-byte header, colour table for 1, 4
// and 8 bits, rows stored bottom-up and padded to 4 bytes). ImageBlock owns
// those exact bytes, so a Windows front end can copy them into a global-memory
// block unchanged, and caches the header fields it needs for fast row access.
//
// Invariants: a non-null block always has a valid header that matches its
// size; pixel coordinates are top-down; padding bytes are zero when created.
// Failures are null blocks or false results, never exceptions.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/alloc.h"

namespace tess {

// 0x00BBGGRR: red in the low byte. For palettised images the same value carries
// the colour index; 32-bit sprite pixels carry coverage in the top byte.
using Colour = uint32_t;
constexpr Colour kNoColour = 0xFFFFFFFFu;

constexpr uint8_t ColourRed(Colour c) { return static_cast<uint8_t>(c); }
constexpr uint8_t ColourGreen(Colour c) { return static_cast<uint8_t>(c >> 8); }
constexpr uint8_t ColourBlue(Colour c) { return static_cast<uint8_t>(c >> 16); }
constexpr Colour MakeColour(uint32_t r, uint32_t g, uint32_t b) {
  return (r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16);
}

// A palette outside image blocks: 256 red, green, blue triples.
constexpr size_t kPaletteBytes = 768;

constexpr uint32_t kDibHeaderSize = 40;

// The one place the row stride is computed: rows padded to a multiple of 4 bytes.
constexpr uint32_t RowStride(int bits, int32_t width) {
  return static_cast<uint32_t>(((static_cast<uint64_t>(bits) * static_cast<uint32_t>(width) + 31) / 32) * 4);
}

// 1 stays 1; 2-4 give 4; 5-8 give 8; 9-24 give 24; 0 and above 24 give 32.
int NormaliseBitCount(int bits);

class ImageBlock {
 public:
  ImageBlock() = default;
  ImageBlock(ImageBlock&&) noexcept = default;
  ImageBlock& operator=(ImageBlock&&) noexcept = default;
  ImageBlock(const ImageBlock&) = delete;
  ImageBlock& operator=(const ImageBlock&) = delete;

  explicit operator bool() const { return m_data != nullptr; }

  // The whole packed DIB.
  const uint8_t* data() const { return m_data.get(); }
  uint8_t* data() { return m_data.get(); }
  size_t size() const { return m_size; }

  int32_t width() const { return m_width; }
  int32_t height() const { return m_height; }
  int bits() const { return m_bits; }
  uint32_t stride() const { return m_stride; }

  // The colour table (blue, green, red, 0 per entry) and its entry count:
  // 2^bits for 1, 4 and 8 bits; null and 0 above.
  uint8_t* colour_table() { return m_bits <= 8 ? m_data.get() + kDibHeaderSize : nullptr; }
  const uint8_t* colour_table() const {
    return m_bits <= 8 ? m_data.get() + kDibHeaderSize : nullptr;
  }
  int colour_table_entries() const { return m_bits <= 8 ? 1 << m_bits : 0; }

  // Row y counted from the top of the picture. The caller keeps 0 <= y < height.
  uint8_t* Row(int y) { return m_pixels + static_cast<size_t>(m_height - 1 - y) * m_stride; }
  const uint8_t* Row(int y) const {
    return m_pixels + static_cast<size_t>(m_height - 1 - y) * m_stride;
  }

  // Takes a packed DIB made elsewhere (a host, a file). Null unless the header
  // is one this engine writes (size 40, positive sizes, 1/4/8/24/32 bits,
  // uncompressed) and `size` holds the header, table and rows.
  static ImageBlock FromBytes(const uint8_t* bytes, size_t size);

 private:
  friend ImageBlock ImageCreate(int32_t, int32_t, const uint8_t*, int);
  friend ImageBlock DuplicateGlobalBlock(const ImageBlock&);
  ImageBlock(Buffer<uint8_t> data, size_t size);

  Buffer<uint8_t> m_data;
  size_t m_size = 0;
  int32_t m_width = 0;
  int32_t m_height = 0;
  int m_bits = 0;
  uint32_t m_stride = 0;
  uint8_t* m_pixels = nullptr;
};

// Makes a zeroed block (black, or index 0 everywhere). `rgb_palette`, when
// given and the depth has a colour table, fills the table from its first 2^bits
// triples. Null for non-positive sizes, sizes past the engine's 1 GiB limit,
// or when memory is short.
ImageBlock ImageCreate(int32_t width, int32_t height, const uint8_t* rgb_palette, int bits);

// Copies out what is asked for; false for a null block.
bool ImageGetInfo(const ImageBlock& image, int32_t* width, int32_t* height, int* bits,
                  uint8_t* rgb_palette);

// Clears all 768 bytes, then copies min(2^bits, 256) entries as red, green,
// blue. Returns the number copied: 0 above 8 bits.
int ImageGetPalette(const ImageBlock& image, uint8_t* rgb_palette);

// Top-down coordinates; kNoColour (-1) outside the picture.
Colour ImageGetPixel(const ImageBlock& image, int x, int y);
// Ignores coordinates outside the picture.
void ImageSetPixel(ImageBlock& image, int x, int y, Colour value);

// Pixel by pixel through get/set, so clipping and depth conversion follow
// their rules. Always true.
bool ImageCopyRect(ImageBlock& dest, int dx, int dy, const ImageBlock& source, int sx, int sy,
                   int width, int height);

// dest = A * (255 - a) / 255 + B * a / 255 per channel, a read from `alpha`.
bool ImageBlend(ImageBlock& dest, int dx, int dy, const ImageBlock& a_image, int ax, int ay,
                int width, int height, const ImageBlock& b_image, int bx, int by,
                const ImageBlock& alpha, int mx, int my);

// A byte-for-byte copy; null when the source is null or memory is short.
ImageBlock DuplicateGlobalBlock(const ImageBlock& image);

// Smallest GIF-style bit count (1..8) that holds `colours` entries.
int BitsForColours(int colours);

// Stable bubble sort of the first `count` triples by
// R*30/100 + G*59/100 + B*11/100 (terms divided separately).
void SortPaletteByLuminance(uint8_t* rgb_palette, int count, bool ascending);

// The luminance used by sorting, the 1-bit remap and black-and-white dither.
constexpr int Luminance(int r, int g, int b) { return r * 30 / 100 + g * 59 / 100 + b * 11 / 100; }

}  // namespace tess
