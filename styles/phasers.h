// Phasers on Stun: straight beams across a plain background, each flaring on
// one frame and fading over the next three (counted modulo N, so the loop has
// no break). Beams run along the tile's own diagonal slope, or horizontally or
// vertically, and every diagonal is drawn together with its continuation on
// the far side of the tile, so beams cross the tile's edges without a seam.
//
// Invariants: a record's beam list is fixed at initialisation (4 entries per
// beam, in drawing order); rendering never draws a random number, so frames
// may be rendered in any order and any number of times.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/alloc.h"
#include "image/image.h"
#include "draw/raster.h"
#include "styles/style.h"

namespace tess {

enum class BeamKind : uint8_t {
  kEastToSouth = 0,  // from the right edge down-left to the bottom edge
  kWestToSouth = 1,  // from the left edge down-right to the bottom edge
  kHorizontal = 2,
  kVertical = 3,
};

// One flash of one beam on one frame. Coordinates are in tile pixels; the mask
// is drawn at twice that.
struct PhasersBeam {
  Point start;
  Point end;
  Point second_start;  // the diagonal's continuation across the tile's edges
  Point second_end;
  bool has_second = false;
  BeamKind kind = BeamKind::kEastToSouth;
  uint8_t brightness = 0;  // 255 on the flash, then 192, 128, 64
  Colour colour = 0;  // the ink when `fill` is -1
  int8_t fill = -1;   // the colour slot whose fill image is the ink, or -1: Simple
  int32_t frame = 0;
  int32_t thickness = 0;  // Power; the mask's pen is twice as wide
};

// trunc(W x (Y / H)) with the quotient taken in double precision: the x of a
// diagonal's foot. See phasers.cpp for why every build gets the same integer.
int32_t DiagonalFoot(int32_t width, int32_t y, int32_t height);

class PhasersRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random` with Seed and draws the beams; null when
  // memory is short.
  static std::unique_ptr<PhasersRecord> Init(const ParamReader& reader, Random& random);

  int FrameCount() const override { return m_frames; }
  // The background with every entry of frame k blended in entry order.
  ImageBlock RenderFrame(int k) override;

  int32_t width() const { return m_width; }
  int32_t height() const { return m_height; }
  Colour background() const { return m_background; }
  // Every entry in drawing order: a beam's flash followed by its three fades.
  std::span<const PhasersBeam> beams() const { return {m_beams.get(), m_beam_count}; }
  // The W x H image a beam takes its ink from, pixel for pixel; null when
  // the beam's ink is its flat colour.
  const ImageBlock* FillImage(const PhasersBeam& beam) const {
    return beam.fill < 0 ? nullptr : &m_fill_images[static_cast<size_t>(beam.fill)];
  }

 private:
  // Pixel runs of one beam's mask at double size, marked in a work area that
  // is all zero between beams, with each row's touched column range.
  struct RowExtent {
    int32_t begin;
    int32_t end;
  };
  class CoverageSink;

  // The work area and its row extents, all empty; false when memory is short.
  bool AllocateWorkArea();
  void DrawBeam(ImageBlock& frame, const PhasersBeam& beam);

  int32_t m_width = 0;
  int32_t m_height = 0;
  int m_frames = 0;
  Colour m_background = 0;
  Buffer<PhasersBeam> m_beams;
  size_t m_beam_count = 0;
  Buffer<uint8_t> m_coverage;  // 2W x 2H, 1 where the pen covers
  Buffer<RowExtent> m_extents;  // per doubled row; empty when begin >= end
  std::vector<ImageBlock> m_fill_images;  // by colour slot; null for Simple fills
};

}  // namespace tess
