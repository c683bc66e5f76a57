// The adaptive ("&Custom palette") palette of a whole animation: the frames'
// own colours, in order of first appearance, when there are few enough of
// them; otherwise an octree colour reduction (classification, reduction,
// assignment) over every pixel of every frame. AdaptivePalette reads a whole
// frame list; AdaptivePaletteBuilder takes the same frames one at a time, so
// a build too large to keep can gather its palette as it renders, and ends
// with the same palette.
#pragma once

#include <cstdint>
#include <memory>

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

// AdaptivePalette over frames handed over in order and then let go. Both
// passes of the whole-list form (first-appearance colours, octree
// classification) run on each frame as it arrives: whether the octree is
// needed is only known at the end, so every frame is classified. Memory is
// that of the octree (at most about 11 MB) and one row, whatever the count
// of frames.
class AdaptivePaletteBuilder {
 public:
  // `count`: the entries wanted, as AdaptivePalette's.
  explicit AdaptivePaletteBuilder(int count);
  ~AdaptivePaletteBuilder();
  AdaptivePaletteBuilder(const AdaptivePaletteBuilder&) = delete;
  AdaptivePaletteBuilder& operator=(const AdaptivePaletteBuilder&) = delete;

  // False when memory is short; the builder is then unusable.
  bool AddFrame(const ImageBlock& image);
  // AdaptivePalette's results for every frame added. Once only; false when
  // memory is short or an earlier call failed.
  bool Finish(int* count, uint8_t* rgb);

 private:
  class State;
  int m_wanted;
  bool m_failed = false;
  std::unique_ptr<State> m_state;  // made by the first AddFrame
};

}  // namespace tess
