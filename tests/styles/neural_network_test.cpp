// Neural Network: the frame-count rule and the tile, the pulses' laps, links
// across the edges, frames against the plain compositor, the shared
// properties and golden checksums.
#include "styles/neural_network.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/styles/bead_test_support.h"

namespace tess {
namespace {

using testing::BeadConfig;

BeadConfig Defaults() { return BeadConfig(18); }
// Few nodes, odd sizes, shadows on a grey ground.
BeadConfig Small() {
  return Defaults()
      .Set("Width", 5)
      .Set("Depth", 3)
      .Set("Size", 9)
      .Set("Padding", 5)
      .Set("Density", 9)
      .Set("ShadowOffset", 3)
      .Set("ShadowOpacity", 120)
      .Set("Background", 0x506070);
}

std::unique_ptr<NeuralNetworkRecord> Create(const BeadConfig& config) {
  Random random;
  return NeuralNetworkRecord::Create(config.Reader(), random);
}

TEST(NeuralNetworkLattice, FramesFollowTheLatticeAndTheTileItsPitch) {
  // columns, rows, size, padding -> frames, pitch, node size
  const int32_t cases[][7] = {
      {12, 8, 14, 0, 80, 28, 14},    {2, 2, 8, 0, 24, 16, 8},  // short laps slowed to 24
      {3, 2, 20, 7, 24, 47, 20},     {10, 9, 8, 32, 76, 48, 8},
      {16, 16, 64, 32, 128, 64, 25},  // a pitch of 160 would pass 1024 pixels
      {64, 64, 64, 0, 128, 16, 8},
  };
  for (const auto& c : cases) {
    auto r = Create(
        Defaults().Set("Width", c[0]).Set("Depth", c[1]).Set("Size", c[2]).Set("Padding", c[3]));
    EXPECT_EQ(r->FrameCount(), c[4]);
    EXPECT_EQ(r->pitch(), c[5]);
    EXPECT_EQ(r->node_size(), c[6]);
    EXPECT_EQ(r->width(), c[0] * c[5]);
    EXPECT_EQ(r->height(), c[1] * c[5]);
  }
}

// Each step goes about one pitch along its axis (nodes are nudged a little),
// and the lap ends a whole tile from where it began.
TEST(NeuralNetworkLattice, EveryLapStepsOneLinkAtATimeAndEndsWhereItBegan) {
  for (const BeadConfig& config : {Defaults(), Small()}) {
    auto r = Create(config);
    ASSERT_EQ(r->pulses().size(), size_t(config.Get("Density")));
    const int64_t p4 = 4 * r->pitch();
    for (const NeuralPulse& p : r->pulses()) {
      ASSERT_EQ(p.horizontal.size(), size_t(config.Get("Width") + config.Get("Depth")));
      EXPECT_EQ(p.path_x.back() - p.path_x.front(), p.sx * 4 * int64_t{r->width()});
      EXPECT_EQ(p.path_y.back() - p.path_y.front(), p.sy * 4 * int64_t{r->height()});
      for (size_t i = 0; i < p.horizontal.size(); ++i) {
        const int64_t dx = p.path_x[i + 1] - p.path_x[i], dy = p.path_y[i + 1] - p.path_y[i];
        EXPECT_NEAR(p.horizontal[i] ? dx * p.sx : dy * p.sy, p4, p4 / 2);
        EXPECT_LT(std::abs(p.horizontal[i] ? dy : dx), p4 / 2);
      }
    }
  }
}

// Where a link crosses the right (bottom) edge, the lattice image is painted
// in both its last and its first column (row).
TEST(NeuralNetworkLattice, LinksCrossTheTileEdges) {
  for (const BeadConfig& config : {Defaults(), Small().Set("ShadowOpacity", 0)}) {
    auto r = Create(config);
    const int32_t columns = config.Get("Width"), rows = config.Get("Depth");
    const int64_t w4 = 4 * int64_t{r->width()}, h4 = 4 * int64_t{r->height()};
    for (int32_t i = 0; i < columns + rows; ++i) {
      const bool across = i < rows;  // row i's link over the right edge
      const NeuralNode& a =
          r->nodes()[size_t(across ? i * columns + columns - 1 : (rows - 1) * columns + i - rows)];
      const NeuralNode& b = r->nodes()[size_t(across ? i * columns : i - rows)];
      const auto on = int32_t((across ? a.y + (b.y - a.y) * (w4 - a.x) / (b.x + w4 - a.x)
                                      : a.x + (b.x - a.x) * (h4 - a.y) / (b.y + h4 - a.y)) /
                              4);
      for (int32_t edge : {0, (across ? r->width() : r->height()) - 1})
        EXPECT_NE(ImageGetPixel(r->network(), across ? edge : on, across ? on : edge),
                  Colour(config.Get("Background")));
    }
  }
}

// A frame is the lattice image with every pulse's three glows over it.
TEST(NeuralNetworkFrames, ArePulsesOverTheLatticeAsThePlainCompositorDrawsThem) {
  auto floor4 = [](int64_t v) { return int32_t(v >= 0 ? v / 4 : -((-v + 3) / 4)); };
  for (const BeadConfig& config : {Defaults(), Small()}) {
    auto r = Create(config);
    const int n = r->FrameCount();
    for (int k : {0, 7, n - 1}) {
      std::vector<testing::SceneSprite> glows;
      for (const NeuralPulse& p : r->pulses()) {
        const auto steps = int64_t(p.horizontal.size());
        for (int g = 2; g >= 0; --g) {
          int64_t x, y;
          r->PulseAt(p, p.offset + k * steps - g * r->TailSpacing() + steps * n, x, y);
          const ImageBlock& glow = r->Glow(p.paint, g);
          glows.push_back(
              {&glow, floor4(x - 2 * glow.width() + 2), floor4(y - 2 * glow.height() + 2)});
        }
      }
      EXPECT_TRUE(testing::SameBytes(
          r->RenderFrame(k),
          testing::ComposeOnBigCanvas(r->width(), r->height(), 0, 0, {}, glows, &r->network())));
    }
  }
}

// Shadows cannot darken the default black ground, so the settings rows start
// from a grey one with shadows showing.
TEST(NeuralNetworkFrames, LoopSeedSettingsAndFailures) {
  for (const BeadConfig& c : {Defaults(), Small(), Small().Set("Width", 2).Set("Depth", 2)})
    testing::ExpectLoopAndSeed(c);
  testing::ExpectEverySettingShows(
      Defaults().Set("Background", 0x406080).Set("ShadowOffset", 3).Set("ShadowOpacity", 100),
      {{"Width", 11},
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
       {"FillColor4", 0},
       {"FillColor5", 0xFF00FF},
       {"FillEnable2", 0},
       {"FillEnable3", 0},
       {"FillEnable4", 0},
       {"FillEnable5", 0}},
      1);
  testing::ExpectEveryAllocationFailureFailsTheBuild(
      Small()
          .Set("Width", 2)
          .Set("Depth", 2)
          .Set("FillEnable3", 0)
          .Set("FillEnable4", 0)
          .Set("FillEnable5", 0)
          .Set("FillColor2", int32_t{kFillGradient << 24 | 0x3060C0}));
}

TEST(NeuralNetworkGolden, FramesMatchTheirChecksums) {
  testing::ExpectGoldenFrames(
      "neural_network",
      {{"defaults", Defaults()},
       {"small", Small().Set("Glare", 255).Set("Shade", 200).Set("FillEnable4", 0)}});
}

}  // namespace
}  // namespace tess
