// Dispatch of one command line, the message printer, and the executable's
// environment. This is the one place exceptions stop: whatever escapes a
// command becomes a message and exit code 1.
#include "host/cli/cli.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <vector>

#include "host/cli/cli_args.h"
#include "host/cli/cli_records.h"
#include "host/cli/commands.h"
#include "shell/strings.h"
#include "styles/style_table.h"

namespace tess::cli {

void CliReporter::ShowMessage(std::string_view text) {
  if (m_progress) m_progress->Clear();
  m_err << "tessarine: " << text << '\n' << std::flush;
}

namespace {

int Dispatch(std::span<const std::string> args, CliEnvironment& env) {
  CliArgs parsed;
  std::string error;
  if (!ParseArgs(args, &parsed, &error)) {
    env.err << "tessarine: " << error << '\n';
    return kExitUsage;
  }
  if (parsed.command == Command::kNone) {
    env.out << (parsed.version && !parsed.help ? VersionText() : GeneralHelp());
    return kExitOk;
  }
  if (parsed.command == Command::kHelp) {
    if (parsed.operands.empty()) {
      env.out << GeneralHelp();
    } else {
      std::string topic = TopicHelp(parsed.operands[0]);
      env.out << (topic.empty() ? CommandHelp(FindCommand(parsed.operands[0])) : topic);
    }
    return kExitOk;
  }
  if (parsed.help) {
    env.out << CommandHelp(parsed.command);
    return kExitOk;
  }
  switch (parsed.command) {
    case Command::kList: return RunList(parsed, env);
    case Command::kRender:
    case Command::kTest:
    case Command::kPreview: return RunBuildCommand(parsed, env);
    case Command::kEncode: return RunEncode(parsed, env);
    case Command::kSwatch: return RunSwatch(parsed, env);
    case Command::kLibrary: return RunLibrary(parsed, env);
    default: return kExitUsage;
  }
}

}  // namespace

int RunCli(std::span<const std::string> args, CliEnvironment& env) {
  try {
    return Dispatch(args, env);
  } catch (const std::bad_alloc&) {
    env.err << "tessarine: " << StringText(kStrMemoryError) << '\n';
  } catch (const std::exception& e) {
    env.err << "tessarine: internal error: " << e.what() << '\n';
  } catch (...) {
    env.err << "tessarine: internal error\n";
  }
  return kExitFailure;
}

int CliMain(int argc, char** argv, bool stderr_is_terminal) {
  try {
    std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + (argc > 0 ? argc : 0));
    CliEnvironment env{SystemPlatform(), std::cout, std::cerr, &std::cin, stderr_is_terminal,
                       StyleTable()};
    int code = RunCli(args, env);
    std::cout.flush();
    return std::cout.fail() ? kExitFailure : code;
  } catch (...) {
    // Only building the argument list can get here, and only for want of memory.
    std::fputs("tessarine: Memory error\n", stderr);
    return kExitFailure;
  }
}

}  // namespace tess::cli
