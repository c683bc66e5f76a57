// A fresh folder under the system's temporary folder for one test, removed
// with everything in it when the test ends. Tests write nowhere else.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace tess::testing {

class TempFolder {
 public:
  TempFolder() {
    static std::atomic<int> counter{0};
    std::random_device random;
    std::filesystem::path base = std::filesystem::temp_directory_path();
    do {
      m_path = base / ("tessarine-test-" + std::to_string(random()) + "-" + std::to_string(counter++));
    } while (std::filesystem::exists(m_path));
    std::filesystem::create_directories(m_path);
  }
  ~TempFolder() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string path() const { return m_path.string(); }
  std::string operator/(const std::string& name) const { return (m_path / name).string(); }

  // Every file below the folder, as paths relative to it, sorted.
  std::vector<std::string> Files() const {
    std::vector<std::string> out;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path))
      if (entry.is_regular_file()) out.push_back(std::filesystem::relative(entry.path(), m_path).string());
    std::sort(out.begin(), out.end());
    return out;
  }

 private:
  std::filesystem::path m_path;
};

inline std::vector<uint8_t> ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// The same for text files, byte for byte (no line-end translation).
inline std::string ReadText(const std::string& path) {
  std::vector<uint8_t> bytes = ReadBytes(path);
  return std::string(bytes.begin(), bytes.end());
}

inline void WriteText(const std::string& path, const std::string& text) {
  WriteBytes(path, std::vector<uint8_t>(text.begin(), text.end()));
}

}  // namespace tess::testing
