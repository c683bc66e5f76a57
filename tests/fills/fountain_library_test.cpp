// The fountain library files byte for byte: the header and entry layout with
// its field-order quirk, appending, loading up to a fault, the rewrite that
// never leaves the user without a library, and the list's delete and drag.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "fills/fountain_library.h"
#include "tests/support/fake_platform.h"
#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"

namespace tess {
namespace {

constexpr uint32_t kNow = 1795338307, kLater = 1800000000;

FountainRecord Fountain(uint32_t seed) {
  FountainRecord r;
  r.mode = 7;
  r.marker_count = seed;
  r.start_colour = 0xA0000000 | seed;
  r.end_colour = 0x00B00000 | seed;
  for (size_t i = 0; i < 64; ++i) r.markers[i] = seed * 0x01010101u + static_cast<uint32_t>(i);
  return r;
}

FountainLibrary Library(std::initializer_list<uint32_t> seeds) {
  FountainLibrary library;
  for (uint32_t seed : seeds) EXPECT_TRUE(library.Append(LibraryEntryOf(Fountain(seed))));
  return library;
}

// Each entry's marker count, which the fountains above set to their seed.
std::vector<uint32_t> Seeds(const FountainLibrary& library) {
  std::vector<uint32_t> seeds;
  for (size_t i = 0; i < library.size(); ++i) seeds.push_back(library[i].marker_count);
  return seeds;
}

std::vector<uint8_t> LibraryBytes(const FountainLibrary& library, uint32_t selector, uint32_t created) {
  MemorySink sink;
  EXPECT_TRUE(WriteFountainLibrary(sink, library, selector, created));
  return sink.bytes();
}

// ------------------------------------------------------------------ layout

// The entry moves the record's bytes 289..300 and 301..556, the marker table
// before the end colour.
TEST(LibraryBytes, HeaderAndEntryLayout) {
  const std::vector<uint8_t> file = LibraryBytes(Library({9}), 2, kNow);
  ASSERT_EQ(file.size(), 416u);
  EXPECT_EQ(std::string(file.begin(), file.begin() + 8), "BRNDFLHH");
  EXPECT_EQ(get_u32le(&file[8]), kNow);
  EXPECT_EQ(get_u32le(&file[12]), 1u);
  EXPECT_EQ(get_u32le(&file[16]), 2u);
  EXPECT_EQ(std::vector<uint8_t>(file.begin() + 20, file.begin() + 80), std::vector<uint8_t>(60, 0));
  const uint8_t* entry = &file[80];
  EXPECT_EQ(std::string(entry, entry + 8), "BRNDFLHE");
  const FountainBytes record = SerializeFountainRecord(Fountain(9));
  const struct { size_t entry, record, size; } moved[] = {{8, 289, 4}, {12, 293, 4}, {16, 301, 256}, {272, 297, 4}};
  for (const auto& m : moved)
    EXPECT_EQ(std::vector<uint8_t>(entry + m.entry, entry + m.entry + m.size),
              std::vector<uint8_t>(&record[m.record], &record[m.record] + m.size))
        << m.entry;
  EXPECT_EQ(std::vector<uint8_t>(entry + 276, entry + 336), std::vector<uint8_t>(60, 0));
}

TEST(LibraryFiles, NamesAndTimeStamps) {
  testing::FakePlatform platform;
  platform.app_data = "/cfg";
  EXPECT_EQ(FountainLibraryPath(platform, 1), "/cfg/Brindlewood/Tessarine 1/FountainLibrary.fln");
  for (uint32_t selector : {0u, 2u}) EXPECT_EQ(FountainLibraryName(selector), "FountainLibrary.fll");
  const struct { LocalTime time; uint32_t seconds; } stamps[] = {
      {{1970, 0, 1, 4, 0, 0, 0}, 0},
      {{2024, 1, 29, 4, 23, 59, 59}, 1709251199},  // a leap day
      {{2106, 1, 7, 0, 6, 28, 16}, 0},              // 2^32 seconds wrap
      {platform.Now(), kNow}};
  for (const auto& s : stamps) EXPECT_EQ(LibraryTimeStamp(s.time), s.seconds) << s.time.year;
}

// ------------------------------------------------------------------ append

TEST(AppendFountain, FirstAppendMakesA416ByteFileAndLaterOnesKeepItsHeader) {
  testing::TempFolder folder;
  const std::string path = folder / "FountainLibrary.fll";
  ASSERT_TRUE(AppendFountain(path, Fountain(3), 0, kNow));
  EXPECT_EQ(testing::ReadBytes(path), LibraryBytes(Library({3}), 0, kNow));
  ASSERT_TRUE(AppendFountain(path, Fountain(4), 9, kLater));  // the selector and time of creation stay
  EXPECT_EQ(testing::ReadBytes(path), LibraryBytes(Library({3, 4}), 0, kNow));
  EXPECT_EQ(folder.Files(), std::vector<std::string>{"FountainLibrary.fll"});
}

// A damaged file is left as it is rather than extended.
TEST(AppendFountain, RefusesDamagedFiles) {
  testing::TempFolder folder;
  const std::string path = folder / "FountainLibrary.fln";
  std::vector<uint8_t> counted_too_many = LibraryBytes(Library({1}), 1, kNow);
  put_u32le(&counted_too_many[12], 2);
  std::vector<uint8_t> foreign = LibraryBytes(Library({1}), 1, kNow);
  foreign[7] = 'E';
  const std::vector<uint8_t> damaged[] = {counted_too_many, foreign, {'B', 'R', 'N', 'D'}};
  for (const auto& bytes : damaged) {
    testing::WriteBytes(path, bytes);
    EXPECT_FALSE(AppendFountain(path, Fountain(8), 1, kLater));
    EXPECT_EQ(testing::ReadBytes(path), bytes);
  }
}

// ------------------------------------------------------------------ load

TEST(LoadFountainLibrary, KeepsTheEntriesBeforeAFault) {
  testing::TempFolder folder;
  const std::string path = folder / "FountainLibrary.fll";
  const std::vector<uint8_t> good = LibraryBytes(Library({1, 2, 3}), 0, kNow);
  std::vector<uint8_t> counted_too_many = good;
  put_u32le(&counted_too_many[12], 5);
  std::vector<uint8_t> bad_second = good;
  bad_second[80 + 336] = 'X';
  std::vector<uint8_t> bad_header = good;
  bad_header[0] = 'X';
  const struct {
    const char* name;
    std::vector<uint8_t> file;
    bool loaded;
    std::vector<uint32_t> seeds;
  } cases[] = {
      {"three", good, true, {1, 2, 3}},
      {"empty library", LibraryBytes(Library({}), 0, kNow), true, {}},
      {"count above the entries", counted_too_many, false, {1, 2, 3}},
      {"last entry cut", {good.begin(), good.end() - 1}, false, {1, 2}},
      {"foreign second entry", bad_second, false, {1}},
      {"foreign header", bad_header, false, {}},
      {"short header", {good.begin(), good.begin() + 79}, false, {}},
  };
  for (const auto& c : cases) {
    testing::WriteBytes(path, c.file);
    FountainLibrary library;
    EXPECT_EQ(LoadFountainLibrary(path, library), c.loaded) << c.name;
    EXPECT_EQ(Seeds(library), c.seeds) << c.name;
  }
  FountainLibrary none;
  EXPECT_FALSE(LoadFountainLibrary(folder / "FountainLibrary.fln", none));
  EXPECT_TRUE(none.empty());
}

// ------------------------------------------------------------------ save

// The rewrite gives the bytes of deleting the file and appending each entry.
TEST(SaveFountainLibrary, WritesWhatDeletingAndAppendingWould) {
  testing::TempFolder folder;
  const std::string saved = folder / "saved.fll", appended = folder / "appended.fll";
  testing::WriteBytes(saved, LibraryBytes(Library({7, 7, 7, 7}), 4, 1));
  const FountainLibrary library = Library({3, 1, 2});
  ASSERT_TRUE(SaveFountainLibrary(saved, library, 0, kLater));
  for (uint32_t seed : {3, 1, 2}) ASSERT_TRUE(AppendFountain(appended, Fountain(seed), 0, kLater));
  EXPECT_EQ(testing::ReadBytes(saved), testing::ReadBytes(appended));
}

// Saving an empty list deletes the file: the library that was never used
// stays absent, and one emptied by the user is gone.
TEST(SaveFountainLibrary, EmptyLibraryDeletesTheFile) {
  testing::TempFolder folder;
  const std::string path = folder / "FountainLibrary.fln";
  FountainLibrary library;
  EXPECT_FALSE(LoadFountainLibrary(path, library));
  EXPECT_TRUE(SaveFountainLibrary(path, library, 1, kNow));
  EXPECT_TRUE(folder.Files().empty());
  testing::WriteBytes(path, LibraryBytes(Library({1}), 1, kNow));
  EXPECT_TRUE(SaveFountainLibrary(path, library, 1, kNow));
  EXPECT_TRUE(folder.Files().empty());
}

// A rewrite or an append that cannot finish, at whatever byte, leaves the old
// library whole: the user is never left without one.
TEST(SaveFountainLibrary, AFullDiskAtAnyByteLeavesTheOldFile) {
  testing::TempFolder folder;
  const std::string path = folder / "FountainLibrary.fll";
  const std::vector<uint8_t> old = LibraryBytes(Library({1, 2}), 0, kNow);
  const auto before = [&] { testing::WriteBytes(path, old); };
  testing::SweepWriteFailures({path}, before, [&] { return SaveFountainLibrary(path, Library({2, 1}), 0, kLater); });
  testing::SweepWriteFailures({path}, before, [&] { return AppendFountain(path, Fountain(3), 0, kLater); });
  std::string reason;
  SafeFileFailureScope full_disk(0);
  EXPECT_FALSE(AppendFountain(path, Fountain(3), 0, kLater, &reason));
  EXPECT_EQ(reason, "No space left on device");
}

// ------------------------------------------------------------------ the list

TEST(FountainLibraryList, DragInsertsACopyThenDeletesTheOld) {
  const struct {
    size_t from, to;
    std::vector<uint32_t> order;
    std::optional<size_t> selected;
  } cases[] = {
      {0, 2, {1, 0, 2}, 2},  // a move down lands just above the target
      {2, 0, {2, 0, 1}, 0},
      {0, 1, {0, 1, 2}, 1},  // just above the next one is where it was
      {1, 0, {1, 0, 2}, 0},
      {1, 1, {0, 1, 2}, std::nullopt},  // onto itself
      {0, 3, {0, 1, 2}, std::nullopt},  // released outside every entry
      {3, 0, {0, 1, 2}, std::nullopt},
  };
  for (const auto& c : cases) {
    FountainLibrary library = Library({0, 1, 2});
    EXPECT_EQ(library.Drag(c.from, c.to), c.selected) << c.from << "->" << c.to;
    EXPECT_EQ(Seeds(library), c.order) << c.from << "->" << c.to;
  }
}

TEST(FountainLibraryList, DeleteSelectsTheSameIndexOrTheLast) {
  const struct {
    std::vector<uint32_t> before;
    size_t index;
    std::vector<uint32_t> after;
    std::optional<size_t> selected;
  } cases[] = {
      {{0, 1, 2}, 0, {1, 2}, 0}, {{0, 1, 2}, 1, {0, 2}, 1}, {{0, 1, 2}, 2, {0, 1}, 1},
      {{0}, 0, {}, std::nullopt}, {{0, 1}, 2, {0, 1}, std::nullopt},
  };
  for (const auto& c : cases) {
    FountainLibrary library;
    for (uint32_t seed : c.before) library.Append(LibraryEntryOf(Fountain(seed)));
    EXPECT_EQ(library.Delete(c.index), c.selected) << c.index;
    EXPECT_EQ(Seeds(library), c.after) << c.index;
  }
}

}  // namespace
}  // namespace tess
