// The pieces of a document line: the hexadecimal codec of binary values, the
// line's number and value, and value texts read as numbers. Each is checked
// against the writer that makes its input.
#include <cctype>
#include <span>
#include <string>

#include "fuzz/fuzz_check.h"
#include "shell/document.h"

namespace {

void CheckHex(std::string_view text, size_t size) {
  tess::Buffer<uint8_t> bytes = tess::HexDecode(text, size);
  if (!bytes) return;
  FUZZ_CHECK(text.size() >= 2 * size);
  FUZZ_CHECK(bytes[size] == 0);
  const std::string hex = tess::HexEncode(std::span<const uint8_t>(bytes.get(), size));
  FUZZ_CHECK(hex.size() == 2 * size);
  for (size_t i = 0; i < hex.size(); ++i)
    FUZZ_CHECK(hex[i] == std::toupper(static_cast<unsigned char>(text[i])));
  tess::Buffer<uint8_t> again = tess::HexDecode(hex, size);
  FUZZ_CHECK(again && std::equal(again.get(), again.get() + size, bytes.get()));
}

void CheckLine(std::string_view line) {
  static constexpr std::string_view kTags[] = {tess::kTagSpin, tess::kTagTextField,
                                               tess::kTagFillButton};
  const int number = tess::DocumentLineNumber(line);
  for (std::string_view tag : kTags) {
    std::optional<std::string_view> value = tess::LineValue(line, tag);
    if (!value) continue;
    // A value rewritten as a line reads back as that line's value, cut at
    // its line end, and the number survives.
    const std::string rewritten = tess::FormatControlLine(tag, number, *value);
    FUZZ_CHECK(tess::DocumentLineNumber(rewritten) == number);
    std::optional<std::string_view> back = tess::LineValue(rewritten, tag);
    FUZZ_CHECK(back.has_value());
    const std::string twice = tess::FormatControlLine(tag, number, *back);
    FUZZ_CHECK(twice == rewritten);
  }
}

void CheckNumber(std::string_view text) {
  const int64_t value = tess::ParseValueNumber(text);
  if (value < INT32_MIN || value > INT32_MAX) return;
  const int32_t narrow = static_cast<int32_t>(value);
  FUZZ_CHECK(tess::ParseValueNumber(tess::NumberValueText(narrow)) == value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  // The first two bytes choose how many bytes the hexadecimal text should
  // fill, up to a little more than the longest record (a fill's 854 bytes).
  const size_t hex_size = (static_cast<size_t>(data[0]) | static_cast<size_t>(data[1]) << 8) % 1024;
  const std::string_view text = FuzzText(data + 2, size - 2);
  CheckHex(text, hex_size);
  CheckLine(text);
  CheckNumber(text);
  return 0;
}
