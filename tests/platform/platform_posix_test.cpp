// The real POSIX platform, driven through environment variables and small
// stand-in programs on PATH; no real browser or home folder is touched.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "tests/support/temp_folder.h"

namespace tess {
namespace {

// Sets or clears environment variables for one test and puts every one back
// as it was, so tests cannot leak settings into each other.
class EnvScope {
 public:
  EnvScope() = default;
  EnvScope(const EnvScope&) = delete;
  EnvScope& operator=(const EnvScope&) = delete;
  ~EnvScope() {
    for (auto it = m_saved.rbegin(); it != m_saved.rend(); ++it) {
      if (it->second) setenv(it->first.c_str(), it->second->c_str(), 1);
      else unsetenv(it->first.c_str());
    }
  }
  void Set(const std::string& name, const std::string& value) {
    Save(name);
    setenv(name.c_str(), value.c_str(), 1);
  }
  void Clear(const std::string& name) {
    Save(name);
    unsetenv(name.c_str());
  }

 private:
  void Save(const std::string& name) {
    const char* v = std::getenv(name.c_str());
    m_saved.emplace_back(name, v ? std::optional<std::string>(v) : std::nullopt);
  }
  std::vector<std::pair<std::string, std::optional<std::string>>> m_saved;
};

// An executable shell script named `name` with `body` in `folder`.
void Script(const testing::TempFolder& folder, const std::string& name, const std::string& body) {
  std::ofstream(folder / name) << "#!/bin/sh\n" << body << "\n";
  chmod((folder / name).c_str(), 0755);
}

std::string Text(const std::string& path) {
  std::vector<uint8_t> bytes = testing::ReadBytes(path);
  return {bytes.begin(), bytes.end()};
}

bool NoChildrenLeft() {
  int status = 0;
  return waitpid(-1, &status, WNOHANG) == -1 && errno == ECHILD;
}

TEST(PosixFolders, AppDataOverrideThenXdgThenHome) {
  Platform& p = SystemPlatform();
  EnvScope env;
  env.Set("TESSARINE_APPDATA", "/override");
  env.Set("XDG_CONFIG_HOME", "/xdg");
  env.Set("HOME", "/home/someone");
  EXPECT_EQ(p.AppDataFolder(), "/override");
  env.Set("TESSARINE_APPDATA", "");  // empty counts as unset
  EXPECT_EQ(p.AppDataFolder(), "/xdg");
  env.Clear("TESSARINE_APPDATA");
  env.Clear("XDG_CONFIG_HOME");
  EXPECT_EQ(p.AppDataFolder(), "/home/someone/.config");
  env.Clear("HOME");
  EXPECT_EQ(p.AppDataFolder(), "");
}

TEST(PosixFolders, DocumentsFromXdgOrHome) {
  Platform& p = SystemPlatform();
  EnvScope env;
  env.Set("XDG_DOCUMENTS_DIR", "/docs");
  env.Set("HOME", "/home/someone");
  EXPECT_EQ(p.DocumentsFolder(), "/docs");
  env.Clear("XDG_DOCUMENTS_DIR");
  EXPECT_EQ(p.DocumentsFolder(), "/home/someone/Documents");
  env.Clear("HOME");
  EXPECT_EQ(p.DocumentsFolder(), "");
}

TEST(PosixLaunch, XdgOpenGetsTheAddressVerbatimAndItsVerdictCounts) {
  testing::TempFolder bin;
  const std::string out = bin / "argument";
  Script(bin, "xdg-open", "printf '%s' \"$1\" > '" + out + "'\nexit ${XDG_RESULT:-0}");
  EnvScope env;
  env.Set("PATH", bin.path());
  env.Clear("BROWSER");
  Platform& p = SystemPlatform();
  // No shell sees the argument, so nothing in it is expanded or split.
  const std::string address = "file:///tmp/a%20b;$(echo no)'\"#x";
  EXPECT_TRUE(p.LaunchBrowser(address, "/tmp/a b", true));
  EXPECT_EQ(Text(out), address);
  EXPECT_TRUE(p.OpenDocument("/tmp/preview.html", false));
  EXPECT_EQ(Text(out), "/tmp/preview.html");
  env.Set("XDG_RESULT", "3");  // xdg-open: no program for this target
  EXPECT_FALSE(p.LaunchBrowser("file:///x", "x", false));
  EXPECT_TRUE(NoChildrenLeft());
}

TEST(PosixLaunch, NothingToLaunchFails) {
  testing::TempFolder empty;
  EnvScope env;
  env.Set("PATH", empty.path());
  env.Set("BROWSER", "/no/such/browser");
  Platform& p = SystemPlatform();
  EXPECT_FALSE(p.LaunchBrowser("http://x", "http://x", false));
  EXPECT_FALSE(p.OpenDocument("/tmp/x.html", false));
  EXPECT_TRUE(NoChildrenLeft());
}

TEST(PosixLaunch, BrowserListIsTriedInOrderBeforeXdgOpen) {
  testing::TempFolder bin;
  const std::string out = bin / "argument";
  Script(bin, "second", "printf '%s' \"$1\" > '" + out + "'");
  Script(bin, "xdg-open", "exit 1");
  EnvScope env;
  env.Set("PATH", bin.path());
  env.Set("BROWSER", "no-such-browser::second");
  Platform& p = SystemPlatform();
  EXPECT_TRUE(p.LaunchBrowser("http://example.com/a", "", false));
  // The browser is detached; give it a moment to write.
  for (int i = 0; i < 200 && Text(out).empty(); ++i) usleep(10000);
  EXPECT_EQ(Text(out), "http://example.com/a");
  EXPECT_TRUE(NoChildrenLeft());
}

TEST(PosixLaunch, ABrowserThatStaysOpenDoesNotBlockTheCaller) {
  EnvScope env;
  env.Set("BROWSER", "sleep");
  Platform& p = SystemPlatform();
  auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(p.LaunchBrowser("20", "20", false));  // "sleep 20"
  auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_LT(elapsed, std::chrono::seconds(10));
  EXPECT_TRUE(NoChildrenLeft());  // the sleeper belongs to init now
}

}  // namespace
}  // namespace tess
