// Fountain, Solid and Shaped Fountain at their configuration defaults: a whole
// build's rendering, initialisation included. The target is at most 30 ms on
// one core for each. Shaped Fountain is also timed with each shape, and one
// frame of it the plain way (every ring painted on the four-fold canvas, then
// reduced), which the ring-number lookup replaces.
#include <benchmark/benchmark.h>

#include <memory>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/shaped_fountain.h"
#include "styles/style_table.h"
#include "tests/styles/shaped_fountain_reference.h"

namespace tess {
namespace {

void RenderAllFrames(benchmark::State& state, const Settings& settings, const char* effect) {
  const StyleEntry& style = *FindStyle(effect);
  SettingsReader reader(settings, style);
  Random random;
  int frames = 0;
  for (auto _ : state) {
    std::unique_ptr<StyleRecord> record = style.init(reader, random);
    frames = record->FrameCount();
    for (int k = 0; k < frames; ++k) {
      ImageBlock frame = record->RenderFrame(k);
      benchmark::DoNotOptimize(frame.data());
    }
  }
  state.counters["frames"] = frames;
}

void BM_FountainAllFramesAtDefaults(benchmark::State& state) {
  RenderAllFrames(state, Settings(), "Fountain");
  state.SetLabel("64 frames of 256 x 16");
}
BENCHMARK(BM_FountainAllFramesAtDefaults)->Unit(benchmark::kMillisecond);

void BM_SolidAllFramesAtDefaults(benchmark::State& state) {
  RenderAllFrames(state, Settings(), "Solid");
  state.SetLabel("256 frames of 16 x 16");
}
BENCHMARK(BM_SolidAllFramesAtDefaults)->Unit(benchmark::kMillisecond);

// Argument: the shape (the default is 0, circles).
void BM_ShapedFountainAllFramesAtDefaults(benchmark::State& state) {
  Settings settings;
  settings.SetStyleNumber(6, "Shape", static_cast<int32_t>(state.range(0)));
  RenderAllFrames(state, settings, "Shaped Fountain");
  state.SetLabel("64 frames of 88 x 88");
}
BENCHMARK(BM_ShapedFountainAllFramesAtDefaults)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

// Argument: the size. The record's one-off work grows with the canvas.
void BM_ShapedFountainRecord(benchmark::State& state) {
  Settings settings;
  settings.SetStyleNumber(6, "Size", static_cast<int32_t>(state.range(0)));
  SettingsReader reader(settings, *FindStyle("Shaped Fountain"));
  for (auto _ : state) {
    std::unique_ptr<ShapedFountainRecord> record = ShapedFountainRecord::Create(reader);
    benchmark::DoNotOptimize(record.get());
  }
}
BENCHMARK(BM_ShapedFountainRecord)->Arg(88)->Arg(1024)->Unit(benchmark::kMillisecond);

// Argument: the size; 0 looks the rings up, 1 paints them.
void BM_ShapedFountainOneFrame(benchmark::State& state) {
  Settings settings;
  settings.SetStyleNumber(6, "Size", static_cast<int32_t>(state.range(0)));
  SettingsReader reader(settings, *FindStyle("Shaped Fountain"));
  std::unique_ptr<ShapedFountainRecord> record = ShapedFountainRecord::Create(reader);
  const bool plain = state.range(1) != 0;
  int k = 0;
  for (auto _ : state) {
    ImageBlock frame =
        plain ? testing::ShapedFountainReferenceFrame(*record, k) : record->RenderFrame(k);
    benchmark::DoNotOptimize(frame.data());
    k = (k + 1) % record->FrameCount();
  }
  state.SetLabel(plain ? "painting every ring" : "ring-number lookup");
}
BENCHMARK(BM_ShapedFountainOneFrame)
    ->Args({88, 0})
    ->Args({88, 1})
    ->Args({1024, 0})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tess
