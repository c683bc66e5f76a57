// Bound control kinds. Values are read from and written to the windows
// themselves, so what a document saves is what the person sees; the settings
// follow every change.
#include "shell/win32/bound_controls.h"

#include <windowsx.h>

#include <algorithm>
#include <limits>
#include <new>

#include "platform/win32/owner_draw.h"
#include "shell/strings.h"

namespace tess::win32 {
namespace {

constexpr UINT_PTR kSubclassId = 1;

// A number as the field shows it: the value text's number, limited to what
// a 32-bit field can show.
int32_t FieldNumber(std::string_view value) {
  int64_t n = ParseValueNumber(value);
  return static_cast<int32_t>(std::clamp<int64_t>(n, std::numeric_limits<int32_t>::min(),
                                                  std::numeric_limits<int32_t>::max()));
}

void SetText(HWND hwnd, const std::string& text) { SetWindowTextA(hwnd, text.c_str()); }

// The up-down paired with a number field: same parent, id + 10000.
HWND UpDownOf(HWND field) {
  return GetDlgItem(GetParent(field), GetDlgCtrlID(field) + kUpDownIdOffset);
}

void ShowNumber(HWND field, int32_t value) {
  SetText(field, NumberValueText(value));
  if (HWND updown = UpDownOf(field)) SendMessageA(updown, UDM_SETPOS32, 0, value);
}

}  // namespace

// ---------------------------------------------------------------- subclass

BoundControl::~BoundControl() = default;

bool BoundControl::Attach(HWND hwnd) {
  if (!m_subclass.Attach(hwnd, &BoundControl::Procedure, kSubclassId,
                         reinterpret_cast<DWORD_PTR>(this)))
    return false;
  SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(m_setting));
  ShowSetting();
  return true;
}

int BoundControl::Number() const { return GetDlgCtrlID(hwnd()); }

LRESULT CALLBACK BoundControl::Procedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam,
                                         UINT_PTR, DWORD_PTR data) {
  auto* self = reinterpret_cast<BoundControl*>(data);
  try {
    return self->OnMessage(message, wparam, lparam);
  } catch (...) {
    self->m_reporter.ShowMessage(StringText(kStrMemoryError));
    return message == WM_NCDESTROY ? DefSubclassProc(hwnd, message, wparam, lparam) : 0;
  }
}

LRESULT BoundControl::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  HWND window = hwnd();
  switch (message) {
    case kMsgWriteDocumentLine: {
      if (!InDocuments()) break;
      auto* request = reinterpret_cast<const DocumentLineRequest*>(lparam);
      if (request && request->visit) (*request->visit)(*this);
      return 0;
    }
    case kMsgReadDocumentLine: {
      if (!InDocuments()) break;
      const char* line = reinterpret_cast<const char*>(lparam);
      return line && DeliverLine(*this, line) ? 1 : 0;
    }
    case WM_NCDESTROY:
      // The window goes before its object: nothing may call in afterwards.
      m_subclass.Detach();
      return DefSubclassProc(window, message, wparam, lparam);
  }
  return DefSubclassProc(window, message, wparam, lparam);
}

// ---------------------------------------------------------------- check box

bool CheckBoxControl::Checked() const { return Button_GetCheck(hwnd()) == BST_CHECKED; }

std::string CheckBoxControl::ValueText() const { return NumberValueText(Checked() ? 1 : 0); }

bool CheckBoxControl::TakeValue(std::string_view value) {
  Button_SetCheck(hwnd(), ValueOfText(m_control, value) != 0 ? BST_CHECKED : BST_UNCHECKED);
  if (m_slot) *m_slot = Checked() ? 1 : 0;
  return true;
}

bool CheckBoxControl::OnCommand(UINT code) {
  if (code != BN_CLICKED || !m_slot) return false;
  *m_slot = Checked() ? 1 : 0;
  return true;
}

void CheckBoxControl::ShowSetting() {
  if (m_slot) Button_SetCheck(hwnd(), *m_slot != 0 ? BST_CHECKED : BST_UNCHECKED);
}

// ---------------------------------------------------------------- spin fields

