// Hashed LZW for GIF image data. Invariants: codes never exceed 12 bits, the
// table is cleared (clear code emitted) as soon as it holds 4096 codes, and
// the bit stream is cut into sub-blocks of at most 255 bytes.
#include "output/gif_lzw.h"

#include <cstring>

namespace tess {
namespace {

// Why codes stop at 12 bits: the GIF format caps code width there, so every
// decoder keeps a 4096-entry table. The width only grows when the next free
// code no longer fits the current width, and the encoder emits a clear code
// the moment the next free code would be 4096, so the largest code ever
// written is 4095 and the largest width 12. That also bounds the hash key,
// (index << 12) | prefix, to 20 bits, and a bit accumulator holding at most 7
// pending bits plus one 12-bit code never passes 19 bits.
constexpr int kMaxCodeBits = 12;
constexpr uint32_t kCodeLimit = 1u << kMaxCodeBits;

// 5003 is prime and about 22% above 4096, which keeps open-addressing probe
// chains short until the table is nearly full. With 8-bit indices,
// (index << 4) ^ prefix stays below 4096, inside the table.
constexpr int kHashSlots = 5003;
constexpr int kHashShift = 4;

constexpr int kSubBlockMax = 255;

// Packs codes least-significant bit first into length-prefixed sub-blocks.
// Several sub-blocks are gathered before each sink write to keep the virtual
// call out of the per-code path.
class CodePacker {
 public:
  explicit CodePacker(ByteSink& sink) : m_sink(sink) { StartBlock(); }

  void Put(uint32_t code, int width) {
    m_bits |= static_cast<uint64_t>(code) << m_bit_count;
    m_bit_count += width;
    while (m_bit_count >= 8) {
      PutByte(static_cast<uint8_t>(m_bits));
      m_bits >>= 8;
      m_bit_count -= 8;
    }
  }

  // Pads the last byte with zero bits, closes the open sub-block, writes the
  // zero-length terminator and hands everything to the sink.
  bool Finish() {
    if (m_bit_count > 0) PutByte(static_cast<uint8_t>(m_bits));
    if (m_block_length > 0) {
      m_out[m_length_at] = static_cast<uint8_t>(m_block_length);
    } else {
      --m_used;  // drop the length byte reserved for a block that stayed empty
    }
    m_out[m_used++] = 0;
    return Flush();
  }


 private:
  static constexpr size_t kBufferBytes = 16 * (kSubBlockMax + 1);

  void PutByte(uint8_t b) {
    m_out[m_used++] = b;
    if (++m_block_length == kSubBlockMax) {
      m_out[m_length_at] = kSubBlockMax;
      if (m_used + kSubBlockMax + 2 > kBufferBytes) Flush();
      StartBlock();
    }
  }

  void StartBlock() {
    m_length_at = m_used++;
    m_block_length = 0;
  }

  bool Flush() {
    if (m_ok && m_used > 0 && !m_sink.Write(m_out, m_used)) m_ok = false;
    m_used = 0;
    return m_ok;
  }

  ByteSink& m_sink;
  uint8_t m_out[kBufferBytes];
  size_t m_used = 0;
  size_t m_length_at = 0;  // where the open sub-block's length byte goes
  int m_block_length = 0;
  uint64_t m_bits = 0;
  int m_bit_count = 0;
  bool m_ok = true;
};

// Row y's indices, one per byte: 8-bit rows are used in place, 1- and 4-bit
// rows are unpacked into `scratch` (width bytes).
const uint8_t* RowIndices(const ImageBlock& image, int y, uint8_t* scratch) {
  const uint8_t* row = image.Row(y);
  const int width = image.width();
  switch (image.bits()) {
    case 8:
      return row;
    case 4:
      for (int x = 0; x < width; ++x)
        scratch[x] = (x & 1) ? (row[x >> 1] & 0x0F) : (row[x >> 1] >> 4);
      return scratch;
    default:  // 1 bit, most significant bit first
      for (int x = 0; x < width; ++x) scratch[x] = (row[x >> 3] >> (7 - (x & 7))) & 1;
      return scratch;
  }
}

}  // namespace

int LzwCodeSize(int bit_count) {
  if (bit_count == 1) return 2;
  return bit_count >= 2 && bit_count <= 9 ? bit_count : 0;
}

// Scans only when the depth can hold indices the code size cannot express.
// The limit is 2^n - 1, all ones, so OR-ing the indices is enough; for 4 bits
// both nibbles of the OR are checked, leaving out the padding nibble of an odd
// width.
bool LzwIndicesFit(const ImageBlock& image, int bit_count) {
  const int code_size = LzwCodeSize(bit_count);
  if (code_size == 0 || !image) return false;
  if (image.bits() != 1 && image.bits() != 4 && image.bits() != 8) return false;
  if (image.bits() <= code_size) return true;
  const unsigned limit = (1u << code_size) - 1;
  const int width = image.width();
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* row = image.Row(y);
    unsigned all = 0;
    if (image.bits() == 8) {
      for (int x = 0; x < width; ++x) all |= row[x];
    } else {
      for (int i = 0; i < width / 2; ++i) all |= row[i];
      all = (all >> 4) | (all & 0x0F);
      if (width & 1) all |= row[width / 2] >> 4;
    }
    if (all > limit) return false;
  }
  return true;
}

