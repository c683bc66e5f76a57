// Solid (style 005): the whole tile steps through the colours of a fountain
// gradient, one flat colour a frame. The colours are those of the fountain
// rendered 256 pixels wide and one high; the record renders that strip once,
// since it is the same for every frame, and frame k is the strip's column
// ScrollOffset(256, k, N).
//
// Invariants: frame N is frame 0; a frame is one colour everywhere, so it
// tiles trivially. No random numbers.
#include <array>
#include <cstdint>
#include <memory>
#include <new>

#include "draw/draw.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 5;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kFountainControl = 290;
constexpr int32_t kStripWidth = 256;

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Fountain(kFountainControl, kRight, 0),
    });

class SolidRecord final : public StyleRecord {
 public:
  SolidRecord(const std::array<Colour, kStripWidth>& strip, int32_t width, int32_t height,
              int frames)
      : m_strip(strip), m_width(width), m_height(height), m_frames(frames) {}

  int FrameCount() const override { return m_frames; }

  ImageBlock RenderFrame(int k) override {
    const int32_t column = ScrollOffset(kStripWidth, k, m_frames);
    return SolidImage(Rect{0, 0, m_width, m_height}, m_strip[static_cast<size_t>(column)]);
  }

 private:
  std::array<Colour, kStripWidth> m_strip;
  int32_t m_width;
  int32_t m_height;
  int m_frames;
};

std::unique_ptr<StyleRecord> InitSolid(const ParamReader& reader, Random&) {
  const int32_t width = reader.Spin(Id(kWidthControl));
  const int32_t height = reader.Spin(Id(kDepthControl));
  const int32_t frames = reader.Spin(Id(kFramesControl));
  if (width <= 0 || height <= 0 || frames <= 0) return nullptr;
  const ImageBlock strip = RenderFountain(reader.Fountain(kFountainControl), kStripWidth, 1);
  if (!strip) return nullptr;
  std::array<Colour, kStripWidth> colours;
  for (int32_t x = 0; x < kStripWidth; ++x)
    colours[static_cast<size_t>(x)] = ImageGetPixel(strip, x, 0);
  return std::unique_ptr<StyleRecord>(new (std::nothrow)
                                          SolidRecord(colours, width, height, frames));
}

}  // namespace

// The colour changes every frame, so there is no single background colour.
StyleEntry SolidStyle() { return {"Solid", kNumber, kPage, &InitSolid, &NoBackground}; }

}  // namespace tess
