// Settings-backed parameter reading: the page control gives the key and the
// range, the settings give the value. Nothing here writes settings.
#include "dialog/settings_reader.h"

#include <optional>
#include <utility>

#include "controls/control_kinds.h"
#include "shell/settings.h"
#include "styles/style_table.h"

namespace tess {
namespace {

// The key's table index, or -1 for a control without a key or a key the
// settings do not have.
int KeyIndex(const StyleEntry& style, const PageControl& control) {
  return control.key ? StyleKeyIndex(style.number, control.key) : -1;
}

std::optional<int32_t> Stored(const Settings& settings, const StyleEntry& style,
                              const PageControl& control) {
  int index = KeyIndex(style, control);
  if (index < 0) return std::nullopt;
  return settings.NumberAt(index);
}

}  // namespace

int32_t SettingsReader::Spin(int id) const {
  const PageControl* control = FindPageControl(*m_style, id);
  if (!control) return 0;
  std::optional<int32_t> stored = Stored(*m_settings, *m_style, *control);
  const ControlKindRules& rules = KindRules(*control);
  return rules.has_range ? rules.effect_value(*control, stored) : stored.value_or(0);
}

int32_t SettingsReader::Picker(int id) const {
  const PageControl* control = FindPageControl(*m_style, id);
  return control ? Stored(*m_settings, *m_style, *control).value_or(control->range.def) : 0;
}

FillDescriptor SettingsReader::Fill(int id) const {
  const PageControl* control = FindPageControl(*m_style, id);
  uint32_t stored = control ? static_cast<uint32_t>(Stored(*m_settings, *m_style, *control).value_or(0)) : 0;
  const FillDescriptor* kept = m_records ? m_records->fills.Find(id) : nullptr;
  FillDescriptor fill = kept ? *kept : FillDescriptor();
  if (!kept && (stored >> 24) <= kFillTile) fill.kind = stored >> 24;
  fill.colour = stored & 0xFFFFFFu;
  return fill;
}

FountainRecord SettingsReader::Fountain(int id) const {
  const FountainRecord* kept = m_records ? m_records->fountains.Find(id) : nullptr;
  return kept ? *kept : ParamReader::Fountain(id);
}

bool SettingsReader::Checked(int id) const {
  const PageControl* control = FindPageControl(*m_style, id);
  return control && Stored(*m_settings, *m_style, *control).value_or(0) != 0;
}

Colour SettingsReader::ColourValue(int id) const {
  const PageControl* control = FindPageControl(*m_style, id);
  if (!control) return 0;
  return static_cast<Colour>(Stored(*m_settings, *m_style, *control).value_or(0)) & 0xFFFFFFu;
}

int32_t SettingsReader::Selection(int id) const {
  const PageControl* control = FindPageControl(*m_style, id);
  return control ? Stored(*m_settings, *m_style, *control).value_or(0) : 0;
}

std::vector<StyleSetting> ListStyleSettings(const Settings& settings, const StyleEntry& style) {
  std::vector<StyleSetting> list;
  for (const PageControl& control : style.page) {
    if (!control.key) continue;
    StyleSetting s;
    s.control = &control;
    s.key = SettingKey(style.number, control);
    const ControlKindRules& rules = KindRules(control);
    s.has_range = rules.has_range;
    int index = KeyIndex(style, control);
    std::optional<int32_t> stored;
    if (index >= 0) stored = settings.NumberAt(index);
    s.initial = index >= 0 ? ConfigKeys()[static_cast<size_t>(index)].default_number : control.range.def;
    s.stored = stored.value_or(control.range.def);
    s.value = rules.effect_value(control, stored);
    list.push_back(std::move(s));
  }
  return list;
}

}  // namespace tess
