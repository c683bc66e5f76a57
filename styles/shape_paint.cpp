// The shape effects' shared helpers. Sections: turn sine · coverage ·
// wrapped paint · slot paint.
#include "styles/shape_paint.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "draw/draw.h"
#include "fills/fill_render.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- turn sine

constexpr double kHalfPi = 1.5707963267948966;

// Taylor series for |x| <= pi/4, nested so that each step is one division by
// an exact constant, one multiplication and one subtraction. Terms up to x^17
// (x^18 for the cosine) leave an error below 1e-19, far under the last bit.
double SinSeries(double x) {
  const double x2 = x * x;
  double t = 1.0;
  for (int n = 17; n >= 3; n -= 2) t = 1.0 - x2 / static_cast<double>(n * (n - 1)) * t;
  return x * t;
}

double CosSeries(double x) {
  const double x2 = x * x;
  double t = 1.0;
  for (int n = 18; n >= 2; n -= 2) t = 1.0 - x2 / static_cast<double>(n * (n - 1)) * t;
  return t;
}

struct SinCos {
  double sin, cos;
};

SinCos TurnSinCos(int64_t num, int64_t den) {
  assert(den > 0);
  const int64_t r = num - FloorDiv(num, den) * den;  // 0 <= r < den
  const int64_t quadrant = 4 * r / den;
  const int64_t s = 4 * r - quadrant * den;  // position in the quadrant, 0 <= s < den
  // Each half of a quadrant is taken from its own end so the series always
  // sees an angle of at most pi/4.
  double sin_a, cos_a;
  if (2 * s <= den) {
    const double a = kHalfPi * static_cast<double>(s) / static_cast<double>(den);
    sin_a = SinSeries(a);
    cos_a = CosSeries(a);
  } else {
    const double b = kHalfPi * static_cast<double>(den - s) / static_cast<double>(den);
    sin_a = CosSeries(b);
    cos_a = SinSeries(b);
  }
  switch (quadrant) {
    case 0: return {sin_a, cos_a};
    case 1: return {cos_a, -sin_a};
    case 2: return {-sin_a, -cos_a};
    default: return {-cos_a, sin_a};
  }
}

}  // namespace

double TurnSine(int64_t num, int64_t den) { return TurnSinCos(num, den).sin; }
double TurnCosine(int64_t num, int64_t den) { return TurnSinCos(num, den).cos; }

// ---------------------------------------------------------------- coverage

bool CoverageGrid::Reserve(int32_t width, int32_t height) {
  const size_t cells = (static_cast<size_t>(std::max(width, 1)) + 1) * static_cast<size_t>(std::max(height, 1));
  if (cells <= m_capacity) return true;
  m_cells = AllocBuffer<int16_t>(cells);
  m_capacity = m_cells ? cells : 0;
  return static_cast<bool>(m_cells);
}

void CoverageGrid::Begin(int32_t left, int32_t top, int32_t width, int32_t height) {
  assert(width > 0 && height > 0);
  assert((static_cast<size_t>(width) + 1) * static_cast<size_t>(height) <= m_capacity);
  m_left = left, m_top = top, m_width = width, m_height = height;
  m_sign = 1;
  std::fill(m_cells.get(), m_cells.get() + Stride() * static_cast<size_t>(height), int16_t{0});
}

Rect CoverageGrid::SubpixelClip() const {
  return {kSubpixels * m_left, kSubpixels * m_top, kSubpixels * (m_left + m_width),
          kSubpixels * (m_top + m_height)};
}

// A span of quarter pixels covers part of its first and last pixel and all of
// the ones between; the middle is one difference pair, whatever its length.
void CoverageGrid::Span(int32_t y, int32_t x_begin, int32_t x_end) {
  const int32_t r = (y - kSubpixels * m_top) / kSubpixels;
  int16_t* row = m_cells.get() + static_cast<size_t>(r) * Stride();
  const int32_t a = x_begin - kSubpixels * m_left, b = x_end - kSubpixels * m_left;
  const int32_t first = a / kSubpixels, last = (b - 1) / kSubpixels;
  if (first == last) {
    Add(row, first, m_sign * (b - a));
    return;
  }
  Add(row, first, m_sign * (kSubpixels * (first + 1) - a));
  if (last > first + 1) {
    row[first + 1] = static_cast<int16_t>(row[first + 1] + m_sign * kSubpixels);
    row[last] = static_cast<int16_t>(row[last] - m_sign * kSubpixels);
  }
  Add(row, last, m_sign * (b - kSubpixels * last));
}

void CoverageGrid::Finish() {
  for (int32_t r = 0; r < m_height; ++r) {
    int16_t* row = m_cells.get() + static_cast<size_t>(r) * Stride();
    int32_t sum = 0;
    for (int32_t x = 0; x < m_width; ++x) {
      sum += row[x];
      row[x] = static_cast<int16_t>(std::clamp(sum, 0, kFullCoverage));
    }
  }
}

// ---------------------------------------------------------------- wrapped paint

Colour InkColourAt(const CoverageInk& ink, int32_t x, int32_t y) {
  if (!ink.picture) return ink.colour;
  const ImageBlock& p = *ink.picture;
  const int32_t u = std::clamp(x - ink.origin_x, 0, p.width() - 1);
  const int32_t v = std::clamp(y - ink.origin_y, 0, p.height() - 1);
  const uint8_t* px = p.Row(v) + 3 * static_cast<size_t>(u);
  return MakeColour(px[2], px[1], px[0]);
}

