// Remap, dither and background substitution proven equal to the plain
// references of palette_reference.cpp at every depth and mode, plus the few
// rules worth a worked example.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "image/image.h"
#include "output/palette.h"
#include "output/remap.h"
#include "output/supercompress.h"
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

// A supercompression mask with whole set bytes, whole clear bytes and mixed
// ones.
ImageBlock Mask(int width, int height) {
  static constexpr uint8_t kBlackWhite[6] = {0, 0, 0, 255, 255, 255};
  ImageBlock mask = ImageCreate(width, height, kBlackWhite, 1);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (y % 3 == 0 || (x * 7 + y * 3) % 5 < 2) ImageSetPixel(mask, x, y, 1);
  return mask;
}

struct Target {
  int choice;
  int bits;
};
// The luminance path, a small palette at 4 bits, 5 bits in an 8-bit block, and
// a palette with a gray run that makes near ties.
constexpr Target kTargets[] = {{kPaletteBlackWhite, 1}, {kPaletteWindows16, 4}, {kPaletteOrtho32, 5},
                               {kPaletteWithGray256, 8}};

// One Remapper per palette for every source, as a build uses it, and the
// one-shot functions: both byte for byte the references.
TEST(RemapAndDither, MatchTheReferencesForEveryDepthAndMode) {
  std::vector<ImageBlock> sources = OddSources();
  // The dither diffuses rows two at a time, the second pulling its values from
  // the first's errors once the row has three columns: odd and even heights,
  // and widths on both sides of three.
  for (auto [w, h] : {std::pair{1, 9}, {9, 1}, {2, 2}, {47, 34}})
    sources.push_back(NaturalImage(w, h, static_cast<uint32_t>(w + h)));
  for (int w = 2; w <= 5; ++w) sources.push_back(NoiseImage(w, 7, 11 + static_cast<uint32_t>(w)));
  for (const Target& t : kTargets) {
    uint8_t pal[kPaletteBytes];
    const int count = BuildFixedPalette(pal, nullptr, t.choice);
    for (bool fast : {false, true}) {
      RemapOptions options;
      options.fast_remap = fast;
      Remapper remapper;
      ASSERT_TRUE(remapper.Init(pal, t.bits, count, options));
      for (size_t s = 0; s < sources.size(); ++s) {
        SCOPED_TRACE(::testing::Message() << "palette " << t.choice << " fast " << fast << " source " << s);
        ImageBlock want = testing::ReferenceRemap(sources[s], pal, t.bits, count, options);
        EXPECT_TRUE(SameBlock(remapper.Remap(sources[s]), want));
        EXPECT_TRUE(SameBlock(RemapImage(sources[s], pal, t.bits, count, options), want));
        // Masked pixels skip the search: the same as masking afterwards, for
        // whole mask bytes, single bits and a mask of another size.
        for (int grow : {0, 1, -1}) {
          ImageBlock mask = Mask(sources[s].width() + grow, sources[s].height() + grow);
          ImageBlock masked = remapper.Remap(sources[s]);
          ApplySupercompressMask(masked, mask, 250);
          EXPECT_TRUE(SameBlock(remapper.Remap(sources[s], mask, 250), masked));
        }
        want = testing::ReferenceDither(sources[s], pal, t.bits, count, options);
        EXPECT_TRUE(SameBlock(remapper.Dither(sources[s]), want));
      }
    }
  }
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

TEST(Dither, BlackAndWhiteFollowsBrightnessAndContrast) {
  uint8_t pal[kPaletteBytes];
  BuildFixedPalette(pal, nullptr, kPaletteBlackWhite);
  ImageBlock source = NaturalImage(47, 33, 6);
  for (auto [brightness, contrast] : {std::pair{20, 20}, {-60, 40}, {90, -30}, {5, 500}}) {
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
