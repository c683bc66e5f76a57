// Fixed palettes, the palette resource block and the plain colour searches.
// The searches here are the reference behaviour; PaletteMatcher answers the
// same questions faster and is tested against them.
#include "output/palette.h"

#include <array>
#include <cstring>

#include "base/bytes.h"
#include "image/image.h"

namespace tess {
namespace {

constexpr uint8_t kL2[2] = {0, 255};
constexpr uint8_t kL4[4] = {0, 85, 170, 255};
// Steps of 36, but the top level is full white rather than 252.
constexpr uint8_t kL8[8] = {0, 36, 72, 108, 144, 180, 216, 255};

constexpr uint8_t kWindows16[16][3] = {
    {0, 0, 0},       {128, 0, 0},   {0, 128, 0},   {128, 128, 0},
    {0, 0, 128},     {128, 0, 128}, {0, 128, 128}, {128, 128, 128},
    {192, 192, 192}, {255, 0, 0},   {0, 255, 0},   {255, 255, 0},
    {0, 0, 255},     {255, 0, 255}, {0, 255, 255}, {255, 255, 255},
};

using PaletteBytes = std::array<uint8_t, kPaletteBytes>;

// PALETTE216: the 6x6x6 cube with green varying slowest and blue fastest,
// then 40 black entries.
constexpr PaletteBytes MakePalette216() {
  PaletteBytes p{};
  for (int g = 0; g < 6; ++g)
    for (int r = 0; r < 6; ++r)
      for (int b = 0; b < 6; ++b) {
        int i = 36 * g + 6 * r + b;
        p[3 * i + 0] = static_cast<uint8_t>(51 * r);
        p[3 * i + 1] = static_cast<uint8_t>(51 * g);
        p[3 * i + 2] = static_cast<uint8_t>(51 * b);
      }
  return p;
}

// PALETTE256G as 0xRRGGBB: a colour grid whose entries 112-143 are a run of
// 32 grays.
constexpr uint32_t kPalette256G[256] = {
    // 0-15
    0x000000, 0x000055, 0x0000AA, 0x0000FF, 0x002400, 0x002455, 0x0024AA, 0x0024FF,
    0x004900, 0x004955, 0x0049AA, 0x0049FF, 0x006D00, 0x006D55, 0x006DAA, 0x006DFF,
    // 16-31
    0x009200, 0x009255, 0x0092AA, 0x0092FF, 0x00B600, 0x00B655, 0x00B6AA, 0x00B6FF,
    0x00DB00, 0x00DB55, 0x00DBAA, 0x00DBFF, 0x00FF00, 0x00FF55, 0x00FFAA, 0x00FFFF,
    // 32-47
    0x2B0000, 0x2B0055, 0x2B00AA, 0x2B00FF, 0x2B2400, 0x2B2455, 0x2B24AA, 0x2B24FF,
    0x2B4900, 0x2B4955, 0x2B49AA, 0x2B49FF, 0x2B6D00, 0x2B6D55, 0x2B6DAA, 0x2B6DFF,
    // 48-63
    0x2B9200, 0x2B9255, 0x2B92AA, 0x2B92FF, 0x2BB600, 0x2BB655, 0x2BB6AA, 0x2BB6FF,
    0x2BDB00, 0x2BDB55, 0x2BDBAA, 0x2BDBFF, 0x2BFF00, 0x2BFF55, 0x2BFFAA, 0x2BFFFF,
    // 64-79
    0x550000, 0x550055, 0x5500AA, 0x5500FF, 0x552400, 0x552455, 0x5524AA, 0x5524FF,
    0x554900, 0x554955, 0x5549AA, 0x5549FF, 0x556D00, 0x556D55, 0x556DAA, 0x556DFF,
    // 80-95
    0x559200, 0x559255, 0x5592AA, 0x5592FF, 0x55B600, 0x55B655, 0x55B6AA, 0x55B6FF,
    0x55DB00, 0x55DB55, 0x55DBAA, 0x55DBFF, 0x55FF00, 0x55FF55, 0x55FFAA, 0x55FFFF,
    // 96-111
    0x800000, 0x800055, 0x8000AA, 0x8000FF, 0x802400, 0x802455, 0x8024AA, 0x8024FF,
    0x804900, 0x804955, 0x8049AA, 0x8049FF, 0x806D00, 0x806D55, 0x806DAA, 0x806DFF,
    // 112-127
    0x010101, 0x080808, 0x101010, 0x181818, 0x202020, 0x292929, 0x313131, 0x393939,
    0x414141, 0x4A4A4A, 0x525252, 0x5A5A5A, 0x626262, 0x6A6A6A, 0x737373, 0x7B7B7B,
    // 128-143
    0x838383, 0x8B8B8B, 0x949494, 0x9C9C9C, 0xA4A4A4, 0xACACAC, 0xB4B4B4, 0xBDBDBD,
    0xC5C5C5, 0xCDCDCD, 0xD5D5D5, 0xDEDEDE, 0xE6E6E6, 0xEEEEEE, 0xF6F6F6, 0xFEFEFE,
    // 144-159
    0x809200, 0x809255, 0x8092AA, 0x8092FF, 0x80B600, 0x80B655, 0x80B6AA, 0x80B6FF,
    0x80DB00, 0x80DB55, 0x80DBAA, 0x80DBFF, 0x80FF00, 0x80FF55, 0x80FFAA, 0x80FFFF,
    // 160-175
    0xAA0000, 0xAA0055, 0xAA00AA, 0xAA00FF, 0xAA2400, 0xAA2455, 0xAA24AA, 0xAA24FF,
    0xAA4900, 0xAA4955, 0xAA49AA, 0xAA49FF, 0xAA6D00, 0xAA6D55, 0xAA6DAA, 0xAA6DFF,
    // 176-191
    0xAA9200, 0xAA9255, 0xAA92AA, 0xAA92FF, 0xAAB600, 0xAAB655, 0xAAB6AA, 0xAAB6FF,
    0xAADB00, 0xAADB55, 0xAADBAA, 0xAADBFF, 0xAAFF00, 0xAAFF55, 0xAAFFAA, 0xAAFFFF,
    // 192-207
    0xD50000, 0xD50055, 0xD500AA, 0xD500FF, 0xD52400, 0xD52455, 0xD524AA, 0xD524FF,
    0xD54900, 0xD54955, 0xD549AA, 0xD549FF, 0xD56D00, 0xD56D55, 0xD56DAA, 0xD56DFF,
    // 208-223
    0xD59200, 0xD59255, 0xD592AA, 0xD592FF, 0xD5B600, 0xD5B655, 0xD5B6AA, 0xD5B6FF,
    0xD5DB00, 0xD5DB55, 0xD5DBAA, 0xD5DBFF, 0xD5FF00, 0xD5FF55, 0xD5FFAA, 0xD5FFFF,
    // 224-239
    0xFF0000, 0xFF0055, 0xFF00AA, 0xFF00FF, 0xFF2400, 0xFF2455, 0xFF24AA, 0xFF24FF,
    0xFF4900, 0xFF4955, 0xFF49AA, 0xFF49FF, 0xFF6D00, 0xFF6D55, 0xFF6DAA, 0xFF6DFF,
    // 240-255
    0xFF9200, 0xFF9255, 0xFF92AA, 0xFF92FF, 0xFFB600, 0xFFB655, 0xFFB6AA, 0xFFB6FF,
    0xFFDB00, 0xFFDB55, 0xFFDBAA, 0xFFDBFF, 0xFFFF00, 0xFFFF55, 0xFFFFAA, 0xFFFFFF,
};

constexpr PaletteBytes MakePalette256G() {
  PaletteBytes p{};
  for (int i = 0; i < 256; ++i) {
    p[3 * i + 0] = static_cast<uint8_t>(kPalette256G[i] >> 16);
    p[3 * i + 1] = static_cast<uint8_t>(kPalette256G[i] >> 8);
    p[3 * i + 2] = static_cast<uint8_t>(kPalette256G[i]);
  }
  return p;
}

constexpr PaletteBytes kPalette216Bytes = MakePalette216();
constexpr PaletteBytes kPalette256GBytes = MakePalette256G();

constexpr char kResourceMagic[8] = {'B', 'R', 'N', 'D', 'R', 'S', 'R', 'C'};
constexpr char kResourceDescription[] = "256 colour palette";
constexpr char kChunkTag[4] = {'C', 'M', 'A', 'P'};
constexpr size_t kDescriptionOffset = 8;
constexpr size_t kDescriptionSize = 65;
constexpr size_t kVersionOffset = 73;
constexpr size_t kChunkTagOffset = 75;
constexpr size_t kChunkCountOffset = 79;
constexpr size_t kColourLengthOffset = 83;

void SetEntry(uint8_t* rgb, int i, int r, int g, int b) {
  rgb[3 * i + 0] = static_cast<uint8_t>(r);
  rgb[3 * i + 1] = static_cast<uint8_t>(g);
  rgb[3 * i + 2] = static_cast<uint8_t>(b);
}

// The orthogonal palettes: entry (r * ng + g) * nb + b takes its channel
// levels from the three tables.
void FillOrthogonal(uint8_t* rgb, const uint8_t* lr, int nr, const uint8_t* lg, int ng,
                    const uint8_t* lb, int nb) {
  for (int r = 0; r < nr; ++r)
    for (int g = 0; g < ng; ++g)
      for (int b = 0; b < nb; ++b) SetEntry(rgb, (r * ng + g) * nb + b, lr[r], lg[g], lb[b]);
}

int Distance(int dr, int dg, int db) { return 3 * dr * dr + 4 * dg * dg + 2 * db * db; }

}  // namespace

const uint8_t* Palette216Colours() { return kPalette216Bytes.data(); }
const uint8_t* Palette256GColours() { return kPalette256GBytes.data(); }

int BuildFixedPalette(uint8_t* rgb, int* bits, int choice) {
  if (choice < 0 || choice >= kPaletteChoices) choice = kPaletteOrtho256;
  static constexpr int kEntries[kPaletteChoices] = {2, 16, 32, 64, 128, 216, 256, 256, 256};
  static constexpr int kBits[kPaletteChoices] = {1, 4, 5, 6, 7, 8, 8, 8, 8};
  if (bits) *bits = kBits[choice];
  if (!rgb) return kEntries[choice];

  std::memset(rgb, 0, kPaletteBytes);
  switch (choice) {
    case kPaletteBlackWhite:
      SetEntry(rgb, 1, 255, 255, 255);
      break;
    case kPaletteWindows16:
      for (int i = 0; i < 16; ++i) SetEntry(rgb, i, kWindows16[i][0], kWindows16[i][1], kWindows16[i][2]);
      break;
    case kPaletteOrtho32:
      FillOrthogonal(rgb, kL4, 4, kL4, 4, kL2, 2);
      break;
    case kPaletteOrtho64:
      FillOrthogonal(rgb, kL4, 4, kL4, 4, kL4, 4);
      break;
    case kPaletteOrtho128:
      FillOrthogonal(rgb, kL4, 4, kL8, 8, kL4, 4);
      break;
    case kPaletteSafe216:
      std::memcpy(rgb, Palette216Colours(), kPaletteBytes);
      break;
    case kPaletteOrtho256:
      FillOrthogonal(rgb, kL8, 8, kL8, 8, kL4, 4);
      break;
    case kPaletteWithGray256:
      std::memcpy(rgb, Palette256GColours(), kPaletteBytes);
      break;
    case kPaletteGray256:
      for (int i = 0; i < 256; ++i) SetEntry(rgb, i, i, i, i);
      break;
  }
  return kEntries[choice];
}

bool WritePaletteResource(ByteSink& sink, const uint8_t* rgb) {
  uint8_t block[kPaletteResourceSize] = {};
  std::memcpy(block, kResourceMagic, sizeof kResourceMagic);
  static_assert(sizeof kResourceDescription <= kDescriptionSize);
  std::memcpy(block + kDescriptionOffset, kResourceDescription, sizeof kResourceDescription - 1);
  put_u16le(block + kVersionOffset, 1);
  std::memcpy(block + kChunkTagOffset, kChunkTag, sizeof kChunkTag);
  put_u32le(block + kChunkCountOffset, 1);
  put_u16le(block + kColourLengthOffset, static_cast<uint16_t>(kPaletteBytes));
  std::memcpy(block + kPaletteResourceColours, rgb, kPaletteBytes);
  return sink.Write(block, sizeof block);
}

bool ParsePaletteResource(const uint8_t* data, size_t size, uint8_t* rgb) {
  static_assert(kPaletteResourceColours + kPaletteBytes == kPaletteResourceSize);
  if (!data || size < kPaletteResourceSize) return false;
  if (std::memcmp(data, kResourceMagic, sizeof kResourceMagic) != 0) return false;
  if (std::memcmp(data + kChunkTagOffset, kChunkTag, sizeof kChunkTag) != 0) return false;
  if (get_u16le(data + kColourLengthOffset) != kPaletteBytes) return false;
  std::memcpy(rgb, data + kPaletteResourceColours, kPaletteBytes);
  return true;
}

int ExactColour(int r, int g, int b, const uint8_t* rgb, int count) {
  if (count > 256) count = 256;
  for (int i = 0; i < count; ++i) {
    const uint8_t* p = rgb + 3 * i;
    if (p[0] == r && p[1] == g && p[2] == b) return i;
  }
  return -1;
}

int NearestColour(int r, int g, int b, const uint8_t* rgb, int count) {
  if (count <= 0) return 0;
  if (count > 256) count = 256;
  int exact = ExactColour(r, g, b, rgb, count);
  if (exact >= 0) return exact;
  // Larger than any real distance (at most 9 * 255²), so entry 0 is always taken.
  int best = 1000000;
  int best_index = 0;
  for (int i = 0; i < count; ++i) {
    const uint8_t* p = rgb + 3 * i;
    int d = Distance(r - p[0], g - p[1], b - p[2]);
    if (d < best) {
      best = d;
      best_index = i;
      if (d == 0) break;
    }
  }
  return best_index;
}

void BuildColourLookup(const uint8_t* rgb, int count, uint8_t* lookup) {
  for (int i = 0; i < kLookupEntries; ++i)
    lookup[i] = static_cast<uint8_t>(NearestColour((i % 32) * 8, ((i / 32) % 32) * 8, (i / 1024) * 8, rgb, count));
}

}  // namespace tess
