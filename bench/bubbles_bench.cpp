// Bubbles at the configuration's defaults (Smooth on, so 512 x 512 working
// tiles for 128 x 128 frames; 64 frames; Size 18, Density 36, so 81 bubbles):
// a full render, initialisation included, must take at most 150 ms on one
// core. The uncached variant shows what the sprite cache saves; the filled
// variant paints two of the five colour slots with gradients.
#include <benchmark/benchmark.h>

#include <string>

#include "dialog/settings_reader.h"
#include "fills/fill_store.h"
#include "shell/settings.h"
#include "styles/bubbles.h"
#include "styles/page_layout.h"
#include "styles/style_table.h"

namespace tess {
namespace {

FillDescriptor Gradient(uint32_t type, int32_t rotation) {
  FillDescriptor fill;
  fill.kind = kFillGradient;
  fill.gradient.grad_type = type;
  fill.gradient.rotation = rotation;
  fill.gradient.grad_start = 0x00FFF0C0;
  fill.gradient.grad_end = 0x00A02060;
  return fill;
}

// Arguments: sprite cache on, gradients in slots 1 and 3.
void BM_BubblesDefaultRender(benchmark::State& state) {
  Settings settings;
  PageRecords records;
  if (state.range(1) != 0) {
    records.fills.Put(PageControlId(0, page::ColourControl(1)), Gradient(kGradientRadial, 0));
    records.fills.Put(PageControlId(0, page::ColourControl(3)), Gradient(kGradientLinear, 30));
  }
  SettingsReader reader(settings, *StyleByNumber(0), &records);
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
  state.SetLabel(std::string(options.cache_sprites ? "sprite cache" : "every sprite drawn") +
                 (state.range(1) != 0 ? ", two gradient slots" : ""));
}
BENCHMARK(BM_BubblesDefaultRender)
    ->Args({1, 0})
    ->Args({0, 0})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
