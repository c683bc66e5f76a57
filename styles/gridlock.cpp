// Gridlock: shaded blocks sliding along a grid in the enabled directions. The
// page is declared here; the effect renders in a later issue, so its entry has
// no init yet. Its tile is at least 48 pixels so a block always fits.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 16;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber, {48, 1024, 128}),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 1016}),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", {10, 36, 18}),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", {8, 256, 32}),
    },
    ShadingRows(kNumber, kFirstOwnControl),
    std::array{Background(kNumber, kRight, 0)},
    ColourRows(kNumber, 1),
    std::array{
        Check(Id(kFirstOwnControl + 4), kRight, 6, "Up", "DirUp"),
        Check(Id(kFirstOwnControl + 5), kRight, 7, "Down", "DirDown"),
        Check(Id(kFirstOwnControl + 6), kRight, 8, "Left", "DirLeft"),
        Check(Id(kFirstOwnControl + 7), kRight, 9, "Right", "DirRight"),
    });

}  // namespace

StyleEntry GridlockStyle() {
  return {"Gridlock", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
