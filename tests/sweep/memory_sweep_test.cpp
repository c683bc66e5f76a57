// Short memory at every allocation of whole operations: a small build in each
// output mode (as the plug-in runs it and as the command line streams it,
// into the command line's GIF host), a document load and each fountain
// library operation. Two kinds of failure are swept one allocation at a time:
// the engine's blocks (AllocFailureScope) and every operator new of the
// standard containers, which this program replaces with a counting one that
// throws std::bad_alloc at call N. Each run must succeed or end in the
// product's message, let no exception out, leave no file half written, and
// free what it took (the engine's live bytes here, the rest LeakSanitizer's).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "base/alloc.h"
#include "base/report.h"
#include "dialog/settings_document.h"
#include "driver/build_driver.h"
#include "fills/fountain.h"
#include "fills/fountain_library.h"
#include "host/cli/cli_settings.h"
#include "host/cli/gif_file_host.h"
#include "shell/settings.h"
#include "shell/strings.h"
#include "styles/style.h"
#include "tests/support/fake_platform.h"
#include "tests/support/temp_folder.h"

// ---------------------------------------------------------------- counting operator new

namespace {

// The program is single-threaded while a sweep runs.
struct NewInjector {
  bool active = false;
  long fail_at = -1;
  long count = 0;
};
NewInjector g_new;

void* Allocate(size_t n) {
  if (g_new.active && g_new.count++ == g_new.fail_at) throw std::bad_alloc();
  if (void* p = std::malloc(n ? n : 1)) return p;
  throw std::bad_alloc();
}

void* AllocateOrNull(size_t n) noexcept {
  try {
    return Allocate(n);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

void* operator new(size_t n) { return Allocate(n); }
void* operator new[](size_t n) { return Allocate(n); }
void* operator new(size_t n, const std::nothrow_t&) noexcept { return AllocateOrNull(n); }
void* operator new[](size_t n, const std::nothrow_t&) noexcept { return AllocateOrNull(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }

namespace tess {
namespace {

using testing::ReadBytes;

// Keeps the last message without allocating, so reporting never fails here.
class QuietReporter final : public Reporter {
 public:
  QuietReporter() { last.reserve(512); }
  void ShowMessage(std::string_view text) override {
    last.assign(text.substr(0, 512));
    ++shown;
  }
  void Reset() {
    last.clear();
    shown = 0;
  }
  std::string last;
  int shown = 0;
};

// What one run of an operation must satisfy, failed or not. The set-up runs
// before each run with nothing failing: it makes what the caller of the
// operation would already hold.
using Operation = std::function<bool()>;
using Check = std::function<void(bool ok)>;
using SetUp = std::function<void()>;

struct SweepCounts {
  long blocks = 0;
  long news = 0;
};

// Runs `operation` once to count its allocations of each kind, then once per
// allocation with that one failing; `check` judges every run. A failed run
// must hold no more of the engine's blocks than before it started.
SweepCounts Sweep(const SetUp& set_up, const Operation& operation, const Check& check) {
  SweepCounts counts;
  {
    set_up();
    AllocFailureScope count(-1);
    g_new = {true, -1, 0};
    const bool ok = operation();
    counts.news = g_new.count;
    g_new = {};
    counts.blocks = count.Count();
    EXPECT_TRUE(ok) << "the undisturbed run failed";
    check(ok);
  }
  auto run = [&](bool engine, long n) {
    set_up();
    const int64_t before = AllocCurrentBytes();
    bool ok = false, escaped = false;
    {
      AllocFailureScope fail(engine ? n : -1);
      g_new = {!engine, n, 0};
      try {
        ok = operation();
      } catch (...) {
        escaped = true;
      }
      g_new = {};
    }
    EXPECT_FALSE(escaped) << "an exception left the operation";
    if (!ok) {
      EXPECT_EQ(AllocCurrentBytes(), before);
    }
    if (!escaped) check(ok);
  };
  for (long n = 0; n < counts.blocks; ++n) {
    SCOPED_TRACE("engine block " + std::to_string(n));
    run(true, n);
  }
  for (long n = 0; n < counts.news; ++n) {
    SCOPED_TRACE("operator new " + std::to_string(n));
    run(false, n);
  }
  return counts;
}

SweepCounts Sweep(const Operation& operation, const Check& check) {
  return Sweep([] {}, operation, check);
}

// ---------------------------------------------------------------- a whole build

class BuildSweep : public ::testing::Test {
 protected:
  BuildSweep() {
    platform.app_data = dir / "appdata";
    std::filesystem::create_directories(dir / "preview");
    const std::span<const StyleEntry> styles = StyleTable();
    for (size_t i = 0; i < styles.size(); ++i)
      if (std::string_view(styles[i].name) == "Solid") solid = static_cast<int>(i);
    settings.SetNumber(Key::MainEffect, solid);
    settings.SetStyleNumber(styles[static_cast<size_t>(solid)].number, "Frames", 3);
    settings.SetStyleNumber(styles[static_cast<size_t>(solid)].number, "Width", 16);
    settings.SetStyleNumber(styles[static_cast<size_t>(solid)].number, "Depth", 16);
  }

  // What the front end holds when it starts a build: its reader, the GIF
  // host (modes 0 and 1 write through it) and the context.
  struct Front {
    Front(const Settings& settings, const StyleEntry& style, cli::SessionChoices session,
          const std::string& gif, Reporter& reporter, Platform& platform, BuildOptions options)
        : dialog(settings, &style, session),
          host(gif, nullptr),
          context{dialog, StyleTable(), random, host, 0, reporter, platform, nullptr, std::move(options)} {}
    cli::CliDialogReader dialog;
    cli::GifFileHost host;
    Random random;
    BuildContext context;
  };
  void SetUpBuild(bool stream) {
    reporter.Reset();
    BuildOptions options;
    options.host_capabilities = kHostCapOptimise;
    options.stream_frames = stream;
    options.preview_folder = dir / "preview";
    front.reset();
    front = std::make_unique<Front>(settings, StyleTable()[static_cast<size_t>(solid)], session, gif,
                                    reporter, platform, options);
  }
  // The host may fail after the last image (the comment, the trailer); the
  // command line then shows the host's own message, as here.
  bool Build(BuildMode mode) {
    const bool built = RunBuild(front->context, mode);
    if (mode == BuildMode::kPreview || !built) return built;
    if (!front->host.finished()) reporter.ShowMessage(front->host.error());
    return front->host.finished();
  }

  // A failed build said one allowed message; a GIF exists only when the
  // build succeeded, and nothing half written is left beside it.
  void ExpectClean(bool ok, BuildMode mode, const std::vector<std::string>& allowed) {
    front.reset();
    if (ok) {
      EXPECT_EQ(reporter.shown, 0);
    } else {
      EXPECT_EQ(reporter.shown, 1);
      EXPECT_NE(std::find(allowed.begin(), allowed.end(), reporter.last), allowed.end()) << reporter.last;
    }
    if (mode != BuildMode::kPreview) {
      EXPECT_EQ(std::filesystem::exists(gif), ok);
      std::filesystem::remove(gif);
    }
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
      files += entry.is_regular_file();
    EXPECT_EQ(files, 0u) << "a temporary file was left";
  }

  testing::TempFolder dir;
  testing::FakePlatform platform;
  Settings settings;
  cli::SessionChoices session;
  int solid = 0;
  std::string gif = dir / "sweep.gif";
  QuietReporter reporter;
  std::unique_ptr<Front> front;
};

TEST_F(BuildSweep, EveryOutputModeStreamedOrNot) {
  struct Mode {
    const char* what;
    bool true_colour, custom, supercompress, dither, mask;
  };
  const Mode modes[] = {
      {"true colour", true, false, false, false, false},
      {"fixed palette, dithered", false, false, false, true, false},
      {"adaptive, supercompressed", false, true, true, false, false},
      {"adaptive, masked background", false, true, false, false, true},
  };
  // A refused image is the host running short; the driver names the image.
  const std::vector<std::string> allowed = {std::string(StringText(kStrMemoryError)),
                                            std::string(StringText(kStrErrorAddingImage)),
                                            std::string(StringText(kStrErrorCreatingTask))};
  for (const Mode& m : modes) {
    settings.SetNumber(Key::Truecolour, m.true_colour);
    session.custom_palette = m.custom;
    settings.SetNumber(Key::MainSupercompress, m.supercompress);
    settings.SetNumber(Key::MainDither, m.dither);
    settings.SetNumber(Key::MainMaskBackground, m.mask);
    for (bool stream : {false, true}) {
      SCOPED_TRACE(std::string(m.what) + (stream ? ", streamed" : ""));
      Sweep([&] { SetUpBuild(stream); }, [&] { return Build(BuildMode::kOk); },
            [&](bool ok) { ExpectClean(ok, BuildMode::kOk, allowed); });
    }
  }
  SCOPED_TRACE("preview");
  const std::vector<std::string> preview_allowed = {std::string(StringText(kStrMemoryError)),
                                                    std::string(StringText(kStrErrorWritingFile)),
                                                    std::string(StringText(kStrErrorCreatingFile))};
  Sweep([&] { SetUpBuild(true); }, [&] { return Build(BuildMode::kPreview); },
        [&](bool ok) { ExpectClean(ok, BuildMode::kPreview, preview_allowed); });
}

// ---------------------------------------------------------------- a document load

TEST(DocumentSweep, LoadSucceedsOrSaysItCouldNotOpenTheFile) {
  testing::TempFolder dir;
  const std::string path = dir / "sweep.ts1";
  {
    Settings saved;
    saved.SetNumber(Key::MainEffect, 3);
    saved.SetNumber(Key::MainDither, 1);
    RecordingReporter r;
    ASSERT_TRUE(SaveSettingsDocument(path, saved, kHostCapOptimise, r));
  }
  QuietReporter reporter;
  Settings settings;
  const std::string opening(StringText(kStrErrorOpeningDocument));
  Sweep(
      [&] {
        reporter.Reset();
        settings = Settings();
      },
      [&] { return LoadDocumentIntoSettings(path, settings, kHostCapOptimise, reporter); },
      [&](bool ok) {
        EXPECT_EQ(reporter.shown, ok ? 0 : 1);
        EXPECT_EQ(ok ? settings.Number(Key::MainEffect) : 3, 3);
        EXPECT_EQ(ok ? opening : reporter.last, opening);
      });
}

// ---------------------------------------------------------------- fountain library operations

class LibrarySweep : public ::testing::Test {
 protected:
  LibrarySweep() {
    for (uint32_t i = 0; i < 3; ++i) {
      FountainRecord f;
      f.start_colour = 0x102030 * (i + 1);
      EXPECT_TRUE(AppendFountain(path, f, 0, 1000 + i));
    }
    original = ReadBytes(path);
  }
  FountainLibrary Loaded() {
    FountainLibrary library;
    EXPECT_TRUE(LoadFountainLibrary(path, library));
    return library;
  }
  // A failed file operation leaves the file as it was.
  void ExpectFileKept(bool ok) {
    if (!ok) {
      EXPECT_EQ(ReadBytes(path), original);
    }
    std::filesystem::remove(path);
    std::filesystem::copy_file(copy, path);
  }

  testing::TempFolder dir;
  std::string path = dir / "FountainLibrary.fll";
  std::string copy = dir / "copy";
  std::vector<uint8_t> original;
};

TEST_F(LibrarySweep, FileOperationsKeepTheOldFileWhenMemoryRunsShort) {
  std::filesystem::copy_file(path, copy);
  FountainRecord added;
  added.start_colour = 0xABCDEF;
  Sweep([&] { return AppendFountain(path, added, 0, 2000); }, [&](bool ok) { ExpectFileKept(ok); });
  Sweep(
      [&] {
        FountainLibrary library;
        return LoadFountainLibrary(path, library) && library.size() == 3;
      },
      [](bool) {});
  FountainLibrary library = Loaded();
  ASSERT_TRUE(library.Drag(0, 2));
  Sweep([&] { return SaveFountainLibrary(path, library, 0, 3000); }, [&](bool ok) { ExpectFileKept(ok); });
}

TEST_F(LibrarySweep, AppendingInMemoryChangesNothingWhenMemoryRunsShort) {
  FountainLibraryEntry extra;
  extra.start_colour = 0x123456;
  FountainLibrary library;
  // An empty library must grow for its first entry; a failed append leaves
  // it empty. (Moving and deleting entries never allocate.)
  SweepCounts counts = Sweep([&] { library = FountainLibrary(); }, [&] { return library.Append(extra); },
                             [&](bool ok) { EXPECT_EQ(library.size(), ok ? 1u : 0u); });
  EXPECT_GT(counts.blocks, 0);
}

}  // namespace
}  // namespace tess
