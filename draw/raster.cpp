// Scan conversion of the filled shapes. Every test is made in doubled units,
// where a pixel centre (x + 0.5) is the odd integer 2x + 1 and box edges are
// even, so each coverage decision is an exact comparison of integers.
//
// Bit budget: coordinates are within +-2^15, so doubled coordinates and their
// differences stay below 2^17, products of two differences below 2^35, and
// the largest product, a line's w^2 * |d|^2 with w <= 2^11, below 2^58.
// Ellipse boxes are at most 65534 wide and tall, so a^2 * b^2 < 2^64 unsigned.
#include "draw/raster.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/alloc.h"

namespace tess {
namespace {

int64_t FloorDiv(int64_t a, int64_t b) {  // b > 0
  int64_t q = a / b;
  return (a % b != 0 && a < 0) ? q - 1 : q;
}

int64_t CeilDiv(int64_t a, int64_t b) {  // b > 0
  int64_t q = a / b;
  return (a % b != 0 && a > 0) ? q + 1 : q;
}

// Exact floor(sqrt(v)) for v < 2^62. The hardware square root only gives the
// starting guess; the corrections make the result exact whatever its rounding
// (x87 or SSE), so it cannot differ between builds.
int64_t ISqrt(uint64_t v) {
  uint64_t r = static_cast<uint64_t>(std::sqrt(static_cast<double>(v)));
  while (r > 0 && r * r > v) --r;
  while ((r + 1) * (r + 1) <= v) ++r;
  return static_cast<int64_t>(r);
}

bool InRange(int64_t c) { return c >= -kMaxCoordinate && c <= kMaxCoordinate; }

Rect Normalised(const Rect& r) {
  return {std::min(r.left, r.right), std::min(r.top, r.bottom), std::max(r.left, r.right),
          std::max(r.top, r.bottom)};
}

bool InRange(const Rect& r) {
  return InRange(r.left) && InRange(r.top) && InRange(r.right) && InRange(r.bottom);
}

// Reports the pixels of row y whose doubled centre 2x + 1 lies in [lo2, hi2].
void EmitCentres(SpanSink& sink, const Rect& clip, int32_t y, int64_t lo2, int64_t hi2) {
  int64_t first = std::max<int64_t>(CeilDiv(lo2 - 1, 2), clip.left);
  int64_t last = std::min<int64_t>(FloorDiv(hi2 - 1, 2), int64_t{clip.right} - 1);
  if (first <= last) sink.Span(y, static_cast<int32_t>(first), static_cast<int32_t>(last + 1));
}

// Rows whose doubled centre lies in [lo2, hi2], limited to the clip window.
struct RowRange {
  int32_t first;
  int32_t end;
};
RowRange RowsForCentres(const Rect& clip, int64_t lo2, int64_t hi2) {
  int64_t first = std::max<int64_t>(CeilDiv(lo2 - 1, 2), clip.top);
  int64_t end = std::min<int64_t>(FloorDiv(hi2 - 1, 2) + 1, clip.bottom);
  if (first >= end) return {0, 0};
  return {static_cast<int32_t>(first), static_cast<int32_t>(end)};
}

// Half-widths of an ellipse of doubled semi-axes a (across) and b (down):
// the largest X >= 0 with X^2 b^2 <= a^2 (b^2 - Y^2). Consecutive rows change
// the answer little, so it walks from the previous one instead of taking a
// root per row.
class EllipseRows {
 public:
  EllipseRows(int64_t a, int64_t b)
      : m_a2(static_cast<uint64_t>(a * a)), m_b2(static_cast<uint64_t>(b * b)), m_b(b) {}

  // -1 when the row misses the ellipse.
  int64_t HalfWidth(int64_t y2) {
    if (y2 < -m_b || y2 > m_b) return -1;
    uint64_t limit = m_a2 * (m_b2 - static_cast<uint64_t>(y2 * y2));
    uint64_t x = static_cast<uint64_t>(m_x);
    while (x > 0 && x * x * m_b2 > limit) --x;
    while ((x + 1) * (x + 1) * m_b2 <= limit) ++x;
    m_x = static_cast<int64_t>(x);
    return m_x;
  }

