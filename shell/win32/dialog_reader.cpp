// Reading settings from dialog controls. A failed text copy (memory) reads as
// an empty text: a reader never throws into a style.
#include "shell/win32/dialog_reader.h"

#include <windowsx.h>

#include <string>

#include "controls/control_kinds.h"
#include "fills/win32/fountain_control.h"
#include "fills/win32/fill_button.h"
#include "fills/win32/picker_control.h"
#include "styles/style_table.h"

namespace tess::win32 {
namespace {

std::string TextOf(HWND hwnd) {
  if (!hwnd) return {};
  try {
    return WindowText(hwnd);
  } catch (...) {
    return {};
  }
}

}  // namespace

const PageControl* DialogParamReader::Declaration(int id) const {
  for (const auto& control : m_controls)
    if (control->Number() == id) return &control->control();
  return FindPageControl(id).control;
}

int32_t DialogParamReader::Spin(int id) const {
  HWND field = GetDlgItem(m_dialog, id);
  if (!field) return 0;
  static constexpr PageControl kUndeclared{0, ControlKind::kSpin, nullptr, nullptr, {}, {}, 0, 0, 0, 0};
  const PageControl* c = Declaration(id);
  return ValueOfText(c ? *c : kUndeclared, TextOf(field));
}

int32_t DialogParamReader::Picker(int id) const { return GetPickerValue(m_dialog, id); }

FillDescriptor DialogParamReader::Fill(int id) const {
  FillDescriptor record;
  if (GetFillButtonRecord(m_dialog, id, record)) return record;
  return ParamReader::Fill(id);
}

bool DialogParamReader::Checked(int id) const {
  return IsDlgButtonChecked(m_dialog, id) == BST_CHECKED;
}

Colour DialogParamReader::ColourValue(int id) const {
  FillDescriptor record;
  if (GetFillButtonRecord(m_dialog, id, record)) return record.colour & 0x00FFFFFFu;
  return ColourTextValue(TextOf(GetDlgItem(m_dialog, id))) & 0x00FFFFFFu;
}

int32_t DialogParamReader::Selection(int id) const {
  HWND list = GetDlgItem(m_dialog, id);
  return list ? ComboBox_GetCurSel(list) : 0;
}

FountainRecord DialogParamReader::Fountain(int id) const {
  if (auto record = GetFountainRecord(GetDlgItem(m_dialog, id))) return *record;
  return ParamReader::Fountain(id);
}

}  // namespace tess::win32
