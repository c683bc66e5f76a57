// Bubbles (style 000): three layers of soft bubbles that rise through the tile
// and sway sideways, drawn at 2x or 4x and reduced. Over N frames every bubble
// rises a whole number of tile heights and sways one full sine period, and all
// drawing wraps around the tile, so the animation loops and tiles seamlessly.
//
// A colour slot holding a gradient, texture or tile paints its bubbles with
// that picture through the same masks and blend. Each bubble carries the
// whole picture: the fill is rendered once per record at each layer's size,
// and a bubble narrower than its layer shows the middle of it. A ring
// gradient then reads as a lit bubble and a linear one as a sphere lit from
// one side; laid over the whole tile instead, the fill only tinted each
// bubble by where it happened to be. The picture travels with its bubble, so
// it loops and wraps exactly as the masks do, whatever the fill's edges.
//
// Sections: page · sprite · initialisation · frames · entry.
#include "styles/bubbles.h"

#include <cmath>
#include <new>
#include <numbers>
#include <utility>

#include "draw/canvas.h"
#include "draw/draw.h"
#include "fills/fill_render.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 0;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kInverseControl = kFirstOwnControl;
constexpr int kSmoothControl = kFirstOwnControl + 1;

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kOpacityControl), kLeft, 3, "Opacity:", "FillOpacity", {1, 255, 255}),
        Spin(Id(kDriftControl), kLeft, 4, "Drift:", "Drift", {0, 99, 25}),
        Spin(Id(kSizeControl), kLeft, 5, "Size:", "Size", {10, 64, 18}),
        Spin(Id(kDensityControl), kLeft, 6, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kSeedControl), kLeft, 7, "Seed:", "Seed", {100, 32760, 1000}),
        Check(Id(kInverseControl), kLeft, 8, "Inverse", "Inverse"),
        Check(Id(kSmoothControl), kLeft, 9, "Smooth", "Smooth"),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

// A layer of bubbles: large ones first, so the smaller, faster ones are
// painted over them.
struct Layer {
  int32_t count;
  int32_t size;        // S, in working pixels
  int32_t speed;       // v
  int32_t brightness;  // b
};

// The cache slot of key (a, b), adding it when new: sprites by (d, b) and
// fill images by (colour slot, layer size). Layers never share a brightness,
// a layer has at most S / 9 diameters and there are 5 slots and 3 layers, so
// both lists stay short.
int32_t CacheSlot(std::vector<std::pair<int32_t, int32_t>>& keys, int32_t a, int32_t b) {
  for (size_t i = 0; i < keys.size(); ++i)
    if (keys[i] == std::pair{a, b}) return static_cast<int32_t>(i);
  keys.emplace_back(a, b);
  return static_cast<int32_t>(keys.size() - 1);
}

}  // namespace

// ---------------------------------------------------------------- sprite

// Floating point, here and in RenderFrame: each expression below is evaluated
// in double, in the order written, and truncated toward zero, and must stay
// so, or the same seed draws different pictures on different machines:
//   - the mask level i / (d/2) * b;
//   - the sway amplitude Drift * 0.01 * Wf;
//   - the sway sin(pi * angle / 180) * A (the sine itself is the platform's;
//     a last-place difference there moves a bubble only when the product
//     lands within that place of a whole number);
//   - the rise k / N * Hf, truncated before it is multiplied by v;
//   - the angle step (1 / N) * 360, added to each angle once per frame. It is
//     computed once, so no compiler can fuse the product into the addition.
// An integer form such as i * b / (d/2) or k * Hf / N differs from these
// wherever the double result falls just short of a whole number. The library
// is built without floating-point contraction and, on 32-bit x86, with SSE2
// arithmetic rather than the x87's extended precision (styles/CMakeLists.txt).
ImageBlock MakeBubbleSprite(int32_t d, int32_t b, bool inverse) {
  Canvas canvas = Canvas::Open(d, d);
  if (!canvas) return {};
  const int32_t half = d / 2;
  // Outside in: each circle covers the previous one's inner part.
  for (int32_t i = 0; i < half; ++i) {
    auto level = static_cast<int32_t>(static_cast<double>(i) / half * b);
    if (!inverse) level = 255 - level;
    canvas.FillEllipse({i, i, d - i, d - i}, MakeColour(level, level, level));
  }
  return canvas.Release();
}

// ---------------------------------------------------------------- initialisation

