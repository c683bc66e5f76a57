// Particles at the configuration's defaults (128 x 128, 64 frames, Size 20,
// Density 36, so 36 beads in three sizes): a full render, initialisation
// included, must take at most 50 ms on one core.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/particles.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_ParticlesDefaultRender(benchmark::State& state) {
  Settings settings;
  SettingsReader reader(settings, *StyleByNumber(17));
  for (auto _ : state) {
    Random random;
    auto record = ParticlesRecord::Create(reader, random);
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
BENCHMARK(BM_ParticlesDefaultRender)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
