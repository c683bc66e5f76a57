// Speed of the output remaps and the adaptive palette on animation-sized work:
// 64 frames of 128x128, reported as pixels per second (items_per_second).
// A build remaps all its frames through one Remapper (made afresh in every
// iteration here, so what it learns is paid for); the per-frame functions
// are measured too. Targets: plain remap with one Remapper >= 100 Mpx/s,
// dither with one Remapper >= 40 Mpx/s, adaptive palette >= 20 Mpx/s.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "image/frame_list.h"
#include "output/palette.h"
#include "output/quantize.h"
#include "output/remap.h"

namespace tess {
namespace {

constexpr int kFrames = 64;
constexpr int kSize = 128;

uint32_t Next(uint32_t& s) {
  s ^= s << 13;
  s ^= s >> 17;
  s ^= s << 5;
  return s;
}

// Smooth gradients, hard-edged patches and a little noise, like rendered
// frames. With `levels` > 0 each channel is cut to that many levels, which
// keeps a frame to at most levels³ colours.
ImageBlock Frame(uint32_t seed, int levels) {
  ImageBlock image = ImageCreate(kSize, kSize, nullptr, 24);
  uint32_t s = seed * 2654435761u + 7;
  double fx = 1.0 + Next(s) % 5, fy = 1.0 + Next(s) % 5;
  for (int y = 0; y < kSize; ++y) {
    uint8_t* row = image.Row(y);
    for (int x = 0; x < kSize; ++x) {
      double u = static_cast<double>(x) / kSize, v = static_cast<double>(y) / kSize;
      int c[3] = {static_cast<int>(127.5 + 127.5 * std::sin(6.283 * fx * u + seed)),
                  static_cast<int>(255 * v),
                  static_cast<int>(127.5 + 127.5 * std::cos(6.283 * fy * (u + v)))};
      if ((x / 16 + y / 16 + static_cast<int>(seed)) % 7 == 0) c[0] = 255 - c[0];
      int noise = static_cast<int>(Next(s) % 9) - 4;
      for (int k = 0; k < 3; ++k) {
        int value = std::clamp(c[k] + (k < 2 ? noise : 0), 0, 255);
        if (levels > 0) value = value * levels / 256 * 255 / (levels - 1);
        row[3 * x + 2 - k] = static_cast<uint8_t>(value);
      }
    }
  }
  return image;
}

std::vector<ImageBlock> Frames(int levels) {
  std::vector<ImageBlock> frames;
  for (int i = 0; i < kFrames; ++i) frames.push_back(Frame(static_cast<uint32_t>(i + 1), levels));
  return frames;
}

void Report(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * kFrames * kSize * kSize);
}

// One Remapper for the whole animation, or one RemapImage / DitherImage call
// per frame.
void RemapBench(benchmark::State& state, int levels, bool dither, bool fast, bool shared, int choice) {
  std::vector<ImageBlock> frames = Frames(levels);
  uint8_t pal[kPaletteBytes];
  int bits = 0;
  int count = BuildFixedPalette(pal, &bits, choice);
  RemapOptions options;
  options.fast_remap = fast;
  for (auto _ : state) {
    Remapper remapper;
    if (shared) remapper.Init(pal, bits, count, options);
    for (const ImageBlock& frame : frames) {
      ImageBlock out;
      if (shared)
        out = dither ? remapper.Dither(frame) : remapper.Remap(frame);
      else
        out = dither ? DitherImage(frame, pal, bits, count, options) : RemapImage(frame, pal, bits, count, options);
      benchmark::DoNotOptimize(out.data());
    }
  }
  Report(state);
}

// Frames of at most 216 colours (6 levels a channel) for the plain remap;
// full natural frames for the dither.
void BM_Remap(benchmark::State& s) { RemapBench(s, 6, false, false, true, kPaletteOrtho256); }
void BM_RemapPerFrame(benchmark::State& s) { RemapBench(s, 6, false, false, false, kPaletteOrtho256); }
void BM_RemapFastRemap(benchmark::State& s) { RemapBench(s, 6, false, true, true, kPaletteOrtho256); }
void BM_Dither(benchmark::State& s) { RemapBench(s, 0, true, false, true, kPaletteOrtho256); }
void BM_DitherWithGray(benchmark::State& s) { RemapBench(s, 0, true, false, true, kPaletteWithGray256); }
void BM_DitherPerFrame(benchmark::State& s) { RemapBench(s, 0, true, false, false, kPaletteOrtho256); }
void BM_DitherFastRemap(benchmark::State& s) { RemapBench(s, 0, true, true, true, kPaletteOrtho256); }
void BM_DitherBlackWhite(benchmark::State& s) { RemapBench(s, 0, true, false, true, kPaletteBlackWhite); }

void BM_AdaptivePalette(benchmark::State& state) {
  FrameList list;
  for (ImageBlock& frame : Frames(0)) FrameListAddImage(list, std::move(frame), 1);
  for (auto _ : state) {
    uint8_t pal[kPaletteBytes];
    int count = 256;
    benchmark::DoNotOptimize(AdaptivePalette(&count, pal, list));
  }
  Report(state);
}

BENCHMARK(BM_Remap)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RemapPerFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RemapFastRemap)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dither)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DitherWithGray)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DitherPerFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DitherFastRemap)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DitherBlackWhite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AdaptivePalette)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
