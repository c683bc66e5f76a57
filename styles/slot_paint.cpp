// Slot paints: flat colours through MaskBlendWrap, rendered fills through
// PaintMaskBlendWrap. The blend splits each mask row into the pieces that stay
// contiguous in the target (one more each time the row crosses the right
// edge), so the wrap is worked out per piece, not per pixel.
#include "styles/slot_paint.h"

#include <algorithm>

#include "draw/draw.h"
#include "fills/fill_render.h"

namespace tess {

void PaintMaskBlendWrap(ImageBlock& target, const ImageBlock& mask, const ImageBlock& paint,
                        int32_t x, int32_t y, int opacity) {
  if (!target || !mask || !paint || target.bits() != 24 || mask.bits() != 24 ||
      paint.bits() != 24 || paint.width() < mask.width() || paint.height() < mask.height())
    return;
  const unsigned op = static_cast<unsigned>(std::clamp(opacity, 0, 255));
  uint8_t cover[256];
  for (unsigned a = 0; a < 256; ++a) cover[a] = static_cast<uint8_t>(op == 255 ? a : a * op / 255);
  const int32_t tw = target.width();
  for (int32_t sy = 0; sy < mask.height(); ++sy) {
    uint8_t* t_row = target.Row(WrapIndex(int64_t{y} + sy, target.height()));
    const uint8_t* m = mask.Row(sy);
    const uint8_t* p = paint.Row(sy);
    int32_t tx = WrapIndex(x, tw);
    for (int32_t sx = 0; sx < mask.width();) {
      const int32_t end = sx + std::min(mask.width() - sx, tw - tx);
      for (uint8_t* t = t_row + 3 * size_t(tx); sx < end; ++sx, t += 3) {
        const unsigned a = cover[m[3 * size_t(sx)]];
        if (a == 0) continue;
        const uint8_t* c = p + 3 * size_t(sx);
        const unsigned rest = 255 - a;
        for (int ch = 0; ch < 3; ++ch)
          t[ch] = static_cast<uint8_t>(c[ch] * a / 255 + t[ch] * rest / 255);
      }
      tx = 0;
    }
  }
}

SlotPaints SlotPaints::Collect(const ParamReader& reader, const int (&colour_ids)[5],
                               const int (&enable_ids)[4]) {
  SlotPaints paints;
  paints.m_fills.push_back(reader.Fill(colour_ids[0]));
  for (int i = 0; i < 4; ++i)
    if (reader.Checked(enable_ids[i])) paints.m_fills.push_back(reader.Fill(colour_ids[i + 1]));
  return paints;
}

std::vector<Colour> SlotPaints::Indices() const {
  std::vector<Colour> indices(m_fills.size());
  for (size_t i = 0; i < indices.size(); ++i) indices[i] = static_cast<Colour>(i);
  return indices;
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
    PaintMaskBlendWrap(target, mask, *Picture(paint), x, y, opacity);
}

}  // namespace tess
