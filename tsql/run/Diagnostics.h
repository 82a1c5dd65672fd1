// Translates SQLite's failures into the server's errors: a constraint that a row breaks, a lock time-out, or
// the error that a function left in its context.
#pragma once

#include "tsql/compile/Compiler.h"
#include "tsql/functions/Functions.h"

namespace tsql {

// `target` is the table that the statement changes, null for none, and `verb` the statement's first word.
Error TranslateFailure(const SqliteFailure& failure, FunctionContext& context, const Catalog& catalog,
                       const Compiler& compiler, const TableInfo* target, std::string_view verb);

// 547 of a CHECK constraint of the table, which names the column where the condition has a single one.
Error CheckError(const KeyInfo& check, const TableInfo& table, std::string_view verb, const Catalog& catalog,
                 const Compiler& compiler);

// A failure of the file or of SQLite that the server has no other error for.
Error StorageError(std::string_view message);

} // namespace tsql
