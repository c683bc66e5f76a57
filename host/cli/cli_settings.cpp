// Settings for one command-line run.
//
// Sections: configuration file · names · values and --set · build options ·
// reading the dialog.
#include "host/cli/cli_settings.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>

#include "controls/control_kinds.h"
#include "host/cli/cli_records.h"
#include "dialog/settings_reader.h"
#include "output/palette.h"
#include "shell/config_file.h"
#include "shell/main_dialog_ids.h"
#include "shell/paths.h"
#include "shell/strings.h"
#include "styles/style_table.h"

namespace tess::cli {
namespace {

Failure Usage(std::string message) { return Failure{kExitUsage, std::move(message)}; }

}  // namespace

// ---------------------------------------------------------------- configuration file

ConfigPlan PlanConfig(const CliArgs& args, Platform& platform) {
  ConfigPlan plan;
  plan.explicit_path = args.config.has_value();
  plan.path = args.config ? *args.config : ConfigFilePath(platform);
  plan.read = !args.no_config;
  plan.save = args.save;
  return plan;
}

bool LoadConfig(const ConfigPlan& plan, Settings& settings, Platform& platform, Failure* failure) {
  if (!plan.read || plan.path.empty()) return true;
  std::error_code ec;
  const std::filesystem::file_status status = std::filesystem::status(plan.path, ec);
  const bool exists = std::filesystem::exists(status);
  if (!exists && (!plan.explicit_path || plan.save)) return true;
  // Only a regular file is read: a folder reads as nothing, and a pipe or a
  // device could block or never end.
  std::string reason = !exists                                    ? std::string("no such file")
                       : std::filesystem::is_directory(status)    ? std::string("it is a folder")
                       : !std::filesystem::is_regular_file(status) ? std::string("not a regular file")
                                                                   : std::string();
  if (reason.empty() && !ReadSettings(plan.path, settings, platform)) reason = std::strerror(errno);
  if (reason.empty()) return true;
  *failure = Failure{kExitFailure, "cannot read configuration file '" + plan.path + "': " + reason};
  return false;
}

bool SaveConfig(const ConfigPlan& plan, const Settings& settings, Platform& platform,
                Failure* failure) {
  if (plan.path.empty()) {
    *failure = Failure{kExitFailure, "no folder for the configuration file; use --config FILE"};
    return false;
  }
  std::filesystem::path parent = std::filesystem::path(plan.path).parent_path();
  if (!parent.empty()) EnsureFolderExists(parent.string());
  std::string reason;
  if (!WriteSettings(plan.path, settings, platform, &reason)) {
    *failure = Failure{kExitFailure, "cannot write configuration file '" + plan.path + "': " + reason};
    return false;
  }
  return true;
}

// ---------------------------------------------------------------- names

int FindEffect(std::string_view text, std::span<const StyleEntry> styles) {
  if (auto index = ParseWholeNumber(text); index && !text.starts_with("0x"))
    return *index >= 0 && *index < static_cast<int64_t>(styles.size()) ? static_cast<int>(*index) : -1;
  std::string wanted(text);
  std::replace(wanted.begin(), wanted.end(), '-', ' ');
  std::replace(wanted.begin(), wanted.end(), '_', ' ');
  for (size_t i = 0; i < styles.size(); ++i)
    if (SameTextIgnoringCase(styles[i].name, wanted)) return static_cast<int>(i);
  return -1;
}

bool FindPalette(std::string_view text, int* choice, bool* adaptive) {
  if (SameTextIgnoringCase(text, "adaptive") || SameTextIgnoringCase(text, "custom")) {
    *adaptive = true;
    return true;
  }
  if (auto index = ParseWholeNumber(text)) {
    if (*index < 0 || *index >= kPaletteChoices) return false;
    *choice = static_cast<int>(*index);
    return true;
  }
  for (int i = 0; i < kPaletteChoices; ++i) {
    if (SameTextIgnoringCase(PaletteName(i), text)) {
      *choice = i;
      return true;
    }
  }
  return false;
}

int SelectedEffect(const Settings& settings, std::span<const StyleEntry> styles) {
  if (styles.empty()) return -1;
  return std::clamp(settings.Number(Key::MainEffect), 0, static_cast<int>(styles.size()) - 1);
}

// ---------------------------------------------------------------- values and --set

namespace {

// A key resolved to its table index and, when a page control edits it, that
// control.
struct SetTarget {
  int index = -1;
  const PageControl* control = nullptr;
};

const StyleEntry* StyleWithNumber(std::span<const StyleEntry> styles, int number) {
  for (const StyleEntry& entry : styles)
    if (entry.number == number) return &entry;
  return nullptr;
}

// "Style" + three digits + suffix: the page control of that style bound to the suffix.
const PageControl* ControlOfStyleKey(std::string_view key, std::span<const StyleEntry> styles) {
  if (key.size() <= 8 || !SameTextIgnoringCase(key.substr(0, 5), "Style")) return nullptr;
  int number = 0;
  for (size_t i = 5; i < 8; ++i) {
    if (!std::isdigit(static_cast<unsigned char>(key[i]))) return nullptr;
    number = number * 10 + (key[i] - '0');
  }
  const StyleEntry* style = StyleWithNumber(styles, number);
  return style ? FindPageControlByKey(*style, key.substr(8)) : nullptr;
}

bool FindSetTarget(std::string_view key, const Settings& settings,
                   std::span<const StyleEntry> styles, SetTarget* target, Failure* failure) {
  std::span<const ConfigKey> keys = ConfigKeys();
  for (size_t i = 0; i < keys.size(); ++i) {
    if (SameTextIgnoringCase(keys[i].name, key)) {
      target->index = static_cast<int>(i);
      target->control = ControlOfStyleKey(keys[i].name, styles);
      return true;
    }
  }
  int effect = SelectedEffect(settings, styles);
  if (effect >= 0) {
    const StyleEntry& style = styles[static_cast<size_t>(effect)];
    if (const PageControl* control = FindPageControlByKey(style, key)) {
      target->index = StyleKeyIndex(style.number, control->key);
      target->control = control;
      if (target->index >= 0) return true;
    }
    *failure = Usage("unknown setting '" + std::string(key) + "' (not a configuration key nor a key of " +
                     style.name + "; see 'tessarine list " + std::to_string(effect) + "')");
    return false;
  }
  *failure = Usage("unknown setting '" + std::string(key) + "'");
  return false;
}

// The value for a general key, by its kind; the main dialog's lists and the
// delay have the ranges the dialog gives them.
std::optional<int32_t> KeyValue(int index, std::string_view text, std::string* expected) {
  const ConfigKey& key = ConfigKeys()[static_cast<size_t>(index)];
  if (index == KeyIndex(Key::MainDelay)) {
    *expected = NumberRangeWords(CliDialogReader::kMinDelay, CliDialogReader::kMaxDelay);
    return ParseNumberIn(text, CliDialogReader::kMinDelay, CliDialogReader::kMaxDelay);
  }
  if (index == KeyIndex(Key::MainPalette)) {
    int choice = 0;
    bool adaptive = false;
    *expected = "a palette index 0 to 8 or name";
    if (FindPalette(text, &choice, &adaptive) && !adaptive) return choice;
    return std::nullopt;
  }
  if (index == KeyIndex(Key::MainEffect)) {
    *expected = NumberRangeWords(0, kStyleCount - 1);
    return ParseNumberIn(text, 0, kStyleCount - 1);
  }
  if (key.kind & kKindSwitch) {
    *expected = "on or off (1/0, yes/no, true/false)";
    return ParseSwitchText(text);
  }
  *expected = "a whole number";
  return ParseNumberIn(text, INT32_MIN, UINT32_MAX);
}

}  // namespace

bool ApplySet(std::string_view assignment, Settings& settings, std::span<const StyleEntry> styles,
              Failure* failure, PageRecords* records) {
  size_t eq = assignment.find('=');
  if (eq == std::string_view::npos || eq == 0) {
    *failure = Usage("--set needs KEY=VALUE, not '" + std::string(assignment) + "'");
    return false;
  }
  std::string_view key = assignment.substr(0, eq);
  std::string_view text = assignment.substr(eq + 1);
  // Fountains have no configuration key: the control's own label names them.
  int selected = SelectedEffect(settings, styles);
  if (const PageControl* fountain =
          FindFountainControl(key, styles, selected >= 0 ? &styles[static_cast<size_t>(selected)] : nullptr)) {
    std::string expected;
    if (records && SetFountain(*fountain, text, *records, &expected)) return true;
    *failure = Usage("bad value '" + std::string(text) + "' for " + std::string(key) + ": expected " +
                     (expected.empty() ? "a fountain" : expected));
    return false;
  }
  SetTarget target;
  if (!FindSetTarget(key, settings, styles, &target, failure)) return false;
  const ConfigKey& config_key = ConfigKeys()[static_cast<size_t>(target.index)];
  if (config_key.IsText()) {
    // Longer values would not read back from a saved configuration file.
    const size_t most = std::min(kSettingTextMax, ConfigTextValueMax(config_key.name));
    if (text.size() > most) {
      *failure = Usage("the value of " + std::string(config_key.name) + " is longer than " +
                       std::to_string(most) + " characters (" + std::to_string(text.size()) +
                       "), the most a configuration line holds for that key");
      return false;
    }
    // A line end or other control character would end the value early.
    if (std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 32; })) {
      *failure = Usage("the value of " + std::string(config_key.name) + " holds a control character");
      return false;
    }
    settings.SetTextAt(target.index, text);
    return true;
  }
  std::string expected;
  if (target.control && KindRules(*target.control).holds_fill && records) {
    if (SetFill(*target.control, target.index, text, settings, records->fills, &expected)) return true;
    *failure = Usage("bad value '" + std::string(text) + "' for " + std::string(config_key.name) +
                     ": expected " + expected);
    return false;
  }
  int32_t stored = settings.NumberAt(target.index);
  std::optional<int32_t> value =
      target.control ? KindRules(*target.control).parse(*target.control, text, stored, &expected)
                     : KeyValue(target.index, text, &expected);
  if (!value) {
    *failure = Usage("bad value '" + std::string(text) + "' for " + std::string(config_key.name) +
                     ": expected " + expected);
    return false;
  }
  settings.SetNumberAt(target.index, *value);
  return true;
}

