#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <fstream>
#include <iterator>

#include "base/bytes.h"
#include "output/build_driver.h"
#include "output/palette.h"
#include "output/quantize.h"
#include "output/remap.h"
#include "shell/main_dialog_ids.h"
#include "tests/output/build_test_style.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_platform.h"
#include "tests/support/gif_decoder.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

namespace fs = std::filesystem;
using namespace tess::testing;

constexpr Colour kBg = 0x00336699;
constexpr HostHandle kOwner = 0x4321;
// Offsets of the 32-bit records move by this after the first handle.
constexpr size_t kGrowth = sizeof(HostHandle) - 4;

uint32_t Word(const std::vector<uint8_t>& record, size_t offset32) {
  return get_u32le(&record[offset32 < 12 ? offset32 : offset32 + kGrowth]);
}
int32_t Signed(const std::vector<uint8_t>& record, size_t offset32) {
  return static_cast<int32_t>(Word(record, offset32));
}
HostHandle Handle(const std::vector<uint8_t>& record) {
  HostHandle h = 0;
  std::memcpy(&h, &record[8], sizeof h);
  return h;
}
std::vector<uint8_t> TaskPalette(const std::vector<uint8_t>& task) {
  auto begin = task.begin() + 28 + static_cast<long>(kGrowth);
  return {begin, begin + kPaletteBytes};
}

class CountingFrontEnd final : public BuildFrontEnd {
 public:
  void BeginWaitCursor() override { ++begun; }
  void EndWaitCursor() override { ++ended; }
  int begun = 0, ended = 0;
};

// One build against a fake host, with the dialog at the configuration's
// defaults and a small moving-block style selected.
class BuildTest : public ::testing::Test {
 protected:
  BuildTest() {
    auto& v = dialog.values;
    v[kEffectList] = kStyleMoving;
    v[kDelayEdit] = 4;
    v[kPaletteList] = 6;
    v[kAddComment] = 1;
    v[kMaskBackground] = 1;
    v[kTrueColour] = 1;
    v[kTestFrames] = 3;
    v[kTestWidth] = 13;
    v[kTestHeight] = 7;
    v[kTestBackground] = static_cast<int32_t>(kBg);
  }

  bool Run(BuildMode mode = BuildMode::kOk) {
    BuildContext context{dialog, styles,   random, host, kOwner, reporter, platform,
                         &front_end, options};
    return RunBuild(context, mode);
  }
  void Set(int id, int32_t value) { dialog.values[id] = value; }

  // The style's frames as the build renders them, true colour.
  FrameList Rendered() {
    FrameList frames;
    Random r;
    EXPECT_TRUE(StyleBuild(styles[static_cast<size_t>(dialog.values[kEffectList])], dialog, r,
                           dialog.values[kDelayEdit], frames));
    return frames;
  }

  std::vector<const FakeHost::Received*> Images() const { return host.Of(kHostAddImage); }
  const std::vector<uint8_t>& Task() const { return host.calls.at(TaskIndex()).record; }
  size_t TaskIndex() const {
    for (size_t i = 0; i < host.calls.size(); ++i)
      if (host.calls[i].command == kHostCreateTask || host.calls[i].command == kHostCreateTestTask)
        return i;
    ADD_FAILURE() << "no file object";
    return 0;
  }
  static ImageBlock Lent(const FakeHost::Received* call) {
    return ImageBlock::FromBytes(call->image.data(), call->image.size());
  }
  ImageBlock Frame(size_t i) const { return Lent(Images().at(i)); }
  int32_t TransparentIndex(size_t i) const { return Signed(Images().at(i)->record, 36); }
  uint32_t TransparentFlag(size_t i) const { return Word(Images().at(i)->record, 12); }
  bool Saw(const std::string& status) const {
    auto all = host.Statuses();
    return std::find(all.begin(), all.end(), status) != all.end();
  }

  MapReader dialog;
  std::vector<StyleEntry> styles = TestStyles();
  Random random;
  FakeHost host;
  RecordingReporter reporter;
  FakePlatform platform;
  CountingFrontEnd front_end;
  BuildOptions options;
};

