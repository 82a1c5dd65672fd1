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
// The records of a call that has failed, at least one of which is an error. Some drivers say of a failure
// only what others have for information, or nothing.
std::vector<Error> RecordsOfFailure(SQLSMALLINT handleType, SQLHANDLE handle);
// The first error among them.
Error FailureOf(SQLSMALLINT handleType, SQLHANDLE handle);

} // namespace odbc
