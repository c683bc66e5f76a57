#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "base/byte_sink.h"
#include "base/bytes.h"
#include "image/image.h"
#include "output/palette.h"
#include "output/palette_match.h"
#include "tests/support/golden.h"

namespace tess {
namespace {

struct Rgb {
  int r, g, b;
  bool operator==(const Rgb&) const = default;
};
Rgb Entry(const uint8_t* pal, int i) { return {pal[3 * i], pal[3 * i + 1], pal[3 * i + 2]}; }
void SetEntry(uint8_t* pal, int i, Rgb c) {
  pal[3 * i] = static_cast<uint8_t>(c.r), pal[3 * i + 1] = static_cast<uint8_t>(c.g),
  pal[3 * i + 2] = static_cast<uint8_t>(c.b);
}

// Every choice pinned whole by checksum; the checks beside it say what the
// layouts are, so a failure can be read.
TEST(FixedPalette, EveryChoiceMatchesItsGoldenChecksum) {
  const int entries[] = {2, 16, 32, 64, 128, 216, 256, 256, 256};
  const int bits[] = {1, 4, 5, 6, 7, 8, 8, 8, 8};
  testing::GoldenSet golden("fixed_palettes");
  uint8_t pal[kPaletteBytes];
  for (int choice = 0; choice < kPaletteChoices; ++choice) {
    SCOPED_TRACE(choice);
    std::memset(pal, 0xAB, sizeof pal);
    int b = 0;
    EXPECT_EQ(BuildFixedPalette(pal, &b, choice), entries[choice]);
    EXPECT_EQ(b, bits[choice]);
    for (size_t i = 3 * static_cast<size_t>(entries[choice]); i < kPaletteBytes; ++i) ASSERT_EQ(pal[i], 0) << i;
    golden.Add("choice" + std::to_string(choice), testing::Fnv1a64(pal, kPaletteBytes));
  }
  EXPECT_TRUE(golden.Verify());

  BuildFixedPalette(pal, nullptr, kPaletteOrtho128);  // r*32 + g*4 + b, green on 8 levels
  EXPECT_EQ(Entry(pal, 2 * 32 + 7 * 4 + 1), (Rgb{170, 255, 85}));
  BuildFixedPalette(pal, nullptr, kPaletteOrtho256);  // the last of 8 levels is 255, not 252
  EXPECT_EQ(Entry(pal, 6 * 32 + 5 * 4 + 2), (Rgb{216, 180, 170}));
  EXPECT_EQ(Entry(pal, 7 * 32), (Rgb{255, 0, 0}));
  BuildFixedPalette(pal, nullptr, kPaletteSafe216);  // green slowest
  EXPECT_EQ(Entry(pal, 36 * 2 + 6 * 3 + 4), (Rgb{153, 102, 204}));
  uint8_t other[kPaletteBytes];
  for (int choice : {9, -1}) {  // outside the list: the orthogonal 256
    EXPECT_EQ(BuildFixedPalette(other, nullptr, choice), 256);
    BuildFixedPalette(pal, nullptr, kPaletteOrtho256);
    EXPECT_EQ(std::memcmp(pal, other, kPaletteBytes), 0) << choice;
  }
}

TEST(PaletteResource, RoundTripAndFieldOffsets) {
  MemorySink sink;
  ASSERT_TRUE(WritePaletteResource(sink, Palette256GColours()));
  const std::vector<uint8_t>& block = sink.bytes();
  ASSERT_EQ(block.size(), 853u);
  EXPECT_EQ(std::memcmp(block.data(), "BRNDRSRC", 8), 0);
  EXPECT_EQ(std::memcmp(block.data() + 8, "256 colour palette", 18), 0);
  for (size_t i = 8 + 18; i < 73; ++i) ASSERT_EQ(block[i], 0) << i;
  EXPECT_EQ(get_u16le(block.data() + 73), 1);
  EXPECT_EQ(std::memcmp(block.data() + 75, "CMAP", 4), 0);
  EXPECT_EQ(get_u32le(block.data() + 79), 1u);
  EXPECT_EQ(get_u16le(block.data() + 83), 768);
  EXPECT_EQ(std::memcmp(block.data() + 85, Palette256GColours(), 768), 0);

  uint8_t pal[kPaletteBytes] = {};
  ASSERT_TRUE(ParsePaletteResource(block.data(), block.size(), pal));
  EXPECT_EQ(std::memcmp(pal, Palette256GColours(), kPaletteBytes), 0);
}

TEST(PaletteResource, RefusesDamagedBlocksWithoutTouchingTheOutput) {
  MemorySink sink;
  ASSERT_TRUE(WritePaletteResource(sink, Palette216Colours()));
  std::vector<uint8_t> good = sink.bytes();
  uint8_t pal[kPaletteBytes];
  std::memset(pal, 0x5A, sizeof pal);
  EXPECT_FALSE(ParsePaletteResource(good.data(), 852, pal));
  EXPECT_FALSE(ParsePaletteResource(nullptr, 853, pal));
  for (size_t offset : {size_t{0}, size_t{7}, size_t{75}, size_t{83}, size_t{84}}) {
    std::vector<uint8_t> bad = good;
    bad[offset] ^= 0x01;
    EXPECT_FALSE(ParsePaletteResource(bad.data(), bad.size(), pal)) << offset;
  }
  for (uint8_t b : pal) ASSERT_EQ(b, 0x5A);
  // The description and version fields are not checked.
  good[20] = 'x';
  good[73] = 9;
  EXPECT_TRUE(ParsePaletteResource(good.data(), good.size(), pal));
}

TEST(NearestColour, ExactMatchFirstAndTiesGoToTheLowerIndex) {
  uint8_t pal[kPaletteBytes] = {};
  SetEntry(pal, 0, {20, 0, 0});
  SetEntry(pal, 1, {0, 0, 0});
  SetEntry(pal, 2, {10, 0, 0});
  SetEntry(pal, 3, {10, 0, 0});
  EXPECT_EQ(NearestColour(10, 0, 0, pal, 4), 2);  // the first of two exact entries
  EXPECT_EQ(NearestColour(10, 0, 0, pal, 2), 0);  // equal distances: lower index
  EXPECT_EQ(ExactColour(10, 0, 0, pal, 4), 2);
  EXPECT_EQ(ExactColour(10, 0, 0, pal, 2), -1);
  EXPECT_EQ(NearestColour(10, 0, 0, pal, 0), 0);
  EXPECT_EQ(NearestColour(10, 0, 0, pal, -3), 0);
}

TEST(NearestColour, WeighsGreenAboveRedAboveBlue) {
  uint8_t pal[kPaletteBytes] = {};
  SetEntry(pal, 0, {100, 100, 110});  // 2 * 10² = 200
  SetEntry(pal, 1, {109, 100, 100});  // 3 * 9²  = 243
  SetEntry(pal, 2, {100, 108, 100});  // 4 * 8²  = 256
  EXPECT_EQ(NearestColour(100, 100, 100, pal, 3), 0);
  SetEntry(pal, 0, {100, 100, 112});  // 288
  EXPECT_EQ(NearestColour(100, 100, 100, pal, 3), 1);
  SetEntry(pal, 1, {110, 100, 100});  // 300
  EXPECT_EQ(NearestColour(100, 100, 100, pal, 3), 2);
}

TEST(ColourLookup, EntriesAreTheNearestColourOfTheirGridPoint) {
  uint8_t pal[kPaletteBytes];
  BuildFixedPalette(pal, nullptr, kPaletteWindows16);
  std::vector<uint8_t> lookup(kLookupEntries);
  BuildColourLookup(pal, 16, lookup.data());
  for (int i : {0, 1, 31, 32, 1000, 12345, 32767})
    EXPECT_EQ(lookup[i], NearestColour((i % 32) * 8, ((i / 32) % 32) * 8, (i / 1024) * 8, pal, 16)) << i;
  EXPECT_EQ(lookup[LookupKey(250, 250, 250)], 15);  // (248, 248, 248) is nearest to white
}

// Palettes that stress the matcher: grids, a gray run, duplicates, tiny and random.
std::vector<std::vector<uint8_t>> TestPalettes(std::vector<int>* counts) {
  std::vector<std::vector<uint8_t>> out;
  for (int choice : {kPaletteBlackWhite, kPaletteWindows16, kPaletteSafe216, kPaletteOrtho256,
                     kPaletteWithGray256}) {
    std::vector<uint8_t> pal(kPaletteBytes);
    counts->push_back(BuildFixedPalette(pal.data(), nullptr, choice));
    out.push_back(pal);
  }
  std::mt19937 rng(7);
  for (int count : {1, 5, 200}) {
    std::vector<uint8_t> pal(kPaletteBytes);
    for (int i = 0; i < count * 3; ++i) pal[i] = static_cast<uint8_t>(rng());
    // Repeated colours and symmetric pairs make ties.
    if (count > 4) {
      std::memcpy(&pal[3 * (count - 1)], &pal[0], 3);
      SetEntry(pal.data(), 1, {100, 50, 50});
      SetEntry(pal.data(), 2, {100, 50, 70});
    }
    counts->push_back(count);
    out.push_back(pal);
  }
  return out;
}

// Two matchers per palette: one asked memoised questions and lookups, one
// only the unmemoised searches, which build the cell lists from the first
// colour on. Both must agree with the plain searches, ties included.
TEST(PaletteMatcher, AgreesWithThePlainSearchesOnEveryPalette) {
  std::vector<int> counts;
  std::vector<std::vector<uint8_t>> palettes = TestPalettes(&counts);
  std::mt19937 rng(11);
  for (size_t p = 0; p < palettes.size(); ++p) {
    const uint8_t* pal = palettes[p].data();
    const int count = counts[p];
    PaletteMatcher memo, plain;
    ASSERT_TRUE(memo.Init(pal, count, true));
    ASSERT_TRUE(plain.Init(pal, count));
    std::vector<uint8_t> lookup(kLookupEntries);
    BuildColourLookup(pal, count, lookup.data());
    for (int key = 0; key < kLookupEntries; ++key) ASSERT_EQ(memo.Lookup(key), lookup[key]) << p << " " << key;
    for (int n = 0; n < 20000; ++n) {
      int r = rng() & 255, g = rng() & 255, b = rng() & 255;
      if (n % 4 == 0) {  // palette colours and their neighbours
        int i = static_cast<int>(rng() % count);
        r = std::min(255, pal[3 * i] + n % 3), g = pal[3 * i + 1], b = pal[3 * i + 2];
        if (n % 8 == 0) r = 100, g = 50, b = 60;  // equidistant from entries 1 and 2
      }
      SCOPED_TRACE(::testing::Message() << p << " " << r << "," << g << "," << b);
      const int want = NearestColour(r, g, b, pal, count);
      ASSERT_EQ(plain.NearestUnmemoised(r, g, b), want);
      ASSERT_EQ(memo.Nearest(r, g, b), want);
      ASSERT_EQ(memo.Nearest(r, g, b), want);  // from the memo
      ASSERT_EQ(memo.NearestUnmemoised(r, g, b), want);
      // The dither takes the entry's colour from the same comparison.
      const uint32_t entry = static_cast<uint32_t>(want) | pal[3 * want] << 8 | pal[3 * want + 1] << 16 |
                             static_cast<uint32_t>(pal[3 * want + 2]) << 24;
      ASSERT_EQ(plain.NearestEntryUnmemoised(r, g, b), entry);
      ASSERT_EQ(memo.Exact(r, g, b), ExactColour(r, g, b, pal, count));
    }
  }
}

// Cell lists grow on demand; when they cannot, the lists they would have been
// built from give the same answers.
TEST(PaletteMatcher, ShortMemoryWhileSearchingKeepsAnswersExact) {
  uint8_t pal[kPaletteBytes];
  const int count = BuildFixedPalette(pal, nullptr, kPaletteGray256);  // long lists near the gray axis
  PaletteMatcher matcher;
  ASSERT_TRUE(matcher.Init(pal, count));
  AllocFailureScope fail(0, true);
  std::mt19937 rng(5);
  for (int n = 0; n < 40000; ++n) {
    const int r = rng() & 255, g = rng() & 255, b = rng() & 255;
    ASSERT_EQ(matcher.NearestUnmemoised(r, g, b), NearestColour(r, g, b, pal, count));
  }
  EXPECT_GT(fail.Count(), 0);  // the pool did try to grow
}

TEST(PaletteMatcher, EmptyPaletteAndShortMemory) {
  uint8_t pal[kPaletteBytes] = {};
  PaletteMatcher matcher;
  ASSERT_TRUE(matcher.Init(pal, 0, true));
  EXPECT_EQ(matcher.Nearest(1, 2, 3), 0);
  EXPECT_EQ(matcher.Exact(0, 0, 0), -1);
  EXPECT_EQ(matcher.Fast(0, 0, 0), 0);
  AllocFailureScope fail(0);
  EXPECT_FALSE(matcher.Init(pal, 16));
}

}  // namespace
}  // namespace tess
