// The main dialog's portable model: page windows and selection, spin-field
// values, sample composition against a per-pixel reference, the emblem's loop
// and document names.
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <set>

#include "dialog/dialog_pages.h"
#include "dialog/document_names.h"
#include "dialog/emblem.h"
#include "dialog/sample_view.h"
#include "dialog/settings_document.h"
#include "output/palette.h"
#include "plugin/host_interface.h"
#include "shell/main_dialog_ids.h"
#include "shell/strings.h"
#include "styles/page_layout.h"
#include "draw/raster.h"
#include "styles/style_table.h"
#include "tests/support/map_reader.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::NoiseImage;
using testing::Pixels;

TEST(PageSelection, ClampsToTheTableAndOnePast) {
  EXPECT_EQ(ClampPageIndex(INT_MIN), 0);
  EXPECT_EQ(ClampPageIndex(7), 7);
  EXPECT_EQ(ClampPageIndex(INT_MAX), 20);
  std::span<const StyleEntry> table = StyleTable();
  EXPECT_EQ(PageStyle(table, 19), &table[19]);
  // The clamp's top value names no entry: no page is shown, nothing is read.
  EXPECT_EQ(PageStyle(table, ClampPageIndex(25)), nullptr);
  EXPECT_EQ(PageStyle(table, -1), nullptr);
}

// Each control comes with its label before it and its up-down after it, on
// the page; ids are unique and never the dialog's own, from which page
// commands are told apart (all below 59 but the delay's up-down).
TEST(PageWindows, EachControlBringsItsLabelAndUpDownInOrder) {
  std::set<int> seen;
  for (const StyleEntry& style : StyleTable()) {
    std::vector<PageWindow> windows = PageWindows(style);
    for (const PageWindow& w : windows) {
      SCOPED_TRACE(std::string(style.name) + " id " + std::to_string(w.id));
      EXPECT_TRUE(seen.insert(w.id).second);
      EXPECT_TRUE(w.id >= 59 && w.id != kDelayUpDown);
      EXPECT_TRUE(w.x + w.w <= page::kPageWidth && w.y + w.h <= page::kPageHeight);
    }
    size_t at = 0;
    auto next = [&](PageWindowRole role, int id, const PageControl& c) {
      ASSERT_LT(at, windows.size()) << style.name;
      EXPECT_EQ(windows[at].id, id) << style.name;
      EXPECT_EQ(windows[at].control, &c);
      EXPECT_TRUE(windows[at++].role == role) << style.name << " id " << id;
    };
    for (const PageControl& c : style.page) {
      bool spin = KindRules(c).has_range;
      if (KindRules(c).separate_label) next(PageWindowRole::kLabel, c.id + kPageLabelIdOffset, c);
      ASSERT_LT(at, windows.size());
      EXPECT_EQ(windows[at].role == PageWindowRole::kEdit, spin) << style.name << " id " << c.id;
      next(windows[at].role, c.id, c);
      if (spin) next(PageWindowRole::kUpDown, c.id + kUpDownIdOffset, c);
    }
    EXPECT_EQ(at, windows.size());
  }
}

// The dialog saves its page controls in window creation order; a document
// written from the settings must list the same controls in the same order,
// or the two would not read each other's files line for line.
TEST(PageWindows, CreationOrderIsTheSettingsDocumentsOrder) {
  std::vector<int> from_windows;
  for (const StyleEntry& style : StyleTable())
    for (const PageWindow& w : PageWindows(style)) {
      const PageControl& c = *w.control;
      bool control_window = w.id == c.id;
      bool stored = (c.key && StyleKeyIndex(style.number, c.key) >= 0) || KindRules(c).holds_fountain;
      if (control_window && stored && TakesPartInDocuments(c))
        from_windows.push_back(w.id);
    }
  Settings settings;
  SettingsDocument document(settings, 0);
  std::vector<int> from_settings;
  document.ForEachControl([&](const DocumentControl& c) {
    if (c.Number() >= 59) from_settings.push_back(c.Number());
  });
  EXPECT_EQ(from_windows, from_settings);
  EXPECT_GT(from_windows.size(), 200u);
}

