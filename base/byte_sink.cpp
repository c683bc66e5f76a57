// Memory and file sinks for the format writers.
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

FileSink::~FileSink() {
  if (m_file) std::fclose(m_file);
}

bool FileSink::Open(const std::string& path) {
  if (m_file) Close();
  m_failed = false;
  m_file = std::fopen(path.c_str(), "wb");
  return m_file != nullptr;
}

bool FileSink::Write(const void* data, size_t size) {
  if (!m_file || m_failed) return false;
  if (size != 0 && std::fwrite(data, 1, size, m_file) != size) m_failed = true;
  return !m_failed;
}

bool FileSink::Close() {
  if (!m_file) return false;
  bool ok = !m_failed;
  if (std::fclose(m_file) != 0) ok = false;
  m_file = nullptr;
  return ok;
}

}  // namespace tess
