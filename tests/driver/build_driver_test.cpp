// The build driver against a fake host: what the host is sent and in which
// order, how the output options that exclude each other are resolved, the
// preview files, and that every failure is one message with no file object
// left open.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>

#include "base/bytes.h"
#include "driver/build_driver.h"
#include "output/gif_preview.h"
#include "output/palette.h"
#include "output/quantize.h"
#include "output/remap.h"
#include "shell/main_dialog_ids.h"
#include "tests/driver/build_test_style.h"
#include "tests/output/gif_test_images.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_platform.h"
#include "tests/support/temp_folder.h"

namespace tess {
namespace {

using namespace tess::testing;
using Commands = std::vector<int32_t>;
using Messages = std::vector<std::string>;

constexpr Colour kBg = 0x00336699;
constexpr HostHandle kOwner = 0x4321;

void PutRgb(std::vector<uint8_t>& rgb, int index, Colour c) {
  rgb[3 * index] = ColourRed(c), rgb[3 * index + 1] = ColourGreen(c), rgb[3 * index + 2] = ColourBlue(c);
}
Colour RgbAt(const std::vector<uint8_t>& rgb, int index) {
  return MakeColour(rgb[3 * index], rgb[3 * index + 1], rgb[3 * index + 2]);
}
int Find(const std::vector<uint8_t>& rgb, int count, Colour c) {
  return ExactColour(ColourRed(c), ColourGreen(c), ColourBlue(c), rgb.data(), count);
}
// A 32-bit field of a host record at its offset in the 32-bit layout the host
// reads; fields after the first handle move by its growth in a 64-bit build.
int32_t Field(const std::vector<uint8_t>& record, size_t offset32) {
  return get_i32le(&record.at(offset32 < 12 ? offset32 : offset32 + kHandleGrowth));
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
  BuildTest() { dialog.values = Defaults(); }
  static std::map<int, int32_t> Defaults() {
    return {{kEffectList, kStyleMoving}, {kDelayEdit, 4},       {kPaletteList, 6},
            {kAddComment, 1},            {kMaskBackground, 1},  {kTrueColour, 1},
            {kTestFrames, 3},            {kTestWidth, 13},      {kTestHeight, 7},
            {kTestBackground, static_cast<int32_t>(kBg)}};
  }

  BuildContext Context() {
    return {dialog, styles, random, host, kOwner, reporter, platform, &front_end, options};
  }
  // A fresh host and reporter for each run, so a test can run several.
  bool Run(BuildMode mode = BuildMode::kOk) {
    host = FakeHost();
    reporter.messages.clear();
    return RunBuild(Context(), mode);
  }
  bool RunFrames(FrameList frames, BuildMode mode = BuildMode::kOk) {
    host = FakeHost();
    reporter.messages.clear();
    return RunOutputBuild(Context(), mode, std::move(frames));
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
  // The adaptive palette of the rendered frames, before the build's changes.
  std::vector<uint8_t> Adaptive(int request, int* n) {
    FrameList frames = Rendered();
    std::vector<uint8_t> rgb(kPaletteBytes);
    *n = request;
    EXPECT_TRUE(AdaptivePalette(n, rgb.data(), frames));
    return rgb;
  }

  const FakeHost::Received& TaskCall() const {
    for (const auto& c : host.calls)
      if (c.command == kHostCreateTask || c.command == kHostCreateTestTask) return c;
    ADD_FAILURE() << "no file object";
    return host.calls.at(0);
  }
  int32_t TaskField(size_t offset32) const { return Field(TaskCall().record, offset32); }
  int32_t TaskBits() const { return TaskField(20); }
  std::vector<uint8_t> TaskPalette() const { return {&TaskCall().record.at(28 + kHandleGrowth), &TaskCall().record.at(28 + kHandleGrowth) + kPaletteBytes}; }
  const FakeHost::Received& Add(size_t i) const { return *host.Of(kHostAddImage).at(i); }
  int32_t TransparentIndex(size_t i) const { return Field(Add(i).record, 36); }
  ImageBlock Frame(size_t i) const { return ImageBlock::FromBytes(Add(i).image.data(), Add(i).image.size()); }
  // Fails each allocation of a build in turn: every run either succeeds as an
  // undisturbed one does or stops with one allowed message and no file object
  // left open. Leaks are the sanitizer's to find.
  void SweepAllocations(BuildMode mode, const Messages& allowed) {
    ASSERT_TRUE(Run(mode));
    const Commands clean = host.TaskCommands();
    long total = 0;
    {
      AllocFailureScope count(-1);
      ASSERT_TRUE(Run(mode));
      total = count.Count();
    }
    int failed = 0;
    for (long n = 0; n < total; ++n) {
      SCOPED_TRACE(n);
      AllocFailureScope fail(n);
      const bool ok = Run(mode);
      failed += !ok;
      EXPECT_EQ(host.TaskCommands(), ok ? clean : Commands{});
      EXPECT_EQ(host.lent, 0);
      ASSERT_EQ(reporter.messages.size(), ok ? 0u : 1u);
      if (!ok) {
        EXPECT_NE(std::find(allowed.begin(), allowed.end(), reporter.messages[0]), allowed.end());
      }
    }
    EXPECT_GT(failed, 0);
  }
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
  EXPECT_EQ(host.TaskCommands(), (Commands{1, 2, 2, 2, 3, 4}));
  // The task record: size, version, owner, 13 x 7, 8 bits, 3 frames, no
  // transparent index, and the orthogonal palette.
  ASSERT_EQ(TaskCall().record.size(), kTaskRecordSize32 + kHandleGrowth);
  EXPECT_EQ(TaskField(0), static_cast<int32_t>(kTaskRecordSize32 + kHandleGrowth));
  EXPECT_EQ(TaskField(4), 513);
  EXPECT_EQ(get_u32le(&TaskCall().record[8]), kOwner);  // low half of the handle
  EXPECT_EQ((std::vector<int32_t>{TaskField(12), TaskField(16), TaskBits(), TaskField(800), TaskField(1065)}),
            (std::vector<int32_t>{13, 7, 8, 3, 0}));
  std::vector<uint8_t> orthogonal(kPaletteBytes);
  BuildFixedPalette(orthogonal.data(), nullptr, 6);
  EXPECT_EQ(TaskPalette(), orthogonal);

  // True colour is on by default: the host gets the rendered frames as they are.
  const HostHandle object = TaskCall().data;
  FrameList rendered = Rendered();
  ASSERT_EQ(host.Count(kHostAddImage), 3);
  for (size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    const std::vector<uint8_t>& r = Add(i).record;
    EXPECT_EQ(Add(i).object, object);
    ASSERT_EQ(r.size(), kImageRecordSize32 + kHandleGrowth);
    EXPECT_EQ(Field(r, 0), static_cast<int32_t>(r.size()));
    EXPECT_EQ(Field(r, 4), 513);
    // Transparent flag, delay, frame number and transparent index.
    EXPECT_EQ((std::vector<int32_t>{Field(r, 12), Field(r, 16), Field(r, 32), Field(r, 36)}),
              (std::vector<int32_t>{0, 4, static_cast<int32_t>(i), -1}));
    EXPECT_EQ(Frame(i).bits(), 24);
    EXPECT_EQ(Pixels(Frame(i)), Pixels(rendered[static_cast<int>(i)].image));
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
  EXPECT_EQ(close[0]->param, kHostTaskFinished);
  EXPECT_EQ(front_end.begun, 1);
  EXPECT_EQ(front_end.ended, 1);

  ASSERT_TRUE(Run(BuildMode::kTest));
  EXPECT_EQ(host.TaskCommands(), (Commands{5, 2, 2, 2, 3, 4}));
  Set(kAddComment, 0);
  ASSERT_TRUE(Run());
  EXPECT_EQ(host.TaskCommands(), (Commands{1, 2, 2, 2, 4}));
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
    else if (c.command == kHostProgress) seen.push_back(std::to_string(c.param) + "/" + std::to_string(c.data));
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
  Set(kPaletteList, 1);  // "Sixteen-color Windows": 4 bits
  uint8_t rgb[kPaletteBytes];
  int bits = 0;
  const int count = BuildFixedPalette(rgb, &bits, 1);
  for (int dither : {0, 1}) {
    SCOPED_TRACE(dither);
    Set(kDither, dither);
    options.fast_remap = dither != 0;
    ASSERT_TRUE(Run());
    EXPECT_EQ(TaskBits(), 4);
    RemapOptions remap;
    remap.fast_remap = options.fast_remap;
    FrameList rendered = Rendered();
    for (int i = 0; i < 3; ++i) {
      ImageBlock want = dither ? DitherImage(rendered[i].image, rgb, bits, count, remap)
                               : RemapImage(rendered[i].image, rgb, bits, count, remap);
      ImageBlock got = Frame(static_cast<size_t>(i));
      ASSERT_TRUE(got);
      EXPECT_EQ(std::vector<uint8_t>(got.data(), got.data() + got.size()),
                std::vector<uint8_t>(want.data(), want.data() + want.size()));
    }
  }
}

// ---------------------------------------------------------------- failures

TEST_F(BuildTest, EachFailureIsOneMessageAndLeavesNoFileObjectOpen) {
  struct Case {
    const char* what;
    std::function<void()> setup;
    const char* message;
    Commands commands;
  };
  const Case cases[] = {
      {"refused file object", [this] { host.create_result = 0; },
       "Error creating new task.", {1}},
      {"refused image", [this] { host.refuse_image = 1; },
       "There has been an error adding an image to the current file object.", {1, 2, 2, 4}},
      {"image not lent", [this] { host.refuse_lend = 2; }, "Memory error", {1, 2, 2, 4}},
      {"no frames", [this] { Set(kTestFrames, 0); }, "Memory error", {}},
      {"fails at frame 2", [this] { Set(kTestFailAt, 2); }, "Memory error", {}},
      {"container throws at frame 2", [this] { Set(kTestThrowAt, 2); }, "Memory error", {}},
      {"no renderer", [this] { Set(kEffectList, kStyleNoInit); },
       "This effect is not available in this version.", {}},
      // The index is clamped to the table, whose last entry cannot render.
      {"index past the table", [this] { Set(kEffectList, 57); },
       "This effect is not available in this version.", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    dialog.values = Defaults();
    host = FakeHost();
    front_end = CountingFrontEnd();
    reporter.messages.clear();
    c.setup();
    EXPECT_FALSE(RunBuild(Context(), BuildMode::kOk));
    EXPECT_EQ(reporter.messages, Messages{c.message});
    EXPECT_EQ(host.TaskCommands(), c.commands);
    if (!c.commands.empty() && c.commands.back() == kHostCloseTask) {
      EXPECT_EQ(host.Of(kHostCloseTask)[0]->param, kHostTaskAbandoned);
      EXPECT_EQ(host.Of(kHostCloseTask)[0]->object, TaskCall().data);
    }
    EXPECT_EQ(host.lent, 0);
    EXPECT_EQ(front_end.ended, 1);
  }
  Set(kEffectList, -3);  // clamped to the first entry, which renders
  EXPECT_TRUE(Run());
}

// ---------------------------------------------------------------- options that exclude each other

class PalettisedBuildTest : public BuildTest {
 protected:
  PalettisedBuildTest() {
    Set(kTrueColour, 0);
    Set(kCustomPalette, 1);
    Set(kMaskBackground, 0);
  }
};

TEST_F(PalettisedBuildTest, SupercompressMarksUnchangedPixelsFromTheSecondFrame) {
  Set(kSupercompress, 1);
  ASSERT_TRUE(Run());
  int n = 0;
  Adaptive(255, &n);
  ++n;  // bg appended
  const std::vector<uint8_t> palette = TaskPalette();
  EXPECT_EQ(TaskBits(), BitsForColours(n + 1));
  EXPECT_EQ(TaskField(1065), 0);  // transparent background is off
  EXPECT_EQ(RgbAt(palette, n), kBg);       // index n is the supercompress index
  const int bg_entry = Find(palette, n, kBg);
  ASSERT_GE(bg_entry, 0);

  FrameList rendered = Rendered();
  ASSERT_EQ(host.Count(kHostAddImage), 3);
  for (int i = 0; i < 3; ++i) {
    ImageBlock got = Frame(static_cast<size_t>(i));
    ASSERT_TRUE(got);
    EXPECT_EQ(TransparentIndex(static_cast<size_t>(i)), i == 0 ? -1 : n);
    const uint8_t* entry = got.colour_table() + 4 * n;  // blue, green, red
    EXPECT_EQ(MakeColour(entry[2], entry[1], entry[0]), kBg);
    for (int y = 0; y < got.height(); ++y)
      for (int x = 0; x < got.width(); ++x) {
        SCOPED_TRACE(::testing::Message() << i << ":" << x << "," << y);
        Colour now = ImageGetPixel(rendered[i].image, x, y);
        Colour index = ImageGetPixel(got, x, y);
        // Frame 0's background, or a pixel the viewer already shows.
        bool masked = i == 0 ? now == kBg : now == ImageGetPixel(rendered[i - 1].image, x, y);
        if (masked) {
          EXPECT_EQ(index, static_cast<Colour>(n));
        } else {
          ASSERT_LT(index, static_cast<Colour>(n));
          EXPECT_EQ(RgbAt(palette, static_cast<int>(index)), now);  // so few colours are all exact
        }
      }
  }
  // A pixel the block left in frame 2 shows bg through its own entry, not the
  // transparent one: mask background is not in force.
  EXPECT_EQ(ImageGetPixel(Frame(2), 2, 1), static_cast<Colour>(bg_entry));
}

// Supercompress needs several palettised frames and an adaptive palette, and
// then wins over mask background.
TEST_F(PalettisedBuildTest, SupercompressOnlyWhereItHasAnIndex) {
  struct Case {
    const char* what;
    int true_colour, custom, mask, frames;
    bool applies;
  };
  for (Case c : {Case{"true colour", 1, 1, 0, 3, false}, Case{"fixed palette", 0, 0, 0, 3, false},
                 Case{"one frame", 0, 1, 0, 1, false}, Case{"with mask background", 0, 1, 1, 3, true}}) {
    SCOPED_TRACE(c.what);
    Set(kSupercompress, 1);
    Set(kTrueColour, c.true_colour);
    Set(kCustomPalette, c.custom);
    Set(kMaskBackground, c.mask);
    Set(kTestFrames, c.frames);
    ASSERT_TRUE(Run());
    EXPECT_EQ(Saw("Supercompressing"), c.applies);
    EXPECT_EQ(Saw("Quantizing"), c.custom && !c.true_colour);
    FrameList rendered = Rendered();
    for (int i = 0; i < c.frames; ++i) {
      const int index = TransparentIndex(static_cast<size_t>(i));
      EXPECT_EQ(index >= 0, c.applies && i > 0);
      if (c.true_colour) {
        EXPECT_EQ(Pixels(Frame(static_cast<size_t>(i))), Pixels(rendered[i].image));
      }
    }
    if (c.applies) {
      // Mask background was turned off: bg is an ordinary, exact colour.
      const int n = TransparentIndex(1);
      EXPECT_GE(Find(TaskPalette(), n, kBg), 0);
      EXPECT_NE(ImageGetPixel(Frame(2), 2, 1), static_cast<Colour>(n));
    }
  }
}

// Without mask background the background colour must come out exactly: it is
// appended when there is room, else it replaces the nearest entry. A palette
// limit leaves room for it and for the supercompress entry.
TEST_F(PalettisedBuildTest, BackgroundIsMadeExactInTheAdaptivePalette) {
  struct Case {
    int rich, supercompress, limit;
    int request;  // what the quantizer is asked for
  };
  // At 255 without supercompress the background overwrites an entry, so it
  // needs no room of its own.
  for (Case c : {Case{0, 0, 256, 256}, Case{1, 0, 256, 256}, Case{1, 1, 256, 255}, Case{1, 1, 40, 38},
                 Case{1, 0, 40, 39}, Case{0, 1, 3, 1}, Case{1, 0, 255, 255}, Case{1, 1, 255, 253}}) {
    SCOPED_TRACE(::testing::Message() << "rich " << c.rich << " supercompress " << c.supercompress
                                      << " limit " << c.limit);
    Set(kTestRich, c.rich);
    Set(kTestWidth, c.rich ? 24 : 13);
    Set(kTestHeight, c.rich ? 16 : 7);
    Set(kSupercompress, c.supercompress);
    options.palette_limit = c.limit;
    int n = 0;
    std::vector<uint8_t> want = Adaptive(c.request, &n);
    ASSERT_EQ(n < 254, !c.rich || c.request < 254);
    if (n < 254) {
      PutRgb(want, n++, kBg);
    } else {
      PutRgb(want, NearestColour(ColourRed(kBg), ColourGreen(kBg), ColourBlue(kBg), want.data(), n), kBg);
    }
    SortPaletteByLuminance(want.data(), n, true);
    if (c.supercompress) PutRgb(want, n, kBg);  // the supercompress entry
    ASSERT_TRUE(Run());
    EXPECT_EQ(TaskPalette(), want);
    EXPECT_EQ(TaskBits(), BitsForColours(n + c.supercompress));
    EXPECT_LE(n + c.supercompress, c.limit);
  }
}

// A style with a "Background:" button forbids a transparent background; one
// without a single background allows neither masking nor transparency (its
// -1 reads as white); one without a query allows everything with a black bg.
TEST_F(PalettisedBuildTest, BackgroundQueryDecidesMaskAndTransparency) {
  struct Case {
    int style;
    bool masked;       // the reserved index holds bg and stands for it in every frame
    bool transparent;  // and is every frame's transparent index
    Colour bg;         // as it reaches the palette
  };
  for (Case c : {Case{kStyleMoving, true, false, kBg}, Case{kStyleTransparent, true, true, kBg},
                 Case{kStyleNoSingle, false, false, 0xFFFFFF}, Case{kStyleNoBackground, true, true, 0}}) {
    SCOPED_TRACE(c.style);
    Set(kEffectList, c.style);
    Set(kMaskBackground, c.style != kStyleTransparent);  // the transparent background turns it on
    Set(kTransparentBackground, 1);
    ASSERT_TRUE(Run());
    int n = 0;
    Adaptive(c.masked ? 255 : 256, &n);
    EXPECT_EQ(TaskField(1065), c.transparent ? n : 0);
    EXPECT_EQ(TaskBits(), BitsForColours(n + 1));
    const std::vector<uint8_t> palette = TaskPalette();
    if (c.masked) {
      EXPECT_EQ(RgbAt(palette, n), c.bg);
    } else {
      EXPECT_GE(Find(palette, n + 1, c.bg), 0);
    }
    FrameList rendered = Rendered();
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(Field(Add(i).record, 12), c.transparent ? 1 : 0);
      EXPECT_EQ(TransparentIndex(i), c.transparent ? n : -1);
      if (!c.masked) continue;
      ImageBlock got = Frame(i);
      for (int y = 0; y < got.height(); ++y)
        for (int x = 0; x < got.width(); ++x)
          EXPECT_EQ(ImageGetPixel(got, x, y) == static_cast<Colour>(n),
                    ImageGetPixel(rendered[static_cast<int>(i)].image, x, y) == c.bg);
    }
  }
}

// ---------------------------------------------------------------- frames made elsewhere

// Frame k: red on the left, white on the right, the border moving with k.
FrameList TwoColourFrames(int count, int32_t delay) {
  FrameList frames;
  for (int k = 0; k < count; ++k) {
    ImageBlock image = ImageCreate(9, 5, nullptr, 24);
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 9; ++x) ImageSetPixel(image, x, y, x < 2 + k ? 0x0000FF : 0xFFFFFF);
    EXPECT_TRUE(FrameListAddImage(frames, std::move(image), delay));
  }
  return frames;
}

// No style is asked, the frames' own delays count, and no background colour
// enters the palette or masks anything.
TEST_F(PalettisedBuildTest, GivenFramesSkipTheStyleAndTheBackground) {
  Set(kEffectList, kStyleNoInit);  // would fail if it were asked
  Set(kDelayEdit, 99);
  Set(kMaskBackground, 1);
  for (int supercompress : {0, 1}) {
    SCOPED_TRACE(supercompress);
    Set(kSupercompress, supercompress);
    ASSERT_TRUE(RunFrames(TwoColourFrames(3, 7))) << reporter.messages.size();
    EXPECT_EQ(host.TaskCommands(), (Commands{1, 2, 2, 2, 3, 4}));
    EXPECT_EQ(TaskField(12) * 100 + TaskField(16), 905);
    // Two colours, plus the supercompress index when it is on.
    EXPECT_EQ(TaskBits(), supercompress ? 2 : 1);
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(Field(Add(i).record, 16), 7);
      EXPECT_EQ(TransparentIndex(i), supercompress && i > 0 ? 2 : -1);
    }
  }
  // Under a limit the transparent index is the only entry on top.
  Set(kSupercompress, 1);
  options.palette_limit = 2;
  ASSERT_TRUE(RunFrames(TwoColourFrames(3, 7)));
  EXPECT_EQ(TaskBits(), 1);  // one colour for red and white, and the transparent index
  EXPECT_FALSE(RunFrames(FrameList()));
  EXPECT_EQ(reporter.messages, Messages{"Memory error"});
  EXPECT_TRUE(host.TaskCommands().empty());
}

// ---------------------------------------------------------------- preview

class PreviewTest : public BuildTest {
 protected:
  PreviewTest() {
    std::filesystem::create_directories(folder);
    platform.app_data = temp.path();
  }
  DecodedGif Decoded() { return MustDecode(ReadBytes(folder + "/preview.gif")); }

