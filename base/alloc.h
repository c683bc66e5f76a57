// Allocation that fails softly. Every block the engine makes (images, frame
// lists, quantizer nodes) comes through here, so an out-of-memory condition is
// a null result that callers turn into the product's "Memory error" message
// rather than an exception or a crash. Tests use AllocFailureScope to make the
// n-th allocation fail and prove that every path reports it.
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
