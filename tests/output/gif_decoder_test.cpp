// The test decoder must refuse malformed streams, or writer tests prove nothing.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "output/gif_writer.h"
#include "tests/output/gif_test_images.h"
#include "tests/support/gif_decoder.h"

namespace tess {
namespace {

using testing::DecodedGif;
using testing::DecodeGif;

// Codes of the given widths packed least-significant bit first.
std::vector<uint8_t> PackCodes(const std::vector<std::pair<int, int>>& codes) {
  std::vector<uint8_t> out;
  uint32_t acc = 0;
  int n = 0;
  for (auto [code, width] : codes) {
    acc |= static_cast<uint32_t>(code) << n;
    for (n += width; n >= 8; n -= 8, acc >>= 8) out.push_back(static_cast<uint8_t>(acc));
  }
  if (n > 0) out.push_back(static_cast<uint8_t>(acc));
  return out;
}

// A 2x2 screen without tables holding one frame of the given size and flags
// whose image data is `codes` at code size 2.
std::vector<uint8_t> OneFrameGif(const std::vector<std::pair<int, int>>& codes, int w = 2,
                                 int h = 2, uint8_t flags = 0x01) {
  std::vector<uint8_t> g = {'G', 'I', 'F', '8', '9', 'a', 2, 0, 2, 0, 0, 0, 0};
  const uint8_t descriptor[10] = {0x2C, 0, 0, 0, 0, static_cast<uint8_t>(w), 0,
                                  static_cast<uint8_t>(h), 0, flags};
  g.insert(g.end(), descriptor, descriptor + 10);
  const std::vector<uint8_t> data = PackCodes(codes);
  g.push_back(2);
  g.push_back(static_cast<uint8_t>(data.size()));
  g.insert(g.end(), data.begin(), data.end());
  g.push_back(0);
  g.push_back(0x3B);
  return g;
}

std::string Error(const std::vector<uint8_t>& bytes) {
  DecodedGif gif;
  std::string error;
  EXPECT_FALSE(DecodeGif(bytes, &gif, &error));
  return error;
}

std::vector<uint8_t> ValidFile() {
  std::vector<uint8_t> table(3 * 16, 9);
  MemorySink sink;
  GifWriter w(sink);
  GifScreen screen;
  screen.width = 20, screen.height = 9, screen.global_table = table.data(), screen.table_bits = 4;
  w.WriteHeader(screen);
  w.WriteLoopExtension(0);
  w.WriteComment("c");
  w.WriteGraphicControl({0x04, 3, 0});
  w.WriteFrame({0, 0, 20, 9, 4, nullptr}, testing::IndexImage(20, 9, 4, 15, 1, true));
  w.WriteFrame({2, 2, 5, 5, 4, table.data()}, testing::IndexImage(5, 5, 4, 15, 2, false));
  EXPECT_EQ(w.WriteTrailer(), GifStatus::kOk);
  return sink.bytes();
}

TEST(GifDecoder, HandWrittenStreamDecodes) {
  // clear, 0, 1, 6 (= "0 1"), end: four pixels 0 1 0 1; the width grows to 4
  // bits once code 7 is taken.
  DecodedGif gif;
  std::string error;
  ASSERT_TRUE(DecodeGif(OneFrameGif({{4, 3}, {0, 3}, {1, 3}, {6, 3}, {5, 4}}), &gif, &error))
      << error;
  EXPECT_EQ(gif.frames[0].indices, (std::vector<uint8_t>{0, 1, 0, 1}));
  EXPECT_EQ(gif.frames[0].lzw.max_code_width, 4);
}

TEST(GifDecoder, EveryTruncationIsRefused) {
  const std::vector<uint8_t> bytes = ValidFile();
  DecodedGif gif;
  std::string error;
  ASSERT_TRUE(DecodeGif(bytes, &gif, &error)) << error;
  for (size_t n = 0; n < bytes.size(); ++n) {
    ASSERT_FALSE(DecodeGif(bytes.data(), n, &gif, &error)) << n;
    ASSERT_FALSE(error.empty());
  }
}

// Corrupt bytes must give a result or an error, never a crash (the sanitizers
// watch this loop).
TEST(GifDecoder, SurvivesEverySingleByteCorruption) {
  const std::vector<uint8_t> bytes = ValidFile();
  for (size_t i = 0; i < bytes.size(); ++i) {
    for (uint8_t v : {uint8_t{0x00}, uint8_t{0xFF}, static_cast<uint8_t>(bytes[i] ^ 0x55)}) {
      std::vector<uint8_t> bad = bytes;
      bad[i] = v;
      DecodedGif gif;
      std::string error;
      DecodeGif(bad, &gif, &error);
    }
  }
}

TEST(GifDecoder, RefusesMalformedStreamsWithAReason) {
  std::vector<uint8_t> good = OneFrameGif({{4, 3}, {0, 3}, {1, 3}, {6, 3}, {5, 4}});
  auto bad = good;
  bad[3] = '7';
  bad[4] = '0';
  EXPECT_NE(Error(bad).find("signature"), std::string::npos);

  bad = good;
  bad.push_back(0);
  EXPECT_NE(Error(bad).find("after the trailer"), std::string::npos);

  bad = good;
  bad.insert(bad.end() - 1, {0x21, 0xF9, 4, 0, 0, 0, 0, 0});
  EXPECT_NE(Error(bad).find("without a frame"), std::string::npos);

  bad = good;
  bad.insert(bad.end() - 1, 0x99);
  EXPECT_NE(Error(bad).find("unknown block"), std::string::npos);

  EXPECT_NE(Error(OneFrameGif({{4, 3}, {0, 3}, {7, 3}, {5, 3}})).find("beyond the table"),
            std::string::npos);
  EXPECT_NE(Error(OneFrameGif({{0, 3}, {1, 3}, {5, 3}})).find("clear"), std::string::npos);
  EXPECT_NE(Error(OneFrameGif({{4, 3}, {0, 3}, {1, 3}})).find("end-of-information"),
            std::string::npos);
  EXPECT_NE(Error(OneFrameGif({{4, 3}, {0, 3}, {5, 3}})).find("1 pixels"), std::string::npos);
  EXPECT_NE(Error(OneFrameGif({{4, 3}, {0, 3}, {1, 3}, {6, 3}, {6, 4}, {5, 4}}))
                .find("more pixels"),
            std::string::npos);
  EXPECT_NE(Error(OneFrameGif({{4, 3}, {0, 3}, {5, 3}}, 3, 1)).find("outside"), std::string::npos);
  EXPECT_NE(Error(OneFrameGif({{4, 3}, {0, 3}, {5, 3}}, 1, 1, 0x11)).find("reserved"),
            std::string::npos);
}

// Rows arrive in four passes; the decoder puts them back in picture order.
TEST(GifDecoder, DeinterlacesFrames) {
  const int w = 3, h = 11;
  ImageBlock picture = testing::IndexImage(w, h, 8, 255, 5, true);
  ImageBlock stored = ImageCreate(w, h, nullptr, 8);
  int row = 0;
  for (auto [start, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
    for (int y = start; y < h; y += step, ++row)
      for (int x = 0; x < w; ++x) ImageSetPixel(stored, x, row, ImageGetPixel(picture, x, y));

  MemorySink sink;
  GifWriter writer(sink);
  GifScreen screen;
  screen.width = w, screen.height = h;
  ASSERT_EQ(writer.WriteHeader(screen), GifStatus::kOk);
  ASSERT_EQ(writer.WriteFrame({0, 0, w, h, 8, nullptr}, stored), GifStatus::kOk);
  ASSERT_EQ(writer.WriteTrailer(), GifStatus::kOk);
  std::vector<uint8_t> bytes = sink.bytes();
  bytes[13 + 9] |= 0x40;  // the descriptor's interlace flag

  DecodedGif gif;
  std::string error;
  ASSERT_TRUE(DecodeGif(bytes, &gif, &error)) << error;
  EXPECT_TRUE(gif.frames[0].interlaced);
  EXPECT_EQ(gif.frames[0].indices, testing::Indices(picture));
}

}  // namespace
}  // namespace tess
