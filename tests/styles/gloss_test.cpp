// The glossy sprite maker against a sample-by-sample reference, the light it
// promises, placement, paints and the shadow layer.
#include "styles/gloss.h"

#include <gtest/gtest.h>

#include <vector>

#include "draw/draw.h"
#include "styles/page_layout.h"
#include "tests/styles/bead_test_support.h"

namespace tess {
namespace {

// Sprite pixel (i, j) of phase (fx, fy) as gloss.h describes it: the centre
// lies 8 + 4 * width + 2 * fx eighths into the sprite, sample (a, b) of a
// pixel at its eighths 2a + 1, 2b + 1.
Colour ReferencePixel(const GlossShape& shape, const GlossLight& light, const GlossPaint& paint,
                      int fx, int fy, int32_t i, int32_t j) {
  unsigned inside = 0, m = 0, g = 0;
  for (int b = 0; b < 4; ++b)
    for (int a = 0; a < 4; ++a) {
      GlossSample s =
          GlossSampleAt(shape, light, 8 * i + 2 * a + 1 - (8 + 4 * shape.width + 2 * fx),
                        8 * j + 2 * b + 1 - (8 + 4 * shape.height + 2 * fy));
      if (s.inside) ++inside, m += s.light, g += s.glare;
    }
  if (inside == 0) return 0;
  m /= inside, g /= inside;
  const Colour c = GlossPaintAt(paint, i, j, shape.width + 2, shape.height + 2);
  return MakeColour(GlossTone(ColourRed(c), m, g), GlossTone(ColourGreen(c), m, g),
                    GlossTone(ColourBlue(c), m, g)) |
         (inside * 255 / 16) << 24;
}

TEST(GlossSprites, EveryPhaseAndPaintMatchesTheSampleBySampleReference) {
  const std::pair<GlossShape, GlossLight> cases[] = {
      {{20, 20, 10}, {160, 70}}, {{13, 13, 6}, {255, 255}}, {{20, 10, 4}, {160, 70}},
      {{7, 19, 2}, {90, 200}},   {{9, 5, 1}, {0, 0}},
  };
  FillDescriptor gradient;
  gradient.kind = kFillGradient;
  std::vector<GlossPaint> paints(2);
  paints[0].colour = MakeColour(250, 120, 30);
  ASSERT_TRUE(MakeGlossPaint(gradient, 23, 23, paints[1]));
  for (const auto& [shape, light] : cases) {
    GlossSprites sprites;
    ASSERT_TRUE(sprites.Make(shape, light, paints, false));
    for (int p = 0; p < 2; ++p)
      for (int phase = 0; phase < 16; ++phase)
        for (int32_t j = 0; j < shape.height + 2; ++j)
          for (int32_t i = 0; i < shape.width + 2; ++i)
            ASSERT_EQ(ImageGetPixel(sprites.Sprite(p, phase), i, j),
                      ReferencePixel(shape, light, paints[p], phase % 4, phase / 4, i, j))
                << shape.width << "x" << shape.height << " paint " << p << " phase " << phase
                << " at " << i << "," << j;
  }
}

// Shade darkens the rim turned away from the light only; glare peaks in the
// upper left; a block's corner is cut off and its flat top keeps its colour.
TEST(GlossSamples, LightComesFromTheUpperLeft) {
  const GlossShape bead{40, 40, 20}, block{40, 20, 6};
  auto at = [](const GlossShape& s, GlossLight l, int x, int y) {
    return GlossSampleAt(s, l, 8 * x, 8 * y);
  };
  EXPECT_TRUE(at(block, {}, 19, 0).inside);
  EXPECT_FALSE(at(block, {}, 19, 9).inside);
  EXPECT_LT(at(bead, {0, 200}, 12, 12).light, 150);
  EXPECT_EQ(at(bead, {0, 200}, -12, -12).light, 255);
  EXPECT_EQ(at(block, {200, 200}, 0, 0).light, 255);
  EXPECT_LT(at(block, {200, 200}, 0, 0).glare, 10);
  EXPECT_GT(at(bead, {200, 0}, -6, -6).glare, 150);
  EXPECT_EQ(at(bead, {200, 0}, 6, 6).glare, 0);
}

TEST(GlossSprites, PlacementPutsTheShapesCentreOnTheAskedQuarterPixel) {
  std::vector<GlossPaint> one(1);
  for (GlossShape shape : {GlossShape{20, 20, 10}, GlossShape{13, 7, 2}}) {
    GlossSprites sprites;
    ASSERT_TRUE(sprites.Make(shape, {}, one, true));
    const int32_t lead = 4 * (GlossShadowMargin(shape) + 1) + 2 * shape.width;
    for (int64_t x : {0, 1, 2, 3, 4, 5, -1, -2, -3, -4, -5, 517, -517}) {
      GlossPlace p = sprites.Place(x, -x), s = sprites.PlaceShadow(x, x);
      EXPECT_EQ(4 * int64_t{p.x} + p.phase % 4 + 4 + 2 * shape.width, x);
      EXPECT_EQ(4 * int64_t{p.y} + p.phase / 4 + 4 + 2 * shape.height, -x);
      EXPECT_EQ(4 * int64_t{s.x} + s.phase % 4 + lead, x);
    }
    // Phase 0's shadow mask is centred on the shape: symmetric, solid in the
    // middle, clear at its border.
    const GlossMask& mask = sprites.Shadow(0);
    const uint8_t* row = mask.cover.get() + size_t(mask.height / 2) * size_t(mask.width);
    for (int32_t i = 0; i < mask.width; ++i) EXPECT_EQ(row[i], row[mask.width - 1 - i]);
    EXPECT_EQ(row[mask.width / 2], 255);
    EXPECT_EQ(row[0], 0);
  }
}

TEST(GlossPaints, SimpleSlotsStayFlatAndOtherFillsAreRenderedOnceForTheLargestSprite) {
  testing::BeadConfig c(17);
  c.Set("FillColor1", int32_t{kFillGradient << 24 | 0x123456}).Set("FillColor2", 0x654321);
  c.Set("FillEnable3", 0).Set("FillEnable4", 0).Set("FillEnable5", 0);
  int colours[5], enables[4];
  for (int i = 1; i <= 5; ++i) colours[i - 1] = PageControlId(17, page::ColourControl(i));
  for (int i = 2; i <= 5; ++i) enables[i - 2] = PageControlId(17, page::EnableControl(i));
  std::vector<GlossPaint> paints;
  ASSERT_TRUE(MakeSlotPaints(c.Reader(), colours, enables, 30, 20, paints));
  ASSERT_EQ(paints.size(), 2u);
  ASSERT_TRUE(paints[0].fill && paints[0].fill.width() == 30 && paints[0].fill.height() == 20);
  EXPECT_FALSE(paints[1].fill);
  EXPECT_EQ(GlossPaintAt(paints[1], 3, 4, 10, 10), 0x654321u);
  // A smaller sprite takes the middle of the fill.
  EXPECT_EQ(GlossPaintAt(paints[0], 0, 0, 10, 10), ImageGetPixel(paints[0].fill, 10, 5));
  AllocFailureScope fail(0);
  EXPECT_FALSE(MakeSlotPaints(c.Reader(), colours, enables, 30, 20, paints));
}

// Overlapping masks, masks straddling every edge and corner, far outside.
TEST(ShadowLayer, MatchesThePlainCompositorWrappingAndTakingTheStrongest) {
  GlossSprites sprites;
  std::vector<GlossPaint> one(1);
  ASSERT_TRUE(sprites.Make({9, 5, 2}, {}, one, true));
  for (auto [w, h, opacity] : {std::tuple{16, 16, 255}, {23, 17, 48}, {40, 31, 1}, {19, 16, 0}}) {
    ShadowLayer layer;
    ASSERT_TRUE(layer.Init(w, h, 0x8040C0, opacity));
    const int32_t spots[][2] = {{3, 4},         {5, 6},   {-4, 2},
                                {w - 3, h - 2}, {-7, -5}, {5 * w + 1, -3 * h}};
    for (int round = 0; round < 2; ++round) {
      layer.Clear();
      std::vector<testing::SceneShadow> shadows;
      for (int i = 0; i < 6; ++i) {
        const GlossMask& mask = sprites.Shadow((i * 5 + round) % 16);
        layer.Add(mask, spots[i][0], spots[i][1]);
        shadows.push_back({&mask, spots[i][0], spots[i][1]});
      }
      EXPECT_TRUE(testing::SameBytes(
          layer.Paint(), testing::ComposeOnBigCanvas(w, h, 0x8040C0, opacity, shadows, {})));
    }
    layer.Clear();
    EXPECT_TRUE(testing::SameBytes(layer.Paint(), SolidImage({0, 0, w, h}, 0x8040C0)));
  }
}

}  // namespace
}  // namespace tess
