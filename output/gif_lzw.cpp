// Hashed LZW for GIF image data. Invariants: codes never exceed 12 bits, the
// string table is cleared (clear code emitted) as soon as it holds 4096 codes,
// and the bit stream is cut into sub-blocks of at most 255 bytes.
#include "output/gif_lzw.h"

#include <cstring>

#include "base/bytes.h"

namespace tess {
namespace {

// Why codes stop at 12 bits: the GIF format caps code width there, so every
// decoder keeps a 4096-entry table. The width only grows when the next free
// code no longer fits the current width, and the encoder emits a clear code
// the moment the next free code would be 4096, so the largest code ever
// written is 4095 and the largest width 12. That also bounds the hash key,
// (index << 12) | prefix, to 20 bits, and the bit accumulator, holding at most
// 7 pending bits plus one 12-bit code, to 19 bits.
constexpr int kMaxCodeBits = 12;
constexpr uint32_t kCodeLimit = 1u << kMaxCodeBits;

// The string table is an open-addressing hash from (prefix code, index) to
// code. Each slot packs key << 12 | code into 32 bits (the 20-bit key of an
// 8-bit index and a 12-bit prefix, then the 12-bit code); 0 marks a free slot,
// which no entry can equal because codes start above the end code.
//
// Why 32768 slots and not the classic 5003: the table holds at most 4096
// codes, and near the classic table's final load of 82% some 40% of lookups on
// smooth frames need more than one slot; the probe loops' mispredicted
// branches then cost more than the rest of the encoder together. At a load of
// at most 12.5% nearly every lookup ends at its first slot, which more than
// doubles the speed for 128 KB instead of 30 KB. The layout cannot change the
// output: any exact dictionary gives the same codes (the tests compare the
// bytes with a classic 5003-slot encoder).
constexpr int kTableBits = 15;
constexpr uint32_t kTableSlots = 1u << kTableBits;

// Each lookup's prefix is the previous lookup's result, so the prefix's share
// of the hash sits on the loop's critical path and is a mere shift; the
// index's share, known early, is scrambled by a Fibonacci multiply meanwhile.
// For one index, different prefixes land 8 slots apart and never collide.
inline uint32_t HashSlot(uint32_t index, uint32_t prefix) {
  return ((index * 0x9E3779B1u) >> (32 - kTableBits)) ^ (prefix << (kTableBits - kMaxCodeBits));
}

constexpr int kSubBlockMax = 255;

// Turns the code stream into length-prefixed sub-blocks. The encoder packs
// bytes into run() itself and calls Drain when the run reaches limit();
// cutting 16 blocks at once keeps the per-code path to one well-predicted
// branch.
class SubBlockWriter {
 public:
  explicit SubBlockWriter(ByteSink& sink) : m_sink(sink) {}

  uint8_t* run() { return m_run; }
  const uint8_t* limit() const { return m_run + kRunBytes; }

  // Writes the full sub-blocks in [run(), end), keeps the rest at the front
  // of the run and returns where it ends.
  uint8_t* Drain(uint8_t* end) { return Write(end, false); }

  // Writes everything up to `end` as the last sub-blocks, then the zero-length
  // terminator. False when the sink failed at any point.
  bool Finish(uint8_t* end) {
    Write(end, true);
    return m_ok;
  }

 private:
  static constexpr size_t kRunBytes = 16 * kSubBlockMax;

  uint8_t* Write(uint8_t* end, bool last) {
    const size_t used = static_cast<size_t>(end - m_run);
    uint8_t out[(kRunBytes / kSubBlockMax + 1) * (kSubBlockMax + 1) + 1];
    size_t n = 0, from = 0;
    while (used - from >= kSubBlockMax || (last && used > from)) {
      const size_t len = used - from < kSubBlockMax ? used - from : kSubBlockMax;
      out[n++] = static_cast<uint8_t>(len);
      std::memcpy(out + n, m_run + from, len);
      n += len;
      from += len;
    }
    if (last) out[n++] = 0;
    if (m_ok && n > 0 && !m_sink.Write(out, n)) m_ok = false;
    std::memmove(m_run, m_run + from, used - from);
    return m_run + (used - from);
  }

