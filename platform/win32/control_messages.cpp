// Helpers every window of the plug-in shares.
#include "platform/win32/control_messages.h"

#include <algorithm>

namespace tess::win32 {

std::string WindowText(HWND hwnd) {
  int length = GetWindowTextLengthA(hwnd);
  std::string text(static_cast<size_t>(std::max(length, 0)) + 1, '\0');
  int copied = GetWindowTextA(hwnd, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<size_t>(std::max(copied, 0)));
  return text;
}

}  // namespace tess::win32
