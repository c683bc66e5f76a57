// What the "Color N" slots of a page paint with, for effects that draw grey
// masks. A Simple fill is its flat colour through the mask blend; any other
// kind is rendered once per build at each sprite size it is used at, and the
// sprite carries that whole picture inside its shape, so a sprite takes its
// fill along as it moves and the tile stays seamless.
//
// Invariants: a paint handle stays valid for the life of its SlotPaints; the
// blends wrap around the target like MaskBlendWrap and accept any position.
#pragma once

#include <cstdint>
#include <vector>

#include "fills/fill_descriptor.h"
#include "image/image.h"
#include "styles/style.h"

namespace tess {

class SlotPaints {
 public:
  // A slot's paint at one sprite size: its flat colour, or the index of its
  // rendered picture.
  struct Handle {
    Colour colour = 0;
    int32_t image = -1;  // -1: paint the flat colour
  };

  // Color 1, then colours 2..5 whose Enable box is checked (CollectFills):
  // a ColourPick over count() picks slots in this order.
  // Throws std::bad_alloc when memory is short.
  static SlotPaints Collect(const ParamReader& reader, const int (&colour_ids)[5],
                            const int (&enable_ids)[4]);

  int32_t count() const { return static_cast<int32_t>(m_fills.size()); }
  // The paint of `slot` for sprites of width x height, rendering the fill
  // the first time a size is asked for. False when memory is short. May
  // throw std::bad_alloc.
  bool Prepare(int32_t slot, int32_t width, int32_t height, Handle* out);

  // The rendered picture behind a handle; null for a flat colour.
  const ImageBlock* Picture(Handle paint) const {
    return paint.image < 0 ? nullptr : &m_rendered[static_cast<size_t>(paint.image)].image;
  }
  // How many fills have been rendered.
  int32_t rendered() const { return static_cast<int32_t>(m_rendered.size()); }

  // Blends a grey mask of the size the handle was prepared for.
  void Blend(ImageBlock& target, const ImageBlock& mask, int32_t x, int32_t y, Handle paint,
             int opacity) const;

 private:
  struct Rendered {
    int32_t slot, width, height;
    ImageBlock image;
  };
  std::vector<FillDescriptor> m_fills;
  std::vector<Rendered> m_rendered;
};

}  // namespace tess
