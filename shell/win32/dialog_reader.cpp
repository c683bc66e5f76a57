// Reading settings from dialog controls. A failed text copy (memory) reads as
// an empty text: a reader never throws into a style.
#include "shell/win32/dialog_reader.h"

#include <windowsx.h>

#include <string>

#include "dialog/dialog_pages.h"
#include "shell/win32/bound_controls.h"

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

int32_t DialogParamReader::Spin(int id) const {
  HWND field = GetDlgItem(m_dialog, id);
  if (!field) return 0;
  return SpinFieldValue(TextOf(GetDlgItem(m_dialog, id + kUpDownIdOffset)), TextOf(field));
}

bool DialogParamReader::Checked(int id) const {
  return IsDlgButtonChecked(m_dialog, id) == BST_CHECKED;
}

Colour DialogParamReader::ColourValue(int id) const {
  return ColourTextValue(TextOf(GetDlgItem(m_dialog, id))) & 0x00FFFFFFu;
}

int32_t DialogParamReader::Selection(int id) const {
  HWND list = GetDlgItem(m_dialog, id);
  return list ? ComboBox_GetCurSel(list) : 0;
}

}  // namespace tess::win32
