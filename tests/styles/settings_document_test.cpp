#include "styles/settings_document.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "styles/style_table.h"

namespace tess {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kDelaysInHundredths = 1;  // host capability bit 0: delay spin "1,25,4"

const std::vector<int> kMainOrder = {11, 10, 14, 15, 19, 20, 21, 13, 58};

// Page controls that take part, in the order the dialog enumerates them.
std::vector<std::pair<const StyleEntry*, const PageControl*>> PageParticipants() {
  std::vector<std::pair<const StyleEntry*, const PageControl*>> list;
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page)
      if (!PageControlTag(c.kind).empty() && c.key) list.emplace_back(&style, &c);
  return list;
}

int Items(const char* items) {
  int n = 1;
  for (const char* p = items; *p; ++p) n += *p == ';';
  return n;
}

// A value the control can hold that differs from the default and, as far as
// the range allows, from its neighbours' values, so crossed wires show.
int32_t OtherValue(const PageControl& c, int32_t def) {
  switch (c.kind) {
    case ControlKind::kCheck: return def ? 0 : 1;
    case ControlKind::kColourButton:
    case ControlKind::kFillButton: return static_cast<int32_t>(0x00A00000u + static_cast<uint32_t>(c.id));
    case ControlKind::kDropDown: return (def + 1) % Items(c.spin);
    default: {
      SpinRange r = ParseSpinText(c.spin);
      int32_t span = r.max - r.min + 1;
      int32_t v = r.min + c.id % span;
      return v != def ? v : (v == r.max ? r.min : v + 1);
    }
  }
}

// Settings with every value a document carries changed from its default.
Settings ChangedSettings() {
  Settings s;
  s.SetNumber(Key::MainDelay, 17);
  s.SetNumber(Key::Truecolour, 0);
  s.SetNumber(Key::MainDither, 1);
  s.SetNumber(Key::MainSupercompress, 1);
  s.SetNumber(Key::AddDescriptiveCommentBlock, 0);
  s.SetNumber(Key::MainMaskBackground, 0);
  s.SetNumber(Key::MainPalette, 2);
  s.SetNumber(Key::MainEffect, 13);
  for (auto [style, c] : PageParticipants()) {
    int32_t def = s.StyleNumber(style->number, c->key);
    s.SetStyleNumber(style->number, c->key, OtherValue(*c, def));
    EXPECT_NE(s.StyleNumber(style->number, c->key), def) << SettingKey(style->number, *c);
  }
  return s;
}

// Loads `body` after a good header into `settings`.
DocumentStatus LoadBody(Settings& settings, const std::string& body, SettingsDocument* doc = nullptr) {
  std::string text = std::string(kDocumentHeader) + "\r\n" + body;
  if (doc) return ReadDocument(text, *doc);
  SettingsDocument own(settings, kDelaysInHundredths);
  return ReadDocument(text, own);
}

std::string Line(int number, std::string_view tag, std::string_view value) {
  return FormatControlLine(tag, number, value) + "\r\n";
}

TEST(SettingsDocument, SavesMainControlsThenPagesInTableAndDeclarationOrder) {
  Settings s;
  SettingsDocument doc(s, kDelaysInHundredths);
  std::vector<int> numbers;
  std::vector<std::string> tags;
  doc.ForEachControl([&](const DocumentControl& c) {
    numbers.push_back(c.Number());
    tags.emplace_back(c.Tag());
  });

  std::vector<int> expected = kMainOrder;
  std::vector<std::string> expected_tags = {"SPNBTN", "CHKBOX", "CHKBOX", "CHKBOX", "CHKBOX",
                                            "CHKBOX", "CHKBOX", "CMBBOX", "CMBBOX"};
  for (auto [style, c] : PageParticipants()) {
    expected.push_back(c->id);
    expected_tags.emplace_back(PageControlTag(c->kind));
  }
  EXPECT_EQ(numbers, expected);
  EXPECT_EQ(tags, expected_tags);
  EXPECT_EQ(doc.size(), expected.size());
  for (int n : expected) EXPECT_EQ(doc.FindControl(n)->Number(), n);
  EXPECT_EQ(doc.FindControl(0), nullptr);
}

