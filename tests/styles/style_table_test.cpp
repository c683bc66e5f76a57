#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/style_table.h"

namespace tess {
namespace {

using page::kPageHeight;
using page::kPageWidth;

// The list index is what MainEffect stores, and the number names the keys:
// neither may move.
TEST(StyleTable, OrderNamesAndNumbersArePinned) {
  const std::pair<const char*, int> expected[kStyleCount] = {
      {"Atmosphere", 11}, {"Bubbles", 0},          {"Carpet", 13},
      {"Cubist", 2},      {"Fountain", 4},         {"Gridlock", 16},
      {"Gumdrops", 7},    {"Hyperspace", 1},       {"Iris", 3},
      {"Machine", 12},    {"Mural", 8},            {"Neural Network", 18},
      {"Particles", 17},  {"Phasers on Stun", 10}, {"Skip Intro", 14},
      {"Shaped Fountain", 6}, {"Snow", 15},        {"Solid", 5},
      {"Wavelet", 19},    {"White Noise", 9},
  };
  std::span<const StyleEntry> table = StyleTable();
  ASSERT_EQ(table.size(), size_t{kStyleCount});
  static_assert(kStyleCount == kStyleNumberCount, "one style table entry per StyleNNN key group");
  for (int i = 0; i < kStyleCount; ++i) {
    EXPECT_STREQ(table[i].name, expected[i].first) << "index " << i;
    EXPECT_EQ(table[i].number, expected[i].second) << table[i].name;
    EXPECT_EQ(StyleListIndex(table[i]), i);
    EXPECT_EQ(StyleByNumber(table[i].number), &table[i]);
  }
  EXPECT_EQ(StyleByNumber(20), nullptr);
}

TEST(StyleTable, FindsStylesAndControlsByName) {
  EXPECT_EQ(FindStyle("neural network"), &StyleTable()[11]);
  EXPECT_EQ(FindStyle("SKIP INTRO"), &StyleTable()[14]);
  EXPECT_EQ(FindStyle("Skip"), nullptr);
  EXPECT_EQ(FindStyle(""), nullptr);

  const StyleEntry& gridlock = *FindStyle("Gridlock");
  const PageControl* glare = FindPageControlByKey(gridlock, "glare");
  ASSERT_NE(glare, nullptr);
  EXPECT_STREQ(glare->key, "Glare");
  EXPECT_EQ(FindPageControlByKey(gridlock, "Glar"), nullptr);
  EXPECT_EQ(SettingKey(gridlock.number, *glare), "Style016Glare");
  EXPECT_EQ(SettingKey(0, "Frames"), "Style000Frames");

  PageControlRef ref = FindPageControl(glare->id);
  EXPECT_EQ(ref.style, &gridlock);
  EXPECT_EQ(ref.control, glare);
  ref = FindPageControl(306);
  ASSERT_NE(ref.style, nullptr);
  EXPECT_STREQ(ref.style->name, "Shaped Fountain");
  EXPECT_EQ(SettingKey(ref.style->number, *ref.control), "");
  EXPECT_EQ(FindPageControl(2999).control, nullptr);
}

bool IsBuiltInFountain(int id) {
  for (int fixed : page::kBuiltInFountainIds)
    if (id == fixed) return true;
  return false;
}

// Page controls become controls of the main dialog, so one id on two pages
// would bind two settings to one window.
TEST(StylePages, IdsLieInTheirStyleRangeAndAreUniqueAcrossTheTable) {
  std::map<int, std::string> owner;
  for (const StyleEntry& style : StyleTable()) {
    for (const PageControl& c : style.page) {
      if (IsBuiltInFountain(c.id)) {
        EXPECT_EQ(c.kind, ControlKind::kFountain) << style.name << " " << c.id;
      } else {
        EXPECT_GE(c.id, PageControlId(style.number, 1)) << style.name << " " << c.label;
        EXPECT_LE(c.id, PageControlId(style.number, 99)) << style.name << " " << c.label;
      }
      auto [it, fresh] = owner.emplace(c.id, style.name);
      EXPECT_TRUE(fresh) << "id " << c.id << " on " << style.name << " and " << it->second;
    }
  }
  // A first run loads each built-in fountain into the button with its number.
  for (int fixed : page::kBuiltInFountainIds) EXPECT_EQ(owner.count(fixed), 1u) << fixed;
}

// Until their effects land, only Bubbles and Phasers on Stun may lack a page.
TEST(StylePages, OnlyTheTwoPendingEffectsHaveEmptyPages) {
  for (const StyleEntry& style : StyleTable())
    if (style.page.empty()) {
      EXPECT_TRUE(style.number == 0 || style.number == 10) << style.name;
    }
}

// Strict form of the spin text: the page's own reading falls back to 0..100
// on a malformed text, which would hide a typo.
bool ParsesStrictly(const char* text, SpinRange& out) {
  int consumed = 0;
  if (!text || std::sscanf(text, "%d,%d,%d%n", &out.min, &out.max, &out.def, &consumed) != 3)
    return false;
  return text[consumed] == '\0';
}

TEST(StylePages, SpinTextsParseWithTheirDefaultInRange) {
  for (const StyleEntry& style : StyleTable()) {
    for (const PageControl& c : style.page) {
      SCOPED_TRACE(std::string(style.name) + " " + c.label);
      if (c.kind == ControlKind::kSpin || c.kind == ControlKind::kPicker) {
        SpinRange r;
        ASSERT_TRUE(ParsesStrictly(c.spin, r)) << (c.spin ? c.spin : "(null)");
        EXPECT_LE(r.min, r.def);
        EXPECT_LE(r.def, r.max);
        if (c.kind == ControlKind::kPicker) {
          EXPECT_EQ(r.min, 0);
          EXPECT_TRUE(r.max == 3 || r.max == page::kTwoWayPickerMax);
        }
      } else if (c.kind == ControlKind::kDropDown) {
        ASSERT_NE(c.spin, nullptr);
        std::string_view items = c.spin;
        EXPECT_FALSE(items.empty() || items.front() == ';' || items.back() == ';' ||
                     items.find(";;") != std::string_view::npos)
            << items;
      }
    }
  }
}

// The numbers front ends and effects share for the common parameters.
TEST(StylePages, CommonParametersFollowTheNumberingRule) {
  const std::map<std::string_view, int> common = {
      {"Frames", page::kFramesControl},     {"Width", page::kWidthControl},
      {"Depth", page::kDepthControl},       {"Seed", page::kSeedControl},
      {"Background", page::kBackgroundControl}, {"Size", page::kSizeControl},
      {"Density", page::kDensityControl},   {"FillOpacity", page::kOpacityControl},
      {"Drift", page::kDriftControl},       {"Scroll", page::kScrollControl},
  };
  for (const StyleEntry& style : StyleTable()) {
    for (const PageControl& c : style.page) {
      if (!c.key) continue;
      SCOPED_TRACE(std::string(style.name) + " " + c.key);
      std::string_view key = c.key;
      int n = c.id - PageControlId(style.number, 0);
      if (auto it = common.find(key); it != common.end()) {
        EXPECT_EQ(n, it->second);
      } else if (key.starts_with("FillColor")) {
        EXPECT_EQ(n, page::ColourControl(key.back() - '0'));
        EXPECT_EQ(c.kind, ControlKind::kFillButton);
      } else if (key.starts_with("FillEnable")) {
        EXPECT_EQ(n, page::EnableControl(key.back() - '0'));
        EXPECT_EQ(c.kind, ControlKind::kCheck);
      } else {
        EXPECT_GE(n, page::kFirstOwnControl);
      }
      if (key == "Background") {
        EXPECT_EQ(c.kind, ControlKind::kColourButton);
      }
    }
  }
}

TEST(StylePages, SeedDefaultsFollowTheirStyle) {
  for (const StyleEntry& style : StyleTable()) {
    const PageControl* seed = FindPageControlByKey(style, "Seed");
    if (!seed) continue;
    int expected = 1000 + style.number;
    if (style.number == 7) expected = 12329;
    if (style.number == 9 || style.number == 11 || style.number == 13) expected = 10000;
    SpinRange r = ParseSpinText(seed->spin);
    EXPECT_EQ(r.min, 100) << style.name;
    EXPECT_EQ(r.max, 32760) << style.name;
    EXPECT_EQ(r.def, expected) << style.name;
  }
}

struct Box {
  int x0, y0, x1, y1;
};
bool Overlap(const Box& a, const Box& b) {
  return a.x0 < b.x1 && b.x0 < a.x1 && a.y0 < b.y1 && b.y0 < a.y1;
}

// Every control and every separate label must stand on the page and clear of
// the others, or the dialog shows controls on top of each other.
TEST(StylePages, ControlsAndLabelsFitThePageWithoutOverlapping) {
  for (const StyleEntry& style : StyleTable()) {
    std::vector<std::pair<Box, std::string>> boxes;
    for (const PageControl& c : style.page) {
      boxes.push_back({{c.x, c.y, c.x + c.w, c.y + c.h}, c.label});
      if (page::HasSeparateLabel(c)) {
        page::Place l = page::LabelPlace(c);
        EXPECT_GT(l.w, 0) << style.name << " " << c.label;
        boxes.push_back({{l.x, l.y, l.x + l.w, l.y + l.h}, std::string("label ") + c.label});
      }
    }
    for (size_t i = 0; i < boxes.size(); ++i) {
      const Box& b = boxes[i].first;
      EXPECT_TRUE(b.x0 >= 0 && b.y0 >= 0 && b.x1 <= kPageWidth && b.y1 <= kPageHeight)
          << style.name << " " << boxes[i].second;
      for (size_t j = i + 1; j < boxes.size(); ++j)
        EXPECT_FALSE(Overlap(b, boxes[j].first))
            << style.name << ": " << boxes[i].second << " / " << boxes[j].second;
    }
  }
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

TEST(StyleEntries, BackgroundQueryAnswersForPagesWithABackgroundButton) {
  for (const StyleEntry& style : StyleTable()) {
    if (style.page.empty()) continue;
    SCOPED_TRACE(style.name);
    ASSERT_NE(style.background, nullptr);
    MapReader reader;
    int id = PageControlId(style.number, page::kBackgroundControl);
    reader.values[id] = 0x123456;
    if (FindPageControlByKey(style, "Background")) {
      EXPECT_EQ(style.background(reader, 0), 0x123456u);
    } else {
      EXPECT_EQ(style.background(reader, 0), kNoColour);
    }
    EXPECT_EQ(style.background(reader, 1), kNoColour);
  }
}

TEST(StyleEntries, EffectsWithoutARendererGiveNoImage) {
  const StyleEntry& iris = *FindStyle("Iris");
  ASSERT_EQ(iris.init, nullptr);
  MapReader reader;
  Random random;
  EXPECT_FALSE(StylePreview(iris, reader, random));
}

}  // namespace
}  // namespace tess
