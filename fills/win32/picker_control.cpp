// The picker windows: one procedure for the family, instantiated per class
// so it knows its kind without a lookup. Every rule (cells, clicks, lines,
// cell look) comes from fills/picker.h; this file only moves values between
// the window, its block and GDI.
//
// Sections: block · painting · messages · classes.
#include "fills/win32/picker_control.h"

#include <windowsx.h>

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "fills/picker.h"
#include "platform/win32/control_messages.h"
#include "platform/win32/win32_handles.h"

namespace tess::win32 {
namespace {

// ---------------------------------------------------------------- block

// What the user-data slot points at from kMsgInitControl until WM_DESTROY,
// which deletes it. Windows never free it, so no other path may.
struct PickerBlock {
  int32_t value = 0;
  int32_t* target = nullptr;
};

PickerBlock* BlockOf(HWND hwnd) {
  return reinterpret_cast<PickerBlock*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
}

// Nothing is selected before initialisation: no cell index is negative.
constexpr int32_t kUninitialisedValue = -1;

int32_t ValueOf(HWND hwnd) {
  const PickerBlock* block = BlockOf(hwnd);
  return block ? block->value : kUninitialisedValue;
}

// May throw std::bad_alloc (caught by the procedure).
std::string ControlText(HWND hwnd) {
  int length = GetWindowTextLengthA(hwnd);
  std::string text(static_cast<size_t>(std::max(length, 0)) + 1, '\0');
  int copied = GetWindowTextA(hwnd, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<size_t>(std::max(copied, 0)));
  return text;
}

// The control as the model sees it. The text is read only where it counts.
PickerState StateOf(const PickerKind& kind, HWND hwnd, std::string text = {}) {
  const PickerBlock* block = BlockOf(hwnd);
  return PickerState(kind.picker_class, GetDlgCtrlID(hwnd), block ? block->value : 0,
                     std::move(text));
}

RECT ToRect(const Rect& r) { return RECT{r.left, r.top, r.right, r.bottom}; }

void InvalidateCell(HWND hwnd, const PickerKind& kind, int cell) {
  if (cell == kPickerNoCell) return;
  RECT r = ToRect(kind.cells[static_cast<size_t>(cell)].rect);
  InvalidateRect(hwnd, &r, FALSE);
}

// ---------------------------------------------------------------- painting

class MemoryDc {
 public:
  explicit MemoryDc(HDC like) : m_dc(CreateCompatibleDC(like)) {}
  ~MemoryDc() {
    if (m_dc) DeleteDC(m_dc);
  }
  MemoryDc(const MemoryDc&) = delete;
  MemoryDc& operator=(const MemoryDc&) = delete;
  HDC get() const { return m_dc; }

