// Fountain pattern records (".fnt" files) and FOUNTN values: any bytes are
// refused or give a record that serialises, as bytes, hexadecimal text and
// text form, to what parses back to the same record.
#include <string>

#include "fills/fountain.h"
#include "fills/fountain_text.h"
#include "fuzz/fuzz_check.h"

namespace {

void CheckRecord(const tess::FountainRecord& record) {
  const tess::FountainBytes bytes = tess::SerializeFountainRecord(record);
  tess::FountainRecord again;
  FUZZ_CHECK(tess::ParseFountainRecord(bytes.data(), bytes.size(), again));
  FUZZ_CHECK(tess::SerializeFountainRecord(again) == bytes);

  // A document value never brings a path: the taking record keeps its own,
  // so a record takes its own value back unchanged.
  const std::string hex = tess::FountainValueText(record);
  FUZZ_CHECK(hex.size() == 2 * tess::kFountainRecordSize);
  tess::FountainRecord taken = record;
  FUZZ_CHECK(tess::TakeFountainValue(hex, taken));
  FUZZ_CHECK(tess::SerializeFountainRecord(taken) == bytes);

  const std::string text = tess::FormatFountain(record);
  tess::FountainRecord from_text = record;
  std::string error;
  FUZZ_CHECK(tess::ParseFountain(text, from_text, error));
  FUZZ_CHECK(tess::FormatFountain(from_text) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::FountainRecord record;
  if (tess::ParseFountainRecord(data, size, record)) {
    // Every byte is kept as read but the run-time state: the preview slot
    // is written 0 and the held-down flag is dropped.
    const tess::FountainBytes bytes = tess::SerializeFountainRecord(record);
    for (size_t i = 0; i < bytes.size(); ++i) {
      uint8_t want = data[i];
      if (i >= tess::kFountainPreviewImageOffset && i < tess::kFountainPreviewImageOffset + 4) want = 0;
      if (i == tess::kFountainPressFlagsOffset) want &= static_cast<uint8_t>(~tess::kFountainPressed);
      FUZZ_CHECK(bytes[i] == want);
    }
    CheckRecord(record);
  }

  tess::FountainRecord taken;
  const tess::FountainBytes before = tess::SerializeFountainRecord(taken);
  if (tess::TakeFountainValue(FuzzText(data, size), taken)) {
    CheckRecord(taken);
  } else {
    FUZZ_CHECK(tess::SerializeFountainRecord(taken) == before);
  }
  return 0;
}
