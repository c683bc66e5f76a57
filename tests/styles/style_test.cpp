// The style framework's shared parts: the generator's two recurrences and
// colour picking.
#include <gtest/gtest.h>

#include "styles/style.h"
#include "tests/support/map_reader.h"

namespace tess {
namespace {

// The sequence is part of the product: a seed must give the same picture.
TEST(RandomGenerator, FollowsItsRecurrences) {
  Random r;
  r.Seed(1);
  // S = 1 * 0x000015A400004E35 + 1: high half 0x15A4.
  EXPECT_EQ(r.Next(), 0x15A4);
  EXPECT_EQ(r.state(), 0x000015A400004E36ull);
  // The short draw works on the low half only and keeps the high half.
  uint64_t high = r.state() >> 32;
  r.NextShort();
  EXPECT_EQ(r.state() >> 32, high);
  r.Seed(1);
  EXPECT_EQ(r.NextShort(), 0x015A);  // L = 0x015A4E36: bits 16..30
  r.Seed(0xFFFFFFFFu);
  for (int i = 0; i < 1000; ++i) ASSERT_GE(r.Next(), 0);  // the top bit is always cleared
  // A zero range draws nothing.
  Random a, b;
  a.Seed(10632);
  b.Seed(10632);
  EXPECT_EQ(a.Below(0) + a.BelowShort(0), 0);
  EXPECT_EQ(a.state(), b.state());
}

TEST(ColourPick, OneColourDrawsNothingPairsAlternateAndOnlyEnabledColoursCount) {
  Random r;
  r.Seed(5);
  uint64_t before = r.state();
  EXPECT_EQ(ColourPick({0x123456}).Pick(r), 0x123456u);
  EXPECT_EQ(r.state(), before);
  ColourPick two({1, 2});
  Colour last = two.Pick(r);
  EXPECT_EQ(last, 2u);  // differs from the initial previous index 0
  for (int i = 0; i < 50; ++i) {
    Colour c = two.Pick(r);
    EXPECT_NE(c, last);
    last = c;
  }
  testing::MapReader reader;
  for (int i = 1; i <= 5; ++i) reader.values[i] = i * 100;
  reader.values[13] = reader.values[15] = 1;
  EXPECT_EQ(CollectColours(reader, {1, 2, 3, 4, 5}, {12, 13, 14, 15}), (std::vector<Colour>{100, 300, 500}));
}

}  // namespace
}  // namespace tess
