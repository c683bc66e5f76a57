// Turning true-colour frames into palettised image blocks: the plain remap
// (nearest colour, or the FastRemap lookup), the error-diffusion dither, and
// the background substitution that marks the style's background with the
// transparent index afterwards. Inputs are never changed; every result is a
// new block, null when memory is short or the request makes no sense.
#pragma once

#include <cstdint>

#include "image/image.h"
#include "output/palette_match.h"

namespace tess {

// The configuration values the remaps depend on. The caller reads them from
// the settings (`FastRemap`, `DitherBrightness`, `DitherContrast`), so the
// remaps have no hidden inputs.
struct RemapOptions {
  // Exact palette match, else the 32768-entry lookup, instead of a nearest
  // search per colour. Ignored for 1-bit output.
  bool fast_remap = false;
  // The black-and-white dither's tone curve.
  int dither_brightness = 20;
  int dither_contrast = 20;
};

// Remaps frames of any size to one palette; keeps what it learns about the
// palette between frames, so a build makes one and passes every frame through.
class Remapper {
 public:
  // `rgb` is a 768-byte palette of which `count` entries are used; `bits` is
  // the output bit count (normalised as by ImageCreate, and at most 8). False
  // when memory is short or `bits` asks for a true-colour output.
  bool Init(const uint8_t* rgb, int bits, int count, const RemapOptions& options);

  // Nearest colour (or FastRemap) per pixel; 1-bit output thresholds the
  // luminance at 129. A palettised source is mapped through its own colour
  // table, each entry translated once.
  ImageBlock Remap(const ImageBlock& source);
  // The same remap with the pixels set in `mask` (a supercompression mask,
  // output/supercompress.h) stored as `masked_index`, as ApplySupercompressMask
  // would store it afterwards (over the area both cover); those pixels are
  // never searched.
  ImageBlock Remap(const ImageBlock& source, const ImageBlock& mask, int masked_index);

  // Error diffusion: colour output spreads the error of each channel over the
  // neighbours; 1-bit output dithers a tone-curved gray. Rows are visited in
  // stored order (bottom line first), so error travels up the picture.
  ImageBlock Dither(const ImageBlock& source);

 private:
  // The index one colour gets in the plain remap and the colour dither.
  ImageBlock RemapRows(const ImageBlock& source, const ImageBlock* mask, int masked_index);
  int Pick(int r, int g, int b) {
    if (m_bits == 1) return Luminance(r, g, b) >= 129 ? 1 : 0;
    return m_options.fast_remap ? m_matcher.Fast(r, g, b) : m_matcher.Nearest(r, g, b);
  }
  template <bool kFastRemap>
  ImageBlock DitherColour(const ImageBlock& source);
  ImageBlock DitherBlackWhite(const ImageBlock& source);

  uint8_t m_rgb[kPaletteBytes] = {};
  int m_bits = 0;  // 0 until Init succeeds
  RemapOptions m_options;
  PaletteMatcher m_matcher;
};

// One-frame forms of Remapper::Remap and Remapper::Dither.
ImageBlock RemapImage(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                      const RemapOptions& options);
ImageBlock DitherImage(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                       const RemapOptions& options);

// The 256-entry tone curve of the black-and-white dither: entry i is
// (brightness - contrast) + i * 256 / (256 - 2 * contrast), rounded and held
// to 1..254. Contrast is held below 128 so the slope stays finite.
void BuildToneCurve(int brightness, int contrast, uint8_t* curve);

// A copy of `remapped` in which every pixel whose `source` colour (low 24
// bits) equals the background's low 24 bits is set to `index`, stored as
// ImageSetPixel stores it. Only the area both pictures cover is compared.
ImageBlock SubstituteBackground(const ImageBlock& remapped, const ImageBlock& source,
                                Colour background, int index);

}  // namespace tess
