// Neural Network (style 018): a lattice of glossy nodes joined to their
// neighbours by thin links shaded from one node's colour to the other's,
// with pulses of light running along the links over a background.
//
// Width and Depth count nodes here, not pixels, hence "Columns:" and
// "Rows:": the tile is the lattice times the node pitch, 2 x Size + Padding
// (made smaller, with the nodes, where the tile would pass 1024 pixels).
// Nodes sit near their lattice points, nudged at random; every node links to
// its right and lower neighbours, across the tile's edges too, so the lattice
// is a torus and the tile has no seams (links are drawn once, unwrapped, and
// every pixel they cover is folded into the tile).
//
// Pulses: each runs a lap of Columns horizontal and Rows vertical steps in a
// random order, each step one link right (or left) or down (or up), so every
// lap crosses the tile once each way and ends at its start. The page has no
// Frames: a pulse takes 4 frames a link, so N = 4 x (Columns + Rows), kept
// within 24..128 (longer laps run faster, shorter ones slower). Pulse
// positions come from the phase k / N in quarter pixels, so frame N is frame
// 0. The lattice is drawn once per build; a frame is a copy with the pulses.
//
// Sections: page · frame count · initialisation · network · pulses · entry.
#include "styles/neural_network.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "draw/draw.h"
#include "draw/raster.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 18;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kPaddingControl = kFirstOwnControl;
constexpr int kGlareControl = kFirstOwnControl + 1;
constexpr int kShadeControl = kFirstOwnControl + 2;
constexpr int kShadowOffsetControl = kFirstOwnControl + 3;
constexpr int kShadowOpacityControl = kFirstOwnControl + 4;

// Shadows are off by default here (offset and opacity 0), so both ranges start at 0.
constexpr std::array kPage = Join(
    std::array{
        Spin(Id(kWidthControl), kLeft, 0, "Columns:", "Width", {2, 64, 12}),
        Spin(Id(kDepthControl), kLeft, 1, "Rows:", "Depth", {2, 64, 8}),
        Spin(Id(kSeedControl), kLeft, 2, "Seed:", "Seed", {100, 32760, 1018}),
        Spin(Id(kSizeControl), kLeft, 3, "Size:", "Size", {8, 64, 14}),
        Spin(Id(kDensityControl), kLeft, 4, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kFirstOwnControl), kLeft, 5, "Padding:", "Padding", {0, 32, 0}),
    },
    ShadingRows(kNumber, kFirstOwnControl + 1, false),
    std::array{Background(kNumber, kRight, 0)},
    ColourRows(kNumber, 1));

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

constexpr int32_t kMaxTile = 1024;  // as the other effects' Width and Depth
constexpr int kLinkOpacity = 150;   // links are dimmer than the nodes they join
// A pulse's tail: two fainter glows behind its head, at these fractions of a
// node's size, with these strengths.
constexpr int kTailSpacing = 45;  // per cent of the node size
constexpr int kGlowStrength[3] = {255, 170, 90};
constexpr int kGlowSize[3] = {130, 100, 75};  // per cent of the node size

int64_t FloorDiv(int64_t a, int64_t b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

}  // namespace

// ---------------------------------------------------------------- frame count

int NeuralNetworkRecord::FramesFor(int32_t columns, int32_t rows) {
  return std::clamp(4 * (columns + rows), 24, 128);
}

// ---------------------------------------------------------------- initialisation

