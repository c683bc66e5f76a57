// Fills and fountains for the command line: pattern files, --set values,
// the swatch command, the fountain libraries and their help.
//
// Sections: pattern files · values · help · swatch · library.
#include "host/cli/cli_records.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "controls/control_kinds.h"
#include "driver/build_driver.h"
#include "fills/fill_render.h"
#include "fills/fill_text.h"
#include "fills/fountain_library.h"
#include "fills/fountain_text.h"
#include "host/cli/gif_file_host.h"
#include "image/frame_list.h"
#include "platform/safe_file.h"
#include "shell/paths.h"
#include "styles/style_table.h"

namespace tess::cli {
namespace {

// The setting of a fill control, by its config key index.
int32_t* SlotOf(Settings& settings, int style_number, const PageControl& c) {
  return settings.NumberSlot(StyleKeyIndex(style_number, c.key));
}

// Fountain controls take the built-in fountain of their number while FirstRun
// is set (then cleared, as the plug-in's first opening does), else their own
// pattern file.
void LoadFountains(const ConfigPlan& plan, Settings& settings, PageRecords& records,
                   Platform& platform, std::span<const StyleEntry> styles) {
  bool first_run = settings.Number(Key::FirstRun) != 0;
  for (const StyleEntry& style : styles)
    for (const PageControl& c : style.page) {
      if (!KindRules(c).holds_fountain) continue;
      std::string path = FillFilePath(platform, c.id);
      FountainRecord record;
      if (!(first_run && BuiltInFountain(c.id, record)))
        record = CreateFountainRecord(path, kFountainClosed, plan.read && !path.empty());
      SetFountainPath(record, path);
      records.fountains.Put(c.id, record);
    }
  settings.SetNumber(Key::FirstRun, 0);
}

}  // namespace

// ---------------------------------------------------------------- pattern files

void LoadPageRecords(const ConfigPlan& plan, Settings& settings, PageRecords& records,
                     Platform& platform, std::span<const StyleEntry> styles) {
  for (const StyleEntry& style : styles)
    for (const PageControl& c : style.page) {
      if (!KindRules(c).holds_fill || !c.key) continue;
      int32_t* slot = SlotOf(settings, style.number, c);
      if (!slot) continue;
      std::string path = FillFilePath(platform, c.id);
      Colour colour = static_cast<Colour>(*slot) & 0xFFFFFFu;
      FillDescriptor record = CreateFillDescriptor(path, colour, plan.read && !path.empty());
      // The record writes where this control's file is, whatever path a
      // file copied from elsewhere carries.
      SetFillPath(record, path);
      records.fills.Put(c.id, record);
      *slot = FillSettingValue(record.kind, record.colour);
    }
  LoadFountains(plan, settings, records, platform, styles);
}

namespace {

template <class Record, class Save>
bool SaveRecords(const RecordStore<Record>& store, std::string_view (*path_of)(const Record&),
                 Save save, Failure* failure) {
  for (const auto& [id, record] : store.records()) {
    std::string path(path_of(record));
    if (path.empty()) continue;
    std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (!parent.empty()) EnsureFolderExists(parent.string());
    std::string reason;
    if (!save(record, &reason)) {
      *failure = Failure{kExitFailure, "cannot write the pattern file '" + path + "': " + reason};
      return false;
    }
  }
  return true;
}

}  // namespace

bool SavePageRecords(const PageRecords& records, Failure* failure) {
  return SaveRecords(records.fills, &FillPath, &SaveFillDescriptor, failure) &&
         SaveRecords(records.fountains, &FountainPath, &SaveFountainRecord, failure);
}

// ---------------------------------------------------------------- values

bool SetFill(const PageControl& control, int config_index, std::string_view text, Settings& settings,
             FillStore& fills, std::string* expected) {
  FillDescriptor* kept = fills.Find(control.id);
  FillDescriptor record = kept ? *kept : FillDescriptor();
  record.colour = static_cast<Colour>(settings.NumberAt(config_index)) & 0xFFFFFFu;
  std::string error;
  if (ParseFill(text, record, error)) {
    fills.Put(control.id, record);
    settings.SetNumberAt(config_index, FillSettingValue(record.kind, record.colour));
    return true;
  }
  // The whole setting as a number, as the configuration file holds it.
  if (auto number = ParseNumberIn(text, INT32_MIN, UINT32_MAX)) {
    uint32_t value = static_cast<uint32_t>(*number);
    if ((value >> 24) <= kFillTile) record.kind = value >> 24;
    record.colour = value & 0xFFFFFFu;
    fills.Put(control.id, record);
    settings.SetNumberAt(config_index, *number);
    return true;
  }
  *expected = "a fill (" + error + "; see 'tessarine help fills')";
  return false;
}

bool SetFountain(const PageControl& control, std::string_view text, PageRecords& records,
                 std::string* expected) {
  FountainRecord* kept = records.fountains.Find(control.id);
  FountainRecord record = kept ? *kept : FountainRecord();
  std::string error;
  if (!ParseFountain(text, record, error)) {
    *expected = "a fountain (" + error + "; see 'tessarine help fountains')";
    return false;
  }
  if (kept) SetFountainPath(record, FountainPath(*kept));
  records.fountains.Put(control.id, record);
  return true;
}

const PageControl* FindFountainControl(std::string_view key, std::span<const StyleEntry> styles,
                                       const StyleEntry* selected) {
  auto fountain_of = [](const StyleEntry& style) -> const PageControl* {
    for (const PageControl& c : style.page)
      if (KindRules(c).holds_fountain) return &c;
    return nullptr;
  };
  if (SameTextIgnoringCase(key, "Fountain")) return selected ? fountain_of(*selected) : nullptr;
  if (key.size() != 16 || !SameTextIgnoringCase(key.substr(0, 5), "Style") ||
      !SameTextIgnoringCase(key.substr(8), "Fountain"))
    return nullptr;
  auto number = ParseNumberIn(key.substr(5, 3), 0, 999);
  if (!number) return nullptr;
  for (const StyleEntry& style : styles)
    if (style.number == *number) return fountain_of(style);
  return nullptr;
}

std::string FillText(const FillDescriptor& fill) {
  std::string text = FormatFill(fill);
  return text.empty() ? std::to_string(FillSettingValue(fill.kind, fill.colour)) : text;
}

std::string FillsHelp() {
  return "Fills: what the \"Color N\" slots of an effect paint with\n"
         "\n"
         "A fill is written as one of:\n"
         "  #RRGGBB                                  a plain colour (red first, hex)\n"
         "  gradient:SHAPE:#START:#END[:PARAM...]    a two-colour gradient\n"
         "  texture | tile                           the texture or tile kinds\n"
         "\n"
         "SHAPE is linear, radial, square or conical. PARAM is one of\n"
         "  rot=DEGREES   -360..360, linear and conical: where the start colour lies\n"
         "                (0 left, 90 above, turning the way the conical sweep does)\n"
         "  cx=PERCENT    -50..50, radial, square and conical: the centre, + to the right\n"
         "  cy=PERCENT    -50..50, the same shapes: + upwards\n"
         "Parameters may come in any order; one left out is 0.\n"
         "\n"
         "Examples:\n"
         "  tessarine render -e Bubbles -s FillColor1=gradient:radial:#FFFFFF:#3060C0:cx=-20:cy=20\n"
         "  tessarine render -e \"Phasers on Stun\" -s FillColor2=gradient:linear:#FF0000:#0000FF:rot=45\n"
         "  tessarine swatch gradient:conical:#000000:#FFFFFF:rot=90 --size 128x128 -o cone.ppm\n"
         "  tessarine swatch \"$HOME/.config/Brindlewood/Tessarine 1/Fill03011.flp\" -o slot.gif\n"
         "\n"
         "'tessarine list EFFECT' prints every fill in this form, exactly as --set takes it\n"
         "back. Each fill is kept in its own pattern file (FillNNNNN.flp in the plug-in's\n"
         "data folder) shared with the plug-in: read with the configuration, written by\n"
         "--save. A number sets the whole setting as the configuration file holds it (the\n"
         "fill's kind in the top byte, its plain colour below).\n";
}

std::string FountainsHelp() {
  return "Fountains: the multi-colour gradients of Fountain, Solid, Shaped Fountain and others\n"
         "\n"
         "A fountain is written as\n"
         "  fountain:MODE:#START:#END[:POS:#COLOUR,POS:#COLOUR,...]\n"
         "MODE is closed (the colours flow back to the start colour at the right end, so an\n"
         "animation loops without a seam) or open (the end colour stands at the right end).\n"
         "Each marker puts a colour at POS, 0 (left) to 255 (right); up to 64 markers, in the\n"
         "order given. END matters only to open fountains.\n"
         "\n"
         "Examples:\n"
         "  tessarine render -e Fountain -s \"Fountain=fountain:closed:#000000:#FFFFFF:85:#FF0000,170:#0000FF\"\n"
         "  tessarine swatch fountain:open:#102040:#F0E0B0:128:#C04020 --size 256x32 -o sunset.ppm\n"
         "  tessarine library add fountain:closed:#1E4D8C:#FFFFFF:128:#FFF6EA\n"
         "  tessarine library show 0 -o first.gif\n"
         "\n"
         "Each effect's fountain control is set with the key Fountain (or StyleNNNFountain) and\n"
         "listed by 'tessarine list EFFECT' in exactly this form. Fountains are kept in their\n"
         "controls' pattern files (FillNNNNN.flp in the plug-in's data folder), shared with the\n"
         "plug-in: read with the configuration and written by --save. On a first run the\n"
         "controls start from the built-in fountains.\n"
         "\n"
         "The fountain libraries (FountainLibrary.fll for closed fountains, .fln for open ones)\n"
         "are the plug-in's too: 'tessarine library' lists, shows, adds and removes entries.\n";
}

// ---------------------------------------------------------------- swatch

namespace {

constexpr int32_t kSwatchMaxSide = 4096;

bool ParseSize(std::string_view text, int32_t* w, int32_t* h) {
  size_t x = text.find_first_of("xX");
  if (x == std::string_view::npos) return false;
  auto width = ParseNumberIn(text.substr(0, x), 1, kSwatchMaxSide);
  auto height = ParseNumberIn(text.substr(x + 1), 1, kSwatchMaxSide);
  if (!width || !height || text.substr(0, x).starts_with("0x")) return false;
  *w = *width;
  *h = *height;
  return true;
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && SameTextIgnoringCase(text.substr(text.size() - end.size()), end);
}

// A pattern file of the plug-in's, all 854 bytes with the magic, or an error.
// A pattern file of the plug-in's, fill or fountain (told apart by their
// magic), painted at w x h; or an error naming what was wrong.
ImageBlock RenderPatternFile(const std::string& path, int32_t w, int32_t h, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = path + ": cannot open the file";
    return {};
  }
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  FillDescriptor fill;
  if (ParseFillDescriptor(bytes.data(), bytes.size(), fill)) return RenderFill(fill, w, h);
  FountainRecord fountain;
  if (ParseFountainRecord(bytes.data(), bytes.size(), fountain)) return RenderFountain(fountain, w, h);
  *error = path + ": not a fill or fountain pattern file (a fill has " +
           std::to_string(kFillDescriptorSize) + " bytes beginning \"BRNDFILB\", a fountain " +
           std::to_string(kFountainRecordSize) + " beginning \"BRNDFOUN\"; this file has " +
           std::to_string(bytes.size()) + " bytes)";
  return {};
}

// A fill's or a fountain's text form painted at w x h.
ImageBlock RenderText(std::string_view text, int32_t w, int32_t h, std::string* error,
                      bool* usage) {
  *usage = true;
  if (text.starts_with("fountain:")) {
    FountainRecord fountain;
    if (!ParseFountain(text, fountain, *error)) return {};
    *usage = false;
    return RenderFountain(fountain, w, h);
  }
  FillDescriptor fill;
  if (!ParseFill(text, fill, *error)) return {};
  *usage = false;
  return RenderFill(fill, w, h);
}

bool WritePpm(const std::string& path, const ImageBlock& image, std::string* error) {
  SafeFile file;
  const std::string head = "P6\n" + std::to_string(image.width()) + ' ' + std::to_string(image.height()) + "\n255\n";
  bool ok = file.Open(path) && file.Write(head.data(), head.size());
  std::vector<uint8_t> row(static_cast<size_t>(image.width()) * 3);
  for (int32_t y = 0; ok && y < image.height(); ++y) {
    const uint8_t* src = image.Row(y);
    for (int32_t x = 0; x < image.width(); ++x) {  // stored blue, green, red
      row[3 * static_cast<size_t>(x)] = src[3 * x + 2];
      row[3 * static_cast<size_t>(x) + 1] = src[3 * x + 1];
      row[3 * static_cast<size_t>(x) + 2] = src[3 * x];
    }
    ok = file.Write(row.data(), row.size());
  }
  if (ok && file.Commit()) return true;
  *error = path + ": " + (file.error().empty() ? std::string("cannot write the file") : file.error());
  return false;
}

// Writes `image` as PPM or as a one-frame true-colour GIF, by `out`'s ending.
template <class Fail>
int WriteImage(CliEnvironment& env, const std::string& out, ImageBlock image, Fail fail) {
  std::string error;
  bool gif = EndsWith(out, ".gif");
  if (!gif) return WritePpm(out, image, &error) ? kExitOk : fail(kExitFailure, error);

  // One true-colour frame through the same output path as every GIF we write.
  FrameList frames;
  if (!FrameListAddImage(frames, std::move(image), 0)) return fail(kExitFailure, "Memory error");
  Settings settings;
  SessionChoices session;
  session.no_background = true;
  CliDialogReader dialog(settings, nullptr, session);
  CliReporter reporter(env.err, nullptr);
  GifFileHost host(out, nullptr);
  Random random;
  BuildOptions options;
  options.host_capabilities = kHostCapOptimise;
  BuildContext context{dialog, env.styles, random, host, 0, reporter, env.platform, nullptr, options};
  bool built = RunOutputBuild(context, BuildMode::kOk, std::move(frames));
  if (built && host.finished()) return kExitOk;
  return fail(kExitFailure, host.error().empty() ? "no file was written" : host.error());
}


}  // namespace

