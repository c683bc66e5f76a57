// The gradient editor, dialog template "GradientBox" ("Gradient"): four
// type buttons, the start and end colours, rotation and centre fields and a
// live preview. Every change goes straight into the record it edits, so the
// edits stay even when the person leaves with Cancel; callers refresh what
// shows the record (a swatch) only after OK.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "fills/fill_descriptor.h"
#include "fills/win32/fill_button.h"

namespace tess::win32 {

inline constexpr const char* kGradientBoxTemplate = "GradientBox";

// Runs the editor modally over `owner` with the template from `instance`.
// True after OK; false after Cancel or when the dialog could not be made.
// Never throws.
bool RunGradientBox(HINSTANCE instance, HWND owner, GradientRecord& record,
                    const FillColourChooser& choose_colour, const FillHelp& show_help);

}  // namespace tess::win32