  TempFolder temp;
  std::string folder = temp / "Brindlewood/Tessarine 1";
};

TEST_F(PreviewTest, AlwaysAPlainPalettisedAnimationWhateverTheBoxesSay) {
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
  EXPECT_FALSE(Saw("Supercompressing"));

  DecodedGif gif = Decoded();
  EXPECT_EQ(gif.width * 100 + gif.height, 1307);
  uint8_t rgb[kPaletteBytes];
  int bits = 0;
  const int count = BuildFixedPalette(rgb, &bits, 6);
  EXPECT_EQ(gif.global_table, std::vector<uint8_t>(rgb, rgb + kPaletteBytes));
  FrameList rendered = Rendered();
  ASSERT_EQ(gif.frames.size(), 3u);
  for (int i = 0; i < 3; ++i) {
    const GifDecodedFrame& f = gif.frames[static_cast<size_t>(i)];
    ASSERT_TRUE(f.control);
    EXPECT_EQ(f.control->flags, 0);
    EXPECT_EQ(f.control->delay, 25);
    EXPECT_EQ(f.control->transparent_index, 0xFF);
    std::vector<uint8_t> indices;
    for (Colour c : Pixels(RemapImage(rendered[i].image, rgb, bits, count, {})))
      indices.push_back(static_cast<uint8_t>(c));
    EXPECT_EQ(f.indices, indices) << "frame " << i;
  }
  ASSERT_EQ(platform.opened_documents.size(), 1u);
  EXPECT_EQ(std::filesystem::path(platform.opened_documents[0].target),
            std::filesystem::path(folder) / "preview.html");
  EXPECT_TRUE(platform.opened_documents[0].maximised);
}

TEST_F(PreviewTest, TransparentBackgroundReachesTheGif) {
  Set(kEffectList, kStyleTransparent);
  Set(kTrueColour, 0);
  Set(kCustomPalette, 1);
  Set(kTransparentBackground, 1);
  ASSERT_TRUE(Run(BuildMode::kPreview));
  int n = 0;
  Adaptive(255, &n);
  for (const GifDecodedFrame& f : Decoded().frames) {
    EXPECT_EQ(f.control->transparent_index, n);
    EXPECT_EQ(f.control->flags, (n & 0xFF) | 8);
  }
}

TEST_F(PreviewTest, GivenFramesGoToTheFolderTheOptionsName) {
  options.preview_folder = temp.path();
  ASSERT_TRUE(RunFrames(TwoColourFrames(2, 3), BuildMode::kPreview));
  EXPECT_EQ(temp.Files(), (std::vector<std::string>{"preview.gif", "preview.html"}));
  const std::string_view page = PreviewHtmlText();
  EXPECT_EQ(ReadBytes(temp / "preview.html"), std::vector<uint8_t>(page.begin(), page.end()));
  ASSERT_EQ(platform.opened_documents.size(), 1u);
  EXPECT_EQ(platform.opened_documents[0].target, temp / "preview.html");
}

TEST_F(PreviewTest, MissingFolderIsErrorCreatingFile) {
  std::filesystem::remove_all(folder);
  EXPECT_FALSE(Run(BuildMode::kPreview));
  EXPECT_EQ(reporter.messages, Messages{"Error creating file"});
  EXPECT_TRUE(platform.opened_documents.empty());
}

TEST_F(PreviewTest, FullDiskIsErrorWritingFile) {
  std::error_code ec;
  std::filesystem::create_symlink("/dev/full", folder + "/preview.gif", ec);
  if (ec) GTEST_SKIP() << "no /dev/full here";
  Set(kTestRich, 1);
  Set(kTestWidth, 128);
  Set(kTestHeight, 128);
  EXPECT_FALSE(Run(BuildMode::kPreview));
  EXPECT_EQ(reporter.messages, Messages{"Error writing file"});
  EXPECT_TRUE(platform.opened_documents.empty());
}

// ---------------------------------------------------------------- memory

TEST_F(PalettisedBuildTest, EveryAllocationFailureIsAMemoryError) {
  for (int variant = 0; variant < 3; ++variant) {
    SCOPED_TRACE(variant);
    Set(kSupercompress, variant == 0);
    Set(kMaskBackground, variant == 1);
    Set(kDither, variant == 2);
    Set(kCustomPalette, variant != 2);
    SweepAllocations(BuildMode::kOk, {"Memory error"});
  }
}

TEST_F(PreviewTest, EveryAllocationFailureInAPreviewIsReported) {
  Set(kTrueColour, 0);
  Set(kCustomPalette, 1);
  SweepAllocations(BuildMode::kPreview, {"Memory error", "Error writing file", "Error creating file"});
}

// ---------------------------------------------------------------- streaming

// The streamed build's GIF equals the whole build's byte for byte in every
// output mode (tests/host/streamed_gif_test.cpp); here, what only streaming
// can do: fail while the host's file object is open.
class StreamedBuildTest : public BuildTest {
 protected:
  StreamedBuildTest() { options.stream_frames = true; }
};

TEST_F(StreamedBuildTest, FailureAfterTheFirstFrameAbandonsTheFileObject) {
  struct Case {
    const char* what;
    std::function<void()> setup;
    const char* message;
    Commands commands;
  };
  const Case cases[] = {
      {"fails at frame 3", [this] { Set(kTestFailAt, 3); }, "Memory error", {1, 2, 2, 4}},
      {"container throws at frame 3", [this] { Set(kTestThrowAt, 3); }, "Memory error", {1, 2, 2, 4}},
      {"fails at frame 1", [this] { Set(kTestFailAt, 1); }, "Memory error", {}},
      // The palette's pass meets the failure before any file object exists.
      {"adaptive, fails at frame 3",
       [this] { Set(kTestFailAt, 3), Set(kTrueColour, 0), Set(kCustomPalette, 1); }, "Memory error", {}},
      {"refused image", [this] { host.refuse_image = 1; },
       "There has been an error adding an image to the current file object.", {1, 2, 2, 4}},
      {"no frames", [this] { Set(kTestFrames, 0); }, "Memory error", {}},
      {"no renderer", [this] { Set(kEffectList, kStyleNoInit); },
       "This effect is not available in this version.", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    dialog.values = Defaults();
    Set(kTestFrames, 4);
    host = FakeHost();
    reporter.messages.clear();
    c.setup();
    EXPECT_FALSE(RunBuild(Context(), BuildMode::kOk));
    EXPECT_EQ(reporter.messages, Messages{c.message});
    EXPECT_EQ(host.TaskCommands(), c.commands);
    if (!c.commands.empty()) {
      EXPECT_EQ(host.Of(kHostCloseTask).at(0)->param, kHostTaskAbandoned);
    }
    EXPECT_EQ(host.lent, 0);
  }
}

// Streaming, a failure may come while the file object is open: every run
// either delivers what an undisturbed one does or says "Memory error" once
// and leaves no file object open.
TEST_F(StreamedBuildTest, EveryAllocationFailureIsAMemoryError) {
  for (int variant = 0; variant < 3; ++variant) {
    SCOPED_TRACE(variant);
    dialog.values = Defaults();
    Set(kTrueColour, 0);
    Set(kMaskBackground, variant == 1);
    Set(kSupercompress, variant == 0);
    Set(kDither, variant == 2);
    Set(kCustomPalette, variant != 2);
    ASSERT_TRUE(Run());
    const Commands clean = host.TaskCommands();
    long total = 0;
    {
      AllocFailureScope count(-1);
      ASSERT_TRUE(Run());
      total = count.Count();
    }
    const int64_t before = AllocCurrentBytes();
    for (long n = 0; n < total; ++n) {
      SCOPED_TRACE(n);
      AllocFailureScope fail(n);
      const bool ok = Run();
      const Commands got = host.TaskCommands();
      if (ok) {
        EXPECT_EQ(got, clean);
        EXPECT_TRUE(reporter.messages.empty());
        continue;
      }
      EXPECT_EQ(reporter.messages, Messages{"Memory error"});
      if (!got.empty()) {
        EXPECT_EQ(got.back(), kHostCloseTask);
        EXPECT_EQ(host.Of(kHostCloseTask).at(0)->param, kHostTaskAbandoned);
      }
      EXPECT_EQ(host.lent, 0);
    }
    EXPECT_EQ(AllocCurrentBytes(), before);
  }
}

// Takes every frame and keeps nothing of it, as a GIF written to disk costs
// the engine nothing once written.
class DiscardingHost final : public HostService {
 public:
  int32_t Call(HostHandle, int32_t command, intptr_t, void*) override {
    added += command == kHostAddImage;
    closed += command == kHostCloseTask;
    return 1;
  }
  int added = 0, closed = 0;
};

// A long job holds a few frames, not all of them: under a ceiling of eight
// frames' bytes the streamed build of 300 frames succeeds and the whole build
// stops with "Memory error". (The command line's own check runs the largest
// tile; this size keeps the sanitizer build quick.)
TEST_F(StreamedBuildTest, MemoryStaysAtAFewFramesWhateverTheirCount) {
  constexpr int kSide = 256, kFrames = 300;
  dialog.values = Defaults();
  for (auto [id, value] : std::map<int, int32_t>{{kTrueColour, 0}, {kMaskBackground, 0}, {kTestFlat, 1},
                                                 {kTestFrames, kFrames}, {kTestWidth, kSide},
                                                 {kTestHeight, kSide}, {kAddComment, 0}})
    Set(id, value);
  const int64_t frame_bytes = RowStride(24, kSide) * int64_t{kSide};
  DiscardingHost discard;
  BuildContext context{dialog, styles, random, discard, kOwner, reporter, platform, nullptr, options};
  context.options.stream_frames = true;
  const int64_t before = AllocCurrentBytes();
  ResetAllocPeak();
  {
    AllocLimitScope limit(before + 8 * frame_bytes);
    EXPECT_TRUE(RunBuild(context, BuildMode::kOk));
  }
  EXPECT_EQ(discard.added, kFrames);
  EXPECT_LT(AllocPeakBytes() - before, 4 * frame_bytes);

  context.options.stream_frames = false;
  Set(kTestFrames, 12);  // past the ceiling without rendering every frame
  AllocLimitScope limit(before + 8 * frame_bytes);
  EXPECT_FALSE(RunBuild(context, BuildMode::kOk));
  EXPECT_EQ(reporter.messages, Messages{"Memory error"});
  EXPECT_EQ(AllocCurrentBytes(), before);
}

TEST_F(PreviewTest, StreamedPreviewWritesTheSameFile) {
  Set(kTrueColour, 0);
  Set(kCustomPalette, 1);
  Set(kTestRich, 1);
  ASSERT_TRUE(Run(BuildMode::kPreview));
  const std::vector<uint8_t> whole = ReadBytes(folder + "/preview.gif");
  options.stream_frames = true;
  ASSERT_TRUE(Run(BuildMode::kPreview));
  EXPECT_EQ(ReadBytes(folder + "/preview.gif"), whole);
  EXPECT_EQ(platform.opened_documents.size(), 2u);
}

}  // namespace
}  // namespace tess
