// The glossy sprite maker and the shadow layer.
//
// All 16 phase variants of a sprite sample one lattice: a quarter-pixel phase
// moves the centre by exactly one sample step (samples lie at eighths 1, 3, 5
// and 7 of a pixel), so the maker evaluates the surface once per lattice point
// and each variant sums its 4 x 4 windows. tests/styles/gloss_test.cpp keeps
// the sample-by-sample method as the oracle.
//
// Floating point: GlossSampleAt and the shadow profile compute in double,
// each expression in the order written, with sqrt as the only function (it is
// correctly rounded everywhere). The library is built without contraction
// and with SSE2 arithmetic on 32-bit x86 (styles/CMakeLists.txt), so the same
// settings give the same bytes on every platform.
//
// Sections: samples · shadow profile · paints · sprites · shadow layer ·
// frames.
#include "styles/gloss.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "draw/draw.h"
#include "fills/fill_render.h"

namespace tess {
namespace {

// Unit light from the upper left and the halfway vector between it and the
// viewer; see GlossSampleAt.
constexpr double kLightX = -0.57735026918962584;
constexpr double kLightY = -0.57735026918962584;
constexpr double kLightZ = 0.57735026918962584;
constexpr double kHalfX = -0.32505758367186816;
constexpr double kHalfY = -0.32505758367186816;
constexpr double kHalfZ = 0.88807383397711515;

// Offset beyond the flat core, in pixels, of a point d8 eighths from the
// centre along an axis whose footprint is `size` with rim `radius`. Offsets
// in eighths stay within int32 for any sprite below 2^27 pixels a side.
double BeyondCore(int32_t d8, int32_t size, int32_t radius) {
  // The core's half extent in eighths: 4 * size - 8 * radius (never negative
  // for a radius of at most half the side).
  const int32_t core8 = 4 * size - 8 * radius;
  if (d8 > core8) return (d8 - core8) / 8.0;
  if (d8 < -core8) return (d8 + core8) / 8.0;
  return 0.0;
}

int64_t FloorDiv4(int64_t v) { return v >= 0 ? v / 4 : -((-v + 3) / 4); }

}  // namespace

// ---------------------------------------------------------------- samples

GlossSample GlossSampleAt(const GlossShape& shape, const GlossLight& light, int32_t dx8,
                          int32_t dy8) {
  GlossSample s;
  const double r = shape.radius;
  const double ex = BeyondCore(dx8, shape.width, shape.radius);
  const double ey = BeyondCore(dy8, shape.height, shape.radius);
  const double d2 = ex * ex + ey * ey;
  const double r2 = r * r;
  if (!(d2 < r2)) return s;
  s.inside = true;
  const double nx = ex / r;
  const double ny = ey / r;
  const double nz = std::sqrt(r2 - d2) / r;
  // Relative to a flat top, so Shade leaves a block's top its own colour and
  // darkens only the rim turned away from the light.
  double diffuse = (nx * kLightX + ny * kLightY + nz * kLightZ) / kLightZ;
  if (diffuse < 0) diffuse = 0;
  if (diffuse > 1) diffuse = 1;
  const double m = 1.0 - light.shade / 255.0 * (1.0 - diffuse);
  double h = nx * kHalfX + ny * kHalfY + nz * kHalfZ;
  if (h < 0) h = 0;
  double specular = h;
  for (int i = 0; i < 5; ++i) specular = specular * specular;  // h^32
  const double g = light.glare / 255.0 * specular;
  s.light = static_cast<uint8_t>(255.0 * m);
  s.glare = static_cast<uint8_t>(255.0 * g);
  return s;
}

// ---------------------------------------------------------------- shadow profile

namespace {

int32_t ShadowSoftness(const GlossShape& shape) {
  return std::max(1, std::min(shape.width, shape.height) / 4);
}

}  // namespace

uint8_t GlossShadowAt(const GlossShape& shape, int32_t dx8, int32_t dy8) {
  const double ex = BeyondCore(dx8, shape.width, shape.radius);
  const double ey = BeyondCore(dy8, shape.height, shape.radius);
  const double beyond = std::sqrt(ex * ex + ey * ey) - shape.radius;
  const double a = 0.5 - beyond / ShadowSoftness(shape);
  if (a <= 0) return 0;
  if (a >= 1) return 255;
  return static_cast<uint8_t>(255.0 * a);
}

// Half the soft edge lies outside the footprint; one more pixel keeps the
// phases' shifts inside the mask.
int32_t GlossShadowMargin(const GlossShape& shape) { return (ShadowSoftness(shape) + 1) / 2 + 1; }

// ---------------------------------------------------------------- paints

bool MakeGlossPaint(const FillDescriptor& fill, int32_t width, int32_t height, GlossPaint& paint) {
  paint.colour = fill.colour;
  paint.fill = ImageBlock();
  if (fill.kind == kFillSimple) return true;
  paint.fill = RenderFill(fill, width, height);
  return static_cast<bool>(paint.fill);
}

Colour GlossPaintAt(const GlossPaint& paint, int32_t x, int32_t y, int32_t width, int32_t height) {
  if (!paint.fill) return paint.colour;
  return ImageGetPixel(paint.fill, x + (paint.fill.width() - width) / 2,
                       y + (paint.fill.height() - height) / 2);
}

bool MakeSlotPaints(const ParamReader& reader, const int (&colour_ids)[5],
                    const int (&enable_ids)[4], int32_t width, int32_t height,
                    std::vector<GlossPaint>& paints) try {
  // The slots CollectFills takes, in its order.
  paints.clear();
  for (int slot = 0; slot < 5; ++slot) {
    if (slot > 0 && !reader.Checked(enable_ids[slot - 1])) continue;
    if (!MakeGlossPaint(reader.Fill(colour_ids[slot]), width, height, paints.emplace_back()))
      return false;
  }
  return true;
} catch (const std::bad_alloc&) {
  return false;
}


// ---------------------------------------------------------------- sprites

namespace {

// The surface sampled at every lattice point a phase variant can use: index
// (u, v) is the sample 2u - 7 - 4 * width eighths from the centre (and
// likewise v), for u from -3 (phase 3's first sample) up.
struct Lattice {
  int32_t columns = 0;
  int32_t rows = 0;
  std::vector<GlossSample> samples;
  const GlossSample& At(int32_t u, int32_t v) const {
    return samples[static_cast<size_t>(v + 3) * static_cast<size_t>(columns) +
                   static_cast<size_t>(u + 3)];
  }
};

void SampleLattice(const GlossShape& shape, const GlossLight& light, Lattice& lattice) {
  lattice.columns = 4 * (shape.width + 2) + 3;
  lattice.rows = 4 * (shape.height + 2) + 3;
  lattice.samples.resize(static_cast<size_t>(lattice.columns) * static_cast<size_t>(lattice.rows));
  size_t at = 0;
  for (int32_t v = -3; v < lattice.rows - 3; ++v)
    for (int32_t u = -3; u < lattice.columns - 3; ++u)
      lattice.samples[at++] =
          GlossSampleAt(shape, light, 2 * u - 7 - 4 * shape.width, 2 * v - 7 - 4 * shape.height);
}

// One variant's pixels before painting: coverage and averaged m and g.
struct PixelTone {
  uint8_t cover, light, glare;
};

void ToneVariant(const Lattice& lattice, int32_t width, int32_t height, int fx, int fy,
                 std::vector<PixelTone>& tones) {
  tones.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
  size_t at = 0;
  for (int32_t j = 0; j < height; ++j) {
    for (int32_t i = 0; i < width; ++i) {
      uint32_t inside = 0, light = 0, glare = 0;
      for (int b = 0; b < 4; ++b) {
        for (int a = 0; a < 4; ++a) {
          const GlossSample& s = lattice.At(4 * i + a - fx, 4 * j + b - fy);
          if (!s.inside) continue;
          ++inside;
          light += s.light;
          glare += s.glare;
        }
      }
      tones[at++] = inside == 0 ? PixelTone{0, 0, 0}
                                : PixelTone{static_cast<uint8_t>(inside * 255 / 16),
                                            static_cast<uint8_t>(light / inside),
                                            static_cast<uint8_t>(glare / inside)};
    }
  }
}

ImageBlock PaintVariant(const std::vector<PixelTone>& tones, const GlossPaint& paint, int32_t width,
                        int32_t height) {
  ImageBlock sprite = ImageCreate(width, height, nullptr, 32);
  if (!sprite) return sprite;
  size_t at = 0;
  for (int32_t j = 0; j < height; ++j) {
    uint8_t* row = sprite.Row(j);
    for (int32_t i = 0; i < width; ++i, row += 4) {
      const PixelTone& t = tones[at++];
      if (t.cover == 0) continue;
      const Colour c = GlossPaintAt(paint, i, j, width, height);
      row[0] = GlossTone(ColourBlue(c), t.light, t.glare);
      row[1] = GlossTone(ColourGreen(c), t.light, t.glare);
      row[2] = GlossTone(ColourRed(c), t.light, t.glare);
      row[3] = t.cover;
    }
  }
  return sprite;
}

// Pixel centre i + 1/2 lies 8i + 4 eighths into the mask; the shape's centre
// at (margin + 1) pixels plus width / 2 and fx / 4 of one.
bool MakeShadowMask(const GlossShape& shape, int32_t margin, int fx, int fy, GlossMask& mask) {
  mask.width = shape.width + 2 + 2 * margin;
  mask.height = shape.height + 2 + 2 * margin;
  mask.cover =
      AllocBuffer<uint8_t>(static_cast<size_t>(mask.width) * static_cast<size_t>(mask.height));
  if (!mask.cover) return false;
  uint8_t* out = mask.cover.get();
  for (int32_t j = 0; j < mask.height; ++j)
    for (int32_t i = 0; i < mask.width; ++i)
      *out++ = GlossShadowAt(shape, 8 * i - 2 * fx - 4 - 8 * margin - 4 * shape.width,
                             8 * j - 2 * fy - 4 - 8 * margin - 4 * shape.height);
  return true;
}

}  // namespace

bool GlossSprites::Make(const GlossShape& shape, const GlossLight& light,
                        std::span<const GlossPaint> paints, bool shadows) try {
  m_shape = shape;
  m_shadow_margin = GlossShadowMargin(shape);
  constexpr int kVariants = kGlossPhases * kGlossPhases;
  m_sprites.clear();
  m_shadows.clear();
  m_sprites.resize(paints.size() * kVariants);
  Lattice lattice;
  SampleLattice(shape, light, lattice);
  std::vector<PixelTone> tones;
  for (int phase = 0; phase < kVariants; ++phase) {
    ToneVariant(lattice, sprite_width(), sprite_height(), phase % 4, phase / 4, tones);
    for (size_t p = 0; p < paints.size(); ++p) {
      ImageBlock& sprite = m_sprites[p * kVariants + static_cast<size_t>(phase)];
      sprite = PaintVariant(tones, paints[p], sprite_width(), sprite_height());
      if (!sprite) return false;
    }
  }
  if (shadows) {
    m_shadows.resize(kVariants);
    for (int phase = 0; phase < kVariants; ++phase)
      if (!MakeShadowMask(shape, m_shadow_margin, phase % 4, phase / 4,
                          m_shadows[static_cast<size_t>(phase)]))
        return false;
  }
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

namespace {

// The top-left pixel and phase of a box whose phase-0 top-left lies `lead`
// quarter pixels before the centre.
GlossPlace PlaceBox(int64_t x, int64_t y, int64_t lead_x, int64_t lead_y) {
  const int64_t tx = x - lead_x, ty = y - lead_y;
  const int64_t px = FloorDiv4(tx), py = FloorDiv4(ty);
  return {static_cast<int32_t>(px), static_cast<int32_t>(py),
          static_cast<int>((ty - 4 * py) * 4 + (tx - 4 * px))};
}

}  // namespace

GlossPlace GlossSprites::Place(int64_t x, int64_t y) const {
  return PlaceBox(x, y, 4 + 2 * int64_t{m_shape.width}, 4 + 2 * int64_t{m_shape.height});
}

GlossPlace GlossSprites::PlaceShadow(int64_t x, int64_t y) const {
  const int64_t lead = 4 * (int64_t{m_shadow_margin} + 1);
  return PlaceBox(x, y, lead + 2 * int64_t{m_shape.width}, lead + 2 * int64_t{m_shape.height});
}

// ---------------------------------------------------------------- shadow layer

bool ShadowLayer::Init(int32_t width, int32_t height, Colour background, int opacity) {
  m_width = width;
  m_height = height;
  m_opacity = std::clamp(opacity, 0, 255);
  m_used = false;
  m_cover = AllocBuffer<uint8_t>(static_cast<size_t>(width) * static_cast<size_t>(height));
  if (!m_cover) return false;
  const auto op = static_cast<unsigned>(m_opacity);
  const uint8_t bgr[3] = {ColourBlue(background), ColourGreen(background), ColourRed(background)};
  for (unsigned a = 0; a < 256; ++a) {
    // MaskBlendWrap's arithmetic with black ink: the ink term is 0.
    const unsigned cover = a * op / 255;
    for (int c = 0; c < 3; ++c) m_tone[a][c] = static_cast<uint8_t>(bgr[c] * (255 - cover) / 255);
  }
  return true;
}

void ShadowLayer::Clear() {
  if (m_used)
    std::memset(m_cover.get(), 0, static_cast<size_t>(m_width) * static_cast<size_t>(m_height));
  m_used = false;
}

void ShadowLayer::Add(const GlossMask& mask, int32_t x, int32_t y) {
  m_used = true;
  // Pieces of each mask row that stay contiguous in the tile, as the draw
  // layer's blends split them.
  int32_t tx0 = x % m_width;
  if (tx0 < 0) tx0 += m_width;
  int32_t ty = y % m_height;
  if (ty < 0) ty += m_height;
  for (int32_t j = 0; j < mask.height; ++j, ty = ty + 1 == m_height ? 0 : ty + 1) {
    const uint8_t* src =
        mask.cover.get() + static_cast<size_t>(j) * static_cast<size_t>(mask.width);
    uint8_t* row = m_cover.get() + static_cast<size_t>(ty) * static_cast<size_t>(m_width);
    int32_t tx = tx0;
    for (int32_t i = 0; i < mask.width;) {
      const int32_t count = std::min(mask.width - i, m_width - tx);
      for (int32_t n = 0; n < count; ++n) row[tx + n] = std::max(row[tx + n], src[i + n]);
      i += count;
      tx = 0;
    }
  }
}

ImageBlock ShadowLayer::Paint() const {
  ImageBlock image = ImageCreate(m_width, m_height, nullptr, 24);
  if (!image) return image;
  for (int32_t y = 0; y < m_height; ++y) {
    uint8_t* row = image.Row(y);
    const uint8_t* cover = m_cover.get() + static_cast<size_t>(y) * static_cast<size_t>(m_width);
    for (int32_t x = 0; x < m_width; ++x, row += 3) std::memcpy(row, m_tone[cover[x]], 3);
  }
  return image;
}

// ---------------------------------------------------------------- frames

ImageBlock GlossFrame(ShadowLayer& ground, std::span<const GlossItem> items,
                      int32_t shadow_offset) {
  ground.Clear();
  if (ground.opacity() > 0) {
    const int64_t offset = 4 * int64_t{shadow_offset};
    for (const GlossItem& item : items) {
      const GlossPlace at = item.sprites->PlaceShadow(item.x + offset, item.y + offset);
      ground.Add(item.sprites->Shadow(at.phase), at.x, at.y);
    }
  }
  ImageBlock frame = ground.Paint();
  if (!frame) return frame;
  for (const GlossItem& item : items) {
    const GlossPlace at = item.sprites->Place(item.x, item.y);
    AlphaBlitWrap(frame, item.sprites->Sprite(item.paint, at.phase), at.x, at.y);
  }
  return frame;
}

}  // namespace tess
