// SafeFile on Windows: paths arrive in the ANSI code page, as stdio took them,
// and are widened for the wide-character calls. The temporary is made with
// CREATE_NEW, flushed with FlushFileBuffers and moved over the target with
// MoveFileExW (replace, write through). A device (NUL, CON, a pipe) is
// written directly, and so is the standard output, through a copy of its
// handle. Ctrl-C, Ctrl-Break and closing the console remove the
// open temporaries; leftovers of dead processes are swept by name on every
// open.
#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>
#include <utility>

#include "platform/safe_file.h"

namespace tess {
namespace {

std::wstring Wide(const std::string& text) {
  if (text.empty()) return {};
  const int n = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(n), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), out.data(), n);
  return out;
}

// The system's text for `code`, without its line end or full stop. Kept per
// thread, so failing never needs memory.
const char* Reason(DWORD code) {
  if (code == ERROR_DISK_FULL || code == ERROR_HANDLE_DISK_FULL) return std::strerror(ENOSPC);
  thread_local char text[512];
  DWORD n = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, text,
                           sizeof text, nullptr);
  while (n > 0 && (text[n - 1] == '\r' || text[n - 1] == '\n' || text[n - 1] == '.')) --n;
  if (n == 0) std::snprintf(text, sizeof text, "system error %lu", static_cast<unsigned long>(code));
  else text[n] = '\0';
  return text;
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.find_last_of("/\\");
  if (slash == std::string::npos) return ".";
  return path.substr(0, slash == 0 || (slash == 2 && path[1] == ':') ? slash + 1 : slash);
}

HANDLE AsHandle(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

bool ProcessGone(uint32_t pid) {
  HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, pid);
  if (!process) return GetLastError() == ERROR_INVALID_PARAMETER;
  const bool gone = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
  ::CloseHandle(process);
  return gone;
}

// True when `path` is something other than a disk file (NUL, CON, a pipe),
// which cannot be replaced and is written directly.
bool IsDevice(const std::wstring& path) {
  HANDLE h = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  const bool device = GetFileType(h) != FILE_TYPE_DISK;
  ::CloseHandle(h);
  return device;
}

// The standard output's handle; false, with the reason, when there is none
// or it is a console, which a picture's bytes would only garble. (NUL is a
// character device too, but not a console.)
bool StandardOutput(HANDLE* out, std::string* reason) {
  *out = GetStdHandle(STD_OUTPUT_HANDLE);
  if (*out == INVALID_HANDLE_VALUE || *out == nullptr) return (*reason = Reason(ERROR_INVALID_HANDLE), false);
  DWORD console_mode = 0;
  if (GetConsoleMode(*out, &console_mode)) return (*reason = "it is a terminal", false);
  return true;
}

void DeleteForConsoleEvent(const char* path) { DeleteFileA(path); }

// Runs on a thread of its own; the default handler then ends the process.
BOOL WINAPI OnConsoleEvent(DWORD) {
  safe_file_detail::ForEachRegistered(&DeleteForConsoleEvent);
  return FALSE;
}

}  // namespace

