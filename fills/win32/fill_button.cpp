// The fill button's window procedure. One FillButton object per window, made
// at WM_NCCREATE and deleted at WM_NCDESTROY; geometry, mouse rules and the
// kind menu come from fills/fill_button_look.h, the swatch from RenderFill,
// the document line from controls/fill_line.h. This file moves values
// between those, the window and GDI.
//
// Sections: the button · painting · mouse and menu · editing · document
// lines · procedure and class.
#include "fills/win32/fill_button.h"

#include <windowsx.h>

#include <new>
#include <optional>
#include <string>
#include <utility>

#include "controls/control_kinds.h"
#include "controls/fill_line.h"
#include "fills/fill_button_look.h"
#include "fills/fill_render.h"
#include "fills/win32/gradient_box.h"
#include "platform/platform.h"
#include "platform/win32/image_blit.h"
#include "shell/paths.h"

namespace tess::win32 {
namespace {

// ---------------------------------------------------------------- the button

class FillButton {
 public:
  explicit FillButton(HWND hwnd) : m_hwnd(hwnd) {}

  static FillButton* Of(HWND hwnd) {
    return reinterpret_cast<FillButton*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
  }
  LRESULT HandleMessage(UINT message, WPARAM wparam, LPARAM lparam);
  const FillDescriptor* record() const { return m_record ? &*m_record : nullptr; }

 private:
  // Cracker-shaped forwarders.
  static void OnLButtonDown(HWND hwnd, BOOL, int x, int y, UINT) { Of(hwnd)->Press({x, y}); }
  static void OnLButtonUp(HWND hwnd, int, int, UINT) { Of(hwnd)->Release(); }
  static void OnCommand(HWND hwnd, int id, HWND, UINT) { Of(hwnd)->Command(id); }
  static void OnPaint(HWND hwnd) {
    PaintScope paint(hwnd);
    Of(hwnd)->Paint(paint.dc());
  }
  static void OnDestroy(HWND hwnd) { Of(hwnd)->Destroy(); }

  LRESULT Init(const FillButtonLinks* links, Colour default_colour);
  void Paint(HDC dc) const;
  void Press(Point p);
  void Release();
  void Command(int id);
  void ShowMenu();
  void ChooseKind(uint32_t kind);
  void Edit();
  void WriteLine(LPARAM lparam);
  LRESULT ReadLine(LPARAM lparam);
  void Destroy();

  Rect Client() const;
  HINSTANCE Module() const {
    return reinterpret_cast<HINSTANCE>(GetClassLongPtrA(m_hwnd, GCLP_HMODULE));
  }
  void RenderSwatch();
  void Repaint() { InvalidateRect(m_hwnd, nullptr, FALSE); }
  void KeepSettingInStep();
  void Changed();

  HWND m_hwnd;
  std::optional<FillDescriptor> m_record;  // none until initialised
  ImageBlock m_swatch;
  FillButtonLinks m_links;
};

LRESULT FillButton::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case kMsgInitControl:
      return Init(reinterpret_cast<const FillButtonLinks*>(wparam), static_cast<Colour>(lparam));
    case kMsgShowMenu: ShowMenu(); return 0;
    case kMsgWriteDocumentLine: WriteLine(lparam); return 0;
    case kMsgReadDocumentLine: return ReadLine(lparam);
    case WM_LBUTTONDOWN: return HANDLE_WM_LBUTTONDOWN(m_hwnd, wparam, lparam, OnLButtonDown);
    case WM_LBUTTONUP: return HANDLE_WM_LBUTTONUP(m_hwnd, wparam, lparam, OnLButtonUp);
    case WM_COMMAND: return HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand);
    case WM_PAINT: return HANDLE_WM_PAINT(m_hwnd, wparam, lparam, OnPaint);
    case WM_PRINTCLIENT: Paint(reinterpret_cast<HDC>(wparam)); return 0;
    case WM_ERASEBKGND: return 1;  // every pixel is painted
    case WM_DESTROY: HANDLE_WM_DESTROY(m_hwnd, wparam, lparam, OnDestroy); break;
  }
  return DefWindowProcA(m_hwnd, message, wparam, lparam);
}

// Shift held while the page opens starts every fill from its defaults; those
// are what the pattern file holds after the page closes.
LRESULT FillButton::Init(const FillButtonLinks* links, Colour default_colour) {
  m_links = links ? *links : FillButtonLinks{};
  Platform& platform = SystemPlatform();
  std::string path = FillFilePath(platform, GetDlgCtrlID(m_hwnd));
  m_record = CreateFillDescriptor(path, default_colour & 0xFFFFFFu, !platform.ShiftDown());
  // A pattern file copied from elsewhere names its old place: this button
  // writes only its own file.
  SetFillPath(*m_record, path);
  m_swatch = {};
  RenderSwatch();
  KeepSettingInStep();
  Repaint();
  return 1;
}

