#include "tsql/sqlite/Connection.h"

namespace tsql {
namespace {

std::string Quote(std::string_view text, char mark) {
  std::string quoted(1, mark);
  for (const char character : text) {
    if (character == mark) quoted.push_back(mark);
    quoted.push_back(character);
  }
  quoted.push_back(mark);
  return quoted;
}

[[noreturn]] void Throw(sqlite3* handle) {
  throw SqliteFailure(sqlite3_extended_errcode(handle), sqlite3_errmsg(handle));
}

} // namespace

void PreparedStatement::Bind(int index, const Datum& value) {
  sqlite3_stmt* statement = statement_.get();
  const auto size = static_cast<sqlite3_uint64>(value.text.size());
  switch (value.kind) {
  case Datum::Kind::Null: sqlite3_bind_null(statement, index); break;
  case Datum::Kind::Integer: sqlite3_bind_int64(statement, index, value.integer); break;
  case Datum::Kind::Real: sqlite3_bind_double(statement, index, value.real); break;
  case Datum::Kind::Text:
    sqlite3_bind_text64(statement, index, value.text.data(), size, SQLITE_STATIC, SQLITE_UTF8);
    break;
  case Datum::Kind::Blob:
    sqlite3_bind_blob64(statement, index, value.text.data(), size, SQLITE_STATIC);
    break;
  }
}

bool PreparedStatement::Step() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  Throw(sqlite3_db_handle(statement_.get()));
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

Connection::Connection(const std::string& uri, int flags) {
  sqlite3* handle = nullptr;
  const int result = sqlite3_open_v2(uri.c_str(), &handle, flags, nullptr);
  handle_.reset(handle);
  if (result != SQLITE_OK) throw SqliteFailure(result, handle ? sqlite3_errmsg(handle) : "out of memory");
  sqlite3_extended_result_codes(handle, 1);
}

PreparedStatement Connection::Prepare(const std::string& sql) const {
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v3(Handle(), sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  if (result != SQLITE_OK) Throw(Handle());
  return PreparedStatement(statement);
}

void Connection::Run(const std::string& sql) const {
  if (sqlite3_exec(Handle(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) Throw(Handle());
}

std::string QuoteName(std::string_view name) {
  return Quote(name, '"');
}

std::string QuoteText(std::string_view text) {
  return Quote(text, '\'');
}

} // namespace tsql
