#include "shell/document.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

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

class FakeTarget final : public DocumentTarget {
 public:
  void ForEachControl(const std::function<void(const DocumentControl&)>& visit) const override {
    for (const FakeControl& c : controls) visit(c);
  }
  DocumentControl* FindControl(int number) override {
    for (FakeControl& c : controls)
      if (c.Number() == number) return &c;
    return nullptr;
  }
  void DocumentLoaded() override { ++loaded; }

  // Values as they stand, to prove a load changed nothing.
  std::vector<std::string> Values() const {
    std::vector<std::string> v;
    for (const FakeControl& c : controls) v.push_back(c.value);
    return v;
  }

  std::vector<FakeControl> controls;
  int loaded = 0;
};

FakeTarget SmallTarget() {
  FakeTarget t;
  t.controls.emplace_back("SPNBTN", 11, "4");
  t.controls.emplace_back("CHKBOX", 10, "1");
  t.controls.emplace_back("TXTFLD", 3001, "a = b");
  return t;
}

constexpr std::string_view kHeaderLines =
    ";This is a document created by Tessarine #1 Plugin by Brindlewood - do not edit.\r\n"
    ";Start of document\r\n";

// ---------------------------------------------------------------- line codec

TEST(DocumentLine, FormatsTagNumberEqualsValueWithoutSpaces) {
  EXPECT_EQ(FormatControlLine("SPNBTN", 3001, NumberValueText(-12)), "SPNBTN3001=-12");
  EXPECT_EQ(FormatControlLine("CLRBTN", 7, UnsignedValueText(0xFFFFFFFFu)), "CLRBTN7=4294967295");
  EXPECT_EQ(FormatControlLine("TXTFLD", 5, ""), "TXTFLD5=");
  // A value never breaks its line.
  EXPECT_EQ(FormatControlLine("TXTFLD", 5, "one\r\ntwo"), "TXTFLD5=one");
  EXPECT_EQ(FormatControlLine("TXTFLD", 5, "one\ntwo"), "TXTFLD5=one");
  EXPECT_EQ(TextFieldValueText(std::string(2000, 'x')).size(), kTextFieldValueMax);
  EXPECT_EQ(TextFieldValueText("short"), "short");
}

TEST(DocumentLine, ControlNumberFollowsTheTagAndMustBePositiveToCount) {
  EXPECT_EQ(DocumentLineNumber("SPNBTN3001=12"), 3001);
  EXPECT_EQ(DocumentLineNumber("SPNBTN+7=1"), 7);
  EXPECT_EQ(DocumentLineNumber("SPNBTN0=1"), 0);
  EXPECT_EQ(DocumentLineNumber("SPNBTN-5=1"), -5);
  EXPECT_EQ(DocumentLineNumber("SPNBTNx=1"), 0);
  EXPECT_EQ(DocumentLineNumber("SPNBTN=1"), 0);
  EXPECT_EQ(DocumentLineNumber("SPNBTN"), 0);
  EXPECT_EQ(DocumentLineNumber("SPN12"), 0);
  EXPECT_EQ(DocumentLineNumber("SPNBTN99999999999=1"), 0);
  // The tag is any six characters: the number starts after them.
  EXPECT_EQ(DocumentLineNumber("123456789=1"), 789);
}

TEST(DocumentLine, ValueSkipsEveryEqualsAndSpaceAfterTheFirstEquals) {
  EXPECT_EQ(LineValue("SPNBTN3001==  12", "SPNBTN"), "12");
  EXPECT_EQ(LineValue("SPNBTN3001= = =12 ", "SPNBTN"), "12 ");
  EXPECT_EQ(LineValue("TXTFLD5=a = b", "TXTFLD"), "a = b");
  EXPECT_EQ(LineValue("SPNBTN3001=", "SPNBTN"), "");
  EXPECT_EQ(LineValue("SPNBTN3001= ", "SPNBTN"), "");
}

TEST(DocumentLine, RefusesForeignTagsShortLinesAndLinesWithoutEquals) {
  EXPECT_FALSE(LineValue("CHKBOX3001=1", "SPNBTN"));
  EXPECT_FALSE(LineValue("spnbtn3001=1", "SPNBTN"));
  EXPECT_FALSE(LineValue("SPNBTN3001 12", "SPNBTN"));
  EXPECT_FALSE(LineValue("SPNBT", "SPNBTN"));
  EXPECT_FALSE(LineValue("", "SPNBTN"));

  FakeControl c("SPNBTN", 3001, "old");
  EXPECT_FALSE(DeliverLine(c, "CHKBOX3001=1"));
  EXPECT_FALSE(DeliverLine(c, "SPNBTN3001"));
  EXPECT_EQ(c.value, "old");
  EXPECT_TRUE(DeliverLine(c, "SPNBTN3001==  12"));
  EXPECT_EQ(c.value, "12");
}

