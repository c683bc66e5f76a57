// RenderFill of every fill kind and gradient type at 128 x 128, the size of a
// typical tile. Targets: at most 0.3 ms each, the conical sweep (one arc
// tangent per pixel) at most 1 ms.
#include <benchmark/benchmark.h>

#include "fills/fill_render.h"

namespace tess {
namespace {

void RenderFillBench(benchmark::State& state, uint32_t kind, uint32_t type) {
  FillDescriptor record;
  record.kind = kind;
  record.colour = 0x00336699;
  record.gradient = {0x00204080, 0x00F0C010, type, 30, 10, -20, {}};
  for (auto _ : state) {
    ImageBlock image = RenderFill(record, 128, 128);
    benchmark::DoNotOptimize(image.data());
  }
  state.SetItemsProcessed(state.iterations() * 128 * 128);
}

BENCHMARK_CAPTURE(RenderFillBench, Simple, kFillSimple, 0)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(RenderFillBench, Linear, kFillGradient, kGradientLinear)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(RenderFillBench, Radial, kFillGradient, kGradientRadial)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(RenderFillBench, Square, kFillGradient, kGradientSquare)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(RenderFillBench, Conical, kFillGradient, kGradientConical)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(RenderFillBench, Texture, kFillTexture, 0)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(RenderFillBench, Tile, kFillTile, 0)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tess