Rect FillButton::Client() const {
  RECT r;
  GetClientRect(m_hwnd, &r);
  return {r.left, r.top, r.right, r.bottom};
}

// A failed render keeps the swatch there was.
void FillButton::RenderSwatch() {
  Rect place = FillSwatchRect(Client());
  if (!m_record || place.width() <= 0 || place.height() <= 0) return;
  if (ImageBlock image = RenderFill(*m_record, place.width(), place.height()))
    m_swatch = std::move(image);
}

void FillButton::KeepSettingInStep() {
  if (m_record && m_links.setting)
    *m_links.setting = FillSettingValue(m_record->kind, m_record->colour);
}

void FillButton::Changed() {
  if (!m_record) return;
  KeepSettingInStep();
  PostMessageA(GetParent(m_hwnd), kMsgChangeNotice, m_record->kind,
               reinterpret_cast<LPARAM>(m_hwnd));
}

// ---------------------------------------------------------------- painting

RECT ToRect(const Rect& r) { return RECT{r.left, r.top, r.right, r.bottom}; }
POINT ToPoint(const Point& p) { return POINT{p.x, p.y}; }

void PaintFace(HDC dc, const Rect& part, FillFace face, bool fill) {
  RECT r = ToRect(part);
  if (fill) FillRect(dc, &r, GetSysColorBrush(COLOR_BTNFACE));
  DrawEdge(dc, &r, face == FillFace::kSunken ? EDGE_SUNKEN : EDGE_RAISED, BF_RECT | BF_SOFT);
}

void PaintArrow(HDC dc, const FillButtonLook& look) {
  POINT points[3] = {ToPoint(look.triangle[0]), ToPoint(look.triangle[1]),
                     ToPoint(look.triangle[2])};
  {
    SelectedObject no_outline(dc, GetStockObject(NULL_PEN));
    SelectedObject ink(dc, GetSysColorBrush(COLOR_3DDKSHADOW));
    Polygon(dc, points, 3);
  }
  Pen shadow(CreatePen(PS_SOLID, 1, GetSysColor(COLOR_BTNSHADOW)));
  if (!shadow) return;
  SelectedObject line(dc, shadow.get());
  MoveToEx(dc, look.shadow_from.x, look.shadow_from.y, nullptr);
  LineTo(dc, look.shadow_to.x, look.shadow_to.y);
}

// Shared by WM_PAINT and WM_PRINTCLIENT. Before initialisation only the
// frame and an empty face show.
void FillButton::Paint(HDC dc) const {
  FillButtonLook look = FillButtonLookOf(Client(), m_record ? m_record->press_flags : 0);
  RECT frame = ToRect(look.frame);
  FrameRect(dc, &frame, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
  if (!m_record) {
    InflateRect(&frame, -1, -1);
    FillRect(dc, &frame, GetSysColorBrush(COLOR_BTNFACE));
    return;
  }
  PaintFace(dc, look.arrow_strip, look.arrow_face, true);
  PaintArrow(dc, look);
  PaintFace(dc, look.swatch_part, look.swatch_face, false);
  RECT swatch = ToRect(look.swatch);
  if (!BlitImage(dc, swatch.left, swatch.top, m_swatch))
    FillRect(dc, &swatch, GetSysColorBrush(COLOR_BTNFACE));
}

// ---------------------------------------------------------------- mouse and menu

void FillButton::Press(Point p) {
  SetCapture(m_hwnd);
  if (!m_record) return;
  m_record->press_flags = FillButtonPress(m_record->press_flags, FillButtonHit(Client(), p));
  Repaint();
}

// The release acts wherever it happens; what it does waits in the queue, so
// the raised face is painted before a menu or an editor takes over.
void FillButton::Release() {
  if (GetCapture() != m_hwnd) return;
  ReleaseCapture();
  if (!m_record) return;
  FillButtonAction action = FillButtonRelease(m_record->press_flags);
  m_record->press_flags &= ~(kFillSwatchPressed | kFillArrowPressed);
  Repaint();
  if (action == FillButtonAction::kShowMenu) PostMessageA(m_hwnd, kMsgShowMenu, 0, 0);
  if (action == FillButtonAction::kEdit)
    PostMessageA(m_hwnd, WM_COMMAND, MAKEWPARAM(kFillEditCommand, 0), 0);
}

// The chosen item arrives as WM_COMMAND, posted to the button by the menu.
void FillButton::ShowMenu() {
  if (!m_record) return;
  PopupMenu menu;
  if (!menu.get()) return;
  for (const FillKindMenuItem& item : FillKindMenu(m_record->kind))
    AppendMenuA(menu.get(), MF_STRING | (item.checked ? MF_CHECKED : MF_UNCHECKED),
                static_cast<UINT_PTR>(item.command), std::string(item.text).c_str());
  RECT r;
  GetWindowRect(m_hwnd, &r);
  TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_TOPALIGN | TPM_LEFTBUTTON, r.right,
                 r.top + (r.bottom - r.top) / 2, 0, m_hwnd, nullptr);
}

