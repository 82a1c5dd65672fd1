// DataFile: a database file of the test's own, in a folder of its own, with the table "t" and its one row.
#pragma once

#include <windows.h>

#include <string>

#include "tests/support/DatabaseFolder.h"
#include "tsql/tsql.h"

namespace standin::test {

// Takes a batch's output and keeps nothing; a failure of the batch fails the test.
struct Silence : tsql::ResultSink {
  void BeginRows(std::span<const tsql::Column> /*columns*/) override {}
  void Row(std::span<const tsql::Value> /*values*/) override {}
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& error) override;
};

class DataFile {
 public:
  // The row has this number.
  explicit DataFile(int number);

  const std::wstring& folder() const { return folder_.path(); }
  std::wstring path() const { return folder_.file(); }
  std::wstring Dsn() const { return folder_.Dsn(); }
  // Whether somebody has the file open.
  bool IsOpen() const;

 private:
  com::test::DatabaseFolder folder_;
};

} // namespace standin::test
