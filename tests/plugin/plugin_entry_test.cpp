#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/bytes.h"
#include "plugin/plugin_entry.h"

namespace tess {
namespace {

constexpr uint8_t kFill = 0xCD;

std::vector<uint8_t> RecordOfSize(uint32_t size, size_t allocated = 1024) {
  std::vector<uint8_t> record(allocated, kFill);
  put_u32le(record.data(), size);
  return record;
}

std::string StringAt(const std::vector<uint8_t>& record, size_t offset) {
  return reinterpret_cast<const char*>(record.data() + offset);
}

TEST(DescriptionRecord, FieldsSitWhereTheHostReadsThem) {
  auto record = RecordOfSize(600);
  EXPECT_EQ(FillDescriptionRecord(record.data()), 1);
  EXPECT_EQ(get_u32le(record.data()), 600u);
  EXPECT_EQ(get_u32le(record.data() + 4), 513u);
  EXPECT_EQ(StringAt(record, 8), "Tessarine #1");
  const std::string notice = StringAt(record, 269);
  EXPECT_EQ(notice.rfind("Tessarine #1 Plugin", 0), 0u);
  // Windows-1252, not UTF-8: the copyright sign is the single byte 0xA9.
  EXPECT_NE(notice.find('\xA9'), std::string::npos);
  EXPECT_EQ(notice.find("\xC2\xA9"), std::string::npos);
}

TEST(DescriptionRecord, ClearsExactlyTheBytesTheSizeWordCovers) {
  auto record = RecordOfSize(600);
  FillDescriptionRecord(record.data());
  const size_t notice_end = 269 + kPluginNotice.size() + 1;
  for (size_t i = 8 + kPluginName.size() + 1; i < 269; ++i) ASSERT_EQ(record[i], 0) << i;
  for (size_t i = notice_end; i < 600; ++i) ASSERT_EQ(record[i], 0) << i;
  for (size_t i = 600; i < record.size(); ++i) ASSERT_EQ(record[i], kFill) << i;
}

TEST(DescriptionRecord, StringsAreWrittenEvenWhenTheSizeIsTooSmall) {
  auto record = RecordOfSize(16);
  FillDescriptionRecord(record.data());
  EXPECT_EQ(get_u32le(record.data()), 16u);
  EXPECT_EQ(StringAt(record, 8), "Tessarine #1");
  EXPECT_EQ(StringAt(record, 269), std::string(kPluginNotice));
  // Between the name and the notice nothing was cleared past the size.
  EXPECT_EQ(record[8 + kPluginName.size() + 1], kFill);
}

TEST(ModuleFolder, DriveAndFolderWithOneTrailingBackslash) {
  EXPECT_EQ(ModuleFolderOf("C:\\Program Files\\Host\\Plugins\\tessarine.dll"),
            "C:\\Program Files\\Host\\Plugins\\");
  EXPECT_EQ(ModuleFolderOf("\\\\server\\share\\tessarine.dll"), "\\\\server\\share\\");
  EXPECT_EQ(ModuleFolderOf("D:tessarine.dll"), "D:\\");
  EXPECT_EQ(ModuleFolderOf("C:\\tessarine.dll"), "C:\\");
}

TEST(ModuleFolder, NoFolderPartGivesAnEmptyFolder) {
  EXPECT_EQ(ModuleFolderOf("tessarine.dll"), "");
  EXPECT_EQ(ModuleFolderOf(""), "");
}

TEST(ModuleFolder, ForwardSlashesSplitButTheAppendedSeparatorIsABackslash) {
  EXPECT_EQ(ModuleFolderOf("C:/plugins/tessarine.dll"), "C:/plugins/\\");
  EXPECT_EQ(ModuleFolderOf("C:\\plugins/sub\\tessarine.dll"), "C:\\plugins/sub\\");
}

}  // namespace
}  // namespace tess
