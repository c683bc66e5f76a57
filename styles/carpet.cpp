// Carpet: layers of woven pattern coloured from a fountain gradient. The page
// is declared here; the effect renders in a later issue, so its entry has no
// init yet. The fountain button keeps the built-in fountain number 496.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 13;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = {
    Spin(Id(kFramesControl), kLeft, 0, "Frames:", "Frames", {2, 32760, 64}),
    Spin(Id(kSizeControl), kLeft, 1, "Size:", "Size", {16, 1024, 128}),
    Spin(Id(kFirstOwnControl), kLeft, 2, "Layers:", "Layers", {1, 8, 2}),
    Spin(Id(kFirstOwnControl + 1), kLeft, 3, "Scale:", "Scale", {10, 100, 60}),
    Spin(Id(kSeedControl), kLeft, 4, "Seed:", "Seed", {100, 32760, 10000}),
    Fountain(496, kRight, 0),
};

}  // namespace

StyleEntry CarpetStyle() { return {"Carpet", kNumber, kPage, nullptr, &NoBackground}; }

}  // namespace tess
