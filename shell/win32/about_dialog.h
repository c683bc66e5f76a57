// The About box (template 1010): the emblem, the product's name, version
// and notice, and a Help button that opens the manual at "ABOUT".
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "base/report.h"
#include "shell/help.h"

namespace tess::win32 {

inline constexpr int kAboutDialogId = 1010;

// Runs the box modally over `owner`; the emblem class must be registered.
void RunAboutDialog(HINSTANCE instance, HWND owner, HelpService* help, Reporter& reporter);

}  // namespace tess::win32
