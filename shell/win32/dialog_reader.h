// ParamReader over a dialog's controls, by control id: what the styles and
// the build driver read. Every value comes from the window as the person
// left it, read the way the bound controls read it, so a sample, a build and
// a saved document always agree.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "styles/style.h"

namespace tess::win32 {

class DialogParamReader final : public ParamReader {
 public:
  explicit DialogParamReader(HWND dialog = nullptr) : m_dialog(dialog) {}
  void set_dialog(HWND dialog) { m_dialog = dialog; }

  // The field's number clamped to its up-down's range text; 0 without a
  // field, and a 0..100 range without an up-down.
  int32_t Spin(int id) const override;
  // False for a missing control, such as 35, which the template leaves out.
  bool Checked(int id) const override;
  // The colour button's text as a colour, low 24 bits.
  Colour ColourValue(int id) const override;
  // The drop-down's selected index, -1 for none, 0 for a missing control.
  int32_t Selection(int id) const override;

 private:
  HWND m_dialog;
};

}  // namespace tess::win32
