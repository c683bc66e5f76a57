// Window finding, control access and window captures for the test host.
#include "host/win32/testhost/ui_driver.h"

#include <cstdio>
#include <cstring>
#include <memory>

namespace tess::testhost {
namespace {

constexpr int kPollMs = 5;

std::string ClassOf(HWND hwnd) {
  char name[64] = {};
  GetClassNameA(hwnd, name, sizeof name);
  return name;
}

struct PopupSearch {
  HWND except;
  const char* caption;  // null: any
  HWND found = nullptr;
};

BOOL CALLBACK MatchPopup(HWND hwnd, LPARAM context) {
  auto* search = reinterpret_cast<PopupSearch*>(context);
  if (hwnd == search->except || !IsWindowVisible(hwnd) || ClassOf(hwnd) != "#32770") return TRUE;
  if (search->caption) {
    char text[256] = {};
    GetWindowTextA(hwnd, text, sizeof text);
    if (std::strcmp(text, search->caption) != 0) return TRUE;
  }
  search->found = hwnd;
  return FALSE;
}

template <class Predicate>
bool WaitFor(int timeout_ms, Predicate ready) {
  for (DWORD start = GetTickCount();;) {
    if (ready()) return true;
    if (static_cast<int>(GetTickCount() - start) > timeout_ms) return false;
    Sleep(kPollMs);
  }
}

bool WriteBmp(const std::string& path, const BITMAPINFOHEADER& header, const void* pixels,
              size_t pixel_bytes) {
  BITMAPFILEHEADER file{};
  file.bfType = 0x4D42;
  file.bfOffBits = sizeof file + sizeof header;
  file.bfSize = static_cast<DWORD>(file.bfOffBits + pixel_bytes);
  std::unique_ptr<FILE, int (*)(FILE*)> out(std::fopen(path.c_str(), "wb"), &std::fclose);
  return out && std::fwrite(&file, sizeof file, 1, out.get()) == 1 &&
         std::fwrite(&header, sizeof header, 1, out.get()) == 1 &&
         std::fwrite(pixels, 1, pixel_bytes, out.get()) == pixel_bytes;
}

}  // namespace

void Fail(const std::string& reason) { throw CaseFailure(reason); }

constexpr UINT kMsgMarker = WM_APP + 1;
constexpr const char* kMarkerClass = "TessTestHostMarker";

LRESULT CALLBACK MarkerProcedure(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == kMsgMarker) {
    SetEvent(reinterpret_cast<HANDLE>(lparam));
    return 0;
  }
  return DefWindowProcA(hwnd, message, wparam, lparam);
}

MarkerWindow::MarkerWindow() {
  WNDCLASSA window_class{};
  window_class.lpfnWndProc = &MarkerProcedure;
  window_class.hInstance = GetModuleHandleA(nullptr);
  window_class.lpszClassName = kMarkerClass;
  RegisterClassA(&window_class);
  m_hwnd = CreateWindowExA(0, kMarkerClass, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                           window_class.hInstance, nullptr);
}

MarkerWindow::~MarkerWindow() {
  if (m_hwnd) DestroyWindow(m_hwnd);
  UnregisterClassA(kMarkerClass, GetModuleHandleA(nullptr));
}

Ui::Ui(DWORD ui_thread, HWND marker, std::string shot_folder)
    : m_thread(ui_thread), m_marker(marker), m_folder(std::move(shot_folder)) {}

HWND Ui::WaitForDialog(const char* caption, int timeout_ms) const {
  PopupSearch search{nullptr, caption};
  WaitFor(timeout_ms, [&] {
    EnumThreadWindows(m_thread, &MatchPopup, reinterpret_cast<LPARAM>(&search));
    return search.found != nullptr;
  });
  if (!search.found) Fail(std::string("no dialog \"") + caption + "\" appeared");
  return search.found;
}

