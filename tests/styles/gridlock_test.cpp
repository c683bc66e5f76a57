// Gridlock: frames against the plain compositor (which also proves the
// wrap-around), the loop, the seed, every setting, the traffic rules,
// failures and golden checksums.
#include "styles/gridlock.h"

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

constexpr int kNumber = 16;

BeadConfig Defaults() { return BeadConfig(kNumber); }

BeadConfig Odd() {
  BeadConfig c = Defaults();
  c.Set("Width", 97).Set("Depth", 61).Set("Size", 13).Set("Frames", 30);
  return c;
}

std::unique_ptr<GridlockRecord> Create(const BeadConfig& config) {
  SettingsReader reader = config.Reader();
  Random random;
  return GridlockRecord::Create(reader, random);
}

// ---------------------------------------------------------------- frames

// Frame k of `record` drawn by the plain compositor.
ImageBlock Reference(const GridlockRecord& record, int k) {
  std::vector<testing::SceneShadow> shadows;
  std::vector<testing::SceneSprite> sprites;
  const int64_t offset = 4 * int64_t{record.shadow_offset()};
  for (const GridlockCar& car : record.cars()) {
    int64_t x, y;
    record.Centre(car, k, x, y);
    const GlossSprites& set =
        record.sprites(record.streets()[static_cast<size_t>(car.street)].horizontal);
    GlossPlace s = set.PlaceShadow(x + offset, y + offset);
    shadows.push_back({&set.Shadow(s.phase), s.x, s.y});
    GlossPlace at = set.Place(x, y);
    sprites.push_back({&set.Sprite(car.paint, at.phase), at.x, at.y});
  }
  return testing::ComposeOnBigCanvas(record.width(), record.height(), record.background(),
                                     record.shadow_opacity(), shadows, sprites);
}

TEST(GridlockFrames, MatchThePlainCompositorThatDrawsEveryCopyOnABigCanvas) {
  struct Case {
    const char* name;
    BeadConfig config;
    std::vector<int> ks;
  };
  std::vector<Case> cases = {{"defaults", Defaults(), {0, 5, 37}}, {"odd", Odd(), {0, 11, 29}}};
  cases.push_back({"smallest_tile_largest_block", Defaults(), {0, 9}});
  cases.back().config.Set("Width", 48).Set("Depth", 48).Set("Size", 36).Set("ShadowOffset", 32);
  cases.push_back({"textured", Odd(), {4}});
  cases.back().config.Set("FillColor1", static_cast<int32_t>(kFillGradient << 24 | 0x2060FF));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto record = Create(c.config);
    ASSERT_TRUE(record);
    for (int k : c.ks) EXPECT_TRUE(SameBytes(record->RenderFrame(k), Reference(*record, k))) << k;
  }
}

TEST(GridlockFrames, FrameNIsFrameZeroAndTheSeedDecides) {
  for (BeadConfig c : {Defaults(), Odd(), Odd().Set("Frames", 2), Odd().Set("Frames", 17)}) {
    const int n = c.Get("Frames");
    std::vector<ImageBlock> frames = RenderFrames(c, {0, 1, n, n + 1});
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_TRUE(SameBytes(frames[0], frames[2]));
    EXPECT_TRUE(SameBytes(frames[1], frames[3]));
    EXPECT_FALSE(SameBytes(frames[0], frames[1]));
  }
  BeadConfig other = Odd();
  other.Set("Seed", other.Get("Seed") + 1);
  std::vector<ImageBlock> a = RenderFrames(Odd(), {0, 4}), b = RenderFrames(Odd(), {0, 4}),
                          c = RenderFrames(other, {0, 4});
  for (size_t k = 0; k < 2; ++k) {
    EXPECT_TRUE(SameBytes(a[k], b[k]));
    EXPECT_FALSE(SameBytes(a[k], c[k]));
  }
}

// Each row changes the picture: frame 13 differs from the defaults' frame 13,
// once the vertical streets have had green.
TEST(GridlockFrames, EverySettingOnThePageShows) {
  const std::vector<std::pair<const char*, int32_t>> changes = {
      {"Width", 130},
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
      {"FillColor4", 0x000000},
      {"FillColor5", 0xFF00FF},
      {"FillEnable2", 0},
      {"FillEnable3", 0},
      {"FillEnable4", 0},
      {"FillEnable5", 0},
      {"DirUp", 0},
      {"DirDown", 0},
      {"DirLeft", 0},
      {"DirRight", 0},
  };
  std::set<std::string> keys, changed;
  for (const PageControl& control : Defaults().Style().page)
    if (control.key) keys.insert(control.key);
  for (const auto& change : changes) changed.insert(change.first);
  EXPECT_EQ(keys, changed);
  const ImageBlock base = std::move(RenderFrames(Defaults(), {13})[0]);
  for (const auto& [key, value] : changes) {
    BeadConfig c = Defaults();
    c.Set(key, value);
    EXPECT_FALSE(SameBytes(base, RenderFrames(c, {13})[0])) << key;
  }
}

// ---------------------------------------------------------------- traffic

// Whether two blocks' boxes overlap anywhere on the torus in frame k.
bool AnyOverlap(const GridlockRecord& r, int k, std::string& which) {
  const int64_t tw = 4 * int64_t{r.width()}, th = 4 * int64_t{r.height()};
  struct Box {
    int64_t x, y, hx, hy;
  };
  std::vector<Box> boxes;
  for (const GridlockCar& car : r.cars()) {
    Box b;
    r.Centre(car, k, b.x, b.y);
    const bool h = r.streets()[static_cast<size_t>(car.street)].horizontal;
    b.hx = 2 * (h ? r.length() : r.breadth());
    b.hy = 2 * (h ? r.breadth() : r.length());
    boxes.push_back(b);
  }
  auto apart = [](int64_t d, int64_t length) {
    d %= length;
    if (d < 0) d += length;
    return std::min(d, length - d);
  };
  for (size_t i = 0; i < boxes.size(); ++i)
    for (size_t j = i + 1; j < boxes.size(); ++j)
      if (apart(boxes[i].x - boxes[j].x, tw) < boxes[i].hx + boxes[j].hx &&
          apart(boxes[i].y - boxes[j].y, th) < boxes[i].hy + boxes[j].hy) {
        which = std::to_string(i) + " and " + std::to_string(j);
        return true;
      }
  return false;
}

