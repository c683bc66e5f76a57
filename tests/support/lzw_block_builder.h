// A GIF image-data block assembled by hand, for the tests' reference
// encoders: codes packed least significant bit first, cut into sub-blocks of
// at most 255 bytes after the minimum code size byte, then the terminator.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace tess::testing {

class LzwBlockBuilder {
 public:
  explicit LzwBlockBuilder(int code_size) : m_code_size(code_size) {}

  void Put(uint32_t code, int width) {
    m_bits |= code << m_pending;
    for (m_pending += width; m_pending >= 8; m_pending -= 8, m_bits >>= 8)
      m_bytes.push_back(static_cast<uint8_t>(m_bits));
  }

  // The block, the last partial byte zero-padded.
  std::vector<uint8_t> Finish() {
    if (m_pending > 0) m_bytes.push_back(static_cast<uint8_t>(m_bits));
    std::vector<uint8_t> out = {static_cast<uint8_t>(m_code_size)};
    for (size_t i = 0; i < m_bytes.size(); i += 255) {
      const size_t n = std::min<size_t>(255, m_bytes.size() - i);
      out.push_back(static_cast<uint8_t>(n));
      out.insert(out.end(), m_bytes.begin() + static_cast<ptrdiff_t>(i),
                 m_bytes.begin() + static_cast<ptrdiff_t>(i + n));
    }
    out.push_back(0);
    return out;
  }

 private:
  int m_code_size;
  std::vector<uint8_t> m_bytes;
  uint32_t m_bits = 0;
  int m_pending = 0;
};

}  // namespace tess::testing
