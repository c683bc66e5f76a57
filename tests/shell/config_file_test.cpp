// The configuration file: how a line is read, what a file of lines yields,
// the exact text written, a round trip of every value, and files that cannot
// be read or replaced.
#include "shell/config_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "tests/support/fake_platform.h"
#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"

namespace tess {
namespace {

namespace fs = std::filesystem;

class ConfigFile : public ::testing::Test {
 protected:
  void WriteFile(const std::string& text) { testing::WriteText(m_path, text); }
  std::string ReadFile() const { return testing::ReadText(m_path); }

  testing::TempFolder m_dir;
  std::string m_path = m_dir / "zephyra1.ini";
  testing::FakePlatform m_platform;
};

TEST(ConfigLine, NumbersParseLikeSignedDecimalWrappedTo32BitsWithSpacesAndEqualsAround) {
  const std::pair<const char*, int32_t> cases[] = {
      {"MainDelay = -1", -1},
      {"MainDelay = +12abc", 12},
      {"MainDelay =    -", 0},
      {"MainDelay = x12", 0},
      {"MainDelay = 2147483648", INT32_MIN},
      {"MainDelay = 123456789012345678901234567890", 1312754386},  // the value modulo 2^32
      {"MainDelay=7", 7},
      {"MainDelay  ==  7\n", 7},
      {"MainDelay 7", 7},
      {"MainDelay", 0},
  };
  for (auto [line, value] : cases) {
    Settings s;
    ApplySettingsLine(line, s);
    EXPECT_EQ(s.Number(Key::MainDelay), value) << line;
  }
  Settings s;
  ApplySettingsLine("MainDither = 7", s);  // switches are not limited to 0 and 1 here
  EXPECT_EQ(s.Number(Key::MainDither), 7);
  // Text is cleared, then copied up to 260 characters or a control character.
  ApplySettingsLine("OpenPath = " + std::string(300, 'q'), s);
  EXPECT_EQ(s.Text(Key::OpenPath), std::string(260, 'q'));
  ApplySettingsLine("OpenPath = caf\xC3\xA9 = x\tTAIL", s);
  EXPECT_EQ(s.Text(Key::OpenPath), "caf\xC3\xA9 = x");
  ApplySettingsLine("OpenPath =", s);
  EXPECT_EQ(s.Text(Key::OpenPath), "");
}

// What whole files yield: keys match as prefixes of readable keys, an empty
// key selects the first entry, later duplicates win, reads take at most 259
// characters (the rest of a long line is read as a line of its own).
TEST_F(ConfigFile, FilesOfLinesYieldTheirSettings) {
  using Value = std::variant<int32_t, std::string>;
  const std::string v248(259 - 11, 'v');  // "OpenPath = " is 11 characters
  struct Case {
    std::string text;
    std::vector<std::pair<const char*, Value>> changed;  // every other setting keeps its default
  } cases[] = {
      {"[PlugIn]\nMainD = 9\nStyle000Fill = 5\nPatchLevel = 9\nVersionNumber = 1\n",  // the last two: written only
       {{"MainDelay", 9}, {"Style000FillColor1", 5}}},
      {"MainDelay = 2\n\nMainEffect = 1\n", {{"MainDelay", 2}, {"AddDescriptiveCommentBlock", 0}, {"MainEffect", 1}}},
      {"MainDelay = 2\n = 5\n", {{"MainDelay", 2}, {"AddDescriptiveCommentBlock", 5}}},
      {";MainDelay = 9\n[PlugIn]\n[Other]\nBogus = 3\nMainDelayX = 3\nmaindelay = 3\n", {}},
      {"MainDelay = 3\r\nOpenPath = /a b\r\nMainDelay = 8\r\n", {{"MainDelay", 8}, {"OpenPath", "/a b"}}},
      {"OpenPath = " + v248 + "MainDelay = 9\n", {{"OpenPath", v248}, {"MainDelay", 9}}},
      // A line of exactly 259 characters leaves its line end as an empty line.
      {"OpenPath = " + v248 + "\n", {{"OpenPath", v248}, {"AddDescriptiveCommentBlock", 0}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    Settings want;
    for (const auto& [key, value] : c.changed) {
      if (const int32_t* n = std::get_if<int32_t>(&value)) want.SetNumberAt(FindConfigKey(key), *n);
      else want.SetTextAt(FindConfigKey(key), std::get<std::string>(value));
    }
    WriteFile(c.text);
    Settings s;
    EXPECT_TRUE(ReadSettings(m_path, s, m_platform));
    EXPECT_EQ(s, want);
  }
  // Holding Shift ignores the file; a missing file or path leaves the defaults.
  m_platform.shift_down = true;
  Settings s;
  EXPECT_FALSE(ReadSettings(m_path, s, m_platform));
  m_platform.shift_down = false;
  EXPECT_FALSE(ReadSettings(m_dir / "absent.ini", s, m_platform));
  EXPECT_FALSE(ReadSettings("", s, m_platform));
  EXPECT_EQ(s, Settings());
}

// The reader finds a line's key by binary search: every prefix of every key
// (and one past each) picks what a scan of the table in order picks, the
// first readable key the text begins.
TEST(ConfigKeyLookup, EveryPrefixFindsTheFirstKeyInTheTable) {
  const std::span<const ConfigKey> keys = ConfigKeys();
  for (const ConfigKey& k : keys) {
    for (size_t n = 0; n <= k.name.size(); ++n) {
      for (const std::string& key : {std::string(k.name.substr(0, n)), std::string(k.name.substr(0, n)) + "~"}) {
        int first = -1;
        for (size_t i = 0; i < keys.size() && first < 0; ++i)
          if (!keys[i].IsWrittenOnly() && keys[i].name.starts_with(key)) first = static_cast<int>(i);
        Settings want, got;
        if (first >= 0 && keys[static_cast<size_t>(first)].IsText()) want.SetTextAt(first, "7");
        else if (first >= 0) want.SetNumberAt(first, 7);
        ReadSettingsText(key + " = 7\n", got);
        ASSERT_EQ(got, want) << "key '" << key << "'";
      }
    }
  }
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
  // The time is always 24 characters, whatever the fields hold.
  EXPECT_EQ(FormatHeaderTime(LocalTime{2027, 1, 3, 3, 23, 0, 59}), "Wed Feb  3 23:00:59 2027");
  EXPECT_EQ(FormatHeaderTime(LocalTime{12345, 11, 31, 6, 1, 2, 3}), "Sat Dec 31 01:02:03 1234");
  EXPECT_EQ(FormatHeaderTime(LocalTime{2026, 12, 1, 7, 0, 0, 0}), "??? ???  1 00:00:00 2026");
}

TEST_F(ConfigFile, EveryValueRoundTripsNegativeNumbersAsUnsignedDecimal) {
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
  s.SetNumber(Key::MainDelay, -5);
  ASSERT_TRUE(WriteSettings(m_path, s, m_platform));
  EXPECT_NE(ReadFile().find("\nMainDelay = 4294967291\n"), std::string::npos);
  Settings back;
  ASSERT_TRUE(ReadSettings(m_path, back, m_platform));
  EXPECT_EQ(back, s);
}

TEST_F(ConfigFile, WritingReplacesTheFileOrFailsKeepingWhatWasThere) {
  WriteFile("old\n");
  ASSERT_TRUE(WriteSettings(m_path, Settings(), m_platform));
  EXPECT_TRUE(ReadFile().starts_with(";Brindlewood"));
  EXPECT_EQ(m_dir.Files(), std::vector<std::string>{"zephyra1.ini"});

  EXPECT_FALSE(WriteSettings("", Settings(), m_platform));
  EXPECT_FALSE(WriteSettings(m_dir / "Brindlewood/zephyra1.ini", Settings(), m_platform));
  EXPECT_FALSE(fs::exists(m_dir / "Brindlewood"));  // a missing folder is not created
  // A folder standing where the file should be cannot be replaced by a file.
  std::string folder = m_dir / "folder.ini";
  fs::create_directories(fs::path(folder) / "inside");
  EXPECT_FALSE(WriteSettings(folder, Settings(), m_platform));
  EXPECT_TRUE(fs::is_directory(fs::path(folder) / "inside"));
  EXPECT_EQ(m_dir.Files(), std::vector<std::string>{"zephyra1.ini"});
}

TEST_F(ConfigFile, AFullDiskAtAnyByteKeepsThePreviousFileAndSaysSo) {
  Settings changed;
  changed.SetNumber(Key::MainDelay, 77);
  // The whole text goes out in one write, so the offsets inside the key lines
  // behave alike; every 16th keeps the sweep quick over the 303 keys.
  const uint64_t swept = testing::SweepWriteFailures(
      {m_path}, [&] { WriteFile("old\n"); }, [&] { return WriteSettings(m_path, changed, m_platform); }, 16);
  EXPECT_EQ(swept, FormatSettings(changed, m_platform.Now()).size());
  std::string reason;
  SafeFileFailureScope full_disk(0);
  EXPECT_FALSE(WriteSettings(m_path, changed, m_platform, &reason));
  EXPECT_EQ(reason, "No space left on device");
}

// The longest text value that reads back whole, and one more that does not.
TEST_F(ConfigFile, TextValuesUpToTheLineLimitReadBackWhole) {
  const size_t most = ConfigTextValueMax("CurrentFileName");
  EXPECT_EQ(most, 259u - 4 - 15);
  for (size_t length : {most, most + 1}) {
    Settings s;
    s.SetText(Key::CurrentFileName, std::string(length - 6, 'x') + "Acc=77");
    ASSERT_TRUE(WriteSettings(m_path, s, m_platform));
    Settings back;
    ASSERT_TRUE(ReadSettings(m_path, back, m_platform));
    EXPECT_EQ(back == s, length == most) << length;
  }
}

}  // namespace
}  // namespace tess