TEST(SettingsDocument, PinsTheOpeningLinesOfTheDefaults) {
  Settings s;
  SettingsDocument doc(s, kDelaysInHundredths);
  MemorySink sink;
  ASSERT_TRUE(WriteDocument(sink, doc));
  std::string text(sink.bytes().begin(), sink.bytes().end());
  std::string opening =
      ";This is a document created by Tessarine #1 Plugin by Brindlewood - do not edit.\r\n"
      ";Start of document\r\n"
      "SPNBTN11=4\r\nCHKBOX10=1\r\nCHKBOX14=0\r\nCHKBOX15=0\r\nCHKBOX19=0\r\nCHKBOX20=1\r\n"
      "CHKBOX21=1\r\nCMBBOX13=6\r\nCMBBOX58=5\r\n"
      // Atmosphere, first in the table: its fountain takes no part.
      "SPNBTN4101=64\r\nSPNBTN4106=192\r\nSPNBTN4107=32\r\nSPNBTN4130=8\r\nSPNBTN4131=10\r\n"
      "SPNBTN4104=9872\r\n";
  EXPECT_EQ(text.substr(0, opening.size()), opening);
  EXPECT_NE(text.find("\r\nCLRBTN4605=8273\r\n"), std::string::npos);  // Gridlock background
  // Fill buttons travel as plain colours for now; pickers take no part yet.
  EXPECT_NE(text.find("\r\nCLRBTN4611=3639295\r\n"), std::string::npos);
  EXPECT_EQ(text.find("3410="), std::string::npos);  // Fountain's "Scroll" picker
  EXPECT_TRUE(text.ends_with("\r\n;End of document\r\n"));
}

TEST(SettingsDocument, RoundTripRestoresEverySettingThatTakesPart) {
  Settings changed = ChangedSettings();
  RecordingReporter reporter;
  fs::path path = fs::temp_directory_path() / ("tess-settings-doc-" + std::to_string(std::random_device{}()) + ".TS1");
  ASSERT_TRUE(SaveSettingsDocument(path.string(), changed, kDelaysInHundredths, reporter));

  Settings loaded;
  ASSERT_TRUE(LoadDocumentIntoSettings(path.string(), loaded, kDelaysInHundredths, reporter));
  fs::remove(path);
  EXPECT_TRUE(reporter.messages.empty());
  EXPECT_EQ(loaded, changed);
  for (auto [style, c] : PageParticipants())
    EXPECT_EQ(loaded.StyleNumber(style->number, c->key), changed.StyleNumber(style->number, c->key))
        << SettingKey(style->number, *c);
}

TEST(SettingsDocument, CustomPaletteTravelsWithoutTouchingTheSettings) {
  Settings s;
  SettingsDocument doc(s, kDelaysInHundredths);
  EXPECT_FALSE(doc.custom_palette());
  ASSERT_EQ(LoadBody(s, Line(14, "CHKBOX", "1"), &doc), DocumentStatus::kLoaded);
  EXPECT_TRUE(doc.custom_palette());
  EXPECT_EQ(s, Settings());
  EXPECT_EQ(FormatControlLine(*doc.FindControl(14)), "CHKBOX14=1");
}

TEST(SettingsDocument, IgnoresNumberZeroUnknownNumbersAndForeignTags) {
  const StyleEntry& gridlock = *FindStyle("Gridlock");
  int frames = FindPageControlByKey(gridlock, "Frames")->id;
  int colour1 = FindPageControlByKey(gridlock, "FillColor1")->id;
  Settings s;
  std::string body = Line(0, "SPNBTN", "9") + "SPNBTNabc=9\r\n" + Line(frames, "CHKBOX", "1") +
                     Line(colour1, "FILLBT", "00FF00FF") + Line(270, "FOUNTN", "00") +
                     Line(9999, "SPNBTN", "9") + "SPNBTN11\r\n";
  EXPECT_EQ(LoadBody(s, body), DocumentStatus::kLoaded);
  EXPECT_EQ(s, Settings());
}

TEST(SettingsDocument, LoadsTheKnownLinesOfALargerDocument) {
  const StyleEntry& gridlock = *FindStyle("Gridlock");
  int frames = FindPageControlByKey(gridlock, "Frames")->id;
  Settings s;
  std::string body = Line(9998, "SPNBTN", "5") + Line(frames, "SPNBTN", "99") +
                     Line(9999, "TXTFLD", "from a later version") + "SPNBTN11==  12\r\n";
  EXPECT_EQ(LoadBody(s, body), DocumentStatus::kLoaded);
  EXPECT_EQ(s.StyleNumber(gridlock.number, "Frames"), 99);
  EXPECT_EQ(s.Number(Key::MainDelay), 12);
}