 private:
  uint64_t m_a2;
  uint64_t m_b2;
  int64_t m_b;
  int64_t m_x = 0;
};

// Narrows [lo, hi] to the integers q with low <= c q + e <= high; false when
// nothing is left.
bool Narrow(int64_t c, int64_t e, int64_t low, int64_t high, int64_t& lo, int64_t& hi) {
  if (c == 0) return low <= e && e <= high && lo <= hi;
  if (c < 0) {
    c = -c;
    e = -e;
    int64_t t = low;
    low = -high;
    high = -t;
  }
  lo = std::max(lo, CeilDiv(low - e, c));
  hi = std::min(hi, FloorDiv(high - e, c));
  return lo <= hi;
}

// Thick line in doubled units: endpoints e0, e1, radius w (the width).
class Capsule {
 public:
  Capsule(int64_t x0, int64_t y0, int64_t x1, int64_t y1, int64_t w)
      : m_x0(x0), m_y0(y0), m_x1(x1), m_y1(y1), m_w(w), m_dx(x1 - x0), m_dy(y1 - y0) {
    m_len2 = m_dx * m_dx + m_dy * m_dy;
    m_k = ISqrt(static_cast<uint64_t>(w * w) * static_cast<uint64_t>(m_len2));
  }

  int64_t Top() const { return std::min(m_y0, m_y1) - m_w; }
  int64_t Bottom() const { return std::max(m_y0, m_y1) + m_w; }

  // The doubled-centre extent [lo2, hi2] of row centre py within the window
  // [min2, max2]; false when the row misses the capsule there.
  bool Row(int64_t py, int64_t min2, int64_t max2, int64_t& lo2, int64_t& hi2) const {
    lo2 = std::numeric_limits<int64_t>::max();
    hi2 = std::numeric_limits<int64_t>::min();
    Disc(m_x1, m_y1, py, lo2, hi2);
    Disc(m_x0, m_y0, py, lo2, hi2);
    if (m_len2 > 0) {
      // Inside the band |cross| <= w |d| and between the two end normals.
      int64_t qy = py - m_y0;
      int64_t lo = min2 - m_x0, hi = max2 - m_x0;
      if (Narrow(-m_dy, m_dx * qy, -m_k, m_k, lo, hi) &&
          Narrow(m_dx, m_dy * qy, 0, m_len2, lo, hi)) {
        lo2 = std::min(lo2, lo + m_x0);
        hi2 = std::max(hi2, hi + m_x0);
      }
    }
    return lo2 <= hi2;
  }

 private:
  void Disc(int64_t cx, int64_t cy, int64_t py, int64_t& lo2, int64_t& hi2) const {
    int64_t s = m_w * m_w - (py - cy) * (py - cy);
    if (s < 0) return;
    int64_t k = ISqrt(static_cast<uint64_t>(s));
    lo2 = std::min(lo2, cx - k);
    hi2 = std::max(hi2, cx + k);
  }

