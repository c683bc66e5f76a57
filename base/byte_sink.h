// Where writers put their bytes. Format writers take a ByteSink& so the same
// code writes to a file in the product and to memory in tests; front ends open
// the files. A sink that fails stays failed, so a writer can check once at the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
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

// Writes to a binary file opened for the sink's lifetime (stdio, so it is
// portable). Close() reports whether every byte reached the file.
class FileSink final : public ByteSink {
 public:
  FileSink() = default;
  ~FileSink() override;
  FileSink(const FileSink&) = delete;
  FileSink& operator=(const FileSink&) = delete;

  // Creates or truncates the file. False when it cannot be created.
  bool Open(const std::string& path);
  bool IsOpen() const { return m_file != nullptr; }
  bool Write(const void* data, size_t size) override;
  // Flushes and closes; false when any write or the close failed.
  bool Close();

 private:
  std::FILE* m_file = nullptr;
  bool m_failed = false;
};

}  // namespace tess
