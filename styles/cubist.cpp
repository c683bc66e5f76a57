// Cubist (style 002): overlapping blocks, some with square corners and some
// rounded by Roundness, outlined Thickness pixels wide or filled when Solid,
// laid over each other at their own opacity (varied per block by "Vary
// opacity", the outline width by "Vary thickness") like the planes of a
// cubist canvas.
//
// Motion is a function of the phase k/N alone: each block slides one or two
// whole tile lengths across or down the tile and its width and height breathe
// through whole sine periods over the N frames, so frame N is frame 0. Blocks
// are drawn in quarter pixels and their coverage is blended with wrap-around,
// so they glide smoothly and whatever leaves one edge enters the opposite
// one: the tile has no seam.
//
// Speed: a frame is the background plus, per block, one rasterised box (less
// its inner box for an outline) gathered as 4 x 4 coverage and one blend of
// the covered pixels; fills other than flat colours are rendered once per
// build.
//
// Sections: page · initialisation · frames · entry.
#include "styles/cubist.h"

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
constexpr int kNumber = 2;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kThicknessControl = kFirstOwnControl;
constexpr int kRoundnessControl = kFirstOwnControl + 1;
constexpr int kSolidControl = kFirstOwnControl + 2;
constexpr int kVaryOpacityControl = kFirstOwnControl + 3;
constexpr int kVaryThicknessControl = kFirstOwnControl + 4;

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1002}),
        Spin(Id(kDensityControl), kLeft, 4, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kOpacityControl), kLeft, 5, "Opacity:", "FillOpacity", {1, 255, 255}),
        Spin(Id(kThicknessControl), kLeft, 6, "Thickness:", "Thickness", {1, 32, 6}),
        Spin(Id(kRoundnessControl), kLeft, 7, "Roundness:", "Roundness", {0, 100, 25}),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1),
    std::array{
        Check(Id(kSolidControl), kRight, 6, "Solid", "Solid"),
        Check(Id(kVaryOpacityControl), kRight, 7, "Vary opacity", "VariAlpha"),
        Check(Id(kVaryThicknessControl), kRight, 8, "Vary thickness", "VariWidth"),
    });

constexpr int kColourIds[5] = {Id(ColourControl(1)), Id(ColourControl(2)), Id(ColourControl(3)),
                               Id(ColourControl(4)), Id(ColourControl(5))};
constexpr int kEnableIds[4] = {Id(EnableControl(2)), Id(EnableControl(3)), Id(EnableControl(4)),
                               Id(EnableControl(5))};

constexpr int32_t kQ = kSubpixels;  // quarter pixels per pixel

// The largest window a block's coverage can need, in pixels: its largest
// box, plus a pixel on each side for quarter-pixel positions.
int32_t WindowLength(int32_t mean, int32_t amplitude) { return (mean + amplitude) / kQ + 2; }

}  // namespace

// ---------------------------------------------------------------- initialisation

std::unique_ptr<CubistRecord> CubistRecord::Create(const ParamReader& reader, Random& random,
                                                   CubistOptions options) try {
  std::unique_ptr<CubistRecord> record(new CubistRecord());
  record->m_options = options;
  if (!record->Init(reader, random)) return nullptr;
  return record;
} catch (const std::bad_alloc&) {
  return nullptr;
}

