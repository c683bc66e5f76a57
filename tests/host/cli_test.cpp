// The whole command line in process, through RunCli: every run writes only
// into a temporary folder (the fake platform's application-data folder is
// inside it) and every GIF is decoded back. One focused test per command,
// the configuration file, and every way a run can fail.
#include "host/cli/cli.h"
#include "host/cli/cli_args.h"
#include "host/cli/commands.h"

#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "base/alloc.h"
#include "dialog/settings_document.h"
#include "plugin/host_interface.h"
#include "shell/config_file.h"
#include "shell/paths.h"
#include "shell/settings.h"
#include "styles/style_table.h"
#include "tests/host/cli_test_styles.h"
#include "tests/support/fake_platform.h"
#include "tests/support/gif_decoder.h"
#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"

namespace tess::cli {
namespace {

using testing::DecodedGif;
using testing::ReadBytes;
using testing::WriteBytes;
using Words = std::vector<std::string>;

struct Result {
  int code;
  std::string out;
  std::string err;
};

// A quick Tiles animation of `frames` 16 x 16 frames, without the user's
// configuration, followed by `more`.
Words Tiles(const std::string& command, int frames, const Words& more) {
  Words w = {command, "--no-config", "-e", "Tiles", "-s", "Frames=" + std::to_string(frames),
             "-s", "Width=16", "-s", "Depth=16"};
  w.insert(w.end(), more.begin(), more.end());
  return w;
}

class CliTest : public ::testing::Test {
 protected:
  CliTest() {
    platform.app_data = dir / "appdata";
    platform.documents = dir / "documents";
    // Belt and braces: nothing in process should look, but never the real home.
    setenv("TESSARINE_APPDATA", platform.app_data.c_str(), 1);
  }

  Result Run(const Words& args, std::span<const StyleEntry> styles = testing::CliTestStyles()) {
    std::ostringstream out, err;
    CliEnvironment env{platform, out, err, &input, false, styles};
    int code = RunCli(args, env);
    return {code, out.str(), err.str()};
  }

  DecodedGif Decode(const std::string& path) {
    DecodedGif gif;
    std::string error;
    EXPECT_TRUE(testing::DecodeGif(ReadBytes(path), &gif, &error)) << error;
    return gif;
  }

  std::string ConfigPath() { return ConfigFilePath(platform); }

