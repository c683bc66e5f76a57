// The commands. Builds run the engine's build driver with this host's
// GifFileHost as the host service, so a command-line GIF is made by exactly
// the code path the plug-in's "OK" takes.
//
// Sections: shared steps · list · render, test and preview · encode.
#include "host/cli/commands.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "base/alloc.h"
#include "controls/control_kinds.h"
#include "dialog/settings_document.h"
#include "dialog/settings_reader.h"
#include "driver/build_driver.h"
#include "fills/fountain_text.h"
#include "host/cli/cli_records.h"
#include "host/cli/cli_settings.h"
#include "host/cli/gif_file_host.h"
#include "host/cli/ppm.h"
#include "image/frame_list.h"
#include "output/gif_preview.h"
#include "platform/safe_file.h"
#include "shell/main_dialog_ids.h"
#include "shell/paths.h"

namespace tess::cli {
namespace {

// The maker's address in the comment block of every GIF we write.
constexpr char kMakerWebAddress[] = "https://www.brindlewood.example/";

// ---------------------------------------------------------------- shared steps

int Report(CliEnvironment& env, const Failure& failure) {
  env.err << "tessarine: " << failure.message << '\n';
  return failure.exit_code;
}

int Report(CliEnvironment& env, int code, const std::string& message) {
  return Report(env, Failure{code, message});
}

// Checked before any work, so a run that cannot write its file fails at once.
bool CheckWritable(const std::string& path, Failure* failure) {
  std::string reason;
  if (SafeFile::CanWrite(path, &reason)) return true;
  if (path == kStandardOutputPath) {
    *failure = Failure{kExitUsage, "cannot write the GIF to standard output: " + reason +
                                       " (redirect it, or give a file name with -o)"};
  } else {
    *failure = Failure{kExitFailure, "cannot write '" + path + "': " + reason};
  }
  return false;
}

// The configuration file --save will write; its folder is made now, as the
// save would make it.
bool CheckSaveTarget(const ConfigPlan& plan, Failure* failure) {
  if (!plan.save || plan.path.empty()) return true;
  std::filesystem::path parent = std::filesystem::path(plan.path).parent_path();
  if (!parent.empty()) EnsureFolderExists(parent.string());
  return CheckWritable(plan.path, failure);
}

// A document saved by the dialog (or by us) over the configuration; the
// loader has already left the settings alone when it reports a failure.
bool LoadDocument(const std::string& path, Settings& settings, PageRecords& records, Failure* failure) {
  // Looked at before it is opened: opening a pipe would wait for a writer.
  std::error_code ec;
  const std::filesystem::file_status status = std::filesystem::status(path, ec);
  if (ec || !std::filesystem::is_regular_file(status)) {
    *failure = Failure{kExitFailure, path + ": " + (ec ? ec.message() : std::string("not a regular file"))};
    return false;
  }
  RecordingReporter messages;
  if (LoadDocumentIntoSettings(path, settings, kHostCapOptimise, messages, &records)) return true;
  std::string text = messages.messages.empty() ? "cannot load the document" : messages.messages.front();
  *failure = Failure{kExitFailure, path + ": " + text};
  return false;
}

// The settings of one run: defaults, the configuration file with the fills'
// pattern files, a document, then the options.
bool PrepareSettings(const CliArgs& args, CliEnvironment& env, const ConfigPlan& plan,
                     Settings& settings, PageRecords& records, SessionChoices* session,
                     Failure* failure) {
  if (args.output && !CheckWritable(*args.output, failure)) return false;
  if (!LoadConfig(plan, settings, env.platform, failure) || !CheckSaveTarget(plan, failure)) return false;
  LoadPageRecords(plan, settings, records, env.platform, env.styles);
  if (args.doc && !LoadDocument(*args.doc, settings, records, failure)) return false;
  return ApplyBuildOptions(args, settings, env.styles, session, failure, &records);
}

BuildOptions OptionsFrom(const Settings& settings, const SessionChoices& session) {
  BuildOptions options;
  options.palette_limit = session.palette_limit;
  options.fast_remap = settings.Number(Key::FastRemap) != 0;
  options.dither_brightness = settings.Number(Key::DitherBrightness);
  options.dither_contrast = settings.Number(Key::DitherContrast);
  options.web_address = kMakerWebAddress;
  // We write transparency and crop frames ourselves; delays stay hundredths.
  options.host_capabilities = kHostCapOptimise;
  // Each frame is written as it comes, so the largest job fits in a few
  // frames of memory. (Encode's frames are all in memory already.)
  options.stream_frames = true;
  return options;
}

// --max-memory: a ceiling on the engine's blocks for the command's work. The
// build's own "Memory error" then gains a line saying it was the ceiling.
class MemoryCeiling {
 public:
  // False with a usage failure when the size is malformed.
  bool Read(const CliArgs& args, Failure* failure) {
    if (!args.max_memory) return true;
    if (ParseMemorySize(*args.max_memory, &m_bytes)) {
      m_text = *args.max_memory;
      return true;
    }
    *failure = Failure{kExitUsage, "--max-memory: '" + *args.max_memory + "' is not a size (e.g. 512M or 2G)"};
    return false;
  }
  bool set() const { return !m_text.empty(); }
  int64_t bytes() const { return m_bytes; }
  const std::string& text() const { return m_text; }
  // From here on, the work may hold this many more bytes than it does now.
  void Start() {
    if (set()) m_scope.emplace(AllocCurrentBytes() + m_bytes);
  }
  // After failed work: the line that says the ceiling was the cause.
  // A background frame writer allocates on its own thread, out of the
  // ceiling's sight: under a ceiling the frames are written in turn.
  FrameWriting Writing() const { return set() ? FrameWriting::kInline : FrameWriting::kBackground; }
  void ExplainFailure(CliEnvironment& env, std::string_view why) const {
    if (m_scope && m_scope->refused())
      Report(env, kExitFailure, std::string(why) + " more than --max-memory " + m_text + " allows");
  }

