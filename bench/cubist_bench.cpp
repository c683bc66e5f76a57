// Cubist at the configuration's defaults (256 x 128, 48 frames, Density 36,
// outlines with varied width and opacity): a whole build's rendering,
// initialisation included, must take at most 50 ms on one core. Solid blocks
// cover more pixels; the plain painter shows what the fast one saves.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/cubist.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_CubistRender(benchmark::State& state) {
  Settings settings;
  const bool solid = state.range(0) != 0;
  settings.SetStyleNumber(2, "Solid", solid ? 1 : 0);
  SettingsReader reader(settings, *StyleByNumber(2));
  CubistOptions options{.plain_paint = state.range(1) != 0};
  for (auto _ : state) {
    Random random;
    auto record = CubistRecord::Create(reader, random, options);
    if (!record) {
      state.SkipWithError("out of memory");
      break;
    }
    for (int k = 0; k < record->FrameCount(); ++k) {
      ImageBlock frame = record->RenderFrame(k);
      benchmark::DoNotOptimize(frame.data());
    }
  }
  state.SetLabel(std::string(solid ? "solid" : "defaults") + (options.plain_paint ? ", plain painter" : ""));
}
BENCHMARK(BM_CubistRender)->Args({0, 0})->Args({1, 0})->Args({0, 1})->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
