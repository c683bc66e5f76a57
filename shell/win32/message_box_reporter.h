// The dialogs' Reporter: every message of the product appears in a message
// box captioned "Message" with an OK button only, owned by the dialog that
// was active when it happened.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string_view>

#include "base/report.h"

namespace tess::win32 {

class MessageBoxReporter final : public Reporter {
 public:
  explicit MessageBoxReporter(HWND owner = nullptr) : m_owner(owner) {}
  void set_owner(HWND owner) { m_owner = owner; }
  // Never throws: a text that cannot be copied is shown cut at the copy
  // buffer's end.
  void ShowMessage(std::string_view text) override;

 private:
  HWND m_owner;
};

// The caption every message box of the product carries.
inline constexpr const char* kMessageCaption = "Message";

}  // namespace tess::win32
