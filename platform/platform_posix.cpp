// POSIX implementation of the platform services: XDG folders, no keyboard
// state, and launching through $BROWSER or xdg-open without a shell.
// Launching never blocks on a browser that stays open and leaves no zombie:
// see Launch below. No exception leaves this file.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string_view>
#include <vector>

#include "platform/platform.h"

extern char** environ;

namespace tess {
namespace {

// How long we let xdg-open decide before assuming it has handed over to a
// browser that stays in the foreground (its generic mode does that).
constexpr int kLauncherWaitMs = 5000;
constexpr int kPollMs = 20;

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string HomeFolder() { return Env("HOME"); }

void SleepMs(int ms) {
  timespec ts{ms / 1000, (ms % 1000) * 1000000L};
  while (nanosleep(&ts, &ts) != 0 && errno == EINTR) {
  }
}

// How the program is started: standard streams on /dev/null and its own
// session where available, so it neither writes into our terminal after we
// are gone nor dies with our terminal's Ctrl-C. Prepared before fork, because
// setting it up allocates and the child of a threaded process should not.
class QuietSpawn {
 public:
  QuietSpawn() {
    m_has_actions = posix_spawn_file_actions_init(&m_actions) == 0;
    m_has_attr = posix_spawnattr_init(&m_attr) == 0;
    m_ok = m_has_actions && m_has_attr &&
           posix_spawn_file_actions_addopen(&m_actions, 0, "/dev/null", O_RDONLY, 0) == 0 &&
           posix_spawn_file_actions_addopen(&m_actions, 1, "/dev/null", O_WRONLY, 0) == 0 &&
           posix_spawn_file_actions_addopen(&m_actions, 2, "/dev/null", O_WRONLY, 0) == 0;
#ifdef POSIX_SPAWN_SETSID
    if (m_ok) posix_spawnattr_setflags(&m_attr, POSIX_SPAWN_SETSID);
#endif
  }
  ~QuietSpawn() {
    if (m_has_attr) posix_spawnattr_destroy(&m_attr);
    if (m_has_actions) posix_spawn_file_actions_destroy(&m_actions);
  }
  QuietSpawn(const QuietSpawn&) = delete;
  QuietSpawn& operator=(const QuietSpawn&) = delete;

  bool ok() const { return m_ok; }
  bool Start(pid_t* pid, char* const* argv) const {
    return posix_spawnp(pid, argv[0], &m_actions, &m_attr, argv, environ) == 0;
  }

 private:
  posix_spawn_file_actions_t m_actions;
  posix_spawnattr_t m_attr;
  bool m_has_actions = false;
  bool m_has_attr = false;
  bool m_ok = false;
};

// In the intermediate child: the exit status of the launched program, or
// success when it is still running after the wait (it became the browser).
bool WaitBriefly(pid_t pid) {
  for (int waited = 0; waited < kLauncherWaitMs; waited += kPollMs) {
    int status = 0;
    pid_t r = waitpid(pid, &status, WNOHANG);
    if (r == pid) return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (r < 0 && errno != EINTR) return false;
    SleepMs(kPollMs);
  }
  return true;
}

// Runs `program argument` without a shell, so no character of the argument
// is interpreted. A short-lived intermediate child starts the program and
// exits; the program is then adopted by init (or the nearest subreaper), so a
// long-lived caller never accumulates zombies and never waits on a browser.
// `judge_exit` makes the intermediate child wait up to kLauncherWaitMs for the
// program's own verdict: right for xdg-open, which exits non-zero when it
// finds nothing to open the target with. A $BROWSER program is a browser
// itself and counts as started once exec succeeded.
bool Launch(const std::string& program, const std::string& argument, bool judge_exit) {
  // Built before fork: the child of a threaded process should not allocate.
  std::vector<char*> argv = {const_cast<char*>(program.c_str()),
                             const_cast<char*>(argument.c_str()), nullptr};
  QuietSpawn spawn;
  if (!spawn.ok()) return false;
  pid_t middle = fork();
  if (middle < 0) return false;
  if (middle == 0) {
    pid_t pid = 0;
    if (!spawn.Start(&pid, argv.data())) _exit(1);
    _exit(!judge_exit || WaitBriefly(pid) ? 0 : 1);
  }
  int status = 0;
  pid_t r;
  while ((r = waitpid(middle, &status, 0)) < 0 && errno == EINTR) {
  }
  return r == middle && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// $BROWSER is a colon-separated list of programs, tried in order.
bool LaunchFromBrowserVariable(const std::string& target) {
  std::string list = Env("BROWSER");
  std::string_view rest = list;
  while (!rest.empty()) {
    size_t colon = rest.find(':');
    std::string_view entry = rest.substr(0, colon);
    rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
    if (!entry.empty() && Launch(std::string(entry), target, false)) return true;
  }
  return false;
}

bool Open(const std::string& target) {
  try {
    if (LaunchFromBrowserVariable(target)) return true;
    return Launch("xdg-open", target, true);
  } catch (...) {
    return false;
  }
}

class PosixPlatform final : public Platform {
 public:
  std::string AppDataFolder() override {
    try {
      std::string over = Env("TESSARINE_APPDATA");
      if (!over.empty()) return over;
      std::string xdg = Env("XDG_CONFIG_HOME");
      if (!xdg.empty()) return xdg;
      std::string home = HomeFolder();
      return home.empty() ? std::string() : home + "/.config";
    } catch (...) {
      return {};
    }
  }

  std::string DocumentsFolder() override {
    try {
      std::string xdg = Env("XDG_DOCUMENTS_DIR");
      if (!xdg.empty()) return xdg;
      std::string home = HomeFolder();
      return home.empty() ? std::string() : home + "/Documents";
    } catch (...) {
      return {};
    }
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

  // Maximising is a window-manager matter the launched program decides.
  bool OpenDocument(const std::string& path, bool) override { return Open(path); }

  bool LaunchBrowser(const std::string& address, const std::string&, bool) override {
    return Open(address);
  }
};

}  // namespace

Platform& SystemPlatform() {
  static PosixPlatform platform;
  return platform;
}

}  // namespace tess