// ---------------------------------------------------------------- host delivery

TEST_F(BuildTest, DefaultsDeliverEveryFrameThenCommentAndClose) {
  ASSERT_TRUE(Run());
  EXPECT_TRUE(reporter.messages.empty());
  EXPECT_EQ(host.TaskCommands(), (std::vector<int32_t>{1, 2, 2, 2, 3, 4}));

  const std::vector<uint8_t>& task = Task();
  HostHandle object = host.calls[TaskIndex()].data;
  ASSERT_EQ(task.size(), 1069 + kGrowth);
  EXPECT_EQ(Word(task, 0), 1069 + kGrowth);
  EXPECT_EQ(Word(task, 4), 513u);
  EXPECT_EQ(Handle(task), kOwner);
  EXPECT_EQ(Word(task, 12), 13u);
  EXPECT_EQ(Word(task, 16), 7u);
  EXPECT_EQ(Word(task, 20), 8u);
  EXPECT_EQ(Word(task, 24), 0u);
  EXPECT_EQ(Word(task, 796), 0u);
  EXPECT_EQ(Word(task, 800), 3u);
  EXPECT_EQ(Word(task, 1065), 0u);  // no transparent background
  for (size_t i = 804; i < 1065; ++i) ASSERT_EQ(task[i + kGrowth], 0) << i;
  std::vector<uint8_t> orthogonal(kPaletteBytes);
  BuildFixedPalette(orthogonal.data(), nullptr, 6);
  EXPECT_EQ(TaskPalette(task), orthogonal);

  // True colour is on by default: the host gets the rendered frames as they are.
  FrameList rendered = Rendered();
  auto images = Images();
  ASSERT_EQ(images.size(), 3u);
  for (int i = 0; i < 3; ++i) {
    const auto* call = images[static_cast<size_t>(i)];
    EXPECT_EQ(call->object, object);
    EXPECT_EQ(call->record.size(), 104 + kGrowth);
    EXPECT_EQ(Word(call->record, 0), 104 + kGrowth);
    EXPECT_EQ(Word(call->record, 4), 513u);
    EXPECT_NE(Handle(call->record), 0u);
    EXPECT_EQ(Word(call->record, 12), 0u);
    EXPECT_EQ(Signed(call->record, 16), 4);
    EXPECT_EQ(Word(call->record, 20) | Word(call->record, 24) | Word(call->record, 28), 0u);
    EXPECT_EQ(Signed(call->record, 32), i);
    EXPECT_EQ(Signed(call->record, 36), -1);
    for (size_t b = 40; b < 104; ++b) ASSERT_EQ(call->record[b + kGrowth], 0);
    ImageBlock image = Lent(call);
    ASSERT_TRUE(image);
    EXPECT_EQ(image.bits(), 24);
    EXPECT_EQ(Pixels(image), Pixels(rendered[i].image));
  }
  EXPECT_EQ(host.lent, 0);

  auto comment = host.Of(kHostAddComment);
  ASSERT_EQ(comment.size(), 1u);
  EXPECT_EQ(comment[0]->object, object);
  EXPECT_EQ(comment[0]->text,
            "CREATED BY...\r\n\r\nThis graphic was created by Brindlewood' Marquetry "
            "Professional or Filigree and the Tessarine #1 plugin.\r\n\r\nSee\r\n\r\n"
            "    https://www.brindlewood.example/\r\n\r\nfor more information.");
  auto close = host.Of(kHostCloseTask);
  ASSERT_EQ(close.size(), 1u);
  EXPECT_EQ(close[0]->object, object);
  EXPECT_EQ(close[0]->param, 1);
  EXPECT_EQ(front_end.begun, 1);
  EXPECT_EQ(front_end.ended, 1);
}

