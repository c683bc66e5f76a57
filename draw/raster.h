// The engine's own scan converter: every filled shape the styles draw becomes
// runs of covered pixels handed to one SpanSink, so all platforms produce the
// same bytes. All arithmetic is on 64-bit integers; nothing depends on the
// floating-point unit.
//
// Coverage rules (pinned by tests/draw/raster_test.cpp):
//   - Pixel (x, y) is the unit square [x, x+1) x [y, y+1); it is covered when
//     its centre (x + 0.5, y + 0.5) lies inside the shape.
//   - A box (left, top, right, bottom) is the region [left, right] x [top,
//     bottom]; boxes given the wrong way round are normalised. A filled box
//     therefore covers columns left..right-1 and rows top..bottom-1.
//   - Ellipses are inscribed in their box and include their boundary.
//     Rounded rectangles are the box with each corner replaced by a quarter of
//     a corner_width x corner_height ellipse (clamped to the box; 0 gives the
//     plain box).
//   - Polygons have integer vertices and use the even-odd rule. A centre that
//     lies exactly on an edge is covered on the edge's left side of the span
//     and not on its right side, so polygons sharing an edge never overlap.
//     (Centres are never on a horizontal edge: vertex rows are whole numbers.)
//   - Lines of width w >= 2 are capsules: every point within w/2 of the
//     segment, so the ends are round, boundary included. Their endpoints are
//     pixel centres when w is odd and pixel corners when w is even, which makes
//     an axis-aligned line exactly w pixels thick either way (an even width sits
//     on the grid line, one half above and one half below it).
//   - Lines of width <= 1 are one pixel thick: along the major axis every
//     pixel from one endpoint to the other, both included; the minor
//     coordinate is the exact one rounded half up. Swapping the endpoints
//     gives the same pixels.
//   - Shapes are drawn only when every coordinate lies within
//     +-kMaxCoordinate and a line's width is at most kMaxLineWidth; these
//     bounds keep every product in 64 bits (see raster.cpp).
#pragma once

#include <cstdint>

namespace tess {

struct Point {
  int32_t x = 0;
  int32_t y = 0;
};

struct Rect {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
  int32_t width() const { return right - left; }
  int32_t height() const { return bottom - top; }
};

constexpr int32_t kMaxCoordinate = 32767;
constexpr int32_t kMaxLineWidth = 2048;

// Receives the covered pixels as runs. Every run lies inside the clip window
// given to the shape, is non-empty, and no pixel is reported twice by one
// shape. Filled shapes report rows top-down; thin lines report runs in the
// order they step along the line.
class SpanSink {
 public:
  virtual ~SpanSink() = default;
  // Columns x_begin .. x_end - 1 of row y.
  virtual void Span(int32_t y, int32_t x_begin, int32_t x_end) = 0;
};

// `clip` is the window of pixels a shape may report: columns clip.left ..
// clip.right - 1 and rows clip.top .. clip.bottom - 1 (a canvas passes its own
// size; a wrapping compositor may pass the shape's whole extent).
void RasterRect(const Rect& box, const Rect& clip, SpanSink& sink);
void RasterEllipse(const Rect& box, const Rect& clip, SpanSink& sink);
void RasterRoundRect(const Rect& box, int32_t corner_width, int32_t corner_height,
                     const Rect& clip, SpanSink& sink);
void RasterLine(Point from, Point to, int32_t width, const Rect& clip, SpanSink& sink);
// False only when its crossing buffer cannot be had (nothing is reported then).
bool RasterPolygon(const Point* points, int count, const Rect& clip, SpanSink& sink);

}  // namespace tess
