// From a command line to the settings a build reads: loading and saving the
// configuration file, resolving effect and palette names, applying --set
// assignments with the same ranges the dialog's controls have, and the
// ParamReader the build driver reads the "dialog" through. Every refusal is
// a one-line reason; nothing here prints.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fills/fill_store.h"
#include "host/cli/cli_args.h"
#include "platform/platform.h"
#include "shell/settings.h"
#include "styles/style.h"

namespace tess::cli {

// A refusal: what to print after "tessarine: " and the exit code.
struct Failure {
  int exit_code = kExitFailure;
  std::string message;
};

// Choices of one run that the configuration file does not hold.
struct SessionChoices {
  bool custom_palette = false;
  int palette_limit = 256;  // --colors
  // Frames from elsewhere have no effect, hence no background to mask.
  bool no_background = false;
};

// ---------------------------------------------------------------- configuration file

// Where settings come from and go to for one run.
struct ConfigPlan {
  std::string path;      // empty when there is no per-user folder and no --config
  bool read = true;      // not with --no-config
  bool explicit_path = false;
  bool save = false;
};

ConfigPlan PlanConfig(const CliArgs& args, Platform& platform);

// Reads the plan's file into `settings` (which keeps its defaults for keys the
// file lacks). A missing user file is normal; a missing --config file is an
// error unless it is about to be written by --save.
bool LoadConfig(const ConfigPlan& plan, Settings& settings, Platform& platform, Failure* failure);

// Writes `settings` to the plan's file, creating its folder.
bool SaveConfig(const ConfigPlan& plan, const Settings& settings, Platform& platform,
                Failure* failure);

// ---------------------------------------------------------------- names and values

// An effect by list index ("3") or by name, ignoring case, with '-' or '_'
// standing for spaces ("phasers-on-stun"). -1 when there is none.
int FindEffect(std::string_view text, std::span<const StyleEntry> styles);

// A fixed palette by index or name (ignoring case); "adaptive" (or "custom")
// sets *adaptive instead. False when it is neither.
bool FindPalette(std::string_view text, int* choice, bool* adaptive);

// Applies one KEY=VALUE. KEY is a full key of the configuration file (any
// case) or a key of the effect MainEffect selects ("Frames" for
// "Style000Frames" when Bubbles is selected). Values are checked against the
// control that edits the setting: spins against their range, switches as
// 0/1/on/off/yes/no/true/false, colours as #RRGGBB or a number, choices as an
// index or item name.
// A fill control's value is a fill's text form (see 'tessarine help fills'),
// a fountain control's a fountain's (named by the control's label,
// "Fountain"); both are kept in `records` beside the settings.
bool ApplySet(std::string_view assignment, Settings& settings, std::span<const StyleEntry> styles,
              Failure* failure, PageRecords* records = nullptr);

// Every build option of the command line, in the order that makes the most
// explicit one win: --effect, the output options, then each --set in turn.
bool ApplyBuildOptions(const CliArgs& args, Settings& settings, std::span<const StyleEntry> styles,
                       SessionChoices* session, Failure* failure,
                       PageRecords* records = nullptr);

// The effect MainEffect selects, clamped to the table as the build clamps it.
int SelectedEffect(const Settings& settings, std::span<const StyleEntry> styles);

// ---------------------------------------------------------------- reading the dialog

// The main dialog's controls as the build driver reads them: the output
// options from the settings and the session, the selected effect's page from
// its StyleNNN keys.
class CliDialogReader final : public ParamReader {
 public:
  static constexpr int32_t kMinDelay = 1;
  static constexpr int32_t kMaxDelay = 1000;

  // All must outlive the reader; `style` may be null (frames from elsewhere),
  // and without `records` every fill is Simple, every fountain a built-in.
  CliDialogReader(const Settings& settings, const StyleEntry* style, const SessionChoices& session,
                  const PageRecords* records = nullptr)
      : m_settings(settings), m_style(style), m_session(session), m_records(records) {}

  const SessionChoices& session() const { return m_session; }

  int32_t Spin(int id) const override;
  bool Checked(int id) const override;
  Colour ColourValue(int id) const override;
  int32_t Selection(int id) const override;
  int32_t Picker(int id) const override;
  FillDescriptor Fill(int id) const override;
  FountainRecord Fountain(int id) const override;

 private:
  const Settings& m_settings;
  const StyleEntry* m_style;
  SessionChoices m_session;
  const PageRecords* m_records;
};

}  // namespace tess::cli
