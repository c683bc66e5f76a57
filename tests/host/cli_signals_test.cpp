// The real `tessarine` binary stopped while it writes a GIF: a catchable
// signal removes the temporary and the process still dies of that signal; a
// kill -9 leaves one, which the next run to the same path removes.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/safe_file.h"
#include "tests/support/temp_folder.h"
#include "tests/support/write_failure_sweep.h"

namespace tess::cli {
namespace {

using testing::FolderEntries;
using testing::TempFolder;

// Noise, so the encoder has real work: a few hundred milliseconds of writing.
std::vector<uint8_t> NoisePpm(int width, int height, uint32_t seed) {
  const std::string header = "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
  std::vector<uint8_t> bytes(header.begin(), header.end());
  for (int i = 0; i < width * height * 3; ++i) {
    seed = seed * 1664525u + 1013904223u;
    bytes.push_back(static_cast<uint8_t>(seed >> 24));
  }
  return bytes;
}

pid_t Start(const std::vector<std::string>& words, const std::string& appdata) {
  const pid_t child = fork();
  if (child == 0) {
    setenv("TESSARINE_APPDATA", appdata.c_str(), 1);
    std::vector<char*> argv;
    for (const std::string& w : words) argv.push_back(const_cast<char*>(w.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  return child;
}

// The temporary of `path` once it appears, or empty when the process ended
// (or 60 s passed) first.
std::string WaitForTemporary(pid_t child, const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (std::chrono::steady_clock::now() < deadline) {
    for (const std::string& name : FolderEntries(folder)) {
      uint32_t owner = 0;
      if (SafeFile::TemporaryOwner(path, name, &owner) && owner == static_cast<uint32_t>(child))
        return folder + "/" + name;
    }
    if (waitpid(child, nullptr, WNOHANG) == child) return {};
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  return {};
}

TEST(CliSignals, StoppedWritesLeaveNothingOrWhatTheNextRunRemoves) {
  TempFolder dir;
  const std::string out = dir / "out.gif", appdata = dir / "appdata";
  std::vector<std::string> big = {TESSARINE_BINARY, "encode", "--no-config", "-q", "-o", out};
  for (int i = 0; i < 8; ++i) {
    big.push_back(dir / ("f" + std::to_string(i) + ".ppm"));
    testing::WriteBytes(big.back(), NoisePpm(500, 400, static_cast<uint32_t>(i)));
  }
  const std::vector<std::string> before = FolderEntries(dir.path());

  for (int signal_number : {SIGINT, SIGTERM, SIGHUP, SIGKILL}) {
    const pid_t child = Start(big, appdata);
    const std::string temporary = WaitForTemporary(child, out);
    ASSERT_FALSE(temporary.empty()) << "the run ended before its GIF was being written";
    kill(child, signal_number);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal_number) << signal_number;
    EXPECT_FALSE(std::filesystem::exists(out));
    if (signal_number != SIGKILL) {
      EXPECT_EQ(FolderEntries(dir.path()), before) << "signal " << signal_number;
      continue;
    }
    // Nothing can catch kill -9: the leftover waits for the next run.
    EXPECT_TRUE(std::filesystem::exists(temporary));
    const pid_t next = Start({TESSARINE_BINARY, "encode", "--no-config", "-q", "-o", out, big.back()}, appdata);
    ASSERT_EQ(waitpid(next, &status, 0), next);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_FALSE(std::filesystem::exists(temporary));
    EXPECT_TRUE(std::filesystem::exists(out));
  }
}

}  // namespace
}  // namespace tess::cli
