// The shape effects' helpers: the turn sine's exact periodicity, the
// coverage grid and the wrapped painter against plain references, and what a
// slot paints with.
#include "styles/shape_paint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "draw/draw.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- turn sine

TEST(TurnSine, MatchesTheLibrarySineAndRepeatsBitForBitEveryTurn) {
  const std::vector<std::pair<int64_t, int64_t>> angles = {
      {0, 1}, {1, 4}, {1, 8}, {3, 8}, {5, 12}, {7, 7}, {-1, 3}, {123, 360}, {359, 360},
      {28151, 31680}, {-2500, 88}, {1, 3 * 32760}, {32759, 32760}, {17, 101}};
  for (auto [num, den] : angles) {
    SCOPED_TRACE(std::to_string(num) + "/" + std::to_string(den));
    // The reference angle reduced first, so only the sines' own errors count.
    const int64_t reduced = num - FloorDiv(num, den) * den;
    const double a = 2 * std::numbers::pi * static_cast<double>(reduced) / static_cast<double>(den);
    EXPECT_NEAR(TurnSine(num, den), std::sin(a), 1e-15);
    EXPECT_NEAR(TurnCosine(num, den), std::cos(a), 1e-15);
    // The loop rests on this: a whole turn later is the very same double.
    for (int64_t turns : {1, 7, -3}) {
      EXPECT_EQ(TurnSine(num + turns * den, den), TurnSine(num, den));
      EXPECT_EQ(TurnCosine(num + turns * den, den), TurnCosine(num, den));
    }
  }
  // Quarter turns are exact, so a sway of whole pixels lands on them.
  EXPECT_EQ(TurnSine(0, 88), 0.0);
  EXPECT_EQ(TurnSine(22, 88), 1.0);
  EXPECT_EQ(TurnSine(44, 88), 0.0);
  EXPECT_EQ(TurnSine(66, 88), -1.0);
  EXPECT_EQ(TurnCosine(0, 5), 1.0);
}

// ---------------------------------------------------------------- coverage

// The reference: every quarter-pixel sample counted one by one.
class SampleCounter final : public SpanSink {
 public:
  SampleCounter(int32_t left, int32_t top, int32_t width, int32_t height)
      : m_left(left), m_top(top), m_width(width), counts(static_cast<size_t>(width * height)) {}
  void Span(int32_t y, int32_t x_begin, int32_t x_end) override {
    for (int32_t x = x_begin; x < x_end; ++x)
      counts[static_cast<size_t>((FloorDiv(y, 4) - m_top) * m_width + FloorDiv(x, 4) - m_left)] += sign;
  }
  int32_t m_left, m_top, m_width;
  int sign = 1;
  std::vector<int> counts;
};

struct Shape {
  const char* name;
  Rect box;           // quarter pixels
  int32_t corner;     // 0 plain box, > 0 rounded, -1 ellipse, -2 star polygon
  Rect hole;          // cut out when not empty
};

void Draw(const Shape& s, const Rect& box, int32_t corner, const Rect& clip, SpanSink& sink) {
  if (corner == -1) return RasterEllipse(box, clip, sink);
  if (corner >= 0) return RasterRoundRect(box, corner, corner, clip, sink);
  const int32_t cx = (box.left + box.right) / 2, cy = (box.top + box.bottom) / 2;
  std::vector<Point> star;
  for (int i = 0; i < 10; ++i) {
    const double r = (i % 2 ? 0.4 : 1.0) * (box.right - box.left) / 2;
    star.push_back({cx + static_cast<int32_t>(r * TurnSine(i, 10)),
                    cy - static_cast<int32_t>(r * TurnCosine(i, 10))});
  }
  ASSERT_TRUE(RasterPolygon(star.data(), 10, clip, sink)) << s.name;
}

