// Phasers on Stun: the fast renderer against the whole-canvas method, golden
// checksums, and the properties the beam list, the fills and the frames must
// keep.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dialog/settings_reader.h"
#include "fills/fill_store.h"
#include "shell/settings.h"
#include "draw/canvas.h"
#include "draw/draw.h"
#include "styles/effects.h"
#include "styles/page_layout.h"
#include "styles/phasers.h"
#include "tests/support/golden.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

constexpr int kStyle = 10;

const StyleEntry& Phasers() {
  const StyleEntry* entry = FindStyle("Phasers on Stun");
  EXPECT_NE(entry, nullptr);
  return *entry;
}

// Page values as the configuration holds them: the built-in defaults with a
// few keys changed.
using Overrides = std::vector<std::pair<const char*, int32_t>>;
// Colour slots (1..5) painted with a fill rather than their Simple colour.
using Fills = std::vector<std::pair<int, FillDescriptor>>;

Settings MakeSettings(const Overrides& overrides) {
  Settings settings;
  for (const auto& [key, value] : overrides) settings.SetStyleNumber(kStyle, key, value);
  return settings;
}

PageRecords MakeFills(const Fills& fills) {
  PageRecords records;
  for (const auto& [slot, fill] : fills)
    records.fills.Put(PageControlId(kStyle, page::ColourControl(slot)), fill);
  return records;
}

std::unique_ptr<PhasersRecord> MakeRecord(const Overrides& overrides, const Fills& fills = {}) {
  Settings settings = MakeSettings(overrides);
  PageRecords store = MakeFills(fills);
  SettingsReader reader(settings, Phasers(), &store);
  Random random;
  return PhasersRecord::Init(reader, random);
}

FillDescriptor Gradient(uint32_t type, int32_t rotation, Colour start, Colour end,
                        int32_t centre_x = 0) {
  FillDescriptor fill;
  fill.kind = kFillGradient;
  fill.gradient = {start, end, type, rotation, centre_x, 0, {}};
  return fill;
}

// All fold across, the linear ones down as well: their edges do not meet.
FillDescriptor Linear() { return Gradient(kGradientLinear, 30, 0x0000C0FF, 0x00FF6000); }
FillDescriptor Steep() { return Gradient(kGradientLinear, 60, 0x0000C0FF, 0x00FF6000); }
FillDescriptor OffCentreRadial() { return Gradient(kGradientRadial, 0, 0x00FFF0C0, 0x00A02060, 30); }

// Every line kind but `kind` switched off ("" switches them all off).
Overrides Only(std::string_view kind) {
  Overrides o;
  for (const char* k : {"LineEast2South", "LineWest2South", "LineHorizontal", "LineVertical"})
    if (k != kind) o.push_back({k, 0});
  return o;
}

// ---------------------------------------------------------------- reference

// The whole-canvas method, pixel by pixel through the plain accessors: the
// segments of each kind as doubled coordinates on a black 2W x 2H canvas, a
// pen of twice the power in the entry's grey, the canvas halved by the
// scaling routine, then the colour blended through the mask's blue byte.
ImageBlock ReferenceMask(const PhasersBeam& e, int32_t w, int32_t h) {
  Canvas canvas = Canvas::Open(2 * w, 2 * h);
  canvas.Clear(0);
  const Colour grey = MakeColour(e.brightness, e.brightness, e.brightness);
  // Diagonals run from a tile beyond the start's corner to one beyond the end's.
  const int32_t ox = e.kind == BeamKind::kEastToSouth ? w : e.kind == BeamKind::kWestToSouth ? -w : 0;
  const int32_t oy = ox != 0 ? -h : 0;
  auto segment = [&](Point a, Point b) {
    canvas.DrawLine({2 * (a.x + ox), 2 * (a.y + oy)}, {2 * (b.x - ox), 2 * (b.y - oy)}, 2 * e.thickness, grey);
  };
  segment(e.start, e.end);
  if (e.has_second) segment(e.second_start, e.second_end);
  return ScaleByPercent(canvas.image(), 50, 50);
}

