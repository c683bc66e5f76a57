// Direction pickers: the four control classes as one family table (cells,
// names, glyphs, tags), and everything about a picker that does not need a
// window: hit testing, the value rules, the document line and how each cell is
// drawn. The Windows controls and the command line both ask this file.
//
// Invariants: a value is any 32-bit number; only a value that is a cell index
// selects a cell. A read document line changes the value, never the text.
//
// Sections: family table · hit test and value rules · cell look · names ·
// control state.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "shell/document.h"
#include "draw/raster.h"

namespace tess {

// ---------------------------------------------------------------- family table

// In table order; the enumerator is the index into PickerKinds().
enum class PickerClass : uint8_t { kShadow, kScroll4, kScroll2, kScrollHV };
inline constexpr int kPickerClassCount = 4;

// Glyph strips: each cell's s x s glyph at columns s*i.., rows 0..s-1; one
// separator row; its mask in the same columns from row s + 1.
inline constexpr int32_t kPickerGlyphSize = 20;
inline constexpr int32_t kPickerMaskTop = kPickerGlyphSize + 1;
inline constexpr int32_t kPickerStripHeight = 2 * kPickerGlyphSize + 1;

inline constexpr int kPickerNoCell = -1;

// The prototypes glyphs are turned from, each pointing up (the diagonal one
// up and to the left) before its clockwise quarter turns.
enum class PickerGlyph : uint8_t { kArrow, kDiagonalArrow, kDoubleArrow, kOutward, kInward };

struct PickerCell {
  Rect rect;              // client pixels; right and bottom are outside the cell
  std::string_view name;  // the direction as the command line names it
  PickerGlyph glyph;
  uint8_t quarter_turns;  // clockwise
};

struct PickerKind {
  PickerClass picker_class;
  const char* tag;        // document tag and window class name (a literal)
  int glyph_resource;     // the strip's bitmap resource id
  int32_t strip_width;
  std::span<const PickerCell> cells;

  int cell_count() const { return static_cast<int>(cells.size()); }
};

std::span<const PickerKind> PickerKinds();
const PickerKind& PickerKindOf(PickerClass picker_class);
// The class whose tag is `tag` (exact, six capitals), or null.
const PickerKind* FindPickerKind(std::string_view tag);

// ---------------------------------------------------------------- hit test and value rules

// The cell that contains `p`, or kPickerNoCell (between cells, the empty
// centre of a 3 x 3 grid, outside).
int PickerHitTest(const PickerKind& kind, Point p);

// `value` when it is a cell index, else kPickerNoCell: a value taken from a
// document is kept even when no cell shows it.
int PickerSelectedCell(const PickerKind& kind, int32_t value);

// What a click leaves: the value (unchanged outside all cells) and the window
// text, which is rewritten with it either way ("%d").
struct PickerClickResult {
  int32_t value;
  std::string text;
};
PickerClickResult PickerClick(const PickerKind& kind, int32_t value, Point p);

// The window text read as an integer: leading spaces, a sign, digits; 0
// without digits; the low 32 bits of the number. The low 32 bits make the
// unsigned form a line carries come back as the signed value it came from.
int32_t PickerTextNumber(std::string_view text);

// The value a document line carries: the window text's number as unsigned
// decimal ("%lu" of a 32-bit number).
std::string PickerLineValue(std::string_view window_text);

// ---------------------------------------------------------------- cell look

enum class PickerFace : uint8_t {
  kRaised,  // button-face fill, soft raised edge
  kSunken,  // the selected cell: button-shadow fill, soft sunken edge
};

struct PickerCellLook {
  Rect rect;
  PickerFace face;
  int32_t inset;         // 2 when sunken, else 1
  Point glyph;           // top-left corner of the glyph: cell corner + inset + 1
  int32_t strip_column;  // first strip column of the glyph and of its mask
};

PickerCellLook PickerCellLookOf(const PickerKind& kind, int cell, int32_t value);

// ---------------------------------------------------------------- names

// The cell's direction name, or an empty view for a value that is no cell.
std::string_view PickerDirectionName(PickerClass picker_class, int32_t value);

// A direction name (any case) or a cell index in decimal; nothing for any
// other text, including numbers that are no cell.
std::optional<int32_t> ParsePickerDirection(PickerClass picker_class, std::string_view text);

// ---------------------------------------------------------------- control state

// One picker as its window keeps it: the value and the window text. Clicks
// set both; a document line sets only the value; the line written is the
// text's number. So after a read, a save before the next click writes the
// older text: the controls behave that way and this object reproduces it.
class PickerState final : public DocumentControl {
 public:
  PickerState(PickerClass picker_class, int number, int32_t value = 0, std::string text = {})
      : m_kind(&PickerKindOf(picker_class)), m_number(number), m_value(value),
        m_text(std::move(text)) {}

  std::string_view Tag() const override { return m_kind->tag; }
  int Number() const override { return m_number; }
  std::string ValueText() const override { return PickerLineValue(m_text); }
  // Always taken: any number is stored, in range or not.
  bool TakeValue(std::string_view value) override;

  // A click at `p` in client pixels; returns the cells selected before and
  // after, which are the ones to repaint.
  struct Repaint {
    int old_cell;
    int new_cell;
  };
  Repaint Click(Point p);
  // The value becomes the window text's number.
  void SyncFromText() { m_value = PickerTextNumber(m_text); }

  const PickerKind& kind() const { return *m_kind; }
  int32_t value() const { return m_value; }
  const std::string& text() const { return m_text; }
  int SelectedCell() const { return PickerSelectedCell(*m_kind, m_value); }

 private:
  const PickerKind* m_kind;
  int m_number;
  int32_t m_value;
  std::string m_text;
};

}  // namespace tess