int RunSwatch(const CliArgs& args, CliEnvironment& env) {
  auto fail = [&](int code, const std::string& message) {
    env.err << "tessarine: " << message << '\n';
    return code;
  };
  if (!args.output) return fail(kExitUsage, "swatch needs -o FILE (try 'tessarine swatch --help')");
  const std::string& out = *args.output;
  bool gif = EndsWith(out, ".gif");
  if (!gif && !EndsWith(out, ".ppm")) return fail(kExitUsage, "the swatch is written as .ppm or .gif, not '" + out + "'");
  int32_t w = 64, h = 64;
  if (args.size && !ParseSize(*args.size, &w, &h))
    return fail(kExitUsage, "bad --size '" + *args.size + "': expected WxH, each 1 to " +
                                std::to_string(kSwatchMaxSide));

  const std::string& source = args.operands[0];
  std::string error;
  ImageBlock image;
  if (EndsWith(source, ".flp")) {
    image = RenderPatternFile(source, w, h, &error);
    if (!error.empty()) return fail(kExitFailure, error);
  } else {
    bool usage = false;
    image = RenderText(source, w, h, &error, &usage);
    if (usage)
      return fail(kExitUsage, "bad fill or fountain '" + source + "': " + error +
                                  " (see 'tessarine help fills' and 'tessarine help fountains')");
  }
  if (!image) return fail(kExitFailure, "Memory error");
  return WriteImage(env, out, std::move(image), fail);
}

