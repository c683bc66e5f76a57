// Frame optimisation for the build: a 1-bit mask per frame marking the pixels
// that equal what a viewer already shows (the running previous frame), and
// applying such a mask to a remapped frame. Masks are 1-bit image blocks with
// the black-and-white palette: bit 1 = unchanged, 0 = changed (or outside the
// previous frame). Both loops work on row pointers; the per-pixel reference
// they must equal lives in the tests.
#pragma once

#include "image/image.h"

namespace tess {

// The mask of `frame` against `previous`, and `previous` brought up to date:
// every changed pixel of the overlap is copied into it. Null when memory is
// short (and `previous` is then unchanged).
ImageBlock SupercompressMask(const ImageBlock& frame, ImageBlock& previous);

// Sets every pixel of `image` whose mask bit is 1 to `index`, as ImageSetPixel
// would store it. Only the area both blocks cover is visited.
void ApplySupercompressMask(ImageBlock& image, const ImageBlock& mask, int index);

}  // namespace tess
