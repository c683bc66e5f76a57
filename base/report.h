// The one way the engine tells a person that something went wrong. Front ends
// implement it: the command-line host prints the text, the Windows dialog shows
// a message box captioned "Message". The engine never formats for a medium.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tess {

class Reporter {
 public:
  virtual ~Reporter() = default;
  virtual void ShowMessage(std::string_view text) = 0;
};

// Keeps every message; used by tests and by hosts that report at the end.
class RecordingReporter final : public Reporter {
 public:
  void ShowMessage(std::string_view text) override { messages.emplace_back(text); }
  std::vector<std::string> messages;
};

}  // namespace tess
