#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "base/alloc.h"
#include "image/image.h"
#include "output/quantize.h"
#include "tests/output/palette_reference.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::NaturalImage;
using testing::NoiseImage;

ImageBlock Picture(int w, int h, const std::vector<Colour>& top_down) {
  ImageBlock image = ImageCreate(w, h, nullptr, 24);
  for (int i = 0; i < w * h; ++i) ImageSetPixel(image, i % w, i / w, top_down[i]);
  return image;
}

// The builder, handed the frames one at a time as a streamed build does.
bool BuildFrameByFrame(int* count, uint8_t* rgb, const FrameList& frames) {
  AdaptivePaletteBuilder builder(*count);
  for (int f = 0; f < frames.count(); ++f)
    if (!builder.AddFrame(frames[f].image)) return false;
  return builder.Finish(count, rgb);
}

// Both forms against the plain reference.
void ExpectSameAsReference(const FrameList& frames, int wanted) {
  uint8_t got[kPaletteBytes], streamed[kPaletteBytes], want[kPaletteBytes];
  int got_count = wanted, streamed_count = wanted, want_count = wanted;
  ASSERT_TRUE(AdaptivePalette(&got_count, got, frames));
  ASSERT_TRUE(BuildFrameByFrame(&streamed_count, streamed, frames));
  ASSERT_TRUE(testing::ReferenceAdaptivePalette(&want_count, want, frames));
  EXPECT_EQ(got_count, want_count) << wanted;
  EXPECT_EQ(std::memcmp(got, want, kPaletteBytes), 0) << wanted;
  EXPECT_EQ(streamed_count, want_count) << wanted;
  EXPECT_EQ(std::memcmp(streamed, want, kPaletteBytes), 0) << wanted;
}

TEST(AdaptivePalette, DepthFollowsTheRequestedCount) {
  EXPECT_EQ(OctreeDepth(256), 6);
  EXPECT_EQ(OctreeDepth(255), 5);
  EXPECT_EQ(OctreeDepth(16), 4);
  EXPECT_EQ(OctreeDepth(4), 3);
  EXPECT_EQ(OctreeDepth(1), 2);
  EXPECT_EQ(OctreeDepth(0), 2);
}

TEST(AdaptivePalette, FewColoursComeBackInOrderOfFirstAppearance) {
  const Colour red = MakeColour(255, 0, 0), green = MakeColour(0, 200, 0), blue = MakeColour(0, 0, 90),
               white = MakeColour(255, 255, 255);
  FrameList frames;
  // Read top-down: green, red on the top row, then blue; the second frame adds white.
  ASSERT_TRUE(FrameListAddImage(frames, Picture(2, 2, {green, red, blue, green}), 1));
  ASSERT_TRUE(FrameListAddImage(frames, Picture(3, 1, {red, white, white}), 1));
  uint8_t pal[kPaletteBytes];
  std::memset(pal, 0x77, sizeof pal);
  int count = 4;
  ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
  ASSERT_EQ(count, 4);
  const uint8_t expected[12] = {0, 200, 0, 255, 0, 0, 0, 0, 90, 255, 255, 255};
  EXPECT_EQ(std::memcmp(pal, expected, 12), 0);
  for (size_t i = 12; i < kPaletteBytes; ++i) ASSERT_EQ(pal[i], 0);

  count = 0;  // 0 asks for 256
  ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
  EXPECT_EQ(count, 4);
  count = 3;  // one too many: the tree decides
  ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
  EXPECT_LE(count, 3);
  ExpectSameAsReference(frames, 3);
}

TEST(AdaptivePalette, ManyColoursGiveAtMostTheRequestedCount) {
  FrameList frames;
  for (uint32_t seed = 1; seed <= 3; ++seed) ASSERT_TRUE(FrameListAddImage(frames, NoiseImage(40, 30, seed), 1));
  for (int wanted : {1, 2, 16, 100, 256, 300, -5}) {
    uint8_t pal[kPaletteBytes];
    int count = wanted;
    ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
    EXPECT_GE(count, 1);
    EXPECT_LE(count, wanted <= 0 ? 1 : std::min(wanted, 256));
    for (size_t i = 3 * static_cast<size_t>(count); i < kPaletteBytes; ++i) ASSERT_EQ(pal[i], 0);
  }
}

