#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "output/image.h"
#include "output/palette.h"
#include "output/remap.h"
#include "tests/output/palette_reference.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::NaturalImage;
using testing::NoiseImage;
using testing::Pixels;

bool SameBlock(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

ImageBlock Flat(int w, int h, Colour c) {
  ImageBlock image = ImageCreate(w, h, nullptr, 24);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) ImageSetPixel(image, x, y, c);
  return image;
}

// Sources of every depth the remaps accept, at an odd size.
std::vector<ImageBlock> OddSources() {
  std::vector<ImageBlock> out;
  out.push_back(NaturalImage(47, 33, 3));
  out.push_back(NoiseImage(47, 33, 9, 4));
  ImageBlock wide = ImageCreate(47, 33, nullptr, 32);
  ImageBlock natural = NaturalImage(47, 33, 4);
  for (int y = 0; y < 33; ++y)
    for (int x = 0; x < 47; ++x) ImageSetPixel(wide, x, y, ImageGetPixel(natural, x, y) | (x * 5u << 24));
  out.push_back(std::move(wide));
  uint8_t pal[kPaletteBytes];
  BuildFixedPalette(pal, nullptr, kPaletteWithGray256);
  for (int bits : {8, 4, 1}) {
    ImageBlock indexed = ImageCreate(47, 33, pal, bits);
    for (int y = 0; y < 33; ++y)
      for (int x = 0; x < 47; ++x) ImageSetPixel(indexed, x, y, (x * 31 + y * 7) % 256);
    out.push_back(std::move(indexed));
  }
  return out;
}

struct Target {
  int choice;
  int bits;
};
constexpr Target kTargets[] = {{kPaletteBlackWhite, 1}, {kPaletteWindows16, 4}, {kPaletteOrtho32, 5},
                               {kPaletteOrtho256, 8}, {kPaletteWithGray256, 8}, {kPaletteSafe216, 8}};

TEST(Remap, MatchesTheReferenceForEveryDepthAndMode) {
  std::vector<ImageBlock> sources = OddSources();
  for (const Target& t : kTargets) {
    uint8_t pal[kPaletteBytes];
    int count = BuildFixedPalette(pal, nullptr, t.choice);
    for (bool fast : {false, true}) {
      RemapOptions options;
      options.fast_remap = fast;
      Remapper remapper;  // one for all sources, as a build uses it
      ASSERT_TRUE(remapper.Init(pal, t.bits, count, options));
      for (size_t s = 0; s < sources.size(); ++s) {
        ImageBlock want = testing::ReferenceRemap(sources[s], pal, t.bits, count, options);
        EXPECT_TRUE(SameBlock(remapper.Remap(sources[s]), want)) << t.choice << " fast " << fast << " src " << s;
        EXPECT_TRUE(SameBlock(RemapImage(sources[s], pal, t.bits, count, options), want));
      }
    }
  }
}

TEST(Remap, OneBitThresholdIsLuminance129) {
  ASSERT_EQ(Luminance(130, 130, 130), 129);
  ASSERT_EQ(Luminance(129, 129, 129), 128);
  uint8_t pal[kPaletteBytes];
  BuildFixedPalette(pal, nullptr, kPaletteBlackWhite);
  ImageBlock source = ImageCreate(2, 1, nullptr, 24);
  ImageSetPixel(source, 0, 0, MakeColour(130, 130, 130));
  ImageSetPixel(source, 1, 0, MakeColour(129, 129, 129));
  ImageBlock out = RemapImage(source, pal, 1, 2, {});
  ASSERT_TRUE(out);
  EXPECT_EQ(out.bits(), 1);
  EXPECT_EQ(ImageGetPixel(out, 0, 0), 1u);
  EXPECT_EQ(ImageGetPixel(out, 1, 0), 0u);
}

TEST(Remap, FastRemapTakesExactMatchesElseTheGridLookup) {
  uint8_t pal[kPaletteBytes] = {};
  pal[3] = 13, pal[4] = 13, pal[5] = 13;  // entry 1: (13, 13, 13); entry 0 black
  ImageBlock source = ImageCreate(2, 1, nullptr, 24);
  ImageSetPixel(source, 0, 0, MakeColour(13, 13, 13));
  ImageSetPixel(source, 1, 0, MakeColour(7, 7, 7));  // nearer entry 1, but its grid point is black
  RemapOptions fast;
  fast.fast_remap = true;
  ImageBlock out = RemapImage(source, pal, 8, 2, fast);
  EXPECT_EQ(Pixels(out), (std::vector<Colour>{1, 0}));
  out = RemapImage(source, pal, 8, 2, {});
  EXPECT_EQ(Pixels(out), (std::vector<Colour>{1, 1}));
}

