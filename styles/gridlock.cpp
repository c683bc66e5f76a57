// Gridlock (style 016): glossy blocks in stop-and-go traffic on a grid of
// one-way streets, over a background.
//
// Streets: the tile holds a whole number of horizontal and of vertical
// streets, evenly spaced (the pitch is the tile divided by the count, so
// streets meet across the edges), as many as leave room for one block of
// Size between two crossing streets. Each street runs one way, taken in turn
// from the checked directions of its axis; with no box checked all four are
// used, as on a fresh page. Blocks are Size long and half as wide.
//
// Traffic: lights alternate. In each light cycle the horizontal streets have
// one green window, then the vertical ones; only streets with green move, and
// a street's blocks move together, a whole number of segments (street lengths
// between crossings) with an ease in and out. Between moves every block waits
// at a stop line, clear of the crossing street, so blocks never meet at a
// crossing. Each street's moves add up to one tile length per loop, so in
// frame N every block is back where it began; positions come from the phase
// k / N in integer quarter pixels. Blocks and their shadows are placed with
// wrap-around, so the tile has no seams.
//
// Sections: page · layout · timetable · initialisation · frames · entry.
#include "styles/gridlock.h"

#include <algorithm>
#include <new>

#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 16;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kGlareControl = kFirstOwnControl;
constexpr int kShadeControl = kFirstOwnControl + 1;
constexpr int kShadowOffsetControl = kFirstOwnControl + 2;
constexpr int kShadowOpacityControl = kFirstOwnControl + 3;
// Up, Down, Left, Right.
constexpr int kDirectionControls[4] = {kFirstOwnControl + 4, kFirstOwnControl + 5,
                                       kFirstOwnControl + 6, kFirstOwnControl + 7};

constexpr std::array kPage = Join(
    TileRows(kNumber, {48, 1024, 128}),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1016}),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", {10, 36, 18}),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", {8, 256, 32}),
    },
    ShadingRows(kNumber, kFirstOwnControl),
    std::array{Background(kNumber, kRight, 0)},
    ColourRows(kNumber, 1),
    std::array{
        Check(Id(kFirstOwnControl + 4), kRight, 6, "Up", "DirUp"),
        Check(Id(kFirstOwnControl + 5), kRight, 7, "Down", "DirDown"),
        Check(Id(kFirstOwnControl + 6), kRight, 8, "Left", "DirLeft"),
        Check(Id(kFirstOwnControl + 7), kRight, 9, "Right", "DirRight"),
    });

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

enum Direction { kGoUp, kGoDown, kGoLeft, kGoRight };

// ---------------------------------------------------------------- layout

// Clearance between a waiting block and the crossing street's blocks.
constexpr int32_t kMargin = 1;

// Between blocks queued behind one stop line.
int32_t Gap(int32_t length) { return std::max(2, length / 5); }

// Streets across a tile side `side`: as many as leave a block length plus a
// crossing street's breadth and both margins per segment, at least one.
int32_t StreetCount(int32_t side, int32_t length, int32_t breadth) {
  return std::max(1, side / (length + breadth + 2 * kMargin));
}

// Centre line of street i of `count` across `side`, quarter pixels.
int64_t StreetLine(int64_t i, int32_t side, int32_t count) {
  return 2 * (2 * i + 1) * side / count;
}

// Waiting places per segment of a street of `side` crossed `count` times.
int32_t PlacesPerSegment(int32_t side, int32_t count, int32_t length, int32_t breadth) {
  const int64_t gap = Gap(length);
  const int64_t room = side - int64_t{count} * (breadth + 2 * kMargin) + count * gap;
  return std::max<int32_t>(1, static_cast<int32_t>(room / (int64_t{count} * (length + gap))));
}

// Floor of a / b for b > 0; every numerator here is below 2^50 (see Travelled).
int64_t FloorDiv(int64_t a, int64_t b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

}  // namespace

// ---------------------------------------------------------------- timetable

// A street's moves share its segments per tile out over the light cycles,
// evened out and then unevened by random transfers, so some streets wait a
// cycle while others jump two segments. Each move starts at a random tick of
// its window and ends before the window does; longer moves take longer.
void GridlockRecord::Schedule(GridlockStreet& street, Random& random) const {
  const int32_t c = m_cycles;
  const int32_t total = street.segments;
  street.d.assign(static_cast<size_t>(c), total / c);
  for (int32_t i = 0; i < total % c; ++i) ++street.d[static_cast<size_t>(i)];
  const int32_t most = total / c + 1;
  for (int32_t i = 0; i < c; ++i) {
    const auto from = static_cast<size_t>(random.Below(c));
    const auto to = static_cast<size_t>(random.Below(c));
    if (from != to && street.d[from] > 0 && street.d[to] < most) --street.d[from], ++street.d[to];
  }
  street.delay.resize(static_cast<size_t>(c));
  street.duration.resize(static_cast<size_t>(c));
  for (size_t i = 0; i < static_cast<size_t>(c); ++i) {
    const int32_t tau = kTicks * std::min(90, 40 + 25 * street.d[i]) / 100;
    street.duration[i] = tau;
    street.delay[i] = random.Below(kTicks - tau);
  }
}

