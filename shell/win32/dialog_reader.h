// ParamReader over a dialog's controls, by control id: what the styles and
// the build driver read. Every value comes from the window as the person
// left it, read the way the bound controls read it, so a sample, a build and
// a saved document always agree.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <memory>
#include <vector>

#include "shell/win32/bound_controls.h"
#include "styles/style.h"

namespace tess::win32 {

class DialogParamReader final : public ParamReader {
 public:
  using Controls = std::vector<std::unique_ptr<BoundControl>>;

  // `controls` are the dialog's bound controls, which know their
  // declarations; they must outlive the reader.
  explicit DialogParamReader(const Controls& controls, HWND dialog = nullptr)
      : m_controls(controls), m_dialog(dialog) {}
  void set_dialog(HWND dialog) { m_dialog = dialog; }

  // The field's number as its kind reads it: clamped to the declared range
  // (the bound control's, else the page declaration's, else 0..100); 0
  // without a field.
  int32_t Spin(int id) const override;
  // False for a missing control, such as 35, which the template leaves out.
  bool Checked(int id) const override;
  // A fill button's Simple colour, else the colour button's text as a
  // colour; low 24 bits.
  Colour ColourValue(int id) const override;
  // The drop-down's selected index, -1 for none, 0 for a missing control.
  int32_t Selection(int id) const override;
  // The picker's value (fills/win32/picker_control.h), 0 without one.
  int32_t Picker(int id) const override;
  // The fountain button's record; the control's built-in (or the default)
  // without a button.
  FountainRecord Fountain(int id) const override;
  // The fill button's record as it stands; a Simple fill of ColourValue
  // without an initialised fill button.
  FillDescriptor Fill(int id) const override;

 private:
  const PageControl* Declaration(int id) const;

  const Controls& m_controls;
  HWND m_dialog;
};

}  // namespace tess::win32
