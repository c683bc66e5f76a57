// Gumdrops (style 007): sweets in three depth layers (small and slow far
// away, large and fast near) falling through the tile while they sway and
// tumble. Each colour slot has its own shape (square, round, diamond, heart,
// star); with Bevel each drop has a lit upper-left rim and a shaded
// lower-right one, like a pressed sweet.
//
// Motion is a function of the phase k/N alone: a drop falls `speed` whole
// tile heights, sways one whole sine period of `sway` pixels and turns
// `tumble` whole symmetry steps of its shape (a quarter turn for a square, a
// fifth for a star) over the N frames, so frame N is frame 0. Drops are
// blitted with wrap-around, so whatever leaves one edge enters the opposite
// one and the tile has no seam.
//
// A colour whose fill is not flat carries that fill, rendered at the drop's
// size, upright inside it: the drop's outline and light turn, its colouring
// does not, so round drops need no rotation steps whatever their fill.
//
// Speed: a drop's look depends on its shape, size and rotation step only.
// The maps of the steps the animation visits are drawn once per build (4 x 4
// supersampled coverage plus the bevel's light), the fills once per colour
// and size, and a frame is the background plus one blit per drop.
//
// Sections: page · outlines · initialisation · maps · blit · frames · entry.
#include "styles/gumdrops.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <utility>

#include "draw/draw.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 7;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

// "Shape 1:" to "Shape 5:" give the shape of the drops in colours 1 to 5.
constexpr std::string_view kShapes[] = {"Square", "Round", "Diamond", "Heart", "Star"};
constexpr int kShapeControl = kFirstOwnControl;  // + i for colour i + 1
constexpr int kBevelControl = kFirstOwnControl + 5;

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSizeControl), kLeft, 3, "Size:", "Size", {10, 64, 18}),
        Spin(Id(kSeedControl), kLeft, 4, "Seed:", "Seed", {100, 32760, 12329}),
        DropDown(Id(kFirstOwnControl), kLeft, 5, "Shape 1:", "Style1", kShapes),
        DropDown(Id(kFirstOwnControl + 1), kLeft, 6, "Shape 2:", "Style2", kShapes),
        DropDown(Id(kFirstOwnControl + 2), kLeft, 7, "Shape 3:", "Style3", kShapes),
        DropDown(Id(kFirstOwnControl + 3), kLeft, 8, "Shape 4:", "Style4", kShapes),
        DropDown(Id(kFirstOwnControl + 4), kLeft, 9, "Shape 5:", "Style5", kShapes),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1),
    std::array{
        Spin(Id(kDensityControl), kRight, 6, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kDriftControl), kRight, 7, "Drift:", "Drift", {0, 99, 25}),
        Check(Id(kBevelControl), kRight, 8, "Bevel", "BevelEnable"),
    });

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

// A shape looks the same again after 1/m of a turn (a round drop never
// changes, so it has one rotation step whatever m says).
constexpr int32_t kSymmetry[kDropShapeCount] = {4, 1, 2, 1, 5};

// Layers far to near: tile heights fallen over the loop.
constexpr int32_t kLayerSpeed[3] = {1, 2, 3};

// Light falls from the upper left (y grows downwards); the lit rim brightens
// more than the shaded one darkens, as on a glossy sweet.
constexpr double kLightX = -0.6, kLightY = -0.8;
constexpr double kLightGain = 230.0, kShadeGain = 170.0;
// The bevel's width as a share of the diameter, and at least this many pixels.
constexpr double kBevelShare = 0.16, kBevelMin = 1.5;

int Index(DropShape shape) { return static_cast<int>(shape); }

// ---------------------------------------------------------------- outlines

// Outlines are closed polygons in units of the drop's radius, centred on the
// origin, as x y pairs. Built from square roots and the turn sine only, so
// they are the same bits everywhere.
using Outline = std::vector<double>;

