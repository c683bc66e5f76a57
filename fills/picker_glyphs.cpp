// Glyphs are built as 20 x 20 ink grids: a prototype polygon is rasterised,
// made exactly symmetric by uniting it with its mirror image (the
// rasteriser's tie rule would otherwise leave one side a pixel short), then
// turned by whole quarter turns, which move pixels without resampling. The
// outline is the ink that touches paper; the rest is the fill.
#include "fills/picker_glyphs.h"

#include <array>
#include <initializer_list>

#include "base/bytes.h"
#include "draw/canvas.h"

namespace tess {
namespace {

constexpr int kSize = kPickerGlyphSize;
constexpr Colour kOutline = MakeColour(24, 40, 88);
constexpr Colour kFill = MakeColour(72, 136, 232);

// ink[y][x]
using Ink = std::array<std::array<bool, kSize>, kSize>;

class InkSink final : public SpanSink {
 public:
  explicit InkSink(Ink& ink) : m_ink(ink) {}
  void Span(int32_t y, int32_t x_begin, int32_t x_end) override {
    auto& row = m_ink[static_cast<size_t>(y)];
    for (int32_t x = x_begin; x < x_end; ++x) row[static_cast<size_t>(x)] = true;
  }

 private:
  Ink& m_ink;
};

bool At(const Ink& ink, int x, int y) {
  return x >= 0 && x < kSize && y >= 0 && y < kSize &&
         ink[static_cast<size_t>(y)][static_cast<size_t>(x)];
}

// Moves every pixel (x, y) to where(x, y).
template <class Where>
Ink Remap(const Ink& ink, Where where) {
  Ink out{};
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x)
      if (At(ink, x, y)) {
        Point to = where(x, y);
        out[static_cast<size_t>(to.y)][static_cast<size_t>(to.x)] = true;
      }
  return out;
}

Ink Union(const Ink& a, const Ink& b) {
  Ink out{};
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x)
      out[static_cast<size_t>(y)][static_cast<size_t>(x)] = At(a, x, y) || At(b, x, y);
  return out;
}

Ink MirrorLeftRight(const Ink& ink) {
  return Remap(ink, [](int x, int y) { return Point{kSize - 1 - x, y}; });
}
Ink MirrorTopBottom(const Ink& ink) {
  return Remap(ink, [](int x, int y) { return Point{x, kSize - 1 - y}; });
}
Ink MirrorDiagonal(const Ink& ink) {
  return Remap(ink, [](int x, int y) { return Point{y, x}; });
}
Ink TurnClockwise(const Ink& ink, int quarter_turns) {
  Ink out = ink;
  for (int i = 0; i < quarter_turns % 4; ++i)
    out = Remap(out, [](int x, int y) { return Point{kSize - 1 - y, x}; });
  return out;
}
// The shape and its three quarter-turned copies.
Ink FourFold(const Ink& ink) {
  Ink out = ink;
  for (int i = 1; i < 4; ++i) out = Union(out, TurnClockwise(ink, i));
  return out;
}

// Polygons in the 20 x 20 grid's corner coordinates, united.
Ink Polygons(std::initializer_list<std::initializer_list<Point>> polygons) {
  Ink ink{};
  InkSink sink(ink);
  for (const auto& polygon : polygons)
    RasterPolygon(polygon.begin(), static_cast<int>(polygon.size()), Rect{0, 0, kSize, kSize},
                  sink);
  return ink;
}

// Pointing up: a head as wide as the glyph over a shaft to the bottom.
Ink Arrow() {
  Ink ink = Polygons({{{10, 1}, {18, 9}, {13, 9}, {13, 19}, {7, 19}, {7, 9}, {2, 9}}});
  return Union(ink, MirrorLeftRight(ink));
}

// Pointing up and left: a right-angled head in the corner and a shaft to
// the opposite corner, about as heavy as the straight arrow.
Ink DiagonalArrow() {
  Ink ink = Polygons({{{1, 1}, {13, 1}, {1, 13}}, {{7, 3}, {19, 15}, {15, 19}, {3, 7}}});
  return Union(ink, MirrorDiagonal(ink));
}

