// Owners for what the dialogs create from the window system: GDI objects,
// selections into a device context, saved DC states, paint scopes, popup
// menus, window subclasses, window classes and timers. Each releases its
// object exactly once, on every path; none can be copied, the handles can be
// moved. Windows the system owns (a dialog's controls) are plain HWNDs.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <commctrl.h>

#include <utility>

namespace tess::win32 {

// A pen, brush, font, bitmap or region we created.
template <class Handle>
class GdiObject {
 public:
  GdiObject() = default;
  explicit GdiObject(Handle handle) : m_handle(handle) {}
  ~GdiObject() { Reset(); }
  GdiObject(GdiObject&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
  GdiObject& operator=(GdiObject&& other) noexcept {
    if (this != &other) {
      Reset();
      m_handle = std::exchange(other.m_handle, nullptr);
    }
    return *this;
  }
  GdiObject(const GdiObject&) = delete;
  GdiObject& operator=(const GdiObject&) = delete;

  Handle get() const { return m_handle; }
  explicit operator bool() const { return m_handle != nullptr; }
  void Reset(Handle handle = nullptr) {
    if (m_handle) DeleteObject(m_handle);
    m_handle = handle;
  }

 private:
  Handle m_handle = nullptr;
};

using Brush = GdiObject<HBRUSH>;
using Font = GdiObject<HFONT>;
using Bitmap = GdiObject<HBITMAP>;
using Region = GdiObject<HRGN>;
using Pen = GdiObject<HPEN>;

// Selects an object into a DC for one scope and puts the previous one back,
// so an object is never deleted while selected.
class SelectedObject {
 public:
  SelectedObject(HDC dc, HGDIOBJ object) : m_dc(dc), m_previous(SelectObject(dc, object)) {}
  ~SelectedObject() {
    if (m_previous) SelectObject(m_dc, m_previous);
  }
  SelectedObject(const SelectedObject&) = delete;
  SelectedObject& operator=(const SelectedObject&) = delete;

 private:
  HDC m_dc;
  HGDIOBJ m_previous;
};

// Clip regions and other DC state set inside a paint routine end with it.
class SavedDc {
 public:
  explicit SavedDc(HDC dc) : m_dc(dc), m_state(SaveDC(dc)) {}
  ~SavedDc() {
    if (m_state) RestoreDC(m_dc, m_state);
  }
  SavedDc(const SavedDc&) = delete;
  SavedDc& operator=(const SavedDc&) = delete;

 private:
  HDC m_dc;
  int m_state;
};

// BeginPaint to EndPaint.
class PaintScope {
 public:
  explicit PaintScope(HWND hwnd) : m_hwnd(hwnd), m_dc(BeginPaint(hwnd, &m_paint)) {}
  ~PaintScope() { EndPaint(m_hwnd, &m_paint); }
  PaintScope(const PaintScope&) = delete;
  PaintScope& operator=(const PaintScope&) = delete;
  HDC dc() const { return m_dc; }

 private:
  HWND m_hwnd;
  PAINTSTRUCT m_paint{};
  HDC m_dc;
};

class PopupMenu {
 public:
  PopupMenu() : m_menu(CreatePopupMenu()) {}
  ~PopupMenu() {
    if (m_menu) DestroyMenu(m_menu);
  }
  PopupMenu(const PopupMenu&) = delete;
  PopupMenu& operator=(const PopupMenu&) = delete;
  HMENU get() const { return m_menu; }

 private:
  HMENU m_menu;
};

// A subclass installed with SetWindowSubclass. Removed when the owner goes or
// when the window is destroyed first (Detach from WM_NCDESTROY), whichever
// comes first.
class Subclass {
 public:
  Subclass() = default;
  ~Subclass() { Detach(); }
  Subclass(const Subclass&) = delete;
  Subclass& operator=(const Subclass&) = delete;

  bool Attach(HWND hwnd, SUBCLASSPROC proc, UINT_PTR id, DWORD_PTR data) {
    Detach();
    if (!SetWindowSubclass(hwnd, proc, id, data)) return false;
    m_hwnd = hwnd;
    m_proc = proc;
    m_id = id;
    return true;
  }
  void Detach() {
    if (m_hwnd) RemoveWindowSubclass(m_hwnd, m_proc, m_id);
    m_hwnd = nullptr;
  }
  HWND hwnd() const { return m_hwnd; }

 private:
  HWND m_hwnd = nullptr;
  SUBCLASSPROC m_proc = nullptr;
  UINT_PTR m_id = 0;
};

// A window class of this module, unregistered when the owner goes.
class WindowClass {
 public:
  explicit WindowClass(const WNDCLASSEXA& wc) : m_instance(wc.hInstance), m_name(wc.lpszClassName) {
    m_atom = RegisterClassExA(&wc);
  }
  ~WindowClass() {
    if (m_atom) UnregisterClassA(m_name, m_instance);
  }
  WindowClass(const WindowClass&) = delete;
  WindowClass& operator=(const WindowClass&) = delete;
  explicit operator bool() const { return m_atom != 0; }

 private:
  HINSTANCE m_instance;
  const char* m_name;
  ATOM m_atom = 0;
};

// A window timer, killed when the owner goes.
class Timer {
 public:
  Timer() = default;
  ~Timer() { Stop(); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  // Starts or restarts the timer: the system replaces a running one.
  void Start(HWND hwnd, UINT_PTR id, UINT period) {
    if (SetTimer(hwnd, id, period, nullptr)) {
      m_hwnd = hwnd;
      m_id = id;
    }
  }
  void Stop() {
    if (m_hwnd) KillTimer(m_hwnd, m_id);
    m_hwnd = nullptr;
  }

 private:
  HWND m_hwnd = nullptr;
  UINT_PTR m_id = 0;
};

}  // namespace tess::win32
