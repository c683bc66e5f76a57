// The fountain control's window procedure: it keeps the record and its
// preview, blits the preview the core renders, and hands clicks to the
// fountain dialog. The pressed look follows bit 0 of the record's press
// flags while the control holds the mouse.
//
// Sections: block · painting · messages · classes and access.
#include "fills/win32/fountain_control.h"

#include <windowsx.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "fills/win32/fountain_dialog.h"
#include "platform/win32/image_blit.h"
#include "platform/win32/win32_handles.h"
#include "shell/document.h"
#include "shell/paths.h"
#include "shell/strings.h"

namespace tess::win32 {
namespace {

// The WM_COMMAND the control posts itself on a click, so the dialog runs
// after the mouse message has been handled and the capture released.
constexpr WORD kOpenDialogCommand = 100;
// The preview sits inside the button's 2-pixel edge.
constexpr int kEdge = 2;

// ---------------------------------------------------------------- block

// What the user-data slot points at from kMsgInitControl until WM_DESTROY,
// which deletes it. Windows never free it, so no other path may.
struct FountainBlock {
  FountainRecord record;
  ImageBlock preview;  // null: rendered at the next paint
  // The page's environment, or `fallback` when none was given.
  const FountainEnvironment* environment = nullptr;
  FountainEnvironment fallback;
};

FountainBlock* BlockOf(HWND hwnd) {
  return reinterpret_cast<FountainBlock*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
}

const FountainEnvironment& EnvironmentOf(const FountainBlock& block) {
  return block.environment ? *block.environment : block.fallback;
}

RECT PreviewRect(HWND hwnd) {
  RECT r;
  GetClientRect(hwnd, &r);
  InflateRect(&r, -kEdge, -kEdge);
  return r;
}

void DropPreview(HWND hwnd, FountainBlock& block) {
  block.preview = ImageBlock();
  InvalidateRect(hwnd, nullptr, FALSE);
}

// The document line's view of the control.
class FountainLine final : public DocumentControl {
 public:
  FountainLine(FountainRecord& record, int number) : m_record(record), m_number(number) {}
  std::string_view Tag() const override { return kTagFountain; }
  int Number() const override { return m_number; }
  std::string ValueText() const override { return FountainValueText(m_record); }
  bool TakeValue(std::string_view value) override { return TakeFountainValue(value, m_record); }

