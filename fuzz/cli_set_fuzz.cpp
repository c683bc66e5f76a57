// --set assignments: any KEY=VALUE is applied or refused with a reason, and
// whatever the assignments leave, the selected effect's listing (what
// 'tessarine list' prints) set back through --set gives the same listing.
#include <cstdio>
#include <string>
#include <vector>

#include "controls/control_kinds.h"
#include "dialog/settings_reader.h"
#include "fills/fill_store.h"
#include "fills/fountain_text.h"
#include "fuzz/cli_support.h"
#include "fuzz/fuzz_check.h"
#include "host/cli/cli_records.h"
#include "host/cli/cli_settings.h"
#include "shell/settings.h"
#include "styles/style.h"

namespace {

struct Listed {
  std::string key;
  std::string text;
};

// The selected effect's values as the listing prints them, each as --set
// takes it.
std::vector<Listed> Listing(const tess::Settings& settings, const tess::PageRecords& records) {
  const std::span<const tess::StyleEntry> styles = tess::StyleTable();
  const tess::StyleEntry& style = styles[static_cast<size_t>(tess::cli::SelectedEffect(settings, styles))];
  tess::SettingsReader reader(settings, style, &records);
  std::vector<Listed> listed;
  for (const tess::PageControl& c : style.page)
    if (tess::KindRules(c).holds_fountain)
      listed.push_back({"Fountain", tess::FormatFountain(reader.Fountain(c.id))});
  for (const tess::StyleSetting& s : tess::ListStyleSettings(settings, style)) {
    const tess::ControlKindRules& rules = tess::KindRules(*s.control);
    listed.push_back({s.key, rules.holds_fill ? tess::cli::FillText(reader.Fill(s.control->id))
                                              : rules.format(*s.control, s.value)});
  }
  return listed;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span<const tess::StyleEntry> styles = tess::StyleTable();
  tess::Settings settings;
  tess::PageRecords records;
  for (const std::string& assignment : SplitArguments(FuzzText(data, size), 8)) {
    tess::cli::Failure failure;
    const tess::Settings before = settings;
    if (!tess::cli::ApplySet(assignment, settings, styles, &failure, &records)) {
      FUZZ_CHECK(!failure.message.empty());
      FUZZ_CHECK(settings == before);
    }
  }

  const std::vector<Listed> listed = Listing(settings, records);
  tess::Settings again = settings;
  tess::PageRecords again_records = records;
  for (const Listed& item : listed) {
    tess::cli::Failure failure;
    if (!tess::cli::ApplySet(item.key + "=" + item.text, again, styles, &failure, &again_records)) {
      std::fprintf(stderr, "%s=%s: %s\n", item.key.c_str(), item.text.c_str(), failure.message.c_str());
      FUZZ_CHECK(false);
    }
  }
  const std::vector<Listed> relisted = Listing(again, again_records);
  FUZZ_CHECK(relisted.size() == listed.size());
  for (size_t i = 0; i < listed.size(); ++i) FUZZ_CHECK(relisted[i].text == listed[i].text);
  return 0;
}
