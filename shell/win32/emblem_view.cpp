// The emblem window: one trampoline, one paint routine shared by WM_PAINT and
// WM_PRINTCLIENT. Frames are rendered by the engine and blitted; the view
// only knows which frame is due.
#include "shell/win32/emblem_view.h"

#include <windowsx.h>

#include <new>

#include "dialog/emblem.h"
#include "platform/win32/image_blit.h"

namespace tess::win32 {
namespace {

// Each emblem pixel is shown as a 2 x 2 block: the tile is pixel art.
constexpr int kScale = 2;

class EmblemView {
 public:
  void Step() { m_frame = (m_frame + 1) % Emblem::kFrameCount; }

  void Paint(HWND hwnd, HDC dc) const {
    RECT client;
    GetClientRect(hwnd, &client);
    int32_t w = (client.right + kScale - 1) / kScale, h = (client.bottom + kScale - 1) / kScale;
    ImageBlock frame = m_emblem.Frame(m_frame, w, h);
    RECT target{0, 0, w * kScale, h * kScale};
    if (!StretchImage(dc, target, frame)) FillRect(dc, &client, GetSysColorBrush(COLOR_3DFACE));
  }

 private:
  Emblem m_emblem;
  int m_frame = 0;
};

EmblemView* ViewOf(HWND hwnd) { return reinterpret_cast<EmblemView*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA)); }

LRESULT CALLBACK EmblemProcedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  try {
    switch (message) {
      case WM_NCCREATE: {
        // Without memory for the view the window still exists and stays blank.
        auto* view = new (std::nothrow) EmblemView;
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(view));
        break;
      }
      case WM_NCDESTROY:
        delete ViewOf(hwnd);
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        break;
      case kMsgEmblemStep:
        if (EmblemView* view = ViewOf(hwnd)) {
          view->Step();
          InvalidateRect(hwnd, nullptr, FALSE);
        }
        return 0;
      case WM_ERASEBKGND:
        return 1;  // the paint routine covers every pixel
      case WM_PAINT: {
        PaintScope paint(hwnd);
        if (EmblemView* view = ViewOf(hwnd)) view->Paint(hwnd, paint.dc());
        return 0;
      }
      case WM_PRINTCLIENT:
        if (EmblemView* view = ViewOf(hwnd)) view->Paint(hwnd, reinterpret_cast<HDC>(wparam));
        return 0;
    }
  } catch (...) {
    // Painting needs no allocation that can throw; a failure leaves it blank.
  }
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

WNDCLASSEXA EmblemWindowClass(HINSTANCE instance) {
  WNDCLASSEXA wc{};
  wc.cbSize = sizeof wc;
  wc.lpfnWndProc = &EmblemProcedure;
  wc.hInstance = instance;
  wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
  wc.lpszClassName = kEmblemClassName;
  return wc;
}

}  // namespace

EmblemClass::EmblemClass(HINSTANCE instance) : m_class(EmblemWindowClass(instance)) {}

}  // namespace tess::win32
