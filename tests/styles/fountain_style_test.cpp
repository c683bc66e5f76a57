// Fountain, Solid and Shaped Fountain: frames against plain references (the
// gradient read at its rolled and turned place; every ring painted on every
// frame), roll senses, repeats, loops and seams, Solid's walk along its strip,
// the ring geometry, a whole build under failing allocations, and goldens.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "base/report.h"
#include "dialog/settings_reader.h"
#include "driver/build_driver.h"
#include "shell/main_dialog_ids.h"
#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/shaped_fountain.h"
#include "styles/style_table.h"
#include "tests/styles/shaped_fountain_reference.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_platform.h"
#include "tests/support/golden.h"
#include "tests/support/map_reader.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::Pixels;
using Changes = std::vector<std::pair<const char*, int32_t>>;
constexpr int kFountain = 4, kSolid = 5, kShaped = 6;

Settings Configured(int style, const Changes& changes) {
  Settings settings;
  for (const auto& [key, value] : changes) settings.SetStyleNumber(style, key, value);
  return settings;
}

// The style's configuration defaults with `changes`, painting with `fountain`
// instead of the built-in one when given.
std::unique_ptr<StyleRecord> Init(int style, const Changes& changes,
                                  const FountainRecord* fountain = nullptr) {
  const Settings settings = Configured(style, changes);
  PageRecords records;
  if (fountain) records.fountains.Put(style == kFountain ? 270 : 290, *fountain);
  Random random;
  const StyleEntry& entry = *StyleByNumber(style);
  return entry.init(SettingsReader(settings, entry, &records), random);
}

std::unique_ptr<ShapedFountainRecord> Shaped(const Changes& changes,
                                             ShapedFountainOptions options = {}) {
  const Settings settings = Configured(kShaped, changes);
  return ShapedFountainRecord::Create(SettingsReader(settings, *StyleByNumber(kShaped)), options);
}

FountainRecord BuiltIn(int id) {
  FountainRecord fountain;
  EXPECT_TRUE(BuiltInFountain(id, fountain));
  return fountain;
}

int Mod(int a, int n) { return ((a % n) + n) % n; }

// The largest channel step between neighbouring pixels inside the tile, and
// across its edges where the tile meets its next copy.
struct Steps {
  int inside = 0, seam = 0;
};
Steps MeasureSteps(const ImageBlock& image) {
  Steps s;
  const int w = image.width(), h = image.height();
  auto step = [](Colour a, Colour b) {
    int most = 0;
    for (int shift : {0, 8, 16})
      most = std::max(most, std::abs(int(a >> shift & 255) - int(b >> shift & 255)));
    return most;
  };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const Colour c = ImageGetPixel(image, x, y);
      int& across = x + 1 < w ? s.inside : s.seam;
      across = std::max(across, step(c, ImageGetPixel(image, (x + 1) % w, y)));
      int& down = y + 1 < h ? s.inside : s.seam;
      down = std::max(down, step(c, ImageGetPixel(image, x, (y + 1) % h)));
    }
  return s;
}

// ---------------------------------------------------------------- Fountain

// Frame k straight from the table of directions: the gradient of the
// direction's size read where the turn and the roll put each pixel (neither
// is called, so their senses are checked too).
std::vector<Colour> ReferenceFountainFrame(int d, int w, int h, int k, int frames) {
  const bool vertical = d == 0 || d == 3;
  const ImageBlock g = RenderFountain(BuiltIn(270), vertical ? h : w, vertical ? w : h);
  const int n = static_cast<int>((vertical ? h : w) * (static_cast<double>(k) / frames));
  std::vector<Colour> out;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      out.push_back(d == 0   ? ImageGetPixel(g, Mod(y + n, h), w - 1 - x)
                    : d == 2 ? ImageGetPixel(g, Mod(x + n, w), y)
                    : d == 3 ? ImageGetPixel(g, h - 1 - Mod(y - n, h), x)
                             : ImageGetPixel(g, Mod(x - n, w), y));
  return out;
}

