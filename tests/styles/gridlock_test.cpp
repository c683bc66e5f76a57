// Gridlock: frames against the plain compositor (which proves the wrap-around
// too), the traffic rules, the shared properties and golden checksums.
#include "styles/gridlock.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "tests/styles/bead_test_support.h"

namespace tess {
namespace {

using testing::BeadConfig;

BeadConfig Defaults() { return BeadConfig(16); }
BeadConfig Odd() {
  return Defaults().Set("Width", 97).Set("Depth", 61).Set("Size", 13).Set("Frames", 30);
}

std::unique_ptr<GridlockRecord> Create(const BeadConfig& config) {
  Random random;
  return GridlockRecord::Create(config.Reader(), random);
}

TEST(GridlockFrames, MatchThePlainCompositor) {
  const std::pair<BeadConfig, std::vector<int>> cases[] = {
      {Defaults(), {0, 5, 37}},
      {Odd(), {0, 11, 29}},
      {Defaults().Set("Width", 48).Set("Depth", 48).Set("Size", 36).Set("ShadowOffset", 32), {9}},
      {Odd().Set("FillColor1", int32_t{kFillGradient << 24 | 0x2060FF}), {4}},
  };
  for (const auto& [config, ks] : cases) {
    auto r = Create(config);
    for (int k : ks) EXPECT_TRUE(testing::SameBytes(r->RenderFrame(k), testing::PlainFrame(*r, k)));
  }
}

// No two blocks' boxes meet on the torus in any frame: blocks wait clear of
// crossings and queue with gaps, even with every waiting place taken.
TEST(GridlockTraffic, BlocksNeverOverlap) {
  for (const BeadConfig& config :
       {Defaults(), Odd(), Defaults().Set("Density", 256),
        Defaults().Set("Width", 300).Set("Depth", 77).Set("Size", 10).Set("Density", 256),
        Defaults().Set("Size", 36).Set("Density", 256).Set("Frames", 23),
        Defaults().Set("Width", 48).Set("Depth", 48).Set("Size", 36).Set("Density", 256),
        Odd().Set("DirLeft", 0).Set("DirUp", 0).Set("Density", 256)}) {
    auto r = Create(config);
    auto apart = [](int64_t d, int64_t length) {
      d = (d % length + length) % length;
      return std::min(d, length - d);
    };
    std::vector<GlossItem> items;
    for (int k = 0; k < r->FrameCount(); ++k) {
      r->Items(k, items);
      for (size_t i = 0; i < items.size(); ++i)
        for (size_t j = i + 1; j < items.size(); ++j) {
          const GlossShape &a = items[i].sprites->shape(), &b = items[j].sprites->shape();
          ASSERT_FALSE(apart(items[i].x - items[j].x, 4 * r->width()) < 2 * (a.width + b.width) &&
                       apart(items[i].y - items[j].y, 4 * r->height()) < 2 * (a.height + b.height))
              << "frame " << k << ": " << i << " and " << j;
        }
    }
  }
}

// Streets run only the checked ways (all four when none is); every block
// waits and moves, never backs up and never leaves its street.
TEST(GridlockTraffic, StreetsRunTheCheckedWaysAndBlocksStopAndGo) {
  using Ways = std::set<std::pair<bool, int>>;  // (horizontal, sign)
  const Ways all = {{true, 1}, {true, -1}, {false, 1}, {false, -1}};
  const std::tuple<std::vector<const char*>, Ways, size_t> cases[] = {
      {{}, all, 24},
      {{"DirUp", "DirDown", "DirLeft"}, {{true, 1}}, 16},  // one axis: half the places
      {{"DirDown", "DirRight"}, {{true, -1}, {false, -1}}, 24},
      {{"DirUp", "DirDown", "DirLeft", "DirRight"}, all, 24},
  };
  for (const auto& [off, ways, count] : cases) {
    BeadConfig config = Defaults();
    for (const char* key : off) config.Set(key, 0);
    auto r = Create(config);
    Ways seen;
    for (const GridlockStreet& s : r->streets()) seen.insert({s.horizontal, s.sign});
    EXPECT_EQ(seen, ways);
    EXPECT_EQ(r->cars().size(), count);
    const int n = r->FrameCount();
    for (const GridlockCar& car : r->cars()) {
      const GridlockStreet& s = r->streets()[size_t(car.street)];
      int waits = 0;
      for (int k = 0; k < n; ++k) {
        int64_t x0, y0, x1, y1;
        r->Centre(car, k, x0, y0);
        r->Centre(car, k + 1, x1, y1);
        int64_t step = s.horizontal ? x1 - x0 : y1 - y0;
        if (k + 1 == n) step += s.sign * 4 * (s.horizontal ? r->width() : r->height());
        EXPECT_GE(step * s.sign, 0);
        EXPECT_EQ(s.horizontal ? y1 - y0 : x1 - x0, 0);
        waits += step == 0;
      }
      EXPECT_GT(waits, 0);
      EXPECT_LT(waits, n);
    }
  }
}

TEST(GridlockFrames, LoopSeedSettingsAndFailures) {
  for (const BeadConfig& c : {Defaults(), Odd(), Odd().Set("Frames", 2), Odd().Set("Frames", 17)})
    testing::ExpectLoopAndSeed(c);
  // Frame 13 lies in the vertical streets' first green window.
  testing::ExpectEverySettingShows(Defaults(),
                                   {{"Width", 130},
                                    {"Depth", 120},
                                    {"Frames", 40},
                                    {"Seed", 777},
                                    {"Size", 14},
                                    {"Density", 12},
                                    {"Glare", 0},
                                    {"Shade", 255},
                                    {"ShadowOffset", 2},
                                    {"ShadowOpacity", 200},
                                    {"Background", 0x102030},
                                    {"FillColor1", 0x00FFFF},
                                    {"FillColor2", 0xFFFFFF},
                                    {"FillColor3", 0x808080},
                                    {"FillColor4", 0},
                                    {"FillColor5", 0xFF00FF},
                                    {"FillEnable2", 0},
                                    {"FillEnable3", 0},
                                    {"FillEnable4", 0},
                                    {"FillEnable5", 0},
                                    {"DirUp", 0},
                                    {"DirDown", 0},
                                    {"DirLeft", 0},
                                    {"DirRight", 0}},
                                   13);
  testing::ExpectEveryAllocationFailureFailsTheBuild(
      Odd()
          .Set("Frames", 3)
          .Set("FillEnable3", 0)
          .Set("FillEnable4", 0)
          .Set("FillEnable5", 0)
          .Set("FillColor2", int32_t{kFillGradient << 24 | 0x3060C0}));
}

TEST(GridlockGolden, FramesMatchTheirChecksums) {
  BeadConfig odd = Odd().Set("Seed", 101).Set("Glare", 255).Set("Shade", 200);
  odd.Set("ShadowOffset", 3).Set("DirUp", 0).Set("FillEnable4", 0);
  testing::ExpectGoldenFrames("gridlock", {{"defaults", Defaults()}, {"odd", odd}});
}

}  // namespace
}  // namespace tess
