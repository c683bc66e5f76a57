// Working memory of a default render against the frames it keeps: each case
// runs `tessarine render --effect NAME --no-config` in process, with output and
// the application-data folder in a temporary folder, and reports the engine's
// peak bytes (base/alloc.h accounting, this thread) over the bytes of the
// frame list at its fullest (one true-colour block per frame of the written
// GIF). The target is a ratio of at most 1.5. The Build cases run the same
// settings through RunBuild to a host that keeps nothing, so their figure
// leaves out what the command-line host spends turning each true-colour frame
// into a GIF frame (an adaptive palette per frame). RSS is secondary and
// coarse: rss_growth_bytes is the process's peak RSS after a run less its RSS
// before it, which only belongs to the case when the case runs alone
// (--benchmark_filter); max_rss_bytes is the process's peak so far. The
// HugeJob cases render 2,000 frames of 256 x 256 through the command line,
// which streams: peak_bytes is what it holds, all_frames_bytes what keeping
// every frame (the plug-in's order) would need at the least.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "base/alloc.h"
#include "driver/build_driver.h"
#include "host/cli/cli.h"
#include "host/cli/cli_settings.h"
#include "image/image.h"
#include "plugin/host_interface.h"
#include "shell/settings.h"
#include "styles/style.h"
#include "tests/support/gif_decoder.h"
#include "tests/support/temp_folder.h"

