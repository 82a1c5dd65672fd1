#include "tests/standin/DataFile.h"

#include <gtest/gtest.h>

#include "com/Text.h"

namespace standin::test {
void Silence::Failed(const tsql::Error& error) {
  ADD_FAILURE() << error.what();
}

DataFile::DataFile(int number) {
  Silence sink;
  tsql::Session::Open(tsql::Database::Open(com::ToUtf8(path()), tsql::OpenMode::Existing))
      ->Execute("CREATE TABLE t (FInterID int NOT NULL, FName nvarchar(20) NULL) INSERT INTO t VALUES (" +
                    std::to_string(number) + ", 'one')",
                {}, sink);
}

bool DataFile::IsOpen() const {
  HANDLE file = CreateFileW(path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
  CloseHandle(file);
  return false;
}

} // namespace standin::test
