// The command line as fuzz input: arguments separated by zero bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

inline std::vector<std::string> SplitArguments(std::string_view text, size_t most) {
  std::vector<std::string> args;
  while (args.size() < most) {
    const size_t end = text.find('\0');
    args.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return args;
}
