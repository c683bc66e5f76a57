// The About box. Its title font is made from the dialog's own font and lives
// exactly as long as the box.
#include "shell/win32/about_dialog.h"

#include <windowsx.h>

#include "shell/strings.h"
#include "platform/win32/dialog_trampoline.h"
#include "shell/win32/emblem_view.h"
#include "platform/win32/win32_handles.h"

#ifndef TESS_VERSION_TEXT
#define TESS_VERSION_TEXT "1.0"
#endif

namespace tess::win32 {
namespace {

constexpr int kEmblemId = 17;
constexpr int kHelpId = 9;
constexpr int kTitleId = 1011;
constexpr int kVersionId = 1012;
constexpr UINT_PTR kEmblemTimer = 17;

class AboutDialog {
 public:
  AboutDialog(HelpService* help, Reporter& reporter) : m_help(help), m_reporter(reporter) {}

  void Attach(HWND hwnd) { m_hwnd = hwnd; }
  void ReportFailure() { m_reporter.ShowMessage(StringText(kStrMemoryError)); }

  INT_PTR HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
      case WM_INITDIALOG: return HANDLE_WM_INITDIALOG(m_hwnd, wparam, lparam, OnInitDialog);
      case WM_COMMAND: HANDLE_WM_COMMAND(m_hwnd, wparam, lparam, OnCommand); return TRUE;
      case WM_TIMER: HANDLE_WM_TIMER(m_hwnd, wparam, lparam, OnTimer); return TRUE;
      case WM_DESTROY: m_timer.Stop(); return FALSE;
    }
    return FALSE;
  }

 private:
  // The crackers call free-function shapes; these forward to the members.
  static BOOL OnInitDialog(HWND hwnd, HWND, LPARAM) { return Self(hwnd)->InitDialog(); }
  static void OnCommand(HWND hwnd, int id, HWND, UINT) { Self(hwnd)->Command(id); }
  static void OnTimer(HWND hwnd, UINT) { SendDlgItemMessageA(hwnd, kEmblemId, kMsgEmblemStep, 0, 0); }
  static AboutDialog* Self(HWND hwnd) {
    return reinterpret_cast<AboutDialog*>(GetWindowLongPtrA(hwnd, DWLP_USER));
  }

  BOOL InitDialog() {
    SetDlgItemTextA(m_hwnd, kVersionId, "Version " TESS_VERSION_TEXT);
    MakeTitleFont();
    m_timer.Start(m_hwnd, kEmblemTimer, kEmblemPeriod);
    return TRUE;
  }

  void MakeTitleFont() {
    LOGFONTA font{};
    if (!GetObjectA(GetWindowFont(m_hwnd), sizeof font, &font)) return;
    font.lfWeight = FW_BOLD;
    font.lfHeight = font.lfHeight * 3 / 2;
    m_title_font.Reset(CreateFontIndirectA(&font));
    if (m_title_font) SetWindowFont(GetDlgItem(m_hwnd, kTitleId), m_title_font.get(), FALSE);
  }

  void Command(int id) {
    if (id == IDOK || id == IDCANCEL) EndDialog(m_hwnd, id);
    if (id == kHelpId) ShowHelp(m_help, m_reporter, kHelpAnchorAbout);
  }

  HWND m_hwnd = nullptr;
  HelpService* m_help;
  Reporter& m_reporter;
  Font m_title_font;
  Timer m_timer;
};

}  // namespace

void RunAboutDialog(HINSTANCE instance, HWND owner, HelpService* help, Reporter& reporter) {
  AboutDialog dialog(help, reporter);
  DialogBoxParamA(instance, MAKEINTRESOURCEA(kAboutDialogId), owner,
                  &DialogTrampoline<AboutDialog>, reinterpret_cast<LPARAM>(&dialog));
}

}  // namespace tess::win32
