// PaletteMatcher: the plain searches of palette.cpp, made fast in ways that
// cannot change an answer.
//  - Exact matches come from a small hash table holding the first index of
//    every palette colour, which is what a first-to-last scan finds.
//  - A search scans only the candidates of the colour's cell: every entry
//    that is at least as near as a reference entry at some point of the cell
//    (FilterCandidates). An entry missing from the list is strictly farther
//    than the reference everywhere in the cell, so it is never nearest nor
//    tied; candidates keep palette order, so the strict-less scan still
//    returns the lowest index among the nearest. An exact match has distance
//    0, the least possible, so the same scan also returns the first exact
//    match. Cells come in four sizes, each list built on first use from the
//    list of the cell around it: 64-value cubes from the whole palette,
//    32-value cubes from those, 16-value cubes from those and 8-value cubes
//    (the cells of the lookup grid) from those. Anything nearest within a
//    cell is nearest within the cell around it, so nothing is lost, and each
//    list costs a pass over a short one; a list of four or fewer serves all
//    the small cells inside as it is. Most small cells have at most four
//    candidates, kept in the cell's own word.
//  - Nearest answers that the cell's word cannot give (longer lists, and the
//    whole-palette scans the first memoised searches make before any cell is
//    built) are memoised per 24-bit colour: NearestColour is a pure function
//    of the colour once the palette is fixed, so a remembered answer is the
//    answer. The memo is direct-mapped; a collision only costs a search.
#include "output/palette_match.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "image/image.h"

