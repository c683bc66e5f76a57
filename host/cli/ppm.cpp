// Binary PPM parsing. The header is ASCII with '#' comments allowed between
// fields; exactly one whitespace byte separates maxval from the pixels, which
// follow as red, green, blue bytes, rows top-down.
#include "host/cli/ppm.h"

#include <bit>
#include <cstring>
#include <initializer_list>

namespace tess::cli {
namespace {

bool IsSpace(uint8_t c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }
bool IsDigit(uint8_t c) { return c >= '0' && c <= '9'; }

class HeaderReader {
 public:
  HeaderReader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

  // Whitespace and comments before a field.
  void SkipSpace() {
    while (m_pos < m_size) {
      if (m_data[m_pos] == '#') {
        while (m_pos < m_size && m_data[m_pos] != '\n' && m_data[m_pos] != '\r') ++m_pos;
      } else if (IsSpace(m_data[m_pos])) {
        ++m_pos;
      } else {
        return;
      }
    }
  }

  // A decimal field; false when there is none or it exceeds `limit`.
  bool Number(long limit, long* value) {
    SkipSpace();
    if (m_pos >= m_size || !IsDigit(m_data[m_pos])) return false;
    long v = 0;
    while (m_pos < m_size && IsDigit(m_data[m_pos])) {
      v = v * 10 + (m_data[m_pos++] - '0');
      if (v > limit) return false;
    }
    *value = v;
    return true;
  }

  bool AtEnd() const { return m_pos >= m_size; }
  uint8_t Peek() const { return m_data[m_pos]; }
  void Advance() { ++m_pos; }
  size_t pos() const { return m_pos; }

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_pos = 0;
};

std::string MagicError(const uint8_t* data, size_t size) {
  if (size >= 2 && data[0] == 'P') {
    switch (data[1]) {
      case '3': return "plain (ASCII) PPM is not supported; convert it to binary PPM (P6)";
      case '1': case '4': return "a PBM (bitmap) file; expected binary PPM (P6)";
      case '2': case '5': return "a PGM (grey map) file; expected binary PPM (P6)";
      case '7': return "a PAM file; expected binary PPM (P6)";
      default: break;
    }
  }
  return "not a PPM file (expected the magic P6)";
}

uint64_t Load64(const uint8_t* p) {
  uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}

void Store64(uint8_t* p, uint64_t v) { std::memcpy(p, &v, 8); }

// Bytes 0 to 7 of a word as loaded on a little-endian machine.
constexpr uint64_t Bytes(std::initializer_list<int> at) {
  uint64_t m = 0;
  for (int i : at) m |= uint64_t{0xFF} << (8 * i);
  return m;
}

// Red, green, blue per pixel in, the block's blue, green, red out. Eight
// pixels are three words, in which the red and blue bytes move two places
// with a shift and a mask each: byte by byte the exchange cost more than the
// rest of reading a frame.
void CopyRows(const uint8_t* pixels, ImageBlock& image) {
  const int32_t width = image.width();
  const size_t row_bytes = 3 * static_cast<size_t>(width);
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* src = pixels + static_cast<size_t>(y) * row_bytes;
    uint8_t* dst = image.Row(y);
    int32_t x = 0;
    if constexpr (std::endian::native == std::endian::little) {
      for (; x + 8 <= width; x += 8, src += 24, dst += 24) {
        // In:  r0 g0 b0 r1 g1 b1 r2 g2 | b2 r3 g3 b3 r4 g4 b4 r5 | g5 b5 r6 g6 b6 r7 g7 b7
        // Out: b0 g0 r0 b1 g1 r1 b2 g2 | r2 b3 g3 r3 b4 g4 r4 b5 | g5 r5 b6 g6 r6 b7 g7 r7
        const uint64_t w0 = Load64(src), w1 = Load64(src + 8), w2 = Load64(src + 16);
        Store64(dst, (w0 & Bytes({1, 4, 7})) | (w0 >> 16 & Bytes({0, 3})) | (w0 << 16 & Bytes({2, 5})) |
                         (w1 << 48 & Bytes({6})));
        Store64(dst + 8, (w0 >> 48 & Bytes({0})) | (w1 >> 16 & Bytes({1, 4})) | (w1 & Bytes({2, 5})) |
                             (w1 << 16 & Bytes({3, 6})) | (w2 << 48 & Bytes({7})));
        Store64(dst + 16, (w2 & Bytes({0, 3, 6})) | (w1 >> 48 & Bytes({1})) | (w2 >> 16 & Bytes({2, 5})) |
                              (w2 << 16 & Bytes({4, 7})));
      }
    }
    for (; x < width; ++x, src += 3, dst += 3) {
      dst[0] = src[2];
      dst[1] = src[1];
      dst[2] = src[0];
    }
  }
}

}  // namespace

bool ParsePpm(const uint8_t* data, size_t size, ImageBlock* image, size_t* consumed,
              std::string* error) {
  if (size < 2 || data[0] != 'P' || data[1] != '6') {
    *error = MagicError(data, size);
    return false;
  }
  HeaderReader header(data + 2, size - 2);
  long width = 0, height = 0, maxval = 0;
  if (!header.Number(kPpmMaxSide, &width) || !header.Number(kPpmMaxSide, &height) || width == 0 ||
      height == 0) {
    *error = "bad PPM header: width and height must be 1 to 65535";
    return false;
  }
  if (!header.Number(65535, &maxval)) {
    *error = "bad PPM header: missing maxval";
    return false;
  }
  if (maxval != 255) {
    *error = "maxval " + std::to_string(maxval) + " is not supported (only 255, 8 bits per channel)";
    return false;
  }
  if (header.AtEnd() || !IsSpace(header.Peek())) {
    *error = "bad PPM header: no whitespace after maxval";
    return false;
  }
  header.Advance();
  const size_t start = 2 + header.pos();
  const size_t need = static_cast<size_t>(width) * static_cast<size_t>(height) * 3;
  if (size - start < need) {
    *error = "truncated pixel data (" + std::to_string(size - start) + " of " +
             std::to_string(need) + " bytes)";
    return false;
  }
  ImageBlock block = ImageCreate(static_cast<int32_t>(width), static_cast<int32_t>(height), nullptr, 24);
  if (!block) {
    *error = "Memory error";
    return false;
  }
  CopyRows(data + start, block);
  *image = std::move(block);
  *consumed = start + need;
  return true;
}

bool ParsePpmImages(const std::vector<uint8_t>& bytes, std::vector<ImageBlock>* images,
                    std::string* error) {
  size_t pos = 0;
  int number = 1;
  do {
    ImageBlock image;
    size_t used = 0;
    if (!ParsePpm(bytes.data() + pos, bytes.size() - pos, &image, &used, error)) {
      if (number > 1) *error = "image " + std::to_string(number) + ": " + *error;
      return false;
    }
    images->push_back(std::move(image));
    pos += used;
    ++number;
    while (pos < bytes.size() && IsSpace(bytes[pos])) ++pos;
  } while (pos < bytes.size());
  return true;
}

}  // namespace tess::cli
