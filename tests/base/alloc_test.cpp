#include <gtest/gtest.h>

#include "base/alloc.h"

namespace tess {
namespace {

TEST(Alloc, ZeroedAndOverflowChecked) {
  Buffer<uint32_t> b = AllocBuffer<uint32_t>(1000);
  ASSERT_TRUE(b);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(b[i], 0u);
  EXPECT_EQ(AllocZeroed(SIZE_MAX / 2, 4), nullptr);
}

TEST(Alloc, FailureScopeFailsTheChosenAllocationOnly) {
  AllocFailureScope scope(1);
  Buffer<uint8_t> first = AllocBuffer<uint8_t>(8);
  Buffer<uint8_t> second = AllocBuffer<uint8_t>(8);
  Buffer<uint8_t> third = AllocBuffer<uint8_t>(8);
  EXPECT_TRUE(first);
  EXPECT_FALSE(second);
  EXPECT_TRUE(third);
  EXPECT_EQ(scope.Count(), 3);
}

TEST(Alloc, StickyScopeFailsEverythingAfter) {
  {
    AllocFailureScope scope(0, true);
    EXPECT_FALSE(AllocBuffer<uint8_t>(1));
    EXPECT_FALSE(AllocBuffer<uint8_t>(1));
  }
  EXPECT_TRUE(AllocBuffer<uint8_t>(1));
}

}  // namespace
}  // namespace tess
