// Settings pages inside the main dialog: every page's controls are created
// from the style table's declarations as hidden children of the dialog (a
// label and the control per entry, an up-down after each number field), in
// the dialog's font, and bound to their settings. Standard controls are
// bound by subclassing; fill buttons and direction pickers are windows of
// their own classes (fills/win32), which must be registered first, and are
// tied to their settings by their initialisation message.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <memory>
#include <vector>

#include "base/report.h"
#include "fills/win32/fill_button.h"
#include "shell/settings.h"
#include "fills/win32/fountain_environment.h"
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
  // Handed to every fill button with its own setting filled in.
  FillButtonLinks fill_links;
  // Handed to every fountain button; lives as long as the dialog.
  const FountainEnvironment* fountains = nullptr;
};

// Creates one page's windows after every existing child of the dialog (the
// template ends with the effect list and the page group box) and adds their
// bound controls to `bound`. False when a window could not be created or
// bound; what was made stays with the dialog and goes with it.
bool CreatePage(const PageBuildContext& context, const StyleEntry& style,
                std::vector<std::unique_ptr<BoundControl>>& bound);

// Shows or hides the windows of one page.
void ShowPage(HWND dialog, const StyleEntry& style, bool shown);

}  // namespace tess::win32