TEST_F(BuildTest, StatusAndProgressFollowThePhases) {
  Set(kTrueColour, 0);
  Set(kCustomPalette, 1);
  Set(kSupercompress, 1);
  Set(kAddComment, 0);
  ASSERT_TRUE(Run());
  std::vector<std::string> seen;
  for (const auto& c : host.calls) {
    if (c.command == kHostStatusText) seen.push_back(c.text);
    else if (c.command == kHostProgress)
      seen.push_back(std::to_string(c.param) + "/" + std::to_string(c.data));
    else seen.push_back("#" + std::to_string(c.command));
  }
  EXPECT_EQ(seen, (std::vector<std::string>{
                      "0/0", "Building", "Building", "0/3", "1/3", "2/3", "0/0", "0/0",
                      "Quantizing", "Supercompressing", "0/3", "1/3", "2/3", "0/0", "Remapping",
                      "0/3", "1/3", "2/3", "0/0", "#1", "#2", "#2", "#2", "#4"}));
}

TEST_F(BuildTest, PalettisedFramesAreTheChosenRemapOfTheRenderedOnes) {
  Set(kTrueColour, 0);
  Set(kTestRich, 1);
  for (int dither : {0, 1}) {
    SCOPED_TRACE(dither);
    host = FakeHost();
    Set(kDither, dither);
    Set(kPaletteList, 1);  // "Sixteen-color Windows": 4 bits
    options.fast_remap = dither != 0;
    ASSERT_TRUE(Run());
    uint8_t rgb[kPaletteBytes];
    int bits = 0;
    int count = BuildFixedPalette(rgb, &bits, 1);
    EXPECT_EQ(Word(Task(), 20), 4u);
    RemapOptions remap;
    remap.fast_remap = options.fast_remap;
    FrameList rendered = Rendered();
    for (int i = 0; i < 3; ++i) {
      const ImageBlock& source = rendered[i].image;
      ImageBlock want = dither ? DitherImage(source, rgb, bits, count, remap)
                               : RemapImage(source, rgb, bits, count, remap);
      ImageBlock got = Frame(static_cast<size_t>(i));
      ASSERT_TRUE(got);
      EXPECT_EQ(std::vector<uint8_t>(got.data(), got.data() + got.size()),
                std::vector<uint8_t>(want.data(), want.data() + want.size()));
    }
  }
}

TEST_F(BuildTest, TestModeCreatesATrialFileObjectAndTheCommentIsOptional) {
  ASSERT_TRUE(Run(BuildMode::kTest));
  EXPECT_EQ(host.TaskCommands(), (std::vector<int32_t>{5, 2, 2, 2, 3, 4}));
  host = FakeHost();
  Set(kAddComment, 0);
  ASSERT_TRUE(Run());
  EXPECT_EQ(host.TaskCommands(), (std::vector<int32_t>{1, 2, 2, 2, 4}));
}

TEST_F(BuildTest, RefusedFileObjectStopsWithNothingSent) {
  host.create_result = 0;
  EXPECT_FALSE(Run());
  EXPECT_EQ(reporter.messages, (std::vector<std::string>{"Error creating new task."}));
  EXPECT_EQ(host.TaskCommands(), (std::vector<int32_t>{1}));
  EXPECT_EQ(front_end.ended, 1);
}

TEST_F(BuildTest, RefusedImageAbandonsTheFileObject) {
  host.refuse_image = 1;
  EXPECT_FALSE(Run());
  EXPECT_EQ(reporter.messages,
            (std::vector<std::string>{
                "There has been an error adding an image to the current file object."}));
  EXPECT_EQ(host.TaskCommands(), (std::vector<int32_t>{1, 2, 2, 4}));
  EXPECT_EQ(host.Of(kHostCloseTask)[0]->param, 0);
  EXPECT_EQ(host.Of(kHostCloseTask)[0]->object, host.calls[TaskIndex()].data);
  EXPECT_EQ(host.lent, 0);
}