// The corner at (vx, vy) between neighbours (px, py) and (nx, ny), replaced
// by an arc of `radius` tangent to both edges.
void AddRoundedCorner(Outline& out, double px, double py, double vx, double vy, double nx,
                      double ny, double radius, int segments) {
  double ax = px - vx, ay = py - vy, bx = nx - vx, by = ny - vy;
  const double la = std::sqrt(ax * ax + ay * ay), lb = std::sqrt(bx * bx + by * by);
  ax /= la, ay /= la, bx /= lb, by /= lb;
  const double cos_full = ax * bx + ay * by;
  const double tan_half = std::sqrt((1.0 - cos_full) / (1.0 + cos_full));
  const double sin_half = std::sqrt((1.0 - cos_full) / 2.0);
  const double along = radius / tan_half;
  double hx = ax + bx, hy = ay + by;
  const double lh = std::sqrt(hx * hx + hy * hy);
  hx /= lh, hy /= lh;
  const double cx = vx + hx * (radius / sin_half), cy = vy + hy * (radius / sin_half);
  // Unit vectors from the arc's centre to its two tangent points.
  const double ux = (vx + ax * along - cx) / radius, uy = (vy + ay * along - cy) / radius;
  const double wx = (vx + bx * along - cx) / radius, wy = (vy + by * along - cy) / radius;
  for (int i = 0; i <= segments; ++i) {
    const double s = static_cast<double>(i) / segments;
    double dx = ux * (1.0 - s) + wx * s, dy = uy * (1.0 - s) + wy * s;
    const double ld = std::sqrt(dx * dx + dy * dy);
    out.push_back(cx + radius * (dx / ld));
    out.push_back(cy + radius * (dy / ld));
  }
}

Outline RoundedPolygon(const std::vector<double>& corners, const std::vector<double>& radii,
                       int segments) {
  Outline out;
  const size_t n = corners.size() / 2;
  for (size_t i = 0; i < n; ++i) {
    const size_t p = (i + n - 1) % n, q = (i + 1) % n;
    AddRoundedCorner(out, corners[2 * p], corners[2 * p + 1], corners[2 * i], corners[2 * i + 1],
                     corners[2 * q], corners[2 * q + 1], radii[i], segments);
  }
  return out;
}

// Centres the outline on its bounding box and scales its farthest point to 1.
void Normalise(Outline& out) {
  double left = out[0], right = out[0], top = out[1], bottom = out[1];
  for (size_t i = 0; i < out.size(); i += 2) {
    left = std::min(left, out[i]), right = std::max(right, out[i]);
    top = std::min(top, out[i + 1]), bottom = std::max(bottom, out[i + 1]);
  }
  const double mx = (left + right) / 2.0, my = (top + bottom) / 2.0;
  double far = 0;
  for (size_t i = 0; i < out.size(); i += 2) {
    out[i] -= mx, out[i + 1] -= my;
    far = std::max(far, std::sqrt(out[i] * out[i] + out[i + 1] * out[i + 1]));
  }
  for (double& v : out) v /= far;
}

Outline MakeOutline(DropShape shape) {
  Outline out;
  switch (shape) {
    case DropShape::kRound:
      return out;  // drawn as an ellipse
    case DropShape::kSquare:
      out = RoundedPolygon({-1, -1, 1, -1, 1, 1, -1, 1}, {0.35, 0.35, 0.35, 0.35}, 6);
      break;
    case DropShape::kDiamond:
      out = RoundedPolygon({0, -1, 0.7, 0, 0, 1, -0.7, 0}, {0.12, 0.2, 0.12, 0.2}, 5);
      break;
    case DropShape::kStar: {
      std::vector<double> corners, radii;
      for (int i = 0; i < 10; ++i) {
        const double r = i % 2 == 0 ? 1.0 : 0.5;
        corners.push_back(r * TurnSine(i, 10));
        corners.push_back(-r * TurnCosine(i, 10));
        radii.push_back(i % 2 == 0 ? 0.1 : 0.08);
      }
      out = RoundedPolygon(corners, radii, 4);
      break;
    }
    case DropShape::kHeart:
      // The classic heart curve, upright (y grows downwards).
      for (int i = 0; i < 48; ++i) {
        const double s = TurnSine(i, 48);
        out.push_back(16.0 * s * s * s);
        out.push_back(-(13.0 * TurnCosine(i, 48) - 5.0 * TurnCosine(2 * i, 48) -
                        2.0 * TurnCosine(3 * i, 48) - TurnCosine(4 * i, 48)));
      }
      break;
  }
  Normalise(out);
  return out;
}

