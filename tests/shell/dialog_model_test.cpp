// The main dialog's portable model: page windows and selection, spin-field
// values, sample composition against a per-pixel reference, the emblem's loop
// and document names.
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <set>

#include "shell/dialog_pages.h"
#include "shell/document_names.h"
#include "shell/emblem.h"
#include "shell/main_dialog_ids.h"
#include "plugin/host_interface.h"
#include "shell/sample_view.h"
#include "shell/strings.h"
#include "styles/page_layout.h"
#include "styles/raster.h"
#include "styles/settings_document.h"
#include "styles/style_table.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::NoiseImage;
using testing::Pixels;

// ---------------------------------------------------------------- page selection and windows

TEST(PageSelection, ClampsToTheTableAndOnePast) {
  EXPECT_EQ(ClampPageIndex(-1), 0);
  EXPECT_EQ(ClampPageIndex(INT_MIN), 0);
  EXPECT_EQ(ClampPageIndex(7), 7);
  EXPECT_EQ(ClampPageIndex(20), 20);
  EXPECT_EQ(ClampPageIndex(21), 20);
  EXPECT_EQ(ClampPageIndex(INT_MAX), 20);
  std::span<const StyleEntry> table = StyleTable();
  EXPECT_EQ(PageStyle(table, 0), &table[0]);
  EXPECT_EQ(PageStyle(table, 19), &table[19]);
  // The clamp's top value names no entry: no page is shown, nothing is read.
  EXPECT_EQ(PageStyle(table, ClampPageIndex(25)), nullptr);
  EXPECT_EQ(PageStyle(table, -1), nullptr);
}

TEST(PageWindows, IdsAreUniqueAndNeverTheDialogsOwn) {
  const std::set<int> dialog_ids = {kOkButton,      kCancelButton,    kHelpButton,  kAboutButton,
                                    kTestButton,    kOpenSaveButton,  kPreviewButton,
                                    kTrueColour,    kDelayEdit,       kDelayUpDown, kSampleSizeLabel,
                                    kPaletteList,   kCustomPalette,   kDither,      kEmblem,
                                    kSupercompress, kAddComment,      kMaskBackground,
                                    kSample,        kTransparentBackground,         kEffectList,
                                    37, 38, 39};
  std::set<int> seen;
  for (const StyleEntry& style : StyleTable()) {
    for (const PageWindow& w : PageWindows(style)) {
      EXPECT_TRUE(seen.insert(w.id).second) << style.name << " repeats id " << w.id;
      EXPECT_FALSE(dialog_ids.count(w.id)) << style.name << " takes dialog id " << w.id;
      // Page commands are told from the dialog's own by their ids.
      EXPECT_GE(w.id, 59) << style.name;
      EXPECT_LE(w.x + w.w, page::kPageWidth) << style.name << " id " << w.id;
      EXPECT_LE(w.y + w.h, page::kPageHeight) << style.name << " id " << w.id;
    }
  }
}

