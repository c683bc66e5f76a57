// Gridlock at the configuration's defaults (128 x 128, 64 frames, Size 20,
// Density 24, so 24 blocks on a 4 x 4 street grid): a full render,
// initialisation included, must take at most 50 ms on one core.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/gridlock.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_GridlockDefaultRender(benchmark::State& state) {
  Settings settings;
  SettingsReader reader(settings, *StyleByNumber(16));
  for (auto _ : state) {
    Random random;
    auto record = GridlockRecord::Create(reader, random);
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
BENCHMARK(BM_GridlockDefaultRender)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
