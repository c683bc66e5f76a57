// Document files: the line codec, the hexadecimal form, reading and writing
// through a target of fake controls, and the file framing with its messages.
#include "shell/document.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"

namespace tess {
namespace {

namespace fs = std::filesystem;

// A control that keeps its value as text and records every value it took.
class FakeControl final : public DocumentControl {
 public:
  FakeControl(std::string_view tag, int number, std::string value)
      : value(std::move(value)), m_tag(tag), m_number(number) {}
  std::string_view Tag() const override { return m_tag; }
  int Number() const override { return m_number; }
  std::string ValueText() const override {
    if (throw_on_save) throw std::bad_alloc();
    return value;
  }
  bool TakeValue(std::string_view v) override {
    value = v;
    taken.emplace_back(v);
    return true;
  }

  std::string value;
  std::vector<std::string> taken;
  bool throw_on_save = false;

 private:
  std::string_view m_tag;
  int m_number;
};

// Three controls: SPNBTN11 = "4", CHKBOX10 = "1", TXTFLD3001 = "a = b".
class FakeTarget final : public DocumentTarget {
 public:
  FakeTarget() {
    controls.emplace_back("SPNBTN", 11, "4");
    controls.emplace_back("CHKBOX", 10, "1");
    controls.emplace_back("TXTFLD", 3001, "a = b");
  }
  void ForEachControl(const std::function<void(const DocumentControl&)>& visit) const override {
    for (const FakeControl& c : controls) visit(c);
  }
  DocumentControl* FindControl(int number) override {
    for (FakeControl& c : controls)
      if (c.Number() == number) return &c;
    return nullptr;
  }
  void DocumentLoaded() override { ++loaded; }

  std::vector<std::string> Values() const {
    std::vector<std::string> v;
    for (const FakeControl& c : controls) v.push_back(c.value);
    return v;
  }