ImageBlock ReferenceFrame(const PhasersRecord& record, int k) {
  const int32_t w = record.width(), h = record.height();
  ImageBlock frame = ImageCreate(w, h, nullptr, 24);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) ImageSetPixel(frame, x, y, record.background());
  const int phase = ((k % record.FrameCount()) + record.FrameCount()) % record.FrameCount();
  for (const PhasersBeam& e : record.beams()) {
    if (e.frame != phase) continue;
    ImageBlock mask = ReferenceMask(e, w, h);
    EXPECT_EQ(mask.width(), w);
    EXPECT_EQ(mask.height(), h);
    const ImageBlock* fill = record.FillImage(e);
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        uint32_t m = ColourBlue(ImageGetPixel(mask, x, y));
        Colour d = ImageGetPixel(frame, x, y);
        Colour ink = fill ? ImageGetPixel(*fill, x, y) : e.colour;
        auto mix = [&](uint32_t dc, uint32_t cc) { return dc * (255 - m) / 255 + cc * m / 255; };
        ImageSetPixel(frame, x, y,
                      MakeColour(mix(ColourRed(d), ColourRed(ink)),
                                 mix(ColourGreen(d), ColourGreen(ink)),
                                 mix(ColourBlue(d), ColourBlue(ink))));
      }
    }
  }
  return frame;
}

// ---------------------------------------------------------------- cases

struct Case {
  const char* name;
  Overrides overrides;
  // False where the pen is wide for the tile: a diagonal close to an edge
  // then needs a third copy beyond a corner of the doubled canvas, which the
  // two segments do not draw, so the corners lose a sliver of beam.
  bool seamless = true;
  Fills fills = {};
};

// A smaller animation for the hand-picked cases, to keep the reference fast.
const Overrides kSmall = {{"Width", 96}, {"Depth", 64}, {"Frames", 12}, {"Density", 40}};

