// Strict GIF parsing and LZW decoding for tests. Every read is bounds-checked
// through Reader, which records the first failure with its offset; nothing
// here trusts a length or a code it has not checked.
#include "tests/support/gif_decoder.h"

#include <cstring>
#include <memory>

namespace tess::testing {
namespace {

constexpr int kMaxCodes = 4096;  // 12-bit codes

uint16_t U16At(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

  size_t pos() const { return m_pos; }
  bool AtEnd() const { return m_pos == m_size; }
  const std::string& error() const { return m_error; }

  bool Fail(const std::string& message) {
    if (m_error.empty()) m_error = "offset " + std::to_string(m_pos) + ": " + message;
    return false;
  }
  bool Bytes(size_t n, const uint8_t** out, const char* what) {
    if (m_size - m_pos < n) return Fail(std::string("truncated ") + what);
    *out = m_data + m_pos;
    m_pos += n;
    return true;
  }
  bool Byte(uint8_t* out, const char* what) {
    const uint8_t* p = nullptr;
    if (!Bytes(1, &p, what)) return false;
    *out = *p;
    return true;
  }
  // A chain of length-prefixed sub-blocks up to its zero-length terminator.
  bool SubBlocks(std::vector<uint8_t>* data, std::vector<int>* sizes, const char* what) {
    for (;;) {
      uint8_t n;
      if (!Byte(&n, what)) return false;
      if (n == 0) return true;
      const uint8_t* p = nullptr;
      if (!Bytes(n, &p, what)) return false;
      if (data) data->insert(data->end(), p, p + n);
      if (sizes) sizes->push_back(n);
    }
  }

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_pos = 0;
  std::string m_error;
};

// Codes least-significant bit first over the joined sub-block data.
class BitReader {
 public:
  explicit BitReader(const std::vector<uint8_t>& bytes) : m_bytes(bytes) {}
  bool Read(int width, int* code) {
    if (m_bit + static_cast<size_t>(width) > 8 * m_bytes.size()) return false;
    int v = 0;
    for (int i = 0; i < width; ++i, ++m_bit) v |= ((m_bytes[m_bit >> 3] >> (m_bit & 7)) & 1) << i;
    *code = v;
    return true;
  }
  size_t bytes_used() const { return (m_bit + 7) / 8; }

