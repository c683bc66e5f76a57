// Reading and writing the configuration file. The reader takes the file in
// reads of at most 259 characters, as the file has always been read, so the
// prefix matching and line-length quirks of existing files keep their meaning.
// The writer goes through a SafeFile, so an interrupted write never loses the
// previous settings.
#include "shell/config_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "platform/safe_file.h"

namespace tess {
namespace {

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

unsigned char Byte(char c) { return static_cast<unsigned char>(c); }

// Bytes are compared unsigned, so non-ASCII characters in paths (UTF-8 or a
// code page) are part of the value rather than ending it.
std::string_view CutAtControl(std::string_view line) {
  size_t end = 0;
  while (end < line.size() && Byte(line[end]) >= 32) ++end;
  return line.substr(0, end);
}

size_t SkipRun(std::string_view text, size_t pos, char c) {
  while (pos < text.size() && text[pos] == c) ++pos;
  return pos;
}

// The first readable key whose name begins with `key`: keys are matched as
// prefixes, and an empty key matches the first entry.
int FindReadableKey(std::string_view key) {
  // The readable keys in name order, so the names a prefix begins form one
  // run, and the earliest table index of every run of 2^k names from each
  // place, so the run's earliest key is two lookups rather than a scan.
  constexpr int kLevels = std::bit_width(static_cast<unsigned>(kConfigKeyCount));
  struct ByName {
    std::array<uint16_t, kConfigKeyCount> index{};
    std::array<std::array<uint16_t, kConfigKeyCount>, kLevels> earliest{};
    size_t count = 0;
  };
  static const ByName by_name = [] {
    ByName table;
    std::span<const ConfigKey> keys = ConfigKeys();
    for (size_t i = 0; i < keys.size(); ++i)
      if (!keys[i].IsWrittenOnly()) table.index[table.count++] = static_cast<uint16_t>(i);
    std::sort(table.index.begin(), table.index.begin() + static_cast<std::ptrdiff_t>(table.count),
              [&](uint16_t a, uint16_t b) { return keys[a].name < keys[b].name; });
    table.earliest[0] = table.index;
    for (size_t k = 1; k < kLevels; ++k)
      for (size_t p = 0; p + (size_t{1} << k) <= table.count; ++p)
        table.earliest[k][p] =
            std::min(table.earliest[k - 1][p], table.earliest[k - 1][p + (size_t{1} << (k - 1))]);
    return table;
  }();
  std::span<const ConfigKey> keys = ConfigKeys();
  const auto begin = by_name.index.begin();
  const auto end = begin + static_cast<std::ptrdiff_t>(by_name.count);
  const auto begins = [&](uint16_t i) { return keys[i].name.substr(0, key.size()) == key; };
  const auto first = std::partition_point(begin, end, [&](uint16_t i) { return keys[i].name < key; });
  if (first == end || !begins(*first)) return -1;  // most lines of a damaged file
  // The run's end, galloping: a whole name's run is one or two names long.
  auto known = first + 1;  // every name before it begins with the key
  auto past = known;
  for (std::ptrdiff_t step = 1; past != end && begins(*past); step *= 2) {
    known = past + 1;
    past = end - known > step ? known + step : end;
  }
  const auto last = std::partition_point(known, past, begins);
  const size_t from = static_cast<size_t>(first - begin);
  const size_t length = static_cast<size_t>(last - first);
  const size_t k = static_cast<size_t>(std::bit_width(length)) - 1;
  return std::min(by_name.earliest[k][from], by_name.earliest[k][from + length - (size_t{1} << k)]);
}

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Signed decimal: leading white space, one sign, digits up to the first
// non-digit, 0 without digits. Accumulating modulo 2^32 makes the unsigned
// form the writer uses for negative values read back as the same value
// ("4294967295" is -1), and no input can overflow.
int32_t ParseSettingNumber(std::string_view text) {
  size_t pos = 0;
  while (pos < text.size() && IsSpace(text[pos])) ++pos;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) negative = text[pos++] == '-';
  uint32_t value = 0;
  for (; pos < text.size() && text[pos] >= '0' && text[pos] <= '9'; ++pos)
    value = value * 10u + static_cast<uint32_t>(text[pos] - '0');
  if (negative) value = 0u - value;
  return static_cast<int32_t>(value);
}

void AppendLine(std::string& out, std::string_view a, std::string_view b = {}) {
  out.append(a);
  out.append(b);
  out.push_back('\n');
}

}  // namespace

