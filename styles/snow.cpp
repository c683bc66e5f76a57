// Snow (style 015): flakes in four depth layers falling over a plain
// background. Nearer layers have bigger, more opaque flakes that fall faster
// and sway wider, which reads as depth; flakes of 14 pixels and more are
// six-armed crystals (a few random designs per layer), smaller ones soft discs.
//
// Motion is a function of the phase k/N alone, in integers: over the loop a
// flake falls 1 to 4 whole tile heights (by layer), sways sideways through 1
// or 2 whole sine periods (amplitude Drift per cent of the tile width, less
// for farther layers), and a crystal turns -1, 0 or 1 sixth of a turn, which
// its six-fold symmetry makes look like a whole turn. So frame N is frame 0
// and frames can come in any order. Every mask is blended with wrap-around,
// so the tile has no seams at any size.
//
// Everything that does not move is made once per build: each crystal design
// is drawn once at four times its size and resampled into turned copies (more
// for bigger crystals, so the tips step less than a pixel), each disc once per
// size, each non-Simple fill once per slot and size. Frames only blend.
//
// Sections: page · sine · sprites · initialisation · frames · entry.
#include "styles/snow.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "draw/draw.h"
#include "draw/raster.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 15;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1015}),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", {10, 64, 18}),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kDriftControl), kLeft, 6, "Drift:", "Drift", {0, 99, 25}),
        Spin(Id(kOpacityControl), kLeft, 7, "Opacity:", "FillOpacity", {1, 255, 255}),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

// Depth layers, far to near (and drawn in that order, so near flakes cover
// far ones). Counts, sizes and sway are in quarters of Density, Size and
// Drift; opacity scales the page's Opacity.
struct Layer {
  int32_t count_quarters;
  int32_t size_quarters;
  int32_t fall;     // tile heights per loop
  int32_t opacity;  // out of 255
  int32_t sway_quarters;
};
constexpr Layer kLayers[4] = {
    {4, 1, 1, 128, 1}, {3, 2, 2, 176, 2}, {2, 3, 3, 216, 3}, {1, 4, 4, 255, 4}};
// Each layer has three flake sizes (100, 90 and 80 per cent), each its own shape.
constexpr int kVariants = 3;
constexpr int kShapes = 4 * kVariants;
// Below this a crystal's arms would merge into a blot.
constexpr int32_t kCrystalFrom = 14;

int32_t ShapeSize(int32_t size, int layer, int variant) {
  return std::max<int32_t>(3, size * (layer + 1) * (10 - variant) / 40);
}

// Enough copies per sixth of a turn that a tip, size/2 from the centre, moves
// less than a pixel from one to the next (2 pi/6 * size/2 / turns < 1).
int32_t TurnsFor(int32_t size) {
  return size >= kCrystalFrom ? std::max<int32_t>(6, 2 * size / 3) : 1;
}

int64_t FloorDiv(int64_t a, int64_t b) {  // b > 0
  int64_t q = a / b;
  return (a % b != 0 && a < 0) ? q - 1 : q;
}

int64_t FloorMod(int64_t a, int64_t b) { return a - FloorDiv(a, b) * b; }

}  // namespace

// ---------------------------------------------------------------- sine

// The Taylor series to x^15 on [0, pi/2] is within 7e-10 of the sine, far
// below the half unit in 65536 that the rounding can see. Each operation is
// a single IEEE-754 step (this file is built without contraction and with
// SSE2 on 32-bit x86), so the result is the same everywhere.
int32_t SineQ16(uint32_t phase) {
  phase &= 0xFFFFu;
  const uint32_t quadrant = phase >> 14;
  uint32_t t = phase & 0x3FFFu;
  if (quadrant & 1u) t = 16384u - t;
  constexpr double kQuarterStep = 1.5707963267948966 / 16384.0;
  const double x = t * kQuarterStep;
  const double x2 = x * x;
  double p = -1.0 / 1307674368000.0;
  p = p * x2 + 1.0 / 6227020800.0;
  p = p * x2 - 1.0 / 39916800.0;
  p = p * x2 + 1.0 / 362880.0;
  p = p * x2 - 1.0 / 5040.0;
  p = p * x2 + 1.0 / 120.0;
  p = p * x2 - 1.0 / 6.0;
  p = p * x2 + 1.0;
  const auto q = static_cast<int32_t>(std::floor(p * x * 65536.0 + 0.5));
  return quadrant >= 2 ? -q : q;
}

// ---------------------------------------------------------------- sprites

