// Neural Network: a grid of shaded nodes with pulses running along the links.
// Width and Depth count nodes here, not pixels (the tile is the grid times the
// node spacing), hence "Columns:" and "Rows:". The page is declared here; the
// effect renders in a later issue, so its entry has no init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 18;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

// Shadows are off by default here (offset and opacity 0), so both ranges start at 0.
constexpr std::array kPage = Join(
    std::array{
        Spin(Id(kWidthControl), kLeft, 0, "Columns:", "Width", {2, 64, 12}),
        Spin(Id(kDepthControl), kLeft, 1, "Rows:", "Depth", {2, 64, 8}),
        Spin(Id(kSeedControl), kLeft, 2, "Seed:", "Seed", {100, 32760, 1018}),
        Spin(Id(kSizeControl), kLeft, 3, "Size:", "Size", {8, 64, 14}),
        Spin(Id(kDensityControl), kLeft, 4, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kFirstOwnControl), kLeft, 5, "Padding:", "Padding", {0, 32, 0}),
    },
    ShadingRows(kNumber, kFirstOwnControl + 1, false),
    std::array{Background(kNumber, kRight, 0)},
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry NeuralNetworkStyle() {
  return {"Neural Network", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
