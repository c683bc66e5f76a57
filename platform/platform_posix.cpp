// POSIX implementation of the platform services: XDG folders, no keyboard
// state, and launching through $BROWSER or xdg-open without a shell.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <vector>

#include "platform/platform.h"

extern char** environ;

namespace tess {
namespace {

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string HomeFolder() { return Env("HOME"); }

// Runs `program address` without a shell, so no character of the address is
// interpreted. The launcher is detached: we only wait for it to be exec'd.
bool Spawn(const std::string& program, const std::string& argument) {
  std::vector<char*> argv = {const_cast<char*>(program.c_str()),
                             const_cast<char*>(argument.c_str()), nullptr};
  pid_t pid = 0;
  if (posix_spawnp(&pid, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
    return false;
  int status = 0;
  if (waitpid(pid, &status, 0) < 0) return false;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class PosixPlatform final : public Platform {
 public:
  std::string AppDataFolder() override {
    std::string over = Env("TESSARINE_APPDATA");
    if (!over.empty()) return over;
    std::string xdg = Env("XDG_CONFIG_HOME");
    if (!xdg.empty()) return xdg;
    std::string home = HomeFolder();
    return home.empty() ? std::string() : home + "/.config";
  }

  std::string DocumentsFolder() override {
    std::string xdg = Env("XDG_DOCUMENTS_DIR");
    if (!xdg.empty()) return xdg;
    std::string home = HomeFolder();
    return home.empty() ? std::string() : home + "/Documents";
  }

  char PathSeparator() const override { return '/'; }

  bool ShiftDown() override { return false; }

  LocalTime Now() override {
    std::time_t t = std::time(nullptr);
    std::tm tm{};
    localtime_r(&t, &tm);
    return LocalTime{tm.tm_year + 1900, tm.tm_mon, tm.tm_mday, tm.tm_wday,
                     tm.tm_hour, tm.tm_min, tm.tm_sec};
  }

  bool OpenDocument(const std::string& path, bool) override { return Open(path); }

  bool LaunchBrowser(const std::string& address, const std::string&, bool) override {
    return Open(address);
  }

 private:
  static bool Open(const std::string& target) {
    std::string browser = Env("BROWSER");
    if (!browser.empty() && Spawn(browser, target)) return true;
    return Spawn("xdg-open", target);
  }
};

}  // namespace

Platform& SystemPlatform() {
  static PosixPlatform platform;
  return platform;
}

}  // namespace tess
