// Error-diffusion remaps. Colour output (4 and 8 bits) keeps three int16
// values per pixel (one per channel) for the rows being diffused and the row
// after them; black-and-white output dithers a gray copy of the frame in
// place. Both give the result of visiting the stored rows in order, bottom
// line first, each pixel left to right.
#include "output/remap.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "output/pixel_rows.h"

// The per-pixel step of the colour dither must be inlined into the loop that
// runs two rows side by side, or the two chains cannot overlap.
#if defined(__GNUC__)
#define TESS_ALWAYS_INLINE __attribute__((always_inline))
#else
#define TESS_ALWAYS_INLINE
#endif

namespace tess {
namespace {

inline int Clamp255(int v) { return v < 1 ? 0 : v > 254 ? 255 : v; }

// Adds one diffused share to an int16 value. Bound: every error is a clamped
// value minus a palette value, so |error| <= 255; a stored value is a source
// byte plus 3/16, 5/16 and 1/16 of three errors from the row before, each
// share rounded down, so it stays within -145..399, and with the 7/16 share
// from the left (added in int) within -257..510: far inside int16.
inline void AddShare(int16_t& value, int share) { value = static_cast<int16_t>(value + share); }

// Adds a row of bytes to a row of int16 values. They never overlap; saying so
// (__restrict, which every compiler we build with knows) and working in
// fixed blocks of 16 lets the compiler vectorise the loop.
void AddBytes(int16_t* __restrict values, const uint8_t* __restrict bytes, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16)
    for (size_t k = 0; k < 16; ++k) AddShare(values[i + k], bytes[i + k]);
  for (; i < n; ++i) AddShare(values[i], bytes[i]);
}

// Adds to a gray value and holds it to 0..255.
inline void AddGray(uint8_t& value, int delta) { value = static_cast<uint8_t>(std::clamp(value + delta, 0, 255)); }

}  // namespace

void BuildToneCurve(int brightness, int contrast, uint8_t* curve) {
  // Doubles keep extreme settings from overflowing; contrast 128 would make
  // the slope infinite.
  double slope = 256.0 / (256.0 - 2.0 * std::min(contrast, 127));
  double start = static_cast<double>(brightness) - std::min(contrast, 127);
  for (int i = 0; i < 256; ++i) {
    double v = start + i * slope;
    curve[i] = v > 254 ? 254 : v < 1 ? 1 : static_cast<uint8_t>(std::floor(v + 0.5));
  }
}

ImageBlock Remapper::Dither(const ImageBlock& source) {
  if (!source || m_bits == 0) return {};
  if (m_bits == 1) return DitherBlackWhite(source);
  return m_options.fast_remap ? DitherColour<true>(source) : DitherColour<false>(source);
}