TEST(Remap, RefusesTrueColourTargetsNullSourcesAndShortMemory) {
  uint8_t pal[kPaletteBytes];
  int count = BuildFixedPalette(pal, nullptr, kPaletteOrtho256);
  ImageBlock source = NaturalImage(9, 7, 1);
  EXPECT_FALSE(RemapImage(source, pal, 24, count, {}));
  EXPECT_FALSE(DitherImage(source, pal, 16, count, {}));
  EXPECT_FALSE(RemapImage(ImageBlock(), pal, 8, count, {}));
  EXPECT_FALSE(DitherImage(ImageBlock(), pal, 8, count, {}));
  for (int bits : {1, 8}) {
    for (bool dither : {false, true}) {
      auto run = [&] { return dither ? DitherImage(source, pal, bits, count, {}) : RemapImage(source, pal, bits, count, {}); };
      long total = 0;
      {
        AllocFailureScope probe(1L << 30);
        ASSERT_TRUE(run());
        total = probe.Count();
      }
      for (long n = 0; n < total; ++n) {
        AllocFailureScope fail(n);
        EXPECT_FALSE(run()) << bits << " " << dither << " " << n;  // ASan reports anything leaked
      }
    }
  }
}

TEST(Dither, MatchesTheReferenceForEveryDepthAndMode) {
  // Rows are diffused two at a time, the second pulling its values from the
  // first's errors as they are made once the row has three columns: odd and
  // even heights, and widths on both sides of three.
  std::vector<ImageBlock> sources = OddSources();
  sources.push_back(NaturalImage(1, 9, 2));
  sources.push_back(NaturalImage(9, 1, 2));
  sources.push_back(NaturalImage(2, 2, 3));
  sources.push_back(NaturalImage(47, 34, 5));
  for (int w = 2; w <= 5; ++w) sources.push_back(NoiseImage(w, 7, 11 + static_cast<uint32_t>(w)));
  for (const Target& t : kTargets) {
    uint8_t pal[kPaletteBytes];
    int count = BuildFixedPalette(pal, nullptr, t.choice);
    for (bool fast : {false, true}) {
      RemapOptions options;
      options.fast_remap = fast;
      Remapper remapper;
      ASSERT_TRUE(remapper.Init(pal, t.bits, count, options));
      for (size_t s = 0; s < sources.size(); ++s) {
        ImageBlock want = testing::ReferenceDither(sources[s], pal, t.bits, count, options);
        EXPECT_TRUE(SameBlock(remapper.Dither(sources[s]), want)) << t.choice << " fast " << fast << " src " << s;
      }
    }
  }
}

TEST(Dither, BlackAndWhiteFollowsBrightnessAndContrast) {
  uint8_t pal[kPaletteBytes];
  BuildFixedPalette(pal, nullptr, kPaletteBlackWhite);
  ImageBlock source = NaturalImage(47, 33, 6);
  for (auto [brightness, contrast] : {std::pair{20, 20}, {0, 0}, {-60, 40}, {90, -30}, {0, 127}, {5, 500}}) {
    RemapOptions options;
    options.dither_brightness = brightness;
    options.dither_contrast = contrast;
    EXPECT_TRUE(SameBlock(DitherImage(source, pal, 1, 2, options),
                          testing::ReferenceDither(source, pal, 1, 2, options)))
        << brightness << " " << contrast;
  }
}

TEST(Dither, ToneCurveWithoutAdjustmentIsTheIdentityHeldTo1To254) {
  uint8_t curve[256];
  BuildToneCurve(0, 0, curve);
  EXPECT_EQ(curve[0], 1);
  EXPECT_EQ(curve[1], 1);
  for (int i = 1; i < 255; ++i) ASSERT_EQ(curve[i], i);
  EXPECT_EQ(curve[255], 254);
  BuildToneCurve(20, 20, curve);  // slope 256 / 216, start 0
  EXPECT_EQ(curve[100], 119);     // 118.52 rounded
  EXPECT_EQ(curve[0], 1);
  EXPECT_EQ(curve[220], 254);
  BuildToneCurve(0, 128, curve);  // would divide by zero; held to a steep, finite slope
  EXPECT_EQ(curve[0], 1);
  EXPECT_EQ(curve[255], 254);
}

