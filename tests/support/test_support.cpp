// Shared test helpers.
#include "tests/support/test_support.h"

#include <cmath>
#include <cstdlib>

namespace tess::testing {
namespace {

uint32_t Next(uint32_t& s) {
  s ^= s << 13;
  s ^= s >> 17;
  s ^= s << 5;
  return s;
}

}  // namespace

ImageBlock NoiseImage(int width, int height, uint32_t seed, int levels) {
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  uint32_t s = seed * 2654435761u + 1;
  int step = 256 / levels;
  for (int y = 0; y < height; ++y) {
    uint8_t* row = image.Row(y);
    for (int x = 0; x < 3 * width; ++x) row[x] = static_cast<uint8_t>((Next(s) % levels) * step);
  }
  return image;
}

ImageBlock NaturalImage(int width, int height, uint32_t seed) {
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  uint32_t s = seed * 2654435761u + 7;
  double fx = 1.0 + (Next(s) % 5), fy = 1.0 + (Next(s) % 5);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double u = static_cast<double>(x) / width, v = static_cast<double>(y) / height;
      int r = static_cast<int>(127.5 + 127.5 * std::sin(6.283 * fx * u + seed));
      int g = static_cast<int>(255 * v);
      int b = static_cast<int>(127.5 + 127.5 * std::cos(6.283 * fy * (u + v)));
      if ((x / 16 + y / 16 + static_cast<int>(seed)) % 7 == 0) r = 255 - r;  // hard-edged patches
      int noise = static_cast<int>(Next(s) % 9) - 4;
      auto clamp = [](int c) { return c < 0 ? 0 : c > 255 ? 255 : c; };
      ImageSetPixel(image, x, y, MakeColour(clamp(r + noise), clamp(g + noise), clamp(b)));
    }
  }
  return image;
}

std::vector<Colour> Pixels(const ImageBlock& image) {
  std::vector<Colour> out;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) out.push_back(ImageGetPixel(image, x, y));
  return out;
}

std::string SourceDir() {
  const char* dir = std::getenv("TESS_SOURCE_DIR");
  return dir ? dir : ".";
}

}  // namespace tess::testing
