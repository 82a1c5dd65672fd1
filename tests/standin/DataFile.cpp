#include "tests/standin/DataFile.h"

#include <gtest/gtest.h>

#include <atomic>

#include "com/Text.h"

namespace standin::test {
void Silence::Failed(const tsql::Error& error) {
  ADD_FAILURE() << error.what();
}

DataFile::DataFile(int number) {
  static std::atomic<int> last{0};
  std::wstring temporary(MAX_PATH, L'\0');
  temporary.resize(GetTempPathW(MAX_PATH, temporary.data()));
  folder_ = temporary + L"standin" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++last);
  // An earlier process of this number may have left a file that was open at its end.
  Remove();
  CreateDirectoryW(folder_.c_str(), nullptr);
  Silence sink;
  tsql::Session::Open(tsql::Database::Open(com::ToUtf8(path()), tsql::OpenMode::Create))
      ->Execute("CREATE TABLE t (FInterID int NOT NULL, FName nvarchar(20) NULL) INSERT INTO t VALUES (" +
                    std::to_string(number) + ", 'one')",
                {}, sink);
}

DataFile::~DataFile() {
  Remove();
}

void DataFile::Remove() const {
  for (const wchar_t* suffix : {L"", L"-wal", L"-shm"}) DeleteFileW((path() + suffix).c_str());
  RemoveDirectoryW(folder_.c_str());
}

bool DataFile::IsOpen() const {
  HANDLE file = CreateFileW(path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
  CloseHandle(file);
  return false;
}

} // namespace standin::test
