// The LZW encoder against one oracle, the classic hashed encoder, whose
// output the test decoder turns back into the reference accessor's indices.
#include <gtest/gtest.h>

#include <algorithm>

#include "output/gif_lzw.h"
#include "tests/output/gif_test_images.h"
#include "tests/support/gif_decoder.h"
#include "tests/support/lzw_block_builder.h"

namespace tess {
namespace {

using testing::DecodeLzwBlock;
using testing::IndexImage;
using testing::Indices;
using testing::LzwStreamInfo;

struct Encoded {
  GifStatus status;
  std::vector<uint8_t> bytes;
};

Encoded Encode(const ImageBlock& image, int bit_count) {
  MemorySink sink;
  LzwEncoder lzw;
  GifStatus st = lzw.Encode(sink, image, bit_count);
  return {st, sink.bytes()};
}

// The classic hashed encoder, kept as an oracle: 5003 slots addressed by
// (index << 4) ^ prefix with a slot-dependent backward probe, codes packed
// by the tests' own block builder. The production encoder's table differs;
// its bytes must not.
std::vector<uint8_t> ClassicEncode(const ImageBlock& image, int code_size) {
  constexpr int kSlots = 5003;
  std::vector<int32_t> keys(kSlots, -1);
  std::vector<uint16_t> codes(kSlots);
  testing::LzwBlockBuilder block(code_size);
  const int clear = 1 << code_size, end = clear + 1;
  int width = code_size + 1, max_code = (1 << width) - 1, next = clear + 2;
  auto put = [&](int code) { block.Put(static_cast<uint32_t>(code), width); };
  auto emit = [&](int code) {
    put(code);
    if (next > max_code && ++width <= 12) max_code = width == 12 ? 4096 : (1 << width) - 1;
  };
  std::vector<uint8_t> px = Indices(image);
  int prefix = px[0];
  put(clear);
  for (size_t i = 1; i < px.size(); ++i) {
    const int c = px[i], key = (c << 12) | prefix;
    int slot = (c << 4) ^ prefix;
    const int step = slot == 0 ? 1 : kSlots - slot;
    while (keys[slot] >= 0 && keys[slot] != key)
      if ((slot -= step) < 0) slot += kSlots;
    if (keys[slot] == key) {
      prefix = codes[slot];
      continue;
    }
    emit(prefix);
    prefix = c;
    if (next < 4096) {
      keys[slot] = key;
      codes[slot] = static_cast<uint16_t>(next++);
    } else {
      put(clear);
      std::fill(keys.begin(), keys.end(), -1);
      width = code_size + 1, max_code = (1 << width) - 1, next = clear + 2;
    }
  }
  emit(prefix);
  put(end);
  return block.Finish();
}

// Decodes and checks the block is exactly what the encoder wrote.
std::vector<uint8_t> Decode(const std::vector<uint8_t>& bytes, const ImageBlock& image,
                            LzwStreamInfo* info) {
  std::vector<uint8_t> out;
  std::string error;
  size_t pixels = static_cast<size_t>(image.width()) * image.height();
  EXPECT_TRUE(DecodeLzwBlock(bytes.data(), bytes.size(), pixels, &out, info, &error)) << error;
  EXPECT_EQ(info->bytes_consumed, bytes.size());
  return out;
}

// Every code size (9 for 8-bit pictures too) at sizes that catch stride,
// padding and row-order faults: the classic encoder's bytes, which decode to
// the reference accessor's indices.
TEST(LzwEncoder, RoundTripsEveryBitCountAtOddSizes) {
  for (int bits = 1; bits <= 9; ++bits) {
    for (auto [w, h] : {std::pair{47, 33}, {1, 1}, {255, 3}, {1, 97}}) {
      SCOPED_TRACE(::testing::Message() << bits << " bits " << w << "x" << h);
      const int index_bits = std::min(bits, 8);
      ImageBlock image = IndexImage(w, h, testing::DepthForGifBits(index_bits), (1 << index_bits) - 1,
                                    static_cast<uint32_t>(w * h + bits), bits % 2 == 0);
      Encoded e = Encode(image, bits);
      ASSERT_EQ(e.status, GifStatus::kOk);
      EXPECT_EQ(e.bytes[0], LzwCodeSize(bits));
      EXPECT_EQ(e.bytes, ClassicEncode(image, LzwCodeSize(bits)));
      LzwStreamInfo info;
      EXPECT_EQ(Decode(e.bytes, image, &info), Indices(image));
    }
  }
  EXPECT_EQ(LzwCodeSize(1), 2);
}

// 512x512 noise fills the 4096-code table dozens of times: every reset must
// stay in step with the decoder, widths must stop at 12, and sub-blocks must be
// full except the last.
TEST(LzwEncoder, LargeNoiseResetsTheTableAndStaysDecodable) {
  ImageBlock image = IndexImage(512, 512, 8, 255, 7, true);
  Encoded e = Encode(image, 8);
  ASSERT_EQ(e.status, GifStatus::kOk);
  LzwStreamInfo info;
  EXPECT_EQ(Decode(e.bytes, image, &info), Indices(image));
  EXPECT_EQ(e.bytes, ClassicEncode(image, 8));
  EXPECT_GT(info.clear_codes, 20);
  EXPECT_EQ(info.max_code_width, 12);
  ASSERT_GT(info.block_sizes.size(), 1u);
  for (size_t i = 0; i + 1 < info.block_sizes.size(); ++i) ASSERT_EQ(info.block_sizes[i], 255);
}

// One encoder keeps its string table between frames and marks old strings
// stale by generation rather than clearing them: hundreds of table fills (more
// generations than the entries can tell apart), every bit count, rows wider
// than the encoder's chunk, flat pictures (index 0 after index 0 is the
// all-zero key) and noise that overflows the home buckets must all give the
// classic encoder's bytes.
TEST(LzwEncoder, OneEncoderMatchesTheClassicEncoderAcrossManyFrames) {
  LzwEncoder lzw;
  auto check = [&](const ImageBlock& image, int bits) {
    MemorySink sink;
    ASSERT_EQ(lzw.Encode(sink, image, bits), GifStatus::kOk);
    ASSERT_EQ(sink.bytes(), ClassicEncode(image, LzwCodeSize(bits)));
  };
  for (int round = 0; round < 70; ++round) {  // 280 frames
    SCOPED_TRACE(round);
    const int bits = 1 + round % 8;
    const int depth = testing::DepthForGifBits(bits), top = (1 << bits) - 1;
    const uint32_t seed = static_cast<uint32_t>(round);
    check(IndexImage(47, 33, depth, top, seed, true), bits);
    check(IndexImage(64, 64, 8, 255, seed, true), 8);  // one table fill or more
    check(IndexImage(1100, 3, depth, top, seed, false), bits);
    ImageBlock flat = ImageCreate(33, 47, nullptr, depth);  // all index 0
    check(flat, bits);
  }
  // The same small picture again and again: once the generations wrap, any
  // string left over from an earlier frame would be found too early.
  ImageBlock same = IndexImage(47, 33, 8, 255, 5, false);
  const std::vector<uint8_t> expected = ClassicEncode(same, 8);
  for (int i = 0; i < 600; ++i) {
    MemorySink sink;
    ASSERT_EQ(lzw.Encode(sink, same, 8), GifStatus::kOk);
    ASSERT_EQ(sink.bytes(), expected) << "repeat " << i;
  }
  // 512x512 noise fills the table about 70 times per frame.
  for (uint32_t seed = 1; seed <= 3; ++seed) check(IndexImage(512, 512, 8, 255, seed, true), 8);
}

TEST(LzwEncoder, RefusesBeforeWritingAnything) {
  ImageBlock eight = IndexImage(5, 5, 8, 255, 1, true);
  for (int bits : {0, 10, -3}) {
    EXPECT_EQ(LzwCodeSize(bits), 0);
    Encoded e = Encode(eight, bits);
    EXPECT_EQ(e.status, GifStatus::kBadArgument) << bits;
    EXPECT_TRUE(e.bytes.empty());
  }
  ImageBlock rgb = ImageCreate(4, 4, nullptr, 24);
  EXPECT_EQ(Encode(rgb, 8).status, GifStatus::kBadArgument);
  EXPECT_EQ(Encode(ImageBlock(), 8).status, GifStatus::kBadArgument);

  // Index 16 would collide with the clear code of a 4-bit stream.
  ImageBlock wide = IndexImage(9, 3, 8, 15, 1, true);
  ImageSetPixel(wide, 8, 2, 16);
  Encoded e = Encode(wide, 4);
  EXPECT_EQ(e.status, GifStatus::kIndexTooLarge);
  EXPECT_TRUE(e.bytes.empty());
  ImageSetPixel(wide, 8, 2, 15);
  EXPECT_EQ(Encode(wide, 4).status, GifStatus::kOk);
}

// An odd-width 4-bit row ends in a padding nibble that is not a pixel.
TEST(LzwIndicesFit, ChecksBothNibblesButNotPadding) {
  ImageBlock image = IndexImage(3, 2, 4, 3, 5, true);
  image.Row(1)[1] |= 0x0F;  // padding nibble after pixel 2
  EXPECT_TRUE(LzwIndicesFit(image, 2));
  ImageSetPixel(image, 1, 0, 4);  // low nibble of the first byte
  EXPECT_FALSE(LzwIndicesFit(image, 2));
  EXPECT_TRUE(LzwIndicesFit(image, 3));
  EXPECT_FALSE(LzwIndicesFit(ImageCreate(2, 2, nullptr, 32), 8));
}

TEST(LzwEncoder, ReportsAFailingSinkAndShortMemory) {
  ImageBlock image = IndexImage(200, 200, 8, 255, 9, true);
  for (size_t budget : {size_t{0}, size_t{1}, size_t{3000}}) {
    testing::FailingSink sink(budget);
    LzwEncoder lzw;
    EXPECT_EQ(lzw.Encode(sink, image, 8), GifStatus::kWriteFailed) << budget;
  }
  MemorySink sink;
  LzwEncoder lzw;
  AllocFailureScope fail(0);
  EXPECT_EQ(lzw.Encode(sink, image, 8), GifStatus::kNoMemory);
  EXPECT_TRUE(sink.bytes().empty());
}

}  // namespace
}  // namespace tess
