// Phasers on Stun: the page, the beam list and the frame renderer.
//
// A beam's mask is a pen line on a black canvas of twice the tile size,
// halved with the scaling routine's averaging, and the frame takes the entry's
// colour through that mask. Drawing the canvas and halving it whole for every
// entry would cost most of the build, so the renderer marks only the pen's
// pixel runs in a work area that stays zero between beams, halves only the
// pixels those runs touch with the same two-step truncating average, and
// blends only those. The test keeps the whole-canvas method as its oracle.
//
// A colour slot holding a gradient, texture or tile gives its beams their
// ink pixel by pixel from that fill laid over the whole tile, rendered once
// per record. A beam is a line that runs on into the neighbouring tiles and
// has no box of its own to carry a picture, so it changes colour along its
// length as it crosses the fill. RenderSeamlessFill folds the fill where its
// edges do not meet, so a beam crosses the tile's edge without a colour step.
//
// Sections: page · diagonal foot · initialisation · beam masks · entry.
#include "styles/phasers.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "draw/draw.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 10;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr int kPowerControl = kFirstOwnControl;
// The four line kinds' boxes, in kind order.
constexpr int kLineControls[4] = {kFirstOwnControl + 1, kFirstOwnControl + 2,
                                  kFirstOwnControl + 3, kFirstOwnControl + 4};

constexpr ColourLabels kBeamLabels = {"Beam 1:", "Beam 2:", "Beam 3:", "Beam 4:", "Beam 5:"};

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kPowerControl), kLeft, 3, "Power:", "Power", {1, 8, 3}),
        Spin(Id(kDensityControl), kLeft, 4, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kSeedControl), kLeft, 5, "Seed:", "Seed", {100, 32760, 1010}),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1, kBeamLabels),
    std::array{
        Check(Id(kLineControls[0]), kRight, 6, "East to south lines", "LineEast2South"),
        Check(Id(kLineControls[1]), kRight, 7, "West to south lines", "LineWest2South"),
        Check(Id(kLineControls[2]), kRight, 8, "Horizontal lines", "LineHorizontal"),
        Check(Id(kLineControls[3]), kRight, 9, "Vertical lines", "LineVertical"),
    });

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

}  // namespace

// ---------------------------------------------------------------- diagonal foot

// The quotient is part of the picture: taken in double, the foot falls one
// short of the exact W*Y/H now and then (W 153, Y 13, H 17 gives 116, not
// 117), so it must be this double everywhere. It is the same double on every
// build: W, Y and H are integers below 2^11, each step is one IEEE-754
// operation rounded to nearest, and the volatile stores strip the 32-bit
// build's x87 excess precision. That unit divides to 64 bits before the store
// rounds to 53, which gives the directly rounded quotient for every
// Y <= H <= 1024 (checked exhaustively), and W times a 53-bit quotient needs
// at most 64 bits, so the product is exact until its store rounds it once.
// (A host that lowers the x87 precision below 53 bits is not covered.)
int32_t DiagonalFoot(int32_t width, int32_t y, int32_t height) {
  volatile double quotient = static_cast<double>(y) / static_cast<double>(height);
  volatile double product = static_cast<double>(width) * quotient;
  return static_cast<int32_t>(product);
}

