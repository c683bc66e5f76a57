// The commands behind RunCli. Each takes a parsed command line (with --help
// already handled) and returns the exit code; each prints its own failures.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/cli/cli.h"
#include "host/cli/cli_args.h"
#include "styles/style.h"

namespace tess::cli {

// "list" and "list EFFECT".
int RunList(const CliArgs& args, CliEnvironment& env);
// "render", "test" and "preview": build modes 0, 1 and 2.
int RunBuildCommand(const CliArgs& args, CliEnvironment& env);
// "encode FRAMES... -o FILE".
int RunEncode(const CliArgs& args, CliEnvironment& env);

// The file "render" writes without -o: the effect's name in lower case with
// hyphens for spaces, e.g. "phasers-on-stun.gif".
std::string DefaultOutputName(const StyleEntry& style);

// --max-memory's SIZE: a whole number of bytes, or of K, M or G (powers of
// 1024, either case). False when it is not one, is 0 or is past 2^62.
bool ParseMemorySize(std::string_view text, int64_t* bytes);

// The scratch file of "test", in the plug-in's data folder.
inline constexpr char kTestFileName[] = "test.gif";

}  // namespace tess::cli
