// Document lines, the hexadecimal form and the file framing. Reading takes the
// whole file into one buffer before it delivers a line, so a read failure or a
// damaged header changes nothing; writing goes to a temporary file that
// replaces the document only once it is complete.
#include "shell/document.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <system_error>

#include "platform/safe_file.h"
#include "shell/strings.h"

namespace tess {
namespace {

// The words a first line must hold for the file to be one of ours.
constexpr std::string_view kProductMark = "Tessarine #1 Plugin";
constexpr std::string_view kMakerMark = "Brindlewood";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The hexadecimal codec runs once per byte of every fill and fountain record
// a document holds; coverage guidance learns nothing from those loops and
// made fuzzing a whole document many times slower, so they go unguided.
#if defined(__clang__)
#define TESS_UNGUIDED __attribute__((no_sanitize("coverage")))
#else
#define TESS_UNGUIDED
#endif

// Each character's hexadecimal value, or -1: records run to thousands of
// digits, so a digit is one table read.
constexpr std::array<int8_t, 256> kHexDigits = [] {
  std::array<int8_t, 256> digits{};
  for (int c = 0; c < 256; ++c)
    digits[static_cast<size_t>(c)] = static_cast<int8_t>(c >= '0' && c <= '9'   ? c - '0'
                                                         : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                         : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                                                                : -1);
  return digits;
}();

int HexDigit(char c) { return kHexDigits[static_cast<unsigned char>(c)]; }

// Where the first of three characters stands in `text`, or its size. Lines
// carry fill and fountain records of thousands of characters, which a
// find_first_of over a character set scans far more slowly.
size_t FirstOf(std::string_view text, char a, char b, char c) {
  size_t end = text.size();
  for (char wanted : {a, b, c}) end = std::min(end, text.substr(0, end).find(wanted));
  return end;
}

// The next physical line of `text` from `pos`, without its LF, cut to
// kDocumentLineMax characters; `pos` moves past the LF.
std::string_view NextLine(std::string_view text, size_t& pos) {
  size_t end = text.find('\n', pos);
  if (end == std::string_view::npos) end = text.size();
  std::string_view line = text.substr(pos, end - pos);
  pos = end < text.size() ? end + 1 : end;
  return line.substr(0, kDocumentLineMax);
}

bool IsDocumentHeader(std::string_view line) {
  line = CutLineEnd(line);
  return line.find(kProductMark) != std::string_view::npos &&
         line.find(kMakerMark) != std::string_view::npos;
}

bool PutLine(ByteSink& sink, std::string_view line) {
  return sink.Write(line.data(), line.size()) &&
         sink.Write(kDocumentLineEnd.data(), kDocumentLineEnd.size());
}

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// The file's whole content in one soft-failing buffer; false on a read error,
// a file too large to hold, or a short memory.
bool ReadWholeFile(const std::string& path, Buffer<char>& data, size_t& size) {
  // A folder opens for reading on some systems and reports no usable size.
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) return false;
  FilePtr file(std::fopen(path.c_str(), "rb"));
  if (!file) return false;
  if (std::fseek(file.get(), 0, SEEK_END) != 0) return false;
  long length = std::ftell(file.get());
  if (length < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) return false;
  size = static_cast<size_t>(length);
  data = AllocBuffer<char>(size + 1);
  if (!data) return false;
  return std::fread(data.get(), 1, size, file.get()) == size;
}

void Report(Reporter& reporter, int id) { reporter.ShowMessage(StringText(id)); }

}  // namespace

// ---------------------------------------------------------------- line codec

std::string FormatControlLine(std::string_view tag, int number, std::string_view value) {
  value = value.substr(0, FirstOf(value, '\r', '\n', '\n'));
  std::string line(tag);
  line.append(std::to_string(number));
  line.push_back('=');
  line.append(value);
  return line;
}

std::string UnsignedValueText(uint32_t value) { return std::to_string(value); }

std::string NumberValueText(int32_t value) { return std::to_string(value); }

std::string_view TextFieldValueText(std::string_view text) {
  return text.substr(0, kTextFieldValueMax);
}

std::string_view CutLineEnd(std::string_view line) {
  return line.substr(0, FirstOf(line, '\n', '\r', '\0'));
}

int DocumentLineNumber(std::string_view line) {
  if (line.size() <= kDocumentTagLength) return 0;
  std::string_view digits = line.substr(kDocumentTagLength);
  if (digits[0] == '+') digits.remove_prefix(1);
  int number = 0;
  auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return ec == std::errc() ? number : 0;
}

