// Canvas fills: every shape goes through the rasteriser into SolidSpanFiller,
// which writes whole runs through row pointers.
#include "draw/canvas.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tess {

SolidSpanFiller::SolidSpanFiller(ImageBlock& image, Colour colour) : m_image(image) {
  m_bgr[0] = ColourBlue(colour);
  m_bgr[1] = ColourGreen(colour);
  m_bgr[2] = ColourRed(colour);
  m_grey = m_bgr[0] == m_bgr[1] && m_bgr[1] == m_bgr[2];
}

void SolidSpanFiller::Span(int32_t y, int32_t x_begin, int32_t x_end) {
  uint8_t* p = m_image.Row(y) + 3 * static_cast<size_t>(x_begin);
  size_t count = static_cast<size_t>(x_end - x_begin);
  // Masks are grey, and grey runs are a single memset.
  if (m_grey) {
    std::memset(p, m_bgr[0], 3 * count);
    return;
  }
  for (size_t i = 0; i < count; ++i, p += 3) {
    p[0] = m_bgr[0];
    p[1] = m_bgr[1];
    p[2] = m_bgr[2];
  }
}

Canvas Canvas::Open(int32_t width, int32_t height) {
  return Canvas(ImageCreate(width, height, nullptr, 24));
}

Canvas Canvas::Adopt(ImageBlock image) {
  if (!image || image.bits() != 24) return {};
  return Canvas(std::move(image));
}

ImageBlock Canvas::Release() { return std::move(m_image); }

void Canvas::Clear(Colour colour) {
  if (m_image) FillRect(Bounds(), colour);
}

void Canvas::FillRect(const Rect& box, Colour colour) {
  if (!m_image) return;
  SolidSpanFiller filler(m_image, colour);
  RasterRect(box, Bounds(), filler);
}

void Canvas::FillEllipse(const Rect& box, Colour colour) {
  if (!m_image) return;
  SolidSpanFiller filler(m_image, colour);
  RasterEllipse(box, Bounds(), filler);
}

void Canvas::FillRoundRect(const Rect& box, int32_t corner_width, int32_t corner_height,
                           Colour colour) {
  if (!m_image) return;
  SolidSpanFiller filler(m_image, colour);
  RasterRoundRect(box, corner_width, corner_height, Bounds(), filler);
}

bool Canvas::FillPolygon(const Point* points, int count, Colour colour) {
  if (!m_image) return true;
  SolidSpanFiller filler(m_image, colour);
  return RasterPolygon(points, count, Bounds(), filler);
}

void Canvas::DrawLine(Point from, Point to, int32_t width, Colour colour) {
  if (!m_image) return;
  SolidSpanFiller filler(m_image, colour);
  RasterLine(from, to, width, Bounds(), filler);
}

void Canvas::PaintImage(const ImageBlock& source, int32_t x, int32_t y) {
  if (!m_image || !source) return;
  if (source.bits() != 24) {
    ImageCopyRect(m_image, x, y, source, 0, 0, source.width(), source.height());
    return;
  }
  int64_t x0 = std::max<int64_t>(x, 0), x1 = std::min<int64_t>(int64_t{x} + source.width(), width());
  int64_t y0 = std::max<int64_t>(y, 0), y1 = std::min<int64_t>(int64_t{y} + source.height(), height());
  if (x0 >= x1) return;
  for (int64_t ty = y0; ty < y1; ++ty)
    std::memcpy(m_image.Row(static_cast<int>(ty)) + 3 * x0,
                source.Row(static_cast<int>(ty - y)) + 3 * (x0 - x), static_cast<size_t>(3 * (x1 - x0)));
}

}  // namespace tess
