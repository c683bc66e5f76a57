// Files the test host's cases share: the configuration file in the test's
// application-data folder and plain text files.
#pragma once

#include <map>
#include <string>

#include "host/win32/testhost/cases.h"

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

}  // namespace tess::testhost
