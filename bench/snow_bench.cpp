// Snow at the configuration's defaults (192 x 192, 64 frames, Size 48,
// Density 36, so 90 flakes): a full render, sprites included, must take at
// most 50 ms on one core. Making the record alone shows what the sprites
// (crystals resampled into their turned copies) cost.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/snow.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_SnowDefaultRender(benchmark::State& state) {
  Settings settings;
  SettingsReader reader(settings, *StyleByNumber(15));
  const bool frames = state.range(0) != 0;
  for (auto _ : state) {
    Random random;
    auto record = SnowRecord::Create(reader, random);
    if (!record) {
      state.SkipWithError("out of memory");
      break;
    }
    for (int k = 0; frames && k < record->FrameCount(); ++k) {
      ImageBlock frame = record->RenderFrame(k);
      benchmark::DoNotOptimize(frame.data());
    }
  }
  state.SetLabel(frames ? "record and all frames" : "record only");
}
BENCHMARK(BM_SnowDefaultRender)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
