// Cubist: translucent rectangles and rounded rectangles sliding across the
// tile while they breathe. The entry itself is CubistStyle()
// (styles/effects.h); this header opens the record to tests and benchmarks,
// which prove the painter against its plain reference and roll the picture
// against a moved viewpoint.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/alloc.h"
#include "image/image.h"
#include "styles/shape_paint.h"
#include "styles/style.h"

namespace tess {

// One block. Lengths are in quarter pixels, the grid the blocks are drawn on.
// Trivial, so the element array is one zeroed block.
struct CubistBlock {
  int32_t x0;         // centre at frame 0
  int32_t y0;
  int32_t w0;         // size about which it breathes
  int32_t h0;
  int32_t dw;         // breathing amplitude
  int32_t dh;
  int32_t vx;         // tile widths slid over the loop, signed
  int32_t vy;         // tile heights slid over the loop, signed
  int32_t phase_w;    // breathing phases at frame 0, in 1/360 of a turn
  int32_t phase_h;
  int32_t breaths;    // whole breathing periods over the loop
  bool rounded;       // corners of Roundness, else square
  int32_t thickness;  // outline width in pixels; 0 when solid
  int32_t opacity;    // 1..255
  int32_t paint;      // index into the record's paints (the enabled colours)
};

// Where a block lies on one frame, in quarter pixels.
struct CubistBox {
  Rect box;
  int32_t radius;  // corner radius; 0 for square corners
};

struct CubistOptions {
  // The pixel-by-pixel painter, the reference of the fast one.
  bool plain_paint = false;
  // The tile as seen from (view_x, view_y) pixels: a seamless picture rolled
  // by that much is the same picture.
  int32_t view_x = 0;
  int32_t view_y = 0;
};

class CubistRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random`, draws the blocks and renders the fills;
  // null when memory is short.
  static std::unique_ptr<CubistRecord> Create(const ParamReader& reader, Random& random,
                                              CubistOptions options = {});

  int FrameCount() const override { return m_frames; }
  // Any frame, any number of times: a frame depends on k modulo N alone.
  ImageBlock RenderFrame(int k) override;

  int32_t count() const { return m_count; }
  const CubistBlock* blocks() const { return m_blocks.get(); }
  CubistBox BoxAt(const CubistBlock& block, int k) const;

 private:
  CubistRecord() = default;
  bool Init(const ParamReader& reader, Random& random);
  bool MakePaints();
  void DrawBlock(ImageBlock& frame, const CubistBlock& block, int k);

  CubistOptions m_options;
  int32_t m_width = 0, m_height = 0;
  int m_frames = 0;
  Colour m_background = 0;
  int32_t m_roundness = 0;
  Buffer<CubistBlock> m_blocks;
  int32_t m_count = 0;
  std::vector<FillDescriptor> m_fills;  // by CubistBlock::paint
  std::vector<SlotPaint> m_paints;
  CoverageGrid m_grid;
};

}  // namespace tess