HWND Ui::FindPopup(HWND except) const {
  PopupSearch search{except, nullptr};
  EnumThreadWindows(m_thread, &MatchPopup, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

Popup Ui::WaitForPopup(HWND except, int timeout_ms) const {
  Popup popup;
  WaitFor(timeout_ms, [&] { return (popup.hwnd = FindPopup(except)) != nullptr; });
  if (!popup.hwnd) Fail("no message box appeared");
  // The box is visible before its text is final only in theory; settle first.
  Settle();
  popup.caption = Text(popup.hwnd);
  popup.text = Text(popup.hwnd, 0xFFFF);
  return popup;
}

void Ui::Dismiss(const Popup& popup) const {
  PostMessageA(popup.hwnd, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
  if (!WaitGone(popup.hwnd)) Fail("a message box would not close");
}

bool Ui::WaitGone(HWND hwnd, int timeout_ms) const {
  return WaitFor(timeout_ms, [&] { return !IsWindow(hwnd) || !IsWindowVisible(hwnd); });
}

void Ui::Click(HWND dialog, int id) const {
  HWND button = GetDlgItem(dialog, id);
  Expect(button != nullptr, "no control " + std::to_string(id));
  PostMessageA(button, BM_CLICK, 0, 0);
}

void Ui::Command(HWND dialog, int id) const {
  PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, 0), 0);
}

void Ui::SetText(HWND dialog, int id, const std::string& text) const {
  HWND control = GetDlgItem(dialog, id);
  Expect(control != nullptr, "no control " + std::to_string(id));
  SendMessageA(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

std::string Ui::Text(HWND dialog, int id) const {
  HWND control = GetDlgItem(dialog, id);
  return control ? Text(control) : std::string();
}

std::string Ui::Text(HWND hwnd) const {
  char text[1024] = {};
  SendMessageA(hwnd, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
  return text;
}

void Ui::SelectListItem(HWND dialog, int id, int index) const {
  HWND list = GetDlgItem(dialog, id);
  Expect(list != nullptr, "no list " + std::to_string(id));
  SendMessageA(list, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
  SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, CBN_CLOSEUP), reinterpret_cast<LPARAM>(list));
}

int Ui::ListSelection(HWND dialog, int id) const {
  return static_cast<int>(SendDlgItemMessageA(dialog, id, CB_GETCURSEL, 0, 0));
}

bool Ui::Checked(HWND dialog, int id) const {
  return SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void Ui::SetChecked(HWND dialog, int id, bool checked) const {
  if (Checked(dialog, id) == checked) return;
  Click(dialog, id);
  Expect(WaitFor(5000, [&] { return Checked(dialog, id) == checked; }),
         "check box " + std::to_string(id) + " did not change");
  Settle();
}

bool Ui::Enabled(HWND dialog, int id) const {
  HWND control = GetDlgItem(dialog, id);
  return control && IsWindowEnabled(control);
}

bool Ui::Visible(HWND dialog, int id) const {
  HWND control = GetDlgItem(dialog, id);
  return control && (GetWindowLongA(control, GWL_STYLE) & WS_VISIBLE) != 0;
}

void Ui::Settle(int timeout_ms) const {
  // Twice: what the first round handled may have posted more.
  HANDLE handled = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  for (int round = 0; round < 2 && handled; ++round) {
    ResetEvent(handled);
    PostMessageA(m_marker, kMsgMarker, 0, reinterpret_cast<LPARAM>(handled));
    if (WaitForSingleObject(handled, static_cast<DWORD>(timeout_ms)) != WAIT_OBJECT_0) break;
  }
  if (handled) CloseHandle(handled);
}

bool Ui::Shot(HWND hwnd, const std::string& name) const {
  RedrawWindow(hwnd, nullptr, nullptr,
               RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
  Settle();
  RECT rect;
  if (!GetWindowRect(hwnd, &rect)) return false;
  const int width = rect.right - rect.left, height = rect.bottom - rect.top;
  if (width <= 0 || height <= 0) return false;
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = width;
  header.biHeight = height;
  header.biPlanes = 1;
  header.biBitCount = 24;
  void* pixels = nullptr;
  HDC window_dc = GetWindowDC(hwnd);
  HDC memory_dc = CreateCompatibleDC(window_dc);
  HBITMAP bitmap = CreateDIBSection(window_dc, reinterpret_cast<BITMAPINFO*>(&header),
                                    DIB_RGB_COLORS, &pixels, nullptr, 0);
  bool ok = false;
  if (bitmap && memory_dc) {
    HGDIOBJ previous = SelectObject(memory_dc, bitmap);
    ok = BitBlt(memory_dc, 0, 0, width, height, window_dc, 0, 0, SRCCOPY) != 0;
    GdiFlush();
    SelectObject(memory_dc, previous);
    const size_t stride = ((static_cast<size_t>(width) * 24 + 31) / 32) * 4;
    ok = ok && WriteBmp(m_folder + "\\" + name + ".bmp", header, pixels, stride * height);
  }
  if (bitmap) DeleteObject(bitmap);
  if (memory_dc) DeleteDC(memory_dc);
  ReleaseDC(hwnd, window_dc);
  return ok;
}

std::vector<std::pair<int, std::string>> ControlValues(const Ui& ui, HWND dialog) {
  std::vector<std::pair<int, std::string>> values;
  for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    int id = GetDlgCtrlID(child);
    std::string kind = ClassOf(child);
    std::string value;
    if (_stricmp(kind.c_str(), "Button") == 0) {
      LONG style = GetWindowLongA(child, GWL_STYLE) & BS_TYPEMASK;
      if (style != BS_CHECKBOX && style != BS_AUTOCHECKBOX) continue;
      value = SendMessageA(child, BM_GETCHECK, 0, 0) == BST_CHECKED ? "checked" : "clear";
    } else if (_stricmp(kind.c_str(), "Edit") == 0) {
      value = ui.Text(child);
    } else if (_stricmp(kind.c_str(), "ComboBox") == 0) {
      value = "item " + std::to_string(SendMessageA(child, CB_GETCURSEL, 0, 0));
    } else {
      continue;
    }
    values.emplace_back(id, kind + " " + value);
  }
  return values;
}

}  // namespace tess::testhost
