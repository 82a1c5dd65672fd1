// FileIdentity: which file a path names, for whoever keeps that file open and wants to know again and again
// whether the path still names it.
//
// The file system has a number for each file. To ask for it takes about as long as a short statement, so it
// is asked only when what can be seen of the file for less has changed: its times, among them when its entry
// was changed last, and its size. Another file of the same name has another time of that last change, unless
// both were changed within the same tick of the file system's clock.
#pragma once

#include <windows.h>
#include <winternl.h>

#include <cstdint>
#include <string>

namespace standin::ado {

class FileIdentity {
 public:
  // Of no file.
  FileIdentity() = default;
  // Of the file that the path names now, which is a full one.
  explicit FileIdentity(const std::wstring& fullPath);

  // Whether the path names that file still. False when there was none, or is none now.
  bool Holds();

 private:
  struct Look {
    bool isThere = false;
    FILE_NETWORK_OPEN_INFORMATION seen{};
    bool operator==(const Look& other) const;
  };
  static Look LookAt(const std::wstring& fullPath);
  // 0 when there is no file.
  static uint64_t NumberOf(const std::wstring& fullPath);

  std::wstring path_;
  Look look_;
  uint64_t number_ = 0;
};

} // namespace standin::ado