namespace {

// Unit vectors every 30 degrees, anticlockwise from the right, y downwards:
// every direction a crystal's arms, branches and hexagons need.
constexpr double kS = 0.8660254037844386;  // sqrt(3) / 2
constexpr double kUnit[12][2] = {{1, 0},   {kS, -0.5}, {0.5, -kS}, {0, -1},  {-0.5, -kS}, {-kS, -0.5},
                                 {-1, 0},  {-kS, 0.5}, {-0.5, kS}, {0, 1},   {0.5, kS},   {kS, 0.5}};

struct Vec {
  double x, y;
};

Vec Along(Vec from, int direction, double length) {
  const double* u = kUnit[direction % 12];
  return {from.x + u[0] * length, from.y + u[1] * length};
}

Point ToPoint(Vec v) {
  return {static_cast<int32_t>(std::floor(v.x + 0.5)), static_cast<int32_t>(std::floor(v.y + 0.5))};
}

// Marks covered pixels with 1 in a side x side byte map.
class InkSink final : public SpanSink {
 public:
  InkSink(uint8_t* ink, int32_t side) : m_ink(ink), m_side(side) {}
  void Span(int32_t y, int32_t x_begin, int32_t x_end) override {
    std::memset(m_ink + size_t(y) * size_t(m_side) + size_t(x_begin), 1, size_t(x_end - x_begin));
  }

 private:
  uint8_t* m_ink;
  int32_t m_side;
};

// A hexagon with its corners in the six arms' directions (the odd entries of
// kUnit), filled or as an outline of the given width.
bool Hexagon(Vec centre, double radius, bool outline, int32_t width, const Rect& clip,
             SpanSink& sink) {
  Point corners[6];
  for (int i = 0; i < 6; ++i) corners[i] = ToPoint(Along(centre, 2 * i + 1, radius));
  if (!outline) return RasterPolygon(corners, 6, clip, sink);
  for (int i = 0; i < 6; ++i) RasterLine(corners[i], corners[(i + 1) % 6], width, clip, sink);
  return true;
}

}  // namespace

Buffer<uint8_t> DrawCrystalMaster(const CrystalDesign& d, int32_t size) {
  const int32_t side = 4 * size;
  Buffer<uint8_t> ink = AllocBuffer<uint8_t>(size_t(side) * size_t(side));
  if (!ink) return ink;
  InkSink sink(ink.get(), side);
  const Rect clip{0, 0, side, side};
  const Vec centre{2.0 * size, 2.0 * size};
  // A pixel and a half of margin at the final size, so tips never touch the
  // sprite's edge at any turn: rounding ends to master pixels (whose centres
  // sit half a pixel in) can carry ink one master pixel past the radius.
  const double radius = 2.0 * size - 6.0;
  const int32_t arm = std::max<int32_t>(3, static_cast<int32_t>(radius * d.arm_width / 1000));
  const int32_t branch = std::max<int32_t>(3, arm * d.branch_width / 100);
  const double tip = d.tip_plate ? radius * d.tip_size / 1000 : 0.0;
  // Capsules reach half their width past their ends.
  const double arm_end = d.tip_plate ? radius - tip : radius - arm / 2.0;
  const double reach = radius - branch / 2.0;
  for (int j = 0; j < 6; ++j) {
    const int a = 3 + 2 * j;  // straight up, then every 60 degrees
    RasterLine(ToPoint(centre), ToPoint(Along(centre, a, arm_end)), arm, clip, sink);
    if (d.tip_plate && !Hexagon(Along(centre, a, arm_end), tip, false, 0, clip, sink)) return {};
    for (int b = 0; b < d.branches; ++b) {
      const double at = radius * d.branch_at[b] / 1000;
      // Branches leave at 60 degrees to the arm, pointing outwards; their end
      // lies at at^2 + l^2 + at*l from the centre, kept within the reach.
      const double most = (std::sqrt(4.0 * reach * reach - 3.0 * at * at) - at) / 2.0;
      const double length = std::min(radius * d.branch_length[b] / 1000, most);
      if (length <= 0) continue;
      const Vec base = Along(centre, a, at);
      RasterLine(ToPoint(base), ToPoint(Along(base, a + 2, length)), branch, clip, sink);
      RasterLine(ToPoint(base), ToPoint(Along(base, a + 10, length)), branch, clip, sink);
    }
  }
  if (!Hexagon(centre, radius * d.hub / 1000, d.hub_ring, branch, clip, sink)) return {};
  return ink;
}