bool CubistRecord::Init(const ParamReader& reader, Random& random) {
  m_width = reader.Spin(Id(kWidthControl));
  m_height = reader.Spin(Id(kDepthControl));
  m_frames = reader.Spin(Id(kFramesControl));
  const int32_t density = reader.Spin(Id(kDensityControl));
  const int32_t opacity = reader.Spin(Id(kOpacityControl));
  const int32_t thickness = reader.Spin(Id(kThicknessControl));
  // A reader that ignores the page's ranges must not make a size or a modulus
  // of zero.
  if (m_width <= 0 || m_height <= 0 || m_frames <= 0 || density < 0 || thickness <= 0) return false;
  m_roundness = std::clamp(reader.Spin(Id(kRoundnessControl)), 0, 100);
  m_background = reader.ColourValue(Id(kBackgroundControl));
  const bool solid = reader.Checked(Id(kSolidControl));
  const bool vary_opacity = reader.Checked(Id(kVaryOpacityControl));
  const bool vary_thickness = reader.Checked(Id(kVaryThicknessControl));
  random.Seed(static_cast<uint32_t>(reader.Spin(Id(kSeedControl))));

  m_fills = CollectFills(reader, kColourIds, kEnableIds);
  ColourPick pick(static_cast<int>(m_fills.size()));

  m_count = density;
  m_blocks = AllocBuffer<CubistBlock>(static_cast<size_t>(m_count));
  if (!m_blocks) return false;
  // Sizes follow the tile's mean side so a wide tile does not get only flat
  // slabs, but never reach across the whole tile, where a block would meet
  // itself.
  const int32_t base = kQ * (m_width + m_height) / 2;
  int32_t window_w = 1, window_h = 1;
  for (int32_t i = 0; i < m_count; ++i) {
    CubistBlock& b = m_blocks[static_cast<size_t>(i)];
    // The draws are part of the picture: one per statement, in this order,
    // and all of them whatever the boxes say, so that switching Solid or a
    // Vary box leaves every block where it was.
    b.x0 = random.Below(kQ * m_width);
    b.y0 = random.Below(kQ * m_height);
    b.w0 = std::min(base * (8 + random.Below(38)) / 100, 3 * m_width);
    b.h0 = std::min(base * (8 + random.Below(38)) / 100, 3 * m_height);
    b.dw = b.w0 * (10 + random.Below(21)) / 100;
    b.dh = b.h0 * (10 + random.Below(21)) / 100;
    const bool across = random.Below(2) != 0;
    const int32_t sense = random.Below(2) != 0 ? -1 : 1;
    const int32_t lengths = random.Below(4) == 0 ? 2 : 1;
    b.vx = across ? sense * lengths : 0;
    b.vy = across ? 0 : sense * lengths;
    b.phase_w = random.Below(360);
    b.phase_h = random.Below(360);
    b.breaths = 1 + random.Below(2);
    b.rounded = random.Below(2) != 0;
    const int32_t varied_thickness = 1 + random.Below(thickness);
    b.thickness = solid ? 0 : vary_thickness ? varied_thickness : thickness;
    const int32_t varied_opacity = std::max(1, opacity * (64 + random.Below(192)) / 255);
    b.opacity = vary_opacity ? varied_opacity : opacity;
    b.paint = static_cast<int32_t>(pick.Pick(random));
    window_w = std::max(window_w, WindowLength(b.w0, b.dw));
    window_h = std::max(window_h, WindowLength(b.h0, b.dh));
  }
  return m_grid.Reserve(window_w, window_h) && MakePaints();
}

// Each fill that is not a flat colour is rendered once, at the largest box of
// the blocks that paint with it; every block carries it centred on itself.
bool CubistRecord::MakePaints() {
  std::vector<int32_t> widths(m_fills.size(), 0), heights(m_fills.size(), 0);
  for (int32_t i = 0; i < m_count; ++i) {
    const CubistBlock& b = m_blocks[static_cast<size_t>(i)];
    const size_t p = static_cast<size_t>(b.paint);
    widths[p] = std::max(widths[p], WindowLength(b.w0, b.dw));
    heights[p] = std::max(heights[p], WindowLength(b.h0, b.dh));
  }
  m_paints.resize(m_fills.size());
  for (size_t p = 0; p < m_fills.size(); ++p)
    if (widths[p] > 0 && !MakeSlotPaint(m_fills[p], widths[p], heights[p], m_paints[p])) return false;
  return true;
}

// ---------------------------------------------------------------- frames

