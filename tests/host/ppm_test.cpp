// Binary PPM reading: header forms, channel order, several images per file,
// and a clear refusal for every kind of bad input.
#include "host/cli/ppm.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tess::cli {
namespace {

std::vector<uint8_t> Bytes(const std::string& header, std::vector<uint8_t> pixels) {
  std::vector<uint8_t> out(header.begin(), header.end());
  out.insert(out.end(), pixels.begin(), pixels.end());
  return out;
}

// A w x h image whose pixel (x, y) is (x, y, x + y) as red, green, blue.
std::vector<uint8_t> Ramp(int w, int h) {
  std::vector<uint8_t> p;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      p.push_back(static_cast<uint8_t>(x));
      p.push_back(static_cast<uint8_t>(y));
      p.push_back(static_cast<uint8_t>(x + y));
    }
  return p;
}

std::string ErrorOf(const std::vector<uint8_t>& bytes) {
  std::vector<ImageBlock> images;
  std::string error;
  EXPECT_FALSE(ParsePpmImages(bytes, &images, &error));
  return error;
}

TEST(Ppm, PixelsArriveTopDownAsColourValues) {
  // Odd width, so the block's rows carry padding the reader must skip.
  std::vector<uint8_t> bytes = Bytes("P6\n# made by a test\n5 3\n255\n", Ramp(5, 3));
  std::vector<ImageBlock> images;
  std::string error;
  ASSERT_TRUE(ParsePpmImages(bytes, &images, &error)) << error;
  ASSERT_EQ(images.size(), 1u);
  const ImageBlock& image = images[0];
  EXPECT_EQ(image.width(), 5);
  EXPECT_EQ(image.height(), 3);
  EXPECT_EQ(image.bits(), 24);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 5; ++x) EXPECT_EQ(ImageGetPixel(image, x, y), MakeColour(x, y, x + y));
}

// Pixels are exchanged eight at a time with the rest one by one: every width
// up to two whole groups and a remainder, with bytes that all differ, checked
// against the plain definition, so a byte landing in the wrong place shows.
TEST(Ppm, EveryWidthKeepsEachPixelsChannels) {
  for (int w = 1; w <= 19; ++w) {
    std::vector<uint8_t> pixels;
    for (int i = 0; i < w * 2 * 3; ++i) pixels.push_back(static_cast<uint8_t>(i * 37 + 11));
    std::vector<ImageBlock> images;
    std::string error;
    ASSERT_TRUE(ParsePpmImages(Bytes("P6 " + std::to_string(w) + " 2 255\n", pixels), &images, &error)) << error;
    for (int y = 0; y < 2; ++y)
      for (int x = 0; x < w; ++x) {
        const uint8_t* p = pixels.data() + 3 * (y * w + x);
        EXPECT_EQ(ImageGetPixel(images[0], x, y), MakeColour(p[0], p[1], p[2])) << w << ": " << x << ", " << y;
      }
  }
}

TEST(Ppm, SeveralImagesInOneStreamWithCommentsAndTrailingSpace) {
  std::vector<uint8_t> bytes = Bytes("P6 2 2 255\n", Ramp(2, 2));
  std::vector<uint8_t> second = Bytes("P6\t2#comment\n 2\r\n255 ", Ramp(2, 2));
  bytes.insert(bytes.end(), second.begin(), second.end());
  bytes.push_back('\n');
  std::vector<ImageBlock> images;
  std::string error;
  ASSERT_TRUE(ParsePpmImages(bytes, &images, &error)) << error;
  EXPECT_EQ(images.size(), 2u);
}

TEST(Ppm, RefusalsSayWhatIsWrong) {
  std::vector<uint8_t> second_bad = Bytes("P6 1 1 255\n", {1, 2, 3});
  second_bad.push_back('x');
  const std::pair<std::vector<uint8_t>, const char*> cases[] = {
      {Bytes("P3\n1 1\n255\n", {'1', ' ', '2', ' ', '3'}), "plain (ASCII)"},
      {Bytes("P5\n1 1\n255\n", {7}), "PGM"},
      {Bytes("GIF89a", {}), "not a PPM file"},
      {{}, "not a PPM file"},
      {Bytes("P6\n2 2\n65535\n", Ramp(4, 2)), "maxval 65535"},
      {Bytes("P6\n0 2\n255\n", {}), "width and height"},
      {Bytes("P6\n70000 1\n255\n", {}), "width and height"},
      {Bytes("P6\n2 2\n", {}), "missing maxval"},
      {Bytes("P6\n2 2\n255\n", std::vector<uint8_t>(11, 0)), "truncated pixel data (11 of 12 bytes)"},
      {second_bad, "image 2: "},  // a bad second image is named as such
  };
  for (const auto& [bytes, fragment] : cases) EXPECT_NE(ErrorOf(bytes).find(fragment), std::string::npos) << fragment;
}

}  // namespace
}  // namespace tess::cli