TEST(GridlockTraffic, BlocksNeverOverlapAtCrossingsOrInQueues) {
  const std::vector<std::pair<const char*, BeadConfig>> cases = {
      {"defaults", Defaults()},
      {"odd", Odd()},
      {"full", Defaults().Set("Density", 256)},
      {"long_queues",
       Defaults().Set("Width", 300).Set("Depth", 77).Set("Size", 10).Set("Density", 256)},
      {"big_blocks", Defaults().Set("Size", 36).Set("Density", 256).Set("Frames", 23)},
      {"smallest_tile",
       Defaults().Set("Width", 48).Set("Depth", 48).Set("Size", 36).Set("Density", 256)},
      {"one_way_each", Odd().Set("DirLeft", 0).Set("DirUp", 0).Set("Density", 256)},
  };
  for (const auto& [name, config] : cases) {
    SCOPED_TRACE(name);
    auto record = Create(config);
    ASSERT_TRUE(record);
    ASSERT_FALSE(record->cars().empty());
    for (int k = 0; k < record->FrameCount(); ++k) {
      std::string which;
      ASSERT_FALSE(AnyOverlap(*record, k, which)) << "frame " << k << ": " << which;
    }
  }
}

TEST(GridlockTraffic, BlocksStopAndGoOnlyTheCheckedWaysAndDensityCounts) {
  struct Case {
    const char* name;
    std::vector<const char*> off;         // unchecked boxes
    std::set<std::pair<bool, int>> ways;  // (horizontal, sign) the streets may run
  };
  const std::vector<Case> cases = {
      {"all", {}, {{true, 1}, {true, -1}, {false, 1}, {false, -1}}},
      {"right", {"DirUp", "DirDown", "DirLeft"}, {{true, 1}}},
      {"up_left", {"DirDown", "DirRight"}, {{true, -1}, {false, -1}}},
      {"down", {"DirUp", "DirLeft", "DirRight"}, {{false, 1}}},
      // No box checked draws like all four.
      {"none",
       {"DirUp", "DirDown", "DirLeft", "DirRight"},
       {{true, 1}, {true, -1}, {false, 1}, {false, -1}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    BeadConfig config = Defaults();
    for (const char* key : c.off) config.Set(key, 0);
    auto record = Create(config);
    ASSERT_TRUE(record);
    std::set<std::pair<bool, int>> seen;
    for (const GridlockStreet& s : record->streets()) seen.insert({s.horizontal, s.sign});
    EXPECT_EQ(seen, c.ways);
    // One axis has half the waiting places: 16 at the defaults.
    bool axes[2] = {};
    for (const auto& way : c.ways) axes[way.first ? 0 : 1] = true;
    EXPECT_EQ(record->cars().size(), axes[0] && axes[1] ? 24u : 16u);
    // Every block both waits and moves, and never backs up.
    for (const GridlockCar& car : record->cars()) {
      const GridlockStreet& street = record->streets()[static_cast<size_t>(car.street)];
      int waits = 0, moves = 0;
      for (int k = 0; k < record->FrameCount(); ++k) {
        int64_t x0, y0, x1, y1;
        record->Centre(car, k, x0, y0);
        record->Centre(car, k + 1, x1, y1);
        int64_t step = street.horizontal ? x1 - x0 : y1 - y0;
        if (k + 1 == record->FrameCount())
          step += street.sign * 4 * int64_t{street.horizontal ? record->width() : record->height()};
        EXPECT_GE(step * street.sign, 0) << k;
        EXPECT_EQ(street.horizontal ? y1 - y0 : x1 - x0, 0);
        (step == 0 ? waits : moves) += 1;
      }
      EXPECT_GT(waits, 0);
      EXPECT_GT(moves, 0);
    }
  }
  // No box checked is the picture of all four.
  BeadConfig none = Defaults();
  for (const char* key : {"DirUp", "DirDown", "DirLeft", "DirRight"}) none.Set(key, 0);
  EXPECT_TRUE(SameBytes(RenderFrames(none, {3})[0], RenderFrames(Defaults(), {3})[0]));
}

// ---------------------------------------------------------------- failures

TEST(GridlockFailures, EveryAllocationFailingEndsTheBuildCleanly) {
  BeadConfig c = Odd();
  c.Set("Frames", 3).Set("FillEnable3", 0).Set("FillEnable4", 0).Set("FillEnable5", 0);
  c.Set("FillColor2", static_cast<int32_t>(kFillGradient << 24 | 0x3060C0));
  testing::SweepAllocationFailures(c);
}

// ---------------------------------------------------------------- golden

// Frames 0, 1 and N-1 at the configuration's defaults and at an odd setting.
// A difference means the picture changed: check it is intended, then rebuild
// the target regenerate-golden-gridlock_test.
TEST(GridlockGolden, FramesMatchTheirChecksums) {
  BeadConfig odd = Odd();
  odd.Set("Seed", 101).Set("Glare", 255).Set("Shade", 200).Set("ShadowOffset", 3);
  odd.Set("DirUp", 0).Set("FillEnable4", 0);
  testing::GoldenSet golden("gridlock");
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
