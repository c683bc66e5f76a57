// Hashed LZW for GIF image data. Invariants: codes never exceed 12 bits, the
// string table is cleared (clear code emitted) as soon as it holds 4096 codes,
// and the bit stream is cut into sub-blocks of at most 255 bytes.
#include "output/gif_lzw.h"

#include <algorithm>
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

// The string table maps (prefix code, index) to a code. Why it is shaped as
// it is: each lookup's prefix is the previous lookup's result, so the encoder
// runs at the speed of one chain of lookups, and whether a string ends is
// close to a coin toss on dithered frames. So the chain from one prefix to the
// next has to be a load and a few one-cycle steps, from a table that stays
// near the first-level cache, and a lookup has to finish without a branch on
// its outcome: a mispredicted branch costs more than three lookups.
//
// Home buckets of two entries hold most strings. Each index has a window of
// 4096 consecutive buckets starting at a scrambled offset, and the prefix
// picks the bucket within it, so for one index every prefix has a bucket of
// its own, and the bucket's address is one load away from the prefix with no
// arithmetic between. An entry then only needs the index and the code:
// generation << 20 | index << 12 | (4095 - code). XOR with this generation's
// tag for the index (generation << 20 | index << 12) leaves 4095 - code, below
// 4096, for the entry of this string alone; an entry of another index gives
// 4096 up to 2^20, and a free or stale one (of another generation) 2^20 or
// more. Generations make clearing the table a counter increment, with a real
// clear every 255 times.
//
// A string whose home bucket is full goes to the overflow table, open-
// addressed by the whole key (index << 12 | prefix) with entries key << 12 |
// code (never 0, as codes start above the end code); only lookups in full
// buckets take that branch.
//
// The layout cannot change the output: any exact dictionary gives the same
// codes (the tests compare the bytes with a classic 5003-slot encoder).
constexpr uint32_t kBuckets = 2 * kCodeLimit;  // windows start at 0..4095
constexpr int kOverflowBits = 12;  // the table holds fewer than 4096 strings
constexpr uint32_t kOverflowStart = 2 * kBuckets;
constexpr uint32_t kSpare = kOverflowStart + (1u << kOverflowBits);  // stores that change nothing land here
constexpr uint32_t kGeneration = kSpare + 1;    // the generation of the home entries
constexpr uint32_t kOverflowUsed = kSpare + 2;  // whether the overflow table holds anything
constexpr uint32_t kTableEntries = kSpare + 3;
constexpr uint32_t kCurrent = 1u << 20;  // XOR-ed entries of this generation are below
constexpr uint32_t kLastGeneration = 255;

inline uint32_t Scramble(uint32_t index) { return (index * 0x9E3779B1u) >> (32 - kMaxCodeBits); }

constexpr int kSubBlockMax = 255;

// Pixels looked up between two runs of the bit packer.
constexpr size_t kChunk = 512;

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
  if (!m_table) m_table = AllocBuffer<uint32_t>(kTableEntries);
  return m_table != nullptr;
}

namespace {

// The branch taken when a string's home bucket is full: finds the string in
// the overflow table. Returns its code, or 0 with *free_out the slot where it
// belongs; a free slot always exists, the table holding fewer strings than
// slots.
uint32_t FindOverflow(const uint32_t* overflow, uint32_t key, uint32_t* free_out) {
  for (uint32_t slot = (key * 0x9E3779B1u) >> (32 - kOverflowBits);; slot = (slot + 1) & ((1u << kOverflowBits) - 1)) {
    const uint32_t entry = overflow[slot];
    if (entry == 0) {
      *free_out = slot;
      return 0;
    }
    if ((entry >> kMaxCodeBits) == key) return entry & (kCodeLimit - 1);
  }
}

// Packs codes into bytes. It follows the same width and table-size rules as
// the string table, from the codes alone: every code but the last is followed
// by a new string, or by a clear code when the table is full.
class CodePacker {
 public:
  CodePacker(int code_size, SubBlockWriter& blocks)
      : m_blocks(blocks),
        m_clear_code(1u << code_size),
        m_first_width(static_cast<uint32_t>(code_size) + 1),
        m_at(blocks.run()),
        m_limit(blocks.limit()) {
    Restart();
  }