// A document line's value is shown as written, clamped only to what the
// field can show; the setting takes the value clamped to the range.
std::string SpinControl::ValueText() const {
  return LineText(m_control, ValueOfText(m_control, WindowText(hwnd())));
}

bool SpinControl::TakeValue(std::string_view value) {
  int32_t shown = FieldNumber(value);
  SetText(hwnd(), NumberValueText(shown));
  if (m_slot) *m_slot = ClampSpin(m_control.range, shown);
  return true;
}

bool SpinControl::OnCommand(UINT code) {
  if (code != EN_CHANGE || !m_slot) return false;
  *m_slot = ValueOfText(m_control, WindowText(hwnd()));
  return true;
}

void SpinControl::ShowSetting() {
  if (m_slot) ShowNumber(hwnd(), ShownValue(m_control, *m_slot));
}

std::string SignedSpinControl::ValueText() const {
  return LineText(m_control, ValueOfText(m_control, WindowText(hwnd())));
}

void SignedSpinControl::Store(int32_t value) {
  if (m_slot)
    *m_slot = value;
  else
    m_settings.SetTextAt(m_index, NumberValueText(value));
}

bool SignedSpinControl::TakeValue(std::string_view value) {
  int32_t shown = FieldNumber(value);
  SetText(hwnd(), NumberValueText(shown));
  Store(ClampSpin(m_control.range, shown));
  return true;
}

bool SignedSpinControl::OnCommand(UINT code) {
  if (code != EN_CHANGE) return false;
  Store(ValueOfText(m_control, WindowText(hwnd())));
  return true;
}

void SignedSpinControl::ShowSetting() {
  ShowNumber(hwnd(), m_slot ? ShownValue(m_control, *m_slot)
                            : ValueOfText(m_control, m_settings.TextAt(m_index)));
}

// ---------------------------------------------------------------- drop-down list

int DropDownControl::Selection() const { return ComboBox_GetCurSel(hwnd()); }

std::string DropDownControl::ValueText() const { return NumberValueText(Selection()); }

bool DropDownControl::TakeValue(std::string_view value) {
  ComboBox_SetCurSel(hwnd(), ValueOfText(m_control, value));
  if (m_slot) *m_slot = Selection();
  return true;
}

bool DropDownControl::OnCommand(UINT code) {
  bool closed_up = code == CBN_CLOSEUP;
  bool keyed = code == CBN_SELCHANGE && !ComboBox_GetDroppedState(hwnd());
  if (!(closed_up || keyed) || !m_slot) return false;
  *m_slot = Selection();
  return true;
}

void DropDownControl::ShowSetting() {
  if (m_slot) ComboBox_SetCurSel(hwnd(), *m_slot);
}

// ---------------------------------------------------------------- colour button

Colour ColourButtonControl::Value() const {
  return static_cast<Colour>(ValueOfText(m_control, WindowText(hwnd())));
}

std::string ColourButtonControl::ValueText() const {
  return LineText(m_control, static_cast<int32_t>(Value()));
}

void ColourButtonControl::Show(uint32_t colour) {
  SetText(hwnd(), UnsignedValueText(colour));
  InvalidateRect(hwnd(), nullptr, FALSE);
}

bool ColourButtonControl::TakeValue(std::string_view value) {
  uint32_t colour = static_cast<uint32_t>(ValueOfText(m_control, value));
  Show(colour);
  if (m_slot) *m_slot = static_cast<int32_t>(colour);
  return true;
}

bool ColourButtonControl::OnCommand(UINT code) {
  if (code != BN_CLICKED || !m_chooser) return false;
  Colour colour = Value() & 0x00FFFFFFu;
  if (!m_chooser(colour)) return false;
  Show(colour);
  if (m_slot) *m_slot = static_cast<int32_t>(colour);
  return true;
}

void ColourButtonControl::ShowSetting() {
  if (m_slot) Show(static_cast<uint32_t>(*m_slot));
}

void ColourButtonControl::Draw(const DRAWITEMSTRUCT& item) { DrawColourButtonFace(item, Value()); }

}  // namespace tess::win32
