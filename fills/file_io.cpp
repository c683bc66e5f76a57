// Reading the fills' files with stdio and replacing them through SafeFile.
// Nothing here throws: allocation and file failures become false results.
#include "fills/file_io.h"

#include <new>

#include "platform/safe_file.h"

namespace tess {

bool ReadFileStart(const std::string& path, std::span<uint8_t> bytes) {
  FilePtr file(std::fopen(path.c_str(), "rb"));
  return file && std::fread(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
}

bool ReadWholeFile(const std::string& path, Buffer<uint8_t>& data, size_t& size) {
  FilePtr file(std::fopen(path.c_str(), "rb"));
  if (!file || std::fseek(file.get(), 0, SEEK_END) != 0) return false;
  const long length = std::ftell(file.get());
  if (length < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) return false;
  Buffer<uint8_t> block = AllocBuffer<uint8_t>(static_cast<size_t>(length) + 1);
  if (!block) return false;
  const size_t want = static_cast<size_t>(length);
  if (std::fread(block.get(), 1, want, file.get()) != want) return false;
  data = std::move(block);
  size = want;
  return true;
}

bool ReplaceFileWith(std::string_view path, FileWriter write, const void* context, std::string* reason) {
  try {
    SafeFile file;
    if (file.Open(std::string(path)) && write(file, context) && file.Commit()) return true;
    if (reason) *reason = file.error();
  } catch (const std::bad_alloc&) {
    if (reason) *reason = "Memory error";
  }
  return false;
}

}  // namespace tess
