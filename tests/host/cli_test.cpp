// The whole command line in process, through RunCli: every run writes only
// into a temporary folder (the fake platform's application-data folder is
// inside it) and every GIF is decoded back. Grouped by command: list, render
// and its options, the configuration file, test and preview, encode, and the
// exit codes of everything that can go wrong.
#include "host/cli/cli.h"
#include "host/cli/cli_args.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "base/alloc.h"
#include "plugin/host_interface.h"
#include "shell/paths.h"
#include "shell/settings.h"
#include "styles/settings_document.h"
#include "styles/style_table.h"
#include "tests/host/cli_test_styles.h"
#include "tests/support/temp_folder.h"
#include "tests/support/fake_platform.h"
#include "tests/support/gif_decoder.h"

namespace tess::cli {
namespace {

using testing::DecodedGif;
using testing::ReadBytes;
using testing::WriteBytes;

struct Result {
  int code;
  std::string out;
  std::string err;
};

class CliTest : public ::testing::Test {
 protected:
  CliTest() {
    platform.app_data = dir / "appdata";
    platform.documents = dir / "documents";
    // Belt and braces: nothing in process should look, but never the real home.
    setenv("TESSARINE_APPDATA", platform.app_data.c_str(), 1);
  }

  Result Run(std::initializer_list<std::string> words, std::span<const StyleEntry> styles) {
    std::vector<std::string> args(words.begin(), words.end());
    std::ostringstream out, err;
    CliEnvironment env{platform, out, err, &input, false, styles};
    int code = RunCli(args, env);
    return {code, out.str(), err.str()};
  }
  Result Run(std::initializer_list<std::string> words) { return Run(words, testing::CliTestStyles()); }

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

TEST_F(CliTest, ListShowsTheTwentyEffectsInTableOrder) {
  Result r = Run({"list"}, StyleTable());
  ASSERT_EQ(r.code, 0) << r.err;
  const char* names[] = {"Atmosphere", "Bubbles", "Carpet", "Cubist", "Fountain", "Gridlock",
                         "Gumdrops", "Hyperspace", "Iris", "Machine", "Mural", "Neural Network",
                         "Particles", "Phasers on Stun", "Skip Intro", "Shaped Fountain", "Snow",
                         "Solid", "Wavelet", "White Noise"};
  std::istringstream lines(r.out);
  std::string line;
  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(std::getline(lines, line)) << i;
    std::string index = (i < 10 ? " " : "") + std::to_string(i) + "  ";
    EXPECT_EQ(line.rfind(index + names[i], 0), 0u) << line;
    bool ready = StyleTable()[static_cast<size_t>(i)].init != nullptr;
    EXPECT_NE(line.find(ready ? "ready" : "not available yet"), std::string::npos) << line;
  }
  EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(CliTest, ListEffectShowsRangesDefaultsAndCurrentValues) {
  ASSERT_TRUE(EnsureFolderExists(AppDataPath(platform, "")));
  WriteBytes(ConfigPath(), {'S', 't', 'y', 'l', 'e', '0', '1', '6', 'G', 'l', 'a', 'r', 'e', '=', '9', '9', '\n'});
  Result r = Run({"list", "gridlock"}, StyleTable());
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find("Gridlock (effect 5, keys Style016KEY"), std::string::npos) << r.out;
  std::istringstream lines(r.out);
  std::string line, glare, background;
  while (std::getline(lines, line)) {
    if (line.rfind("Glare ", 0) == 0) glare = line;
    if (line.rfind("Background ", 0) == 0) background = line;
  }
  EXPECT_NE(glare.find("0..255"), std::string::npos) << glare;
  EXPECT_NE(glare.find("160"), std::string::npos) << glare;  // the built-in default
  EXPECT_EQ(glare.substr(glare.size() - 2), "99");           // from the configuration
  EXPECT_NE(background.find("#512000"), std::string::npos) << background;  // 0x002051 as #RRGGBB