 private:
  int64_t m_bytes = 0;
  std::string m_text;
  std::optional<AllocLimitScope> m_scope;
};

// After a build: the driver has reported its own message when it failed; the
// host adds what it knows about the file.
int Finish(bool built, const GifFileHost& host, CliEnvironment& env) {
  if (built && host.finished()) return kExitOk;
  if (!host.error().empty()) Report(env, kExitFailure, host.error());
  else if (built) Report(env, kExitFailure, "no file was written");
  return kExitFailure;
}

// Saving follows the dialog: the settings are written whether the build
// succeeded or not. A failed save turns success into failure.
int SaveIfAsked(int code, const ConfigPlan& plan, const Settings& settings, const PageRecords& records,
                CliEnvironment& env) {
  if (!plan.save) return code;
  Failure failure;
  if (!SaveConfig(plan, settings, env.platform, &failure) || !SavePageRecords(records, &failure)) {
    Report(env, failure);
    return kExitFailure;
  }
  return code;
}

// ---------------------------------------------------------------- list

std::string Column(std::string text, size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text + ' ';
}

void ListEffects(CliEnvironment& env) {
  for (size_t i = 0; i < env.styles.size(); ++i) {
    const StyleEntry& style = env.styles[i];
    env.out << (i < 10 ? " " : "") << i << "  " << Column(style.name, 16)
            << (style.init ? "ready" : "not available yet") << '\n';
  }
}

void ListSettings(const StyleEntry& style, int index, const Settings& settings, const PageRecords& records,
                  CliEnvironment& env) {
  char number[8];
  std::snprintf(number, sizeof number, "%03d", style.number);
  env.out << style.name << " (effect " << index << ", keys Style" << number << "KEY"
          << (style.init ? "" : "; not available yet") << ")\n";
  env.out << Column("KEY", 16) << Column("KIND", 9) << Column("RANGE", 12) << Column("DEFAULT", 9)
          << "VALUE\n";
  SettingsReader reader(settings, style, &records);
  if (style.frames_rule && style.init) {
    Random random;
    std::unique_ptr<StyleRecord> record = style.init(reader, random);
    env.out << Column("(frames)", 16) << Column("derived", 9) << Column("-", 12) << Column("-", 9)
            << (record ? std::to_string(record->FrameCount()) : std::string("?")) << "  ("
            << style.frames_rule << ")\n";
  }
  // Fountains have no key; their label names them, as --set takes it.
  for (const PageControl& c : style.page)
    if (KindRules(c).holds_fountain)
      env.out << Column("Fountain", 16) << Column(KindRules(c).listing_name, 9) << Column("-", 12)
              << Column("built-in", 9) << FormatFountain(reader.Fountain(c.id)) << '\n';
  for (const StyleSetting& s : ListStyleSettings(settings, style)) {
    const PageControl& c = *s.control;
    const ControlKindRules& rules = KindRules(c);
    std::string value = rules.holds_fill ? FillText(reader.Fill(c.id)) : rules.format(c, s.value);
    if (s.has_range && s.stored != s.value) value += " (stored " + std::to_string(s.stored) + ")";
    env.out << Column(c.key, 16) << Column(rules.listing_name, 9) << Column(RangeText(c), 12)
            << Column(rules.format(c, s.initial), 9) << value << '\n';
  }
}

// ---------------------------------------------------------------- render, test and preview

// Forwards to the real platform; opening the preview page happens only when
// asked, and what was opened (or would have been) is remembered.
class PreviewPlatform final : public Platform {
 public:
  PreviewPlatform(Platform& inner, bool open) : m_inner(inner), m_open(open) {}
  std::string AppDataFolder() override { return m_inner.AppDataFolder(); }
  std::string DocumentsFolder() override { return m_inner.DocumentsFolder(); }
  char PathSeparator() const override { return m_inner.PathSeparator(); }
  bool ShiftDown() override { return m_inner.ShiftDown(); }
  LocalTime Now() override { return m_inner.Now(); }
  bool OpenDocument(const std::string& path, bool maximised) override {
    page = path;
    opened = m_open && m_inner.OpenDocument(path, maximised);
    return !m_open || opened;
  }
  bool LaunchBrowser(const std::string& address, const std::string& original, bool maximised) override {
    return m_inner.LaunchBrowser(address, original, maximised);
  }

