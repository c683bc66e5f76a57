// The twenty effects in list order and the look-ups front ends need. The table
// is assembled on first use from each effect's own function, so it never
// depends on the order in which the effect files are initialised.
#include "styles/style_table.h"

#include <array>
#include <cctype>
#include <cstdio>

#include "styles/effects.h"

namespace tess {
namespace {

bool SameIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

}  // namespace

// "Skip Intro" stands before "Shaped Fountain": the list is alphabetical
// otherwise, and saved MainEffect indices depend on this order.
std::span<const StyleEntry> StyleTable() {
  static const std::array<StyleEntry, kStyleCount> table = {
      AtmosphereStyle(),
      BubblesStyle(),
      CarpetStyle(),
      CubistStyle(),
      FountainStyle(),
      GridlockStyle(),
      GumdropsStyle(),
      HyperspaceStyle(),
      IrisStyle(),
      MachineStyle(),
      MuralStyle(),
      NeuralNetworkStyle(),
      ParticlesStyle(),
      PhasersOnStunStyle(),
      SkipIntroStyle(),
      ShapedFountainStyle(),
      SnowStyle(),
      SolidStyle(),
      WaveletStyle(),
      WhiteNoiseStyle(),
  };
  return table;
}

const StyleEntry* FindStyle(std::string_view name) {
  for (const StyleEntry& entry : StyleTable())
    if (SameIgnoringCase(entry.name, name)) return &entry;
  return nullptr;
}

const StyleEntry* StyleByNumber(int number) {
  for (const StyleEntry& entry : StyleTable())
    if (entry.number == number) return &entry;
  return nullptr;
}

int StyleListIndex(const StyleEntry& style) {
  std::span<const StyleEntry> table = StyleTable();
  for (size_t i = 0; i < table.size(); ++i)
    if (&table[i] == &style) return static_cast<int>(i);
  return -1;
}

const PageControl* FindPageControl(const StyleEntry& style, int id) {
  for (const PageControl& control : style.page)
    if (control.id == id) return &control;
  return nullptr;
}

PageControlRef FindPageControl(int id) {
  for (const StyleEntry& entry : StyleTable())
    if (const PageControl* control = FindPageControl(entry, id)) return {&entry, control};
  return {};
}

const PageControl* FindPageControlByKey(const StyleEntry& style, std::string_view suffix) {
  for (const PageControl& control : style.page)
    if (control.key && SameIgnoringCase(control.key, suffix)) return &control;
  return nullptr;
}

std::string SettingKey(int style_number, std::string_view suffix) {
  char prefix[16];
  std::snprintf(prefix, sizeof prefix, "Style%03d", style_number);
  return std::string(prefix).append(suffix);
}

std::string SettingKey(int style_number, const PageControl& control) {
  return control.key ? SettingKey(style_number, control.key) : std::string();
}

}  // namespace tess
