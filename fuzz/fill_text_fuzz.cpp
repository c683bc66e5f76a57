// The fill text form: any text is refused with a reason or gives a fill whose
// text parses back to the same text (FormatFill reduces what it must, so the
// formatted text is the fixed point).
#include <string>

#include "fills/fill_descriptor.h"
#include "fills/fill_text.h"
#include "fuzz/fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::FillDescriptor record;
  const tess::FillBytes before = tess::SerializeFillDescriptor(record);
  std::string error;
  if (!tess::ParseFill(FuzzText(data, size), record, error)) {
    FUZZ_CHECK(!error.empty());
    FUZZ_CHECK(tess::SerializeFillDescriptor(record) == before);
    return 0;
  }
  const std::string text = tess::FormatFill(record);
  FUZZ_CHECK(!text.empty());
  tess::FillDescriptor again;
  FUZZ_CHECK(tess::ParseFill(text, again, error));
  FUZZ_CHECK(tess::FormatFill(again) == text);
  FUZZ_CHECK(again.kind == record.kind && again.colour == record.colour);
  return 0;
}
