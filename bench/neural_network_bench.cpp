// Neural Network at the configuration's defaults (12 x 8 nodes of Size 14, so
// a 336 x 224 tile; 40 pulses; 80 frames): a full render, initialisation
// included, must take at most 50 ms on one core.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/neural_network.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void BM_NeuralNetworkDefaultRender(benchmark::State& state) {
  Settings settings;
  SettingsReader reader(settings, *StyleByNumber(18));
  for (auto _ : state) {
    Random random;
    auto record = NeuralNetworkRecord::Create(reader, random);
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
BENCHMARK(BM_NeuralNetworkDefaultRender)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