TEST(PageWindows, EachControlBringsItsLabelAndUpDownInOrder) {
  for (const StyleEntry& style : StyleTable()) {
    std::vector<PageWindow> windows = PageWindows(style);
    size_t at = 0;
    for (const PageControl& c : style.page) {
      if (page::HasSeparateLabel(c)) {
        ASSERT_LT(at, windows.size());
        EXPECT_EQ(windows[at].role, PageWindowRole::kLabel);
        EXPECT_EQ(windows[at].id, c.id + kPageLabelIdOffset);
        EXPECT_LT(windows[at].x + windows[at].w, c.x) << "label overlaps its control";
        ++at;
      }
      ASSERT_LT(at, windows.size());
      EXPECT_EQ(windows[at].id, c.id);
      EXPECT_EQ(windows[at].control, &c);
      PageWindowRole role = windows[at++].role;
      bool spin = c.kind == ControlKind::kSpin || c.kind == ControlKind::kSignedSpin ||
                  c.kind == ControlKind::kPicker;
      EXPECT_EQ(role == PageWindowRole::kEdit, spin) << style.name << " id " << c.id;
      if (spin) {
        ASSERT_LT(at, windows.size());
        EXPECT_EQ(windows[at].role, PageWindowRole::kUpDown);
        EXPECT_EQ(windows[at].id, c.id + kUpDownIdOffset);
        ASSERT_NE(c.spin, nullptr);
        ++at;
      }
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
      if (control_window && c.key && StyleKeyIndex(style.number, c.key) >= 0 &&
          !PageControlTag(c.kind).empty())
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

TEST(PageWindows, KindsBecomeTheirWindows) {
  const StyleEntry* gumdrops = FindStyle("Gumdrops");
  const StyleEntry* fountain = FindStyle("Fountain");
  ASSERT_TRUE(gumdrops && fountain);
  auto role_of = [](const StyleEntry& s, int id) {
    for (const PageWindow& w : PageWindows(s))
      if (w.id == id) return w.role;
    ADD_FAILURE() << "no window " << id;
    return PageWindowRole::kText;
  };
  EXPECT_EQ(role_of(*gumdrops, PageControlId(7, page::kFirstOwnControl)), PageWindowRole::kComboBox);
  EXPECT_EQ(role_of(*gumdrops, PageControlId(7, page::kBackgroundControl)),
            PageWindowRole::kColourButton);
  EXPECT_EQ(role_of(*gumdrops, PageControlId(7, page::ColourControl(3))),
            PageWindowRole::kColourButton);
  EXPECT_EQ(role_of(*gumdrops, PageControlId(7, page::EnableControl(3))), PageWindowRole::kCheckBox);
  EXPECT_EQ(role_of(*fountain, 270), PageWindowRole::kPlaceholder);
  // Until direction pickers exist their value is edited as a number.
  EXPECT_EQ(role_of(*fountain, PageControlId(4, page::kScrollControl)), PageWindowRole::kEdit);
}

TEST(PageWindows, DropDownItemsSplitAtSemicolons) {
  EXPECT_EQ(SplitItems("Spin;Pulse;Spiral"), (std::vector<std::string>{"Spin", "Pulse", "Spiral"}));
  EXPECT_EQ(SplitItems("a;;b;"), (std::vector<std::string>{"a", "", "b", ""}));
  EXPECT_EQ(SplitItems("one"), (std::vector<std::string>{"one"}));
  EXPECT_TRUE(SplitItems("").empty());
  EXPECT_TRUE(SplitItems(nullptr).empty());
}

TEST(PageWindows, PaletteListNamesThePalettesInChoiceOrder) {
  std::vector<std::string> items = SplitItems(kPaletteListItems);
  ASSERT_EQ(items.size(), static_cast<size_t>(kPaletteNameCount));
  for (int i = 0; i < kPaletteNameCount; ++i) EXPECT_EQ(items[static_cast<size_t>(i)], PaletteName(i));
}

// ---------------------------------------------------------------- spin fields

TEST(SpinFields, ValuesAreClampedNeverRefused) {
  EXPECT_EQ(SpinFieldValue("1,250,40", "300"), 250);
  EXPECT_EQ(SpinFieldValue("1,250,40", "0"), 1);
  EXPECT_EQ(SpinFieldValue("1,250,40", ""), 1);
  EXPECT_EQ(SpinFieldValue("1,250,40", "  17"), 17);
  EXPECT_EQ(SpinFieldValue("1,250,40", "12abc"), 12);
  EXPECT_EQ(SpinFieldValue("1,250,40", "99999999999999"), 250);
  EXPECT_EQ(SpinFieldValue("16,1024,128", "5000"), 1024);  // a typed Width of 5000
  EXPECT_EQ(SpinFieldValue("2,32760,64", "1"), 2);         // a typed Frames of 1
  EXPECT_EQ(SpinFieldValue("-10,10,0", "-20"), -10);
  EXPECT_EQ(SpinFieldValue("-10,10,0", "-3"), -3);
  // A range that does not parse reads as 0..100.
  EXPECT_EQ(SpinFieldValue("", "500"), 100);
  EXPECT_EQ(SpinFieldValue("garbage", "-5"), 0);
}

TEST(ColourText, ReadsAsAnUnsignedConversion) {
  EXPECT_EQ(ColourTextValue("16711680"), 0x00FF0000u);
  EXPECT_EQ(ColourTextValue("4294967295"), 0xFFFFFFFFu);
  EXPECT_EQ(ColourTextValue("4294967296"), 0xFFFFFFFFu);  // too large: the largest value
  EXPECT_EQ(ColourTextValue("-1"), 0xFFFFFFFFu);           // negative numbers wrap
  EXPECT_EQ(ColourTextValue("-2"), 0xFFFFFFFEu);
  EXPECT_EQ(ColourTextValue(""), 0u);
  EXPECT_EQ(ColourTextValue("12 red"), 12u);
}

TEST(SpinFields, StoredNumbersAreUnsignedUnlessTheRangeIsSigned) {
  SpinRange unsigned_range = ParseSpinText("0,99,25");
  EXPECT_EQ(StoredSpinValue(unsigned_range, 40), 40);
  EXPECT_EQ(StoredSpinValue(unsigned_range, -1), 99);
  SpinRange signed_range = ParseSpinText("-50,50,0");
  EXPECT_EQ(StoredSpinValue(signed_range, -1), -1);
  EXPECT_EQ(StoredSpinValue(signed_range, -80), -50);
  EXPECT_EQ(ShiftResetDelay(kHostCapOptimise), 4);
  EXPECT_EQ(ShiftResetDelay(0), 10);
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
  EXPECT_EQ(PlaceSample(245, 10, 128, 10).x, 58);
  // Larger than the sample: -31 / 2 is -15, not -16.
  EXPECT_EQ(PlaceSample(100, 100, 131, 100).x, -15);
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

TEST(Sample, PalettisedImagesAreShownInTheirColours) {
  uint8_t palette[kPaletteBytes] = {};
  for (int i = 0; i < 256; ++i) {
    palette[3 * i] = static_cast<uint8_t>(i);
    palette[3 * i + 2] = static_cast<uint8_t>(255 - i);
  }
  ImageBlock image = ImageCreate(13, 7, palette, 8);
  for (int y = 0; y < 7; ++y)
    for (int x = 0; x < 13; ++x) ImageSetPixel(image, x, y, static_cast<Colour>(x * 19 + y));
  ImageBlock got = ComposeSample(image, 21, 11, 0, true);
  ImageBlock want = ReferenceSample(image, 21, 11, 0, true);
  EXPECT_EQ(Pixels(got), Pixels(want));
  EXPECT_EQ(ImageGetPixel(got, 4, 2), MakeColour(0, 0, 255));  // index 0 at (0, 0) of the image
}

TEST(Sample, FailuresGiveNoPicture) {
  ImageBlock image = NoiseImage(4, 4, 1);
  EXPECT_FALSE(ComposeSample(ImageBlock(), 10, 10, 0, false));
  EXPECT_FALSE(ComposeSample(image, 0, 10, 0, false));
  EXPECT_FALSE(ComposeSample(image, 10, -1, 0, false));
  AllocFailureScope fail(0);
  EXPECT_FALSE(ComposeSample(image, 10, 10, 0, false));
}

// A style whose frame 0 is a known picture and whose background is settable.
struct FixedRecord final : StyleRecord {
  int FrameCount() const override { return 1; }
  ImageBlock RenderFrame(int) override { return NoiseImage(30, 20, 5); }
};
std::unique_ptr<StyleRecord> FixedInit(const ParamReader&, Random&) {
  return std::make_unique<FixedRecord>();
}
// The test page's background button holds whatever the reader is given.
Colour TestBackground(const ParamReader& reader, int flag) {
  return flag ? kNoColour : reader.ColourValue(1);
}

struct BackgroundReader final : ParamReader {
  Colour background = kNoColour;
  int32_t Spin(int) const override { return 0; }
  bool Checked(int) const override { return false; }
  Colour ColourValue(int) const override { return background; }
  int32_t Selection(int) const override { return 0; }
};

TEST(Sample, RendersOnTheStylesBackgroundOrTheFallback) {
  StyleEntry style{"Test", 0, {}, &FixedInit, &TestBackground};
  BackgroundReader reader;
  Random random;
  const Colour fallback = MakeColour(212, 208, 200);
  reader.background = MakeColour(1, 2, 3);
  SampleRender r = RenderSample(style, reader, random, 50, 40, fallback, false);
  ASSERT_TRUE(r.picture);
  EXPECT_EQ(r.image_width, 30);
  EXPECT_EQ(r.image_height, 20);
  EXPECT_EQ(ImageGetPixel(r.picture, 0, 0), reader.background);
  EXPECT_EQ(ImageGetPixel(r.picture, 10, 10), ImageGetPixel(NoiseImage(30, 20, 5), 0, 0));
  reader.background = kNoColour;
  r = RenderSample(style, reader, random, 50, 40, fallback, false);
  EXPECT_EQ(ImageGetPixel(r.picture, 0, 0), fallback);
  style.background = nullptr;
  r = RenderSample(style, reader, random, 50, 40, fallback, false);
  EXPECT_EQ(ImageGetPixel(r.picture, 49, 39), fallback);
  // An effect that cannot render yet leaves the sample empty.
  style.init = nullptr;
  EXPECT_FALSE(RenderSample(style, reader, random, 50, 40, fallback, false).picture);
}

// ---------------------------------------------------------------- emblem

TEST(EmblemTile, IsSeamlessAcrossEveryEdge) {
  ImageBlock tile = DrawEmblemTile();
  ASSERT_TRUE(tile);
  const int32_t n = Emblem::kTileSize;
  ASSERT_EQ(tile.width(), n);
  ASSERT_EQ(tile.height(), n);
  // The corner bubble shows in all four corners.
  Colour ground = ImageGetPixel(tile, n / 2, n / 2 + 3);
  for (Point corner : {Point{0, 0}, Point{n - 1, 0}, Point{0, n - 1}, Point{n - 1, n - 1}})
    EXPECT_NE(ImageGetPixel(tile, corner.x, corner.y), ground) << corner.x << "," << corner.y;
}

TEST(EmblemFrames, RiseOnePixelPerFrameAndLoop) {
  Emblem emblem;
  ASSERT_TRUE(emblem);
  const int32_t n = Emblem::kTileSize;
  const int32_t w = 2 * n + 5, h = n + 7;  // more than a tile, not a whole number of tiles
  for (int k : {0, 1, 5, n - 1}) {
    ImageBlock frame = emblem.Frame(k, w, h);
    ASSERT_TRUE(frame);
    for (int32_t y = 0; y < h; ++y)
      for (int32_t x = 0; x < w; ++x)
        ASSERT_EQ(ImageGetPixel(frame, x, y), ImageGetPixel(emblem.tile(), x % n, (y + k) % n))
            << "frame " << k << " at " << x << "," << y;
    EXPECT_EQ(Pixels(frame), Pixels(emblem.Frame(k + Emblem::kFrameCount, w, h)));
    EXPECT_EQ(Pixels(frame), Pixels(emblem.Frame(k - Emblem::kFrameCount, w, h)));
  }
  EXPECT_FALSE(emblem.Frame(0, 0, 5));
}

TEST(EmblemFrames, ShortMemoryGivesANullEmblem) {
  AllocFailureScope fail(0, true);
  Emblem emblem;
  EXPECT_FALSE(emblem);
  EXPECT_FALSE(emblem.Frame(0, 10, 10));
}

// ---------------------------------------------------------------- document names

TEST(DocumentNames, UntitledIsTheFileNameInAnyFolderAndCase) {
  EXPECT_TRUE(IsUntitledDocument("untitled.ts1"));
  EXPECT_TRUE(IsUntitledDocument("C:\\Users\\me\\Documents\\untitled.ts1"));
  EXPECT_TRUE(IsUntitledDocument("/home/me/UNTITLED.TS1"));
  EXPECT_FALSE(IsUntitledDocument("C:\\docs\\my untitled.ts1"));
  EXPECT_FALSE(IsUntitledDocument("C:\\untitled.ts1\\other.ts1"));
  EXPECT_FALSE(IsUntitledDocument(""));
  EXPECT_EQ(DocumentFolder("C:\\docs\\a.ts1"), "C:\\docs\\");
  EXPECT_EQ(DocumentFolder("C:/docs/sub\\a.ts1"), "C:/docs/sub\\");
  EXPECT_EQ(DocumentFolder("a.ts1"), "");
}

}  // namespace
}  // namespace tess
