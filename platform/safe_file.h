// The one way the product writes a file. A SafeFile is a ByteSink whose bytes
// go to a hidden temporary beside the target; Commit() flushes it to the disk
// and renames it over the target, so the target only ever holds its old bytes
// or all the new ones, whatever fails or whenever the process dies.
//
// The target is resolved first: a symbolic link is followed to the file it
// names (the temporary goes beside that file, so the link stays a link); a
// device or a pipe is written directly, since nothing can replace it; a folder
// is refused. Temporaries are named ".NAME.PID-XXXXXXXX.part", so the next
// save to the same path removes the ones a killed process left behind without
// touching those of a process still writing.
//
// The path "-" is the process's standard output, written directly like a
// pipe (a shell's redirection has made any file already). A terminal is
// refused: a picture's bytes would only garble it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/alloc.h"
#include "base/byte_sink.h"

namespace tess {

// The path that names the standard output ("./-" names a file called "-").
inline constexpr const char* kStandardOutputPath = "-";

enum class SafeFileMode {
  kBinary,
  // "\n" becomes CR LF on Windows, as the C library's text mode would write it.
  kText,
};

class SafeFile final : public ByteSink {
 public:
  SafeFile() = default;
  // Abandons an uncommitted file: the temporary is removed, the target kept.
  ~SafeFile() override;
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  // Resolves `path` and creates the temporary (or opens the device). False,
  // with error() set, when that cannot be done.
  bool Open(const std::string& path, SafeFileMode mode = SafeFileMode::kBinary);
  bool IsOpen() const { return m_open; }
  // Buffered; a failure sticks, and the sink stays failed until Abandon.
  bool Write(const void* data, size_t size) override;
  // Every byte to the disk, the temporary closed but not yet in place, so
  // files that belong together can all be written before any is replaced.
  // False, with error() set and the temporary removed, when a byte failed.
  bool Settle();
  // Settles if not done yet, then the rename. False, with error() set and the
  // temporary removed, when any write, the flush or the rename failed.
  bool Commit();
  // Closes and removes the temporary; the target is left as it was.
  void Abandon();

  // The system's reason for the last failure ("No space left on device"),
  // empty when nothing failed.
  const std::string& error() const { return m_error; }
  // The file that is being written (the link's target for a link).
  const std::string& target() const { return m_target; }
  // The temporary's path; empty when writing a device or pipe directly.
  const std::string& temporary() const { return m_temporary; }

  // What Open would refuse, checked without creating anything: a folder at
  // `path`, a missing or unwritable folder for it. False with the system's
  // reason in *reason.
  static bool CanWrite(const std::string& path, std::string* reason);

  // ".NAME.PID-XXXXXXXX.part" beside `path`.
  static std::string TemporaryName(const std::string& path, uint32_t pid, uint32_t salt);
  // The process id a temporary name for `path` carries; false when `name` is
  // not one of `path`'s temporaries.
  static bool TemporaryOwner(const std::string& path, const std::string& name, uint32_t* pid);

 private:
  // Per platform: resolve, create and write.
  bool OpenTarget();
  bool WriteOut(const uint8_t* data, size_t size);
  bool Sync();     // flush to the disk and close
  bool Replace();  // the rename
  void CloseHandle();
  void RemoveStaleTemporaries();

  bool Flush();
  // Never throws: short of memory for the text, the reason is left empty.
  bool Fail(const char* reason) noexcept;
  bool Fail(const std::string& reason) noexcept { return Fail(reason.c_str()); }

  std::string m_target;
  std::string m_temporary;
  std::string m_error;
  intptr_t m_handle = -1;
  Buffer<uint8_t> m_buffer;
  size_t m_used = 0;
  uint64_t m_written = 0;
  int m_slot = -1;  // where the signal handler finds the temporary
  bool m_open = false;
  bool m_failed = false;
  bool m_crlf = false;
  bool m_settled = false;
};

// Command-line hosts call this once: SIGINT, SIGTERM and SIGHUP (on Windows
// the console's Ctrl-C, Ctrl-Break and close events) then remove the
// temporaries of every open SafeFile before the process dies of them.
void RemoveTemporariesOnSignals();

// Test seam: while one lives, every SafeFile on this thread refuses the byte
// at offset `fail_at` and all after it, as a full disk does (ENOSPC).
class SafeFileFailureScope {
 public:
  explicit SafeFileFailureScope(uint64_t fail_at);
  ~SafeFileFailureScope();
  SafeFileFailureScope(const SafeFileFailureScope&) = delete;
  SafeFileFailureScope& operator=(const SafeFileFailureScope&) = delete;

 private:
  uint64_t m_previous;
};

namespace safe_file_detail {
// How many of `size` bytes at file offset `offset` the failure scope lets
// through (all of them when no scope is active).
size_t AllowedBytes(uint64_t offset, size_t size);
// The registry the signal handler reads: a slot per open temporary, its path
// preformatted in static storage. -1 when the path does not fit or no slot is
// free (the next run's sweep still removes a leftover).
int RegisterTemporary(const std::string& path);
void ReleaseTemporary(int slot);
// Calls remove(path) for every registered temporary; async-signal-safe when
// `remove` is.
void ForEachRegistered(void (*remove)(const char* path));
}  // namespace safe_file_detail

}  // namespace tess