  void Start() { Put(m_clear_code); }

  // Codes of strings that were each followed by one more index, given as
  // 4095 - code. The state is copied into locals: stores through the byte
  // pointer could alias the members, which would be reloaded every time.
  void Codes(const uint16_t* codes, size_t n) {
    uint8_t* at = m_at;
    uint32_t bits = m_bits, pending = m_pending, width = m_width, next_code = m_next_code;
    for (size_t i = 0; i < n; ++i) {
      Append(kCodeLimit - 1 - codes[i], width, at, bits, pending);
      // The next code needs another bit; at 12 bits the table is full instead.
      if (next_code >> width) [[unlikely]] {
        if (width < kMaxCodeBits) {
          ++width;
        } else {  // the string table starts over
          Append(m_clear_code, width, at, bits, pending);
          width = m_first_width;
          next_code = m_clear_code + 1;  // + 1 below
        }
      }
      ++next_code;
      if (at >= m_limit) [[unlikely]] at = m_blocks.Drain(at);
    }
    m_at = at;
    m_bits = bits, m_pending = pending, m_width = width, m_next_code = next_code;
  }

  // The last string, the end code and the zero-padded last byte.
  bool Finish(uint32_t last) {
    Put(last);
    // The end code is as wide as a code that followed would be, as decoders
    // expect.
    if ((m_next_code >> m_width) && m_width < kMaxCodeBits) ++m_width;
    Put(m_clear_code + 1);
    if (m_pending > 0) *m_at++ = static_cast<uint8_t>(m_bits);
    return m_blocks.Finish(m_at);
  }

 private:
  void Restart() {
    m_width = m_first_width;
    m_next_code = m_clear_code + 2;
  }

  // Stores whole bytes without a data-dependent branch: the pending bits (at
  // most 7 + 12 = 19) always fit the 32-bit store, and only the bytes that are
  // complete count. The run has slack past its limit for the extra bytes.
  static void Append(uint32_t code, uint32_t width, uint8_t*& at, uint32_t& bits, uint32_t& pending) {
    bits |= code << pending;
    pending += width;
    put_u32le(at, bits);
    at += pending >> 3;
    bits >>= pending & 24;
    pending &= 7;
  }

  void Put(uint32_t code) {
    Append(code, m_width, m_at, m_bits, m_pending);
    if (m_at >= m_limit) m_at = m_blocks.Drain(m_at);
  }

  SubBlockWriter& m_blocks;
  const uint32_t m_clear_code;
  const uint32_t m_first_width;
  uint8_t* m_at;
  const uint8_t* const m_limit;
  uint32_t m_next_code = 0;  // code the next new string gets
  uint32_t m_width = 0;      // bits of the next code written
  uint32_t m_bits = 0;       // pending bits, least significant first; fewer than 8
  uint32_t m_pending = 0;
};

// The string table side: follows strings along the pixels and lists the code
// of every string that ends.
class StringTable {
 public:
  StringTable(uint32_t* table, int code_size) : m_table(table), m_first_code((1u << code_size) + 2) {
    for (uint32_t c = 0; c < 256; ++c) {
      m_offset[c] = 2 * Scramble(c);
      m_base[c] = table + m_offset[c];
    }
    Reset();
  }

  void Start(uint32_t first_index) { m_prefix = first_index; }
  uint32_t prefix() const { return m_prefix; }

  // Reads [p, end) and writes the code of each string that ends there to
  // `codes`, which has room for one per pixel. Returns how many.
  size_t Extend(const uint8_t* p, const uint8_t* end, uint16_t* codes);

 private:
  // Starts a new generation: every home entry of an older one reads as free.
  // Only when the generations run out are the home buckets cleared.
  void Reset() {
    uint32_t generation = m_table[kGeneration] + 1;
    if (generation > kLastGeneration) {
      std::memset(m_table, 0, sizeof(uint32_t) * kOverflowStart);
      generation = 1;
    }
    m_table[kGeneration] = generation;
    if (m_table[kOverflowUsed] != 0) {
      std::memset(m_table + kOverflowStart, 0, sizeof(uint32_t) << kOverflowBits);
      m_table[kOverflowUsed] = 0;
    }
    for (uint32_t c = 0; c < 256; ++c) m_tag[c] = generation << 20 | c << kMaxCodeBits;
    m_next_code = m_first_code;
  }

