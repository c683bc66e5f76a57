// Bubbles: the sprite cache against drawing afresh, fills against flat
// colours, the loop in time and in space, the seed, failures, and golden
// checksums of a few frames.
#include "styles/bubbles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "dialog/settings_reader.h"
#include "fills/fill_store.h"
#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/style_table.h"
#include "tests/support/golden.h"

namespace tess {
namespace {

const StyleEntry& Bubbles() { return *StyleByNumber(0); }

// The configuration's Style000 defaults, with some values changed and some
// colour slots painted with fills.
struct Config {
  Settings settings;
  PageRecords records;
  Config& Set(std::string_view param, int32_t value) {
    settings.SetStyleNumber(0, param, value);
    return *this;
  }
  Config& Fill(int slot, const FillDescriptor& fill) {
    records.fills.Put(PageControlId(0, page::ColourControl(slot)), fill);
    return *this;
  }
  int32_t Get(std::string_view param) const { return settings.StyleNumber(0, param); }
  SettingsReader Reader() const { return SettingsReader(settings, Bubbles(), &records); }
};

FillDescriptor Gradient(uint32_t type, int32_t rotation, Colour start, Colour end) {
  FillDescriptor fill;
  fill.kind = kFillGradient;
  fill.gradient = {start, end, type, rotation, 0, 0, {}};
  return fill;
}

// Light centre, purple rim: what the golden and most tests paint slot 1 with.
FillDescriptor Radial() { return Gradient(kGradientRadial, 0, 0x00FFF0C0, 0x00A02060); }
FillDescriptor Linear() { return Gradient(kGradientLinear, 30, 0x0000C0FF, 0x00FF6000); }

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

// ---------------------------------------------------------------- frames

// The cache must change nothing but speed.
TEST(BubblesFrames, SpriteCacheMatchesDrawingEverySpriteAfresh) {
  std::vector<Config> setups = {Small(), Small()};
  setups[1].Set("Inverse", 1).Set("FillOpacity", 140).Set("Smooth", 1).Fill(2, Linear());
  for (const Config& s : setups) {
    int n = s.Get("Frames");
    std::vector<ImageBlock> cached = Render(s, n);
    std::vector<ImageBlock> fresh = Render(s, n, {.cache_sprites = false});
    ASSERT_EQ(cached.size(), fresh.size());
    for (int k = 0; k < n; ++k) EXPECT_TRUE(SameBytes(cached[k], fresh[k])) << "frame " << k;
  }
  // Each distinct (diameter, brightness) mask is drawn once, on first use.
  auto record = Create(Small());
  std::set<std::pair<int, int>> distinct;
  for (int i = 0; i < record->count(); ++i) distinct.insert({record->bubbles()[i].d, record->bubbles()[i].b});
  ASSERT_TRUE(record->RenderFrame(0) && record->RenderFrame(1));
  EXPECT_EQ(record->sprites_drawn(), static_cast<int>(distinct.size()));
}

TEST(BubblesFrames, FrameNRepeatsFrameZeroAndTheSeedDecides) {
  Config smooth;
  smooth.Set("Width", 64).Set("Depth", 48).Set("Frames", 24);
  Config filled = Small();
  filled.Fill(1, Radial()).Fill(3, Linear());
  for (const Config& s : {Small(), smooth, filled}) {
    int n = s.Get("Frames");
    std::vector<ImageBlock> frames = Render(s, n + 1);
    ASSERT_EQ(frames.size(), static_cast<size_t>(n + 1));
    EXPECT_TRUE(SameBytes(frames[0], frames[static_cast<size_t>(n)]));
    EXPECT_FALSE(SameBytes(frames[0], frames[1]));
  }
  Config other = Small();
  other.Set("Seed", other.Get("Seed") + 1);
  std::vector<ImageBlock> first = Render(Small(), 3), again = Render(Small(), 3), different = Render(other, 3);
  for (size_t k = 0; k < 3; ++k) {
    EXPECT_TRUE(SameBytes(first[k], again[k])) << k;
    EXPECT_FALSE(SameBytes(first[k], different[k])) << k;
  }
}

// Mean absolute channel difference between neighbouring columns x and x + 1
// (rows when `vertical`); x = width - 1 compares the last column with the
// first, which is where tiles meet.
double NeighbourDifference(const ImageBlock& image, int x, bool vertical) {
  int w = image.width(), h = image.height();
  int along = vertical ? w : h, across = vertical ? h : w;
  double sum = 0;
  for (int t = 0; t < along; ++t) {
    Colour a = vertical ? ImageGetPixel(image, t, x) : ImageGetPixel(image, x, t);
    Colour b = vertical ? ImageGetPixel(image, t, (x + 1) % across) : ImageGetPixel(image, (x + 1) % across, t);
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

// With fills too: a linear sweep in every slot would show any seam its
// unequal ends made.
TEST(BubblesFrames, TilesWithoutSeams) {
  Config s, filled;
  s.Set("Frames", 8).Set("Drift", 60);
  filled.Set("Frames", 8).Set("Drift", 60);
  for (int slot = 1; slot <= 5; ++slot) filled.Fill(slot, slot % 2 ? Linear() : Radial());
  for (const Config* c : {&s, &filled}) {
    std::vector<ImageBlock> frames = Render(*c, 8);
    ASSERT_EQ(frames.size(), 8u);
    for (int k : {0, 3, 7}) {
      SCOPED_TRACE(k);
      EXPECT_TRUE(Seamless(frames[static_cast<size_t>(k)], false));
      EXPECT_TRUE(Seamless(frames[static_cast<size_t>(k)], true));
    }
  }
  std::vector<ImageBlock> frames = Render(s, 1);
  // The statistic does see a seam: a cropped tile no longer wraps.
  ImageBlock cropped = Crop(frames[0], 128 - 9, 128 - 7);
  EXPECT_FALSE(Seamless(cropped, false));
  EXPECT_FALSE(Seamless(cropped, true));
}

// A fill whose two ends are one colour paints exactly what that Simple colour
// paints: the fill's picture goes through the bubble's own mask, place,
// opacity and blend, at every supersampling and profile.
TEST(BubblesFrames, AOneColourGradientPaintsLikeThatSimpleColour) {
  const Colour c = 0x00308FD0;
  std::vector<Config> simple = {Small(), Small()};
  simple[1].Set("Inverse", 1).Set("FillOpacity", 140).Set("Smooth", 1);
  for (Config& s : simple) s.Set("FillColor1", int32_t{c}).Set("FillColor4", int32_t{c});
  for (const Config& s : simple) {
    Config filled = s;
    filled.Fill(1, Gradient(kGradientRadial, 0, c, c)).Fill(4, Gradient(kGradientLinear, 45, c, c));
    std::vector<ImageBlock> a = Render(s, 3), b = Render(filled, 3);
    ASSERT_EQ(a.size(), b.size());
    for (size_t k = 0; k < a.size(); ++k) EXPECT_TRUE(SameBytes(a[k], b[k])) << k;
  }
  // And a real gradient does change the picture.
  Config filled = Small();
  filled.Fill(1, Radial());
  EXPECT_FALSE(SameBytes(Render(Small(), 1)[0], Render(filled, 1)[0]));
}

// Every allocation of a first frame failing in turn: the frame either fails
// cleanly (ASan checks nothing leaks) or, when only the final reduction
// failed, is the unreduced working image. Then every allocation of
// initialisation, fill pictures included.
TEST(BubblesFrames, AllocationFailuresEndTheFrameOrSkipTheReduction) {
  Config s = Small();
  s.Fill(1, Radial()).Fill(2, Linear());
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
  long init_allocations = 0;
  {
    Random random;
    AllocFailureScope count(1L << 30);
    ASSERT_TRUE(BubblesRecord::Create(s.Reader(), random));
    init_allocations = count.Count();
  }
  EXPECT_GE(init_allocations, 2);  // the elements and at least one fill
  for (long fail_at = 0; fail_at < init_allocations; ++fail_at) {
    Random random;
    AllocFailureScope scope(fail_at);
    EXPECT_FALSE(BubblesRecord::Create(s.Reader(), random)) << fail_at;
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
    std::vector<std::pair<int, FillDescriptor>> fills = {};
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
      {"radial_fill", {{"Frames", 8}}, {{1, Radial()}}},
      {"linear_fill_inverse", {{"Inverse", 1}, {"Smooth", 0}, {"FillOpacity", 180}, {"Frames", 8}},
       {{1, Linear()}}},
  };
  testing::GoldenSet golden("bubbles");
  for (const Case& c : cases) {
    Config s;
    for (const auto& [key, value] : c.changes) s.Set(key, value);
    for (const auto& [slot, fill] : c.fills) s.Fill(slot, fill);
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
