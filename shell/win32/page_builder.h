// Settings pages inside the main dialog: every page's controls are created
// from the style table's declarations as hidden children of the dialog (a
// label and the control per entry, an up-down after each number field), in
// the dialog's font, and bound to their settings. Showing a page shows its
// windows and hides every other page's.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <memory>
#include <span>
#include <vector>

#include "base/report.h"
#include "shell/settings.h"
#include "shell/win32/bound_controls.h"
#include "styles/style.h"

namespace tess::win32 {

struct PageBuildContext {
  HWND dialog = nullptr;
  HINSTANCE instance = nullptr;
  HFONT font = nullptr;
  POINT origin{};  // the pages' top-left corner in the dialog, in dialog units
  Settings* settings = nullptr;
  Reporter* reporter = nullptr;
  ColourChooser choose_colour;
};

// Creates one page's windows, placing them after `*insert_after` in tab
// order and moving it on to the last one, and adds their bound controls to
// `bound`. False when a window could not be created or bound; what was
// made stays with the dialog and goes with it.
bool CreatePage(const PageBuildContext& context, const StyleEntry& style, HWND* insert_after,
                std::vector<std::unique_ptr<BoundControl>>& bound);

// Shows the windows of page `shown` (an index into `table`, or none when it
// is out of range) and hides all others.
void ShowPages(HWND dialog, std::span<const StyleEntry> table, int shown);

}  // namespace tess::win32
