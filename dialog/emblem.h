// The product's animated emblem: a small seamless tile of rising bubbles,
// drawn once with the engine's wrap-around drawing, shown repeated over the
// emblem's area and risen by one pixel per frame. After kFrameCount frames
// the tile has risen by exactly its own height, so the loop has no jump.
//
// Invariants: the tile is kTileSize square and tiles seamlessly; Frame(k) and
// Frame(k + kFrameCount) are identical for every k, negative k included.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace tess {

class Emblem {
 public:
  static constexpr int32_t kTileSize = 24;
  static constexpr int kFrameCount = kTileSize;

  // Draws the tile; when memory is short the emblem stays null and every
  // frame with it.
  Emblem();

  explicit operator bool() const { return static_cast<bool>(m_tile); }
  const ImageBlock& tile() const { return m_tile; }

  // A width x height 24-bit picture of frame k; null for a non-positive
  // size, a null emblem or when memory is short.
  ImageBlock Frame(int k, int32_t width, int32_t height) const;

 private:
  ImageBlock m_tile;
};

// The tile alone: a deep blue-green ground with three bubbles, one of them
// across the corner so that every edge carries part of a bubble.
ImageBlock DrawEmblemTile();

}  // namespace tess
