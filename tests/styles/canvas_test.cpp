// Canvas fills land in the image with the right colour, clipped, and the image
// changes hands only through Release.
#include <gtest/gtest.h>

#include "styles/canvas.h"
#include "styles/draw.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

constexpr Colour kInk = 0x00336699;  // red 0x99, green 0x66, blue 0x33

TEST(Canvas, OpensBlackAndReleasesItsImage) {
  Canvas canvas = Canvas::Open(7, 5);
  ASSERT_TRUE(canvas);
  EXPECT_EQ(canvas.image().bits(), 24);
  for (Colour c : testing::Pixels(canvas.image())) EXPECT_EQ(c, 0u);
  ImageBlock image = canvas.Release();
  EXPECT_TRUE(image);
  EXPECT_FALSE(canvas);
  EXPECT_EQ(image.width(), 7);
}

TEST(Canvas, FailsSoftly) {
  EXPECT_FALSE(Canvas::Open(0, 5));
  EXPECT_FALSE(Canvas::Adopt(ImageCreate(4, 4, nullptr, 32)));
  {
    AllocFailureScope fail(0);
    EXPECT_FALSE(Canvas::Open(8, 8));
  }
  Canvas canvas = Canvas::Open(8, 8);
  Point p[] = {{0, 0}, {8, 0}, {0, 8}};
  AllocFailureScope fail(0);
  EXPECT_FALSE(canvas.FillPolygon(p, 3, kInk));
}

TEST(Canvas, FillsWriteTheColourWhereTheRasteriserCovers) {
  Canvas canvas = Canvas::Open(5, 5);
  canvas.FillEllipse({0, 0, 5, 5}, kInk);
  const char* want[] = {".###.", "#####", "#####", "#####", ".###."};
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 5; ++x)
      EXPECT_EQ(ImageGetPixel(canvas.image(), x, y), want[y][x] == '#' ? kInk : 0u) << x << "," << y;
}

TEST(Canvas, ShapesPastTheEdgesAreClipped) {
  // Odd width, so rows have padding that must stay zero.
  Canvas canvas = Canvas::Open(7, 5);
  canvas.FillRect({-10, -10, 100, 100}, 0x00808080);
  canvas.FillEllipse({-20, -3, 4, 30}, kInk);
  canvas.FillRoundRect({3, -8, 30, 3}, 9, 9, kInk);
  canvas.DrawLine({-40, -40}, {40, 40}, 6, 0x00FFFFFF);
  canvas.DrawLine({-40, 40}, {40, -40}, 1, 0x00FFFFFF);
  Point p[] = {{-50, 2}, {60, 2}, {60, 3}};
  EXPECT_TRUE(canvas.FillPolygon(p, 3, kInk));
  for (int y = 0; y < 5; ++y) {
    const uint8_t* row = canvas.image().Row(y);
    for (uint32_t k = 21; k < canvas.image().stride(); ++k) EXPECT_EQ(row[k], 0) << "padding, row " << y;
  }
  EXPECT_EQ(ImageGetPixel(canvas.image(), 0, 0), 0x00FFFFFFu);  // the diagonal line
}

TEST(Canvas, ClearAndPaintImage) {
  Canvas canvas = Canvas::Adopt(ImageCreate(9, 6, nullptr, 24));
  ASSERT_TRUE(canvas);
  canvas.Clear(kInk);
  ImageBlock patch = testing::NoiseImage(4, 3, 7);
  ImageBlock expected = DuplicateGlobalBlock(canvas.image());
  for (auto [x, y] : {std::pair{-2, -1}, {7, 4}, {3, 2}, {-10, 0}}) {
    canvas.PaintImage(patch, x, y);
    ImageCopyRect(expected, x, y, patch, 0, 0, 4, 3);
  }
  EXPECT_EQ(testing::Pixels(canvas.image()), testing::Pixels(expected));
}

// Every shape kind, a blend and a reduction in one picture, pinned by its
// hash: any build on any platform must produce these exact bytes.
TEST(Canvas, SceneRendersToKnownBytes) {
  Canvas canvas = Canvas::Open(194, 122);
  canvas.Clear(0x00203040);
  for (int i = 0; i < 12; ++i) {
    Colour c = MakeColour(40 + 17 * i, 200 - 13 * i, 90 + 11 * i);
    canvas.FillEllipse({-20 + 19 * i, 5 + 7 * i, 9 + 23 * i, 31 + 5 * i}, c);
    canvas.FillRoundRect({150 - 9 * i, 100 - 6 * i, 190 - 5 * i, 121 - 4 * i}, 3 * i, 2 * i + 1, ~c);
    canvas.DrawLine({-30 + 21 * i, -10}, {210 - 17 * i, 130 - 3 * i}, i % 7, c ^ 0x00FFFF00);
  }
  Point star[] = {{97, 2}, {120, 110}, {20, 40}, {175, 40}, {75, 110}};
  ASSERT_TRUE(canvas.FillPolygon(star, 5, 0x00E0E0E0));
  Canvas m = Canvas::Open(40, 30);
  m.FillEllipse({0, 0, 40, 30}, 0x00909090);
  MaskBlendWrap(canvas.image(), m.image(), 170, -12, 0x000000FF, 200);
  ImageBlock frame = ScaleByPercent(canvas.image(), 50, 50);
  ASSERT_TRUE(frame);
  uint32_t hash = 2166136261u;
  for (size_t i = 0; i < frame.size(); ++i) hash = (hash ^ frame.data()[i]) * 16777619u;
  EXPECT_EQ(hash, 3262634496u) << "rendering changed; if on purpose, pin the new hash";
}

}  // namespace
}  // namespace tess
