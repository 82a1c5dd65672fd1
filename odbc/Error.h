// Error: what an ODBC driver reports, and where reports come from.
#pragma once

#include <string>
#include <vector>

#include "odbc/Api.h"
#include "tsql/tsql.h"

namespace odbc {

// The server's number and text, without the names of driver manager, driver and server in front of it. ODBC
// does not hand over severity, state and line: an error counts as one of severity 16, information as one of
// 0, and state and line are 0.
struct Error : tsql::Error {
  Error(int errorNumber, std::string stateCode, const std::string& text, bool isInformation = false);

  // Whether the connection is of no further use: it is gone, or a statement on it ran out of time.
  bool EndsConnection() const;
  bool IsTimeout() const { return sqlState == "HYT00" || sqlState == "HYT01"; }
  bool IsInformation() const { return severity == 0; }

  std::string sqlState;
};

// The records that the last call on a handle has left, in their order.
std::vector<Error> Records(SQLSMALLINT handleType, SQLHANDLE handle);

// Throws the first error that the last call on a statement has left; of state HY000 with this text if there
// is none.
[[noreturn]] void ThrowError(SQLHSTMT statement, const std::string& text);

} // namespace odbc
