// The fountain dialog's marker editor without windows: where the gradient
// and its handles sit in a window of a given size, what a point hits, the
// edits a person makes, and the picture the window blits. Edits keep the
// marker table in position order around the marker they touch, so the
// rendering (which follows table order) matches the handles; a table that
// arrives unsorted is left as it is until one of its markers is edited.
//
// Sections: layout · hits · edits · picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "draw/raster.h"
#include "fills/fountain.h"
#include "image/image.h"

namespace tess {

// ---------------------------------------------------------------- layout

// Left to right: margin, start-colour box, gap, the gradient band, gap,
// end-colour box, margin. Marker handles hang in a strip under the band,
// each a pointer whose tip touches the band and a swatch of its colour.
struct FountainEditorLayout {
  Rect band;
  Rect start_box;
  Rect end_box;
  int32_t handle_top = 0;     // the pointers' tips
  int32_t handle_bottom = 0;  // one past the swatches' last row
};

inline constexpr int32_t kEditorMargin = 5;
inline constexpr int32_t kEditorEndBoxSize = 14;
inline constexpr int32_t kEditorEndBoxGap = 6;
inline constexpr int32_t kEditorHandleHeight = 17;
inline constexpr int32_t kEditorPointerHeight = 6;
// A handle covers the columns x - 6 .. x + 6 around its marker's column x.
inline constexpr int32_t kEditorHandleHalfWidth = 6;
// Within the band a press this close to a marker takes it; farther away it
// adds one, so markers can be placed near each other.
inline constexpr int32_t kEditorBandGrabDistance = 2;

// The layout of a window of `width` x `height`; the band is at least one
// pixel each way, so tiny windows still lay out (and draw) safely.
FountainEditorLayout FountainEditorLayoutFor(int32_t width, int32_t height);

// The column of `position` (0..255): the band's left edge plus
// MarkerOffsets' trunc(position / 255 * width), so handles sit exactly
// where the band's colours turn. Position 255 lies at band.right.
int32_t MarkerX(const FountainEditorLayout& layout, uint32_t position);

// The position whose column is nearest `x` (the lower one on a tie), so
// PositionAtX(MarkerX(p)) == p whenever the band is at least 255 wide.
uint32_t PositionAtX(const FountainEditorLayout& layout, int32_t x);

// ---------------------------------------------------------------- hits

enum class FountainHitKind : uint8_t { kNone, kMarker, kStart, kEnd };

// What a press or a menu acts on. The start and end boxes stand for the
// fountain's own colours: they can be recoloured, never moved or deleted.
struct FountainHit {
  FountainHitKind kind = FountainHitKind::kNone;
  size_t index = 0;  // the marker's table index when kind is kMarker
  friend bool operator==(const FountainHit&, const FountainHit&) = default;
};

inline FountainHit MarkerHit(size_t index) { return {FountainHitKind::kMarker, index}; }

// The handle under `point`: the marker whose column is nearest (the later
// in the table on a tie, as it is drawn on top), then the start box, then
// the end box, which only an open fountain shows.
FountainHit HitFountainEditor(const FountainRecord& record, const FountainEditorLayout& layout,
                              Point point);

// True where a press that hits nothing adds a marker: the band and the
// handle strip under it.
bool InMarkerArea(const FountainEditorLayout& layout, Point point);

// The colour the band shows at column `x` (clamped to the band), which a
// marker added there takes so that adding one changes nothing visible.
// Nothing when memory is short.
std::optional<Colour> FountainColourAtX(const FountainRecord& record,
                                        const FountainEditorLayout& layout, int32_t x);

// "7 of 64 markers", "Marker 3 of 7, position 128", "Start color",
// "End color": the line under the editor.
std::string FountainEditorStatus(const FountainRecord& record, const FountainHit& selected);

// ---------------------------------------------------------------- edits

// Inserts a marker before the first one placed after `position`, so equal
// positions keep the order they were added in. Returns its index; nothing,
// with the record unchanged, when 64 markers are in use.
std::optional<size_t> AddFountainMarker(FountainRecord& record, uint32_t position, Colour colour);

// Gives marker `index` the new position (0..255) and moves it past the
// neighbours it now lies beyond, so the table stays in order around it.
// Returns its new index; `index` must be below FountainMarkerCount.
size_t MoveFountainMarker(FountainRecord& record, size_t index, uint32_t position);

// Removes marker `index`, closing the gap; the freed last slot becomes 0.
// False, with nothing changed, for an index not in use.
bool DeleteFountainMarker(FountainRecord& record, size_t index);

// The hit's colour: a marker's, the start colour, or the colour the end of
// the band shows. Nothing for kNone.
std::optional<Colour> HitColour(const FountainRecord& record, const FountainHit& hit);

// Sets the hit's colour (low 24 bits; the start and end colours keep their
// unused top byte). False for kNone or a marker not in use.
bool SetHitColour(FountainRecord& record, const FountainHit& hit, Colour colour);

// ---------------------------------------------------------------- picture

struct FountainEditorLook {
  Colour background = 0xC0C0C0;
  Colour frame = 0x808080;      // the band's outline and plain handles' edges
  Colour selection = 0x000000;  // the selected handle's edge, twice as thick
  FountainHit selected;
};

// The whole window's picture: background, framed band rendered by
// RenderFountain, the start box, the end box when open, then every marker's
// handle in table order with the selected one on top. Null when memory is
// short or a size is not positive.
ImageBlock RenderFountainEditor(const FountainRecord& record, int32_t width, int32_t height,
                                const FountainEditorLook& look);

}  // namespace tess