int32_t Quarter(double v) { return static_cast<int32_t>(std::floor(v * kSubpixels + 0.5)); }

// ---------------------------------------------------------------- blit

// What a drop is painted with: its colour under every shade (511 BGR
// triples, by shade + 255), or its fill's picture at the map's size.
struct DropInk {
  const uint8_t* lit = nullptr;
  const ImageBlock* picture = nullptr;
};

// A channel lightened towards 255 (s > 0) or darkened towards 0 (s < 0).
inline uint8_t LightChannel(unsigned c, int s) {
  return static_cast<uint8_t>(s >= 0 ? c + (255 - c) * static_cast<unsigned>(s) / 255
                                     : c * static_cast<unsigned>(255 + s) / 255);
}

inline uint8_t Mix(unsigned s, unsigned d, unsigned a) {
  return static_cast<uint8_t>(s * a / 255 + d * (255 - a) / 255);
}

// Long because it is the per-pixel loop of every drop: the colour under the
// texel's light and the three channel mixes stay together.
void BlitRun(uint8_t* t, const DropTexel* m, const uint8_t* picture, int32_t count,
             const uint8_t* lit) {
  for (int32_t i = 0; i < count; ++i, t += 3) {
    const unsigned a = m[i].alpha;
    if (a == 0) continue;
    uint8_t s[3];
    if (picture) {
      const uint8_t* p = picture + 3 * static_cast<size_t>(i);
      for (int ch = 0; ch < 3; ++ch) s[ch] = LightChannel(p[ch], m[i].shade);
    } else {
      const uint8_t* l = lit + 3 * static_cast<size_t>(m[i].shade + 255);
      s[0] = l[0], s[1] = l[1], s[2] = l[2];
    }
    if (a == 255) {
      t[0] = s[0], t[1] = s[1], t[2] = s[2];
      continue;
    }
    t[0] = Mix(s[0], t[0], a), t[1] = Mix(s[1], t[1], a), t[2] = Mix(s[2], t[2], a);
  }
}

// The map's top-left pixel lands at (x, y); every pixel wraps around.
void BlitDrop(ImageBlock& frame, const DropMap& map, int64_t x, int64_t y, const DropInk& ink) {
  const int32_t w = frame.width();
  for (int32_t my = 0; my < map.side; ++my) {
    uint8_t* row = frame.Row(WrapIndex(y + my, frame.height()));
    const DropTexel* m = map.texels.get() + static_cast<size_t>(my) * map.side;
    const uint8_t* picture = ink.picture ? ink.picture->Row(my) : nullptr;
    int32_t tx = WrapIndex(x, w);
    for (int32_t mx = 0; mx < map.side;) {
      const int32_t n = std::min(map.side - mx, w - tx);
      BlitRun(row + 3 * static_cast<size_t>(tx), m + mx,
              picture ? picture + 3 * static_cast<size_t>(mx) : nullptr, n, ink.lit);
      mx += n;
      tx = 0;
    }
  }
}

// The reference of BlitDrop: each pixel through ImageGetPixel/ImageSetPixel,
// the colour lit afresh rather than looked up.
void BlitDropPlain(ImageBlock& frame, const DropMap& map, int64_t x, int64_t y, Colour flat,
                   const ImageBlock* picture) {
  for (int32_t my = 0; my < map.side; ++my) {
    for (int32_t mx = 0; mx < map.side; ++mx) {
      const DropTexel& m = map.texels[static_cast<size_t>(my) * map.side + mx];
      if (m.alpha == 0) continue;
      const Colour c = picture ? ImageGetPixel(*picture, mx, my) : flat;
      const int32_t tx = WrapIndex(x + mx, frame.width()), ty = WrapIndex(y + my, frame.height());
      const Colour d = ImageGetPixel(frame, tx, ty);
      Colour out = 0;
      for (int shift = 0; shift < 24; shift += 8) {
        const uint8_t s = LightChannel((c >> shift) & 0xFF, m.shade);
        out |= static_cast<Colour>(Mix(s, (d >> shift) & 0xFF, m.alpha)) << shift;
      }
      ImageSetPixel(frame, tx, ty, out);
    }
  }
}

}  // namespace

