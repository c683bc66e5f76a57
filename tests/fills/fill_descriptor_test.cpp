// The fill record's 854 bytes, its pattern file, and the defaults it keeps
// when the file is missing, short or foreign.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "fills/fill_descriptor.h"
#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"

namespace tess {
namespace {

FillDescriptor Sample(const std::string& path = "/x/Fill03001.flp") {
  FillDescriptor r;
  SetFillPath(r, path);
  r.stamp = 0x11223344;
  r.kind = kFillGradient;
  r.press_flags = 0xF3;
  r.colour = 0x00123456;
  r.gradient = {0x00010203, 0x00040506, kGradientConical, -45, 12, -34, {1, 2, 3, 4}};
  SetTextureRect(r.texture, {5, 6, 7, 8});
  r.texture[200] = 9;
  r.tile[0] = 'L';
  put_u32le(r.tile.data() + kTileIndexOffset, 7);
  r.tile_rect = {9, 10, 11, 12};
  return r;
}

std::vector<uint8_t> Bytes(const FillDescriptor& r) {
  const FillBytes b = SerializeFillDescriptor(r);
  return {b.begin(), b.end()};
}

TEST(FillBytes, FieldsSitAtTheirOffsets) {
  const FillBytes b = SerializeFillDescriptor(Sample());
  EXPECT_EQ(std::string(b.begin(), b.begin() + 8), "BRNDFILB");
  EXPECT_STREQ(reinterpret_cast<const char*>(b.data() + 16), "/x/Fill03001.flp");
  const struct { size_t offset; uint32_t value; } fields[] = {
      {8, 0x11223344}, {12, 854}, {277, 1}, {281, 0xF3}, {285, 0x123456}, {289, 0x010203},
      {293, 0x040506}, {297, 3}, {301, uint32_t(-45)}, {305, 12}, {309, uint32_t(-34)},
      {313, 0}, {317, 1}, {329, 4}, {337, 5}, {349, 8}, {830, 7}, {834, 0}, {838, 9}, {850, 12}};
  for (const auto& f : fields) EXPECT_EQ(get_u32le(b.data() + f.offset), f.value) << f.offset;
  EXPECT_EQ(b[333 + 200], 9);
  EXPECT_EQ(b[569], 'L');
}

// Any bytes with the magic survive parse and serialise, except the two
// run-time handle slots, which are always written as 0.
TEST(FillBytes, RoundTripKeepsEveryByteButTheRunTimeHandles) {
  std::vector<uint8_t> bytes(900);
  uint32_t s = 7;
  for (uint8_t& b : bytes) b = static_cast<uint8_t>((s = s * 1664525u + 1013904223u) >> 24);
  std::memcpy(bytes.data(), "BRNDFILB", 8);
  FillDescriptor r;
  ASSERT_TRUE(ParseFillDescriptor(bytes.data(), bytes.size(), r));
  bytes.resize(854);
  std::fill(bytes.begin() + 313, bytes.begin() + 317, 0);
  std::fill(bytes.begin() + 834, bytes.begin() + 838, 0);
  EXPECT_EQ(Bytes(r), bytes);
  FillDescriptor again;
  ASSERT_TRUE(ParseFillDescriptor(bytes.data(), bytes.size(), again));
  EXPECT_EQ(Bytes(again), bytes);
}

TEST(FillBytes, ShortOrForeignBytesAreRefused) {
  std::vector<uint8_t> good = Bytes(Sample());
  std::vector<uint8_t> foreign = good;
  foreign[7] = 'X';
  for (const auto& [bytes, size] : {std::pair{good, size_t{853}}, std::pair{foreign, size_t{854}}}) {
    FillDescriptor r;
    EXPECT_FALSE(ParseFillDescriptor(bytes.data(), size, r));
    EXPECT_EQ(Bytes(r), Bytes(FillDescriptor()));
  }
}

TEST(FillFile, CreateLoadsOnlyAWholeFileWithTheMagic) {
  testing::TempFolder folder;
  const std::string path = folder / "Fill03001.flp";
  std::vector<uint8_t> good = Bytes(Sample());
  std::vector<uint8_t> longer = good;
  longer.resize(900, 0xAB);
  std::vector<uint8_t> foreign = good;
  foreign[0] = 'b';
  const struct { const char* name; const std::vector<uint8_t>* file; bool read; bool loaded; } cases[] = {
      {"no file", nullptr, true, false},
      {"short", nullptr, true, false},
      {"foreign", &foreign, true, false},
      {"exact", &good, true, true},
      {"longer", &longer, true, true},
      {"not asked", &good, false, false},
  };
  for (const auto& c : cases) {
    std::filesystem::remove(path);
    if (c.file) testing::WriteBytes(path, *c.file);
    if (std::string(c.name) == "short") testing::WriteBytes(path, {good.begin(), good.end() - 1});
    const FillDescriptor r = CreateFillDescriptor(path, 0x00ABCDEF, c.read);
    FillDescriptor expected = c.loaded ? Sample() : FillDescriptor();
    if (!c.loaded) SetFillPath(expected, path), expected.colour = 0x00ABCDEF;
    expected.press_flags &= ~3u;
    EXPECT_EQ(Bytes(r), Bytes(expected)) << c.name;
  }
}

TEST(FillFile, SaveWritesTheWholeRecordToItsPath) {
  testing::TempFolder folder;
  const FillDescriptor r = Sample(folder / "Fill03001.flp");
  ASSERT_TRUE(SaveFillDescriptor(r));
  EXPECT_EQ(folder.Files(), std::vector<std::string>{"Fill03001.flp"});
  EXPECT_EQ(testing::ReadBytes(folder / "Fill03001.flp"), Bytes(r));
}

// A save that fails leaves neither a partial file nor a changed old one.
TEST(FillFile, FailedSaveLeavesNoHalfFile) {
  testing::TempFolder folder;
  const std::string path = folder / "Fill03001.flp";
  EXPECT_FALSE(SaveFillDescriptor(FillDescriptor()));                       // no path
  EXPECT_FALSE(SaveFillDescriptor(Sample(folder / "missing/Fill1.flp")));  // no folder
  EXPECT_TRUE(folder.Files().empty());
  std::filesystem::create_directory(path);  // the rename cannot replace a folder
  EXPECT_FALSE(SaveFillDescriptor(Sample(path)));
  EXPECT_TRUE(folder.Files().empty());
  std::filesystem::remove(path);
  const std::vector<uint8_t> old(854, 0x5A);
  EXPECT_EQ(testing::SweepWriteFailures({path}, [&] { testing::WriteBytes(path, old); },
                                        [&] { return SaveFillDescriptor(Sample(path)); }),
            854u);
  std::string reason;
  EXPECT_FALSE(SaveFillDescriptor(Sample(folder / "missing/Fill1.flp"), &reason));
  EXPECT_EQ(reason, "No such file or directory");
}

}  // namespace
}  // namespace tess
