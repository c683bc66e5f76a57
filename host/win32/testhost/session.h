// One run of PLUGINDoBuild with a script driving its dialog: the host's
// thread (this one) sits in the export while a worker thread runs the script.
// Whatever the script does or fails to do, the dialog is closed afterwards
// (message boxes and the dialog are cancelled) so the next case starts clean;
// a dialog that cannot be closed ends the whole run.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "host/win32/testhost/host_double.h"
#include "host/win32/testhost/ui_driver.h"
#include "plugin/host_interface.h"

namespace tess::testhost {

struct Plugin {
  using GetParamsFunction = int32_t(__stdcall*)(void* record, int32_t reserved);
  using DoBuildFunction = int32_t(__stdcall*)(HWND parent, const HostRecord* host, int32_t reserved);
  HMODULE module = nullptr;
  GetParamsFunction get_params = nullptr;
  DoBuildFunction do_build = nullptr;
};

class Session;
using Script = std::function<void(Session&)>;

class Session {
 public:
  Session(const Plugin& plugin, HostDouble& host, const std::string& shot_folder);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Calls PLUGINDoBuild with `record` while `script` runs; throws CaseFailure
  // with the script's failure once the dialog is closed again.
  void Run(const HostRecord& record, Script script);

  // For scripts: the main dialog once it is on screen, with the time it took
  // from the call of PLUGINDoBuild; the host learns the window it must see
  // as owner.
  HWND OpenDialog();
  double open_ms() const { return m_open_ms; }
  // The host thread's processor time over the same span: what opening the
  // dialog cost, whatever else the machine was doing.
  double open_cpu_ms() const { return m_open_cpu_ms; }
  // True once PLUGINDoBuild has returned.
  bool WaitReturned(int timeout_ms);
  int32_t result() const { return m_result; }

  Ui& ui() { return m_ui; }
  HostDouble& host() { return m_host; }

 private:
  static DWORD WINAPI Worker(void* self);
  void CloseLeftovers();
  double MillisecondsSinceCall() const;
  double HostThreadCpuMs() const;

  const Plugin& m_plugin;
  HostDouble& m_host;
  MarkerWindow m_marker;
  Ui m_ui;
  Script m_script;
  std::string m_failure;
  std::atomic<bool> m_returned{false};
  int32_t m_result = -1;
  LARGE_INTEGER m_called{};
  double m_open_ms = -1;
  double m_open_cpu_ms = -1;
  double m_called_cpu_ms = 0;
  HANDLE m_host_thread = nullptr;
};

}  // namespace tess::testhost
