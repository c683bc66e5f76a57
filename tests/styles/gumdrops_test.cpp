// Gumdrops: the map cache and the blit against their plain references, the
// loop in time, the tile as a torus, the seed, every setting, failures, and
// golden checksums of a few frames.
#include "styles/gumdrops.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <tuple>
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

constexpr int kStyle = 7;
using Changes = std::vector<std::pair<const char*, int32_t>>;

// The configuration's Style007 defaults, with some values changed.
struct Config {
  Settings settings;
  Config& Set(const Changes& changes) {
    for (const auto& [key, value] : changes) settings.SetStyleNumber(kStyle, key, value);
    return *this;
  }
  int32_t Get(std::string_view key) const { return settings.StyleNumber(kStyle, key); }
  SettingsReader Reader() const { return SettingsReader(settings, *StyleByNumber(kStyle)); }
};

// Odd sizes, every shape, few frames: quick, and catches stride faults.
const Changes kSmall = {{"Width", 37}, {"Depth", 29}, {"Frames", 12}, {"Size", 14},
                        {"Density", 16}, {"Drift", 30}, {"Style1", 0}, {"Style2", 3},
                        {"Style3", 4}, {"Style4", 2}, {"Style5", 1}};
// Colour 2 as a linear gradient (a fill kind in the setting's top byte).
const Changes kGradient = {{"FillColor2", 0x01000000 | 0x95632C}};

Config With(const Changes& a, const Changes& b = {}) {
  Config c;
  c.Set(a).Set(b);
  return c;
}

std::unique_ptr<GumdropsRecord> Create(const Config& c, GumdropsOptions options = {}) {
  Random random;
  return GumdropsRecord::Create(c.Reader(), random, options);
}

std::vector<ImageBlock> Render(const Config& c, const std::vector<int>& ks, GumdropsOptions options = {}) {
  std::vector<ImageBlock> frames;
  auto record = Create(c, options);
  if (record)
    for (int k : ks) frames.push_back(record->RenderFrame(k));
  return frames;
}

ImageBlock Frame(const Config& c, int k, GumdropsOptions options = {}) {
  std::vector<ImageBlock> frames = Render(c, {k}, options);
  return frames.empty() ? ImageBlock() : std::move(frames[0]);
}

bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

// ---------------------------------------------------------------- fast paths

TEST(GumdropsFrames, CachedMapsAndTheFastBlitMatchTheirReferences) {
  const std::vector<std::pair<const char*, Config>> setups = {
      {"every shape", With(kSmall)},
      {"no bevel", With(kSmall, {{"BevelEnable", 0}})},
      {"gradient fill", With(kSmall, kGradient)},
      {"large drops on a small tile", With(kSmall, {{"Width", 16}, {"Depth", 21}, {"Size", 40}})},
  };
  for (const auto& [name, c] : setups) {
    SCOPED_TRACE(name);
    const std::vector<int> ks = {0, 1, 5, 11};
    std::vector<ImageBlock> fast = Render(c, ks);
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
  for (const Config& c : {With(kSmall), With(kSmall, {{"Frames", 3}}), Config()}) {
    auto record = Create(c);
    ASSERT_TRUE(record);
    std::set<std::tuple<DropShape, int, int32_t>> shown;
    for (int k = 0; k < record->FrameCount(); ++k)
      for (int32_t i = 0; i < record->count(); ++i) {
        const Gumdrop& d = record->drops()[i];
        shown.insert({record->ShapeOf(d), d.layer, record->StepAt(d, k)});
      }
    EXPECT_EQ(record->maps_made(), static_cast<int>(shown.size()));
    const int made = record->maps_made();
    ASSERT_TRUE(record->RenderFrame(1));
    EXPECT_EQ(record->maps_made(), made);
  }
}

// ---------------------------------------------------------------- loop and tile

TEST(GumdropsFrames, FrameNRepeatsFrameZero) {
  const std::vector<std::pair<const char*, Config>> setups = {
      {"two frames", With(kSmall, {{"Frames", 2}})},
      {"seven frames", With(kSmall, {{"Frames", 7}, {"Drift", 99}})},
      {"defaults", Config()},
  };
  for (const auto& [name, c] : setups) {
    SCOPED_TRACE(name);
    const int n = c.Get("Frames");
    std::vector<ImageBlock> f = Render(c, {0, 1, n, n + 1, 2 * n});
    ASSERT_EQ(f.size(), 5u);
    EXPECT_TRUE(SameBytes(f[0], f[2]));
    EXPECT_TRUE(SameBytes(f[1], f[3]));
    EXPECT_TRUE(SameBytes(f[0], f[4]));
    EXPECT_FALSE(SameBytes(f[0], f[1]));
  }
}

// The tile seen from another point is the same tile rolled: true only of a
// picture on a torus, so a drop clipped at an edge instead of wrapped fails.
TEST(GumdropsFrames, MovingTheViewpointRollsThePicture) {
  const std::vector<std::pair<const char*, Config>> setups = {
      {"odd tile", With(kSmall)},
      {"97 x 61", With(kSmall, {{"Width", 97}, {"Depth", 61}, {"Size", 30}, {"Density", 40}})},
      {"gradient fill", With(kSmall, kGradient)},
  };
  for (const auto& [name, c] : setups) {
    for (auto [vx, vy] : {std::pair{1, 0}, {0, 1}, {18, 13}, {36, 28}}) {
      SCOPED_TRACE(std::string(name) + " from " + std::to_string(vx) + ", " + std::to_string(vy));
      for (int k : {0, 4}) {
        ImageBlock still = Frame(c, k);
        ImageBlock moved = Frame(c, k, {.view_x = vx, .view_y = vy});
        EXPECT_TRUE(SameBytes(moved, RollUp(RollLeft(still, vx), vy))) << "frame " << k;
      }
    }
  }
}

// ---------------------------------------------------------------- settings

TEST(GumdropsFrames, TheSeedDecides) {
  Config other = With(kSmall, {{"Seed", 12027}});
  std::vector<ImageBlock> a = Render(With(kSmall), {0, 3}), b = Render(With(kSmall), {0, 3}),
                          c = Render(other, {0, 3});
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_TRUE(SameBytes(a[i], b[i]));
    EXPECT_FALSE(SameBytes(a[i], c[i]));
  }
}

