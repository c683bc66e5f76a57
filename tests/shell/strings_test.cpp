#include <gtest/gtest.h>

#include <array>
#include <string>

#include "shell/strings.h"

namespace tess {
namespace {

TEST(StringTable, NumberedTextsAreTheProductsOwn) {
  EXPECT_EQ(StringText(kStrMemoryError), "Memory error");
  EXPECT_EQ(StringText(6), "Memory error");
  EXPECT_EQ(StringText(10), "Error creating file");
  EXPECT_EQ(StringText(11), "Error writing file");
  EXPECT_EQ(StringText(kStrDocumentDamaged), "This file has been damaged.");
  EXPECT_EQ(StringText(kStrMessageCaption), "Message");
}

TEST(StringTable, PaletteNamesFollowThePaletteChoice) {
  const char* expected[] = {"Black and white",      "Sixteen-color Windows",
                            "32-color orthogonal",  "64-color orthogonal",
                            "128-color orthogonal", "216-color safe",
                            "256-color orthogonal", "256-color with gray",
                            "256 gray levels"};
  for (int i = 0; i < 9; ++i) {
    EXPECT_EQ(StringText(1600 + i), expected[i]) << i;
    EXPECT_EQ(PaletteName(i), expected[i]) << i;
  }
  EXPECT_EQ(PaletteName(9), kStringTableError);
  EXPECT_EQ(PaletteName(-1), kStringTableError);
  EXPECT_EQ(StringText(1609), kStringTableError);
}

TEST(StringTable, ManualPageErrorKeepsItsLeadingSpace) {
  std::string_view text = StringText(kStrManualPageError);
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(text.front(), ' ');
  EXPECT_TRUE(text.starts_with(" There has been an error displaying the manual page. "));
  EXPECT_TRUE(text.ends_with("associated with the file extension .HTM."));
}

// Ordering, uniqueness and length are checked when the table compiles; what
// is left is that iteration and lookup agree and the unnumbered block holds.
TEST(StringTable, IterationAgreesWithLookup) {
  size_t count = 0;
  for (const StringEntry& e : StringTable()) {
    EXPECT_EQ(StringText(e.id), e.text);
    if (e.id >= kStrFirstUnnumbered) {
      EXPECT_LE(e.id, kStrLastUnnumbered);
    }
    ++count;
  }
  EXPECT_GT(count, static_cast<size_t>(kPaletteNameCount));
}

TEST(StringBuffer, EachLoadOverwritesTheSharedText) {
  StringBuffer buffer;
  const char* first = buffer.Load(kStrErrorWritingFile);
  EXPECT_STREQ(first, "Error writing file");
  const char* second = buffer.Load(kStrMemoryError);
  EXPECT_EQ(first, second);  // same storage: callers copy before the next load
  EXPECT_STREQ(first, "Memory error");
  EXPECT_EQ(buffer.view(), "Memory error");
}

TEST(StringBuffer, UnknownIdGivesTheTableErrorText) {
  StringBuffer buffer;
  EXPECT_STREQ(buffer.Load(12345), "String table error - this application may be damaged");
  EXPECT_STREQ(buffer.Load(-1), "String table error - this application may be damaged");
  EXPECT_EQ(StringText(0), kStringTableError);
}

TEST(StringBuffer, LongTextsAreCutAt255Characters) {
  const std::string exact(255, 'e');
  const std::string longer = std::string(255, 'a') + "TAIL";
  const std::array table = {StringEntry{1, "short"}, StringEntry{2, exact},
                            StringEntry{3, longer}};
  StringBuffer buffer(table);
  EXPECT_EQ(buffer.Load(3), std::string(255, 'a'));
  EXPECT_EQ(buffer.view().size(), 255u);
  EXPECT_EQ(buffer.Load(2), exact);
  EXPECT_STREQ(buffer.Load(1), "short");  // no tail of the longer text remains
  EXPECT_STREQ(buffer.Load(4), kStringTableError.data());
}

TEST(StringBuffer, ProductInstanceIsSharedAcrossCallers) {
  StringBuffer& a = ProductStrings();
  StringBuffer& b = ProductStrings();
  EXPECT_EQ(&a, &b);
  EXPECT_STREQ(a.Load(kStrInternalError), "Internal error");
  EXPECT_STREQ(b.c_str(), "Internal error");
}

}  // namespace
}  // namespace tess
