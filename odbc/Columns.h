// The columns of a statement's result, by the types of the dialect.
#pragma once

#include <string>
#include <vector>

#include "odbc/Api.h"
#include "tsql/tsql.h"

namespace odbc {

// The dialect's type for a column. The driver's name for it decides, which tells money from decimal and text
// from varchar; a name that the dialect does not have leaves it to ODBC's number of the type. `size` is the
// column's size in ODBC's sense; 0 is one without a limit.
tsql::Type TypeOf(std::wstring_view typeName, SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT decimals);

// Empty when the result has no rows. Throws Error.
std::vector<tsql::Column> ColumnsOf(SQLHSTMT statement);

} // namespace odbc