  uint32_t* const m_table;
  const uint32_t m_first_code;
  uint32_t m_tag[256];       // what an entry of this generation for each index XORs to its code
  uint32_t* m_base[256];     // each index's window of home buckets
  uint32_t m_offset[256];    // the same, as an entry number
  uint32_t m_prefix = 0;     // code of the string read so far
  uint32_t m_next_code = 0;  // code the next new string gets
};

// The hot loop. Everything after the lookup is done for every pixel and
// cancelled by masks when the string goes on, rather than branched around:
// whether a string ends is close to a coin toss on dithered frames, and a
// mispredicted branch costs more than the whole step. Bit packing is left to
// CodePacker, which keeps this loop short.
//
// The loop keeps q = 4095 - prefix rather than the prefix: home entries hold
// 4095 - code, so the next q is the least of the two entries XOR the tag and
// of 4095 - c, the q of the string c on its own, which every code exceeds.
// Signed comparisons, as every value is below 2^31, compile to one-cycle
// conditional moves.
size_t StringTable::Extend(const uint8_t* p, const uint8_t* const end, uint16_t* codes) {
  uint32_t* const table = m_table;
  uint32_t q = kCodeLimit - 1 - m_prefix, next_code = m_next_code;
  uint32_t n = 0;
  for (; p < end; ++p) {
    const uint32_t c = *p;
    const uint32_t tag = m_tag[c];
    const uint32_t* const base = m_base[c];
    const uint32_t e0 = base[2 * static_cast<size_t>(q)], e1 = base[2 * static_cast<size_t>(q) + 1];
    const int32_t x0 = static_cast<int32_t>(e0 ^ tag), x1 = static_cast<int32_t>(e1 ^ tag);
    const int32_t found = std::min(x0, x1);
    uint32_t next_q = static_cast<uint32_t>(std::min(found, static_cast<int32_t>(kCodeLimit - 1 - c)));
    uint32_t miss = found >= static_cast<int32_t>(kCodeLimit);
    // Where a new string goes, known early so that the next lookups never wait
    // for this store's address. A string that goes on stores the entry's own
    // value back: the entry is then entry 1, as entry 0 is taken.
    // (Through m_offset, not m_base: were the loads' address shared with the
    // store, the compiler would compute it with an extra addition on the chain.)
    uint32_t* store_at = table + (m_offset[c] + 2 * q + (x0 < static_cast<int32_t>(kCurrent)));  // entry 0 fills first
    uint32_t stored = tag | (kCodeLimit - 1);
    // A miss (found - 4096 does not wrap) in a bucket whose entry 1, and so
    // entry 0, holds another string of this generation: one branch, seldom
    // taken, in integer arithmetic so that the compiler cannot split it into
    // two unpredictable ones.
    if (((static_cast<uint32_t>(found) - kCodeLimit) | static_cast<uint32_t>(x1)) < kCurrent) [[unlikely]] {
      const uint32_t key = (c << kMaxCodeBits) | (kCodeLimit - 1 - q);
      uint32_t slot = 0;
      const uint32_t code = FindOverflow(table + kOverflowStart, key, &slot);
      table[kOverflowUsed] = 1;
      store_at = table + kOverflowStart + slot;
      stored = key << kMaxCodeBits;
      if (code != 0) next_q = kCodeLimit - 1 - code, miss = 0, store_at = table + kSpare;
    }
    // A miss ends the string: its code is listed and (prefix, c) gets the next.
    codes[n] = static_cast<uint16_t>(q);
    n += miss;
    q = next_q;
    if (next_code + miss > kCodeLimit) [[unlikely]] {  // the table is full: start over
      Reset();
      next_code = m_next_code;
      continue;
    }
    stored ^= next_code;
    *store_at = stored ^ ((stored ^ e1) & (miss - 1));
    next_code += miss;
  }
  m_prefix = kCodeLimit - 1 - q, m_next_code = next_code;
  return n;
}

}  // namespace