// Every frame of each direction at odd sizes, N dividing the scroll length
// or not (100 x 29 / 50 is where the double phase rolls one pixel short).
// Frame 0, the preview, is the gradient unrolled; frame N is frame 0. A
// picker value no cell shows scrolls right.
TEST(FountainFrames, EqualTheGradientReadAtItsRolledPlace) {
  struct Case {
    int32_t scroll, w, h, frames, as;
  };
  for (const Case c : {Case{0, 37, 21, 9, 0}, Case{1, 37, 21, 9, 1}, Case{2, 37, 21, 9, 2},
                       Case{3, 37, 21, 9, 3}, Case{0, 16, 45, 16, 0}, Case{3, 45, 16, 50, 3},
                       Case{1, 100, 16, 50, 1}, Case{4, 23, 17, 6, 1}, Case{-1, 23, 17, 6, 1}}) {
    const Changes changes = {
        {"Width", c.w}, {"Depth", c.h}, {"Frames", c.frames}, {"Scroll", c.scroll}};
    auto record = Init(kFountain, changes);
    ASSERT_EQ(record->FrameCount(), c.frames);
    for (int k = 0; k < c.frames; ++k)
      ASSERT_EQ(Pixels(record->RenderFrame(k)), ReferenceFountainFrame(c.as, c.w, c.h, k, c.frames))
          << "scroll " << c.scroll << " " << c.w << "x" << c.h << " frame " << k;
    EXPECT_EQ(Pixels(record->RenderFrame(c.frames)), Pixels(record->RenderFrame(0)));
  }
}

// One pixel a frame when N is the scroll length: right (1) toward higher
// columns, left (2) lower, down (3) toward higher rows, up (0) lower.
TEST(FountainFrames, EachDirectionRollsTheWayItsArrowPoints) {
  struct Case {
    int32_t scroll;
    int dx, dy;
  };
  for (const Case c : {Case{1, 1, 0}, Case{2, -1, 0}, Case{3, 0, 1}, Case{0, 0, -1}}) {
    auto record =
        Init(kFountain, {{"Width", 32}, {"Depth", 32}, {"Frames", 32}, {"Scroll", c.scroll}});
    const ImageBlock f0 = record->RenderFrame(0), f1 = record->RenderFrame(1);
    for (int y = 0; y < 32; ++y)
      for (int x = 0; x < 32; ++x)
        ASSERT_EQ(ImageGetPixel(f1, Mod(x + c.dx, 32), Mod(y + c.dy, 32)), ImageGetPixel(f0, x, y))
            << "scroll " << c.scroll;
  }
}

// More frames than pixels: 16 pixels over 64 frames hold each roll for four.
TEST(FountainFrames, MoreFramesThanPixelsRepeatFrames) {
  auto record = Init(kFountain, {{"Width", 16}, {"Frames", 64}});
  for (int k = 1; k < 64; ++k)
    EXPECT_EQ(Pixels(record->RenderFrame(k)) == Pixels(record->RenderFrame(k - 1)), k % 4 != 0)
        << k;
}

// With a closed fountain no frame steps more across the tile's edges than
// inside; the measure does see an open fountain's black end meet its white.
TEST(FountainFrames, ClosedFountainsTileWithoutSeams) {
  FountainRecord open;
  open.mode = kFountainOpen;
  open.end_colour = 0xFFFFFF;
  open.marker_count = 0;
  for (int32_t d = 0; d < 4; ++d) {
    const Changes changes = {{"Width", 48}, {"Depth", 40}, {"Frames", 12}, {"Scroll", d}};
    auto record = Init(kFountain, changes);
    for (int k = 0; k < 12; ++k) {
      const Steps s = MeasureSteps(record->RenderFrame(k));
      EXPECT_LE(s.seam, s.inside) << d << " frame " << k;
    }
    const Steps s = MeasureSteps(Init(kFountain, changes, &open)->RenderFrame(0));
    EXPECT_GT(s.seam, 10 * s.inside) << d;
  }
}

// trunc(length x p), p = (k mod n) / n in double: 29 / 50 rounds below 0.58.
TEST(FountainFrames, ScrollOffsetTakesThePhaseInDouble) {
  EXPECT_EQ(ScrollOffset(100, 29, 50), 57);
  EXPECT_EQ(ScrollOffset(256, 64, 64), 0);
  EXPECT_EQ(ScrollOffset(256, -1, 64), 252);
  EXPECT_EQ(ScrollOffset(256, 1, 2), 128);
  EXPECT_EQ(ScrollOffset(37, 5, 0), 0);
}

// ---------------------------------------------------------------- Solid

// The tile in one colour, strip column trunc(256 x k / N): at N = 256 each
// column once, in order; at 512 each held for two frames.
TEST(SolidFrames, EachFrameIsOneStripColourInOrder) {
  const ImageBlock strip = RenderFountain(BuiltIn(290), 256, 1);
  for (const int32_t frames : {256, 512, 7}) {
    auto record = Init(kSolid, {{"Width", 21}, {"Depth", 17}, {"Frames", frames}});
    for (int k = 0; k <= frames; ++k) {
      const int column =
          frames == 7 ? static_cast<int>(256 * (k % 7 / 7.0)) : k % frames * 256 / frames;
      ASSERT_EQ(Pixels(record->RenderFrame(k)),
                std::vector<Colour>(21 * 17, ImageGetPixel(strip, column, 0)))
          << frames << " frame " << k;
    }
  }
}

