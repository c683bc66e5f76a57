// The glossy sprite maker against a sample-by-sample reference, the lighting
// it promises, sprite placement, paints and the shadow layer.
#include "styles/gloss.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "draw/draw.h"
#include "fills/fill_render.h"
#include "tests/styles/bead_test_support.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- reference

// Sprite pixel (i, j) of phase (fx, fy), straight from the description in
// gloss.h: the centre lies at 1 + width / 2 + fx / 4 pixels, that is
// 8 + 4 * width + 2 * fx eighths, and sample (a, b) of the pixel at eighth
// 2a + 1 (2b + 1) of it.
Colour ReferencePixel(const GlossShape& shape, const GlossLight& light, const GlossPaint& paint,
                      int fx, int fy, int32_t i, int32_t j) {
  const int32_t cx8 = 8 + 4 * shape.width + 2 * fx, cy8 = 8 + 4 * shape.height + 2 * fy;
  unsigned inside = 0, m = 0, g = 0;
  for (int b = 0; b < 4; ++b)
    for (int a = 0; a < 4; ++a) {
      GlossSample s = GlossSampleAt(shape, light, 8 * i + 2 * a + 1 - cx8, 8 * j + 2 * b + 1 - cy8);
      if (!s.inside) continue;
      ++inside, m += s.light, g += s.glare;
    }
  if (inside == 0) return 0;
  m /= inside, g /= inside;
  const Colour c = GlossPaintAt(paint, i, j, shape.width + 2, shape.height + 2);
  return MakeColour(GlossTone(ColourRed(c), m, g), GlossTone(ColourGreen(c), m, g),
                    GlossTone(ColourBlue(c), m, g)) |
         (inside * 255 / 16) << 24;
}

struct SpriteCase {
  const char* name;
  GlossShape shape;
  GlossLight light;
};

const SpriteCase kSpriteCases[] = {
    {"bead_even", {20, 20, 10}, {160, 70}}, {"bead_odd", {13, 13, 6}, {255, 255}},
    {"block_wide", {20, 10, 4}, {160, 70}}, {"block_tall_odd", {7, 19, 2}, {90, 200}},
    {"flat_unlit", {9, 5, 1}, {0, 0}},
};

TEST(GlossSprites, EveryPhaseMatchesTheSampleBySampleReference) {
  FillDescriptor gradient;
  gradient.kind = kFillGradient;
  for (const SpriteCase& c : kSpriteCases) {
    SCOPED_TRACE(c.name);
    std::vector<GlossPaint> list(2);
    list[0].colour = MakeColour(250, 120, 30);
    ASSERT_TRUE(MakeGlossPaint(gradient, 23, 23, list[1]));
    GlossSprites sprites;
    ASSERT_TRUE(sprites.Make(c.shape, c.light, list, false));
    for (int p = 0; p < 2; ++p)
      for (int phase = 0; phase < 16; ++phase) {
        const ImageBlock& s = sprites.Sprite(p, phase);
        ASSERT_EQ(s.width(), c.shape.width + 2);
        ASSERT_EQ(s.height(), c.shape.height + 2);
        for (int32_t j = 0; j < s.height(); ++j)
          for (int32_t i = 0; i < s.width(); ++i)
            ASSERT_EQ(ImageGetPixel(s, i, j),
                      ReferencePixel(c.shape, c.light, list[p], phase % 4, phase / 4, i, j))
                << "paint " << p << " phase " << phase << " at " << i << "," << j;
      }
  }
}

TEST(GlossSprites, ShadowMasksAreTheDescribedProfileAtEveryPhase) {
  for (const SpriteCase& c : kSpriteCases) {
    SCOPED_TRACE(c.name);
    GlossSprites sprites;
    std::vector<GlossPaint> one(1);
    ASSERT_TRUE(sprites.Make(c.shape, c.light, one, true));
    const int32_t margin = GlossShadowMargin(c.shape);
    for (int phase = 0; phase < 16; ++phase) {
      const GlossMask& mask = sprites.Shadow(phase);
      ASSERT_EQ(mask.width, c.shape.width + 2 + 2 * margin);
      const int32_t cx8 = 8 * (margin + 1) + 4 * c.shape.width + 2 * (phase % 4);
      const int32_t cy8 = 8 * (margin + 1) + 4 * c.shape.height + 2 * (phase / 4);
      for (int32_t j = 0; j < mask.height; ++j)
        for (int32_t i = 0; i < mask.width; ++i)
          ASSERT_EQ(mask.cover[static_cast<size_t>(j * mask.width + i)],
                    GlossShadowAt(c.shape, 8 * i + 4 - cx8, 8 * j + 4 - cy8))
              << phase << " at " << i << "," << j;
      // The margin holds the soft edge: the border pixels are clear.
      for (int32_t i = 0; i < mask.width; ++i) EXPECT_EQ(mask.cover[static_cast<size_t>(i)], 0);
    }
  }
}

