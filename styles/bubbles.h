// Bubbles: soft round bubbles in three depth layers rising and swaying over a
// background. The entry itself is BubblesStyle() (styles/effects.h); this
// header opens the record to tests and benchmarks, which need its elements and
// the choice of drawing every sprite afresh to prove the sprite cache exact.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "base/alloc.h"
#include "image/image.h"
#include "styles/style.h"

namespace tess {

// One bubble. Trivial, so the element array is one zeroed block.
struct Bubble {
  int32_t x0;       // centre in working pixels at frame 0, before sway
  int32_t y0;
  int32_t d;        // diameter in working pixels
  int32_t v;        // speed class: tile heights travelled over the animation
  int32_t b;        // brightness of the mask profile
  int32_t opacity;  // 1..255
  bool inverse;
  double angle;     // sway phase in degrees, advanced once per rendered frame
  Colour colour;    // the ink when `fill` is -1
  int32_t fill;     // slot of its fill image in the record, or -1: a Simple fill
  int32_t sprite;   // slot of its (d, b) mask in the record's sprite cache
};

struct BubblesOptions {
  // Masks depend only on (d, b, inverse), so a record draws each once and
  // reuses it; off, every element draws its own mask each frame, as the
  // reference the cache must reproduce byte for byte.
  bool cache_sprites = true;
};

class BubblesRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random` and draws the elements; null when memory
  // is short.
  static std::unique_ptr<BubblesRecord> Create(const ParamReader& reader, Random& random,
                                               BubblesOptions options = {});

  int FrameCount() const override { return m_frames; }
  // Frames must come in order 0, 1, ..., each once: every call advances the
  // sway angles.
  ImageBlock RenderFrame(int k) override;

  int32_t count() const { return m_count; }
  const Bubble* bubbles() const { return m_bubbles.get(); }
  int scale() const { return m_scale; }
  // Masks drawn so far (the cache's occupancy), for tests of the cache.
  int sprites_drawn() const { return m_sprites_drawn; }

 private:
  BubblesRecord() = default;
  bool FillElements(const ParamReader& reader, Random& random);
  bool RenderFills(const std::vector<FillDescriptor>& fills,
                   const std::vector<std::pair<int32_t, int32_t>>& keys);
  const ImageBlock* SpriteFor(const Bubble& bubble, ImageBlock& scratch);

  BubblesOptions m_options;
  Buffer<Bubble> m_bubbles;
  int32_t m_count = 0;
  int m_scale = 2;             // f: 4 with Smooth, else 2
  int32_t m_work_width = 0;    // Wf
  int32_t m_work_height = 0;   // Hf
  int32_t m_large = 0, m_medium = 0, m_small = 0;  // Sl, Sm, Ss
  int m_frames = 0;            // N
  int32_t m_drift = 0;
  double m_angle_step = 0;     // (1 / N) * 360, see RenderFrame
  Colour m_background = 0;     // each frame's canvas starts filled with it
  std::vector<ImageBlock> m_sprites;  // by Bubble::sprite; null until first used
  std::vector<ImageBlock> m_fill_images;  // by Bubble::fill
  int m_sprites_drawn = 0;
};

// The d x d grey mask of a bubble: concentric filled circles from the rim
// inwards, rim 255 and centre towards 255 - b (rim 0 and centre towards b when
// inverse). Null when memory is short.
ImageBlock MakeBubbleSprite(int32_t d, int32_t b, bool inverse);

}  // namespace tess
