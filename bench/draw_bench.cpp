// Speed of the drawing layer on the work the sprite styles do most: bubble
// masks blended into a supersampled tile, ellipse fills, and the final 25%
// reduction. Bubbles at its defaults (64 frames of 128 x 128, supersampling
// x4, so 512 x 512 working tiles with 72 bubbles) must render in 150 ms in all;
// BM_BubblesLikeFrame reports the frame time and the 64-frame total.
#include <benchmark/benchmark.h>

#include <tuple>
#include <vector>

#include "draw/canvas.h"
#include "draw/draw.h"

namespace tess {
namespace {

// Stand-in for a background or a frame in progress: varied, deterministic.
ImageBlock Tile(int size) {
  ImageBlock image = ImageCreate(size, size, nullptr, 24);
  uint32_t s = 1;
  for (int y = 0; y < size; ++y) {
    uint8_t* row = image.Row(y);
    for (int x = 0; x < 3 * size; ++x) {
      s = s * 1664525u + 1013904223u;
      row[x] = static_cast<uint8_t>(s >> 24);
    }
  }
  return image;
}

// A bubble mask as the style draws it: concentric grey circles, rim opaque.
ImageBlock BubbleMask(int d, int brightness) {
  Canvas canvas = Canvas::Open(d, d);
  for (int i = 0; i < d / 2; ++i) {
    int level = 255 - i * brightness / (d / 2);
    canvas.FillEllipse({i, i, d - i, d - i}, MakeColour(level, level, level));
  }
  return canvas.Release();
}

void BM_MaskBlend72Into512(benchmark::State& state) {
  ImageBlock tile = Tile(512);
  ImageBlock mask = BubbleMask(72, 255);
  int i = 0;
  for (auto _ : state) {
    // Positions walk across every edge and corner of the tile.
    int x = (i * 97) % 640 - 64, y = (i * 61) % 640 - 64;
    MaskBlendWrap(tile, mask, x, y, 0x00C08040, static_cast<int>(state.range(0)));
    ++i;
    benchmark::DoNotOptimize(tile.data());
  }
  state.SetItemsProcessed(state.iterations() * 72 * 72);
}
BENCHMARK(BM_MaskBlend72Into512)->Arg(255)->Arg(200);

void BM_BubbleMask72(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(BubbleMask(72, 255));
}
BENCHMARK(BM_BubbleMask72);

void BM_FillEllipse(benchmark::State& state) {
  Canvas canvas = Canvas::Open(512, 512);
  int size = static_cast<int>(state.range(0));
  for (auto _ : state) {
    canvas.FillEllipse({7, 9, 7 + size, 9 + size}, 0x00336699);
    benchmark::DoNotOptimize(canvas.image().data());
  }
  state.SetItemsProcessed(state.iterations() * size * size * 355 / 452);  // about pi/4 of the box
}
BENCHMARK(BM_FillEllipse)->Arg(72)->Arg(400);

void BM_ThickLine(benchmark::State& state) {
  Canvas canvas = Canvas::Open(256, 256);
  for (auto _ : state) {
    canvas.DrawLine({-256, -100}, {512, 356}, 6, 0x00FFFFFF);
    benchmark::DoNotOptimize(canvas.image().data());
  }
}
BENCHMARK(BM_ThickLine);

void BM_Scale25Of512(benchmark::State& state) {
  ImageBlock tile = Tile(512);
  for (auto _ : state) benchmark::DoNotOptimize(ScaleByPercent(tile, 25, 25));
  state.SetItemsProcessed(state.iterations() * 512 * 512);
}
BENCHMARK(BM_Scale25Of512);

void BM_Scale50Of256(benchmark::State& state) {
  ImageBlock tile = Tile(256);
  for (auto _ : state) benchmark::DoNotOptimize(ScaleByPercent(tile, 50, 50));
  state.SetItemsProcessed(state.iterations() * 256 * 256);
}
BENCHMARK(BM_Scale50Of256);

// One Bubbles frame at the defaults: copy the background, 16 + 24 + 32 bubbles
// of diameters 72, 54 and 36, reduce to 25%. Arg 1 remakes every mask each
// frame, as the style's description has it; Arg 0 reuses them.
void BM_BubblesLikeFrame(benchmark::State& state) {
  bool remake = state.range(0) != 0;
  ImageBlock background = Tile(512);
  struct Bubble {
    int d, brightness, x, y;
  };
  std::vector<Bubble> bubbles;
  uint32_t s = 1000;
  auto next = [&](int n) {
    s = s * 1103515245u + 12345u;
    return static_cast<int>((s >> 8) % static_cast<uint32_t>(n));
  };
  for (auto [count, d, b] : {std::tuple{16, 72, 255}, {24, 54, 160}, {32, 36, 128}})
    for (int i = 0; i < count; ++i) bubbles.push_back({d, b, next(512), next(512)});
  std::vector<ImageBlock> masks;
  for (const Bubble& b : bubbles) masks.push_back(BubbleMask(b.d, b.brightness));

  int frame = 0;
  for (auto _ : state) {
    Canvas canvas = Canvas::Adopt(DuplicateGlobalBlock(background));
    for (size_t i = 0; i < bubbles.size(); ++i) {
      const Bubble& b = bubbles[i];
      int rise = frame * 8;
      if (remake) {
        ImageBlock mask = BubbleMask(b.d, b.brightness);
        MaskBlendWrap(canvas.image(), mask, b.x - b.d / 2, b.y - rise - b.d / 2, 0x00E0A060, 255);
      } else {
        MaskBlendWrap(canvas.image(), masks[i], b.x - b.d / 2, b.y - rise - b.d / 2, 0x00E0A060, 255);
      }
    }
    benchmark::DoNotOptimize(ScaleByPercent(canvas.image(), 25, 25));
    ++frame;
  }
}
BENCHMARK(BM_BubblesLikeFrame)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
