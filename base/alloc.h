// Allocation that fails softly. Every block the engine makes (images, frame
// lists, quantizer nodes) comes through here, so an out-of-memory condition is
// a null result that callers turn into the product's "Memory error" message
// rather than an exception or a crash. Tests use AllocFailureScope to make the
// n-th allocation fail and prove that every path reports it. Each block carries
// its size in a 16-byte header so the current thread's live and peak bytes can
// be read back (AllocCurrentBytes, AllocPeakBytes) at the cost of two adds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tess {

struct FreeDeleter {
  void operator()(void* p) const noexcept;
};

template <class T>
using Buffer = std::unique_ptr<T[], FreeDeleter>;

// Zero-initialised storage for `count` objects of trivial type T; null when the
// size overflows or memory is short.
void* AllocZeroed(size_t count, size_t size) noexcept;

template <class T>
Buffer<T> AllocBuffer(size_t count) noexcept {
  return Buffer<T>(static_cast<T*>(AllocZeroed(count, sizeof(T))));
}

// Bytes of blocks this thread has made and not yet freed, headers excluded. A
// block freed on another thread than the one that made it is subtracted there,
// so only a thread that frees its own blocks reads a meaningful figure.
int64_t AllocCurrentBytes() noexcept;
// The highest AllocCurrentBytes has been on this thread since it started or
// since the last ResetAllocPeak, which restarts it at the current figure.
int64_t AllocPeakBytes() noexcept;
void ResetAllocPeak() noexcept;
// The size a live block was asked for (count * size); 0 for null.
size_t AllocBlockSize(const void* p) noexcept;

// While one of these lives on the current thread, an allocation that would
// take the thread's live bytes (AllocCurrentBytes) past `limit` fails as if
// memory were short. The command line's --max-memory: a build that cannot
// fit ends with "Memory error" instead of driving the machine into swap.
// Only blocks made here count, not the small bookkeeping of std containers.
class AllocLimitScope {
 public:
  explicit AllocLimitScope(int64_t limit);
  ~AllocLimitScope();
  AllocLimitScope(const AllocLimitScope&) = delete;
  AllocLimitScope& operator=(const AllocLimitScope&) = delete;
  // Whether the ceiling refused a block while this scope lived, so a front
  // end can say that its limit, not the machine, ran out.
  bool refused() const;

 private:
  int64_t m_outer;  // the limit this one replaced; scopes nest
  long m_refusals_before;
};

// While one of these lives on the current thread, the allocation numbered
// `fail_at` (0 = the next one) and, when `sticky`, every later one fails.
class AllocFailureScope {
 public:
  explicit AllocFailureScope(long fail_at, bool sticky = false);
  ~AllocFailureScope();
  AllocFailureScope(const AllocFailureScope&) = delete;
  AllocFailureScope& operator=(const AllocFailureScope&) = delete;
  // How many allocations were asked for while the scope was active.
  long Count() const;
};

}  // namespace tess