  testing::TempFolder dir;
  testing::FakePlatform platform;
  std::istringstream input;
};

// ---------------------------------------------------------------- list

TEST_F(CliTest, ListShowsTheEffectsAndOneEffectsSettings) {
  Result r = Run({"list"}, StyleTable());
  ASSERT_EQ(r.code, 0) << r.err;
  std::istringstream lines(r.out);
  std::string line;
  for (const StyleEntry& style : StyleTable()) {
    ASSERT_TRUE(std::getline(lines, line));
    int i = StyleListIndex(style);
    EXPECT_EQ(line.rfind((i < 10 ? " " : "") + std::to_string(i) + "  " + style.name, 0), 0u) << line;
    EXPECT_NE(line.find(style.init ? "ready" : "not available yet"), std::string::npos) << line;
  }
  EXPECT_FALSE(std::getline(lines, line));

  // One effect: range, built-in default and the configuration's value per key.
  ASSERT_TRUE(EnsureFolderExists(AppDataPath(platform, "")));
  WriteBytes(ConfigPath(), {'S', 't', 'y', 'l', 'e', '0', '1', '6', 'G', 'l', 'a', 'r', 'e', '=', '9', '9', '\n'});
  r = Run({"list", "gridlock"}, StyleTable());
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Gridlock (effect 5, keys Style016KEY"), std::string::npos) << r.out;
  std::string glare = r.out.substr(r.out.find("\nGlare ") + 1);
  glare = glare.substr(0, glare.find('\n'));
  EXPECT_NE(glare.find("0..255"), std::string::npos) << glare;
  EXPECT_NE(glare.find("160"), std::string::npos) << glare;  // the built-in default
  EXPECT_TRUE(glare.ends_with("99")) << glare;                // from the configuration
  EXPECT_NE(r.out.find("#512000"), std::string::npos);         // Background 0x002051 as #RRGGBB
  EXPECT_EQ(Run({"list", "Nonesuch"}, StyleTable()).code, kExitUsage);
}

// ---------------------------------------------------------------- render

TEST_F(CliTest, RenderWritesTheFramesTheSettingsAskFor) {
  std::string out = dir / "tiles.gif";
  Result r = Run({"render", "--no-config", "--effect", "tiles", "--set", "Frames=4", "--set",
                  "Style000Width=32", "-s", "depth=24", "--delay", "6", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.err, "");
  DecodedGif gif = Decode(out);
  EXPECT_EQ(gif.width, 32);
  EXPECT_EQ(gif.height, 24);
  EXPECT_EQ(gif.loop_count, 0);
  ASSERT_EQ(gif.frames.size(), 4u);
  for (const auto& frame : gif.frames) {
    EXPECT_EQ(frame.width, 32);
    ASSERT_TRUE(frame.control);
    EXPECT_EQ(frame.control->delay, 6);
  }
  ASSERT_EQ(gif.comments.size(), 1u);
  EXPECT_NE(gif.comments[0].find("https://www.brindlewood.example/"), std::string::npos);
  EXPECT_EQ(dir.Files(), std::vector<std::string>{"tiles.gif"});  // nothing else, no config saved

  ASSERT_EQ(Run(Tiles("render", 2, {"--no-comment", "-o", out})).code, 0);
  EXPECT_TRUE(Decode(out).comments.empty());
}

TEST_F(CliTest, RenderTakesSettingsFromADocumentAndOptionsOverrideIt) {
  Settings saved;
  saved.SetStyleNumber(0, "Frames", 3);
  saved.SetStyleNumber(0, "Width", 40);
  saved.SetStyleNumber(0, "Depth", 20);
  std::string doc = dir / "night.ts1";
  RecordingReporter messages;
  ASSERT_TRUE(SaveSettingsDocument(doc, saved, kHostCapOptimise, messages));
  std::string out = dir / "night.gif";
  Result r = Run({"render", "--no-config", "-e", "Tiles", "--doc", doc, "-s", "Depth=16", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  DecodedGif gif = Decode(out);
  EXPECT_EQ(gif.width, 40);
  EXPECT_EQ(gif.height, 16);
  EXPECT_EQ(gif.frames.size(), 3u);
}

// ---------------------------------------------------------------- configuration file

TEST_F(CliTest, SaveWritesTheSettingsAndWithoutItTheFileIsUntouched) {
  std::string out = dir / "x.gif";
  Result r = Run({"render", "-e", "Tiles", "-s", "Frames=3", "-s", "Width=16", "-s", "Depth=16", "-d", "9",
                  "--save", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  std::vector<uint8_t> saved = ReadBytes(ConfigPath());
  std::string text(saved.begin(), saved.end());
  for (const char* line : {"Style000Frames = 3", "Style000Width = 16", "MainDelay = 9", "MainEffect = 0"})
    EXPECT_NE(text.find(line), std::string::npos) << line;

  // The saved settings are what the next run starts from...
  ASSERT_EQ(Run({"render", "-o", out}).code, 0);
  DecodedGif gif = Decode(out);
  EXPECT_EQ(gif.frames.size(), 3u);
  EXPECT_EQ(gif.frames[0].control->delay, 9);
  // ...and options without --save leave the file as it was.
  ASSERT_EQ(Run({"render", "-s", "Frames=5", "-d", "2", "-o", out}).code, 0);
  EXPECT_EQ(ReadBytes(ConfigPath()), saved);
  EXPECT_EQ(Decode(out).frames.size(), 5u);
}

// A fill set as text renders, lists as the same text, and that text set
// again renders the same bytes; --save keeps it in its pattern file, where
// the next run finds it.
TEST_F(CliTest, FillsTravelAsTextAndInTheirPatternFiles) {
  const std::string gradient = "gradient:linear:#000000:#FFFFFF:rot=30";
  Words first = Tiles("render", 2, {"-s", "FillColor1=" + gradient, "-o", dir / "a.gif", "--save"});
  first.erase(first.begin() + 1);  // keep the configuration, so --save writes it
  ASSERT_EQ(Run(first).code, kExitOk);
  Result listed = Run({"list", "Tiles"});
  size_t at = listed.out.find("FillColor1");
  ASSERT_NE(at, std::string::npos);
  std::string line = listed.out.substr(at, listed.out.find('\n', at) - at);
  std::string value = line.substr(line.rfind(' ') + 1);
  EXPECT_EQ(value, gradient);
  ASSERT_EQ(Run(Tiles("render", 2, {"-s", "FillColor1=" + value, "-o", dir / "b.gif"})).code, kExitOk);
  EXPECT_EQ(ReadBytes(dir / "a.gif"), ReadBytes(dir / "b.gif"));
  std::vector<uint8_t> pattern = ReadBytes(FillFilePath(platform, testing::TilesId(11)));
  ASSERT_EQ(pattern.size(), 854u);
  EXPECT_EQ(pattern[277], 1);  // kind Gradient
  // The pattern file holds the fill; the setting carries its kind on top.
  EXPECT_NE(testing::ReadText(ConfigPath()).find("Style000FillColor1 = 32170971\n"), std::string::npos);
  Result bad = Run(Tiles("render", 2, {"-s", "FillColor1=gradient:spiral:#000000:#FFFFFF"}));
  EXPECT_EQ(bad.code, kExitUsage);
  EXPECT_NE(bad.err.find("help fills"), std::string::npos);
}

// A hand-made conical pattern file paints as the sweep's formula says: the
// start colour left of the centre, the end colour right of it, halfway
// straight above; a foreign file is refused with its reason.
TEST_F(CliTest, SwatchPaintsAPatternFileOrATextForm) {
  std::vector<uint8_t> flp(854, 0);
  std::memcpy(flp.data(), "BRNDFILB", 8);
  flp[277] = 1;                                  // kind Gradient
  flp[289] = 0xFF;                               // start: red
  flp[293 + 2] = 0xFF;                           // end: blue
  flp[297] = 3;                                  // conical, rotation and centre 0
  WriteBytes(dir / "cone.flp", flp);
  ASSERT_EQ(Run({"swatch", dir / "cone.flp", "--size", "100x100", "-o", dir / "cone.ppm"}).code, kExitOk);
  std::vector<uint8_t> ppm = ReadBytes(dir / "cone.ppm");
  const std::string header = "P6\n100 100\n255\n";
  ASSERT_EQ(ppm.size(), header.size() + 3 * 100 * 100);
  auto rgb = [&](int x, int y) {
    size_t at = header.size() + 3 * static_cast<size_t>(100 * y + x);
    return std::vector<int>{ppm[at], ppm[at + 1], ppm[at + 2]};
  };
  EXPECT_EQ(rgb(0, 50), (std::vector<int>{255, 0, 0}));
  EXPECT_EQ(rgb(99, 50), (std::vector<int>{0, 0, 255}));
  EXPECT_EQ(rgb(50, 0), (std::vector<int>{127, 0, 127}));  // a = 90: t = 128/256

  ASSERT_EQ(Run({"swatch", "gradient:radial:#000000:#FFFFFF", "--size", "33x17", "-o", dir / "r.gif"}).code,
            kExitOk);
  EXPECT_EQ(Decode(dir / "r.gif").frames.size(), 1u);
  flp.resize(600);
  WriteBytes(dir / "short.flp", flp);
  Result foreign = Run({"swatch", dir / "short.flp", "-o", dir / "x.ppm"});
  EXPECT_EQ(foreign.code, kExitFailure);
  EXPECT_NE(foreign.err.find("not a fill or fountain pattern file"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir / "x.ppm"));
}

// A hand-made fountain pattern file paints its markers at their offsets
// (position x W / 255, truncated), each segment starting on its colour.
TEST_F(CliTest, SwatchPaintsAFountainPatternFileWithItsMarkersInPlace) {
  std::vector<uint8_t> flp(585, 0);
  std::memcpy(flp.data(), "BRNDFOUN", 8);
  flp[20] = 1;   // open
  flp[289] = 7;  // markers
  const uint8_t positions[7] = {32, 64, 96, 128, 160, 192, 224};
  const int offsets[7] = {12, 25, 37, 50, 62, 75, 87};
  for (int i = 0; i < 7; ++i) {
    uint8_t* marker = &flp[301 + 4 * static_cast<size_t>(i)];
    marker[0] = static_cast<uint8_t>(30 * i + 20);  // red
    marker[1] = static_cast<uint8_t>(200 - 25 * i); // green
    marker[3] = positions[i];
  }
  WriteBytes(dir / "markers.flp", flp);
  ASSERT_EQ(Run({"swatch", dir / "markers.flp", "--size", "100x1", "-o", dir / "m.ppm"}).code, kExitOk);
  std::vector<uint8_t> ppm = ReadBytes(dir / "m.ppm");
  const size_t header = std::string("P6\n100 1\n255\n").size();
  ASSERT_EQ(ppm.size(), header + 300);
  for (int i = 0; i < 7; ++i) {
    size_t at = header + 3 * static_cast<size_t>(offsets[i]);
    EXPECT_EQ(ppm[at], 30 * i + 20) << "marker " << i;
    EXPECT_EQ(ppm[at + 1], 200 - 25 * i) << "marker " << i;
  }
  EXPECT_EQ(ppm[header], 0);  // the start colour, black
}

// A fountain set as text lists as the same text and is kept in its control's
// pattern file; the libraries take, list and give back fountains.
TEST_F(CliTest, FountainsTravelAsTextAndThroughTheLibraries) {
  const std::string fountain = "fountain:closed:#000000:#FFFFFF:85:#FF0000,170:#0000FF";
  std::span<const StyleEntry> product = StyleTable();
  Run({"render", "-e", "Solid", "-s", "Fountain=" + fountain, "-o", dir / "s.gif", "--save"}, product);
  Result listed = Run({"list", "Solid"}, product);
  EXPECT_NE(listed.out.find("fountain  -            built-in  " + fountain + "\n"), std::string::npos)
      << listed.out;
  EXPECT_EQ(ReadBytes(FillFilePath(platform, 290)).size(), 585u);
  Result bad = Run({"render", "-e", "Solid", "-s", "Fountain=fountain:closed:#000000:#FFFFFF:300:#FF0000"}, product);
  EXPECT_EQ(bad.code, kExitUsage);
  EXPECT_NE(bad.err.find("help fountains"), std::string::npos);

  ASSERT_EQ(Run({"library", "add", fountain}).code, kExitOk);
  ASSERT_EQ(Run({"library", "add", "fountain:closed:#FFFFFF:#FFFFFF:128:#00FF00"}).code, kExitOk);
  EXPECT_EQ(Run({"library", "list"}).out, "0  " + fountain + "\n1  fountain:closed:#FFFFFF:#FFFFFF:128:#00FF00\n");
  ASSERT_EQ(Run({"library", "show", "1", "-o", dir / "strip.gif"}).code, kExitOk);
  EXPECT_EQ(Decode(dir / "strip.gif").frames.size(), 1u);
  ASSERT_EQ(Run({"library", "remove", "0"}).code, kExitOk);
  EXPECT_EQ(Run({"library", "list"}).out, "0  fountain:closed:#FFFFFF:#FFFFFF:128:#00FF00\n");
  EXPECT_EQ(Run({"library", "show", "5"}).code, kExitUsage);
  EXPECT_EQ(Run({"library", "list", "sideways"}).code, kExitUsage);
}

TEST_F(CliTest, ExplicitConfigFileIsReadAndMustExistUnlessSaved) {
  std::string config = dir / "mine.ini";
  std::string out = dir / "y.gif";
  Result r = Run({"render", "--config", config, "-e", "Tiles", "-o", out});
  EXPECT_EQ(r.code, kExitFailure);
  EXPECT_NE(r.err.find("cannot read configuration file"), std::string::npos) << r.err;
  ASSERT_EQ(Run({"test", "--config", config, "--save", "-e", "Tiles", "-s", "Frames=2", "-s", "Width=16",
                 "-s", "Depth=16"}).code, 0);
  ASSERT_EQ(Run({"render", "--config", config, "-o", out}).code, 0);
  EXPECT_EQ(Decode(out).frames.size(), 2u);
  EXPECT_FALSE(std::filesystem::exists(ConfigPath()));  // the user's own file was never involved
}

// ---------------------------------------------------------------- test and preview

TEST_F(CliTest, TestWritesIntoThePluginDataFolderAndPrintsThePath) {
  Result r = Run(Tiles("test", 2, {}));
  ASSERT_EQ(r.code, 0) << r.err;
  std::string path = PluginDataPath(platform, "test.gif");
  EXPECT_EQ(r.out, path + "\n");
  EXPECT_EQ(Decode(path).frames.size(), 2u);
}

TEST_F(CliTest, PreviewWritesBothFilesAndOpensThePageUnlessAskedNot) {
  std::string there = dir / "pv";
  Result r = Run(Tiles("preview", 3, {"--no-open", "--dir", there}));
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_TRUE(platform.opened_documents.empty());
  EXPECT_EQ(r.out, there + "/preview.html\n");
  EXPECT_EQ(Decode(there + "/preview.gif").frames.size(), 3u);
  std::vector<uint8_t> html = ReadBytes(there + "/preview.html");
  EXPECT_NE(std::string(html.begin(), html.end()).find("<body background=\"preview.gif\">"), std::string::npos);

  r = Run(Tiles("preview", 2, {}));
  ASSERT_EQ(r.code, 0) << r.err;
  std::string page = PluginDataPath(platform, "preview.html");
  ASSERT_EQ(platform.opened_documents.size(), 1u);
  EXPECT_EQ(platform.opened_documents[0].target, page);
  EXPECT_EQ(r.out, page + "\n");
}

// ---------------------------------------------------------------- encode

std::vector<uint8_t> Ppm(int width, int height, int shade) {
  std::string header = "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
  std::vector<uint8_t> bytes(header.begin(), header.end());
  for (int i = 0; i < width * height; ++i) {
    bytes.push_back(static_cast<uint8_t>(shade));
    bytes.push_back(static_cast<uint8_t>(i % width * 8));
    bytes.push_back(static_cast<uint8_t>(i / width * 8));
  }
  return bytes;
}

TEST_F(CliTest, EncodeTurnsPpmFramesFromFilesOrStandardInputIntoAGif) {
  std::vector<std::string> names;
  for (int i = 0; i < 3; ++i) {
    names.push_back(dir / ("f" + std::to_string(i) + ".ppm"));
    WriteBytes(names.back(), Ppm(12, 10, 40 * i));
  }
  std::string out = dir / "enc.gif";
  Result r = Run({"encode", names[0], names[1], names[2], "--no-config", "--custom-palette",
                  "--supercompress", "--delay", "3", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  DecodedGif gif = Decode(out);
  EXPECT_EQ(gif.width, 12);
  EXPECT_EQ(gif.height, 10);
  ASSERT_EQ(gif.frames.size(), 3u);
  for (const auto& f : gif.frames) EXPECT_EQ(f.control->delay, 3);
  EXPECT_EQ(gif.frames[2].width, 12);  // only the red channel changes, everywhere: every frame is whole
  EXPECT_GT(gif.global_table.size(), 3u * 8);

  r = Run({"encode", names[0], names[1], names[2], "--no-config", "--custom-palette", "--supercompress",
           "--colours", "8", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(Decode(out).global_table.size(), 3u * 8);

  std::vector<uint8_t> stream = Ppm(12, 10, 1), second = Ppm(12, 10, 2);
  stream.insert(stream.end(), second.begin(), second.end());
  input.str(std::string(stream.begin(), stream.end()));
  r = Run({"encode", "-", "--no-config", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(Decode(out).frames.size(), 2u);
}

// ---------------------------------------------------------------- failures

// The work failing: a "tessarine: " line naming the cause, exit code 1, and
// no output file.
TEST_F(CliTest, FailedWorkNamesItsCauseExitsOneAndLeavesNoFile) {
  std::string good = dir / "good.ppm", small = dir / "small.ppm", text = dir / "text.ppm",
              cut = dir / "cut.ppm", doc = dir / "damaged.ts1", out = dir / "never.gif";
  WriteBytes(good, Ppm(8, 8, 0));
  WriteBytes(small, Ppm(8, 7, 0));
  WriteBytes(text, {'P', '3', '\n', '1', ' ', '1', '\n', '2', '5', '5', '\n', '0', ' ', '0', ' ', '0'});
  std::vector<uint8_t> truncated = Ppm(8, 8, 0);
  truncated.resize(truncated.size() - 5);
  WriteBytes(cut, truncated);
  WriteBytes(doc, {'n', 'o', 't', ' ', 'a', ' ', 'd', 'o', 'c', '\r', '\n'});
  struct Case {
    Words words;
    std::string message;
  } cases[] = {
      {{"encode", "--no-config", good, small, "-o", out}, small + ": frame is 8x7 but the first frame is 8x8"},
      {{"encode", "--no-config", good, text, "-o", out}, text + ": plain (ASCII) PPM is not supported"},
      {{"encode", "--no-config", good, cut, "-o", out}, cut + ": truncated pixel data (187 of 192 bytes)"},
      {{"encode", "--no-config", good, dir / "absent.ppm", "-o", out},
       dir / "absent.ppm: No such file or directory"},
      {Tiles("render", 2, {"--doc", doc, "-o", out}), doc + ": This file has been damaged."},
      {{"render", "--no-config", "--effect", "Broken", "-o", out}, "Memory error"},
      {{"render", "-e", "Pending Effect", "--save", "-o", out},
       "effect 'Pending Effect' is not available yet (see 'tessarine list')"},
      {Tiles("render", 2, {"-o", dir / "no/such/folder/out.gif"}),
       "cannot write '" + dir / "no/such/folder/out.gif" + "': No such file or directory"},
  };
  for (const Case& c : cases) {
    Result r = Run(c.words);
    EXPECT_EQ(r.code, kExitFailure) << r.err;
    EXPECT_EQ(r.err.rfind("tessarine: " + c.message, 0), 0u) << r.err;
    EXPECT_FALSE(std::filesystem::exists(out));
  }
  // An effect that cannot render still saves the settings, as the dialog would.
  EXPECT_TRUE(std::filesystem::exists(ConfigPath()));
}

// ---------------------------------------------------------------- hostile paths

// "CurrentFileName = " and the line end leave 259 - 19 characters for the
// value; one more would read back cut, the rest taken as another key.
TEST_F(CliTest, SetRefusesTextValuesAConfigurationLineCannotHoldAndTheLongestReadsBack) {
  const std::string config = dir / "long.ini";
  const std::string longest = std::string(240 - 6, 'x') + "Acc=77";
  ASSERT_EQ(Run({"test", "--no-config", "--config", config, "--save", "-e", "Tiles", "-s", "Frames=2", "-s",
                 "Width=16", "-s", "Depth=16", "-s", "CurrentFileName=" + longest}).code, 0);
  Result r;
  Settings back;
  ASSERT_TRUE(ReadSettings(config, back, platform));
  EXPECT_EQ(back.Text(Key::CurrentFileName), longest);
  EXPECT_EQ(back.Number(Key::AccentCompensation), Settings().Number(Key::AccentCompensation));

  const std::vector<uint8_t> saved = ReadBytes(config);
  for (const std::string& text : {longest + "y", std::string("a\nAccentCompensation=77")}) {
    r = Run({"render", "--config", config, "--save", "-s", "CurrentFileName=" + text, "-o", dir / "o.gif"});
    EXPECT_EQ(r.code, kExitUsage) << r.err;
    EXPECT_EQ(ReadBytes(config), saved);
  }
  r = Run({"render", "--config", config, "--save", "-s", "CurrentFileName=" + longest + "y", "-o", dir / "o.gif"});
  EXPECT_NE(r.err.find("the value of CurrentFileName is longer than 240 characters (241)"), std::string::npos) << r.err;
  EXPECT_NE(Run({"render", "-s", "CurrentFileName=a\nb", "-o", dir / "o.gif"}).err.find("control character"),
            std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir / "o.gif"));
}

// What cannot work is found before any rendering, and every file error names
// the path and the system's reason.
TEST_F(CliTest, UnusableFilesAreRefusedBeforeRenderingWithTheSystemsReason) {
  const std::string out = dir / "out.gif", folder = dir / "folder", fifo = dir / "pipe";
  std::filesystem::create_directory(folder);
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  WriteBytes(dir / "file", {'x'});
  struct Case {
    Words words;
    std::string message;
  } cases[] = {
      {{"render", "--config", folder, "-e", "Tiles", "-o", out},
       "cannot read configuration file '" + folder + "': it is a folder"},
      {{"render", "--config", fifo, "-e", "Tiles", "-o", out},
       "cannot read configuration file '" + fifo + "': not a regular file"},
      {Tiles("render", 2, {"--doc", fifo, "-o", out}), fifo + ": not a regular file"},
      {Tiles("render", 2, {"--doc", dir / "absent.ts1", "-o", out}), dir / "absent.ts1: No such file or directory"},
      {Tiles("render", 2, {"--config", folder, "--save", "-o", out}),
       "cannot write '" + folder + "': Is a directory"},
      {Tiles("render", 2, {"-o", folder}), "cannot write '" + folder + "': Is a directory"},
      {Tiles("render", 2, {"-o", dir / "file/out.gif"}), "cannot write '" + dir / "file/out.gif" + "': Not a directory"},
      {{"encode", "--no-config", "x.ppm", "-o", dir / "none/out.gif"},
       "cannot write '" + dir / "none/out.gif" + "': No such file or directory"},
      {Tiles("preview", 2, {"--no-open", "--dir", dir / "file"}), "cannot create the folder '" + dir / "file" + "'"},
  };
  for (const Case& c : cases) {
    Result r = Run(c.words);
    EXPECT_EQ(r.code, kExitFailure) << r.err;
    EXPECT_EQ(r.err, "tessarine: " + c.message + "\n");
  }
  EXPECT_FALSE(std::filesystem::exists(out));
  if (std::filesystem::exists("/dev/full")) {
    Result r = Run(Tiles("render", 2, {"-o", "/dev/full"}));
    EXPECT_EQ(r.code, kExitFailure);
    EXPECT_EQ(r.err, "tessarine: error writing '/dev/full': No space left on device\n");
    r = Run(Tiles("render", 2, {"--config", "/dev/full", "--save", "-o", out}));  // --no-config: nothing read
    EXPECT_EQ(r.err, "tessarine: cannot write configuration file '/dev/full': No space left on device\n");
  }
}

// Links are written through and stay links; a pipe or a device receives the
// GIF itself and stays what it was.
TEST_F(CliTest, OutputsThroughLinksPipesAndDevicesKeepWhatStandsAtThePath) {
  std::filesystem::create_directory(dir / "real");
  std::filesystem::create_symlink("real/target.gif", dir / "link.gif");
  ASSERT_EQ(Run(Tiles("render", 2, {"-o", dir / "link.gif"})).code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(dir / "link.gif"));
  EXPECT_EQ(Decode(dir / "real/target.gif").frames.size(), 2u);

  const std::string config = dir / "real/settings.ini";
  std::filesystem::create_symlink(config, dir / "link.ini");
  ASSERT_EQ(Run(Tiles("render", 3, {"--config", dir / "link.ini", "--save", "-o", dir / "a.gif"})).code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(dir / "link.ini"));
  EXPECT_EQ(testing::ReadText(config).rfind(";Brindlewood", 0), 0u);

  const std::string fifo = dir / "pipe.gif";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::vector<uint8_t> received;
  std::thread reader([&] { received = ReadBytes(fifo); });
  Result r = Run(Tiles("render", 2, {"-o", fifo}));
  reader.join();
  ASSERT_EQ(r.code, 0) << r.err;
  DecodedGif gif;
  std::string error;
  EXPECT_TRUE(testing::DecodeGif(received, &gif, &error)) << error;
  EXPECT_TRUE(std::filesystem::is_fifo(fifo));

  ASSERT_EQ(Run(Tiles("render", 2, {"-o", "/dev/null"})).code, 0);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

// A failed preview leaves the previous one whole: no half GIF beside a page.
TEST_F(CliTest, AFullDiskDuringAPreviewKeepsThePreviousOne) {
  const std::string there = dir / "pv";
  ASSERT_EQ(Run(Tiles("preview", 2, {"--no-open", "--dir", there})).code, 0);
  const std::vector<uint8_t> gif = ReadBytes(there + "/preview.gif"), page = ReadBytes(there + "/preview.html");
  for (uint64_t at : {0, 50, 200}) {
    SafeFileFailureScope full_disk(at);
    EXPECT_EQ(Run(Tiles("preview", 3, {"--no-open", "--dir", there})).code, kExitFailure);
    EXPECT_EQ(ReadBytes(there + "/preview.gif"), gif);
    EXPECT_EQ(ReadBytes(there + "/preview.html"), page);
    EXPECT_EQ(testing::FolderEntries(there), (std::vector<std::string>{"preview.gif", "preview.html"}));
  }
}

// Swatches are written as PPM through the same writer.
TEST_F(CliTest, AFullDiskAtAnyByteOfASwatchKeepsThePreviousFile) {
  const std::string out = dir / "s/swatch.ppm";
  std::filesystem::create_directory(dir / "s");
  testing::SweepWriteFailures(
      {out}, [&] { WriteBytes(out, {'o', 'l', 'd'}); },
      [&] { return Run({"swatch", "gradient:radial:#000000:#FFFFFF", "--size", "3x2", "-o", out}).code == 0; });
}

TEST_F(CliTest, ShortMemoryAnywhereFailsCleanly) {
  // Every seventh allocation point in turn: each run either succeeds with a
  // valid GIF or fails with one message and leaves nothing behind.
  std::string out = dir / "m.gif";
  int failures = 0;
  for (long at = 0; at < 400; at += 7) {
    Result r;
    {
      AllocFailureScope fail(at, true);
      r = Run(Tiles("render", 3, {"--custom-palette", "--supercompress", "-o", out}));
    }
    if (r.code == 0) {
      Decode(out);
      std::filesystem::remove(out);
    } else {
      ++failures;
      EXPECT_EQ(r.code, kExitFailure);
      EXPECT_NE(r.err.find("tessarine: "), std::string::npos);
    }
    EXPECT_TRUE(dir.Files().empty()) << at;
  }
  EXPECT_GT(failures, 0);
}

TEST(MemorySize, WholeBytesOrKMG) {
  int64_t bytes = 0;
  const std::pair<const char*, int64_t> good[] = {
      {"1", 1}, {"4096", 4096}, {"64k", 64 << 10}, {"512M", int64_t{512} << 20}, {"3g", int64_t{3} << 30}};
  for (const auto& [text, want] : good) {
    EXPECT_TRUE(ParseMemorySize(text, &bytes)) << text;
    EXPECT_EQ(bytes, want) << text;
  }
  for (const char* bad : {"", "0", "0M", "M", "12Q", "1.5G", "-1", "12MB", " 12", "4294967297G",
                          "99999999999999999999"})
    EXPECT_FALSE(ParseMemorySize(bad, &bytes)) << bad;
}

// Rendering holds a few frames: 100 frames of 48 KB (4.8 MB in all) at a
// fixed palette fit under 1 MB, most of it the remapper's tables (a
// true-colour frame's own palette would cost the host more), while a
// ceiling below one frame stops the build and says the ceiling was the
// cause. Encode holds every frame, so files that together pass the ceiling
// are refused before anything is read.
TEST_F(CliTest, MaxMemoryHoldsRenderToAFewFramesAndRefusesEncodeEarly) {
  std::string out = dir / "long.gif";
  Result r = Run(Tiles("render", 100, {"-s", "Width=128", "-s", "Depth=128", "-p", "6", "--max-memory", "1M", "-o", out}));
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(Decode(out).frames.size(), 100u);

  r = Run(Tiles("render", 3, {"-s", "Width=64", "-s", "Depth=64", "--max-memory", "4K", "-o", dir / "x.gif"}));
  EXPECT_EQ(r.code, kExitFailure);
  EXPECT_EQ(r.err, "tessarine: Memory error\ntessarine: the build needs more than --max-memory 4K allows\n");
  EXPECT_FALSE(std::filesystem::exists(dir / "x.gif"));

  std::vector<std::string> words = {"encode", "--no-config", "--max-memory", "20K", "-o", dir / "e.gif"};
  for (int i = 0; i < 3; ++i) {
    words.push_back(dir / ("f" + std::to_string(i) + ".ppm"));
    WriteBytes(words.back(), Ppm(64, 64, i));  // 12 KB each
  }
  r = Run(words);
  EXPECT_EQ(r.code, kExitFailure);
  EXPECT_EQ(r.err, "tessarine: encode holds every frame in memory, and the frames given take more than "
                   "--max-memory 20K allows\n");
  words[3] = "2M";
  EXPECT_EQ(Run(words).code, 0);

  r = Run(Tiles("render", 3, {"--max-memory", "lots", "-o", out}));
  EXPECT_EQ(r.code, kExitUsage);
  EXPECT_EQ(r.err, "tessarine: --max-memory: 'lots' is not a size (e.g. 512M or 2G)\n");
}

TEST_F(CliTest, UsageErrorsExitWithTwoAndWriteNothing) {
  std::string out = dir / "u.gif";
  const std::pair<Words, const char*> cases[] = {
      {{"render", "--colour", "-o", out}, "unknown option '--colour'"},
      {{"render", "-e", "Nonesuch", "-o", out}, "unknown effect 'Nonesuch'"},
      {{"render", "-e", "Tiles", "-s", "Sparkle=3", "-o", out}, "unknown setting 'Sparkle'"},
      {{"render", "-e", "Tiles", "-s", "Frames", "-o", out}, "--set needs KEY=VALUE"},
      {{"render", "-e", "Tiles", "-s", "Frames=1", "-o", out}, "expected a whole number from 2 to 32760"},
      {{"render", "-e", "Tiles", "-s", "Frames=4x", "-o", out}, "bad value '4x' for Style000Frames"},
      {{"render", "-e", "Tiles", "-s", "Background=#12345", "-o", out}, "expected a colour"},
      {{"render", "-e", "Tiles", "-s", "Smooth=maybe", "-o", out}, "expected on or off"},
      {{"render", "--delay", "0", "-o", out}, "bad delay '0'"},
      {{"render", "--palette", "9", "-o", out}, "unknown palette '9'"},
      {{"render", "--custom-palette", "--colors", "1", "-o", out}, "bad colour count '1'"},
      {{"render", "--colors", "16", "-o", out}, "--colors needs an adaptive palette"},
      {{"encode", "--no-config", "x.ppm"}, "encode needs -o FILE"},
      {{"frobnicate"}, "unknown command 'frobnicate'"},
  };
  for (const auto& [words, message] : cases) {
    Result r = Run(words);
    EXPECT_EQ(r.code, kExitUsage) << r.err;
    EXPECT_EQ(r.err.rfind("tessarine: ", 0), 0u) << r.err;
    EXPECT_NE(r.err.find(message), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << "one line: " << r.err;
  }
  EXPECT_TRUE(dir.Files().empty());
}

// The process's standard output put somewhere else for a while; takes `fd`.
class StandardOutputAs {
 public:
  explicit StandardOutputAs(int fd) : m_saved(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    dup2(fd, STDOUT_FILENO);
    close(fd);
  }
  ~StandardOutputAs() {
    std::fflush(stdout);
    dup2(m_saved, STDOUT_FILENO);
    close(m_saved);
  }

 private:
  int m_saved;
};

// "-o -" writes the GIF to the process's standard output (here a file in its
// place) and nothing else there; a terminal is refused before any rendering.
TEST_F(CliTest, DashWritesTheGifToStandardOutputButNeverToATerminal) {
  const std::string captured = dir / "stdout.gif";
  Result r;
  {
    StandardOutputAs redirect(open(captured.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600));
    r = Run(Tiles("render", 3, {"-o", "-"}));
  }
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(Decode(captured).frames.size(), 3u);
  EXPECT_EQ(dir.Files(), std::vector<std::string>{"stdout.gif"});

  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(grantpt(terminal), 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  {
    StandardOutputAs redirect(open(ptsname(terminal), O_RDWR | O_NOCTTY));
    r = Run(Tiles("render", 3, {"-o", "-"}));
  }
  close(terminal);
  EXPECT_EQ(r.code, kExitUsage);
  EXPECT_EQ(r.err, "tessarine: cannot write the GIF to standard output: it is a terminal (redirect it, or give a "
                   "file name with -o)\n");
}

TEST_F(CliTest, HelpAndVersionSucceedEverywhere) {
  for (const Words& words : {Words{"--help"}, Words{"--version"}, Words{"help"}, Words{"help", "encode"}, Words{"render", "-h"},
                             Words{"encode", "--help"}}) {
    Result r = Run(words);
    EXPECT_EQ(r.code, 0);
    EXPECT_FALSE(r.out.empty());
    EXPECT_EQ(r.err, "");
  }
  EXPECT_NE(Run({"render", "--help"}).out.find("Usage: tessarine render"), std::string::npos);
}

}  // namespace
}  // namespace tess::cli
