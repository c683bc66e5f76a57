#include <gtest/gtest.h>

#include "output/frame_list.h"

namespace tess {
namespace {

TEST(FrameList, AppendGetAndSetLastDelay) {
  FrameList list;
  EXPECT_FALSE(FrameListSetLastDelay(list, 3));
  EXPECT_EQ(FrameListGet(list, 0), nullptr);
  ASSERT_TRUE(FrameListAddImage(list, ImageCreate(2, 2, nullptr, 24), 7));
  ASSERT_TRUE(FrameListAddImage(list, ImageCreate(3, 3, nullptr, 24), 8));
  EXPECT_EQ(list.count(), 2);
  FrameRecord* first = FrameListGet(list, 0);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->delay, 7);
  EXPECT_EQ(first->transparent, -1);
  EXPECT_FALSE(first->mask);
  EXPECT_TRUE(FrameListSetLastDelay(list, 12));
  EXPECT_EQ(FrameListGet(list, 1)->delay, 12);
  EXPECT_EQ(FrameListGet(list, 1)->image.width(), 3);
  EXPECT_EQ(FrameListGet(list, 2), nullptr);
  EXPECT_EQ(FrameListGet(list, -1), nullptr);
}

TEST(FrameList, FreeReleasesEverythingAndEmptyFreeIsHarmless) {
  FrameList list;
  FrameListFree(list);
  EXPECT_EQ(list.count(), 0);
  FrameRecord rec;
  rec.image = ImageCreate(4, 4, nullptr, 24);
  rec.mask = ImageCreate(4, 4, nullptr, 1);
  ASSERT_TRUE(FrameListAppend(list, std::move(rec)));
  ASSERT_TRUE(FrameListAddImage(list, ImageCreate(4, 4, nullptr, 24), 1));
  FrameListFree(list);  // ASan reports any block that is not released
  EXPECT_TRUE(list.empty());
}

}  // namespace
}  // namespace tess
