// Files the cases share: the configuration the dialog reads and writes, and
// documents. Every case starts from the baseline configuration with only the
// keys it cares about changed.
#include "host/win32/testhost/case_files.h"

#include <windows.h>

#include <fstream>
#include <sstream>

#include "shell/main_dialog_ids.h"

namespace tess::testhost {

std::string ConfigPath(const Context& context) {
  return context.appdata + "\\Brindlewood\\zephyra1.ini";
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  Expect(static_cast<bool>(out), "cannot write " + path);
}

bool FileExists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The value of `key` in configuration text ("Key = value" lines).
std::string ConfigValue(const std::string& text, const std::string& key) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.rfind(key + " = ", 0) == 0) return line.substr(key.size() + 3);
  }
  return "<missing>";
}

// The baseline with some keys changed, written where the dialog reads it.
void UseConfiguration(const Context& context, const std::map<std::string, std::string>& changes) {
  Expect(!context.baseline.empty(), "no baseline configuration (the Cancel case failed)");
  std::istringstream lines(context.baseline);
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    for (const auto& [key, value] : changes)
      if (line.rfind(key + " = ", 0) == 0) line = key + " = " + value;
    text += line + "\n";
  }
  WriteFile(ConfigPath(context), text);
}

void WithDialog(Context& context, HostDouble& host, const std::function<void(Session&, HWND)>& body) {
  host.set_log(context.log);
  Session session(context.plugin, host, context.shots);
  session.Run(host.MakeRecord(true), [&](Session& s) {
    HWND dialog = s.OpenDialog();
    s.ui().Settle();
    body(s, dialog);
    if (IsWindow(dialog) && !s.WaitReturned(0)) {
      s.ui().Click(dialog, kCancelButton);
      Expect(s.WaitReturned(10000), "Cancel did not close the dialog");
    }
  });
}

void ExpectNoHostProblems(const HostDouble& host) {
  if (!host.problems().empty()) Fail(host.problems().front());
}

}  // namespace tess::testhost