  std::vector<FakeControl> controls;
  int loaded = 0;
};

const std::vector<std::string> kUntouched = FakeTarget().Values();

constexpr std::string_view kHeaderLines =
    ";This is a document created by Tessarine #1 Plugin by Brindlewood - do not edit.\r\n"
    ";Start of document\r\n";

std::string Document(std::string_view body) { return std::string(kHeaderLines) + std::string(body); }

// ---------------------------------------------------------------- line codec

TEST(DocumentLine, FormatsOneLinePerControl) {
  EXPECT_EQ(FormatControlLine("SPNBTN", 3001, NumberValueText(-12)), "SPNBTN3001=-12");
  EXPECT_EQ(FormatControlLine("CLRBTN", 7, UnsignedValueText(0xFFFFFFFFu)), "CLRBTN7=4294967295");
  EXPECT_EQ(FormatControlLine("TXTFLD", 5, "one\r\ntwo"), "TXTFLD5=one");  // a value never breaks its line
  EXPECT_EQ(FormatControlLine("TXTFLD", 5, "one\ntwo"), "TXTFLD5=one");
  EXPECT_EQ(TextFieldValueText(std::string(2000, 'x')).size(), kTextFieldValueMax);
  EXPECT_EQ(CutLineEnd("a\rb\nc"), "a");
  EXPECT_EQ(CutLineEnd("a\nb\rc"), "a");
  EXPECT_EQ(CutLineEnd(std::string_view("a\0b", 3)), "a");
}

TEST(DocumentLine, ReadsTheNumberAfterAnySixCharactersAndTheValueAfterTheEquals) {
  const std::pair<const char*, int> numbers[] = {
      {"SPNBTN3001=12", 3001}, {"SPNBTN+7=1", 7}, {"SPNBTN-5=1", -5}, {"SPNBTNx=1", 0},
      {"SPNBTN=1", 0},         {"SPN12", 0},      {"SPNBTN99999999999=1", 0}, {"123456789=1", 789}};
  for (auto [line, number] : numbers) EXPECT_EQ(DocumentLineNumber(line), number) << line;

  // Every "=" and space after the first "=" is skipped; the tag must match exactly.
  const std::pair<const char*, std::optional<std::string_view>> values[] = {
      {"SPNBTN3001==  12", "12"}, {"SPNBTN3001= = =12 ", "12 "}, {"SPNBTN3001= ", ""},
      {"CHKBOX3001=1", {}},       {"spnbtn3001=1", {}},          {"SPNBTN3001 12", {}},
      {"SPNBT", {}}};
  for (auto [line, value] : values) EXPECT_EQ(LineValue(line, "SPNBTN"), value) << line;
  EXPECT_EQ(LineValue("TXTFLD5=a = b", "TXTFLD"), "a = b");

  FakeControl c("SPNBTN", 3001, "old");
  EXPECT_FALSE(DeliverLine(c, "CHKBOX3001=1"));
  EXPECT_FALSE(DeliverLine(c, "SPNBTN3001"));
  EXPECT_EQ(c.value, "old");
  EXPECT_TRUE(DeliverLine(c, "SPNBTN3001==  12"));
  EXPECT_EQ(c.value, "12");
}

TEST(DocumentLine, ValueNumbersReadLikeAnEditField) {
  const std::pair<const char*, int64_t> cases[] = {
      {"  -3x", -3}, {"+5", 5}, {"abc", 0}, {"-", 0}, {"4294967295", 4294967295}};
  for (auto [text, number] : cases) EXPECT_EQ(ParseValueNumber(text), number) << text;
  // Far outside 32 bits the number saturates instead of wrapping into range.
  EXPECT_GT(ParseValueNumber("99999999999999999999999999"), int64_t{1} << 40);
  EXPECT_LT(ParseValueNumber("-99999999999999999999999999"), -(int64_t{1} << 40));
}

// ---------------------------------------------------------------- hexadecimal form

TEST(DocumentHex, RoundTripsAtOddLengthsAndRefusesShortOrBrokenText) {
  const uint8_t pinned[] = {0x00, 0xAB, 0x0F, 0xF0, 0x7E};
  EXPECT_EQ(HexEncode(pinned), "00AB0FF07E");
  std::mt19937 random(47);
  for (size_t n : {1u, 7u, 585u}) {
    std::vector<uint8_t> bytes(n);
    for (uint8_t& b : bytes) b = static_cast<uint8_t>(random());
    Buffer<uint8_t> back = HexDecode(HexEncode(bytes), n);
    ASSERT_TRUE(back) << n;
    EXPECT_EQ(std::vector<uint8_t>(back.get(), back.get() + n), bytes) << n;
    EXPECT_EQ(back[n], 0) << "one zeroed byte beyond the block";
  }
  // Either case; digits beyond the block are ignored.
  Buffer<uint8_t> b = HexDecode("aBcD12ff99", 3);
  ASSERT_TRUE(b);
  EXPECT_EQ(b[0] + (b[1] << 8) + (b[2] << 16), 0x12CDAB);
  for (const char* bad : {"ABCD", "ABC", "AB CD", "ABG0"}) EXPECT_FALSE(HexDecode(bad, 3)) << bad;
  AllocFailureScope fail(0);
  EXPECT_FALSE(HexDecode("ABCD", 2));
}

// ---------------------------------------------------------------- writing and reading

// Takes `capacity` bytes, then fails.
class ShortSink final : public ByteSink {
 public:
  explicit ShortSink(size_t capacity) : m_left(capacity) {}
  bool Write(const void*, size_t size) override {
    if (size > m_left) return false;
    m_left -= size;
    return true;
  }