TEST(DocumentLine, LineEndsCutAtFirstLineFeedCarriageReturnOrZero) {
  EXPECT_EQ(CutLineEnd("abc\r\n"), "abc");
  EXPECT_EQ(CutLineEnd("abc\n"), "abc");
  EXPECT_EQ(CutLineEnd("a\rb\nc"), "a");
  EXPECT_EQ(CutLineEnd("a\nb\rc"), "a");
  EXPECT_EQ(CutLineEnd(std::string_view("a\0b", 3)), "a");
  EXPECT_EQ(CutLineEnd("plain"), "plain");
}

TEST(DocumentLine, ValueNumbersReadLikeAnEditField) {
  EXPECT_EQ(ParseValueNumber("12"), 12);
  EXPECT_EQ(ParseValueNumber("  -3x"), -3);
  EXPECT_EQ(ParseValueNumber("+5"), 5);
  EXPECT_EQ(ParseValueNumber("abc"), 0);
  EXPECT_EQ(ParseValueNumber(""), 0);
  EXPECT_EQ(ParseValueNumber("-"), 0);
  EXPECT_EQ(ParseValueNumber("4294967295"), 4294967295);
  // Far outside 32 bits the number saturates instead of wrapping into range.
  EXPECT_GT(ParseValueNumber("99999999999999999999999999"), int64_t{1} << 40);
  EXPECT_LT(ParseValueNumber("-99999999999999999999999999"), -(int64_t{1} << 40));
}

// ---------------------------------------------------------------- hexadecimal form

TEST(DocumentHex, EncodesUpperCasePairsWithoutSeparators) {
  EXPECT_EQ(HexEncode({}), "");
  const uint8_t bytes[] = {0x00, 0xAB, 0x0F, 0xF0, 0x7E};
  EXPECT_EQ(HexEncode(bytes), "00AB0FF07E");
}

TEST(DocumentHex, RoundTripsAtOddLengths) {
  std::mt19937 random(47);
  for (size_t n : {1u, 3u, 7u, 33u, 585u}) {
    std::vector<uint8_t> bytes(n);
    for (uint8_t& b : bytes) b = static_cast<uint8_t>(random());
    std::string text = HexEncode(bytes);
    ASSERT_EQ(text.size(), 2 * n);
    Buffer<uint8_t> back = HexDecode(text, n);
    ASSERT_TRUE(back) << n;
    EXPECT_EQ(std::vector<uint8_t>(back.get(), back.get() + n), bytes) << n;
    EXPECT_EQ(back[n], 0) << "one zeroed byte beyond the block";
  }
}

TEST(DocumentHex, DecodesEitherCaseAndIgnoresDigitsBeyondTheBlock) {
  Buffer<uint8_t> b = HexDecode("aBcD12ff99", 3);
  ASSERT_TRUE(b);
  EXPECT_EQ(b[0], 0xAB);
  EXPECT_EQ(b[1], 0xCD);
  EXPECT_EQ(b[2], 0x12);
  EXPECT_EQ(b[3], 0);
  EXPECT_TRUE(HexDecode("", 0));
  EXPECT_TRUE(HexDecode("zz", 0));
}

TEST(DocumentHex, FailsWhenANonDigitComesBeforeTheBlockIsFull) {
  EXPECT_FALSE(HexDecode("ABCD", 3));      // too short
  EXPECT_FALSE(HexDecode("ABC", 2));       // half a pair
  EXPECT_FALSE(HexDecode("AB CD", 2));     // separator
  EXPECT_FALSE(HexDecode("ABG0", 2));      // not a digit
  EXPECT_FALSE(HexDecode("", 1));
}

TEST(DocumentHex, ShortMemoryGivesNothing) {
  AllocFailureScope fail(0);
  EXPECT_FALSE(HexDecode("ABCD", 2));
}

// ---------------------------------------------------------------- writing

TEST(DocumentWrite, PinsTheBytesOfASmallDocument) {
  FakeTarget t = SmallTarget();
  MemorySink sink;
  ASSERT_TRUE(WriteDocument(sink, t));
  std::string expected = std::string(kHeaderLines) +
                         "SPNBTN11=4\r\n"
                         "CHKBOX10=1\r\n"
                         "TXTFLD3001=a = b\r\n"
                         ";End of document\r\n";
  EXPECT_EQ(std::string(sink.bytes().begin(), sink.bytes().end()), expected);
}

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