// ---------------------------------------------------------------- initialisation

struct GumdropsRecord::Paint {
  DropShape shape = DropShape::kRound;
  FillDescriptor fill;
  uint8_t lit[511 * 3] = {};  // see DropInk
  SlotPaint layers[3];        // the fill at each layer's map size
};

GumdropsRecord::GumdropsRecord() = default;
GumdropsRecord::~GumdropsRecord() = default;

DropShape GumdropsRecord::ShapeOf(const Gumdrop& drop) const {
  return m_paints[static_cast<size_t>(drop.paint)].shape;
}

// About one step per pixel travelled by the rim (pi * d / m steps over 1/m of
// a turn), so a tumbling drop never jumps.
int32_t GumdropsRecord::Steps(DropShape shape, int layer) const {
  if (shape == DropShape::kRound) return 1;
  const int32_t m = kSymmetry[Index(shape)];
  return std::max<int32_t>(4, (m_diameter[layer] * 314 + 100 * m - 1) / (100 * m));
}

int32_t GumdropsRecord::StepAt(const Gumdrop& drop, int k) const {
  const int32_t steps = Steps(ShapeOf(drop), drop.layer);
  return WrapIndex(drop.turn0 + FloorDiv(int64_t{drop.tumble} * steps * k, m_frames), steps);
}