TEST_F(BuildTest, ImageThatCannotBeLentIsAMemoryErrorAndAbandonsTheTask) {
  host.refuse_lend = 2;
  EXPECT_FALSE(Run());
  EXPECT_EQ(reporter.messages, (std::vector<std::string>{"Memory error"}));
  EXPECT_EQ(host.TaskCommands(), (std::vector<int32_t>{1, 2, 2, 4}));
  EXPECT_EQ(host.Of(kHostCloseTask)[0]->param, 0);
}

// ---------------------------------------------------------------- rendering failures

TEST_F(BuildTest, StylesThatRenderNothingGiveMemoryErrorAndNoFileObject) {
  struct Case {
    const char* what;
    int style;
    int frames;
    int fail_at;
  };
  for (Case c : {Case{"no frames", kStyleMoving, 0, 0},
                 Case{"fails at frame 2", kStyleMoving, 3, 2}}) {
    host = FakeHost();
    reporter.messages.clear();
    Set(kEffectList, c.style);
    Set(kTestFrames, c.frames);
    Set(kTestFailAt, c.fail_at);
    EXPECT_FALSE(Run()) << c.what;
    EXPECT_EQ(reporter.messages, (std::vector<std::string>{"Memory error"})) << c.what;
    EXPECT_TRUE(host.TaskCommands().empty()) << c.what;
  }
}

TEST_F(BuildTest, EffectsWithoutARendererSaySoAndCreateNothing) {
  Set(kEffectList, kStyleNoInit);
  EXPECT_FALSE(Run());
  EXPECT_EQ(reporter.messages,
            (std::vector<std::string>{"This effect is not available in this version."}));
  EXPECT_TRUE(host.TaskCommands().empty());
}

TEST_F(BuildTest, EffectIndexIsClampedToTheTable) {
  Set(kEffectList, 57);  // the last test entry cannot render
  EXPECT_FALSE(Run());
  Set(kEffectList, -3);  // the first one can
  reporter.messages.clear();
  EXPECT_TRUE(Run());
  EXPECT_TRUE(reporter.messages.empty());
}

// ---------------------------------------------------------------- options that exclude each other

class PalettisedBuildTest : public BuildTest {
 protected:
  PalettisedBuildTest() {
    Set(kTrueColour, 0);
    Set(kCustomPalette, 1);
    Set(kMaskBackground, 0);
  }
  // The adaptive palette of the rendered frames, before the build's changes.
  std::vector<uint8_t> Adaptive(int request, int* n) {
    FrameList frames = Rendered();
    std::vector<uint8_t> rgb(kPaletteBytes);
    *n = request;
    EXPECT_TRUE(AdaptivePalette(n, rgb.data(), frames));
    return rgb;
  }
  static int Find(const std::vector<uint8_t>& rgb, int count, Colour c) {
    return ExactColour(ColourRed(c), ColourGreen(c), ColourBlue(c), rgb.data(), count);
  }
};