// ---------------------------------------------------------------- build options

bool ApplyBuildOptions(const CliArgs& args, Settings& settings, std::span<const StyleEntry> styles,
                       SessionChoices* session, Failure* failure, PageRecords* records) {
  if (args.effect) {
    int index = FindEffect(*args.effect, styles);
    if (index < 0) {
      *failure = Usage("unknown effect '" + *args.effect + "' (see 'tessarine list')");
      return false;
    }
    settings.SetNumber(Key::MainEffect, index);
  }
  if (args.delay) {
    auto delay = ParseNumberIn(*args.delay, CliDialogReader::kMinDelay, CliDialogReader::kMaxDelay);
    if (!delay) {
      *failure = Usage("bad delay '" + *args.delay + "': expected " +
                       NumberRangeWords(CliDialogReader::kMinDelay, CliDialogReader::kMaxDelay));
      return false;
    }
    settings.SetNumber(Key::MainDelay, *delay);
  }
  bool adaptive = args.custom_palette.value_or(false);
  if (args.palette) {
    int choice = 0;
    if (!FindPalette(*args.palette, &choice, &adaptive)) {
      *failure = Usage("unknown palette '" + *args.palette + "' (see 'tessarine " + args.command_name +
                       " --help')");
      return false;
    }
    if (!adaptive) settings.SetNumber(Key::MainPalette, choice);
  }
  session->custom_palette = adaptive;
  if (args.colours) {
    auto limit = ParseNumberIn(*args.colours, 2, 256);
    if (!limit) {
      *failure = Usage("bad colour count '" + *args.colours + "': expected " + NumberRangeWords(2, 256));
      return false;
    }
    // A fixed palette has its own count; saying nothing would let the user
    // think the file obeyed.
    if (!adaptive) {
      *failure = Usage("--colors needs an adaptive palette (--custom-palette)");
      return false;
    }
    session->palette_limit = *limit;
  }
  auto put = [&settings](Key key, std::optional<bool> value) {
    if (value) settings.SetNumber(key, *value ? 1 : 0);
  };
  put(Key::MainDither, args.dither);
  put(Key::MainSupercompress, args.supercompress);
  put(Key::MainMaskBackground, args.mask_background);
  put(Key::AddDescriptiveCommentBlock, args.comment);
  put(Key::Truecolour, args.true_colour);
  // Asking for a palette, dithering or frame optimisation only means something
  // for palettised frames, so it overrides a true-colour default unless true
  // colour is asked for in the same breath.
  bool wants_palette = args.palette || args.custom_palette.value_or(false) ||
                       args.dither.value_or(false) || args.supercompress.value_or(false);
  if (wants_palette && !args.true_colour) settings.SetNumber(Key::Truecolour, 0);
  for (const std::string& assignment : args.sets)
    if (!ApplySet(assignment, settings, styles, failure, records)) return false;
  return true;
}