 private:
  FountainRecord& m_record;
  int m_number;
};

// ---------------------------------------------------------------- painting

bool Pressed(HWND hwnd, const FountainBlock* block) {
  return block && (block->record.press_flags & kFountainPressed) && GetCapture() == hwnd;
}

// Shared by WM_PAINT and WM_PRINTCLIENT. A preview of the wrong size (the
// control was resized) is rendered again.
void Paint(HWND hwnd, HDC dc) {
  FountainBlock* block = BlockOf(hwnd);
  RECT client;
  GetClientRect(hwnd, &client);
  DrawEdge(dc, &client, (Pressed(hwnd, block) ? EDGE_SUNKEN : EDGE_RAISED), BF_RECT | BF_SOFT);
  RECT inside = PreviewRect(hwnd);
  const int width = inside.right - inside.left, height = inside.bottom - inside.top;
  if (block && block->preview &&
      (block->preview.width() != width || block->preview.height() != height))
    block->preview = ImageBlock();
  if (block && !block->preview && width > 0 && height > 0)
    block->preview = RenderFountain(block->record, width, height);
  if (!block || !BlitImage(dc, inside.left, inside.top, block->preview))
    FillRect(dc, &inside, GetSysColorBrush(COLOR_BTNFACE));
  if (GetFocus() == hwnd) {
    InflateRect(&inside, -1, -1);
    DrawFocusRect(dc, &inside);
  }
}

// ---------------------------------------------------------------- messages

LRESULT OnInitControl(HWND hwnd, WPARAM wparam, LPARAM lparam) {
  auto block = std::unique_ptr<FountainBlock>(new (std::nothrow) FountainBlock);
  if (!block) return 0;
  block->environment = reinterpret_cast<const FountainEnvironment*>(lparam);
  block->fallback.instance =
      reinterpret_cast<HINSTANCE>(GetClassLongPtrA(hwnd, GCLP_HMODULE));
  Platform& platform = PlatformOf(EnvironmentOf(*block));
  const std::string path = FillFilePath(platform, GetDlgCtrlID(hwnd));
  const auto mode = static_cast<uint32_t>(wparam);
  block->record = CreateFountainRecord(path, mode, !platform.ShiftDown());
  block->record.mode = mode;
  // A pattern file copied from elsewhere names its old place: this control
  // writes only its own file.
  SetFountainPath(block->record, path);
  block->record.press_flags &= ~kFountainPressed;
  delete BlockOf(hwnd);
  SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(block.release()));
  RECT inside = PreviewRect(hwnd);
  FountainBlock* kept = BlockOf(hwnd);
  kept->preview = RenderFountain(kept->record, inside.right - inside.left,
                                 inside.bottom - inside.top);
  InvalidateRect(hwnd, nullptr, FALSE);
  return 1;
}

void OnWriteLine(HWND hwnd, LPARAM lparam) {
  FountainBlock* block = BlockOf(hwnd);
  auto* request = reinterpret_cast<const DocumentLineRequest*>(lparam);
  if (!block || !request || !request->visit) return;
  (*request->visit)(FountainLine(block->record, GetDlgCtrlID(hwnd)));
}

// Taken whenever the tag and "=" are there, even when the value does not
// decode: the line was this control's, and a bad one changes nothing.
LRESULT OnReadLine(HWND hwnd, LPARAM lparam) {
  FountainBlock* block = BlockOf(hwnd);
  const char* line = reinterpret_cast<const char*>(lparam);
  if (!block || !line) return 0;
  std::optional<std::string_view> value = LineValue(CutLineEnd(line), kTagFountain);
  if (!value) return 0;
  if (FountainLine(block->record, GetDlgCtrlID(hwnd)).TakeValue(*value)) DropPreview(hwnd, *block);
  return 1;
}

void OnButtonDown(HWND hwnd) {
  SetCapture(hwnd);
  if (FountainBlock* block = BlockOf(hwnd)) block->record.press_flags |= kFountainPressed;
  InvalidateRect(hwnd, nullptr, FALSE);
}

void OnButtonUp(HWND hwnd) {
  if (GetCapture() != hwnd) return;
  FountainBlock* block = BlockOf(hwnd);
  if (block && (block->record.press_flags & kFountainPressed))
    PostMessageA(hwnd, WM_COMMAND, kOpenDialogCommand, 0);
  // Cleared before the capture goes, so WM_CAPTURECHANGED has nothing to undo.
  if (block) block->record.press_flags &= ~kFountainPressed;
  ReleaseCapture();
  InvalidateRect(hwnd, nullptr, FALSE);
}

// Another window took the mouse: the press is over without a click.
void OnCaptureChanged(HWND hwnd) {
  FountainBlock* block = BlockOf(hwnd);
  if (!block || !(block->record.press_flags & kFountainPressed)) return;
  block->record.press_flags &= ~kFountainPressed;
  InvalidateRect(hwnd, nullptr, FALSE);
}

void OnOpenDialog(HWND hwnd) {
  FountainBlock* block = BlockOf(hwnd);
  if (!block) return;
  const bool accepted = RunFountainDialog(hwnd, EnvironmentOf(*block), block->record);
  DropPreview(hwnd, *block);
  HWND parent = GetParent(hwnd);
  const int id = GetDlgCtrlID(hwnd);
  PostMessageA(parent, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(hwnd));
  if (accepted) PostMessageA(parent, kMsgChangeNotice, 0, 0);
}

// The only place a block is freed. The folder is made first because the
// record's writer, like every writer of the product, never makes one.
void OnDestroy(HWND hwnd) {
  FountainBlock* block = BlockOf(hwnd);
  if (!block) return;
  SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
  std::unique_ptr<FountainBlock> owned(block);
  if (FountainPath(block->record).empty()) return;
  EnsureFolderExists(AppDataPath(PlatformOf(EnvironmentOf(*block)), kPluginFolder));
  SaveFountainRecord(block->record);
}

LRESULT HandleMessage(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case kMsgInitControl: return OnInitControl(hwnd, wparam, lparam);
    case kMsgWriteDocumentLine: OnWriteLine(hwnd, lparam); return 0;
    case kMsgReadDocumentLine: return OnReadLine(hwnd, lparam);
    case WM_LBUTTONDOWN: OnButtonDown(hwnd); return 0;
    case WM_LBUTTONUP: OnButtonUp(hwnd); return 0;
    case WM_CAPTURECHANGED: OnCaptureChanged(hwnd); return 0;
    case WM_KEYDOWN:
      if (wparam == VK_SPACE) PostMessageA(hwnd, WM_COMMAND, kOpenDialogCommand, 0);
      return 0;
    case WM_GETDLGCODE: return DLGC_WANTCHARS;
    case WM_SETFOCUS:
    case WM_KILLFOCUS: InvalidateRect(hwnd, nullptr, FALSE); return 0;
    case WM_COMMAND:
      if (LOWORD(wparam) == kOpenDialogCommand && lparam == 0) OnOpenDialog(hwnd);
      return 0;
    case WM_PAINT: {
      PaintScope paint(hwnd);
      Paint(hwnd, paint.dc());
      return 0;
    }
    case WM_PRINTCLIENT: Paint(hwnd, reinterpret_cast<HDC>(wparam)); return 0;
    case WM_ERASEBKGND: return 1;  // the edge and the preview cover everything
    case WM_NCPAINT: return 0;     // no frame, whatever the style says
    case WM_DESTROY: OnDestroy(hwnd); return 0;
  }
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

// The one procedure of the class. A failure (memory for a line or a
// picture) drops the one message; the dialog reports its own.
LRESULT CALLBACK FountainControlProcedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  try {
    return HandleMessage(hwnd, message, wparam, lparam);
  } catch (...) {
    return message == WM_NCDESTROY ? DefWindowProcA(hwnd, message, wparam, lparam) : 0;
  }
}

