#include "tests/standin/SqliteFile.h"

#include <windows.h>

#include <atomic>

#include "com/Text.h"
#include "odbc/Session.h"
#include "tests/support/UnixPath.h"

namespace standin::test {
namespace {

// The name that the driver's package gives it: Debian's, and its author's for Windows.
std::wstring DriverName() {
  return com::test::IsUnderWine() ? L"SQLite3" : L"SQLite3 ODBC Driver";
}

} // namespace

std::wstring SqliteConnection(const std::wstring& path) {
  return L"DRIVER={" + DriverName() + L"};Database=" + com::test::UnixPath(path);
}

std::wstring WhyNoSqliteDriver() {
  static const std::wstring why = [] {
    try {
      const odbc::Session session(SqliteConnection(L"") + L":memory:");
      return std::wstring();
    } catch (const odbc::Error& error) {
      return com::FromUtf8(error.what());
    }
  }();
  return why;
}

SqliteFile::SqliteFile() {
  static std::atomic<int> last{0};
  std::wstring temporary(MAX_PATH, L'\0');
  temporary.resize(GetTempPathW(MAX_PATH, temporary.data()));
  folder_ = temporary + L"sqlite" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++last);
  CreateDirectoryW(folder_.c_str(), nullptr);
}

SqliteFile::~SqliteFile() {
  for (const wchar_t* suffix : {L"", L"-wal", L"-shm", L"-journal"})
    DeleteFileW((folder_ + L"\\data.db" + suffix).c_str());
  RemoveDirectoryW(folder_.c_str());
}

std::wstring SqliteFile::ConnectionText() const {
  return SqliteConnection(folder_ + L"\\data.db");
}

} // namespace standin::test
