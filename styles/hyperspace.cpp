// Hyperspace: streaks of light rushing past in the scroll direction. The page
// is declared here; the effect renders in a later issue, so its entry has no
// init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 1;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1001}),
        Spin(Id(kDensityControl), kLeft, 4, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kOpacityControl), kLeft, 5, "Opacity:", "FillOpacity", {1, 255, 255}),
        Picker(Id(kScrollControl), kLeft, 6, "Scroll", PickerClass::kScroll4, 1),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry HyperspaceStyle() {
  return {"Hyperspace", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
