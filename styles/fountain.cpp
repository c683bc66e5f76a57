// Fountain: a fountain gradient scrolled across the tile in one of four
// directions. The page is declared here; the effect renders in a later issue,
// so its entry has no init yet. The fountain button is the built-in 270.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 4;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Picker(Id(kScrollControl), kLeft, 3, "Scroll", PickerClass::kScroll4, 1),
        Fountain(270, kRight, 0),
    });

}  // namespace

// A gradient has no single background colour.
StyleEntry FountainStyle() { return {"Fountain", kNumber, kPage, nullptr, &NoBackground}; }

}  // namespace tess