 private:
  size_t m_left;
};

TEST(DocumentWrite, PinsTheBytesAndReportsAFailingSinkWhereverItFails) {
  FakeTarget t;
  MemorySink full;
  ASSERT_TRUE(WriteDocument(full, t));
  EXPECT_EQ(std::string(full.bytes().begin(), full.bytes().end()),
            Document("SPNBTN11=4\r\nCHKBOX10=1\r\nTXTFLD3001=a = b\r\n;End of document\r\n"));
  for (size_t cut = 0; cut < full.bytes().size(); cut += 7) {
    ShortSink sink(cut);
    EXPECT_FALSE(WriteDocument(sink, t)) << cut;
  }
}

TEST(DocumentRead, DeliversLinesToControlsByNumberAndSkipsTheRest) {
  FakeTarget t;
  std::string text = Document(
      "SPNBTN11=7\r\n"
      ";CHKBOX10=0\r\n"         // comment
      "SPNBTN0=9\r\n"           // number 0
      "FOUNTN270=00FF\r\n"      // a control this target does not have
      "SPNBTN10=0\r\n"          // foreign tag for control 10
      "CHKBOX10\r\n"            // no "="
      "TXTFLD3001==  new text\r\n"
      ";End of document\r\n"
      "CHKBOX10=0\r\n");        // lines after the end line still count
  EXPECT_EQ(ReadDocument(text, t), DocumentStatus::kLoaded);
  EXPECT_EQ(t.Values(), (std::vector<std::string>{"7", "0", "new text"}));
  EXPECT_EQ(t.controls[1].taken, std::vector<std::string>{"0"});

  // Line feeds alone, no end line, and an empty text (nothing to load, not damaged).
  FakeTarget lf;
  EXPECT_EQ(ReadDocument(";Tessarine #1 Plugin, Brindlewood\n;Start of document\nSPNBTN11=8\nCHKBOX10=0", lf),
            DocumentStatus::kLoaded);
  EXPECT_EQ(lf.Values(), (std::vector<std::string>{"8", "0", "a = b"}));
  FakeTarget empty;
  EXPECT_EQ(ReadDocument("", empty), DocumentStatus::kLoaded);
  EXPECT_EQ(empty.Values(), kUntouched);
}

TEST(DocumentRead, FirstLineMustNameProductAndMakerCaseSensitively) {
  for (std::string first : {";Tessarine #1 Plugin", ";Brindlewood", ";tessarine #1 plugin by brindlewood",
                            "", ";Tessarine #1 Plugin\n;Brindlewood"}) {
    SCOPED_TRACE(first);
    FakeTarget t;
    EXPECT_EQ(ReadDocument(first + "\r\nSPNBTN11=9\r\n", t), DocumentStatus::kDamaged);
    EXPECT_EQ(t.Values(), kUntouched);
  }
  FakeTarget t;  // anywhere on the line, in either order
  EXPECT_EQ(ReadDocument("xx Brindlewood yy Tessarine #1 Plugin\nSPNBTN11=9\n", t), DocumentStatus::kLoaded);
  EXPECT_EQ(t.controls[0].value, "9");
}

TEST(DocumentRead, OverlongLineIsCutAndItsRestNeverPosesAsALine) {
  FakeTarget t;
  std::string value(kDocumentLineMax - 11, 'v');  // "TXTFLD3001=" + value fills the line
  std::string text = Document("TXTFLD3001=" + value + "CHKBOX10=0 and more\r\nSPNBTN11=5\r\n");
  EXPECT_EQ(ReadDocument(text, t), DocumentStatus::kLoaded);
  EXPECT_EQ(t.controls[2].value, value);
  EXPECT_TRUE(t.controls[1].taken.empty());
  EXPECT_EQ(t.controls[0].value, "5");
}

// ---------------------------------------------------------------- files

class DocumentFile : public ::testing::Test {
 protected:
  void WriteFile(const std::string& text) { testing::WriteText(m_path, text); }
  std::string ReadFile() const { return testing::ReadText(m_path); }

