#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "shell/config_file.h"
#include "tests/support/fake_platform.h"

namespace tess {
namespace {

namespace fs = std::filesystem;

// Each test gets its own empty folder under the system's temporary folder.
class ConfigFile : public ::testing::Test {
 protected:

  void WriteFile(const std::string& text) {
    std::ofstream out(m_path, std::ios::binary);
    out << text;
  }
  std::string ReadFile() const {
    std::ifstream in(m_path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
  // Settings after reading a file holding `text`.
  Settings ReadText(const std::string& text) {
    WriteFile(text);
    Settings s;
    EXPECT_TRUE(ReadSettings(m_path, s, m_platform));
    return s;
  }
  std::vector<std::string> FolderEntries() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_folder)) names.push_back(entry.path().filename().string());
    return names;
  }

  testing::TempFolder m_temp;
  fs::path m_folder = m_temp.path();
  std::string m_path = m_temp / "zephyra1.ini";
  testing::FakePlatform m_platform;
};

TEST_F(ConfigFile, NegativeNumbersTravelAsUnsignedDecimal) {
  Settings s;
  s.SetNumber(Key::MainDelay, -5);
  s.SetStyleNumber(0, "Background", -1);
  ASSERT_TRUE(WriteSettings(m_path, s, m_platform));
  std::string text = ReadFile();
  EXPECT_NE(text.find("\nMainDelay = 4294967291\n"), std::string::npos);
  EXPECT_NE(text.find("\nStyle000Background = 4294967295\n"), std::string::npos);

  Settings back;
  ASSERT_TRUE(ReadSettings(m_path, back, m_platform));
  EXPECT_EQ(back.Number(Key::MainDelay), -5);
  EXPECT_EQ(back.StyleNumber(0, "Background"), -1);
}

TEST_F(ConfigFile, NumbersParseLikeSignedDecimalWrappedTo32Bits) {
  auto delay = [](std::string_view line) {
    Settings s;
    ApplySettingsLine(line, s);
    return s.Number(Key::MainDelay);
  };
  EXPECT_EQ(delay("MainDelay = -1"), -1);
  EXPECT_EQ(delay("MainDelay = +12abc"), 12);
  EXPECT_EQ(delay("MainDelay =    -"), 0);
  EXPECT_EQ(delay("MainDelay = x12"), 0);
  EXPECT_EQ(delay("MainDelay = 2147483648"), INT32_MIN);
  EXPECT_EQ(delay("MainDelay = 99999999999"), static_cast<int32_t>(99999999999ull % 4294967296ull));
  EXPECT_EQ(delay("MainDelay = 123456789012345678901234567890"),
            1312754386);  // the value modulo 2^32
  // Switches are not limited to 0 and 1 here.
  Settings s;
  ApplySettingsLine("MainDither = 7", s);
  EXPECT_EQ(s.Number(Key::MainDither), 7);
}

TEST_F(ConfigFile, SpacesAndEqualsSignsAroundTheValue) {
  for (const char* line : {"MainDelay=7", "MainDelay = 7", "MainDelay == 7", "MainDelay  ==  7\n", "MainDelay 7"}) {
    Settings s;
    ApplySettingsLine(line, s);
    EXPECT_EQ(s.Number(Key::MainDelay), 7) << line;
  }
  Settings alone;
  ApplySettingsLine("MainDelay", alone);
  EXPECT_EQ(alone.Number(Key::MainDelay), 0);
}

TEST_F(ConfigFile, KeysMatchAsPrefixesOfReadableKeys) {
  Settings s = ReadText("[PlugIn]\nMainD = 9\nStyle000Fill = 5\nPatchLevel = 9\nVersionNumber = 1\n");
  EXPECT_EQ(s.Number(Key::MainDelay), 9);
  EXPECT_EQ(s.StyleNumber(0, "FillColor1"), 5);
  EXPECT_EQ(s.Number(Key::PatchLevel), 1);  // written only
  EXPECT_EQ(s.Number(Key::VersionNumber), 64);
}

TEST_F(ConfigFile, AnEmptyKeySelectsTheFirstEntry) {
  struct Case {
    const char* line;
    int32_t expected;
  };
  for (Case c : {Case{"\n", 0}, Case{" = 5\n", 5}, Case{"=3\n", 3}}) {
    Settings s = ReadText(std::string("MainDelay = 2\n") + c.line + "MainEffect = 1\n");
    EXPECT_EQ(s.Number(Key::AddDescriptiveCommentBlock), c.expected) << c.line;
    EXPECT_EQ(s.Number(Key::MainDelay), 2);
    EXPECT_EQ(s.Number(Key::MainEffect), 1);
  }
}

TEST_F(ConfigFile, CommentsUnknownKeysAndSectionsChangeNothing) {
  Settings s = ReadText(";MainDelay = 9\n[PlugIn]\n[Other]\nBogus = 3\nMainDelayX = 3\nmaindelay = 3\n");
  EXPECT_EQ(s, Settings());
}

TEST_F(ConfigFile, LaterDuplicatesWinAndCrLfIsHarmless) {
  Settings s = ReadText("MainDelay = 3\r\nOpenPath = /a b\r\nMainDelay = 8\r\n");
  EXPECT_EQ(s.Number(Key::MainDelay), 8);
  EXPECT_EQ(s.Text(Key::OpenPath), "/a b");
}

TEST_F(ConfigFile, TextIsClearedThenCopiedUpTo260Characters) {
  Settings s;
  ApplySettingsLine("OpenPath = " + std::string(300, 'q'), s);
  EXPECT_EQ(s.Text(Key::OpenPath), std::string(260, 'q'));
  ApplySettingsLine("OpenPath =", s);
  EXPECT_EQ(s.Text(Key::OpenPath), "");
  ApplySettingsLine("OpenPath = caf\xC3\xA9 = x\tTAIL", s);
  EXPECT_EQ(s.Text(Key::OpenPath), "caf\xC3\xA9 = x");  // cut at the tab, bytes above 127 kept
}

TEST_F(ConfigFile, ReadsTakeAtMost259Characters) {
  // "OpenPath = " is 11 characters; the rest of the physical line is read as
  // a line of its own, so a key hidden there is taken.
  std::string value(259 - 11, 'v');
  Settings s = ReadText("OpenPath = " + value + "MainDelay = 9\n");
  EXPECT_EQ(s.Text(Key::OpenPath), value);
  EXPECT_EQ(s.Number(Key::MainDelay), 9);
  EXPECT_EQ(s.Number(Key::AddDescriptiveCommentBlock), 1);

  // A line of exactly 259 characters leaves its line end as an empty line.
  Settings exact = ReadText("OpenPath = " + value + "\n");
  EXPECT_EQ(exact.Text(Key::OpenPath), value);
  EXPECT_EQ(exact.Number(Key::AddDescriptiveCommentBlock), 0);
}

TEST_F(ConfigFile, ShiftHeldIgnoresTheFile) {
  WriteFile("MainDelay = 9\n");
  m_platform.shift_down = true;
  Settings s;
  EXPECT_FALSE(ReadSettings(m_path, s, m_platform));
  EXPECT_EQ(s, Settings());
}

TEST_F(ConfigFile, MissingFileOrPathLeavesDefaults) {
  Settings s;
  EXPECT_FALSE(ReadSettings(m_path, s, m_platform));
  EXPECT_FALSE(ReadSettings("", s, m_platform));
  EXPECT_FALSE(WriteSettings("", s, m_platform));
  EXPECT_EQ(s, Settings());
}

TEST_F(ConfigFile, HeaderAndLinesExactly) {
  ASSERT_TRUE(WriteSettings(m_path, Settings(), m_platform));
  std::string text = ReadFile();
  EXPECT_EQ(text, FormatSettings(Settings(), m_platform.now));
  EXPECT_TRUE(text.starts_with(
      ";Brindlewood animtion plugin configuration file\n"
      ";Edit this at your own risk\n"
      ";Last updated Sun Nov 22 09:05:07 2026\n"
      ";\n"
      "[PlugIn]\n"
      "AddDescriptiveCommentBlock = 1\n"
      "AccentCompensation = 1\n"
      "CurrentFileName = untitled.ts1\n"));
  EXPECT_NE(text.find("\nMatrixDefaultTile = \nOpenPath = \nPatchLevel = 1\n"), std::string::npos);
  EXPECT_NE(text.find("\nStyle016Background = 8273\n"), std::string::npos);
  EXPECT_TRUE(text.ends_with("\nStyle019Width = 190\nTruecolour = 1\nUpdateDelay = 1000\nVersionNumber = 64\n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5 + 303);
}

TEST_F(ConfigFile, HeaderTimeIsAlways24Characters) {
  EXPECT_EQ(FormatHeaderTime(LocalTime{2027, 1, 3, 3, 23, 0, 59}), "Wed Feb  3 23:00:59 2027");
  EXPECT_EQ(FormatHeaderTime(LocalTime{12345, 11, 31, 6, 1, 2, 3}), "Sat Dec 31 01:02:03 1234");
  EXPECT_EQ(FormatHeaderTime(LocalTime{2026, 12, 1, 7, 0, 0, 0}), "??? ???  1 00:00:00 2026");
}

TEST_F(ConfigFile, EveryValueRoundTrips) {
  Settings s;
  std::span<const ConfigKey> keys = ConfigKeys();
  for (int i = 0; i < kConfigKeyCount; ++i) {
    const ConfigKey& key = keys[static_cast<size_t>(i)];
    if (key.IsWrittenOnly()) continue;
    if (key.IsText())
      s.SetTextAt(i, "C:\\Some Folder\\file " + std::to_string(i) + ".x = y ");
    else
      s.SetNumberAt(i, (i % 3 == 0 ? -1 : 1) * (i * 7919 + 3));
  }
  ASSERT_TRUE(WriteSettings(m_path, s, m_platform));
  Settings back;
  ASSERT_TRUE(ReadSettings(m_path, back, m_platform));
  EXPECT_EQ(back, s);
}

TEST_F(ConfigFile, WritingReplacesTheFileAndLeavesNothingElse) {
  WriteFile("old\n");
  ASSERT_TRUE(WriteSettings(m_path, Settings(), m_platform));
  EXPECT_TRUE(ReadFile().starts_with(";Brindlewood"));
  EXPECT_EQ(FolderEntries(), std::vector<std::string>{"zephyra1.ini"});
}

TEST_F(ConfigFile, MissingFolderFailsWithoutCreatingIt) {
  fs::path missing = m_folder / "Brindlewood";
  EXPECT_FALSE(WriteSettings((missing / "zephyra1.ini").string(), Settings(), m_platform));
  EXPECT_FALSE(fs::exists(missing));
  EXPECT_TRUE(FolderEntries().empty());
}

TEST_F(ConfigFile, FailedReplaceKeepsWhatWasThere) {
  // A folder standing where the file should be cannot be replaced by a file.
  fs::create_directories(fs::path(m_path) / "inside");
  EXPECT_FALSE(WriteSettings(m_path, Settings(), m_platform));
  EXPECT_TRUE(fs::is_directory(fs::path(m_path) / "inside"));
  EXPECT_EQ(FolderEntries(), std::vector<std::string>{"zephyra1.ini"});
}

}  // namespace
}  // namespace tess
