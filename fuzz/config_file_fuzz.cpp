// The configuration file reader: any text is taken without harm, and the
// settings it leaves, written out and read again, are the same settings
// whenever every written line fits one read of the reader (longer text values
// are cut by design, and the command line refuses them).
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "shell/config_file.h"
#include "shell/settings.h"

namespace {

std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const size_t take = end == std::string_view::npos ? text.size() : end + 1;
    lines.push_back(text.substr(0, take));
    text.remove_prefix(take);
  }
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::Settings first;
  tess::ReadSettingsText(FuzzText(data, size), first);

  // Reading every written line would look each of the 303 keys up by
  // prefix, slowly; the lines that differ from the defaults' file are the
  // ones that carry what was read, so only they are read back.
  const tess::LocalTime when{2026, 10, 22, 0, 9, 5, 7};
  static const std::string defaults = tess::FormatSettings(tess::Settings(), when);
  static const std::vector<std::string_view> default_lines = Lines(defaults);
  const std::string written = tess::FormatSettings(first, when);
  const std::vector<std::string_view> lines = Lines(written);
  FUZZ_CHECK(lines.size() == default_lines.size());
  std::string changed;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i] == default_lines[i]) continue;
    if (lines[i].size() > tess::kConfigReadChunk) return 0;
    changed.append(lines[i]);
  }

  tess::Settings second;
  tess::ReadSettingsText(changed, second);
  FUZZ_CHECK(second == first);
  return 0;
}
