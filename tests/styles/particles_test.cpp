// Particles: frames against the plain compositor (which also proves the
// wrap-around), the loop, the seed, every setting, motion, failures and
// golden checksums.
#include "styles/particles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/styles/bead_test_support.h"
#include "tests/support/golden.h"

namespace tess {
namespace {

using testing::BeadConfig;
using testing::RenderFrames;
using testing::SameBytes;

constexpr int kNumber = 17;

BeadConfig Defaults() { return BeadConfig(kNumber); }

// Odd sizes and few frames: quick, and catches stride faults.
BeadConfig Small() {
  BeadConfig c = Defaults();
  c.Set("Width", 37).Set("Depth", 29).Set("Frames", 7).Set("Size", 10).Set("Density", 14);
  return c;
}

std::unique_ptr<ParticlesRecord> Create(const BeadConfig& config) {
  SettingsReader reader = config.Reader();
  Random random;
  return ParticlesRecord::Create(reader, random);
}

// Frame k of `record` drawn by the plain compositor.
ImageBlock Reference(const ParticlesRecord& record, int k) {
  std::vector<testing::SceneShadow> shadows;
  std::vector<testing::SceneSprite> sprites;
  const int64_t offset = 4 * int64_t{record.shadow_offset()};
  for (const Particle& p : record.particles()) {
    int64_t x, y;
    record.Centre(p, k, x, y);
    const GlossSprites& set = record.sprites(p.layer);
    GlossPlace s = set.PlaceShadow(x + offset, y + offset);
    shadows.push_back({&set.Shadow(s.phase), s.x, s.y});
    GlossPlace at = set.Place(x, y);
    sprites.push_back({&set.Sprite(p.paint, at.phase), at.x, at.y});
  }
  return testing::ComposeOnBigCanvas(record.width(), record.height(), record.background(),
                                     record.shadow_opacity(), shadows, sprites);
}

// ---------------------------------------------------------------- frames

TEST(ParticlesFrames, MatchThePlainCompositorThatDrawsEveryCopyOnABigCanvas) {
  struct Case {
    const char* name;
    BeadConfig config;
    std::vector<int> ks;
  };
  std::vector<Case> cases = {{"defaults", Defaults(), {0, 5}}, {"small", Small(), {0, 3, 6}}};
  cases.push_back({"far_shadows", Small(), {2}});
  cases.back().config.Set("ShadowOffset", 32).Set("ShadowOpacity", 255).Set("Width", 53);
  cases.push_back({"textured", Defaults(), {1}});
  cases.back().config.Set("FillColor3", static_cast<int32_t>(kFillTexture << 24)).Set("Size", 36);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto record = Create(c.config);
    ASSERT_TRUE(record);
    for (int k : c.ks) EXPECT_TRUE(SameBytes(record->RenderFrame(k), Reference(*record, k))) << k;
  }
}

TEST(ParticlesFrames, FrameNIsFrameZeroAndTheSeedDecides) {
  for (BeadConfig c : {Defaults(), Small(), Small().Set("Frames", 2)}) {
    const int n = c.Get("Frames");
    std::vector<ImageBlock> frames = RenderFrames(c, {0, 1, n, n + 1});
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_TRUE(SameBytes(frames[0], frames[2]));
    EXPECT_TRUE(SameBytes(frames[1], frames[3]));
    EXPECT_FALSE(SameBytes(frames[0], frames[1]));
  }
  BeadConfig other = Small();
  other.Set("Seed", other.Get("Seed") + 1);
  std::vector<ImageBlock> a = RenderFrames(Small(), {0, 4}), b = RenderFrames(Small(), {0, 4}),
                          c = RenderFrames(other, {0, 4});
  for (size_t k = 0; k < 2; ++k) {
    EXPECT_TRUE(SameBytes(a[k], b[k]));
    EXPECT_FALSE(SameBytes(a[k], c[k]));
  }
}

// Each row changes the picture: frame 1 differs from the defaults' frame 1.
TEST(ParticlesFrames, EverySettingOnThePageShows) {
  const std::vector<std::pair<const char*, int32_t>> changes = {
      {"Width", 130},
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
      {"FillColor4", 0x000000},
      {"FillColor5", 0xFF00FF},
      {"FillEnable2", 0},
      {"FillEnable3", 0},
      {"FillEnable4", 0},
      {"FillEnable5", 0},
  };
  std::set<std::string> keys, changed;
  for (const PageControl& control : Defaults().Style().page)
    if (control.key) keys.insert(control.key);
  for (const auto& change : changes) changed.insert(change.first);
  EXPECT_EQ(keys, changed);
  const ImageBlock base = std::move(RenderFrames(Defaults(), {1})[0]);
  for (const auto& [key, value] : changes) {
    BeadConfig c = Defaults();
    c.Set(key, value);
    EXPECT_FALSE(SameBytes(base, RenderFrames(c, {1})[0])) << key;
  }
}

// ---------------------------------------------------------------- motion

TEST(ParticlesMotion, BeadsDriftAtManyAnglesWholeTilesPerLoopSmallOnesDrawnFirst) {
  auto record = Create(Defaults());
  ASSERT_TRUE(record);
  const auto& particles = record->particles();
  ASSERT_EQ(particles.size(), static_cast<size_t>(Defaults().Get("Density")));
  std::set<std::pair<int, int>> directions;
  for (size_t i = 0; i < particles.size(); ++i) {
    const Particle& p = particles[i];
    ASSERT_TRUE(p.vx != 0 || p.vy != 0);
    directions.insert({p.vx, p.vy});
    if (i > 0) {
      EXPECT_LE(particles[i - 1].layer, p.layer);
    }
    // Steady straight steps, across the loop point too (where the next
    // centre is frame 0's plus the whole tiles travelled).
    const int n = record->FrameCount();
    const int64_t span_x = 4 * int64_t{p.vx} * record->width(),
                  span_y = 4 * int64_t{p.vy} * record->height();
    for (int k = 0; k < n; ++k) {
      int64_t x, y, nx, ny;
      record->Centre(p, k, x, y);
      record->Centre(p, k + 1, nx, ny);
      if (k + 1 == n) nx += span_x, ny += span_y;
      EXPECT_LE(std::abs((nx - x) * n - span_x), n) << k;
      EXPECT_LE(std::abs((ny - y) * n - span_y), n) << k;
    }
  }
  EXPECT_GE(directions.size(), 10u);
}

// ---------------------------------------------------------------- failures

TEST(ParticlesFailures, EveryAllocationFailingEndsTheBuildCleanly) {
  BeadConfig c = Small();
  c.Set("Frames", 3).Set("FillEnable3", 0).Set("FillEnable4", 0).Set("FillEnable5", 0);
  c.Set("FillColor2", static_cast<int32_t>(kFillGradient << 24 | 0x3060C0));
  testing::SweepAllocationFailures(c);
}

// ---------------------------------------------------------------- golden

// Frames 0, 1 and N-1 at the configuration's defaults and at an odd setting.
// A difference means the picture changed: check it is intended, then rebuild
// the target regenerate-golden-particles_test.
TEST(ParticlesGolden, FramesMatchTheirChecksums) {
  BeadConfig odd = Defaults();
  odd.Set("Width", 97).Set("Depth", 61).Set("Size", 13).Set("Frames", 30).Set("Seed", 101);
  odd.Set("Glare", 255).Set("Shade", 200).Set("ShadowOffset", 3).Set("FillEnable4", 0);
  testing::GoldenSet golden("particles");
  for (const auto& [name, config] : {std::pair{"defaults", Defaults()}, std::pair{"odd", odd}}) {
    const int n = config.Get("Frames");
    std::vector<ImageBlock> frames = RenderFrames(config, {0, 1, n - 1});
    ASSERT_EQ(frames.size(), 3u);
    for (size_t i = 0; i < 3; ++i)
      golden.Add(
          std::string(name) + "_frame" + std::to_string(i == 2 ? n - 1 : static_cast<int>(i)),
          testing::ImageChecksum(frames[i]));
  }
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
