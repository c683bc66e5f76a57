// Hyperspace at the configuration's defaults (256 x 256, 64 frames, Density
// 18, so 135 streaks): a full render, masks included, must take at most 50 ms
// on one core.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/hyperspace.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_HyperspaceDefaultRender(benchmark::State& state) {
  Settings settings;
  SettingsReader reader(settings, *StyleByNumber(1));
  for (auto _ : state) {
    Random random;
    auto record = HyperspaceRecord::Create(reader, random);
    if (!record) {
      state.SkipWithError("out of memory");
      break;
    }
    for (int k = 0; k < record->FrameCount(); ++k) {
      ImageBlock frame = record->RenderFrame(k);
      benchmark::DoNotOptimize(frame.data());
    }
  }
}
BENCHMARK(BM_HyperspaceDefaultRender)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
