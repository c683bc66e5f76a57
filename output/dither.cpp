// Error-diffusion remaps. Colour output (4 and 8 bits) carries three int16
// error values per pixel on two rows; black-and-white output dithers a gray
// copy of the frame in place. Both visit the stored rows in order, bottom line
// first, and each pixel left to right.
#include "output/remap.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "output/pixel_rows.h"

namespace tess {
namespace {

inline int Clamp255(int v) { return v < 1 ? 0 : v > 254 ? 255 : v; }

// Adds one diffused share to an int16 error value. Bound: a value starts as a
// source byte (0..255); every error is a clamped value minus a palette value,
// so |error| <= 255, and a value receives 7/16 of one error from its left and
// 3/16, 5/16 and 1/16 of three errors from the row before, each share rounded
// down: the value stays within -256..510, far inside int16.
inline void AddShare(int16_t& value, int share) { value = static_cast<int16_t>(value + share); }

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
  return m_bits == 1 ? DitherBlackWhite(source) : DitherColour(source);
}

// One long loop: the error spreading is the whole cost of a dither, and
// splitting it would hide the neighbour conditions that define the result.
ImageBlock Remapper::DitherColour(const ImageBlock& source) {
  const int width = source.width(), height = source.height();
  const size_t row_values = 3 * static_cast<size_t>(width);
  ImageBlock out = ImageCreate(width, height, m_rgb, m_bits);
  Buffer<int16_t> errors = AllocBuffer<int16_t>(2 * row_values);
  Buffer<uint8_t> indices = AllocBuffer<uint8_t>(static_cast<size_t>(width));
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(row_values);
  if (!out || !errors || !indices || !scratch) return {};

  // Error values follow the stored byte order: blue, green, red.
  int16_t* current = errors.get();
  int16_t* next = errors.get() + row_values;
  for (int stored = 0; stored < height; ++stored) {
    const int y = height - 1 - stored;
    const bool has_next = stored + 1 < height;
    const uint8_t* bgr = BgrRow(source, y, scratch.get());
    for (size_t i = 0; i < row_values; ++i) AddShare(current[i], bgr[i]);

    for (int x = 0; x < width; ++x) {
      int16_t* e = current + 3 * x;
      const int c[3] = {Clamp255(e[0]), Clamp255(e[1]), Clamp255(e[2])};
      const int index = Pick(c[2], c[1], c[0]);
      indices[x] = static_cast<uint8_t>(index);
      const uint8_t* p = m_rgb + 3 * index;
      const int error[3] = {c[0] - p[2], c[1] - p[1], c[2] - p[0]};
      for (int k = 0; k < 3; ++k) {
        // Shifts of negative errors are arithmetic, so shares round down.
        if (x + 1 < width) AddShare(e[3 + k], (error[k] * 7) >> 4);
        if (!has_next) continue;
        int16_t* n = next + 3 * x + k;
        if (x - 1 > 0) AddShare(n[-3], (error[k] * 3) >> 4);  // column 0 never gets this share
        if (x + 1 < width) AddShare(n[3], error[k] >> 4);
        AddShare(n[0], (error[k] * 5) >> 4);
      }
    }
    PackIndexRow(out, y, indices.get());
    std::swap(current, next);
    std::memset(next, 0, row_values * sizeof(int16_t));
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