  testing::TempFolder m_dir;
  std::string m_path = m_dir / "Sample.TS1";
  RecordingReporter m_reporter;
};

const std::vector<std::string> kCreating = {"There has been an error creating the requested file."};
const std::vector<std::string> kOpening = {"There has been an error opening the requested file."};

TEST_F(DocumentFile, SaveReplacesTheFileAndLoadRestoresEveryValue) {
  WriteFile("old contents that are much longer than the new document will be ...........");
  FakeTarget saved;
  saved.controls[0].value = "123";
  saved.controls[2].value = "path\\with spaces";
  ASSERT_TRUE(SaveDocument(m_path, saved, m_reporter));
  EXPECT_EQ(ReadFile(), Document("SPNBTN11=123\r\nCHKBOX10=1\r\nTXTFLD3001=path\\with spaces\r\n;End of document\r\n"));
  EXPECT_EQ(m_dir.Files(), std::vector<std::string>{"Sample.TS1"});

  FakeTarget loaded;
  ASSERT_TRUE(LoadDocument(m_path, loaded, m_reporter));
  EXPECT_EQ(loaded.Values(), saved.Values());
  EXPECT_EQ(loaded.loaded, 1);
  // An empty file loads nothing, without a message.
  WriteFile("");
  FakeTarget untouched;
  EXPECT_TRUE(LoadDocument(m_path, untouched, m_reporter));
  EXPECT_EQ(untouched.Values(), kUntouched);
  EXPECT_TRUE(m_reporter.messages.empty());
}

// A failed save reports the creating error, keeps what was there and leaves
// no temporary file: into a missing folder, onto a folder, with memory short
// while formatting, and with the disk full at every byte.
TEST_F(DocumentFile, FailedSavesReportAndKeepThePreviousFile) {
  FakeTarget t;
  EXPECT_FALSE(SaveDocument(m_dir / "missing/Sample.TS1", t, m_reporter));
  EXPECT_FALSE(fs::exists(m_dir / "missing"));
  fs::create_directory(m_dir / "folder.TS1");
  EXPECT_FALSE(SaveDocument(m_dir / "folder.TS1", t, m_reporter));
  EXPECT_EQ(m_dir.Files(), std::vector<std::string>{});
  WriteFile("previous");
  t.controls[1].throw_on_save = true;
  EXPECT_FALSE(SaveDocument(m_path, t, m_reporter));
  EXPECT_EQ(m_reporter.messages, std::vector<std::string>(3, kCreating[0]));
  EXPECT_EQ(ReadFile(), "previous");
  EXPECT_EQ(m_dir.Files(), (std::vector<std::string>{"Sample.TS1"}));

  t.controls[1].throw_on_save = false;
  m_reporter.messages.clear();
  const uint64_t swept = testing::SweepWriteFailures({m_path}, [&] { WriteFile("previous"); },
                                                     [&] { return SaveDocument(m_path, t, m_reporter); });
  EXPECT_GT(swept, 20u);
  EXPECT_EQ(m_reporter.messages, std::vector<std::string>(swept, kCreating[0]));
}

TEST_F(DocumentFile, LoadFailuresReportAndChangeNothing) {
  FakeTarget t;
  EXPECT_FALSE(LoadDocument(m_dir / "absent.TS1", t, m_reporter));
  EXPECT_FALSE(LoadDocument(m_dir.path(), t, m_reporter));  // a folder
  WriteFile(Document("SPNBTN11=9\r\n"));
  {
    AllocFailureScope fail(0);
    EXPECT_FALSE(LoadDocument(m_path, t, m_reporter));
  }
  EXPECT_EQ(m_reporter.messages, std::vector<std::string>(3, kOpening[0]));
  m_reporter.messages.clear();
  WriteFile(";Saved by something else\r\nSPNBTN11=9\r\nCHKBOX10=0\r\n");
  EXPECT_FALSE(LoadDocument(m_path, t, m_reporter));
  EXPECT_EQ(m_reporter.messages, std::vector<std::string>{"This file has been damaged."});
  EXPECT_EQ(t.Values(), kUntouched);
  EXPECT_EQ(t.loaded, 0);
}

}  // namespace
}  // namespace tess