// Error diffusion is a chain: each pixel waits for the share of the pixel on
// its left. To keep the processor busy, two stored rows are diffused side by
// side, the second two columns behind the first. By the time the second row
// reaches a column, the first row has made every contribution to it (from
// the columns left of, at and right of it), and the shares are plain integer
// additions, so the order in which they arrive cannot change any value: the
// result is that of one row after the other.
template <bool kFastRemap>
ImageBlock Remapper::DitherColour(const ImageBlock& source) {
  const int width = source.width(), height = source.height();
  const size_t row_values = 3 * static_cast<size_t>(width);
  ImageBlock out = ImageCreate(width, height, m_rgb, m_bits);
  Buffer<int16_t> errors = AllocBuffer<int16_t>(3 * row_values);
  Buffer<uint8_t> indices = AllocBuffer<uint8_t>(2 * static_cast<size_t>(width));
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(row_values);
  if (!out || !errors || !indices || !scratch) return {};

  // Chooses the index of pixel x of a row whose error values (blue, green,
  // red, as the stored bytes) are `current`, and spreads its error over the
  // row after it (`next`, null for the last row) and, through `carry`, over
  // pixel x + 1: the share to the right is held in registers, which keeps a
  // store and a load off the chain from one pixel to the next.
  auto diffuse = [&](int x, const int16_t* current, int16_t* next, uint8_t* row_indices,
                     int (&carry)[3]) TESS_ALWAYS_INLINE {
    const int16_t* e = current + 3 * x;
    const int c0 = Clamp255(e[0] + carry[0]), c1 = Clamp255(e[1] + carry[1]), c2 = Clamp255(e[2] + carry[2]);
    uint32_t entry;  // index | red << 8 | green << 16 | blue << 24
    if constexpr (kFastRemap) {
      const int index = m_matcher.Fast(c2, c1, c0);
      const uint8_t* p = m_rgb + 3 * index;
      entry = static_cast<uint32_t>(index) | static_cast<uint32_t>(p[0]) << 8 | static_cast<uint32_t>(p[1]) << 16 |
              static_cast<uint32_t>(p[2]) << 24;
    } else {
      entry = m_matcher.NearestEntryUnmemoised(c2, c1, c0);
    }
    row_indices[x] = static_cast<uint8_t>(entry);
    const int e0 = c0 - static_cast<int>(entry >> 24), e1 = c1 - static_cast<int>((entry >> 16) & 0xFF),
              e2 = c2 - static_cast<int>((entry >> 8) & 0xFF);
    // Shifts of negative errors are arithmetic, so shares round down.
    carry[0] = (e0 * 7) >> 4;
    carry[1] = (e1 * 7) >> 4;
    carry[2] = (e2 * 7) >> 4;
    if (!next) return;
    int16_t* n = next + 3 * x;
    if (x - 1 > 0) {  // column 0 never gets this share
      AddShare(n[-3], (e0 * 3) >> 4);
      AddShare(n[-2], (e1 * 3) >> 4);
      AddShare(n[-1], (e2 * 3) >> 4);
    }
    if (x + 1 < width) {
      AddShare(n[3], e0 >> 4);
      AddShare(n[4], e1 >> 4);
      AddShare(n[5], e2 >> 4);
    }
    AddShare(n[0], (e0 * 5) >> 4);
    AddShare(n[1], (e1 * 5) >> 4);
    AddShare(n[2], (e2 * 5) >> 4);
  };
  auto add_source = [&](int stored, int16_t* row) {
    AddBytes(row, BgrRow(source, height - 1 - stored, scratch.get()), row_values);
  };

  // Error rows of stored rows s, s + 1 and s + 2; all zero at the start.
  int16_t* first = errors.get();
  int16_t* second = first + row_values;
  int16_t* third = second + row_values;
  uint8_t* first_indices = indices.get();
  uint8_t* second_indices = first_indices + width;
  for (int stored = 0; stored < height; stored += 2) {
    add_source(stored, first);
    int first_carry[3] = {0, 0, 0}, second_carry[3] = {0, 0, 0};
    if (stored + 1 == height) {  // a last row on its own
      for (int x = 0; x < width; ++x) diffuse(x, first, nullptr, first_indices, first_carry);
      PackIndexRow(out, height - 1 - stored, first_indices);
      break;
    }
    add_source(stored + 1, second);
    int16_t* after_second = stored + 2 < height ? third : nullptr;
    for (int k = 0; k < width + 2; ++k) {
      if (k < width) diffuse(k, first, second, first_indices, first_carry);
      if (k >= 2) diffuse(k - 2, second, after_second, second_indices, second_carry);
    }
    PackIndexRow(out, height - 1 - stored, first_indices);
    PackIndexRow(out, height - 2 - stored, second_indices);
    // Row s + 2 starts with what row s + 1 passed on; the others are reused.
    std::memset(first, 0, row_values * sizeof(int16_t));
    std::memset(second, 0, row_values * sizeof(int16_t));
    std::swap(first, third);
  }
  return out;
}

ImageBlock Remapper::DitherBlackWhite(const ImageBlock& source) {
  const int width = source.width(), height = source.height();
  ImageBlock out = ImageCreate(width, height, m_rgb, m_bits);
  Buffer<uint8_t> gray = AllocBuffer<uint8_t>(static_cast<size_t>(width) * static_cast<size_t>(height));
  Buffer<uint8_t> indices = AllocBuffer<uint8_t>(static_cast<size_t>(width));
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(3 * static_cast<size_t>(width));
  if (!out || !gray || !indices || !scratch) return {};

  uint8_t curve[256];
  BuildToneCurve(m_options.dither_brightness, m_options.dither_contrast, curve);

  // Gray copy in stored row order, with the frame's darkest and brightest gray.
  int lowest = 255, highest = 0;
  for (int stored = 0; stored < height; ++stored) {
    const uint8_t* bgr = BgrRow(source, height - 1 - stored, scratch.get());
    uint8_t* g = gray.get() + static_cast<size_t>(stored) * width;
    for (int x = 0; x < width; ++x) {
      int v = Luminance(bgr[3 * x + 2], bgr[3 * x + 1], bgr[3 * x]);
      g[x] = static_cast<uint8_t>(v);
      lowest = std::min(lowest, v);
      highest = std::max(highest, v);
    }
  }
  const int threshold = (lowest + highest) / 2;

  for (int stored = 0; stored < height; ++stored) {
    uint8_t* g = gray.get() + static_cast<size_t>(stored) * width;
    uint8_t* n = stored + 1 < height ? g + width : nullptr;
    for (int x = 0; x < width; ++x) {
      const int value = curve[g[x]];
      const bool white = value > threshold;
      indices[x] = white ? 1 : 0;
      // Unlike the colour path the error is divided before it is weighted.
      const int e = (value - (white ? highest : lowest)) >> 4;
      if (n) {
        if (x + 1 < width) AddGray(n[x + 1], e);
        if (x > 0) AddGray(n[x - 1], 3 * e);
        AddGray(n[x], 5 * e);
      }
      if (x + 1 < width) AddGray(g[x + 1], 7 * e);
    }
    PackIndexRow(out, height - 1 - stored, indices.get());
  }
  return out;
}

}  // namespace tess