std::unique_ptr<BubblesRecord> BubblesRecord::Create(const ParamReader& reader, Random& random,
                                                     BubblesOptions options) try {
  std::unique_ptr<BubblesRecord> record(new BubblesRecord());
  record->m_options = options;
  if (!record->FillElements(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

bool BubblesRecord::FillElements(const ParamReader& reader, Random& random) {
  const std::vector<FillDescriptor> fills = CollectFills(reader, kColourIds, kEnableIds);
  const int32_t density = reader.Spin(Id(kDensityControl));
  const int32_t opacity = reader.Spin(Id(kOpacityControl));
  const bool inverse = reader.Checked(Id(kInverseControl));
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));

  m_scale = reader.Checked(Id(kSmoothControl)) ? 4 : 2;
  m_work_width = m_scale * reader.Spin(Id(kWidthControl));
  m_work_height = m_scale * reader.Spin(Id(kDepthControl));
  m_frames = reader.Spin(Id(kFramesControl));
  m_drift = reader.Spin(Id(kDriftControl));
  m_angle_step = 1.0 / m_frames * 360.0;

  m_background = reader.ColourValue(Id(kBackgroundControl));

  m_large = reader.Spin(Id(kSizeControl)) * m_scale;
  m_medium = 3 * m_large / 4;
  m_small = m_large / 2;
  const Layer layers[3] = {{density / 2, m_large, 1, 255},
                           {3 * density / 4, m_medium, 2, 160},
                           {density, m_small, 4, 128}};
  m_count = layers[0].count + layers[1].count + layers[2].count;
  m_bubbles = AllocBuffer<Bubble>(static_cast<size_t>(m_count));
  if (!m_bubbles) return false;

  // One pick for all layers: its previous-pick memory runs across them.
  ColourPick pick(static_cast<int>(fills.size()));
  std::vector<std::pair<int32_t, int32_t>> sprite_keys;
  std::vector<std::pair<int32_t, int32_t>> fill_keys;  // (colour slot, S)
  Bubble* e = m_bubbles.get();
  for (const Layer& layer : layers) {
    const int32_t s = layer.size;
    const int32_t spread = s / 9 != 0 ? s / 9 : 1;
    for (int32_t i = 0; i < layer.count; ++i, ++e) {
      // The draws are part of the picture: keep them one per statement, in
      // this order.
      e->x0 = random.Below(m_work_width - s) + s / 2;
      e->y0 = random.Below(m_work_height);
      e->d = s - random.Below(spread);
      e->v = layer.speed;
      e->b = layer.brightness;
      e->angle = random.Next() % 360;
      e->opacity = opacity;
      e->inverse = inverse;
      const int slot = pick.Pick(random);
      e->colour = fills[static_cast<size_t>(slot)].colour;
      e->fill = fills[static_cast<size_t>(slot)].kind == kFillSimple
                    ? -1
                    : CacheSlot(fill_keys, slot, s);
      e->sprite = CacheSlot(sprite_keys, e->d, e->b);
    }
  }
  m_sprites.resize(sprite_keys.size());
  return RenderFills(fills, fill_keys);
}

// Once per record, so no frame renders a fill: each slot's fill at each layer
// size that uses it, at working size, so one fill pixel is one canvas pixel.
bool BubblesRecord::RenderFills(const std::vector<FillDescriptor>& fills,
                                const std::vector<std::pair<int32_t, int32_t>>& keys) {
  m_fill_images.resize(keys.size());
  for (size_t i = 0; i < keys.size(); ++i) {
    const FillDescriptor& fill = fills[static_cast<size_t>(keys[i].first)];
    m_fill_images[i] = RenderFill(fill, keys[i].second, keys[i].second);
    if (!m_fill_images[i]) return false;
  }
  return true;
}

// ---------------------------------------------------------------- frames

const ImageBlock* BubblesRecord::SpriteFor(const Bubble& bubble, ImageBlock& scratch) {
  ImageBlock& slot = m_options.cache_sprites ? m_sprites[static_cast<size_t>(bubble.sprite)]
                                             : scratch;
  if (!slot || !m_options.cache_sprites) {
    slot = MakeBubbleSprite(bubble.d, bubble.b, bubble.inverse);
    if (!slot) return nullptr;
    ++m_sprites_drawn;
  }
  return &slot;
}

ImageBlock BubblesRecord::RenderFrame(int k) {
  // Filled afresh rather than copied from a kept background image: the same
  // bytes, and one working-size image less alive while the frames pile up.
  Canvas canvas = Canvas::Adopt(SolidImage({0, 0, m_work_width, m_work_height}, m_background));
  if (!canvas) return {};
  // See MakeBubbleSprite for why these stay in double.
  const auto amplitude = static_cast<int32_t>(m_drift * 0.01 * m_work_width);
  const auto lift = static_cast<int32_t>(static_cast<double>(k) / m_frames * m_work_height);
  ImageBlock scratch;
  for (int32_t i = 0; i < m_count; ++i) {
    Bubble& e = m_bubbles[static_cast<size_t>(i)];
    const auto sway =
        static_cast<int32_t>(std::sin(std::numbers::pi * e.angle / 180.0) * amplitude);
    const int32_t rise = lift * e.v;
    const ImageBlock* sprite = SpriteFor(e, scratch);
    if (!sprite) return {};
    const int32_t left = e.x0 + sway - e.d / 2, top = e.y0 - rise - e.d / 2;
    if (e.fill < 0) {
      MaskBlendWrap(canvas.image(), *sprite, left, top, e.colour, e.opacity);
    } else {
      // A bubble narrower than its layer shows the middle of the layer's fill.
      const ImageBlock& fill = m_fill_images[static_cast<size_t>(e.fill)];
      const int32_t inset = (fill.width() - e.d) / 2;
      MaskBlendImageWrap(canvas.image(), *sprite, left, top, fill, inset, inset, e.opacity);
    }
    e.angle += m_angle_step;
  }
  ImageBlock working = canvas.Release();
  ImageBlock frame = ScaleByPercent(working, 100 / m_scale, 100 / m_scale);
  return frame ? std::move(frame) : std::move(working);
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitBubbles(const ParamReader& reader, Random& random) {
  return BubblesRecord::Create(reader, random);
}

}  // namespace

StyleEntry BubblesStyle() {
  return {"Bubbles", kNumber, kPage, &InitBubbles, &BackgroundQuery<kNumber>};
}

}  // namespace tess