// ---------------------------------------------------------------- reading the dialog

int32_t CliDialogReader::Spin(int id) const {
  if (id == kDelayEdit)
    return std::clamp(m_settings.Number(Key::MainDelay), kMinDelay, kMaxDelay);
  return m_style ? SettingsReader(m_settings, *m_style).Spin(id) : 0;
}

bool CliDialogReader::Checked(int id) const {
  auto on = [this](Key key) { return m_settings.Number(key) != 0; };
  switch (id) {
    case kTrueColour: return on(Key::Truecolour);
    case kCustomPalette: return m_session.custom_palette;
    case kDither: return on(Key::MainDither);
    case kSupercompress: return on(Key::MainSupercompress);
    case kAddComment: return on(Key::AddDescriptiveCommentBlock);
    case kMaskBackground: return !m_session.no_background && on(Key::MainMaskBackground);
    // The dialog has no such box, so a build never sees it checked.
    case kTransparentBackground: return false;
    default: return m_style && SettingsReader(m_settings, *m_style).Checked(id);
  }
}

Colour CliDialogReader::ColourValue(int id) const {
  return m_style ? SettingsReader(m_settings, *m_style).ColourValue(id) : 0;
}

int32_t CliDialogReader::Selection(int id) const {
  if (id == kEffectList) return m_settings.Number(Key::MainEffect);
  if (id == kPaletteList) return m_settings.Number(Key::MainPalette);
  return m_style ? SettingsReader(m_settings, *m_style).Selection(id) : 0;
}

int32_t CliDialogReader::Picker(int id) const {
  return m_style ? SettingsReader(m_settings, *m_style).Picker(id) : 0;
}

FillDescriptor CliDialogReader::Fill(int id) const {
  return m_style ? SettingsReader(m_settings, *m_style, m_records).Fill(id) : FillDescriptor();
}

FountainRecord CliDialogReader::Fountain(int id) const {
  return m_style ? SettingsReader(m_settings, *m_style, m_records).Fountain(id)
                 : ParamReader::Fountain(id);
}

}  // namespace tess::cli
