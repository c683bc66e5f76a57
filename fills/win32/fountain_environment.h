// What the fountain windows need from the program around them: the module
// with their resources, the platform (files, Shift, clock), the host's
// colour chooser and its help. One environment serves every fountain
// control of a dialog and must outlive them; nothing here owns a window.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <functional>
#include <string_view>

#include "base/report.h"
#include "image/image.h"
#include "platform/platform.h"
#include "shell/help.h"

namespace tess::win32 {

struct FountainEnvironment {
  // The module holding resources/fountains.rc (dialogs and cursor 6001).
  HINSTANCE instance = nullptr;
  // Null: SystemPlatform().
  Platform* platform = nullptr;
  // Asks for a colour, starting from the one given; false when the person
  // (or the host) declined. Empty: colours cannot be changed.
  std::function<bool(Colour&)> choose_colour;
  // Null: Help shows the product's help error.
  HelpService* help = nullptr;
};

inline Platform& PlatformOf(const FountainEnvironment& environment) {
  return environment.platform ? *environment.platform : SystemPlatform();
}

// The product's message box: caption "Message", OK only, owned by `owner`.
class FountainMessages final : public Reporter {
 public:
  explicit FountainMessages(HWND owner) : m_owner(owner) {}
  // Never throws: a text that cannot be copied is cut.
  void ShowMessage(std::string_view text) override;
  // The text of a string-table id.
  void Show(int string_id);

 private:
  HWND m_owner;
};

}  // namespace tess::win32
