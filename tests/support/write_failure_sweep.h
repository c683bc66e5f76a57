// The write-failure sweep every file writer is held to: with a previous file
// in place, fail the write at each byte offset of the new file in turn (a
// full disk) and require that the writer reports failure, the previous file
// is byte for byte what it was, and nothing else is left in its folder.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/safe_file.h"
#include "tests/support/temp_folder.h"

namespace tess::testing {

// Files directly in `folder`, hidden ones included, sorted.
inline std::vector<std::string> FolderEntries(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// `write()` returns whether it succeeded and writes `paths` (each with a
// previous file `before` puts there). Returns the length of the longest new
// file. A `stride` above 1 keeps every offset of the first and last 256
// bytes but takes only every stride-th between them: for files whose middle
// is one long run of identical writes, and which are too long to sweep whole.
template <class Before, class Write>
uint64_t SweepWriteFailures(const std::vector<std::string>& paths, Before before, Write write,
                            uint64_t stride = 1) {
  // A clean run first: how long the longest new file is.
  before();
  EXPECT_TRUE(write()) << "the writer fails even without a fault";
  uint64_t longest = 0;
  for (const std::string& path : paths) longest = std::max<uint64_t>(longest, ReadBytes(path).size());

  before();
  std::vector<std::vector<uint8_t>> previous;
  for (const std::string& path : paths) previous.push_back(ReadBytes(path));
  const std::string folder = std::filesystem::path(paths.front()).parent_path().string();
  const std::vector<std::string> entries = FolderEntries(folder);
  constexpr uint64_t kEdge = 256;
  for (uint64_t at = 0; at < longest; at += at < kEdge || at + kEdge >= longest ? 1 : stride) {
    bool ok;
    {
      SafeFileFailureScope full_disk(at);
      ok = write();
    }
    EXPECT_FALSE(ok) << "failing at byte " << at << " went unnoticed";
    for (size_t i = 0; i < paths.size(); ++i)
      EXPECT_EQ(ReadBytes(paths[i]), previous[i]) << paths[i] << " changed by a failure at byte " << at;
    EXPECT_EQ(FolderEntries(folder), entries) << "left behind by a failure at byte " << at;
    if (::testing::Test::HasFailure()) break;  // one offset's story is enough
  }
  return longest;
}

}  // namespace tess::testing