  std::string page;
  bool opened = false;

 private:
  Platform& m_inner;
  bool m_open;
};

BuildMode ModeOf(Command command) {
  switch (command) {
    case Command::kTest: return BuildMode::kTest;
    case Command::kPreview: return BuildMode::kPreview;
    default: return BuildMode::kOk;
  }
}

bool EnsureFolder(const std::string& folder, CliEnvironment& env) {
  if (EnsureFolderExists(folder)) return true;
  Report(env, kExitFailure, "cannot create the folder '" + folder + "'");
  return false;
}

// The GIF a mode 0 or 1 build writes; empty after printing why there is none.
std::string OutputPath(const CliArgs& args, const StyleEntry& style, CliEnvironment& env) {
  if (args.command != Command::kTest) return args.output ? *args.output : DefaultOutputName(style);
  if (!EnsureFolder(PluginDataPath(env.platform, ""), env)) return {};
  return PluginDataPath(env.platform, kTestFileName);
}

// Mode 2 writes its own files; the host only shows status and progress.
int RunPreview(const CliArgs& args, CliEnvironment& env, const CliDialogReader& dialog,
               Reporter& reporter, ProgressBar& bar, const Settings& settings) {
  std::string folder = args.dir ? *args.dir : PluginDataPath(env.platform, "");
  if (!EnsureFolder(folder, env)) return kExitFailure;
  Failure failure;
  if (!CheckWritable(JoinPath(folder, kPreviewGifName, env.platform.PathSeparator()), &failure))
    return Report(env, failure);
  bool open = args.open.value_or(true);
  PreviewPlatform platform(env.platform, open);
  GifFileHost status_only("", &bar);
  Random random;
  BuildContext context{dialog, env.styles, random, status_only, 0, reporter, platform, nullptr,
                       OptionsFrom(settings, dialog.session())};
  context.options.preview_folder = folder;
  bool built = RunBuild(context, BuildMode::kPreview);
  bar.Clear();
  if (!built) return kExitFailure;
  env.out << platform.page << '\n';
  if (open && !platform.opened) Report(env, kExitOk, "could not open a browser; open the page yourself");
  return kExitOk;
}

}  // namespace

std::string DefaultOutputName(const StyleEntry& style) {
  std::string name;
  for (const char* p = style.name; *p; ++p)
    name += *p == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(*p)));
  return name + ".gif";
}