bool LzwEncoder::EnsureTables() {
  if (!m_keys) m_keys = AllocBuffer<int32_t>(kHashSlots);
  if (!m_codes) m_codes = AllocBuffer<uint16_t>(kHashSlots);
  return m_keys && m_codes;
}

// One long function on purpose: the per-pixel loop keeps the whole coder state
// (prefix, width, next code, tables) in locals so the compiler can hold it in
// registers; splitting it into calls costs a third of the speed.
GifStatus LzwEncoder::Encode(ByteSink& sink, const ImageBlock& image, int bit_count) {
  const int code_size = LzwCodeSize(bit_count);
  if (code_size == 0 || !image) return GifStatus::kBadArgument;
  if (image.bits() != 1 && image.bits() != 4 && image.bits() != 8) return GifStatus::kBadArgument;

  if (!LzwIndicesFit(image, bit_count)) return GifStatus::kIndexTooLarge;
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(static_cast<size_t>(image.width()));
  if (!scratch || !EnsureTables()) return GifStatus::kNoMemory;

  if (!sink.PutByte(static_cast<uint8_t>(code_size))) return GifStatus::kWriteFailed;

  int32_t* const keys = m_keys.get();
  uint16_t* const codes = m_codes.get();
  const uint32_t clear_code = 1u << code_size;
  const uint32_t end_code = clear_code + 1;
  const int first_width = code_size + 1;

  int width = first_width;
  uint32_t max_code = (1u << width) - 1;  // largest code the current width holds
  uint32_t next_code = clear_code + 2;
  std::memset(keys, 0xFF, sizeof(int32_t) * kHashSlots);

  CodePacker out(sink);
  out.Put(clear_code, width);

  // Emits `code` and widens the codes once the next free code no longer fits.
  // At 12 bits max_code is the table size, so the width never passes 12.
  auto emit = [&](uint32_t code) {
    out.Put(code, width);
    if (next_code > max_code) {
      ++width;
      max_code = width == kMaxCodeBits ? kCodeLimit : (1u << width) - 1;
    }
  };

  uint32_t prefix = RowIndices(image, 0, scratch.get())[0];
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* px = RowIndices(image, y, scratch.get());
    for (int x = (y == 0 ? 1 : 0); x < image.width(); ++x) {
      const uint32_t c = px[x];
      const int32_t key = static_cast<int32_t>((c << kMaxCodeBits) | prefix);
      int slot = static_cast<int>((c << kHashShift) ^ prefix);
      if (keys[slot] == key) {
        prefix = codes[slot];
        continue;
      }
      if (keys[slot] >= 0) {  // collision: probe backwards with a slot-dependent step
        const int step = slot == 0 ? 1 : kHashSlots - slot;
        bool found = false;
        do {
          slot -= step;
          if (slot < 0) slot += kHashSlots;
          if (keys[slot] == key) {
            found = true;
            break;
          }
        } while (keys[slot] >= 0);
        if (found) {
          prefix = codes[slot];
          continue;
        }
      }
      emit(prefix);
      prefix = c;
      if (next_code < kCodeLimit) {
        codes[slot] = static_cast<uint16_t>(next_code++);
        keys[slot] = key;
      } else {  // table full: start over so codes stay within 12 bits
        out.Put(clear_code, width);
        std::memset(keys, 0xFF, sizeof(int32_t) * kHashSlots);
        width = first_width;
        max_code = (1u << width) - 1;
        next_code = clear_code + 2;
      }
    }
  }
  emit(prefix);
  out.Put(end_code, width);
  return out.Finish() ? GifStatus::kOk : GifStatus::kWriteFailed;
}

}  // namespace tess
