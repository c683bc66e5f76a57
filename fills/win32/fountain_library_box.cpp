// Appending to a fountain library and the "FountainLibraryManageBox". The
// box keeps the library (fills/fountain_library.h) and one preview per
// entry in step with the owner-drawn list: every change goes to the library
// first, is saved at once, and the list is rebuilt from it, so what the
// person sees is always what the file holds.
//
// Sections: files · manage box · drag procedure · entry points.
#include "fills/win32/fountain_library_box.h"

#include <commctrl.h>
#include <windowsx.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fills/fountain_library.h"
#include "fills/win32/fountain_resources.h"
#include "platform/win32/dialog_trampoline.h"
#include "platform/win32/image_blit.h"
#include "platform/win32/win32_handles.h"
#include "shell/paths.h"
#include "shell/strings.h"

namespace tess::win32 {
namespace {

constexpr int kItemHeight = 42;
constexpr int kPreviewWidth = 170;  // less a vertical scroll bar
constexpr int kPreviewHeight = 26;
constexpr UINT_PTR kDragSubclassId = 1;
// From the list's drag procedure to the box: wParam the entry dragged,
// lParam the entry it was dropped on.
constexpr UINT kMsgDropEntry = WM_APP + 1;

// ---------------------------------------------------------------- files

// The product's writers never make a folder; the first library does.
void EnsureLibraryFolder(Platform& platform) {
  EnsureFolderExists(AppDataPath(platform, kPluginFolder));
}

// ---------------------------------------------------------------- manage box

class LibraryBox {
 public:
  LibraryBox(const FountainEnvironment& environment, FountainRecord& record)
      : m_environment(environment),
        m_record(record),
        m_selector(record.mode),
        m_path(FountainLibraryPath(PlatformOf(environment), record.mode)) {}

  void Attach(HWND hwnd) { m_hwnd = hwnd; }
  void ReportFailure() { FountainMessages(m_hwnd).Show(kStrMemoryError); }

  INT_PTR HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
      case WM_INITDIALOG: return HANDLE_WM_INITDIALOG(m_hwnd, wparam, lparam, OnInitDialog);
      case WM_COMMAND: HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand); return TRUE;
      case WM_MEASUREITEM: HANDLE_WM_MEASUREITEM(m_hwnd, wparam, lparam, OnMeasureItem); return TRUE;
      case WM_DRAWITEM: HANDLE_WM_DRAWITEM(m_hwnd, wparam, lparam, OnDrawItem); return TRUE;
      case kMsgDropEntry: Drop(wparam, static_cast<size_t>(lparam)); return TRUE;
      case WM_DESTROY: m_subclass.Detach(); return FALSE;
    }
    return FALSE;
  }

  // The drag procedure's state: the press it is following.
  struct DragState {
    bool armed = false;   // a selected entry was pressed
    bool active = false;  // the pointer has left that entry since
    int start = -1;
    RECT start_rect{};
  };
  DragState& drag() { return m_drag; }
  HCURSOR drag_cursor() const { return m_drag_cursor; }

 private:
  static LibraryBox* Self(HWND hwnd) {
    return reinterpret_cast<LibraryBox*>(GetWindowLongPtrA(hwnd, DWLP_USER));
  }
  static BOOL OnInitDialog(HWND hwnd, HWND, LPARAM) { return Self(hwnd)->InitDialog(); }
  static void OnCommand(HWND hwnd, int id, HWND, UINT code) { Self(hwnd)->Command(id, code); }
  // Arrives before WM_INITDIALOG, when the box is not attached yet: the
  // height is set again once it is.
  static void OnMeasureItem(HWND, MEASUREITEMSTRUCT* item) { item->itemHeight = kItemHeight; }
  static void OnDrawItem(HWND hwnd, const DRAWITEMSTRUCT* item) { Self(hwnd)->DrawEntry(*item); }

  HWND List() const { return GetDlgItem(m_hwnd, TESS_FOUNTAIN_LIBRARY_LIST); }
  int Selection() const { return ListBox_GetCurSel(List()); }

  BOOL InitDialog();
  void Command(int id, UINT code);
  bool Load();
  void ShowEntries(std::optional<size_t> select);
  void UpdateDelete() {
    EnableWindow(GetDlgItem(m_hwnd, TESS_FOUNTAIN_LIBRARY_DELETE),
                 ListBox_GetCount(List()) > 0 && Selection() >= 0);
  }
  void Delete();
  void Drop(size_t from, size_t to);
  void Save();
  void DrawEntry(const DRAWITEMSTRUCT& item);

  HWND m_hwnd = nullptr;
  const FountainEnvironment& m_environment;
  FountainRecord& m_record;
  const uint32_t m_selector;
  const std::string m_path;
  FountainLibrary m_library;
  std::vector<ImageBlock> m_previews;  // one per entry, in the library's order
  Subclass m_subclass;
  DragState m_drag;
  HCURSOR m_drag_cursor = nullptr;  // a resource cursor: shared, never destroyed
};

