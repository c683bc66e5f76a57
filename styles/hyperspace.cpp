// Hyperspace (style 001): star streaks rushing across a plain background in
// the Scroll direction, in four depth layers: nearer stars move faster, and
// their streaks are longer (length follows speed), thicker and brighter. Each
// streak is a bright head with a trail fading behind it; the trail starts at
// the page's Opacity.
//
// Motion is a function of the phase k/N alone, in integers: over the loop a
// star's head advances 1, 2, 3 or 5 whole tile lengths along the scroll axis
// (by layer), so frame N is frame 0 and frames can come in any order. Heads
// move in sixteenths of a pixel; a mask is made once per build for each
// layer, length and sixteenth, so frames only blend, and every blend wraps
// around the tile, so there are no seams at any size.
//
// Every streak is laid out as if it moved right (the canonical axis); the
// other directions mirror and transpose that layout when the masks are made
// and placed. All arithmetic is on integers.
//
// Sections: page · streak masks · initialisation · frames · entry.
#include "styles/hyperspace.h"

#include <algorithm>
#include <new>
#include <utility>

#include "draw/draw.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 1;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1001}),
        Spin(Id(kDensityControl), kLeft, 4, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kOpacityControl), kLeft, 5, "Opacity:", "FillOpacity", {1, 255, 255}),
        Picker(Id(kScrollControl), kLeft, 6, "Scroll", PickerClass::kScroll4, 1),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

// Depth layers, far to near (and drawn in that order, so near streaks pass
// over far ones). Counts are in halves of Density. Across the motion a
// streak has a head profile and a narrower trail profile, so heads read as
// stars leading their trails.
struct Layer {
  int32_t count_halves;
  int32_t speed;       // tile lengths per loop
  int32_t core;        // length of the head in pixels
  int32_t rows;        // thickness across the motion, odd
  uint8_t head[5];     // grey across the thickness
  uint8_t trail[5];
  int32_t brightness;  // out of 255, over the whole streak
};
constexpr Layer kLayers[4] = {
    {6, 1, 1, 1, {255}, {255}, 150},
    {4, 2, 1, 3, {50, 255, 50}, {0, 255, 0}, 200},
    {3, 3, 2, 3, {130, 255, 130}, {40, 255, 40}, 235},
    {2, 5, 2, 5, {40, 190, 255, 190, 40}, {0, 90, 255, 90, 0}, 255}};
// Each layer has three streak lengths (100, 80 and 60 per cent), each its own shape.
constexpr int kVariants = 3;
constexpr int kShapes = 4 * kVariants;

// A sixteenth of a tile length per tile length travelled, so length follows
// speed; at most half the tile, so a streak never wraps onto itself.
int32_t StreakLength(int32_t along, int32_t speed, int variant) {
  const int64_t length = int64_t{speed} * along * (10 - 2 * variant) / 160;
  return static_cast<int32_t>(std::clamp<int64_t>(length, 2, std::max(2, along / 2)));
}

int64_t FloorDiv(int64_t a, int64_t b) {  // b > 0
  int64_t q = a / b;
  return (a % b != 0 && a < 0) ? q - 1 : q;
}

int64_t FloorMod(int64_t a, int64_t b) { return a - FloorDiv(a, b) * b; }

}  // namespace

Scroll ScrollFromPicker(int32_t value) {
  return value >= 0 && value <= 3 ? static_cast<Scroll>(value) : Scroll::kRight;
}

// ---------------------------------------------------------------- streak masks

// Distances are in 32nds of a pixel: sample s of pixel i sits at 32 i + 2 s + 1
// and the head at 32 length + 2 phase, so the head moves a sixteenth per phase.
// The largest product, opacity * 32 length with length <= 512, is below 2^22.
void StreakProfile(int32_t length, int32_t core, int32_t opacity, int32_t phase, uint8_t* head,
                   uint8_t* trail) {
  const int64_t front = 32 * int64_t{length} + 2 * phase;
  const int64_t tail = 32 * int64_t{length};  // distance from head to tail
  const int64_t bright = 32 * int64_t{std::min(core, length)};
  for (int32_t i = 0; i < length + 2; ++i) {
    int64_t head_sum = 0, trail_sum = 0;
    for (int s = 0; s < 16; ++s) {
      const int64_t behind = front - (32 * int64_t{i} + 2 * s + 1);
      if (behind < 0 || behind > tail) continue;
      if (behind <= bright) head_sum += 255;
      trail_sum += opacity * (tail - behind) / tail;
    }
    head[i] = static_cast<uint8_t>(head_sum / 16);
    trail[i] = static_cast<uint8_t>(trail_sum / 16);
  }
}

