// Plain reference versions of the remaps and the adaptive palette, written
// straight from their descriptions with only ImageGetPixel, ImageSetPixel and
// the plain colour searches. The optimised code must match them exactly.
#pragma once

#include <cstdint>

#include "image/frame_list.h"
#include "image/image.h"
#include "output/remap.h"

namespace tess::testing {

ImageBlock ReferenceRemap(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                          const RemapOptions& options);
ImageBlock ReferenceDither(const ImageBlock& source, const uint8_t* rgb, int bits, int count,
                           const RemapOptions& options);
ImageBlock ReferenceSubstitute(const ImageBlock& remapped, const ImageBlock& source, Colour background,
                               int index);
// `pruned_level` (optional) reports whether the node limit made it drop a level.
bool ReferenceAdaptivePalette(int* count, uint8_t* rgb, const FrameList& frames,
                              bool* pruned_level = nullptr);

}  // namespace tess::testing