size_t ConfigTextValueMax(std::string_view key) {
  // The writer's " = " and the line end ("\n"; text mode reads CR LF as one).
  constexpr size_t kFraming = 4;
  return key.size() + kFraming >= kConfigReadChunk ? 0 : kConfigReadChunk - kFraming - key.size();
}

void ApplySettingsLine(std::string_view line, Settings& settings) {
  if (line.starts_with(';')) return;
  line = CutAtControl(line);
  size_t key_end = 0;
  while (key_end < line.size() && Byte(line[key_end]) >= 33 && line[key_end] != '=') ++key_end;
  int index = FindReadableKey(line.substr(0, key_end));
  if (index < 0) return;

  size_t pos = SkipRun(line, key_end, ' ');
  pos = SkipRun(line, pos, '=');
  pos = SkipRun(line, pos, ' ');
  std::string_view value = line.substr(pos);
  if (ConfigKeys()[static_cast<size_t>(index)].IsText())
    settings.SetTextAt(index, value);
  else
    settings.SetNumberAt(index, ParseSettingNumber(value));
}

void ReadSettingsText(std::string_view text, Settings& settings) {
  // Reads of at most kConfigReadChunk characters, as the file has always been read:
  // the rest of a longer physical line arrives as the next "line" (and a line
  // of exactly kConfigReadChunk characters is followed by an empty one), so existing
  // files keep their meaning. Writers refuse values that would not fit.
  while (!text.empty()) {
    const size_t lf = text.find('\n');
    const size_t whole = lf == std::string_view::npos ? text.size() : lf + 1;
    const size_t end = std::min(whole, kConfigReadChunk);
    ApplySettingsLine(text.substr(0, end), settings);
    text.remove_prefix(end);
  }
}

bool ReadSettings(const std::string& path, Settings& settings, Platform& platform) {
  if (platform.ShiftDown() || path.empty()) return false;
  FilePtr file(std::fopen(path.c_str(), "r"));
  if (!file) return false;
  // Read whole first, in text mode (CR LF becomes "\n" on Windows); a file
  // too big to hold is not a configuration file.
  try {
    std::string text;
    char block[4096];
    size_t got;
    while ((got = std::fread(block, 1, sizeof block, file.get())) > 0) text.append(block, got);
    ReadSettingsText(text, settings);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

std::string FormatHeaderTime(const LocalTime& now) {
  static constexpr const char* kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const char* weekday = now.weekday >= 0 && now.weekday < 7 ? kWeekdays[now.weekday] : "???";
  const char* month = now.month >= 0 && now.month < 12 ? kMonths[now.month] : "???";
  char when[96];
  std::snprintf(when, sizeof when, "%s %s %2d %02d:%02d:%02d %d", weekday, month, now.day,
                now.hour, now.minute, now.second, now.year);
  // Always exactly 24 characters, whatever odd year or field widths came in.
  char kept[25];
  std::snprintf(kept, sizeof kept, "%24.24s", when);
  return kept;
}

std::string FormatSettings(const Settings& settings, const LocalTime& now) {
  std::string out;
  AppendLine(out, ";Brindlewood animtion plugin configuration file");
  AppendLine(out, ";Edit this at your own risk");
  AppendLine(out, ";Last updated ", FormatHeaderTime(now));
  AppendLine(out, ";");
  AppendLine(out, "[PlugIn]");
  std::span<const ConfigKey> keys = ConfigKeys();
  for (size_t i = 0; i < keys.size(); ++i) {
    out.append(keys[i].name);
    out.append(" = ");
    int index = static_cast<int>(i);
    if (keys[i].IsText())
      AppendLine(out, settings.TextAt(index));
    else
      AppendLine(out, std::to_string(static_cast<uint32_t>(settings.NumberAt(index))));
  }
  return out;
}

bool WriteSettings(const std::string& path, const Settings& settings, Platform& platform,
                   std::string* reason) {
  std::string ignored;
  if (!reason) reason = &ignored;
  try {
    std::string text = FormatSettings(settings, platform.Now());
    // Text mode: on Windows each "\n" becomes CR LF, as the file always had.
    SafeFile file;
    if (file.Open(path, SafeFileMode::kText) && file.Write(text.data(), text.size()) && file.Commit()) return true;
    *reason = file.error();
    return false;
  } catch (const std::bad_alloc&) {
    *reason = "Memory error";
    return false;
  }
}

}  // namespace tess