// ---------------------------------------------------------------- lighting

TEST(GlossSamples, LightComesFromTheUpperLeft) {
  const GlossShape bead{40, 40, 20};
  const GlossShape block{40, 20, 6};
  auto at = [](const GlossShape& s, const GlossLight& l, int x, int y) {
    return GlossSampleAt(s, l, 8 * x, 8 * y);
  };
  const GlossLight lit{200, 200};
  // Inside is the rounded footprint: a block's corner is cut off.
  EXPECT_TRUE(at(bead, lit, 0, 0).inside);
  EXPECT_FALSE(at(bead, lit, 15, 15).inside);
  EXPECT_TRUE(at(block, lit, 19, 0).inside);
  EXPECT_FALSE(at(block, lit, 20, 0).inside);
  EXPECT_FALSE(at(block, lit, 19, 9).inside);
  // Shade darkens the rim turned away from the light, not the one towards it
  // nor a block's flat top; without Shade nothing is darkened.
  EXPECT_LT(at(bead, lit, 12, 12).light, 150);
  EXPECT_EQ(at(bead, lit, -12, -12).light, 255);
  EXPECT_EQ(at(block, lit, 0, 0).light, 255);
  EXPECT_EQ(at(bead, {200, 0}, 12, 12).light, 255);
  // Glare peaks in the upper left quarter and is gone without it.
  int best = 0, bx = 0, by = 0;
  for (int y = -19; y < 20; ++y)
    for (int x = -19; x < 20; ++x)
      if (at(bead, lit, x, y).glare > best) best = at(bead, lit, x, y).glare, bx = x, by = y;
  EXPECT_GT(best, 150);
  EXPECT_LT(bx, 0);
  EXPECT_LT(by, 0);
  EXPECT_EQ(at(bead, {0, 200}, bx, by).glare, 0);
  // Symmetric about the light's diagonal.
  for (int y = -19; y < 20; y += 3)
    for (int x = -19; x < 20; x += 5) {
      GlossSample a = at(bead, lit, x, y), b = at(bead, lit, y, x);
      EXPECT_EQ(a.light, b.light);
      EXPECT_EQ(a.glare, b.glare);
    }
}

TEST(GlossSamples, ToneKeepsThePaintAtNeutralLightAndReachesWhiteAtFullGlare) {
  for (uint32_t c : {0u, 1u, 77u, 254u, 255u}) {
    EXPECT_EQ(GlossTone(c, 255, 0), c);
    EXPECT_EQ(GlossTone(c, 255, 255), 255);
    EXPECT_EQ(GlossTone(c, 0, 0), 0);
  }
}

// ---------------------------------------------------------------- placement

TEST(GlossSprites, PlacementPutsTheShapesCentreOnTheAskedQuarterPixel) {
  GlossSprites sprites;
  std::vector<GlossPaint> one(1);
  for (GlossShape shape : {GlossShape{20, 20, 10}, GlossShape{13, 7, 2}}) {
    ASSERT_TRUE(sprites.Make(shape, {}, one, true));
    const int32_t margin = GlossShadowMargin(shape);
    for (int64_t x : {0, 1, 2, 3, 4, 5, -1, -2, -3, -4, -5, 517, -517}) {
      // Centre in quarter pixels: top-left * 4 + phase + the phase-0 centre.
      GlossPlace p = sprites.Place(x, -x);
      EXPECT_EQ(4 * int64_t{p.x} + p.phase % 4 + 4 + 2 * shape.width, x);
      EXPECT_EQ(4 * int64_t{p.y} + p.phase / 4 + 4 + 2 * shape.height, -x);
      GlossPlace s = sprites.PlaceShadow(x, x);
      EXPECT_EQ(4 * int64_t{s.x} + s.phase % 4 + 4 * (margin + 1) + 2 * shape.width, x);
    }
  }
}

// ---------------------------------------------------------------- paints

