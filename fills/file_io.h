// The file steps the fills' own files share: pattern files read from their
// start, whole files read into soft-failing memory, and files replaced only
// once every byte has reached a temporary beside them, so a failed or
// interrupted write never leaves a half file or a changed old one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "base/alloc.h"
#include "base/byte_sink.h"

namespace tess {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
// A stdio file closed when it goes out of scope.
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// True when the file opens and begins with at least bytes.size() bytes,
// which then fill `bytes`; longer files are fine, the rest is not read.
bool ReadFileStart(const std::string& path, std::span<uint8_t> bytes);

// The whole file in a new block of `size` bytes (plus one zero byte, so an
// empty file still gives a block). False when it cannot be read or memory
// is short.
bool ReadWholeFile(const std::string& path, Buffer<uint8_t>& data, size_t& size);

// Writes the file at `path` through `write(ByteSink&)` into a SafeFile. False
// when the temporary cannot be made, `write` returns false, a byte does not
// reach the disk, or the rename fails; then the old file is as it was and the
// temporary is gone, and *reason (when given) holds the system's reason.
// `write` is only referred to, so passing it never allocates.
template <class Write>
bool ReplaceFile(std::string_view path, const Write& write, std::string* reason = nullptr);

using FileWriter = bool (*)(ByteSink& sink, const void* context);
bool ReplaceFileWith(std::string_view path, FileWriter write, const void* context, std::string* reason);

template <class Write>
bool ReplaceFile(std::string_view path, const Write& write, std::string* reason) {
  return ReplaceFileWith(
      path, [](ByteSink& sink, const void* context) { return (*static_cast<const Write*>(context))(sink); },
      &write, reason);
}

}  // namespace tess
