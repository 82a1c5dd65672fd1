// Command lines and file names in UTF-8 on every system. On Windows a program's narrow arguments are in some
// code page, so a shell takes the wide ones there.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tsql::shell {

inline std::filesystem::path PathOf(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

// The arguments behind the program's name.
template <typename Char>
std::vector<std::string> ArgumentsOf(int count, Char** arguments) {
  std::vector<std::string> list;
  for (int i = 1; i < count; ++i) {
    const std::u8string utf8 = std::filesystem::path(arguments[i]).u8string();
    list.emplace_back(utf8.begin(), utf8.end());
  }
  return list;
}

} // namespace tsql::shell
