// The fountain dialog, its marker editor window and the "Marker Position"
// box. The dialog owns the working copy of the fountain and the selection;
// the editor turns presses, drags, keys and its menu into the edits of
// fills/fountain_editor.h and tells the dialog with WM_COMMAND (its id,
// kEditorChanged) after every change, so the two never disagree.
//
// Sections: session · position box · editor · dialog · entry points.
#include "fills/win32/fountain_dialog.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "fills/fountain_editor.h"
#include "fills/win32/fountain_library_box.h"
#include "fills/win32/fountain_resources.h"
#include "platform/win32/control_messages.h"
#include "platform/win32/dialog_trampoline.h"
#include "platform/win32/image_blit.h"
#include "platform/win32/win32_handles.h"
#include "shell/strings.h"

namespace tess::win32 {
namespace {

// ---------------------------------------------------------------- session

// What the dialog and its editor share for one run: the copy being edited
// and the handle the person last picked.
struct EditSession {
  const FountainEnvironment& environment;
  FountainRecord record;
  FountainHit selected;
};

// The notification code of the editor's WM_COMMAND to the dialog.
constexpr UINT kEditorChanged = 1;

// ---------------------------------------------------------------- position box

class PositionBox {
 public:
  explicit PositionBox(uint32_t position) : m_position(position) {}
  uint32_t position() const { return m_position; }

  void Attach(HWND hwnd) { m_hwnd = hwnd; }
  void ReportFailure() { FountainMessages(m_hwnd).Show(kStrMemoryError); }

  INT_PTR HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
      case WM_INITDIALOG: return HANDLE_WM_INITDIALOG(m_hwnd, wparam, lparam, OnInitDialog);
      case WM_COMMAND: HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand); return TRUE;
    }
    return FALSE;
  }

 private:
  static PositionBox* Self(HWND hwnd) {
    return reinterpret_cast<PositionBox*>(GetWindowLongPtrA(hwnd, DWLP_USER));
  }
  static BOOL OnInitDialog(HWND hwnd, HWND, LPARAM) {
    HWND spin = GetDlgItem(hwnd, TESS_FOUNTAIN_POSITION_SPIN);
    SendMessageA(spin, UDM_SETRANGE32, 0, 255);
    SendMessageA(spin, UDM_SETPOS32, 0, static_cast<LPARAM>(Self(hwnd)->m_position));
    return TRUE;
  }
  static void OnCommand(HWND hwnd, int id, HWND, UINT) {
    if (id == IDOK) Self(hwnd)->Accept();
    if (id == IDCANCEL) EndDialog(hwnd, 0);
  }

  // Like every number field of the product: read clamped, never refused.
  void Accept() {
    BOOL read = FALSE;
    int value = static_cast<int>(GetDlgItemInt(m_hwnd, TESS_FOUNTAIN_POSITION_EDIT, &read, TRUE));
    if (read) m_position = static_cast<uint32_t>(std::clamp(value, 0, 255));
    EndDialog(m_hwnd, 1);
  }

  HWND m_hwnd = nullptr;
  uint32_t m_position;
};

std::optional<uint32_t> AskPosition(HWND owner, HINSTANCE instance, uint32_t position) {
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_UPDOWN_CLASS};
  InitCommonControlsEx(&controls);
  PositionBox box(position);
  INT_PTR result = DialogBoxParamA(instance, TESS_FOUNTAIN_POSITION_DIALOG, owner,
                                   &DialogTrampoline<PositionBox>, reinterpret_cast<LPARAM>(&box));
  if (result != 1) return std::nullopt;
  return box.position();
}

// ---------------------------------------------------------------- editor

class MarkerEditor {
 public:
  explicit MarkerEditor(HWND hwnd) : m_hwnd(hwnd) {}

