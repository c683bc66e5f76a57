// Fills for the command line: pattern files, --set values, the swatch
// command and its help.
//
// Sections: pattern files · values · swatch.
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
#include "host/cli/gif_file_host.h"
#include "image/frame_list.h"
#include "shell/paths.h"
#include "styles/style_table.h"

namespace tess::cli {
namespace {

// The setting of a fill control, by its config key index.
int32_t* SlotOf(Settings& settings, int style_number, const PageControl& c) {
  return settings.NumberSlot(StyleKeyIndex(style_number, c.key));
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
}

bool SavePageRecords(const PageRecords& records, Failure* failure) {
  for (const auto& [id, record] : records.fills.records()) {
    std::string path(FillPath(record));
    if (path.empty()) continue;
    std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (!parent.empty()) EnsureFolderExists(parent.string());
    if (!SaveFillDescriptor(record)) {
      *failure = Failure{kExitFailure, "cannot write the fill pattern file '" + path + "'"};
      return false;
    }
  }
  return true;
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
bool ReadPatternFile(const std::string& path, FillDescriptor* record, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = path + ": cannot open the file";
    return false;
  }
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!ParseFillDescriptor(bytes.data(), bytes.size(), *record)) {
    *error = path + ": not a fill pattern file (it needs " + std::to_string(kFillDescriptorSize) +
             " bytes beginning \"BRNDFILB\"; this one has " + std::to_string(bytes.size()) + ")";
    return false;
  }
  return true;
}

bool WritePpm(const std::string& path, const ImageBlock& image, std::string* error) {
  std::string tmp = path + ".part";
  {
    std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
    out << "P6\n" << image.width() << ' ' << image.height() << "\n255\n";
    std::vector<char> row(static_cast<size_t>(image.width()) * 3);
    for (int32_t y = 0; y < image.height(); ++y) {
      const uint8_t* src = image.Row(y);
      for (int32_t x = 0; x < image.width(); ++x) {  // stored blue, green, red
        row[3 * static_cast<size_t>(x)] = static_cast<char>(src[3 * x + 2]);
        row[3 * static_cast<size_t>(x) + 1] = static_cast<char>(src[3 * x + 1]);
        row[3 * static_cast<size_t>(x) + 2] = static_cast<char>(src[3 * x]);
      }
      out.write(row.data(), static_cast<std::streamsize>(row.size()));
    }
    if (!out.flush()) {
      std::remove(tmp.c_str());
      *error = path + ": cannot write the file";
      return false;
    }
  }
  std::error_code ec;
  std::filesystem::rename(tmp, path, ec);
  if (ec) {
    std::remove(tmp.c_str());
    *error = path + ": " + ec.message();
    return false;
  }
  return true;
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

  const std::string& fill_text = args.operands[0];
  FillDescriptor record;
  std::string error;
  if (EndsWith(fill_text, ".flp")) {
    if (!ReadPatternFile(fill_text, &record, &error)) return fail(kExitFailure, error);
  } else if (!ParseFill(fill_text, record, error)) {
    return fail(kExitUsage, "bad fill '" + fill_text + "': " + error + " (see 'tessarine help fills')");
  }

  ImageBlock image = RenderFill(record, w, h);
  if (!image) return fail(kExitFailure, "Memory error");
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

}  // namespace tess::cli