TEST_F(PalettisedBuildTest, SupercompressMarksUnchangedPixelsFromTheSecondFrame) {
  Set(kSupercompress, 1);
  ASSERT_TRUE(Run());
  int n0 = 0;
  Adaptive(255, &n0);
  int n = n0 + 1;  // bg appended
  const std::vector<uint8_t> palette = TaskPalette(Task());
  EXPECT_EQ(Word(Task(), 20), static_cast<uint32_t>(BitsForColours(n + 1)));
  EXPECT_EQ(Word(Task(), 1065), 0u);  // transparent background is off
  // Index n is the supercompress index and holds bg.
  EXPECT_EQ(palette[3 * n], ColourRed(kBg));
  EXPECT_EQ(palette[3 * n + 1], ColourGreen(kBg));
  EXPECT_EQ(palette[3 * n + 2], ColourBlue(kBg));
  int bg_entry = Find(palette, n, kBg);
  ASSERT_GE(bg_entry, 0);

  FrameList rendered = Rendered();
  auto images = Images();
  ASSERT_EQ(images.size(), 3u);
  EXPECT_EQ(Signed(images[0]->record, 36), -1);
  for (int i = 0; i < 3; ++i) {
    ImageBlock got = Lent(images[static_cast<size_t>(i)]);
    ASSERT_TRUE(got);
    if (i > 0) {
      EXPECT_EQ(Signed(images[static_cast<size_t>(i)]->record, 36), n);
    }
    // The transparent entry of the colour table is bg (blue, green, red).
    const uint8_t* entry = got.colour_table() + 4 * n;
    EXPECT_EQ(MakeColour(entry[2], entry[1], entry[0]), kBg);
    for (int y = 0; y < got.height(); ++y)
      for (int x = 0; x < got.width(); ++x) {
        Colour now = ImageGetPixel(rendered[i].image, x, y);
        Colour index = ImageGetPixel(got, x, y);
        // The running previous frame always ends up equal to the last frame.
        bool masked = i == 0 ? now == kBg : now == ImageGetPixel(rendered[i - 1].image, x, y);
        if (masked) {
          // Frame 0's background, or a pixel the viewer already shows.
          EXPECT_EQ(index, static_cast<Colour>(n)) << i << ":" << x << "," << y;
        } else {
          ASSERT_LT(index, static_cast<Colour>(n)) << i << ":" << x << "," << y;
          const uint8_t* p = &palette[3 * index];
          EXPECT_EQ(MakeColour(p[0], p[1], p[2]), now);  // so few colours are all exact
        }
      }
  }
  // A pixel the block left in frame 2 shows bg through its own entry, not the
  // transparent one: mask background is not in force.
  ImageBlock frame2 = Lent(images[2]);
  EXPECT_EQ(ImageGetPixel(frame2, 2, 1), static_cast<Colour>(bg_entry));
}

TEST_F(PalettisedBuildTest, SupercompressWinsOverMaskBackground) {
  Set(kSupercompress, 1);
  Set(kMaskBackground, 1);
  ASSERT_TRUE(Run());
  int n = TransparentIndex(1);
  ASSERT_GT(n, 0);
  // bg was made exact (appended) as it is only when mask background is off.
  EXPECT_GE(Find(TaskPalette(Task()), n, kBg), 0);
  EXPECT_NE(ImageGetPixel(Frame(2), 2, 1), static_cast<Colour>(n));
  EXPECT_TRUE(Saw("Supercompressing"));
}

TEST_F(PalettisedBuildTest, OneFrameIsNeverSupercompressed) {
  Set(kSupercompress, 1);
  Set(kTestFrames, 1);
  ASSERT_TRUE(Run());
  ASSERT_EQ(Images().size(), 1u);
  EXPECT_EQ(TransparentIndex(0), -1);
  EXPECT_FALSE(Saw("Supercompressing"));
}

TEST_F(BuildTest, TrueColourIgnoresSupercompress) {
  Set(kSupercompress, 1);
  Set(kCustomPalette, 1);
  ASSERT_TRUE(Run());
  FrameList rendered = Rendered();
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(TransparentIndex(i), -1);
    EXPECT_EQ(Frame(i).bits(), 24);
    EXPECT_EQ(Pixels(Frame(i)), Pixels(rendered[static_cast<int>(i)].image));
  }
  EXPECT_FALSE(Saw("Supercompressing"));
  EXPECT_FALSE(Saw("Quantizing"));
}

TEST_F(BuildTest, FixedPaletteLeavesNoIndexToSupercompressWith) {
  Set(kTrueColour, 0);
  Set(kSupercompress, 1);
  ASSERT_TRUE(Run());
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(TransparentIndex(i), -1);
  EXPECT_FALSE(Saw("Supercompressing"));
}

TEST_F(PalettisedBuildTest, FewColoursGetBackgroundAppended) {
  int n0 = 0;
  std::vector<uint8_t> adaptive = Adaptive(256, &n0);
  ASSERT_LT(n0, 254);
  ASSERT_TRUE(Run());
  std::vector<uint8_t> want = adaptive;
  want[3 * n0] = ColourRed(kBg);
  want[3 * n0 + 1] = ColourGreen(kBg);
  want[3 * n0 + 2] = ColourBlue(kBg);
  SortPaletteByLuminance(want.data(), n0 + 1, true);
  EXPECT_EQ(TaskPalette(Task()), want);
  EXPECT_EQ(Word(Task(), 20), static_cast<uint32_t>(BitsForColours(n0 + 1)));
}

