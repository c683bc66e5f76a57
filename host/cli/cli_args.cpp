// The option and command tables, the parser over them, and the help texts
// generated from them.
//
// Sections: tables · parsing · help.
#include "host/cli/cli_args.h"

#include <algorithm>

#include "host/cli/cli_records.h"
#include "output/palette.h"
#include "shell/strings.h"

#ifndef TESS_VERSION
#define TESS_VERSION "0.0.0"
#endif

namespace tess::cli {
namespace {

// ---------------------------------------------------------------- tables

enum class Arg {
  kNone,    // --name
  kValue,   // --name VALUE, --name=VALUE, -x VALUE, -xVALUE
  kSwitch,  // --name and --no-name
};

struct OptionInfo {
  Opt id;
  std::string_view name;
  char short_name;
  Arg arg;
  std::string_view value_name;
  std::string_view help;
  std::string_view alias = {};  // another spelling of the long name
};

constexpr OptionInfo kOptions[] = {
    {Opt::kHelp, "help", 'h', Arg::kNone, "", "show this help and exit"},
    {Opt::kOutput, "output", 'o', Arg::kValue, "FILE", "write the GIF to FILE (- for standard output)"},
    {Opt::kEffect, "effect", 'e', Arg::kValue, "NAME|INDEX",
     "the effect to render (see 'tessarine list'); stored as MainEffect"},
    {Opt::kSet, "set", 's', Arg::kValue, "KEY=VALUE",
     "set one setting: a full key (Style000Frames=32, MainDelay=6) or a key of the chosen effect "
     "(Frames=32, Seed=1234, Background=#102030); may be repeated"},
    {Opt::kDelay, "delay", 'd', Arg::kValue, "N", "frame delay in hundredths of a second, 1-1000"},
    {Opt::kPalette, "palette", 'p', Arg::kValue, "NAME|INDEX",
     "fixed output palette (below), or 'adaptive' for --custom-palette"},
    {Opt::kCustomPalette, "custom-palette", 0, Arg::kSwitch, "",
     "build an adaptive palette from the frames themselves"},
    {Opt::kColours, "colors", 0, Arg::kValue, "N",
     "with an adaptive palette, at most N colours in all (2-256, default 256), the exact "
     "background and the transparent index included: fewer colours make smaller files",
     "colours"},
    {Opt::kDither, "dither", 0, Arg::kSwitch, "", "remap with error diffusion"},
    {Opt::kSupercompress, "supercompress", 0, Arg::kSwitch, "",
     "make pixels unchanged from the previous frame transparent and crop each frame to what "
     "changed (with an adaptive palette)"},
    {Opt::kTrueColour, "true-color", 0, Arg::kSwitch, "",
     "keep frames in true colour, each with its own colour table", "true-colour"},
    {Opt::kMaskBackground, "mask-background", 0, Arg::kSwitch, "",
     "give the effect's background colour its own palette entry"},
    {Opt::kComment, "comment", 0, Arg::kSwitch, "", "add the descriptive comment block"},
    {Opt::kConfig, "config", 0, Arg::kValue, "FILE", "read settings from FILE instead of the user's"},
    {Opt::kNoConfig, "no-config", 0, Arg::kNone, "", "start from the built-in defaults"},
    {Opt::kSave, "save", 0, Arg::kNone, "",
     "write the resulting settings back to the configuration file"},
    {Opt::kQuiet, "quiet", 'q', Arg::kNone, "", "no progress bar"},
    {Opt::kOpen, "open", 0, Arg::kSwitch, "", "open the preview page in a browser (default)"},
    {Opt::kDir, "dir", 0, Arg::kValue, "DIR", "write the preview files into DIR"},
    {Opt::kDoc, "doc", 0, Arg::kValue, "FILE", "take settings from a document file (.TS1) saved by the plug-in; options given too override it"},
    {Opt::kSize, "size", 0, Arg::kValue, "WxH", "the swatch's size in pixels, e.g. 128x64 (default 64x64)"},
    {Opt::kMaxMemory, "max-memory", 0, Arg::kValue, "SIZE",
     "stop with \"Memory error\" rather than hold more than SIZE bytes of pictures (suffix K, M "
     "or G); a render holds a few frames however many it writes, encode holds them all"},
};

const OptionInfo& OptionInfoOf(Opt id) {
  for (const OptionInfo& info : kOptions)
    if (info.id == id) return info;
  return kOptions[0];
}

struct CommandInfo {
  Command id;
  std::string_view name;
  std::string_view usage;  // after "tessarine "
  std::string_view summary;
  std::string_view description;
  std::vector<Opt> options;
  int min_operands;
  int max_operands;  // -1: any number
};

const std::vector<Opt> kBuildOptions = {
    Opt::kEffect,        Opt::kSet,        Opt::kDelay,          Opt::kPalette,
    Opt::kCustomPalette, Opt::kDither,     Opt::kSupercompress,  Opt::kTrueColour,
    Opt::kMaskBackground, Opt::kComment,   Opt::kConfig,         Opt::kNoConfig,
    Opt::kSave,          Opt::kDoc,        Opt::kQuiet,          Opt::kMaxMemory,
    Opt::kColours,       Opt::kHelp};

std::vector<Opt> With(std::vector<Opt> base, std::initializer_list<Opt> extra) {
  base.insert(base.begin(), extra);
  return base;
}

const std::vector<CommandInfo>& Commands() {
  static const std::vector<CommandInfo> commands = {
      {Command::kList, "list", "list [EFFECT] [options]", "list the effects, or one effect's settings",
       "Without EFFECT, lists the effects in table order with their index and whether they can\n"
       "render yet. With EFFECT (name or index), lists its settings: key, kind, range, the\n"
       "built-in default and the current value from the configuration file.",
       {Opt::kConfig, Opt::kNoConfig, Opt::kHelp}, 0, 1},
      {Command::kRender, "render", "render [-o FILE] [options]", "render an animated GIF",
       "Renders the chosen effect with the settings of the configuration file and the\n"
       "options below, and writes it as an animated GIF (default: the effect's name, e.g.\n"
       "bubbles.gif). The file appears only when it is complete. Each frame is written as\n"
       "it is rendered, so a long animation needs memory for a few frames, not for all of\n"
       "them; an adaptive palette renders the frames twice, first to gather their colours.",
       With(kBuildOptions, {Opt::kOutput}), 0, 0},
      {Command::kTest, "test", "test [options]", "render a trial GIF into the plug-in's data folder",
       "Renders as 'render' does into test.gif in the plug-in's data folder and prints its path.",
       kBuildOptions, 0, 0},
      {Command::kPreview, "preview", "preview [--no-open] [--dir DIR] [options]",
       "write preview.gif and preview.html and open the page",
       "Renders the preview animation (palettised, not dithered, not supercompressed), writes\n"
       "preview.gif and preview.html, which tiles it as the page background, into the\n"
       "plug-in's data folder (or DIR), prints the page's path and opens it in a browser.",
       With(kBuildOptions, {Opt::kOpen, Opt::kDir}), 0, 0},
      {Command::kEncode, "encode", "encode FRAMES... -o FILE [options]",
       "turn binary PPM frames into an animated GIF",
       "Runs the output half of a build on frames made elsewhere: binary PPM (P6, maxval\n"
       "255), all of one size, in the order given; a file may hold several images, and '-'\n"
       "reads standard input. The frames share one fixed or adaptive palette, are\n"
       "optionally dithered and supercompressed, and are written as an animated GIF.",
       {Opt::kOutput, Opt::kSet, Opt::kDelay, Opt::kPalette, Opt::kCustomPalette, Opt::kDither,
        Opt::kSupercompress, Opt::kTrueColour, Opt::kComment, Opt::kConfig, Opt::kNoConfig,
        Opt::kSave, Opt::kQuiet, Opt::kMaxMemory, Opt::kColours, Opt::kHelp},
       1, -1},
      {Command::kSwatch, "swatch", "swatch FILL [--size WxH] -o FILE",
       "paint one fill into an image",
       "Paints FILL, a fill's text form (see 'tessarine help fills') or a pattern file (.flp)\n"
       "written by the plug-in, into a new image of the given size, exactly as an effect\n"
       "receives it, and writes it as binary PPM (FILE ending in .ppm) or GIF (.gif).",
       {Opt::kOutput, Opt::kSize, Opt::kHelp}, 1, 1},
      {Command::kLibrary, "library", "library [list|show N|add FOUNTAIN|remove N] [open|closed]",
       "list, show, add to or remove from the fountain libraries",
       "The fountain libraries are the plug-in's files: FountainLibrary.fll for closed\n"
       "fountains and FountainLibrary.fln for open ones, in its data folder. 'list' (the\n"
       "default) prints each entry's number and text form; 'show N' draws entry N as a strip\n"
       "in the terminal's colours, or writes it as a 256x32 image with -o FILE (.ppm or .gif);\n"
       "'add FOUNTAIN' appends a fountain given as text (see 'tessarine help fountains') to\n"
       "the library of its kind; 'remove N' deletes entry N. A last word 'open' or 'closed'\n"
       "picks the library (default closed).",
       {Opt::kOutput, Opt::kHelp}, 0, 3},
      {Command::kHelp, "help", "help [COMMAND|TOPIC]", "show help for a command or a topic (fills, fountains)", "",
       {Opt::kHelp}, 0, 1},
  };
  return commands;
}

const CommandInfo* FindSpec(Command id) {
  for (const CommandInfo& info : Commands())
    if (info.id == id) return &info;
  return nullptr;
}

// ---------------------------------------------------------------- parsing

bool Takes(const CommandInfo& command, Opt id) {
  return std::find(command.options.begin(), command.options.end(), id) != command.options.end();
}

void Apply(Opt id, bool on, const std::string& value, CliArgs* out) {
  switch (id) {
    case Opt::kHelp: out->help = true; break;
    case Opt::kOutput: out->output = value; break;
    case Opt::kEffect: out->effect = value; break;
    case Opt::kSet: out->sets.push_back(value); break;
    case Opt::kDelay: out->delay = value; break;
    case Opt::kPalette: out->palette = value; break;
    case Opt::kCustomPalette: out->custom_palette = on; break;
    case Opt::kDither: out->dither = on; break;
    case Opt::kSupercompress: out->supercompress = on; break;
    case Opt::kTrueColour: out->true_colour = on; break;
    case Opt::kMaskBackground: out->mask_background = on; break;
    case Opt::kComment: out->comment = on; break;
    case Opt::kConfig: out->config = value; break;
    case Opt::kNoConfig: out->no_config = true; break;
    case Opt::kSave: out->save = true; break;
    case Opt::kQuiet: out->quiet = true; break;
    case Opt::kOpen: out->open = on; break;
    case Opt::kDir: out->dir = value; break;
    case Opt::kDoc: out->doc = value; break;
    case Opt::kSize: out->size = value; break;
    case Opt::kMaxMemory: out->max_memory = value; break;
    case Opt::kColours: out->colours = value; break;
  }
}

std::string TryHelp(const CommandInfo& command) {
  return " (try 'tessarine " + std::string(command.name) + " --help')";
}

// Parses the arguments after the command word.
class CommandParser {
 public:
  CommandParser(const CommandInfo& command, CliArgs* out, std::string* error)
      : m_command(command), m_out(out), m_error(error) {}