// ---------------------------------------------------------------- library

namespace {

// "open" picks the library of open fountains, "closed" (the default) the other.
bool LibrarySelector(std::string_view word, uint32_t* selector) {
  if (SameTextIgnoringCase(word, "open")) *selector = kFountainOpen;
  else if (SameTextIgnoringCase(word, "closed")) *selector = kFountainClosed;
  else return false;
  return true;
}

// A strip of 32 cells in the terminal's 24-bit colours.
std::string ColourStrip(const FountainRecord& fountain) {
  ImageBlock strip = RenderFountain(fountain, 32, 1);
  if (!strip) return {};
  std::string text;
  const uint8_t* row = strip.Row(0);
  for (int32_t x = 0; x < 32; ++x)
    text += "\x1b[48;2;" + std::to_string(row[3 * x + 2]) + ";" + std::to_string(row[3 * x + 1]) +
            ";" + std::to_string(row[3 * x]) + "m ";
  return text + "\x1b[0m";
}

}  // namespace

int RunLibrary(const CliArgs& args, CliEnvironment& env) {
  auto fail = [&](int code, const std::string& message) {
    env.err << "tessarine: " << message << '\n';
    return code;
  };
  const std::vector<std::string>& words = args.operands;
  std::string action = words.empty() ? "list" : words[0];
  uint32_t selector = kFountainClosed;
  // The last word may name the library; 'add' picks it from the fountain.
  size_t used = action == "list" ? 1 : 2;
  if (words.size() > used && (action == "add" || !LibrarySelector(words[used], &selector)))
    return fail(kExitUsage, "unexpected '" + words[used] + "' (try 'tessarine library --help')");
  if (words.size() > used + 1) return fail(kExitUsage, "too many operands (try 'tessarine library --help')");

  if (action == "add") {
    if (words.size() < 2) return fail(kExitUsage, "library add needs a FOUNTAIN");
    FountainRecord fountain;
    std::string error;
    if (!ParseFountain(words[1], fountain, error))
      return fail(kExitUsage, "bad fountain '" + words[1] + "': " + error + " (see 'tessarine help fountains')");
    std::string path = FountainLibraryPath(env.platform, fountain.mode);
    std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (!parent.empty()) EnsureFolderExists(parent.string());
    std::string reason;
    if (!AppendFountain(path, fountain, fountain.mode, LibraryTimeStamp(env.platform.Now()), &reason))
      return fail(kExitFailure, path + ": cannot add to the library (" +
                                    (reason.empty() ? std::string("damaged") : reason) + ")");
    env.out << path << '\n';
    return kExitOk;
  }

  std::string path = FountainLibraryPath(env.platform, selector);
  FountainLibrary library;
  bool exists = std::filesystem::exists(path);
  if (exists && !LoadFountainLibrary(path, library) && action != "list")
    return fail(kExitFailure, path + ": the library is damaged (" + std::to_string(library.size()) +
                                  " entries could be read; 'list' shows them)");
  if (action == "list") {
    if (!exists) env.out << "(no " << (selector == kFountainOpen ? "open" : "closed") << " fountains yet: " << path << ")\n";
    for (size_t i = 0; i < library.size(); ++i) {
      FountainRecord fountain = LibraryEntryFountain(library[i], selector);
      env.out << i << "  " << FormatFountain(fountain) << '\n';
    }
    return kExitOk;
  }
  if (words.size() < 2) return fail(kExitUsage, "library " + action + " needs an entry number");
  auto index = ParseNumberIn(words[1], 0, INT32_MAX);
  if (!index || static_cast<size_t>(*index) >= library.size())
    return fail(kExitUsage, "no entry '" + words[1] + "' in " + path + " (it has " +
                                std::to_string(library.size()) + "; see 'tessarine library list')");
  size_t entry = static_cast<size_t>(*index);
  if (action == "show") {
    FountainRecord fountain = LibraryEntryFountain(library[entry], selector);
    if (args.output) {
      ImageBlock strip = RenderFountain(fountain, 256, 32);
      if (!strip) return fail(kExitFailure, "Memory error");
      if (!EndsWith(*args.output, ".gif") && !EndsWith(*args.output, ".ppm"))
        return fail(kExitUsage, "the strip is written as .ppm or .gif, not '" + *args.output + "'");
      return WriteImage(env, *args.output, std::move(strip), fail);
    }
    env.out << ColourStrip(fountain) << "  " << FormatFountain(fountain) << '\n';
    return kExitOk;
  }
  if (action == "remove") {
    library.Delete(entry);
    std::string reason;
    if (!SaveFountainLibrary(path, library, selector, LibraryTimeStamp(env.platform.Now()), &reason))
      return fail(kExitFailure, path + ": cannot rewrite the library (" +
                                    (reason.empty() ? std::string("cannot remove it") : reason) + "); it is as it was");
    return kExitOk;
  }
  return fail(kExitUsage, "unknown library action '" + action + "' (list, show, add or remove)");
}

}  // namespace tess::cli
