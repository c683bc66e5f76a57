// Page controls against the configuration keys, and a style's parameters
// read from the settings the way its page would show them.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>

#include "dialog/settings_reader.h"

#include "controls/control_kinds.h"
#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/style_table.h"

namespace tess {
namespace {

// Every stored style setting must reach its effect through exactly one page
// control, of a kind that stores the right sort of value, and every key a
// page names must exist; the configuration's built-in default must also be a
// value the control can show.
TEST(StylePagesAndKeys, EveryStyleKeyIsBoundByExactlyOneControl) {
  std::map<std::string, int> bound;
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page)
      if (c.key) ++bound[SettingKey(style.number, c)];

  for (const ConfigKey& key : ConfigKeys()) {
    std::string_view name = key.name;
    if (!name.starts_with("Style")) continue;
    SCOPED_TRACE(std::string(name));
    EXPECT_EQ(bound[std::string(name)], 1);
    int number = std::stoi(std::string(name.substr(5, 3)));
    const PageControl* c = FindPageControlByKey(*StyleByNumber(number), name.substr(8));
    if (!c) continue;
    EXPECT_EQ(key.kind == kKindSwitch, c->kind == ControlKind::kCheck);
    const SpinRange& r = c->range;
    EXPECT_TRUE(!KindRules(*c).has_range || (r.min <= key.default_number && key.default_number <= r.max));
    EXPECT_TRUE(c->kind != ControlKind::kDropDown ||
                (key.default_number >= 0 && static_cast<size_t>(key.default_number) < c->items.size()));
  }
  for (const auto& [name, count] : bound) EXPECT_GE(FindConfigKey(name), 0) << name;
}

TEST(SettingsReader, SpinsClampToThePageRangeAndOtherKindsReadAsStored) {
  Settings settings;
  const StyleEntry& gridlock = *FindStyle("Gridlock");
  SettingsReader reader{settings, gridlock};
  const int width = PageControlId(gridlock.number, page::kWidthControl);
  EXPECT_EQ(reader.Spin(width), 128);
  settings.SetStyleNumber(16, "Width", 5000);
  EXPECT_EQ(reader.Spin(width), 1024);
  settings.SetStyleNumber(16, "Width", 20);  // below Gridlock's 48
  EXPECT_EQ(reader.Spin(width), 48);
  // The page reads an edit with a non-negative minimum as unsigned, so a
  // negative stored value is a huge one.
  settings.SetStyleNumber(16, "Width", -1);
  EXPECT_EQ(reader.Spin(width), 1024);

  const PageControl* up = FindPageControlByKey(gridlock, "DirUp");
  settings.SetStyleNumber(16, "DirUp", 0);
  EXPECT_FALSE(reader.Checked(up->id));
  // The top byte of a stored colour belongs to the fill description.
  settings.SetStyleNumber(16, "FillColor3", static_cast<int32_t>(0x7F123456));
  EXPECT_EQ(reader.ColourValue(PageControlId(16, page::ColourControl(3))), 0x123456u);
  // Ids of other pages are unknown to this reader.
  int bubbles_frames = PageControlId(0, page::kFramesControl);
  EXPECT_EQ(reader.Spin(bubbles_frames), 0);
  EXPECT_EQ(reader.ColourValue(bubbles_frames), 0u);
  EXPECT_FALSE(reader.Checked(bubbles_frames));
  EXPECT_EQ(reader.Selection(bubbles_frames), 0);

  const StyleEntry& shaped = *FindStyle("Shaped Fountain");
  SettingsReader shaped_reader(settings, shaped);
  settings.SetStyleNumber(6, "Shape", 7);  // the effect draws squares for it
  EXPECT_EQ(shaped_reader.Selection(FindPageControlByKey(shaped, "Shape")->id), 7);
  // A picker's value is kept as it is: the effect reads "not 0" as one way.
  settings.SetStyleNumber(6, "Scroll", 5);
  EXPECT_EQ(shaped_reader.Picker(FindPageControlByKey(shaped, "Scroll")->id), 5);
}

// A page control whose key the settings do not hold (and a keyless one) reads
// as a fresh page shows it.
TEST(SettingsReader, ControlsWithoutAStoredValueUseTheSpinDefault) {
  static constexpr PageControl kPage[] = {
      page::Spin(PageControlId(4, 40), page::kLeft, 0, "Extra:", "NotAKey", {5, 50, 17}),
      page::Spin(PageControlId(4, 41), page::kLeft, 1, "Loose:", nullptr, {-9, 9, -3}),
  };
  StyleEntry entry{"Test", 4, kPage, nullptr, &page::NoBackground};
  Settings settings;
  SettingsReader reader(settings, entry);
  EXPECT_EQ(reader.Spin(kPage[0].id), 17);
  EXPECT_EQ(reader.Spin(kPage[1].id), -3);
  EXPECT_EQ(ListStyleSettings(settings, entry).size(), 1u);
}

}  // namespace
}  // namespace tess
