// PaletteMatcher: the plain searches of palette.cpp, made fast in three ways
// that cannot change an answer.
//  - Exact matches come from a small hash table holding the first index of
//    every palette colour, which is what a first-to-last scan finds.
//  - Nearest answers are memoised per 24-bit colour: NearestColour is a pure
//    function of the colour once the palette is fixed, so a remembered answer
//    is the answer. The memo is direct-mapped; a collision only costs a search.
//  - A search scans only the candidates of the colour's cell (a 32-value cube
//    of colour space): the entries whose smallest possible distance to any
//    point of the cell is no larger than the smallest worst-case distance of
//    any entry. Every entry that can be nearest for some point of the cell,
//    ties included, is a candidate, and candidates keep palette order, so the
//    strict-less scan still returns the lowest index of the nearest entries.
//    An exact match has distance 0, the least possible, so the same scan also
//    returns the first exact match when there is one.
#include "output/palette_match.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "output/image.h"

namespace tess {
namespace {

constexpr int kExactSlots = 1024;  // 4x the palette: probe chains stay short
constexpr int kMemoBits = 13;
constexpr int kMemoSlots = 1 << kMemoBits;
constexpr int kCellShift = 5;
constexpr int kCellsPerAxis = 256 >> kCellShift;
constexpr int kCells = kCellsPerAxis * kCellsPerAxis * kCellsPerAxis;

constexpr uint32_t Pack(int r, int g, int b) {
  return static_cast<uint32_t>(r) | (static_cast<uint32_t>(g) << 8) | (static_cast<uint32_t>(b) << 16);
}

// Fibonacci hashing spreads neighbouring colours over the table.
constexpr uint32_t Hash(uint32_t colour, int bits) { return (colour * 0x9E3779B1u) >> (32 - bits); }

constexpr int CellOf(int r, int g, int b) {
  return (r >> kCellShift) | ((g >> kCellShift) << 3) | ((b >> kCellShift) << 6);
}

// Distance of a channel value to the nearest and farthest value of [lo, hi].
inline int AxisMin(int v, int lo, int hi) { return v < lo ? lo - v : v > hi ? v - hi : 0; }
inline int AxisMax(int v, int lo, int hi) { return std::max(v - lo, hi - v); }

}  // namespace

static_assert(kCellsPerAxis == 8, "CellOf packs three bits per axis");

struct PaletteMatcher::State {
  uint8_t rgb[kPaletteBytes];
  // Keys are colour + 1 so that the zeroed table reads as empty.
  uint32_t exact_key[kExactSlots];
  uint8_t exact_index[kExactSlots];
  uint32_t memo_key[kMemoSlots];
  uint8_t memo_index[kMemoSlots];
  // Lookup entries as index + 1; 0 until first asked for.
  uint16_t lookup[kLookupEntries];
  // Candidate lists, built on first use: offset into `pool` + 1, and length.
  uint32_t cell_start[kCells];
  uint16_t cell_count[kCells];
  uint32_t pool_used;
  uint8_t pool[kCells * 256];
};

bool PaletteMatcher::Init(const uint8_t* rgb, int count) {
  m_state = AllocBuffer<State>(1);
  if (!m_state) return false;
  m_count = std::clamp(count, 0, 256);
  State& s = m_state[0];
  std::memcpy(s.rgb, rgb, static_cast<size_t>(m_count) * 3);
  for (int i = 0; i < m_count; ++i) {
    uint32_t key = Pack(s.rgb[3 * i], s.rgb[3 * i + 1], s.rgb[3 * i + 2]) + 1;
    uint32_t slot = Hash(key - 1, 10);
    while (s.exact_key[slot] != 0 && s.exact_key[slot] != key) slot = (slot + 1) % kExactSlots;
    if (s.exact_key[slot] == 0) {  // a repeated colour keeps its first index
      s.exact_key[slot] = key;
      s.exact_index[slot] = static_cast<uint8_t>(i);
    }
  }
  return true;
}

const uint8_t* PaletteMatcher::rgb() const { return m_state[0].rgb; }

int PaletteMatcher::Exact(int r, int g, int b) const {
  const State& s = m_state[0];
  uint32_t key = Pack(r, g, b) + 1;
  for (uint32_t slot = Hash(key - 1, 10);; slot = (slot + 1) % kExactSlots) {
    if (s.exact_key[slot] == key) return s.exact_index[slot];
    if (s.exact_key[slot] == 0) return -1;
  }
}

int PaletteMatcher::Nearest(int r, int g, int b) {
  if (m_count <= 0) return 0;
  State& s = m_state[0];
  uint32_t colour = Pack(r, g, b);
  uint32_t slot = Hash(colour, kMemoBits);
  if (s.memo_key[slot] == colour + 1) return s.memo_index[slot];
  int index = Search(r, g, b);
  s.memo_key[slot] = colour + 1;
  s.memo_index[slot] = static_cast<uint8_t>(index);
  return index;
}

int PaletteMatcher::Lookup(int key) {
  if (m_count <= 0) return 0;
  uint16_t& entry = m_state[0].lookup[key];
  if (entry == 0) entry = static_cast<uint16_t>(1 + Search((key % 32) * 8, ((key / 32) % 32) * 8, (key / 1024) * 8));
  return entry - 1;
}

int PaletteMatcher::Search(int r, int g, int b) {
  int n = 0;
  const uint8_t* candidates = Candidates(CellOf(r, g, b), &n);
  const uint8_t* rgb = m_state[0].rgb;
  int best = INT_MAX;
  int best_index = 0;
  for (int k = 0; k < n; ++k) {
    int i = candidates[k];
    const uint8_t* p = rgb + 3 * i;
    int dr = r - p[0], dg = g - p[1], db = b - p[2];
    int d = 3 * dr * dr;
    if (d >= best) continue;  // the other terms only add
    d += 4 * dg * dg + 2 * db * db;
    if (d < best) {
      best = d;
      best_index = i;
      if (d == 0) break;
    }
  }
  return best_index;
}

const uint8_t* PaletteMatcher::Candidates(int cell, int* n) {
  State& s = m_state[0];
  if (s.cell_start[cell] == 0) {
    const int lo[3] = {(cell & 7) << kCellShift, ((cell >> 3) & 7) << kCellShift,
                       ((cell >> 6) & 7) << kCellShift};
    const int hi[3] = {lo[0] + (1 << kCellShift) - 1, lo[1] + (1 << kCellShift) - 1,
                       lo[2] + (1 << kCellShift) - 1};
    auto weighted = [](int dr, int dg, int db) { return 3 * dr * dr + 4 * dg * dg + 2 * db * db; };
    int bound = INT_MAX;
    for (int i = 0; i < m_count; ++i) {
      const uint8_t* p = s.rgb + 3 * i;
      bound = std::min(bound, weighted(AxisMax(p[0], lo[0], hi[0]), AxisMax(p[1], lo[1], hi[1]),
                                       AxisMax(p[2], lo[2], hi[2])));
    }
    uint8_t* out = s.pool + s.pool_used;
    int count = 0;
    for (int i = 0; i < m_count; ++i) {
      const uint8_t* p = s.rgb + 3 * i;
      if (weighted(AxisMin(p[0], lo[0], hi[0]), AxisMin(p[1], lo[1], hi[1]),
                   AxisMin(p[2], lo[2], hi[2])) <= bound)
        out[count++] = static_cast<uint8_t>(i);
    }
    s.cell_start[cell] = s.pool_used + 1;
    s.cell_count[cell] = static_cast<uint16_t>(count);
    s.pool_used += static_cast<uint32_t>(count);
  }
  *n = s.cell_count[cell];
  return s.pool + (s.cell_start[cell] - 1);
}

}  // namespace tess
