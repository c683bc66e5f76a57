// What the plug-in's windows say to each other: the private messages shared
// by the main dialog, its bound controls and the custom controls (fill
// buttons, pickers), and the few helpers every one of them needs. One home,
// so no two controls can disagree on a number.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <functional>
#include <string>

#include "shell/document.h"

namespace tess::win32 {

inline constexpr UINT kMsgShowPage = 1224;           // to the dialog: show the selected page
inline constexpr UINT kMsgInitControl = 1324;        // to a custom control: initialise it
inline constexpr UINT kMsgShowMenu = 1325;           // to a fill button: show its kind menu
inline constexpr UINT kMsgSyncFromText = 1326;       // to a picker: take the value from its text
inline constexpr UINT kMsgChangeNotice = 1327;       // to the dialog: a custom control changed
inline constexpr UINT kMsgWriteDocumentLine = 1334;  // lParam: DocumentLineRequest*
inline constexpr UINT kMsgReadDocumentLine = 1335;   // lParam: zero-terminated line

// What kMsgWriteDocumentLine carries: the writer the control hands itself to.
struct DocumentLineRequest {
  const std::function<void(const DocumentControl&)>* visit = nullptr;
};

// The window's whole text. May throw std::bad_alloc (caught by every
// window procedure).
std::string WindowText(HWND hwnd);

}  // namespace tess::win32
