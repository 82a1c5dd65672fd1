// ODBC's own declarations. They want those of Windows in front of them.
#pragma once

// clang-format off
#include <windows.h>
#include <sql.h>
#include <sqlext.h>
// clang-format on