  ByteSink& m_sink;
  uint8_t m_run[kRunBytes + 8];  // room past the limit for one 32-bit store
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
  if (!m_table) m_table = AllocBuffer<uint32_t>(kTableSlots);
  return m_table != nullptr;
}

// The hot loop: follows the string from *prefix along the pixels while the
// table knows the longer string. Returns the first pixel that ends it (or
// `end`), with *prefix the code of the string so far and *slot_out the free
// slot where (prefix, that pixel) belongs. A function of its own so that the
// compiler gives its few values the registers, not the whole coder's state.
inline const uint8_t* ExtendString(const uint32_t* table, const uint8_t* p, const uint8_t* end,
                                   uint32_t* prefix_io, uint32_t* slot_out) {
  uint32_t prefix = *prefix_io;
  for (; p < end; ++p) {
    const uint32_t c = *p;
    const uint32_t key = (c << kMaxCodeBits) | prefix;
    const uint32_t tag = key << kMaxCodeBits;
    uint32_t slot = HashSlot(c, prefix);
    uint32_t entry = table[slot];
    // entry ^ tag is the code when the slot holds this key; codes are 1..4095,
    // while a free slot or another key gives 0 or 4096 and up.
    uint32_t code = entry ^ tag;
    if (code - 1 < kCodeLimit - 1) {  // the string continues: the common case
      prefix = code;
      continue;
    }
    while (entry != 0) {  // another key here: linear probing
      slot = (slot + 1) & (kTableSlots - 1);
      entry = table[slot];
      code = entry ^ tag;
      if (code - 1 < kCodeLimit - 1) break;
    }
    if (entry != 0) {
      prefix = code;
      continue;
    }
    *slot_out = slot;
    break;
  }
  *prefix_io = prefix;
  return p;
}

// The coder's state (bit accumulator, output position, width, next code) is
// kept in locals and lambdas rather than in a helper object, so the compiler
// can hold it in registers; with member state it was reloaded on every code.
GifStatus LzwEncoder::Encode(ByteSink& sink, const ImageBlock& image, int bit_count) {
  const int code_size = LzwCodeSize(bit_count);
  if (code_size == 0 || !image) return GifStatus::kBadArgument;
  if (image.bits() != 1 && image.bits() != 4 && image.bits() != 8) return GifStatus::kBadArgument;

  if (!LzwIndicesFit(image, bit_count)) return GifStatus::kIndexTooLarge;
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(static_cast<size_t>(image.width()));
  if (!scratch || !EnsureTables()) return GifStatus::kNoMemory;

  if (!sink.PutByte(static_cast<uint8_t>(code_size))) return GifStatus::kWriteFailed;

  uint32_t* const table = m_table.get();
  const uint32_t clear_code = 1u << code_size;
  const uint32_t end_code = clear_code + 1;
  const int first_width = code_size + 1;
  const int width_px = image.width();
  const int height_px = image.height();

  int width = first_width;
  uint32_t max_code = (1u << width) - 1;  // largest code the current width holds
  uint32_t next_code = clear_code + 2;
  std::memset(table, 0, sizeof(uint32_t) * kTableSlots);

  SubBlockWriter blocks(sink);
  uint8_t* at = blocks.run();
  const uint8_t* const limit = blocks.limit();
  uint32_t bits = 0;  // pending bits, least significant first; fewer than 8
  int bit_count_pending = 0;

  // Stores whole bytes without a data-dependent branch: the pending bits (at
  // most 7 + 12 = 19) always fit the 32-bit store, and only the bytes that are
  // complete count. The run has slack past its limit for the extra bytes.
  auto put = [&](uint32_t code) {
    bits |= code << bit_count_pending;
    bit_count_pending += width;
    put_u32le(at, bits);
    const int whole = bit_count_pending >> 3;
    at += whole;
    bits >>= 8 * whole;
    bit_count_pending &= 7;
    if (at >= limit) at = blocks.Drain(at);
  };
  // Emits a string's code and widens the codes once the next free code no
  // longer fits. At 12 bits max_code is the table size, so the width stops.
  auto emit = [&](uint32_t code) {
    put(code);
    if (next_code > max_code) {
      ++width;
      max_code = width == kMaxCodeBits ? kCodeLimit : (1u << width) - 1;
    }
  };

  put(clear_code);
  uint32_t prefix = RowIndices(image, 0, scratch.get())[0];
  for (int y = 0; y < height_px; ++y) {
    const uint8_t* p = RowIndices(image, y, scratch.get()) + (y == 0 ? 1 : 0);
    const uint8_t* const row_end = p + width_px - (y == 0 ? 1 : 0);
    uint32_t slot = 0;
    while ((p = ExtendString(table, p, row_end, &prefix, &slot)) != row_end) {
      const uint32_t c = *p++;
      emit(prefix);
      if (next_code < kCodeLimit) {
        table[slot] = (((c << kMaxCodeBits) | prefix) << kMaxCodeBits) | next_code++;
      } else {  // table full: start over so codes stay within 12 bits
        put(clear_code);
        std::memset(table, 0, sizeof(uint32_t) * kTableSlots);
        width = first_width;
        max_code = (1u << width) - 1;
        next_code = clear_code + 2;
      }
      prefix = c;
    }
  }
  emit(prefix);
  put(end_code);
  if (bit_count_pending > 0) *at++ = static_cast<uint8_t>(bits);  // zero-padded last byte
  return blocks.Finish(at) ? GifStatus::kOk : GifStatus::kWriteFailed;
}

}  // namespace tess