// ---------------------------------------------------------------- Shaped Fountain

// Size 16: a 64 x 64 canvas centred on (32, 32), 32 rings, t = i / 32.
TEST(ShapedFountainGeometry, RingsAtSizeSixteen) {
  struct Case {
    int32_t shape, i, expected_shape, left, corner;  // boxes are centred: right = 64 - left
  };
  for (const Case c : {Case{kRingCircle, 0, 0, -13, 0}, Case{kRingCircle, 16, 0, 9, 0},
                       Case{kRingCircle, 31, 0, 31, 0}, Case{kRingSquare, 0, 2, 0, 0},
                       Case{kRingSquare, 10, 2, 10, 0}, Case{4, 10, 2, 10, 0},
                       Case{-1, 31, 2, 31, 0},
                       Case{kRingBiscuit, 10, 3, 10, 10}}) {
    const Ring ring = ShapedFountainRing(c.shape, c.i, 32, 32, 32);
    EXPECT_EQ(ring.shape, c.expected_shape);
    EXPECT_EQ((std::vector{ring.box.left, ring.box.top, ring.box.right, ring.box.bottom,
                           ring.corner_width, ring.corner_height}),
              (std::vector{c.left, c.left, 64 - c.left, 64 - c.left, c.corner, c.corner}))
        << c.shape << " ring " << c.i;
  }
  for (const auto& [i, a] : {std::pair{0, 64}, {5, 54}, {31, 2}}) {
    std::vector<int32_t> corners;
    for (const Point& p : ShapedFountainRing(kRingDiamond, i, 32, 32, 32).diamond)
      corners.insert(corners.end(), {p.x, p.y});
    EXPECT_EQ(corners, (std::vector{32 - a, 32, 32, 32 - a, 32 + a, 32, 32, 32 + a, 32 - a, 32}))
        << i;
  }
  for (int32_t i = 0; i < 32; ++i) EXPECT_EQ(RingStripColumn(i, 32), 8 * i);
}

TEST(ShapedFountainFrames, SizeSixteenTwoFramesRollByZeroThenHalf) {
  auto record = Shaped({{"Size", 16}, {"Frames", 2}});
  EXPECT_EQ((std::vector{record->canvas_side(), record->ring_count(), record->StripRoll(0),
                         record->StripRoll(1)}),
            (std::vector{64, 32, 0, 128}));
  const ImageBlock frame = record->RenderFrame(1);
  EXPECT_EQ((std::vector{frame.width(), frame.height(), frame.bits()}), (std::vector{16, 16, 24}));
  EXPECT_EQ(Pixels(record->strip()), Pixels(RenderFountain(BuiltIn(306), 256, 1)));
}

// The lookup gives the bytes of painting every ring on every frame (every
// shape, an index outside the list drawing squares; both scroll senses;
// even and odd sides), the ring numbers are those of the plain painting
// order, and frame N is frame 0. Opposite edges meet: exactly for circles,
// squares and biscuits; within the inside's steps for diamonds, which the
// polygon rule leans by a canvas pixel.
TEST(ShapedFountainFrames, LookupEqualsPaintingEveryRing) {
  for (int32_t shape : {0, 1, 2, 3, 4})
    for (int32_t scroll : {0, 7})
      for (int32_t size : {16, 17, 37}) {
        const Changes changes = {
            {"Size", size}, {"Frames", 5}, {"Shape", shape}, {"Scroll", scroll}};
        auto record = Shaped(changes);
        auto plain_order = Shaped(changes, {.innermost_first = false});
        ASSERT_TRUE(record->numbered_innermost_first());
        ASSERT_EQ(record->scroll(), scroll != 0);
        for (int k = 0; k < 5; ++k) {
          const ImageBlock frame = record->RenderFrame(k);
          ASSERT_EQ(Pixels(frame), Pixels(testing::ShapedFountainReferenceFrame(*record, k)))
              << "shape " << shape << " scroll " << scroll << " size " << size << " frame " << k;
          ASSERT_EQ(Pixels(frame), Pixels(plain_order->RenderFrame(k)));
          const Steps s = MeasureSteps(frame);
          EXPECT_TRUE(shape == kRingDiamond ? s.seam < s.inside / 2 : s.seam == 0)
              << shape << " " << size;
        }
        EXPECT_EQ(Pixels(record->RenderFrame(5)), Pixels(record->RenderFrame(0)));
      }
  auto defaults = Shaped({});  // Size 88: the painting is slow, so a few frames
  for (int k : {0, 1, 63})
    EXPECT_EQ(Pixels(defaults->RenderFrame(k)),
              Pixels(testing::ShapedFountainReferenceFrame(*defaults, k)));
  // No side leaves a gap in a row that sends it the plain way (1024 neither,
  // too slow to check under the sanitizers).
  for (int32_t shape = 0; shape < 4; ++shape)
    for (int32_t size : {18, 19, 24, 31, 40, 97, 256})
      EXPECT_TRUE(Shaped({{"Size", size}, {"Shape", shape}})->numbered_innermost_first())
          << shape << " " << size;
}

