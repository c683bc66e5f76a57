// The description record the host reads, and the module folder as the
// plug-in derives it from its own path.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "plugin/plugin_entry.h"

namespace tess {
namespace {

constexpr uint8_t kFill = 0xCD;

std::vector<uint8_t> FilledRecordOfSize(uint32_t size) {
  std::vector<uint8_t> record(1024, kFill);
  put_u32le(record.data(), size);
  EXPECT_EQ(FillDescriptionRecord(record.data()), 1);
  return record;
}

std::string StringAt(const std::vector<uint8_t>& record, size_t offset) {
  return reinterpret_cast<const char*>(record.data() + offset);
}

TEST(DescriptionRecord, FieldsSitWhereTheHostReadsThemAndOnlyTheSizeIsCleared) {
  auto record = FilledRecordOfSize(600);
  EXPECT_EQ(get_u32le(record.data()), 600u);
  EXPECT_EQ(get_u32le(record.data() + 4), 513u);
  EXPECT_EQ(StringAt(record, 8), "Tessarine #1");
  const std::string notice = StringAt(record, 269);
  EXPECT_EQ(notice, std::string(kPluginNotice));
  EXPECT_EQ(notice.rfind("Tessarine #1 Plugin", 0), 0u);
  // Windows-1252, not UTF-8: the copyright sign is the single byte 0xA9.
  EXPECT_NE(notice.find('\xA9'), std::string::npos);
  EXPECT_EQ(notice.find("\xC2\xA9"), std::string::npos);
  for (size_t i = 8 + kPluginName.size() + 1; i < 269; ++i) ASSERT_EQ(record[i], 0) << i;
  for (size_t i = 269 + notice.size() + 1; i < 600; ++i) ASSERT_EQ(record[i], 0) << i;
  for (size_t i = 600; i < record.size(); ++i) ASSERT_EQ(record[i], kFill) << i;

  // A size too small for the strings: they are written anyway, nothing is
  // cleared past the size.
  record = FilledRecordOfSize(16);
  EXPECT_EQ(get_u32le(record.data()), 16u);
  EXPECT_EQ(StringAt(record, 8), "Tessarine #1");
  EXPECT_EQ(StringAt(record, 269), std::string(kPluginNotice));
  EXPECT_EQ(record[8 + kPluginName.size() + 1], kFill);
}

TEST(ModuleFolder, DriveAndFolderWithOneTrailingBackslash) {
  const std::pair<const char*, const char*> cases[] = {
      {"C:\\Program Files\\Host\\Plugins\\tessarine.dll", "C:\\Program Files\\Host\\Plugins\\"},
      {"\\\\server\\share\\tessarine.dll", "\\\\server\\share\\"},
      {"D:tessarine.dll", "D:\\"},
      {"C:\\tessarine.dll", "C:\\"},
      {"tessarine.dll", ""},
      {"", ""},
      // Forward slashes split too, but the separator added is a backslash.
      {"C:/plugins/tessarine.dll", "C:/plugins/\\"},
      {"C:\\plugins/sub\\tessarine.dll", "C:\\plugins/sub\\"},
  };
  for (const auto& [path, folder] : cases) EXPECT_EQ(ModuleFolderOf(path), folder) << path;
}

}  // namespace
}  // namespace tess
