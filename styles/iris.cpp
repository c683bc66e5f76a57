// Iris: rings opening from the centre of the tile, each ring band drawn in its
// own pattern. The page is declared here; the effect renders in a later issue,
// so its entry has no init yet. At least 16 frames keep the opening smooth.
#include "styles/effects.h"
#include "styles/page_layout.h"

namespace tess {
namespace {

using namespace page;
constexpr int kNumber = 3;
constexpr int Id(int n) { return PageControlId(kNumber, n); }

// "Ring 1:" to "Ring 6:" choose the pattern of the six ring bands.
constexpr std::string_view kRingPatterns[] = {"Plain", "Outline", "Dots", "Dashes", "Stripes", "Checks", "Rays", "Soft"};

constexpr std::array kPage = Join(
    std::array{
        Spin(Id(kFramesControl), kLeft, 0, "Frames:", "Frames", {16, 32760, 64}),
        Spin(Id(kSizeControl), kLeft, 1, "Iris size:", "Size", {8, 48, 12}),
        DropDown(Id(kFirstOwnControl), kLeft, 2, "Ring 1:", "Style1", kRingPatterns),
        DropDown(Id(kFirstOwnControl + 1), kLeft, 3, "Ring 2:", "Style2", kRingPatterns),
        DropDown(Id(kFirstOwnControl + 2), kLeft, 4, "Ring 3:", "Style3", kRingPatterns),
        DropDown(Id(kFirstOwnControl + 3), kLeft, 5, "Ring 4:", "Style4", kRingPatterns),
        DropDown(Id(kFirstOwnControl + 4), kLeft, 6, "Ring 5:", "Style5", kRingPatterns),
        DropDown(Id(kFirstOwnControl + 5), kLeft, 7, "Ring 6:", "Style6", kRingPatterns),
        Background(kNumber, kRight, 0),
    },
    ColourRows(kNumber, 1));

}  // namespace

StyleEntry IrisStyle() { return {"Iris", kNumber, kPage, nullptr, &BackgroundQuery<kNumber>}; }

}  // namespace tess