TEST(AdaptivePalette, TwoClustersGiveTheirMeanColours) {
  FrameList frames;
  ImageBlock image = ImageCreate(20, 10, nullptr, 24);
  for (int y = 0; y < 10; ++y)
    for (int x = 0; x < 20; ++x) {
      int jitter = (x * 7 + y * 3) % 5;  // 0..4 around each cluster
      ImageSetPixel(image, x, y, x < 10 ? MakeColour(230 + jitter, 20, 20) : MakeColour(10, 10, 200 + jitter));
    }
  ASSERT_TRUE(FrameListAddImage(frames, std::move(image), 1));
  uint8_t pal[kPaletteBytes];
  int count = 2;
  ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
  ASSERT_EQ(count, 2);
  // Children come before parents, lower child numbers first: blue (id 1) before red (id 4).
  EXPECT_EQ(pal[0], 10);
  EXPECT_EQ(pal[2], 202);
  EXPECT_EQ(pal[3], 232);
  EXPECT_EQ(pal[4], 20);
}

TEST(AdaptivePalette, NaturalFramesMatchTheReference) {
  FrameList frames;
  for (uint32_t seed = 1; seed <= 4; ++seed) ASSERT_TRUE(FrameListAddImage(frames, NaturalImage(47, 33, seed), 1));
  for (int wanted : {256, 64, 17, 5, 2, 1}) ExpectSameAsReference(frames, wanted);
}

// The tree's memory follows the colours present, not the 10.5 MB of an array
// of every leaf cell: 512 colours spread over the whole cube, each a leaf cell
// of its own, the worst layout for the leaf table's pages of siblings.
TEST(AdaptivePalette, MemoryFollowsTheColoursPresent) {
  FrameList frames;
  ASSERT_TRUE(FrameListAddImage(frames, NoiseImage(128, 128, 3, 8), 1));
  uint8_t pal[kPaletteBytes];
  int count = 256;
  const int64_t before = AllocCurrentBytes();
  ResetAllocPeak();
  ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
  EXPECT_LT(AllocPeakBytes() - before, 512 * 1024);
  EXPECT_EQ(AllocCurrentBytes(), before);
  ExpectSameAsReference(frames, 256);
}

TEST(AdaptivePalette, PalettisedFramesCountByTheirColours) {
  ImageBlock natural = NaturalImage(30, 20, 5);
  uint8_t pal[kPaletteBytes] = {};
  for (int i = 0; i < 16; ++i) pal[3 * i] = pal[3 * i + 1] = pal[3 * i + 2] = static_cast<uint8_t>(i * 17);
  ImageBlock four = ImageCreate(30, 20, pal, 4);
  for (int y = 0; y < 20; ++y)
    for (int x = 0; x < 30; ++x) ImageSetPixel(four, x, y, (x + y) % 16);
  FrameList frames;
  ASSERT_TRUE(FrameListAddImage(frames, std::move(natural), 1));
  ASSERT_TRUE(FrameListAddImage(frames, std::move(four), 1));
  ExpectSameAsReference(frames, 256);
  ExpectSameAsReference(frames, 8);
}

// 2^18 colours fill every cell of a depth-6 tree (the leaf table turns dense
// on the way): past the node limit the next row finds the deepest level merged
// away. Rows are classified bottom line first, so the plain row at the top
// comes last.
TEST(AdaptivePalette, NodeLimitDropsTheDeepestLevel) {
  ImageBlock image = ImageCreate(512, 513, nullptr, 24);
  for (int i = 0; i < 512 * 512; ++i)
    ImageSetPixel(image, i % 512, 1 + i / 512, MakeColour((i & 63) * 4, ((i >> 6) & 63) * 4, (i >> 12) * 4));
  for (int x = 0; x < 512; ++x) ImageSetPixel(image, x, 0, MakeColour(x / 2, 3, 255 - x / 2));
  FrameList frames;
  ASSERT_TRUE(FrameListAddImage(frames, std::move(image), 1));
  uint8_t got[kPaletteBytes], want[kPaletteBytes];
  int got_count = 256, want_count = 256;
  bool pruned = false;
  ASSERT_TRUE(AdaptivePalette(&got_count, got, frames));
  ASSERT_TRUE(testing::ReferenceAdaptivePalette(&want_count, want, frames, &pruned));
  EXPECT_TRUE(pruned);
  EXPECT_EQ(got_count, want_count);
  EXPECT_EQ(std::memcmp(got, want, kPaletteBytes), 0);
}