TEST_F(PalettisedBuildTest, ManyColoursGetBackgroundOverTheNearestEntry) {
  Set(kTestRich, 1);
  Set(kTestWidth, 24);
  Set(kTestHeight, 16);
  for (int supercompress : {0, 1}) {  // 256 or 255 colours asked for
    SCOPED_TRACE(supercompress);
    host = FakeHost();
    Set(kSupercompress, supercompress);
    int n = 0;
    std::vector<uint8_t> want = Adaptive(256 - supercompress, &n);
    ASSERT_EQ(n, 256 - supercompress);
    ASSERT_LT(Find(want, n, kBg), 0);
    ASSERT_TRUE(Run());
    int nearest = NearestColour(ColourRed(kBg), ColourGreen(kBg), ColourBlue(kBg), want.data(), n);
    want[3 * nearest] = ColourRed(kBg);
    want[3 * nearest + 1] = ColourGreen(kBg);
    want[3 * nearest + 2] = ColourBlue(kBg);
    SortPaletteByLuminance(want.data(), n, true);
    if (supercompress) {
      want[3 * n] = ColourRed(kBg);  // the supercompress entry
      want[3 * n + 1] = ColourGreen(kBg);
      want[3 * n + 2] = ColourBlue(kBg);
    }
    EXPECT_EQ(TaskPalette(Task()), want);
    EXPECT_EQ(Word(Task(), 20), 8u);
  }
}

TEST_F(PalettisedBuildTest, MaskBackgroundPutsTheBackgroundOnTheReservedIndex) {
  Set(kMaskBackground, 1);
  ASSERT_TRUE(Run());
  int n = 0;
  Adaptive(255, &n);
  const std::vector<uint8_t> palette = TaskPalette(Task());
  EXPECT_EQ(MakeColour(palette[3 * n], palette[3 * n + 1], palette[3 * n + 2]), kBg);
  EXPECT_EQ(Word(Task(), 20), static_cast<uint32_t>(BitsForColours(n + 1)));
  FrameList rendered = Rendered();
  auto images = Images();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Signed(images[static_cast<size_t>(i)]->record, 36), -1);  // not transparent
    ImageBlock got = Lent(images[static_cast<size_t>(i)]);
    for (int y = 0; y < got.height(); ++y)
      for (int x = 0; x < got.width(); ++x)
        EXPECT_EQ(ImageGetPixel(got, x, y) == static_cast<Colour>(n),
                  ImageGetPixel(rendered[i].image, x, y) == kBg);
  }
}

TEST_F(PalettisedBuildTest, TransparentBackgroundMarksEveryFrameAndTheTask) {
  Set(kEffectList, kStyleTransparent);
  Set(kTransparentBackground, 1);  // turns mask background on
  ASSERT_TRUE(Run());
  int n = 0;
  Adaptive(255, &n);
  EXPECT_EQ(Signed(Task(), 1065), n);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(TransparentFlag(i), 1u);
    EXPECT_EQ(TransparentIndex(i), n);
  }
}