GifStatus LzwEncoder::Encode(ByteSink& sink, const ImageBlock& image, int bit_count) {
  const int code_size = LzwCodeSize(bit_count);
  if (code_size == 0 || !image) return GifStatus::kBadArgument;
  if (image.bits() != 1 && image.bits() != 4 && image.bits() != 8) return GifStatus::kBadArgument;

  if (!LzwIndicesFit(image, bit_count)) return GifStatus::kIndexTooLarge;
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(static_cast<size_t>(image.width()));
  if (!scratch || !EnsureTables()) return GifStatus::kNoMemory;

  if (!sink.PutByte(static_cast<uint8_t>(code_size))) return GifStatus::kWriteFailed;

  SubBlockWriter blocks(sink);
  CodePacker packer(code_size, blocks);
  StringTable strings(m_table.get(), code_size);
  packer.Start();
  uint16_t codes[kChunk];
  const int width_px = image.width();
  for (int y = 0; y < image.height(); ++y) {
    const uint8_t* row = RowIndices(image, y, scratch.get());
    int x = 0;
    if (y == 0) strings.Start(row[x++]);
    while (x < width_px) {
      const int n = std::min(width_px - x, static_cast<int>(kChunk));
      packer.Codes(codes, strings.Extend(row + x, row + x + n, codes));
      x += n;
    }
  }
  return packer.Finish(strings.prefix()) ? GifStatus::kOk : GifStatus::kWriteFailed;
}

// ---------------------------------------------------------------- choosing encoder

namespace {

// EncodeChoosing asks the table whether a string exists for two indices per
// pixel, which the branch-free table above cannot answer cheaply; so it keeps
// a plain open-addressed table of entries key << 12 | code, with the key
// index << 12 | prefix. An entry is never 0, as codes start above the end
// code, so 0 marks an empty slot; the key alone can be 0. At 32 KB
// it stays in the first-level cache, and clearing it is a memset.
constexpr int kKeyedBits = 13;  // 8192 slots for at most 4096 strings
constexpr uint32_t kKeyedSlots = 1u << kKeyedBits;

class KeyedTable {
 public:
  explicit KeyedTable(uint32_t* slots) : m_slots(slots) {
    for (uint32_t c = 0; c < 256; ++c) m_offset[c] = (c * 0x9E3779B1u) >> (32 - kKeyedBits);
    Reset();
  }

  void Reset() { std::memset(m_slots, 0, sizeof(uint32_t) * kKeyedSlots); }

  // The code of (prefix, index), or -1.
  int Find(uint32_t prefix, uint32_t index) const {
    const uint32_t key = index << kMaxCodeBits | prefix;
    for (uint32_t s = Home(prefix, index);; s = (s + 1) & (kKeyedSlots - 1)) {
      const uint32_t e = m_slots[s];
      if ((e >> kMaxCodeBits) == key && e != 0) return static_cast<int>(e & (kCodeLimit - 1));
      if (e == 0) return -1;
    }
  }

  // Returns the slot, for RemoveLast.
  uint32_t Add(uint32_t prefix, uint32_t index, uint32_t code) {
    uint32_t s = Home(prefix, index);
    while (m_slots[s] != 0) s = (s + 1) & (kKeyedSlots - 1);
    m_slots[s] = (index << kMaxCodeBits | prefix) << kMaxCodeBits | code;
    return s;
  }

  // Takes back the entry the last Add stored. Only the last: an entry added
  // after it may have probed past its slot, and emptying the slot would hide
  // that entry.
  void RemoveLast(uint32_t slot) { m_slots[slot] = 0; }

 private:
  // Each index's strings start at a scrambled place and the prefix, the
  // previous lookup's result, is added without a multiplication: the lookups
  // form one chain, so every cycle between two of them counts.
  uint32_t Home(uint32_t prefix, uint32_t index) const { return (m_offset[index] + prefix) & (kKeyedSlots - 1); }