std::unique_ptr<GumdropsRecord> GumdropsRecord::Create(const ParamReader& reader, Random& random,
                                                       GumdropsOptions options) try {
  std::unique_ptr<GumdropsRecord> record(new GumdropsRecord());
  record->m_options = options;
  if (!record->Init(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

bool GumdropsRecord::Init(const ParamReader& reader, Random& random) {
  m_width = reader.Spin(Id(kWidthControl));
  m_height = reader.Spin(Id(kDepthControl));
  m_frames = reader.Spin(Id(kFramesControl));
  const int32_t size = reader.Spin(Id(kSizeControl));
  const int32_t density = reader.Spin(Id(kDensityControl));
  const int32_t drift = reader.Spin(Id(kDriftControl));
  // A reader that ignores the page's ranges must not make a size or a modulus
  // of zero.
  if (m_width <= 0 || m_height <= 0 || m_frames <= 0 || size < 8 || density < 0) return false;
  m_background = reader.ColourValue(Id(kBackgroundControl));
  m_bevel = reader.Checked(Id(kBevelControl));
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));
  m_diameter[0] = size / 2;
  m_diameter[1] = 3 * size / 4;
  m_diameter[2] = size;

  // Colour 1 always, then each enabled one, as CollectFills orders them;
  // each remembers its slot's shape and fill.
  for (int slot = 0; slot < 5; ++slot) {
    if (slot > 0 && !reader.Checked(kEnableIds[slot - 1])) continue;
    Paint& paint = m_paints.emplace_back();
    paint.shape = static_cast<DropShape>(std::clamp(reader.Selection(Id(kShapeControl + slot)), 0, 4));
    paint.fill = reader.Fill(kColourIds[slot]);
  }
  ColourPick pick(static_cast<int>(m_paints.size()));

  const int32_t counts[3] = {density / 2, density / 3, density - density / 2 - density / 3};
  m_count = density;
  m_drops = AllocBuffer<Gumdrop>(static_cast<size_t>(m_count));
  if (!m_drops) return false;
  const int32_t amplitude = drift * m_width / 100;
  Gumdrop* e = m_drops.get();
  for (int layer = 0; layer < 3; ++layer) {
    for (int32_t i = 0; i < counts[layer]; ++i, ++e) {
      // The draws are part of the picture: one per statement, in this order,
      // and as many whatever the shape, so changing one slot's shape leaves
      // every other drop where it was.
      e->paint = static_cast<int32_t>(pick.Pick(random));
      e->layer = layer;
      e->speed = kLayerSpeed[layer];
      e->x0 = random.Below(m_width);
      e->y0 = random.Below(m_height);
      e->phase = random.Below(360);
      e->sway = amplitude * (50 + random.Below(51)) / 100;
      const DropShape shape = ShapeOf(*e);
      e->turn0 = static_cast<int32_t>(int64_t{random.Below(65536)} * Steps(shape, layer) / 65536);
      const int32_t turns = 1 + random.Below(2 * kSymmetry[Index(shape)]);
      e->tumble = random.Below(2) != 0 ? -turns : turns;
    }
  }
  for (int s = 0; s < kDropShapeCount; ++s) m_outlines.push_back(MakeOutline(static_cast<DropShape>(s)));
  return MakePaints() && MakeMaps();
}

// Flat colours become a table of lit colours; other fills are rendered once
// per layer size that some drop of the colour has.
bool GumdropsRecord::MakePaints() {
  bool used[5][3] = {};
  for (int32_t i = 0; i < m_count; ++i) used[m_drops[i].paint][m_drops[i].layer] = true;
  for (size_t p = 0; p < m_paints.size(); ++p) {
    Paint& paint = m_paints[p];
    const uint8_t bgr[3] = {ColourBlue(paint.fill.colour), ColourGreen(paint.fill.colour),
                            ColourRed(paint.fill.colour)};
    for (int s = -255; s <= 255; ++s)
      for (int ch = 0; ch < 3; ++ch) paint.lit[3 * (s + 255) + ch] = LightChannel(bgr[ch], s);
    for (int layer = 0; layer < 3; ++layer) {
      if (!used[p][layer]) continue;
      const int32_t side = m_diameter[layer] + 2;
      if (!MakeSlotPaint(paint.fill, side, side, paint.layers[layer])) return false;
    }
  }
  return true;
}

// ---------------------------------------------------------------- maps

bool GumdropsRecord::MakeMaps() {
  int32_t total = 0;
  for (int s = 0; s < kDropShapeCount; ++s)
    for (int layer = 0; layer < 3; ++layer) {
      m_map_base[s][layer] = total;
      total += Steps(static_cast<DropShape>(s), layer);
    }
  const int32_t side = m_diameter[2] + 2;
  size_t longest = 0;
  for (const Outline& o : m_outlines) longest = std::max(longest, o.size() / 2);
  m_points.reserve(longest);
  const size_t texels = static_cast<size_t>(side) * static_cast<size_t>(side);
  m_nearest = AllocBuffer<double>(texels);
  m_edge = AllocBuffer<int32_t>(texels);
  if (!m_grid.Reserve(side, side) || !m_nearest || !m_edge) return false;
  if (!m_options.cache_maps) return true;

  // Only the steps some drop shows on some frame. When a drop turns at most
  // one step per frame it passes every step of its shape (a round drop's one
  // step included), so only fast turns on short loops need the frames walked.
  std::vector<uint8_t> needed(static_cast<size_t>(total));
  for (int32_t i = 0; i < m_count; ++i) {
    const Gumdrop& drop = m_drops[i];
    const DropShape shape = ShapeOf(drop);
    const int32_t steps = Steps(shape, drop.layer);
    uint8_t* mark = needed.data() + m_map_base[Index(shape)][drop.layer];
    if (int64_t{std::abs(drop.tumble)} * steps <= m_frames) {
      std::fill(mark, mark + steps, uint8_t{1});
      continue;
    }
    for (int k = 0; k < m_frames; ++k) mark[StepAt(drop, k)] = 1;
  }
  m_maps.resize(static_cast<size_t>(total));
  for (int s = 0; s < kDropShapeCount; ++s)
    for (int layer = 0; layer < 3; ++layer)
      for (int32_t step = 0; step < Steps(static_cast<DropShape>(s), layer); ++step) {
        const int32_t at = m_map_base[s][layer] + step;
        if (needed[static_cast<size_t>(at)] &&
            !MakeMap(static_cast<DropShape>(s), layer, step, m_maps[static_cast<size_t>(at)]))
          return false;
      }
  return true;
}

namespace {

struct MapGeometry {
  int32_t side;
  double bevel;  // width of the lit and shaded rim, pixels
};

// The rim's light for one pixel: `nx, ny` the outward normal of the nearest
// outline, `distance` how far inside the outline the pixel's centre lies.
int16_t RimShade(double nx, double ny, double distance, double bevel) {
  if (distance >= bevel) return 0;
  const double v = (nx * kLightX + ny * kLightY) * (1.0 - distance / bevel);
  const double gain = v >= 0 ? kLightGain : kShadeGain;
  return static_cast<int16_t>(std::clamp(static_cast<int32_t>(v * gain), -255, 255));
}

void ShadeRound(DropTexel* texels, const MapGeometry& g, const Rect& box) {
  const double cx = (box.left + box.right) / 8.0, cy = (box.top + box.bottom) / 8.0;
  const double radius = (box.right - box.left) / 8.0;
  for (int32_t y = 0; y < g.side; ++y)
    for (int32_t x = 0; x < g.side; ++x) {
      DropTexel& t = texels[static_cast<size_t>(y) * g.side + x];
      const double dx = x + 0.5 - cx, dy = y + 0.5 - cy;
      const double r = std::sqrt(dx * dx + dy * dy);
      if (t.alpha != 0 && r > 0) t.shade = RimShade(dx / r, dy / r, std::fabs(radius - r), g.bevel);
    }
}

// Pixels farther than the bevel from every edge stay plain, so each edge only
// visits the pixels of its own box widened by the bevel; the nearest edge
// wins, the first one on a tie, exactly as a search over all edges would.
void ShadePolygon(DropTexel* texels, const MapGeometry& g, const std::vector<Point>& points,
                  double* nearest, int32_t* edge) {
  const size_t texel_count = static_cast<size_t>(g.side) * static_cast<size_t>(g.side);
  std::fill(nearest, nearest + texel_count, g.bevel * g.bevel);
  std::fill(edge, edge + texel_count, -1);
  const size_t n = points.size();
  int64_t twice_area = 0;
  for (size_t i = 0; i < n; ++i) {
    const Point& a = points[i];
    const Point& b = points[(i + 1) % n];
    twice_area += int64_t{a.x} * b.y - int64_t{b.x} * a.y;
  }
  const double outward = twice_area > 0 ? 1.0 : -1.0;
  for (size_t i = 0; i < n; ++i) {
    const double ax = points[i].x / 4.0, ay = points[i].y / 4.0;
    const double ex = points[(i + 1) % n].x / 4.0 - ax, ey = points[(i + 1) % n].y / 4.0 - ay;
    const double length2 = ex * ex + ey * ey;
    if (length2 == 0) continue;
    const int32_t x0 = std::max(0, static_cast<int32_t>(std::floor(std::min(ax, ax + ex) - g.bevel)));
    const int32_t x1 = std::min(g.side - 1, static_cast<int32_t>(std::floor(std::max(ax, ax + ex) + g.bevel)));
    const int32_t y0 = std::max(0, static_cast<int32_t>(std::floor(std::min(ay, ay + ey) - g.bevel)));
    const int32_t y1 = std::min(g.side - 1, static_cast<int32_t>(std::floor(std::max(ay, ay + ey) + g.bevel)));
    for (int32_t y = y0; y <= y1; ++y)
      for (int32_t x = x0; x <= x1; ++x) {
        const double px = x + 0.5 - ax, py = y + 0.5 - ay;
        const double t = std::clamp((px * ex + py * ey) / length2, 0.0, 1.0);
        const double dx = px - t * ex, dy = py - t * ey;
        const double d2 = dx * dx + dy * dy;
        const size_t at = static_cast<size_t>(y) * g.side + x;
        if (d2 < nearest[at]) nearest[at] = d2, edge[at] = static_cast<int32_t>(i);
      }
  }
  for (size_t at = 0; at < texel_count; ++at) {
    if (edge[at] < 0 || texels[at].alpha == 0) continue;
    const size_t i = static_cast<size_t>(edge[at]);
    const double ex = (points[(i + 1) % n].x - points[i].x) / 4.0;
    const double ey = (points[(i + 1) % n].y - points[i].y) / 4.0;
    const double length = std::sqrt(ex * ex + ey * ey);
    texels[at].shade = RimShade(outward * ey / length, -outward * ex / length,
                                std::sqrt(nearest[at]), g.bevel);
  }
}

}  // namespace

bool GumdropsRecord::MakeMap(DropShape shape, int layer, int32_t step, DropMap& map) {
  const int32_t d = m_diameter[layer];
  const MapGeometry g{d + 2, std::max(kBevelMin, d * kBevelShare)};
  map.side = g.side;
  map.texels = AllocBuffer<DropTexel>(static_cast<size_t>(g.side) * static_cast<size_t>(g.side));
  if (!map.texels) return false;
  const double c = g.side / 2.0, r = d / 2.0;
  m_grid.Begin(0, 0, g.side, g.side);
  Rect box;
  if (shape == DropShape::kRound) {
    box = {Quarter(c - r), Quarter(c - r), Quarter(c + r), Quarter(c + r)};
    RasterEllipse(box, m_grid.SubpixelClip(), m_grid);
  } else {
    const Outline& unit = m_outlines[static_cast<size_t>(Index(shape))];
    const int64_t den = int64_t{Steps(shape, layer)} * kSymmetry[Index(shape)];
    const double cs = TurnCosine(step, den), sn = TurnSine(step, den);
    m_points.clear();
    for (size_t i = 0; i < unit.size(); i += 2) {
      const double x = unit[i] * cs - unit[i + 1] * sn, y = unit[i] * sn + unit[i + 1] * cs;
      m_points.push_back({Quarter(c + r * x), Quarter(c + r * y)});
    }
    if (!RasterPolygon(m_points.data(), static_cast<int>(m_points.size()), m_grid.SubpixelClip(),
                       m_grid))
      return false;
  }
  m_grid.Finish();
  for (int32_t y = 0; y < g.side; ++y)
    for (int32_t x = 0; x < g.side; ++x)
      map.texels[static_cast<size_t>(y) * g.side + x] = {
          static_cast<uint8_t>(m_grid.Row(y)[x] * 255 / kFullCoverage), 0, 0};
  if (m_bevel) {
    if (shape == DropShape::kRound)
      ShadeRound(map.texels.get(), g, box);
    else
      ShadePolygon(map.texels.get(), g, m_points, m_nearest.get(), m_edge.get());
  }
  ++m_maps_made;
  return true;
}

// ---------------------------------------------------------------- frames

ImageBlock GumdropsRecord::RenderFrame(int k) {
  ImageBlock frame = SolidImage({0, 0, m_width, m_height}, m_background);
  if (!frame) return {};
  DropMap fresh;
  for (int32_t i = 0; i < m_count; ++i) {
    const Gumdrop& drop = m_drops[i];
    const DropShape shape = ShapeOf(drop);
    const int32_t step = StepAt(drop, k);
    const DropMap* map = &fresh;
    if (m_options.cache_maps)
      map = &m_maps[static_cast<size_t>(m_map_base[Index(shape)][drop.layer] + step)];
    else if (!MakeMap(shape, drop.layer, step, fresh))
      return {};
    // Whole periods and whole tile heights over N frames, from integers, so
    // frame N repeats frame 0 exactly.
    const int64_t sway = static_cast<int64_t>(
        drop.sway * TurnSine(int64_t{drop.phase} * m_frames + int64_t{360} * k, int64_t{360} * m_frames));
    const int64_t fall = FloorDiv(int64_t{drop.speed} * m_height * k, m_frames);
    const int64_t x = drop.x0 + sway - m_options.view_x - map->side / 2;
    const int64_t y = drop.y0 + fall - m_options.view_y - map->side / 2;
    const Paint& paint = m_paints[static_cast<size_t>(drop.paint)];
    const ImageBlock* picture = paint.layers[drop.layer].picture ? &paint.layers[drop.layer].picture : nullptr;
    if (m_options.plain_blit)
      BlitDropPlain(frame, *map, x, y, paint.fill.colour, picture);
    else
      BlitDrop(frame, *map, x, y, DropInk{paint.lit, picture});
  }
  return frame;
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitGumdrops(const ParamReader& reader, Random& random) {
  return GumdropsRecord::Create(reader, random);
}

}  // namespace

StyleEntry GumdropsStyle() {
  return {"Gumdrops", kNumber, kPage, &InitGumdrops, &BackgroundQuery<kNumber>};
}

}  // namespace tess