Overrides With(Overrides a, const Overrides& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// The configuration defaults (192 x 128, 64 frames, 256 beams, power 5) and
// hand-picked pages: each line kind alone, the shortest loop, the thinnest
// and thickest pens, and small tiles of odd shape.
const std::vector<Case>& Cases() {
  static const std::vector<Case> cases = {
      {"defaults", {}},
      {"east_to_south", With(Only("LineEast2South"), kSmall)},
      {"west_to_south", With(Only("LineWest2South"), kSmall)},
      {"horizontal", With(Only("LineHorizontal"), kSmall)},
      {"vertical", With(Only("LineVertical"), kSmall)},
      {"two_frames", With(kSmall, {{"Frames", 2}, {"Density", 8}})},
      // One colour still draws its index: the sequence must not shift.
      {"one_colour", With(kSmall, {{"FillEnable2", 0}, {"FillEnable3", 0}, {"FillEnable4", 0},
                                   {"FillEnable5", 0}})},
      {"power_1", With({{"Power", 1}}, kSmall)},
      {"power_8", With({{"Power", 8}}, kSmall)},
      {"tile_16x16", {{"Width", 16}, {"Depth", 16}, {"Density", 32}, {"Frames", 6}}, false},
      {"tile_37x21", {{"Width", 37}, {"Depth", 21}, {"Density", 40}, {"Frames", 5},
                      {"Background", 0x204060}, {"FillEnable3", 0}}},
      {"linear_fill", kSmall, true, {{1, Linear()}}},
      // Every beam in the sweep, so a step at the seam would stand out.
      {"linear_fill_alone", With(kSmall, {{"FillEnable2", 0}, {"FillEnable3", 0}, {"FillEnable4", 0},
                                          {"FillEnable5", 0}}), true, {{1, Steep()}}},
      {"fills_37x21", {{"Width", 37}, {"Depth", 21}, {"Density", 40}, {"Frames", 5}}, true,
       {{1, OffCentreRadial()}, {4, Linear()}}},
  };
  return cases;
}

std::vector<int> ProbedFrames(int n) { return n > 2 ? std::vector{0, 1, n - 1} : std::vector{0, 1}; }

TEST(PhasersGolden, FramesMatchTheirChecksums) {
  testing::GoldenSet golden("phasers");
  for (const Case& c : Cases()) {
    std::unique_ptr<PhasersRecord> record = MakeRecord(c.overrides, c.fills);
    ASSERT_NE(record, nullptr) << c.name;
    for (int k : ProbedFrames(record->FrameCount()))
      golden.Add(std::string(c.name) + ".frame" + std::to_string(k),
                 testing::ImageChecksum(record->RenderFrame(k)));
  }
  EXPECT_TRUE(golden.Verify());
}

// The renderer marks and halves only what the pen touches; it must give the
// bytes of the whole-canvas method. Small animations are compared on every
// frame, last first, where masks of different beams overlap; the reference is
// slow at full size, so the defaults are compared on frame 0, which holds
// fades wrapped from the end of the loop.
TEST(PhasersRender, EqualsTheWholeCanvasMethod) {
  for (const Case& c : Cases()) {
    std::unique_ptr<PhasersRecord> record = MakeRecord(c.overrides, c.fills);
    ASSERT_NE(record, nullptr) << c.name;
    std::vector<int> frames = ProbedFrames(record->FrameCount());
    if (record->width() * record->height() * record->FrameCount() <= 64 * 64 * 8)
      for (int k = record->FrameCount() - 1; k >= 2; --k) frames.push_back(k);
    if (c.overrides.empty()) frames = {0};
    for (int k : frames)
      EXPECT_EQ(testing::Pixels(record->RenderFrame(k)),
                testing::Pixels(ReferenceFrame(*record, k)))
          << c.name << " frame " << k;
  }
}

// ---------------------------------------------------------------- beam list

// With no line kind checked the effect draws east-to-south lines only: the
// same picture as checking that box alone. The diagonal's foot takes the
// quotient Y/H in double, so now and then it lands one short of W*Y/H.
TEST(PhasersBeams, NoCheckedKindDrawsEastToSouthAndTheFootTakesTheQuotientInDouble) {
  std::unique_ptr<PhasersRecord> record = MakeRecord(Only(""));
  for (const PhasersBeam& e : record->beams()) EXPECT_EQ(e.kind, BeamKind::kEastToSouth);
  std::unique_ptr<PhasersRecord> east = MakeRecord(Only("LineEast2South"));
  EXPECT_EQ(testing::Pixels(record->RenderFrame(0)), testing::Pixels(east->RenderFrame(0)));
  EXPECT_EQ(DiagonalFoot(153, 13, 17), 116);  // 117 exactly
  EXPECT_EQ(DiagonalFoot(192, 64, 128), 96);
  EXPECT_EQ(DiagonalFoot(128, 0, 128), 0);
}

// ---------------------------------------------------------------- frames

TEST(PhasersFrames, FrameNIsFrameZeroAndTheSeedDecides) {
  auto frames = [](int32_t seed) {
    std::unique_ptr<PhasersRecord> record =
        MakeRecord({{"Seed", seed}, {"Frames", 4}, {"Density", 16}}, {{1, Linear()}});
    std::vector<std::vector<Colour>> out;
    for (int k = -1; k <= 4; ++k) out.push_back(testing::Pixels(record->RenderFrame(k)));
    return out;
  };
  std::vector<std::vector<Colour>> a = frames(100);
  EXPECT_EQ(a[5], a[1]);  // frame 4 is frame 0
  EXPECT_EQ(a[0], a[4]);  // frame -1 is frame 3
  EXPECT_EQ(frames(100), a);
  EXPECT_NE(frames(101), a);
}

// A 2 x 2 mosaic of the tile, optionally turned by a quarter so that the row
// seam becomes a column seam, optionally cut short by `crop` columns first.
ImageBlock Mosaic(const ImageBlock& frame, bool turned, int crop) {
  ImageBlock tile = turned ? TurnClockwise(frame) : DuplicateGlobalBlock(frame);
  const int w = tile.width() - crop, h = tile.height();
  ImageBlock out = ImageCreate(2 * w, 2 * h, nullptr, 24);
  for (int y = 0; y < 2 * h; ++y)
    for (int copy = 0; copy < 2; ++copy)
      std::memcpy(out.Row(y) + 3 * copy * w, tile.Row(y % h), 3 * static_cast<size_t>(w));
  return out;
}

// Step after column x of a mosaic: the sum over its rows of |left - right|
// per channel, summed over all frames of the animation. At x = W - 1 it is
// the seam between two tiles; elsewhere it lies inside a tile. Only columns
// first .. last are measured.
std::vector<double> ColumnSteps(PhasersRecord& record, bool turned, int crop, int first,
                                int last) {
  std::vector<double> steps(static_cast<size_t>(last + 1), 0.0);
  for (int k = 0; k < record.FrameCount(); ++k) {
    ImageBlock m = Mosaic(record.RenderFrame(k), turned, crop);
    for (int y = 0; y < m.height(); ++y) {
      const uint8_t* row = m.Row(y);
      for (int x = first; x <= last; ++x)
        for (int ch = 0; ch < 3; ++ch)
          steps[static_cast<size_t>(x)] += std::abs(row[3 * x + ch] - row[3 * x + 3 + ch]);
    }
  }
  return steps;
}

// The seam is compared with the boundaries of the tile's outer tenth on both
// sides of it, not with the whole interior: vertical beams (and horizontal
// ones, for the row seam) never come that close to an edge, so only
// diagonals cross the seam and its neighbours alike. Diagonal ends are whole
// pixels, so a diagonal may step up to a pixel sideways at the seam where it
// moves by W/H pixels per row inside: the seam may exceed its neighbours'
// largest step by half.
bool SeamLooksLikeInterior(PhasersRecord& record, bool turned, int crop = 0) {
  const int tile = (turned ? record.height() : record.width()) - crop;
  const int seam = tile - 1, band = std::max(tile / 10, 2);
  std::vector<double> steps = ColumnSteps(record, turned, crop, seam - band, seam + band);
  double largest = 0;
  for (int d = 1; d <= band; ++d)
    largest = std::max({largest, steps[static_cast<size_t>(seam - d)],
                        steps[static_cast<size_t>(seam + d)]});
  return steps[static_cast<size_t>(seam)] <= 1.5 * largest;
}

TEST(PhasersFrames, TwoByTwoMosaicShowsNoSeam) {
  for (const Case& c : Cases()) {
    if (!c.seamless) continue;
    std::unique_ptr<PhasersRecord> record = MakeRecord(c.overrides, c.fills);
    EXPECT_TRUE(SeamLooksLikeInterior(*record, false)) << c.name << " columns";
    EXPECT_TRUE(SeamLooksLikeInterior(*record, true)) << c.name << " rows";
  }
  // The statistic sees a real break: a tile cut short by a few columns no
  // longer continues its diagonals across the seam.
  std::unique_ptr<PhasersRecord> record = MakeRecord(With(Only("LineEast2South"), kSmall));
  EXPECT_FALSE(SeamLooksLikeInterior(*record, false, 5));
}

// Beams of a filled slot take their ink from the fill laid seamlessly over
// the tile; a fill whose two ends are one colour therefore paints what that
// Simple colour paints, and the slot draws the same random numbers either way.
TEST(PhasersFills, InkComesFromTheSeamlessFillAndOneColourGradientsAreFlat) {
  const Overrides small = With(kSmall, {{"FillColor1", 0x3080D0}, {"FillColor3", 0x3080D0}});
  std::unique_ptr<PhasersRecord> flat = MakeRecord(small);
  std::unique_ptr<PhasersRecord> even = MakeRecord(
      small, {{1, Gradient(kGradientRadial, 0, 0x3080D0, 0x3080D0)},
              {3, Gradient(kGradientLinear, 60, 0x3080D0, 0x3080D0)}});
  for (int k = 0; k < flat->FrameCount(); ++k)
    EXPECT_EQ(testing::Pixels(flat->RenderFrame(k)), testing::Pixels(even->RenderFrame(k))) << k;

  std::unique_ptr<PhasersRecord> filled = MakeRecord(kSmall, {{1, Linear()}});
  const std::vector<Colour> expected = testing::Pixels(RenderSeamlessFill(Linear(), 96, 64));
  for (const PhasersBeam& beam : filled->beams()) {
    const ImageBlock* ink = filled->FillImage(beam);
    ASSERT_EQ(ink != nullptr, beam.colour == 0x0000FFu) << "slot 1 is red";
    if (ink) {
      EXPECT_EQ(testing::Pixels(*ink), expected);
    }
  }
}

// ---------------------------------------------------------------- failures

// Every allocation of initialisation (fill pictures included) and of a frame
// is checked.
TEST(PhasersFailures, ShortMemoryGivesNoRecordAndNoFrame) {
  Settings settings = MakeSettings({{"Density", 8}, {"Frames", 2}});
  PageRecords fills = MakeFills({{2, Linear()}, {5, OffCentreRadial()}});
  SettingsReader reader(settings, Phasers(), &fills);
  Random random;
  long count = 0;
  {
    AllocFailureScope probe(1 << 30);
    ASSERT_NE(PhasersRecord::Init(reader, random), nullptr);
    count = probe.Count();
  }
  ASSERT_GT(count, 0);
  for (long n = 0; n < count; ++n) {
    AllocFailureScope fail(n);
    EXPECT_EQ(PhasersRecord::Init(reader, random), nullptr) << "allocation " << n;
  }
  std::unique_ptr<PhasersRecord> record = PhasersRecord::Init(reader, random);
  AllocFailureScope fail(0, true);
  EXPECT_FALSE(record->RenderFrame(0));
}

}  // namespace
}  // namespace tess
