// Gumdrops: bevelled sweets drifting over a background, each colour with its
// own shape. The page is declared here; the effect renders in a later issue,
// so its entry has no init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 7;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

// "Shape 1:" to "Shape 5:" give the shape of the drops in colours 1 to 5.
constexpr std::string_view kShapes[] = {"Square", "Round", "Diamond", "Heart", "Star"};

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSizeControl), kLeft, 3, "Size:", "Size", {10, 64, 18}),
        Spin(Id(kSeedControl), kLeft, 4, "Seed:", "Seed", {100, 32760, 12329}),
        DropDown(Id(kFirstOwnControl), kLeft, 5, "Shape 1:", "Style1", kShapes),
        DropDown(Id(kFirstOwnControl + 1), kLeft, 6, "Shape 2:", "Style2", kShapes),
        DropDown(Id(kFirstOwnControl + 2), kLeft, 7, "Shape 3:", "Style3", kShapes),
        DropDown(Id(kFirstOwnControl + 3), kLeft, 8, "Shape 4:", "Style4", kShapes),
        DropDown(Id(kFirstOwnControl + 4), kLeft, 9, "Shape 5:", "Style5", kShapes),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1),
    std::array{
        Spin(Id(kDensityControl), kRight, 6, "Density:", "Density", {8, 256, 32}),
        Spin(Id(kDriftControl), kRight, 7, "Drift:", "Drift", {0, 99, 25}),
        Check(Id(kFirstOwnControl + 5), kRight, 8, "Bevel", "BevelEnable"),
    });

}  // namespace

StyleEntry GumdropsStyle() {
  return {"Gumdrops", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>};
}

}  // namespace tess
