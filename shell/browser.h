// Opening web pages and local files in a browser. Addresses are built here,
// portably; starting a program is the platform's job. Only spaces are escaped:
// the rest of a path (backslashes, "#", "%") reaches the browser as it was.
#pragma once

#include <string>
#include <string_view>

#include "base/report.h"
#include "platform/platform.h"

namespace tess {

// Every space becomes "%20"; every other character is copied.
std::string EscapeAddress(std::string_view text);

// A text starting with "http" (exactly those lower-case letters) is a web
// address: escaped, anchor ignored. Anything else is a local file:
// "file:///" + escaped text + escaped anchor (the anchor carries its own "#").
std::string BrowserAddress(std::string_view text, std::string_view anchor);

// Starts a browser on `text` (and `anchor`); when none starts, shows the
// manual-page error through `reporter`. Returns 1 in every case.
int OpenInBrowser(Platform& platform, Reporter& reporter, std::string_view text,
                  std::string_view anchor, bool maximised);

// Opens a generated file with the program associated with it. False when the
// system refused; the caller decides what to tell the person.
bool OpenGeneratedFile(Platform& platform, const std::string& path, bool maximised);

}  // namespace tess
