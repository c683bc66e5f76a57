// The emblem's tile and frames. Bubbles are rings painted through grey masks
// with the wrap-around blend, the way the effects keep their tiles seamless.
#include "dialog/emblem.h"

#include <algorithm>
#include <cstring>

#include "draw/canvas.h"
#include "draw/draw.h"

namespace tess {
namespace {

constexpr Colour kGround = MakeColour(22, 74, 104);

struct Bubble {
  int32_t x, y;      // top-left corner on the tile; may cross an edge
  int32_t diameter;
  Colour colour;
};

// The largest bubble straddles the corner, so all four corners show part of it.
constexpr Bubble kBubbles[] = {
    {15, 17, 13, MakeColour(150, 220, 235)},
    {3, 4, 9, MakeColour(235, 245, 250)},
    {14, 2, 6, MakeColour(240, 210, 120)},
};

// A ring: a full disc, its inside taken out, and a highlight near the top left.
ImageBlock BubbleMask(int32_t diameter) {
  Canvas mask = Canvas::Open(diameter, diameter);
  if (!mask) return {};
  mask.FillEllipse({0, 0, diameter, diameter}, MakeColour(255, 255, 255));
  mask.FillEllipse({2, 2, diameter - 2, diameter - 2}, MakeColour(60, 60, 60));
  int32_t spot = diameter / 4 + 1;
  mask.FillEllipse({diameter / 4, diameter / 4, diameter / 4 + spot, diameter / 4 + spot},
                   MakeColour(255, 255, 255));
  return mask.Release();
}

}  // namespace

ImageBlock DrawEmblemTile() {
  Canvas tile = Canvas::Open(Emblem::kTileSize, Emblem::kTileSize);
  if (!tile) return {};
  tile.Clear(kGround);
  for (const Bubble& b : kBubbles) {
    ImageBlock mask = BubbleMask(b.diameter);
    if (!mask) return {};
    MaskBlendWrap(tile.image(), mask, b.x, b.y, b.colour, 255);
  }
  return tile.Release();
}

Emblem::Emblem() : m_tile(DrawEmblemTile()) {}

ImageBlock Emblem::Frame(int k, int32_t width, int32_t height) const {
  if (!m_tile || width <= 0 || height <= 0) return {};
  ImageBlock frame = ImageCreate(width, height, nullptr, 24);
  if (!frame) return {};
  int32_t rise = WrapIndex(k, kTileSize);
  // Whole tile rows are copied and the row's remainder cut, so the loop only
  // ever touches each output byte once.
  size_t tile_row_bytes = 3 * static_cast<size_t>(kTileSize);
  for (int32_t y = 0; y < height; ++y) {
    const uint8_t* source = m_tile.Row(WrapIndex(int64_t{y} + rise, kTileSize));
    uint8_t* row = frame.Row(y);
    size_t row_bytes = 3 * static_cast<size_t>(width);
    for (size_t at = 0; at < row_bytes; at += tile_row_bytes)
      std::memcpy(row + at, source, std::min(tile_row_bytes, row_bytes - at));
  }
  return frame;
}

}  // namespace tess
