// The one dialog procedure of each dialog kind. The object handed to
// DialogBoxParam arrives with WM_INITDIALOG and is kept in the dialog's
// DWLP_USER slot; every message after that goes to its HandleMessage. No
// exception leaves: the kind's ReportFailure shows "Memory error".
//
// A kind provides: void Attach(HWND), INT_PTR HandleMessage(UINT, WPARAM,
// LPARAM) and void ReportFailure().
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace tess::win32 {

template <class Kind>
INT_PTR CALLBACK DialogTrampoline(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  Kind* self = nullptr;
  if (message == WM_INITDIALOG) {
    self = reinterpret_cast<Kind*>(lparam);
    SetWindowLongPtrA(hwnd, DWLP_USER, lparam);
    if (self) self->Attach(hwnd);
  } else {
    self = reinterpret_cast<Kind*>(GetWindowLongPtrA(hwnd, DWLP_USER));
  }
  if (!self) return FALSE;
  try {
    return self->HandleMessage(message, wparam, lparam);
  } catch (...) {
    self->ReportFailure();
    return FALSE;
  }
}

}  // namespace tess::win32
