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
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", "100,32760,1017"),
        Spin(Id(kSizeControl), kLeft, 4, "Size:", "Size", "10,36,18"),
        Spin(Id(kDensityControl), kLeft, 5, "Density:", "Density", "8,256,32"),
        Spin(Id(kFirstOwnControl), kLeft, 6, "Glare:", "Glare", "0,255,160"),
        Spin(Id(kFirstOwnControl + 1), kLeft, 7, "Shade:", "Shade", "0,255,70"),
        Spin(Id(kFirstOwnControl + 2), kLeft, 8, "Shadow offset:", "ShadowOffset", "0,32,8"),
        Spin(Id(kFirstOwnControl + 3), kLeft, 9, "Shadow opacity:", "ShadowOpacity",
             "1,255,255"),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry ParticlesStyle() {
  return {"Particles", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