 private:
  HDC m_dc;
};

// Dest = D xor (S and (P xor D)): the brush where the source is white, the
// destination where it is black.
constexpr DWORD kBrushThroughWhite = 0x00E20746;

// Enabled: the mask punches a white hole (~mask | dest) that the glyph is
// ANDed into, so paper pixels leave the cell as it was. Disabled: the same
// hole, then the inverted mask lays the shadow brush over the ink only.
void PaintGlyph(HDC dc, HDC strip, const PickerCellLook& look, bool enabled) {
  const int s = kPickerGlyphSize;
  const int x = look.glyph.x, y = look.glyph.y, column = look.strip_column;
  BitBlt(dc, x, y, s, s, strip, column, kPickerMaskTop, MERGEPAINT);
  if (enabled) {
    BitBlt(dc, x, y, s, s, strip, column, 0, SRCAND);
    return;
  }
  PatBlt(strip, column, kPickerMaskTop, s, s, DSTINVERT);
  SelectedObject brush(dc, GetSysColorBrush(COLOR_BTNSHADOW));
  BitBlt(dc, x, y, s, s, strip, column, kPickerMaskTop, kBrushThroughWhite);
}

void PaintCellFace(HDC dc, const PickerCellLook& look) {
  RECT r = ToRect(look.rect);
  bool sunken = look.face == PickerFace::kSunken;
  FillRect(dc, &r, GetSysColorBrush(sunken ? COLOR_BTNSHADOW : COLOR_BTNFACE));
  DrawEdge(dc, &r, sunken ? EDGE_SUNKEN : EDGE_RAISED, BF_RECT | BF_SOFT);
}

// Shared by WM_PAINT and WM_PRINTCLIENT. Only the cells are painted: the
// parent's background shows between them. The strip is loaded per paint
// because the disabled path inverts its masks.
void Paint(const PickerKind& kind, HWND hwnd, HDC dc) {
  auto module = reinterpret_cast<HINSTANCE>(GetClassLongPtrA(hwnd, GCLP_HMODULE));
  Bitmap strip(LoadBitmapA(module, MAKEINTRESOURCEA(kind.glyph_resource)));
  MemoryDc memory(dc);
  bool glyphs = strip && memory.get();
  SelectedObject selected(memory.get(), glyphs ? strip.get() : nullptr);
  bool enabled = IsWindowEnabled(hwnd) != FALSE;
  int32_t value = ValueOf(hwnd);
  for (int cell = 0; cell < kind.cell_count(); ++cell) {
    PickerCellLook look = PickerCellLookOf(kind, cell, value);
    PaintCellFace(dc, look);
    if (glyphs) PaintGlyph(dc, memory.get(), look, enabled);
  }
}

// ---------------------------------------------------------------- messages

LRESULT OnInitControl(HWND hwnd, WPARAM wparam, LPARAM lparam) {
  PickerBlock* block = BlockOf(hwnd);
  if (!block) {
    block = new (std::nothrow) PickerBlock;
    if (!block) return 0;
    SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(block));
  }
  block->value = static_cast<int32_t>(static_cast<uint32_t>(wparam));
  block->target = reinterpret_cast<int32_t*>(lparam);
  InvalidateRect(hwnd, nullptr, FALSE);
  return 1;
}

void OnSyncFromText(const PickerKind& kind, HWND hwnd) {
  PickerBlock* block = BlockOf(hwnd);
  if (!block) return;
  PickerState state = StateOf(kind, hwnd, ControlText(hwnd));
  state.SyncFromText();
  block->value = state.value();
  InvalidateRect(hwnd, nullptr, FALSE);
}

// The line carries the window text, not the value: see PickerState.
void OnWriteLine(const PickerKind& kind, HWND hwnd, LPARAM lparam) {
  auto* request = reinterpret_cast<const DocumentLineRequest*>(lparam);
  if (request && request->visit) (*request->visit)(StateOf(kind, hwnd, ControlText(hwnd)));
}

// The window text stays as it is; so does the page variable until the next
// click or the control's destruction.
LRESULT OnReadLine(const PickerKind& kind, HWND hwnd, LPARAM lparam) {
  const char* line = reinterpret_cast<const char*>(lparam);
  if (!line) return 0;
  PickerState state = StateOf(kind, hwnd);
  if (!DeliverLine(state, line)) return 0;
  if (PickerBlock* block = BlockOf(hwnd)) block->value = state.value();
  InvalidateRect(hwnd, nullptr, FALSE);
  return 1;
}

void OnButtonDown(const PickerKind& kind, HWND hwnd, LPARAM lparam) {
  SetCapture(hwnd);
  PickerBlock* block = BlockOf(hwnd);
  if (!block) return;
  PickerState state = StateOf(kind, hwnd);
  PickerState::Repaint repaint = state.Click({GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)});
  block->value = state.value();
  InvalidateCell(hwnd, kind, repaint.old_cell);
  InvalidateCell(hwnd, kind, repaint.new_cell);
  UpdateWindow(hwnd);
  SetWindowTextA(hwnd, state.text().c_str());
  if (block->target) *block->target = block->value;
  // The parent learns of every click the way it learns of a fill button's
  // change, so one handler redraws what depends on either.
  PostMessageA(GetParent(hwnd), kMsgChangeNotice, static_cast<WPARAM>(block->value),
               reinterpret_cast<LPARAM>(hwnd));
}

