// Translates SQLite's failures into the server's errors: which constraint of which table refused, a lock
// time-out, what a function left in its context.
#pragma once

#include "functions.h"

namespace tsql {

// `target` and `verb` describe the statement where it changes a table.
Error TranslateFailure(const SqliteFailure& failure, FunctionContext& context, const Catalog& catalog,
                       const TableInfo* target, std::string_view verb);

// A failure of the file or of SQLite that the server has no other error for.
Error StorageError(std::string_view message);

} // namespace tsql
