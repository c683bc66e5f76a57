// Fill pattern records (".flp" files and FILLBT values): any bytes are refused
// or give a record that serialises to the same bytes and parses to the same
// record; a record's text form, when it has one, parses back. The bytes past
// the record are a FILLBT value for it to take, which never changes its path.
#include <string>

#include "controls/fill_line.h"
#include "fills/fill_descriptor.h"
#include "fills/fill_text.h"
#include "fuzz/fuzz_check.h"

namespace {

void CheckLine(tess::FillDescriptor record, std::string_view value) {
  const std::string path(tess::FillPath(record));
  tess::FillLine line(5, record);
  line.TakeValue(value);
  FUZZ_CHECK(tess::FillPath(record) == path);
  if (!line.changed()) return;
  FUZZ_CHECK((record.press_flags & (tess::kFillSwatchPressed | tess::kFillArrowPressed)) == 0);
  // Taken back by the record it came from, a line changes nothing.
  const std::string text = line.ValueText();
  tess::FillDescriptor again = record;
  tess::FillLine again_line(5, again);
  again_line.TakeValue(text);
  FUZZ_CHECK(tess::SerializeFillDescriptor(again) == tess::SerializeFillDescriptor(record));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::FillDescriptor record;
  if (!tess::ParseFillDescriptor(data, size, record)) {
    CheckLine(record, FuzzText(data, size));
    return 0;
  }
  CheckLine(record, FuzzText(data + tess::kFillDescriptorSize, size - tess::kFillDescriptorSize));
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