namespace tess {
namespace {

// Resident pages now, from /proc/self/statm (Linux); 0 when unreadable.
long CurrentRssKiB() {
  std::ifstream statm("/proc/self/statm");
  long size = 0, resident = 0;
  if (!(statm >> size >> resident)) return 0;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

long MaxRssKiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// Bytes the engine spends on one true-colour frame of this size, header-free,
// exactly as the frame list would hold it.
int64_t TrueColourFrameBytes(int width, int height) {
  int64_t before = AllocCurrentBytes();
  ImageBlock image = ImageCreate(width, height, nullptr, 24);
  return image ? AllocCurrentBytes() - before : 0;
}

void BM_DefaultRender(benchmark::State& state, const std::string& effect) {
  testing::TempFolder dir;
  setenv("TESSARINE_APPDATA", (dir / "appdata").c_str(), 1);
  const std::string gif_path = dir / "out.gif";
  const std::vector<std::string> args = {"render", "--no-config", "--effect", effect, "-o", gif_path};

  int64_t peak = 0;
  long rss_growth = 0;
  for (auto _ : state) {
    std::ostringstream out, err;
    cli::CliEnvironment env{SystemPlatform(), out, err, nullptr, false, StyleTable()};
    const long rss_before = CurrentRssKiB();
    const int64_t base = AllocCurrentBytes();
    ResetAllocPeak();
    if (cli::RunCli(args, env) != 0) {
      state.SkipWithError(("render failed: " + err.str()).c_str());
      return;
    }
    peak = std::max(peak, AllocPeakBytes() - base);
    rss_growth = std::max(rss_growth, MaxRssKiB() - rss_before);
  }

  std::ifstream in(gif_path, std::ios::binary);
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  testing::DecodedGif gif;
  std::string error;
  if (!testing::DecodeGif(bytes, &gif, &error)) {
    state.SkipWithError(("cannot decode the output: " + error).c_str());
    return;
  }
  const int64_t stored =
      static_cast<int64_t>(gif.frames.size()) * TrueColourFrameBytes(gif.width, gif.height);
  state.counters["frames"] = static_cast<double>(gif.frames.size());
  state.counters["peak_bytes"] = static_cast<double>(peak);
  state.counters["stored_bytes"] = static_cast<double>(stored);
  state.counters["ratio"] = stored > 0 ? static_cast<double>(peak) / static_cast<double>(stored) : 0;
  state.counters["rss_growth_bytes"] = static_cast<double>(rss_growth) * 1024.0;
  state.counters["max_rss_bytes"] = static_cast<double>(MaxRssKiB()) * 1024.0;
}

// Takes every frame and keeps only the size of the largest and their count.
class AcceptingHost final : public HostService {
 public:
  int32_t Call(HostHandle, int32_t command, intptr_t, void* data) override {
    if (command != kHostAddImage) return 1;
    ImageRecord record;
    std::memcpy(&record, data, sizeof record);
    if (const ImageBlock* image = LentImage(record.image)) {
      ++frames;
      width = std::max(width, image->width());
      height = std::max(height, image->height());
    }
    return 1;
  }
  int frames = 0;
  int width = 0, height = 0;
};

class SilentReporter final : public Reporter {
 public:
  void ShowMessage(std::string_view) override {}
};

// The command's build without the host's per-frame work: built-in defaults,
// the effect selected, options as the command-line host sets them.
void BM_DefaultBuild(benchmark::State& state, const std::string& effect) {
  const std::span<const StyleEntry> styles = StyleTable();
  int index = 0;
  while (index < static_cast<int>(styles.size()) && styles[static_cast<size_t>(index)].name != effect)
    ++index;
  if (index == static_cast<int>(styles.size())) {
    state.SkipWithError("no such effect");
    return;
  }
  const StyleEntry& style = styles[static_cast<size_t>(index)];
  Settings settings;
  settings.SetNumber(Key::MainEffect, index);
  cli::SessionChoices session;
  cli::CliDialogReader dialog(settings, &style, session);
  BuildOptions options;
  options.fast_remap = settings.Number(Key::FastRemap) != 0;
  options.host_capabilities = kHostCapOptimise;
  AcceptingHost host;
  SilentReporter reporter;

  int64_t peak = 0;
  long rss_growth = 0;
  for (auto _ : state) {
    host.frames = 0;
    Random random;
    BuildContext context{dialog, styles, random, host, 0, reporter, SystemPlatform(), nullptr, options};
    const long rss_before = CurrentRssKiB();
    const int64_t base = AllocCurrentBytes();
    ResetAllocPeak();
    if (!RunBuild(context, BuildMode::kOk)) {
      state.SkipWithError("build failed");
      return;
    }
    peak = std::max(peak, AllocPeakBytes() - base);
    rss_growth = std::max(rss_growth, MaxRssKiB() - rss_before);
  }
  const int64_t stored = host.frames * TrueColourFrameBytes(host.width, host.height);
  state.counters["frames"] = host.frames;
  state.counters["peak_bytes"] = static_cast<double>(peak);
  state.counters["stored_bytes"] = static_cast<double>(stored);
  state.counters["ratio"] = stored > 0 ? static_cast<double>(peak) / static_cast<double>(stored) : 0;
  state.counters["rss_growth_bytes"] = static_cast<double>(rss_growth) * 1024.0;
  state.counters["max_rss_bytes"] = static_cast<double>(MaxRssKiB()) * 1024.0;
}

// A long job of a cheap effect, so the figure is the streaming's and not the
// effect's: Solid at 256 x 256, 2,000 frames.
void BM_HugeJob(benchmark::State& state, const std::vector<std::string>& palette) {
  constexpr int kSide = 256, kFrames = 2000;
  testing::TempFolder dir;
  setenv("TESSARINE_APPDATA", (dir / "appdata").c_str(), 1);
  const std::string gif_path = dir / "huge.gif";
  std::vector<std::string> args = {"render", "--no-config", "-e", "Solid", "-s", "Frames=" + std::to_string(kFrames),
                                   "-s", "Width=" + std::to_string(kSide), "-s", "Depth=" + std::to_string(kSide),
                                   "-o", gif_path};
  args.insert(args.end(), palette.begin(), palette.end());
  int64_t peak = 0;
  for (auto _ : state) {
    std::ostringstream out, err;
    cli::CliEnvironment env{SystemPlatform(), out, err, nullptr, false, StyleTable()};
    const int64_t base = AllocCurrentBytes();
    ResetAllocPeak();
    if (cli::RunCli(args, env) != 0) {
      state.SkipWithError(("render failed: " + err.str()).c_str());
      return;
    }
    peak = std::max(peak, AllocPeakBytes() - base);
  }
  const int64_t frame = TrueColourFrameBytes(kSide, kSide);
  state.counters["frames"] = kFrames;
  state.counters["peak_bytes"] = static_cast<double>(peak);
  state.counters["frame_bytes"] = static_cast<double>(frame);
  state.counters["all_frames_bytes"] = static_cast<double>(frame * kFrames);
  state.counters["max_rss_bytes"] = static_cast<double>(MaxRssKiB()) * 1024.0;
}

BENCHMARK_CAPTURE(BM_HugeJob, FixedPalette, std::vector<std::string>{"-p", "6"})
    ->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_CAPTURE(BM_HugeJob, AdaptiveSupercompressed,
                  std::vector<std::string>{"--custom-palette", "--supercompress"})
    ->Unit(benchmark::kMillisecond)->Iterations(1);

BENCHMARK_CAPTURE(BM_DefaultBuild, Bubbles, std::string("Bubbles"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DefaultBuild, PhasersOnStun, std::string("Phasers on Stun"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DefaultRender, Bubbles, std::string("Bubbles"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DefaultRender, PhasersOnStun, std::string("Phasers on Stun"))
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tess
