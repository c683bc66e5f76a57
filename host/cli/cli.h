// The `tessarine` command-line host, callable in process: RunCli takes the
// arguments and everything the outside world provides (platform, streams,
// the style table), so tests drive it exactly as the executable does. It
// never throws: failures become one "tessarine: " line on the error stream
// and an exit code (0 success, 1 the work failed, 2 usage error).
#pragma once

#include <istream>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "base/report.h"
#include "host/cli/progress_bar.h"
#include "platform/platform.h"
#include "styles/style.h"

namespace tess::cli {

struct CliEnvironment {
  Platform& platform;
  std::ostream& out;   // results: listings, paths of written files
  std::ostream& err;   // messages and the progress bar
  std::istream* in = nullptr;  // frames read from "-"; none when null
  bool err_is_terminal = false;  // draw the progress bar
  std::span<const StyleEntry> styles;  // StyleTable() in the product
};

// Runs one command line (without the program name) and returns the exit code.
int RunCli(std::span<const std::string> args, CliEnvironment& env);

// The executable's whole main(): the system platform, the standard streams
// and the product's style table.
int CliMain(int argc, char** argv, bool stderr_is_terminal);

// Prints the engine's messages as "tessarine: TEXT", clearing the progress
// line first so a message never lands in the middle of the bar.
class CliReporter final : public Reporter {
 public:
  CliReporter(std::ostream& err, ProgressBar* progress) : m_err(err), m_progress(progress) {}
  void ShowMessage(std::string_view text) override;

 private:
  std::ostream& m_err;
  ProgressBar* m_progress;
};

}  // namespace tess::cli
