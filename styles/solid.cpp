// Solid: the whole tile steps through the colours of a fountain gradient. The
// page is declared here; the effect renders in a later issue, so its entry has
// no init yet. The fountain button is the built-in 290.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 5;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = Join(
    TileRows(kNumber),
    std::array{
        Fountain(290, kRight, 0),
    });

}  // namespace

// The colour changes every frame, so there is no single background colour.
StyleEntry SolidStyle() { return {"Solid", kNumber, kPage, nullptr, &NoBackground}; }

}  // namespace tess
