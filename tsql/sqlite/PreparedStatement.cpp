#include "tsql/sqlite/PreparedStatement.h"

namespace tsql {

void ThrowFailure(sqlite3* connection) {
  throw SqliteFailure(sqlite3_extended_errcode(connection), sqlite3_errmsg(connection));
}

void PreparedStatement::Bind(int index, const Datum& value) {
  Bind(index, value, SQLITE_STATIC);
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

std::string_view PreparedStatement::ColumnText(int index) const {
  const void* bytes = sqlite3_column_blob(statement_.get(), index);
  const int size = sqlite3_column_bytes(statement_.get(), index);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<size_t>(size)};
}

Datum PreparedStatement::ColumnDatum(int index) const {
  sqlite3_stmt* statement = statement_.get();
  switch (sqlite3_column_type(statement, index)) {
  case SQLITE_INTEGER: return Datum::OfInteger(sqlite3_column_int64(statement, index));
  case SQLITE_FLOAT: return Datum::OfReal(sqlite3_column_double(statement, index));
  case SQLITE_TEXT: return Datum::OfText(std::string(ColumnText(index)));
  case SQLITE_BLOB: return Datum::OfBlob(std::string(ColumnText(index)));
  default: return {};
  }
}

} // namespace tsql
