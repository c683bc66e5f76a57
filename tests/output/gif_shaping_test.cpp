// Frame shaping: the row-pointer bounds and crop against a plain per-pixel
// reference at every palettised depth and at odd sizes, and true-colour frames
// reduced to their own exact palette.
#include "host/cli/gif_frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/support/test_support.h"

namespace tess::cli {
namespace {

// The reference: every pixel through the bounds-checked accessor.
PixelBox ReferenceBounds(const ImageBlock& image, int transparent) {
  int min_x = image.width(), min_y = image.height(), max_x = -1, max_y = -1;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (static_cast<int>(ImageGetPixel(image, x, y)) != transparent) {
        min_x = std::min(min_x, x);
        max_x = std::max(max_x, x);
        min_y = std::min(min_y, y);
        max_y = std::max(max_y, y);
      }
  if (max_x < 0) return PixelBox{};
  return PixelBox{min_x, min_y, max_x - min_x + 1, max_y - min_y + 1};
}

// An image of `bits` whose pixels are `transparent` except a scatter of
// others inside [x0, x1] x [y0, y1].
ImageBlock Scattered(int bits, int width, int height, int transparent, int x0, int y0, int x1, int y1,
                     uint32_t seed) {
  ImageBlock image = ImageCreate(width, height, nullptr, bits);
  int values = 1 << bits;
  uint32_t s = seed;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      s = s * 1103515245u + 12345u;
      bool inside = x >= x0 && x <= x1 && y >= y0 && y <= y1;
      int v = inside && (s >> 16) % 3 == 0 ? static_cast<int>((s >> 8) % values) : transparent;
      ImageSetPixel(image, x, y, static_cast<Colour>(v));
    }
  // Pin the box's corners so the expected bounds are exact.
  int other = (transparent + 1) % values;
  ImageSetPixel(image, x0, y0, static_cast<Colour>(other));
  ImageSetPixel(image, x1, y1, static_cast<Colour>(other));
  return image;
}

TEST(GifFrames, BoundsAndCropEqualTheReferenceAtEveryDepth) {
  for (int bits : {1, 4, 8}) {
    for (uint32_t seed : {1u, 2u, 3u}) {
      int width = 37 + static_cast<int>(seed), height = 23;
      int transparent = bits == 1 ? 1 : (bits == 4 ? 9 : 200);
      ImageBlock image = Scattered(bits, width, height, transparent, 3 + static_cast<int>(seed), 2, 30, 19, seed);
      PixelBox box = VisibleBounds(image, transparent);
      ASSERT_EQ(box, ReferenceBounds(image, transparent)) << bits << " " << seed;
      EXPECT_EQ(box, (PixelBox{3 + static_cast<int>(seed), 2, 28 - static_cast<int>(seed), 18}));

      ImageBlock cropped = CropIndices(image, box);
      ASSERT_TRUE(cropped);
      EXPECT_EQ(cropped.bits(), bits);
      EXPECT_EQ(std::memcmp(cropped.colour_table(), image.colour_table(), 4u << bits), 0);
      for (int y = 0; y < box.height; ++y)
        for (int x = 0; x < box.width; ++x)
          ASSERT_EQ(ImageGetPixel(cropped, x, y), ImageGetPixel(image, box.left + x, box.top + y))
              << bits << " at " << x << "," << y;
    }
  }
}

TEST(GifFrames, FullyTransparentHasNoBoundsAndOneVisiblePixelIsOneByOne) {
  ImageBlock image = ImageCreate(9, 7, nullptr, 8);
  for (int y = 0; y < 7; ++y) std::memset(image.Row(y), 5, 9);
  EXPECT_TRUE(VisibleBounds(image, 5).empty());
  ImageSetPixel(image, 8, 6, 4);
  EXPECT_EQ(VisibleBounds(image, 5), (PixelBox{8, 6, 1, 1}));
  EXPECT_EQ(VisibleBounds(image, 300), (PixelBox{0, 0, 9, 7}));  // no index can be 300
}

TEST(GifFrames, TrueColourFramesKeepTheirColoursExactly) {
  // Two colours, the brighter first: a luminance threshold would swap them.
  ImageBlock two = ImageCreate(6, 4, nullptr, 24);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 6; ++x) ImageSetPixel(two, x, y, x < 3 ? MakeColour(250, 250, 10) : MakeColour(20, 0, 90));
  ImageBlock noise = testing::NoiseImage(31, 17, 4, 4);  // 64 colours at most
  for (const ImageBlock* source : {&two, &noise}) {
    uint8_t rgb[kPaletteBytes];
    int bits = 0;
    ImageBlock out = PalettiseTrueColour(*source, rgb, &bits);
    ASSERT_TRUE(out);
    EXPECT_GE(bits, 2);
    EXPECT_LE(bits, 8);
    for (int y = 0; y < source->height(); ++y)
      for (int x = 0; x < source->width(); ++x) {
        Colour index = ImageGetPixel(out, x, y);
        ASSERT_LT(index, 1u << bits);
        const uint8_t* e = rgb + 3 * index;
        ASSERT_EQ(MakeColour(e[0], e[1], e[2]), ImageGetPixel(*source, x, y)) << x << "," << y;
      }
  }
}

TEST(GifFrames, ShortMemoryGivesNullNotACrash) {
  ImageBlock image = Scattered(8, 40, 30, 0, 1, 1, 20, 20, 9);
  ImageBlock colour = testing::NoiseImage(8, 8, 1);
  uint8_t rgb[kPaletteBytes];
  int bits = 0;
  AllocFailureScope fail(0, true);
  EXPECT_FALSE(CropIndices(image, PixelBox{1, 1, 20, 20}));
  EXPECT_FALSE(PalettiseTrueColour(colour, rgb, &bits));
}

}  // namespace
}  // namespace tess::cli