// The only place a block is freed. The variable is tested although every
// picker should have one: a missing one must not cost a crash at teardown.
void OnDestroy(HWND hwnd) {
  PickerBlock* block = BlockOf(hwnd);
  if (!block) return;
  if (block->target) *block->target = block->value;
  SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
  delete block;
}

LRESULT HandleMessage(const PickerKind& kind, HWND hwnd, UINT message, WPARAM wparam,
                      LPARAM lparam) {
  switch (message) {
    case kMsgInitControl: return OnInitControl(hwnd, wparam, lparam);
    case kMsgSyncFromText: OnSyncFromText(kind, hwnd); return 0;
    case kMsgWriteDocumentLine: OnWriteLine(kind, hwnd, lparam); return 0;
    case kMsgReadDocumentLine: return OnReadLine(kind, hwnd, lparam);
    case WM_LBUTTONDOWN: OnButtonDown(kind, hwnd, lparam); return 0;
    case WM_LBUTTONUP:
      // The capture taken on the press ends with it, or every later click
      // in the process would come here.
      if (GetCapture() == hwnd) ReleaseCapture();
      return 0;
    case WM_PAINT: {
      PaintScope paint(hwnd);
      Paint(kind, hwnd, paint.dc());
      return 0;
    }
    case WM_PRINTCLIENT: Paint(kind, hwnd, reinterpret_cast<HDC>(wparam)); return 0;
    case WM_ENABLE:
      // The greyed glyphs differ from the live ones; nothing else repaints.
      InvalidateRect(hwnd, nullptr, FALSE);
      break;
    case WM_ERASEBKGND: return 1;  // the cells cover what they own
    case WM_NCPAINT: return 0;     // no frame, whatever the style says
    case WM_DESTROY: OnDestroy(hwnd); break;
  }
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

// The trampoline of the family. A failure (memory for a text) drops the one
// message; a document line that was being written is then missing.
template <PickerClass kClass>
LRESULT CALLBACK PickerProcedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  try {
    return HandleMessage(PickerKindOf(kClass), hwnd, message, wparam, lparam);
  } catch (...) {
    return message == WM_NCDESTROY ? DefWindowProcA(hwnd, message, wparam, lparam) : 0;
  }
}

// In PickerKinds() order.
constexpr std::array<WNDPROC, kPickerClassCount> kProcedures = {
    &PickerProcedure<PickerClass::kShadow>, &PickerProcedure<PickerClass::kScroll4>,
    &PickerProcedure<PickerClass::kScroll2>, &PickerProcedure<PickerClass::kScrollHV>};

// ---------------------------------------------------------------- classes

WNDCLASSEXA PickerWindowClass(HINSTANCE instance, const PickerKind& kind) {
  WNDCLASSEXA wc{};
  wc.cbSize = sizeof wc;
  wc.lpfnWndProc = kProcedures[static_cast<size_t>(kind.picker_class)];
  wc.hInstance = instance;
  wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
  wc.lpszClassName = kind.tag;
  return wc;
}

bool IsPickerWindow(HWND hwnd) {
  char name[16] = {};
  int length = GetClassNameA(hwnd, name, sizeof name);
  return length > 0 && FindPickerKind(std::string_view(name, static_cast<size_t>(length)));
}

}  // namespace

bool RegisterPickerClasses(HINSTANCE instance) {
  std::span<const PickerKind> kinds = PickerKinds();
  for (size_t i = 0; i < kinds.size(); ++i) {
    WNDCLASSEXA wc = PickerWindowClass(instance, kinds[i]);
    if (RegisterClassExA(&wc)) continue;
    while (i-- > 0) UnregisterClassA(kinds[i].tag, instance);
    return false;
  }
  return true;
}

void UnregisterPickerClasses(HINSTANCE instance) {
  for (const PickerKind& kind : PickerKinds()) UnregisterClassA(kind.tag, instance);
}

int32_t GetPickerValue(HWND page, int id) {
  HWND control = GetDlgItem(page, id);
  if (!control || !IsPickerWindow(control)) return 0;
  const PickerBlock* block = BlockOf(control);
  return block ? block->value : 0;
}

}  // namespace tess::win32
