// Fountain (style 004): a fountain gradient scrolled across the tile in one
// of four directions. The picture never changes, only how far it is rolled,
// so the record renders it once (on the swapped size and turned, for the
// vertical directions, so that the gradient runs along the scroll) and each
// frame is one roll of it: block copies, never a second rendering.
//
// Invariants: the record's picture is frame 0 (no roll); frame k rolls it by
// ScrollOffset of its length along the scroll, so frame N is frame 0 and a
// closed fountain tiles and loops without a seam. No random numbers.
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "draw/draw.h"
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 4;
constexpr int Id(int n) { return PageControlId(kNumber, n); }
constexpr int kFountainControl = 270;

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Picker(Id(kScrollControl), kLeft, 3, "Scroll", PickerClass::kScroll4, 1),
        Fountain(kFountainControl, kRight, 0),
    });

// The four-way picker's cells. Each moves the picture the way its arrow
// points: up toward lower rows, right toward higher columns.
enum Direction : int32_t { kUp = 0, kRight = 1, kLeft = 2, kDown = 3 };

bool Vertical(int32_t direction) { return direction == kUp || direction == kDown; }

// Frame 0: the gradient left to right, or for the vertical directions the
// gradient of the swapped size given a quarter turn, so that it starts at the
// top when scrolling up and at the bottom when scrolling down.
ImageBlock UnrolledPicture(const FountainRecord& fountain, int32_t direction, int32_t width,
                           int32_t height) {
  if (!Vertical(direction)) return RenderFountain(fountain, width, height);
  ImageBlock across = RenderFountain(fountain, height, width);
  if (!across) return {};
  return direction == kUp ? TurnClockwise(across) : TurnAnticlockwise(across);
}

class FountainStyleRecord final : public StyleRecord {
 public:
  FountainStyleRecord(ImageBlock picture, int32_t direction, int frames)
      : m_picture(std::move(picture)), m_direction(direction), m_frames(frames) {}

  int FrameCount() const override { return m_frames; }

  ImageBlock RenderFrame(int k) override {
    const int32_t length = Vertical(m_direction) ? m_picture.height() : m_picture.width();
    const int32_t n = ScrollOffset(length, k, m_frames);
    if (n == 0) return DuplicateGlobalBlock(m_picture);
    switch (m_direction) {
      case kUp: return RollUp(m_picture, n);
      case kLeft: return RollLeft(m_picture, n);
      case kDown: return RollDown(m_picture, n);
      default: return RollRight(m_picture, n);
    }
  }

 private:
  ImageBlock m_picture;
  int32_t m_direction;
  int m_frames;
};

std::unique_ptr<StyleRecord> InitFountain(const ParamReader& reader, Random&) {
  const int32_t width = reader.Spin(Id(kWidthControl));
  const int32_t height = reader.Spin(Id(kDepthControl));
  const int32_t frames = reader.Spin(Id(kFramesControl));
  // A reader that ignores the page's ranges must not make a size or a
  // modulus of zero.
  if (width <= 0 || height <= 0 || frames <= 0) return nullptr;
  int32_t direction = reader.Picker(Id(kScrollControl));
  // A value no cell shows (kept from a document or an edited configuration)
  // scrolls right, as a fresh page does, rather than showing nothing.
  if (direction < kUp || direction > kDown) direction = kRight;
  ImageBlock picture = UnrolledPicture(reader.Fountain(kFountainControl), direction, width, height);
  if (!picture) return nullptr;
  return std::unique_ptr<StyleRecord>(
      new (std::nothrow) FountainStyleRecord(std::move(picture), direction, frames));
}

}  // namespace

// A gradient has no single background colour.
StyleEntry FountainStyle() { return {"Fountain", kNumber, kPage, &InitFountain, &NoBackground}; }

}  // namespace tess
