// The configuration file "zephyra1.ini" (found with ConfigFilePath): the two generic
// loops over the key table that read and write it. Neither ever reports an
// error to the user: a missing or unreadable file leaves the settings alone,
// and a failed write keeps the previous file intact.
#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"
#include "shell/settings.h"

namespace tess {

// One read of the file takes at most this many characters, line end included.
inline constexpr size_t kConfigReadChunk = 259;

// The longest text value `key` can hold that reads back whole: its line
// "KEY = VALUE" and the line end must fit one read, or the rest of the value
// is read as a line of its own (and may name another key).
size_t ConfigTextValueMax(std::string_view key);

// Takes every key the file at `path` holds into `settings`. Takes nothing
// while Shift is held, so the user can start from the defaults. True when the
// file was read.
bool ReadSettings(const std::string& path, Settings& settings, Platform& platform);

// Takes every key a configuration file's whole text holds into `settings`,
// line by line as ReadSettings reads the file: each read takes at most 259
// characters, so the rest of a longer line is read as a line of its own.
void ReadSettingsText(std::string_view text, Settings& settings);

// Replaces the file at `path` with every setting, stamped with the platform's
// local time. The folder must exist already. False when nothing was written,
// with the system's reason in *reason; the previous file is then untouched.
bool WriteSettings(const std::string& path, const Settings& settings, Platform& platform,
                   std::string* reason = nullptr);

// One line as read from the file (at most kConfigReadChunk characters, line end included or
// not): a comment, a key with its value, or something to ignore.
void ApplySettingsLine(std::string_view line, Settings& settings);

// The whole file's text for `now`, with "\n" line ends.
std::string FormatSettings(const Settings& settings, const LocalTime& now);

// `now` in the 24-character form "Sun Nov 22 09:05:07 2026".
std::string FormatHeaderTime(const LocalTime& now);

}  // namespace tess
