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
    TileRows(kNumber, "48,1024,128"),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", "100,32760,1016"),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", "10,36,18"),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", "8,256,32"),
        Spin(Id(kFirstOwnControl), kLeft, 6, "Glare:", "Glare", "0,255,160"),
        Spin(Id(kFirstOwnControl + 1), kLeft, 7, "Shade:", "Shade", "0,255,70"),
        Spin(Id(kFirstOwnControl + 2), kLeft, 8, "Shadow offset:", "ShadowOffset", "0,32,8"),
        Spin(Id(kFirstOwnControl + 3), kLeft, 9, "Shadow opacity:", "ShadowOpacity",
             "1,255,255"),
        Background(kNumber, kRight, 0),
    },
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
