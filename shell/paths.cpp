// Per-user path composition. Every function returns a fresh string, so unlike
// the static buffers of old there is nothing to copy before the next call.
#include "shell/paths.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace tess {
namespace {

// `folder` + separator unless it already ends in one; empty stays empty.
std::string WithSeparator(std::string folder, char sep) {
  if (!folder.empty() && folder.back() != sep) folder += sep;
  return folder;
}

}  // namespace

std::string AppDataPath(Platform& platform, std::string_view sub) {
  const char sep = platform.PathSeparator();
  std::string path = WithSeparator(platform.AppDataFolder(), sep);
  if (path.empty()) return path;
  path += kMakerFolder;
  path += sep;
  path += sub;
  return path;
}

std::string DocumentsPath(Platform& platform, std::string_view sub) {
  std::string path = WithSeparator(platform.DocumentsFolder(), platform.PathSeparator());
  if (path.empty()) return path;
  path += sub;
  return path;
}

std::string PluginDataPath(Platform& platform, std::string_view name) {
  std::string path = AppDataPath(platform, "");
  path += kPluginFolder;
  path += platform.PathSeparator();
  path += name;
  return path;
}

std::string FillFilePath(Platform& platform, int control_id) {
  // The product's "Fill%05.5d.flp": the precision alone pads to five digits.
  char file[32];
  std::snprintf(file, sizeof file, "Fill%.5d.flp", control_id);
  std::string sub(kPluginFolder);
  sub += platform.PathSeparator();
  sub += file;
  return AppDataPath(platform, sub);
}

std::string ConfigFilePath(Platform& platform) {
  return AppDataPath(platform, kConfigFileName);
}

bool EnsureFolderExists(const std::string& folder) {
  if (folder.empty()) return false;
  try {
    std::error_code ec;
    std::filesystem::path p(folder);
    if (std::filesystem::is_directory(p, ec)) return true;
    std::filesystem::create_directories(p, ec);
    return std::filesystem::is_directory(p, ec);
  } catch (...) {
    return false;  // path conversion can throw bad_alloc
  }
}

}  // namespace tess