TEST(CoverageGrid, CountsEverySampleOfTheShapesAndTheirHoles) {
  const Shape shapes[] = {
      {"box on quarter edges", {-3, 5, 37, 22}, 0, {}},
      {"inside one pixel", {5, 5, 6, 7}, 0, {}},
      {"rounded", {-17, -9, 61, 30}, 24, {}},
      {"ellipse", {2, 3, 53, 41}, -1, {}},
      {"star", {-40, -40, 40, 40}, -2, {}},
      {"outline", {-13, 6, 90, 71}, 30, {-1, 18, 78, 59}},
      {"outline of a box", {0, 0, 64, 64}, 0, {2, 3, 61, 62}},
  };
  CoverageGrid grid;
  ASSERT_TRUE(grid.Reserve(40, 40));
  for (const Shape& s : shapes) {
    SCOPED_TRACE(s.name);
    const int32_t left = static_cast<int32_t>(FloorDiv(s.box.left, 4)), top = static_cast<int32_t>(FloorDiv(s.box.top, 4));
    const int32_t width = static_cast<int32_t>(FloorDiv(s.box.right + 3, 4)) - left;
    const int32_t height = static_cast<int32_t>(FloorDiv(s.box.bottom + 3, 4)) - top;
    grid.Begin(left, top, width, height);
    SampleCounter counter(left, top, width, height);
    Draw(s, s.box, s.corner, grid.SubpixelClip(), grid);
    Draw(s, s.box, s.corner, grid.SubpixelClip(), counter);
    if (s.hole.width() > 0) {
      grid.Subtract(true);
      counter.sign = -1;
      Draw(s, s.hole, s.corner > 0 ? s.corner - 12 : s.corner, grid.SubpixelClip(), grid);
      Draw(s, s.hole, s.corner > 0 ? s.corner - 12 : s.corner, grid.SubpixelClip(), counter);
    }
    grid.Finish();
    int partial = 0;
    for (int32_t r = 0; r < height; ++r)
      for (int32_t x = 0; x < width; ++x) {
        const int expected = counter.counts[static_cast<size_t>(r * width + x)];
        ASSERT_EQ(grid.Row(r)[x], expected) << "pixel " << x << ", " << r;
        partial += expected > 0 && expected < kFullCoverage;
      }
    EXPECT_GT(partial, 0);  // the edges are smooth, not all-or-nothing
  }
}

// ---------------------------------------------------------------- wrapped paint

ImageBlock Noise(int32_t w, int32_t h, uint32_t seed) { return testing::NoiseImage(w, h, seed); }

bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

TEST(PaintCoverageWrap, MatchesThePlainPainterAcrossEdgesAndWindowsWiderThanTheTile) {
  struct Case {
    const char* name;
    int32_t tile_w, tile_h;
    Rect box;  // quarter pixels
    int32_t opacity;
    bool picture;
  };
  const Case cases[] = {
      {"inside", 37, 29, {10, 13, 90, 70}, 255, false},
      {"over the right and bottom", 37, 29, {101, 90, 170, 140}, 200, false},
      {"over the left and top", 37, 29, {-30, -41, 35, 20}, 255, true},
      {"wider than the tile", 17, 16, {-9, 3, 150, 60}, 97, false},
      {"picture, translucent", 31, 23, {-50, 60, 70, 121}, 130, true},
  };
  CoverageGrid grid;
  ASSERT_TRUE(grid.Reserve(64, 64));
  const ImageBlock picture = Noise(13, 11, 7);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const int32_t left = static_cast<int32_t>(FloorDiv(c.box.left, 4)), top = static_cast<int32_t>(FloorDiv(c.box.top, 4));
    grid.Begin(left, top, static_cast<int32_t>(FloorDiv(c.box.right + 3, 4)) - left,
               static_cast<int32_t>(FloorDiv(c.box.bottom + 3, 4)) - top);
    RasterRoundRect(c.box, 20, 20, grid.SubpixelClip(), grid);
    grid.Finish();
    CoverageInk ink{0x3366CC, c.picture ? &picture : nullptr, left + 2, top - 1, c.opacity};
    ImageBlock fast = Noise(c.tile_w, c.tile_h, 99), plain = Noise(c.tile_w, c.tile_h, 99);
    const ImageBlock before = Noise(c.tile_w, c.tile_h, 99);
    PaintCoverageWrap(fast, grid, ink);
    PaintCoverageWrapPlain(plain, grid, ink);
    EXPECT_TRUE(SameBytes(fast, plain));
    EXPECT_FALSE(SameBytes(fast, before));
  }
}

// ---------------------------------------------------------------- slot paint

TEST(SlotPaint, FlatColoursStayFlatAndOtherFillsAreRenderedOnceAtTheSize) {
  FillDescriptor simple;
  simple.colour = 0x123456;
  SlotPaint paint;
  ASSERT_TRUE(MakeSlotPaint(simple, 20, 10, paint));
  EXPECT_EQ(paint.colour, 0x123456u);
  EXPECT_FALSE(paint.picture);

  FillDescriptor gradient = simple;
  gradient.kind = kFillGradient;
  ASSERT_TRUE(MakeSlotPaint(gradient, 20, 10, paint));
  ASSERT_TRUE(paint.picture);
  EXPECT_EQ(paint.picture.width(), 20);
  EXPECT_EQ(paint.picture.height(), 10);
  EXPECT_NE(ImageGetPixel(paint.picture, 0, 5), ImageGetPixel(paint.picture, 19, 5));

  // A record that cannot render paints its colour rather than failing.
  gradient.gradient.grad_type = 77;
  ASSERT_TRUE(MakeSlotPaint(gradient, 20, 10, paint));
  EXPECT_FALSE(paint.picture);

  gradient.gradient.grad_type = kGradientLinear;
  AllocFailureScope fail(0, true);
  EXPECT_FALSE(MakeSlotPaint(gradient, 20, 10, paint));
}

}  // namespace
}  // namespace tess
