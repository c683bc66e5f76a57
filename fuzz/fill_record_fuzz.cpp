// Fill pattern records (".flp" files and FILLBT values): any bytes are refused
// or give a record that serialises to the same bytes and parses to the same
// record; a record's text form, when it has one, parses back.
#include <string>

#include "fills/fill_descriptor.h"
#include "fills/fill_text.h"
#include "fuzz/fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::FillDescriptor record;
  if (!tess::ParseFillDescriptor(data, size, record)) return 0;
  // Every byte is kept as read but the two run-time handle slots, written 0.
  const tess::FillBytes bytes = tess::SerializeFillDescriptor(record);
  const size_t tile_handle = tess::kFillTileOffset + tess::kTileHandleOffset;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const bool handle = (i >= tess::kFillPreviewImageOffset && i < tess::kFillPreviewImageOffset + 4) ||
                        (i >= tile_handle && i < tile_handle + 4);
    FUZZ_CHECK(bytes[i] == (handle ? 0 : data[i]));
  }
  tess::FillDescriptor again;
  FUZZ_CHECK(tess::ParseFillDescriptor(bytes.data(), bytes.size(), again));
  FUZZ_CHECK(tess::SerializeFillDescriptor(again) == bytes);

  const std::string text = tess::FormatFill(record);
  if (text.empty()) return 0;
  tess::FillDescriptor from_text = record;
  std::string error;
  FUZZ_CHECK(tess::ParseFill(text, from_text, error));
  FUZZ_CHECK(tess::FormatFill(from_text) == text);
  return 0;
}
