// Documents written from and read into the settings: the opening bytes, a
// round trip of every setting that takes part, each line read as its control
// would take it, and a damaged file changing nothing.
#include "dialog/settings_document.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "controls/control_kinds.h"
#include "styles/style_table.h"
#include "tests/support/temp_folder.h"

namespace tess {
namespace {

constexpr uint32_t kDelaysInHundredths = 1;  // host capability bit 0: delay spin "1,25,4"

// A value the control can hold that differs from the default and, as far as
// the range allows, from its neighbours' values, so crossed wires show.
int32_t OtherValue(const PageControl& c, int32_t def) {
  switch (KindRules(c).window) {
    case PageWindowRole::kCheckBox: return def ? 0 : 1;
    case PageWindowRole::kColourButton: return static_cast<int32_t>(0x00A00000u + static_cast<uint32_t>(c.id));
    case PageWindowRole::kComboBox: return (def + 1) % static_cast<int32_t>(c.items.size());
    default: {
      const SpinRange& r = c.range;
      int32_t v = r.min + c.id % (r.max - r.min + 1);
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
  for (const StyleEntry& style : StyleTable())
    for (const PageControl& c : style.page) {
      if (!TakesPartInDocuments(c) || !c.key) continue;
      int32_t def = s.StyleNumber(style.number, c.key);
      s.SetStyleNumber(style.number, c.key, OtherValue(c, def));
      EXPECT_NE(s.StyleNumber(style.number, c.key), def) << SettingKey(style.number, c);
    }
  return s;
}

std::string Line(int number, std::string_view tag, std::string_view value) {
  return FormatControlLine(tag, number, value) + "\r\n";
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
  // Fill buttons carry their whole record; pickers their class's tag.
  size_t fill = text.find("\r\nFILLBT4611=42524E4446494C42");  // "BRNDFILB"
  ASSERT_NE(fill, std::string::npos);
  EXPECT_EQ(text.find("\r\n", fill + 2) - fill, 2 + 11 + 2 * kFillDescriptorSize);
  EXPECT_NE(text.find("\r\nSCRL4D3410=1\r\n"), std::string::npos);  // Fountain's "Scroll"
  EXPECT_NE(text.find("\r\nSCRL2D3610=1\r\n"), std::string::npos);  // Shaped Fountain's
  EXPECT_TRUE(text.ends_with("\r\n;End of document\r\n"));
}

TEST(SettingsDocument, RoundTripRestoresEverySettingThatTakesPart) {
  Settings changed = ChangedSettings();
  RecordingReporter reporter;
  testing::TempFolder dir;
  ASSERT_TRUE(SaveSettingsDocument(dir / "all.TS1", changed, kDelaysInHundredths, reporter));
  Settings loaded;
  ASSERT_TRUE(LoadDocumentIntoSettings(dir / "all.TS1", loaded, kDelaysInHundredths, reporter));
  EXPECT_TRUE(reporter.messages.empty());
  EXPECT_EQ(loaded, changed);

  // The custom palette box travels with the document, not in the settings.
  Settings s;
  SettingsDocument doc(s, kDelaysInHundredths);
  EXPECT_FALSE(doc.custom_palette());
  ASSERT_EQ(ReadDocument(std::string(kDocumentHeader) + "\r\n" + Line(14, "CHKBOX", "1"), doc),
            DocumentStatus::kLoaded);
  EXPECT_TRUE(doc.custom_palette());
  EXPECT_EQ(s, Settings());
  EXPECT_EQ(FormatControlLine(*doc.FindControl(14)), "CHKBOX14=1");
}

// Each line is read as its control would take the value: spins clamped to
// their range, lists without such an item unselected, checks on when not 0,
// colours as unsigned numbers; lines of no control or a foreign tag ignored.
TEST(SettingsDocument, LinesAreTakenAsTheirControlsWouldTakeThem) {
  const StyleEntry& gridlock = *FindStyle("Gridlock");
  const int frames = FindPageControlByKey(gridlock, "Frames")->id;  // "2,32760,64"
  const int colour1 = FindPageControlByKey(gridlock, "FillColor1")->id;
  const int ring1 = FindPageControlByKey(*FindStyle("Iris"), "Style1")->id;  // eight patterns
  struct Case {
    std::string body;
    std::vector<std::pair<const char*, int32_t>> changed;  // every other setting keeps its default
  };
  const Case cases[] = {
      {Line(0, "SPNBTN", "9") + "SPNBTNabc=9\r\n" + Line(frames, "CHKBOX", "1") +
           Line(colour1, "FILLBT", "00FF00FF") + Line(270, "FOUNTN", "00") + Line(9999, "SPNBTN", "9") +
           "SPNBTN11\r\n",
       {}},
      {Line(9998, "SPNBTN", "5") + Line(frames, "SPNBTN", "99") + Line(9999, "TXTFLD", "from a later version") +
           "SPNBTN11==  12\r\n",
       {{"Style016Frames", 99}, {"MainDelay", 12}}},
      {Line(11, "SPNBTN", "99") + Line(frames, "SPNBTN", "1"), {{"MainDelay", 25}, {"Style016Frames", 2}}},
      {Line(frames, "SPNBTN", "-7") + Line(11, "SPNBTN", "many"), {{"Style016Frames", 2}, {"MainDelay", 1}}},
      {Line(frames, "SPNBTN", "99999999999999"), {{"Style016Frames", 32760}}},
      {Line(13, "CMBBOX", "8") + Line(58, "CMBBOX", "20") + Line(ring1, "CMBBOX", "7") +
           Line(15, "CHKBOX", "2") + Line(20, "CHKBOX", "no") + Line(4605, "CLRBTN", "-1") +
           Line(4611, "CLRBTN", "99999999999"),
       // An older document's colour line becomes a Simple fill of that colour.
       {{"MainPalette", 8}, {"MainEffect", -1}, {"Style003Style1", 7}, {"MainDither", 1},
        {"AddDescriptiveCommentBlock", 0}, {"Style016Background", -1},
        {"Style016FillColor1", 0xFFFFFF}}},
      {Line(ring1, "CMBBOX", "8"), {{"Style003Style1", -1}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.body);
    Settings s, want;
    for (auto [key, value] : c.changed) want.SetNumberAt(FindConfigKey(key), value);
    SettingsDocument doc(s, kDelaysInHundredths);
    EXPECT_EQ(ReadDocument(std::string(kDocumentHeader) + "\r\n" + c.body, doc), DocumentStatus::kLoaded);
    EXPECT_EQ(s, want);
  }
  // A host without capability bit 0 counts delays in tenths: a wider range.
  Settings wide;
  SettingsDocument doc(wide, 0);
  ReadDocument(std::string(kDocumentHeader) + "\r\n" + Line(11, "SPNBTN", "99"), doc);
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
  EXPECT_EQ(doc.FindControl(0), nullptr);
}

TEST(SettingsDocument, DamagedFileReportsExactlyAndChangesNoSetting) {
  testing::TempFolder dir;
  std::string text = ";This is a document created by Tessarine #1 Plugin - do not edit.\r\nSPNBTN11=9\r\n";
  testing::WriteText(dir / "damaged.TS1", text);
  Settings s = ChangedSettings();
  RecordingReporter reporter;
  EXPECT_FALSE(LoadDocumentIntoSettings(dir / "damaged.TS1", s, kDelaysInHundredths, reporter));
  EXPECT_EQ(reporter.messages, std::vector<std::string>{"This file has been damaged."});
  EXPECT_EQ(s, ChangedSettings());
}

}  // namespace
}  // namespace tess
