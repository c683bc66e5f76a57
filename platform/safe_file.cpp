// The platform-independent half of SafeFile: buffering, the temporary's name,
// the failure seam for tests and the registry the signal handler reads. The
// system calls are in safe_file_posix.cpp and safe_file_win32.cpp.
#include "platform/safe_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace tess {
namespace {

constexpr size_t kBufferSize = 64 * 1024;
constexpr uint64_t kNoFailure = UINT64_MAX;

thread_local uint64_t t_fail_at = kNoFailure;

// Paths are preformatted here so the signal handler only reads static
// storage. A slot is 0 free, 1 being filled or emptied, 2 ready.
constexpr int kSlots = 16;
constexpr size_t kSlotPath = 4096;
struct Slot {
  std::atomic<int> state{0};
  char path[kSlotPath];
};
Slot g_slots[kSlots];

// The name part of a path, after the last separator of either kind.
size_t NameStart(const std::string& path) {
  size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? 0 : slash + 1;
}

bool IsHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

}  // namespace

// ---------------------------------------------------------------- names

std::string SafeFile::TemporaryName(const std::string& path, uint32_t pid, uint32_t salt) {
  const size_t start = NameStart(path);
  char tail[32];
  std::snprintf(tail, sizeof tail, ".%u-%08x.part", static_cast<unsigned>(pid), static_cast<unsigned>(salt));
  return path.substr(0, start) + "." + path.substr(start) + tail;
}

bool SafeFile::TemporaryOwner(const std::string& path, const std::string& name, uint32_t* pid) {
  const std::string prefix = "." + path.substr(NameStart(path)) + ".";
  constexpr std::string_view kSuffix = ".part";
  if (name.size() < prefix.size() + kSuffix.size() + 10 || !name.starts_with(prefix) || !name.ends_with(kSuffix))
    return false;
  const std::string_view middle =
      std::string_view(name).substr(prefix.size(), name.size() - prefix.size() - kSuffix.size());
  const size_t dash = middle.find('-');
  if (dash == 0 || dash == std::string_view::npos || dash > 10 || middle.size() - dash - 1 != 8) return false;
  uint64_t value = 0;
  for (size_t i = 0; i < dash; ++i) {
    if (middle[i] < '0' || middle[i] > '9') return false;
    value = value * 10 + static_cast<uint64_t>(middle[i] - '0');
  }
  for (size_t i = dash + 1; i < middle.size(); ++i)
    if (!IsHex(middle[i])) return false;
  if (value > UINT32_MAX) return false;
  *pid = static_cast<uint32_t>(value);
  return true;
}

// ---------------------------------------------------------------- the sink

SafeFile::~SafeFile() { Abandon(); }

bool SafeFile::Open(const std::string& path, SafeFileMode mode) {
  Abandon();
  m_error.clear();
  m_failed = false;
  m_used = 0;
  m_written = 0;
  try {
    if (path.empty()) return Fail(std::strerror(ENOENT));
    m_target = path;
    m_temporary.clear();
#ifdef _WIN32
    m_crlf = mode == SafeFileMode::kText;
#else
    (void)mode;
    m_crlf = false;
#endif
    if (!m_buffer) m_buffer = AllocBuffer<uint8_t>(kBufferSize);
    if (!m_buffer) return Fail("Memory error");
    if (!OpenTarget()) {
      Abandon();  // keeps error()
      return false;
    }
  } catch (const std::bad_alloc&) {
    Abandon();
    m_error = "Memory error";
    return false;
  }
  m_open = true;
  return true;
}

bool SafeFile::Write(const void* data, size_t size) {
  if (!m_open || m_failed || m_settled) return false;
  const auto* bytes = static_cast<const uint8_t*>(data);
  for (size_t i = 0; i < size;) {
    if (m_used + 2 > kBufferSize && !Flush()) return false;
    if (m_crlf) {
      if (bytes[i] == '\n') m_buffer[m_used++] = '\r';
      m_buffer[m_used++] = bytes[i++];
      continue;
    }
    const size_t n = std::min(size - i, kBufferSize - m_used);
    std::memcpy(m_buffer.get() + m_used, bytes + i, n);
    m_used += n;
    i += n;
  }
  return true;
}

bool SafeFile::Flush() {
  if (m_failed) return false;
  const size_t allowed = safe_file_detail::AllowedBytes(m_written, m_used);
  bool ok = WriteOut(m_buffer.get(), allowed);
  m_written += allowed;
  if (ok && allowed < m_used) {
    m_failed = true;
    m_error = std::strerror(ENOSPC);
    ok = false;
  }
  m_used = 0;
  return ok;
}

bool SafeFile::Settle() {
  if (!m_open) return false;
  if (m_settled) return true;
  m_settled = !m_failed && Flush() && Sync();
  if (!m_settled) Abandon();  // keeps error()
  return m_settled;
}

bool SafeFile::Commit() {
  if (!Settle()) return false;
  const bool ok = Replace();
  if (!ok) Abandon();  // keeps error()
  m_open = false;
  m_settled = false;
  return ok;
}

void SafeFile::Abandon() {
  CloseHandle();
  if (!m_temporary.empty()) std::remove(m_temporary.c_str());
  safe_file_detail::ReleaseTemporary(m_slot);
  m_slot = -1;
  m_temporary.clear();
  m_open = false;
  m_settled = false;
  m_used = 0;
}

bool SafeFile::Fail(const char* reason) noexcept {
  m_failed = true;
  try {
    m_error = reason;
  } catch (...) {
    m_error.clear();
  }
  return false;
}

// ---------------------------------------------------------------- test seam

SafeFileFailureScope::SafeFileFailureScope(uint64_t fail_at) : m_previous(t_fail_at) { t_fail_at = fail_at; }
SafeFileFailureScope::~SafeFileFailureScope() { t_fail_at = m_previous; }

namespace safe_file_detail {

size_t AllowedBytes(uint64_t offset, size_t size) {
  if (t_fail_at == kNoFailure || offset + size <= t_fail_at) return size;
  return offset >= t_fail_at ? 0 : static_cast<size_t>(t_fail_at - offset);
}

// ---------------------------------------------------------------- registry

int RegisterTemporary(const std::string& path) {
  if (path.size() >= kSlotPath) return -1;
  for (int i = 0; i < kSlots; ++i) {
    int expected = 0;
    if (!g_slots[i].state.compare_exchange_strong(expected, 1)) continue;
    std::memcpy(g_slots[i].path, path.c_str(), path.size() + 1);
    g_slots[i].state.store(2);
    return i;
  }
  return -1;
}

void ReleaseTemporary(int slot) {
  if (slot >= 0 && slot < kSlots) g_slots[slot].state.store(0);
}

void ForEachRegistered(void (*remove)(const char* path)) {
  for (Slot& slot : g_slots)
    if (slot.state.load() == 2) remove(slot.path);
}

}  // namespace safe_file_detail
}  // namespace tess