void FillButton::Command(int id) {
  if (id == kFillEditCommand) {
    Edit();
  } else if (std::optional<uint32_t> kind = FillKindOfCommand(id)) {
    ChooseKind(*kind);
  }
}

void FillButton::ChooseKind(uint32_t kind) {
  if (!m_record) return;
  m_record->kind = kind;
  RenderSwatch();
  Repaint();
  Changed();
}

// ---------------------------------------------------------------- editing

// The gradient editor writes into the record as the person types: after
// Cancel the edits stay, only the swatch still shows the gradient as it was.
// Textures and tiles have no editor yet; the dialog hears of the click all
// the same.
void FillButton::Edit() {
  if (!m_record) return;
  switch (m_record->kind) {
    case kFillSimple: {
      Colour colour = m_record->colour & 0xFFFFFFu;
      if (m_links.choose_colour && m_links.choose_colour(m_hwnd, colour)) {
        m_record->colour = colour & 0xFFFFFFu;
        RenderSwatch();
        Repaint();
      }
      break;
    }
    case kFillGradient:
      if (RunGradientBox(Module(), m_hwnd, m_record->gradient, m_links.choose_colour,
                         m_links.show_help)) {
        RenderSwatch();
        Repaint();
      }
      break;
    default: break;
  }
  Changed();
}

// ---------------------------------------------------------------- document lines

void FillButton::WriteLine(LPARAM lparam) {
  auto* request = reinterpret_cast<const DocumentLineRequest*>(lparam);
  if (!m_record || !request || !request->visit) return;
  FillLine line(GetDlgCtrlID(m_hwnd), *m_record);
  (*request->visit)(line);
}

// A loaded document ends with the dialog's page message, which redraws the
// sample once for all controls: no change notice from here.
LRESULT FillButton::ReadLine(LPARAM lparam) {
  const char* text = reinterpret_cast<const char*>(lparam);
  if (!text || !m_record) return 0;
  FillLine line(GetDlgCtrlID(m_hwnd), *m_record);
  if (!DeliverLine(line, text)) return 0;
  if (line.changed()) {
    RenderSwatch();
    Repaint();
    KeepSettingInStep();
  }
  return 1;
}

// Every button writes its pattern file whenever its page closes, whichever
// button closed the dialog; a failed write leaves the old file.
void FillButton::Destroy() {
  if (m_record) SaveFillDescriptor(*m_record);
  m_swatch = {};
}

// ---------------------------------------------------------------- procedure and class

// The one procedure of the class. The object lives from WM_NCCREATE to
// WM_NCDESTROY; a failure inside a message (memory) drops that message.
LRESULT CALLBACK FillButtonProcedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  try {
    if (message == WM_NCCREATE) {
      auto* made = new (std::nothrow) FillButton(hwnd);
      if (!made) return FALSE;
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
    }
    FillButton* button = FillButton::Of(hwnd);
    if (message == WM_NCDESTROY) {
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
      delete button;
    } else if (button) {
      return button->HandleMessage(message, wparam, lparam);
    }
  } catch (...) {
    if (message != WM_NCDESTROY) return 0;
  }
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

WNDCLASSEXA FillButtonWindowClass(HINSTANCE instance) {
  WNDCLASSEXA wc{};
  wc.cbSize = sizeof wc;
  wc.lpfnWndProc = &FillButtonProcedure;
  wc.hInstance = instance;
  wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
  wc.lpszClassName = kFillButtonClassName;
  return wc;
}

bool IsFillButton(HWND hwnd) {
  char name[16] = {};
  return GetClassNameA(hwnd, name, sizeof name) > 0 && lstrcmpiA(name, kFillButtonClassName) == 0;
}

}  // namespace

FillButtonClass::FillButtonClass(HINSTANCE instance) : m_class(FillButtonWindowClass(instance)) {}

bool GetFillButtonRecord(HWND dialog, int id, FillDescriptor& record) {
  HWND control = GetDlgItem(dialog, id);
  if (!control || !IsFillButton(control)) return false;
  const FillButton* button = FillButton::Of(control);
  if (!button || !button->record()) return false;
  record = *button->record();
  return true;
}

}  // namespace tess::win32
