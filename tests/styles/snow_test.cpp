// Snow: the loop, the wrap against a plain plane, what each setting does, the
// sine and the crystal sprites against plain references, failures, and golden
// checksums of a few frames.
#include "styles/snow.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "tests/styles/mask_effect_checks.h"

namespace tess {
namespace {

using testing::EffectSetup;
using testing::SameBytes;

EffectSetup Defaults() { return EffectSetup(15); }

// Odd sizes, few frames, flakes up to the tile's size: quick, and catches
// stride and wrap faults that square tiles hide.
EffectSetup Odd() {
  EffectSetup s = Defaults();
  s.Set("Width", 97).Set("Depth", 61).Set("Frames", 7).Set("Size", 40).Set("Density", 12);
  s.Set("Drift", 30);
  return s;
}

std::unique_ptr<SnowRecord> Create(const EffectSetup& setup) {
  Random random;
  return SnowRecord::Create(setup.Reader(), random);
}

// ---------------------------------------------------------------- frames

TEST(SnowFrames, FrameNRepeatsFrameZeroAndNeighboursDiffer) {
  const EffectSetup cases[] = {
      Defaults(), Odd(), Odd().Set("Frames", 2), Odd().Set("Frames", 3).Set("Drift", 99),
      Defaults().Set("Width", 16).Set("Depth", 16).Set("Size", 64).Set("Frames", 5)};
  for (const EffectSetup& s : cases) {
    SCOPED_TRACE(::testing::Message() << s.Get("Width") << "x" << s.Get("Depth") << " frames "
                                      << s.Get("Frames"));
    auto record = Create(s);
    ASSERT_TRUE(record);
    const int n = record->FrameCount();
    ImageBlock first = record->RenderFrame(0);
    EXPECT_TRUE(SameBytes(record->RenderFrame(n), first));
    EXPECT_TRUE(SameBytes(record->RenderFrame(2 * n), first));
    EXPECT_FALSE(SameBytes(record->RenderFrame(1), first));
  }
}

// The seam property: each frame must be what drawing every flake at all of
// its copies one tile apart gives, so a flake leaving one edge is the same
// flake entering the opposite one. Clipping instead of wrapping fails here.
TEST(SnowFrames, WrappedFramesEqualEveryCopyDrawnOnAPlane) {
  std::vector<EffectSetup> setups = {Odd(), Odd()};
  setups[1].Set("FillOpacity", 255).SetFill(2, "gradient:radial:#FFFFFF:#203080");
  for (const EffectSetup& s : setups) {
    auto record = Create(s);
    ASSERT_TRUE(record);
    for (int k : {0, 3, 6}) {
      testing::PlaneReference plane(97, 61, record->background());
      for (int32_t i = 0; i < record->count(); ++i) {
        SnowPlacement p = record->Place(i, k);
        plane.Blend(*p.mask, p.x, p.y, p.paint, record->paints().Picture(p.paint), p.opacity);
      }
      EXPECT_TRUE(SameBytes(record->RenderFrame(k), plane.MiddleTile())) << k;
    }
  }
  EXPECT_GT(Create(setups[1])->paints().rendered(), 0);
}

TEST(SnowFrames, EverySettingChangesThePicture) {
  testing::ExpectEverySettingShows(
      Defaults(), {{"Seed", 10646}, {"Size", 30}, {"Density", 20}, {"Drift", 30},
                   {"FillOpacity", 255}, {"Background", 0x402010}, {"FillColor3", 0x0000FF},
                   {"FillEnable5", 0}, {"Width", 191}, {"Depth", 190}, {"Frames", 32}});
}

// ---------------------------------------------------------------- sine and sprites

TEST(SnowSprites, SineMatchesTheLibrarySineAndItsSymmetries) {
  int worst = 0;
  for (uint32_t p = 0; p < 65536; ++p) {
    const double exact = std::sin(6.283185307179586 * p / 65536.0) * 65536.0;
    worst = std::max(worst, std::abs(SineQ16(p) - static_cast<int>(std::lround(exact))));
    EXPECT_EQ(SineQ16(p + 32768), -SineQ16(p)) << p;
  }
  EXPECT_LE(worst, 1);
  EXPECT_EQ(SineQ16(0), 0);
  EXPECT_EQ(SineQ16(16384), 65536);
  EXPECT_EQ(SineQ16(65536 + 16384), 65536);  // whole turns fold away
}

// The master reduced by counting each 4 x 4 block: the plain reference for
// the unturned copy.
ImageBlock ReducedMaster(const uint8_t* master, int32_t size) {
  ImageBlock out = ImageCreate(size, size, nullptr, 24);
  for (int32_t y = 0; y < size; ++y)
    for (int32_t x = 0; x < size; ++x) {
      int count = 0;
      for (int j = 0; j < 4; ++j)
        for (int i = 0; i < 4; ++i) count += master[(4 * y + j) * 4 * size + 4 * x + i];
      const uint32_t g = static_cast<uint32_t>(count * 255 / 16);
      ImageSetPixel(out, x, y, MakeColour(g, g, g));
    }
  return out;
}

int64_t Ink(const ImageBlock& mask) {
  int64_t sum = 0;
  for (int32_t y = 0; y < mask.height(); ++y)
    for (int32_t x = 0; x < mask.width(); ++x) sum += ColourBlue(ImageGetPixel(mask, x, y));
  return sum;
}

// A turning crystal must neither lose its tips at the sprite's edge nor
// change its weight as it turns.
TEST(SnowSprites, TurnedCrystalsKeepTheirInkInsideTheSprite) {
  Random random;
  random.Seed(4242);
  for (int32_t size : {14, 15, 33, 64}) {
    for (int design = 0; design < 3; ++design) {
      SCOPED_TRACE(::testing::Message() << "size " << size << " design " << design);
      CrystalDesign d{static_cast<int32_t>(55 + random.Below(45)), 90, 250, design == 1, 3,
                      {300, 550, 800}, {450, 450, 450}, design != 0, 160};
      Buffer<uint8_t> master = DrawCrystalMaster(d, size);
      ASSERT_TRUE(master);
      EXPECT_TRUE(SameBytes(TurnedCrystal(master.get(), size, 0, 7), ReducedMaster(master.get(), size)));
      const int64_t ink0 = Ink(ReducedMaster(master.get(), size));
      for (int32_t turn = 0; turn < 7; ++turn) {
        ImageBlock copy = TurnedCrystal(master.get(), size, turn, 7);
        for (int32_t t = 0; t < size; ++t) {
          ASSERT_EQ(ImageGetPixel(copy, t, 0) | ImageGetPixel(copy, t, size - 1), 0u) << turn;
          ASSERT_EQ(ImageGetPixel(copy, 0, t) | ImageGetPixel(copy, size - 1, t), 0u) << turn;
        }
        EXPECT_NEAR(static_cast<double>(Ink(copy)), static_cast<double>(ink0), 0.05 * ink0) << turn;
      }
    }
  }
}

// ---------------------------------------------------------------- failures and golden

// With a gradient slot, so the fill renders take part.
TEST(SnowFailures, EveryAllocationFailureFailsTheBuildCleanly) {
  testing::ExpectEveryAllocationFailureFailsTheBuild(
      Odd().Set("Frames", 3).SetFill(1, "gradient:linear:#000000:#FFFFFF"));
}

// Frames 0, 1 and N-1 at the configuration's defaults and at an odd size. A
// difference means the picture changed: check it is intended, then rebuild
// the target regenerate-golden-snow_test.
TEST(SnowGolden, FramesMatchTheirChecksums) {
  testing::GoldenSet golden("snow");
  testing::AddGoldenFrames(golden, "defaults", Defaults());
  testing::AddGoldenFrames(golden, "odd", Odd());
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
