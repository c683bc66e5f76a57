// Neural Network: the frame-count rule, the tile, the pulses' laps, frames
// against the plain compositor, links across the edges, the loop, the seed,
// every setting, failures and golden checksums.
#include "styles/neural_network.h"

#include <gtest/gtest.h>

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

constexpr int kNumber = 18;

BeadConfig Defaults() { return BeadConfig(kNumber); }

// Few nodes, odd sizes, shadows on a grey ground.
BeadConfig Small() {
  BeadConfig c = Defaults();
  c.Set("Width", 5).Set("Depth", 3).Set("Size", 9).Set("Padding", 5).Set("Density", 9);
  c.Set("ShadowOffset", 3).Set("ShadowOpacity", 120).Set("Background", 0x506070);
  return c;
}

std::unique_ptr<NeuralNetworkRecord> Create(const BeadConfig& config) {
  SettingsReader reader = config.Reader();
  Random random;
  return NeuralNetworkRecord::Create(reader, random);
}

// ---------------------------------------------------------------- lattice

TEST(NeuralNetworkLattice, FramesFollowTheLatticeAndTheTileItsPitch) {
  struct Case {
    int32_t columns, rows, size, padding;
    int frames;
    int32_t pitch, node;
  };
  const Case cases[] = {
      {12, 8, 14, 0, 80, 28, 14},  // the defaults
      {2, 2, 8, 0, 24, 16, 8},     // short laps are slowed to 24 frames
      {3, 2, 20, 7, 24, 47, 20},     {10, 9, 8, 32, 76, 48, 8},
      {16, 16, 64, 32, 128, 64, 25},  // 160 a node would pass 1024 pixels
      {64, 64, 64, 0, 128, 16, 8},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.columns) + "x" + std::to_string(c.rows));
    BeadConfig config = Defaults();
    config.Set("Width", c.columns)
        .Set("Depth", c.rows)
        .Set("Size", c.size)
        .Set("Padding", c.padding);
    config.Set("Density", 8);
    auto record = Create(config);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->FrameCount(), c.frames);
    EXPECT_EQ(NeuralNetworkRecord::FramesFor(c.columns, c.rows), c.frames);
    EXPECT_EQ(record->pitch(), c.pitch);
    EXPECT_EQ(record->node_size(), c.node);
    EXPECT_EQ(record->width(), c.columns * c.pitch);
    EXPECT_EQ(record->height(), c.rows * c.pitch);
    EXPECT_LE(record->width(), 1024);
  }
  EXPECT_NE(Defaults().Style().frames_rule, nullptr);
}

TEST(NeuralNetworkLattice, EveryLapStepsOneLinkAtATimeAndEndsWhereItBegan) {
  for (const BeadConfig& config : {Defaults(), Small()}) {
    auto record = Create(config);
    ASSERT_TRUE(record);
    const int64_t w4 = 4 * int64_t{record->width()}, h4 = 4 * int64_t{record->height()};
    ASSERT_EQ(record->pulses().size(), static_cast<size_t>(config.Get("Density")));
    for (const NeuralPulse& p : record->pulses()) {
      ASSERT_EQ(p.horizontal.size(),
                static_cast<size_t>(config.Get("Width") + config.Get("Depth")));
      EXPECT_EQ(p.path_x.back() - p.path_x.front(), p.sx * w4);
      EXPECT_EQ(p.path_y.back() - p.path_y.front(), p.sy * h4);
      const NeuralNode& start = record->nodes()[static_cast<size_t>(p.start)];
      EXPECT_EQ(p.path_x.front(), start.x);
      for (size_t i = 0; i < p.horizontal.size(); ++i) {
        const int64_t dx = p.path_x[i + 1] - p.path_x[i], dy = p.path_y[i + 1] - p.path_y[i];
        // A step is about one pitch along its axis: node nudges are small.
        const int64_t along = p.horizontal[i] ? dx * p.sx : dy * p.sy;
        const int64_t across = p.horizontal[i] ? dy : dx;
        EXPECT_NEAR(along, 4 * record->pitch(), 4 * record->pitch() / 2);
        EXPECT_LT(std::abs(across), 4 * record->pitch() / 2);
      }
    }
  }
}

// Each link that leaves the tile on one side comes back on the other: the
// pixels where it crosses the right edge (the bottom edge) are painted in
// both the last and the first column (row) of the lattice image.
TEST(NeuralNetworkLattice, LinksCrossTheTileEdges) {
  for (const BeadConfig& config : {Defaults(), Small().Set("ShadowOpacity", 0)}) {
    auto record = Create(config);
    ASSERT_TRUE(record);
    const ImageBlock& net = record->network();
    const Colour ground = static_cast<Colour>(config.Get("Background"));
    const int32_t columns = config.Get("Width"), rows = config.Get("Depth");
    const int64_t w4 = 4 * int64_t{record->width()}, h4 = 4 * int64_t{record->height()};
    for (int32_t r = 0; r < rows; ++r) {
      const NeuralNode& a = record->nodes()[static_cast<size_t>(r * columns + columns - 1)];
      const NeuralNode& b = record->nodes()[static_cast<size_t>(r * columns)];
      const int64_t y = a.y + (b.y - a.y) * (w4 - a.x) / (b.x + w4 - a.x);
      EXPECT_NE(ImageGetPixel(net, record->width() - 1, static_cast<int>(y / 4)), ground) << r;
      EXPECT_NE(ImageGetPixel(net, 0, static_cast<int>(y / 4)), ground) << r;
    }
    for (int32_t c = 0; c < columns; ++c) {
      const NeuralNode& a = record->nodes()[static_cast<size_t>((rows - 1) * columns + c)];
      const NeuralNode& b = record->nodes()[static_cast<size_t>(c)];
      const int64_t x = a.x + (b.x - a.x) * (h4 - a.y) / (b.y + h4 - a.y);
      EXPECT_NE(ImageGetPixel(net, static_cast<int>(x / 4), record->height() - 1), ground) << c;
      EXPECT_NE(ImageGetPixel(net, static_cast<int>(x / 4), 0), ground) << c;
    }
  }
}

