// Replays a corpus without libFuzzer: every file of the folders (or the files)
// named on the command line goes once through the target, so the normal
// sanitizer build checks every seed and every kept find on each test run.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool Replay(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "cannot read %s\n", file.c_str());
    return false;
  }
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  // A copy of exactly the input's size, so reading past it is caught.
  std::vector<uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.empty() ? nullptr : input.data(), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    std::filesystem::path path(argv[i]);
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
      for (const auto& entry : std::filesystem::directory_iterator(path, ec))
        if (entry.is_regular_file()) files.push_back(entry.path());
    } else {
      files.push_back(path);
    }
  }
  // An empty corpus would pass without testing anything.
  if (files.empty()) {
    std::fprintf(stderr, "no corpus files given\n");
    return 1;
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    if (!Replay(file)) return 1;
  }
  std::printf("replayed %zu inputs\n", files.size());
  return 0;
}
