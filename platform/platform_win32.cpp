// Win32 implementation of the platform services: shell special folders, the
// keyboard state, local time and the shell's program launching. All calls use
// the ANSI entry points, like the rest of the plug-in's paths. Every override
// catches everything: no exception may reach the host's thread.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace tess {
namespace {

// Browsers tried in turn before falling back to the program associated with
// the file itself.
constexpr const char* kBrowsers[] = {
    "firefox.exe",
    "opera.exe",
    "c:\\Program Files\\Opera\\opera.exe",
    "netscape.exe",
    "iexplore.exe",
};

// ShellExecute and FindExecutable report success as a value above 32.
bool ShellSucceeded(HINSTANCE result) { return reinterpret_cast<INT_PTR>(result) > 32; }

int ShowMode(bool maximised) { return maximised ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL; }

std::string SpecialFolder(int csidl) {
  LPITEMIDLIST pidl = nullptr;
  if (FAILED(SHGetSpecialFolderLocation(nullptr, csidl, &pidl)) || !pidl) return {};
  char path[MAX_PATH] = {};
  BOOL ok = SHGetPathFromIDListA(pidl, path);
  CoTaskMemFree(pidl);
  return ok ? std::string(path) : std::string();
}

// A command-line argument as the C runtime splits it: quoted when it holds a
// space, so "C:\Program Files\..." stays one argument.
std::string Argument(const std::string& text) {
  if (text.empty() || text.find(' ') == std::string::npos || text.front() == '"') return text;
  return '"' + text + '"';
}

// Starts `program text` as a new process; the handles we are given back are
// closed at once because nobody waits for the browser.
bool StartProcess(const std::string& program, const std::string& text, bool maximised) {
  std::string line = Argument(program) + ' ' + Argument(text);
  std::vector<char> command(line.begin(), line.end());
  command.push_back('\0');
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  if (maximised) {
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWMAXIMIZED;
  }
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE,
                      NORMAL_PRIORITY_CLASS, nullptr, nullptr, &startup, &process))
    return false;
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return true;
}

bool LaunchKnownBrowser(const std::string& address, bool maximised) {
  for (const char* browser : kBrowsers) {
    if (ShellSucceeded(ShellExecuteA(nullptr, "open", browser, address.c_str(), nullptr,
                                     ShowMode(maximised))))
      return true;
  }
  return false;
}

// The program Windows associates with `original` as a file, started on it.
bool LaunchAssociatedProgram(const std::string& original, bool maximised) {
  char program[MAX_PATH] = {};
  if (!ShellSucceeded(FindExecutableA(original.c_str(), nullptr, program))) return false;
  return StartProcess(program, original, maximised);
}

class Win32Platform final : public Platform {
 public:
  std::string AppDataFolder() override {
    try {
      const char* over = std::getenv("TESSARINE_APPDATA");
      if (over && *over) return over;
      return SpecialFolder(CSIDL_APPDATA);
    } catch (...) {
      return {};
    }
  }

  std::string DocumentsFolder() override {
    try {
      return SpecialFolder(CSIDL_PERSONAL);
    } catch (...) {
      return {};
    }
  }

  char PathSeparator() const override { return '\\'; }

  // TESSARINE_TEST_SHIFT, when set, stands in for the key so the Windows
  // test host can open the dialog with Shift "held" ("1") or released
  // (anything else). Read through the process environment, not the C
  // runtime's copy, so a value set after the DLL loaded is seen.
  bool ShiftDown() override {
    char value[4] = {};
    DWORD length = GetEnvironmentVariableA("TESSARINE_TEST_SHIFT", value, sizeof value);
    if (length > 0 && length < sizeof value) return value[0] == '1' && value[1] == 0;
    return (GetKeyState(VK_SHIFT) & 0x8000) != 0;
  }

  LocalTime Now() override {
    SYSTEMTIME st{};
    GetLocalTime(&st);
    return LocalTime{st.wYear, st.wMonth - 1, st.wDay, st.wDayOfWeek,
                     st.wHour, st.wMinute, st.wSecond};
  }

  bool OpenDocument(const std::string& path, bool maximised) override {
    return ShellSucceeded(
        ShellExecuteA(nullptr, nullptr, path.c_str(), nullptr, nullptr, ShowMode(maximised)));
  }

  bool LaunchBrowser(const std::string& address, const std::string& original,
                     bool maximised) override {
    try {
      return LaunchKnownBrowser(address, maximised) ||
             LaunchAssociatedProgram(original, maximised);
    } catch (...) {
      return false;
    }
  }
};

static_assert(CSIDL_APPDATA == 26 && CSIDL_PERSONAL == 5);

}  // namespace

Platform& SystemPlatform() {
  static Win32Platform platform;
  return platform;
}

}  // namespace tess
