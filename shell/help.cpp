// Manual-page help through a host-provided service. Nothing escapes towards
// the caller: every failure ends as the one help error message.
#include "shell/help.h"

#include <new>

#include "shell/strings.h"

namespace tess {

std::string HelpReference(std::string_view page, std::string_view anchor) {
  std::string reference(page);
  if (!anchor.empty()) {
    reference += '#';
    reference += anchor;
  }
  return reference;
}

int ShowHelp(HelpService* service, Reporter& reporter, std::string_view anchor,
             std::string_view page) {
  bool shown = false;
  if (service) {
    try {
      shown = service->DisplayHelp(HelpReference(page, anchor));
    } catch (const std::bad_alloc&) {
      shown = false;
    }
  }
  if (!shown) reporter.ShowMessage(StringText(kStrHelpError));
  return 1;
}

}  // namespace tess