// A style with a "Background:" button answers -1 to "do you forbid a
// transparent background?"; one without a single background answers -1 to
// both questions; one without a query allows everything with a black bg.
TEST_F(PalettisedBuildTest, BackgroundQueryDecidesMaskAndTransparency) {
  struct Case {
    int style;
    bool masked;       // the reserved index holds bg
    bool transparent;  // and is every frame's transparent index
    Colour bg;         // as it reaches the palette
  };
  for (Case c : {Case{kStyleMoving, true, false, kBg}, Case{kStyleNoSingle, false, false, 0xFFFFFF},
                 Case{kStyleNoBackground, true, true, 0}}) {
    SCOPED_TRACE(c.style);
    host = FakeHost();
    Set(kEffectList, c.style);
    Set(kMaskBackground, 1);
    Set(kTransparentBackground, 1);
    ASSERT_TRUE(Run());
    int n = 0;
    Adaptive(c.masked ? 255 : 256, &n);
    EXPECT_EQ(Signed(Task(), 1065), c.transparent ? n : 0);
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(TransparentFlag(i), c.transparent ? 1u : 0u);
      EXPECT_EQ(TransparentIndex(i), c.transparent ? n : -1);
    }
    // Masked: bg sits on the reserved index n; otherwise it is appended as an
    // ordinary colour (the -1 of "no single background" reads as white).
    const std::vector<uint8_t> palette = TaskPalette(Task());
    if (c.masked) {
      EXPECT_EQ(MakeColour(palette[3 * n], palette[3 * n + 1], palette[3 * n + 2]), c.bg);
    } else {
      EXPECT_GE(Find(palette, n + 1, c.bg), 0);
    }
    EXPECT_EQ(Word(Task(), 20), static_cast<uint32_t>(BitsForColours(n + 1)));
  }
}

// ---------------------------------------------------------------- preview

class PreviewTest : public BuildTest {
 protected:
  PreviewTest() {
    static int serial = 0;
    root = fs::temp_directory_path() /
           ("tess-build-" +
            std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) +
            "-" + std::to_string(serial++));
    fs::remove_all(root);
    folder = root / "Brindlewood" / "Tessarine 1";
    fs::create_directories(folder);
    platform.app_data = root.string();
  }
  ~PreviewTest() override {
    std::error_code ec;
    fs::remove_all(root, ec);
  }
  DecodedGif Decoded() {
    std::ifstream in(folder / "preview.gif", std::ios::binary);
    std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
    DecodedGif gif;
    std::string error;
    EXPECT_TRUE(DecodeGif(bytes, &gif, &error)) << error;
    return gif;
  }

  fs::path root, folder;
};

TEST_F(PreviewTest, AlwaysAPlainPalettisedAnimationWhateverTheBoxesSay) {
  Set(kTrueColour, 1);
  Set(kDither, 1);
  Set(kSupercompress, 1);
  Set(kMaskBackground, 0);
  Set(kTestRich, 1);
  Set(kDelayEdit, 250);
  // Thousandths of a second in the host, hundredths in the GIF.
  options.host_capabilities = kHostCapTrueColour | kHostCapOptimise;
  ASSERT_TRUE(Run(BuildMode::kPreview));
  EXPECT_TRUE(reporter.messages.empty());
  EXPECT_TRUE(host.TaskCommands().empty());
  for (const std::string& s : host.Statuses()) EXPECT_NE(s, "Supercompressing");

  DecodedGif gif = Decoded();
  EXPECT_EQ(gif.width, 13);
  EXPECT_EQ(gif.height, 7);
  uint8_t rgb[kPaletteBytes];
  int bits = 0;
  int count = BuildFixedPalette(rgb, &bits, 6);
  EXPECT_EQ(gif.global_table, std::vector<uint8_t>(rgb, rgb + kPaletteBytes));
  FrameList rendered = Rendered();
  ASSERT_EQ(gif.frames.size(), 3u);
  for (int i = 0; i < 3; ++i) {
    const GifDecodedFrame& f = gif.frames[static_cast<size_t>(i)];
    ASSERT_TRUE(f.control);
    EXPECT_EQ(f.control->flags, 0);
    EXPECT_EQ(f.control->delay, 25);
    EXPECT_EQ(f.control->transparent_index, 0xFF);
    ImageBlock want = RemapImage(rendered[i].image, rgb, bits, count, RemapOptions{});
    std::vector<uint8_t> indices;
    for (Colour c : Pixels(want)) indices.push_back(static_cast<uint8_t>(c));
    EXPECT_EQ(f.indices, indices) << "frame " << i;
  }
  ASSERT_EQ(platform.opened_documents.size(), 1u);
  EXPECT_EQ(fs::path(platform.opened_documents[0].target), folder / "preview.html");
  EXPECT_TRUE(platform.opened_documents[0].maximised);
}