  uint32_t* m_slots;
  uint32_t m_offset[256];
};

// The same bit packing as CodePacker, one code at a time, with the full-table
// rule as a parameter.
class PlainPacker {
 public:
  PlainPacker(int code_size, SubBlockWriter& blocks, LzwFullTable full)
      : m_blocks(blocks), m_full(full), m_clear_code(1u << code_size),
        m_first_width(static_cast<uint32_t>(code_size) + 1), m_at(blocks.run()) {
    Restart();
    Put(m_clear_code);
  }

  // Writes a string's code; a new string follows it. True when the table
  // starts over (a clear code was written), so the caller's table must too.
  bool Code(uint32_t code) {
    Put(code);
    if (m_next_code == kCodeLimit && m_full == LzwFullTable::kKeep) return false;  // nothing is added
    if (m_next_code >> m_width) {
      if (m_width < kMaxCodeBits) {
        ++m_width;
      } else if (m_full == LzwFullTable::kClear) {
        Put(m_clear_code);
        Restart();
        return true;
      }
    }
    ++m_next_code;
    return false;
  }

  // Whether the string the table would add next still gets a code.
  bool Room() const { return m_next_code < kCodeLimit; }
  uint32_t next_code() const { return m_next_code; }

  bool Finish(uint32_t last) {
    Put(last);
    if (m_next_code < kCodeLimit && (m_next_code >> m_width) && m_width < kMaxCodeBits) ++m_width;
    Put(m_clear_code + 1);
    if (m_pending > 0) *m_at++ = static_cast<uint8_t>(m_bits);
    return m_blocks.Finish(m_at);
  }

 private:
  void Restart() {
    m_width = m_first_width;
    m_next_code = m_clear_code + 2;
  }
  void Put(uint32_t code) {
    m_bits |= code << m_pending;
    m_pending += m_width;
    while (m_pending >= 8) {
      *m_at++ = static_cast<uint8_t>(m_bits);
      m_bits >>= 8;
      m_pending -= 8;
    }
    if (m_at >= m_blocks.limit()) m_at = m_blocks.Drain(m_at);
  }

  SubBlockWriter& m_blocks;
  const LzwFullTable m_full;
  const uint32_t m_clear_code;
  const uint32_t m_first_width;
  uint8_t* m_at;
  uint32_t m_next_code = 0;
  uint32_t m_width = 0;
  uint32_t m_bits = 0;
  uint32_t m_pending = 0;
};

// The look-ahead parses weigh a cut only where the next string would be
// this short: on the frames measured, weighing cuts before longer strings
// too gained nothing, and leaving them out keeps most of the look-ahead's
// lookups away.
constexpr size_t kShortNext = 8;

// The longest string the table holds from a pixel on: its length, its code,
// and the code of the string one pixel shorter.
struct LongestString {
  size_t length;
  uint32_t code;
  uint32_t shorter;
};

class ChoosingMatcher {
 public:
  ChoosingMatcher(const KeyedTable& table, const uint8_t* first, const uint8_t* second, size_t count,
                  uint8_t* chosen)
      : m_table(table), m_first(first), m_second(second), m_count(count), m_chosen(chosen) {}

  // The string starts with first[at]; after that, the index that extends it
  // wins, first[] when both or neither do. The picks go to chosen[].
  LongestString Longest(size_t at) const {
    uint32_t code = m_first[at], shorter = code;
    m_chosen[at] = static_cast<uint8_t>(code);
    size_t i = at + 1;
    for (; i < m_count; ++i) {
      uint32_t pick;
      const int next = Next(code, i, &pick);
      m_chosen[i] = static_cast<uint8_t>(pick);
      if (next < 0) break;
      shorter = code;
      code = static_cast<uint32_t>(next);
    }
    return {i - at, code, shorter};
  }

  // Whether the string from pixel `at` on (its first index first[at]) spans
  // at least `length` pixels. Writes no picks.
  bool Reaches(size_t at, size_t length) const {
    if (length > m_count - at) return false;
    uint32_t code = m_first[at];
    for (size_t i = at + 1; i < at + length; ++i) {
      uint32_t pick;
      const int next = Next(code, i, &pick);
      if (next < 0) return false;
      code = static_cast<uint32_t>(next);
    }
    return true;
  }

