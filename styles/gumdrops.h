// Gumdrops: bevelled sweets of five shapes tumbling down the tile. The entry
// itself is GumdropsStyle() (styles/effects.h); this header opens the record
// to tests and benchmarks, which prove the map cache and the blit against
// plain references and roll the picture against a moved viewpoint.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/alloc.h"
#include "image/image.h"
#include "styles/shape_paint.h"
#include "styles/style.h"

namespace tess {

// In the order of the page's "Shape N:" lists.
enum class DropShape : int32_t { kSquare, kRound, kDiamond, kHeart, kStar };
constexpr int kDropShapeCount = 5;

// One drop. Trivial, so the element array is one zeroed block.
struct Gumdrop {
  int32_t x0;      // centre at frame 0 before sway, tile pixels
  int32_t y0;
  int32_t layer;   // 0 far and small .. 2 near and large; drawn in that order
  int32_t speed;   // tile heights fallen over the loop
  int32_t sway;    // sideways amplitude in pixels
  int32_t phase;   // sway phase at frame 0, in 1/360 of a turn
  int32_t paint;   // index into the record's paints (the enabled colours)
  int32_t turn0;   // rotation step at frame 0
  int32_t tumble;  // symmetry steps turned over the loop; the sign is the sense
};

// A drop's look at one size and rotation: coverage and bevel light per pixel.
struct DropTexel {
  uint8_t alpha;  // 0..255
  uint8_t unused;
  int16_t shade;  // -255 (darkest) .. 255 (lightest); 0 is the plain fill
};

struct DropMap {
  int32_t side = 0;  // the map is side x side pixels, the drop centred in it
  Buffer<DropTexel> texels;
};

struct GumdropsOptions {
  // Maps depend on (shape, size, rotation step) only, so a record makes each
  // once; off, every drop makes its map afresh on every frame, the reference
  // the cache must reproduce byte for byte.
  bool cache_maps = true;
  // The pixel-by-pixel blit, the reference of the fast one.
  bool plain_blit = false;
  // The tile as seen from (view_x, view_y): a seamless picture rolled by that
  // much is the same picture.
  int32_t view_x = 0;
  int32_t view_y = 0;
};

class GumdropsRecord final : public StyleRecord {
 public:
  // Reads the page, seeds `random`, draws the drops and makes their maps and
  // paints; null when memory is short.
  static std::unique_ptr<GumdropsRecord> Create(const ParamReader& reader, Random& random,
                                                GumdropsOptions options = {});
  ~GumdropsRecord() override;

  int FrameCount() const override { return m_frames; }
  // Any frame, any number of times: a frame depends on k modulo N alone.
  ImageBlock RenderFrame(int k) override;

  int32_t count() const { return m_count; }
  const Gumdrop* drops() const { return m_drops.get(); }
  DropShape ShapeOf(const Gumdrop& drop) const;
  int32_t Diameter(int layer) const { return m_diameter[layer]; }
  // Rotation steps per symmetry step of a shape at a layer's size.
  int32_t Steps(DropShape shape, int layer) const;
  // The rotation step of a drop on frame k.
  int32_t StepAt(const Gumdrop& drop, int k) const;
  // Maps made so far, for tests of the cache.
  int maps_made() const { return m_maps_made; }

 private:
  struct Paint;
  GumdropsRecord();
  bool Init(const ParamReader& reader, Random& random);
  bool MakePaints();
  bool MakeMaps();
  bool MakeMap(DropShape shape, int layer, int32_t step, DropMap& map);

  GumdropsOptions m_options;
  int32_t m_width = 0, m_height = 0;
  int m_frames = 0;
  Colour m_background = 0;
  bool m_bevel = false;
  int32_t m_diameter[3] = {};
  Buffer<Gumdrop> m_drops;
  int32_t m_count = 0;
  std::vector<Paint> m_paints;                      // by Gumdrop::paint
  std::vector<std::vector<double>> m_outlines;      // unit outlines by shape, x y pairs
  std::vector<DropMap> m_maps;                      // by MapIndex; empty when unused
  int32_t m_map_base[kDropShapeCount][3] = {};
  CoverageGrid m_grid;
  std::vector<Point> m_points;
  Buffer<double> m_nearest;     // per map pixel: squared distance to the outline
  Buffer<int32_t> m_edge;       // per map pixel: the outline edge it is nearest
  int m_maps_made = 0;
};

}  // namespace tess