// Each setting of the page, changed alone from the defaults, shows.
TEST(GumdropsFrames, EverySettingChangesThePicture) {
  const Changes base = {{"Frames", 8}};
  const Changes changes = {
      {"Frames", 9},         {"Width", 161},       {"Depth", 127},        {"Size", 24},
      {"Density", 40},       {"Drift", 60},        {"Seed", 100},         {"BevelEnable", 0},
      {"Background", 0},     {"FillColor1", 0xFF}, {"FillColor2", 0xFF},  {"FillColor3", 0xFF},
      {"FillColor4", 0xFF},  {"FillColor5", 0xFF}, {"FillEnable2", 0},    {"FillEnable3", 0},
      {"FillEnable4", 0},    {"FillEnable5", 0},   {"Style1", 0},         {"Style2", 2},
      {"Style3", 3},         {"Style4", 4},        {"Style5", 0}};
  const ImageBlock reference = Frame(With(base), 1);
  for (const auto& change : changes) {
    ImageBlock changed = Frame(With(base, {change}), 1);
    ASSERT_TRUE(changed) << change.first;
    EXPECT_FALSE(SameBytes(reference, changed)) << change.first;
  }
}

// ---------------------------------------------------------------- failures

// Every allocation of a whole build failing in turn: the build fails (ASan
// checks that nothing leaks), whichever block it was.
TEST(GumdropsFrames, EveryAllocationFailureFailsTheBuild) {
  const Config c = With(kSmall, {{"Frames", 3}, {"FillColor3", 0x02000000}});
  const StyleEntry& style = *StyleByNumber(kStyle);
  long allocations = 0;
  {
    AllocFailureScope count(1L << 30);
    Random random;
    FrameList frames;
    ASSERT_TRUE(StyleBuild(style, c.Reader(), random, 10, frames));
    allocations = count.Count();
  }
  ASSERT_GT(allocations, 10);
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
// then rebuild the target regenerate-golden-gumdrops_test.
TEST(GumdropsGolden, FramesMatchTheirChecksums) {
  const std::vector<std::pair<const char*, Changes>> cases = {
      {"defaults", {}},
      {"shapes_97x61", {{"Width", 97}, {"Depth", 61}, {"Frames", 9}, {"Style1", 0}, {"Style2", 2},
                        {"Style3", 3}, {"Style4", 4}, {"Drift", 40}}},
      {"flat_single_colour", {{"Frames", 5}, {"BevelEnable", 0}, {"FillEnable2", 0},
                              {"FillEnable3", 0}, {"FillEnable4", 0}, {"FillEnable5", 0},
                              {"Style1", 4}, {"Size", 64}, {"Density", 8}}},
  };
  testing::GoldenSet golden("gumdrops");
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
