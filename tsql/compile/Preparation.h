// Prepares the SQL that the emitter wrote.
#pragma once

#include "tsql/sqlite/Connection.h"

namespace tsql {

// Where SQLite's own limits refuse a statement, the error is the server's for too many tables (106) or too
// deep nesting (191).
PreparedStatement Prepare(const Connection& connection, const std::string& sql);

} // namespace tsql
