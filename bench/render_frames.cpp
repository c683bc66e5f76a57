// Writes an effect's frames as binary PPM files, so the GIF comparison
// (scripts/compare-gif) feeds every encoder the same true-colour frames a
// build would make. Not a benchmark itself; it lives here because only the
// comparison uses it.
//
//   render_frames EFFECT SIZE FRAMES DIR [PARAM=VALUE...]
//
// writes DIR/frame_000.ppm ... at SIZE x SIZE, the effect's page at its
// defaults but for the given parameters (the StyleNNN key names).
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/style_table.h"

namespace {

bool WritePpm(const std::string& path, const tess::ImageBlock& image) {
  std::ofstream out(path, std::ios::binary);
  out << "P6\n" << image.width() << ' ' << image.height() << "\n255\n";
  std::string row(3 * static_cast<size_t>(image.width()), '\0');
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      tess::Colour c = tess::ImageGetPixel(image, x, y);
      row[3 * x] = static_cast<char>(tess::ColourRed(c));
      row[3 * x + 1] = static_cast<char>(tess::ColourGreen(c));
      row[3 * x + 2] = static_cast<char>(tess::ColourBlue(c));
    }
    out.write(row.data(), static_cast<std::streamsize>(row.size()));
  }
  return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) {
    std::fprintf(stderr, "usage: render_frames EFFECT SIZE FRAMES DIR [PARAM=VALUE...]\n");
    return 2;
  }
  const tess::StyleEntry* style = tess::FindStyle(argv[1]);
  if (!style || !style->init) {
    std::fprintf(stderr, "render_frames: no effect '%s' that renders\n", argv[1]);
    return 2;
  }
  const int size = std::atoi(argv[2]);
  const int frames = std::atoi(argv[3]);
  const std::string dir = argv[4];
  tess::Settings settings;
  settings.SetStyleNumber(style->number, "Width", size);
  settings.SetStyleNumber(style->number, "Depth", size);
  settings.SetStyleNumber(style->number, "Frames", frames);
  for (int i = 5; i < argc; ++i) {
    std::string arg = argv[i];
    size_t eq = arg.find('=');
    if (eq == std::string::npos) {
      std::fprintf(stderr, "render_frames: '%s' is not PARAM=VALUE\n", argv[i]);
      return 2;
    }
    settings.SetStyleNumber(style->number, arg.substr(0, eq), std::atoi(arg.c_str() + eq + 1));
  }
  tess::SettingsReader reader(settings, *style);
  tess::Random random;
  std::unique_ptr<tess::StyleRecord> record = style->init(reader, random);
  if (!record) {
    std::fprintf(stderr, "render_frames: Memory error\n");
    return 1;
  }
  for (int k = 0; k < record->FrameCount(); ++k) {
    tess::ImageBlock frame = record->RenderFrame(k);
    char name[32];
    std::snprintf(name, sizeof name, "/frame_%03d.ppm", k);
    if (!frame || !WritePpm(dir + name, frame)) {
      std::fprintf(stderr, "render_frames: cannot write frame %d\n", k);
      return 1;
    }
  }
  return 0;
}
