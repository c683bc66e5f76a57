// The fountain library from the editor's menu: appending the fountain to
// the library of its kind, and "FountainLibraryManageBox", where entries
// are reviewed as previews, reordered by dragging and deleted (each change
// saved to the library file at once) and one may be chosen with OK.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "fills/fountain.h"
#include "fills/win32/fountain_environment.h"

namespace tess::win32 {

// Appends `record` to the library its mode selects, creating the file (and
// its folder) when missing. A failure shows "There has been an error
// updating the fountain library." over `owner` and returns false.
bool AddToFountainLibrary(HWND owner, const FountainEnvironment& environment,
                          const FountainRecord& record);

// Runs the manage box over `owner` on the library `record`'s mode selects.
// OK copies the selected entry's four fields into `record` and returns
// true; Cancel leaves `record` as it was. Deleting and dragging rewrite the
// library file at once, whichever way the box ends.
bool ManageFountainLibrary(HWND owner, const FountainEnvironment& environment,
                           FountainRecord& record);

}  // namespace tess::win32
