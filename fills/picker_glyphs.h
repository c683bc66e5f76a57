// The pickers' glyph strips, drawn by our own rasteriser so that the bitmap
// resources are reproducible from source. The committed .bmp files are these
// strips written by WriteBitmapFile; a test keeps the two equal.
//
// Invariants: glyph pixels are white where there is no ink, so a glyph ANDed
// onto a white hole shows only its ink; mask pixels are pure black (ink) or
// pure white, and every glyph ink pixel is black in the mask.
#pragma once

#include <string>

#include "base/byte_sink.h"
#include "fills/picker.h"
#include "image/image.h"

namespace tess {

inline constexpr Colour kPickerGlyphPaper = 0xFFFFFFu;
inline constexpr Colour kPickerMaskInk = 0x000000u;

// The class's strip: kind.strip_width x kPickerStripHeight, 24 bits, the
// glyph of cell i at columns 20*i..20*i+19 of rows 0-19, its mask in rows
// 21-40, row 20 and unused columns white. Null when memory is short.
ImageBlock PickerGlyphStrip(PickerClass picker_class);

// The strip's file name in resources/: "picker_" and the tag in lower case.
std::string PickerGlyphFileName(PickerClass picker_class);

// A .bmp file: the 14-byte file header, then the packed image as it stands.
// False for a null image or when the sink failed.
bool WriteBitmapFile(ByteSink& sink, const ImageBlock& image);

}  // namespace tess
