// The direction picker window classes "SDWDIR", "SCRL4D", "SCRL2D" and
// "SCRLHV": grids of arrow cells whose value is the clicked cell's index.
// What the cells are and mean lives in fills/picker.h; these windows only
// keep the value, paint it and answer the messages below and the document
// messages of shell/win32/bound_controls.h (a write request hands the writer
// a PickerState whose text is the window text).
//
// Invariants: a control's block (value and page variable) exists from
// kMsgInitControl to WM_DESTROY; WM_DESTROY copies the value to the page
// variable and frees the block. Before initialisation a control paints no
// selection, ignores clicks and reads as 0. No exception leaves a procedure.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstdint>

#include "platform/win32/control_messages.h"

namespace tess::win32 {

// kMsgInitControl: wParam the initial value; lParam the page's int32_t
// variable, which every click and the control's destruction update (give
// every picker one). A second initialisation replaces both. Returns 1, or 0
// when memory is short (the control then stays uninitialised).
// kMsgSyncFromText: the value becomes the control's window text read as an
// integer.
// kMsgChangeNotice: posted to the parent after every click on an initialised
// picker (outside the cells too): wParam the value, lParam the picker.

// Registers all four classes for `instance`, whose module must hold the
// glyph bitmaps (resources/pickers.rc). False, with none left registered,
// when any registration failed.
bool RegisterPickerClasses(HINSTANCE instance);
// Unregisters the four classes; every picker window must be gone by then.
void UnregisterPickerClasses(HINSTANCE instance);

// Keeps the classes registered for its lifetime.
class PickerClasses {
 public:
  explicit PickerClasses(HINSTANCE instance)
      : m_instance(instance), m_registered(RegisterPickerClasses(instance)) {}
  ~PickerClasses() {
    if (m_registered) UnregisterPickerClasses(m_instance);
  }
  PickerClasses(const PickerClasses&) = delete;
  PickerClasses& operator=(const PickerClasses&) = delete;
  explicit operator bool() const { return m_registered; }

 private:
  HINSTANCE m_instance;
  bool m_registered;
};

// The value of the picker `id` on `page`; 0 when there is no such picker
// or it was never initialised.
int32_t GetPickerValue(HWND page, int id);

}  // namespace tess::win32