// Signed distance the street's blocks have moved by frame k, quarter pixels.
// The eased part is the smoothstep u^2 (3 tau - 2 u) / tau^3 of the move's
// tick u; with tau <= 216, tau^3 < 2^24, at most 1024 / 8 segments a street
// and 4 * side <= 2^12, every product stays below 2^50.
int64_t GridlockRecord::Travelled(const GridlockStreet& street, int k) const {
  // Frame k samples the middle of its share of the loop, (k + 1/2) / N, so
  // that even two frames see traffic in both windows.
  const int64_t phase = k % m_frames;
  const int64_t ticks = (2 * phase + 1) * m_cycles * kTicks / m_frames;
  const int64_t window = ticks / kTicks, tick = ticks % kTicks;
  const auto cycle = static_cast<size_t>(window / 2);
  const bool own_window = (window % 2 == 0) == street.horizontal;
  int64_t done = 0;
  for (size_t c = 0; c < cycle; ++c) done += street.d[c];
  int64_t numerator = done, denominator = 1;
  if (own_window) {
    const int64_t tau = street.duration[cycle];
    const int64_t u = std::clamp<int64_t>(tick - street.delay[cycle], 0, tau);
    denominator = tau * tau * tau;
    numerator = done * denominator + street.d[cycle] * u * u * (3 * tau - 2 * u);
  } else if (street.horizontal) {
    // Horizontal streets' windows come first: outside it, theirs is over.
    numerator += street.d[cycle];
  }
  const int32_t side = street.horizontal ? m_width : m_height;
  return street.sign * FloorDiv(4 * side * numerator, int64_t{street.segments} * denominator);
}

void GridlockRecord::Centre(const GridlockCar& car, int k, int64_t& x, int64_t& y) const {
  const GridlockStreet& street = m_streets[static_cast<size_t>(car.street)];
  const int64_t along = car.along0 + Travelled(street, k);
  x = street.horizontal ? along : street.across;
  y = street.horizontal ? street.across : along;
}

// ---------------------------------------------------------------- initialisation

