// Pixel operations against plain per-pixel references written from their
// definitions (through ImageGetPixel/ImageSetPixel), at odd sizes, every depth
// that applies, and positions before, inside and far past the tile.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <vector>

#include "base/alloc.h"
#include "draw/draw.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::NoiseImage;
using testing::Pixels;

int32_t RefWrap(int64_t c, int32_t n) { return static_cast<int32_t>(((c % n) + n) % n); }

uint32_t Channel(Colour c, int shift) { return (c >> shift) & 0xFF; }

// Blends a w x h source into the tile at (x, y), wrapping, in source order:
// `at(sx, sy)` gives the source pixel's colour and its coverage 0..255.
template <class At>
void RefBlend(ImageBlock& t, int w, int h, int x, int y, At at) {
  for (int sy = 0; sy < h; ++sy)
    for (int sx = 0; sx < w; ++sx) {
      int tx = RefWrap(int64_t{x} + sx, t.width()), ty = RefWrap(int64_t{y} + sy, t.height());
      auto [colour, a] = at(sx, sy);
      Colour d = ImageGetPixel(t, tx, ty), out = d & 0xFF000000u;
      for (int s = 0; s < 24; s += 8)
        out |= (Channel(colour, s) * a / 255 + Channel(d, s) * (255 - a) / 255) << s;
      ImageSetPixel(t, tx, ty, out);
    }
}

// A picture of the given depth with varied values (noise, plus a 32-bit top
// byte, or a colour table of its own).
ImageBlock Picture(int w, int h, int bits, uint32_t seed) {
  ImageBlock noise = NoiseImage(w, h, seed);
  if (bits == 24) return noise;
  uint8_t rgb[kPaletteBytes];
  for (size_t i = 0; i < kPaletteBytes; ++i) rgb[i] = static_cast<uint8_t>(i * 7 + seed);
  ImageBlock out = ImageCreate(w, h, bits <= 8 ? rgb : nullptr, bits);
  int levels = bits >= 8 ? 256 : 1 << bits;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      Colour c = ImageGetPixel(noise, x, y);
      ImageSetPixel(out, x, y, bits == 32 ? c | (c << 24 & 0xFF000000u) : c % levels);
    }
  return out;
}

const std::vector<std::pair<int, int>> kPositions = {
    {0, 0}, {-1, -1}, {5, 3}, {-40, -30}, {36, 22}, {1000, -1001}, {INT_MIN, INT_MAX}, {-37, 23}};

TEST(Wrap, FoldsEveryCoordinateIntoTheTile) {
  EXPECT_EQ(WrapIndex(INT64_MIN + 1, 7), RefWrap(INT64_MIN + 1, 7));
  for (int64_t c = -50; c <= 50; ++c) EXPECT_EQ(WrapIndex(c, 7), RefWrap(c, 7)) << c;
}

TEST(MaskBlend, MatchesReferenceAtAnyPositionSizeAndDepth) {
  for (int target_bits : {24, 32, 8})  // 8 bits goes pixel by pixel
    for (int mask_bits : {24, 32})
      for (auto [mw, mh] : {std::pair{13, 9}, {37, 23}, {80, 51}})
        for (auto [x, y] : kPositions)
          for (int opacity : {255, 200, 1, 0}) {
            ImageBlock fast = Picture(37, 23, target_bits, 1), ref = Picture(37, 23, target_bits, 1);
            ImageBlock mask = Picture(mw, mh, mask_bits, 2);
            MaskBlendWrap(fast, mask, x, y, 0x00C08040, opacity);
            RefBlend(ref, mw, mh, x, y, [&](int sx, int sy) {
              uint32_t a = Channel(ImageGetPixel(mask, sx, sy), 16);  // the blue byte
              return std::pair{Colour{0x00C08040}, opacity == 255 ? a : a * opacity / 255};
            });
            ASSERT_EQ(Pixels(fast), Pixels(ref)) << target_bits << "/" << mask_bits << " " << mw
                                                 << "x" << mh << " at " << x << "," << y << " op "
                                                 << opacity;
          }
}