// The main dialog's lists come from the tables they name, and its Delay
// range from the host's capability bit 0.
TEST(MainDialogControls, ListsFollowTheirTablesAndTheDelayTheHost) {
  ItemList palettes = PaletteListItems();
  ASSERT_EQ(palettes.size(), static_cast<size_t>(kPaletteChoices));
  for (int i = 0; i < kPaletteChoices; ++i) EXPECT_EQ(palettes[static_cast<size_t>(i)], PaletteName(i));
  ASSERT_EQ(EffectListItems().size(), StyleTable().size());
  EXPECT_EQ(EffectListItems()[13], "Phasers on Stun");
  EXPECT_EQ(MainDialogControls(kHostCapOptimise)[0].range, (SpinRange{1, 25, 4}));
  EXPECT_EQ(MainDialogControls(kHostCapTrueColour)[0].range, (SpinRange{1, 250, 40}));
  EXPECT_EQ(ShiftResetDelay(kHostCapOptimise), 4);
  EXPECT_EQ(ShiftResetDelay(kHostCapTrueColour), 10);
}

// ---------------------------------------------------------------- sample

// What a pixel shows: palettised pixels through their table.
Colour Shown(const ImageBlock& image, int32_t x, int32_t y) {
  Colour c = ImageGetPixel(image, x, y);
  if (image.bits() > 8) return c;
  const uint8_t* e = image.colour_table() + 4 * c;
  return MakeColour(e[2], e[1], e[0]);
}

// The sample drawn pixel by pixel.
ImageBlock ReferenceSample(const ImageBlock& image, int32_t w, int32_t h, Colour surround,
                           bool key_line) {
  ImageBlock out = ImageCreate(w, h, nullptr, 24);
  int32_t ox = (w - image.width()) / 2, oy = (h - image.height()) / 2;
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) {
      Colour c = surround;
      int32_t ix = x - ox, iy = y - oy;
      if (ix >= 0 && iy >= 0 && ix < image.width() && iy < image.height())
        c = Shown(image, ix, iy);
      bool on_line = (ix >= -1 && ix <= image.width() && (iy == -1 || iy == image.height())) ||
                     (iy >= -1 && iy <= image.height() && (ix == -1 || ix == image.width()));
      if (key_line && on_line) c = kSampleKeyLineColour;
      ImageSetPixel(out, x, y, c);
    }
  return out;
}

TEST(Sample, PlacementRoundsTowardZero) {
  SamplePlacement p = PlaceSample(244, 225, 128, 128);
  EXPECT_EQ(p.x, 58);
  EXPECT_EQ(p.y, 48);
  EXPECT_EQ(PlaceSample(100, 100, 131, 100).x, -15);  // -31 / 2 is -15, not -16
  EXPECT_EQ(SampleSizeText(128, 96), "128 x 96 pixels");
}

TEST(Sample, CompositionMatchesThePerPixelReference) {
  const Colour surround = MakeColour(10, 200, 30);
  struct Case {
    int32_t inner_w, inner_h, image_w, image_h;
  };
  // Smaller, odd margins, exactly filling, and larger than the sample on
  // either axis: the key line is then clipped or gone.
  for (Case c : {Case{47, 33, 20, 9}, Case{244, 225, 128, 128}, Case{31, 17, 31, 17},
                 Case{20, 40, 33, 10}, Case{25, 25, 61, 60}, Case{5, 5, 3, 3}}) {
    ImageBlock image = NoiseImage(c.image_w, c.image_h, c.inner_w * 7 + c.image_h);
    for (bool key_line : {false, true}) {
      ImageBlock got = ComposeSample(image, c.inner_w, c.inner_h, surround, key_line);
      ASSERT_TRUE(got);
      ASSERT_EQ(got.width(), c.inner_w);
      ASSERT_EQ(got.height(), c.inner_h);
      EXPECT_EQ(Pixels(got), Pixels(ReferenceSample(image, c.inner_w, c.inner_h, surround, key_line)))
          << c.inner_w << "x" << c.inner_h << " image " << c.image_w << "x" << c.image_h
          << " key line " << key_line;
    }
  }
}

TEST(Sample, PalettisedImagesAreShownInTheirColoursAndFailuresGiveNoPicture) {
  uint8_t palette[kPaletteBytes] = {};
  for (int i = 0; i < 256; ++i) palette[3 * i + 2] = static_cast<uint8_t>(255 - i);
  ImageBlock image = ImageCreate(13, 7, palette, 8);
  for (int y = 0; y < 7; ++y)
    for (int x = 0; x < 13; ++x) ImageSetPixel(image, x, y, static_cast<Colour>(x * 19 + y));
  ImageBlock got = ComposeSample(image, 21, 11, 0, true);
  EXPECT_EQ(Pixels(got), Pixels(ReferenceSample(image, 21, 11, 0, true)));
  EXPECT_EQ(ImageGetPixel(got, 4, 2), MakeColour(0, 0, 255));  // index 0 at (0, 0) of the image

  EXPECT_FALSE(ComposeSample(ImageBlock(), 10, 10, 0, false));
  EXPECT_FALSE(ComposeSample(image, 0, 10, 0, false));
  EXPECT_FALSE(ComposeSample(image, 10, -1, 0, false));
  AllocFailureScope fail(0);
  EXPECT_FALSE(ComposeSample(image, 10, 10, 0, false));
}

