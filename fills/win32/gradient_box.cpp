// The gradient editor dialog. One GradientBox object on RunGradientBox's
// stack for the dialog's life, reached through the shared dialog trampoline.
// Which button shows which type, which fields a type uses and how a field
// writes into the record come from fills/gradient_editor.h; the pictures are
// rendered by the core and blitted here.
//
// Sections: the dialog · set-up · commands · drawing · entry point.
#include "fills/win32/gradient_box.h"

#include <windowsx.h>
#include <commctrl.h>

#include <array>
#include <string>

#include "fills/gradient_editor.h"
#include "platform/win32/dialog_trampoline.h"
#include "platform/win32/image_blit.h"
#include "platform/win32/owner_draw.h"
#include "shell/document.h"
#include "shell/help.h"
#include "shell/strings.h"

namespace tess::win32 {
namespace {

// ---------------------------------------------------------------- the dialog

class GradientBox {
 public:
  GradientBox(GradientRecord& record, const FillColourChooser& choose_colour,
              const FillHelp& show_help)
      : m_record(record), m_choose_colour(choose_colour), m_show_help(show_help) {}

  void Attach(HWND hwnd) { m_hwnd = hwnd; }
  void ReportFailure() {
    std::string text(StringText(kStrMemoryError));
    MessageBoxA(m_hwnd, text.c_str(), "Message", MB_OK);
  }
  INT_PTR HandleMessage(UINT message, WPARAM wparam, LPARAM lparam);

 private:
  static GradientBox* Self(HWND hwnd) {
    return reinterpret_cast<GradientBox*>(GetWindowLongPtrA(hwnd, DWLP_USER));
  }
  // Cracker-shaped forwarders.
  static BOOL OnInitDialog(HWND hwnd, HWND, LPARAM) { return Self(hwnd)->Init(); }
  static void OnCommand(HWND hwnd, int id, HWND, UINT code) { Self(hwnd)->Command(id, code); }
  static void OnDrawItem(HWND hwnd, const DRAWITEMSTRUCT* item) { Self(hwnd)->Draw(*item); }

  BOOL Init();
  void RenderTypeSamples();
  void EnableFields();
  void Command(int id, UINT code);
  void FieldChanged(const GradientFieldInfo& field);
  void ChooseType(uint32_t type);
  void ChooseColour(Colour& colour, int button);
  void RedrawPreview() { InvalidateRect(GetDlgItem(m_hwnd, kGradientPreview), nullptr, FALSE); }
  void Draw(const DRAWITEMSTRUCT& item);
  void DrawTypeButton(const DRAWITEMSTRUCT& item, size_t index);
  void DrawPreview(const DRAWITEMSTRUCT& item);

  HWND m_hwnd = nullptr;
  GradientRecord& m_record;
  const FillColourChooser& m_choose_colour;
  const FillHelp& m_show_help;
  // What each type button shows, in kGradientTypeButtons order; they never
  // change while the dialog is open.
  std::array<ImageBlock, kGradientTypeButtons.size()> m_type_samples;
};

INT_PTR GradientBox::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_INITDIALOG: return HANDLE_WM_INITDIALOG(m_hwnd, wparam, lparam, OnInitDialog);
    case WM_COMMAND: HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand); return TRUE;
    case WM_DRAWITEM: HANDLE_WM_DRAWITEM(m_hwnd, wparam, lparam, OnDrawItem); return TRUE;
  }
  return FALSE;
}

// ---------------------------------------------------------------- set-up

// The fields' ranges replace the template's; the texts are set before the
// dialog shows, so their change notices write nothing.
BOOL GradientBox::Init() {
  for (const GradientFieldInfo& field : kGradientFields) {
    SendDlgItemMessageA(m_hwnd, field.updown, UDM_SETRANGE32, static_cast<WPARAM>(field.min),
                        field.max);
    int32_t value = GradientFieldValue(m_record, field.field);
    SendDlgItemMessageA(m_hwnd, field.updown, UDM_SETPOS32, 0, value);
    SetDlgItemTextA(m_hwnd, field.id, NumberValueText(value).c_str());
  }
  RenderTypeSamples();
  EnableFields();
  return TRUE;
}

// Inside the 2-pixel sunken or raised edge every type button gets.
void GradientBox::RenderTypeSamples() {
  for (size_t i = 0; i < kGradientTypeButtons.size(); ++i) {
    RECT r;
    if (!GetClientRect(GetDlgItem(m_hwnd, kGradientTypeButtons[i].id), &r)) continue;
    m_type_samples[i] =
        RenderGradientTypeSample(kGradientTypeButtons[i].type, r.right - 4, r.bottom - 4);
  }
}

