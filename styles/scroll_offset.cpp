// The scroll offset of the scrolling effects, in a file of its own because
// its doubles must round alike on every build: CMake compiles it with SSE
// arithmetic on 32-bit x86, where the x87's extended precision could carry
// length x p up to a whole number that the double falls just short of.
#include <cstdint>

#include "styles/style.h"

namespace tess {

int32_t ScrollOffset(int32_t length, int64_t k, int32_t n) {
  if (n <= 0) return 0;
  int64_t folded = k % n;
  if (folded < 0) folded += n;
  const double phase = static_cast<double>(folded) / static_cast<double>(n);
  // phase <= 1 - 1/n, so the product stays below length: no wrap is needed.
  return static_cast<int32_t>(static_cast<double>(length) * phase);
}

}  // namespace tess
