// How a settings page is laid out and numbered. Pages are a two-column grid in
// dialog units (rows every 14 units, controls 12 high, at most ten rows, about
// 210 x 150); every control sits in one cell (a direction picker spans the
// rows its cells need) and the label of a control that needs one stands left
// of it in the same cell. Control numbers follow one rule
// across all twenty pages so that front ends and effects can name them alike.
//
// Sections: control numbers · grid · control builders · background queries.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "styles/style.h"

namespace tess::page {

// ---------------------------------------------------------------- control numbers

// The n of PageControlId(style, n) for the parameters many pages share. A page
// without the parameter leaves its number unused; style-specific controls take
// n = kFirstOwnControl and up.
enum CommonControl : int {
  kFramesControl = 1,
  kWidthControl = 2,
  kDepthControl = 3,
  kSeedControl = 4,
  kBackgroundControl = 5,
  kSizeControl = 6,
  kDensityControl = 7,
  kOpacityControl = 8,
  kDriftControl = 9,
  kScrollControl = 10,
  kFirstOwnControl = 30,
};

// "Color 1:" to "Color 5:" are 11..15; the Enable box of colour i (2..5) is 20 + i.
constexpr int ColourControl(int i) { return 10 + i; }
constexpr int EnableControl(int i) { return 20 + i; }

// Fountain buttons keep the numbers of the built-in fountain descriptions that
// a first run loads into them, whatever their page: Fountain 270, Solid 290,
// Shaped Fountain 306, Atmosphere 451, Carpet 496.
constexpr int kBuiltInFountainIds[] = {270, 290, 306, 451, 496};


// ---------------------------------------------------------------- grid

enum Column : uint8_t { kLeft, kRight };

constexpr int16_t kTop = 6;
constexpr int16_t kRowStep = 14;
constexpr int16_t kRowHeight = 12;
constexpr int kMaxRows = 10;
constexpr int16_t kPageWidth = 210;
constexpr int16_t kPageHeight = 150;

constexpr int16_t kLabelX[2] = {4, 104};
constexpr int16_t kControlX[2] = {60, 150};
constexpr int16_t kColumnEnd[2] = {100, 208};
constexpr int16_t kSpinWidth = 36;
constexpr int16_t kButtonWidth = 22;
constexpr int16_t kEnableX = 176;

constexpr int16_t RowY(int row) { return static_cast<int16_t>(kTop + kRowStep * row); }

struct Place {
  int16_t x, y, w, h;
};

// Where the shell puts the static label of a control whose kind has one: from
// the column's label edge to 2 units before the control, as tall as it.
constexpr Place LabelPlace(const PageControl& c) {
  int col = c.x >= kLabelX[kRight] ? kRight : kLeft;
  return {kLabelX[col], c.y, static_cast<int16_t>(c.x - 2 - kLabelX[col]), c.h};
}

// Dialog units that cover `pixels` at the dialog's font, rounded up. 8-point
// MS Shell Dlg has base units of at least 6 x 13 pixels (Wine's substitute
// font gives 7 x 13), so 2 units across are at least 3 pixels and 8 units
// down 13: counting with the smallest units leaves room at every size.
constexpr int16_t UnitsAcross(int pixels) { return static_cast<int16_t>((pixels * 2 + 2) / 3); }
constexpr int16_t UnitsDown(int pixels) { return static_cast<int16_t>((pixels * 8 + 12) / 13); }

// Pickers draw fixed 25-pixel cells, so their windows are made at their
// cells' size in pixels; a page gives them at least that room. The two-way
// class is one row of two cells, the two-axis one the top-left 2 x 2 of the
// grid, the others the whole 3 x 3 grid.
constexpr int32_t kPickerCellPixels = 25;
struct PixelSize {
  int32_t w, h;
};
constexpr PixelSize PickerPixels(PickerClass picker) {
  switch (picker) {
    case PickerClass::kScroll2: return {2 * kPickerCellPixels, kPickerCellPixels};
    case PickerClass::kScrollHV: return {2 * kPickerCellPixels, 2 * kPickerCellPixels};
    case PickerClass::kShadow:
    case PickerClass::kScroll4: break;
  }
  return {3 * kPickerCellPixels, 3 * kPickerCellPixels};
}

// ---------------------------------------------------------------- control builders

constexpr PageControl InCell(int id, ControlKind kind, Column col, int row, const char* label,
                             const char* key, int16_t width, SpinRange range = {},
                             ItemList items = {}) {
  return PageControl{id,    kind,           label,     key,   range,
                     items, kControlX[col], RowY(row), width, kRowHeight};
}

constexpr PageControl Spin(int id, Column col, int row, const char* label, const char* key,
                           SpinRange range) {
  return InCell(id, ControlKind::kSpin, col, row, label, key, kSpinWidth, range);
}

// Check boxes take the whole cell: their text is their label.
constexpr PageControl Check(int id, Column col, int row, const char* label, const char* key) {
  return PageControl{id,        ControlKind::kCheck,
                     label,     key,
                     {},        {},
                     kLabelX[col], RowY(row),
                     static_cast<int16_t>(kColumnEnd[col] - kLabelX[col]), kRowHeight};
}

constexpr int16_t CellRest(Column col) {
  return static_cast<int16_t>(kColumnEnd[col] - kControlX[col]);
}

constexpr PageControl DropDown(int id, Column col, int row, const char* label, const char* key,
                               ItemList items) {
  return InCell(id, ControlKind::kDropDown, col, row, label, key, CellRest(col), {}, items);
}

// A direction picker of class `picker`, flush with the column's right end,
// from `row` down over as many rows as its cells need; `def` is the cell a
// fresh page selects.
constexpr PageControl Picker(int id, Column col, int row, const char* key, PickerClass picker,
                             int32_t def) {
  PixelSize pixels = PickerPixels(picker);
  int16_t w = UnitsAcross(pixels.w), h = UnitsDown(pixels.h);
  PageControl c{id,  ControlKind::kPicker, "Scroll:", key, {0, 0, def}, {},
                static_cast<int16_t>(kColumnEnd[col] - w), RowY(row), w, h};
  c.picker = picker;
  return c;
}

// Fountain and matrix buttons are stored by their own controls, not by a key.
constexpr PageControl Fountain(int id, Column col, int row) {
  return InCell(id, ControlKind::kFountain, col, row, "Fountain:", nullptr, CellRest(col));
}
constexpr PageControl Matrix(int id, Column col, int row) {
  return InCell(id, ControlKind::kMatrix, col, row, "Matrix:", nullptr, CellRest(col));
}

constexpr PageControl ColourButton(int id, Column col, int row, const char* label,
                                   const char* key) {
  return InCell(id, ControlKind::kColourButton, col, row, label, key, kButtonWidth);
}
// Fill buttons are wider than colour buttons: the menu-arrow strip takes 16
// pixels beside the swatch. They end where a colour button of the cell ends.
constexpr int16_t kFillButtonWidth = 32;
constexpr PageControl FillButton(int id, Column col, int row, const char* label,
                                 const char* key) {
  PageControl c = InCell(id, ControlKind::kFillButton, col, row, label, key, kFillButtonWidth);
  c.x = static_cast<int16_t>(kControlX[col] + kButtonWidth - kFillButtonWidth);
  return c;
}

constexpr PageControl Background(int style, Column col, int row) {
  return ColourButton(PageControlId(style, kBackgroundControl), col, row, "Background:",
                      "Background");
}

// The five colour rows of a sprite page in the right column from `first_row`:
// "Color 1:" alone, then "Color 2:" to "Color 5:" each followed by its Enable
// box, which is also their tab order. Pages that name their colours otherwise
// pass their own labels.
using ColourLabels = std::array<const char*, 5>;
constexpr ColourLabels kColourLabels = {"Color 1:", "Color 2:", "Color 3:", "Color 4:",
                                        "Color 5:"};
constexpr const char* kFillColourKeys[5] = {"FillColor1", "FillColor2", "FillColor3",
                                            "FillColor4", "FillColor5"};
constexpr const char* kFillEnableKeys[5] = {nullptr, "FillEnable2", "FillEnable3",
                                            "FillEnable4", "FillEnable5"};

constexpr std::array<PageControl, 9> ColourRows(int style, int first_row,
                                                const ColourLabels& labels = kColourLabels) {
  std::array<PageControl, 9> rows{};
  size_t at = 0;
  for (int i = 1; i <= 5; ++i) {
    int row = first_row + i - 1;
    rows[at++] = FillButton(PageControlId(style, ColourControl(i)), kRight, row,
                            labels[static_cast<size_t>(i - 1)], kFillColourKeys[i - 1]);
    if (i >= 2)
      rows[at++] = PageControl{PageControlId(style, EnableControl(i)),
                               ControlKind::kCheck,
                               "Enable",
                               kFillEnableKeys[i - 1],
                               {},
                               {},
                               kEnableX,
                               RowY(row),
                               static_cast<int16_t>(kColumnEnd[kRight] - kEnableX),
                               kRowHeight};
  }
  return rows;
}

template <size_t... N>
constexpr std::array<PageControl, (N + ...)> Join(const std::array<PageControl, N>&... parts) {
  std::array<PageControl, (N + ...)> out{};
  size_t at = 0;
  auto append = [&](const auto& part) {
    for (const PageControl& c : part) out[at++] = c;
  };
  (append(parts), ...);
  return out;
}

// "Frames:", "Width:" and "Depth:" in the first three rows of the left
// column, the way most pages open; `tile` is the width and depth range.
constexpr std::array<PageControl, 3> TileRows(int style, SpinRange tile = {16, 1024, 128}) {
  return {Spin(PageControlId(style, kFramesControl), kLeft, 0, "Frames:", "Frames", {2, 32760, 64}),
          Spin(PageControlId(style, kWidthControl), kLeft, 1, "Width:", "Width", tile),
          Spin(PageControlId(style, kDepthControl), kLeft, 2, "Depth:", "Depth", tile)};
}

// "Glare:", "Shade:", "Shadow offset:" and "Shadow opacity:" in the last
// four rows of the left column, as the pages of shaded beads have them; `n`
// is the first control number. Without `shadows` both shadow settings start
// at 0.
constexpr std::array<PageControl, 4> ShadingRows(int style, int n, bool shadows = true) {
  return {Spin(PageControlId(style, n), kLeft, 6, "Glare:", "Glare", {0, 255, 160}),
          Spin(PageControlId(style, n + 1), kLeft, 7, "Shade:", "Shade", {0, 255, 70}),
          Spin(PageControlId(style, n + 2), kLeft, 8, "Shadow offset:", "ShadowOffset",
               shadows ? SpinRange{0, 32, 8} : SpinRange{0, 32, 0}),
          Spin(PageControlId(style, n + 3), kLeft, 9, "Shadow opacity:", "ShadowOpacity",
               shadows ? SpinRange{1, 255, 255} : SpinRange{0, 255, 0})};
}

// ---------------------------------------------------------------- background queries

// For pages with a "Background:" button: its colour, or none when asked with a
// non-zero flag.
template <int kStyle>
Colour BackgroundQuery(const ParamReader& reader, int flag) {
  return flag != 0 ? kNoColour : reader.ColourValue(PageControlId(kStyle, kBackgroundControl));
}

// For pages without one: every entry answers the query, so front ends never
// need to test for a missing one.
inline Colour NoBackground(const ParamReader&, int) { return kNoColour; }

}  // namespace tess::page
