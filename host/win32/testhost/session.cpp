// The two threads of a dialog run.
#include "host/win32/testhost/session.h"

#include <cstdio>

namespace tess::testhost {
namespace {

constexpr const char* kMainDialogCaption = "Tessarine #1";
// Long enough for the slowest build of the default effect under Wine.
constexpr int kCloseTimeoutMs = 20000;

BOOL CALLBACK CancelPopup(HWND hwnd, LPARAM) {
  char name[16] = {};
  GetClassNameA(hwnd, name, sizeof name);
  if (IsWindowVisible(hwnd) && std::string(name) == "#32770")
    PostMessageA(hwnd, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
  return TRUE;
}

}  // namespace

Session::Session(const Plugin& plugin, HostDouble& host, const std::string& shot_folder)
    : m_plugin(plugin),
      m_host(host),
      m_ui(GetCurrentThreadId(), m_marker.hwnd(), shot_folder),
      m_host_thread(OpenThread(THREAD_QUERY_INFORMATION, FALSE, GetCurrentThreadId())) {}

Session::~Session() {
  if (m_host_thread) CloseHandle(m_host_thread);
}

void Session::Run(const HostRecord& record, Script script) {
  m_script = std::move(script);
  ActiveHost active(m_host);
  m_called_cpu_ms = HostThreadCpuMs();
  QueryPerformanceCounter(&m_called);
  HANDLE worker = CreateThread(nullptr, 0, &Session::Worker, this, 0, nullptr);
  if (!worker) Fail("cannot start the worker thread");
  m_result = m_plugin.do_build(nullptr, &record, 0);
  m_returned = true;
  // The worker only waits for windows now; pump in case it settles with us.
  while (MsgWaitForMultipleObjects(1, &worker, FALSE, kCloseTimeoutMs, QS_ALLINPUT) ==
         WAIT_OBJECT_0 + 1) {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
  }
  CloseHandle(worker);
  if (!m_failure.empty()) Fail(m_failure);
}

DWORD WINAPI Session::Worker(void* self) {
  auto* session = static_cast<Session*>(self);
  try {
    session->m_script(*session);
  } catch (const std::exception& failure) {
    session->m_failure = failure.what();
    if (session->m_failure.empty()) session->m_failure = "failed";
  }
  session->CloseLeftovers();
  return 0;
}

void Session::CloseLeftovers() {
  for (DWORD start = GetTickCount(); !m_returned;) {
    if (GetTickCount() - start > kCloseTimeoutMs) {
      std::printf("FAIL dialog: the dialog could not be closed; giving up\n");
      std::fflush(stdout);
      TerminateProcess(GetCurrentProcess(), 3);
    }
    EnumThreadWindows(m_ui.thread(), &CancelPopup, 0);
    Sleep(200);
  }
}

HWND Session::OpenDialog() {
  for (;;) {
    // Polled finely: this measures how long the dialog takes to appear.
    HWND dialog = FindWindowA("#32770", kMainDialogCaption);
    if (dialog && IsWindowVisible(dialog)) {
      m_open_ms = MillisecondsSinceCall();
      m_open_cpu_ms = HostThreadCpuMs() - m_called_cpu_ms;
      m_host.set_dialog(dialog);
      m_ui.Settle();
      return dialog;
    }
    if (m_returned) Fail("PLUGINDoBuild returned without showing the dialog");
    if (MillisecondsSinceCall() > 10000) Fail("the dialog did not appear");
    Sleep(1);
  }
}

bool Session::WaitReturned(int timeout_ms) {
  for (DWORD start = GetTickCount(); !m_returned; Sleep(5))
    if (static_cast<int>(GetTickCount() - start) > timeout_ms) return false;
  return true;
}

double Session::MillisecondsSinceCall() const {
  LARGE_INTEGER now, frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(now.QuadPart - m_called.QuadPart) * 1000.0 / frequency.QuadPart;
}

double Session::HostThreadCpuMs() const {
  FILETIME created, exited, kernel, user;
  if (!m_host_thread || !GetThreadTimes(m_host_thread, &created, &exited, &kernel, &user)) return 0;
  auto ms = [](const FILETIME& t) {
    return static_cast<double>((static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime) / 1e4;
  };
  return ms(kernel) + ms(user);
}

}  // namespace tess::testhost
