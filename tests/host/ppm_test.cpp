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
  EXPECT_NE(ErrorOf(Bytes("P3\n1 1\n255\n", {'1', ' ', '2', ' ', '3'})).find("plain (ASCII)"), std::string::npos);
  EXPECT_NE(ErrorOf(Bytes("P5\n1 1\n255\n", {7})).find("PGM"), std::string::npos);
  EXPECT_NE(ErrorOf(Bytes("GIF89a", {})).find("not a PPM file"), std::string::npos);
  EXPECT_NE(ErrorOf({}).find("not a PPM file"), std::string::npos);
  EXPECT_NE(ErrorOf(Bytes("P6\n2 2\n65535\n", Ramp(4, 2))).find("maxval 65535"), std::string::npos);
  EXPECT_NE(ErrorOf(Bytes("P6\n0 2\n255\n", {})).find("width and height"), std::string::npos);
  EXPECT_NE(ErrorOf(Bytes("P6\n70000 1\n255\n", {})).find("width and height"), std::string::npos);
  EXPECT_NE(ErrorOf(Bytes("P6\n2 2\n", {})).find("missing maxval"), std::string::npos);
  std::string truncated = ErrorOf(Bytes("P6\n2 2\n255\n", std::vector<uint8_t>(11, 0)));
  EXPECT_NE(truncated.find("truncated pixel data (11 of 12 bytes)"), std::string::npos) << truncated;
  // A bad second image is named as such.
  std::vector<uint8_t> two = Bytes("P6 1 1 255\n", {1, 2, 3});
  two.push_back('x');
  EXPECT_EQ(ErrorOf(two).rfind("image 2: ", 0), 0u);
}

}  // namespace
}  // namespace tess::cli