// ---------------------------------------------------------------- failures and goldens

// A whole build of each effect through the build driver, failing each
// allocation in turn: each run succeeds or ends with the one "Memory
// error", and leaves no block behind.
TEST(FountainStylesMemory, EveryFailedAllocationIsOneMemoryErrorAndFreesAll) {
  struct Case {
    int style;
    std::vector<std::pair<int, int32_t>> page;  // by the control's n
  };
  for (const Case& c : {Case{kFountain, {{2, 20}, {10, 3}}}, Case{kSolid, {}},
                        Case{kShaped, {{6, 16}, {30, 1}}}}) {
    const auto table = StyleTable();
    testing::MapReader dialog;
    dialog.values = {{kEffectList, static_cast<int32_t>(StyleByNumber(c.style) - table.data())},
                     {kDelayEdit, 4}, {kPaletteList, 6}, {kTrueColour, 1},
                     {PageControlId(c.style, 1), 3}, {PageControlId(c.style, 2), 16},
                     {PageControlId(c.style, 3), 16}};
    for (const auto& [n, value] : c.page) dialog.values[PageControlId(c.style, n)] = value;
    Random random;
    testing::FakeHost host;
    RecordingReporter reporter;
    testing::FakePlatform platform;
    auto run = [&] {
      host = testing::FakeHost();
      reporter.messages.clear();
      return RunBuild({dialog, table, random, host, 0x4321, reporter, platform, nullptr, {}},
                      BuildMode::kOk);
    };
    const int64_t before = AllocCurrentBytes();
    long total = 0;
    {
      AllocFailureScope count(-1);
      ASSERT_TRUE(run()) << c.style;
      total = count.Count();
    }
    for (long n = 0; n < total; ++n) {
      AllocFailureScope fail(n);
      const bool ok = run();
      const std::vector<std::string> expected = ok ? std::vector<std::string>{}
                                                   : std::vector<std::string>{"Memory error"};
      ASSERT_EQ(reporter.messages, expected) << c.style << " allocation " << n;
      ASSERT_EQ(AllocCurrentBytes(), before) << c.style << " allocation " << n;
    }
  }
}

// Frames 0, 1 and N-1 at the configuration's defaults and at odd sizes. A
// difference means the picture changed: check it is intended, then rebuild
// the target regenerate-golden.
TEST(FountainStylesGolden, FramesMatchTheirChecksums) {
  struct Case {
    const char* name;
    int style;
    Changes changes;
  };
  const std::vector<Case> cases = {
      {"fountain_defaults", kFountain, {}},
      {"fountain_up_37x21", kFountain,
       {{"Width", 37}, {"Depth", 21}, {"Frames", 9}, {"Scroll", 0}}},
      {"fountain_down_21x37", kFountain,
       {{"Width", 21}, {"Depth", 37}, {"Frames", 7}, {"Scroll", 3}}},
      {"solid_defaults", kSolid, {}},
      {"solid_21x17", kSolid, {{"Width", 21}, {"Depth", 17}, {"Frames", 7}}},
      {"shaped_defaults", kShaped, {}},
      {"shaped_diamond_37", kShaped, {{"Size", 37}, {"Frames", 6}, {"Shape", 1}}},
      {"shaped_biscuit_37", kShaped, {{"Size", 37}, {"Frames", 6}, {"Shape", 3}, {"Scroll", 0}}},
  };
  testing::GoldenSet golden("fountain_styles");
  for (const Case& c : cases) {
    auto record = Init(c.style, c.changes);
    const int n = record->FrameCount();
    for (int k : {0, 1, n - 1})
      golden.Add(std::string(c.name) + "_frame" + std::to_string(k),
                 testing::ImageChecksum(record->RenderFrame(k)));
  }
  EXPECT_TRUE(golden.Verify());
}

}  // namespace
}  // namespace tess