std::unique_ptr<NeuralNetworkRecord> NeuralNetworkRecord::Create(const ParamReader& reader,
                                                                 Random& random) try {
  std::unique_ptr<NeuralNetworkRecord> record(new NeuralNetworkRecord());
  if (!record->Build(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

int32_t NeuralNetworkRecord::NodeAt(int32_t column, int32_t row) const {
  const int32_t c = (column % m_columns + m_columns) % m_columns;
  const int32_t r = (row % m_rows + m_rows) % m_rows;
  return r * m_columns + c;
}

bool NeuralNetworkRecord::Build(const ParamReader& reader, Random& random) {
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));
  m_columns = reader.Spin(Id(kWidthControl));
  m_rows = reader.Spin(Id(kDepthControl));
  // A reader that ignores the page's ranges must not make a size of zero.
  if (m_columns < 1 || m_rows < 1 || std::max(m_columns, m_rows) > kMaxTile / 4) return false;
  const int32_t size = std::max(reader.Spin(Id(kSizeControl)), 2);
  const int32_t padding = std::max(reader.Spin(Id(kPaddingControl)), 0);
  const int32_t density = std::max(reader.Spin(Id(kDensityControl)), 0);
  const GlossLight light{reader.Spin(Id(kGlareControl)), reader.Spin(Id(kShadeControl))};
  const int32_t shadow_offset = reader.Spin(Id(kShadowOffsetControl));
  const int32_t shadow_opacity = reader.Spin(Id(kShadowOpacityControl));
  const Colour background = reader.ColourValue(Id(kBackgroundControl));

  const int32_t pitch = 2 * size + padding;
  m_pitch = std::min(pitch, kMaxTile / std::max(m_columns, m_rows));
  m_node_size = std::max(3, size * m_pitch / pitch);
  m_width = m_columns * m_pitch;
  m_height = m_rows * m_pitch;
  m_frames = FramesFor(m_columns, m_rows);

  if (!MakeSlotPaints(reader, kColourIds, kEnableIds, m_node_size + 2, m_node_size + 2, m_paints))
    return false;

  // Random numbers are drawn in a fixed order: each node's nudge and paint,
  // then each pulse's start, directions, steps, paint and place on its lap.
  ColourPick pick(static_cast<int>(m_paints.size()));
  const int32_t nudge = m_pitch - m_node_size;  // quarter pixels each way
  m_nodes.resize(static_cast<size_t>(m_columns) * static_cast<size_t>(m_rows));
  for (int32_t r = 0; r < m_rows; ++r) {
    for (int32_t c = 0; c < m_columns; ++c) {
      NeuralNode& node = m_nodes[static_cast<size_t>(NodeAt(c, r))];
      node.x = 2 * int64_t{m_pitch} * (2 * c + 1) + random.Below(2 * nudge + 1) - nudge;
      node.y = 2 * int64_t{m_pitch} * (2 * r + 1) + random.Below(2 * nudge + 1) - nudge;
      node.paint = pick.Pick(random);
    }
  }
  const int32_t steps = m_columns + m_rows;
  m_pulses.resize(static_cast<size_t>(density));
  for (NeuralPulse& pulse : m_pulses) {
    pulse.start = random.Below(m_columns * m_rows);
    pulse.sx = random.Below(2) == 0 ? 1 : -1;
    pulse.sy = random.Below(2) == 0 ? 1 : -1;
    pulse.horizontal.assign(static_cast<size_t>(steps), 0);
    std::fill_n(pulse.horizontal.begin(), m_columns, uint8_t{1});
    for (int32_t i = steps - 1; i > 0; --i)
      std::swap(pulse.horizontal[static_cast<size_t>(i)],
                pulse.horizontal[static_cast<size_t>(random.Below(i + 1))]);
    pulse.paint = pick.Pick(random);
    pulse.offset = random.Below(steps * m_frames);
    // The nodes of the lap, unwrapped: each step adds the link's own offset.
    int32_t column = pulse.start % m_columns, row = pulse.start / m_columns;
    int64_t x = m_nodes[static_cast<size_t>(pulse.start)].x;
    int64_t y = m_nodes[static_cast<size_t>(pulse.start)].y;
    pulse.path_x.assign(1, x);
    pulse.path_y.assign(1, y);
    for (const uint8_t horizontal : pulse.horizontal) {
      const int32_t next_column = horizontal ? column + pulse.sx : column;
      const int32_t next_row = horizontal ? row : row + pulse.sy;
      const NeuralNode& from = m_nodes[static_cast<size_t>(NodeAt(column, row))];
      const NeuralNode& to = m_nodes[static_cast<size_t>(NodeAt(next_column, next_row))];
      // Crossing an edge adds or takes a tile length.
      x += to.x - from.x +
           4 * int64_t{m_width} * (FloorDiv(next_column, m_columns) - FloorDiv(column, m_columns));
      y += to.y - from.y +
           4 * int64_t{m_height} * (FloorDiv(next_row, m_rows) - FloorDiv(row, m_rows));
      column = (next_column + m_columns) % m_columns;
      row = (next_row + m_rows) % m_rows;
      pulse.path_x.push_back(x);
      pulse.path_y.push_back(y);
    }
  }
  return DrawNetwork(light, background, shadow_offset, shadow_opacity);
}

// ---------------------------------------------------------------- network

namespace {

// Counts the 4 x 4 subpixels a shape covers in each pixel of a window whose
// top-left pixel is (left, top), for one link at a time.
class SubpixelCounter final : public SpanSink {
 public:
  SubpixelCounter(int32_t left, int32_t top, int32_t width, int32_t height,
                  std::vector<uint8_t>& counts)
      : m_left(left), m_top(top), m_width(width), m_counts(counts) {
    m_counts.assign(static_cast<size_t>(width) * static_cast<size_t>(height), 0);
  }
  void Span(int32_t y, int32_t x_begin, int32_t x_end) override {
    uint8_t* row = m_counts.data() +
                   static_cast<size_t>(FloorDiv(y, 4) - m_top) * static_cast<size_t>(m_width);
    for (int32_t x = x_begin; x < x_end; ++x) ++row[FloorDiv(x, 4) - m_left];
  }

 private:
  int32_t m_left, m_top, m_width;
  std::vector<uint8_t>& m_counts;
};

// One link from a to b (quarter pixels, unwrapped), its colour shading from
// ca at a to cb at b, blended with its coverage into the tile, wrapping.
void DrawLink(ImageBlock& image, int64_t ax, int64_t ay, int64_t bx, int64_t by, int32_t width,
              Colour ca, Colour cb, std::vector<uint8_t>& counts) {
  // Quarter pixels are the subpixels of a 4 x scan, so the link's ends are
  // the nodes' exact centres (an even scan width puts ends on corners).
  const int32_t w4 = 4 * width;
  const int64_t left = FloorDiv(std::min(ax, bx) - w4, 4),
                right = FloorDiv(std::max(ax, bx) + w4, 4) + 1;
  const int64_t top = FloorDiv(std::min(ay, by) - w4, 4),
                bottom = FloorDiv(std::max(ay, by) + w4, 4) + 1;
  const auto cols = static_cast<int32_t>(right - left), rows = static_cast<int32_t>(bottom - top);
  SubpixelCounter counter(static_cast<int32_t>(left), static_cast<int32_t>(top), cols, rows,
                          counts);
  const Rect clip{static_cast<int32_t>(4 * left), static_cast<int32_t>(4 * top),
                  static_cast<int32_t>(4 * right), static_cast<int32_t>(4 * bottom)};
  RasterLine({static_cast<int32_t>(ax), static_cast<int32_t>(ay)},
             {static_cast<int32_t>(bx), static_cast<int32_t>(by)}, w4, clip, counter);
  const int64_t dx = bx - ax, dy = by - ay, length2 = std::max<int64_t>(1, dx * dx + dy * dy);
  for (int32_t j = 0; j < rows; ++j) {
    for (int32_t i = 0; i < cols; ++i) {
      const unsigned n =
          counts[static_cast<size_t>(j) * static_cast<size_t>(cols) + static_cast<size_t>(i)];
      if (n == 0) continue;
      // Where the pixel's centre falls along the link, 0..255.
      const int64_t px = 4 * (left + i) + 2 - ax, py = 4 * (top + j) + 2 - ay;
      const int64_t along = std::clamp<int64_t>((px * dx + py * dy) * 255 / length2, 0, 255);
      const Colour c = ColourMix(cb, ca, static_cast<int>(along));
      const unsigned a = std::min(n, 16u) * 255 / 16 * kLinkOpacity / 255;
      const int32_t x = WrapIndex(left + i, image.width()), y = WrapIndex(top + j, image.height());
      uint8_t* t = image.Row(y) + 3 * static_cast<size_t>(x);
      const uint8_t ink[3] = {ColourBlue(c), ColourGreen(c), ColourRed(c)};
      for (int ch = 0; ch < 3; ++ch)
        t[ch] = static_cast<uint8_t>(ink[ch] * a / 255 + t[ch] * (255 - a) / 255);
    }
  }
}

}  // namespace

bool NeuralNetworkRecord::DrawNetwork(const GlossLight& light, Colour background,
                                      int32_t shadow_offset, int32_t shadow_opacity) try {
  GlossSprites nodes;
  if (!nodes.Make({m_node_size, m_node_size, m_node_size / 2}, light, m_paints, shadow_opacity > 0))
    return false;
  ShadowLayer ground;
  if (!ground.Init(m_width, m_height, background, shadow_opacity)) return false;
  if (shadow_opacity > 0) {
    const int64_t offset = 4 * int64_t{shadow_offset};
    for (const NeuralNode& node : m_nodes) {
      const GlossPlace at = nodes.PlaceShadow(node.x + offset, node.y + offset);
      ground.Add(nodes.Shadow(at.phase), at.x, at.y);
    }
  }
  m_network = ground.Paint();
  if (!m_network) return false;

  const int32_t line = std::max(1, m_node_size / 7);
  std::vector<uint8_t> counts;
  for (int32_t r = 0; r < m_rows; ++r) {
    for (int32_t c = 0; c < m_columns; ++c) {
      const NeuralNode& a = m_nodes[static_cast<size_t>(NodeAt(c, r))];
      const Colour ca = m_paints[static_cast<size_t>(a.paint)].colour;
      const NeuralNode& right = m_nodes[static_cast<size_t>(NodeAt(c + 1, r))];
      const NeuralNode& below = m_nodes[static_cast<size_t>(NodeAt(c, r + 1))];
      const int64_t wrap_x = c + 1 == m_columns ? 4 * int64_t{m_width} : 0;
      const int64_t wrap_y = r + 1 == m_rows ? 4 * int64_t{m_height} : 0;
      DrawLink(m_network, a.x, a.y, right.x + wrap_x, right.y, line, ca,
               m_paints[static_cast<size_t>(right.paint)].colour, counts);
      DrawLink(m_network, a.x, a.y, below.x, below.y + wrap_y, line, ca,
               m_paints[static_cast<size_t>(below.paint)].colour, counts);
    }
  }
  for (const NeuralNode& node : m_nodes) {
    const GlossPlace at = nodes.Place(node.x, node.y);
    AlphaBlitWrap(m_network, nodes.Sprite(node.paint, at.phase), at.x, at.y);
  }
  return MakeGlows();
} catch (const std::bad_alloc&) {
  return false;
}

// ---------------------------------------------------------------- pulses

namespace {

// A round glow of diameter d: white at the middle, the colour further out,
// its coverage falling off as the square of the distance to the rim, scaled
// by strength / 255. Doubles, unfused (see gloss.cpp).
ImageBlock MakeGlow(int32_t d, Colour colour, int strength) {
  ImageBlock glow = ImageCreate(d, d, nullptr, 32);
  if (!glow) return glow;
  const double radius = d / 2.0;
  const uint8_t ink[3] = {ColourBlue(colour), ColourGreen(colour), ColourRed(colour)};
  for (int32_t j = 0; j < d; ++j) {
    uint8_t* row = glow.Row(j);
    for (int32_t i = 0; i < d; ++i, row += 4) {
      const double dx = i + 0.5 - radius, dy = j + 0.5 - radius;
      const double r = std::sqrt(dx * dx + dy * dy) / radius;
      if (!(r < 1.0)) continue;
      const double rim = 1.0 - r;
      const double white = r < 0.35 ? 1.0 - r / 0.35 : 0.0;
      for (int c = 0; c < 3; ++c) row[c] = static_cast<uint8_t>(ink[c] + (255 - ink[c]) * white);
      row[3] = static_cast<uint8_t>(255.0 * std::min(1.0, 1.6 * rim * rim) * strength / 255.0);
    }
  }
  return glow;
}

}  // namespace

bool NeuralNetworkRecord::MakeGlows() {
  m_glows.clear();
  for (const GlossPaint& paint : m_paints) {
    for (int i = 0; i < 3; ++i) {
      const int32_t d = std::max(3, m_node_size * kGlowSize[i] / 100);
      m_glows.push_back(MakeGlow(d, paint.colour, kGlowStrength[i]));
      if (!m_glows.back()) return false;
    }
  }
  return true;
}

void NeuralNetworkRecord::PulseAt(const NeuralPulse& pulse, int64_t t, int64_t& x,
                                  int64_t& y) const {
  const auto steps = static_cast<int64_t>(pulse.horizontal.size());
  t %= steps * m_frames;
  const auto i = static_cast<size_t>(t / m_frames);
  const int64_t f = t % m_frames;
  x = pulse.path_x[i] + FloorDiv((pulse.path_x[i + 1] - pulse.path_x[i]) * f, m_frames);
  y = pulse.path_y[i] + FloorDiv((pulse.path_y[i + 1] - pulse.path_y[i]) * f, m_frames);
}

// A fixed share of a node's size, whatever the pulses' speed: N units make
// one pitch.
int64_t NeuralNetworkRecord::TailSpacing() const {
  return std::max<int64_t>(1, int64_t{m_frames} * m_node_size * kTailSpacing / (100 * m_pitch));
}

ImageBlock NeuralNetworkRecord::RenderFrame(int k) {
  ImageBlock frame = DuplicateGlobalBlock(m_network);
  if (!frame) return frame;
  const int64_t phase = k % m_frames;
  const int64_t spacing = TailSpacing();
  for (const NeuralPulse& pulse : m_pulses) {
    const auto steps = static_cast<int64_t>(pulse.horizontal.size());
    const int64_t lap = steps * m_frames;
    for (int g = 2; g >= 0; --g) {
      int64_t x, y;
      PulseAt(pulse, (pulse.offset + phase * steps - g * spacing + lap) % lap, x, y);
      const ImageBlock& glow = Glow(pulse.paint, g);
      // The nearest whole pixel: pulses move several pixels a frame.
      AlphaBlitWrap(frame, glow, static_cast<int32_t>(FloorDiv(x - 2 * glow.width() + 2, 4)),
                    static_cast<int32_t>(FloorDiv(y - 2 * glow.height() + 2, 4)));
    }
  }
  return frame;
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitNeuralNetwork(const ParamReader& reader, Random& random) {
  return NeuralNetworkRecord::Create(reader, random);
}

}  // namespace

StyleEntry NeuralNetworkStyle() {
  StyleEntry entry{"Neural Network", kNumber, kPage, &InitNeuralNetwork, &BackgroundQuery<kNumber>};
  entry.frames_rule = "4 x (Columns + Rows): 4 frames a link of a pulse's lap, within 24..128";
  return entry;
}

}  // namespace tess