std::optional<std::string_view> LineValue(std::string_view line, std::string_view tag) {
  if (line.size() < kDocumentTagLength || tag.size() != kDocumentTagLength ||
      line.substr(0, kDocumentTagLength) != tag)
    return std::nullopt;
  size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  size_t value = line.find_first_not_of("= ", equals);
  return value == std::string_view::npos ? std::string_view() : line.substr(value);
}

int64_t ParseValueNumber(std::string_view value) {
  // Far beyond any 32-bit value, and small enough that one more digit cannot
  // overflow the accumulator.
  constexpr int64_t kSaturation = int64_t{1} << 40;
  size_t pos = value.find_first_not_of(' ');
  if (pos == std::string_view::npos) return 0;
  bool negative = value[pos] == '-';
  if (value[pos] == '-' || value[pos] == '+') ++pos;
  int64_t number = 0;
  for (; pos < value.size() && IsDigit(value[pos]); ++pos)
    if (number < kSaturation) number = number * 10 + (value[pos] - '0');
  return negative ? -number : number;
}

// ---------------------------------------------------------------- hexadecimal form

TESS_UNGUIDED std::string HexEncode(std::span<const uint8_t> bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text(bytes.size() * 2, '\0');
  char* out = text.data();
  for (uint8_t b : bytes) {
    *out++ = kDigits[b >> 4];
    *out++ = kDigits[b & 15];
  }
  return text;
}

TESS_UNGUIDED Buffer<uint8_t> HexDecode(std::string_view text, size_t size) {
  if (size == std::numeric_limits<size_t>::max()) return nullptr;
  Buffer<uint8_t> block = AllocBuffer<uint8_t>(size + 1);
  if (!block) return nullptr;
  if (text.size() / 2 < size) return nullptr;
  for (size_t i = 0; i < size; ++i) {
    const int high = HexDigit(text[2 * i]);
    const int low = HexDigit(text[2 * i + 1]);
    if ((high | low) < 0) return nullptr;
    block[i] = static_cast<uint8_t>(high << 4 | low);
  }
  return block;
}

// ---------------------------------------------------------------- controls

std::string FormatControlLine(const DocumentControl& control) {
  return FormatControlLine(control.Tag(), control.Number(), control.ValueText());
}

bool DeliverLine(DocumentControl& control, std::string_view line) {
  if (std::optional<std::string_view> value = LineValue(line, control.Tag()))
    return control.TakeValue(*value);
  std::string_view legacy = control.LegacyTag();
  if (legacy.empty()) return false;
  std::optional<std::string_view> value = LineValue(line, legacy);
  return value && control.TakeLegacyValue(*value);
}

// ---------------------------------------------------------------- documents

bool WriteDocument(ByteSink& sink, const DocumentTarget& target) {
  bool ok = PutLine(sink, kDocumentHeader) && PutLine(sink, kDocumentStart);
  target.ForEachControl([&](const DocumentControl& control) {
    if (ok) ok = PutLine(sink, FormatControlLine(control));
  });
  return ok && PutLine(sink, kDocumentEnd);
}

DocumentStatus ReadDocument(std::string_view text, DocumentTarget& target) {
  size_t pos = 0;
  if (text.empty()) return DocumentStatus::kLoaded;
  if (!IsDocumentHeader(NextLine(text, pos))) return DocumentStatus::kDamaged;
  while (pos < text.size()) {
    std::string_view line = NextLine(text, pos);
    if (line.starts_with(';')) continue;
    line = CutLineEnd(line);
    int number = DocumentLineNumber(line);
    if (number <= 0) continue;
    if (DocumentControl* control = target.FindControl(number)) DeliverLine(*control, line);
  }
  return DocumentStatus::kLoaded;
}

bool SaveDocument(const std::string& path, const DocumentTarget& target, Reporter& reporter) {
  bool ok = false;
  try {
    SafeFile file;
    ok = file.Open(path) && WriteDocument(file, target) && file.Commit();
  } catch (const std::bad_alloc&) {
    ok = false;
  }
  if (!ok) Report(reporter, kStrErrorCreatingDocument);
  return ok;
}

bool LoadDocument(const std::string& path, DocumentTarget& target, Reporter& reporter) {
  Buffer<char> data;
  size_t size = 0;
  if (!ReadWholeFile(path, data, size)) {
    Report(reporter, kStrErrorOpeningDocument);
    return false;
  }
  try {
    if (ReadDocument(std::string_view(data.get(), size), target) == DocumentStatus::kDamaged) {
      Report(reporter, kStrDocumentDamaged);
      return false;
    }
  } catch (const std::bad_alloc&) {
    // A control ran short while taking its value: the load stops there.
    Report(reporter, kStrErrorOpeningDocument);
    return false;
  }
  target.DocumentLoaded();
  return true;
}

}  // namespace tess
