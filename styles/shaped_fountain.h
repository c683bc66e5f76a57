// Shaped Fountain: concentric rings (circles, diamonds, squares or biscuits)
// on a square tile, coloured from a fountain gradient whose colours flow
// through them. The entry itself is ShapedFountainStyle() (styles/effects.h);
// this header opens the ring geometry and the record to tests and benchmarks,
// which redraw the rings shape by shape to prove the record's lookup exact.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "base/alloc.h"
#include "draw/raster.h"
#include "image/image.h"
#include "styles/style.h"

namespace tess {

// The "Shape:" list's indices. Any other index draws squares.
enum RingShape : int32_t { kRingCircle = 0, kRingDiamond = 1, kRingSquare = 2, kRingBiscuit = 3 };

// One ring as the filled shape drawn for it, over the rings inside it.
struct Ring {
  int32_t shape = kRingSquare;  // one of RingShape
  Rect box;                     // circle: the ellipse's box; square and biscuit: the rectangle
  int32_t corner_width = 0;     // biscuit: the corner ellipse
  int32_t corner_height = 0;
  std::array<Point, 5> diamond{};  // diamond: left, top, right, bottom, left again
};

// Ring i of `rings` on a canvas centred on (cx, cy), with t = i / rings in
// double and every conversion truncating: the outermost ring (i = 0) covers
// the whole canvas.
Ring ShapedFountainRing(int32_t shape, int32_t i, int32_t rings, int32_t cx, int32_t cy);

// The strip column whose colour ring i takes before the roll:
// trunc(i / rings x 256).
int32_t RingStripColumn(int32_t i, int32_t rings);

struct ShapedFountainOptions {
  // Rings are numbered innermost first, each pixel once, unless a ring would
  // leave a gap inside a row; off, every ring is painted over the last from
  // the outermost, the plain way, which that case falls back to.
  bool innermost_first = true;
};

// The record of one preview or build. The rings are the same on every frame
// and only their colours move, so the record draws them once, as the number
// of the ring that ends up on top at each pixel of the four-fold canvas; a
// frame looks up each pixel's colour through those numbers and reduces by
// four with the truncations of ScaleByPercent(25, 25).
class ShapedFountainRecord final : public StyleRecord {
 public:
  static constexpr int32_t kStripWidth = 256;

  // Reads the page and draws the ring numbers; null when memory is short.
  static std::unique_ptr<ShapedFountainRecord> Create(const ParamReader& reader,
                                                      ShapedFountainOptions options = {});

  int FrameCount() const override { return m_frames; }
  ImageBlock RenderFrame(int k) override;

  int32_t side() const { return m_side; }                // S: the tile is S x S
  int32_t canvas_side() const { return 4 * m_side; }     // the four-fold canvas
  int32_t ring_count() const { return 2 * m_side; }      // R: half the canvas side
  bool scroll() const { return m_scroll; }               // the picker's value is not 0
  int32_t shape() const { return m_shape; }              // as selected, unchecked
  const ImageBlock& strip() const { return m_strip; }    // the fountain, 256 x 1, unrolled
  // Whether the ring numbers were painted innermost first (no fallback).
  bool numbered_innermost_first() const { return m_numbered_innermost_first; }
  // L: how far the strip is rolled for frame k.
  int32_t StripRoll(int k) const { return ScrollOffset(kStripWidth, k, m_frames); }

 private:
  ShapedFountainRecord() = default;
  bool DrawRingNumbers(bool innermost_first);

  int32_t m_side = 0;
  int m_frames = 0;
  bool m_scroll = false;
  int32_t m_shape = 0;
  bool m_numbered_innermost_first = false;
  ImageBlock m_strip;
  Buffer<uint16_t> m_rings;     // canvas pixel (row-major) -> ring on top, R where none is
  Buffer<int32_t> m_columns;    // ring -> RingStripColumn
  Buffer<uint64_t> m_lanes;     // ring -> this frame's colour, see shaped_fountain.cpp
};

}  // namespace tess
