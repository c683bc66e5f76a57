// Machine: interlocking gears turning on a square tile, shaded from a start to
// an end colour. The page is declared here; the effect renders in a later
// issue, so its entry has no init yet. Gears cover the tile: no background.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 12;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = {
    Spin(Id(kSizeControl), kLeft, 0, "Size:", "Size", {16, 1024, 128}),
    Spin(Id(kFirstOwnControl), kLeft, 1, "Rotation:", "Rotation", {1, 90, 22}),
    Spin(Id(kFirstOwnControl + 1), kLeft, 2, "Offset:", "Offset", {0, 359, 180}),
    Check(Id(kFirstOwnControl + 2), kLeft, 3, "Inverse", "Inverse"),
    ColourButton(Id(kFirstOwnControl + 3), kRight, 0, "Start:", "Start"),
    ColourButton(Id(kFirstOwnControl + 4), kRight, 1, "End:", "End"),
};

}  // namespace

StyleEntry MachineStyle() { return {"Machine", kNumber, kPage, nullptr, &NoBackground}; }

}  // namespace tess
