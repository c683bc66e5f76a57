// Fountain library files: any bytes are refused or give entries that, written
// as a library, read back as the same entries under the same header.
#include <cstring>
#include <vector>

#include "base/byte_sink.h"
#include "fills/fountain_library.h"
#include "fuzz/fuzz_check.h"

namespace {

bool SameEntry(const tess::FountainLibraryEntry& a, const tess::FountainLibraryEntry& b) {
  return a.marker_count == b.marker_count && a.start_colour == b.start_colour &&
         a.markers == b.markers && a.end_colour == b.end_colour;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span<const uint8_t> bytes(data, size);
  tess::FountainLibrary library;
  if (!tess::ReadFountainLibrary(bytes, library)) return 0;
  tess::LibraryHeader header;
  FUZZ_CHECK(tess::ReadLibraryHeader(data, size, header));
  FUZZ_CHECK(library.size() == header.count);
  FUZZ_CHECK(size >= tess::kLibraryHeaderSize + tess::kLibraryEntrySize * library.size());

  tess::MemorySink sink;
  FUZZ_CHECK(tess::WriteFountainLibrary(sink, library, header.selector, header.created));
  FUZZ_CHECK(sink.bytes().size() == tess::kLibraryHeaderSize + tess::kLibraryEntrySize * library.size());
  tess::FountainLibrary again;
  FUZZ_CHECK(tess::ReadFountainLibrary(sink.bytes(), again));
  tess::LibraryHeader again_header;
  FUZZ_CHECK(tess::ReadLibraryHeader(sink.bytes().data(), sink.bytes().size(), again_header));
  FUZZ_CHECK(again_header.count == header.count && again_header.selector == header.selector &&
             again_header.created == header.created);
  FUZZ_CHECK(again.size() == library.size());
  for (size_t i = 0; i < library.size(); ++i) FUZZ_CHECK(SameEntry(again[i], library[i]));

  // An entry's four fields travel into a fountain and back unchanged.
  if (!library.empty()) {
    const tess::FountainLibraryEntry& first = library[0];
    FUZZ_CHECK(SameEntry(tess::LibraryEntryOf(tess::LibraryEntryFountain(first, header.selector)), first));
  }
  return 0;
}
