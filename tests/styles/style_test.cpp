// The style framework's shared parts: the generator's two recurrences, colour
// picking, and fills laid over a tile without a seam.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "fills/fill_render.h"
#include "styles/style.h"
#include "tests/support/map_reader.h"

namespace tess {
namespace {

// The sequence is part of the product: a seed must give the same picture.
TEST(RandomGenerator, FollowsItsRecurrences) {
  Random r;
  r.Seed(1);
  // S = 1 * 0x000015A400004E35 + 1: high half 0x15A4.
  EXPECT_EQ(r.Next(), 0x15A4);
  EXPECT_EQ(r.state(), 0x000015A400004E36ull);
  // The short draw works on the low half only and keeps the high half.
  uint64_t high = r.state() >> 32;
  r.NextShort();
  EXPECT_EQ(r.state() >> 32, high);
  r.Seed(1);
  EXPECT_EQ(r.NextShort(), 0x015A);  // L = 0x015A4E36: bits 16..30
  r.Seed(0xFFFFFFFFu);
  for (int i = 0; i < 1000; ++i) ASSERT_GE(r.Next(), 0);  // the top bit is always cleared
  // A zero range draws nothing.
  Random a, b;
  a.Seed(10632);
  b.Seed(10632);
  EXPECT_EQ(a.Below(0) + a.BelowShort(0), 0);
  EXPECT_EQ(a.state(), b.state());
}

FillDescriptor Gradient(uint32_t type, int32_t rotation, int32_t centre_x = 0, int32_t centre_y = 0) {
  FillDescriptor fill;
  fill.kind = kFillGradient;
  fill.gradient = {0x0020C0F0, 0x00602010, type, rotation, centre_x, centre_y, {}};
  return fill;
}

TEST(ColourPick, OneColourDrawsNothingPairsAlternateAndOnlyEnabledFillsCount) {
  Random r;
  r.Seed(5);
  uint64_t before = r.state();
  EXPECT_EQ(ColourPick(1).Pick(r), 0);
  EXPECT_EQ(r.state(), before);
  ColourPick two(2);
  int last = two.Pick(r);
  EXPECT_EQ(last, 1);  // differs from the initial previous index 0
  for (int i = 0; i < 50; ++i) {
    int c = two.Pick(r);
    EXPECT_NE(c, last);
    last = c;
  }
  testing::MapReader reader;
  for (int i = 1; i <= 5; ++i) reader.values[i] = i * 100;
  reader.values[13] = reader.values[15] = 1;
  reader.fills[3] = Gradient(kGradientLinear, 0);
  std::vector<FillDescriptor> fills = CollectFills(reader, {1, 2, 3, 4, 5}, {12, 13, 14, 15});
  ASSERT_EQ(fills.size(), 3u);
  EXPECT_EQ(fills[0].colour, 100u);
  EXPECT_EQ(fills[1].kind, kFillGradient);
  EXPECT_EQ(fills[1].gradient.grad_end, 0x00602010u);
  EXPECT_EQ(fills[2].colour, 500u);
  EXPECT_EQ(fills[2].kind, kFillSimple);
}

// ---------------------------------------------------------------- seamless fills

uint64_t Step(const ImageBlock& image, int a, int b, bool down) {
  uint64_t sum = 0;
  for (int t = 0; t < (down ? image.width() : image.height()); ++t) {
    Colour p = down ? ImageGetPixel(image, t, a) : ImageGetPixel(image, a, t);
    Colour q = down ? ImageGetPixel(image, t, b) : ImageGetPixel(image, b, t);
    for (int shift = 0; shift < 24; shift += 8)
      sum += static_cast<uint64_t>(std::abs(int((p >> shift) & 0xFF) - int((q >> shift) & 0xFF)));
  }
  return sum;
}

// Where tiles meet, the picture steps no more than it does inside.
bool WrapsLikeInterior(const ImageBlock& image, bool down) {
  const int n = down ? image.height() : image.width();
  uint64_t largest = 0;
  for (int i = 0; i + 1 < n; ++i) largest = std::max(largest, Step(image, i, i + 1, down));
  return Step(image, n - 1, 0, down) <= 2 * largest;
}

// The column a folded axis shows: even columns out, odd ones back.
int RefFold(int x, int n) { return x < (n + 1) / 2 ? 2 * x : 2 * (n - x) - 1; }

TEST(SeamlessFill, FoldsOnlyTheAxesWhoseEdgesDoNotMeet) {
  struct Case {
    FillDescriptor fill;
    bool across, down;  // the axes that must fold
  };
  FillDescriptor simple, texture, tile;
  simple.colour = 0x123456;
  texture.kind = kFillTexture;
  tile.kind = kFillTile;
  const std::vector<Case> cases = {
      {simple, false, false},
      {texture, false, false},
      {tile, false, false},
      {Gradient(kGradientRadial, 0), false, false},
      {Gradient(kGradientSquare, 0), false, false},
      {Gradient(kGradientLinear, 0), true, false},
      {Gradient(kGradientLinear, 90), false, true},
      {Gradient(kGradientLinear, 30), true, true},
      {Gradient(kGradientRadial, 0, 25, -10), true, true},
      {Gradient(kGradientConical, 0), true, false},
  };
  for (auto [w, h] : {std::pair{37, 23}, {192, 128}, {16, 16}})
    for (size_t i = 0; i < cases.size(); ++i) {
      SCOPED_TRACE(::testing::Message() << "case " << i << " at " << w << "x" << h);
      ImageBlock drawn = RenderFill(cases[i].fill, w, h);
      ImageBlock tiling = RenderSeamlessFill(cases[i].fill, w, h);
      ASSERT_TRUE(drawn && tiling);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
          ASSERT_EQ(ImageGetPixel(tiling, x, y),
                    ImageGetPixel(drawn, cases[i].across ? RefFold(x, w) : x,
                                  cases[i].down ? RefFold(y, h) : y))
              << x << "," << y;
      EXPECT_TRUE(WrapsLikeInterior(tiling, false));
      EXPECT_TRUE(WrapsLikeInterior(tiling, true));
    }
  // The statistic sees the seams that folding removes.
  ImageBlock linear = RenderFill(Gradient(kGradientLinear, 30), 37, 23);
  EXPECT_FALSE(WrapsLikeInterior(linear, false));
  EXPECT_FALSE(WrapsLikeInterior(linear, true));
}

}  // namespace
}  // namespace tess
