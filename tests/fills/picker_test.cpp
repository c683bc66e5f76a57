// Direction pickers without windows: which pixel is which cell, what a click
// and a document line do to value and text, how cells are drawn, the
// direction names, and the glyph strips with their committed bitmap files.
#include "fills/picker.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fills/picker_glyphs.h"
#include "platform/safe_file.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

// The 3 x 3 grid of 25-pixel squares, a row per text line: the cell index
// or '.' for no cell.
struct GridCase {
  PickerClass picker_class;
  const char* grid[3];
};

constexpr GridCase kGrids[] = {
    {PickerClass::kShadow, {"012", "4.3", "567"}},
    {PickerClass::kScroll4, {".0.", "2.1", ".3."}},
    {PickerClass::kScroll2, {"01.", "...", "..."}},
    {PickerClass::kScrollHV, {".1.", "0..", "..."}},
};

int Expected(const GridCase& c, int col, int row) {
  char at = c.grid[row][col];
  return at == '.' ? kPickerNoCell : at - '0';
}

TEST(PickerHitTest, EveryCornerAndCentreOfEveryGridSquare) {
  for (const GridCase& c : kGrids) {
    const PickerKind& kind = PickerKindOf(c.picker_class);
    int cells_seen = 0;
    for (int row = 0; row < 3; ++row)
      for (int col = 0; col < 3; ++col) {
        int want = Expected(c, col, row);
        cells_seen += want != kPickerNoCell;
        int l = 25 * col, t = 25 * row;
        for (Point p : {Point{l + 12, t + 12}, Point{l, t}, Point{l + 24, t}, Point{l, t + 24},
                        Point{l + 24, t + 24}})
          EXPECT_EQ(PickerHitTest(kind, p), want) << kind.tag << " at " << p.x << "," << p.y;
      }
    EXPECT_EQ(cells_seen, kind.cell_count()) << kind.tag;
    for (Point p : {Point{-1, 0}, Point{0, -1}, Point{75, 0}, Point{0, 75}, Point{-1, -1}})
      EXPECT_EQ(PickerHitTest(kind, p), kPickerNoCell) << kind.tag;
  }
}

TEST(PickerFamily, TagsAndResourcesAsDocumentsAndModulesKnowThem) {
  struct Row {
    PickerClass picker_class;
    const char* tag;
    int resource;
  };
  const Row rows[] = {{PickerClass::kShadow, "SDWDIR", 7104},
                      {PickerClass::kScroll4, "SCRL4D", 7105},
                      {PickerClass::kScroll2, "SCRL2D", 7106},
                      {PickerClass::kScrollHV, "SCRLHV", 7110}};
  for (const Row& r : rows) {
    EXPECT_EQ(PickerKindOf(r.picker_class).glyph_resource, r.resource);
    ASSERT_EQ(FindPickerKind(r.tag), &PickerKindOf(r.picker_class));
  }
  EXPECT_EQ(FindPickerKind("scrl4d"), nullptr);
  EXPECT_EQ(FindPickerKind("SCRL4"), nullptr);
}

// ---------------------------------------------------------------- value rules

TEST(PickerState, ClicksSetTextAlwaysAndValueOnlyOnACell) {
  struct Case {
    PickerClass picker_class;
    int32_t value;
    Point at;
    int32_t want_value;
    const char* want_text;
    PickerState::Repaint repaint;
  };
  const Case cases[] = {
      {PickerClass::kShadow, 1, {60, 30}, 3, "3", {1, 3}},                       // right
      {PickerClass::kShadow, 6, {37, 37}, 6, "6", {6, 6}},                       // empty centre
      {PickerClass::kScroll4, 0, {5, 5}, 0, "0", {0, 0}},                        // corner: no cell
      {PickerClass::kScroll4, 9, {100, 5}, 9, "9", {kPickerNoCell, kPickerNoCell}},  // outside
      {PickerClass::kScroll4, -5, {30, 60}, 3, "3", {kPickerNoCell, 3}},
      {PickerClass::kScrollHV, 1, {3, 40}, 0, "0", {1, 0}},
  };
  for (const Case& c : cases) {
    PickerState state(c.picker_class, 3010, c.value, "old");
    PickerState::Repaint repaint = state.Click(c.at);
    EXPECT_EQ(state.value(), c.want_value) << c.at.x << "," << c.at.y;
    EXPECT_EQ(state.text(), c.want_text);
    EXPECT_EQ(repaint.old_cell, c.repaint.old_cell);
    EXPECT_EQ(repaint.new_cell, c.repaint.new_cell);
  }
}

