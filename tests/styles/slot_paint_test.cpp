// Slot paints: the slots follow the enabled colours, flat colours stay flat,
// and a fill's picture is rendered once per sprite size.
#include "styles/slot_paint.h"

#include <gtest/gtest.h>

#include "tests/styles/mask_effect_checks.h"

namespace tess {
namespace {

using testing::EffectSetup;

TEST(SlotPaints, SlotsFollowTheEnabledColoursAndRenderEachSizeOnce) {
  EffectSetup s(15);
  s.Set("FillEnable2", 0).Set("FillEnable4", 0).SetFill(3, "gradient:linear:#FF0000:#0000FF");
  const int colour_ids[5] = {PageControlId(15, 11), PageControlId(15, 12), PageControlId(15, 13),
                             PageControlId(15, 14), PageControlId(15, 15)};
  const int enable_ids[4] = {PageControlId(15, 22), PageControlId(15, 23), PageControlId(15, 24),
                             PageControlId(15, 25)};
  auto reader = s.Reader();
  SlotPaints paints = SlotPaints::Collect(reader, colour_ids, enable_ids);
  ASSERT_EQ(paints.count(), 3);  // colours 1, 3 and 5
  SlotPaints::Handle handle;
  for (int32_t slot = 0; slot < 3; ++slot) {
    ASSERT_TRUE(paints.Prepare(slot, 9, 9, &handle));
    EXPECT_EQ(handle.image >= 0, slot == 1) << slot;  // Color 3, the gradient
    if (slot != 1) {
      EXPECT_EQ(handle.colour, reader.ColourValue(colour_ids[slot == 0 ? 0 : 4]));
    }
  }
  EXPECT_EQ(paints.rendered(), 1);
  ASSERT_TRUE(paints.Prepare(1, 9, 9, &handle));
  EXPECT_EQ(paints.rendered(), 1);
  ASSERT_TRUE(paints.Prepare(1, 9, 4, &handle));
  EXPECT_EQ(paints.rendered(), 2);
  EXPECT_EQ(paints.Picture(handle)->width(), 9);
  EXPECT_EQ(paints.Picture(handle)->height(), 4);
}

}  // namespace
}  // namespace tess