int RunList(const CliArgs& args, CliEnvironment& env) {
  if (args.operands.empty()) {
    ListEffects(env);
    return kExitOk;
  }
  int index = FindEffect(args.operands[0], env.styles);
  if (index < 0) return Report(env, kExitUsage, "unknown effect '" + args.operands[0] + "' (see 'tessarine list')");
  Settings settings;
  PageRecords records;
  Failure failure;
  ConfigPlan plan = PlanConfig(args, env.platform);
  if (!LoadConfig(plan, settings, env.platform, &failure)) return Report(env, failure);
  LoadPageRecords(plan, settings, records, env.platform, env.styles);
  ListSettings(env.styles[static_cast<size_t>(index)], index, settings, records, env);
  return kExitOk;
}

int RunBuildCommand(const CliArgs& args, CliEnvironment& env) {
  ConfigPlan plan = PlanConfig(args, env.platform);
  auto settings = std::make_unique<Settings>();
  SessionChoices session;
  Failure failure;
  PageRecords records;
  MemoryCeiling ceiling;
  if (!ceiling.Read(args, &failure)) return Report(env, failure);
  if (!PrepareSettings(args, env, plan, *settings, records, &session, &failure)) return Report(env, failure);
  int index = SelectedEffect(*settings, env.styles);
  if (index < 0) return Report(env, kExitFailure, "there are no effects");
  const StyleEntry& style = env.styles[static_cast<size_t>(index)];
  if (!style.init) {
    int code = Report(env, kExitFailure, "effect '" + std::string(style.name) +
                                             "' is not available yet (see 'tessarine list')");
    return SaveIfAsked(code, plan, *settings, records, env);
  }

  ProgressBar bar(env.err, env.err_is_terminal && !args.quiet);
  CliReporter reporter(env.err, &bar);
  CliDialogReader dialog(*settings, &style, session, &records);
  BuildMode mode = ModeOf(args.command);
  int code = kExitFailure;
  ceiling.Start();
  if (mode == BuildMode::kPreview) {
    code = RunPreview(args, env, dialog, reporter, bar, *settings);
  } else {
    std::string path = OutputPath(args, style, env);
    Failure failure;
    if (!path.empty() && !CheckWritable(path, &failure)) {
      Report(env, failure);
    } else if (!path.empty()) {
      GifFileHost host(path, &bar, ceiling.Writing());
      Random random;
      BuildContext context{dialog, env.styles, random, host, 0, reporter, env.platform, nullptr,
                           OptionsFrom(*settings, dialog.session())};
      bool built = RunBuild(context, mode);
      bar.Clear();
      code = Finish(built, host, env);
      if (code == kExitOk && mode == BuildMode::kTest) env.out << path << '\n';
    }
  }
  if (code != kExitOk) ceiling.ExplainFailure(env, "the build needs");
  return SaveIfAsked(code, plan, *settings, records, env);
}

// ---------------------------------------------------------------- encode

namespace {

bool ReadStream(std::istream& in, std::vector<uint8_t>* bytes) {
  char chunk[65536];
  while (in) {
    in.read(chunk, sizeof chunk);
    bytes->insert(bytes->end(), chunk, chunk + in.gcount());
  }
  return in.eof();
}

bool ReadFile(const std::string& path, std::vector<uint8_t>* bytes, std::string* error) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) {
    *error = std::strerror(errno);
    return false;
  }
  uint8_t chunk[65536];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes->insert(bytes->end(), chunk, chunk + n);
  bool ok = !std::ferror(file);
  std::fclose(file);
  if (!ok) *error = "read error";
  return ok;
}

