// Cubist: the fast painter against the plain one, the blocks' motion, the
// loop in time, the tile as a torus, the seed, every setting, failures, and
// golden checksums of a few frames.
#include "styles/cubist.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "dialog/settings_reader.h"
#include "draw/draw.h"
#include "image/frame_list.h"
#include "shell/settings.h"
#include "styles/style_table.h"
#include "tests/support/golden.h"

namespace tess {
namespace {

constexpr int kStyle = 2;
using Changes = std::vector<std::pair<const char*, int32_t>>;

// The configuration's Style002 defaults, with some values changed.
struct Config {
  Settings settings;
  Config& Set(const Changes& changes) {
    for (const auto& [key, value] : changes) settings.SetStyleNumber(kStyle, key, value);
    return *this;
  }
  int32_t Get(std::string_view key) const { return settings.StyleNumber(kStyle, key); }
  SettingsReader Reader() const { return SettingsReader(settings, *StyleByNumber(kStyle)); }
};

// Odd sizes, few frames: quick, and catches stride faults.
const Changes kSmall = {{"Width", 41}, {"Depth", 27}, {"Frames", 10}, {"Density", 12}};
const Changes kGradient = {{"FillColor1", 0x01000000 | 0x996633}, {"Solid", 1}};

Config With(const Changes& a, const Changes& b = {}) {
  Config c;
  c.Set(a).Set(b);
  return c;
}

std::unique_ptr<CubistRecord> Create(const Config& c, CubistOptions options = {}) {
  Random random;
  return CubistRecord::Create(c.Reader(), random, options);
}

std::vector<ImageBlock> Render(const Config& c, const std::vector<int>& ks, CubistOptions options = {}) {
  std::vector<ImageBlock> frames;
  auto record = Create(c, options);
  if (record)
    for (int k : ks) frames.push_back(record->RenderFrame(k));
  return frames;
}

ImageBlock Frame(const Config& c, int k, CubistOptions options = {}) {
  std::vector<ImageBlock> frames = Render(c, {k}, options);
  return frames.empty() ? ImageBlock() : std::move(frames[0]);
}

bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

// ---------------------------------------------------------------- blocks

TEST(CubistFrames, TheFastPainterMatchesThePlainOne) {
  const std::vector<std::pair<const char*, Config>> setups = {
      {"outlines", With(kSmall)},
      {"solid, translucent", With(kSmall, {{"Solid", 1}, {"FillOpacity", 150}})},
      {"gradient fill", With(kSmall, kGradient)},
      {"round, thick", With(kSmall, {{"Roundness", 100}, {"Thickness", 32}, {"VariWidth", 0}})},
  };
  for (const auto& [name, c] : setups) {
    SCOPED_TRACE(name);
    const std::vector<int> ks = {0, 3, 9};
    std::vector<ImageBlock> fast = Render(c, ks), plain = Render(c, ks, {.plain_paint = true});
    ASSERT_EQ(fast.size(), ks.size());
    for (size_t i = 0; i < ks.size(); ++i) EXPECT_TRUE(SameBytes(fast[i], plain[i])) << ks[i];
  }
}

// Each block slides whole tile lengths and breathes whole periods, so every
// box on frame k + N is the box on frame k; in between it really moves.
TEST(CubistFrames, BlocksSlideAndBreatheThroughWholeCycles) {
  const Config c = With(kSmall, {{"Frames", 7}, {"Density", 40}});
  auto record = Create(c);
  ASSERT_TRUE(record);
  for (int32_t i = 0; i < record->count(); ++i) {
    const CubistBlock& b = record->blocks()[i];
    SCOPED_TRACE(i);
    EXPECT_EQ(std::abs(b.vx) + std::abs(b.vy) > 0, true);
    for (int k : {0, 1, 5}) {
      const CubistBox at = record->BoxAt(b, k), again = record->BoxAt(b, k + 7);
      EXPECT_EQ(at.box.left, again.box.left);
      EXPECT_EQ(at.box.top, again.box.top);
      EXPECT_EQ(at.box.width(), again.box.width());
      EXPECT_EQ(at.box.height(), again.box.height());
      EXPECT_LE(std::abs(at.box.width() - b.w0), b.dw);
      EXPECT_LE(std::abs(at.box.height() - b.h0), b.dh);
      EXPECT_LE(2 * at.radius, std::min(at.box.width(), at.box.height()));
    }
    const CubistBox first = record->BoxAt(b, 0), second = record->BoxAt(b, 1);
    EXPECT_NE(first.box.left + first.box.right + first.box.top + first.box.bottom,
              second.box.left + second.box.right + second.box.top + second.box.bottom);
  }
}

// ---------------------------------------------------------------- loop and tile

TEST(CubistFrames, FrameNRepeatsFrameZero) {
  const std::vector<std::pair<const char*, Config>> setups = {
      {"two frames", With(kSmall, {{"Frames", 2}})},
      {"eleven frames", With(kSmall, {{"Frames", 11}, {"Solid", 1}})},
      {"defaults", Config()},
  };
  for (const auto& [name, c] : setups) {
    SCOPED_TRACE(name);
    const int n = c.Get("Frames");
    std::vector<ImageBlock> f = Render(c, {0, 1, n, n + 1, 3 * n});
    ASSERT_EQ(f.size(), 5u);
    EXPECT_TRUE(SameBytes(f[0], f[2]));
    EXPECT_TRUE(SameBytes(f[1], f[3]));
    EXPECT_TRUE(SameBytes(f[0], f[4]));
    EXPECT_FALSE(SameBytes(f[0], f[1]));
  }
}

// The tile seen from another point is the same tile rolled: true only of a
// picture on a torus, so a block clipped at an edge instead of wrapped fails.
TEST(CubistFrames, MovingTheViewpointRollsThePicture) {
  const std::vector<std::pair<const char*, Config>> setups = {
      {"outlines", With(kSmall)},
      {"97 x 61, solid", With({{"Width", 97}, {"Depth", 61}, {"Frames", 6}, {"Solid", 1}})},
      {"gradient fill", With(kSmall, kGradient)},
  };
  for (const auto& [name, c] : setups) {
    for (auto [vx, vy] : {std::pair{1, 0}, {0, 1}, {20, 13}, {40, 26}}) {
      SCOPED_TRACE(std::string(name) + " from " + std::to_string(vx) + ", " + std::to_string(vy));
      for (int k : {0, 3}) {
        ImageBlock still = Frame(c, k);
        ImageBlock moved = Frame(c, k, {.view_x = vx, .view_y = vy});
        EXPECT_TRUE(SameBytes(moved, RollUp(RollLeft(still, vx), vy))) << "frame " << k;
      }
    }
  }
}

// ---------------------------------------------------------------- settings

TEST(CubistFrames, TheSeedDecides) {
  std::vector<ImageBlock> a = Render(With(kSmall), {0, 3}), b = Render(With(kSmall), {0, 3}),
                          c = Render(With(kSmall, {{"Seed", 9875}}), {0, 3});
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_TRUE(SameBytes(a[i], b[i]));
    EXPECT_FALSE(SameBytes(a[i], c[i]));
  }
}

// Each setting of the page, changed alone from the defaults, shows; the
// outline's width alone has nothing to draw on solid blocks.
TEST(CubistFrames, EverySettingChangesThePicture) {
  const Changes base = {{"Frames", 8}};
  const Changes changes = {
      {"Frames", 9},          {"Width", 255},         {"Depth", 129},        {"Seed", 100},
      {"Density", 20},        {"FillOpacity", 128},   {"Thickness", 3},      {"Roundness", 60},
      {"Solid", 1},           {"VariAlpha", 0},       {"VariWidth", 0},      {"Background", 0x404040},
      {"FillColor1", 0xFF},   {"FillColor2", 0xFF},   {"FillColor3", 0xFF},  {"FillColor4", 0xFF},
      {"FillColor5", 0xFF},   {"FillEnable2", 0},     {"FillEnable3", 0},    {"FillEnable4", 0},
      {"FillEnable5", 0}};
  const ImageBlock reference = Frame(With(base), 1);
  for (const auto& change : changes) {
    ImageBlock changed = Frame(With(base, {change}), 1);
    ASSERT_TRUE(changed) << change.first;
    EXPECT_FALSE(SameBytes(reference, changed)) << change.first;
  }
  const Changes solid = {{"Frames", 8}, {"Solid", 1}};
  EXPECT_TRUE(SameBytes(Frame(With(solid), 1), Frame(With(solid, {{"Thickness", 2}}), 1)));
}

// ---------------------------------------------------------------- failures

// Every allocation of a whole build failing in turn: the build fails (ASan
// checks that nothing leaks), whichever block it was.
TEST(CubistFrames, EveryAllocationFailureFailsTheBuild) {
  const Config c = With(kSmall, {{"Frames", 3}, {"FillColor2", 0x03000000}});
  const StyleEntry& style = *StyleByNumber(kStyle);
  long allocations = 0;
  {
    AllocFailureScope count(1L << 30);
    Random random;
    FrameList frames;
    ASSERT_TRUE(StyleBuild(style, c.Reader(), random, 10, frames));
    allocations = count.Count();
  }
  ASSERT_GT(allocations, 5);
  for (long n = 0; n < allocations; ++n) {
    AllocFailureScope fail(n);
    Random random;
    FrameList frames;
    EXPECT_FALSE(StyleBuild(style, c.Reader(), random, 10, frames)) << n;
  }
}

// ---------------------------------------------------------------- golden

// Frames 0, 1 and N-1 at the configuration's defaults and at hand-picked
// settings. A difference means the picture changed: check it is intended,
// then rebuild the target regenerate-golden-cubist_test.
TEST(CubistGolden, FramesMatchTheirChecksums) {
  const std::vector<std::pair<const char*, Changes>> cases = {
      {"defaults", {}},
      {"solid_97x61", {{"Width", 97}, {"Depth", 61}, {"Frames", 9}, {"Solid", 1},
                       {"FillOpacity", 180}, {"Roundness", 100}}},
      {"even_outlines", {{"Frames", 5}, {"VariAlpha", 0}, {"VariWidth", 0}, {"Thickness", 2},
                         {"Roundness", 0}, {"Density", 8}}},
  };
  testing::GoldenSet golden("cubist");
  for (const auto& [name, changes] : cases) {
    const Config c = With(changes);
    const int n = c.Get("Frames");
    std::vector<ImageBlock> frames = Render(c, {0, 1, n - 1});
    ASSERT_EQ(frames.size(), 3u) << name;
    const int ks[3] = {0, 1, n - 1};
    for (size_t i = 0; i < 3; ++i)
      golden.Add(std::string(name) + "_frame" + std::to_string(ks[i]), testing::ImageChecksum(frames[i]));
  }
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