std::unique_ptr<GridlockRecord> GridlockRecord::Create(const ParamReader& reader,
                                                       Random& random) try {
  std::unique_ptr<GridlockRecord> record(new GridlockRecord());
  if (!record->Build(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

bool GridlockRecord::Build(const ParamReader& reader, Random& random) {
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));
  m_width = reader.Spin(Id(kWidthControl));
  m_height = reader.Spin(Id(kDepthControl));
  m_frames = reader.Spin(Id(kFramesControl));
  // A reader that ignores the page's ranges must not make a size or a
  // modulus of zero.
  if (m_width <= 0 || m_height <= 0 || m_frames <= 0) return false;
  m_length = std::max(reader.Spin(Id(kSizeControl)), 4);
  m_breadth = (m_length + 1) / 2;
  const int32_t density = std::max(reader.Spin(Id(kDensityControl)), 0);
  const GlossLight light{reader.Spin(Id(kGlareControl)), reader.Spin(Id(kShadeControl))};
  m_shadow_offset = reader.Spin(Id(kShadowOffsetControl));
  m_shadow_opacity = reader.Spin(Id(kShadowOpacityControl));
  // A light cycle about every 16 frames, so a green window lasts about eight:
  // lights that changed every frame or two would flicker.
  m_cycles = std::max(1, m_frames / 16);

  bool directions[4];
  for (int i = 0; i < 4; ++i) directions[i] = reader.Checked(Id(kDirectionControls[i]));
  if (std::none_of(std::begin(directions), std::end(directions), [](bool b) { return b; }))
    std::fill(std::begin(directions), std::end(directions), true);

  std::vector<GlossPaint> paints;
  if (!MakeSlotPaints(reader, kColourIds, kEnableIds, m_length + 2, m_length + 2, paints))
    return false;
  const int32_t radius = std::max(1, m_breadth * 2 / 5);
  const bool shadows = m_shadow_opacity > 0;
  if (!m_sprites[0].Make({m_length, m_breadth, radius}, light, paints, shadows) ||
      !m_sprites[1].Make({m_breadth, m_length, radius}, light, paints, shadows))
    return false;
  m_background = reader.ColourValue(Id(kBackgroundControl));
  if (!m_ground.Init(m_width, m_height, m_background, m_shadow_opacity)) return false;
  LayOut(directions, density, paints.size(), random);
  return true;
}

// Random numbers are drawn in a fixed order: each axis's first direction,
// the streets' timetables, then each block's waiting place and paint.
void GridlockRecord::LayOut(const bool (&directions)[4], int32_t density, size_t paints,
                            Random& random) {
  m_columns = StreetCount(m_width, m_length, m_breadth);
  m_rows = StreetCount(m_height, m_length, m_breadth);
  // A tile too small for a block to wait between two crossings (one street
  // each way, Size above about two thirds of the side) would leave waiting
  // blocks in the crossing street: then only one axis carries traffic.
  bool busy[2] = {directions[kGoRight] || directions[kGoLeft],
                  directions[kGoDown] || directions[kGoUp]};
  const bool room[2] = {m_width >= m_length + m_breadth + 2 * kMargin,
                        m_height >= m_length + m_breadth + 2 * kMargin};
  if (busy[0] && busy[1] && !(room[0] && room[1])) busy[room[0] || !room[1] ? 1 : 0] = false;
  for (bool horizontal : {true, false}) {
    if (!busy[horizontal ? 0 : 1]) continue;
    const Direction forward = horizontal ? kGoRight : kGoDown;
    const Direction back = horizontal ? kGoLeft : kGoUp;
    std::vector<int32_t> signs;
    if (directions[forward]) signs.push_back(1);
    if (directions[back]) signs.push_back(-1);
    const auto count = static_cast<int32_t>(signs.size());
    const int32_t first = random.Below(count);
    const int32_t streets = horizontal ? m_rows : m_columns;
    for (int32_t j = 0; j < streets; ++j) {
      GridlockStreet street;
      street.horizontal = horizontal;
      street.sign = signs[static_cast<size_t>((first + j) % count)];
      street.across = StreetLine(j, horizontal ? m_height : m_width, streets);
      street.segments = horizontal ? m_columns : m_rows;
      Schedule(street, random);
      m_streets.push_back(std::move(street));
    }
  }

  // Every waiting place: behind each stop line, queued back from it.
  struct Place {
    int32_t street;
    int64_t along;
  };
  std::vector<Place> places;
  for (size_t s = 0; s < m_streets.size(); ++s) {
    const GridlockStreet& street = m_streets[s];
    const int32_t side = street.horizontal ? m_width : m_height;
    const int32_t per_segment = PlacesPerSegment(side, street.segments, m_length, m_breadth);
    const int64_t stop_back = 2 * m_breadth + 4 * kMargin + 2 * m_length;
    for (int32_t i = 0; i < street.segments; ++i) {
      for (int32_t t = 0; t < per_segment; ++t) {
        const int64_t queued = stop_back + 4 * int64_t{t} * (m_length + Gap(m_length));
        const int64_t along = street.sign > 0 ? StreetLine(i + 1, side, street.segments) - queued
                                              : StreetLine(i, side, street.segments) + queued;
        places.push_back({static_cast<int32_t>(s), along});
      }
    }
  }
  // As many blocks as the density asks for and the places allow, on places
  // chosen by a partial shuffle.
  const auto total = static_cast<int32_t>(places.size());
  const int32_t count = std::min(density, total);
  ColourPick pick(static_cast<int>(paints));
  m_cars.reserve(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) {
    Place& place = places[static_cast<size_t>(i)];
    std::swap(place, places[static_cast<size_t>(i + random.Below(total - i))]);
    m_cars.push_back({place.street, place.along, pick.Pick(random)});
  }
}

// ---------------------------------------------------------------- frames

void GridlockRecord::Items(int k, std::vector<GlossItem>& items) const {
  items.clear();
  for (const GridlockCar& car : m_cars) {
    GlossItem& item = items.emplace_back();
    item.sprites = &m_sprites[m_streets[static_cast<size_t>(car.street)].horizontal ? 0 : 1];
    item.paint = car.paint;
    Centre(car, k, item.x, item.y);
  }
}

ImageBlock GridlockRecord::RenderFrame(int k) try {
  Items(k, m_items);
  return GlossFrame(m_ground, m_items, m_shadow_offset);
} catch (const std::bad_alloc&) {
  return {};
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitGridlock(const ParamReader& reader, Random& random) {
  return GridlockRecord::Create(reader, random);
}

}  // namespace

StyleEntry GridlockStyle() {
  return {"Gridlock", kNumber, kPage, &InitGridlock, &BackgroundQuery<kNumber>};
}

}  // namespace tess
