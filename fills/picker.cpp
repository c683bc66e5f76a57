// The picker family table and the rules every front end shares. Cells are
// 25-pixel squares of a 3 x 3 grid; a class is only its cells, its tag and
// its glyph strip, so adding a class is adding a row here.
#include "fills/picker.h"

#include <array>

namespace tess {
namespace {

constexpr int32_t kCell = 25;

// The square at grid column `col` and row `row`.
constexpr Rect GridCell(int32_t col, int32_t row) {
  return {col * kCell, row * kCell, (col + 1) * kCell, (row + 1) * kCell};
}

using G = PickerGlyph;

// Shadow directions. The order is not clockwise: right is 3 and left is 4,
// and documents store these numbers.
constexpr PickerCell kShadowCells[] = {
    {GridCell(0, 0), "top-left", G::kDiagonalArrow, 0},
    {GridCell(1, 0), "top", G::kArrow, 0},
    {GridCell(2, 0), "top-right", G::kDiagonalArrow, 1},
    {GridCell(2, 1), "right", G::kArrow, 1},
    {GridCell(0, 1), "left", G::kArrow, 3},
    {GridCell(0, 2), "bottom-left", G::kDiagonalArrow, 3},
    {GridCell(1, 2), "bottom", G::kArrow, 2},
    {GridCell(2, 2), "bottom-right", G::kDiagonalArrow, 2},
};

// Four scroll directions; the effects map 0 to rows moving up, 1 to columns
// moving right, 2 left and 3 down.
constexpr PickerCell kScroll4Cells[] = {
    {GridCell(1, 0), "up", G::kArrow, 0},
    {GridCell(2, 1), "right", G::kArrow, 1},
    {GridCell(0, 1), "left", G::kArrow, 3},
    {GridCell(1, 2), "down", G::kArrow, 2},
};

// Two ways for rings that cycle through a gradient: 0 moves the colours
// away from the centre, any other value toward it.
constexpr PickerCell kScroll2Cells[] = {
    {GridCell(0, 0), "outward", G::kOutward, 0},
    {GridCell(1, 0), "inward", G::kInward, 0},
};

// An axis: the left-middle cell is horizontal, the top-middle one vertical.
constexpr PickerCell kScrollHVCells[] = {
    {GridCell(0, 1), "horizontal", G::kDoubleArrow, 1},
    {GridCell(1, 0), "vertical", G::kDoubleArrow, 0},
};

constexpr std::array<PickerKind, kPickerClassCount> kKinds = {{
    {PickerClass::kShadow, "SDWDIR", 7104, 161, kShadowCells},
    {PickerClass::kScroll4, "SCRL4D", 7105, 80, kScroll4Cells},
    {PickerClass::kScroll2, "SCRL2D", 7106, 40, kScroll2Cells},
    {PickerClass::kScrollHV, "SCRLHV", 7110, 40, kScrollHVCells},
}};

bool Contains(const Rect& r, Point p) {
  return p.x >= r.left && p.x < r.right && p.y >= r.top && p.y < r.bottom;
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool SameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (Lower(a[i]) != Lower(b[i])) return false;
  return true;
}

}  // namespace

// ---------------------------------------------------------------- family table

std::span<const PickerKind> PickerKinds() { return kKinds; }

const PickerKind& PickerKindOf(PickerClass picker_class) {
  return kKinds[static_cast<size_t>(picker_class)];
}

const PickerKind* FindPickerKind(std::string_view tag) {
  for (const PickerKind& kind : kKinds)
    if (tag == kind.tag) return &kind;
  return nullptr;
}

// ---------------------------------------------------------------- hit test and value rules

int PickerHitTest(const PickerKind& kind, Point p) {
  for (int i = 0; i < kind.cell_count(); ++i)
    if (Contains(kind.cells[static_cast<size_t>(i)].rect, p)) return i;
  return kPickerNoCell;
}

int PickerSelectedCell(const PickerKind& kind, int32_t value) {
  return value >= 0 && value < kind.cell_count() ? value : kPickerNoCell;
}

PickerClickResult PickerClick(const PickerKind& kind, int32_t value, Point p) {
  int cell = PickerHitTest(kind, p);
  int32_t next = cell == kPickerNoCell ? value : cell;
  return {next, NumberValueText(next)};
}

int32_t PickerTextNumber(std::string_view text) {
  // Two's complement wrap: well defined for the conversion to unsigned.
  return static_cast<int32_t>(static_cast<uint32_t>(ParseValueNumber(text)));
}

std::string PickerLineValue(std::string_view window_text) {
  return UnsignedValueText(static_cast<uint32_t>(PickerTextNumber(window_text)));
}

// ---------------------------------------------------------------- cell look

PickerCellLook PickerCellLookOf(const PickerKind& kind, int cell, int32_t value) {
  const Rect& r = kind.cells[static_cast<size_t>(cell)].rect;
  bool selected = PickerSelectedCell(kind, value) == cell;
  int32_t inset = selected ? 2 : 1;
  return {r, selected ? PickerFace::kSunken : PickerFace::kRaised, inset,
          Point{r.left + inset + 1, r.top + inset + 1}, kPickerGlyphSize * cell};
}

// ---------------------------------------------------------------- names

std::string_view PickerDirectionName(PickerClass picker_class, int32_t value) {
  const PickerKind& kind = PickerKindOf(picker_class);
  int cell = PickerSelectedCell(kind, value);
  return cell == kPickerNoCell ? std::string_view() : kind.cells[static_cast<size_t>(cell)].name;
}

std::optional<int32_t> ParsePickerDirection(PickerClass picker_class, std::string_view text) {
  const PickerKind& kind = PickerKindOf(picker_class);
  for (int i = 0; i < kind.cell_count(); ++i)
    if (SameName(text, kind.cells[static_cast<size_t>(i)].name)) return i;
  // Plain digits only: a cell index is never signed, and a short text keeps
  // the number small.
  if (text.empty() || text.size() > 2) return std::nullopt;
  int32_t number = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + (c - '0');
  }
  if (PickerSelectedCell(kind, number) == kPickerNoCell) return std::nullopt;
  return number;
}

// ---------------------------------------------------------------- control state

bool PickerState::TakeValue(std::string_view value) {
  m_value = PickerTextNumber(value);
  return true;
}

PickerState::Repaint PickerState::Click(Point p) {
  int old_cell = SelectedCell();
  PickerClickResult result = PickerClick(*m_kind, m_value, p);
  m_value = result.value;
  m_text = std::move(result.text);
  return {old_cell, SelectedCell()};
}

}  // namespace tess
