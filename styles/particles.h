// Particles: glossy beads drifting in straight lines. The entry itself is
// ParticlesStyle() (styles/effects.h); this header opens the record to tests
// and benchmarks, which check the motion and the compositing.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "styles/gloss.h"
#include "styles/style.h"

namespace tess {

struct Particle {
  int64_t x0 = 0;  // centre at frame 0, quarter pixels
  int64_t y0 = 0;
  int32_t vx = 0;  // tiles travelled per loop along each axis (not both 0)
  int32_t vy = 0;
  int32_t layer = 0;  // size class: 0 small, 1 medium, 2 large (drawn in that order)
  int32_t paint = 0;  // index into the enabled slots' paints
};

class ParticlesRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random` and makes every sprite; null when memory
  // is short.
  static std::unique_ptr<ParticlesRecord> Create(const ParamReader& reader, Random& random);

  int FrameCount() const override { return m_frames; }
  // Any k; frame k + N is frame k.
  ImageBlock RenderFrame(int k) override;

  // The centre of `p` in frame k, quarter pixels, not yet wrapped.
  void Centre(const Particle& p, int k, int64_t& x, int64_t& y) const;
  // What frame k draws, in drawing order.
  void Items(int k, std::vector<GlossItem>& items) const;

  const std::vector<Particle>& particles() const { return m_particles; }
  int32_t width() const { return m_width; }
  int32_t height() const { return m_height; }
  int32_t shadow_offset() const { return m_shadow_offset; }
  int32_t shadow_opacity() const { return m_shadow_opacity; }
  Colour background() const { return m_background; }

 private:
  ParticlesRecord() = default;
  bool Build(const ParamReader& reader, Random& random);

  int32_t m_width = 0, m_height = 0;
  int m_frames = 0;
  int32_t m_shadow_offset = 0, m_shadow_opacity = 0;
  Colour m_background = 0;
  std::vector<Particle> m_particles;
  GlossSprites m_sprites[3];
  ShadowLayer m_ground;
  std::vector<GlossItem> m_items;  // kept between frames to reuse its storage
};

}  // namespace tess
