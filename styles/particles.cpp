// Particles: shaded beads with glare and drop shadows streaming over a
// background. The page is declared here; the effect renders in a later issue,
// so its entry has no init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 17;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1017}),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", {10, 36, 18}),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", {8, 256, 32}),
    },
    ShadingRows(kNumber, kFirstOwnControl),
    std::array{Background(kNumber, kRight, 0)},
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry ParticlesStyle() {
  return {"Particles", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
