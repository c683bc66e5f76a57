// Helpers of the shape effects (Gumdrops, Cubist): a sine of whole fractions
// of a turn that gives the same bits on every build, 4 x 4 supersampled
// coverage gathered from the scan converter's spans, a wrap-around paint of
// that coverage, and what a "Color N" slot paints an element with.
//
// Invariants: everything here is integer arithmetic or double arithmetic of
// single IEEE operations (the file is compiled without contraction), so a
// seed draws the same picture everywhere. Coverage is 0..16 per pixel.
//
// Sections: turn sine · coverage · wrapped paint · slot paint.
#pragma once

#include <cstdint>

#include "base/alloc.h"
#include "draw/raster.h"
#include "fills/fill_descriptor.h"
#include "image/image.h"

namespace tess {

// ---------------------------------------------------------------- turn sine

// sin and cos of num / den turns (den > 0, any num). The angle is reduced in
// integers, so num and num + den give the same bits, and the series below is
// evaluated with plain multiplications and additions: no library function
// whose last bit could differ between platforms.
double TurnSine(int64_t num, int64_t den);
double TurnCosine(int64_t num, int64_t den);

// floor(a / b) for b > 0: frame-phase arithmetic that stays right for
// negative speeds.
constexpr int64_t FloorDiv(int64_t a, int64_t b) {
  const int64_t q = a / b;
  return (a % b != 0 && a < 0) ? q - 1 : q;
}

// ---------------------------------------------------------------- coverage

// Shapes are rasterised at four times the pixel grid (coordinates in quarter
// pixels); each pixel counts the 16 sample points inside it.
constexpr int32_t kSubpixels = 4;
constexpr int32_t kFullCoverage = kSubpixels * kSubpixels;

// Gathers the spans of one shape in a window of pixels. Spans are added as
// differences, so a span costs the same whatever its length; Finish() turns
// each row into counts. A shape drawn with Subtract() on cuts its spans out
// of what was added before (an outline is its outer box less its inner one).
class CoverageGrid final : public SpanSink {
 public:
  // Room for windows up to width x height pixels; false when memory is short.
  bool Reserve(int32_t width, int32_t height);
  // Starts an empty window whose top-left pixel is (left, top); it must fit
  // the reservation.
  void Begin(int32_t left, int32_t top, int32_t width, int32_t height);
  void Subtract(bool on) { m_sign = on ? -1 : 1; }
  // The window in quarter pixels: the clip to give the rasteriser.
  Rect SubpixelClip() const;
  // Quarter-pixel spans inside SubpixelClip().
  void Span(int32_t y, int32_t x_begin, int32_t x_end) override;
  // Turns the gathered differences into counts 0..16.
  void Finish();

  int32_t left() const { return m_left; }
  int32_t top() const { return m_top; }
  int32_t width() const { return m_width; }
  int32_t height() const { return m_height; }
  // Counts of window row r (after Finish).
  const int16_t* Row(int32_t r) const { return m_cells.get() + static_cast<size_t>(r) * Stride(); }

 private:
  size_t Stride() const { return static_cast<size_t>(m_width) + 1; }
  void Add(int16_t* row, int32_t x, int32_t value) {
    row[x] = static_cast<int16_t>(row[x] + value);
    row[x + 1] = static_cast<int16_t>(row[x + 1] - value);
  }

  Buffer<int16_t> m_cells;  // (width + 1) per row: the extra cell ends the last run
  size_t m_capacity = 0;
  int32_t m_left = 0, m_top = 0, m_width = 0, m_height = 0;
  int32_t m_sign = 1;
};

// ---------------------------------------------------------------- wrapped paint

// What one shape paints: a flat colour, or a picture (24-bit) whose pixel
// (u, v) lies under tile pixel (u + origin_x, v + origin_y), clamped to the
// picture's edges; either at opacity 1..255.
struct CoverageInk {
  Colour colour = 0;
  const ImageBlock* picture = nullptr;
  int32_t origin_x = 0;
  int32_t origin_y = 0;
  int32_t opacity = 255;
};

// Blends the grid's coverage into the 24-bit target with wrap-around: pixel
// (x, y) of the window lands on (wrap x, wrap y). Coverage c becomes
// a = c * opacity / 16, then each channel s * a / 255 + d * (255 - a) / 255
// (two quotients added, as the mask blend does).
void PaintCoverageWrap(ImageBlock& target, const CoverageGrid& grid, const CoverageInk& ink);

// The same, pixel by pixel through ImageGetPixel/ImageSetPixel: the
// reference PaintCoverageWrap must match byte for byte.
void PaintCoverageWrapPlain(ImageBlock& target, const CoverageGrid& grid, const CoverageInk& ink);

// The ink's colour under tile pixel (x, y) (pictures clamp at their edges).
Colour InkColourAt(const CoverageInk& ink, int32_t x, int32_t y);

// ---------------------------------------------------------------- slot paint

// How a "Color N" slot paints an element of one size: a Simple fill paints
// its flat colour; any other fill is rendered once at the element's size and
// carried whole inside it, so it moves with the element and stays seamless.
struct SlotPaint {
  Colour colour = 0;
  ImageBlock picture;  // null for a flat colour
};

// False only when the fill's picture cannot be had for lack of memory. A
// fill that cannot render at all (an unknown gradient type) paints its flat
// colour instead.
bool MakeSlotPaint(const FillDescriptor& fill, int32_t width, int32_t height, SlotPaint& paint);

}  // namespace tess
