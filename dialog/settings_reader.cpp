// Settings-backed parameter reading: the page control gives the key and the
// range, the settings give the value. Nothing here writes settings.
#include "dialog/settings_reader.h"

#include <optional>
#include <utility>

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

int32_t ClampedValue(const PageControl& control, std::optional<int32_t> stored) {
  SpinRange range = ParseSpinText(control.spin ? control.spin : "");
  if (!stored) return ClampSpin(range, range.def);
  int64_t value = range.min < 0 ? int64_t{*stored} : int64_t{static_cast<uint32_t>(*stored)};
  return ClampSpin(range, value);
}

// What an effect reading this control through the matching call would get.
int32_t ReadAsEffect(const SettingsReader& reader, const PageControl& control) {
  switch (control.kind) {
    case ControlKind::kCheck: return reader.Checked(control.id);
    case ControlKind::kColourButton:
    case ControlKind::kFillButton: return static_cast<int32_t>(reader.ColourValue(control.id));
    case ControlKind::kDropDown: return reader.Selection(control.id);
    default: return reader.Spin(control.id);
  }
}

}  // namespace

bool HasSpinRange(const PageControl& control) {
  return control.kind == ControlKind::kSpin || control.kind == ControlKind::kSignedSpin ||
         control.kind == ControlKind::kPicker;
}

int32_t SettingsReader::Spin(int id) const {
  const PageControl* control = FindPageControl(*m_style, id);
  if (!control) return 0;
  std::optional<int32_t> stored = Stored(*m_settings, *m_style, *control);
  if (HasSpinRange(*control)) return ClampedValue(*control, stored);
  return stored.value_or(0);
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
  SettingsReader reader(settings, style);
  std::vector<StyleSetting> list;
  for (const PageControl& control : style.page) {
    if (!control.key) continue;
    StyleSetting s;
    s.control = &control;
    s.key = SettingKey(style.number, control);
    s.has_range = HasSpinRange(control);
    if (s.has_range) s.range = ParseSpinText(control.spin ? control.spin : "");
    int index = KeyIndex(style, control);
    s.initial = index >= 0 ? ConfigKeys()[static_cast<size_t>(index)].default_number : s.range.def;
    s.stored = index >= 0 ? settings.NumberAt(index) : s.range.def;
    s.value = ReadAsEffect(reader, control);
    list.push_back(std::move(s));
  }
  return list;
}

}  // namespace tess