bool IsFountainControl(HWND hwnd) {
  char name[16] = {};
  return GetClassNameA(hwnd, name, sizeof name) > 0 &&
         std::string_view(name) == kFountainControlClassName;
}

}  // namespace

// ---------------------------------------------------------------- classes and access

bool RegisterFountainClasses(HINSTANCE instance) {
  WNDCLASSEXA wc{};
  wc.cbSize = sizeof wc;
  wc.lpfnWndProc = &FountainControlProcedure;
  wc.hInstance = instance;
  wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
  wc.lpszClassName = kFountainControlClassName;
  if (!RegisterClassExA(&wc)) return false;
  if (RegisterFountainEditorClass(instance)) return true;
  UnregisterClassA(kFountainControlClassName, instance);
  return false;
}

void UnregisterFountainClasses(HINSTANCE instance) {
  UnregisterFountainEditorClass(instance);
  UnregisterClassA(kFountainControlClassName, instance);
}

std::optional<FountainRecord> GetFountainRecord(HWND control) {
  if (!IsFountainControl(control)) return std::nullopt;
  const FountainBlock* block = BlockOf(control);
  if (!block) return std::nullopt;
  return block->record;
}

bool SetFountainRecord(HWND control, const FountainRecord& record) {
  if (!IsFountainControl(control)) return false;
  FountainBlock* block = BlockOf(control);
  if (!block) return false;
  const auto path = block->record.path;
  block->record = record;
  block->record.path = path;
  DropPreview(control, *block);
  return true;
}

}  // namespace tess::win32
