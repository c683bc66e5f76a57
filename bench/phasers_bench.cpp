// Phasers on Stun at its configuration defaults (192 x 128, 64 frames, 256
// beams of power 5): a whole build's rendering, initialisation included. The
// target is at most 100 ms on one core, with or without a gradient in a
// colour slot.
#include <benchmark/benchmark.h>

#include "dialog/settings_reader.h"
#include "fills/fill_store.h"
#include "shell/settings.h"
#include "styles/page_layout.h"
#include "styles/phasers.h"

namespace tess {
namespace {

// Argument: the number of colour slots (from slot 1) painted with a linear
// gradient, which every beam of those slots takes its ink from.
void BM_PhasersAllFramesAtDefaults(benchmark::State& state) {
  Settings settings;
  PageRecords records;
  FillDescriptor gradient;
  gradient.kind = kFillGradient;
  gradient.gradient = {0x0000C0FF, 0x00FF6000, kGradientLinear, 30, 0, 0, {}};
  for (int slot = 1; slot <= state.range(0); ++slot)
    records.fills.Put(PageControlId(10, page::ColourControl(slot)), gradient);
  SettingsReader reader(settings, *FindStyle("Phasers on Stun"), &records);
  Random random;
  for (auto _ : state) {
    std::unique_ptr<PhasersRecord> record = PhasersRecord::Init(reader, random);
    for (int k = 0; k < record->FrameCount(); ++k) {
      ImageBlock frame = record->RenderFrame(k);
      benchmark::DoNotOptimize(frame.data());
    }
  }
  state.SetLabel("64 frames of 192 x 128");
}
BENCHMARK(BM_PhasersAllFramesAtDefaults)->Arg(0)->Arg(1)->Arg(5)->Unit(benchmark::kMillisecond);

// One frame's cost depends on how many flashes land on it; this is the mean.
void BM_PhasersOneFrameAtDefaults(benchmark::State& state) {
  Settings settings;
  SettingsReader reader(settings, *FindStyle("Phasers on Stun"));
  Random random;
  std::unique_ptr<PhasersRecord> record = PhasersRecord::Init(reader, random);
  int k = 0;
  for (auto _ : state) {
    ImageBlock frame = record->RenderFrame(k);
    benchmark::DoNotOptimize(frame.data());
    k = (k + 1) % record->FrameCount();
  }
}
BENCHMARK(BM_PhasersOneFrameAtDefaults)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tess
