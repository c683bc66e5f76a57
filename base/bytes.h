// Little-endian field access for every byte-exact record and file the product
// reads or writes. Formats are serialised field by field through these helpers,
// never by copying structs, so the bytes are the same on every compiler and CPU.
#pragma once

#include <cstdint>

namespace tess {

inline void put_u16le(uint8_t* p, uint16_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
}

inline void put_u32le(uint8_t* p, uint32_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
  p[2] = static_cast<uint8_t>(v >> 16);
  p[3] = static_cast<uint8_t>(v >> 24);
}

inline void put_i32le(uint8_t* p, int32_t v) { put_u32le(p, static_cast<uint32_t>(v)); }

inline uint16_t get_u16le(const uint8_t* p) {
  return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

inline uint32_t get_u32le(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
         (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

inline int32_t get_i32le(const uint8_t* p) { return static_cast<int32_t>(get_u32le(p)); }

}  // namespace tess
