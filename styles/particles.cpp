// Particles (style 017): glossy beads with glare, shaded rims and drop
// shadows drifting in straight lines at many angles over a background, in
// three sizes (small ones drawn first, as if further away).
//
// Each bead's velocity is an integer vector (a, b) of tiles per loop, so in
// frame k its centre is its start plus (a W, b H) * k / N, exact in quarter
// pixels: at k = N every bead has crossed the tile a whole number of times
// and is back where it began, and the directions are those of integer
// vectors (0, 26.6, 45, 63.4 and 90 degrees and their mirrors). Beads and
// shadows are placed with wrap-around, so the tile has no seams.
//
// Sections: page · motion · initialisation · frames · entry.
#include "styles/particles.h"

#include <algorithm>
#include <new>

#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 17;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kGlareControl = kFirstOwnControl;
constexpr int kShadeControl = kFirstOwnControl + 1;
constexpr int kShadowOffsetControl = kFirstOwnControl + 2;
constexpr int kShadowOpacityControl = kFirstOwnControl + 3;

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1017}),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", {10, 36, 18}),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", {8, 256, 32}),
    },
    ShadingRows(kNumber, kFirstOwnControl),
    std::array{Background(kNumber, kRight, 0)},
    ColourRows(kNumber, 1));

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

// ---------------------------------------------------------------- motion

// Every integer (a, b) with 0 < a^2 + b^2 <= 5: sixteen directions, and
// speeds of one to a little over two tiles per loop.
struct Velocity {
  int8_t a, b;
};
constexpr Velocity kVelocities[] = {
    {1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1},  {1, -1},  {-1, 1}, {-1, -1}, {2, 0},  {-2, 0},
    {0, 2}, {0, -2}, {2, 1}, {2, -1}, {-2, 1}, {-2, -1}, {1, 2},  {1, -2},  {-1, 2}, {-1, -2},
};
constexpr int32_t kVelocityCount = static_cast<int32_t>(std::size(kVelocities));

// floor(span * k / n) for n > 0 and any sign of span; |span * k| stays far
// below 2^63 (span is at most 2 * 4 * 1024 quarter pixels, k below 32760).
int64_t Travel(int64_t span, int64_t k, int64_t n) {
  const int64_t t = span * k;
  return t >= 0 ? t / n : -((-t + n - 1) / n);
}

}  // namespace

void ParticlesRecord::Centre(const Particle& p, int k, int64_t& x, int64_t& y) const {
  const int64_t phase = k % m_frames;
  x = p.x0 + Travel(4 * int64_t{p.vx} * m_width, phase, m_frames);
  y = p.y0 + Travel(4 * int64_t{p.vy} * m_height, phase, m_frames);
}

// ---------------------------------------------------------------- initialisation

std::unique_ptr<ParticlesRecord> ParticlesRecord::Create(const ParamReader& reader,
                                                         Random& random) try {
  std::unique_ptr<ParticlesRecord> record(new ParticlesRecord());
  if (!record->Build(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

bool ParticlesRecord::Build(const ParamReader& reader, Random& random) {
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));
  m_width = reader.Spin(Id(kWidthControl));
  m_height = reader.Spin(Id(kDepthControl));
  m_frames = reader.Spin(Id(kFramesControl));
  // A reader that ignores the page's ranges must not make a size or a
  // modulus of zero.
  if (m_width <= 0 || m_height <= 0 || m_frames <= 0) return false;
  const int32_t size = std::max(reader.Spin(Id(kSizeControl)), 2);
  const int32_t density = std::max(reader.Spin(Id(kDensityControl)), 0);
  const GlossLight light{reader.Spin(Id(kGlareControl)), reader.Spin(Id(kShadeControl))};
  m_shadow_offset = reader.Spin(Id(kShadowOffsetControl));
  m_shadow_opacity = reader.Spin(Id(kShadowOpacityControl));
  m_background = reader.ColourValue(Id(kBackgroundControl));

  std::vector<GlossPaint> paints;
  if (!MakeSlotPaints(reader, kColourIds, kEnableIds, size + 2, size + 2, paints)) return false;
  const int32_t diameters[3] = {size / 2, 3 * size / 4, size};
  const bool shadows = m_shadow_opacity > 0;
  for (int layer = 0; layer < 3; ++layer) {
    const int32_t d = diameters[layer];
    if (!m_sprites[layer].Make({d, d, d / 2}, light, paints, shadows)) return false;
  }
  if (!m_ground.Init(m_width, m_height, m_background, m_shadow_opacity)) return false;

  // A third small, a third medium, the rest large; drawn in that order.
  const int32_t counts[3] = {density / 3, density / 3, density - 2 * (density / 3)};
  ColourPick pick(static_cast<int>(paints.size()));
  m_particles.reserve(static_cast<size_t>(density));
  for (int layer = 0; layer < 3; ++layer) {
    for (int32_t i = 0; i < counts[layer]; ++i) {
      // The draws are part of the picture: keep them one per statement, in
      // this order.
      Particle p;
      p.layer = layer;
      p.x0 = random.Below(4 * m_width);
      p.y0 = random.Below(4 * m_height);
      const Velocity v = kVelocities[random.Below(kVelocityCount)];
      p.vx = v.a;
      p.vy = v.b;
      p.paint = pick.Pick(random);
      m_particles.push_back(p);
    }
  }
  return true;
}

// ---------------------------------------------------------------- frames

void ParticlesRecord::Items(int k, std::vector<GlossItem>& items) const {
  items.clear();
  for (const Particle& p : m_particles) {
    GlossItem& item = items.emplace_back();
    item.sprites = &m_sprites[p.layer];
    item.paint = p.paint;
    Centre(p, k, item.x, item.y);
  }
}

ImageBlock ParticlesRecord::RenderFrame(int k) try {
  Items(k, m_items);
  return GlossFrame(m_ground, m_items, m_shadow_offset);
} catch (const std::bad_alloc&) {
  return {};
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitParticles(const ParamReader& reader, Random& random) {
  return ParticlesRecord::Create(reader, random);
}

}  // namespace

StyleEntry ParticlesStyle() {
  return {"Particles", kNumber, kPage, &InitParticles, &BackgroundQuery<kNumber>};
}

}  // namespace tess
