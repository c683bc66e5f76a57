// Every effect that renders, at the configuration's defaults: a full render,
// initialisation included, as a build makes it. The designed effects must
// take at most 50 ms each on one core, the fountain effects 30 ms; the
// effects with variants worth timing apart have benchmarks of their own.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/style_table.h"

namespace tess {
namespace {

void DefaultRender(benchmark::State& state, const StyleEntry* style) {
  Settings settings;
  SettingsReader reader(settings, *style);
  for (auto _ : state) {
    Random random;
    std::unique_ptr<StyleRecord> record = style->init(reader, random);
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

// One benchmark per effect, named after it ("BM_DefaultRender/Gridlock").
const bool kRegistered = [] {
  for (const StyleEntry& style : StyleTable())
    if (style.init)
      benchmark::RegisterBenchmark(("BM_DefaultRender/" + std::string(style.name)).c_str(),
                                   &DefaultRender, &style)
          ->Unit(benchmark::kMillisecond);
  return true;
}();

}  // namespace
}  // namespace tess
