// --set assignments: any KEY=VALUE is applied or refused with a reason, and
// whatever the assignments leave, the selected effect's listing (what
// 'tessarine list' prints) set back through --set gives the same listing.
#include <cstdio>
#include <map>
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

// Sets every item of `listed` back through --set on a copy of the settings
// and checks that the listing, `full`, is unchanged.
void CheckSetBack(const tess::Settings& settings, const tess::PageRecords& records,
                  const std::vector<Listed>& listed, const std::vector<Listed>& full) {
  tess::Settings again = settings;
  tess::PageRecords again_records = records;
  for (const Listed& item : listed) {
    tess::cli::Failure failure;
    if (!tess::cli::ApplySet(item.key + "=" + item.text, again, tess::StyleTable(), &failure, &again_records)) {
      std::fprintf(stderr, "%s=%s: %s\n", item.key.c_str(), item.text.c_str(), failure.message.c_str());
      FUZZ_CHECK(false);
    }
  }
  const std::vector<Listed> relisted = Listing(again, again_records);
  FUZZ_CHECK(relisted.size() == full.size());
  for (size_t i = 0; i < full.size(); ++i) FUZZ_CHECK(relisted[i].text == full[i].text);
}

// The listing of an effect's defaults, checked to set back once per effect.
const std::vector<Listed>& DefaultListing(int32_t main_effect) {
  static std::map<int32_t, std::vector<Listed>> listings;
  auto found = listings.find(main_effect);
  if (found != listings.end()) return found->second;
  tess::Settings settings;
  settings.SetNumber(tess::Key::MainEffect, main_effect);
  const tess::PageRecords records;
  std::vector<Listed> listed = Listing(settings, records);
  CheckSetBack(settings, records, listed, listed);
  return listings.emplace(main_effect, std::move(listed)).first->second;
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

  // Setting every listed value back would look each key up among all 303,
  // slowly; the values that differ from the effect's defaults are the ones
  // the assignments made, so only they are set back.
  const std::vector<Listed> listed = Listing(settings, records);
  const std::vector<Listed>& defaults = DefaultListing(settings.Number(tess::Key::MainEffect));
  FUZZ_CHECK(listed.size() == defaults.size());
  std::vector<Listed> changed;
  for (size_t i = 0; i < listed.size(); ++i)
    if (listed[i].text != defaults[i].text) changed.push_back(listed[i]);
  CheckSetBack(settings, records, changed, listed);
  return 0;
}
