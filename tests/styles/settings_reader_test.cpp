#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/settings_reader.h"
#include "styles/style_table.h"

namespace tess {
namespace {

int ItemCount(std::string_view items) {
  int n = 1;
  for (char ch : items) n += ch == ';';
  return n;
}

// Every stored style setting must reach its effect through exactly one page
// control, of a kind that stores the right sort of value, and every key a
// page names must exist; the configuration's built-in default must also be a
// value the control can show.
TEST(StylePagesAndKeys, EveryStyleKeyIsBoundByExactlyOneControl) {
  std::map<std::string, int> bound;
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page)
      if (c.key) ++bound[SettingKey(style.number, c)];

  std::set<int> pending;
  for (const StyleEntry& style : StyleTable())
    if (style.page.empty()) pending.insert(style.number);

  for (const ConfigKey& key : ConfigKeys()) {
    std::string_view name = key.name;
    if (!name.starts_with("Style")) continue;
    int number = std::stoi(std::string(name.substr(5, 3)));
    if (pending.count(number)) continue;
    SCOPED_TRACE(std::string(name));
    EXPECT_EQ(bound[std::string(name)], 1);
    const PageControl* c = FindPageControlByKey(*StyleByNumber(number), name.substr(8));
    if (!c) continue;
    EXPECT_EQ(key.kind == kKindSwitch, c->kind == ControlKind::kCheck);
    SpinRange r = ParseSpinText(c->spin ? c->spin : "");
    if (HasSpinRange(*c)) {
      EXPECT_GE(key.default_number, r.min);
      EXPECT_LE(key.default_number, r.max);
    }
    if (c->kind == ControlKind::kDropDown) {
      EXPECT_GE(key.default_number, 0);
      EXPECT_LT(key.default_number, ItemCount(c->spin));
    }
  }
  for (const auto& [name, count] : bound) EXPECT_GE(FindConfigKey(name), 0) << name;
}

class SettingsReaderTest : public ::testing::Test {
 protected:
  Settings settings;
  const StyleEntry& gridlock = *FindStyle("Gridlock");
  SettingsReader reader{settings, gridlock};
  int Id(int n) const { return PageControlId(gridlock.number, n); }
};

TEST_F(SettingsReaderTest, SpinsAreClampedToTheirPageRange) {
  EXPECT_EQ(reader.Spin(Id(page::kWidthControl)), 128);
  settings.SetStyleNumber(16, "Width", 5000);
  EXPECT_EQ(reader.Spin(Id(page::kWidthControl)), 1024);
  settings.SetStyleNumber(16, "Width", 20);  // below Gridlock's 48
  EXPECT_EQ(reader.Spin(Id(page::kWidthControl)), 48);
  // The page reads an edit with a non-negative minimum as unsigned, so a
  // negative stored value is a huge one.
  settings.SetStyleNumber(16, "Width", -1);
  EXPECT_EQ(reader.Spin(Id(page::kWidthControl)), 1024);
  settings.SetStyleNumber(16, "Frames", 1);
  EXPECT_EQ(reader.Spin(Id(page::kFramesControl)), 2);
  settings.SetStyleNumber(16, "Frames", 77);
  EXPECT_EQ(reader.Spin(Id(page::kFramesControl)), 77);
}

TEST_F(SettingsReaderTest, ChecksColoursAndUnknownIds) {
  const PageControl* up = FindPageControlByKey(gridlock, "DirUp");
  ASSERT_NE(up, nullptr);
  EXPECT_TRUE(reader.Checked(up->id));
  settings.SetStyleNumber(16, "DirUp", 0);
  EXPECT_FALSE(reader.Checked(up->id));

  EXPECT_EQ(gridlock.background(reader, 0), 0x002051u);
  // The top byte of a stored colour belongs to the fill description.
  settings.SetStyleNumber(16, "FillColor3", static_cast<int32_t>(0x7F123456));
  EXPECT_EQ(reader.ColourValue(Id(page::ColourControl(3))), 0x123456u);

  // Ids of other pages are unknown to this reader.
  int bubbles_frames = PageControlId(0, page::kFramesControl);
  EXPECT_EQ(reader.Spin(bubbles_frames), 0);
  EXPECT_FALSE(reader.Checked(bubbles_frames));
  EXPECT_EQ(reader.ColourValue(bubbles_frames), 0u);
  EXPECT_EQ(reader.Selection(bubbles_frames), 0);
}

TEST(SettingsReader, SelectionsAreReadAsStoredAndPickersClamp) {
  Settings settings;
  const StyleEntry& shaped = *FindStyle("Shaped Fountain");
  SettingsReader reader(settings, shaped);
  const PageControl* shape = FindPageControlByKey(shaped, "Shape");
  const PageControl* scroll = FindPageControlByKey(shaped, "Scroll");
  ASSERT_TRUE(shape && scroll);
  settings.SetStyleNumber(6, "Shape", 7);  // the effect draws squares for it
  EXPECT_EQ(reader.Selection(shape->id), 7);
  settings.SetStyleNumber(6, "Scroll", 5);
  EXPECT_EQ(reader.Selection(scroll->id), 5);
  EXPECT_EQ(reader.Spin(scroll->id), 1);  // the two-way picker's range
}

// A page control whose key the settings do not hold (and a keyless one) reads
// as a fresh page shows it.
TEST(SettingsReader, ControlsWithoutAStoredValueUseTheSpinDefault) {
  static constexpr PageControl kPage[] = {
      page::Spin(PageControlId(4, 40), page::kLeft, 0, "Extra:", "NotAKey", "5,50,17"),
      page::Spin(PageControlId(4, 41), page::kLeft, 1, "Loose:", nullptr, "-9,9,-3"),
  };
  StyleEntry entry{"Test", 4, kPage, nullptr, &page::NoBackground};
  Settings settings;
  SettingsReader reader(settings, entry);
  EXPECT_EQ(reader.Spin(kPage[0].id), 17);
  EXPECT_EQ(reader.Spin(kPage[1].id), -3);
  EXPECT_FALSE(reader.Checked(kPage[0].id));
  EXPECT_EQ(ListStyleSettings(settings, entry).size(), 1u);
}

TEST(SettingsReader, ListsAStylesSettingsWithRangesDefaultsAndValues) {
  Settings settings;
  const StyleEntry& noise = *FindStyle("White Noise");
  settings.SetStyleNumber(9, "Size", 12);
  std::vector<StyleSetting> list = ListStyleSettings(settings, noise);
  ASSERT_EQ(list.size(), 9u);  // every key of style 009
  std::map<std::string, StyleSetting> by_key;
  for (const StyleSetting& s : list) by_key[s.key] = s;

  const StyleSetting& size = by_key.at("Style009Size");
  EXPECT_STREQ(size.control->label, "Pixel size:");
  EXPECT_TRUE(size.has_range);
  EXPECT_EQ(size.range.min, 1);
  EXPECT_EQ(size.range.max, 8);
  EXPECT_EQ(size.range.def, 2);
  EXPECT_EQ(size.initial, 3);
  EXPECT_EQ(size.stored, 12);
  EXPECT_EQ(size.value, 8);

  const StyleSetting& light = by_key.at("Style009LightFill");
  EXPECT_FALSE(light.has_range);
  EXPECT_EQ(light.value, 0xC4B6AA);
  EXPECT_EQ(by_key.at("Style009RandomDelay").value, 1);
}

}  // namespace
}  // namespace tess
