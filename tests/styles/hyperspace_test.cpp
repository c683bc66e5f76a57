// Hyperspace: the loop, the four directions, the wrap against a plain plane,
// what each setting does, the streak profile, failures, and golden checksums.
#include "styles/hyperspace.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "draw/draw.h"
#include "tests/styles/mask_effect_checks.h"

namespace tess {
namespace {

using testing::EffectSetup;
using testing::SameBytes;

EffectSetup Defaults() { return EffectSetup(1); }

EffectSetup Odd() {
  EffectSetup s = Defaults();
  s.Set("Width", 97).Set("Depth", 61).Set("Frames", 9).Set("Density", 12);
  return s;
}

std::unique_ptr<HyperspaceRecord> Create(const EffectSetup& setup) {
  Random random;
  return HyperspaceRecord::Create(setup.Reader(), random);
}

// ---------------------------------------------------------------- frames

TEST(HyperspaceFrames, FrameNRepeatsFrameZeroInEveryDirection) {
  for (int scroll = 0; scroll < 4; ++scroll) {
    for (EffectSetup s : {Defaults(), Odd(), Odd().Set("Frames", 2), Odd().Set("Frames", 5)}) {
      s.Set("Scroll", scroll);
      SCOPED_TRACE(::testing::Message() << "scroll " << scroll << " frames " << s.Get("Frames"));
      auto record = Create(s);
      ASSERT_TRUE(record);
      const int n = record->FrameCount();
      ImageBlock first = record->RenderFrame(0);
      EXPECT_TRUE(SameBytes(record->RenderFrame(n), first));
      EXPECT_TRUE(SameBytes(record->RenderFrame(3 * n), first));
      EXPECT_FALSE(SameBytes(record->RenderFrame(1), first));
    }
  }
}

int64_t Difference(const ImageBlock& a, const ImageBlock& b) {
  int64_t sum = 0;
  for (size_t i = 0; i < a.size(); ++i) sum += std::abs(int(a.data()[i]) - int(b.data()[i]));
  return sum;
}

// Rolled by the distance a layer moves in one frame, frame 0 matches frame 1
// best along the picker's direction: the stars move the way it points. A value
// the picker does not have scrolls right, as a fresh page does.
TEST(HyperspaceFrames, StarsMoveTheWayThePickerPoints) {
  // 64 frames over 64 pixels: layers move 1, 2, 3 and 5 pixels a frame.
  const int dx[4] = {0, 1, -1, 0}, dy[4] = {-1, 0, 0, 1};
  for (int scroll : {0, 1, 2, 3, -1, 4, 1000}) {
    EffectSetup s = Defaults();
    s.Set("Width", 64).Set("Depth", 64).Set("Frames", 64).Set("Scroll", scroll);
    auto record = Create(s);
    ImageBlock f0 = record->RenderFrame(0), f1 = record->RenderFrame(1);
    int best = -1;
    int64_t best_difference = std::numeric_limits<int64_t>::max();
    for (int way = 0; way < 4; ++way)
      for (int step = 1; step <= 5; ++step) {
        const int64_t d = Difference(RollDown(RollRight(f0, dx[way] * step), dy[way] * step), f1);
        if (d < best_difference) best_difference = d, best = way;
      }
    const int want = scroll >= 0 && scroll <= 3 ? scroll : 1;
    EXPECT_EQ(best, want) << scroll;
    // Heads lead: each mask's brightest pixel lies in the front half of its
    // streak, counted along the motion.
    for (const StreakShape& shape : record->shapes()) {
      for (int32_t phase = 0; phase < kStreakPhases; ++phase) {
        const ImageBlock& mask = record->sprites()[size_t(shape.first + phase)];
        int32_t bx = 0, by = 0;
        for (int32_t y = 0; y < mask.height(); ++y)
          for (int32_t x = 0; x < mask.width(); ++x)
            if (ImageGetPixel(mask, x, y) > ImageGetPixel(mask, bx, by)) bx = x, by = y;
        const int32_t at = dx[want] ? bx : by, forward = dx[want] + dy[want];
        ASSERT_GT(2 * (forward > 0 ? at : shape.span - 1 - at) + 1, shape.length) << scroll;
      }
    }
  }
}

// The seam property: each frame must be what drawing every streak at all of
// its copies one tile apart gives. Clipping instead of wrapping fails here.
TEST(HyperspaceFrames, WrappedFramesEqualEveryCopyDrawnOnAPlane) {
  for (int scroll = 0; scroll < 4; ++scroll) {
    EffectSetup s = Odd();
    s.Set("Scroll", scroll);
    if (scroll == 2) s.SetFill(3, "gradient:linear:#FF0000:#FFFF00");
    auto record = Create(s);
    ASSERT_TRUE(record);
    for (int k : {0, 4, 8}) {
      testing::PlaneReference plane(97, 61, record->background());
      for (int32_t i = 0; i < record->count(); ++i) {
        HyperPlacement p = record->Place(i, k);
        plane.Blend(*p.mask, p.x, p.y, p.paint, record->paints().Picture(p.paint), 255);
      }
      EXPECT_TRUE(SameBytes(record->RenderFrame(k), plane.MiddleTile()))
          << "scroll " << scroll << " frame " << k;
    }
    EXPECT_EQ(record->paints().rendered() > 0, scroll == 2);
  }
}

TEST(HyperspaceFrames, EverySettingChangesThePicture) {
  testing::ExpectEverySettingShows(
      Defaults(), {{"Seed", 9865}, {"Density", 30}, {"FillOpacity", 255}, {"Scroll", 3},
                   {"Background", 0x301000}, {"FillColor1", 0x00FF00}, {"FillEnable3", 0},
                   {"Width", 255}, {"Depth", 200}, {"Frames", 32}});
}

// ---------------------------------------------------------------- streaks

// Sixteen phases move the head by sixteenths of a pixel: the streak's ink
// must not pulse as it moves (each pixel's truncation loses under one unit),
// and the trail must darken towards the tail.
TEST(HyperspaceStreaks, InkStaysSteadyAcrossPhasesAndTheTrailFades) {
  for (int32_t length : {2, 5, 40, 128}) {
    for (int32_t core : {1, 2}) {
      SCOPED_TRACE(::testing::Message() << "length " << length << " core " << core);
      std::vector<uint8_t> head(size_t(length) + 2), trail(size_t(length) + 2);
      int64_t head0 = -1, trail0 = -1;
      for (int32_t phase = 0; phase < kStreakPhases; ++phase) {
        StreakProfile(length, core, 200, phase, head.data(), trail.data());
        int64_t h = 0, t = 0;
        for (size_t i = 0; i < head.size(); ++i) h += head[i], t += trail[i];
        if (phase == 0) head0 = h, trail0 = t;
        EXPECT_NEAR(h, head0, length + 2);
        EXPECT_NEAR(t, trail0, length + 2);
        EXPECT_GT(h, 0);
        for (int32_t i = 1; i + 1 < length; ++i) EXPECT_LE(trail[size_t(i)], trail[size_t(i) + 1]);
      }
    }
  }
}

// ---------------------------------------------------------------- failures and golden

// With a gradient slot, so the fill renders take part.
TEST(HyperspaceFailures, EveryAllocationFailureFailsTheBuildCleanly) {
  testing::ExpectEveryAllocationFailureFailsTheBuild(
      Odd().Set("Frames", 3).Set("Scroll", 0).SetFill(2, "gradient:radial:#FFFFFF:#0000FF"));
}

// Frames 0, 1 and N-1 at the configuration's defaults and scrolling up at an
// odd size. A difference means the picture changed: check it is intended,
// then rebuild the target regenerate-golden-hyperspace_test.
TEST(HyperspaceGolden, FramesMatchTheirChecksums) {
  testing::GoldenSet golden("hyperspace");
  testing::AddGoldenFrames(golden, "defaults", Defaults());
  testing::AddGoldenFrames(golden, "odd_up", Odd().Set("Scroll", 0));
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
