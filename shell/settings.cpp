// The Settings object: one value per descriptor of the key table, indexed like
// the table. Text values are kept within kSettingTextMax characters and free of
// zero bytes, so they always fit the configuration file's line format.
#include "shell/settings.h"

#include <cassert>

namespace tess {
namespace {

bool ValidIndex(int index) { return index >= 0 && index < kConfigKeyCount; }

bool IsTextKey(int index) { return ConfigKeys()[static_cast<size_t>(index)].IsText(); }

int RequireStyleKey(int style, std::string_view param) {
  int index = StyleKeyIndex(style, param);
  assert(index >= 0 && "no such style key");
  return index;
}

}  // namespace

Settings::Settings() { ResetToDefaults(); }

void Settings::ResetToDefaults() {
  std::span<const ConfigKey> keys = ConfigKeys();
  for (size_t i = 0; i < keys.size(); ++i) {
    m_numbers[i] = keys[i].default_number;
    m_texts[i].assign(keys[i].default_text);
  }
}

int32_t Settings::NumberAt(int index) const {
  assert(ValidIndex(index) && !IsTextKey(index) && "number asked of a text key");
  if (!ValidIndex(index)) return 0;
  return m_numbers[static_cast<size_t>(index)];
}

void Settings::SetNumberAt(int index, int32_t value) {
  assert(ValidIndex(index) && !IsTextKey(index) && "number given to a text key");
  if (!ValidIndex(index) || IsTextKey(index)) return;
  m_numbers[static_cast<size_t>(index)] = value;
}

std::string_view Settings::TextAt(int index) const {
  assert(ValidIndex(index) && IsTextKey(index) && "text asked of a number key");
  if (!ValidIndex(index)) return {};
  return m_texts[static_cast<size_t>(index)];
}

void Settings::SetTextAt(int index, std::string_view text) {
  assert(ValidIndex(index) && IsTextKey(index) && "text given to a number key");
  if (!ValidIndex(index) || !IsTextKey(index)) return;
  text = text.substr(0, text.find('\0'));
  m_texts[static_cast<size_t>(index)].assign(text.substr(0, kSettingTextMax));
}

int32_t* Settings::NumberSlot(int index) {
  if (!ValidIndex(index) || IsTextKey(index)) return nullptr;
  return &m_numbers[static_cast<size_t>(index)];
}

int32_t Settings::StyleNumber(int style, std::string_view param) const {
  int index = RequireStyleKey(style, param);
  return index < 0 ? 0 : NumberAt(index);
}

void Settings::SetStyleNumber(int style, std::string_view param, int32_t value) {
  int index = RequireStyleKey(style, param);
  if (index >= 0) SetNumberAt(index, value);
}

Settings& ProcessSettings() {
  // Built on first use and kept for the life of the module, like the plain
  // globals a host loads with the module.
  static Settings settings;
  return settings;
}

}  // namespace tess
