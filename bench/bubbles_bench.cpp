// Bubbles at the configuration's defaults (Smooth on, so 512 x 512 working
// tiles for 128 x 128 frames; 64 frames; Size 18, Density 36, so 81 bubbles):
// a full render, initialisation included, must take at most 150 ms on one
// core. The uncached variant shows what the sprite cache saves.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/bubbles.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_BubblesDefaultRender(benchmark::State& state) {
  Settings settings;
  SettingsReader reader(settings, *StyleByNumber(0));
  BubblesOptions options{.cache_sprites = state.range(0) != 0};
  for (auto _ : state) {
    Random random;
    auto record = BubblesRecord::Create(reader, random, options);
    if (!record) {
      state.SkipWithError("out of memory");
      break;
    }
    for (int k = 0; k < record->FrameCount(); ++k) {
      ImageBlock frame = record->RenderFrame(k);
      benchmark::DoNotOptimize(frame.data());
    }
  }
  state.SetLabel(options.cache_sprites ? "sprite cache" : "every sprite drawn");
}
BENCHMARK(BM_BubblesDefaultRender)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