// A style whose frame 0 is a known picture and whose background button is
// control 1 of the reader.
struct FixedRecord final : StyleRecord {
  int FrameCount() const override { return 1; }
  ImageBlock RenderFrame(int) override { return NoiseImage(30, 20, 5); }
};
std::unique_ptr<StyleRecord> FixedInit(const ParamReader&, Random&) { return std::make_unique<FixedRecord>(); }
Colour TestBackground(const ParamReader& reader, int flag) { return flag ? kNoColour : reader.ColourValue(1); }

TEST(Sample, RendersOnTheStylesBackgroundOrTheFallback) {
  StyleEntry style{"Test", 0, {}, &FixedInit, &TestBackground};
  testing::MapReader reader;
  Random random;
  const Colour fallback = MakeColour(212, 208, 200);
  auto corner = [&](int x, int y) {
    SampleRender r = RenderSample(style, reader, random, 50, 40, fallback, false);
    EXPECT_EQ(r.image_width, 30);
    return r.picture ? ImageGetPixel(r.picture, x, y) : kNoColour;
  };
  reader.values[1] = static_cast<int32_t>(MakeColour(1, 2, 3));
  EXPECT_EQ(corner(0, 0), MakeColour(1, 2, 3));
  EXPECT_EQ(corner(10, 10), ImageGetPixel(NoiseImage(30, 20, 5), 0, 0));
  reader.values[1] = static_cast<int32_t>(kNoColour);
  EXPECT_EQ(corner(0, 0), fallback);
  style.background = nullptr;
  EXPECT_EQ(corner(49, 39), fallback);
  // An effect that cannot render yet leaves the sample empty.
  style.init = nullptr;
  EXPECT_FALSE(RenderSample(style, reader, random, 50, 40, fallback, false).picture);
}

// The tile shows its corner bubble in all four corners, so it wraps; frame k
// is the tile risen by k pixels, repeated over any size, looping.
TEST(Emblem, FramesRiseOnePixelPerFrameAndLoop) {
  Emblem emblem;
  ASSERT_TRUE(emblem);
  const int32_t n = Emblem::kTileSize;
  ImageBlock tile = DrawEmblemTile();
  ASSERT_EQ(Pixels(tile), Pixels(emblem.tile()));
  Colour ground = ImageGetPixel(tile, n / 2, n / 2 + 3);
  for (Point corner : {Point{0, 0}, Point{n - 1, 0}, Point{0, n - 1}, Point{n - 1, n - 1}})
    EXPECT_NE(ImageGetPixel(tile, corner.x, corner.y), ground) << corner.x << "," << corner.y;
  const int32_t w = 2 * n + 5, h = n + 7;  // more than a tile, not a whole number of tiles
  for (int k : {0, 1, 5, n - 1}) {
    ImageBlock frame = emblem.Frame(k, w, h);
    ASSERT_TRUE(frame);
    for (int32_t y = 0; y < h; ++y)
      for (int32_t x = 0; x < w; ++x)
        ASSERT_EQ(ImageGetPixel(frame, x, y), ImageGetPixel(tile, x % n, (y + k) % n)) << k << " " << x << "," << y;
    EXPECT_EQ(Pixels(frame), Pixels(emblem.Frame(k + Emblem::kFrameCount, w, h)));
    EXPECT_EQ(Pixels(frame), Pixels(emblem.Frame(k - Emblem::kFrameCount, w, h)));
  }
  EXPECT_FALSE(emblem.Frame(0, 0, 5));
  AllocFailureScope fail(0, true);
  Emblem short_of_memory;
  EXPECT_FALSE(short_of_memory);
  EXPECT_FALSE(short_of_memory.Frame(0, 10, 10));
}

TEST(DocumentNames, UntitledIsTheFileNameInAnyFolderAndCase) {
  EXPECT_TRUE(IsUntitledDocument("C:\\Users\\me\\Documents\\untitled.ts1"));
  EXPECT_TRUE(IsUntitledDocument("/home/me/UNTITLED.TS1"));
  EXPECT_FALSE(IsUntitledDocument("C:\\docs\\my untitled.ts1"));
  EXPECT_FALSE(IsUntitledDocument("C:\\untitled.ts1\\other.ts1"));
  EXPECT_EQ(DocumentFolder("C:/docs/sub\\a.ts1"), "C:/docs/sub\\");
  EXPECT_EQ(DocumentFolder("a.ts1"), "");
}

}  // namespace
}  // namespace tess
