// Browser launching: the address rules of the product, then one call to the
// platform. Out-of-memory while building an address counts as a failed launch.
#include "shell/browser.h"

#include <cstdio>
#include <new>

#include "shell/strings.h"

namespace tess {

std::string EscapeAddress(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == ' ') {
      // The product's "%%%02.2X": the precision already gives two digits.
      char code[4];
      std::snprintf(code, sizeof code, "%%%.2X", static_cast<unsigned char>(c));
      out += code;
    } else {
      out += c;
    }
  }
  return out;
}

std::string BrowserAddress(std::string_view text, std::string_view anchor) {
  if (text.starts_with("http")) return EscapeAddress(text);
  return "file:///" + EscapeAddress(text) + EscapeAddress(anchor);
}

int OpenInBrowser(Platform& platform, Reporter& reporter, std::string_view text,
                  std::string_view anchor, bool maximised) {
  bool launched = false;
  try {
    launched = platform.LaunchBrowser(BrowserAddress(text, anchor), std::string(text),
                                      maximised);
  } catch (const std::bad_alloc&) {
    launched = false;
  }
  if (!launched) reporter.ShowMessage(StringText(kStrManualPageError));
  return 1;
}

bool OpenGeneratedFile(Platform& platform, const std::string& path, bool maximised) {
  return platform.OpenDocument(path, maximised);
}

}  // namespace tess