LRESULT CALLBACK DragProcedure(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);

BOOL LibraryBox::InitDialog() {
  m_drag_cursor = LoadCursorA(m_environment.instance, MAKEINTRESOURCEA(TESS_FOUNTAIN_DRAG_CURSOR));
  ListBox_SetItemHeight(List(), 0, kItemHeight);
  if (!Load()) FountainMessages(m_hwnd).Show(kStrErrorLoadingFountainLibrary);
  ShowEntries(0);
  m_subclass.Attach(List(), &DragProcedure, kDragSubclassId, reinterpret_cast<DWORD_PTR>(this));
  SetFocus(GetDlgItem(m_hwnd, IDOK));
  return FALSE;  // the focus is set
}

// Entries up to the first fault stay, as the file had them; an entry whose
// preview cannot be drawn counts as a fault and goes with the rest.
bool LibraryBox::Load() {
  bool whole = LoadFountainLibrary(m_path, m_library);
  const int width = kPreviewWidth - GetSystemMetrics(SM_CXVSCROLL);
  for (size_t i = 0; i < m_library.size(); ++i) {
    ImageBlock preview =
        RenderFountain(LibraryEntryFountain(m_library[i], m_selector), width, kPreviewHeight);
    if (!preview) {
      while (m_library.size() > i) m_library.Delete(m_library.size() - 1);
      return false;
    }
    m_previews.push_back(std::move(preview));
  }
  return whole;
}

// Every item's text is one blank, which the drag procedure checks.
void LibraryBox::ShowEntries(std::optional<size_t> select) {
  HWND list = List();
  SetWindowRedraw(list, FALSE);
  ListBox_ResetContent(list);
  for (size_t i = 0; i < m_library.size(); ++i) ListBox_AddString(list, " ");
  if (select && *select < m_library.size()) ListBox_SetCurSel(list, static_cast<int>(*select));
  SetWindowRedraw(list, TRUE);
  InvalidateRect(list, nullptr, TRUE);
  UpdateDelete();
}

void LibraryBox::Command(int id, UINT code) {
  switch (id) {
    case TESS_FOUNTAIN_LIBRARY_LIST:
      if (code == LBN_SELCHANGE) UpdateDelete();
      return;
    case TESS_FOUNTAIN_LIBRARY_DELETE: return Delete();
    case TESS_FOUNTAIN_LIBRARY_HELP: {
      FountainMessages messages(m_hwnd);
      ShowHelp(m_environment.help, messages, kHelpAnchorFountain);
      return;
    }
    case IDOK: {
      // The file is rewritten on every OK, changed or not; Cancel writes
      // nothing, so deletions and moves are discarded.
      Save();
      const int selected = Selection();
      if (selected >= 0 && static_cast<size_t>(selected) < m_library.size())
        ApplyLibraryEntry(m_library[static_cast<size_t>(selected)], m_record);
      EndDialog(m_hwnd, 1);
      return;
    }
    case IDCANCEL: EndDialog(m_hwnd, 0); return;
  }
}

void LibraryBox::Delete() {
  const int selected = Selection();
  if (selected < 0 || static_cast<size_t>(selected) >= m_library.size()) return;
  std::optional<size_t> next = m_library.Delete(static_cast<size_t>(selected));
  m_previews.erase(m_previews.begin() + selected);
  ShowEntries(next);
}

// The library decides the new order; the previews follow the same move.
void LibraryBox::Drop(size_t from, size_t to) {
  std::optional<size_t> select = m_library.Drag(from, to);
  if (!select) return;
  ImageBlock moved = std::move(m_previews[from]);
  m_previews.erase(m_previews.begin() + static_cast<std::ptrdiff_t>(from));
  const size_t landed = to > from ? to - 1 : to;
  m_previews.insert(m_previews.begin() + static_cast<std::ptrdiff_t>(landed), std::move(moved));
  ShowEntries(select);
}

