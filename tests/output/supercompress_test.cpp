// The mask and its application proven equal to pixel-by-pixel references.
#include <gtest/gtest.h>

#include "output/supercompress.h"
#include "tests/support/test_support.h"

namespace tess {
namespace {

using testing::NoiseImage;
using testing::Pixels;

// The rule, pixel by pixel through the checked accessors: the oracle the row
// loops must match.
ImageBlock ReferenceMask(const ImageBlock& frame, ImageBlock& previous) {
  static const uint8_t kBw[6] = {0, 0, 0, 255, 255, 255};
  ImageBlock mask = ImageCreate(frame.width(), frame.height(), kBw, 1);
  for (int y = 0; y < frame.height(); ++y)
    for (int x = 0; x < frame.width(); ++x) {
      Colour c = ImageGetPixel(frame, x, y);
      if (c == ImageGetPixel(previous, x, y))
        ImageSetPixel(mask, x, y, 1);
      else
        ImageSetPixel(previous, x, y, c);
    }
  return mask;
}

void ReferenceApply(ImageBlock& image, const ImageBlock& mask, int index) {
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (ImageGetPixel(mask, x, y) == 1) ImageSetPixel(image, x, y, static_cast<Colour>(index));
}

// A frame that differs from `base` in scattered pixels and in one whole row.
ImageBlock Changed(const ImageBlock& base, uint32_t seed) {
  ImageBlock out = DuplicateGlobalBlock(base);
  ImageBlock noise = NoiseImage(base.width(), base.height(), seed);
  for (int y = 0; y < base.height(); ++y)
    for (int x = 0; x < base.width(); ++x)
      if ((x * 7 + y * 3 + static_cast<int>(seed)) % 5 == 0 || y == 2)
        ImageSetPixel(out, x, y, ImageGetPixel(noise, x, y));
  return out;
}

TEST(Supercompress, RowLoopsMatchTheReferenceAtOddSizes) {
  for (auto [w, h] : {std::pair{1, 1}, {7, 3}, {8, 4}, {9, 5}, {47, 33}}) {
    ImageBlock base = NoiseImage(w, h, 11, 4);
    ImageBlock prev_fast = DuplicateGlobalBlock(base);
    ImageBlock prev_ref = DuplicateGlobalBlock(base);
    for (uint32_t k = 1; k <= 3; ++k) {
      ImageBlock frame = k == 2 ? DuplicateGlobalBlock(prev_ref) : Changed(prev_ref, k);
      ImageBlock fast = SupercompressMask(frame, prev_fast);
      ImageBlock ref = ReferenceMask(frame, prev_ref);
      ASSERT_TRUE(fast);
      ASSERT_EQ(fast.size(), ref.size());
      // Byte equality covers the padding bits too.
      EXPECT_EQ(std::vector<uint8_t>(fast.data(), fast.data() + fast.size()),
                std::vector<uint8_t>(ref.data(), ref.data() + ref.size()))
          << w << "x" << h << " frame " << k;
      EXPECT_EQ(Pixels(prev_fast), Pixels(prev_ref));
    }
  }
}

// The mask is a black-and-white 1-bit image; frames of another size compare
// only where they overlap the previous one.
TEST(Supercompress, OtherSizesCompareTheOverlapAndShortMemoryFails) {
  ImageBlock previous = NoiseImage(6, 4, 3);
  ImageBlock prev_ref = DuplicateGlobalBlock(previous);
  ImageBlock frame = ImageCreate(9, 3, nullptr, 24);
  ImageCopyRect(frame, 0, 0, previous, 0, 0, 6, 3);
  ImageSetPixel(frame, 1, 1, 0x010203);
  ImageBlock fast = SupercompressMask(frame, previous);
  ASSERT_TRUE(fast);
  EXPECT_EQ(fast.bits(), 1);
  const uint8_t* table = fast.colour_table();
  EXPECT_EQ((std::vector<int>(table, table + 8)), (std::vector<int>{0, 0, 0, 0, 255, 255, 255, 0}));
  EXPECT_EQ(Pixels(fast), Pixels(ReferenceMask(frame, prev_ref)));
  EXPECT_EQ(ImageGetPixel(fast, 0, 0), 1u);
  EXPECT_EQ(ImageGetPixel(fast, 1, 1), 0u);
  EXPECT_EQ(ImageGetPixel(fast, 7, 0), 0u);  // outside the previous frame
  EXPECT_EQ(Pixels(previous), Pixels(prev_ref));
  AllocFailureScope fail(0);
  EXPECT_FALSE(SupercompressMask(frame, previous));
}

// Every kind of mask byte, made and applied: clear, mixed, full within a
// changed row (rows 0 and 4 change in one pixel each), full in an unchanged
// row (row 5), and the short byte at the row's end.
TEST(Supercompress, ApplyMatchesTheReferenceAtEveryDepth) {
  ImageBlock frame = NoiseImage(21, 6, 5, 2);
  ImageBlock previous = Changed(frame, 9);
  for (int y : {0, 4, 5})
    for (int x = 0; x < 21; ++x) ImageSetPixel(previous, x, y, ImageGetPixel(frame, x, y));
  ImageSetPixel(previous, 20, 0, ImageGetPixel(frame, 20, 0) ^ 1);
  ImageSetPixel(previous, 3, 4, ImageGetPixel(frame, 3, 4) ^ 0x10000);
  ImageBlock prev_ref = DuplicateGlobalBlock(previous);
  ImageBlock mask = SupercompressMask(frame, previous);
  ASSERT_EQ(Pixels(mask), Pixels(ReferenceMask(frame, prev_ref)));
  EXPECT_EQ(Pixels(previous), Pixels(prev_ref));
  EXPECT_EQ(mask.Row(0)[1], 0xFF);  // the chunk path, not the whole-row one
  for (int bits : {1, 4, 8}) {
    for (int index : {0, 1, 9, 200}) {
      ImageBlock ref = ImageCreate(21, 6, nullptr, bits);
      for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 21; ++x) ImageSetPixel(ref, x, y, static_cast<Colour>(x + y) % 3);
      ImageBlock fast = DuplicateGlobalBlock(ref);
      ApplySupercompressMask(fast, mask, index);
      ReferenceApply(ref, mask, index);
      EXPECT_EQ(Pixels(fast), Pixels(ref)) << bits << " bits, index " << index;
    }
  }
}

}  // namespace
}  // namespace tess
