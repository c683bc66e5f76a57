// The main dialog's sample redraw: the selected effect's preview at the
// configuration's defaults, composed at the sample's inner size (164 x 140
// dialog units at 96 DPI in the dialog font: 246 x 227 pixels, framed by one
// pixel). Target: at most 30 ms on one core for the default page. The
// default effect has no renderer yet and falls back to an empty sample, so
// every effect that renders is measured as well (the argument is its list
// index).
#include <benchmark/benchmark.h>

#include "dialog/sample_view.h"
#include "dialog/settings_reader.h"
#include "shell/settings.h"
#include "styles/style_table.h"

namespace tess {
namespace {

constexpr int32_t kInnerWidth = 244;
constexpr int32_t kInnerHeight = 225;

void BM_SampleRedraw(benchmark::State& state) {
  Settings settings;
  int index = static_cast<int>(state.range(0));
  const StyleEntry& style = StyleTable()[static_cast<size_t>(index)];
  SettingsReader reader(settings, style);
  const Colour face = MakeColour(240, 240, 240);
  for (auto _ : state) {
    Random random;
    SampleRender sample = RenderSample(style, reader, random, kInnerWidth, kInnerHeight, face, false);
    benchmark::DoNotOptimize(sample.picture.data());
  }
  bool is_default = index == settings.Number(Key::MainEffect);
  state.SetLabel(std::string(style.name) + (is_default ? " (default page)" : "") +
                 (style.init ? "" : " (no renderer: empty sample)"));
}

void AllEffects(benchmark::internal::Benchmark* bench) {
  Settings settings;
  bench->Arg(settings.Number(Key::MainEffect));
  for (size_t i = 0; i < StyleTable().size(); ++i)
    if (StyleTable()[i].init && static_cast<int>(i) != settings.Number(Key::MainEffect))
      bench->Arg(static_cast<int>(i));
}
BENCHMARK(BM_SampleRedraw)->Apply(AllEffects)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
