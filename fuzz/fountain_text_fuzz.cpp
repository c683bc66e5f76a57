// The fountain text form: any text is refused with a reason or gives a
// fountain whose text parses back to the same text and the same record.
#include <string>

#include "fills/fountain.h"
#include "fills/fountain_text.h"
#include "fuzz/fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::FountainRecord record;
  const tess::FountainBytes before = tess::SerializeFountainRecord(record);
  std::string error;
  if (!tess::ParseFountain(FuzzText(data, size), record, error)) {
    FUZZ_CHECK(!error.empty());
    FUZZ_CHECK(tess::SerializeFountainRecord(record) == before);
    return 0;
  }
  const std::string text = tess::FormatFountain(record);
  tess::FountainRecord again;
  FUZZ_CHECK(tess::ParseFountain(text, again, error));
  FUZZ_CHECK(tess::FormatFountain(again) == text);
  FUZZ_CHECK(tess::SerializeFountainRecord(again) == tess::SerializeFountainRecord(record));
  return 0;
}
