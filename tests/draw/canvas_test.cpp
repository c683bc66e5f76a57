// Canvas fills land in the image with the right colour, clipped, and the image
// changes hands only through Release.
#include <gtest/gtest.h>

#include "draw/canvas.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

constexpr Colour kInk = 0x00336699;  // red 0x99, green 0x66, blue 0x33

TEST(Canvas, OpensBlackFillsWhereTheRasteriserCoversAndReleasesItsImage) {
  Canvas canvas = Canvas::Open(5, 5);
  ASSERT_TRUE(canvas);
  EXPECT_EQ(canvas.image().bits(), 24);
  canvas.FillEllipse({0, 0, 5, 5}, kInk);
  const char* want[] = {".###.", "#####", "#####", "#####", ".###."};
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 5; ++x)
      EXPECT_EQ(ImageGetPixel(canvas.image(), x, y), want[y][x] == '#' ? kInk : 0u) << x << "," << y;
  ImageBlock image = canvas.Release();
  EXPECT_TRUE(image);
  EXPECT_FALSE(canvas);
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

}  // namespace
}  // namespace tess
