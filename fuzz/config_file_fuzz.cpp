// The configuration file reader: any text is taken without harm, and the
// settings it leaves, written out and read again, are the same settings.
#include "fuzz/fuzz_check.h"
#include "shell/config_file.h"
#include "shell/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tess::Settings first;
  tess::ReadSettingsText(FuzzText(data, size), first);

  const tess::LocalTime when{2026, 10, 22, 0, 9, 5, 7};
  const std::string written = tess::FormatSettings(first, when);
  tess::Settings second;
  tess::ReadSettingsText(written, second);
  FUZZ_CHECK(second == first);
  return 0;
}
