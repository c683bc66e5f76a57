// Shaped Fountain (style 006): concentric shapes on a square tile of side
// Size, drawn from the largest inward on a canvas four times the tile's side
// and reduced to a quarter. Ring i takes the colour of strip column
// trunc(i / R x 256) of the fountain rendered 256 x 1 and rolled by
// trunc(256 x k / N), so the colours flow through the rings and frame N is
// frame 0. No random numbers and no background colour.
//
// Drawing every ring on every frame would paint the canvas about R / 2 times
// over per frame. The rings never move, so the record draws them once as ring
// numbers, innermost first so that each pixel is written once; a frame is
// then one lookup per canvas pixel, summed into the reduction as it goes. The
// test redraws the canvas ring by ring as the oracle.
//
// Sections: page · ring geometry · ring numbers · frames · entry.
#include "styles/shaped_fountain.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <string_view>

#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

// ---------------------------------------------------------------- page

using namespace page;
constexpr int kNumber = 6;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kFountainControl = 306;
constexpr int kShapeControl = kFirstOwnControl;

// The ring shapes of the "Shape:" list, in RingShape order.
constexpr std::string_view kShapes[] = {"Circle", "Diamond", "Square", "Biscuit"};

constexpr std::array kPage = {
    Spin(Id(kSizeControl), kLeft, 0, "Size:", "Size", {16, 1024, 128}),
    Spin(Id(kFramesControl), kLeft, 1, "Frames:", "Frames", {2, 32760, 64}),
    Picker(Id(kScrollControl), kLeft, 2, "Scroll", PickerClass::kScroll2, 1),
    DropDown(Id(kShapeControl), kLeft, 4, "Shape:", "Shape", kShapes),
    Fountain(kFountainControl, kRight, 0),
};

// The first diamond's corners reach -2S and 6S on the 4S canvas: keeping them
// in the rasteriser's range also keeps ring numbers, at most 2S, within 16
// bits. The page allows at most 1024.
constexpr int32_t kMaxSide = kMaxCoordinate / 6;

}  // namespace

// ---------------------------------------------------------------- ring geometry

// The doubles are part of the picture: a circle's radius that lands within a
// rounding of x.5 truncates one way or the other. CMake compiles this file
// without fused multiply-add and, on 32-bit x86, with SSE arithmetic, so
// every build rounds alike.
Ring ShapedFountainRing(int32_t shape, int32_t i, int32_t rings, int32_t cx, int32_t cy) {
  const double t = static_cast<double>(i) / static_cast<double>(rings);
  auto inset = [t](int32_t half) { return static_cast<int32_t>(half * t + 0.5); };
  Ring ring;
  ring.shape = shape >= kRingCircle && shape <= kRingBiscuit ? shape : kRingSquare;
  switch (ring.shape) {
    case kRingCircle: {
      const double reach = std::sqrt(static_cast<double>(cx) * cx + static_cast<double>(cy) * cy);
      const auto r = static_cast<int32_t>(reach * (1.0 - t) + 0.5);
      ring.box = {cx - r, cy - r, cx + r, cy + r};
      break;
    }
    case kRingDiamond: {
      const int32_t a = 2 * cx - inset(2 * cx), b = 2 * cy - inset(2 * cy);
      ring.diamond = {Point{cx - a, cy}, Point{cx, cy - b}, Point{cx + a, cy}, Point{cx, cy + b},
                      Point{cx - a, cy}};
      break;
    }
    case kRingBiscuit: {
      const int32_t ex = inset(cx), ey = inset(cy);
      const int32_t a = cx - ex, b = cy - ey;
      ring.box = {cx - a, cy - b, cx + a, cy + b};
      ring.corner_width = ex;
      ring.corner_height = ey;
      break;
    }
    default: {
      const int32_t a = cx - inset(cx), b = cy - inset(cy);
      ring.box = {cx - a, cy - b, cx + a, cy + b};
      break;
    }
  }
  return ring;
}

int32_t RingStripColumn(int32_t i, int32_t rings) {
  const double t = static_cast<double>(i) / static_cast<double>(rings);
  return static_cast<int32_t>(t * ShapedFountainRecord::kStripWidth);
}

// ---------------------------------------------------------------- ring numbers

