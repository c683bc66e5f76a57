// Image blocks (header, strides, packing, every depth at an odd size) and
// frame lists.
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <utility>

#include "base/bytes.h"
#include "image/frame_list.h"
#include "image/image.h"

namespace tess {
namespace {

TEST(ImageCreate, HeaderFieldsAtTheirOffsets) {
  uint8_t pal[kPaletteBytes] = {};
  pal[3] = 10, pal[4] = 20, pal[5] = 30;  // entry 1 = (10, 20, 30)
  ImageBlock img = ImageCreate(5, 3, pal, 8);
  ASSERT_TRUE(img);
  const uint8_t* h = img.data();
  EXPECT_EQ(get_u32le(h + 0), 40u);
  EXPECT_EQ(get_i32le(h + 4), 5);
  EXPECT_EQ(get_i32le(h + 8), 3);
  EXPECT_EQ(get_u16le(h + 12), 1);
  EXPECT_EQ(get_u16le(h + 14), 8);
  EXPECT_EQ(get_u32le(h + 16), 0u);
  EXPECT_EQ(get_u32le(h + 20), 8u * 3);  // stride 8 for 5 pixels at 8 bits
  EXPECT_EQ(get_u32le(h + 32), 256u);
  EXPECT_EQ(get_u32le(h + 36), 256u);
  EXPECT_EQ(img.size(), 40u + 4 * 256 + 24);
  // Colour table entries are blue, green, red, 0.
  EXPECT_EQ(h[40 + 4], 30);
  EXPECT_EQ(h[40 + 5], 20);
  EXPECT_EQ(h[40 + 6], 10);
  EXPECT_EQ(h[40 + 7], 0);
}

TEST(ImageCreate, StridesAndNormalisedDepths) {
  // width, bits, stride: rows are padded to 4 bytes.
  for (auto [w, bits, stride] : {std::tuple{1, 24, 4u}, {5, 8, 8u}, {3, 1, 4u}, {33, 1, 8u}, {9, 4, 8u}})
    EXPECT_EQ(ImageCreate(w, 1, nullptr, bits).stride(), stride) << w << " at " << bits;
  // Other depths round up to 4, 8 or 24; 0 and anything past 24 give 32.
  for (auto [asked, made] : {std::pair{2, 4}, {0, 32}, {5, 8}, {12, 24}, {16, 24}, {33, 32}})
    EXPECT_EQ(ImageCreate(4, 4, nullptr, asked).bits(), made) << asked;
  EXPECT_EQ(ImageCreate(4, 4, nullptr, 2).colour_table_entries(), 16);
}

TEST(ImageCreate, RefusesImpossibleSizesAndReportsShortMemory) {
  EXPECT_FALSE(ImageCreate(0, 10, nullptr, 24));
  EXPECT_FALSE(ImageCreate(10, -1, nullptr, 24));
  EXPECT_FALSE(ImageCreate(100000, 100000, nullptr, 24));
  AllocFailureScope fail(0);
  EXPECT_FALSE(ImageCreate(8, 8, nullptr, 24));
}

TEST(ImagePixels, TopDownAddressingAndBounds) {
  ImageBlock img = ImageCreate(3, 2, nullptr, 24);
  ImageSetPixel(img, 0, 0, MakeColour(1, 2, 3));
  // y = 0 is the last row stored in the block; bytes are blue, green, red.
  const uint8_t* last_row = img.data() + 40 + img.stride() * 1;
  EXPECT_EQ(last_row[0], 3);
  EXPECT_EQ(last_row[1], 2);
  EXPECT_EQ(last_row[2], 1);
  EXPECT_EQ(ImageGetPixel(img, 0, 0), MakeColour(1, 2, 3));
  EXPECT_EQ(ImageGetPixel(img, 3, 0), kNoColour);
  EXPECT_EQ(ImageGetPixel(img, 0, -1), kNoColour);
  std::vector<uint8_t> before(img.data(), img.data() + img.size());
  ImageSetPixel(img, 3, 0, 0xFFFFFF);
  ImageSetPixel(img, 0, -1, 0xFFFFFF);
  EXPECT_EQ(std::vector<uint8_t>(img.data(), img.data() + img.size()), before);
}

TEST(ImagePixels, EveryDepthRoundTripsAtOddSize) {
  for (int bits : {1, 4, 8, 24, 32}) {
    ImageBlock img = ImageCreate(47, 33, nullptr, bits);
    ASSERT_TRUE(img);
    Colour mask = bits == 32 ? 0xFFFFFFFFu : bits == 24 ? 0xFFFFFFu : (1u << bits) - 1;
    for (int y = 0; y < 33; ++y)
      for (int x = 0; x < 47; ++x) ImageSetPixel(img, x, y, (x * 7919u + y * 104729u) & mask);
    for (int y = 0; y < 33; ++y)
      for (int x = 0; x < 47; ++x)
        ASSERT_EQ(ImageGetPixel(img, x, y), (x * 7919u + y * 104729u) & mask) << bits;
    // Padding past the last pixel of each row stays zero.
    size_t used = (static_cast<size_t>(bits) * 47 + 7) / 8;
    for (int y = 0; y < 33 && bits >= 8; ++y)
      for (size_t i = used; i < img.stride(); ++i) ASSERT_EQ(img.Row(y)[i], 0) << bits;
  }
}

TEST(ImagePixels, SubBytePacking) {
  ImageBlock four = ImageCreate(3, 1, nullptr, 4);
  ImageSetPixel(four, 0, 0, 0xA);
  ImageSetPixel(four, 1, 0, 0x5);
  EXPECT_EQ(four.Row(0)[0], 0xA5);
  ImageSetPixel(four, 0, 0, 0x13);  // only the low nibble counts
  EXPECT_EQ(four.Row(0)[0], 0x35);
  ImageBlock one = ImageCreate(10, 1, nullptr, 1);
  ImageSetPixel(one, 0, 0, 7);
  ImageSetPixel(one, 9, 0, 1);
  EXPECT_EQ(one.Row(0)[0], 0x80);
  EXPECT_EQ(one.Row(0)[1], 0x40);
  EXPECT_EQ(ImageGetPixel(one, 0, 0), 1u);
  ImageSetPixel(one, 0, 0, 0);
  EXPECT_EQ(one.Row(0)[0], 0x00);
}

TEST(ImagePalette, CopiesTableAsRgbAndClearsTheRest) {
  uint8_t pal[kPaletteBytes];
  for (size_t i = 0; i < kPaletteBytes; ++i) pal[i] = static_cast<uint8_t>(i * 7);
  ImageBlock img = ImageCreate(2, 2, pal, 4);
  uint8_t out[kPaletteBytes];
  std::memset(out, 0xEE, sizeof out);
  EXPECT_EQ(ImageGetPalette(img, out), 16);
  EXPECT_EQ(0, std::memcmp(out, pal, 48));
  for (size_t i = 48; i < kPaletteBytes; ++i) ASSERT_EQ(out[i], 0);
  ImageBlock rgb = ImageCreate(2, 2, nullptr, 24);
  std::memset(out, 0xEE, sizeof out);
  EXPECT_EQ(ImageGetPalette(rgb, out), 0);
  for (uint8_t b : out) ASSERT_EQ(b, 0);
  int32_t w = 0, h = 0;
  int bits = 0;
  EXPECT_TRUE(ImageGetInfo(img, &w, &h, &bits, nullptr));
  EXPECT_EQ(w * 100 + h * 10 + bits, 224);
  EXPECT_FALSE(ImageGetInfo(ImageBlock(), &w, &h, &bits, nullptr));
}

TEST(ImageCopyRect, ConvertsDepthAndClips) {
  ImageBlock src = ImageCreate(4, 4, nullptr, 24);
  for (int i = 0; i < 16; ++i) ImageSetPixel(src, i % 4, i / 4, MakeColour(i, 0, 0));
  ImageBlock dst = ImageCreate(3, 3, nullptr, 8);
  EXPECT_TRUE(ImageCopyRect(dst, 1, 1, src, 2, 2, 4, 4));
  EXPECT_EQ(ImageGetPixel(dst, 1, 1), 10u);  // index = low byte of the colour
  EXPECT_EQ(ImageGetPixel(dst, 2, 2), 15u);
  EXPECT_EQ(ImageGetPixel(dst, 0, 0), 0u);
}

TEST(ImageBlend, TruncatesEachQuotientSeparately) {
  ImageBlock a = ImageCreate(1, 1, nullptr, 24), b = ImageCreate(1, 1, nullptr, 24);
  ImageBlock alpha = ImageCreate(1, 1, nullptr, 8), out = ImageCreate(1, 1, nullptr, 24);
  ImageSetPixel(a, 0, 0, MakeColour(255, 100, 0));
  ImageSetPixel(b, 0, 0, MakeColour(0, 200, 255));
  ImageSetPixel(alpha, 0, 0, 128);
  ImageBlend(out, 0, 0, a, 0, 0, 1, 1, b, 0, 0, alpha, 0, 0);
  // 255*127/255 + 0 = 127; 100*127/255 + 200*128/255 = 49 + 100; 0 + 255*128/255 = 128
  EXPECT_EQ(ImageGetPixel(out, 0, 0), MakeColour(127, 149, 128));
}

TEST(ImageBlocks, DuplicateAndFromBytesCopyExactly) {
  ImageBlock img = ImageCreate(7, 5, nullptr, 24);
  ImageSetPixel(img, 6, 4, 0x123456);
  ImageBlock dup = DuplicateGlobalBlock(img);
  ASSERT_TRUE(dup);
  EXPECT_EQ(0, std::memcmp(dup.data(), img.data(), img.size()));
  EXPECT_EQ(ImageGetPixel(dup, 6, 4), 0x123456u);
  EXPECT_FALSE(DuplicateGlobalBlock(ImageBlock()));
  ImageBlock back = ImageBlock::FromBytes(img.data(), img.size());
  ASSERT_TRUE(back);
  EXPECT_EQ(ImageGetPixel(back, 6, 4), 0x123456u);
  EXPECT_FALSE(ImageBlock::FromBytes(img.data(), img.size() - 1));
  std::vector<uint8_t> bad(img.data(), img.data() + img.size());
  put_u16le(bad.data() + 14, 16);
  EXPECT_FALSE(ImageBlock::FromBytes(bad.data(), bad.size()));
}

TEST(ImageHelpers, BitsForColours) {
  for (auto [count, bits] : {std::pair{0, 1}, {2, 1}, {3, 2}, {16, 4}, {17, 5}, {129, 8}, {256, 8}, {1000, 8}})
    EXPECT_EQ(BitsForColours(count), bits) << count;
}

TEST(ImageHelpers, LuminanceSortIsStableBothWays) {
  // Two entries of equal luminance (30 and 30) must keep their order.
  uint8_t pal[kPaletteBytes] = {200, 200, 200, 100, 0, 0, 0, 51, 0, 10, 10, 10};
  SortPaletteByLuminance(pal, 4, true);
  const uint8_t asc[] = {10, 10, 10, 100, 0, 0, 0, 51, 0, 200, 200, 200};
  EXPECT_EQ(0, std::memcmp(pal, asc, sizeof asc));
  SortPaletteByLuminance(pal, 4, false);
  const uint8_t desc[] = {200, 200, 200, 100, 0, 0, 0, 51, 0, 10, 10, 10};
  EXPECT_EQ(0, std::memcmp(pal, desc, sizeof desc));
}

TEST(FrameList, AppendGetSetLastDelayAndFree) {
  FrameList list;
  EXPECT_FALSE(FrameListSetLastDelay(list, 3));
  EXPECT_EQ(FrameListGet(list, 0), nullptr);
  ASSERT_TRUE(FrameListAddImage(list, ImageCreate(2, 2, nullptr, 24), 7));
  FrameRecord rec;
  rec.image = ImageCreate(3, 3, nullptr, 24);
  rec.mask = ImageCreate(3, 3, nullptr, 1);
  ASSERT_TRUE(FrameListAppend(list, std::move(rec)));
  ASSERT_EQ(list.count(), 2);
  const FrameRecord* first = FrameListGet(list, 0);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->delay, 7);
  EXPECT_EQ(first->transparent, -1);
  EXPECT_FALSE(first->mask);
  EXPECT_TRUE(FrameListSetLastDelay(list, 12));
  EXPECT_EQ(FrameListGet(list, 1)->delay, 12);
  EXPECT_EQ(FrameListGet(list, 1)->image.width(), 3);
  EXPECT_EQ(FrameListGet(list, 2), nullptr);
  EXPECT_EQ(FrameListGet(list, -1), nullptr);
  FrameListFree(list);  // ASan reports any block that is not released
  EXPECT_TRUE(list.empty());
  FrameListFree(list);
}

}  // namespace
}  // namespace tess