namespace {

// ---------------------------------------------------------------- initialisation

struct PageValues {
  int32_t width, height, frames, density, seed, power;
  Colour background;
};

// The kinds whose boxes are checked, in kind order; east to south when none is.
std::vector<BeamKind> EnabledKinds(const ParamReader& reader) {
  std::vector<BeamKind> kinds;
  for (int i = 0; i < 4; ++i)
    if (reader.Checked(Id(kLineControls[i]))) kinds.push_back(static_cast<BeamKind>(i));
  if (kinds.empty()) kinds.push_back(BeamKind::kEastToSouth);
  return kinds;
}

// A coordinate clear of the tile's outer tenth on both sides.
int32_t InnerCoordinate(Random& random, int32_t length) {
  return random.Below(8 * length / 10) + length / 10;
}

// One beam's geometry. Every beam draws both coordinates, Y then X, whatever
// its kind uses, so the sequence does not depend on which kinds are enabled.
PhasersBeam BeamGeometry(BeamKind kind, Random& random, int32_t w, int32_t h) {
  PhasersBeam beam;
  beam.kind = kind;
  const int32_t y = InnerCoordinate(random, h);
  const int32_t x = InnerCoordinate(random, w);
  switch (kind) {
    case BeamKind::kEastToSouth: {
      int32_t foot = DiagonalFoot(w, y, h);
      beam.start = {w, y};
      beam.end = {foot, h};
      beam.second_start = {0, y};
      beam.second_end = {foot, 0};
      beam.has_second = true;
      break;
    }
    case BeamKind::kWestToSouth: {
      int32_t foot = w - 1 - DiagonalFoot(w, y, h);
      beam.start = {0, y};
      beam.end = {foot, h};
      beam.second_start = {w, y};
      beam.second_end = {foot, 0};
      beam.has_second = true;
      break;
    }
    case BeamKind::kHorizontal: {
      beam.start = {0, y};
      beam.end = {w, y};
      break;
    }
    case BeamKind::kVertical: {
      beam.start = {x, 0};
      beam.end = {x, h};
      break;
    }
  }
  return beam;
}

// Random numbers are drawn per beam in a fixed order (kind, Y, X,
// colour, frame): the order is what makes a seed give its picture.
void DrawBeams(PhasersBeam* out, int32_t count, const std::vector<BeamKind>& kinds,
               const std::vector<FillDescriptor>& fills, const PageValues& s, Random& random) {
  for (int32_t i = 0; i < count; ++i) {
    BeamKind kind = kinds[static_cast<size_t>(random.Below(static_cast<int32_t>(kinds.size())))];
    PhasersBeam beam = BeamGeometry(kind, random, s.width, s.height);
    beam.brightness = 255;
    const auto slot = static_cast<size_t>(random.Below(static_cast<int32_t>(fills.size())));
    beam.colour = fills[slot].colour;
    beam.fill = fills[slot].kind == kFillSimple ? -1 : static_cast<int8_t>(slot);
    beam.frame = random.Below(s.frames);
    beam.thickness = s.power;
    *out++ = beam;
    // The flash fades over the next three frames, wrapping past the last.
    for (int j = 1; j <= 3; ++j) {
      PhasersBeam fade = beam;
      fade.brightness = static_cast<uint8_t>(255 - j * 255 / 4);
      fade.frame = (beam.frame + j) % s.frames;
      *out++ = fade;
    }
  }
}

PageValues ReadPage(const ParamReader& reader) {
  PageValues s;
  s.width = reader.Spin(Id(kWidthControl));
  s.height = reader.Spin(Id(kDepthControl));
  s.frames = reader.Spin(Id(kFramesControl));
  s.density = reader.Spin(Id(kDensityControl));
  s.seed = reader.Spin(Id(kSeedControl));
  s.power = reader.Spin(Id(kPowerControl));
  s.background = reader.ColourValue(Id(kBackgroundControl));
  return s;
}

}  // namespace

