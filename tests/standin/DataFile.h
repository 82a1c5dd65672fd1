// DataFile: a database file of the test's own, in a folder of its own, with the table "t" and its one row.
#pragma once

#include <windows.h>

#include <string>

namespace standin::test {

class DataFile {
 public:
  // The row has this number.
  explicit DataFile(int number);
  ~DataFile();
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;

  const std::wstring& folder() const { return folder_; }
  std::wstring path() const { return folder_ + L"\\data.db"; }
  std::wstring Dsn() const { return L"Provider=Embedded;Data Source=" + path(); }
  // Whether somebody has the file open.
  bool IsOpen() const;

 private:
  std::wstring folder_;
};

} // namespace standin::test