TEST(PickerState, ALineSetsOnlyTheValueSoTheNextSaveWritesTheOlderText) {
  PickerState state(PickerClass::kScroll4, 3010, 0, "");
  state.Click({55, 30});  // right
  EXPECT_EQ(FormatControlLine(state), "SCRL4D3010=1");

  EXPECT_TRUE(DeliverLine(state, "SCRL4D3010=3"));
  EXPECT_EQ(state.value(), 3);
  EXPECT_EQ(state.text(), "1");
  EXPECT_EQ(FormatControlLine(state), "SCRL4D3010=1");

  state.Click({30, 55});  // down: now the text catches up
  EXPECT_EQ(FormatControlLine(state), "SCRL4D3010=3");
  // A control that was never clicked writes its creation text's number.
  EXPECT_EQ(FormatControlLine(PickerState(PickerClass::kShadow, 3011, 5, "")), "SDWDIR3011=0");
}

TEST(PickerState, LinesAreTakenByTagAndAnyNumberIsKept) {
  struct Case {
    const char* line;
    bool taken;
    int32_t value;  // after the line, from 2
    int selected;
  };
  const Case cases[] = {
      {"SCRL4D3010=1", true, 1, 1},
      {"SCRL4D3010= ==3", true, 3, 3},     // "=" and blanks after the first "=" skipped
      {"SCRL4D3010=7", true, 7, kPickerNoCell},  // kept, no cell drawn selected
      {"SCRL4D3010=4294967291", true, -5, kPickerNoCell},  // the unsigned form of -5
      {"SCRL4D3010=x", true, 0, 0},
      {"SDWDIR3010=1", false, 2, 2},       // another class's tag
      {"SCRL4D3010 1", false, 2, 2},       // no "="
  };
  for (const Case& c : cases) {
    PickerState state(PickerClass::kScroll4, 3010, 2, "2");
    EXPECT_EQ(DeliverLine(state, c.line), c.taken) << c.line;
    EXPECT_EQ(state.value(), c.value) << c.line;
    EXPECT_EQ(state.SelectedCell(), c.selected) << c.line;
    EXPECT_EQ(state.text(), "2") << c.line;
  }
}

TEST(PickerState, TextNumbersRoundTripThroughTheUnsignedLine) {
  for (const char* text : {"0", "7", "-5", "-2147483648", "2147483647"}) {
    PickerState saved(PickerClass::kShadow, 3010, 0, text);
    PickerState loaded(PickerClass::kShadow, 3010, 0, "");
    ASSERT_TRUE(DeliverLine(loaded, FormatControlLine(saved)));
    saved.SyncFromText();
    EXPECT_EQ(loaded.value(), saved.value()) << text;
  }
  EXPECT_EQ(PickerLineValue("-1"), "4294967295");
  EXPECT_EQ(PickerLineValue(" 12abc"), "12");
  EXPECT_EQ(PickerLineValue("none"), "0");
}

TEST(PickerCellLook, TheSelectedCellIsSunkenWithItsGlyphOnePixelFurtherIn) {
  const PickerKind& kind = PickerKindOf(PickerClass::kShadow);
  for (int32_t value : {0, 3, 7, 8, -1}) {
    for (int cell = 0; cell < kind.cell_count(); ++cell) {
      PickerCellLook look = PickerCellLookOf(kind, cell, value);
      bool selected = cell == value;
      const Rect& r = kind.cells[static_cast<size_t>(cell)].rect;
      EXPECT_EQ(look.face, selected ? PickerFace::kSunken : PickerFace::kRaised);
      EXPECT_EQ(look.glyph.x, r.left + (selected ? 3 : 2));
      EXPECT_EQ(look.glyph.y, r.top + (selected ? 3 : 2));
      EXPECT_EQ(look.strip_column, 20 * cell);
      // The glyph stays inside the cell's edge even when sunken.
      EXPECT_LE(look.glyph.x + kPickerGlyphSize, r.right - 2);
    }
  }
}

