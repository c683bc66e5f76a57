// The fountain dialog: the marker editor ("BRNDFOUN") showing the gradient
// large with a handle per marker, the start and end colours, open or
// closed, OK, Cancel and Help. It edits a copy, so only OK changes the
// caller's record; the editor keeps at most 64 markers.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "fills/fountain.h"
#include "fills/win32/fountain_environment.h"

namespace tess::win32 {

inline constexpr const char* kFountainEditorClassName = "BRNDFOUN";

// The marker editor's menu commands, also taken as WM_COMMAND by the editor
// window itself, where they act on the selected handle.
inline constexpr int kCmdAddToLibrary = 6101;
inline constexpr int kCmdManageLibrary = 6102;
inline constexpr int kCmdDeleteMarker = 6103;
inline constexpr int kCmdChangeColour = 6104;
inline constexpr int kCmdAdjustPosition = 6105;

// Runs the dialog modally over `owner` on a copy of `record`; true, with
// the copy written back, when it ended with OK.
bool RunFountainDialog(HWND owner, const FountainEnvironment& environment, FountainRecord& record);

// The editor class, for RegisterFountainClasses.
bool RegisterFountainEditorClass(HINSTANCE instance);
void UnregisterFountainEditorClass(HINSTANCE instance);

}  // namespace tess::win32