TEST(DocumentWrite, ReportsAFailingSinkWhereverItFails) {
  FakeTarget t = SmallTarget();
  MemorySink full;
  ASSERT_TRUE(WriteDocument(full, t));
  for (size_t cut = 0; cut < full.bytes().size(); cut += 7) {
    ShortSink sink(cut);
    EXPECT_FALSE(WriteDocument(sink, t)) << cut;
  }
}

// ---------------------------------------------------------------- reading

std::string Document(std::string_view body) { return std::string(kHeaderLines) + std::string(body); }

TEST(DocumentRead, DeliversLinesToControlsByNumberAndSkipsTheRest) {
  FakeTarget t = SmallTarget();
  std::string text = Document(
      "SPNBTN11=7\r\n"
      ";CHKBOX10=0\r\n"         // comment
      "SPNBTN0=9\r\n"           // number 0
      "SPNBTNxx=9\r\n"          // not a number
      "FOUNTN270=00FF\r\n"      // a control this target does not have
      "SPNBTN10=0\r\n"          // foreign tag for control 10
      "CHKBOX10\r\n"            // no "="
      "TXTFLD3001==  new text\r\n"
      ";End of document\r\n"
      "CHKBOX10=0\r\n");        // lines after the end line still count
  EXPECT_EQ(ReadDocument(text, t), DocumentStatus::kLoaded);
  EXPECT_EQ(t.Values(), (std::vector<std::string>{"7", "0", "new text"}));
  EXPECT_EQ(t.controls[1].taken, std::vector<std::string>{"0"});
}

TEST(DocumentRead, AcceptsLineFeedAloneAndALastLineWithoutEnd) {
  FakeTarget t = SmallTarget();
  std::string text =
      ";Tessarine #1 Plugin, Brindlewood\n;Start of document\nSPNBTN11=8\nCHKBOX10=0";
  EXPECT_EQ(ReadDocument(text, t), DocumentStatus::kLoaded);
  EXPECT_EQ(t.Values(), (std::vector<std::string>{"8", "0", "a = b"}));
}

TEST(DocumentRead, FirstLineMustNameProductAndMakerCaseSensitively) {
  for (std::string first : {";Tessarine #1 Plugin", ";Brindlewood", ";tessarine #1 plugin by brindlewood",
                            "", ";Tessarine #1 Plugin\n;Brindlewood"}) {
    SCOPED_TRACE(first);
    FakeTarget t = SmallTarget();
    EXPECT_EQ(ReadDocument(first + "\r\nSPNBTN11=9\r\n", t), DocumentStatus::kDamaged);
    EXPECT_EQ(t.Values(), SmallTarget().Values());
  }
  // Anywhere on the line, in either order.
  FakeTarget t = SmallTarget();
  EXPECT_EQ(ReadDocument("xx Brindlewood yy Tessarine #1 Plugin\nSPNBTN11=9\n", t),
            DocumentStatus::kLoaded);
  EXPECT_EQ(t.controls[0].value, "9");
}

TEST(DocumentRead, EmptyTextLoadsNothingAndIsNotDamaged) {
  FakeTarget t = SmallTarget();
  EXPECT_EQ(ReadDocument("", t), DocumentStatus::kLoaded);
  EXPECT_EQ(t.Values(), SmallTarget().Values());
}

TEST(DocumentRead, OverlongLineIsCutAndItsRestNeverPosesAsALine) {
  FakeTarget t = SmallTarget();
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
  std::vector<std::string> FolderEntries() const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(m_folder)) names.push_back(e.path().filename().string());
    return names;
  }

  testing::TempFolder m_temp;
  fs::path m_folder = m_temp.path();
  std::string m_path = m_temp / "Sample.TS1";
  RecordingReporter m_reporter;
};

const std::vector<std::string> kCreating = {"There has been an error creating the requested file."};
const std::vector<std::string> kOpening = {"There has been an error opening the requested file."};
const std::vector<std::string> kDamaged = {"This file has been damaged."};

TEST_F(DocumentFile, SaveThenLoadRestoresEveryValue) {
  FakeTarget saved = SmallTarget();
  saved.controls[0].value = "123";
  saved.controls[2].value = "path\\with spaces";
  ASSERT_TRUE(SaveDocument(m_path, saved, m_reporter));
  EXPECT_EQ(FolderEntries(), std::vector<std::string>{"Sample.TS1"});

  FakeTarget loaded = SmallTarget();
  ASSERT_TRUE(LoadDocument(m_path, loaded, m_reporter));
  EXPECT_EQ(loaded.Values(), saved.Values());
  EXPECT_EQ(loaded.loaded, 1);
  EXPECT_TRUE(m_reporter.messages.empty());
}

