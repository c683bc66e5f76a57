// Error-diffusion remaps. Colour output (4 and 8 bits) keeps each row's
// errors, three int16 per pixel (one per channel), and lets the row after it
// take its shares from them; black-and-white output dithers a gray copy of
// the frame in place. Both give the result of visiting the stored rows in
// order, bottom line first, each pixel left to right, and pushing each share
// to its neighbour as soon as the pixel is chosen.
#include "output/remap.h"

#include <algorithm>
#include <cmath>

#include "output/pixel_rows.h"

namespace tess {
namespace {

inline int Clamp255(int v) { return v < 1 ? 0 : v > 254 ? 255 : v; }

// The colour dither gives what pushing 7/16, 3/16, 5/16 and 1/16 of each
// pixel's error (each rounded down) to its right and to the row after would
// give, but only the 7/16 share is pushed (the carry); each pixel pulls the
// other three shares from the row before's errors, which leaves the integer
// sums unchanged. The row before's errors are kept with a zero pixel at each
// end, whose shares are zero, so only column 0 (which never receives the
// 3/16 share) is a special case. Bounds: every error is a clamped value minus
// a palette value, so |error| <= 255, and a pixel's value (source byte plus
// three shares) stays within -144..396: int16 holds both.

// in[x] = source[x] + shares pulled from the errors `e` of the row before,
// for a whole row before it is diffused. No pointer overlaps another, which
// lets the compiler vectorise the loop; the fixed blocks of 16 let it do so
// at the cost model of -O2.
void PullRow(const uint8_t* __restrict source, const int16_t* __restrict e, int16_t* __restrict in, int width) {
  auto pulled = [&](int i) {
    return static_cast<int16_t>(source[i] + (e[i - 3] >> 4) + ((5 * e[i]) >> 4) + ((3 * e[i + 3]) >> 4));
  };
  const int n = 3 * width;
  int i = 3;
  for (; i + 16 <= n; i += 16)
    for (int k = 0; k < 16; ++k) in[i + k] = pulled(i + k);
  for (; i < n; ++i) in[i] = pulled(i);
  // Column 0 gets no 3/16 share, and the padding before it gives nothing.
  for (int k = 0; k < 3; ++k) in[k] = static_cast<int16_t>(source[k] + ((5 * e[k]) >> 4));
}

// The same for one pixel x > 0 of a row that is diffused before the row
// before is finished (DiffusePair).
inline int Pulled(const uint8_t* source, const int16_t* e, int i) {
  return source[i] + (e[i - 3] >> 4) + ((5 * e[i]) >> 4) + ((3 * e[i + 3]) >> 4);
}

// The carry of a row being diffused: 7/16 of the error of the pixel on the
// left, held in registers, which keeps a store and a load off the chain from
// one pixel to the next.
struct Carry {
  int blue = 0, green = 0, red = 0;
};

// Chooses the index of pixel x from its values (blue, green, red, as the
// stored bytes) plus the carry, writes the index and the pixel's errors and
// replaces the carry with this pixel's.
template <class Pick>
TESS_ALWAYS_INLINE inline void DiffusePixel(int x, int v0, int v1, int v2, Carry& carry, int16_t* e, uint8_t* indices,
                                            Pick& pick) {
  const int c0 = Clamp255(v0 + carry.blue), c1 = Clamp255(v1 + carry.green), c2 = Clamp255(v2 + carry.red);
  const uint32_t entry = pick(c2, c1, c0);  // index | red << 8 | green << 16 | blue << 24
  indices[x] = static_cast<uint8_t>(entry);
  const int e0 = c0 - static_cast<int>(entry >> 24), e1 = c1 - static_cast<int>((entry >> 16) & 0xFF),
            e2 = c2 - static_cast<int>((entry >> 8) & 0xFF);
  e[3 * x] = static_cast<int16_t>(e0);
  e[3 * x + 1] = static_cast<int16_t>(e1);
  e[3 * x + 2] = static_cast<int16_t>(e2);
  // Shifts of negative errors are arithmetic, so shares round down.
  carry.blue = (e0 * 7) >> 4;
  carry.green = (e1 * 7) >> 4;
  carry.red = (e2 * 7) >> 4;
}

// A row whose values are all pulled (PullRow): left to right.
template <class Pick>
void DiffuseRow(const int16_t* in, int16_t* e, uint8_t* indices, int width, Pick& pick) {
  Carry carry;
  for (int x = 0; x < width; ++x) DiffusePixel(x, in[3 * x], in[3 * x + 1], in[3 * x + 2], carry, e, indices, pick);
}

// DiffusePair needs three columns.
constexpr int kPairWidth = 3;

// Error diffusion is a chain: each pixel waits for the carry of the pixel on
// its left. To keep the processor busy, two rows are diffused side by side:
// row a, whose values are pulled beforehand, and row b, the row after it, two
// columns behind, pulling from a's errors as soon as they are made.
template <class Pick>
void DiffusePair(const int16_t* a_in, int16_t* a_e, uint8_t* a_indices, const uint8_t* b_source, int16_t* b_e,
                 uint8_t* b_indices, int width, Pick& pick) {
  Carry a, b;
  auto pixel_a = [&](int x) TESS_ALWAYS_INLINE {
    DiffusePixel(x, a_in[3 * x], a_in[3 * x + 1], a_in[3 * x + 2], a, a_e, a_indices, pick);
  };
  auto pixel_b = [&](int x) TESS_ALWAYS_INLINE {
    const int i = 3 * x;
    DiffusePixel(x, Pulled(b_source, a_e, i), Pulled(b_source, a_e, i + 1), Pulled(b_source, a_e, i + 2), b, b_e,
                 b_indices, pick);
  };
  pixel_a(0);
  pixel_a(1);
  pixel_a(2);
  // Column 0 gets no 3/16 share, and the padding before it gives nothing.
  DiffusePixel(0, b_source[0] + ((5 * a_e[0]) >> 4), b_source[1] + ((5 * a_e[1]) >> 4),
               b_source[2] + ((5 * a_e[2]) >> 4), b, b_e, b_indices, pick);
  for (int x = 3; x < width; ++x) {
    pixel_a(x);
    pixel_b(x - 2);
  }
  pixel_b(width - 2);
  pixel_b(width - 1);  // pulls from a's padding past the end
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

template <bool kFastRemap>
ImageBlock Remapper::DitherColour(const ImageBlock& source) {
  const int width = source.width(), height = source.height();
  const size_t row_values = 3 * static_cast<size_t>(width);
  ImageBlock out = ImageCreate(width, height, m_rgb, m_bits);
  // Two rows of errors with a zero pixel at each end, and one of values.
  Buffer<int16_t> rows = AllocBuffer<int16_t>(3 * row_values + 12);
  Buffer<uint8_t> indices = AllocBuffer<uint8_t>(2 * static_cast<size_t>(width));
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(row_values);
  if (!out || !rows || !indices || !scratch) return {};

  // The chosen entry with its colour: index | red << 8 | green << 16 | blue << 24.
  auto pick = [this](int r, int g, int b) TESS_ALWAYS_INLINE -> uint32_t {
    if constexpr (kFastRemap) {
      const int index = m_matcher.Fast(r, g, b);
      const uint8_t* p = m_rgb + 3 * index;
      return static_cast<uint32_t>(index) | static_cast<uint32_t>(p[0]) << 8 | static_cast<uint32_t>(p[1]) << 16 |
             static_cast<uint32_t>(p[2]) << 24;
    } else {
      return m_matcher.NearestEntryUnmemoised(r, g, b);
    }
  };
  auto source_row = [&](int stored) { return BgrRow(source, height - 1 - stored, scratch.get()); };

  // Errors of the row before the pair (all zero before the first row; the
  // second row of a pair overwrites them once the first row has pulled its
  // values) and of the pair's first row.
  int16_t* before = rows.get() + 3;
  int16_t* first = before + row_values + 6;
  int16_t* in = first + row_values + 3;
  uint8_t* first_indices = indices.get();
  uint8_t* second_indices = first_indices + width;
  for (int stored = 0; stored < height; stored += 2) {
    PullRow(source_row(stored), before, in, width);
    if (stored + 1 == height) {  // a last row on its own
      DiffuseRow(in, first, first_indices, width, pick);
      PackIndexRow(out, height - 1 - stored, first_indices);
      break;
    }
    if (width >= kPairWidth) {
      DiffusePair(in, first, first_indices, source_row(stored + 1), before, second_indices, width, pick);
    } else {
      DiffuseRow(in, first, first_indices, width, pick);
      PullRow(source_row(stored + 1), first, in, width);
      DiffuseRow(in, before, second_indices, width, pick);
    }
    PackIndexRow(out, height - 1 - stored, first_indices);
    PackIndexRow(out, height - 2 - stored, second_indices);
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
