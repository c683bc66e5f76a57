// Where the product keeps per-user files: the maker's folder "Brindlewood"
// inside the application-data folder, the plug-in's folder "Tessarine 1"
// inside that, and the documents folder. Paths use the platform's separator.
// Nothing here creates a folder; the product's own writers do not either (a
// write into a missing folder simply fails), so a front end that wants the
// folders to exist calls EnsureFolderExists first.
#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace tess {

inline constexpr std::string_view kMakerFolder = "Brindlewood";
inline constexpr std::string_view kPluginFolder = "Tessarine 1";
inline constexpr std::string_view kConfigFileName = "zephyra1.ini";

// App-data folder + separator (unless it already ends in one) + "Brindlewood"
// + separator + sub. Empty when the app-data folder is unknown.
std::string AppDataPath(Platform& platform, std::string_view sub);

// Documents folder + separator (unless present) + sub. Empty when unknown.
std::string DocumentsPath(Platform& platform, std::string_view sub);

// AppDataPath("") + "Tessarine 1" + separator + name. Without an app-data
// folder this is the relative path "Tessarine 1" + separator + name.
std::string PluginDataPath(Platform& platform, std::string_view name);

// The pattern file of fill, tile and fountain control `control_id`:
// AppDataPath("Tessarine 1" + separator + "Fill%05.5d.flp"). Empty without an
// app-data folder, so nothing is read or written.
std::string FillFilePath(Platform& platform, int control_id);

// The configuration file, directly in the maker folder.
std::string ConfigFilePath(Platform& platform);

// Creates `folder` and its parents when missing. True when it exists
// afterwards. Never throws.
bool EnsureFolderExists(const std::string& folder);

}  // namespace tess
