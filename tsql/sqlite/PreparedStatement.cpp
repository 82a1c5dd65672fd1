#include "tsql/sqlite/PreparedStatement.h"

namespace tsql {

void ThrowFailure(sqlite3* connection) {
  throw SqliteFailure(sqlite3_extended_errcode(connection), sqlite3_errmsg(connection));
}

void PreparedStatement::Bind(int index, const Datum& value, sqlite3_destructor_type lifetime) {
  sqlite3_stmt* statement = statement_.get();
  const auto size = static_cast<sqlite3_uint64>(value.text.size());
  int result = SQLITE_OK;
  switch (value.kind) {
  case Datum::Kind::Null: result = sqlite3_bind_null(statement, index); break;
  case Datum::Kind::Integer: result = sqlite3_bind_int64(statement, index, value.integer); break;
  case Datum::Kind::Real: result = sqlite3_bind_double(statement, index, value.real); break;
  case Datum::Kind::Text:
    result = sqlite3_bind_text64(statement, index, value.text.data(), size, lifetime, SQLITE_UTF8);
    break;
  case Datum::Kind::Blob:
    result = sqlite3_bind_blob64(statement, index, value.text.data(), size, lifetime);
    break;
  }
  if (result != SQLITE_OK) ThrowFailure(sqlite3_db_handle(statement));
}

bool PreparedStatement::Step() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  ThrowFailure(sqlite3_db_handle(statement_.get()));
}

} // namespace tsql
