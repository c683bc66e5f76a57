// Slot paints: flat colours through MaskBlendWrap, rendered fills through
// MaskBlendImageWrap with the picture travelling with the mask.
#include "styles/slot_paint.h"

#include <algorithm>

#include "draw/draw.h"
#include "fills/fill_render.h"

namespace tess {

SlotPaints SlotPaints::Collect(const ParamReader& reader, const int (&colour_ids)[5],
                               const int (&enable_ids)[4]) {
  SlotPaints paints;
  paints.m_fills = CollectFills(reader, colour_ids, enable_ids);
  return paints;
}

bool SlotPaints::Prepare(int32_t slot, int32_t width, int32_t height, Handle* out) {
  const FillDescriptor& fill = m_fills[static_cast<size_t>(slot)];
  *out = Handle{fill.colour, -1};
  if (fill.kind == kFillSimple) return true;
  for (size_t i = 0; i < m_rendered.size(); ++i) {
    const Rendered& r = m_rendered[i];
    if (r.slot == slot && r.width == width && r.height == height) {
      out->image = static_cast<int32_t>(i);
      return true;
    }
  }
  ImageBlock image = RenderFill(fill, width, height);
  if (!image) return false;
  m_rendered.push_back({slot, width, height, std::move(image)});
  out->image = static_cast<int32_t>(m_rendered.size() - 1);
  return true;
}

void SlotPaints::Blend(ImageBlock& target, const ImageBlock& mask, int32_t x, int32_t y,
                       Handle paint, int opacity) const {
  if (paint.image < 0)
    MaskBlendWrap(target, mask, x, y, paint.colour, opacity);
  else
    MaskBlendImageWrap(target, mask, x, y, *Picture(paint), 0, 0, opacity);
}

}  // namespace tess