  bool Run(std::span<const std::string> args) {
    bool options_done = false;
    for (size_t i = 0; i < args.size(); ++i) {
      const std::string& a = args[i];
      bool ok = true;
      if (options_done || a == "-" || a.empty() || a[0] != '-') {
        m_out->operands.push_back(a);
      } else if (a == "--") {
        options_done = true;
      } else if (a.starts_with("--")) {
        ok = Long(a, args, &i);
      } else {
        ok = Short(a, args, &i);
      }
      if (!ok) return false;
    }
    return CheckOperands();
  }

 private:
  bool Fail(const std::string& message) {
    *m_error = message + TryHelp(m_command);
    return false;
  }

  bool Unknown(const std::string& option) {
    return Fail("unknown option '" + option + "' for '" + std::string(m_command.name) + "'");
  }

  // The value of option `shown` at args[*i]: the inline text, else the next argument.
  bool Value(std::string_view shown, const std::optional<std::string>& inline_value,
             std::span<const std::string> args, size_t* i, std::string* value) {
    if (inline_value) {
      *value = *inline_value;
      return true;
    }
    if (*i + 1 >= args.size()) return Fail("option '" + std::string(shown) + "' needs a value");
    *value = args[++*i];
    return true;
  }

  bool Long(const std::string& a, std::span<const std::string> args, size_t* i) {
    std::string_view body = std::string_view(a).substr(2);
    std::optional<std::string> inline_value;
    if (size_t eq = body.find('='); eq != std::string_view::npos) {
      inline_value = std::string(body.substr(eq + 1));
      body = body.substr(0, eq);
    }
    bool negated = false;
    const OptionInfo* info = Lookup(body);
    if (!info && body.starts_with("no-")) {
      info = Lookup(body.substr(3));
      negated = info != nullptr;
      if (info && info->arg != Arg::kSwitch) info = nullptr;
    }
    if (!info || !Takes(m_command, info->id)) return Unknown("--" + std::string(body));
    std::string value;
    if (info->arg == Arg::kValue) {
      if (!Value("--" + std::string(body), inline_value, args, i, &value)) return false;
    } else if (inline_value) {
      return Fail("option '--" + std::string(body) + "' takes no value");
    }
    Apply(info->id, !negated, value, m_out);
    return true;
  }