namespace {

// Paints ring numbers as a brush of each ring's colour would paint them.
class RingNumberSink : public SpanSink {
 public:
  RingNumberSink(uint16_t* numbers, int32_t stride) : m_numbers(numbers), m_stride(stride) {}
  void Set(int32_t ring) { m_ring = static_cast<uint16_t>(ring); }
  void Span(int32_t y, int32_t x_begin, int32_t x_end) override { Paint(y, x_begin, x_end); }

 protected:
  void Paint(int32_t y, int32_t x_begin, int32_t x_end) {
    uint16_t* row = m_numbers + static_cast<size_t>(y) * static_cast<size_t>(m_stride);
    std::fill(row + x_begin, row + x_end, m_ring);
  }

 private:
  uint16_t* m_numbers;
  int32_t m_stride;
  uint16_t m_ring = 0;
};

// Rings painted outermost first cover the canvas about R / 2 times over. Fed
// the rings innermost first instead, this sink paints only what the rings
// before have left, so each pixel once: in every row those rings cover one
// run, and a span needs only its parts outside it. Concentric shapes keep
// each row's run in one piece; a span clear of the run would split it, which
// the rasteriser's rounding does not promise never to do, so the sink then
// stops and says so, and the caller paints the plain way.
class InnermostFirstSink final : public RingNumberSink {
 public:
  struct Run {
    int32_t begin;
    int32_t end;  // empty while begin >= end
  };
  InnermostFirstSink(uint16_t* numbers, int32_t stride, Run* runs)
      : RingNumberSink(numbers, stride), m_runs(runs) {}
  bool split() const { return m_split; }

  void Span(int32_t y, int32_t x_begin, int32_t x_end) override {
    if (m_split) return;
    Run& run = m_runs[y];
    if (run.begin >= run.end) {
      Paint(y, x_begin, x_end);
      run = {x_begin, x_end};
      return;
    }
    if (x_end < run.begin || x_begin > run.end) {
      m_split = true;
      return;
    }
    if (x_begin < run.begin) {
      Paint(y, x_begin, run.begin);
      run.begin = x_begin;
    }
    if (x_end > run.end) {
      Paint(y, run.end, x_end);
      run.end = x_end;
    }
  }

 private:
  Run* m_runs;
  bool m_split = false;
};

// False only when the polygon filler's memory is short.
bool DrawRing(const Ring& ring, const Rect& clip, SpanSink& sink) {
  switch (ring.shape) {
    case kRingCircle: RasterEllipse(ring.box, clip, sink); return true;
    case kRingDiamond:
      return RasterPolygon(ring.diamond.data(), static_cast<int>(ring.diamond.size()), clip, sink);
    case kRingBiscuit:
      RasterRoundRect(ring.box, ring.corner_width, ring.corner_height, clip, sink);
      return true;
    default: RasterRect(ring.box, clip, sink); return true;
  }
}

}  // namespace

bool ShapedFountainRecord::DrawRingNumbers(bool innermost_first) {
  const int32_t side = canvas_side(), rings = ring_count();
  const size_t pixels = static_cast<size_t>(side) * static_cast<size_t>(side);
  m_rings = AllocBuffer<uint16_t>(pixels);
  m_columns = AllocBuffer<int32_t>(static_cast<size_t>(rings));
  // One more: the canvas's black, for any pixel no ring reaches.
  m_lanes = AllocBuffer<uint64_t>(static_cast<size_t>(rings) + 1);
  if (!m_rings || !m_columns || !m_lanes) return false;
  std::fill(m_rings.get(), m_rings.get() + pixels, static_cast<uint16_t>(rings));
  for (int32_t i = 0; i < rings; ++i) m_columns[static_cast<size_t>(i)] = RingStripColumn(i, rings);

  const int32_t cx = side / 2, cy = side / 2;
  const Rect clip{0, 0, side, side};
  if (innermost_first) {
    using Run = InnermostFirstSink::Run;
    Buffer<Run> runs = AllocBuffer<Run>(static_cast<size_t>(side));
    if (!runs) return false;
    InnermostFirstSink sink(m_rings.get(), side, runs.get());
    for (int32_t i = rings - 1; i >= 0 && !sink.split(); --i) {
      sink.Set(i);
      if (!DrawRing(ShapedFountainRing(m_shape, i, rings, cx, cy), clip, sink)) return false;
    }
    m_numbered_innermost_first = !sink.split();
    if (m_numbered_innermost_first) return true;
  }
  RingNumberSink sink(m_rings.get(), side);
  for (int32_t i = 0; i < rings; ++i) {
    sink.Set(i);
    if (!DrawRing(ShapedFountainRing(m_shape, i, rings, cx, cy), clip, sink)) return false;
  }
  return true;
}

