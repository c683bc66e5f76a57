// Soft-failing allocation with a per-thread fault injector for tests.
#include "base/alloc.h"

#include <cstdlib>

namespace tess {
namespace {

// The injector is per thread and only active inside an AllocFailureScope, so
// production code never sees it and parallel tests cannot disturb each other.
struct FailureInjector {
  bool active = false;
  bool sticky = false;
  long fail_at = 0;
  long count = 0;
};
thread_local FailureInjector t_injector;

bool InjectFailure() {
  FailureInjector& f = t_injector;
  if (!f.active) return false;
  long n = f.count++;
  return n == f.fail_at || (f.sticky && n > f.fail_at);
}

}  // namespace

void FreeDeleter::operator()(void* p) const noexcept { std::free(p); }

void* AllocZeroed(size_t count, size_t size) noexcept {
  if (InjectFailure()) return nullptr;
  if (count == 0 || size == 0) count = size = 1;
  if (count > SIZE_MAX / size) return nullptr;
  return std::calloc(count, size);
}

AllocFailureScope::AllocFailureScope(long fail_at, bool sticky) {
  t_injector = FailureInjector{true, sticky, fail_at, 0};
}

AllocFailureScope::~AllocFailureScope() { t_injector = FailureInjector{}; }

long AllocFailureScope::Count() const { return t_injector.count; }

}  // namespace tess
