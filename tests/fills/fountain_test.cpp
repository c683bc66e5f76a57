// The fountain record's 585 bytes, its pattern file and document value, the
// segment renderer at its edge cases and under short memory, and the
// built-in fountains.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "fills/fountain.h"
#include "tests/support/golden.h"
#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

constexpr Colour kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000, kBlack = 0, kWhite = 0xFFFFFF;

FountainRecord Sample(const std::string& path = "/x/Fill03410.flp") {
  FountainRecord r;
  SetFountainPath(r, path);
  r.stamp = 0x11223344;
  r.press_flags = 0xF2;
  r.mode = kFountainOpen;
  r.marker_count = 3;
  r.start_colour = 0xAA010203;
  r.end_colour = 0x00040506;
  r.markers = {MakeMarker(10, 0x112233), MakeMarker(200, 0x445566), MakeMarker(255, 0x778899)};
  r.markers[63] = 0xDEADBEEF;
  r.reserved[27] = 0x5A;
  return r;
}

std::vector<uint8_t> Bytes(const FountainRecord& r) {
  const FountainBytes b = SerializeFountainRecord(r);
  return {b.begin(), b.end()};
}

FountainRecord Markers(uint32_t mode, Colour start, Colour end, std::vector<uint32_t> markers) {
  FountainRecord r;
  r.mode = mode;
  r.start_colour = start;
  r.end_colour = end;
  r.markers = {};
  std::copy(markers.begin(), markers.end(), r.markers.begin());
  r.marker_count = static_cast<uint32_t>(markers.size());
  return r;
}

// ------------------------------------------------------------------ bytes

TEST(FountainBytes, FieldsSitAtTheirOffsets) {
  const FountainBytes b = SerializeFountainRecord(Sample());
  EXPECT_EQ(std::string(b.begin(), b.begin() + 8), "BRNDFOUN");
  EXPECT_STREQ(reinterpret_cast<const char*>(b.data() + 24), "/x/Fill03410.flp");
  const struct { size_t offset; uint32_t value; } fields[] = {
      {8, 0x11223344},   {12, 585},         {16, 0xF2},        {20, 1},           {285, 0},
      {289, 3},          {293, 0xAA010203}, {297, 0x00040506}, {301, 0x0A112233}, {305, 0xC8445566},
      {309, 0xFF778899}, {313, 0},          {553, 0xDEADBEEF}, {581, 0x5A000000}};
  for (const auto& f : fields) EXPECT_EQ(get_u32le(b.data() + f.offset), f.value) << f.offset;
}

// The created defaults, byte by byte as the format gives them.
TEST(FountainBytes, DefaultsAreTheCreatedRecord) {
  std::vector<uint8_t> expected(585, 0);
  std::memcpy(expected.data(), "BRNDFOUN", 8);
  put_u32le(&expected[8], 0x02006101);
  put_u32le(&expected[12], 585);
  put_u32le(&expected[289], 7);
  put_u32le(&expected[297], 0xFFFFFFFF);
  const uint32_t words[] = {0x20FF0000, 0x40FFFF00, 0x6000FF00, 0x8000FFFF, 0xA00000FF, 0xC0FF00FF, 0xE0CC0099};
  for (size_t i = 0; i < 7; ++i) put_u32le(&expected[301 + 4 * i], words[i]);
  FountainRecord r = Sample();
  InitFountainRecord(r);
  EXPECT_EQ(Bytes(r), expected);
  EXPECT_EQ(Bytes(FountainRecord()), expected);
}

// Any bytes with the magic survive parse and serialise, except the preview
// slot (always 0) and the press flag (a file never holds the button down).
TEST(FountainBytes, RoundTripKeepsEveryByteButTheRunTimeState) {
  std::vector<uint8_t> bytes(600);
  uint32_t s = 11;
  for (uint8_t& b : bytes) b = static_cast<uint8_t>((s = s * 1664525u + 1013904223u) >> 24);
  std::memcpy(bytes.data(), "BRNDFOUN", 8);
  bytes[16] |= 1;
  FountainRecord r;
  ASSERT_TRUE(ParseFountainRecord(bytes.data(), bytes.size(), r));
  bytes.resize(585);
  bytes[16] &= ~1;
  std::fill(bytes.begin() + 285, bytes.begin() + 289, 0);
  EXPECT_EQ(Bytes(r), bytes);
}

// ------------------------------------------------------------------ files