bool HyperspaceRecord::MakeShapes(int32_t opacity) {
  m_shapes.resize(kShapes);
  for (int s = 0; s < kShapes; ++s) {
    const Layer& layer = kLayers[s / kVariants];
    StreakShape& shape = m_shapes[size_t(s)];
    shape.length = StreakLength(m_along, layer.speed, s % kVariants);
    shape.rows = layer.rows;
    shape.span = shape.length + 2;
    shape.first = static_cast<int32_t>(m_sprites.size());
    Buffer<uint8_t> head = AllocBuffer<uint8_t>(size_t(shape.span));
    Buffer<uint8_t> trail = AllocBuffer<uint8_t>(size_t(shape.span));
    if (!head || !trail) return false;
    for (int32_t phase = 0; phase < kStreakPhases; ++phase) {
      StreakProfile(shape.length, layer.core, opacity, phase, head.get(), trail.get());
      ImageBlock mask = Vertical() ? ImageCreate(shape.rows, shape.span, nullptr, 24)
                                   : ImageCreate(shape.span, shape.rows, nullptr, 24);
      if (!mask) return false;
      for (int32_t i = 0; i < shape.span; ++i) {
        // Backwards directions mirror the canonical layout.
        const int32_t at = Backwards() ? shape.span - 1 - i : i;
        for (int32_t r = 0; r < shape.rows; ++r) {
          const int32_t grey = std::max(head[size_t(i)] * layer.head[r], trail[size_t(i)] * layer.trail[r]);
          uint8_t* pixel = Vertical() ? mask.Row(at) + 3 * size_t(r) : mask.Row(r) + 3 * size_t(at);
          pixel[0] = pixel[1] = pixel[2] = static_cast<uint8_t>(grey / 255 * layer.brightness / 255);
        }
      }
      m_sprites.push_back(std::move(mask));
    }
  }
  return true;
}

// ---------------------------------------------------------------- initialisation

std::unique_ptr<HyperspaceRecord> HyperspaceRecord::Create(const ParamReader& reader,
                                                           Random& random) try {
  std::unique_ptr<HyperspaceRecord> record(new HyperspaceRecord());
  if (!record->Build(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

bool HyperspaceRecord::Build(const ParamReader& reader, Random& random) {
  m_width = reader.Spin(Id(kWidthControl));
  m_height = reader.Spin(Id(kDepthControl));
  m_frames = reader.Spin(Id(kFramesControl));
  const int32_t density = reader.Spin(Id(kDensityControl));
  const int32_t opacity = std::clamp(reader.Spin(Id(kOpacityControl)), 0, 255);
  // A reader that ignores the page's ranges must not make a size or a
  // modulus of zero.
  if (m_width <= 0 || m_height <= 0 || m_frames <= 0 || density < 0) return false;
  m_scroll = ScrollFromPicker(reader.Picker(Id(kScrollControl)));
  m_along = Vertical() ? m_height : m_width;
  m_across = Vertical() ? m_width : m_height;
  m_background = reader.ColourValue(Id(kBackgroundControl));
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));
  m_paints = SlotPaints::Collect(reader, kColourIds, kEnableIds);
  if (!MakeShapes(opacity)) return false;

  m_count = 0;
  for (const Layer& layer : kLayers) m_count += density * layer.count_halves / 2;
  m_stars = AllocBuffer<HyperStar>(size_t(std::max(m_count, 1)));
  if (!m_stars) return false;
  // One pick for all layers: its previous-pick memory runs across them.
  ColourPick pick(m_paints.count());
  HyperStar* star = m_stars.get();
  for (int l = 0; l < 4; ++l) {
    for (int32_t i = 0; i < density * kLayers[l].count_halves / 2; ++i, ++star) {
      // The draws are part of the picture: keep them one per statement, in
      // this order.
      star->across = random.Below(m_across);
      star->along0 = random.Below(m_along * kStreakPhases);
      star->shape = l * kVariants + random.Below(kVariants);
      star->speed = kLayers[l].speed;
      const auto slot = static_cast<int32_t>(pick.Pick(random));
      const ImageBlock& mask = m_sprites[size_t(m_shapes[size_t(star->shape)].first)];
      if (!m_paints.Prepare(slot, mask.width(), mask.height(), &star->paint)) return false;
    }
  }
  return true;
}

// ---------------------------------------------------------------- frames

HyperPlacement HyperspaceRecord::Place(int32_t i, int k) const {
  const HyperStar& star = m_stars[size_t(i)];
  const StreakShape& shape = m_shapes[size_t(star.shape)];
  // Whole tile lengths over k = 0..N: the head is back where it started at
  // k = N.
  const int64_t loop = int64_t{m_along} * kStreakPhases;
  const int64_t head =
      FloorMod(star.along0 + FloorDiv(int64_t{k} * star.speed * loop, m_frames), loop);
  const auto phase = static_cast<int32_t>(head % kStreakPhases);
  // Canonical: the mask's first pixel, head at the far end.
  const auto start = static_cast<int32_t>(head / kStreakPhases) - shape.length;
  // Backwards, canonical column c lands on column -c - 1.
  const int32_t along = Backwards() ? -start - shape.span : start;
  const int32_t across = star.across - shape.rows / 2;
  HyperPlacement p;
  p.mask = &m_sprites[size_t(shape.first + phase)];
  p.x = Vertical() ? across : along;
  p.y = Vertical() ? along : across;
  p.paint = star.paint;
  return p;
}

ImageBlock HyperspaceRecord::RenderFrame(int k) {
  ImageBlock frame = SolidImage({0, 0, m_width, m_height}, m_background);
  if (!frame) return frame;
  for (int32_t i = 0; i < m_count; ++i) {
    const HyperPlacement p = Place(i, k);
    m_paints.Blend(frame, *p.mask, p.x, p.y, p.paint, 255);
  }
  return frame;
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitHyperspace(const ParamReader& reader, Random& random) {
  return HyperspaceRecord::Create(reader, random);
}

}  // namespace

StyleEntry HyperspaceStyle() {
  return {"Hyperspace", kNumber, kPage, &InitHyperspace, &BackgroundQuery<kNumber>};
}

}  // namespace tess