void GradientBox::EnableFields() {
  for (const GradientFieldInfo& field : kGradientFields) {
    bool on = GradientFieldEnabled(m_record.grad_type, field.field);
    for (int id : {field.id, field.updown, field.label})
      if (HWND control = id ? GetDlgItem(m_hwnd, id) : nullptr) EnableWindow(control, on);
  }
}

// ---------------------------------------------------------------- commands

void GradientBox::Command(int id, UINT code) {
  switch (id) {
    case IDOK: EndDialog(m_hwnd, 1); return;
    case IDCANCEL: EndDialog(m_hwnd, 0); return;
    case kGradientHelpButton:
      if (m_show_help) m_show_help(m_hwnd, kHelpAnchorGradient);
      return;
    case kGradientStartColour: ChooseColour(m_record.grad_start, id); return;
    case kGradientEndColour: ChooseColour(m_record.grad_end, id); return;
  }
  if (std::optional<uint32_t> type = GradientTypeOfButton(id)) {
    ChooseType(*type);
    return;
  }
  for (const GradientFieldInfo& field : kGradientFields)
    if (field.id == id && code == EN_CHANGE) FieldChanged(field);
}

// Only the person's typing counts, which can only happen while the dialog
// shows; the field is read as signed and clamped by the field's rule.
void GradientBox::FieldChanged(const GradientFieldInfo& field) {
  if (!IsWindowVisible(m_hwnd)) return;
  std::string text = WindowText(GetDlgItem(m_hwnd, field.id));
  SetGradientField(m_record, field.field, ParseValueNumber(text));
  RedrawPreview();
}

void GradientBox::ChooseType(uint32_t type) {
  m_record.grad_type = type;
  for (const GradientTypeButton& button : kGradientTypeButtons)
    InvalidateRect(GetDlgItem(m_hwnd, button.id), nullptr, FALSE);
  EnableFields();
  RedrawPreview();
}

void GradientBox::ChooseColour(Colour& colour, int button) {
  Colour chosen = colour & 0xFFFFFFu;
  if (!m_choose_colour || !m_choose_colour(m_hwnd, chosen)) return;
  colour = chosen & 0xFFFFFFu;
  InvalidateRect(GetDlgItem(m_hwnd, button), nullptr, FALSE);
  RedrawPreview();
}

// ---------------------------------------------------------------- drawing

void GradientBox::Draw(const DRAWITEMSTRUCT& item) {
  const int id = static_cast<int>(item.CtlID);
  if (id == kGradientPreview) return DrawPreview(item);
  if (id == kGradientStartColour) return DrawColourButtonFace(item, m_record.grad_start);
  if (id == kGradientEndColour) return DrawColourButtonFace(item, m_record.grad_end);
  for (size_t i = 0; i < kGradientTypeButtons.size(); ++i)
    if (kGradientTypeButtons[i].id == id) return DrawTypeButton(item, i);
}

// The chosen type's button is sunken, the others raised; a button held down
// shows sunken too, so it answers the press.
void GradientBox::DrawTypeButton(const DRAWITEMSTRUCT& item, size_t index) {
  RECT r = item.rcItem;
  bool chosen = kGradientTypeButtons[index].type == m_record.grad_type;
  bool sunken = chosen || (item.itemState & ODS_SELECTED);
  FillRect(item.hDC, &r, GetSysColorBrush(COLOR_BTNFACE));
  DrawEdge(item.hDC, &r, sunken ? EDGE_SUNKEN : EDGE_RAISED, BF_RECT);
  BlitImage(item.hDC, r.left + 2, r.top + 2, m_type_samples[index]);
  if (item.itemState & ODS_FOCUS) {
    InflateRect(&r, -3, -3);
    DrawFocusRect(item.hDC, &r);
  }
}

// Rendered from a copy at every paint, so it always shows the record as it
// stands; the margin shows the dialog's face.
void GradientBox::DrawPreview(const DRAWITEMSTRUCT& item) {
  RECT r = item.rcItem;
  FillRect(item.hDC, &r, GetSysColorBrush(COLOR_BTNFACE));
  const int32_t m = kGradientPreviewMargin;
  ImageBlock preview = RenderGradientSample(m_record, r.right - r.left - 2 * m, r.bottom - r.top - 2 * m);
  BlitImage(item.hDC, r.left + m, r.top + m, preview);
}

}  // namespace

// ---------------------------------------------------------------- entry point

bool RunGradientBox(HINSTANCE instance, HWND owner, GradientRecord& record,
                    const FillColourChooser& choose_colour, const FillHelp& show_help) {
  try {
    GradientBox box(record, choose_colour, show_help);
    return DialogBoxParamA(instance, kGradientBoxTemplate, owner, &DialogTrampoline<GradientBox>,
                           reinterpret_cast<LPARAM>(&box)) == 1;
  } catch (...) {
    return false;
  }
}

}  // namespace tess::win32