// Sources the target's size placed where the mask goes (each pixel takes its
// own place's ink), the mask's size at the origin (the ink travels with it),
// and an odd size at odd offsets, so the source wraps inside mask rows and
// across target edges at different columns.
TEST(MaskBlendImage, MatchesReferenceForEveryPlacementOfTheSource) {
  for (int target_bits : {24, 32, 8})
    for (int source_bits : {24, 32})
      for (auto [mw, mh] : {std::pair{13, 9}, {80, 51}})
        for (auto [x, y] : kPositions)
          for (int placement = 0; placement < 3; ++placement)
            for (int opacity : {255, 130, 0}) {
              ImageBlock fast = Picture(37, 23, target_bits, 11), ref = Picture(37, 23, target_bits, 11);
              ImageBlock mask = Picture(mw, mh, 24, 12);
              const int sw[3] = {37, mw, 11}, sh[3] = {23, mh, 7};
              ImageBlock source = Picture(sw[placement], sh[placement], source_bits, 13);
              const int px[3] = {x, 0, -5 - x}, py[3] = {y, 0, 3 + y / 2};
              MaskBlendImageWrap(fast, mask, x, y, source, px[placement], py[placement], opacity);
              RefBlend(ref, mw, mh, x, y, [&](int sx, int sy) {
                uint32_t a = Channel(ImageGetPixel(mask, sx, sy), 16);
                Colour ink = ImageGetPixel(source, RefWrap(int64_t{px[placement]} + sx, source.width()),
                                           RefWrap(int64_t{py[placement]} + sy, source.height()));
                return std::pair{ink, opacity == 255 ? a : a * opacity / 255};
              });
              ASSERT_EQ(Pixels(fast), Pixels(ref))
                  << target_bits << "/" << source_bits << " " << mw << "x" << mh << " at " << x
                  << "," << y << " placement " << placement << " op " << opacity;
            }
}

TEST(AlphaBlit, MatchesReference) {
  for (int target_bits : {24, 32})
    for (auto [x, y] : kPositions) {
      ImageBlock fast = Picture(37, 23, target_bits, 3), ref = Picture(37, 23, target_bits, 3);
      ImageBlock sprite = Picture(41, 17, 32, 4);
      AlphaBlitWrap(fast, sprite, x, y);
      RefBlend(ref, 41, 17, x, y, [&](int sx, int sy) {
        Colour c = ImageGetPixel(sprite, sx, sy);
        return std::pair{c, c >> 24};
      });
      ASSERT_EQ(Pixels(fast), Pixels(ref)) << target_bits << " at " << x << "," << y;
    }
}

TEST(AttachMask, TakesLowBytesFromTheColourAndTopByteFromTheMaskBlue) {
  ImageBlock colour = Picture(7, 5, 32, 8), mask = NoiseImage(7, 5, 9);
  ImageBlock small_mask = NoiseImage(3, 5, 9);
  ImageBlock out = AttachMask(colour, mask), clipped = AttachMask(colour, small_mask);
  ASSERT_TRUE(out && clipped);
  EXPECT_EQ(out.bits(), 32);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 7; ++x) {
      Colour low = ImageGetPixel(colour, x, y) & 0x00FFFFFF;
      EXPECT_EQ(ImageGetPixel(out, x, y), low | Channel(ImageGetPixel(mask, x, y), 16) << 24);
      // Outside a smaller mask the reading is "no colour", whose blue byte is 255.
      Colour top = x < 3 ? Channel(ImageGetPixel(small_mask, x, y), 16) : 255;
      EXPECT_EQ(ImageGetPixel(clipped, x, y), low | top << 24);
    }
  AllocFailureScope fail(0);
  EXPECT_FALSE(AttachMask(colour, mask));
}

TEST(ColourMix, DividesOnceAndKeepsTheEnds) {
  EXPECT_EQ(ColourMix(0x00123456, 0x00ABCDEF, 255), 0x00123456u);
  EXPECT_EQ(ColourMix(0x00123456, 0x00ABCDEF, 0), 0x00ABCDEFu);
  EXPECT_EQ(ColourMix(0xFF010101, 0xFF010101, 128), 0x00010101u);  // two divisions would give 0
  EXPECT_EQ(ColourMix(0x000000FF, 0, 128), 0x00000080u);
}