  EXPECT_EQ(Run({"list", "Nonesuch"}, StyleTable()).code, kExitUsage);
  EXPECT_EQ(Run({"list", "--no-config", "5"}, StyleTable()).code, 0);
}

// ---------------------------------------------------------------- render

TEST_F(CliTest, RenderTakesSettingsFromADocumentAndOptionsOverrideIt) {
  Settings saved;
  saved.SetStyleNumber(0, "Frames", 3);
  saved.SetStyleNumber(0, "Width", 40);
  saved.SetStyleNumber(0, "Depth", 20);
  std::string doc = dir / "night.ts1";
  RecordingReporter messages;
  ASSERT_TRUE(SaveSettingsDocument(doc, saved, kHostCapOptimise, messages));

  std::string out = dir / "night.gif";
  Result r = Run({"render", "--no-config", "-e", "Tiles", "--doc", doc, "-s", "Depth=16",
                  "--no-true-color", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  DecodedGif gif = Decode(out);
  EXPECT_EQ(gif.width, 40);
  EXPECT_EQ(gif.height, 16);
  EXPECT_EQ(gif.frames.size(), 3u);

  // A damaged document is named in the one-line message and nothing is written.
  {
    std::string text = "not a document\r\n";
    WriteBytes(doc, std::vector<uint8_t>(text.begin(), text.end()));
  }
  std::string other = dir / "other.gif";
  r = Run({"render", "--no-config", "-e", "Tiles", "--doc", doc, "-o", other});
  EXPECT_EQ(r.code, kExitFailure);
  EXPECT_EQ(r.err, "tessarine: " + doc + ": This file has been damaged.\n");
  EXPECT_FALSE(std::filesystem::exists(other));
}

TEST_F(CliTest, RenderWritesTheFramesTheSettingsAskFor) {
  std::string out = dir / "tiles.gif";
  Result r = Run({"render", "--no-config", "--effect", "tiles", "--set", "Frames=4", "--set",
                  "Style000Width=32", "-s", "depth=24", "--delay", "6", "--no-true-color", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.err, "");
  DecodedGif gif = Decode(out);
  EXPECT_EQ(gif.width, 32);
  EXPECT_EQ(gif.height, 24);
  EXPECT_EQ(gif.loop_count, 0);
  ASSERT_EQ(gif.frames.size(), 4u);
  for (const auto& frame : gif.frames) {
    EXPECT_EQ(frame.width, 32);
    EXPECT_EQ(frame.height, 24);
    ASSERT_TRUE(frame.control);
    EXPECT_EQ(frame.control->delay, 6);
  }
  ASSERT_EQ(gif.comments.size(), 1u);
  EXPECT_NE(gif.comments[0].find("https://www.brindlewood.example/"), std::string::npos);
  EXPECT_EQ(dir.Files(), std::vector<std::string>{"tiles.gif"});  // nothing else, no config saved

  r = Run({"render", "--no-config", "--no-comment", "-s", "Frames=2", "-s", "Width=16", "-s", "Depth=16",
           "--effect", "0", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  gif = Decode(out);
  EXPECT_TRUE(gif.comments.empty());
  EXPECT_EQ(gif.frames.size(), 2u);
}

TEST_F(CliTest, SupercompressedFramesAreCroppedAndNotDisposed) {
  std::string out = dir / "small.gif";
  Result r = Run({"render", "--no-config", "--effect", "Tiles", "--set", "Frames=4", "--set", "Width=32",
                  "--set", "Depth=32", "--custom-palette", "--supercompress", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  DecodedGif gif = Decode(out);
  ASSERT_EQ(gif.frames.size(), 4u);
  EXPECT_EQ(gif.frames[0].width, 32);
  for (size_t i = 1; i < 4; ++i) {
    const auto& f = gif.frames[i];
    ASSERT_TRUE(f.control);
    EXPECT_TRUE(f.control->has_transparency()) << i;
    EXPECT_EQ(f.control->disposal(), 1) << i;
    // The old and new block positions: 7 wide at most, 4 high, rows 5 to 8.
    EXPECT_LE(f.width, 7) << i;
    EXPECT_EQ(f.height, 4) << i;
    EXPECT_EQ(f.top, 5) << i;
  }
}

TEST_F(CliTest, TrueColourIsTheDefaultAndPaletteOptionsSwitchItOff) {
  std::string out = dir / "tc.gif";
  ASSERT_EQ(Run({"render", "--no-config", "-e", "Tiles", "-s", "Frames=2", "-s", "Width=16", "-s", "Depth=16",
                 "-o", out}).code, 0);
  for (const auto& f : Decode(out).frames) EXPECT_FALSE(f.local_table.empty());
  ASSERT_EQ(Run({"render", "--no-config", "-e", "Tiles", "-s", "Frames=2", "-s", "Width=16", "-s", "Depth=16",
                 "--palette", "216-color safe", "-o", out}).code, 0);
  DecodedGif gif = Decode(out);
  for (const auto& f : gif.frames) EXPECT_TRUE(f.local_table.empty());
  EXPECT_EQ(gif.global_table.size(), 3u * 256);
}

TEST_F(CliTest, AnEffectThatFailsLeavesNoFile) {
  Result r = Run({"render", "--no-config", "--effect", "Broken", "-o", dir / "b.gif"});
  EXPECT_EQ(r.code, kExitFailure);
  EXPECT_EQ(r.err, "tessarine: Memory error\n");
  EXPECT_TRUE(dir.Files().empty());
}

TEST_F(CliTest, ShortMemoryAnywhereFailsCleanly) {
  // Every allocation point in turn: each run either succeeds with a valid GIF
  // or fails with one message and leaves nothing behind.
  std::string out = dir / "m.gif";
  int failures = 0;
  for (long at = 0; at < 400; at += 7) {
    Result r;
    {
      AllocFailureScope fail(at, true);
      r = Run({"render", "--no-config", "-e", "Tiles", "-s", "Frames=3", "-s", "Width=16", "-s", "Depth=16",
               "--custom-palette", "--supercompress", "-o", out});
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
  r = Run({"render", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  DecodedGif gif = Decode(out);
  EXPECT_EQ(gif.frames.size(), 3u);
  EXPECT_EQ(gif.frames[0].control->delay, 9);
  // ...and options without --save leave the file as it was.
  ASSERT_EQ(Run({"render", "-s", "Frames=5", "-d", "2", "-o", out}).code, 0);
  EXPECT_EQ(ReadBytes(ConfigPath()), saved);
  EXPECT_EQ(Decode(out).frames.size(), 5u);
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
  // The user's own file was never involved.
  EXPECT_FALSE(std::filesystem::exists(ConfigPath()));
}

TEST_F(CliTest, EffectThatCannotRenderStillSavesAsTheDialogWould) {
  Result r = Run({"render", "-e", "Pending Effect", "--save", "-o", dir / "p.gif"});
  EXPECT_EQ(r.code, kExitFailure);
  EXPECT_EQ(r.err, "tessarine: effect 'Pending Effect' is not available yet (see 'tessarine list')\n");
  EXPECT_TRUE(std::filesystem::exists(ConfigPath()));
  EXPECT_FALSE(std::filesystem::exists(dir / "p.gif"));
}

// ---------------------------------------------------------------- test and preview

TEST_F(CliTest, TestWritesIntoThePluginDataFolderAndPrintsThePath) {
  Result r = Run({"test", "--no-config", "-e", "Tiles", "-s", "Frames=2", "-s", "Width=16", "-s", "Depth=16"});
  ASSERT_EQ(r.code, 0) << r.err;
  std::string path = PluginDataPath(platform, "test.gif");
  EXPECT_EQ(r.out, path + "\n");
  EXPECT_EQ(Decode(path).frames.size(), 2u);
}

TEST_F(CliTest, PreviewWritesBothFilesAndOpensThePageUnlessAskedNot) {
  std::string there = dir / "pv";
  Result r = Run({"preview", "--no-config", "--no-open", "--dir", there, "-e", "Tiles", "-s", "Frames=3",
                  "-s", "Width=16", "-s", "Depth=16"});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_TRUE(platform.opened_documents.empty());
  EXPECT_EQ(r.out, there + "/preview.html\n");
  EXPECT_EQ(Decode(there + "/preview.gif").frames.size(), 3u);
  std::vector<uint8_t> html = ReadBytes(there + "/preview.html");
  EXPECT_NE(std::string(html.begin(), html.end()).find("<body background=\"preview.gif\">"), std::string::npos);

  r = Run({"preview", "--no-config", "-e", "Tiles", "-s", "Frames=2", "-s", "Width=16", "-s", "Depth=16"});
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

TEST_F(CliTest, EncodeTurnsPpmFramesIntoAGif) {
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
  // Only the red channel changes, everywhere: every frame is whole.
  EXPECT_EQ(gif.frames[2].width, 12);

  // Several images in one stream, from standard input.
  std::vector<uint8_t> stream = Ppm(12, 10, 1);
  std::vector<uint8_t> second = Ppm(12, 10, 2);
  stream.insert(stream.end(), second.begin(), second.end());
  input.str(std::string(stream.begin(), stream.end()));
  r = Run({"encode", "-", "--no-config", "-o", out});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(Decode(out).frames.size(), 2u);
}

TEST_F(CliTest, EncodeRefusesBadFramesAndWritesNothing) {
  std::string good = dir / "good.ppm", small = dir / "small.ppm", text = dir / "text.ppm",
              cut = dir / "cut.ppm";
  WriteBytes(good, Ppm(8, 8, 0));
  WriteBytes(small, Ppm(8, 7, 0));
  WriteBytes(text, {'P', '3', '\n', '1', ' ', '1', '\n', '2', '5', '5', '\n', '0', ' ', '0', ' ', '0'});
  std::vector<uint8_t> truncated = Ppm(8, 8, 0);
  truncated.resize(truncated.size() - 5);
  WriteBytes(cut, truncated);
  std::string out = dir / "never.gif";
  struct Case {
    std::string file;
    std::string message;
  } cases[] = {
      {small, small + ": frame is 8x7 but the first frame is 8x8"},
      {text, text + ": plain (ASCII) PPM is not supported"},
      {cut, cut + ": truncated pixel data (187 of 192 bytes)"},
      {dir / "absent.ppm", dir / "absent.ppm: No such file or directory"},
  };
  for (const Case& c : cases) {
    Result r = Run({"encode", "--no-config", good, c.file, "-o", out});
    EXPECT_EQ(r.code, kExitFailure) << c.file;
    EXPECT_EQ(r.err.rfind("tessarine: " + c.message, 0), 0u) << r.err;
    EXPECT_FALSE(std::filesystem::exists(out));
  }
  EXPECT_EQ(Run({"encode", "--no-config", good}).code, kExitUsage);  // no -o
}

// ---------------------------------------------------------------- exit codes

TEST_F(CliTest, UsageErrorsExitWithTwoAndWriteNothing) {
  std::string out = dir / "u.gif";
  struct Case {
    std::initializer_list<std::string> words;
    const char* message;
  };
  for (const Case& c : std::initializer_list<Case>{
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
           {{"render", "-o", "-"}, "cannot write the GIF to standard output"},
           {{"frobnicate"}, "unknown command 'frobnicate'"},
       }) {
    Result r = Run(c.words);
    EXPECT_EQ(r.code, kExitUsage) << r.err;
    EXPECT_EQ(r.err.rfind("tessarine: ", 0), 0u) << r.err;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << "one line: " << r.err;
  }
  EXPECT_TRUE(dir.Files().empty());
}

TEST_F(CliTest, AnUnwritableOutputFailsWithTheProductMessageAndTheReason) {
  Result r = Run({"render", "--no-config", "-e", "Tiles", "-s", "Frames=2", "-s", "Width=16", "-s", "Depth=16",
                  "-o", dir / "no/such/folder/out.gif"});
  EXPECT_EQ(r.code, kExitFailure);
  EXPECT_NE(r.err.find("tessarine: Error creating new task.\n"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("cannot create a file beside"), std::string::npos) << r.err;
}

TEST_F(CliTest, HelpAndVersionSucceedEverywhere) {
  for (std::initializer_list<std::string> words :
       {std::initializer_list<std::string>{"--help"}, {"--version"}, {"help"}, {"help", "encode"},
        {"list", "--help"}, {"render", "-h"}, {"test", "--help"}, {"preview", "--help"},
        {"encode", "--help"}}) {
    Result r = Run(words);
    EXPECT_EQ(r.code, 0);
    EXPECT_FALSE(r.out.empty());
    EXPECT_EQ(r.err, "");
  }
  EXPECT_NE(Run({"render", "--help"}).out.find("Usage: tessarine render"), std::string::npos);
}

}  // namespace
}  // namespace tess::cli
