// What every fuzz target shares: the check that turns a broken promise into a
// crash libFuzzer keeps, and the input seen as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// Aborts, naming the promise, so libFuzzer saves the input and the replay
// test fails on it. Active in every build type.
#define FUZZ_CHECK(condition)                                                             \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: fuzz check failed: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (0)

inline std::string_view FuzzText(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}
