// Fast, memoised answers to the colour searches of output/palette.h for one
// palette: every answer equals NearestColour, ExactColour or the lookup entry
// of BuildColourLookup for the same palette and count, ties included. The
// remap and dither loops ask one of these per pixel.
#pragma once

#include <cstdint>

#include "base/alloc.h"
#include "output/palette.h"

namespace tess {

class PaletteMatcher {
 public:
  // Copies the first min(count, 256) entries. False when memory is short.
  bool Init(const uint8_t* rgb, int count);

  // == NearestColour(r, g, b, rgb, count).
  int Nearest(int r, int g, int b);
  // == ExactColour(r, g, b, rgb, count).
  int Exact(int r, int g, int b) const;
  // == entry `key` of BuildColourLookup(rgb, count, ...).
  int Lookup(int key);
  // What FastRemap picks: the exact entry when there is one, else the lookup
  // entry of the colour's 15-bit grid point.
  int Fast(int r, int g, int b) {
    int exact = Exact(r, g, b);
    return exact >= 0 ? exact : Lookup(LookupKey(r, g, b));
  }

  const uint8_t* rgb() const;
  int count() const { return m_count; }

 private:
  struct State;
  int Search(int r, int g, int b);
  const uint8_t* Candidates(int cell, int* n);

  Buffer<State> m_state;
  int m_count = 0;
};

}  // namespace tess
