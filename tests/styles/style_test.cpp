#include <gtest/gtest.h>

#include <map>

#include "styles/style.h"

namespace tess {
namespace {

TEST(SpinText, ParsesAndFallsBack) {
  SpinRange r = ParseSpinText("2,32760,64");
  EXPECT_EQ(r.min, 2);
  EXPECT_EQ(r.max, 32760);
  EXPECT_EQ(r.def, 64);
  r = ParseSpinText("-5, 5 ,0");  // blanks before a number are skipped, not before a comma
  EXPECT_EQ(r.min, -5);
  EXPECT_EQ(r.max, 5);
  r = ParseSpinText("garbage");
  EXPECT_EQ(r.min, 0);
  EXPECT_EQ(r.max, 100);
  EXPECT_EQ(ClampSpin(ParseSpinText("16,1024,128"), 5000), 1024);
  EXPECT_EQ(ClampSpin(ParseSpinText("2,32760,64"), 1), 2);
  EXPECT_EQ(ClampSpin(ParseSpinText("2,32760,64"), 77), 77);
}

TEST(RandomGenerator, MainAndShortDrawsFollowTheirRecurrences) {
  Random r;
  r.Seed(1);
  // S = 1 * 0x000015A400004E35 + 1 = 0x000015A400004E36: high half 0x15A4.
  EXPECT_EQ(r.Next(), 0x15A4);
  EXPECT_EQ(r.state(), 0x000015A400004E36ull);
  r.Seed(1);
  // L = 0x015A4E35 + 1 = 0x015A4E36: bits 16..30 are 0x015A; the high half stays 0.
  EXPECT_EQ(r.NextShort(), 0x015A);
  EXPECT_EQ(r.state(), 0x015A4E36ull);
  // The top bit of the result is always cleared.
  r.Seed(0xFFFFFFFFu);
  for (int i = 0; i < 1000; ++i) ASSERT_GE(r.Next(), 0);
}

TEST(RandomGenerator, ShortDrawKeepsTheHighHalf) {
  Random r;
  r.Seed(7);
  r.Next();
  uint64_t high = r.state() >> 32;
  r.NextShort();
  EXPECT_EQ(r.state() >> 32, high);
}

TEST(RandomGenerator, ZeroRangeConsumesNothing) {
  Random a, b;
  a.Seed(10632);
  b.Seed(10632);
  EXPECT_EQ(a.Below(0), 0);
  EXPECT_EQ(a.BelowShort(0), 0);
  EXPECT_EQ(a.state(), b.state());
  EXPECT_EQ(a.Below(10), b.Next() % 10);
}

class MapReader final : public ParamReader {
 public:
  std::map<int, int32_t> values;
  int32_t Spin(int id) const override { return Get(id); }
  bool Checked(int id) const override { return Get(id) != 0; }
  Colour ColourValue(int id) const override { return static_cast<Colour>(Get(id)); }
  int32_t Selection(int id) const override { return Get(id); }

 private:
  int32_t Get(int id) const {
    auto it = values.find(id);
    return it == values.end() ? 0 : it->second;
  }
};

TEST(ColourPick, SingleColourDrawsNothingAndPairsAlternate) {
  Random r;
  r.Seed(5);
  uint64_t before = r.state();
  ColourPick one({0x123456});
  EXPECT_EQ(one.Pick(r), 0x123456u);
  EXPECT_EQ(r.state(), before);

  ColourPick two({1, 2});
  // The first pick differs from the initial previous index 0, then they alternate.
  Colour last = two.Pick(r);
  EXPECT_EQ(last, 2u);
  for (int i = 0; i < 50; ++i) {
    Colour c = two.Pick(r);
    EXPECT_NE(c, last);
    last = c;
  }
}

TEST(ColourPick, CollectsEnabledColoursInOrder) {
  MapReader reader;
  const int colours[5] = {1, 2, 3, 4, 5};
  const int enables[4] = {12, 13, 14, 15};
  for (int i = 1; i <= 5; ++i) reader.values[i] = i * 100;
  reader.values[13] = 1;
  reader.values[15] = 1;
  EXPECT_EQ(CollectColours(reader, colours, enables), (std::vector<Colour>{100, 300, 500}));
}

}  // namespace
}  // namespace tess
