// Bubbles: the page as data, the element list as the seed draws it, the masks,
// the loop in time and in space, the sprite cache against drawing afresh,
// failures, and golden checksums of a few frames.
#include "styles/bubbles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/settings_reader.h"
#include "styles/style_table.h"
#include "tests/support/golden.h"

namespace tess {
namespace {

const StyleEntry& Bubbles() { return *StyleByNumber(0); }

// The configuration's Style000 defaults, with some values changed.
struct Config {
  Settings settings;
  Config& Set(std::string_view param, int32_t value) {
    settings.SetStyleNumber(0, param, value);
    return *this;
  }
  int32_t Get(std::string_view param) const { return settings.StyleNumber(0, param); }
  SettingsReader Reader() const { return SettingsReader(settings, Bubbles()); }
};

// Odd sizes, no supersampling, few frames: quick, and catches stride faults.
Config Small() {
  Config s;
  s.Set("Width", 37).Set("Depth", 29).Set("Smooth", 0).Set("Frames", 12).Set("Size", 10);
  s.Set("Density", 12).Set("Drift", 40);
  return s;
}

std::unique_ptr<BubblesRecord> Create(const Config& setup, BubblesOptions options = {}) {
  Random random;
  return BubblesRecord::Create(setup.Reader(), random, options);
}

// Frames 0 .. count-1 of one record, in order.
std::vector<ImageBlock> Render(const Config& setup, int count, BubblesOptions options = {}) {
  std::unique_ptr<BubblesRecord> record = Create(setup, options);
  std::vector<ImageBlock> frames;
  if (!record) return frames;
  for (int k = 0; k < count; ++k) frames.push_back(record->RenderFrame(k));
  return frames;
}

bool SameBytes(const ImageBlock& a, const ImageBlock& b) {
  return a && b && a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

// ---------------------------------------------------------------- page

TEST(BubblesPage, LabelsSpinTextsAndKeys) {
  const std::vector<std::pair<std::string, std::string>> spins = {
      {"Frames:", "2,32760,64"},  {"Width:", "16,1024,128"}, {"Depth:", "16,1024,128"},
      {"Opacity:", "1,255,255"},  {"Drift:", "0,99,25"},     {"Size:", "10,64,18"},
      {"Density:", "8,256,32"},   {"Seed:", "100,32760,1000"}};
  std::vector<std::string> labels;
  for (const PageControl& c : Bubbles().page) {
    labels.push_back(c.label);
    if (c.kind == ControlKind::kSpin) {
      bool listed = false;
      for (const auto& [label, spin] : spins)
        if (label == c.label) {
          listed = true;
          EXPECT_STREQ(c.spin, spin.c_str()) << label;
        }
      EXPECT_TRUE(listed) << c.label;
    }
  }
  const std::vector<std::string> expected = {
      "Frames:", "Width:",  "Depth:",   "Opacity:", "Drift:",  "Size:",    "Density:",
      "Seed:",   "Inverse", "Smooth",   "Background:", "Color 1:", "Color 2:", "Enable",
      "Color 3:", "Enable", "Color 4:", "Enable",   "Color 5:", "Enable"};
  EXPECT_EQ(labels, expected);
}

// Every key on the page is a Style000 setting and every Style000 setting is on
// the page, so nothing the configuration stores is lost or read from nowhere.
TEST(BubblesPage, KeysAreExactlyTheStyle000Settings) {
  std::set<std::string> on_page;
  for (const PageControl& c : Bubbles().page) {
    ASSERT_NE(c.key, nullptr) << c.label;
    EXPECT_GE(StyleKeyIndex(0, c.key), 0) << c.key;
    on_page.insert(c.key);
  }
  std::set<std::string> configured;
  for (const ConfigKey& key : ConfigKeys())
    if (key.name.starts_with("Style000")) configured.insert(std::string(key.name.substr(8)));
  EXPECT_EQ(on_page, configured);
}

// ---------------------------------------------------------------- initialisation

// An independent statement of the draw order: any reordering, extra draw or
// different colour rule changes the element list or the final state.
TEST(BubblesInit, ElementsFollowTheDrawOrderAndColourRule) {
  Config s = Small();
  s.Set("FillEnable4", 0).Set("FillOpacity", 200).Set("Inverse", 1);
  Random random;
  auto record = BubblesRecord::Create(s.Reader(), random);
  ASSERT_TRUE(record);

  const std::vector<Colour> colours = {Colour(s.Get("FillColor1")), Colour(s.Get("FillColor2")),
                                       Colour(s.Get("FillColor3")), Colour(s.Get("FillColor5"))};
  const int wf = 2 * 37, hf = 2 * 29, sl = 20;
  struct Layer {
    int count, size, v, b;
  };
  const Layer layers[] = {{6, sl, 1, 255}, {9, 3 * sl / 4, 2, 160}, {12, sl / 2, 4, 128}};
  Random replay;
  replay.Seed(static_cast<uint32_t>(s.Get("Seed")));
  int previous = 0, i = 0;
  ASSERT_EQ(record->count(), 27);
  for (const Layer& layer : layers) {
    for (int n = 0; n < layer.count; ++n, ++i) {
      const Bubble& e = record->bubbles()[i];
      SCOPED_TRACE(i);
      EXPECT_EQ(e.x0, replay.Below(wf - layer.size) + layer.size / 2);
      EXPECT_EQ(e.y0, replay.Below(hf));
      int m = layer.size / 9 ? layer.size / 9 : 1;
      EXPECT_EQ(e.d, layer.size - replay.Below(m));
      EXPECT_EQ(e.v, layer.v);
      EXPECT_EQ(e.b, layer.b);
      EXPECT_EQ(e.angle, replay.Next() % 360);
      EXPECT_EQ(e.opacity, 200);
      EXPECT_TRUE(e.inverse);
      int r = 0;
      for (int tries = 0; tries < 16 && (r = replay.Below(4)) == previous;) ++tries;
      previous = r;
      EXPECT_EQ(e.colour, colours[static_cast<size_t>(r)]);
    }
  }
  EXPECT_EQ(random.state(), replay.state());
}

TEST(BubblesInit, DensitySetsTheLayerCounts) {
  for (auto [density, count] : {std::pair{8, 18}, {9, 19}, {36, 81}, {256, 576}}) {
    Config s = Small();
    s.Set("Density", density);
    auto record = Create(s);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->count(), count) << density;
  }
}

// Size 10 at 2x: layers of 20, 15 and 10 working pixels, spreads 2, 1 and 1,
// so only the large layer varies its diameter.
TEST(BubblesInit, LayerDiametersAndSpread) {
  Config s = Small();
  s.Set("Size", 10).Set("Density", 40);
  auto record = Create(s);
  ASSERT_TRUE(record);
  std::set<int> large;
  for (int i = 0; i < record->count(); ++i) {
    const Bubble& e = record->bubbles()[i];
    if (i < 20) large.insert(e.d);
    else EXPECT_EQ(e.d, i < 50 ? 15 : 10) << i;
  }
  EXPECT_EQ(large, (std::set<int>{19, 20}));
}

TEST(BubblesInit, SingleColourDrawsNoNumberForColours) {
  Config s = Small();
  for (const char* key : {"FillEnable2", "FillEnable3", "FillEnable4", "FillEnable5"}) s.Set(key, 0);
  Random random;
  auto record = BubblesRecord::Create(s.Reader(), random);
  ASSERT_TRUE(record);
  Random expected;
  expected.Seed(static_cast<uint32_t>(s.Get("Seed")));
  for (int i = 0; i < 4 * record->count(); ++i) expected.Next();  // x0, y0, d, angle
  EXPECT_EQ(random.state(), expected.state());
  for (int i = 0; i < record->count(); ++i)
    EXPECT_EQ(record->bubbles()[i].colour, Colour(s.Get("FillColor1")));
}

// ---------------------------------------------------------------- sprite

Colour At(const ImageBlock& image, int x, int y) { return ImageGetPixel(image, x, y); }
int Grey(const ImageBlock& image, int x, int y) { return ColourBlue(At(image, x, y)); }

TEST(BubblesSprite, RimToCentreProfile) {
  // d = 9: circles i = 0..3, levels trunc(i / 4 * 255) = 0, 63, 127, 191.
  ImageBlock plain = MakeBubbleSprite(9, 255, false);
  ImageBlock inverse = MakeBubbleSprite(9, 255, true);
  ASSERT_TRUE(plain && inverse);
  EXPECT_EQ(plain.width(), 9);
  EXPECT_EQ(plain.height(), 9);
  EXPECT_EQ(At(plain, 4, 0), 0xFFFFFFu);  // rim: covered, grey in all channels
  EXPECT_EQ(At(plain, 4, 4), 0x404040u);  // centre: 255 - 191
  EXPECT_EQ(At(plain, 0, 0), 0u);         // outside the circle stays black
  EXPECT_EQ(Grey(inverse, 4, 0), 0);
  EXPECT_EQ(Grey(inverse, 4, 4), 191);
  // Coverage falls from the rim towards the middle along the middle row.
  for (int x = 1; x <= 4; ++x) EXPECT_LE(Grey(plain, x, 4), Grey(plain, x - 1, 4)) << x;
  // Brightness sets how translucent the middle gets.
  EXPECT_EQ(Grey(MakeBubbleSprite(9, 128, false), 4, 4), 255 - 96);
}

// ---------------------------------------------------------------- frames

// The cache must change nothing but speed.
TEST(BubblesFrames, SpriteCacheMatchesDrawingEverySpriteAfresh) {
  std::vector<Config> setups = {Small(), Small()};
  setups[1].Set("Inverse", 1).Set("FillOpacity", 140).Set("Smooth", 1);
  for (const Config& s : setups) {
    int n = s.Get("Frames");
    std::vector<ImageBlock> cached = Render(s, n);
    std::vector<ImageBlock> fresh = Render(s, n, {.cache_sprites = false});
    ASSERT_EQ(cached.size(), fresh.size());
    for (int k = 0; k < n; ++k) EXPECT_TRUE(SameBytes(cached[k], fresh[k])) << "frame " << k;
  }
}

TEST(BubblesFrames, EachDistinctSpriteIsDrawnOnce) {
  Config s = Small();
  auto record = Create(s);
  ASSERT_TRUE(record);
  std::set<std::pair<int, int>> distinct;
  for (int i = 0; i < record->count(); ++i)
    distinct.insert({record->bubbles()[i].d, record->bubbles()[i].b});
  ASSERT_TRUE(record->RenderFrame(0));
  EXPECT_EQ(record->sprites_drawn(), static_cast<int>(distinct.size()));
  ASSERT_TRUE(record->RenderFrame(1));
  EXPECT_EQ(record->sprites_drawn(), static_cast<int>(distinct.size()));
}

TEST(BubblesFrames, FrameNRepeatsFrameZero) {
  Config smooth;
  smooth.Set("Width", 64).Set("Depth", 48).Set("Frames", 24);
  for (Config s : {Small(), smooth}) {
    int n = s.Get("Frames");
    std::vector<ImageBlock> frames = Render(s, n + 1);
    ASSERT_EQ(frames.size(), static_cast<size_t>(n + 1));
    EXPECT_TRUE(SameBytes(frames[0], frames[static_cast<size_t>(n)]));
    EXPECT_FALSE(SameBytes(frames[0], frames[1]));
  }
}

TEST(BubblesFrames, TwoFramesSwayHalfAPeriodApart) {
  Config s = Small();
  s.Set("Frames", 2);
  auto record = Create(s);
  ASSERT_TRUE(record);
  std::vector<double> start;
  for (int i = 0; i < record->count(); ++i) start.push_back(record->bubbles()[i].angle);
  ASSERT_TRUE(record->RenderFrame(0));
  for (int i = 0; i < record->count(); ++i)
    EXPECT_EQ(record->bubbles()[i].angle, start[static_cast<size_t>(i)] + 180.0);
}

// Mean absolute channel difference between neighbouring columns x and x + 1
// (rows when `vertical`); x = width - 1 compares the last column with the
// first, which is where tiles meet.
double NeighbourDifference(const ImageBlock& image, int x, bool vertical) {
  int w = image.width(), h = image.height();
  int along = vertical ? w : h, across = vertical ? h : w;
  double sum = 0;
  for (int t = 0; t < along; ++t) {
    Colour a = vertical ? At(image, t, x) : At(image, x, t);
    Colour b = vertical ? At(image, t, (x + 1) % across) : At(image, (x + 1) % across, t);
    for (int shift = 0; shift < 24; shift += 8)
      sum += std::abs(int((a >> shift) & 0xFF) - int((b >> shift) & 0xFF));
  }
  return sum / (3.0 * along);
}

// Whether the seam where tiles meet looks like any other pair of neighbours:
// the difference across it is no more than the mean interior difference, with
// a margin for the few bubble rims that may happen to lie on it.
bool Seamless(const ImageBlock& image, bool vertical) {
  int across = vertical ? image.height() : image.width();
  double interior = 0;
  for (int x = 0; x + 1 < across; ++x) interior += NeighbourDifference(image, x, vertical);
  interior /= across - 1;
  double seam = NeighbourDifference(image, across - 1, vertical);
  return seam <= 2.0 * interior + 1.0;
}

ImageBlock Crop(const ImageBlock& image, int width, int height) {
  ImageBlock out = ImageCreate(width, height, nullptr, 24);
  ImageCopyRect(out, 0, 0, image, 0, 0, width, height);
  return out;
}

TEST(BubblesFrames, TilesWithoutSeams) {
  Config s;
  s.Set("Frames", 8).Set("Drift", 60);
  std::vector<ImageBlock> frames = Render(s, 8);
  ASSERT_EQ(frames.size(), 8u);
  for (int k : {0, 3, 7}) {
    SCOPED_TRACE(k);
    EXPECT_TRUE(Seamless(frames[static_cast<size_t>(k)], false));
    EXPECT_TRUE(Seamless(frames[static_cast<size_t>(k)], true));
  }
  // The statistic does see a seam: a cropped tile no longer wraps.
  ImageBlock cropped = Crop(frames[0], 128 - 9, 128 - 7);
  EXPECT_FALSE(Seamless(cropped, false));
  EXPECT_FALSE(Seamless(cropped, true));
}

TEST(BubblesFrames, SameSeedSameFramesOtherSeedOtherFrames) {
  Config a = Small(), b = Small();
  b.Set("Seed", a.Get("Seed") + 1);
  std::vector<ImageBlock> first = Render(a, 3), again = Render(a, 3), other = Render(b, 3);
  for (size_t k = 0; k < 3; ++k) {
    EXPECT_TRUE(SameBytes(first[k], again[k])) << k;
    EXPECT_FALSE(SameBytes(first[k], other[k])) << k;
  }
}

TEST(BubblesFrames, PreviewIsTheBuildsFirstFrame) {
  Config s = Small();
  SettingsReader reader = s.Reader();
  Random random;
  ImageBlock preview = StylePreview(Bubbles(), reader, random);
  FrameList frames;
  int reports = 0;
  ASSERT_TRUE(StyleBuild(Bubbles(), reader, random, 10, frames, [&](int, int) { ++reports; }));
  EXPECT_EQ(frames.count(), 12);
  EXPECT_EQ(reports, 12);
  EXPECT_EQ(preview.width(), 37);
  EXPECT_EQ(preview.height(), 29);
  EXPECT_TRUE(SameBytes(preview, frames[0].image));
}

// Every allocation of a first frame failing in turn: the frame either fails
// cleanly (ASan checks nothing leaks) or, when only the final reduction
// failed, is the unreduced working image.
TEST(BubblesFrames, AllocationFailuresEndTheFrameOrSkipTheReduction) {
  Config s = Small();
  long allocations = 0;
  {
    auto record = Create(s);
    AllocFailureScope count(1L << 30);
    ASSERT_TRUE(record->RenderFrame(0));
    allocations = count.Count();
  }
  int unreduced = 0;
  for (long fail_at = 0; fail_at < allocations; ++fail_at) {
    auto record = Create(s);
    ASSERT_TRUE(record);
    AllocFailureScope scope(fail_at);
    ImageBlock frame = record->RenderFrame(0);
    if (frame) {
      EXPECT_EQ(frame.width(), 2 * 37) << fail_at;
      EXPECT_EQ(frame.height(), 2 * 29) << fail_at;
      ++unreduced;
    }
  }
  EXPECT_GT(unreduced, 0);
  {  // the elements, the record's only block
    Random random;
    AllocFailureScope scope(0);
    EXPECT_FALSE(BubblesRecord::Create(s.Reader(), random));
  }
}

// ---------------------------------------------------------------- golden

// Frames 0, 1 and N-1 at the configuration's defaults and a few hand-picked
// settings. A difference means the picture changed: check it is intended,
// then rebuild the target regenerate-golden.
TEST(BubblesGolden, FramesMatchTheirChecksums) {
  struct Case {
    const char* name;
    std::vector<std::pair<const char*, int32_t>> changes;
  };
  const std::vector<Case> cases = {
      {"defaults", {}},
      {"no_smooth", {{"Smooth", 0}}},
      {"inverse", {{"Inverse", 1}, {"Frames", 8}}},
      {"single_colour",
       {{"FillEnable2", 0}, {"FillEnable3", 0}, {"FillEnable4", 0}, {"FillEnable5", 0},
        {"Frames", 8}}},
      {"drift0", {{"Drift", 0}, {"Frames", 8}}},
      {"small", {{"Width", 16}, {"Depth", 24}, {"Size", 10}, {"Density", 8}, {"Frames", 5},
                 {"FillOpacity", 128}, {"Smooth", 0}}},
      {"odd", {{"Width", 37}, {"Depth", 29}, {"Size", 64}, {"Density", 9}, {"Frames", 7},
               {"Drift", 99}, {"Seed", 100}}},
  };
  testing::GoldenSet golden("bubbles");
  for (const Case& c : cases) {
    Config s;
    for (const auto& [key, value] : c.changes) s.Set(key, value);
    int n = s.Get("Frames");
    std::vector<ImageBlock> frames = Render(s, n);
    ASSERT_EQ(frames.size(), static_cast<size_t>(n)) << c.name;
    for (int k : {0, 1, n - 1})
      golden.Add(std::string(c.name) + "_frame" + std::to_string(k),
                 testing::ImageChecksum(frames[static_cast<size_t>(k)]));
  }
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