TEST(FountainFile, CreateLoadsOnlyAWholeFileWithTheMagic) {
  testing::TempFolder folder;
  const std::string path = folder / "Fill03410.flp";
  const std::vector<uint8_t> good = Bytes(Sample());
  std::vector<uint8_t> longer = good;
  longer.resize(700, 0xAB);
  std::vector<uint8_t> foreign = good;
  foreign[7] = 'X';
  const std::vector<uint8_t> shorter(good.begin(), good.end() - 1);
  const struct { const char* name; const std::vector<uint8_t>* file; bool read; bool loaded; } cases[] = {
      {"no file", nullptr, true, false}, {"short", &shorter, true, false}, {"foreign", &foreign, true, false},
      {"exact", &good, true, true},      {"longer", &longer, true, true},  {"not asked", &good, false, false},
  };
  for (const auto& c : cases) {
    std::filesystem::remove(path);
    if (c.file) testing::WriteBytes(path, *c.file);
    // The mode asked for is the defaults'; a loaded file brings its own.
    const FountainRecord r = CreateFountainRecord(path, 5, c.read);
    FountainRecord expected = c.loaded ? Sample() : FountainRecord();
    if (!c.loaded) SetFountainPath(expected, path), expected.mode = 5;
    expected.press_flags &= ~kFountainPressed;
    EXPECT_EQ(Bytes(r), Bytes(expected)) << c.name;
  }
  EXPECT_EQ(FountainPath(CreateFountainRecord(std::string(261, 'a'), 1, true)), "");
}

// Saving replaces the file whole or not at all, whatever byte the disk
// fills up at.
TEST(FountainFile, SaveWritesTheWholeRecordOrNothing) {
  testing::TempFolder folder;
  const std::string path = folder / "Fill03410.flp";
  ASSERT_TRUE(SaveFountainRecord(Sample(path)));
  EXPECT_EQ(testing::ReadBytes(path), Bytes(Sample(path)));
  EXPECT_FALSE(SaveFountainRecord(FountainRecord()));  // no path
  EXPECT_EQ(testing::SweepWriteFailures({path}, [&] { testing::WriteBytes(path, Bytes(Sample(path))); },
                                        [&] { return SaveFountainRecord(CreateFountainRecord(path, 0, false)); }),
            kFountainRecordSize);
}

// A document line brings every field but the path, magic or not.
TEST(FountainDocument, ValueCarriesTheRecordButNeverThePath) {
  const std::string text = FountainValueText(Sample("/theirs/Fill1.flp"));
  ASSERT_EQ(text.size(), 1170u);
  std::string foreign = text;
  foreign.replace(0, 2, "00");
  const struct { std::string value; bool taken; } cases[] = {
      {text, true}, {foreign + "trailing", true}, {text.substr(0, 1169), false}, {text.substr(0, 1168) + "G0", false}};
  for (const auto& c : cases) {
    FountainRecord r = CreateFountainRecord("/mine/Fill2.flp", 0, false);
    EXPECT_EQ(TakeFountainValue(c.value, r), c.taken);
    EXPECT_EQ(Bytes(r), Bytes(c.taken ? Sample("/mine/Fill2.flp") : CreateFountainRecord("/mine/Fill2.flp", 0, false)))
        << c.value.substr(0, 8) << ": press flag cleared, own path kept";
  }
}

// ------------------------------------------------------------------ rendering

// In doubles as specified: 255 * (1 / 255.0) is exactly 1, so a marker at
// 255 lies at x = width, while 33 * (1 / 255.0) * 85 lands just below 11.
TEST(MarkerOffsets, TruncatedPositionsOfTheMarkersInUse) {
  const MarkerOffsetTable at100 = MarkerOffsets(FountainRecord(), 100);
  const int32_t defaults[] = {12, 25, 37, 50, 62, 75, 87};
  for (size_t i = 0; i < 64; ++i) EXPECT_EQ(at100[i], i < 7 ? defaults[i] : 0) << i;
  const FountainRecord r = Markers(1, 0, 0, {MakeMarker(255, 0), MakeMarker(33, 0)});
  for (int32_t width : {1, 85, 256, 1021}) EXPECT_EQ(MarkerOffsets(r, width)[0], width);
  EXPECT_EQ(MarkerOffsets(r, 85)[1], 10);
}

// Columns of a rendered fountain: each segment starts at its start colour
// and ends, one column before the next segment, at its end colour.
TEST(RenderFountain, EdgeCases) {
  FountainRecord open_default;
  open_default.mode = kFountainOpen;
  const Colour purple = 0xCC0099;  // COLORREF 0xCC0099, the seventh default
  const struct {
    const char* name;
    FountainRecord record;
    int32_t width;
    std::vector<std::pair<int, Colour>> columns;
  } cases[] = {
      {"default closed", FountainRecord(), 100,
       {{0, kBlack}, {11, kBlue}, {12, kBlue}, {24, 0xFFFF00}, {49, 0xFFFF}, {75, 0xFF00FF}, {86, purple}, {87, purple}, {99, kBlack}}},
      {"default open", open_default, 100, {{0, kBlack}, {87, purple}, {99, kWhite}}},
      {"equal positions jump", Markers(0, kBlack, kWhite, {MakeMarker(128, kRed), MakeMarker(128, kBlue)}), 255,
       {{0, kBlack}, {127, kRed}, {128, kBlue}, {254, kBlack}}},
      {"marker at 0", Markers(1, kBlack, kWhite, {MakeMarker(0, kRed)}), 50, {{0, kRed}, {49, kWhite}}},
      {"none, open", Markers(1, kRed, kBlue, {}), 64, {{0, kRed}, {63, kBlue}}},
      {"none, closed", Markers(2, kRed, kBlue, {}), 64, {{0, kRed}, {31, kRed}, {63, kRed}}},
      // The second marker lies left of the first: its segment is empty, and
      // the last one, from it, paints over the first's right part.
      {"out of order", Markers(0, kBlack, kWhite, {MakeMarker(200, kRed), MakeMarker(100, kGreen)}), 255,
       {{0, kBlack}, {99, 0x00007F}, {100, kGreen}, {199, 0x005B00}, {254, kBlack}}},
      {"top bytes ignored", Markers(1, 0xFF000000 | kRed, 0xFF000000 | kBlue, {}), 2, {{0, kRed}, {1, kBlue}}},
  };
  for (const auto& c : cases) {
    const ImageBlock image = RenderFountain(c.record, c.width, 3);
    ASSERT_TRUE(image) << c.name;
    for (const auto& [x, colour] : c.columns)
      for (int y = 0; y < 3; ++y) EXPECT_EQ(ImageGetPixel(image, x, y), colour) << c.name << " x " << x;
  }
  EXPECT_FALSE(RenderFountain(FountainRecord(), 0, 3));
  EXPECT_FALSE(RenderFountain(FountainRecord(), 3, -1));
}