void LibraryBox::Save() {
  Platform& platform = PlatformOf(m_environment);
  EnsureLibraryFolder(platform);
  if (!SaveFountainLibrary(m_path, m_library, m_selector, LibraryTimeStamp(platform.Now())))
    FountainMessages(m_hwnd).Show(kStrErrorUpdatingFountainLibrary);
}

// The entry's preview, centred, on the selection colour when selected.
void LibraryBox::DrawEntry(const DRAWITEMSTRUCT& item) {
  RECT r = item.rcItem;
  const bool selected = (item.itemState & ODS_SELECTED) != 0;
  FillRect(item.hDC, &r, GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
  if (item.itemID < m_previews.size()) {
    const ImageBlock& preview = m_previews[item.itemID];
    BlitImage(item.hDC, r.left + (r.right - r.left - preview.width()) / 2,
              r.top + (r.bottom - r.top - preview.height()) / 2, preview);
  }
  if (item.itemState & ODS_FOCUS) DrawFocusRect(item.hDC, &r);
}

// ---------------------------------------------------------------- drag procedure

int ItemAt(HWND list, POINT client) {
  POINT screen = client;
  ClientToScreen(list, &screen);
  return LBItemFromPt(list, screen, FALSE);
}

// The list handles a press itself (selection, its own capture) before the
// drag starts; while a drag is armed the list sees no moves, so the
// selection stays on the entry being dragged.
LRESULT CALLBACK DragProcedure(HWND list, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR,
                               DWORD_PTR data) {
  try {
    auto* box = reinterpret_cast<LibraryBox*>(data);
    LibraryBox::DragState& drag = box->drag();
    const POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    switch (message) {
      case WM_LBUTTONDOWN: {
        LRESULT result = DefSubclassProc(list, message, wparam, lparam);
        drag = {};
        drag.start = ItemAt(list, point);
        if (drag.start < 0 || ListBox_GetTextLen(list, drag.start) <= 0) return result;
        ListBox_GetItemRect(list, drag.start, &drag.start_rect);
        SetCapture(list);
        drag.armed = ListBox_GetSel(list, drag.start) > 0;
        return result;
      }
      case WM_MOUSEMOVE: {
        if (!drag.armed) break;
        if (!drag.active && !PtInRect(&drag.start_rect, point)) drag.active = true;
        if (drag.active) {
          RECT client;
          GetClientRect(list, &client);
          SetCursor(PtInRect(&client, point) && box->drag_cursor() ? box->drag_cursor()
                                                                   : LoadCursor(nullptr, IDC_NO));
        }
        return 0;
      }
      case WM_LBUTTONUP: {
        const LibraryBox::DragState ended = drag;
        drag = {};
        const int target = ItemAt(list, point);
        LRESULT result = DefSubclassProc(list, message, wparam, lparam);
        if (GetCapture() == list) ReleaseCapture();
        if (ended.armed && ended.active && target >= 0 && target != ended.start)
          SendMessageA(GetParent(list), kMsgDropEntry, static_cast<WPARAM>(ended.start), target);
        return result;
      }
      case WM_CAPTURECHANGED:
        // Lost to another window mid-drag: the drag is over, nothing moves.
        if (reinterpret_cast<HWND>(lparam) != list) drag = {};
        break;
      case WM_NCDESTROY: RemoveWindowSubclass(list, &DragProcedure, kDragSubclassId); break;
    }
    return DefSubclassProc(list, message, wparam, lparam);
  } catch (...) {
    return DefSubclassProc(list, message, wparam, lparam);
  }
}

}  // namespace

// ---------------------------------------------------------------- entry points

bool AddToFountainLibrary(HWND owner, const FountainEnvironment& environment,
                          const FountainRecord& record) {
  Platform& platform = PlatformOf(environment);
  EnsureLibraryFolder(platform);
  if (AppendFountain(FountainLibraryPath(platform, record.mode), record, record.mode,
                     LibraryTimeStamp(platform.Now())))
    return true;
  FountainMessages(owner).Show(kStrErrorUpdatingFountainLibrary);
  return false;
}

bool ManageFountainLibrary(HWND owner, const FountainEnvironment& environment,
                           FountainRecord& record) {
  LibraryBox box(environment, record);
  return DialogBoxParamA(environment.instance, TESS_FOUNTAIN_LIBRARY_DIALOG, owner,
                         &DialogTrampoline<LibraryBox>, reinterpret_cast<LPARAM>(&box)) == 1;
}

}  // namespace tess::win32
