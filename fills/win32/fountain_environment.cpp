// The fountain windows' message box. The text is copied into a fixed buffer
// so that showing a message (often "Memory error") needs no memory.
#include "fills/win32/fountain_environment.h"

#include <algorithm>
#include <cstring>

#include "shell/strings.h"

namespace tess::win32 {

void FountainMessages::ShowMessage(std::string_view text) {
  char buffer[1024];
  size_t n = std::min(text.size(), sizeof buffer - 1);
  std::memcpy(buffer, text.data(), n);
  buffer[n] = '\0';
  MessageBoxA(m_owner, buffer, "Message", MB_OK);
}

void FountainMessages::Show(int string_id) { ShowMessage(StringText(string_id)); }

}  // namespace tess::win32