// ---------------------------------------------------------------- frames

int64_t Floor4(int64_t v) { return v >= 0 ? v / 4 : -((-v + 3) / 4); }

// The pulses' glows, as the record makes them, over its lattice image, drawn
// by the plain compositor.
TEST(NeuralNetworkFrames, ArePulsesOverTheLatticeAsThePlainCompositorDrawsThem) {
  for (const BeadConfig& config : {Defaults(), Small()}) {
    auto record = Create(config);
    ASSERT_TRUE(record);
    const int n = record->FrameCount();
    for (int k : {0, 7, n - 1}) {
      std::vector<testing::SceneSprite> glows;
      const int64_t spacing = record->TailSpacing();
      for (const NeuralPulse& p : record->pulses()) {
        const int64_t steps = static_cast<int64_t>(p.horizontal.size());
        for (int g = 2; g >= 0; --g) {
          int64_t x, y;
          record->PulseAt(p, p.offset + k * steps - g * spacing + steps * n, x, y);
          const ImageBlock& glow = record->Glow(p.paint, g);
          // The nearest whole pixel to the glow's top-left corner.
          glows.push_back({&glow, static_cast<int32_t>(Floor4(x - 2 * glow.width() + 2)),
                           static_cast<int32_t>(Floor4(y - 2 * glow.height() + 2))});
        }
      }
      ImageBlock expected = testing::ComposeOnBigCanvas(record->width(), record->height(), 0, 0, {},
                                                        glows, &record->network());
      EXPECT_TRUE(SameBytes(record->RenderFrame(k), expected)) << k;
    }
  }
}

TEST(NeuralNetworkFrames, FrameNIsFrameZeroAndTheSeedDecides) {
  for (const BeadConfig& c : {Defaults(), Small(), Small().Set("Width", 2).Set("Depth", 2)}) {
    auto record = Create(c);
    ASSERT_TRUE(record);
    const int n = record->FrameCount();
    ImageBlock f0 = record->RenderFrame(0), f1 = record->RenderFrame(1);
    EXPECT_TRUE(SameBytes(record->RenderFrame(n), f0));
    EXPECT_TRUE(SameBytes(record->RenderFrame(n + 1), f1));
    EXPECT_FALSE(SameBytes(f0, f1));
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

// Each row changes the picture. Shadows cannot darken the default black
// ground, so the rows start from a grey one with shadows showing.
TEST(NeuralNetworkFrames, EverySettingOnThePageShows) {
  auto base_config = [] {
    BeadConfig c = Defaults();
    c.Set("Background", 0x406080).Set("ShadowOffset", 3).Set("ShadowOpacity", 100);
    return c;
  };
  const std::vector<std::pair<const char*, int32_t>> changes = {
      {"Width", 11},
      {"Depth", 9},
      {"Seed", 777},
      {"Size", 12},
      {"Density", 20},
      {"Padding", 4},
      {"Glare", 0},
      {"Shade", 255},
      {"ShadowOffset", 6},
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
  const ImageBlock base = std::move(RenderFrames(base_config(), {1})[0]);
  for (const auto& [key, value] : changes) {
    BeadConfig c = base_config();
    c.Set(key, value);
    EXPECT_FALSE(SameBytes(base, RenderFrames(c, {1})[0])) << key;
  }
}

// ---------------------------------------------------------------- failures

TEST(NeuralNetworkFailures, EveryAllocationFailingEndsTheBuildCleanly) {
  BeadConfig c = Small();
  c.Set("Width", 2)
      .Set("Depth", 2)
      .Set("FillEnable3", 0)
      .Set("FillEnable4", 0)
      .Set("FillEnable5", 0);
  c.Set("FillColor2", static_cast<int32_t>(kFillGradient << 24 | 0x3060C0));
  testing::SweepAllocationFailures(c);
}

// ---------------------------------------------------------------- golden

// Frames 0, 1 and N-1 at the configuration's defaults and at a small odd
// lattice with shadows. A difference means the picture changed: check it is
// intended, then rebuild the target regenerate-golden-neural_network_test.
TEST(NeuralNetworkGolden, FramesMatchTheirChecksums) {
  BeadConfig small = Small();
  small.Set("Glare", 255).Set("Shade", 200).Set("FillEnable4", 0);
  testing::GoldenSet golden("neural_network");
  for (const auto& [name, config] :
       {std::pair{"defaults", Defaults()}, std::pair{"small", small}}) {
    std::vector<ImageBlock> frames = RenderFrames(config, {0, 1, -1});
    ASSERT_EQ(frames.size(), 3u);
    for (size_t i = 0; i < 3; ++i)
      golden.Add(std::string(name) + "_frame" + (i == 2 ? std::string("last") : std::to_string(i)),
                 testing::ImageChecksum(frames[i]));
  }
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
