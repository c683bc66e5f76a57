// The `tessarine` executable. Everything but asking whether stderr is a
// terminal lives in tess_cli, so tests run the same code in process.
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

#include "host/cli/cli.h"
#include "platform/safe_file.h"

int main(int argc, char** argv) {
  // Ctrl-C or a kill during a write must not leave a temporary behind.
  tess::RemoveTemporariesOnSignals();
#ifdef _WIN32
  _setmode(0, _O_BINARY);  // frames arrive on standard input as raw bytes
  return tess::cli::CliMain(argc, argv, _isatty(2) != 0);
#else
  return tess::cli::CliMain(argc, argv, isatty(2) != 0);
#endif
}
