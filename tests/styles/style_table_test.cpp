// The style table as data: look-ups agree with the table, the list order
// holds, every page is well formed (ids, spin texts, numbering, layout), and
// every entry previews and builds the same frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "controls/control_kinds.h"
#include "dialog/settings_reader.h"
#include "image/frame_list.h"
#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/style_table.h"
#include "tests/support/map_reader.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

// Saved MainEffect values are list indices: the list is alphabetical but for
// "Skip Intro" standing before "Shaped Fountain", and numbers 0..19 appear once.
TEST(StyleTable, OrderNumbersAndLookupsAgree) {
  std::span<const StyleEntry> table = StyleTable();
  static_assert(kStyleCount == kStyleNumberCount, "one style table entry per StyleNNN key group");
  ASSERT_EQ(table.size(), size_t{kStyleCount});
  std::set<int> numbers;
  for (int i = 0; i < kStyleCount; ++i) {
    const StyleEntry& style = table[static_cast<size_t>(i)];
    SCOPED_TRACE(style.name);
    std::string_view previous = i > 0 ? table[static_cast<size_t>(i) - 1].name : "";
    EXPECT_TRUE(previous < style.name || previous == "Skip Intro") << previous;
    EXPECT_TRUE(numbers.insert(style.number).second);
    EXPECT_EQ(StyleListIndex(style), i);
    EXPECT_EQ(StyleByNumber(style.number), &style);
    EXPECT_EQ(FindStyle(style.name), &style);
    EXPECT_FALSE(style.page.empty());
  }
  EXPECT_EQ(*numbers.rbegin(), kStyleCount - 1);
  EXPECT_STREQ(table[14].name, "Skip Intro");
  EXPECT_EQ(FindStyle("neural network"), &table[11]);
  EXPECT_EQ(FindStyle("Skip"), nullptr);
  EXPECT_EQ(StyleByNumber(20), nullptr);
}

TEST(StyleTable, FindsControlsByKeyAndId) {
  const StyleEntry& gridlock = *FindStyle("Gridlock");
  const PageControl* glare = FindPageControlByKey(gridlock, "glare");
  ASSERT_NE(glare, nullptr);
  EXPECT_EQ(FindPageControlByKey(gridlock, "Glar"), nullptr);
  EXPECT_EQ(SettingKey(gridlock.number, *glare), "Style016Glare");
  PageControlRef ref = FindPageControl(glare->id);
  EXPECT_EQ(ref.style, &gridlock);
  EXPECT_EQ(ref.control, glare);
  ref = FindPageControl(306);  // a built-in fountain: stored by its control, not a key
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
      SCOPED_TRACE(std::string(style.name) + " " + c.label);
      if (IsBuiltInFountain(c.id)) {
        EXPECT_EQ(c.kind, ControlKind::kFountain);
      } else {
        EXPECT_GE(c.id, PageControlId(style.number, 1));
        EXPECT_LE(c.id, PageControlId(style.number, 99));
      }
      auto [it, fresh] = owner.emplace(c.id, style.name);
      EXPECT_TRUE(fresh) << "id " << c.id << " also on " << it->second;
    }
  }
  // A first run loads each built-in fountain into the button with its number.
  for (int fixed : page::kBuiltInFountainIds) EXPECT_EQ(owner.count(fixed), 1u) << fixed;
}

// Strict form of the spin text: the page's own reading falls back to 0..100
// on a malformed text, which would hide a typo.
// Ranges hold their default, lists have named items, and the parameters
// front ends and effects share sit on their shared numbers with their kind.
TEST(StylePages, RangesItemsAndSharedNumbersHold) {
  const std::map<std::string_view, int> common = {
      {"Frames", page::kFramesControl},     {"Width", page::kWidthControl},
      {"Depth", page::kDepthControl},       {"Seed", page::kSeedControl},
      {"Background", page::kBackgroundControl}, {"Size", page::kSizeControl},
      {"Density", page::kDensityControl},   {"FillOpacity", page::kOpacityControl},
      {"Drift", page::kDriftControl},       {"Scroll", page::kScrollControl},
  };
  for (const StyleEntry& style : StyleTable()) {
    for (const PageControl& c : style.page) {
      SCOPED_TRACE(std::string(style.name) + " " + c.label);
      const SpinRange& r = c.range;
      if (KindRules(c).has_range) {
        EXPECT_TRUE(r.min <= r.def && r.def <= r.max);
      }
      if (c.kind == ControlKind::kPicker) {
        EXPECT_LT(r.def, PickerKindOf(c.picker).cell_count());
      }
      EXPECT_EQ(c.kind == ControlKind::kDropDown, !c.items.empty());
      for (std::string_view item : c.items) EXPECT_FALSE(item.empty());
      if (!c.key) continue;
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
      EXPECT_TRUE(key != "Background" || c.kind == ControlKind::kColourButton);
    }
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
      if (KindRules(c).separate_label) {
        page::Place l = page::LabelPlace(c);
        EXPECT_GT(l.w, 0) << style.name << " " << c.label;
        boxes.push_back({{l.x, l.y, l.x + l.w, l.y + l.h}, std::string("label ") + c.label});
      }
    }
    for (size_t i = 0; i < boxes.size(); ++i) {
      const Box& b = boxes[i].first;
      EXPECT_TRUE(b.x0 >= 0 && b.y0 >= 0 && b.x1 <= page::kPageWidth && b.y1 <= page::kPageHeight)
          << style.name << " " << boxes[i].second;
      for (size_t j = i + 1; j < boxes.size(); ++j)
        EXPECT_FALSE(Overlap(b, boxes[j].first))
            << style.name << ": " << boxes[i].second << " / " << boxes[j].second;
    }
  }
}

