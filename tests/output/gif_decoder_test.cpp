// The test decoder must refuse malformed streams, or writer tests prove nothing.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

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

TEST(GifDecoder, RefusesMalformedStreamsWithAReason) {
  const std::vector<uint8_t> good = OneFrameGif({{4, 3}, {0, 3}, {1, 3}, {6, 3}, {5, 4}});
  auto edited = [&](auto edit) {
    std::vector<uint8_t> bad = good;
    edit(bad);
    return bad;
  };
  using Bytes = std::vector<uint8_t>;
  const std::pair<Bytes, const char*> cases[] = {
      {edited([](Bytes& b) { b[3] = '7', b[4] = '0'; }), "signature"},
      {edited([](Bytes& b) { b.push_back(0); }), "after the trailer"},
      {edited([](Bytes& b) { b.insert(b.end() - 1, {0x21, 0xF9, 4, 0, 0, 0, 0, 0}); }), "without a frame"},
      {edited([](Bytes& b) { b.insert(b.end() - 1, 0x99); }), "unknown block"},
      {OneFrameGif({{4, 3}, {0, 3}, {7, 3}, {5, 3}}), "beyond the table"},
      {OneFrameGif({{0, 3}, {1, 3}, {5, 3}}), "clear"},
      {OneFrameGif({{4, 3}, {0, 3}, {1, 3}}), "end-of-information"},
      {OneFrameGif({{4, 3}, {0, 3}, {5, 3}}), "1 pixels"},
      {OneFrameGif({{4, 3}, {0, 3}, {1, 3}, {6, 3}, {6, 4}, {5, 4}}), "more pixels"},
      {OneFrameGif({{4, 3}, {0, 3}, {5, 3}}, 3, 1), "outside"},
      {OneFrameGif({{4, 3}, {0, 3}, {5, 3}}, 1, 1, 0x11), "reserved"},
      {OneFrameGif({{4, 3}, {0, 3}, {5, 3}}, 1, 1, 0x41), "interlaced"},
  };
  for (const auto& [bytes, reason] : cases) EXPECT_NE(Error(bytes).find(reason), std::string::npos) << reason;
}

}  // namespace
}  // namespace tess