TEST(SettingsDocument, NumbersOutsideTheSpinRangeAreStoredClamped) {
  const StyleEntry& gridlock = *FindStyle("Gridlock");
  int frames = FindPageControlByKey(gridlock, "Frames")->id;  // "2,32760,64"
  Settings s;
  LoadBody(s, Line(11, "SPNBTN", "99") + Line(frames, "SPNBTN", "1"));
  EXPECT_EQ(s.Number(Key::MainDelay), 25);
  EXPECT_EQ(s.StyleNumber(gridlock.number, "Frames"), 2);
  LoadBody(s, Line(frames, "SPNBTN", "-7") + Line(11, "SPNBTN", "many"));
  EXPECT_EQ(s.StyleNumber(gridlock.number, "Frames"), 2);
  EXPECT_EQ(s.Number(Key::MainDelay), 1);
  LoadBody(s, Line(frames, "SPNBTN", "99999999999999"));
  EXPECT_EQ(s.StyleNumber(gridlock.number, "Frames"), 32760);

  // The wider range of a host without capability bit 0.
  EXPECT_EQ(DelaySpinText(0), "1,250,40");
  EXPECT_EQ(DelaySpinText(kDelaysInHundredths | 2), "1,25,4");
  Settings wide;
  SettingsDocument doc(wide, 0);
  LoadBody(wide, Line(11, "SPNBTN", "99"), &doc);
  EXPECT_EQ(wide.Number(Key::MainDelay), 99);
}

TEST(SettingsDocument, SavedValuesAreWhatTheControlsWouldShow) {
  Settings s;
  s.SetNumber(Key::MainDelay, -5);    // read unsigned, so above the range
  s.SetNumber(Key::MainPalette, 42);  // no such item: no selection
  s.SetNumber(Key::MainEffect, -3);
  s.SetNumber(Key::MainDither, 7);
  s.SetStyleNumber(16, "Background", -1);
  SettingsDocument doc(s, kDelaysInHundredths);
  EXPECT_EQ(FormatControlLine(*doc.FindControl(11)), "SPNBTN11=25");
  EXPECT_EQ(FormatControlLine(*doc.FindControl(13)), "CMBBOX13=-1");
  EXPECT_EQ(FormatControlLine(*doc.FindControl(58)), "CMBBOX58=-1");
  EXPECT_EQ(FormatControlLine(*doc.FindControl(15)), "CHKBOX15=1");
  EXPECT_EQ(FormatControlLine(*doc.FindControl(4605)), "CLRBTN4605=4294967295");
}

TEST(SettingsDocument, ListsChecksAndColoursTakeValuesAsTheirControlsWould) {
  const StyleEntry& iris = *FindStyle("Iris");
  int ring1 = FindPageControlByKey(iris, "Style1")->id;  // eight patterns
  Settings s;
  LoadBody(s, Line(13, "CMBBOX", "8") + Line(58, "CMBBOX", "20") + Line(ring1, "CMBBOX", "7") +
                  Line(15, "CHKBOX", "2") + Line(20, "CHKBOX", "no") +
                  Line(4605, "CLRBTN", "-1") + Line(4611, "CLRBTN", "99999999999"));
  EXPECT_EQ(s.Number(Key::MainPalette), 8);
  EXPECT_EQ(s.Number(Key::MainEffect), -1);
  EXPECT_EQ(s.StyleNumber(iris.number, "Style1"), 7);
  EXPECT_EQ(s.Number(Key::MainDither), 1);
  EXPECT_EQ(s.Number(Key::AddDescriptiveCommentBlock), 0);
  EXPECT_EQ(s.StyleNumber(16, "Background"), -1);
  EXPECT_EQ(static_cast<uint32_t>(s.StyleNumber(16, "FillColor1")), 0xFFFFFFFFu);
  LoadBody(s, Line(ring1, "CMBBOX", "8"));
  EXPECT_EQ(s.StyleNumber(iris.number, "Style1"), -1);
}

TEST(SettingsDocument, DamagedFileReportsExactlyAndChangesNoSetting) {
  fs::path path = fs::temp_directory_path() / ("tess-damaged-" + std::to_string(std::random_device{}()) + ".TS1");
  {
    std::ofstream out(path, std::ios::binary);
    out << ";This is a document created by Tessarine #1 Plugin - do not edit.\r\nSPNBTN11=9\r\n";
  }
  Settings s = ChangedSettings();
  RecordingReporter reporter;
  EXPECT_FALSE(LoadDocumentIntoSettings(path.string(), s, kDelaysInHundredths, reporter));
  fs::remove(path);
  EXPECT_EQ(reporter.messages, std::vector<std::string>{"This file has been damaged."});
  EXPECT_EQ(s, ChangedSettings());
}

}  // namespace
}  // namespace tess