  LRESULT HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
      case kMsgInitControl:
        m_session = reinterpret_cast<EditSession*>(lparam);
        InvalidateRect(m_hwnd, nullptr, FALSE);
        return 1;
      case WM_LBUTTONDOWN: HANDLE_WM_LBUTTONDOWN(m_hwnd, wparam, lparam, OnButtonDown); return 0;
      case WM_LBUTTONDBLCLK: HANDLE_WM_LBUTTONDBLCLK(m_hwnd, wparam, lparam, OnButtonDown); return 0;
      case WM_MOUSEMOVE: HANDLE_WM_MOUSEMOVE(m_hwnd, wparam, lparam, OnMouseMove); return 0;
      case WM_LBUTTONUP: HANDLE_WM_LBUTTONUP(m_hwnd, wparam, lparam, OnButtonUp); return 0;
      case WM_CAPTURECHANGED: m_dragging.reset(); return 0;
      // The cracker would cut negative screen positions to 16 unsigned bits.
      case WM_CONTEXTMENU: ContextMenu({GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)}); return 0;
      case WM_COMMAND: HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand); return 0;
      case WM_KEYDOWN:
        if (Key(static_cast<UINT>(wparam))) return 0;
        break;
      case WM_GETDLGCODE: return DLGC_WANTARROWS;
      case WM_SETFOCUS:
      case WM_KILLFOCUS: InvalidateRect(m_hwnd, nullptr, FALSE); return 0;
      case WM_PAINT: {
        PaintScope paint(m_hwnd);
        Paint(paint.dc());
        return 0;
      }
      case WM_PRINTCLIENT: Paint(reinterpret_cast<HDC>(wparam)); return 0;
      case WM_ERASEBKGND: return 1;  // the picture covers the window
    }
    return DefWindowProcA(m_hwnd, message, wparam, lparam);
  }

 private:
  static MarkerEditor* Self(HWND hwnd) {
    return reinterpret_cast<MarkerEditor*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
  }
  static void OnButtonDown(HWND hwnd, BOOL double_click, int x, int y, UINT) {
    Self(hwnd)->Press({x, y}, double_click != FALSE);
  }
  static void OnMouseMove(HWND hwnd, int x, int, UINT) { Self(hwnd)->Drag(x); }
  static void OnButtonUp(HWND hwnd, int, int, UINT) {
    Self(hwnd)->m_dragging.reset();
    if (GetCapture() == hwnd) ReleaseCapture();
  }
  static void OnCommand(HWND hwnd, int id, HWND, UINT) {
    MarkerEditor* self = Self(hwnd);
    if (self->m_session) self->RunCommand(id, self->m_session->selected);
  }

  HWND Dialog() const { return GetParent(m_hwnd); }
  FountainRecord& Record() { return m_session->record; }

  FountainEditorLayout Layout() const {
    RECT client;
    GetClientRect(m_hwnd, &client);
    return FountainEditorLayoutFor(client.right, client.bottom);
  }

  void Select(const FountainHit& hit) {
    m_session->selected = hit;
    Changed();
  }

  void Changed() {
    InvalidateRect(m_hwnd, nullptr, FALSE);
    SendMessageA(Dialog(), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(m_hwnd), kEditorChanged),
                 reinterpret_cast<LPARAM>(m_hwnd));
  }

  // ------------------------------------------------ mouse

  // A press takes the handle under it, or adds a marker on an empty place
  // with the colour shown there (so the picture stays as it was) and takes
  // that; a marker taken can be dragged at once. A double click recolours.
  void Press(Point point, bool double_click) {
    SetFocus(m_hwnd);
    if (!m_session) return;
    const FountainEditorLayout layout = Layout();
    FountainHit hit = HitFountainEditor(Record(), layout, point);
    if (double_click && hit.kind != FountainHitKind::kNone) {
      Select(hit);
      RunCommand(kCmdChangeColour, hit);
      return;
    }
    if (hit.kind == FountainHitKind::kNone && InMarkerArea(layout, point)) {
      std::optional<Colour> colour = FountainColourAtX(Record(), layout, point.x);
      if (!colour) return FountainMessages(Dialog()).Show(kStrMemoryError);
      std::optional<size_t> added = AddFountainMarker(Record(), PositionAtX(layout, point.x), *colour);
      if (!added) return FountainMessages(Dialog()).Show(kStrNoMarkerSpace);
      hit = MarkerHit(*added);
    }
    Select(hit);
    if (hit.kind == FountainHitKind::kMarker) {
      m_dragging = hit.index;
      SetCapture(m_hwnd);
    }
  }

  void Drag(int x) {
    if (!m_session || !m_dragging || GetCapture() != m_hwnd) return;
    const uint32_t position = PositionAtX(Layout(), x);
    if (position == MarkerPosition(Record().markers[*m_dragging])) return;
    m_dragging = MoveFountainMarker(Record(), *m_dragging, position);
    Select(MarkerHit(*m_dragging));
  }

  // ------------------------------------------------ keys

  // Left and Right move the selected marker one step (eight with Ctrl); Up
  // and Down walk the handles from the start box to the end box; Delete
  // deletes. Other keys go on, so Shift+F10 and the menu key still become
  // WM_CONTEXTMENU. True when the key was one of these.
  bool Key(UINT key) {
    if (!m_session) return false;
    const FountainHit selected = m_session->selected;
    const size_t count = FountainMarkerCount(Record());
    if ((key == VK_LEFT || key == VK_RIGHT) && selected.kind == FountainHitKind::kMarker) {
      const int step = (GetKeyState(VK_CONTROL) < 0 ? 8 : 1) * (key == VK_LEFT ? -1 : 1);
      const int position = static_cast<int>(MarkerPosition(Record().markers[selected.index]));
      const auto moved = static_cast<uint32_t>(std::clamp(position + step, 0, 255));
      Select(MarkerHit(MoveFountainMarker(Record(), selected.index, moved)));
    } else if (key == VK_UP || key == VK_DOWN) {
      Select(NextHandle(selected, count, key == VK_DOWN));
    } else if (key == VK_DELETE) {
      RunCommand(kCmdDeleteMarker, selected);
    } else {
      return key == VK_LEFT || key == VK_RIGHT;
    }
    return true;
  }

  // The handles in the order they stand: start box, markers, end box.
  FountainHit NextHandle(const FountainHit& from, size_t count, bool forward) const {
    const bool open = IsOpenFountain(m_session->record);
    std::vector<FountainHit> order{{FountainHitKind::kStart, 0}};
    for (size_t i = 0; i < count; ++i) order.push_back(MarkerHit(i));
    if (open) order.push_back({FountainHitKind::kEnd, 0});
    auto at = std::find(order.begin(), order.end(), from);
    if (at == order.end()) return order.front();
    if (forward) return at + 1 == order.end() ? *at : *(at + 1);
    return at == order.begin() ? *at : *(at - 1);
  }

  // ------------------------------------------------ menu and commands

  // Opens at the pointer, or under the selected handle when the keyboard
  // asked (-1, -1). What the menu acts on is what it was opened over.
  void ContextMenu(Point screen) {
    if (!m_session) return;
    FountainHit target = m_session->selected;
    POINT at{screen.x, screen.y};
    if (screen.x == -1 && screen.y == -1) {
      RECT client;
      GetClientRect(m_hwnd, &client);
      at = {client.left + client.right / 2, client.bottom / 2};
      ClientToScreen(m_hwnd, &at);
    } else {
      POINT client = at;
      ScreenToClient(m_hwnd, &client);
      target = HitFountainEditor(Record(), Layout(), {client.x, client.y});
      Select(target);
    }
    PopupMenu menu;
    if (!menu.get()) return;
    const bool on_handle = target.kind != FountainHitKind::kNone;
    const bool on_marker = target.kind == FountainHitKind::kMarker;
    const UINT colour_state =
        on_handle && m_session->environment.choose_colour ? MF_ENABLED : MF_GRAYED;
    AppendMenuA(menu.get(), MF_STRING, kCmdAddToLibrary, "&Add to library");
    AppendMenuA(menu.get(), MF_STRING, kCmdManageLibrary, "&Manage library");
    AppendMenuA(menu.get(), MF_SEPARATOR, 0, nullptr);
    // Always offered: asking shows why a box or an empty place cannot go.
    AppendMenuA(menu.get(), MF_STRING, kCmdDeleteMarker, "&Delete marker");
    AppendMenuA(menu.get(), MF_STRING | colour_state, kCmdChangeColour, "&Change color");
    AppendMenuA(menu.get(), MF_STRING | (on_marker ? MF_ENABLED : MF_GRAYED), kCmdAdjustPosition,
                "Adjust &position");
    const int command = static_cast<int>(TrackPopupMenu(
        menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON | TPM_NONOTIFY, at.x, at.y, 0, m_hwnd, nullptr));
    if (command) RunCommand(command, target);
  }

  void RunCommand(int command, const FountainHit& target) {
    if (!m_session) return;
    const FountainEnvironment& environment = m_session->environment;
    switch (command) {
      case kCmdAddToLibrary: AddToFountainLibrary(Dialog(), environment, Record()); return;
      case kCmdManageLibrary:
        if (ManageFountainLibrary(Dialog(), environment, Record())) Select({});
        return;
      case kCmdDeleteMarker:
        if (target.kind != FountainHitKind::kMarker || !DeleteFountainMarker(Record(), target.index))
          return FountainMessages(Dialog()).Show(kStrMarkerCannotBeDeleted);
        return Select({});
      case kCmdChangeColour: {
        std::optional<Colour> colour = HitColour(Record(), target);
        if (!colour || !environment.choose_colour) return;
        Colour chosen = *colour;
        if (environment.choose_colour(chosen) && SetHitColour(Record(), target, chosen))
          Select(target);
        return;
      }
      case kCmdAdjustPosition: {
        if (target.kind != FountainHitKind::kMarker ||
            target.index >= FountainMarkerCount(Record()))
          return;
        const uint32_t now = MarkerPosition(Record().markers[target.index]);
        if (std::optional<uint32_t> position = AskPosition(Dialog(), environment.instance, now))
          Select(MarkerHit(MoveFountainMarker(Record(), target.index, *position)));
        return;
      }
    }
  }

  // ------------------------------------------------ painting

  // Shared by WM_PAINT and WM_PRINTCLIENT: the core draws, this blits.
  void Paint(HDC dc) {
    RECT client;
    GetClientRect(m_hwnd, &client);
    ImageBlock picture;
    if (m_session) {
      FountainEditorLook look;
      look.background = SystemColour(COLOR_BTNFACE);
      look.frame = SystemColour(COLOR_BTNSHADOW);
      look.selection = SystemColour(COLOR_HIGHLIGHT);
      look.selected = m_session->selected;
      picture = RenderFountainEditor(m_session->record, client.right, client.bottom, look);
    }
    if (!BlitImage(dc, 0, 0, picture)) FillRect(dc, &client, GetSysColorBrush(COLOR_BTNFACE));
    if (GetFocus() == m_hwnd) DrawFocusRect(dc, &client);
  }

  HWND m_hwnd;
  EditSession* m_session = nullptr;
  std::optional<size_t> m_dragging;  // the marker a press is moving
};

