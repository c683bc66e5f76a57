// White Noise: flickering blocks of a light and a dark fill, like a lost
// signal. The page is declared here; the effect renders in a later issue, so
// its entry has no init yet. Two fills cover the tile: no background colour.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 9;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Spin(Id(kSeedControl), kLeft, 3, "Seed:", "Seed", {100, 32760, 10000}),
        Spin(Id(kSizeControl), kLeft, 4, "Pixel size:", "Size", {1, 8, 2}),
        Spin(Id(kFirstOwnControl), kLeft, 5, "Interference:", "Interference", {0, 255, 160}),
        Check(Id(kFirstOwnControl + 1), kLeft, 6, "Random delay", "RandomDelay"),
        FillButton(Id(kFirstOwnControl + 2), kRight, 0, "Light fill:", "LightFill"),
        FillButton(Id(kFirstOwnControl + 3), kRight, 1, "Dark fill:", "DarkFill"),
    });

}  // namespace

StyleEntry WhiteNoiseStyle() { return {"White Noise", kNumber, kPage, nullptr, &NoBackground}; }

}  // namespace tess