// ---------------------------------------------------------------- names

TEST(PickerNames, EveryCellRoundTripsByNameAndNumber) {
  for (const PickerKind& kind : PickerKinds()) {
    for (int i = 0; i < kind.cell_count(); ++i) {
      std::string name(PickerDirectionName(kind.picker_class, i));
      ASSERT_FALSE(name.empty());
      EXPECT_EQ(ParsePickerDirection(kind.picker_class, name), i) << name;
      std::string upper = name;
      for (char& ch : upper) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
      EXPECT_EQ(ParsePickerDirection(kind.picker_class, upper), i) << upper;
      EXPECT_EQ(ParsePickerDirection(kind.picker_class, std::to_string(i)), i);
    }
    EXPECT_EQ(PickerDirectionName(kind.picker_class, kind.cell_count()), "");
    EXPECT_EQ(PickerDirectionName(kind.picker_class, -1), "");
    for (std::string bad : {std::to_string(kind.cell_count()), std::string("-1"), std::string(""),
                            std::string("up "), std::string("1x")})
      EXPECT_EQ(ParsePickerDirection(kind.picker_class, bad), std::nullopt)
          << kind.tag << " " << bad;
  }
  EXPECT_EQ(PickerDirectionName(PickerClass::kShadow, 3), "right");
  EXPECT_EQ(PickerDirectionName(PickerClass::kShadow, 4), "left");
  EXPECT_EQ(ParsePickerDirection(PickerClass::kScroll4, "Down"), 3);
  EXPECT_EQ(ParsePickerDirection(PickerClass::kScroll2, "inward"), 1);
  EXPECT_EQ(ParsePickerDirection(PickerClass::kScrollHV, "vertical"), 1);
}

// ---------------------------------------------------------------- glyph strips

bool IsInk(Colour c) { return c != kPickerGlyphPaper; }

TEST(PickerGlyphs, StripsHaveTheirSizeAndEveryMaskCoversItsGlyph) {
  for (const PickerKind& kind : PickerKinds()) {
    ImageBlock strip = PickerGlyphStrip(kind.picker_class);
    ASSERT_TRUE(strip);
    EXPECT_EQ(strip.width(), kind.strip_width) << kind.tag;
    EXPECT_EQ(strip.height(), kPickerStripHeight) << kind.tag;
    for (int x = 0; x < strip.width(); ++x) {
      int cell = x / kPickerGlyphSize;
      bool used = cell < kind.cell_count();
      EXPECT_FALSE(IsInk(ImageGetPixel(strip, x, kPickerGlyphSize))) << "separator, column " << x;
      for (int y = 0; y < kPickerGlyphSize; ++y) {
        Colour glyph = ImageGetPixel(strip, x, y);
        Colour mask = ImageGetPixel(strip, x, kPickerMaskTop + y);
        ASSERT_TRUE(mask == kPickerMaskInk || mask == kPickerGlyphPaper) << kind.tag;
        EXPECT_TRUE(!IsInk(glyph) || mask == kPickerMaskInk) << kind.tag << " " << x << "," << y;
        EXPECT_TRUE(used || (!IsInk(glyph) && mask != kPickerMaskInk)) << "unused column " << x;
      }
    }
  }
}