// Whole tile lengths and whole breathing periods over N frames, from
// integers, so frame N repeats frame 0 exactly.
CubistBox CubistRecord::BoxAt(const CubistBlock& block, int k) const {
  const int64_t n = m_frames, tile_w = kQ * int64_t{m_width}, tile_h = kQ * int64_t{m_height};
  const int32_t cx = WrapIndex(block.x0 + FloorDiv(block.vx * tile_w * k, n) - kQ * int64_t{m_options.view_x}, static_cast<int32_t>(tile_w));
  const int32_t cy = WrapIndex(block.y0 + FloorDiv(block.vy * tile_h * k, n) - kQ * int64_t{m_options.view_y}, static_cast<int32_t>(tile_h));
  const int64_t turn = 360 * n, step = int64_t{360} * block.breaths * k;
  const int32_t w = std::max(kQ, block.w0 + static_cast<int32_t>(block.dw * TurnSine(block.phase_w * n + step, turn)));
  const int32_t h = std::max(kQ, block.h0 + static_cast<int32_t>(block.dh * TurnSine(block.phase_h * n + step, turn)));
  CubistBox out;
  out.box = {cx - w / 2, cy - h / 2, cx - w / 2 + w, cy - h / 2 + h};
  out.radius = block.rounded ? m_roundness * std::min(w, h) / 200 : 0;
  return out;
}

void CubistRecord::DrawBlock(ImageBlock& frame, const CubistBlock& block, int k) {
  const CubistBox at = BoxAt(block, k);
  const Rect& box = at.box;
  const int32_t left = static_cast<int32_t>(FloorDiv(box.left, kQ));
  const int32_t top = static_cast<int32_t>(FloorDiv(box.top, kQ));
  const int32_t right = static_cast<int32_t>(FloorDiv(box.right + kQ - 1, kQ));
  const int32_t bottom = static_cast<int32_t>(FloorDiv(box.bottom + kQ - 1, kQ));
  m_grid.Begin(left, top, right - left, bottom - top);
  const Rect clip = m_grid.SubpixelClip();
  RasterRoundRect(box, 2 * at.radius, 2 * at.radius, clip, m_grid);
  const int32_t inset = kQ * block.thickness;
  const Rect inner{box.left + inset, box.top + inset, box.right - inset, box.bottom - inset};
  if (block.thickness > 0 && inner.width() > 0 && inner.height() > 0) {
    // Concentric corners keep the outline equally wide all round.
    const int32_t radius = std::max(0, at.radius - inset);
    m_grid.Subtract(true);
    RasterRoundRect(inner, 2 * radius, 2 * radius, clip, m_grid);
  }
  m_grid.Finish();

  const SlotPaint& paint = m_paints[static_cast<size_t>(block.paint)];
  CoverageInk ink;
  ink.colour = paint.colour;
  ink.opacity = block.opacity;
  if (paint.picture) {
    ink.picture = &paint.picture;
    ink.origin_x = static_cast<int32_t>(FloorDiv(box.left + box.right, 2 * kQ)) - paint.picture.width() / 2;
    ink.origin_y = static_cast<int32_t>(FloorDiv(box.top + box.bottom, 2 * kQ)) - paint.picture.height() / 2;
  }
  if (m_options.plain_paint)
    PaintCoverageWrapPlain(frame, m_grid, ink);
  else
    PaintCoverageWrap(frame, m_grid, ink);
}

ImageBlock CubistRecord::RenderFrame(int k) {
  ImageBlock frame = SolidImage({0, 0, m_width, m_height}, m_background);
  if (!frame) return {};
  for (int32_t i = 0; i < m_count; ++i) DrawBlock(frame, m_blocks[static_cast<size_t>(i)], k);
  return frame;
}

// ---------------------------------------------------------------- entry

namespace {

std::unique_ptr<StyleRecord> InitCubist(const ParamReader& reader, Random& random) {
  return CubistRecord::Create(reader, random);
}

}  // namespace

StyleEntry CubistStyle() {
  return {"Cubist", kNumber, kPage, &InitCubist, &BackgroundQuery<kNumber>};
}

}  // namespace tess