// The editor's trampoline: the object lives from WM_NCCREATE to
// WM_NCDESTROY. A failure drops the one message.
LRESULT CALLBACK EditorProcedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  try {
    if (message == WM_NCCREATE) {
      auto* editor = new MarkerEditor(hwnd);
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(editor));
    }
    auto* editor = reinterpret_cast<MarkerEditor*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (message == WM_NCDESTROY) {
      SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
      delete editor;
      return DefWindowProcA(hwnd, message, wparam, lparam);
    }
    if (!editor) return DefWindowProcA(hwnd, message, wparam, lparam);
    return editor->HandleMessage(message, wparam, lparam);
  } catch (...) {
    // WM_NCCREATE without its object must fail the creation.
    return message == WM_NCCREATE ? FALSE : 0;
  }
}

// ---------------------------------------------------------------- dialog

class FountainDialog {
 public:
  FountainDialog(const FountainEnvironment& environment, const FountainRecord& record)
      : m_session{environment, record, {}} {}
  const FountainRecord& record() const { return m_session.record; }

  void Attach(HWND hwnd) { m_hwnd = hwnd; }
  void ReportFailure() { FountainMessages(m_hwnd).Show(kStrMemoryError); }

  INT_PTR HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
      case WM_INITDIALOG: return HANDLE_WM_INITDIALOG(m_hwnd, wparam, lparam, OnInitDialog);
      case WM_COMMAND: HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand); return TRUE;
      case WM_DRAWITEM: HANDLE_WM_DRAWITEM(m_hwnd, wparam, lparam, OnDrawItem); return TRUE;
    }
    return FALSE;
  }

 private:
  static FountainDialog* Self(HWND hwnd) {
    return reinterpret_cast<FountainDialog*>(GetWindowLongPtrA(hwnd, DWLP_USER));
  }
  static BOOL OnInitDialog(HWND hwnd, HWND, LPARAM) { return Self(hwnd)->InitDialog(); }
  static void OnCommand(HWND hwnd, int id, HWND, UINT code) { Self(hwnd)->Command(id, code); }
  static void OnDrawItem(HWND hwnd, const DRAWITEMSTRUCT* item) { Self(hwnd)->DrawColour(*item); }

  HWND Editor() const { return GetDlgItem(m_hwnd, TESS_FOUNTAIN_EDITOR); }

  BOOL InitDialog() {
    SendMessageA(Editor(), kMsgInitControl, 0, reinterpret_cast<LPARAM>(&m_session));
    Refresh();
    SetFocus(Editor());
    return FALSE;  // the focus is set
  }

  void Command(int id, UINT code) {
    switch (id) {
      case TESS_FOUNTAIN_EDITOR:
        if (code == kEditorChanged) Refresh();
        return;
      case TESS_FOUNTAIN_START_COLOUR: return ChooseColour({FountainHitKind::kStart, 0});
      case TESS_FOUNTAIN_END_COLOUR: return ChooseColour({FountainHitKind::kEnd, 0});
      case TESS_FOUNTAIN_OPEN:
      case TESS_FOUNTAIN_CLOSED:
        if (code == BN_CLICKED) SetOpen(id == TESS_FOUNTAIN_OPEN);
        return;
      case TESS_FOUNTAIN_HELP: {
        FountainMessages messages(m_hwnd);
        ShowHelp(m_session.environment.help, messages, kHelpAnchorFountain);
        return;
      }
      case IDOK: EndDialog(m_hwnd, 1); return;
      case IDCANCEL: EndDialog(m_hwnd, 0); return;
    }
  }

  void ChooseColour(const FountainHit& which) {
    std::optional<Colour> colour = HitColour(m_session.record, which);
    if (!colour || !m_session.environment.choose_colour) return;
    Colour chosen = *colour;
    if (!m_session.environment.choose_colour(chosen)) return;
    SetHitColour(m_session.record, which, chosen);
    m_session.selected = which;
    Refresh();
  }

  // Switching to closed keeps a closed mode other than 0 that was loaded.
  void SetOpen(bool open) {
    if (open == IsOpenFountain(m_session.record)) return;
    m_session.record.mode = open ? kFountainOpen : kFountainClosed;
    if (!open && m_session.selected.kind == FountainHitKind::kEnd) m_session.selected = {};
    Refresh();
  }

  // Everything shown from the session: status, radio buttons, swatches and
  // the editor's picture.
  void Refresh() {
    const bool open = IsOpenFountain(m_session.record);
    SetDlgItemTextA(m_hwnd, TESS_FOUNTAIN_STATUS,
                    FountainEditorStatus(m_session.record, m_session.selected).c_str());
    CheckRadioButton(m_hwnd, TESS_FOUNTAIN_OPEN, TESS_FOUNTAIN_CLOSED,
                     open ? TESS_FOUNTAIN_OPEN : TESS_FOUNTAIN_CLOSED);
    EnableWindow(GetDlgItem(m_hwnd, TESS_FOUNTAIN_END_COLOUR), open);
    const bool can_choose = static_cast<bool>(m_session.environment.choose_colour);
    EnableWindow(GetDlgItem(m_hwnd, TESS_FOUNTAIN_START_COLOUR), can_choose);
    if (!can_choose) EnableWindow(GetDlgItem(m_hwnd, TESS_FOUNTAIN_END_COLOUR), FALSE);
    InvalidateRect(GetDlgItem(m_hwnd, TESS_FOUNTAIN_START_COLOUR), nullptr, FALSE);
    InvalidateRect(GetDlgItem(m_hwnd, TESS_FOUNTAIN_END_COLOUR), nullptr, FALSE);
    InvalidateRect(Editor(), nullptr, FALSE);
  }

  // A push-button face with the colour inside; a disabled button shows the
  // face colour, as the end colour of a closed fountain is not used.
  void DrawColour(const DRAWITEMSTRUCT& item) {
    const bool start = item.CtlID == TESS_FOUNTAIN_START_COLOUR;
    RECT face = item.rcItem;
    UINT state = DFCS_BUTTONPUSH | ((item.itemState & ODS_SELECTED) ? DFCS_PUSHED : 0u);
    DrawFrameControl(item.hDC, &face, DFC_BUTTON, state);
    RECT swatch = face;
    InflateRect(&swatch, -4, -4);
    if (item.itemState & ODS_SELECTED) OffsetRect(&swatch, 1, 1);
    const Colour colour = start ? m_session.record.start_colour : m_session.record.end_colour;
    Brush brush(CreateSolidBrush((item.itemState & ODS_DISABLED) ? GetSysColor(COLOR_3DFACE)
                                                                 : (colour & 0xFFFFFF)));
    if (brush) FillRect(item.hDC, &swatch, brush.get());
    FrameRect(item.hDC, &swatch, GetSysColorBrush(COLOR_BTNSHADOW));
    if (item.itemState & ODS_FOCUS) {
      InflateRect(&swatch, 2, 2);
      DrawFocusRect(item.hDC, &swatch);
    }
  }

  HWND m_hwnd = nullptr;
  EditSession m_session;
};

}  // namespace

// ---------------------------------------------------------------- entry points

bool RunFountainDialog(HWND owner, const FountainEnvironment& environment, FountainRecord& record) {
  FountainDialog dialog(environment, record);
  INT_PTR result = DialogBoxParamA(environment.instance, TESS_FOUNTAIN_DIALOG, owner,
                                   &DialogTrampoline<FountainDialog>,
                                   reinterpret_cast<LPARAM>(&dialog));
  if (result != 1) return false;
  record = dialog.record();
  return true;
}

bool RegisterFountainEditorClass(HINSTANCE instance) {
  WNDCLASSEXA wc{};
  wc.cbSize = sizeof wc;
  wc.style = CS_DBLCLKS;
  wc.lpfnWndProc = &EditorProcedure;
  wc.hInstance = instance;
  wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
  wc.lpszClassName = kFountainEditorClassName;
  return RegisterClassExA(&wc) != 0;
}

void UnregisterFountainEditorClass(HINSTANCE instance) {
  UnregisterClassA(kFountainEditorClassName, instance);
}

}  // namespace tess::win32
