// Cubist: overlapping rounded blocks in up to five colours over a background.
// The page is declared here; the effect renders in a later issue, so its entry
// has no init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 2;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1002}),
        Spin(Id(kDensityControl), kLeft, 4, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kOpacityControl), kLeft, 5, "Opacity:", "FillOpacity", {1, 255, 255}),
        Spin(Id(kFirstOwnControl), kLeft, 6, "Thickness:", "Thickness", {1, 32, 6}),
        Spin(Id(kFirstOwnControl + 1), kLeft, 7, "Roundness:", "Roundness", {0, 100, 25}),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1),
    std::array{
        Check(Id(kFirstOwnControl + 2), kRight, 6, "Solid", "Solid"),
        Check(Id(kFirstOwnControl + 3), kRight, 7, "Vary opacity", "VariAlpha"),
        Check(Id(kFirstOwnControl + 4), kRight, 8, "Vary thickness", "VariWidth"),
    });

}  // namespace

StyleEntry CubistStyle() {
  return {"Cubist", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