// ---- Rolls and turns --------------------------------------------------------

TEST(Roll, AllFourDirectionsMatchTheirDefinitionsAtEveryDepth) {
  for (int bits : {1, 4, 8, 24, 32})
    for (int n : {0, 1, -1, 5, 36, -61, INT_MIN, INT_MAX}) {
      ImageBlock src = Picture(37, 23, bits, 10);
      ImageBlock down = RollDown(src, n), up = RollUp(src, n);
      ImageBlock right = RollRight(src, n), left = RollLeft(src, n);
      ASSERT_TRUE(down && up && right && left);
      for (int y = 0; y < 23; ++y)
        for (int x = 0; x < 37; ++x) {
          auto at = [&](int64_t sx, int64_t sy) { return ImageGetPixel(src, RefWrap(sx, 37), RefWrap(sy, 23)); };
          ASSERT_EQ(ImageGetPixel(down, x, y), at(x, int64_t{y} - n)) << bits << " " << n;
          ASSERT_EQ(ImageGetPixel(up, x, y), at(x, int64_t{y} + n)) << bits << " " << n;
          ASSERT_EQ(ImageGetPixel(right, x, y), at(int64_t{x} - n, y)) << bits << " " << n;
          ASSERT_EQ(ImageGetPixel(left, x, y), at(int64_t{x} + n, y)) << bits << " " << n;
        }
      if (n != 0) continue;  // a distinct, identical block, colour table and all
      EXPECT_NE(right.data(), src.data());
      ASSERT_EQ(right.size(), src.size());
      EXPECT_EQ(0, std::memcmp(right.data(), src.data(), src.size())) << bits;
    }
  ImageBlock src = Picture(9, 4, 8, 10);
  AllocFailureScope fail(0);
  EXPECT_FALSE(RollDown(src, 1));
}

TEST(Turn, SendsPixelsWhereDefinedAndBackAgain) {
  for (int bits : {1, 4, 8, 24, 32}) {
    ImageBlock src = Picture(13, 6, bits, 11);
    ImageBlock left = TurnAnticlockwise(src), right = TurnClockwise(src);
    ASSERT_TRUE(left && right);
    EXPECT_EQ(left.width(), 6);
    EXPECT_EQ(left.height(), 13);
    for (int y = 0; y < 6; ++y)
      for (int x = 0; x < 13; ++x) {
        ASSERT_EQ(ImageGetPixel(left, y, 12 - x), ImageGetPixel(src, x, y)) << bits;
        ASSERT_EQ(ImageGetPixel(right, 5 - y, x), ImageGetPixel(src, x, y)) << bits;
      }
    ImageBlock back = TurnClockwise(left);
    ASSERT_EQ(back.size(), src.size());
    EXPECT_EQ(0, std::memcmp(back.data(), src.data(), src.size())) << bits;
  }
}

// ---- Scaling ----------------------------------------------------------------

// One axis at a time, from the definition: spans from the previous end to
// (j + 1) * 100 / p, clamped; every byte of the value averaged.
ImageBlock RefScaleAxis(const ImageBlock& src, int p, bool horizontal) {
  if (p == 100) return DuplicateGlobalBlock(src);
  int len = horizontal ? src.width() : src.height();
  int out_len = static_cast<int>(int64_t{len} * p / 100);
  ImageBlock out = ImageCreate(horizontal ? out_len : src.width(), horizontal ? src.height() : out_len,
                               nullptr, src.bits());
  if (src.bits() <= 8)
    std::memcpy(out.colour_table(), src.colour_table(), 4 * size_t(src.colour_table_entries()));
  int across = horizontal ? src.height() : src.width();
  int previous = 0;
  for (int j = 0; j < out_len; ++j) {
    int start = previous, end = p < 100 ? std::min((j + 1) * 100 / p, len) : 0;
    if (p < 100) previous = end;
    for (int i = 0; i < across; ++i) {
      Colour value = 0;
      if (p > 100) {
        int k = std::min(j * 100 / p, len - 1);
        value = horizontal ? ImageGetPixel(src, k, i) : ImageGetPixel(src, i, k);
      } else {
        for (int shift = 0; shift < 32; shift += 8) {
          uint32_t sum = 0;
          for (int k = start; k < end; ++k)
            sum += Channel(horizontal ? ImageGetPixel(src, k, i) : ImageGetPixel(src, i, k), shift);
          value |= (sum / std::max(end - start, 1)) << shift;
        }
      }
      if (horizontal)
        ImageSetPixel(out, j, i, value);
      else
        ImageSetPixel(out, i, j, value);
    }
  }
  return out;
}

