// Translates SQLite's failures into the server's errors: which constraint of which table refused, a lock
// time-out, what a function left in its context.
#pragma once

#include "tsql/functions/Functions.h"

namespace tsql {

// `target` and `verb` describe the statement where it changes a table.
Error TranslateFailure(const SqliteFailure& failure, FunctionContext& context, const Catalog& catalog,
                       const TableInfo* target, std::string_view verb);

} // namespace tsql
