// Fast answers to the colour searches of output/palette.h for one palette:
// every answer equals NearestColour, ExactColour or the lookup entry of
// BuildColourLookup for the same palette and count, ties included. The remap
// and dither loops ask one of these per pixel; a build makes one matcher and
// passes every frame through it, so what it learns is learnt once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/alloc.h"
#include "output/palette.h"

namespace tess {

class PaletteMatcher {
 public:
  // Copies the first min(count, 256) entries; `with_lookup` prepares the
  // FastRemap lookup. False when memory is short.
  bool Init(const uint8_t* rgb, int count, bool with_lookup = false);

  // == NearestColour(r, g, b, rgb, count). Inline for the per-pixel loops:
  // in most cells of the lookup grid at most three entries can be nearest,
  // and those are settled by one table read and three sums.
  int Nearest(int r, int g, int b) {
    const uint32_t cell = m_cell[LookupKey(r, g, b)];
    return (cell & kFew) ? Nearer(cell, r, g, b) : NearestSlow(r, g, b, true);
  }
  // The same without the per-colour memo, for colours that seldom repeat
  // (dithered ones), where remembering costs more than it saves.
  int NearestUnmemoised(int r, int g, int b) {
    const uint32_t cell = m_cell[LookupKey(r, g, b)];
    return (cell & kFew) ? Nearer(cell, r, g, b) : NearestSlow(r, g, b, false);
  }
  // NearestUnmemoised with the entry's own colour: index | red << 8 |
  // green << 16 | blue << 24. The dither needs both, and taking the colour
  // from the candidates it has just compared saves a dependent load.
  uint32_t NearestEntryUnmemoised(int r, int g, int b) {
    const uint32_t cell = m_cell[LookupKey(r, g, b)];
    if (cell & kFew) return NearerEntry(cell, r, g, b);
    return m_linear[NearestSlow(r, g, b, false)].entry;
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
  // Each entry also carries itself, packed as NearestEntryUnmemoised gives it.
  struct Linear {
    int32_t level;
    int16_t red_step, green_step, blue_step;
    uint32_t entry;
    int At(int r, int g, int b) const { return level - red_step * r - green_step * g - blue_step * b; }
  };
  // m_cell values: 0 while unknown; kFew with the only candidates in bytes
  // 0, 1 and 2, in palette order (repeated when there are fewer than three);
  // or kMany with the pool offset of a longer list.
  static constexpr uint32_t kFew = 1u << 30;
  static constexpr uint32_t kMany = 1u << 31;
  int Nearer(uint32_t cell, int r, int g, int b) const { return NearerEntry(cell, r, g, b) & 0xFF; }
  uint32_t NearerEntry(uint32_t cell, int r, int g, int b) const {
    // Strict-less comparisons: the lower index keeps a tie.
    const Linear& a = m_linear[cell & 0xFF];
    const Linear& b2 = m_linear[(cell >> 8) & 0xFF];
    const Linear& c = m_linear[(cell >> 16) & 0xFF];
    const int va = a.At(r, g, b), vb = b2.At(r, g, b), vc = c.At(r, g, b);
    const uint32_t ab = vb < va ? b2.entry : a.entry;
    const int vab = vb < va ? vb : va;
    return vc < vab ? c.entry : ab;
  }
  int NearestSlow(int r, int g, int b, bool memo);
  int Search(int r, int g, int b);
  int Scan(List list, int r, int g, int b) const;
  int ScanWhole(int r, int g, int b) const;
  List ListAt(uint32_t offset) const;
  List HugeList(int huge);
  List BigList(int big);
  uint32_t BuildCell(int small);
  bool Reserve(size_t bytes);

  Buffer<State> m_state;
  Buffer<Linear> m_linear;
  // Per cell of the lookup grid (32 values per axis): who can be nearest.
  Buffer<uint32_t> m_cell;
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
