// The memory sink and the little-endian helpers every sink shares.
#include "base/byte_sink.h"

#include <new>

#include "base/bytes.h"

namespace tess {

bool ByteSink::PutU16le(uint16_t v) {
  uint8_t b[2];
  put_u16le(b, v);
  return Write(b, 2);
}

bool ByteSink::PutU32le(uint32_t v) {
  uint8_t b[4];
  put_u32le(b, v);
  return Write(b, 4);
}

bool MemorySink::Write(const void* data, size_t size) {
  const auto* p = static_cast<const uint8_t*>(data);
  try {
    m_bytes.insert(m_bytes.end(), p, p + size);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

}  // namespace tess
