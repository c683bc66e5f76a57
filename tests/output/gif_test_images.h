// Palettised test pictures, a failing sink and a decode that must succeed,
// shared by the GIF and build tests. Pictures are filled through
// ImageSetPixel, the bounds-checked reference accessor, so the encoder's
// row-pointer reads are checked against it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "base/byte_sink.h"
#include "image/image.h"
#include "tests/support/gif_decoder.h"
#include "tests/support/test_support.h"

namespace tess::testing {

// The image depth that holds a GIF bit count's indices.
inline int DepthForGifBits(int bits) { return bits == 1 ? 1 : bits <= 4 ? 4 : 8; }

// Indices 0..max_index: a smooth diagonal ramp with a little noise, or pure
// noise. Deterministic for a seed.
inline ImageBlock IndexImage(int width, int height, int depth, int max_index, uint32_t seed,
                             bool noise) {
  ImageBlock image = ImageCreate(width, height, nullptr, depth);
  uint32_t s = seed * 2654435761u + 12345;
  auto next = [&s] {
    s ^= s << 13, s ^= s >> 17, s ^= s << 5;
    return s;
  };
  const uint32_t levels = static_cast<uint32_t>(max_index) + 1;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const uint32_t ramp = static_cast<uint32_t>(x + 2 * y) / 5 + (next() % 8 == 0);
      const uint32_t v = noise ? next() % levels : ramp % levels;
      ImageSetPixel(image, x, y, v);
    }
  return image;
}

// The reference indices, top-down, as bytes.
inline std::vector<uint8_t> Indices(const ImageBlock& image) {
  std::vector<uint8_t> out;
  for (Colour c : Pixels(image)) out.push_back(static_cast<uint8_t>(c));
  return out;
}

inline DecodedGif MustDecode(const std::vector<uint8_t>& bytes) {
  DecodedGif gif;
  std::string error;
  EXPECT_TRUE(DecodeGif(bytes, &gif, &error)) << error;
  return gif;
}

// Takes `budget` bytes, then fails for good, like a full disk.
class FailingSink final : public ByteSink {
 public:
  explicit FailingSink(size_t budget) : m_budget(budget) {}
  bool Write(const void* data, size_t size) override {
    if (m_failed || size > m_budget) {
      m_failed = true;
      return false;
    }
    m_budget -= size;
    m_memory.Write(data, size);
    return true;
  }
  const std::vector<uint8_t>& bytes() const { return m_memory.bytes(); }

 private:
  size_t m_budget;
  bool m_failed = false;
  MemorySink m_memory;
};

}  // namespace tess::testing
