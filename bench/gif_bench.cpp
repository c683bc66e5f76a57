// LZW encoding speed on one core: realistic animation frames (a smooth moving
// field, dithered, 8-bit indices), a harsher speckled ramp, and worst-case
// noise that fills and resets the code table constantly; and the choosing
// encoder of frame shaping, with and without its look-ahead. Throughput is in
// indices (bytes) per second; "ratio" is output bytes per index.
#include <benchmark/benchmark.h>

#include <cmath>
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

// Frame f of a moving smooth field over ~64 palette levels, ordered-dithered
// between neighbouring levels with one random speck in 256 pixels: what a
// remapped, dithered tiling background looks like to the encoder.
std::vector<ImageBlock> DitheredFrames(int count, int size) {
  static constexpr int kBayer[4][4] = {
      {0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
  std::vector<ImageBlock> frames;
  uint32_t s = 1;
  const double k = 6.2831853 / size;
  for (int f = 0; f < count; ++f) {
    ImageBlock image = ImageCreate(size, size, nullptr, 8);
    const double phase = 6.2831853 * f / count;
    for (int y = 0; y < size; ++y) {
      uint8_t* row = image.Row(y);
      for (int x = 0; x < size; ++x) {
        double t = 120 + 60 * std::sin(k * x + phase) + 50 * std::cos(2 * k * y - phase) +
                   20 * std::sin(k * (x + y) + 2 * phase);
        int level = static_cast<int>(t / 4);
        int v = level + ((t / 4 - level) * 16 > kBayer[y & 3][x & 3]);
        if (Next(s) % 256 == 0) v = static_cast<int>(Next(s) % 256);
        row[x] = static_cast<uint8_t>(v);
      }
    }
    frames.push_back(std::move(image));
  }
  return frames;
}

// A drifting diagonal ramp of 64 levels with one pixel in 16 replaced by
// uniform noise: harder than real frames, as every speck ends two strings.
std::vector<ImageBlock> SpeckledFrames(int count, int size) {
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

void EncodeFrames(benchmark::State& state, const std::vector<ImageBlock>& frames) {
  LzwEncoder lzw;
  NullSink sink;
  for (auto _ : state)
    for (const ImageBlock& f : frames)
      if (lzw.Encode(sink, f, 8) != GifStatus::kOk) state.SkipWithError("encode failed");
  const int64_t bytes =
      static_cast<int64_t>(frames.size()) * frames[0].width() * frames[0].height();
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["ratio"] = static_cast<double>(sink.m_size) / (state.iterations() * bytes);
}

// 64 frames of 128 x 128, the size of a typical tile animation.
void BM_LzwDitheredFrames(benchmark::State& state) { EncodeFrames(state, DitheredFrames(64, 128)); }
BENCHMARK(BM_LzwDitheredFrames)->Unit(benchmark::kMillisecond);

void BM_LzwSpeckledFrames(benchmark::State& state) { EncodeFrames(state, SpeckledFrames(64, 128)); }
BENCHMARK(BM_LzwSpeckledFrames)->Unit(benchmark::kMillisecond);

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

// The choosing encoder as frame shaping drives it: each speckled frame's own
// indices, with the transparent index (255) as the other choice wherever the
// frame before shows the same; the longest-string parse (0) against the
// look-ahead (1) and its wary form (2). The specks end strings everywhere,
// which makes the look-ahead's work the most it gets, and fill the table, so
// "ratio" shows the plain look-ahead losing a little where the wary one gains
// (the shaper tries both where the table fills).
void BM_LzwChoosingFrames(benchmark::State& state) {
  const std::vector<ImageBlock> frames = SpeckledFrames(64, 128);
  const size_t n = 128 * 128;
  std::vector<std::vector<uint8_t>> own, masked;
  for (size_t f = 0; f < frames.size(); ++f) {
    own.emplace_back();
    for (int y = 0; y < 128; ++y) own.back().insert(own.back().end(), frames[f].Row(y), frames[f].Row(y) + 128);
    masked.push_back(own.back());
    if (f > 0)
      for (size_t i = 0; i < n; ++i)
        if (own[f][i] == own[f - 1][i]) masked[f][i] = 255;
  }
  const LzwVariant variant{static_cast<LzwParse>(state.range(0)), LzwFullTable::kClear};
  std::vector<uint8_t> chosen(n);
  LzwEncoder lzw;
  NullSink sink;
  for (auto _ : state)
    for (size_t f = 0; f < frames.size(); ++f)
      if (lzw.EncodeChoosing(sink, own[f].data(), masked[f].data(), n, 8, variant, chosen.data()) != GifStatus::kOk)
        state.SkipWithError("encode failed");
  const int64_t bytes = static_cast<int64_t>(frames.size() * n);
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["ratio"] = static_cast<double>(sink.m_size) / (state.iterations() * bytes);
}
BENCHMARK(BM_LzwChoosingFrames)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
