// The `tessarine` executable. Everything but asking whether stderr is a
// terminal lives in tess_cli, so tests run the same code in process.
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

#include "host/cli/cli.h"

int main(int argc, char** argv) {
#ifdef _WIN32
  _setmode(0, _O_BINARY);  // frames arrive on standard input as raw bytes
  return tess::cli::CliMain(argc, argv, _isatty(2) != 0);
#else
  return tess::cli::CliMain(argc, argv, isatty(2) != 0);
#endif
}