 private:
  // The code that extends `code` by pixel i, or -1; *pick is the index that
  // did (first[i] when neither did).
  int Next(uint32_t code, size_t i, uint32_t* pick) const {
    const uint32_t a = m_first[i], b = m_second[i];
    *pick = a;
    const int next = m_table.Find(code, a);
    if (next >= 0 || b == a) return next;
    const int other = m_table.Find(code, b);
    if (other >= 0) *pick = b;
    return other;
  }

  const KeyedTable& m_table;
  const uint8_t* const m_first;
  const uint8_t* const m_second;
  const size_t m_count;
  uint8_t* const m_chosen;
};

}  // namespace

bool LzwEncoder::Reserve() {
  if (!m_keyed) m_keyed = AllocBuffer<uint32_t>(kKeyedSlots);
  return m_keyed && EnsureTables();
}

GifStatus LzwEncoder::EncodeChoosing(ByteSink& sink, const uint8_t* first, const uint8_t* second,
                                     size_t count, int bit_count, LzwVariant variant, uint8_t* chosen) {
  const int code_size = LzwCodeSize(bit_count);
  if (code_size == 0 || count == 0 || !first || !second || !chosen) return GifStatus::kBadArgument;
  const uint32_t limit = 1u << code_size;
  // Bytes always fit an eight-bit code size: the check would read both
  // arrays for nothing.
  if (limit < 256) {
    for (size_t i = 0; i < count; ++i)
      if (first[i] >= limit || second[i] >= limit) return GifStatus::kIndexTooLarge;
  }
  if (!m_keyed) m_keyed = AllocBuffer<uint32_t>(kKeyedSlots);
  if (!m_keyed) return GifStatus::kNoMemory;

  m_filled = false;
  if (!sink.PutByte(static_cast<uint8_t>(code_size))) return GifStatus::kWriteFailed;
  SubBlockWriter blocks(sink);
  PlainPacker packer(code_size, blocks, variant.full);
  KeyedTable table(m_keyed.get());
  const ChoosingMatcher match(table, first, second, count, chosen);
  const bool look_ahead = variant.parse != LzwParse::kLongest;
  // The wary parse's extra pixel pays for the code a cut spends, so only
  // while codes are still being added.
  const size_t wary = variant.parse == LzwParse::kLookAheadWary ? 1 : 0;

  // The next string is matched against the table as it stands once the
  // current string's code is written, with the string that adds; a cut takes
  // that string back. Both candidates for the string after a cut are weighed
  // against that same table.
  size_t at = 0;
  LongestString now = match.Longest(0);
  while (at + now.length < count) {
    const size_t end = at + now.length;
    const uint32_t a = first[end];
    const bool room = packer.Room();
    m_filled |= !room;
    const uint32_t added = packer.next_code();
    // The longest string ended because (code, a) is not in the table.
    const uint32_t slot = room ? table.Add(now.code, a, added) : 0;
    LongestString next = match.Longest(end);
    // A cut is weighed while the table grows and once it is full and kept;
    // a full table about to be cleared gives the next string a fresh table.
    const bool may_cut = room || variant.full == LzwFullTable::kKeep;
    if (look_ahead && may_cut && now.length >= 2 && next.length <= kShortNext &&
        match.Reaches(end - 1, next.length + 2 + (room ? wary : 0))) {
      const uint32_t root = first[end - 1];
      packer.Code(now.shorter);  // no clear follows: see may_cut
      if (room) {
        table.RemoveLast(slot);
        if (table.Find(now.shorter, root) < 0) table.Add(now.shorter, root, added);
      }
      at = end - 1;
      now = match.Longest(at);
      continue;
    }
    if (packer.Code(now.code)) {
      table.Reset();
      next = match.Longest(end);
    }
    at = end;
    now = next;
  }
  return packer.Finish(now.code) ? GifStatus::kOk : GifStatus::kWriteFailed;
}

}  // namespace tess
