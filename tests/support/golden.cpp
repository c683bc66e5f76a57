// Golden checksum files: reading, comparing and (on request) rewriting them.
// Lines are "name checksum" with the checksum as 16 hex digits; blank lines
// and lines starting with '#' are ignored.
#include "tests/support/golden.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string_view>

#include "tests/support/test_support.h"

namespace tess::testing {
namespace {

bool RegenerateRequested() {
  const char* flag = std::getenv("TESS_REGENERATE_GOLDEN");
  return flag && std::string_view(flag) == "1";
}

std::string Hex(uint64_t value) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
  return text;
}

// Expected checksums by case name; false when the file cannot be read.
bool ReadExpected(const std::string& path, std::map<std::string, uint64_t>& out) {
  std::ifstream in(path);
  if (!in) return false;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string name, hex;
    if (fields >> name >> hex) out[name] = std::strtoull(hex.c_str(), nullptr, 16);
  }
  return true;
}

bool WriteCases(const std::string& path,
                const std::vector<std::pair<std::string, uint64_t>>& cases) {
  std::ofstream out(path, std::ios::trunc);
  out << "# name checksum (FNV-1a 64 of the rendered bytes). Rewrite on purpose with\n"
         "# cmake --build <build> --target regenerate-golden\n";
  for (const auto& [name, checksum] : cases) out << name << ' ' << Hex(checksum) << '\n';
  return static_cast<bool>(out);
}

}  // namespace

uint64_t Fnv1a64(const uint8_t* data, size_t size) {
  uint64_t hash = 0xcbf29ce484222325ull;
  for (size_t i = 0; i < size; ++i) {
    hash ^= data[i];
    hash *= 0x100000001b3ull;
  }
  return hash;
}

uint64_t ImageChecksum(const ImageBlock& image) {
  return image ? Fnv1a64(image.data(), image.size()) : 0;
}

void GoldenSet::Add(std::string name, uint64_t checksum) {
  m_cases.emplace_back(std::move(name), checksum);
}

std::string GoldenSet::ExpectedPath() const {
  return SourceDir() + "/tests/data/golden/" + m_stem + ".txt";
}

std::string GoldenSet::ActualPath() const {
  return std::filesystem::absolute(m_stem + ".actual.txt").string();
}

::testing::AssertionResult GoldenSet::Verify() const {
  if (RegenerateRequested()) {
    if (!WriteCases(ExpectedPath(), m_cases))
      return ::testing::AssertionFailure() << "cannot write " << ExpectedPath();
    std::printf("rewrote %s (%zu cases)\n", ExpectedPath().c_str(), m_cases.size());
    return ::testing::AssertionSuccess();
  }
  std::map<std::string, uint64_t> expected;
  std::ostringstream report;
  if (!ReadExpected(ExpectedPath(), expected)) report << "  no file " << ExpectedPath() << '\n';
  std::map<std::string, bool> seen;
  for (const auto& [name, checksum] : m_cases) {
    seen[name] = true;
    auto it = expected.find(name);
    if (it == expected.end())
      report << "  " << name << ": not in the golden file, actual " << Hex(checksum) << '\n';
    else if (it->second != checksum)
      report << "  " << name << ": expected " << Hex(it->second) << ", actual " << Hex(checksum)
             << '\n';
  }
  for (const auto& [name, checksum] : expected)
    if (!seen.count(name)) report << "  " << name << ": expected but not rendered\n";
  std::string problems = report.str();
  if (problems.empty()) {
    std::error_code ignored;
    std::filesystem::remove(ActualPath(), ignored);  // an old mismatch is no longer news
    return ::testing::AssertionSuccess();
  }
  bool written = WriteCases(ActualPath(), m_cases);
  return ::testing::AssertionFailure()
         << "golden checksums differ from " << ExpectedPath() << ":\n"
         << problems
         << (written ? "actual checksums written to " + ActualPath()
                     : "could not write " + ActualPath())
         << "\nif the change is intended, rebuild the target regenerate-golden";
}

}  // namespace tess::testing