// Entry 0 black, entries 1..155 the grays 100..254: a bottom pixel of gray 64
// takes gray 100 (error -36), and the pixel above gets (-36 * 5) >> 4 = -12.
TEST(Dither, OnePixelWideFramePassesOnlyTheWeight5ShareUp) {
  uint8_t pal[kPaletteBytes] = {};
  for (int k = 1; k <= 155; ++k) pal[3 * k] = pal[3 * k + 1] = pal[3 * k + 2] = static_cast<uint8_t>(99 + k);
  ImageBlock source = ImageCreate(1, 2, nullptr, 24);
  ImageSetPixel(source, 0, 0, MakeColour(200, 200, 200));
  ImageSetPixel(source, 0, 1, MakeColour(64, 64, 64));
  for (bool fast : {false, true}) {
    RemapOptions options;
    options.fast_remap = fast;
    ImageBlock out = DitherImage(source, pal, 8, 156, options);
    ASSERT_TRUE(out);
    EXPECT_EQ(ImageGetPixel(out, 0, 1), 1u);   // gray 100
    EXPECT_EQ(ImageGetPixel(out, 0, 0), 89u);  // gray 188 = 200 - 12, an exact match
  }
}

TEST(Dither, FlatPaletteColourHasNoNoise) {
  uint8_t pal[kPaletteBytes];
  int count = BuildFixedPalette(pal, nullptr, kPaletteOrtho256);
  const int index = 2 * 32 + 4 * 4 + 2;  // (72, 144, 170)
  ImageBlock source = Flat(47, 33, MakeColour(72, 144, 170));
  for (bool fast : {false, true}) {
    RemapOptions options;
    options.fast_remap = fast;
    ImageBlock out = DitherImage(source, pal, 8, count, options);
    ASSERT_TRUE(out);
    for (Colour c : Pixels(out)) ASSERT_EQ(c, static_cast<Colour>(index));
  }
}

TEST(Background, SubstitutesMatchingSourcePixelsOnACopy) {
  uint8_t pal[kPaletteBytes];
  int count = BuildFixedPalette(pal, nullptr, kPaletteWindows16);
  const Colour background = MakeColour(10, 20, 30);
  ImageBlock source = NoiseImage(47, 33, 2, 2);
  for (int i = 0; i < 47 * 33; i += 3) ImageSetPixel(source, i % 47, i / 47, background);
  for (int bits : {1, 4, 8}) {
    ImageBlock remapped = RemapImage(source, pal, bits, count, {});
    ImageBlock before = DuplicateGlobalBlock(remapped);
    // The top byte of the background is ignored.
    ImageBlock out = SubstituteBackground(remapped, source, background | 0x7F000000u, 13);
    EXPECT_TRUE(SameBlock(out, testing::ReferenceSubstitute(remapped, source, background, 13))) << bits;
    EXPECT_TRUE(SameBlock(remapped, before));
    EXPECT_EQ(ImageGetPixel(out, 0, 0), bits == 1 ? 1u : 13u);
  }
}

TEST(Background, IgnoresTheSourceAlphaAndTheAreaOutsideTheSource) {
  uint8_t pal[kPaletteBytes];
  BuildFixedPalette(pal, nullptr, kPaletteOrtho256);
  ImageBlock source = ImageCreate(5, 4, nullptr, 32);
  ImageSetPixel(source, 1, 1, 0xAA0000FFu);  // red with coverage in the top byte
  ImageSetPixel(source, 4, 3, 0x000000FFu);
  ImageBlock remapped = ImageCreate(7, 6, pal, 8);
  ImageBlock out = SubstituteBackground(remapped, source, 0xFF, 200);
  ASSERT_TRUE(out);
  EXPECT_TRUE(SameBlock(out, testing::ReferenceSubstitute(remapped, source, 0xFF, 200)));
  EXPECT_EQ(ImageGetPixel(out, 1, 1), 200u);
  EXPECT_EQ(ImageGetPixel(out, 4, 3), 200u);
  EXPECT_EQ(ImageGetPixel(out, 6, 5), 0u);  // beyond the source: left alone
  AllocFailureScope fail(0);
  EXPECT_FALSE(SubstituteBackground(remapped, source, 0xFF, 200));
}

}  // namespace
}  // namespace tess
