// ODBC's own declarations. They want those of Windows in front of them.
#pragma once

// clang-format off
#include <windows.h>
#include <sql.h>
#include <sqlext.h>
// clang-format on

namespace odbc {

// A number as the value of an attribute.
inline SQLPOINTER AsPointer(SQLULEN number) {
  return reinterpret_cast<SQLPOINTER>(number); // NOLINT(performance-no-int-to-ptr): ODBC takes both so
}

} // namespace odbc
