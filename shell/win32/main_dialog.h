// The plug-in's main dialog (template 1000, "Tessarine #1"): the effect
// list and its settings pages, the output options, the live sample and the
// animated emblem; "OK", "&Test" and "Preview" run the build driver, and
// "Open/Save" keeps whole sets of settings in documents. The configuration
// file is read when the dialog opens and written when it closes, whichever
// button closed it.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "plugin/host_interface.h"

namespace tess {

// Runs the dialog modally over `parent` with the module's resources from
// `instance`; `host` is the record PLUGINDoBuild was given (it may be null or
// lack a service function: the dialog then says "Internal error" and
// closes). Returns 1 after "OK", 0 after "Cancel" or a failed start, -1
// when the dialog could not be created at all. Never throws.
INT_PTR RunMainDialog(HINSTANCE instance, HWND parent, const HostRecord* host);

}  // namespace tess
