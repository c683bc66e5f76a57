// Hyperspace: star streaks rushing across the tile in the Scroll direction.
// The entry itself is HyperspaceStyle() (styles/effects.h); this header opens
// the record to tests and benchmarks, which check where each streak lands and
// the masks it is drawn with.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/alloc.h"
#include "image/image.h"
#include "styles/slot_paint.h"
#include "styles/style.h"

namespace tess {

// The Scroll picker's cells (fills/picker.h names them up, right, left, down).
enum class Scroll : int32_t { kUp = 0, kRight = 1, kLeft = 2, kDown = 3 };

// The direction a picker value asks for. A value outside 0..3 (a hand-edited
// configuration, a foreign document) scrolls right, as a fresh page does.
Scroll ScrollFromPicker(int32_t value);

// Sub-pixel steps of a streak's head: masks are made for each sixteenth.
constexpr int32_t kStreakPhases = 16;

// One streak shape: a layer's length, thickness and brightness, with one mask
// per sub-pixel phase of the head.
struct StreakShape {
  int32_t first;   // its phase-0 mask in the record's sprite list
  int32_t length;  // trail length in pixels, head included
  int32_t rows;    // thickness across the motion
  int32_t span;    // mask extent along the motion: length + 2
};

struct HyperStar {
  int32_t across;  // centre line of the streak, pixels across the motion
  int32_t along0;  // head at frame 0, in sixteenths of a pixel along the motion
  int32_t speed;   // tile lengths per loop
  int32_t shape;
  SlotPaints::Handle paint;
};

// Where a streak is drawn on one frame: the mask's top-left corner, before
// the wrap.
struct HyperPlacement {
  const ImageBlock* mask;
  int32_t x, y;
  SlotPaints::Handle paint;
};

// The grey values along a streak for one sub-pixel phase of its head, head
// last: `head` and `trail` each get length + 2 values. The head is 255 over
// its last `core` pixels; the trail fades linearly from `opacity` at the head
// to 0 at the tail. Each pixel averages 16 sample points.
void StreakProfile(int32_t length, int32_t core, int32_t opacity, int32_t phase, uint8_t* head,
                   uint8_t* trail);

class HyperspaceRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random`, draws the stars and makes every mask;
  // null when memory is short.
  static std::unique_ptr<HyperspaceRecord> Create(const ParamReader& reader, Random& random);

  int FrameCount() const override { return m_frames; }
  // Any k >= 0, in any order: frame k depends on k / N alone.
  ImageBlock RenderFrame(int k) override;

  HyperPlacement Place(int32_t i, int k) const;
  Scroll scroll() const { return m_scroll; }
  int32_t count() const { return m_count; }
  const HyperStar* stars() const { return m_stars.get(); }
  const std::vector<StreakShape>& shapes() const { return m_shapes; }
  const std::vector<ImageBlock>& sprites() const { return m_sprites; }
  const SlotPaints& paints() const { return m_paints; }
  Colour background() const { return m_background; }

 private:
  HyperspaceRecord() = default;
  bool Build(const ParamReader& reader, Random& random);
  bool MakeShapes(int32_t opacity);
  bool Vertical() const { return m_scroll == Scroll::kUp || m_scroll == Scroll::kDown; }
  bool Backwards() const { return m_scroll == Scroll::kUp || m_scroll == Scroll::kLeft; }

  int32_t m_width = 0, m_height = 0;
  int32_t m_along = 0, m_across = 0;  // the tile's extent along and across the motion
  int m_frames = 0;
  Scroll m_scroll = Scroll::kRight;
  Colour m_background = 0;
  SlotPaints m_paints;
  std::vector<StreakShape> m_shapes;
  std::vector<ImageBlock> m_sprites;
  Buffer<HyperStar> m_stars;
  int32_t m_count = 0;
};

}  // namespace tess
