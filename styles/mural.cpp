// Mural: a matrix tile pattern scrolled through its own tile. The tile size is
// the pattern's, so the page has no Width or Depth. The page is declared here;
// the effect renders in a later issue, so its entry has no init yet.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 8;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

constexpr std::array kPage = {
    Spin(Id(kFramesControl), kLeft, 0, "Frames:", "Frames", {2, 32760, 64}),
    Picker(Id(kScrollControl), kLeft, 1, "Scroll", PickerClass::kScroll4, 1),
    Spin(Id(kFirstOwnControl), kLeft, 5, "Resize:", "Resize", {10, 100, 50}),
    Matrix(Id(kFirstOwnControl + 1), kRight, 0),
};

}  // namespace

StyleEntry MuralStyle() { return {"Mural", kNumber, kPage, nullptr, &NoBackground}; }

}  // namespace tess