TEST(GlossPaints, SimpleSlotsStayFlatAndOtherFillsAreRenderedOnce) {
  Settings settings;
  constexpr int kParticles = 17;
  settings.SetStyleNumber(kParticles, "FillColor1",
                          static_cast<int32_t>(kFillGradient << 24 | 0x123456));
  settings.SetStyleNumber(kParticles, "FillColor2", 0x654321);
  settings.SetStyleNumber(kParticles, "FillEnable3", 0);
  settings.SetStyleNumber(kParticles, "FillEnable4", 0);
  settings.SetStyleNumber(kParticles, "FillEnable5", 0);
  const StyleEntry& style = *StyleByNumber(kParticles);
  SettingsReader reader(settings, style);
  int colour_ids[5], enable_ids[4];
  for (int i = 0; i < 5; ++i) colour_ids[i] = PageControlId(kParticles, 11 + i);
  for (int i = 0; i < 4; ++i) enable_ids[i] = PageControlId(kParticles, 22 + i);
  std::vector<GlossPaint> paints;
  ASSERT_TRUE(MakeSlotPaints(reader, colour_ids, enable_ids, 30, 20, paints));
  ASSERT_EQ(paints.size(), 2u);
  ASSERT_TRUE(paints[0].fill);
  EXPECT_EQ(paints[0].fill.width(), 30);
  EXPECT_EQ(paints[0].fill.height(), 20);
  EXPECT_FALSE(paints[1].fill);
  EXPECT_EQ(GlossPaintAt(paints[1], 3, 4, 10, 10), 0x654321u);
  // A smaller sprite takes the middle of the fill.
  EXPECT_EQ(GlossPaintAt(paints[0], 0, 0, 10, 10), ImageGetPixel(paints[0].fill, 10, 5));
  {
    AllocFailureScope fail(0);
    EXPECT_FALSE(MakeSlotPaints(reader, colour_ids, enable_ids, 30, 20, paints));
  }
}

TEST(GlossPaints, OnePaintDrawsNoNumberAndNeighboursRarelyRepeat) {
  Random random;
  random.Seed(1234);
  PaintPick one(1);
  EXPECT_EQ(one.Pick(random), 0);
  EXPECT_EQ(random.state(), 1234u);
  PaintPick five(5);
  int previous = -1, repeats = 0;
  for (int i = 0; i < 200; ++i) {
    int p = five.Pick(random);
    ASSERT_GE(p, 0);
    ASSERT_LT(p, 5);
    repeats += p == previous;
    previous = p;
  }
  EXPECT_LT(repeats, 2);
}

// ---------------------------------------------------------------- shadow layer

TEST(ShadowLayer, MatchesThePlainCompositorWrappingAndTakingTheStrongest) {
  GlossSprites sprites;
  std::vector<GlossPaint> one(1);
  ASSERT_TRUE(sprites.Make({9, 5, 2}, {}, one, true));
  struct Case {
    int32_t w, h;
    int opacity;
  };
  for (Case c : {Case{16, 16, 255}, Case{23, 17, 48}, Case{40, 31, 1}, Case{19, 16, 0}}) {
    SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h));
    ShadowLayer layer;
    ASSERT_TRUE(layer.Init(c.w, c.h, 0x8040C0, c.opacity));
    std::vector<testing::SceneShadow> shadows;
    // Overlapping, straddling every edge and corner, far outside the tile.
    const int32_t spots[][2] = {
        {3, 4}, {5, 6}, {-4, 2}, {c.w - 3, c.h - 2}, {-7, -5}, {5 * c.w + 1, -3 * c.h}};
    for (int round = 0; round < 2; ++round) {
      layer.Clear();
      shadows.clear();
      for (int i = 0; i < 6; ++i) {
        const GlossMask& mask = sprites.Shadow((i * 5 + round) % 16);
        layer.Add(mask, spots[i][0], spots[i][1]);
        shadows.push_back({&mask, spots[i][0], spots[i][1]});
      }
      ImageBlock painted = layer.Paint();
      ImageBlock expected = testing::ComposeOnBigCanvas(c.w, c.h, 0x8040C0, c.opacity, shadows, {});
      EXPECT_TRUE(testing::SameBytes(painted, expected));
    }
    // Cleared, it paints the plain colour.
    layer.Clear();
    EXPECT_TRUE(testing::SameBytes(layer.Paint(), SolidImage({0, 0, c.w, c.h}, 0x8040C0)));
  }
}

}  // namespace
}  // namespace tess
