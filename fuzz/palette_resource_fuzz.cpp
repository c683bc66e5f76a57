// The palette resource parser: any block is refused or gives 256 colours
// that, written as a resource, parse to the same colours.
#include <array>
#include <cstring>

#include "base/byte_sink.h"
#include "fuzz/fuzz_check.h"
#include "output/palette.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::array<uint8_t, 768> rgb{};
  std::array<uint8_t, 768> untouched{};
  rgb.fill(0xA5);
  untouched.fill(0xA5);
  if (!tess::ParsePaletteResource(data, size, rgb.data())) {
    FUZZ_CHECK(rgb == untouched);
    return 0;
  }
  FUZZ_CHECK(size >= tess::kPaletteResourceSize);
  FUZZ_CHECK(std::memcmp(rgb.data(), data + tess::kPaletteResourceSize - 768, 768) == 0);

  tess::MemorySink sink;
  FUZZ_CHECK(tess::WritePaletteResource(sink, rgb.data()));
  FUZZ_CHECK(sink.bytes().size() == tess::kPaletteResourceSize);
  std::array<uint8_t, 768> again{};
  FUZZ_CHECK(tess::ParsePaletteResource(sink.bytes().data(), sink.bytes().size(), again.data()));
  FUZZ_CHECK(again == rgb);
  return 0;
}
