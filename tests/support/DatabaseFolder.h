// DatabaseFolder: a folder of the test's own with an empty database file "data.db"; it goes with this object,
// and whatever else is in it.
#pragma once

#include <windows.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <system_error>

#include "com/Text.h"
#include "tsql/tsql.h"

namespace com::test {

class DatabaseFolder {
 public:
  DatabaseFolder() {
    static std::atomic<int> last{0};
    std::wstring temporary(MAX_PATH, L'\0');
    temporary.resize(GetTempPathW(MAX_PATH, temporary.data()));
    path_ = temporary + L"database" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++last);
    // An earlier process of this number may have left files that were open at its end.
    Remove();
    CreateDirectoryW(path_.c_str(), nullptr);
    tsql::Database::Open(ToUtf8(file()), tsql::OpenMode::Create);
  }
  ~DatabaseFolder() { Remove(); }
  DatabaseFolder(const DatabaseFolder&) = delete;
  DatabaseFolder& operator=(const DatabaseFolder&) = delete;

  const std::wstring& path() const { return path_; }
  std::wstring file() const { return path_ + L"\\data.db"; }
  // A descriptor of the stand-in.
  std::wstring Dsn() const { return L"Provider=Embedded;Data Source=" + file(); }

 private:
  void Remove() const {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::wstring path_;
};

} // namespace com::test
