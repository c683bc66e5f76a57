// The kinds' rules: what a value text and a stored setting mean for each
// kind, and the command line's texts, which must read back what they print
// for every control of every page.
#include "controls/control_kinds.h"

#include <gtest/gtest.h>

#include <tuple>

#include "styles/style_table.h"

namespace tess {
namespace {

PageControl Declared(ControlKind kind, SpinRange range = {}, ItemList items = {}) {
  return PageControl{3001, kind, "X:", "X", range, items, 0, 0, 0, 0};
}

constexpr std::string_view kItems[] = {"Circle", "Square"};

// Typed values are clamped, never refused; colours read as an unsigned
// conversion; a list without the index has no selection.
TEST(ControlKinds, ValueTextsAreClampedNeverRefused) {
  PageControl delay = Declared(ControlKind::kSpin, {1, 250, 40});
  PageControl offset = Declared(ControlKind::kSpin, {-10, 10, 0});
  const std::tuple<const PageControl*, const char*, int32_t> cases[] = {
      {&delay, "", 1},      {&delay, "12abc", 12},  {&delay, "99999999999999", 250},
      {&offset, "-20", -10}, {&offset, "-3", -3},
  };
  for (auto [control, text, value] : cases) EXPECT_EQ(ValueOfText(*control, text), value) << text;
  PageControl colour = Declared(ControlKind::kColourButton);
  EXPECT_EQ(ValueOfText(colour, "4294967296"), -1);  // too large: the largest value
  EXPECT_EQ(ValueOfText(colour, "-2"), -2);          // negative numbers wrap
  EXPECT_EQ(ValueOfText(colour, "12 red"), 12);
  EXPECT_EQ(ValueOfText(Declared(ControlKind::kCheck), "7"), 1);
  PageControl list = Declared(ControlKind::kDropDown, {}, kItems);
  EXPECT_EQ(ValueOfText(list, "1"), 1);
  EXPECT_EQ(ValueOfText(list, "2"), -1);
}

// A stored number is unsigned unless the range reaches below zero, so a
// stored -1 shows as the top of an unsigned range.
TEST(ControlKinds, StoredValuesShowAsTheirKindShowsThem) {
  EXPECT_EQ(ShownValue(Declared(ControlKind::kSpin, {0, 99, 25}), -1), 99);
  EXPECT_EQ(ShownValue(Declared(ControlKind::kSpin, {-50, 50, 0}), -1), -1);
  EXPECT_EQ(ShownValue(Declared(ControlKind::kSpin, {-50, 50, 0}), -80), -50);
  EXPECT_EQ(ShownValue(Declared(ControlKind::kDropDown, {}, kItems), 5), -1);
  PageControl colour = Declared(ControlKind::kFillButton);
  EXPECT_EQ(LineText(colour, ShownValue(colour, -1)), "4294967295");
  // An effect sees the colour without the fill description's top byte, and
  // the range's default for a key the settings lack.
  EXPECT_EQ(KindRules(colour).effect_value(colour, 0x12345678), 0x345678);
  PageControl frames = Declared(ControlKind::kSpin, {2, 32760, 64});
  EXPECT_EQ(KindRules(frames).effect_value(frames, std::nullopt), 64);
}

// `tessarine list` prints values that `--set` takes back unchanged, for the
// default, both ends of every range and every item of every page.
TEST(ControlKinds, EveryListedValueParsesBackToItself) {
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page) {
      const ControlKindRules& rules = KindRules(c);
      if (!c.key || rules.storage == ControlStorage::kNone) continue;
      std::vector<int32_t> values = {c.range.def};
      if (rules.has_range) values.insert(values.end(), {c.range.min, c.range.max});
      for (size_t i = 0; i < c.items.size(); ++i) values.push_back(static_cast<int32_t>(i));
      if (rules.window == PageWindowRole::kColourButton) values = {0, 0x00A0B0C0};
      if (rules.window == PageWindowRole::kCheckBox) values = {0, 1};
      for (int32_t v : values) {
        std::string expected;
        std::string text = rules.format(c, v);
        EXPECT_EQ(rules.parse(c, text, 0, &expected), v) << SettingKey(style.number, c) << " " << text;
      }
    }
}

TEST(ControlKinds, CommandLineTextsRefuseWhatTheControlCannotHold) {
  std::string expected;
  PageControl size = Declared(ControlKind::kSpin, {10, 64, 18});
  EXPECT_FALSE(KindRules(size).parse(size, "65", 0, &expected));
  EXPECT_EQ(expected, "a whole number from 10 to 64");
  PageControl list = Declared(ControlKind::kDropDown, {}, kItems);
  EXPECT_EQ(KindRules(list).parse(list, "square", 0, &expected), 1);
  EXPECT_FALSE(KindRules(list).parse(list, "Oval", 0, &expected));
  EXPECT_EQ(expected, "one of 0 (Circle), 1 (Square)");
  // "#RRGGBB" keeps the stored top byte, which belongs to the fill.
  PageControl fill = Declared(ControlKind::kFillButton);
  EXPECT_EQ(KindRules(fill).parse(fill, "#102030", 0x7F000000, &expected), 0x7F302010);
  EXPECT_FALSE(KindRules(fill).parse(fill, "#10203", 0, &expected));
  EXPECT_EQ(RangeText(size), "10..64");
  EXPECT_EQ(RangeText(list), "0..1");
  EXPECT_EQ(SpinText({1, 25, 4}), "1,25,4");
  // Blanks before a number are skipped, not before a comma.
  EXPECT_EQ(ParseSpinText("-5, 5 ,0"), (SpinRange{-5, 5, 0}));
  EXPECT_EQ(ParseSpinText("garbage"), (SpinRange{0, 100, 0}));
}

}  // namespace
}  // namespace tess