// Pickers are made at their cells' size in pixels; the page must leave them
// that much room at the dialog font's 1.5 x 1.625 pixels per unit, or they
// cover their neighbours. The layout's own pixel table must match the cells.
TEST(StylePages, PickersHaveRoomForTheirCells) {
  for (const PickerKind& kind : PickerKinds()) {
    int32_t w = 0, h = 0;
    for (const PickerCell& cell : kind.cells) {
      w = std::max(w, cell.rect.right);
      h = std::max(h, cell.rect.bottom);
    }
    page::PixelSize declared = page::PickerPixels(kind.picker_class);
    EXPECT_EQ(declared.w, w) << kind.tag;
    EXPECT_EQ(declared.h, h) << kind.tag;
  }
  int pickers = 0;
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page) {
      if (c.kind != ControlKind::kPicker) continue;
      ++pickers;
      page::PixelSize need = page::PickerPixels(c.picker);
      EXPECT_GE(c.w * 3, need.w * 2) << style.name;
      EXPECT_GE(c.h * 13, need.h * 8) << style.name;
      EXPECT_EQ(c.x + c.w, c.x >= page::kLabelX[page::kRight] ? page::kColumnEnd[page::kRight]
                                                               : page::kColumnEnd[page::kLeft])
          << style.name;
    }
  EXPECT_EQ(pickers, 5);
}

// Every effect that renders: the preview is the build's first frame whatever
// the generator held before (each reseeds), and the build hands on every
// frame, as the record renders it, with the delay and a progress report.
TEST(StyleEntries, PreviewIsTheBuildsFirstFrameAndTheBuildRendersEveryFrame) {
  bool reporting = false;  // every other build without a progress callback
  for (const StyleEntry& style : StyleTable()) {
    if (!style.init) continue;
    reporting = !reporting;
    SCOPED_TRACE(style.name);
    Settings settings;
    // A page without Frames derives the count; its Width and Depth may count
    // elements rather than pixels, so it gets a small tile. Shaped
    // Fountain's square tile has a Size instead of a Width and Depth.
    if (style.frames_rule) {
      settings.SetStyleNumber(style.number, "Width", 3);
      settings.SetStyleNumber(style.number, "Depth", 2);
    } else {
      for (auto [key, value] : {std::pair{"Frames", 3}, {"Width", 37}, {"Depth", 29}})
        if (FindPageControlByKey(style, key)) settings.SetStyleNumber(style.number, key, value);
    }
    SettingsReader reader(settings, style);
    Random random;
    ImageBlock preview = StylePreview(style, reader, random);
    random.Seed(12345);
    FrameList frames;
    int reports = 0;
    std::function<void(int, int)> progress = [&](int, int) { ++reports; };
    ASSERT_TRUE(StyleBuild(style, reader, random, 7, frames, reporting ? progress : nullptr));
    std::unique_ptr<StyleRecord> record = style.init(reader, random);
    const int n = style.frames_rule ? record->FrameCount() : 3;
    ASSERT_EQ(frames.count(), n);
    EXPECT_EQ(reports, reporting ? n : 0);
    EXPECT_EQ(testing::Pixels(frames[0].image), testing::Pixels(preview));
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(frames[k].delay, 7);
      EXPECT_EQ(testing::Pixels(frames[k].image), testing::Pixels(record->RenderFrame(k))) << k;
    }
  }
}

TEST(StyleEntries, BackgroundQueryAnswersForPagesWithABackgroundButton) {
  for (const StyleEntry& style : StyleTable()) {
    SCOPED_TRACE(style.name);
    ASSERT_NE(style.background, nullptr);
    testing::MapReader reader;
    reader.values[PageControlId(style.number, page::kBackgroundControl)] = 0x123456;
    bool has_button = FindPageControlByKey(style, "Background") != nullptr;
    EXPECT_EQ(style.background(reader, 0), has_button ? 0x123456u : kNoColour);
    EXPECT_EQ(style.background(reader, 1), kNoColour);
  }
  // An effect without a renderer gives no preview.
  const StyleEntry& iris = *FindStyle("Iris");
  ASSERT_EQ(iris.init, nullptr);
  testing::MapReader reader;
  Random random;
  EXPECT_FALSE(StylePreview(iris, reader, random));
}

}  // namespace
}  // namespace tess
