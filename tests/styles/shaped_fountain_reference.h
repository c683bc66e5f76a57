// Shaped Fountain drawn the plain way, for the test to prove the record's
// lookup against and for the benchmark to time it by: for every frame the
// strip is rolled, every ring is painted over the last on a black canvas four
// times the tile's side, and the canvas is reduced to a quarter.
#pragma once

#include "draw/canvas.h"
#include "draw/draw.h"
#include "styles/shaped_fountain.h"

namespace tess::testing {

inline ImageBlock ShapedFountainReferenceFrame(const ShapedFountainRecord& record, int k) {
  const int n = record.FrameCount();
  const int roll = static_cast<int>(256 * (static_cast<double>(((k % n) + n) % n) / n));
  ImageBlock strip = roll == 0          ? DuplicateGlobalBlock(record.strip())
                     : record.scroll() ? RollRight(record.strip(), roll)
                                       : RollLeft(record.strip(), roll);
  Canvas canvas = Canvas::Open(4 * record.side(), 4 * record.side());
  if (!strip || !canvas) return {};
  const int cx = canvas.width() / 2, cy = canvas.height() / 2, rings = canvas.width() / 2;
  for (int i = 0; i < rings; ++i) {
    const double t = static_cast<double>(i) / rings;
    const Colour colour = ImageGetPixel(strip, static_cast<int>(t * 256), 0);
    const Ring ring = ShapedFountainRing(record.shape(), i, rings, cx, cy);
    switch (ring.shape) {
      case kRingCircle: canvas.FillEllipse(ring.box, colour); break;
      case kRingDiamond:
        if (!canvas.FillPolygon(ring.diamond.data(), static_cast<int>(ring.diamond.size()), colour))
          return {};
        break;
      case kRingBiscuit:
        canvas.FillRoundRect(ring.box, ring.corner_width, ring.corner_height, colour);
        break;
      default: canvas.FillRect(ring.box, colour); break;
    }
  }
  return ScaleByPercent(canvas.image(), 25, 25);
}

}  // namespace tess::testing
