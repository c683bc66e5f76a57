// The rasteriser's coverage rules, pinned as small masks, and every shape
// checked pixel by pixel against a direct point-in-shape test.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "base/alloc.h"
#include "styles/raster.h"

namespace tess {
namespace {

// Records coverage as '#', and '2' where a pixel is reported twice.
class MaskSink final : public SpanSink {
 public:
  MaskSink(int w, int h) : rows(h, std::string(w, '.')) {}
  void Span(int32_t y, int32_t a, int32_t b) override {
    EXPECT_LT(a, b);
    for (int32_t x = a; x < b; ++x) rows[y][x] = rows[y][x] == '.' ? '#' : '2';
  }
  std::vector<std::string> rows;
};

Rect Window(int w, int h) { return {0, 0, w, h}; }

TEST(Raster, BoxCoversLeftToRightMinusOneAndIsNormalised) {
  MaskSink a(6, 4), b(6, 4);
  RasterRect({1, 1, 4, 3}, Window(6, 4), a);
  RasterRect({4, 3, 1, 1}, Window(6, 4), b);
  std::vector<std::string> want = {"......", ".###..", ".###..", "......"};
  EXPECT_EQ(a.rows, want);
  EXPECT_EQ(b.rows, want);
}

TEST(Raster, EllipsesSampleCentresInsideTheInscribedEllipse) {
  MaskSink five(5, 5), four(4, 4), wide(12, 9);
  RasterEllipse({0, 0, 5, 5}, Window(5, 5), five);
  RasterEllipse({0, 0, 4, 4}, Window(4, 4), four);
  RasterEllipse({1, 1, 11, 8}, Window(12, 9), wide);
  EXPECT_EQ(five.rows, (std::vector<std::string>{".###.", "#####", "#####", "#####", ".###."}));
  EXPECT_EQ(four.rows, (std::vector<std::string>{".##.", "####", "####", ".##."}));
  EXPECT_EQ(wide.rows, (std::vector<std::string>{
                           "............", "...######...", "..########..", ".##########.",
                           ".##########.", ".##########.", "..########..", "...######...",
                           "............"}));
}

TEST(Raster, PolygonsUseEvenOddAndIncludeOnlyLeftEdges) {
  MaskSink diamond(7, 7), ring(9, 9);
  Point d[] = {{3, 0}, {6, 3}, {3, 6}, {0, 3}};
  ASSERT_TRUE(RasterPolygon(d, 4, Window(7, 7), diamond));
  // Centres on the left edges are in, on the right edges out.
  EXPECT_EQ(diamond.rows, (std::vector<std::string>{"..#....", ".###...", "#####..", "#####..",
                                                    ".###...", "..#....", "......."}));
  Point r[] = {{0, 0}, {8, 0}, {8, 8}, {0, 8}, {0, 0}, {2, 2}, {2, 6}, {6, 6}, {6, 2}, {2, 2}};
  ASSERT_TRUE(RasterPolygon(r, 10, Window(9, 9), ring));
  EXPECT_EQ(ring.rows, (std::vector<std::string>{"########.", "########.", "##....##.", "##....##.",
                                                 "##....##.", "##....##.", "########.", "########.",
                                                 "........."}));
}

TEST(Raster, PolygonsSharingAnEdgeNeitherOverlapNorLeaveAGap) {
  MaskSink both(11, 9);
  Point upper[] = {{0, 0}, {10, 0}, {3, 8}, {0, 8}};
  Point lower[] = {{10, 0}, {10, 8}, {3, 8}};
  ASSERT_TRUE(RasterPolygon(upper, 4, Window(11, 9), both));
  ASSERT_TRUE(RasterPolygon(lower, 3, Window(11, 9), both));
  for (int y = 0; y < 8; ++y) EXPECT_EQ(both.rows[y], "##########.") << "row " << y;
}

TEST(Raster, PolygonReportsShortMemory) {
  MaskSink sink(4, 4);
  Point p[] = {{0, 0}, {4, 0}, {0, 4}};
  AllocFailureScope fail(0);
  EXPECT_FALSE(RasterPolygon(p, 3, Window(4, 4), sink));
}

TEST(Raster, ThickLinesAreRoundCappedAndExactlyWideWhenStraight) {
  MaskSink w3(10, 8), w2(10, 5);
  RasterLine({1, 1}, {7, 5}, 3, Window(10, 8), w3);
  RasterLine({1, 2}, {7, 2}, 2, Window(10, 5), w2);
  EXPECT_EQ(w3.rows, (std::vector<std::string>{"###.......", "####......", "######....",
                                               "..#####...", "...######.", ".....####.",
                                               "......###.", ".........."}));
  // An even width sits on the grid line: two rows, caps one pixel long.
  EXPECT_EQ(w2.rows, (std::vector<std::string>{"..........", "########..", "########..",
                                               "..........", ".........."}));
}

TEST(Raster, ThinLinesIncludeBothEndsAndIgnoreDirection) {
  MaskSink forward(10, 6), backward(10, 6), steep(4, 6);
  RasterLine({1, 1}, {8, 4}, 1, Window(10, 6), forward);
  RasterLine({8, 4}, {1, 1}, 0, Window(10, 6), backward);
  RasterLine({0, 0}, {2, 5}, 1, Window(4, 6), steep);
  EXPECT_EQ(forward.rows, (std::vector<std::string>{"..........", ".##.......", "...##.....",
                                                    ".....##...", ".......##.", ".........."}));
  EXPECT_EQ(backward.rows, forward.rows);
  EXPECT_EQ(steep.rows, (std::vector<std::string>{"#...", "#...", ".#..", ".#..", "..#.", "..#."}));
}

TEST(Raster, RoundedRectanglesCutTheirCorners) {
  MaskSink small(12, 10), full(6, 6), square(5, 3);
  RasterRoundRect({1, 1, 11, 9}, 6, 4, Window(12, 10), small);
  RasterRoundRect({0, 0, 6, 6}, 99, 99, Window(6, 6), full);  // clamped: the ellipse
  RasterRoundRect({0, 0, 5, 3}, 0, 4, Window(5, 3), square);
  EXPECT_EQ(small.rows, (std::vector<std::string>{
                            "............", "..########..", ".##########.", ".##########.",
                            ".##########.", ".##########.", ".##########.", ".##########.",
                            "..########..", "............"}));
  MaskSink ellipse(6, 6);
  RasterEllipse({0, 0, 6, 6}, Window(6, 6), ellipse);
  EXPECT_EQ(full.rows, ellipse.rows);
  EXPECT_EQ(square.rows, (std::vector<std::string>(3, "#####")));
}

TEST(Raster, SpansStayInsideTheClipWindow) {
  MaskSink sink(8, 8);
  Rect clip = {2, 3, 6, 7};
  RasterEllipse({-20, -20, 30, 30}, clip, sink);
  RasterLine({-50, 5}, {60, 5}, 9, clip, sink);
  RasterLine({-50, -40}, {60, 70}, 1, clip, sink);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 8; ++x)
      EXPECT_TRUE(sink.rows[y][x] == '.' || (x >= 2 && x < 6 && y >= 3 && y < 7)) << x << "," << y;
  MaskSink none(4, 4);
  RasterEllipse({0, 0, 4, 4 + 2 * kMaxCoordinate}, Window(4, 4), none);
  EXPECT_EQ(none.rows, std::vector<std::string>(4, "...."));
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
void ExpectMatches(const MaskSink& sink, Inside inside, const std::string& what) {
  for (size_t y = 0; y < sink.rows.size(); ++y)
    for (size_t x = 0; x < sink.rows[y].size(); ++x) {
      char want = inside(2 * int64_t(x) + 1, 2 * int64_t(y) + 1) ? '#' : '.';
      ASSERT_EQ(sink.rows[y][x], want) << what << " at " << x << "," << y;
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
    std::string tag = "round " + std::to_string(round);

    MaskSink e(kW, kH);
    RasterEllipse(box, Window(kW, kH), e);
    if (n.width() > 0 && n.height() > 0)
      ExpectMatches(e, [&](int64_t x, int64_t y) { return InEllipse(x, y, n); }, "ellipse " + tag);

    int ew = next(n.width() + 1), eh = next(n.height() + 1);
    MaskSink rr(kW, kH);
    RasterRoundRect(box, ew, eh, Window(kW, kH), rr);
    if (n.width() > 0 && n.height() > 0 && ew > 0 && eh > 0)
      ExpectMatches(rr, [&](int64_t x, int64_t y) { return InRoundRect(x, y, n, ew, eh); },
                    "round rect " + tag);

    Point a{next(50) - 5, next(45) - 5}, b{next(50) - 5, next(45) - 5};
    int w = 2 + next(9);
    MaskSink line(kW, kH);
    RasterLine(a, b, w, Window(kW, kH), line);
    ExpectMatches(line, [&](int64_t x, int64_t y) { return InCapsule(x, y, a, b, w); }, "line " + tag);

    std::vector<Point> poly(3 + next(6));
    for (Point& p : poly) p = {next(50) - 5, next(45) - 5};
    MaskSink pg(kW, kH);
    ASSERT_TRUE(RasterPolygon(poly.data(), static_cast<int>(poly.size()), Window(kW, kH), pg));
    ExpectMatches(pg, [&](int64_t x, int64_t y) { return InPolygon(x, y, poly); }, "polygon " + tag);
  }
}

}  // namespace
}  // namespace tess
