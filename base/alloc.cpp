// Soft-failing allocation with a per-thread fault injector for tests and
// per-thread byte accounting. Every block is calloc'ed with a kHeader prefix
// holding its requested size, so the pointer handed out keeps the 16-byte
// alignment malloc gives and FreeDeleter can subtract exactly what was added.
#include "base/alloc.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace tess {
namespace {

constexpr size_t kHeader = 16;
static_assert(sizeof(size_t) <= kHeader, "the size must fit in the header");

// The injector is per thread and only active inside an AllocFailureScope, so
// production code never sees it and parallel tests cannot disturb each other.
struct FailureInjector {
  bool active = false;
  bool sticky = false;
  long fail_at = 0;
  long count = 0;
};
thread_local FailureInjector t_injector;

// Per thread for the same reason, and so the counters need no atomics.
struct ByteCounts {
  int64_t current = 0;
  int64_t peak = 0;
  int64_t limit = INT64_MAX;
  long refusals = 0;  // by the limit
};
thread_local ByteCounts t_bytes;

bool InjectFailure() {
  FailureInjector& f = t_injector;
  if (!f.active) return false;
  long n = f.count++;
  return n == f.fail_at || (f.sticky && n > f.fail_at);
}

unsigned char* HeaderOf(const void* p) {
  return const_cast<unsigned char*>(static_cast<const unsigned char*>(p)) - kHeader;
}

}  // namespace

void FreeDeleter::operator()(void* p) const noexcept {
  if (!p) return;
  t_bytes.current -= static_cast<int64_t>(AllocBlockSize(p));
  std::free(HeaderOf(p));
}

void* AllocZeroed(size_t count, size_t size) noexcept {
  if (InjectFailure()) return nullptr;
  if (count == 0 || size == 0) count = size = 1;
  if (count > SIZE_MAX / size) return nullptr;
  size_t bytes = count * size;
  if (bytes > SIZE_MAX - kHeader) return nullptr;
  ByteCounts& b = t_bytes;
  // Both sides are below 2^63: current is a sum of live blocks. (A 32-bit
  // size_t never reaches 2^63; widening first keeps one test for both.)
  const uint64_t wanted = bytes;
  if (wanted > static_cast<uint64_t>(INT64_MAX) || static_cast<int64_t>(wanted) > b.limit - b.current) {
    ++b.refusals;
    return nullptr;
  }
  auto* block = static_cast<unsigned char*>(std::calloc(1, bytes + kHeader));
  if (!block) return nullptr;
  std::memcpy(block, &bytes, sizeof bytes);
  b.current += static_cast<int64_t>(bytes);
  if (b.current > b.peak) b.peak = b.current;
  return block + kHeader;
}

size_t AllocBlockSize(const void* p) noexcept {
  if (!p) return 0;
  size_t bytes;
  std::memcpy(&bytes, HeaderOf(p), sizeof bytes);
  return bytes;
}

int64_t AllocCurrentBytes() noexcept { return t_bytes.current; }
int64_t AllocPeakBytes() noexcept { return t_bytes.peak; }
void ResetAllocPeak() noexcept { t_bytes.peak = t_bytes.current; }

AllocLimitScope::AllocLimitScope(int64_t limit)
    : m_outer(t_bytes.limit), m_refusals_before(t_bytes.refusals) {
  t_bytes.limit = limit;
}

AllocLimitScope::~AllocLimitScope() { t_bytes.limit = m_outer; }

bool AllocLimitScope::refused() const { return t_bytes.refusals != m_refusals_before; }

AllocFailureScope::AllocFailureScope(long fail_at, bool sticky) {
  t_injector = FailureInjector{true, sticky, fail_at, 0};
}

AllocFailureScope::~AllocFailureScope() { t_injector = FailureInjector{}; }

long AllocFailureScope::Count() const { return t_injector.count; }

}  // namespace tess
