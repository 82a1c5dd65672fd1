#include "tsql/sqlite/Connection.h"

#include <cassert>
#include <string_view>

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

namespace {

// Whether a statement of the connection is between its first step and its end.
[[maybe_unused]] bool HasRunning(sqlite3* connection) {
  for (sqlite3_stmt* each = sqlite3_next_stmt(connection, nullptr); each != nullptr;
       each = sqlite3_next_stmt(connection, each))
    if (sqlite3_stmt_busy(each) != 0) return true;
  return false;
}

[[maybe_unused]] bool ChangesSchema(std::string_view sql) {
  return sql.starts_with("CREATE ") || sql.starts_with("DROP ") || sql.starts_with("ALTER ");
}

} // namespace

void Connection::Run(const char* sql) const {
  // A statement that runs would end with SQLITE_ABORT at the next table that it opens.
  assert(!ChangesSchema(sql) || !HasRunning(Handle()));
  if (sqlite3_exec(Handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) ThrowFailure(Handle());
}

} // namespace tsql