namespace tess {
namespace {

constexpr int kExactSlots = 1024;  // 4x the palette: probe chains stay short
constexpr int kMemoBits = 12;
constexpr int kMemoSlots = 1 << kMemoBits;
constexpr int kHugeCells = 64;               // 4 per axis, 64 values wide
constexpr int kBigCells = 512;               // 8 per axis, 32 values wide
constexpr int kMidCells = 4096;              // 16 per axis, 16 values wide
constexpr int kSmallCells = kLookupEntries;  // 32 per axis, 8 values wide
constexpr size_t kPoolStart = 16 * 1024;     // grows by doubling
// Memoised searches scan the whole palette until this many have been made,
// and only then start building cells: a frame with few colours is done
// before cell lists would pay for themselves.
constexpr long kWholeScans = 2048;
// Far above any real Linear::At (at most 9 * 255²), and small enough to be
// shifted left by 8 in ScanWhole.
constexpr int32_t kUnused = 1 << 22;

constexpr uint32_t Pack(int r, int g, int b) {
  return static_cast<uint32_t>(r) | (static_cast<uint32_t>(g) << 8) | (static_cast<uint32_t>(b) << 16);
}

// Fibonacci hashing spreads neighbouring colours over the table.
constexpr uint32_t Hash(uint32_t colour, int bits) { return (colour * 0x9E3779B1u) >> (32 - bits); }

constexpr int BigCellOf(int small) {
  return ((small >> 2) & 7) | (((small >> 7) & 7) << 3) | (((small >> 12) & 7) << 6);
}
constexpr int MidCellOf(int small) {
  return ((small >> 1) & 15) | (((small >> 6) & 15) << 4) | (((small >> 11) & 15) << 8);
}
constexpr int BigCellOfMid(int mid) { return ((mid >> 1) & 7) | (((mid >> 5) & 7) << 3) | (((mid >> 9) & 7) << 6); }
constexpr int HugeCellOf(int big) { return ((big >> 1) & 3) | (((big >> 4) & 3) << 2) | (((big >> 7) & 3) << 4); }

inline int Weighted(int dr, int dg, int db) { return 3 * dr * dr + 4 * dg * dg + 2 * db * db; }

// The candidates of the cube [lo, lo + size) on each axis among `from`:
// with `ref` the entry nearest the cube's centre, every entry that is at
// least as near as `ref` somewhere in the cube. d(x, ref) - d(x, e) is linear
// in x (the squares cancel), so its largest value over the cube is at the
// corner each axis's sign picks; entries for which it is negative are beaten
// by `ref` everywhere and can never be the answer. Returns the count.
//
// No branch depends on the colours: the reference is the least distance
// keyed with its place in the list (distances to the doubled centre are at
// most 9 * 510^2, which times 256 plus the place still fits an int), so the
// least names the first of the nearest, and the list is compacted by count.
int FilterCandidates(const uint8_t* rgb, const uint8_t* from, int n, const int lo[3], int size, uint8_t* out) {
  const int twice_centre[3] = {2 * lo[0] + size - 1, 2 * lo[1] + size - 1, 2 * lo[2] + size - 1};
  int least = INT_MAX;
  for (int k = 0; k < n; ++k) {
    const uint8_t* p = rgb + 3 * from[k];
    const int d = Weighted(twice_centre[0] - 2 * p[0], twice_centre[1] - 2 * p[1], twice_centre[2] - 2 * p[2]);
    least = std::min(least, d * 256 + k);
  }
  const uint8_t* q = rgb + 3 * from[least & 0xFF];
  const int qr = q[0], qg = q[1], qb = q[2];
  const int low[3] = {2 * lo[0], 2 * lo[1], 2 * lo[2]};
  const int high[3] = {2 * (lo[0] + size - 1), 2 * (lo[1] + size - 1), 2 * (lo[2] + size - 1)};
  // One axis's share of the largest d(x, ref) - d(x, entry): the weight times
  // (entry - ref) times (2x - ref - entry), at whichever end of the axis is larger.
  auto axis = [](int weight, int p, int q, int twice_low, int twice_high) {
    const int a = weight * (p - q);
    return std::max(a * (twice_low - q - p), a * (twice_high - q - p));
  };
  int count = 0;
  for (int k = 0; k < n; ++k) {
    const uint8_t* p = rgb + 3 * from[k];
    const int most = axis(3, p[0], qr, low[0], high[0]) + axis(4, p[1], qg, low[1], high[1]) +
                     axis(2, p[2], qb, low[2], high[2]);
    out[count] = from[k];
    count += most >= 0;  // `ref` itself gives 0
  }
  return count;
}

// The channels of every entry (zero past the palette's count): the huge
// cells filter the whole palette in fixed-length loops the compiler can
// vectorise, then ignore what lies past the count.
struct Channels {
  int16_t red[256], green[256], blue[256];
};

// FilterCandidates over every entry of `all`.
int FilterAll(const Channels& all, int count, const int lo[3], int size, uint8_t* out) {
  const int twice_centre[3] = {2 * lo[0] + size - 1, 2 * lo[1] + size - 1, 2 * lo[2] + size - 1};
  int value[256];
  for (int i = 0; i < 256; ++i)
    value[i] = Weighted(twice_centre[0] - 2 * all.red[i], twice_centre[1] - 2 * all.green[i],
                        twice_centre[2] - 2 * all.blue[i]);
  int ref = 0;
  for (int i = 1; i < count; ++i) ref = value[i] < value[ref] ? i : ref;
  const int qr = all.red[ref], qg = all.green[ref], qb = all.blue[ref];
  const int low[3] = {2 * lo[0], 2 * lo[1], 2 * lo[2]};
  const int high[3] = {2 * (lo[0] + size - 1), 2 * (lo[1] + size - 1), 2 * (lo[2] + size - 1)};
  for (int i = 0; i < 256; ++i) {
    const int ar = 3 * (all.red[i] - qr), ag = 4 * (all.green[i] - qg), ab = 2 * (all.blue[i] - qb);
    value[i] = std::max(ar * (low[0] - qr - all.red[i]), ar * (high[0] - qr - all.red[i])) +
               std::max(ag * (low[1] - qg - all.green[i]), ag * (high[1] - qg - all.green[i])) +
               std::max(ab * (low[2] - qb - all.blue[i]), ab * (high[2] - qb - all.blue[i]));
  }
  int n = 0;
  for (int i = 0; i < count; ++i) {
    out[n] = static_cast<uint8_t>(i);
    n += value[i] >= 0;
  }
  return n;
}

}  // namespace

struct PaletteMatcher::State {
  uint8_t rgb[kPaletteBytes];
  Channels all;
  // Linear::At of every entry as separate arrays, for whole-palette scans;
  // entries past the count get a level no colour can bring down to a minimum.
  int32_t level[256], red_step[256], green_step[256], blue_step[256];
  uint8_t every[256];  // 0, 1, ... 255: the list of the whole palette
  // Keys are colour + 1 so that the zeroed tables read as empty.
  uint32_t exact_key[kExactSlots];
  uint8_t exact_index[kExactSlots];
  uint32_t memo_key[kMemoSlots];
  uint8_t memo_index[kMemoSlots];
  // Pool offsets of the huge, big and mid cells' lists, + 1; 0 until built.
  uint32_t huge_list[kHugeCells];
  uint32_t big_list[kBigCells];
  uint32_t mid_list[kMidCells];
};

bool PaletteMatcher::Init(const uint8_t* rgb, int count, bool with_lookup) {
  m_state = AllocBuffer<State>(1);
  m_linear = AllocBuffer<Linear>(256);
  m_cell = AllocBuffer<uint64_t>(kSmallCells);
  m_pool = AllocBuffer<uint8_t>(kPoolStart);
  if (with_lookup) m_lookup = AllocBuffer<uint16_t>(kLookupEntries);
  if (!m_state || !m_linear || !m_cell || !m_pool || (with_lookup && !m_lookup)) return false;
  m_pool_capacity = kPoolStart;
  m_pool_used = 0;
  m_count = std::clamp(count, 0, 256);
  State& s = m_state[0];
  std::memcpy(s.rgb, rgb, static_cast<size_t>(m_count) * 3);
  for (int i = 0; i < 256; ++i) {
    s.every[i] = static_cast<uint8_t>(i);
    s.level[i] = kUnused;
  }
  for (int i = 0; i < m_count; ++i) {
    const int r = s.rgb[3 * i], g = s.rgb[3 * i + 1], b = s.rgb[3 * i + 2];
    s.all.red[i] = static_cast<int16_t>(r);
    s.all.green[i] = static_cast<int16_t>(g);
    s.all.blue[i] = static_cast<int16_t>(b);
    const int level = 3 * r * r + 4 * g * g + 2 * b * b;
    const uint32_t entry = static_cast<uint32_t>(i) << 24 | Pack(r, g, b);
    m_linear[i] = {static_cast<int64_t>(level) * (int64_t{1} << 32) + entry, int64_t{6 * r} << 32, int64_t{8 * g} << 32,
                   int64_t{4 * b} << 32};
    s.level[i] = level, s.red_step[i] = 6 * r, s.green_step[i] = 8 * g, s.blue_step[i] = 4 * b;
    uint32_t key = Pack(r, g, b) + 1;
    uint32_t slot = Hash(key - 1, 10);
    while (s.exact_key[slot] != 0 && s.exact_key[slot] != key) slot = (slot + 1) % kExactSlots;
    if (s.exact_key[slot] == 0) {  // a repeated colour keeps its first index
      s.exact_key[slot] = key;
      s.exact_index[slot] = static_cast<uint8_t>(i);
    }
  }
  return true;
}

int PaletteMatcher::Exact(int r, int g, int b) const {
  const State& s = m_state[0];
  uint32_t key = Pack(r, g, b) + 1;
  for (uint32_t slot = Hash(key - 1, 10);; slot = (slot + 1) % kExactSlots) {
    if (s.exact_key[slot] == key) return s.exact_index[slot];
    if (s.exact_key[slot] == 0) return -1;
  }
}

int PaletteMatcher::NearestSlow(int r, int g, int b, bool memo) {
  if (m_count <= 0) return 0;
  if (!memo) return Search(r, g, b);
  State& s = m_state[0];
  uint32_t colour = Pack(r, g, b);
  uint32_t slot = Hash(colour, kMemoBits);
  if (s.memo_key[slot] == colour + 1) return s.memo_index[slot];
  int index = m_cell[LookupKey(r, g, b)] == 0 && m_whole_scans++ < kWholeScans ? ScanWhole(r, g, b) : Search(r, g, b);
  s.memo_key[slot] = colour + 1;
  s.memo_index[slot] = static_cast<uint8_t>(index);
  return index;
}

int PaletteMatcher::Lookup(int key) {
  if (m_count <= 0) return 0;
  uint16_t& entry = m_lookup[key];
  if (entry == 0) entry = static_cast<uint16_t>(1 + Search((key % 32) * 8, ((key / 32) % 32) * 8, (key / 1024) * 8));
  return entry - 1;
}

int PaletteMatcher::Search(int r, int g, int b) {
  const int small = LookupKey(r, g, b);
  uint64_t cell = m_cell[small];
  if (cell == 0) cell = BuildCell(small);
  if (cell & kFew) return Nearer(cell, r, g, b);
  if (cell & kMany) return Scan(ListAt(static_cast<uint32_t>(cell)), r, g, b);
  return Scan(MidList(MidCellOf(small)), r, g, b);  // the pool could not grow
}

// Keys order the entries as their distances and then by index, so the least
// is the first of the nearest; no branch on the comparisons.
int PaletteMatcher::Scan(List list, int r, int g, int b) const {
  int64_t least = INT64_MAX;
  for (int k = 0; k < list.count; ++k) least = std::min(least, m_linear[list.entries[k]].Key(r, g, b));
  return static_cast<int>(EntryOf(least) & 0xFF);
}

// The whole palette in a fixed-length loop the compiler can vectorise. Each
// value goes with its index in the low byte (values fit 22 bits with their
// sign), so the least combined value names the first of the nearest.
int PaletteMatcher::ScanWhole(int r, int g, int b) const {
  const State& s = m_state[0];
  int keyed[256];
  for (int i = 0; i < 256; ++i)
    keyed[i] = (s.level[i] - s.red_step[i] * r - s.green_step[i] * g - s.blue_step[i] * b) * 256 + i;
  int least[4] = {keyed[0], keyed[1], keyed[2], keyed[3]};
  for (int i = 4; i < 256; i += 4)
    for (int k = 0; k < 4; ++k) least[k] = std::min(least[k], keyed[i + k]);
  return std::min(std::min(least[0], least[1]), std::min(least[2], least[3])) & 0xFF;
}

PaletteMatcher::List PaletteMatcher::ListAt(uint32_t offset) const {
  return {m_pool.get() + offset + 1, m_pool[offset] + 1};
}

bool PaletteMatcher::Reserve(size_t bytes) {
  if (m_pool_used + bytes <= m_pool_capacity) return true;
  // No list is longer than 256 entries, so one doubling always makes room.
  Buffer<uint8_t> bigger = AllocBuffer<uint8_t>(2 * m_pool_capacity);
  if (!bigger) return false;
  std::memcpy(bigger.get(), m_pool.get(), m_pool_used);
  m_pool = std::move(bigger);
  m_pool_capacity *= 2;
  return true;
}

// The lists of huge and big cells. When the pool cannot grow, a cell answers
// with the list it would have been built from, which is just as exact.
PaletteMatcher::List PaletteMatcher::HugeList(int huge) {
  State& s = m_state[0];
  if (s.huge_list[huge] != 0) return ListAt(s.huge_list[huge] - 1);
  if (!Reserve(static_cast<size_t>(m_count) + 1)) return {s.every, m_count};
  const int lo[3] = {(huge & 3) * 64, ((huge >> 2) & 3) * 64, ((huge >> 4) & 3) * 64};
  uint8_t* out = m_pool.get() + m_pool_used;
  const int count = FilterAll(s.all, m_count, lo, 64, out + 1);
  out[0] = static_cast<uint8_t>(count - 1);
  s.huge_list[huge] = static_cast<uint32_t>(m_pool_used + 1);
  m_pool_used += static_cast<size_t>(count) + 1;
  return ListAt(s.huge_list[huge] - 1);
}

PaletteMatcher::List PaletteMatcher::BigList(int big) {
  State& s = m_state[0];
  if (s.big_list[big] != 0) return ListAt(s.big_list[big] - 1);
  List from = HugeList(HugeCellOf(big));
  if (!Reserve(static_cast<size_t>(from.count) + 1)) return from;
  from = HugeList(HugeCellOf(big));  // the pool may have moved
  const int lo[3] = {(big & 7) * 32, ((big >> 3) & 7) * 32, ((big >> 6) & 7) * 32};
  uint8_t* out = m_pool.get() + m_pool_used;
  const int count = FilterCandidates(s.rgb, from.entries, from.count, lo, 32, out + 1);
  out[0] = static_cast<uint8_t>(count - 1);
  s.big_list[big] = static_cast<uint32_t>(m_pool_used + 1);
  m_pool_used += static_cast<size_t>(count) + 1;
  return ListAt(s.big_list[big] - 1);
}

PaletteMatcher::List PaletteMatcher::MidList(int mid) {
  State& s = m_state[0];
  if (s.mid_list[mid] != 0) return ListAt(s.mid_list[mid] - 1);
  List from = BigList(BigCellOfMid(mid));
  if (!Reserve(static_cast<size_t>(from.count) + 1)) return from;
  from = BigList(BigCellOfMid(mid));  // the pool may have moved
  const int lo[3] = {(mid & 15) * 16, ((mid >> 4) & 15) * 16, ((mid >> 8) & 15) * 16};
  uint8_t* out = m_pool.get() + m_pool_used;
  const int count = FilterCandidates(s.rgb, from.entries, from.count, lo, 16, out + 1);
  out[0] = static_cast<uint8_t>(count - 1);
  s.mid_list[mid] = static_cast<uint32_t>(m_pool_used + 1);
  m_pool_used += static_cast<size_t>(count) + 1;
  return ListAt(s.mid_list[mid] - 1);
}

// A short list of a bigger cell fits the word of every small cell in it as it
// is (a list may hold more than the candidates, never fewer): the span^3
// small cells of the aligned cube around `small` that are still unknown take
// it at once, which spares each a search and a filter.
uint64_t PaletteMatcher::ShareList(int small, int span, List list) {
  const uint64_t word = FewWord(list.entries, list.count);
  const int mask = 31 & ~(span - 1);
  const int r0 = small & mask, g0 = (small >> 5) & mask, b0 = (small >> 10) & mask;
  for (int b = b0; b < b0 + span; ++b)
    for (int g = g0; g < g0 + span; ++g)
      for (int r = r0; r < r0 + span; ++r) {
        uint64_t& cell = m_cell[r | g << 5 | b << 10];
        if (cell == 0) cell = word;
      }
  return word;
}

// Settles a small cell; 0 when the pool cannot grow (the cell stays unknown).
uint64_t PaletteMatcher::BuildCell(int small) {
  const List big = BigList(BigCellOf(small));
  if (big.count <= 4) return ShareList(small, 4, big);
  List from = MidList(MidCellOf(small));
  if (from.count <= 4) return ShareList(small, 2, from);
  if (!Reserve(static_cast<size_t>(from.count) + 1)) return 0;
  from = MidList(MidCellOf(small));  // the pool may have moved
  const int lo[3] = {(small & 31) * 8, ((small >> 5) & 31) * 8, ((small >> 10) & 31) * 8};
  uint8_t* out = m_pool.get() + m_pool_used;
  const int count = FilterCandidates(m_state[0].rgb, from.entries, from.count, lo, 8, out + 1);
  if (count <= 4) {  // kept in the cell's word; the pool space is not taken
    m_cell[small] = FewWord(out + 1, count);
  } else {
    out[0] = static_cast<uint8_t>(count - 1);
    m_cell[small] = kMany | m_pool_used;
    m_pool_used += static_cast<size_t>(count) + 1;
  }
  return m_cell[small];
}

}  // namespace tess