// Appends every image of every operand, all of the first one's size.
bool ReadFrames(const CliArgs& args, CliEnvironment& env, int32_t delay, FrameList& frames) {
  int32_t width = 0, height = 0;
  for (const std::string& name : args.operands) {
    std::vector<uint8_t> bytes;
    std::string error;
    bool read = name == "-" ? env.in && ReadStream(*env.in, &bytes) : ReadFile(name, &bytes, &error);
    if (!read) {
      Report(env, kExitFailure, (name == "-" ? "standard input" : name) + ": " +
                                    (error.empty() ? "cannot read" : error));
      return false;
    }
    std::vector<ImageBlock> images;
    if (!ParsePpmImages(bytes, &images, &error)) {
      Report(env, kExitFailure, name + ": " + error);
      return false;
    }
    for (ImageBlock& image : images) {
      if (frames.empty()) {
        width = image.width();
        height = image.height();
      } else if (image.width() != width || image.height() != height) {
        Report(env, kExitFailure, name + ": frame is " + std::to_string(image.width()) + "x" +
                                      std::to_string(image.height()) + " but the first frame is " +
                                      std::to_string(width) + "x" + std::to_string(height));
        return false;
      }
      if (!FrameListAddImage(frames, std::move(image), delay)) {
        Report(env, kExitFailure, "Memory error");
        return false;
      }
    }
  }
  return true;
}

// Encode cannot stream: its frames are all read before the palette is made.
// A binary PPM holds three bytes a pixel and a frame in memory at least as
// many, so files larger than the ceiling together can never fit; saying so
// before reading spares the wait. (Standard input has no size to check.)
bool FramesSurelyExceed(const CliArgs& args, int64_t ceiling) {
  uintmax_t total = 0;
  for (const std::string& name : args.operands) {
    std::error_code error;
    uintmax_t size = name == "-" ? 0 : std::filesystem::file_size(name, error);
    if (!error) total += size;
  }
  return total > static_cast<uintmax_t>(ceiling);
}

}  // namespace

bool ParseMemorySize(std::string_view text, int64_t* bytes) {
  constexpr int64_t kMost = int64_t{1} << 62;
  int64_t value = 0;
  size_t i = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    if (value > (kMost - (text[i] - '0')) / 10) return false;
    value = value * 10 + (text[i] - '0');
  }
  if (i == 0) return false;
  int shift = 0;
  if (i + 1 == text.size()) {
    switch (std::tolower(static_cast<unsigned char>(text[i]))) {
      case 'k': shift = 10; break;
      case 'm': shift = 20; break;
      case 'g': shift = 30; break;
      default: return false;
    }
  } else if (i != text.size()) {
    return false;
  }
  if (value == 0 || value > (kMost >> shift)) return false;
  *bytes = value << shift;
  return true;
}

int RunEncode(const CliArgs& args, CliEnvironment& env) {
  if (!args.output) return Report(env, kExitUsage, "encode needs -o FILE (try 'tessarine encode --help')");
  ConfigPlan plan = PlanConfig(args, env.platform);
  auto settings = std::make_unique<Settings>();
  SessionChoices session;
  session.no_background = true;
  Failure failure;
  PageRecords records;
  if (!PrepareSettings(args, env, plan, *settings, records, &session, &failure)) return Report(env, failure);

  MemoryCeiling ceiling;
  if (!ceiling.Read(args, &failure)) return Report(env, failure);
  if (ceiling.set() && FramesSurelyExceed(args, ceiling.bytes())) {
    return Report(env, kExitFailure, "encode holds every frame in memory, and the frames given take "
                                     "more than --max-memory " + ceiling.text() + " allows");
  }

  CliDialogReader dialog(*settings, nullptr, session);
  FrameList frames;
  ceiling.Start();
  if (!ReadFrames(args, env, dialog.Spin(kDelayEdit), frames)) {
    ceiling.ExplainFailure(env, "encode holds every frame in memory, and the frames need");
    return kExitFailure;
  }

  ProgressBar bar(env.err, env.err_is_terminal && !args.quiet);
  CliReporter reporter(env.err, &bar);
  GifFileHost host(*args.output, &bar, ceiling.Writing());
  Random random;
  BuildContext context{dialog, env.styles, random, host, 0, reporter, env.platform, nullptr,
                       OptionsFrom(*settings, dialog.session())};
  bool built = RunOutputBuild(context, BuildMode::kOk, std::move(frames));
  bar.Clear();
  int code = Finish(built, host, env);
  if (code != kExitOk) ceiling.ExplainFailure(env, "encode holds every frame in memory, and the build needs");
  return SaveIfAsked(code, plan, *settings, records, env);
}

}  // namespace tess::cli
