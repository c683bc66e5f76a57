// Particles: frames against the plain compositor (which proves the
// wrap-around too), the drift, the shared properties and golden checksums.
#include "styles/particles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "tests/styles/bead_test_support.h"

namespace tess {
namespace {

using testing::BeadConfig;

BeadConfig Defaults() { return BeadConfig(17); }
// Odd sizes and few frames: quick, and catches stride faults.
BeadConfig Small() {
  return Defaults()
      .Set("Width", 37)
      .Set("Depth", 29)
      .Set("Frames", 7)
      .Set("Size", 10)
      .Set("Density", 14);
}

std::unique_ptr<ParticlesRecord> Create(const BeadConfig& config) {
  Random random;
  return ParticlesRecord::Create(config.Reader(), random);
}

TEST(ParticlesFrames, MatchThePlainCompositor) {
  const std::pair<BeadConfig, std::vector<int>> cases[] = {
      {Defaults(), {0, 5}},
      {Small(), {0, 3, 6}},
      {Small().Set("ShadowOffset", 32).Set("ShadowOpacity", 255).Set("Width", 53), {2}},
      {Defaults().Set("FillColor3", int32_t{kFillTexture << 24}).Set("Size", 36), {1}},
  };
  for (const auto& [config, ks] : cases) {
    auto r = Create(config);
    for (int k : ks) EXPECT_TRUE(testing::SameBytes(r->RenderFrame(k), testing::PlainFrame(*r, k)));
  }
}

// Many directions, small beads drawn first, and steady steps all round the
// loop: from frame N-1 the next centre is frame 0's plus the tiles travelled.
TEST(ParticlesMotion, BeadsDriftInStraightLinesAtManyAnglesWithoutAJumpAtTheLoop) {
  auto r = Create(Defaults());
  std::set<std::pair<int, int>> directions;
  int layer = 0;
  const int n = r->FrameCount();
  for (const Particle& p : r->particles()) {
    directions.insert({p.vx, p.vy});
    EXPECT_LE(layer, p.layer);
    layer = p.layer;
    const int64_t span_x = 4 * int64_t{p.vx} * r->width(), span_y = 4 * int64_t{p.vy} * r->height();
    for (int k = 0; k < n; ++k) {
      int64_t x, y, nx, ny;
      r->Centre(p, k, x, y);
      r->Centre(p, k + 1, nx, ny);
      if (k + 1 == n) nx += span_x, ny += span_y;
      EXPECT_LE(std::abs((nx - x) * n - span_x), n);
      EXPECT_LE(std::abs((ny - y) * n - span_y), n);
    }
  }
  EXPECT_EQ(r->particles().size(), 36u);
  EXPECT_GE(directions.size(), 10u);
}

TEST(ParticlesFrames, LoopSeedSettingsAndFailures) {
  for (const BeadConfig& c : {Defaults(), Small(), Small().Set("Frames", 2)})
    testing::ExpectLoopAndSeed(c);
  testing::ExpectEverySettingShows(Defaults(),
                                   {{"Width", 130},
                                    {"Depth", 120},
                                    {"Frames", 40},
                                    {"Seed", 777},
                                    {"Size", 14},
                                    {"Density", 20},
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
                                    {"FillEnable5", 0}},
                                   1);
  testing::ExpectEveryAllocationFailureFailsTheBuild(
      Small()
          .Set("Frames", 3)
          .Set("FillEnable3", 0)
          .Set("FillEnable4", 0)
          .Set("FillEnable5", 0)
          .Set("FillColor2", int32_t{kFillGradient << 24 | 0x3060C0}));
}

TEST(ParticlesGolden, FramesMatchTheirChecksums) {
  BeadConfig odd = Defaults().Set("Width", 97).Set("Depth", 61).Set("Size", 13).Set("Frames", 30);
  odd.Set("Seed", 101).Set("Glare", 255).Set("Shade", 200).Set("ShadowOffset", 3);
  testing::ExpectGoldenFrames("particles",
                              {{"defaults", Defaults()}, {"odd", odd.Set("FillEnable4", 0)}});
}

}  // namespace
}  // namespace tess