TEST_F(PreviewTest, TransparentBackgroundReachesTheGif) {
  Set(kEffectList, kStyleTransparent);
  Set(kCustomPalette, 1);
  Set(kTransparentBackground, 1);
  ASSERT_TRUE(Run(BuildMode::kPreview));
  FrameList frames = Rendered();
  uint8_t rgb[kPaletteBytes];
  int n = 255;
  ASSERT_TRUE(AdaptivePalette(&n, rgb, frames));
  for (const GifDecodedFrame& f : Decoded().frames) {
    EXPECT_EQ(f.control->transparent_index, n);
    EXPECT_EQ(f.control->flags, (n & 0xFF) | 8);
  }
}

TEST_F(PreviewTest, MissingFolderIsErrorCreatingFile) {
  fs::remove_all(folder);
  EXPECT_FALSE(Run(BuildMode::kPreview));
  EXPECT_EQ(reporter.messages, (std::vector<std::string>{"Error creating file"}));
  EXPECT_TRUE(platform.opened_documents.empty());
}

TEST_F(PreviewTest, FullDiskIsErrorWritingFile) {
  Set(kTestRich, 1);
  Set(kTestWidth, 128);
  Set(kTestHeight, 128);
  std::error_code ec;
  fs::create_symlink("/dev/full", folder / "preview.gif", ec);
  if (ec) GTEST_SKIP() << "no /dev/full here";
  EXPECT_FALSE(Run(BuildMode::kPreview));
  EXPECT_EQ(reporter.messages, (std::vector<std::string>{"Error writing file"}));
  EXPECT_TRUE(platform.opened_documents.empty());
}

// ---------------------------------------------------------------- memory

// Fails each allocation of a build in turn: every run either succeeds exactly
// as an undisturbed one does or stops with one message and no file object
// left open. Leaks are the sanitizer's to find.
void SweepAllocations(const std::function<bool()>& run, FakeHost& host,
                      RecordingReporter& reporter, std::vector<std::string> allowed) {
  ASSERT_TRUE(run());
  const auto clean = host.TaskCommands();
  long total = 0;
  {
    AllocFailureScope count(-1);
    host = FakeHost();
    ASSERT_TRUE(run());
    total = count.Count();
  }
  ASSERT_GT(total, 0);
  int failed = 0;
  for (long n = 0; n < total; ++n) {
    host = FakeHost();
    reporter.messages.clear();
    AllocFailureScope fail(n);
    bool ok = run();
    if (ok) {
      EXPECT_TRUE(reporter.messages.empty()) << n;
      EXPECT_EQ(host.TaskCommands(), clean) << n;
      continue;
    }
    ++failed;
    ASSERT_EQ(reporter.messages.size(), 1u) << n;
    EXPECT_NE(std::find(allowed.begin(), allowed.end(), reporter.messages[0]), allowed.end())
        << n << ": " << reporter.messages[0];
    EXPECT_TRUE(host.TaskCommands().empty()) << n;
    EXPECT_EQ(host.lent, 0);
  }
  EXPECT_GT(failed, 0);
}

TEST_F(PalettisedBuildTest, EveryAllocationFailureIsAMemoryError) {
  for (int variant = 0; variant < 3; ++variant) {
    SCOPED_TRACE(variant);
    Set(kSupercompress, variant == 0);
    Set(kMaskBackground, variant == 1);
    Set(kDither, variant == 2);
    Set(kCustomPalette, variant != 2);
    SweepAllocations([this] { return Run(); }, host, reporter, {"Memory error"});
  }
}

TEST_F(PreviewTest, EveryAllocationFailureInAPreviewIsReported) {
  Set(kTrueColour, 0);
  Set(kCustomPalette, 1);
  SweepAllocations([this] { return Run(BuildMode::kPreview); }, host, reporter,
                   {"Memory error", "Error writing file", "Error creating file"});
}

}  // namespace
}  // namespace tess