  // Bundled short options: -qo FILE, -oFILE, -q -h.
  bool Short(const std::string& a, std::span<const std::string> args, size_t* i) {
    for (size_t k = 1; k < a.size(); ++k) {
      const OptionInfo* info = nullptr;
      for (const OptionInfo& s : kOptions)
        if (s.short_name == a[k]) info = &s;
      std::string shown = std::string("-") + a[k];
      if (!info || !Takes(m_command, info->id)) return Unknown(shown);
      if (info->arg != Arg::kValue) {
        Apply(info->id, true, {}, m_out);
        continue;
      }
      std::optional<std::string> inline_value;
      if (k + 1 < a.size()) inline_value = a.substr(k + 1);
      std::string value;
      if (!Value(shown, inline_value, args, i, &value)) return false;
      Apply(info->id, true, value, m_out);
      return true;
    }
    return true;
  }

  const OptionInfo* Lookup(std::string_view name) const {
    for (const OptionInfo& info : kOptions)
      if (info.name == name || (!info.alias.empty() && info.alias == name)) return &info;
    return nullptr;
  }

  bool CheckOperands() {
    if (m_out->help) return true;
    int n = static_cast<int>(m_out->operands.size());
    if (n < m_command.min_operands) return Fail("missing operand");
    if (m_command.max_operands >= 0 && n > m_command.max_operands)
      return Fail("unexpected argument '" + m_out->operands[static_cast<size_t>(m_command.max_operands)] + "'");
    return true;
  }

