#include "tests/standin/SqliteFile.h"

#include <windows.h>

#include <atomic>

#include "com/Text.h"
#include "odbc/Session.h"

namespace standin::test {
namespace {

// The name that the driver's package gives it: Debian's, and its author's for Windows.
std::wstring DriverName(bool underWine) {
  return underWine ? L"SQLite3" : L"SQLite3 ODBC Driver";
}

using UnixNameOf = char* __cdecl(LPCWSTR);

// Wine's own function, for a driver that is a Unix library has Unix paths; null on Windows.
UnixNameOf* FindUnixNameOf() {
  const FARPROC function = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
  return reinterpret_cast<UnixNameOf*>(reinterpret_cast<void*>(function));
}

} // namespace

std::wstring SqliteConnection(const std::wstring& path) {
  UnixNameOf* const unixNameOf = FindUnixNameOf();
  std::wstring name = path;
  if (unixNameOf) {
    char* const converted = unixNameOf(path.c_str());
    if (converted) name = com::FromUtf8(converted);
    HeapFree(GetProcessHeap(), 0, converted);
  }
  return L"DRIVER={" + DriverName(unixNameOf != nullptr) + L"};Database=" + name;
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
