// LZW encoding speed on one core: realistic animation frames (a smooth moving
// pattern with a little noise, 8-bit indices) and worst-case noise that fills
// and resets the code table constantly. Throughput is in indices (bytes) per second.
#include <benchmark/benchmark.h>

#include <vector>

#include "output/gif_lzw.h"

namespace tess {
namespace {

// Counts bytes and throws them away, so the sink costs nothing.
class NullSink final : public ByteSink {
 public:
  bool Write(const void*, size_t size) override {
    m_size += size;
    return true;
  }
  size_t m_size = 0;
};

uint32_t Next(uint32_t& s) {
  s ^= s << 13;
  s ^= s >> 17;
  s ^= s << 5;
  return s;
}

// Frame f of a drifting diagonal pattern of ~64 levels, a pixel in 16 noisy:
// what a dithered, quantised tiling background looks like to the encoder.
std::vector<ImageBlock> SmoothFrames(int count, int size) {
  std::vector<ImageBlock> frames;
  uint32_t s = 1;
  for (int f = 0; f < count; ++f) {
    ImageBlock image = ImageCreate(size, size, nullptr, 8);
    for (int y = 0; y < size; ++y) {
      uint8_t* row = image.Row(y);
      for (int x = 0; x < size; ++x) {
        int v = ((x + 2 * y + 3 * f) / 6) % 64;
        if (Next(s) % 16 == 0) v = static_cast<int>(Next(s) % 256);
        row[x] = static_cast<uint8_t>(v);
      }
    }
    frames.push_back(std::move(image));
  }
  return frames;
}

ImageBlock NoiseFrame(int size) {
  ImageBlock image = ImageCreate(size, size, nullptr, 8);
  uint32_t s = 7;
  for (int y = 0; y < size; ++y)
    for (int x = 0; x < size; ++x) image.Row(y)[x] = static_cast<uint8_t>(Next(s));
  return image;
}

void BM_LzwSmoothFrames(benchmark::State& state) {
  const std::vector<ImageBlock> frames = SmoothFrames(64, 128);
  LzwEncoder lzw;
  NullSink sink;
  for (auto _ : state)
    for (const ImageBlock& f : frames)
      if (lzw.Encode(sink, f, 8) != GifStatus::kOk) state.SkipWithError("encode failed");
  const int64_t bytes = 64 * 128 * 128;
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["ratio"] = static_cast<double>(sink.m_size) / (state.iterations() * bytes);
}
BENCHMARK(BM_LzwSmoothFrames)->Unit(benchmark::kMillisecond);

void BM_LzwNoise(benchmark::State& state) {
  const ImageBlock frame = NoiseFrame(512);
  LzwEncoder lzw;
  NullSink sink;
  for (auto _ : state)
    if (lzw.Encode(sink, frame, 8) != GifStatus::kOk) state.SkipWithError("encode failed");
  const int64_t bytes = 512 * 512;
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["ratio"] = static_cast<double>(sink.m_size) / (state.iterations() * bytes);
}
BENCHMARK(BM_LzwNoise)->Unit(benchmark::kMillisecond);

// A 4-bit picture goes through the row unpacking path.
void BM_LzwFourBit(benchmark::State& state) {
  ImageBlock image = ImageCreate(512, 512, nullptr, 4);
  uint32_t s = 3;
  for (int y = 0; y < 512; ++y)
    for (int x = 0; x < 512; ++x)
      ImageSetPixel(image, x, y, ((x + y) / 8 + (Next(s) % 8 == 0)) % 16);
  LzwEncoder lzw;
  NullSink sink;
  for (auto _ : state)
    if (lzw.Encode(sink, image, 4) != GifStatus::kOk) state.SkipWithError("encode failed");
  state.SetBytesProcessed(state.iterations() * int64_t{512} * 512);
}
BENCHMARK(BM_LzwFourBit)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
