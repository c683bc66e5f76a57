// The drawing canvas: a 24-bit image block that the styles paint shapes into
// with the rasteriser of draw/raster.h, and then work on pixel by pixel.
// There is one pixel store, so shapes and direct pixel work see each other at
// once: no copying between a drawing surface and the image is ever needed.
//
// Invariants: a non-null canvas always owns a 24-bit image; every fill is
// clipped to the canvas, so any coordinates are safe.
#pragma once

#include <cstdint>
#include <utility>

#include "image/image.h"
#include "draw/raster.h"

namespace tess {

class Canvas {
 public:
  Canvas() = default;
  Canvas(Canvas&&) noexcept = default;
  Canvas& operator=(Canvas&&) noexcept = default;

  // A black width x height canvas; null when the image cannot be had.
  static Canvas Open(int32_t width, int32_t height);
  // Paints on an existing 24-bit image; null for any other depth.
  static Canvas Adopt(ImageBlock image);

  explicit operator bool() const { return static_cast<bool>(m_image); }
  int32_t width() const { return m_image.width(); }
  int32_t height() const { return m_image.height(); }
  ImageBlock& image() { return m_image; }
  const ImageBlock& image() const { return m_image; }

  // Hands the image to the caller; the canvas is null afterwards. Letting a
  // canvas go out of scope instead frees the image.
  ImageBlock Release();

  // Solid fills without an outline, coverage as raster.h describes.
  void Clear(Colour colour);
  void FillRect(const Rect& box, Colour colour);
  void FillEllipse(const Rect& box, Colour colour);
  void FillRoundRect(const Rect& box, int32_t corner_width, int32_t corner_height, Colour colour);
  // False only when memory for the polygon's crossings is short.
  bool FillPolygon(const Point* points, int count, Colour colour);
  // A solid line of the given width with round ends (one pixel when <= 1).
  void DrawLine(Point from, Point to, int32_t width, Colour colour);

  // Copies `source` with its top-left corner at (x, y), clipped to the canvas.
  void PaintImage(const ImageBlock& source, int32_t x, int32_t y);

 private:
  explicit Canvas(ImageBlock image) : m_image(std::move(image)) {}
  Rect Bounds() const { return {0, 0, width(), height()}; }

  ImageBlock m_image;
};

// Writes one colour into the runs of a 24-bit image. Canvas fills go through
// it; styles can hand it to the rasteriser with their own clip window.
class SolidSpanFiller final : public SpanSink {
 public:
  SolidSpanFiller(ImageBlock& image, Colour colour);
  void Span(int32_t y, int32_t x_begin, int32_t x_end) override;

 private:
  ImageBlock& m_image;
  uint8_t m_bgr[3];
  bool m_grey;
};

}  // namespace tess
