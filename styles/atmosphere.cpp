// Atmosphere: a drifting mesh of haze coloured from a fountain gradient. The
// page is declared here; the effect renders in a later issue, so its entry has
// no init yet. The fountain button keeps the built-in fountain number 451.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 11;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = {
    Spin(Id(kFramesControl), kLeft, 0, "Frames:", "Frames", {2, 32760, 64}),
    Spin(Id(kSizeControl), kLeft, 1, "Size:", "Size", {16, 1024, 128}),
    Spin(Id(kDensityControl), kLeft, 2, "Density:", "Density", {8, 256, 32}),
    Spin(Id(kFirstOwnControl), kLeft, 3, "Mesh:", "Mesh", {2, 64, 8}),
    Spin(Id(kFirstOwnControl + 1), kLeft, 4, "Elevation:", "Elevation", {0, 100, 10}),
    Spin(Id(kSeedControl), kLeft, 5, "Seed:", "Seed", {100, 32760, 10000}),
    Fountain(451, kRight, 0),
};

}  // namespace

StyleEntry AtmosphereStyle() { return {"Atmosphere", kNumber, kPage, nullptr, &NoBackground}; }

}  // namespace tess