bool SafeFile::OpenTarget() {
  if (m_target == kStandardOutputPath) {
    HANDLE out = INVALID_HANDLE_VALUE;
    std::string reason;
    if (!StandardOutput(&out, &reason)) return Fail(reason);
    // A copy of the handle, so that closing it leaves the stream open.
    HANDLE copy = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), out, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS))
      return Fail(Reason(GetLastError()));
    m_handle = reinterpret_cast<intptr_t>(copy);
    return true;
  }
  const std::wstring target = Wide(m_target);
  const DWORD attributes = GetFileAttributesW(target.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
    return Fail(std::strerror(EISDIR));
  if (IsDevice(target)) {
    HANDLE h = CreateFileW(target.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    if (h == INVALID_HANDLE_VALUE) return Fail(Reason(GetLastError()));
    m_handle = reinterpret_cast<intptr_t>(h);
    return true;
  }
  RemoveStaleTemporaries();
  uint32_t salt;
  try {
    std::random_device device;
    salt = device();
  } catch (...) {
    salt = GetCurrentProcessId() * 2654435761u;  // CREATE_NEW still keeps names apart
  }
  for (int attempt = 0; attempt < 100; ++attempt) {
    std::string name = TemporaryName(m_target, GetCurrentProcessId(), salt++);
    m_slot = safe_file_detail::RegisterTemporary(name);
    // Shared for deletion only, so a console event can delete it while open.
    HANDLE h = CreateFileW(Wide(name).c_str(), GENERIC_WRITE, FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h != INVALID_HANDLE_VALUE) {
      // Moved, not copied: nothing may fail between creating the file and
      // remembering it, or it would outlive this object.
      m_handle = reinterpret_cast<intptr_t>(h);
      m_temporary = std::move(name);
      return true;
    }
    const DWORD code = GetLastError();
    safe_file_detail::ReleaseTemporary(m_slot);
    m_slot = -1;
    if (code != ERROR_FILE_EXISTS && code != ERROR_ALREADY_EXISTS) return Fail(Reason(code));
  }
  return Fail(Reason(ERROR_FILE_EXISTS));
}

bool SafeFile::WriteOut(const uint8_t* data, size_t size) {
  while (size > 0) {
    const DWORD chunk = size > 0x40000000u ? 0x40000000u : static_cast<DWORD>(size);
    DWORD written = 0;
    if (!WriteFile(AsHandle(m_handle), data, chunk, &written, nullptr)) return Fail(Reason(GetLastError()));
    data += written;
    size -= written;
  }
  return true;
}

bool SafeFile::Sync() {
  HANDLE h = AsHandle(m_handle);
  // A pipe or a device cannot be flushed to a disk; closing it is all there is.
  if (!m_temporary.empty() && !FlushFileBuffers(h)) return Fail(Reason(GetLastError()));
  m_handle = -1;
  return ::CloseHandle(h) || Fail(Reason(GetLastError()));
}

bool SafeFile::Replace() {
  if (m_temporary.empty()) return true;
  if (!MoveFileExW(Wide(m_temporary).c_str(), Wide(m_target).c_str(),
                   MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    return Fail(Reason(GetLastError()));
  m_temporary.clear();
  safe_file_detail::ReleaseTemporary(m_slot);
  m_slot = -1;
  return true;
}

void SafeFile::CloseHandle() {
  if (m_handle != -1) ::CloseHandle(AsHandle(m_handle));
  m_handle = -1;
}

void SafeFile::RemoveStaleTemporaries() {
  const std::string folder = FolderOf(m_target);
  std::string separator = folder.empty() || folder.back() == '\\' || folder.back() == '/' ? "" : "\\";
  WIN32_FIND_DATAW found;
  HANDLE search = FindFirstFileW(Wide(folder + separator + ".*.part").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    char name[MAX_PATH * 3];
    const int n = WideCharToMultiByte(CP_ACP, 0, found.cFileName, -1, name, sizeof name, nullptr, nullptr);
    uint32_t pid = 0;
    if (n > 0 && TemporaryOwner(m_target, name, &pid) && pid != GetCurrentProcessId() && ProcessGone(pid))
      DeleteFileW(Wide(folder + separator + name).c_str());
  } while (FindNextFileW(search, &found));
  FindClose(search);
}

bool SafeFile::CanWrite(const std::string& path, std::string* reason) {
  if (path == kStandardOutputPath) {
    HANDLE out;
    return StandardOutput(&out, reason);
  }
  const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
    return (*reason = std::strerror(EISDIR), false);
  if (IsDevice(Wide(path))) return true;
  const DWORD folder = GetFileAttributesW(Wide(FolderOf(path)).c_str());
  if (folder == INVALID_FILE_ATTRIBUTES) return (*reason = Reason(GetLastError()), false);
  if (!(folder & FILE_ATTRIBUTE_DIRECTORY)) return (*reason = Reason(ERROR_DIRECTORY), false);
  return true;
}

void RemoveTemporariesOnSignals() { SetConsoleCtrlHandler(&OnConsoleEvent, TRUE); }

}  // namespace tess
