// SQLite's prepared statements as C++ objects. A failure is thrown as SqliteFailure; whoever runs the T-SQL
// statement translates it into the server's error, because only there the statement and its table are known.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <stdexcept>

#include "tsql/sqlite/StoredValue.h"

namespace tsql {

struct SqliteFailure : std::runtime_error {
  SqliteFailure(int resultCode, const std::string& text) : std::runtime_error(text), code(resultCode) {}
  int code; // SQLite's extended result code
};

[[noreturn]] void ThrowFailure(sqlite3* connection);

class PreparedStatement {
 public:
  PreparedStatement() = default;
  explicit PreparedStatement(sqlite3_stmt* statement) : statement_(statement) {}
  explicit operator bool() const { return statement_ != nullptr; }

  // From 1; the caller keeps the text until Reset.
  void Bind(int index, const Datum& value) { Bind(index, value, SQLITE_STATIC); }
  void BindCopy(int index, const Datum& value) { Bind(index, value, SQLITE_TRANSIENT); }
  bool Step(); // true on a row
  void Reset() { sqlite3_reset(statement_.get()); }
  sqlite3_value* Column(int index) const { return sqlite3_column_value(statement_.get(), index); }
  Datum ColumnDatum(int index) const { return DatumOf(Column(index)); }
  int64_t ColumnInteger(int index) const { return sqlite3_column_int64(statement_.get(), index); }
  std::string_view ColumnText(int index) const { return BytesOf(Column(index)); }
  sqlite3_stmt* Handle() const { return statement_.get(); }

 private:
  void Bind(int index, const Datum& value, sqlite3_destructor_type lifetime);

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

// Resets a statement when its use ends, by an exception too.
class StatementUse {
 public:
  explicit StatementUse(PreparedStatement& statement) : statement_(statement) {}
  StatementUse(const StatementUse&) = delete;
  StatementUse& operator=(const StatementUse&) = delete;
  ~StatementUse() { statement_.Reset(); }

 private:
  PreparedStatement& statement_;
};

} // namespace tsql
