// The command line's grammar: the commands, the options each one takes, and
// the help texts, all from one table so that parsing and --help never
// disagree. Parsing only checks shape (known option, value present, right
// number of operands); what a value means is decided where it is applied.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tess::cli {

// Exit codes, documented in --help.
constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;  // the work could not be done
constexpr int kExitUsage = 2;    // the command line was wrong

enum class Command { kNone, kHelp, kList, kRender, kTest, kPreview, kEncode, kSwatch, kLibrary };

enum class Opt {
  kHelp,
  kOutput,
  kEffect,
  kSet,
  kDelay,
  kPalette,
  kCustomPalette,
  kDither,
  kSupercompress,
  kTrueColour,
  kMaskBackground,
  kComment,
  kConfig,
  kNoConfig,
  kSave,
  kQuiet,
  kOpen,
  kDir,
  kDoc,
  kSize,
  kMaxMemory,
  kColours,
};

// Everything a command line said, as written. Switches that come in --x and
// --no-x forms are unset unless given; the last form given wins.
struct CliArgs {
  Command command = Command::kNone;
  std::string command_name;
  bool help = false;     // --help on a command, or "help" itself
  bool version = false;  // --version before any command
  std::optional<std::string> output;
  std::optional<std::string> effect;
  std::vector<std::string> sets;  // KEY=VALUE, in order
  std::optional<std::string> delay;
  std::optional<std::string> palette;
  std::optional<bool> custom_palette;
  std::optional<bool> dither;
  std::optional<bool> supercompress;
  std::optional<bool> true_colour;
  std::optional<bool> mask_background;
  std::optional<bool> comment;
  std::optional<bool> open;
  std::optional<std::string> config;
  bool no_config = false;
  bool save = false;
  bool quiet = false;
  std::optional<std::string> dir;
  std::optional<std::string> doc;
  std::optional<std::string> size;
  std::optional<std::string> max_memory;
  std::optional<std::string> colours;
  std::vector<std::string> operands;
};

// False with a one-line reason (no "tessarine: " prefix) when the command
// line is malformed. `args` excludes the program name.
bool ParseArgs(std::span<const std::string> args, CliArgs* out, std::string* error);

// The command named `name`, or kNone.
Command FindCommand(std::string_view name);

// Help topics beside the commands ("tessarine help fills"): the topic's text,
// or empty when there is no such topic.
std::string TopicHelp(std::string_view name);

// "tessarine --help": commands, exit codes, environment.
std::string GeneralHelp();
// "tessarine COMMAND --help": usage, description and every option it takes.
std::string CommandHelp(Command command);
// "tessarine --version".
std::string VersionText();

}  // namespace tess::cli
