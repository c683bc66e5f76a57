// Reading and replacing the fills' files with stdio and std::filesystem, so
// every platform takes the same steps. Nothing here throws: allocation and
// filesystem failures become false results.
#include "fills/file_io.h"

#include <filesystem>
#include <new>
#include <system_error>

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

bool ReplaceFileWith(std::string_view path, FileWriter write, const void* context) {
  if (path.empty()) return false;
  std::error_code ec;
  bool created = false;
  std::filesystem::path temporary;
  try {
    const std::filesystem::path target(path);
    temporary = target;
    temporary += ".tmp";
    FileSink sink;
    created = sink.Open(temporary.string());
    if (created) {
      bool ok = write(sink, context);
      ok = sink.Close() && ok;
      if (ok) std::filesystem::rename(temporary, target, ec);
      if (ok && !ec) return true;
    }
  } catch (const std::bad_alloc&) {
  }
  // Only what this save made is removed: a folder in the way stays.
  if (created) std::filesystem::remove(temporary, ec);
  return false;
}

}  // namespace tess
