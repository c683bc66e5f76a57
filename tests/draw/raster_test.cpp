// The rasteriser's coverage rules, pinned as small masks, and every shape
// checked pixel by pixel against a direct point-in-shape test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "base/alloc.h"
#include "draw/raster.h"

namespace tess {
namespace {

using Rows = std::vector<std::string>;

// Records coverage as '#', and '2' where a pixel is reported twice.
class MaskSink final : public SpanSink {
 public:
  MaskSink(int w, int h) : rows(h, std::string(w, '.')) {}
  void Span(int32_t y, int32_t a, int32_t b) override {
    EXPECT_LT(a, b);
    for (int32_t x = a; x < b; ++x) rows[y][x] = rows[y][x] == '.' ? '#' : '2';
  }
  Rows rows;
};

// The mask `draw(clip, sink)` leaves on a w x h window.
template <class Draw>
Rows Mask(int w, int h, Draw draw) {
  MaskSink sink(w, h);
  draw(Rect{0, 0, w, h}, sink);
  return sink.rows;
}

TEST(Raster, SmallShapesCoverExactlyTheirPixels) {
  // Boxes are normalised and cover left..right-1.
  EXPECT_EQ(Mask(6, 4, [](Rect c, SpanSink& s) { RasterRect({4, 3, 1, 1}, c, s); }),
            (Rows{"......", ".###..", ".###..", "......"}));
  // Ellipses take the pixels whose centres lie inside the inscribed ellipse.
  EXPECT_EQ(Mask(5, 5, [](Rect c, SpanSink& s) { RasterEllipse({0, 0, 5, 5}, c, s); }),
            (Rows{".###.", "#####", "#####", "#####", ".###."}));
  // Polygons: centres on left edges are in, on right edges out.
  Point d[] = {{3, 0}, {6, 3}, {3, 6}, {0, 3}};
  EXPECT_EQ(Mask(7, 7, [&](Rect c, SpanSink& s) { EXPECT_TRUE(RasterPolygon(d, 4, c, s)); }),
            (Rows{"..#....", ".###...", "#####..", "#####..", ".###...", "..#....", "......."}));
  // Thick lines are round-capped capsules.
  EXPECT_EQ(Mask(10, 8, [](Rect c, SpanSink& s) { RasterLine({1, 1}, {7, 5}, 3, c, s); }),
            (Rows{"###.......", "####......", "######....", "..#####...", "...######.", ".....####.",
                  "......###.", ".........."}));
  // Thin lines (width 0 or 1) include both ends and ignore direction.
  Rows forward = Mask(10, 6, [](Rect c, SpanSink& s) { RasterLine({1, 1}, {8, 4}, 1, c, s); });
  EXPECT_EQ(forward, (Rows{"..........", ".##.......", "...##.....", ".....##...", ".......##.", ".........."}));
  EXPECT_EQ(Mask(10, 6, [](Rect c, SpanSink& s) { RasterLine({8, 4}, {1, 1}, 0, c, s); }), forward);
  EXPECT_EQ(Mask(4, 6, [](Rect c, SpanSink& s) { RasterLine({0, 0}, {2, 5}, 1, c, s); }),
            (Rows{"#...", "#...", ".#..", ".#..", "..#.", "..#."}));
  // Corners larger than the box clamp to the ellipse.
  EXPECT_EQ(Mask(6, 6, [](Rect c, SpanSink& s) { RasterRoundRect({0, 0, 6, 6}, 99, 99, c, s); }),
            Mask(6, 6, [](Rect c, SpanSink& s) { RasterEllipse({0, 0, 6, 6}, c, s); }));
}

TEST(Raster, PolygonsSharingAnEdgeNeitherOverlapNorLeaveAGap) {
  MaskSink both(11, 9);
  Point upper[] = {{0, 0}, {10, 0}, {3, 8}, {0, 8}};
  Point lower[] = {{10, 0}, {10, 8}, {3, 8}};
  ASSERT_TRUE(RasterPolygon(upper, 4, {0, 0, 11, 9}, both));
  ASSERT_TRUE(RasterPolygon(lower, 3, {0, 0, 11, 9}, both));
  for (int y = 0; y < 8; ++y) EXPECT_EQ(both.rows[y], "##########.") << "row " << y;
  AllocFailureScope fail(0);
  EXPECT_FALSE(RasterPolygon(lower, 3, {0, 0, 11, 9}, both));
}

TEST(Raster, SpansStayInsideTheClipWindow) {
  MaskSink sink(8, 8);
  Rect clip = {2, 3, 6, 7};
  RasterEllipse({-20, -20, 30, 30}, clip, sink);
  RasterLine({-50, 5}, {60, 5}, 9, clip, sink);
  RasterLine({-50, -40}, {60, 70}, 1, clip, sink);
  RasterLine({3, -40}, {5, 60}, 1, clip, sink);  // steep and thin
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 8; ++x)
      EXPECT_TRUE(sink.rows[y][x] == '.' || (x >= 2 && x < 6 && y >= 3 && y < 7)) << x << "," << y;
  EXPECT_EQ(Mask(4, 4, [](Rect c, SpanSink& s) { RasterEllipse({0, 0, 4, 4 + 2 * kMaxCoordinate}, c, s); }),
            Rows(4, "...."));
}

// ---- Against direct point tests, in doubled units (centre = 2x + 1) ----

bool InEllipse(int64_t px, int64_t py, const Rect& b) {
  int64_t a = b.right - b.left, h = b.bottom - b.top;
  int64_t x = px - (b.left + b.right), y = py - (b.top + b.bottom);
  return x * x * h * h + y * y * a * a <= a * a * h * h;
}

bool InRoundRect(int64_t px, int64_t py, const Rect& b, int64_t ew, int64_t eh) {
  if (px < 2 * b.left || px > 2 * b.right || py < 2 * b.top || py > 2 * b.bottom) return false;
  int64_t cx = px < 2 * b.left + ew ? 2 * b.left + ew : px > 2 * b.right - ew ? 2 * b.right - ew : px;
  int64_t cy = py < 2 * b.top + eh ? 2 * b.top + eh : py > 2 * b.bottom - eh ? 2 * b.bottom - eh : py;
  int64_t x = px - cx, y = py - cy;  // the corner ellipse's own offsets
  return x * x * eh * eh + y * y * ew * ew <= ew * ew * eh * eh;
}

bool InCapsule(int64_t px, int64_t py, Point a, Point b, int w) {
  int64_t o = w % 2;
  int64_t ax = 2 * a.x + o, ay = 2 * a.y + o, bx = 2 * b.x + o, by = 2 * b.y + o;
  int64_t dx = bx - ax, dy = by - ay, qx = px - ax, qy = py - ay;
  int64_t dot = dx * qx + dy * qy, len2 = dx * dx + dy * dy;
  if (dot <= 0) return qx * qx + qy * qy <= int64_t{w} * w;
  if (dot >= len2) return (px - bx) * (px - bx) + (py - by) * (py - by) <= int64_t{w} * w;
  int64_t cross = dx * qy - dy * qx;
  return cross * cross <= int64_t{w} * w * len2;
}

bool InPolygon(int64_t px, int64_t py, const std::vector<Point>& p) {
  bool inside = false;
  for (size_t i = 0; i < p.size(); ++i) {
    Point a = p[i], b = p[(i + 1) % p.size()];
    if (a.y > b.y) std::swap(a, b);
    if (!(2 * a.y < py && py < 2 * b.y)) continue;
    // The centre is right of (or on) the crossing when its 2D cross product says so.
    int64_t side = (px - 2 * a.x) * (b.y - a.y) - (py - 2 * a.y) * (b.x - a.x);
    if (side >= 0) inside = !inside;
  }
  return inside;
}

template <class Inside>
void ExpectMatches(const Rows& rows, Inside inside, const std::string& what) {
  for (size_t y = 0; y < rows.size(); ++y)
    for (size_t x = 0; x < rows[y].size(); ++x) {
      char want = inside(2 * int64_t(x) + 1, 2 * int64_t(y) + 1) ? '#' : '.';
      ASSERT_EQ(rows[y][x], want) << what << " at " << x << "," << y;
    }
}

TEST(Raster, RandomShapesMatchPointTests) {
  uint32_t s = 12345;
  auto next = [&](int n) {
    s = s * 1103515245u + 12345u;
    return static_cast<int>((s >> 8) % static_cast<uint32_t>(n));
  };
  const int kW = 40, kH = 33;
  for (int round = 0; round < 300; ++round) {
    Rect box{next(50) - 5, next(45) - 5, next(50) - 5, next(45) - 5};
    Rect n{std::min(box.left, box.right), std::min(box.top, box.bottom),
           std::max(box.left, box.right), std::max(box.top, box.bottom)};
    std::string tag = " round " + std::to_string(round);
    int ew = next(n.width() + 1), eh = next(n.height() + 1);
    // Degenerate boxes are drawn too (for the sanitizers), but not compared.
    Rows ellipse = Mask(kW, kH, [&](Rect c, SpanSink& k) { RasterEllipse(box, c, k); });
    Rows rr = Mask(kW, kH, [&](Rect c, SpanSink& k) { RasterRoundRect(box, ew, eh, c, k); });
    if (n.width() > 0 && n.height() > 0) {
      ExpectMatches(ellipse, [&](int64_t x, int64_t y) { return InEllipse(x, y, n); }, "ellipse" + tag);
      if (ew > 0 && eh > 0)
        ExpectMatches(rr, [&](int64_t x, int64_t y) { return InRoundRect(x, y, n, ew, eh); }, "round rect" + tag);
      else  // a zero corner is a plain box
        EXPECT_EQ(rr, Mask(kW, kH, [&](Rect c, SpanSink& k) { RasterRect(box, c, k); })) << "round rect" << tag;
    }
    Point a{next(50) - 5, next(45) - 5}, b{next(50) - 5, next(45) - 5};
    int w = 2 + next(9);
    ExpectMatches(Mask(kW, kH, [&](Rect c, SpanSink& k) { RasterLine(a, b, w, c, k); }),
                  [&](int64_t x, int64_t y) { return InCapsule(x, y, a, b, w); }, "line" + tag);
    std::vector<Point> poly(3 + next(6));
    for (Point& p : poly) p = {next(50) - 5, next(45) - 5};
    ExpectMatches(Mask(kW, kH, [&](Rect c, SpanSink& k) {
                    EXPECT_TRUE(RasterPolygon(poly.data(), static_cast<int>(poly.size()), c, k));
                  }),
                  [&](int64_t x, int64_t y) { return InPolygon(x, y, poly); }, "polygon" + tag);
  }
}

}  // namespace
}  // namespace tess