std::unique_ptr<PhasersRecord> PhasersRecord::Init(const ParamReader& reader, Random& random) {
  const PageValues s = ReadPage(reader);
  // A reader that ignores the page's ranges must not make a size or a modulus
  // of zero.
  if (s.width <= 0 || s.height <= 0 || s.frames <= 0 || s.density < 0) return nullptr;
  random.Seed(static_cast<uint32_t>(s.seed));

  std::unique_ptr<PhasersRecord> record;
  try {
    record.reset(new PhasersRecord);
    std::vector<FillDescriptor> fills = CollectFills(reader, kColourIds, kEnableIds);
    record->m_beam_count = 4 * static_cast<size_t>(s.density);
    record->m_beams = AllocBuffer<PhasersBeam>(record->m_beam_count);
    if (!record->m_beams) return nullptr;
    DrawBeams(record->m_beams.get(), s.density, EnabledKinds(reader), fills, s, random);
    // Beams run across the whole tile and continue in the next one, so their
    // fills lie over the tile, made seamless; rendered once, here.
    record->m_fill_images.resize(fills.size());
    for (size_t i = 0; i < fills.size(); ++i) {
      if (fills[i].kind == kFillSimple) continue;
      record->m_fill_images[i] = RenderSeamlessFill(fills[i], s.width, s.height);
      if (!record->m_fill_images[i]) return nullptr;
    }
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  record->m_width = s.width;
  record->m_height = s.height;
  record->m_frames = s.frames;
  record->m_background = s.background;
  if (!record->AllocateWorkArea()) return nullptr;
  return record;
}

bool PhasersRecord::AllocateWorkArea() {
  const size_t doubled_width = 2 * static_cast<size_t>(m_width);
  const size_t doubled_height = 2 * static_cast<size_t>(m_height);
  m_coverage = AllocBuffer<uint8_t>(doubled_width * doubled_height);
  m_extents = AllocBuffer<RowExtent>(doubled_height);
  if (!m_coverage || !m_extents) return false;
  for (size_t y = 0; y < doubled_height; ++y)
    m_extents[y] = {static_cast<int32_t>(doubled_width), 0};
  return true;
}

// ---------------------------------------------------------------- beam masks

namespace {

struct Segment {
  Point from;
  Point to;
};

// The mask's segments in doubled coordinates. The diagonals are pushed one
// tile further out at both ends so they run past the canvas corners; the
// second segment is the same diagonal continued on the tile's other side.
int MaskSegments(const PhasersBeam& beam, int32_t w, int32_t h, Segment (&out)[2]) {
  int32_t sx = 0;  // horizontal push of the start; the end gets the opposite
  int32_t sy = 0;
  if (beam.kind == BeamKind::kEastToSouth) sx = w, sy = -h;
  if (beam.kind == BeamKind::kWestToSouth) sx = -w, sy = -h;
  auto doubled = [&](Point a, Point b) {
    return Segment{{2 * (a.x + sx), 2 * (a.y + sy)}, {2 * (b.x - sx), 2 * (b.y - sy)}};
  };
  out[0] = doubled(beam.start, beam.end);
  if (!beam.has_second) return 1;
  out[1] = doubled(beam.second_start, beam.second_end);
  return 2;
}

// The halved mask value for each pattern of a 2 x 2 block of pen pixels (bit 0
// top left, 1 top right, 2 bottom left, 3 bottom right) drawn in grey b: the
// scaling routine averages each row's pair first, truncating, then the two
// row averages, truncating again.
void HalvedMaskValues(uint8_t b, uint8_t (&out)[16]) {
  for (int p = 0; p < 16; ++p) {
    int top = (b * (p & 1) + b * ((p >> 1) & 1)) / 2;
    int bottom = (b * ((p >> 2) & 1) + b * ((p >> 3) & 1)) / 2;
    out[p] = static_cast<uint8_t>((top + bottom) / 2);
  }
}

// Blends output columns [first, last) of one tile row through the mask made
// from two doubled coverage rows. The ink is one colour, or with kFromImage
// the pixel of `ink_row` in the same column. Long because it is the per-pixel
// loop: the block pattern, the mask value and the three channel mixes stay
// together.
template <bool kFromImage>
void BlendHalvedRow(uint8_t* row, const uint8_t* upper, const uint8_t* lower, int32_t first,
                    int32_t last, const uint8_t (&mask_of)[16], Colour colour,
                    const uint8_t* ink_row) {
  const uint32_t flat[3] = {ColourBlue(colour), ColourGreen(colour), ColourRed(colour)};
  for (int32_t j = first; j < last; ++j) {
    const size_t x = 2 * static_cast<size_t>(j);
    int pattern = upper[x] | upper[x + 1] << 1 | lower[x] << 2 | lower[x + 1] << 3;
    uint32_t m = mask_of[pattern];
    if (m == 0) continue;  // d * 255 / 255 + 0: unchanged
    uint8_t* d = row + 3 * static_cast<size_t>(j);
    if constexpr (kFromImage) {
      const uint8_t* c = ink_row + 3 * static_cast<size_t>(j);
      for (int ch = 0; ch < 3; ++ch) d[ch] = static_cast<uint8_t>(d[ch] * (255 - m) / 255 + c[ch] * m / 255);
    } else {
      for (int ch = 0; ch < 3; ++ch) d[ch] = static_cast<uint8_t>(d[ch] * (255 - m) / 255 + flat[ch] * m / 255);
    }
  }
}

}  // namespace

class PhasersRecord::CoverageSink final : public SpanSink {
 public:
  CoverageSink(uint8_t* coverage, RowExtent* extents, int32_t stride)
      : m_coverage(coverage), m_extents(extents), m_stride(stride) {}

  void Span(int32_t y, int32_t x_begin, int32_t x_end) override {
    std::memset(m_coverage + static_cast<size_t>(y) * static_cast<size_t>(m_stride) + x_begin, 1,
                static_cast<size_t>(x_end - x_begin));
    RowExtent& e = m_extents[y];
    e.begin = std::min(e.begin, x_begin);
    e.end = std::max(e.end, x_end);
    m_top = std::min(m_top, y);
    m_bottom = std::max(m_bottom, y + 1);
  }

  int32_t top() const { return m_top; }
  int32_t bottom() const { return m_bottom; }

 private:
  uint8_t* m_coverage;
  RowExtent* m_extents;
  int32_t m_stride;
  int32_t m_top = INT32_MAX;
  int32_t m_bottom = 0;
};

void PhasersRecord::DrawBeam(ImageBlock& frame, const PhasersBeam& beam) {
  const int32_t w2 = 2 * m_width, h2 = 2 * m_height;
  Segment segments[2];
  int count = MaskSegments(beam, m_width, m_height, segments);
  CoverageSink sink(m_coverage.get(), m_extents.get(), w2);
  // Round caps: every segment ends on or beyond the canvas edge, away from
  // the canvas, so no cap shape ever reaches a pixel the frame shows.
  for (int i = 0; i < count; ++i)
    RasterLine(segments[i].from, segments[i].to, 2 * beam.thickness, Rect{0, 0, w2, h2}, sink);
  if (sink.top() >= sink.bottom()) return;

  uint8_t mask_of[16];
  HalvedMaskValues(beam.brightness, mask_of);
  const ImageBlock* ink = FillImage(beam);
  const RowExtent kEmpty{w2, 0};
  for (int32_t i = sink.top() / 2; i <= (sink.bottom() - 1) / 2; ++i) {
    RowExtent& a = m_extents[2 * i];
    RowExtent& b = m_extents[2 * i + 1];
    int32_t begin = std::min(a.begin, b.begin), end = std::max(a.end, b.end);
    if (begin < end) {
      uint8_t* upper = m_coverage.get() + static_cast<size_t>(2 * i) * static_cast<size_t>(w2);
      uint8_t* lower = upper + w2;
      if (ink)
        BlendHalvedRow<true>(frame.Row(i), upper, lower, begin / 2, (end + 1) / 2, mask_of,
                             beam.colour, ink->Row(i));
      else
        BlendHalvedRow<false>(frame.Row(i), upper, lower, begin / 2, (end + 1) / 2, mask_of,
                              beam.colour, nullptr);
      // Leave the work area zero for the next beam.
      std::memset(upper + begin, 0, static_cast<size_t>(end - begin));
      std::memset(lower + begin, 0, static_cast<size_t>(end - begin));
    }
    a = kEmpty;
    b = kEmpty;
  }
}

ImageBlock PhasersRecord::RenderFrame(int k) {
  // Frame N is frame 0 again: a flash is found by its frame modulo N.
  int32_t phase = WrapIndex(k, m_frames);
  ImageBlock frame = SolidImage(Rect{0, 0, m_width, m_height}, m_background);
  if (!frame) return {};
  for (const PhasersBeam& beam : beams())
    if (beam.frame == phase) DrawBeam(frame, beam);
  return frame;
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitPhasers(const ParamReader& reader, Random& random) {
  return PhasersRecord::Init(reader, random);
}

}  // namespace

StyleEntry PhasersOnStunStyle() {
  return {"Phasers on Stun", kNumber, kPage, &InitPhasers, &BackgroundQuery<kNumber>};
}

}  // namespace tess