TEST_F(DocumentFile, SaveReplacesAnExistingDocumentWithExactBytes) {
  WriteFile("old contents that are much longer than the new document will be ...........");
  FakeTarget t;
  t.controls.emplace_back("CLRBTN", 3005, "255");
  ASSERT_TRUE(SaveDocument(m_path, t, m_reporter));
  EXPECT_EQ(ReadFile(), std::string(kHeaderLines) + "CLRBTN3005=255\r\n;End of document\r\n");
}

TEST_F(DocumentFile, SaveIntoAMissingFolderReportsAndWritesNothing) {
  std::string path = (m_folder / "missing" / "Sample.TS1").string();
  FakeTarget t = SmallTarget();
  EXPECT_FALSE(SaveDocument(path, t, m_reporter));
  EXPECT_EQ(m_reporter.messages, kCreating);
  EXPECT_FALSE(fs::exists(m_folder / "missing"));
  EXPECT_TRUE(FolderEntries().empty());
}

TEST_F(DocumentFile, FailedSaveKeepsThePreviousFile) {
  WriteFile("previous");
  fs::create_directory(m_path + ".tmp");  // nowhere to write the new one
  FakeTarget t = SmallTarget();
  EXPECT_FALSE(SaveDocument(m_path, t, m_reporter));
  EXPECT_EQ(m_reporter.messages, kCreating);
  EXPECT_EQ(ReadFile(), "previous");
  EXPECT_TRUE(fs::is_directory(m_path + ".tmp"));
}

TEST_F(DocumentFile, SaveOntoAFolderFailsAndLeavesNoTemporary) {
  fs::create_directory(m_path);
  FakeTarget t = SmallTarget();
  EXPECT_FALSE(SaveDocument(m_path, t, m_reporter));
  EXPECT_EQ(m_reporter.messages, kCreating);
  EXPECT_EQ(FolderEntries(), std::vector<std::string>{"Sample.TS1"});
}

TEST_F(DocumentFile, ShortMemoryWhileSavingReportsAndKeepsThePreviousFile) {
  WriteFile("previous");
  FakeTarget t = SmallTarget();
  t.controls[1].throw_on_save = true;
  EXPECT_FALSE(SaveDocument(m_path, t, m_reporter));
  EXPECT_EQ(m_reporter.messages, kCreating);
  EXPECT_EQ(ReadFile(), "previous");
  EXPECT_EQ(FolderEntries(), std::vector<std::string>{"Sample.TS1"});
}

TEST_F(DocumentFile, LoadFailuresReportTheOpeningError) {
  FakeTarget t = SmallTarget();
  EXPECT_FALSE(LoadDocument((m_folder / "absent.TS1").string(), t, m_reporter));
  EXPECT_FALSE(LoadDocument(m_folder.string(), t, m_reporter));  // a folder
  WriteFile(Document("SPNBTN11=9\r\n"));
  {
    AllocFailureScope fail(0);
    EXPECT_FALSE(LoadDocument(m_path, t, m_reporter));
  }
  EXPECT_EQ(m_reporter.messages, std::vector<std::string>(3, kOpening[0]));
  EXPECT_EQ(t.Values(), SmallTarget().Values());
  EXPECT_EQ(t.loaded, 0);
}

TEST_F(DocumentFile, DamagedFileReportsAndChangesNothing) {
  WriteFile(";Saved by something else\r\nSPNBTN11=9\r\nCHKBOX10=0\r\n");
  FakeTarget t = SmallTarget();
  EXPECT_FALSE(LoadDocument(m_path, t, m_reporter));
  EXPECT_EQ(m_reporter.messages, kDamaged);
  EXPECT_EQ(t.Values(), SmallTarget().Values());
  EXPECT_EQ(t.loaded, 0);
}

TEST_F(DocumentFile, EmptyFileLoadsNothingWithoutAMessage) {
  WriteFile("");
  FakeTarget t = SmallTarget();
  EXPECT_TRUE(LoadDocument(m_path, t, m_reporter));
  EXPECT_TRUE(m_reporter.messages.empty());
  EXPECT_EQ(t.Values(), SmallTarget().Values());
  EXPECT_EQ(t.loaded, 1);
}

}  // namespace
}  // namespace tess