ImageBlock TurnedCrystal(const uint8_t* master, int32_t size, int32_t turn, int32_t turns) {
  ImageBlock out = ImageCreate(size, size, nullptr, 24);
  if (!out) return out;
  const int32_t side = 4 * size;
  const auto phase = static_cast<uint32_t>(int64_t{turn} * 65536 / (6 * int64_t{turns}));
  const int64_t c = SineQ16(phase + 16384), s = SineQ16(phase);
  // Sample points in eighths of a pixel from the sprite's centre; the master
  // has quarter pixels, so a turned offset in Q16 eighths shifts down by 17.
  for (int32_t py = 0; py < size; ++py) {
    uint8_t* row = out.Row(py);
    for (int32_t px = 0; px < size; ++px) {
      int count = 0;
      for (int sy = 0; sy < 4; ++sy) {
        const int64_t v = 8 * py + 2 * sy + 1 - 4 * size;
        for (int sx = 0; sx < 4; ++sx) {
          const int64_t u = 8 * px + 2 * sx + 1 - 4 * size;
          const int64_t mx = ((c * u + s * v) >> 17) + 2 * size;
          const int64_t my = ((c * v - s * u) >> 17) + 2 * size;
          if (mx >= 0 && my >= 0 && mx < side && my < side) count += master[my * side + mx];
        }
      }
      const auto grey = static_cast<uint8_t>(count * 255 / 16);
      std::memset(row + 3 * size_t(px), grey, 3);
    }
  }
  return out;
}

ImageBlock SoftDisc(int32_t size) {
  ImageBlock out = ImageCreate(size, size, nullptr, 24);
  if (!out) return out;
  // Distances in eighths of a pixel. With t = 1 - r^2 (r from 0 at the centre
  // to 1 at the rim), coverage is 1.5 t^2 up to full: an opaque middle that
  // blurs out over most of the radius, like a flake out of focus. inside^2
  // is at most (16 * 64^2)^2 = 2^32, so the products fit in 64 bits.
  const int64_t rim = int64_t{4} * size * 4 * size;
  for (int32_t py = 0; py < size; ++py) {
    uint8_t* row = out.Row(py);
    for (int32_t px = 0; px < size; ++px) {
      int64_t sum = 0;
      for (int sy = 0; sy < 4; ++sy) {
        const int64_t v = 8 * py + 2 * sy + 1 - 4 * size;
        for (int sx = 0; sx < 4; ++sx) {
          const int64_t u = 8 * px + 2 * sx + 1 - 4 * size;
          const int64_t inside = rim - (u * u + v * v);
          if (inside > 0) sum += std::min<int64_t>(255, 383 * inside * inside / (rim * rim));
        }
      }
      std::memset(row + 3 * size_t(px), static_cast<uint8_t>(sum / 16), 3);
    }
  }
  return out;
}

// ---------------------------------------------------------------- initialisation

namespace {

// Draws are part of the picture: keep them one per statement, in this order,
// and draw all of them whatever the sizes make of the design.
CrystalDesign DrawDesign(Random& random) {
  CrystalDesign d;
  d.arm_width = 55 + random.Below(45);
  d.branch_width = 55 + random.Below(35);
  d.hub = 90 + random.Below(160);
  d.hub_ring = random.Below(2) != 0;
  d.branches = 1 + random.Below(3);
  for (int b = 0; b < 3; ++b) {
    // Pairs spread evenly over the arm's outer two thirds, jittered.
    const int32_t jitter = random.Below(121) - 60;
    d.branch_at[b] = 300 + 550 * (2 * b + 1) / (2 * d.branches) + jitter;
    const int32_t length = 200 + random.Below(250);
    d.branch_length[b] = length * (1000 - d.branch_at[b] / 2) / 1000;
  }
  d.tip_plate = random.Below(2) != 0;
  d.tip_size = 70 + random.Below(90);
  return d;
}

}  // namespace

