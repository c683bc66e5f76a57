// The adaptive ("&Custom palette") palette of a whole animation: the frames'
// own colours, in order of first appearance, when there are few enough of
// them; otherwise an octree colour reduction (classification, reduction,
// assignment) over every pixel of every frame.
#pragma once

#include <cstdint>

#include "image/frame_list.h"

namespace tess {

// Past this many nodes the deepest level of the octree is merged into its
// parents before the next row is classified.
constexpr long kOctreeMaxNodes = 266817;

// Tree depth for a colour count (1..256): 1 plus the number of 2-bit right
// shifts that leave it non-zero, held to 2..8 (256 gives 6).
constexpr int OctreeDepth(int colours) {
  int depth = 1;
  for (int c = colours; c > 0; c >>= 2) ++depth;
  return depth < 2 ? 2 : depth > 8 ? 8 : depth;
}

// `count` in: the entries wanted (0 means 256; held to 1..256); out: the
// entries made. `rgb` (768 bytes) receives them, the rest of it zero. Frames
// are read as colour (palettised frames through their colour tables). False
// when memory is short.
bool AdaptivePalette(int* count, uint8_t* rgb, const FrameList& frames);

}  // namespace tess
