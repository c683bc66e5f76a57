// Snow: flakes in four depth layers falling and swaying over a background.
// The entry itself is SnowStyle() (styles/effects.h); this header opens the
// record to tests and benchmarks, which check where each flake lands and the
// sprites it is drawn with.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/alloc.h"
#include "image/image.h"
#include "styles/slot_paint.h"
#include "styles/style.h"

namespace tess {

// sin(2 pi phase / 65536) * 65536, rounded to nearest: a polynomial in plain
// double operations, so every platform gets the same integers (a library sine
// may differ in its last place between platforms).
int32_t SineQ16(uint32_t phase);

// One crystal's look, drawn from the generator: lengths are in thousandths of
// the crystal's radius.
struct CrystalDesign {
  int32_t arm_width;         // thousandths of the radius
  int32_t branch_width;      // per cent of the arm width
  int32_t hub;               // radius of the central hexagon
  bool hub_ring;             // the hexagon as an outline rather than a plate
  int32_t branches;          // pairs of side branches per arm, 1..3
  int32_t branch_at[3];      // distance of each pair from the centre
  int32_t branch_length[3];
  bool tip_plate;            // a small hexagon at the end of each arm
  int32_t tip_size;
};

// The crystal at four times `size` on a side as 0/1 coverage, row by row,
// centred, its arms clear of the edge; null when memory is short.
Buffer<uint8_t> DrawCrystalMaster(const CrystalDesign& design, int32_t size);

// A size x size grey mask of the master turned by turn / (6 * turns) of a
// full turn: each pixel counts which of its 4 x 4 sample points fall on ink.
// Turn 0 is the master reduced; `turns` copies span the sixth of a turn after
// which the crystal looks the same again. Null when memory is short.
ImageBlock TurnedCrystal(const uint8_t* master, int32_t size, int32_t turn, int32_t turns);

// A size x size grey mask of a soft disc: opaque in the middle, fading to
// nothing at the rim. Null when memory is short.
ImageBlock SoftDisc(int32_t size);

// One sprite shape: a disc, or a crystal's turned copies.
struct SnowShape {
  int32_t first;  // its first mask in the record's sprite list
  int32_t turns;  // number of turned copies (1 for a disc)
  int32_t size;   // side in pixels
};

struct SnowFlake {
  int32_t x0, y0;    // centre at frame 0, tile pixels
  int32_t shape;
  int32_t fall;      // tile heights fallen per loop
  int32_t sway;      // sway amplitude in pixels
  int32_t periods;   // whole sway periods per loop
  int32_t phase;     // sway phase at frame 0, in 1/65536 of a period
  int32_t turn0;     // turned copy shown at frame 0
  int32_t spin;      // sixths of a turn per loop: -1, 0 or 1
  int32_t opacity;   // 1..255
  SlotPaints::Handle paint;
};

// Where a flake is drawn on one frame: the mask's top-left corner, before
// the wrap.
struct SnowPlacement {
  const ImageBlock* mask;
  int32_t x, y;
  SlotPaints::Handle paint;
  int opacity;
};

class SnowRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random`, draws the flakes and makes every sprite;
  // null when memory is short.
  static std::unique_ptr<SnowRecord> Create(const ParamReader& reader, Random& random);

  int FrameCount() const override { return m_frames; }
  // Any k >= 0, in any order: frame k depends on k / N alone.
  ImageBlock RenderFrame(int k) override;

  SnowPlacement Place(int32_t i, int k) const;
  int32_t count() const { return m_count; }
  const SnowFlake* flakes() const { return m_flakes.get(); }
  const std::vector<SnowShape>& shapes() const { return m_shapes; }
  const std::vector<ImageBlock>& sprites() const { return m_sprites; }
  const SlotPaints& paints() const { return m_paints; }
  Colour background() const { return m_background; }

 private:
  SnowRecord() = default;
  bool Build(const ParamReader& reader, Random& random);
  bool MakeShapes(const CrystalDesign (&designs)[12], const int32_t (&sizes)[12]);

  int32_t m_width = 0, m_height = 0;
  int m_frames = 0;
  Colour m_background = 0;
  SlotPaints m_paints;
  std::vector<SnowShape> m_shapes;
  std::vector<ImageBlock> m_sprites;
  Buffer<SnowFlake> m_flakes;
  int32_t m_count = 0;
};

}  // namespace tess