// Arrows are heavier at the head, so the ink's balance point lies on the
// side of the grid centre where the arrow's cell lies.
TEST(PickerGlyphs, ArrowsPointTowardTheirCells) {
  for (PickerClass picker_class : {PickerClass::kShadow, PickerClass::kScroll4}) {
    const PickerKind& kind = PickerKindOf(picker_class);
    ImageBlock strip = PickerGlyphStrip(picker_class);
    ASSERT_TRUE(strip);
    for (int i = 0; i < kind.cell_count(); ++i) {
      long sx = 0, sy = 0, n = 0;
      for (int y = 0; y < kPickerGlyphSize; ++y)
        for (int x = 0; x < kPickerGlyphSize; ++x)
          if (IsInk(ImageGetPixel(strip, kPickerGlyphSize * i + x, y))) {
            sx += 2 * x + 1 - kPickerGlyphSize;
            sy += 2 * y + 1 - kPickerGlyphSize;
            ++n;
          }
      ASSERT_GT(n, 0);
      const Rect& r = kind.cells[static_cast<size_t>(i)].rect;
      auto sign = [](long v) { return (v > 0) - (v < 0); };
      EXPECT_EQ(sign(sx), sign(r.left - 25)) << kind.tag << " cell " << i;
      EXPECT_EQ(sign(sy), sign(r.top - 25)) << kind.tag << " cell " << i;
    }
  }
}

TEST(PickerGlyphs, BitmapFileHeaderPointsAtTheRows) {
  ImageBlock strip = PickerGlyphStrip(PickerClass::kScroll2);
  MemorySink sink;
  ASSERT_TRUE(WriteBitmapFile(sink, strip));
  const std::vector<uint8_t>& b = sink.bytes();
  ASSERT_EQ(b.size(), 14 + strip.size());
  EXPECT_EQ(b[0], 'B');
  EXPECT_EQ(b[1], 'M');
  EXPECT_EQ(b[2] | b[3] << 8 | b[4] << 16, static_cast<int>(b.size()));
  EXPECT_EQ(b[10], 14 + 40);
  // The first stored row is the strip's bottom row: mask paper.
  EXPECT_EQ(b[54], 0xFF);
  EXPECT_FALSE(WriteBitmapFile(sink, ImageBlock()));
}

// The committed resources/picker_*.bmp are the strips above. Rewrite them on
// purpose with the regenerate-golden target; a mismatch leaves the actual
// file in the test's working folder.
TEST(PickerGlyphFiles, CommittedBitmapsAreTheDrawnStrips) {
  const char* flag = std::getenv("TESS_REGENERATE_GOLDEN");
  bool regenerate = flag && std::string(flag) == "1";
  for (const PickerKind& kind : PickerKinds()) {
    MemorySink drawn;
    ASSERT_TRUE(WriteBitmapFile(drawn, PickerGlyphStrip(kind.picker_class)));
    std::string name = PickerGlyphFileName(kind.picker_class);
    std::string path = testing::SourceDir() + "/resources/" + name;
    if (regenerate) {
      SafeFile out;
      ASSERT_TRUE(out.Open(path) && out.Write(drawn.bytes().data(), drawn.bytes().size()) && out.Commit())
          << path << ": " << out.error();
      continue;
    }
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> committed((std::istreambuf_iterator<char>(in)), {});
    if (committed != drawn.bytes()) {
      std::string actual = name.substr(0, name.size() - 4) + ".actual.bmp";
      SafeFile out;
      if (out.Open(actual) && out.Write(drawn.bytes().data(), drawn.bytes().size())) out.Commit();
      ADD_FAILURE() << path << " differs from the drawn strip; see " << actual;
    }
  }
}

// The resource script names each strip under its class's resource id.
TEST(PickerGlyphFiles, TheResourceScriptLoadsEachStripUnderItsId) {
  std::ifstream in(testing::SourceDir() + "/resources/pickers.rc");
  std::string script((std::istreambuf_iterator<char>(in)), {});
  ASSERT_FALSE(script.empty());
  for (const PickerKind& kind : PickerKinds()) {
    std::string line = std::to_string(kind.glyph_resource) + " BITMAP \"resources/" +
                       PickerGlyphFileName(kind.picker_class) + "\"\n";
    EXPECT_NE(script.find(line), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace tess
