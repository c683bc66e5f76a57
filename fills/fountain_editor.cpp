// The marker editor's geometry, edits and picture. Every column is derived
// from MarkerOffsets' formula, so a handle, a hit and the band's colour
// boundaries can never disagree by a pixel.
#include "fills/fountain_editor.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "draw/canvas.h"

namespace tess {
namespace {

size_t Count(const FountainRecord& record) { return FountainMarkerCount(record); }

Rect Inflate(const Rect& r, int32_t by) {
  return {r.left - by, r.top - by, r.right + by, r.bottom + by};
}

bool Contains(const Rect& r, Point p) {
  return p.x >= r.left && p.x < r.right && p.y >= r.top && p.y < r.bottom;
}

}  // namespace

// ---------------------------------------------------------------- layout

FountainEditorLayout FountainEditorLayoutFor(int32_t width, int32_t height) {
  FountainEditorLayout l;
  const int32_t side = kEditorMargin + kEditorEndBoxSize + kEditorEndBoxGap;
  l.band.left = side;
  l.band.right = std::max(width - side, side + 1);
  l.handle_bottom = std::max(height - 3, kEditorMargin + kEditorHandleHeight + 2);
  l.handle_top = l.handle_bottom - kEditorHandleHeight;
  l.band.top = kEditorMargin;
  l.band.bottom = std::max(l.handle_top - 1, l.band.top + 1);
  const int32_t box_top = l.band.top + (l.band.height() - kEditorEndBoxSize) / 2;
  l.start_box = {kEditorMargin, box_top, kEditorMargin + kEditorEndBoxSize,
                 box_top + kEditorEndBoxSize};
  l.end_box = {l.band.right + kEditorEndBoxGap, box_top,
               l.band.right + kEditorEndBoxGap + kEditorEndBoxSize, box_top + kEditorEndBoxSize};
  return l;
}

int32_t MarkerX(const FountainEditorLayout& layout, uint32_t position) {
  // The renderer's own table, for a one-marker fountain at `position`.
  FountainRecord probe;
  probe.marker_count = 1;
  probe.markers[0] = MakeMarker(position, 0);
  return layout.band.left + MarkerOffsets(probe, layout.band.width())[0];
}

uint32_t PositionAtX(const FountainEditorLayout& layout, int32_t x) {
  uint32_t best = 0;
  int32_t best_distance = INT32_MAX;
  for (uint32_t p = 0; p <= 255; ++p) {
    int32_t distance = std::abs(MarkerX(layout, p) - x);
    if (distance < best_distance) {
      best = p;
      best_distance = distance;
    }
  }
  return best;
}

// ---------------------------------------------------------------- hits

FountainHit HitFountainEditor(const FountainRecord& record, const FountainEditorLayout& layout,
                              Point point) {
  const bool in_strip = point.y >= layout.handle_top && point.y < layout.handle_bottom;
  const bool in_band = point.y >= layout.band.top && point.y < layout.band.bottom;
  const int32_t reach = in_strip ? kEditorHandleHalfWidth : kEditorBandGrabDistance;
  if (in_strip || in_band) {
    std::optional<size_t> nearest;
    int32_t nearest_distance = reach + 1;
    for (size_t i = 0; i < Count(record); ++i) {
      int32_t distance = std::abs(MarkerX(layout, MarkerPosition(record.markers[i])) - point.x);
      if (distance <= nearest_distance && distance <= reach) {
        nearest = i;
        nearest_distance = distance;
      }
    }
    if (nearest) return MarkerHit(*nearest);
  }
  // A little slack round the boxes: they are small targets.
  if (Contains(Inflate(layout.start_box, 2), point)) return {FountainHitKind::kStart, 0};
  if (IsOpenFountain(record) && Contains(Inflate(layout.end_box, 2), point))
    return {FountainHitKind::kEnd, 0};
  return {};
}

bool InMarkerArea(const FountainEditorLayout& layout, Point point) {
  // Half a handle beyond each end of the band still means position 0 or 255.
  const int32_t left = layout.band.left - kEditorHandleHalfWidth;
  const int32_t right = layout.band.right + kEditorHandleHalfWidth;
  return point.x >= left && point.x <= right && point.y >= layout.band.top &&
         point.y < layout.handle_bottom;
}

std::optional<Colour> FountainColourAtX(const FountainRecord& record,
                                        const FountainEditorLayout& layout, int32_t x) {
  const int32_t width = layout.band.width();
  ImageBlock row = RenderFountain(record, width, 1);
  if (!row) return std::nullopt;
  return ImageGetPixel(row, std::clamp(x - layout.band.left, 0, width - 1), 0);
}

std::string FountainEditorStatus(const FountainRecord& record, const FountainHit& selected) {
  const size_t count = Count(record);
  switch (selected.kind) {
    case FountainHitKind::kStart: return "Start color";
    case FountainHitKind::kEnd: return "End color";
    case FountainHitKind::kMarker:
      if (selected.index < count)
        return "Marker " + std::to_string(selected.index + 1) + " of " + std::to_string(count) +
               ", position " + std::to_string(MarkerPosition(record.markers[selected.index]));
      break;
    case FountainHitKind::kNone: break;
  }
  return std::to_string(count) + " of " + std::to_string(kFountainMaxMarkers) + " markers";
}

// ---------------------------------------------------------------- edits

std::optional<size_t> AddFountainMarker(FountainRecord& record, uint32_t position, Colour colour) {
  const size_t count = Count(record);
  if (count >= kFountainMaxMarkers) return std::nullopt;
  size_t at = count;
  for (size_t i = 0; i < count; ++i)
    if (MarkerPosition(record.markers[i]) > position) {
      at = i;
      break;
    }
  std::move_backward(record.markers.begin() + at, record.markers.begin() + count,
                     record.markers.begin() + count + 1);
  record.markers[at] = MakeMarker(position, colour);
  record.marker_count = static_cast<uint32_t>(count + 1);
  return at;
}

size_t MoveFountainMarker(FountainRecord& record, size_t index, uint32_t position) {
  const size_t count = Count(record);
  auto& m = record.markers;
  m[index] = MakeMarker(position, MarkerColour(m[index]));
  // Strict comparisons: a marker dropped on another's position stays on the
  // side it came from, so dragging never reorders equal markers.
  while (index > 0 && MarkerPosition(m[index - 1]) > position) {
    std::swap(m[index - 1], m[index]);
    --index;
  }
  while (index + 1 < count && MarkerPosition(m[index + 1]) < position) {
    std::swap(m[index + 1], m[index]);
    ++index;
  }
  return index;
}

bool DeleteFountainMarker(FountainRecord& record, size_t index) {
  const size_t count = Count(record);
  if (index >= count) return false;
  std::move(record.markers.begin() + index + 1, record.markers.begin() + count,
            record.markers.begin() + index);
  record.markers[count - 1] = 0;
  record.marker_count = static_cast<uint32_t>(count - 1);
  return true;
}

std::optional<Colour> HitColour(const FountainRecord& record, const FountainHit& hit) {
  switch (hit.kind) {
    case FountainHitKind::kStart: return record.start_colour & 0xFFFFFF;
    case FountainHitKind::kEnd: return FountainFinalColour(record);
    case FountainHitKind::kMarker:
      if (hit.index < Count(record)) return MarkerColour(record.markers[hit.index]);
      break;
    case FountainHitKind::kNone: break;
  }
  return std::nullopt;
}

bool SetHitColour(FountainRecord& record, const FountainHit& hit, Colour colour) {
  colour &= 0xFFFFFF;
  switch (hit.kind) {
    case FountainHitKind::kStart:
      record.start_colour = (record.start_colour & 0xFF000000u) | colour;
      return true;
    case FountainHitKind::kEnd:
      record.end_colour = (record.end_colour & 0xFF000000u) | colour;
      return true;
    case FountainHitKind::kMarker:
      if (hit.index >= Count(record)) return false;
      record.markers[hit.index] = MakeMarker(MarkerPosition(record.markers[hit.index]), colour);
      return true;
    case FountainHitKind::kNone: break;
  }
  return false;
}

// ---------------------------------------------------------------- picture

namespace {

// An edge of `edge` colour round a swatch of `fill`, `thickness` wide.
void DrawSwatch(Canvas& canvas, const Rect& box, Colour fill, Colour edge, int32_t thickness) {
  canvas.FillRect(box, edge);
  canvas.FillRect(Inflate(box, -thickness), fill);
}

// A pointer from the band down to a swatch of the marker's colour, both
// symmetric about column x (the trapezoid's top edge spans that column).
bool DrawHandle(Canvas& canvas, const FountainEditorLayout& l, int32_t x, Colour fill,
                Colour edge, int32_t thickness) {
  const int32_t t = l.handle_top, base = t + kEditorPointerHeight, w = kEditorHandleHalfWidth;
  const Point pointer[] = {{x, t}, {x + 1, t}, {x + w + 1, base}, {x - w, base}};
  if (!canvas.FillPolygon(pointer, 4, edge)) return false;
  DrawSwatch(canvas, {x - w, base, x + w + 1, l.handle_bottom}, fill, edge, thickness);
  return true;
}

}  // namespace

ImageBlock RenderFountainEditor(const FountainRecord& record, int32_t width, int32_t height,
                                const FountainEditorLook& look) {
  Canvas canvas = Canvas::Open(width, height);
  if (!canvas) return {};
  canvas.Clear(look.background);
  const FountainEditorLayout l = FountainEditorLayoutFor(width, height);
  canvas.FillRect(Inflate(l.band, 1), look.frame);
  ImageBlock band = RenderFountain(record, l.band.width(), l.band.height());
  if (!band) return {};
  canvas.PaintImage(band, l.band.left, l.band.top);

  auto thickness = [&](const FountainHit& hit) { return hit == look.selected ? 2 : 1; };
  auto edge = [&](const FountainHit& hit) {
    return hit == look.selected ? look.selection : look.frame;
  };
  const FountainHit start{FountainHitKind::kStart, 0}, end{FountainHitKind::kEnd, 0};
  DrawSwatch(canvas, l.start_box, record.start_colour & 0xFFFFFF, edge(start), thickness(start));
  if (IsOpenFountain(record))
    DrawSwatch(canvas, l.end_box, FountainFinalColour(record), edge(end), thickness(end));

  const size_t count = Count(record);
  for (size_t i = 0; i <= count; ++i) {
    // The selected marker is drawn once more, last, so it is never hidden.
    const bool last_pass = i == count;
    if (last_pass && look.selected.kind != FountainHitKind::kMarker) break;
    const size_t index = last_pass ? look.selected.index : i;
    if (index >= count) break;
    const FountainHit hit = MarkerHit(index);
    const uint32_t marker = record.markers[index];
    if (!DrawHandle(canvas, l, MarkerX(l, MarkerPosition(marker)), MarkerColour(marker), edge(hit),
                    thickness(hit)))
      return {};
  }
  return canvas.Release();
}

}  // namespace tess
