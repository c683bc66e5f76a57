// Neural Network: a lattice of glossy nodes joined by links along which
// pulses of light travel. The entry itself is NeuralNetworkStyle()
// (styles/effects.h); this header opens the record to tests and benchmarks.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "styles/gloss.h"
#include "styles/style.h"

namespace tess {

struct NeuralNode {
  int64_t x = 0;  // centre, quarter pixels, inside the tile
  int64_t y = 0;
  int32_t paint = 0;
};

// A pulse's lap: from node `start`, `steps` moves of one link each, right or
// left by `sx` (+1 / -1) when the step is horizontal, down or up by `sy`
// otherwise. A lap holds Columns horizontal and Rows vertical steps, so it
// ends where it began.
struct NeuralPulse {
  int32_t start = 0;
  int32_t sx = 1, sy = 1;
  std::vector<uint8_t> horizontal;  // one per step: 1 horizontal, 0 vertical
  // The nodes the lap visits, unwrapped, quarter pixels: steps + 1 of them,
  // the last one a whole tile (sx, sy) away from the first.
  std::vector<int64_t> path_x, path_y;
  int32_t paint = 0;
  int64_t offset = 0;  // where on its lap frame 0 finds it, as PulseAt's t
};

class NeuralNetworkRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random`, draws the lattice once and makes every
  // sprite; null when memory is short.
  static std::unique_ptr<NeuralNetworkRecord> Create(const ParamReader& reader, Random& random);

  // 4 x (Columns + Rows), within 24..128 (see neural_network.cpp).
  static int FramesFor(int32_t columns, int32_t rows);

  int FrameCount() const override { return m_frames; }
  // Any k; frame k + N is frame k.
  ImageBlock RenderFrame(int k) override;

  // Where a pulse is at time t, in units of 1 / N of a link from the start of
  // its lap (any t >= 0; a lap takes steps * N units), quarter pixels, not
  // yet wrapped.
  void PulseAt(const NeuralPulse& pulse, int64_t t, int64_t& x, int64_t& y) const;

  int32_t width() const { return m_width; }
  int32_t height() const { return m_height; }
  int32_t pitch() const { return m_pitch; }
  int32_t node_size() const { return m_node_size; }
  const std::vector<NeuralNode>& nodes() const { return m_nodes; }
  const std::vector<NeuralPulse>& pulses() const { return m_pulses; }
  // The lattice without pulses: what every frame starts from.
  const ImageBlock& network() const { return m_network; }
  // A pulse is drawn as three glows of its paint, g = 0 its head and 1, 2
  // its tail, g * TailSpacing() (as PulseAt's t) behind the head.
  const ImageBlock& Glow(int paint, int g) const {
    return m_glows[static_cast<size_t>(paint) * 3 + static_cast<size_t>(g)];
  }
  int64_t TailSpacing() const;

 private:
  NeuralNetworkRecord() = default;
  bool Build(const ParamReader& reader, Random& random);
  bool DrawNetwork(const GlossLight& light, Colour background, int32_t shadow_offset,
                   int32_t shadow_opacity);
  bool MakeGlows();
  int32_t NodeAt(int32_t column, int32_t row) const;

  int32_t m_columns = 0, m_rows = 0;
  int32_t m_width = 0, m_height = 0;
  int32_t m_pitch = 0, m_node_size = 0;
  int m_frames = 0;
  std::vector<GlossPaint> m_paints;
  std::vector<NeuralNode> m_nodes;
  std::vector<NeuralPulse> m_pulses;
  ImageBlock m_network;
  std::vector<ImageBlock> m_glows;  // per paint: head, then two tail sizes
};

}  // namespace tess
