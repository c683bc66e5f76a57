// Where writers put their bytes. Format writers take a ByteSink& so the same
// code writes to a file in the product (platform/'s SafeFile) and to memory in
// tests. A sink that fails stays failed, so a writer can check once at the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tess {

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  // Returns false when the bytes could not all be written.
  virtual bool Write(const void* data, size_t size) = 0;

  bool PutByte(uint8_t b) { return Write(&b, 1); }
  bool PutU16le(uint16_t v);
  bool PutU32le(uint32_t v);
};

// Grows in memory; allocation failure makes Write return false.
class MemorySink final : public ByteSink {
 public:
  bool Write(const void* data, size_t size) override;
  const std::vector<uint8_t>& bytes() const { return m_bytes; }

 private:
  std::vector<uint8_t> m_bytes;
};

}  // namespace tess