// A count past the table reads the 64 markers there are, no more.
TEST(RenderFountain, MarkerCountAboveTheTableIsClamped) {
  FountainRecord r = Sample();
  for (size_t i = 0; i < 64; ++i) r.markers[i] = MakeMarker(static_cast<uint32_t>(4 * i), 0x010101 * (3 * i));
  r.marker_count = 64;
  const std::vector<Colour> expected = testing::Pixels(RenderFountain(r, 300, 2));
  for (uint32_t count : {65u, 1000u, 0xFFFFFFFFu}) {
    r.marker_count = count;
    EXPECT_EQ(testing::Pixels(RenderFountain(r, 300, 2)), expected) << count;
    EXPECT_EQ(FountainMarkerCount(r), 64u);
  }
}

TEST(RenderFountain, ShortMemoryAtEveryAllocationGivesNothing) {
  for (long fail_at = 0;; ++fail_at) {
    AllocFailureScope fail(fail_at);
    ImageBlock image = RenderFountain(FountainRecord(), 100, 7);
    if (fail.Count() <= fail_at) {
      EXPECT_TRUE(image);
      EXPECT_GT(fail_at, 7) << "the image and a gradient per segment";
      break;
    }
    EXPECT_FALSE(image) << "allocation " << fail_at;
  }
}

TEST(FountainGolden, RendersMatchTheirChecksums) {
  testing::GoldenSet golden("fountains");
  FountainRecord open_default;
  open_default.mode = kFountainOpen;
  golden.Add("default-closed-100x5", testing::ImageChecksum(RenderFountain(FountainRecord(), 100, 5)));
  golden.Add("default-open-47x33", testing::ImageChecksum(RenderFountain(open_default, 47, 33)));
  for (int id : BuiltInFountainIds()) {
    FountainRecord r;
    ASSERT_TRUE(BuiltInFountain(id, r));
    golden.Add("builtin-" + std::to_string(id) + "-256x32", testing::ImageChecksum(RenderFountain(r, 256, 32)));
  }
  EXPECT_TRUE(golden.Verify());
}

// ------------------------------------------------------------------ built-ins

// Whole records that round-trip, closed and starting and ending on the same
// colour so they loop, with every marker a segment of its own.
TEST(BuiltInFountains, AreWholeClosedRecordsThatLoop) {
  EXPECT_EQ(BuiltInFountainIds().size(), 5u);
  for (int id : BuiltInFountainIds()) {
    FountainRecord r, again;
    ASSERT_TRUE(BuiltInFountain(id, r)) << id;
    const FountainBytes bytes = SerializeFountainRecord(r);
    static_assert(sizeof bytes == 585);
    ASSERT_TRUE(ParseFountainRecord(bytes.data(), bytes.size(), again));
    EXPECT_EQ(SerializeFountainRecord(again), bytes) << id;
    EXPECT_FALSE(IsOpenFountain(r)) << id;
    ASSERT_TRUE(r.marker_count >= 2 && r.marker_count <= 64) << id;
    for (size_t i = 0; i < r.marker_count; ++i)
      EXPECT_TRUE(MarkerPosition(r.markers[i]) > (i ? MarkerPosition(r.markers[i - 1]) : 0) &&
                  MarkerPosition(r.markers[i]) < 255) << id << " marker " << i;
    const ImageBlock strip = RenderFountain(r, 256, 1);
    EXPECT_EQ(ImageGetPixel(strip, 0, 0), ImageGetPixel(strip, 255, 0)) << id;
  }
  FountainRecord untouched = Sample();
  for (int id : {0, 271, 7405}) EXPECT_FALSE(BuiltInFountain(id, untouched)) << id;
  EXPECT_EQ(Bytes(untouched), Bytes(Sample()));
}

}  // namespace
}  // namespace tess
