// Cubist: the fast painter against the plain one, the blocks' motion, the
// tile as a torus, and the checks every shape effect passes.
#include "styles/cubist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <tuple>
#include <string>
#include <utility>
#include <vector>

#include "draw/draw.h"
#include "tests/styles/shape_effect_checks.h"

namespace tess {
namespace {

using testing::Changes;
using testing::SameBytes;
constexpr int kStyle = 2;

// Odd sizes, few frames: quick, and catches stride faults.
const Changes kSmall = {{"Width", 41}, {"Depth", 27}, {"Frames", 10}, {"Density", 12}};
const Changes kGradient = {{"FillColor1", 0x01000000 | 0x996633}, {"Solid", 1}};

testing::StyleConfig With(const Changes& a, const Changes& b = {}) { return {kStyle, a, b}; }

std::vector<ImageBlock> Render(const testing::StyleConfig& c, const std::vector<int>& ks,
                               CubistOptions options) {
  std::vector<ImageBlock> frames;
  Random random;
  auto record = CubistRecord::Create(c.Reader(), random, options);
  if (record)
    for (int k : ks) frames.push_back(record->RenderFrame(k));
  return frames;
}

TEST(CubistFrames, TheFastPainterMatchesThePlainOne) {
  const std::vector<std::pair<const char*, testing::StyleConfig>> setups = {
      {"outlines", With(kSmall)},
      {"solid, translucent", With(kSmall, {{"Solid", 1}, {"FillOpacity", 150}})},
      {"gradient fill", With(kSmall, kGradient)},
      {"round, thick", With(kSmall, {{"Roundness", 100}, {"Thickness", 32}, {"VariWidth", 0}})},
  };
  for (const auto& [name, c] : setups) {
    SCOPED_TRACE(name);
    const std::vector<int> ks = {0, 3, 9};
    std::vector<ImageBlock> fast = Render(c, ks, {}), plain = Render(c, ks, {.plain_paint = true});
    ASSERT_EQ(fast.size(), ks.size());
    for (size_t i = 0; i < ks.size(); ++i) EXPECT_TRUE(SameBytes(fast[i], plain[i])) << ks[i];
  }
}

// Each block slides whole tile lengths and breathes whole periods, so every
// box on frame k + N is the box on frame k; in between it really moves.
TEST(CubistFrames, BlocksSlideAndBreatheThroughWholeCycles) {
  Random random;
  auto record = CubistRecord::Create(With(kSmall, {{"Frames", 7}, {"Density", 40}}).Reader(), random);
  ASSERT_TRUE(record);
  for (int32_t i = 0; i < record->count(); ++i) {
    const CubistBlock& b = record->blocks()[i];
    SCOPED_TRACE(i);
    EXPECT_EQ(std::abs(b.vx) + std::abs(b.vy) > 0, true);
    for (int k : {0, 1, 5}) {
      const CubistBox at = record->BoxAt(b, k), again = record->BoxAt(b, k + 7);
      EXPECT_EQ(std::tuple(at.box.left, at.box.top, at.box.right, at.box.bottom),
                std::tuple(again.box.left, again.box.top, again.box.right, again.box.bottom));
      EXPECT_LE(std::abs(at.box.width() - b.w0), b.dw);
      EXPECT_LE(std::abs(at.box.height() - b.h0), b.dh);
      EXPECT_LE(2 * at.radius, std::min(at.box.width(), at.box.height()));
    }
    EXPECT_NE(record->BoxAt(b, 0).box.left + record->BoxAt(b, 0).box.top,
              record->BoxAt(b, 1).box.left + record->BoxAt(b, 1).box.top);
  }
}

// The tile seen from another point is the same tile rolled: true only of a
// picture on a torus, so a block clipped at an edge instead of wrapped fails.
TEST(CubistFrames, MovingTheViewpointRollsThePicture) {
  const std::vector<std::pair<const char*, testing::StyleConfig>> setups = {
      {"outlines", With(kSmall)},
      {"97 x 61, solid", With({{"Width", 97}, {"Depth", 61}, {"Frames", 6}, {"Solid", 1}})},
      {"gradient fill", With(kSmall, kGradient)},
  };
  for (const auto& [name, c] : setups)
    for (auto [vx, vy] : {std::pair{1, 0}, {0, 1}, {20, 13}, {40, 26}}) {
      SCOPED_TRACE(std::string(name) + " from " + std::to_string(vx) + ", " + std::to_string(vy));
      std::vector<ImageBlock> still = Render(c, {0, 3}, {});
      std::vector<ImageBlock> moved = Render(c, {0, 3}, {.view_x = vx, .view_y = vy});
      ASSERT_EQ(moved.size(), 2u);
      for (size_t i = 0; i < 2; ++i) EXPECT_TRUE(SameBytes(moved[i], RollUp(RollLeft(still[i], vx), vy)));
    }
}

TEST(CubistFrames, LoopsAndTheSeedDecides) {
  for (const auto& c : {With(kSmall, {{"Frames", 2}}), With(kSmall, {{"Frames", 11}, {"Solid", 1}}), With({})})
    testing::ExpectLoops(c);
  testing::ExpectTheSeedDecides(With(kSmall));
}

// The outline's width alone has nothing to draw on solid blocks.
TEST(CubistFrames, EverySettingChangesThePicture) {
  testing::ExpectEachChangeShows(
      kStyle, {{"Frames", 8}},
      {{"Frames", 9},        {"Width", 255},        {"Depth", 129},       {"Seed", 100},
       {"Density", 20},      {"FillOpacity", 128},  {"Thickness", 3},     {"Roundness", 60},
       {"Solid", 1},         {"VariAlpha", 0},      {"VariWidth", 0},     {"Background", 0x404040},
       {"FillColor1", 0xFF}, {"FillColor2", 0xFF},  {"FillColor3", 0xFF}, {"FillColor4", 0xFF},
       {"FillColor5", 0xFF}, {"FillEnable2", 0},    {"FillEnable3", 0},   {"FillEnable4", 0},
       {"FillEnable5", 0}});
  const Changes solid = {{"Frames", 8}, {"Solid", 1}};
  EXPECT_TRUE(SameBytes(testing::EntryFrame(With(solid), 1),
                        testing::EntryFrame(With(solid, {{"Thickness", 2}}), 1)));
}

TEST(CubistFrames, EveryAllocationFailureFailsTheBuild) {
  testing::ExpectEveryAllocationFailureFailsTheBuild(With(kSmall, {{"Frames", 3}, {"FillColor2", 0x03000000}}));
}

// A difference means the picture changed: check it is intended, then rebuild
// the target regenerate-golden-cubist_test.
TEST(CubistGolden, FramesMatchTheirChecksums) {
  testing::ExpectGoldenFrames(
      kStyle, "cubist",
      {{"defaults", {}},
       {"solid_97x61", {{"Width", 97}, {"Depth", 61}, {"Frames", 9}, {"Solid", 1},
                        {"FillOpacity", 180}, {"Roundness", 100}}},
       {"even_outlines", {{"Frames", 5}, {"VariAlpha", 0}, {"VariWidth", 0}, {"Thickness", 2},
                          {"Roundness", 0}, {"Density", 8}}}});
}

}  // namespace
}  // namespace tess
