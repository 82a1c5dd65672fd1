// Translates SQLite's failures into the server's errors: a constraint that a row breaks, a lock time-out, or
// the error that a function left in its context.
#pragma once

#include "tsql/functions/Functions.h"

namespace tsql {

// `target` is the table that the statement changes, null for none, and `verb` the statement's first word.
Error TranslateFailure(const SqliteFailure& failure, FunctionContext& context, const Catalog& catalog,
                       const TableInfo* target, std::string_view verb);

// A failure of the file or of SQLite that the server has no other error for.
Error StorageError(std::string_view message);

} // namespace tsql
