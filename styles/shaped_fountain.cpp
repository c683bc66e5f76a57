// Shaped Fountain: concentric shapes whose colours flow through a fountain
// gradient on a square tile of side Size. The page is declared here; the
// effect renders in a later issue, so its entry has no init yet. The fountain
// button is the built-in 306; the picker is the two-way one.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 6;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

// The ring shapes of the "Shape:" list.
constexpr std::string_view kShapes[] = {"Circle", "Diamond", "Square", "Biscuit"};

constexpr std::array kPage = {
    Spin(Id(kSizeControl), kLeft, 0, "Size:", "Size", {16, 1024, 128}),
    Spin(Id(kFramesControl), kLeft, 1, "Frames:", "Frames", {2, 32760, 64}),
    Picker(Id(kScrollControl), kLeft, 2, "Scroll", PickerClass::kScroll2, 1),
    DropDown(Id(kFirstOwnControl), kLeft, 4, "Shape:", "Shape", kShapes),
    Fountain(306, kRight, 0),
};

}  // namespace

// The rings cover the whole tile: no background colour.
StyleEntry ShapedFountainStyle() {
  return {"Shaped Fountain", kNumber, kPage, nullptr, &NoBackground};
}

}  // namespace tess
