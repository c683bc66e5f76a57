// Message boxes for the product's messages. The text is copied into a fixed
// buffer so that showing a message (often "Memory error") needs no memory.
#include "shell/win32/message_box_reporter.h"

#include <algorithm>
#include <cstring>

namespace tess::win32 {

void MessageBoxReporter::ShowMessage(std::string_view text) {
  char buffer[1024];
  size_t n = std::min(text.size(), sizeof buffer - 1);
  std::memcpy(buffer, text.data(), n);
  buffer[n] = '\0';
  MessageBoxA(m_owner, buffer, kMessageCaption, MB_OK);
}

}  // namespace tess::win32
