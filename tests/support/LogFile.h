// A file that the stand-in's procedure log writes to while this lives.
#pragma once

#include <windows.h>

#include <array>
#include <string>

namespace mbom::test {

class LogFile {
 public:
  LogFile() {
    std::array<wchar_t, MAX_PATH> folder{};
    std::array<wchar_t, MAX_PATH> name{};
    GetTempPathW(MAX_PATH, folder.data());
    GetTempFileNameW(folder.data(), L"log", 0, name.data());
    path_ = name.data();
    Enable();
  }
  ~LogFile() {
    Disable();
    DeleteFileW(path_.c_str());
  }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  void Enable() const { SetEnvironmentVariableW(L"ERP_STANDIN_LOG", path_.c_str()); }
  static void Disable() { SetEnvironmentVariableW(L"ERP_STANDIN_LOG", nullptr); }
  const std::wstring& path() const { return path_; }

 private:
  std::wstring path_;
};

} // namespace mbom::test
