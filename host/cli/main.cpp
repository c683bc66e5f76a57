// The `tessarine` executable. Everything but asking whether stderr is a
// terminal lives in tess_cli, so tests run the same code in process.
#ifdef _WIN32
#include <io.h>
#define TESS_ISATTY(fd) _isatty(fd)
#else
#include <unistd.h>
#define TESS_ISATTY(fd) isatty(fd)
#endif

#include "host/cli/cli.h"

int main(int argc, char** argv) { return tess::cli::CliMain(argc, argv, TESS_ISATTY(2) != 0); }
