// SafeFile on POSIX: links followed by hand (a dangling link still names the
// file to create), the temporary made with O_EXCL beside the real target and
// given the old file's permissions, fsync before the rename and on the folder
// after it. Leftovers of dead processes are swept by name on every open. The
// standard output is written through a copy of its descriptor.
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <random>
#include <utility>

#include "platform/safe_file.h"

namespace tess {
namespace {

constexpr int kMaxLinks = 40;
constexpr const char* kTerminalReason = "it is a terminal";

const char* Reason(int code) { return std::strerror(code); }

std::string FolderOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// What stands at a path once links are followed.
struct Resolved {
  std::string path;
  bool exists = false;
  struct stat st {};
};

// Follows links to the final name; a missing final name is fine (it is the
// file to create), anything else that fails is the system's reason.
bool Resolve(const std::string& path, Resolved* out, std::string* reason) {
  std::string p = path;
  for (int hops = 0;; ++hops) {
    struct stat st;
    if (lstat(p.c_str(), &st) != 0) {
      if (errno != ENOENT) return (*reason = Reason(errno), false);
      out->path = p;
      out->exists = false;
      return true;
    }
    if (!S_ISLNK(st.st_mode)) {
      out->path = p;
      out->exists = true;
      out->st = st;
      return true;
    }
    if (hops == kMaxLinks) return (*reason = Reason(ELOOP), false);
    char link[4096];
    const ssize_t n = readlink(p.c_str(), link, sizeof link - 1);
    if (n < 0) return (*reason = Reason(errno), false);
    link[n] = '\0';
    p = link[0] == '/' || p.find('/') == std::string::npos ? std::string(link) : FolderOf(p) + "/" + link;
  }
}

bool IsDirect(const struct stat& st) {
  return S_ISCHR(st.st_mode) || S_ISBLK(st.st_mode) || S_ISFIFO(st.st_mode) || S_ISSOCK(st.st_mode);
}

bool ProcessGone(uint32_t pid) {
  return pid != 0 && kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
}

void UnlinkForSignal(const char* path) { unlink(path); }

void OnTerminatingSignal(int signal_number) {
  const int saved = errno;
  safe_file_detail::ForEachRegistered(&UnlinkForSignal);
  errno = saved;
  // Die of the same signal, so the parent sees what happened.
  ::signal(signal_number, SIG_DFL);
  ::raise(signal_number);
}

}  // namespace

bool SafeFile::OpenTarget() {
  if (m_target == kStandardOutputPath) {
    if (isatty(STDOUT_FILENO)) return Fail(kTerminalReason);
    // A copy of the descriptor, so that closing it leaves the stream open.
    const int fd = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    if (fd < 0) return Fail(Reason(errno));
    m_handle = fd;
    return true;
  }
  // Nothing can stand in for a device or a pipe: its bytes go straight in.
  // Asked first and through the name as given, since the system's own links
  // (/dev/stdout, /proc/self/fd/N) name pipes that no path reaches.
  struct stat st;
  if (stat(m_target.c_str(), &st) == 0 && IsDirect(st)) {
    const int fd = ::open(m_target.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return Fail(Reason(errno));
    m_handle = fd;
    return true;
  }
  Resolved resolved;
  std::string reason;
  if (!Resolve(m_target, &resolved, &reason)) return Fail(reason);
  m_target = resolved.path;
  if (resolved.exists && S_ISDIR(resolved.st.st_mode)) return Fail(Reason(EISDIR));
  if (resolved.exists && !S_ISREG(resolved.st.st_mode)) return Fail(Reason(EINVAL));
  RemoveStaleTemporaries();
  uint32_t salt;
  try {
    std::random_device device;
    salt = device();
  } catch (...) {
    salt = static_cast<uint32_t>(getpid()) * 2654435761u;  // O_EXCL still keeps names apart
  }
  // A new file gets the usual 0666 less the umask; a replacement keeps the
  // permissions of the file it replaces.
  const mode_t mode = resolved.exists ? 0600 : 0666;
  for (int attempt = 0; attempt < 100; ++attempt) {
    std::string name = TemporaryName(m_target, static_cast<uint32_t>(getpid()), salt++);
    // Registered before it exists, so a signal between the two cannot miss it.
    m_slot = safe_file_detail::RegisterTemporary(name);
    const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOCTTY | O_CLOEXEC, mode);
    if (fd >= 0) {
      // Moved, not copied: nothing may fail between creating the file and
      // remembering it, or it would outlive this object.
      m_handle = fd;
      m_temporary = std::move(name);
      if (resolved.exists && fchmod(fd, resolved.st.st_mode & 07777) != 0) return Fail(Reason(errno));
      return true;
    }
    const int code = errno;
    safe_file_detail::ReleaseTemporary(m_slot);
    m_slot = -1;
    if (code != EEXIST) return Fail(Reason(code));
  }
  return Fail(Reason(EEXIST));
}

bool SafeFile::WriteOut(const uint8_t* data, size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(static_cast<int>(m_handle), data, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return Fail(Reason(errno));
    }
    data += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

bool SafeFile::Sync() {
  const int fd = static_cast<int>(m_handle);
  // A pipe or a device cannot be synced; closing it is all there is.
  if (!m_temporary.empty() && fsync(fd) != 0) return Fail(Reason(errno));
  m_handle = -1;
  return ::close(fd) == 0 || Fail(Reason(errno));
}

bool SafeFile::Replace() {
  if (m_temporary.empty()) return true;
  if (::rename(m_temporary.c_str(), m_target.c_str()) != 0) return Fail(Reason(errno));
  m_temporary.clear();
  safe_file_detail::ReleaseTemporary(m_slot);
  m_slot = -1;
  // The rename itself reaches the disk with the folder (at best: the file is
  // in place, so short memory for the name only skips this).
  try {
    const int folder = ::open(FolderOf(m_target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
      fsync(folder);
      ::close(folder);
    }
  } catch (const std::bad_alloc&) {
  }
  return true;
}

void SafeFile::CloseHandle() {
  if (m_handle >= 0) ::close(static_cast<int>(m_handle));
  m_handle = -1;
}

void SafeFile::RemoveStaleTemporaries() {
  const std::string folder = FolderOf(m_target);
  DIR* dir = opendir(folder.c_str());
  if (!dir) return;
  try {
    while (const dirent* entry = readdir(dir)) {
      uint32_t pid = 0;
      if (entry->d_name[0] == '.' && TemporaryOwner(m_target, entry->d_name, &pid) && ProcessGone(pid))
        unlink((folder + "/" + entry->d_name).c_str());
    }
  } catch (...) {
    closedir(dir);
    throw;
  }
  closedir(dir);
}

bool SafeFile::CanWrite(const std::string& path, std::string* reason) {
  if (path == kStandardOutputPath) {
    if (isatty(STDOUT_FILENO)) return (*reason = kTerminalReason, false);
    const int flags = fcntl(STDOUT_FILENO, F_GETFL);
    if (flags < 0) return (*reason = Reason(errno), false);
    if ((flags & O_ACCMODE) == O_RDONLY) return (*reason = Reason(EBADF), false);
    return true;
  }
  struct stat direct;
  if (stat(path.c_str(), &direct) == 0 && IsDirect(direct)) {
    if (access(path.c_str(), W_OK) == 0) return true;
    return (*reason = Reason(errno), false);
  }
  Resolved resolved;
  if (!Resolve(path, &resolved, reason)) return false;
  if (resolved.exists && S_ISDIR(resolved.st.st_mode)) return (*reason = Reason(EISDIR), false);
  const std::string folder = FolderOf(resolved.path);
  struct stat st;
  if (stat(folder.c_str(), &st) != 0) return (*reason = Reason(errno), false);
  if (!S_ISDIR(st.st_mode)) return (*reason = Reason(ENOTDIR), false);
  if (access(folder.c_str(), W_OK | X_OK) != 0) return (*reason = Reason(errno), false);
  return true;
}

void RemoveTemporariesOnSignals() {
  struct sigaction action {};
  action.sa_handler = &OnTerminatingSignal;
  sigemptyset(&action.sa_mask);
  for (int signal_number : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal_number, &action, nullptr);
}

}  // namespace tess
