// The command line's grammar and the build options it carries: any argument
// list is refused with a one-line reason or parses, a parsed one's options
// apply to fresh settings or are refused with a reason, and a memory size
// read back from its number of bytes is the same size. An accepted colour
// count is one a palette can have.
#include <string>

#include "fills/fill_store.h"
#include "fuzz/cli_support.h"
#include "fuzz/fuzz_check.h"
#include "host/cli/cli_args.h"
#include "host/cli/cli_settings.h"
#include "host/cli/commands.h"
#include "shell/settings.h"
#include "styles/style.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::vector<std::string> args = SplitArguments(FuzzText(data, size), 32);
  tess::cli::CliArgs parsed;
  std::string error;
  if (!tess::cli::ParseArgs(args, &parsed, &error)) {
    FUZZ_CHECK(!error.empty());
    return 0;
  }
  if (parsed.command == tess::cli::Command::kHelp || parsed.help) {
    tess::cli::TopicHelp(parsed.operands.empty() ? std::string_view() : parsed.operands[0]);
    tess::cli::CommandHelp(parsed.command);
  }

  if (parsed.max_memory) {
    int64_t bytes = 0;
    if (tess::cli::ParseMemorySize(*parsed.max_memory, &bytes)) {
      FUZZ_CHECK(bytes > 0);
      int64_t again = 0;
      FUZZ_CHECK(tess::cli::ParseMemorySize(std::to_string(bytes), &again) && again == bytes);
    }
  }

  tess::Settings settings;
  tess::PageRecords records;
  tess::cli::SessionChoices session;
  tess::cli::Failure failure;
  if (!tess::cli::ApplyBuildOptions(parsed, settings, tess::StyleTable(), &session, &failure, &records))
    FUZZ_CHECK(!failure.message.empty() && failure.exit_code != tess::cli::kExitOk);
  else
    FUZZ_CHECK(session.palette_limit >= 2 && session.palette_limit <= 256);
  return 0;
}
