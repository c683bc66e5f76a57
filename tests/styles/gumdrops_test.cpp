// Gumdrops: the map cache and the blit against their plain references, the
// maps made, the tile as a torus, and the checks every shape effect passes.
#include "styles/gumdrops.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "draw/draw.h"
#include "tests/styles/shape_effect_checks.h"

namespace tess {
namespace {

using testing::Changes;
using testing::SameBytes;
constexpr int kStyle = 7;

// Odd sizes, every shape, few frames: quick, and catches stride faults.
const Changes kSmall = {{"Width", 37}, {"Depth", 29}, {"Frames", 12}, {"Size", 14},
                        {"Density", 16}, {"Drift", 30}, {"Style1", 0}, {"Style2", 3},
                        {"Style3", 4}, {"Style4", 2}, {"Style5", 1}};
// Colour 2 as a linear gradient (a fill kind in the setting's top byte).
const Changes kGradient = {{"FillColor2", 0x01000000 | 0x95632C}};

testing::StyleConfig With(const Changes& a, const Changes& b = {}) { return {kStyle, a, b}; }

std::vector<ImageBlock> Render(const testing::StyleConfig& c, const std::vector<int>& ks,
                               GumdropsOptions options) {
  std::vector<ImageBlock> frames;
  Random random;
  auto record = GumdropsRecord::Create(c.Reader(), random, options);
  if (record)
    for (int k : ks) frames.push_back(record->RenderFrame(k));
  return frames;
}

TEST(GumdropsFrames, CachedMapsAndTheFastBlitMatchTheirReferences) {
  const std::vector<std::pair<const char*, testing::StyleConfig>> setups = {
      {"every shape", With(kSmall)},
      {"no bevel", With(kSmall, {{"BevelEnable", 0}})},
      {"gradient fill", With(kSmall, kGradient)},
      {"large drops on a small tile", With(kSmall, {{"Width", 16}, {"Depth", 21}, {"Size", 40}})},
  };
  for (const auto& [name, c] : setups) {
    SCOPED_TRACE(name);
    const std::vector<int> ks = {0, 1, 5, 11};
    std::vector<ImageBlock> fast = Render(c, ks, {});
    std::vector<ImageBlock> fresh = Render(c, ks, {.cache_maps = false});
    std::vector<ImageBlock> plain = Render(c, ks, {.plain_blit = true});
    ASSERT_EQ(fast.size(), ks.size());
    for (size_t i = 0; i < ks.size(); ++i) {
      EXPECT_TRUE(SameBytes(fast[i], fresh[i])) << "frame " << ks[i];
      EXPECT_TRUE(SameBytes(fast[i], plain[i])) << "frame " << ks[i];
    }
  }
}

// Each map a drop shows on some frame is made once, and no other.
TEST(GumdropsFrames, InitMakesExactlyTheMapsTheFramesShow) {
  for (const auto& c : {With(kSmall), With(kSmall, {{"Frames", 3}}), With({})}) {
    Random random;
    auto record = GumdropsRecord::Create(c.Reader(), random);
    ASSERT_TRUE(record);
    std::set<std::tuple<DropShape, int, int32_t>> shown;
    for (int k = 0; k < record->FrameCount(); ++k)
      for (int32_t i = 0; i < record->count(); ++i) {
        const Gumdrop& d = record->drops()[i];
        shown.insert({record->ShapeOf(d), d.layer, record->StepAt(d, k)});
      }
    EXPECT_EQ(record->maps_made(), static_cast<int>(shown.size()));
    ASSERT_TRUE(record->RenderFrame(1));
    EXPECT_EQ(record->maps_made(), static_cast<int>(shown.size()));
  }
}

// The tile seen from another point is the same tile rolled: true only of a
// picture on a torus, so a drop clipped at an edge instead of wrapped fails.
TEST(GumdropsFrames, MovingTheViewpointRollsThePicture) {
  const std::vector<std::pair<const char*, testing::StyleConfig>> setups = {
      {"odd tile", With(kSmall)},
      {"97 x 61", With(kSmall, {{"Width", 97}, {"Depth", 61}, {"Size", 30}, {"Density", 40}})},
      {"gradient fill", With(kSmall, kGradient)},
  };
  for (const auto& [name, c] : setups)
    for (auto [vx, vy] : {std::pair{1, 0}, {0, 1}, {18, 13}, {36, 28}}) {
      SCOPED_TRACE(std::string(name) + " from " + std::to_string(vx) + ", " + std::to_string(vy));
      std::vector<ImageBlock> still = Render(c, {0, 4}, {});
      std::vector<ImageBlock> moved = Render(c, {0, 4}, {.view_x = vx, .view_y = vy});
      ASSERT_EQ(moved.size(), 2u);
      for (size_t i = 0; i < 2; ++i) EXPECT_TRUE(SameBytes(moved[i], RollUp(RollLeft(still[i], vx), vy)));
    }
}

TEST(GumdropsFrames, LoopsAndTheSeedDecides) {
  for (const auto& c : {With(kSmall, {{"Frames", 2}}), With(kSmall, {{"Frames", 7}, {"Drift", 99}}), With({})})
    testing::ExpectLoops(c);
  testing::ExpectTheSeedDecides(With(kSmall));
}

TEST(GumdropsFrames, EverySettingChangesThePicture) {
  testing::ExpectEachChangeShows(
      kStyle, {{"Frames", 8}},
      {{"Frames", 9},        {"Width", 161},       {"Depth", 127},       {"Size", 24},
       {"Density", 40},      {"Drift", 60},        {"Seed", 100},        {"BevelEnable", 0},
       {"Background", 0},    {"FillColor1", 0xFF}, {"FillColor2", 0xFF}, {"FillColor3", 0xFF},
       {"FillColor4", 0xFF}, {"FillColor5", 0xFF}, {"FillEnable2", 0},   {"FillEnable3", 0},
       {"FillEnable4", 0},   {"FillEnable5", 0},   {"Style1", 0},        {"Style2", 2},
       {"Style3", 3},        {"Style4", 4},        {"Style5", 0}});
}

TEST(GumdropsFrames, EveryAllocationFailureFailsTheBuild) {
  testing::ExpectEveryAllocationFailureFailsTheBuild(With(kSmall, {{"Frames", 3}, {"FillColor3", 0x02000000}}));
}

// A difference means the picture changed: check it is intended, then rebuild
// the target regenerate-golden-gumdrops_test.
TEST(GumdropsGolden, FramesMatchTheirChecksums) {
  testing::ExpectGoldenFrames(
      kStyle, "gumdrops",
      {{"defaults", {}},
       {"shapes_97x61", {{"Width", 97}, {"Depth", 61}, {"Frames", 9}, {"Style1", 0}, {"Style2", 2},
                         {"Style3", 3}, {"Style4", 4}, {"Drift", 40}}},
       {"flat_single_colour", {{"Frames", 5}, {"BevelEnable", 0}, {"FillEnable2", 0},
                               {"FillEnable3", 0}, {"FillEnable4", 0}, {"FillEnable5", 0},
                               {"Style1", 4}, {"Size", 64}, {"Density", 8}}}});
}

}  // namespace
}  // namespace tess
