#include "tsql/sqlite/Connection.h"

namespace tsql {

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
  if (result != SQLITE_OK) ThrowFailure(Handle());
  return PreparedStatement(statement);
}

void Connection::Run(const char* sql) const {
  if (sqlite3_exec(Handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) ThrowFailure(Handle());
}

} // namespace tsql
