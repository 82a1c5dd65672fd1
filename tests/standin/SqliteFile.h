// SqliteFile: a file of SQLite's in a folder of its own, reached through the ODBC driver for SQLite. It needs
// no server, so what the stand-in does with a driver can be tried on any machine.
#pragma once

#include <string>

namespace standin::test {

// Why there is no driver for SQLite in the width of this process; empty when there is one. 32-bit processes
// may lack it; a 64-bit one without it is no reason to skip a test.
std::wstring WhyNoSqliteDriver();

class SqliteFile {
 public:
  SqliteFile();
  ~SqliteFile();
  SqliteFile(const SqliteFile&) = delete;
  SqliteFile& operator=(const SqliteFile&) = delete;

  // As an ODBC connection string and as a descriptor of the stand-in.
  std::wstring ConnectionText() const;
  std::wstring Dsn() const { return L"Provider=ODBC;Connection={" + ConnectionText() + L"}"; }

 private:
  std::wstring folder_;
};

// The connection string for a file of SQLite's; `path` is one of Windows.
std::wstring SqliteConnection(const std::wstring& path);

} // namespace standin::test

// For the first line of a test or of a SetUp.
#define SKIP_WITHOUT_SQLITE_DRIVER()                                                                         \
  if (const std::wstring why = ::standin::test::WhyNoSqliteDriver(); !why.empty() && sizeof(void*) == 4)     \
  GTEST_SKIP() << "no 32-bit ODBC driver for SQLite: " << com::ToUtf8(why)
