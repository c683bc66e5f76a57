// Fixed output palettes, the palette resource format and the colour searches
// every remap is built on. Palettes are 768-byte RGB buffers (256 red, green,
// blue triples); entries past a palette's length are zero. The searches pick
// the lowest index on ties, so every fast path must reproduce that order.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/byte_sink.h"

namespace tess {

// The palette choices of the main dialog's "Palette" box, in list order.
enum PaletteChoice : int {
  kPaletteBlackWhite = 0,   // "Black and white"
  kPaletteWindows16 = 1,    // "Sixteen-color Windows"
  kPaletteOrtho32 = 2,      // "32-color orthogonal"
  kPaletteOrtho64 = 3,      // "64-color orthogonal"
  kPaletteOrtho128 = 4,     // "128-color orthogonal"
  kPaletteSafe216 = 5,      // "216-color safe"
  kPaletteOrtho256 = 6,     // "256-color orthogonal"
  kPaletteWithGray256 = 7,  // "256-color with gray"
  kPaletteGray256 = 8,      // "256 gray levels"
};
constexpr int kPaletteChoices = 9;

// Clears the 768 bytes of `rgb` (when given), fills the chosen palette and
// reports its output bit count (when asked). Returns the entry count. Choices
// outside 0..8 build "256-color orthogonal".
int BuildFixedPalette(uint8_t* rgb, int* bits, int choice);

// The colour bytes of the two palette resources, 768 bytes each.
const uint8_t* Palette216Colours();
const uint8_t* Palette256GColours();

// Palette resource block (853 bytes, little-endian):
//   0   8    magic "BRNDRSRC"
//   8   65   description, zero padded
//   73  2    1 (16-bit)
//   75  4    chunk tag "CMAP"
//   79  4    1 (32-bit)
//   83  2    768: length of the colour data
//   85  768  256 red, green, blue triples
constexpr size_t kPaletteResourceSize = 853;
constexpr size_t kPaletteResourceColours = 85;

// Writes the block with the description "256 colour palette".
bool WritePaletteResource(ByteSink& sink, const uint8_t* rgb);

// Copies the 768 colour bytes into `rgb`. False, with `rgb` untouched, when
// the block is short or its magic, chunk tag or colour length is wrong.
bool ParsePaletteResource(const uint8_t* data, size_t size, uint8_t* rgb);

// The entry matching all three channels exactly, else the one with the
// smallest 3dr² + 4dg² + 2db²; the lowest index wins every tie. 0 when
// `count` <= 0. Only the first min(count, 256) entries are searched.
int NearestColour(int r, int g, int b, const uint8_t* rgb, int count);

// The first entry equal in all three channels, or -1.
int ExactColour(int r, int g, int b, const uint8_t* rgb, int count);

// The 15-bit colour grid the fast remap looks up: entry i stands for red
// (i % 32) * 8, green ((i / 32) % 32) * 8, blue (i / 1024) * 8.
constexpr int kLookupEntries = 32768;
constexpr int LookupKey(int r, int g, int b) { return (r >> 3) | ((g >> 3) << 5) | ((b >> 3) << 10); }

// Fills all 32768 entries with the nearest colour of each grid point.
void BuildColourLookup(const uint8_t* rgb, int count, uint8_t* lookup);

}  // namespace tess
