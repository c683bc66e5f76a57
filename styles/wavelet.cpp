// Wavelet: shaded ripples rolling across the tile in the scroll direction. The
// page is declared here; the effect renders in a later issue, so its entry has
// no init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 19;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1019}),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", {2, 64, 10}),
        Spin(Id(kFirstOwnControl), kLeft, 5, "Amplitude:", "Amplitude", {0, 100, 75}),
        Spin(Id(kFirstOwnControl + 1), kLeft, 6, "Glare:", "Glare", {0, 255, 160}),
        Spin(Id(kFirstOwnControl + 2), kLeft, 7, "Shade:", "Shade", {0, 255, 70}),
        // Eight number rows fill the left column: the picker goes under the colours.
        Picker(Id(kScrollControl), kRight, 6, "Scroll", PickerClass::kScroll4, 1),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry WaveletStyle() {
  return {"Wavelet", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
