// The engine's gradient request: its block layout, the proc's result slot,
// the three shapes against plain per-pixel versions of the documented
// formulas, and checksums that pin every platform to the same bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "base/bytes.h"
#include "output/palette.h"
#include "tests/support/golden.h"
#include "tests/support/test_support.h"
#include "textures/texture_engine.h"

namespace tess {
namespace {

GradientRequest Request(uint32_t shape, int32_t w, int32_t h, int32_t rotation = 0, int32_t cx = 0,
                        int32_t cy = 0) {
  GradientRequest r;
  r.shape = shape, r.width = w, r.height = h, r.rotation = rotation, r.centre_x = cx, r.centre_y = cy;
  r.start = 0x00204080, r.end = 0x00F0C010;
  return r;
}

// The formulas of texture_engine.h evaluated pixel by pixel, with the C
// library's sine standing in for the engine's table.
int ReferenceLevel(const GradientRequest& r, int64_t x, int64_t y) {
  const int64_t w = r.width, h = r.height;
  const int64_t cx = std::clamp(r.centre_x, -50, 50), cy = std::clamp(r.centre_y, -50, 50);
  const int64_t px = static_cast<int64_t>(w * (cx * 0.01 + 0.5));
  const int64_t py = static_cast<int64_t>(h * (0.5 - cy * 0.01));
  const int64_t corners[4][2] = {{0, 0}, {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}};
  if (r.shape == kGradientShapeLinear) {
    const double radians = (((r.rotation % 360) + 360) % 360) * 3.14159265358979323846 / 180;
    const int64_t c = std::lround(65536 * std::cos(radians)), s = std::lround(65536 * std::sin(radians));
    int64_t lo = INT64_MAX, hi = INT64_MIN;
    for (auto& k : corners) lo = std::min(lo, k[0] * c + k[1] * s), hi = std::max(hi, k[0] * c + k[1] * s);
    if (hi == lo) return 0;
    return std::min(255, static_cast<int>(static_cast<double>(x * c + y * s - lo) * (256.0 / (hi - lo))));
  }
  if (r.shape == kGradientShapeSquare) {
    auto m = [&](int64_t i, int64_t j) { return std::max(std::abs(i - px) * h, std::abs(j - py) * w); };
    int64_t most = 0;
    for (auto& k : corners) most = std::max(most, m(k[0], k[1]));
    return most == 0 ? 0 : static_cast<int>(std::min<int64_t>(255, 256 * m(x, y) / most));
  }
  auto q = [&](int64_t i, int64_t j) {
    const double a = static_cast<double>((i - px) * h), b = static_cast<double>((j - py) * w);
    return a * a + b * b;
  };
  double most = 0;
  for (auto& k : corners) most = std::max(most, q(k[0], k[1]));
  return most == 0 ? 0 : std::min(255, static_cast<int>(std::sqrt(q(x, y) / most) * 256));
}

Colour ReferenceColour(const GradientRequest& r, int k) {
  auto mix = [k](int s, int e) { return (s * (255 - k) + e * k + 127) / 255; };
  return MakeColour(mix(ColourRed(r.start), ColourRed(r.end)), mix(ColourGreen(r.start), ColourGreen(r.end)),
                    mix(ColourBlue(r.start), ColourBlue(r.end)));
}

TEST(GradientRequest, LayoutAndRoundTrip) {
  GradientRequest r = Request(kGradientShapeRadial, 47, 33, -30, 12, -40);
  TextureBlock block;
  block.fill(0xEE);
  WriteGradientRequest(block, r);
  const struct { size_t offset; uint32_t value; } fields[] = {
      {24, 8}, {964, 47}, {968, 33}, {972, 2}, {976, 0x00204080}, {980, 0x00F0C010},
      {984, uint32_t(-30)}, {988, 24}, {992, 12}, {996, uint32_t(-40)}};
  TextureBlock expected{};
  for (auto& f : fields) put_u32le(expected.data() + f.offset, f.value);
  BuildFixedPalette(expected.data() + 44, nullptr, 8);
  EXPECT_EQ(block, expected);
  TextureBlock again;
  WriteGradientRequest(again, ReadGradientRequest(block));
  EXPECT_EQ(again, block);
}

// The image comes back through the result slot; anything the engine cannot
// make is refused with the slot left alone.
TEST(GradientRequest, ProcHandsBackTheImageOrRefuses) {
  struct Case { GradientRequest request; bool slot; bool made; } cases[] = {
      {Request(kGradientShapeLinear, 5, 3), true, true},
      {Request(kGradientShapeLinear, 5, 3), false, false},
      {Request(kGradientShapeLinear, 0, 3), true, false},
      {Request(3, 5, 3), true, false},
      {[] { GradientRequest r = Request(kGradientShapeRadial, 5, 3); r.bits = 8; return r; }(), true, false},
  };
  for (const Case& c : cases) {
    TextureBlock block;
    WriteGradientRequest(block, c.request);
    ImageBlock image = ImageCreate(1, 1, nullptr, 24);
    EXPECT_EQ(TextureEngineProc(block, c.slot ? &image : nullptr), c.made ? 1 : 0);
    EXPECT_EQ(image.width(), c.made ? 5 : 1);
  }
}

TEST(GradientShapes, MatchThePerPixelFormulas) {
  const int32_t sizes[][2] = {{47, 33}, {33, 47}, {1, 1}, {1, 9}, {9, 1}, {2, 2}};
  const int32_t rotations[] = {0, 30, 90, 135, 180, 271, -45, 725, -360};
  const int32_t centres[][2] = {{0, 0}, {50, -50}, {-50, 50}, {13, -7}, {200, -900}};
  for (auto& size : sizes)
    for (uint32_t shape : {kGradientShapeLinear, kGradientShapeSquare, kGradientShapeRadial})
      for (int i = 0; i < 9; ++i) {
        const GradientRequest r = Request(shape, size[0], size[1], rotations[i], centres[i % 5][0],
                                          centres[i % 5][1]);
        ImageBlock image = TextureEngineGradient(r);
        ASSERT_TRUE(image);
        for (int y = 0; y < r.height; ++y)
          for (int x = 0; x < r.width; ++x)
            ASSERT_EQ(ImageGetPixel(image, x, y), ReferenceColour(r, ReferenceLevel(r, x, y)))
                << "shape " << shape << " " << r.width << "x" << r.height << " case " << i << " at " << x << "," << y;
      }
}

// Where the start and end colours land, as a user sees it.
TEST(GradientShapes, StartAndEndColoursSitAtTheEnds) {
  const struct { GradientRequest r; int sx, sy, ex, ey; } cases[] = {
      {Request(kGradientShapeLinear, 47, 33, 0), 0, 16, 46, 16},
      {Request(kGradientShapeLinear, 47, 33, 90), 20, 0, 20, 32},
      {Request(kGradientShapeLinear, 47, 33, 180), 46, 5, 0, 5},
      {Request(kGradientShapeLinear, 47, 33, 45), 0, 0, 46, 32},
      {Request(kGradientShapeSquare, 47, 33), 23, 16, 0, 0},
      {Request(kGradientShapeRadial, 47, 33, 0, -50, 50), 0, 0, 46, 32},
      {Request(kGradientShapeRadial, 47, 33, 0, -50, 0), 0, 16, 46, 0},
  };
  for (const auto& c : cases) {
    ImageBlock image = TextureEngineGradient(c.r);
    EXPECT_EQ(ImageGetPixel(image, c.sx, c.sy), c.r.start) << c.r.shape << " rot " << c.r.rotation;
    EXPECT_EQ(ImageGetPixel(image, c.ex, c.ey), c.r.end) << c.r.shape << " rot " << c.r.rotation;
  }
}

TEST(GradientGolden, ShapesMatchTheirChecksums) {
  testing::GoldenSet golden("gradients");
  const struct { const char* name; GradientRequest r; } cases[] = {
      {"linear_0", Request(kGradientShapeLinear, 47, 33)},
      {"linear_30", Request(kGradientShapeLinear, 47, 33, 30)},
      {"linear_minus100", Request(kGradientShapeLinear, 47, 33, -100)},
      {"square_centre", Request(kGradientShapeSquare, 47, 33)},
      {"square_13_minus7", Request(kGradientShapeSquare, 47, 33, 0, 13, -7)},
      {"radial_centre", Request(kGradientShapeRadial, 47, 33)},
      {"radial_minus20_35", Request(kGradientShapeRadial, 47, 33, 0, -20, 35)},
  };
  for (const auto& c : cases) golden.Add(c.name, testing::ImageChecksum(TextureEngineGradient(c.r)));
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