namespace {

// Calls run(target_x, window_x, count) for the pieces of a window row that
// stay contiguous in the target.
template <class Run>
void ForEachWrappedPiece(int32_t left, int32_t length, int32_t target_width, Run run) {
  int32_t tx = WrapIndex(left, target_width);
  for (int32_t sx = 0; sx < length;) {
    const int32_t count = std::min(length - sx, target_width - tx);
    run(tx, sx, count);
    sx += count;
    tx = 0;
  }
}

// The per-coverage terms of a flat colour: alpha and c * a / 255 per channel.
struct FlatInk {
  uint8_t alpha[kFullCoverage + 1];
  uint8_t term[kFullCoverage + 1][3];
  uint8_t bgr[3];
};

void PrepareFlatInk(FlatInk& flat, Colour colour, int32_t opacity) {
  flat.bgr[0] = ColourBlue(colour), flat.bgr[1] = ColourGreen(colour), flat.bgr[2] = ColourRed(colour);
  for (int c = 0; c <= kFullCoverage; ++c) {
    const unsigned a = static_cast<unsigned>(c * opacity / kFullCoverage);
    flat.alpha[c] = static_cast<uint8_t>(a);
    for (int ch = 0; ch < 3; ++ch) flat.term[c][ch] = static_cast<uint8_t>(flat.bgr[ch] * a / 255);
  }
}

// Long because it is the per-pixel loop of every shape: coverage, alpha and
// the three channel mixes stay together.
void FlatRun(uint8_t* t, const int16_t* cov, int32_t count, const FlatInk& ink) {
  for (int32_t i = 0; i < count; ++i, t += 3) {
    const int c = cov[i];
    if (c == 0) continue;
    const unsigned a = ink.alpha[c];
    if (a == 255) {
      t[0] = ink.bgr[0], t[1] = ink.bgr[1], t[2] = ink.bgr[2];
      continue;
    }
    const unsigned rest = 255 - a;
    t[0] = static_cast<uint8_t>(ink.term[c][0] + t[0] * rest / 255);
    t[1] = static_cast<uint8_t>(ink.term[c][1] + t[1] * rest / 255);
    t[2] = static_cast<uint8_t>(ink.term[c][2] + t[2] * rest / 255);
  }
}

void PictureRun(uint8_t* t, const int16_t* cov, int32_t count, const ImageBlock& picture,
                int32_t u, int32_t v, int32_t opacity) {
  const uint8_t* src = picture.Row(std::clamp(v, 0, picture.height() - 1));
  const int32_t last = picture.width() - 1;
  for (int32_t i = 0; i < count; ++i, t += 3) {
    const int c = cov[i];
    if (c == 0) continue;
    const unsigned a = static_cast<unsigned>(c * opacity / kFullCoverage);
    const uint8_t* s = src + 3 * static_cast<size_t>(std::clamp(u + i, 0, last));
    const unsigned rest = 255 - a;
    for (int ch = 0; ch < 3; ++ch) t[ch] = static_cast<uint8_t>(s[ch] * a / 255 + t[ch] * rest / 255);
  }
}

}  // namespace

void PaintCoverageWrap(ImageBlock& target, const CoverageGrid& grid, const CoverageInk& ink) {
  if (!target || target.bits() != 24) return PaintCoverageWrapPlain(target, grid, ink);
  const int32_t opacity = std::clamp(ink.opacity, 0, 255);
  FlatInk flat;
  if (!ink.picture) PrepareFlatInk(flat, ink.colour, opacity);
  for (int32_t r = 0; r < grid.height(); ++r) {
    const int32_t y = grid.top() + r;
    uint8_t* row = target.Row(WrapIndex(y, target.height()));
    const int16_t* cov = grid.Row(r);
    ForEachWrappedPiece(grid.left(), grid.width(), target.width(), [&](int32_t tx, int32_t sx, int32_t n) {
      uint8_t* t = row + 3 * static_cast<size_t>(tx);
      if (!ink.picture)
        FlatRun(t, cov + sx, n, flat);
      else
        PictureRun(t, cov + sx, n, *ink.picture, grid.left() + sx - ink.origin_x, y - ink.origin_y,
                   opacity);
    });
  }
}

void PaintCoverageWrapPlain(ImageBlock& target, const CoverageGrid& grid, const CoverageInk& ink) {
  if (!target) return;
  const int32_t opacity = std::clamp(ink.opacity, 0, 255);
  for (int32_t r = 0; r < grid.height(); ++r) {
    for (int32_t x = 0; x < grid.width(); ++x) {
      const int c = grid.Row(r)[x];
      if (c == 0) continue;
      const unsigned a = static_cast<unsigned>(c * opacity / kFullCoverage);
      const int32_t gx = grid.left() + x, gy = grid.top() + r;
      const int32_t tx = WrapIndex(gx, target.width()), ty = WrapIndex(gy, target.height());
      const Colour s = InkColourAt(ink, gx, gy), d = ImageGetPixel(target, tx, ty);
      Colour out = 0;
      for (int shift = 0; shift < 24; shift += 8) {
        const unsigned sc = (s >> shift) & 0xFF, dc = (d >> shift) & 0xFF;
        out |= (sc * a / 255 + dc * (255 - a) / 255) << shift;
      }
      ImageSetPixel(target, tx, ty, out);
    }
  }
}

// ---------------------------------------------------------------- slot paint

bool MakeSlotPaint(const FillDescriptor& fill, int32_t width, int32_t height, SlotPaint& paint) {
  paint.colour = fill.colour;
  paint.picture = {};
  if (fill.kind == kFillSimple) return true;
  if (fill.kind == kFillGradient && fill.gradient.grad_type > kGradientConical) return true;
  paint.picture = RenderFill(fill, width, height);
  return static_cast<bool>(paint.picture);
}

}  // namespace tess
