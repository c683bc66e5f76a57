// Snow: translucent flakes falling and swaying over a background. The page is
// declared here; the effect renders in a later issue, so its entry has no init
// yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 15;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1015}),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", {10, 64, 18}),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kDriftControl), kLeft, 6, "Drift:", "Drift", {0, 99, 25}),
        Spin(Id(kOpacityControl), kLeft, 7, "Opacity:", "FillOpacity", {1, 255, 255}),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry SnowStyle() { return {"Snow", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>}; }

}  // namespace tess