std::unique_ptr<SnowRecord> SnowRecord::Create(const ParamReader& reader, Random& random) try {
  std::unique_ptr<SnowRecord> record(new SnowRecord());
  if (!record->Build(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

bool SnowRecord::Build(const ParamReader& reader, Random& random) {
  m_width = reader.Spin(Id(kWidthControl));
  m_height = reader.Spin(Id(kDepthControl));
  m_frames = reader.Spin(Id(kFramesControl));
  const int32_t size = reader.Spin(Id(kSizeControl));
  const int32_t density = reader.Spin(Id(kDensityControl));
  const int32_t drift = reader.Spin(Id(kDriftControl));
  const int32_t opacity = reader.Spin(Id(kOpacityControl));
  // A reader that ignores the page's ranges must not make a size or a
  // modulus of zero.
  if (m_width <= 0 || m_height <= 0 || m_frames <= 0 || size <= 0 || density < 0) return false;
  m_background = reader.ColourValue(Id(kBackgroundControl));
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));
  m_paints = SlotPaints::Collect(reader, kColourIds, kEnableIds);

  CrystalDesign designs[kShapes];
  int32_t sizes[kShapes];
  for (int s = 0; s < kShapes; ++s) {
    designs[s] = DrawDesign(random);
    sizes[s] = ShapeSize(size, s / kVariants, s % kVariants);
  }

  m_count = 0;
  for (const Layer& layer : kLayers) m_count += density * layer.count_quarters / 4;
  m_flakes = AllocBuffer<SnowFlake>(size_t(std::max(m_count, 1)));
  if (!m_flakes) return false;
  // One pick for all layers: its previous-pick memory runs across them.
  ColourPick pick(m_paints.count());
  std::vector<int32_t> slots(size_t(std::max(m_count, 1)));
  SnowFlake* f = m_flakes.get();
  for (int l = 0; l < 4; ++l) {
    const Layer& layer = kLayers[l];
    for (int32_t i = 0; i < density * layer.count_quarters / 4; ++i, ++f) {
      f->x0 = random.Below(m_width);
      f->y0 = random.Below(m_height);
      f->shape = l * kVariants + random.Below(kVariants);
      f->turn0 = random.Below(TurnsFor(sizes[f->shape]));
      f->spin = random.Below(3) - 1;
      f->phase = random.Below(65536);
      f->periods = 1 + random.Below(2);
      const int32_t sway_percent = 60 + random.Below(41);
      f->sway = static_cast<int32_t>(int64_t{drift} * m_width * layer.sway_quarters * sway_percent /
                                     (100 * 4 * 100));
      f->fall = layer.fall;
      f->opacity = std::max(1, opacity * layer.opacity / 255);
      slots[size_t(f - m_flakes.get())] = static_cast<int32_t>(pick.Pick(random));
    }
  }
  if (!MakeShapes(designs, sizes)) return false;
  for (int32_t i = 0; i < m_count; ++i) {
    SnowFlake& flake = m_flakes[size_t(i)];
    const int32_t side = m_shapes[size_t(flake.shape)].size;
    if (!m_paints.Prepare(slots[size_t(i)], side, side, &flake.paint)) return false;
  }
  return true;
}

// Only the shapes some flake uses: a small Density leaves some unused.
bool SnowRecord::MakeShapes(const CrystalDesign (&designs)[kShapes],
                            const int32_t (&sizes)[kShapes]) {
  bool used[kShapes] = {};
  for (int32_t i = 0; i < m_count; ++i) used[m_flakes[size_t(i)].shape] = true;
  m_shapes.resize(kShapes);
  for (int s = 0; s < kShapes; ++s) {
    SnowShape& shape = m_shapes[size_t(s)];
    shape = {static_cast<int32_t>(m_sprites.size()), TurnsFor(sizes[s]), sizes[s]};
    if (!used[s]) continue;
    if (shape.turns == 1) {
      m_sprites.push_back(SoftDisc(shape.size));
      if (!m_sprites.back()) return false;
      continue;
    }
    Buffer<uint8_t> master = DrawCrystalMaster(designs[s], shape.size);
    if (!master) return false;
    for (int32_t t = 0; t < shape.turns; ++t) {
      m_sprites.push_back(TurnedCrystal(master.get(), shape.size, t, shape.turns));
      if (!m_sprites.back()) return false;
    }
  }
  return true;
}

// ---------------------------------------------------------------- frames

SnowPlacement SnowRecord::Place(int32_t i, int k) const {
  const SnowFlake& f = m_flakes[size_t(i)];
  const SnowShape& shape = m_shapes[size_t(f.shape)];
  const int64_t n = m_frames;
  // Whole tile heights, whole periods and whole sixths over k = 0..N: each
  // term is back where it started at k = N.
  const int64_t fall = FloorMod(FloorDiv(int64_t{k} * f.fall * m_height, n), m_height);
  const auto phase =
      static_cast<uint32_t>(FloorMod(f.phase + FloorDiv(int64_t{k} * f.periods * 65536, n), 65536));
  const int64_t sway = (int64_t{f.sway} * SineQ16(phase) + 32768) >> 16;
  const auto turn = static_cast<int32_t>(
      FloorMod(f.turn0 + FloorDiv(int64_t{k} * f.spin * shape.turns, n), shape.turns));
  SnowPlacement p;
  p.mask = &m_sprites[size_t(shape.first + turn)];
  p.x = static_cast<int32_t>(f.x0 + sway - shape.size / 2);
  p.y = static_cast<int32_t>(f.y0 + fall - shape.size / 2);
  p.paint = f.paint;
  p.opacity = f.opacity;
  return p;
}

ImageBlock SnowRecord::RenderFrame(int k) {
  ImageBlock frame = SolidImage({0, 0, m_width, m_height}, m_background);
  if (!frame) return frame;
  for (int32_t i = 0; i < m_count; ++i) {
    const SnowPlacement p = Place(i, k);
    m_paints.Blend(frame, *p.mask, p.x, p.y, p.paint, p.opacity);
  }
  return frame;
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitSnow(const ParamReader& reader, Random& random) {
  return SnowRecord::Create(reader, random);
}

}  // namespace

StyleEntry SnowStyle() { return {"Snow", kNumber, kPage, &InitSnow, &BackgroundQuery<kNumber>}; }

}  // namespace tess