  int64_t m_x0, m_y0, m_x1, m_y1, m_w, m_dx, m_dy;
  int64_t m_len2 = 0;
  int64_t m_k = 0;
};

void RasterThinLine(Point from, Point to, const Rect& clip, SpanSink& sink) {
  int64_t dx = int64_t{to.x} - from.x, dy = int64_t{to.y} - from.y;
  bool x_major = (dx < 0 ? -dx : dx) >= (dy < 0 ? -dy : dy);
  // Walk the major axis upwards so both directions give the same pixels.
  if ((x_major && dx < 0) || (!x_major && dy < 0)) {
    std::swap(from, to);
    dx = -dx;
    dy = -dy;
  }
  if (x_major) {
    int64_t run_y = 0, run_x = 0, run_end = 0;
    bool open = false;
    auto flush = [&] {
      if (open && run_y >= clip.top && run_y < clip.bottom) {
        int64_t a = std::max<int64_t>(run_x, clip.left), b = std::min<int64_t>(run_end, clip.right);
        if (a < b)
          sink.Span(static_cast<int32_t>(run_y), static_cast<int32_t>(a), static_cast<int32_t>(b));
      }
    };
    for (int64_t i = 0; i <= dx; ++i) {
      int64_t y = from.y + (dx == 0 ? 0 : FloorDiv(2 * i * dy + dx, 2 * dx));
      int64_t x = from.x + i;
      if (open && y == run_y) {
        run_end = x + 1;
        continue;
      }
      flush();
      open = true;
      run_y = y, run_x = x, run_end = x + 1;
    }
    flush();
  } else {
    for (int64_t i = 0; i <= dy; ++i) {
      int64_t y = from.y + i;
      int64_t x = from.x + FloorDiv(2 * i * dx + dy, 2 * dy);
      if (y >= clip.top && y < clip.bottom && x >= clip.left && x < clip.right)
        sink.Span(static_cast<int32_t>(y), static_cast<int32_t>(x), static_cast<int32_t>(x + 1));
    }
  }
}

}  // namespace

void RasterRect(const Rect& box, const Rect& clip, SpanSink& sink) {
  Rect b = Normalised(box);
  if (!InRange(b)) return;
  int32_t left = std::max(b.left, clip.left), right = std::min(b.right, clip.right);
  if (left >= right) return;
  for (int32_t y = std::max(b.top, clip.top); y < std::min(b.bottom, clip.bottom); ++y)
    sink.Span(y, left, right);
}

void RasterRoundRect(const Rect& box, int32_t corner_width, int32_t corner_height,
                     const Rect& clip, SpanSink& sink) {
  Rect b = Normalised(box);
  if (!InRange(b) || b.width() == 0 || b.height() == 0) return;
  int64_t ew = std::clamp<int64_t>(corner_width, 0, b.width());
  int64_t eh = std::clamp<int64_t>(corner_height, 0, b.height());
  if (ew == 0 || eh == 0) return RasterRect(b, clip, sink);

  // Doubled centres of the corner ellipses: the row's extent is the left
  // ellipse's left half, everything between the centres, and the right
  // ellipse's right half.
  int64_t left_c = 2 * int64_t{b.left} + ew, right_c = 2 * int64_t{b.right} - ew;
  int64_t top_c = 2 * int64_t{b.top} + eh, bottom_c = 2 * int64_t{b.bottom} - eh;
  EllipseRows corner(ew, eh);
  RowRange rows = RowsForCentres(clip, 2 * int64_t{b.top}, 2 * int64_t{b.bottom});
  for (int32_t y = rows.first; y < rows.end; ++y) {
    int64_t py = 2 * int64_t{y} + 1;
    int64_t half = ew;
    if (py < top_c)
      half = corner.HalfWidth(py - top_c);
    else if (py > bottom_c)
      half = corner.HalfWidth(py - bottom_c);
    if (half >= 0) EmitCentres(sink, clip, y, left_c - half, right_c + half);
  }
}

void RasterEllipse(const Rect& box, const Rect& clip, SpanSink& sink) {
  Rect b = Normalised(box);
  RasterRoundRect(b, b.width(), b.height(), clip, sink);
}

void RasterLine(Point from, Point to, int32_t width, const Rect& clip, SpanSink& sink) {
  if (!InRange(from.x) || !InRange(from.y) || !InRange(to.x) || !InRange(to.y)) return;
  if (width > kMaxLineWidth) return;
  if (width <= 1) return RasterThinLine(from, to, clip, sink);

  int64_t offset = width % 2;  // odd widths centre on pixel centres
  Capsule line(2 * int64_t{from.x} + offset, 2 * int64_t{from.y} + offset,
               2 * int64_t{to.x} + offset, 2 * int64_t{to.y} + offset, width);
  RowRange rows = RowsForCentres(clip, line.Top(), line.Bottom());
  int64_t min2 = 2 * int64_t{clip.left} + 1, max2 = 2 * int64_t{clip.right} - 1;
  for (int32_t y = rows.first; y < rows.end; ++y) {
    int64_t lo2, hi2;
    if (line.Row(2 * int64_t{y} + 1, min2, max2, lo2, hi2)) EmitCentres(sink, clip, y, lo2, hi2);
  }
}

bool RasterPolygon(const Point* points, int count, const Rect& clip, SpanSink& sink) {
  if (!points || count < 3) return true;
  int64_t top = points[0].y, bottom = points[0].y;
  for (int i = 0; i < count; ++i) {
    if (!InRange(points[i].x) || !InRange(points[i].y)) return true;
    top = std::min<int64_t>(top, points[i].y);
    bottom = std::max<int64_t>(bottom, points[i].y);
  }
  Buffer<int64_t> crossings = AllocBuffer<int64_t>(static_cast<size_t>(count));
  if (!crossings) return false;

  RowRange rows = RowsForCentres(clip, 2 * top, 2 * bottom);
  for (int32_t y = rows.first; y < rows.end; ++y) {
    int64_t py = 2 * int64_t{y} + 1;
    int n = 0;
    for (int i = 0; i < count; ++i) {
      Point a = points[i], b = points[(i + 1) % count];
      if (a.y > b.y) std::swap(a, b);
      // py is odd and vertex rows doubled are even, so no centre row passes
      // through a vertex and every crossing is counted once.
      if (!(2 * int64_t{a.y} < py && py < 2 * int64_t{b.y})) continue;
      int64_t dx = int64_t{b.x} - a.x, dy = int64_t{b.y} - a.y;
      // The first column whose centre is at or right of the crossing.
      int64_t num = 2 * int64_t{a.x} * dy + (py - 2 * int64_t{a.y}) * dx - dy;
      int64_t x = CeilDiv(num, 2 * dy);
      int j = n++;
      for (; j > 0 && crossings[j - 1] > x; --j) crossings[j] = crossings[j - 1];
      crossings[j] = x;
    }
    for (int i = 0; i + 1 < n; i += 2) {
      int64_t a = std::max<int64_t>(crossings[i], clip.left);
      int64_t b = std::min<int64_t>(crossings[i + 1], clip.right);
      if (a < b) sink.Span(y, static_cast<int32_t>(a), static_cast<int32_t>(b));
    }
  }
  return true;
}

}  // namespace tess