// ---------------------------------------------------------------- frames

namespace {

// A colour with each channel in a 16-bit lane (blue at bit 0, green 16, red
// 32): four lanes summed stay below 4 x 255 + 1, so nothing carries into the
// next lane, and (sum >> 2) & kLaneBytes truncates all three quarters at once
// (the bits a shift brings down from the lane above land above its byte).
constexpr uint64_t kLaneBytes = 0x000000FF00FF00FFull;

uint64_t Lanes(const uint8_t* bgr) {
  return uint64_t{bgr[0]} | uint64_t{bgr[1]} << 16 | uint64_t{bgr[2]} << 32;
}

// One canvas row's four pixels averaged across, truncated.
inline uint64_t Across(const uint16_t* numbers, const uint64_t* lanes) {
  return ((lanes[numbers[0]] + lanes[numbers[1]] + lanes[numbers[2]] + lanes[numbers[3]]) >> 2) &
         kLaneBytes;
}

}  // namespace

ImageBlock ShapedFountainRecord::RenderFrame(int k) {
  ImageBlock frame = ImageCreate(m_side, m_side, nullptr, 24);
  if (!frame) return {};
  // The rolled strip shows at column c the strip's column c - L when the
  // picker is set and c + L when not; the mask is the modulo 256.
  const int32_t roll = StripRoll(k), shift = m_scroll ? -roll : roll;
  const uint8_t* strip = m_strip.Row(0);
  const int32_t rings = ring_count();
  for (int32_t i = 0; i < rings; ++i) {
    const int32_t source = (m_columns[static_cast<size_t>(i)] + shift) & (kStripWidth - 1);
    m_lanes[static_cast<size_t>(i)] = Lanes(strip + 3 * source);
  }
  m_lanes[static_cast<size_t>(rings)] = 0;

  // Each tile pixel averages a 4 x 4 block across, then the four row
  // averages down, as ScaleByPercent(25, 25) does on the canvas.
  const size_t stride = static_cast<size_t>(canvas_side());
  const uint64_t* lanes = m_lanes.get();
  for (int32_t y = 0; y < m_side; ++y) {
    const uint16_t* r0 = m_rings.get() + 4 * static_cast<size_t>(y) * stride;
    const uint16_t* r1 = r0 + stride;
    const uint16_t* r2 = r1 + stride;
    const uint16_t* r3 = r2 + stride;
    uint8_t* out = frame.Row(y);
    for (int32_t x = 0; x < m_side; ++x, r0 += 4, r1 += 4, r2 += 4, r3 += 4, out += 3) {
      const uint64_t down =
          ((Across(r0, lanes) + Across(r1, lanes) + Across(r2, lanes) + Across(r3, lanes)) >> 2) &
          kLaneBytes;
      out[0] = static_cast<uint8_t>(down);
      out[1] = static_cast<uint8_t>(down >> 16);
      out[2] = static_cast<uint8_t>(down >> 32);
    }
  }
  return frame;
}

// ---------------------------------------------------------------- entry

std::unique_ptr<ShapedFountainRecord> ShapedFountainRecord::Create(const ParamReader& reader,
                                                                   ShapedFountainOptions options) {
  const int32_t side = reader.Spin(Id(kSizeControl));
  const int32_t frames = reader.Spin(Id(kFramesControl));
  if (side <= 0 || side > kMaxSide || frames <= 0) return nullptr;
  std::unique_ptr<ShapedFountainRecord> record(new (std::nothrow) ShapedFountainRecord);
  if (!record) return nullptr;
  record->m_side = side;
  record->m_frames = frames;
  record->m_scroll = reader.Picker(Id(kScrollControl)) != 0;
  record->m_shape = reader.Selection(Id(kShapeControl));
  record->m_strip = RenderFountain(reader.Fountain(kFountainControl), kStripWidth, 1);
  if (!record->m_strip || !record->DrawRingNumbers(options.innermost_first)) return nullptr;
  return record;
}

namespace {

std::unique_ptr<StyleRecord> InitShapedFountain(const ParamReader& reader, Random&) {
  return ShapedFountainRecord::Create(reader);
}

}  // namespace

// The rings cover the whole tile: no background colour.
StyleEntry ShapedFountainStyle() {
  return {"Shaped Fountain", kNumber, kPage, &InitShapedFountain, &NoBackground};
}

}  // namespace tess
