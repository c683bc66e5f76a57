// Slot paints: the picture blend against a pixel-by-pixel reference, and the
// slots' order, picks and render-once cache.
#include "styles/slot_paint.h"

#include <gtest/gtest.h>

#include "draw/draw.h"
#include "tests/styles/mask_effect_checks.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::EffectSetup;
using testing::SameBytes;

// Pixel by pixel, in the mask's row order, each through WrapIndex.
void ReferenceBlend(ImageBlock& target, const ImageBlock& mask, const ImageBlock& paint,
                    int32_t x, int32_t y, int opacity) {
  for (int32_t sy = 0; sy < mask.height(); ++sy)
    for (int32_t sx = 0; sx < mask.width(); ++sx) {
      const int32_t tx = WrapIndex(int64_t{x} + sx, target.width());
      const int32_t ty = WrapIndex(int64_t{y} + sy, target.height());
      const unsigned a = ColourBlue(ImageGetPixel(mask, sx, sy)) * unsigned(opacity) / 255;
      const Colour c = ImageGetPixel(paint, sx, sy), d = ImageGetPixel(target, tx, ty);
      Colour out = 0;
      for (int shift = 0; shift < 24; shift += 8)
        out |= (((c >> shift) & 0xFF) * a / 255 + ((d >> shift) & 0xFF) * (255 - a) / 255) << shift;
      ImageSetPixel(target, tx, ty, out);
    }
}

TEST(PaintMaskBlendWrap, MatchesThePixelByPixelBlend) {
  struct Case {
    int32_t mask_w, mask_h, x, y;
    int opacity;
  };
  const Case cases[] = {
      {5, 4, 2, 2, 255},     // inside
      {5, 4, 10, 7, 255},    // across the bottom-right corner
      {5, 4, -3, -2, 140},   // across the top-left corner, from outside
      {5, 4, 40, -31, 255},  // several tiles away
      {20, 15, 6, 3, 90},    // larger than the tile: lands on itself
      {5, 4, 1, 1, 0},       // no opacity: nothing changes
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.x << "," << c.y << " " << c.mask_w << "x" << c.mask_h);
    ImageBlock mask = testing::NoiseImage(c.mask_w, c.mask_h, 7);
    ImageBlock paint = testing::NoiseImage(c.mask_w + 3, c.mask_h + 2, 8);
    ImageBlock fast = testing::NoiseImage(13, 9, 9), slow = testing::NoiseImage(13, 9, 9);
    PaintMaskBlendWrap(fast, mask, paint, c.x, c.y, c.opacity);
    ReferenceBlend(slow, mask, paint, c.x, c.y, c.opacity);
    EXPECT_TRUE(SameBytes(fast, slow));
  }
}

TEST(SlotPaints, SlotsFollowTheEnabledColoursAndPickLikeThem) {
  EffectSetup s(15);
  s.Set("FillEnable2", 0).Set("FillEnable4", 0).SetFill(3, "gradient:linear:#FF0000:#0000FF");
  const int colour_ids[5] = {PageControlId(15, 11), PageControlId(15, 12), PageControlId(15, 13),
                             PageControlId(15, 14), PageControlId(15, 15)};
  const int enable_ids[4] = {PageControlId(15, 22), PageControlId(15, 23), PageControlId(15, 24),
                             PageControlId(15, 25)};
  auto reader = s.Reader();
  SlotPaints paints = SlotPaints::Collect(reader, colour_ids, enable_ids);
  const std::vector<Colour> colours = CollectColours(reader, colour_ids, enable_ids);
  ASSERT_EQ(paints.count(), 3);
  ColourPick by_slot(paints.Indices()), by_colour(colours);
  Random a, b;
  a.Seed(321), b.Seed(321);
  SlotPaints::Handle handle;
  for (int i = 0; i < 50; ++i) {
    const auto slot = static_cast<int32_t>(by_slot.Pick(a));
    ASSERT_TRUE(paints.Prepare(slot, 9, 9, &handle));
    EXPECT_EQ(handle.colour, by_colour.Pick(b)) << i;
    EXPECT_EQ(handle.image >= 0, slot == 1) << i;  // Color 3, the gradient
  }
  // The gradient was rendered once at 9 x 9; a new size renders it again.
  EXPECT_EQ(paints.rendered(), 1);
  ASSERT_TRUE(paints.Prepare(1, 9, 4, &handle));
  EXPECT_EQ(paints.rendered(), 2);
  EXPECT_EQ(paints.Picture(handle)->width(), 9);
  EXPECT_EQ(paints.Picture(handle)->height(), 4);
}

}  // namespace
}  // namespace tess
