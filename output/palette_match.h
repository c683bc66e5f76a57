// Fast answers to the colour searches of output/palette.h for one palette:
// every answer equals NearestColour, ExactColour or the lookup entry of
// BuildColourLookup for the same palette and count, ties included. The remap
// and dither loops ask one of these per pixel; a build makes one matcher and
// passes every frame through it, so what it learns is learnt once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/alloc.h"
#include "output/palette.h"

// The per-pixel searches are small and called from a few hot loops that need
// them inline to overlap their work; compilers otherwise give up past a few
// call sites.
#ifndef TESS_ALWAYS_INLINE
#if defined(__GNUC__)
#define TESS_ALWAYS_INLINE __attribute__((always_inline))
#else
#define TESS_ALWAYS_INLINE
#endif
#endif

namespace tess {

class PaletteMatcher {
 public:
  // Copies the first min(count, 256) entries; `with_lookup` prepares the
  // FastRemap lookup. False when memory is short.
  bool Init(const uint8_t* rgb, int count, bool with_lookup = false);

  // == NearestColour(r, g, b, rgb, count). Inline for the per-pixel loops:
  // in most cells of the lookup grid at most four entries can be nearest,
  // and those are settled by one table read and four sums.
  int Nearest(int r, int g, int b) {
    const uint64_t cell = m_cell[LookupKey(r, g, b)];
    return (cell & kFew) ? Nearer(cell, r, g, b) : NearestSlow(r, g, b, true);
  }
  // The same without the per-colour memo, for colours that seldom repeat
  // (dithered ones), where remembering costs more than it saves.
  int NearestUnmemoised(int r, int g, int b) {
    const uint64_t cell = m_cell[LookupKey(r, g, b)];
    return (cell & kFew) ? Nearer(cell, r, g, b) : NearestSlow(r, g, b, false);
  }
  // NearestUnmemoised with the entry's own colour: index | red << 8 |
  // green << 16 | blue << 24. The dither needs both, and taking the colour
  // from the candidates it has just compared saves a dependent load.
  TESS_ALWAYS_INLINE uint32_t NearestEntryUnmemoised(int r, int g, int b) {
    const uint64_t cell = m_cell[LookupKey(r, g, b)];
    if (cell & kFew) return NearerEntry(cell, r, g, b);
    return m_linear[NearestSlow(r, g, b, false)].entry();
  }
  // == ExactColour(r, g, b, rgb, count).
  int Exact(int r, int g, int b) const;
  // == entry `key` of BuildColourLookup(rgb, count, ...). Needs `with_lookup`.
  int Lookup(int key);
  // What FastRemap picks: the exact entry when there is one, else the lookup
  // entry of the colour's 15-bit grid point. Needs `with_lookup`.
  int Fast(int r, int g, int b) {
    int exact = Exact(r, g, b);
    return exact >= 0 ? exact : Lookup(LookupKey(r, g, b));
  }

 private:
  struct State;
  struct List {
    const uint8_t* entries;
    int count;
  };
  // 3dr² + 4dg² + 2db² less 3r² + 4g² + 2b², which every entry shares: a
  // linear function of the colour that orders entries as their distances do.
  // It is kept in the high half of a 64-bit key whose low half is the entry
  // itself, index in the top byte and red, green, blue below: keys order as
  // distances do and then, for a tie, by index, so the least key is the entry
  // NearestColour picks, and the compiler can pick it with conditional moves
  // rather than unpredictable branches. The value fits 21 bits with its sign.
  struct Linear {
    int64_t level;  // (3r² + 4g² + 2b²) << 32 | entry
    int64_t red_step, green_step, blue_step;  // 6r, 8g, 4b, << 32
    int64_t Key(int r, int g, int b) const { return level - red_step * r - green_step * g - blue_step * b; }
    int At(int r, int g, int b) const { return static_cast<int>(Key(r, g, b) >> 32); }
    // index | red << 8 | green << 16 | blue << 24, as NearestEntryUnmemoised gives it.
    uint32_t entry() const { return EntryOf(level); }
  };
  static uint32_t EntryOf(int64_t key) {
    const uint32_t low = static_cast<uint32_t>(key);
    return low >> 24 | low << 8;
  }
  // m_cell values: 0 while unknown; kFew with the only candidates in 16-bit
  // lanes 0 to 3 (repeated when there are fewer than four), each as its byte
  // offset in m_linear, which saves the per-pixel loop a shift and an add for
  // each; or kMany with the pool offset of a longer list.
  static constexpr uint64_t kFew = uint64_t{1} << 62;
  static constexpr uint64_t kMany = uint64_t{1} << 63;
  static constexpr int kLinearShift = 5;  // sizeof(Linear) == 1 << kLinearShift
  static constexpr uint64_t kOffsetMask = uint64_t{0xFF} << kLinearShift;
  static_assert(sizeof(Linear) == 1 << kLinearShift);
  // The word of a cell whose list (1 to 4 entries) is `list`.
  static uint64_t FewWord(const uint8_t* list, int count) {
    uint64_t word = kFew;
    for (int lane = 0; lane < 4; ++lane)
      word |= static_cast<uint64_t>(list[std::min(lane, count - 1)]) << (kLinearShift + 16 * lane);
    return word;
  }
  const Linear& Candidate(uint64_t cell, int lane) const {
    return *reinterpret_cast<const Linear*>(reinterpret_cast<const char*>(m_linear.get()) +
                                            ((cell >> (16 * lane)) & kOffsetMask));
  }
  int Nearer(uint64_t cell, int r, int g, int b) const { return NearerEntry(cell, r, g, b) & 0xFF; }
  TESS_ALWAYS_INLINE uint32_t NearerEntry(uint64_t cell, int r, int g, int b) const {
    const int64_t k0 = Candidate(cell, 0).Key(r, g, b);
    const int64_t k1 = Candidate(cell, 1).Key(r, g, b);
    const int64_t k2 = Candidate(cell, 2).Key(r, g, b);
    const int64_t k3 = Candidate(cell, 3).Key(r, g, b);
    return EntryOf(std::min(std::min(k0, k1), std::min(k2, k3)));
  }
  int NearestSlow(int r, int g, int b, bool memo);
  int Search(int r, int g, int b);
  int Scan(List list, int r, int g, int b) const;
  int ScanWhole(int r, int g, int b) const;
  List ListAt(uint32_t offset) const;
  List HugeList(int huge);
  List BigList(int big);
  List MidList(int mid);
  uint64_t ShareList(int small, int span, List list);
  uint64_t BuildCell(int small);
  bool Reserve(size_t bytes);

  Buffer<State> m_state;
  Buffer<Linear> m_linear;
  // Per cell of the lookup grid (32 values per axis): who can be nearest.
  Buffer<uint64_t> m_cell;
  // Lookup entries as index + 1; 0 until first asked for.
  Buffer<uint16_t> m_lookup;
  // Candidate lists, each a byte holding its length - 1 and then the
  // entries; it grows as cells are first used, so lists are kept by offset.
  Buffer<uint8_t> m_pool;
  size_t m_pool_capacity = 0;
  size_t m_pool_used = 0;
  long m_whole_scans = 0;
  int m_count = 0;
};

}  // namespace tess
