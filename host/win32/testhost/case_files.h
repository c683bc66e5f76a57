// What the test host's cases share: the configuration file in the test's
// application-data folder, plain text files, and running one dialog.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>

#include "host/win32/testhost/cases.h"
#include "host/win32/testhost/host_double.h"
#include "host/win32/testhost/session.h"

namespace tess::testhost {

std::string ConfigPath(const Context& context);
std::string ReadFile(const std::string& path);
// Fails the case when the file cannot be written.
void WriteFile(const std::string& path, const std::string& text);
bool FileExists(const std::string& path);

// The value of `key` in configuration text ("Key = value" lines), or "<missing>".
std::string ConfigValue(const std::string& text, const std::string& key);

// The baseline with some keys changed, written where the dialog reads it.
void UseConfiguration(const Context& context, const std::map<std::string, std::string>& changes);

// Opens the dialog, lets it settle, runs `body`, and presses Cancel unless
// the body closed it.
void WithDialog(Context& context, HostDouble& host, const std::function<void(Session&, HWND)>& body);

// Fails the case with the host's first complaint, if any.
void ExpectNoHostProblems(const HostDouble& host);

// Polls until `ready` holds; the sample waits for timers, which Settle does not.
template <class Predicate>
bool Eventually(Predicate ready, int timeout_ms = 10000) {
  for (int waited = 0; waited < timeout_ms; waited += 20) {
    if (ready()) return true;
    Sleep(20);
  }
  return ready();
}

}  // namespace tess::testhost
