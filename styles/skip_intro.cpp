// Skip Intro: spokes wheeling round the centre of a square tile, in rings that
// sway. Size is the tile's side and the page has no Frames setting. The page
// is declared here; the effect renders in a later issue, so its entry has no
// init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 14;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

// Density counts rings of spokes, so it is small.
// How the spokes move, the "Mode:" list.
constexpr std::string_view kModes[] = {"Spin", "Pulse", "Spiral"};

constexpr std::array kPage = Join(
    std::array{
        Spin(Id(kSizeControl), kLeft, 0, "Size:", "Size", {16, 1024, 128}),
        Spin(Id(kFirstOwnControl), kLeft, 1, "Spokes:", "Spokes", {1, 32, 6}),
        DropDown(Id(kFirstOwnControl + 1), kLeft, 2, "Mode:", "Mode", kModes),
        Spin(Id(kDensityControl), kLeft, 3, "Density:", "Density", {1, 16, 3}),
        Spin(Id(kDriftControl), kLeft, 4, "Drift:", "Drift", {0, 99, 25}),
        Spin(Id(kSeedControl), kLeft, 5, "Seed:", "Seed", {100, 32760, 1014}),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry SkipIntroStyle() {
  return {"Skip Intro", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
