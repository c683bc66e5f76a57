// The plain remap, background substitution and the Remapper set-up shared with
// the dither (dither.cpp). Per-pixel work goes through whole rows
// (output/pixel_rows.h) and the memoised PaletteMatcher; tests hold both to a
// reference built from ImageGetPixel, ImageSetPixel and NearestColour.
#include "output/remap.h"

#include <algorithm>
#include <cstring>

#include "output/pixel_rows.h"

namespace tess {

bool Remapper::Init(const uint8_t* rgb, int bits, int count, const RemapOptions& options) {
  m_bits = NormaliseBitCount(bits);
  if (m_bits > 8) {
    m_bits = 0;
    return false;
  }
  std::memcpy(m_rgb, rgb, kPaletteBytes);
  m_options = options;
  if (m_matcher.Init(rgb, count, options.fast_remap && m_bits > 1)) return true;
  m_bits = 0;  // unusable: Remap and Dither give null
  return false;
}

ImageBlock Remapper::Remap(const ImageBlock& source) { return RemapRows(source, nullptr, 0); }

ImageBlock Remapper::Remap(const ImageBlock& source, const ImageBlock& mask, int masked_index) {
  return RemapRows(source, mask && mask.bits() == 1 ? &mask : nullptr, masked_index);
}

ImageBlock Remapper::RemapRows(const ImageBlock& source, const ImageBlock* mask, int masked_index) {
  if (!source || m_bits == 0) return {};
  const int width = source.width(), height = source.height();
  ImageBlock out = ImageCreate(width, height, m_rgb, m_bits);
  Buffer<uint8_t> indices = AllocBuffer<uint8_t>(static_cast<size_t>(width));
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(3 * static_cast<size_t>(width));
  if (!out || !indices || !scratch) return {};
  const uint8_t masked = static_cast<uint8_t>(masked_index);
  // A mask of another size covers what it overlaps, as when applied later.
  const int mask_width = mask ? std::min(width, mask->width()) : 0;
  auto mask_row = [&](int y) { return mask && y < mask->height() ? mask->Row(y) : nullptr; };

  if (source.bits() <= 8) {
    uint8_t translate[256] = {};
    const uint8_t* table = source.colour_table();
    for (int i = 0; i < source.colour_table_entries(); ++i)
      translate[i] = static_cast<uint8_t>(Pick(table[4 * i + 2], table[4 * i + 1], table[4 * i]));
    for (int y = 0; y < height; ++y) {
      UnpackIndexRow(source, y, indices.get());
      const uint8_t* bits = mask_row(y);
      for (int x = 0; x < width; ++x)
        indices[x] = bits && x < mask_width && (bits[x / 8] & (0x80 >> (x % 8))) ? masked : translate[indices[x]];
      PackIndexRow(out, y, indices.get());
    }
    return out;
  }

  for (int y = 0; y < height; ++y) {
    const uint8_t* bgr = BgrRow(source, y, scratch.get());
    const uint8_t* bits = mask_row(y);
    // Runs of one colour, common in rendered frames, cost one search.
    uint32_t previous = 0xFFFFFFFFu;
    uint8_t index = 0;
    for (int x = 0; x < width; ++x) {
      if (bits && x < mask_width) {
        // Unchanged pixels come in whole bytes of the mask more often than not.
        const uint8_t eight = bits[x / 8];
        if (eight == 0xFF && x % 8 == 0 && x + 8 <= mask_width) {
          std::memset(indices.get() + x, masked, 8);
          x += 7;
          continue;
        }
        if (eight & (0x80 >> (x % 8))) {
          indices[x] = masked;
          continue;
        }
      }
      const uint32_t colour = BgrKey(bgr, x, width);
      if (colour != previous) {
        previous = colour;
        const uint8_t* p = bgr + 3 * x;
        index = static_cast<uint8_t>(Pick(p[2], p[1], p[0]));
      }
      indices[x] = index;
    }
    PackIndexRow(out, y, indices.get());
  }
  return out;
}

ImageBlock RemapImage(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                      const RemapOptions& options) {
  Remapper remapper;
  if (!remapper.Init(rgb, bits, count, options)) return {};
  return remapper.Remap(source);
}

ImageBlock DitherImage(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                       const RemapOptions& options) {
  Remapper remapper;
  if (!remapper.Init(rgb, bits, count, options)) return {};
  return remapper.Dither(source);
}

ImageBlock SubstituteBackground(const ImageBlock& remapped, const ImageBlock& source,
                                Colour background, int index) {
  ImageBlock out = DuplicateGlobalBlock(remapped);
  if (!out || !source) return out;
  const int width = std::min(out.width(), source.width());
  const int height = std::min(out.height(), source.height());
  const Colour key = background & 0xFFFFFF;

  if (out.bits() > 8) {  // not a remapped block, but the rule still holds
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        if ((ImageGetPixel(source, x, y) & 0xFFFFFF) == key) ImageSetPixel(out, x, y, static_cast<Colour>(index));
    return out;
  }

  Buffer<uint8_t> indices = AllocBuffer<uint8_t>(static_cast<size_t>(out.width()));
  Buffer<uint8_t> scratch = AllocBuffer<uint8_t>(3 * static_cast<size_t>(source.width()));
  if (!indices || !scratch) return {};
  // What ImageSetPixel would store: 1-bit pixels take any non-zero as 1.
  const uint8_t stored = out.bits() == 1 ? (index != 0) : static_cast<uint8_t>(index);
  for (int y = 0; y < height; ++y) {
    const uint8_t* bgr = source.bits() <= 8 ? nullptr : BgrRow(source, y, scratch.get());
    if (!bgr) UnpackIndexRow(source, y, scratch.get());  // a palettised source compares its indices
    UnpackIndexRow(out, y, indices.get());
    for (int x = 0; x < width; ++x) {
      Colour c = bgr ? MakeColour(bgr[3 * x + 2], bgr[3 * x + 1], bgr[3 * x]) : scratch[x];
      if (c == key) indices[x] = stored;
    }
    PackIndexRow(out, y, indices.get());
  }
  return out;
}

}  // namespace tess
