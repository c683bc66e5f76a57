// Gridlock: glossy blocks in stop-and-go traffic on a street grid. The entry
// itself is GridlockStyle() (styles/effects.h); this header opens the record
// to tests and benchmarks, which check the traffic and the compositing.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "styles/gloss.h"
#include "styles/style.h"

namespace tess {

// One one-way street and its timetable: in light cycle c it moves d[c]
// segments during its green window, from tick delay[c] for duration[c] ticks.
struct GridlockStreet {
  bool horizontal = true;
  int32_t sign = 1;      // +1 right or down, -1 left or up
  int64_t across = 0;    // centre line, quarter pixels
  int32_t segments = 0;  // per tile length: the crossing streets' count
  std::vector<int32_t> d, delay, duration;
};

struct GridlockCar {
  int32_t street = 0;
  int64_t along0 = 0;  // centre along the street at frame 0, quarter pixels
  int32_t paint = 0;
};

class GridlockRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random`, lays out the streets and makes every
  // sprite; null when memory is short.
  static std::unique_ptr<GridlockRecord> Create(const ParamReader& reader, Random& random);

  int FrameCount() const override { return m_frames; }
  // Any k; frame k + N is frame k.
  ImageBlock RenderFrame(int k) override;

  // The centre of `car` in frame k, quarter pixels, not yet wrapped.
  void Centre(const GridlockCar& car, int k, int64_t& x, int64_t& y) const;
  // What frame k draws, in drawing order.
  void Items(int k, std::vector<GlossItem>& items) const;

  const std::vector<GridlockStreet>& streets() const { return m_streets; }
  const std::vector<GridlockCar>& cars() const { return m_cars; }
  // Block length (along its street) and width, pixels.
  int32_t length() const { return m_length; }
  int32_t breadth() const { return m_breadth; }
  int32_t width() const { return m_width; }
  int32_t height() const { return m_height; }
  int32_t cycles() const { return m_cycles; }
  // Streets per axis: columns of vertical streets, rows of horizontal ones.
  int32_t columns() const { return m_columns; }
  int32_t rows() const { return m_rows; }
  int32_t shadow_offset() const { return m_shadow_offset; }
  int32_t shadow_opacity() const { return m_shadow_opacity; }
  Colour background() const { return m_background; }

  static constexpr int32_t kTicks = 240;  // per green window

 private:
  GridlockRecord() = default;
  bool Build(const ParamReader& reader, Random& random);
  void LayOut(const bool (&directions)[4], int32_t density, size_t paints, Random& random);
  void Schedule(GridlockStreet& street, Random& random) const;
  int64_t Travelled(const GridlockStreet& street, int k) const;

  int32_t m_width = 0, m_height = 0;
  int m_frames = 0;
  int32_t m_cycles = 1;
  int32_t m_length = 0, m_breadth = 0;
  int32_t m_columns = 1, m_rows = 1;
  int32_t m_shadow_offset = 0, m_shadow_opacity = 0;
  Colour m_background = 0;
  std::vector<GridlockStreet> m_streets;
  std::vector<GridlockCar> m_cars;
  GlossSprites m_sprites[2];  // along horizontal streets, along vertical ones
  ShadowLayer m_ground;
  std::vector<GlossItem> m_items;  // kept between frames to reuse its storage
};

}  // namespace tess
