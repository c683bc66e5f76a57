// The build driver's own cost on one core: 64 frames of 128 x 128 through the
// adaptive palette, supercompression and remapping, delivered to a host that
// accepts everything. The style hands out copies of frames rendered once, so
// what is measured is the driver and the output stages, not an effect.
#include <benchmark/benchmark.h>

#include <vector>

#include "driver/build_driver.h"
#include "shell/main_dialog_ids.h"
#include "tests/driver/build_test_style.h"

namespace tess {
namespace {

constexpr int kFrames = 64;
constexpr int kSize = 128;
constexpr Colour kBg = 0x00402010;

// Soft blobs drifting over a flat background, like a sprite style: most
// pixels stay the same from frame to frame.
std::vector<ImageBlock> MakeFrames() {
  std::vector<ImageBlock> frames;
  for (int k = 0; k < kFrames; ++k) {
    ImageBlock image = ImageCreate(kSize, kSize, nullptr, 24);
    for (int y = 0; y < kSize; ++y) {
      uint8_t* row = image.Row(y);
      for (int x = 0; x < kSize; ++x) {
        Colour c = kBg;
        for (int b = 0; b < 6; ++b) {
          int cx = (b * 37 + 2 * k) % kSize, cy = (b * 53 + k * (b + 1)) % kSize;
          int dx = x - cx, dy = y - cy, d2 = dx * dx + dy * dy;
          if (d2 < 100) c = MakeColour(255 - d2, 40 * b, 100 + d2);
        }
        row[3 * x] = ColourBlue(c);
        row[3 * x + 1] = ColourGreen(c);
        row[3 * x + 2] = ColourRed(c);
      }
    }
    frames.push_back(std::move(image));
  }
  return frames;
}

const std::vector<ImageBlock>& Frames() {
  static const std::vector<ImageBlock> frames = MakeFrames();
  return frames;
}

class CopyRecord final : public StyleRecord {
 public:
  int FrameCount() const override { return kFrames; }
  ImageBlock RenderFrame(int k) override { return DuplicateGlobalBlock(Frames()[k]); }
};

std::unique_ptr<StyleRecord> InitCopy(const ParamReader&, Random&) {
  return std::make_unique<CopyRecord>();
}

class AcceptingHost final : public HostService {
 public:
  int32_t Call(HostHandle, int32_t, intptr_t, void*) override { return 1; }
};

class SilentReporter final : public Reporter {
 public:
  void ShowMessage(std::string_view) override {}
};

void BM_BuildAdaptiveSupercompressed(benchmark::State& state) {
  Frames();
  // The test styles' dialog and background query: a "Background:" button.
  const StyleEntry style{"Copy", 999, {}, &InitCopy, &testing::PageBackground};
  testing::MapReader dialog;
  dialog.values = {{kDelayEdit, 4},      {kPaletteList, 6},  {kCustomPalette, 1},
                   {kSupercompress, 1},  {kAddComment, 1},   {kDither, state.range(0)},
                   {testing::kTestBackground, static_cast<int32_t>(kBg)}};
  Random random;
  AcceptingHost host;
  SilentReporter reporter;
  BuildOptions options;
  options.fast_remap = state.range(1) != 0;
  for (auto _ : state) {
    BuildContext context{dialog, {&style, 1}, random, host, 0, reporter, SystemPlatform(),
                         nullptr, options};
    if (!RunBuild(context, BuildMode::kOk)) state.SkipWithError("build failed");
  }
  state.counters["frames/s"] =
      benchmark::Counter(kFrames, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_BuildAdaptiveSupercompressed)
    ->ArgsProduct({{0, 1}, {0, 1}})
    ->ArgNames({"dither", "fast"})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