 private:
  const std::vector<uint8_t>& m_bytes;
  size_t m_bit = 0;
};

// The string table: each code is a prefix code plus one last index.
struct LzwTable {
  int prefix[kMaxCodes];
  uint8_t suffix[kMaxCodes];
  uint8_t first[kMaxCodes];
  int length[kMaxCodes];
};

bool DecodeLzw(Reader& r, size_t pixel_count, int max_code_size, std::vector<uint8_t>* out,
               LzwStreamInfo* info) {
  uint8_t code_size;
  if (!r.Byte(&code_size, "LZW minimum code size")) return false;
  if (code_size < 2 || code_size > max_code_size)
    return r.Fail("LZW minimum code size " + std::to_string(code_size) + " out of range");
  info->min_code_size = code_size;
  std::vector<uint8_t> data;
  if (!r.SubBlocks(&data, &info->block_sizes, "image data")) return false;

  const int clear = 1 << code_size, end = clear + 1;
  auto table = std::make_unique<LzwTable>();
  for (int c = 0; c < clear; ++c) {
    table->prefix[c] = -1;
    table->suffix[c] = table->first[c] = static_cast<uint8_t>(c);
    table->length[c] = 1;
  }
  int width = code_size + 1, next = clear + 2, prev = -1;
  BitReader bits(data);
  out->clear();
  out->reserve(pixel_count);
  bool started = false;
  for (;;) {
    int code;
    if (!bits.Read(width, &code)) return r.Fail("LZW data ends without an end-of-information code");
    if (info->max_code_width < width) info->max_code_width = width;
    if (!started && code != clear) return r.Fail("LZW data does not start with a clear code");
    started = true;
    if (code == clear) {
      ++info->clear_codes;
      width = code_size + 1, next = clear + 2, prev = -1;
      continue;
    }
    if (code == end) break;
    if (code < clear && code > 255) return r.Fail("index " + std::to_string(code) + " above 255");
    if (prev < 0) {
      if (code > clear) return r.Fail("first code after a clear is not a literal");
    } else if (code > next || (code == next && next >= kMaxCodes)) {
      return r.Fail("LZW code " + std::to_string(code) + " beyond the table (" +
                    std::to_string(next) + ")");
    } else if (next < kMaxCodes) {
      // code == next is the string being defined: prev followed by its own first index.
      table->prefix[next] = prev;
      table->first[next] = table->first[prev];
      table->suffix[next] = code == next ? table->first[prev] : table->first[code];
      table->length[next] = table->length[prev] + 1;
      if (++next == (1 << width) && width < 12) ++width;
    }
    const size_t n = static_cast<size_t>(table->length[code]);
    if (out->size() + n > pixel_count) return r.Fail("LZW data holds more pixels than the frame");
    out->resize(out->size() + n);
    uint8_t* p = out->data() + out->size();
    for (int c = code; c >= 0; c = table->prefix[c]) *--p = table->suffix[c];
    prev = code;
  }
  if (bits.bytes_used() != data.size()) return r.Fail("data after the end-of-information code");
  if (out->size() != pixel_count)
    return r.Fail("LZW data holds " + std::to_string(out->size()) + " pixels, the frame " +
                  std::to_string(pixel_count));
  return true;
}

bool ReadTable(Reader& r, uint8_t flags, std::vector<uint8_t>* table, const char* what) {
  if (!(flags & 0x80)) return true;
  const size_t bytes = 3 * (size_t{1} << ((flags & 7) + 1));
  const uint8_t* p;
  if (!r.Bytes(bytes, &p, what)) return false;
  table->assign(p, p + bytes);
  return true;
}

bool ReadHeader(Reader& r, DecodedGif* gif) {
  const uint8_t* p;
  if (!r.Bytes(6, &p, "signature")) return false;
  if (std::memcmp(p, "GIF87a", 6) != 0 && std::memcmp(p, "GIF89a", 6) != 0)
    return r.Fail("not a GIF signature");
  gif->version.assign(reinterpret_cast<const char*>(p) + 3, 3);
  if (!r.Bytes(7, &p, "logical screen descriptor")) return false;
  gif->width = U16At(p);
  gif->height = U16At(p + 2);
  gif->screen_flags = p[4], gif->background_index = p[5], gif->pixel_aspect = p[6];
  return ReadTable(r, gif->screen_flags, &gif->global_table, "global colour table");
}

bool ReadGraphicControl(Reader& r, std::optional<GifControlBlock>* pending) {
  if (pending->has_value()) return r.Fail("two graphic control blocks for one frame");
  const uint8_t* p;
  if (!r.Bytes(6, &p, "graphic control block")) return false;
  if (p[0] != 4) return r.Fail("graphic control block size " + std::to_string(p[0]));
  if (p[5] != 0) return r.Fail("graphic control block without its terminator");
  *pending = GifControlBlock{p[1], U16At(p + 2), p[4]};
  return true;
}

bool ReadApplication(Reader& r, DecodedGif* gif) {
  uint8_t size;
  const uint8_t* id;
  if (!r.Byte(&size, "application block")) return false;
  if (size != 11) return r.Fail("application block size " + std::to_string(size));
  if (!r.Bytes(11, &id, "application identifier")) return false;
  std::vector<uint8_t> data;
  std::vector<int> sizes;
  if (!r.SubBlocks(&data, &sizes, "application data")) return false;
  if (std::memcmp(id, "NETSCAPE2.0", 11) != 0) return true;
  if (sizes.size() != 1 || sizes[0] != 3 || data[0] != 1) return r.Fail("malformed loop block");
  gif->loop_count = data[1] | data[2] << 8;
  return true;
}

bool ReadExtension(Reader& r, DecodedGif* gif, std::optional<GifControlBlock>* pending) {
  uint8_t label;
  if (!r.Byte(&label, "extension label")) return false;
  switch (label) {
    case 0xF9:
      return ReadGraphicControl(r, pending);
    case 0xFE: {
      std::vector<uint8_t> text;
      if (!r.SubBlocks(&text, nullptr, "comment")) return false;
      gif->comments.emplace_back(text.begin(), text.end());
      return true;
    }
    case 0xFF:
      return ReadApplication(r, gif);
    case 0x01:  // plain text: a graphic block of its own, which uses up the control block
      pending->reset();
      return r.SubBlocks(nullptr, nullptr, "plain text block");
    default:
      return r.SubBlocks(nullptr, nullptr, "extension");
  }
}

bool ReadFrame(Reader& r, DecodedGif* gif, std::optional<GifControlBlock>* pending) {
  GifDecodedFrame f;
  const uint8_t* p;
  if (!r.Bytes(9, &p, "image descriptor")) return false;
  const int left = U16At(p), top = U16At(p + 2), w = U16At(p + 4), h = U16At(p + 6);
  f.left = left, f.top = top, f.width = w, f.height = h, f.descriptor_flags = p[8];
  if (w == 0 || h == 0) return r.Fail("empty frame");
  if (left + w > gif->width || top + h > gif->height)
    return r.Fail("frame outside the logical screen");
  if (f.descriptor_flags & 0x18) return r.Fail("reserved image descriptor bits set");
  if (f.descriptor_flags & 0x40) return r.Fail("interlaced frame: no writer here makes one");
  if (!ReadTable(r, f.descriptor_flags, &f.local_table, "local colour table")) return false;
  const size_t pixels = static_cast<size_t>(w) * h;
  if (!DecodeLzw(r, pixels, 8, &f.indices, &f.lzw)) return false;
  f.control = *pending;
  pending->reset();
  gif->frames.push_back(std::move(f));
  return true;
}

bool Parse(Reader& r, DecodedGif* gif) {
  if (!ReadHeader(r, gif)) return false;
  std::optional<GifControlBlock> pending;
  for (;;) {
    uint8_t introducer;
    if (!r.Byte(&introducer, "stream: missing trailer")) return false;
    bool ok;
    switch (introducer) {
      case 0x21:
        ok = ReadExtension(r, gif, &pending);
        break;
      case 0x2C:
        ok = ReadFrame(r, gif, &pending);
        break;
      case 0x3B:
        if (pending) return r.Fail("graphic control block without a frame");
        if (!r.AtEnd()) return r.Fail("data after the trailer");
        return true;
      default:
        return r.Fail("unknown block introducer " + std::to_string(introducer));
    }
    if (!ok) return false;
  }
}

}  // namespace

bool DecodeGif(const uint8_t* data, size_t size, DecodedGif* out, std::string* error) {
  Reader r(data, size);
  *out = DecodedGif{};
  if (Parse(r, out)) return true;
  if (error) *error = r.error();
  return false;
}

bool DecodeGif(const std::vector<uint8_t>& bytes, DecodedGif* out, std::string* error) {
  return DecodeGif(bytes.data(), bytes.size(), out, error);
}

bool DecodeLzwBlock(const uint8_t* data, size_t size, size_t pixel_count,
                    std::vector<uint8_t>* indices, LzwStreamInfo* info, std::string* error) {
  Reader r(data, size);
  *info = LzwStreamInfo{};
  if (DecodeLzw(r, pixel_count, 11, indices, info)) {
    info->bytes_consumed = r.pos();
    return true;
  }
  if (error) *error = r.error();
  return false;
}

std::vector<std::vector<int32_t>> ComposeFrames(const DecodedGif& gif) {
  std::vector<std::vector<int32_t>> shown;
  std::vector<int32_t> screen(static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height), -1);
  for (const GifDecodedFrame& f : gif.frames) {
    const std::vector<uint8_t>& table = f.local_table.empty() ? gif.global_table : f.local_table;
    const bool transparency = f.control && f.control->has_transparency();
    const std::vector<int32_t> before = screen;
    for (int y = 0; y < f.height; ++y)
      for (int x = 0; x < f.width; ++x) {
        const uint8_t index = f.indices[static_cast<size_t>(y * f.width + x)];
        if (transparency && index == f.control->transparent_index) continue;
        const uint8_t* e = &table[3 * static_cast<size_t>(index)];
        screen[static_cast<size_t>((f.top + y) * gif.width + f.left + x)] = e[0] << 16 | e[1] << 8 | e[2];
      }
    shown.push_back(screen);
    const int disposal = f.control ? f.control->disposal() : 0;
    if (disposal == 2 || disposal == 3)
      for (int y = 0; y < f.height; ++y)
        for (int x = 0; x < f.width; ++x) {
          const size_t at = static_cast<size_t>((f.top + y) * gif.width + f.left + x);
          screen[at] = disposal == 2 ? -1 : before[at];
        }
  }
  return shown;
}

}  // namespace tess::testing