// Up and down: two heads on one shaft.
Ink DoubleArrow() {
  Ink ink = Polygons({{{10, 1}, {16, 7}, {13, 7}, {13, 13}, {16, 13}, {10, 19}, {4, 13}, {7, 13},
                       {7, 7}, {4, 7}}});
  ink = Union(ink, MirrorLeftRight(ink));
  return Union(ink, MirrorTopBottom(ink));
}

// Four small arrows from the centre to the corners.
Ink Outward() {
  Ink corner = Polygons({{{1, 1}, {9, 1}, {1, 9}}, {{6, 3}, {10, 7}, {10, 10}, {7, 10}, {3, 6}}});
  return FourFold(Union(corner, MirrorDiagonal(corner)));
}

// Four small arrows from the corners to the centre.
Ink Inward() {
  Ink corner = Polygons({{{9, 9}, {2, 9}, {9, 2}}, {{0, 0}, {3, 0}, {7, 4}, {4, 7}, {0, 3}}});
  return FourFold(Union(corner, MirrorDiagonal(corner)));
}

Ink Prototype(PickerGlyph glyph) {
  switch (glyph) {
    case PickerGlyph::kArrow: return Arrow();
    case PickerGlyph::kDiagonalArrow: return DiagonalArrow();
    case PickerGlyph::kDoubleArrow: return DoubleArrow();
    case PickerGlyph::kOutward: return Outward();
    case PickerGlyph::kInward: return Inward();
  }
  return Ink{};
}

bool TouchesPaper(const Ink& ink, int x, int y) {
  return !At(ink, x - 1, y) || !At(ink, x + 1, y) || !At(ink, x, y - 1) || !At(ink, x, y + 1);
}

void PaintCell(ImageBlock& strip, int32_t column, const Ink& ink) {
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x) {
      if (!At(ink, x, y)) continue;
      ImageSetPixel(strip, column + x, y, TouchesPaper(ink, x, y) ? kOutline : kFill);
      ImageSetPixel(strip, column + x, kPickerMaskTop + y, kPickerMaskInk);
    }
}

}  // namespace

ImageBlock PickerGlyphStrip(PickerClass picker_class) {
  const PickerKind& kind = PickerKindOf(picker_class);
  Canvas canvas = Canvas::Open(kind.strip_width, kPickerStripHeight);
  if (!canvas) return {};
  canvas.Clear(kPickerGlyphPaper);
  ImageBlock strip = canvas.Release();
  for (int i = 0; i < kind.cell_count(); ++i) {
    const PickerCell& cell = kind.cells[static_cast<size_t>(i)];
    Ink ink = TurnClockwise(Prototype(cell.glyph), cell.quarter_turns);
    PaintCell(strip, kPickerGlyphSize * i, ink);
  }
  return strip;
}

std::string PickerGlyphFileName(PickerClass picker_class) {
  std::string name = "picker_";
  for (const char* c = PickerKindOf(picker_class).tag; *c; ++c)
    name.push_back(*c >= 'A' && *c <= 'Z' ? static_cast<char>(*c - 'A' + 'a') : *c);
  return name + ".bmp";
}

bool WriteBitmapFile(ByteSink& sink, const ImageBlock& image) {
  if (!image) return false;
  constexpr uint32_t kFileHeaderSize = 14;
  uint32_t bits_offset =
      kFileHeaderSize + kDibHeaderSize + 4 * static_cast<uint32_t>(image.colour_table_entries());
  uint8_t header[kFileHeaderSize] = {'B', 'M'};
  put_u32le(header + 2, kFileHeaderSize + static_cast<uint32_t>(image.size()));  // file size
  put_u32le(header + 6, 0);                                                      // reserved
  put_u32le(header + 10, bits_offset);  // where the rows start
  return sink.Write(header, sizeof header) && sink.Write(image.data(), image.size());
}

}  // namespace tess