TEST(Scale, MatchesReferenceAtEveryDepthAndPercent) {
  for (int bits : {1, 4, 8, 24, 32})
    for (auto [hp, vp] : {std::pair{25, 25}, {50, 50}, {25, 50}, {50, 25}, {33, 70}, {1, 99}, {100, 37}, {50, 100},
                          {200, 150}, {130, 40}}) {
      ImageBlock src = Picture(131, 103, bits, 12);
      ImageBlock got = ScaleByPercent(src, hp, vp);
      ImageBlock want = RefScaleAxis(RefScaleAxis(src, hp, true), vp, false);
      ASSERT_TRUE(got) << bits << " " << hp << "," << vp;
      ASSERT_EQ(got.size(), want.size()) << bits << " " << hp << "," << vp;
      EXPECT_EQ(0, std::memcmp(got.data(), want.data(), got.size())) << bits << " " << hp << "," << vp;
    }
  // Full spans of 255 (the largest sums) divide back to 255.
  ImageBlock white = SolidImage({0, 0, 300, 200}, 0x00FFFFFF);
  for (Colour c : Pixels(ScaleByPercent(white, 1, 1))) EXPECT_EQ(c, 0x00FFFFFFu);
}

// The supersampled frames' reductions go straight to the output: beyond it,
// only a row's worth of working bytes.
TEST(Scale, FixedReductionsMakeNoIntermediateImage) {
  for (auto [hp, vp] : {std::pair{25, 25}, {50, 50}, {25, 50}}) {
    ImageBlock src = Picture(512, 256, 24, 3);
    const int64_t before = AllocCurrentBytes();
    ResetAllocPeak();
    ImageBlock out = ScaleByPercent(src, hp, vp);
    ASSERT_TRUE(out);
    EXPECT_LE(AllocPeakBytes() - before, static_cast<int64_t>(out.size()) + 8 * 3 * 512)
        << hp << "," << vp;
  }
}

TEST(Scale, HundredPercentIsACopyAndBadRequestsFail) {
  ImageBlock src = NoiseImage(7, 5, 13);
  ImageBlock copy = ScaleByPercent(src, 100, 100);
  ASSERT_TRUE(copy);
  EXPECT_NE(copy.data(), src.data());
  EXPECT_EQ(Pixels(copy), Pixels(src));
  EXPECT_FALSE(ScaleByPercent(src, 0, 50));
  EXPECT_FALSE(ScaleByPercent(src, 50, -1));
  EXPECT_FALSE(ScaleByPercent(src, 10, 100));  // 7 * 10 / 100 = 0 columns
  EXPECT_FALSE(ScaleByPercent(ImageBlock(), 50, 50));
  ImageBlock big = NoiseImage(64, 48, 14);
  for (long fail_at = 0;; ++fail_at) {  // every allocation failing in turn gives null
    AllocFailureScope fail(fail_at);
    ImageBlock out = ScaleByPercent(big, 25, 50);
    if (fail.Count() <= fail_at) {
      EXPECT_TRUE(out);
      break;
    }
    EXPECT_FALSE(out) << "allocation " << fail_at;
  }
}

TEST(SolidImage, FillsTheRectangleSize) {
  ImageBlock image = SolidImage({3, 4, 10, 7}, 0x00010203);
  ASSERT_TRUE(image);
  EXPECT_EQ(image.width(), 7);
  EXPECT_EQ(image.height(), 3);
  for (Colour c : Pixels(image)) EXPECT_EQ(c, 0x00010203u);
  EXPECT_FALSE(SolidImage({5, 5, 5, 9}, 0));
}

}  // namespace
}  // namespace tess
