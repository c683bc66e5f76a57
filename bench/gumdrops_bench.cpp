// Gumdrops at the configuration's defaults (160 x 128, 88 frames, Density 72,
// Size 32, round drops with Bevel): a whole build's rendering,
// initialisation included, must take at most 50 ms on one core. The variant
// with every colour in another shape adds the tumbling drops' rotation maps,
// and the uncached one shows what making each map once saves.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/gumdrops.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_GumdropsRender(benchmark::State& state) {
  Settings settings;
  const bool shapes = state.range(0) != 0;
  if (shapes)
    for (int i = 1; i <= 5; ++i)
      settings.SetStyleNumber(7, "Style" + std::to_string(i), i == 2 ? 0 : i);  // square, diamond, heart, star
  SettingsReader reader(settings, *StyleByNumber(7));
  GumdropsOptions options{.cache_maps = state.range(1) != 0};
  for (auto _ : state) {
    Random random;
    auto record = GumdropsRecord::Create(reader, random, options);
    if (!record) {
      state.SkipWithError("out of memory");
      break;
    }
    for (int k = 0; k < record->FrameCount(); ++k) {
      ImageBlock frame = record->RenderFrame(k);
      benchmark::DoNotOptimize(frame.data());
    }
  }
  state.SetLabel(std::string(shapes ? "tumbling shapes" : "defaults") +
                 (options.cache_maps ? "" : ", every map made afresh"));
}
BENCHMARK(BM_GumdropsRender)
    ->Args({0, 1})
    ->Args({1, 1})
    ->Args({1, 0})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
