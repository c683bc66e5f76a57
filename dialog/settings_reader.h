// A style's parameters read straight from the settings object, for the
// command-line host and for tests: each page control's "StyleNNN<key>" value,
// limited the way the page limits it. Also lists a style's settings with their
// ranges, defaults and current values.
#pragma once

#include <string>
#include <vector>

#include "fills/fill_store.h"
#include "styles/style.h"

namespace tess {

class Settings;

// Reads by page control id:
// - Spin and Picker: a ranged kind reads what its kind's rules make of the
//   stored value (clamped to the declared range; the range's default when
//   the settings lack the key). Other kinds give their stored value.
// - Checked: stored value non-zero. ColourValue: the low 24 bits (the top
//   byte belongs to fill descriptions). Selection: the stored index as it is,
//   since each effect decides what an out-of-range choice draws.
// An id not on the style's page gives 0 (false) from every call.
class SettingsReader final : public ParamReader {
 public:
  // All must outlive the reader; without `records` every fill is Simple and
  // every fountain its control's built-in (or the default).
  SettingsReader(const Settings& settings, const StyleEntry& style,
                 const PageRecords* records = nullptr)
      : m_settings(&settings), m_style(&style), m_records(records) {}

  int32_t Spin(int id) const override;
  bool Checked(int id) const override;
  Colour ColourValue(int id) const override;
  int32_t Selection(int id) const override;
  int32_t Picker(int id) const override;
  // The store's record of the control (else the defaults, of the kind the
  // setting's top byte names), with the setting's colour as its Simple colour.
  FillDescriptor Fill(int id) const override;
  FountainRecord Fountain(int id) const override;

 private:
  const Settings* m_settings;
  const StyleEntry* m_style;
  const PageRecords* m_records;
};

// One stored setting of a style's page.
struct StyleSetting {
  const PageControl* control = nullptr;  // label, kind, drop-down items
  std::string key;                       // e.g. "Style016Glare"
  bool has_range = false;                // the value is clamped to control->range
  int32_t initial = 0;                   // the configuration's built-in default
  int32_t stored = 0;                    // as the settings hold it
  int32_t value = 0;                     // as the effect reads it
};

// Every control of the style's page that is stored under a key, in page order.
std::vector<StyleSetting> ListStyleSettings(const Settings& settings, const StyleEntry& style);

}  // namespace tess