// Frame by frame, the first-appearance colours must stop at the frame that
// goes past the count, as the whole-list scan does: a later frame's colours
// that would fit again must not bring them back.
TEST(AdaptivePalette, FrameByFrameSwitchesToTheTreeWhereTheListWould) {
  FrameList frames;
  ASSERT_TRUE(FrameListAddImage(frames, Picture(2, 1, {0x000010, 0x000020}), 1));
  ASSERT_TRUE(FrameListAddImage(frames, NaturalImage(21, 9, 7), 1));
  ASSERT_TRUE(FrameListAddImage(frames, Picture(2, 1, {0x300000, 0x000010}), 1));
  for (int wanted : {256, 3, 2}) ExpectSameAsReference(frames, wanted);
}

// The node limit met in a later frame, after earlier ones filled the tree.
TEST(AdaptivePalette, FrameByFrameMeetsTheNodeLimitAsTheListDoes) {
  FrameList frames;
  for (int part = 0; part < 4; ++part) {
    ImageBlock image = ImageCreate(256, 256, nullptr, 24);
    for (int i = 0; i < 256 * 256; ++i) {
      const int c = part * 65536 + i;
      ImageSetPixel(image, i % 256, i / 256, MakeColour((c & 63) * 4, ((c >> 6) & 63) * 4, (c >> 12) * 4));
    }
    ASSERT_TRUE(FrameListAddImage(frames, std::move(image), 1));
  }
  uint8_t want[kPaletteBytes];
  int want_count = 256;
  bool pruned = false;
  ASSERT_TRUE(testing::ReferenceAdaptivePalette(&want_count, want, frames, &pruned));
  EXPECT_TRUE(pruned);
  ExpectSameAsReference(frames, 256);
}

TEST(AdaptivePalette, FrameByFrameFailsCleanlyAtEveryAllocation) {
  FrameList frames;
  for (uint32_t seed = 1; seed <= 2; ++seed) ASSERT_TRUE(FrameListAddImage(frames, NaturalImage(40, 24, seed), 1));
  uint8_t pal[kPaletteBytes];
  long total = 0;
  {
    AllocFailureScope probe(1L << 30);
    int count = 64;
    ASSERT_TRUE(BuildFrameByFrame(&count, pal, frames));
    total = probe.Count();
  }
  const int64_t before = AllocCurrentBytes();
  for (long n = 0; n < total; ++n) {
    AllocFailureScope fail(n);
    int count = 64;
    EXPECT_FALSE(BuildFrameByFrame(&count, pal, frames)) << n;
  }
  EXPECT_EQ(AllocCurrentBytes(), before);
}

TEST(AdaptivePalette, EmptyListGivesAnEmptyPalette) {
  FrameList frames;
  uint8_t pal[kPaletteBytes];
  int count = 16;
  ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
  EXPECT_EQ(count, 0);
}

TEST(AdaptivePalette, ShortMemoryFailsCleanlyAtEveryAllocation) {
  FrameList frames;
  for (uint32_t seed = 1; seed <= 2; ++seed) ASSERT_TRUE(FrameListAddImage(frames, NaturalImage(64, 64, seed), 1));
  uint8_t pal[kPaletteBytes];
  // At 16 colours the tree is shallow enough for its leaf table to turn dense.
  for (int wanted : {256, 16}) {
    long total = 0;
    {
      AllocFailureScope probe(1L << 30);
      int count = wanted;
      ASSERT_TRUE(AdaptivePalette(&count, pal, frames));
      total = probe.Count();
    }
    ASSERT_GT(total, 3);  // the set, scratch rows and the tree
    for (long n = 0; n < total; ++n) {
      AllocFailureScope fail(n);
      int count = wanted;
      EXPECT_FALSE(AdaptivePalette(&count, pal, frames)) << wanted << " " << n;  // ASan reports leaks
    }
  }
}

}  // namespace
}  // namespace tess
