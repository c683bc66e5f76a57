// A Platform whose every answer is a public field, and which records what the
// engine asked it to open. Tests never touch the real home folder or a browser.
#pragma once

#include <string>
#include <vector>

#include "platform/platform.h"

namespace tess::testing {

class FakePlatform final : public Platform {
 public:
  std::string app_data = "/tmp/tess-fake/appdata";
  std::string documents = "/tmp/tess-fake/documents";
  char separator = '/';
  bool shift_down = false;
  LocalTime now{2026, 10, 22, 0, 9, 5, 7};  // Sun Nov 22 09:05:07 2026
  bool open_succeeds = true;
  bool browser_succeeds = true;

  struct Launch {
    std::string target;
    std::string original;
    bool maximised;
  };
  std::vector<Launch> opened_documents;
  std::vector<Launch> browser_launches;

  std::string AppDataFolder() override { return app_data; }
  std::string DocumentsFolder() override { return documents; }
  char PathSeparator() const override { return separator; }
  bool ShiftDown() override { return shift_down; }
  LocalTime Now() override { return now; }
  bool OpenDocument(const std::string& path, bool maximised) override {
    opened_documents.push_back({path, path, maximised});
    return open_succeeds;
  }
  bool LaunchBrowser(const std::string& address, const std::string& original,
                     bool maximised) override {
    browser_launches.push_back({address, original, maximised});
    return browser_succeeds;
  }
};

}  // namespace tess::testing
