// The string table and its load buffer. Ordering, uniqueness and length are
// checked when the table compiles; the texts themselves are checked where the
// messages are shown.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "shell/strings.h"

namespace tess {
namespace {

constexpr int kNames = kStrPaletteNameLast - kStrPaletteNameFirst + 1;

TEST(StringTable, IterationLookupAndPaletteNamesAgree) {
  size_t count = 0;
  for (const StringEntry& e : StringTable()) {
    EXPECT_EQ(StringText(e.id), e.text);
    EXPECT_LE(e.id, kStrLastUnnumbered);
    ++count;
  }
  EXPECT_GT(count, static_cast<size_t>(kNames));
  for (int i = 0; i < kNames; ++i) EXPECT_EQ(PaletteName(i), StringText(kStrPaletteNameFirst + i));
  EXPECT_EQ(PaletteName(kNames), kStringTableError);
  EXPECT_EQ(PaletteName(-1), kStringTableError);
  EXPECT_EQ(StringText(0), kStringTableError);
  // The numbers the product's resources have always used.
  EXPECT_EQ(StringText(6), "Memory error");
  EXPECT_EQ(StringText(10), "Error creating file");
  EXPECT_EQ(StringText(11), "Error writing file");
}

TEST(StringBuffer, EachLoadOverwritesTheSharedTextCutAt255Characters) {
  const std::string exact(255, 'e');
  const std::string longer = std::string(255, 'a') + "TAIL";
  const std::array table = {StringEntry{1, "short"}, StringEntry{2, exact}, StringEntry{3, longer}};
  StringBuffer buffer(table);
  const char* first = buffer.Load(3);
  EXPECT_EQ(first, std::string(255, 'a'));
  EXPECT_EQ(buffer.Load(2), exact);
  EXPECT_EQ(buffer.Load(1), first);  // same storage: callers copy before the next load
  EXPECT_STREQ(first, "short");      // no tail of the longer text remains
  EXPECT_EQ(buffer.view(), "short");
  EXPECT_STREQ(buffer.Load(4), "String table error - this application may be damaged");

  StringBuffer& product = ProductStrings();
  EXPECT_EQ(&product, &ProductStrings());
  EXPECT_STREQ(product.Load(kStrInternalError), "Internal error");
  EXPECT_STREQ(ProductStrings().c_str(), "Internal error");
}

}  // namespace
}  // namespace tess
