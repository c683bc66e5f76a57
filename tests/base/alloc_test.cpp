// Soft-failing allocation: zeroed blocks, overflow refused, failures forced
// where a test asks, and per-thread byte accounting.
#include <gtest/gtest.h>

#include "base/alloc.h"

#include <cstdint>
#include <thread>

namespace tess {
namespace {

TEST(Alloc, ZeroedOverflowCheckedAndFailingWhereAsked) {
  Buffer<uint32_t> b = AllocBuffer<uint32_t>(1000);
  ASSERT_TRUE(b);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(b[i], 0u);
  EXPECT_EQ(AllocZeroed(SIZE_MAX / 2, 4), nullptr);
  {
    AllocFailureScope scope(1);
    EXPECT_TRUE(AllocBuffer<uint8_t>(8));
    EXPECT_FALSE(AllocBuffer<uint8_t>(8));
    EXPECT_TRUE(AllocBuffer<uint8_t>(8));
    EXPECT_EQ(scope.Count(), 3);
  }
  {
    AllocFailureScope sticky(0, true);
    EXPECT_FALSE(AllocBuffer<uint8_t>(1));
    EXPECT_FALSE(AllocBuffer<uint8_t>(1));
  }
  EXPECT_TRUE(AllocBuffer<uint8_t>(1));
}

TEST(AllocStats, CountsLiveBytesAndThePeakButNotFailures) {
  const int64_t base = AllocCurrentBytes();
  ResetAllocPeak();
  EXPECT_EQ(AllocPeakBytes(), base);
  {
    Buffer<uint32_t> a = AllocBuffer<uint32_t>(100);
    EXPECT_EQ(AllocBlockSize(a.get()), 400u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(a.get()) % 16, 0u);
    Buffer<uint8_t> b = AllocBuffer<uint8_t>(0);  // an empty request still takes one byte
    EXPECT_EQ(AllocCurrentBytes(), base + 401);
    a.reset();
    EXPECT_EQ(AllocCurrentBytes(), base + 1);
    Buffer<uint8_t> c = AllocBuffer<uint8_t>(50);
    AllocFailureScope scope(0);
    EXPECT_FALSE(AllocBuffer<uint8_t>(1000));
  }
  EXPECT_EQ(AllocZeroed(1, SIZE_MAX - 4), nullptr);  // no room for the size header
  EXPECT_EQ(AllocCurrentBytes(), base);
  EXPECT_EQ(AllocPeakBytes(), base + 401);
  ResetAllocPeak();
  EXPECT_EQ(AllocPeakBytes(), base);
  EXPECT_EQ(AllocBlockSize(nullptr), 0u);
}

// The ceiling is on live bytes: freeing makes room again, scopes nest, and
// only the ceiling's own refusals count as its refusals.
TEST(AllocLimit, RefusesWhatWouldPassTheCeilingAndNoMore) {
  const int64_t base = AllocCurrentBytes();
  AllocLimitScope outer(base + 1000);
  Buffer<uint8_t> a = AllocBuffer<uint8_t>(600);
  ASSERT_TRUE(a);
  EXPECT_TRUE(AllocBuffer<uint8_t>(400));  // exactly at the ceiling
  EXPECT_FALSE(outer.refused());
  {
    AllocFailureScope fail(0);
    EXPECT_FALSE(AllocBuffer<uint8_t>(1));
  }
  EXPECT_FALSE(outer.refused());
  EXPECT_FALSE(AllocBuffer<uint8_t>(401));
  EXPECT_TRUE(outer.refused());
  {
    AllocLimitScope inner(base + 700);
    EXPECT_FALSE(AllocBuffer<uint8_t>(101));
    EXPECT_TRUE(inner.refused());
  }
  EXPECT_TRUE(AllocBuffer<uint8_t>(101));  // the outer ceiling is back
  a.reset();
  EXPECT_TRUE(AllocBuffer<uint8_t>(1000));
}

TEST(AllocStats, EachThreadKeepsItsOwnCounts) {
  const int64_t base = AllocCurrentBytes();
  Buffer<uint8_t> mine = AllocBuffer<uint8_t>(64);
  int64_t other_current = -1, other_peak = -1;
  std::thread([&] {
    Buffer<uint8_t> theirs = AllocBuffer<uint8_t>(1000);
    theirs.reset();
    other_current = AllocCurrentBytes();
    other_peak = AllocPeakBytes();
  }).join();
  EXPECT_EQ(other_current, 0);
  EXPECT_EQ(other_peak, 1000);
  EXPECT_EQ(AllocCurrentBytes(), base + 64);
}

}  // namespace
}  // namespace tess