  const CommandInfo& m_command;
  CliArgs* m_out;
  std::string* m_error;
};

// ---------------------------------------------------------------- help

std::string OptionLine(const OptionInfo& info) {
  std::string left = "  ";
  left += info.short_name ? std::string("-") + info.short_name + ", " : std::string("    ");
  left += "--";
  if (info.arg == Arg::kSwitch) left += "[no-]";
  left += info.name;
  if (info.arg == Arg::kValue) {
    left += ' ';
    left += info.value_name;
  }
  constexpr size_t kColumn = 32;
  std::string line = left;
  if (line.size() + 2 > kColumn) {
    line += '\n';
    line.append(kColumn, ' ');
  } else {
    line.append(kColumn - line.size(), ' ');
  }
  // Wrap the help text at about 100 columns, continuing under itself.
  std::string_view text = info.help;
  size_t width = 100 - kColumn;
  while (text.size() > width) {
    size_t cut = text.rfind(' ', width);
    if (cut == std::string_view::npos) break;
    line += text.substr(0, cut);
    line += '\n';
    line.append(kColumn, ' ');
    text = text.substr(cut + 1);
  }
  line += text;
  line += '\n';
  return line;
}

std::string PaletteList() {
  std::string text = "Palettes (--palette):\n";
  for (int i = 0; i < kPaletteChoices; ++i)
    text += "  " + std::to_string(i) + "  " + std::string(PaletteName(i)) + (i == 6 ? " (default)\n" : "\n");
  text += "  adaptive  built from the frames (--custom-palette)\n";
  return text;
}

constexpr std::string_view kExitCodes =
    "Exit status:\n"
    "  0  success\n"
    "  1  the work failed (unreadable or invalid file, an effect that cannot render, out of\n"
    "     memory); no partial output file is left behind\n"
    "  2  usage error (unknown command, option, effect or setting, or a bad value)\n";

constexpr std::string_view kBuildNotes =
    "Settings come from the configuration file (zephyra1.ini in the Brindlewood folder of\n"
    "$TESSARINE_APPDATA, else $XDG_CONFIG_HOME or ~/.config); options override them for this run\n"
    "and --save writes the result back. True colour is on by default: --palette,\n"
    "--custom-palette, --dither and --supercompress switch it off unless --true-color is\n"
    "also given.\n";

}  // namespace

std::string TopicHelp(std::string_view name) {
  if (name == "fills") return FillsHelp();
  if (name == "fountains") return FountainsHelp();
  return {};
}

Command FindCommand(std::string_view name) {
  for (const CommandInfo& info : Commands())
    if (info.name == name) return info.id;
  return Command::kNone;
}

bool ParseArgs(std::span<const std::string> args, CliArgs* out, std::string* error) {
  *out = CliArgs{};
  size_t i = 0;
  for (; i < args.size() && args[i].starts_with("-") && args[i] != "-"; ++i) {
    const std::string& a = args[i];
    if (a == "--help" || a == "-h") {
      out->help = true;
    } else if (a == "--version" || a == "-V") {
      out->version = true;
    } else {
      *error = "unknown option '" + a + "' (try 'tessarine --help')";
      return false;
    }
  }
  if (i == args.size()) {
    if (!out->help && !out->version) {
      *error = "no command given (try 'tessarine --help')";
      return false;
    }
    return true;
  }
  if (out->help || out->version) return true;  // "tessarine --help render" shows the general help
  out->command_name = args[i];
  out->command = FindCommand(args[i]);
  const CommandInfo* info = FindSpec(out->command);
  if (!info) {
    *error = "unknown command '" + args[i] + "' (try 'tessarine --help')";
    return false;
  }
  CommandParser parser(*info, out, error);
  if (!parser.Run(args.subspan(i + 1))) return false;
  if (out->command == Command::kHelp && !out->operands.empty() &&
      FindCommand(out->operands[0]) == Command::kNone && TopicHelp(out->operands[0]).empty()) {
    *error = "unknown command or topic '" + out->operands[0] + "' (try 'tessarine --help')";
    return false;
  }
  return true;
}

std::string GeneralHelp() {
  std::string text =
      "Usage: tessarine COMMAND [options]\n"
      "       tessarine COMMAND --help | --help | --version\n"
      "\n"
      "Seamlessly tiling animated backgrounds: renders the Tessarine #1 effects as animated\n"
      "GIFs, acting as the plug-in's host.\n"
      "\n"
      "Commands:\n";
  for (const CommandInfo& info : Commands()) {
    std::string left = "  " + std::string(info.name);
    left.append(12 - std::min<size_t>(12, left.size()), ' ');
    text += left + std::string(info.summary) + "\n";
  }
  text += "\nTopics (tessarine help TOPIC):\n  fills       the text form of a fill, for --set and swatch\n"
          "  fountains   the text form of a fountain, for --set, swatch and library\n\n";
  text += kExitCodes;
  return text;
}

std::string CommandHelp(Command command) {
  const CommandInfo* info = FindSpec(command);
  if (!info || command == Command::kHelp) return GeneralHelp();
  std::string text = "Usage: tessarine " + std::string(info->usage) + "\n\n";
  text += std::string(info->description) + "\n\nOptions:\n";
  for (Opt id : info->options) text += OptionLine(OptionInfoOf(id));
  bool builds = std::find(info->options.begin(), info->options.end(), Opt::kPalette) != info->options.end();
  if (builds) {
    text += "\n" + PaletteList() + "\n";
    text += kBuildNotes;
  }
  text += "\n";
  text += kExitCodes;
  return text;
}

std::string VersionText() { return "tessarine " TESS_VERSION " (Tessarine #1)\n"; }

}  // namespace tess::cli
