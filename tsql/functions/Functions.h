// The functions that the emitter's SQL calls where SQLite's own operators mean something else than the
// dialect's: conversions, checked arithmetic, decimals, texts under the collation, dates. A function that
// fails leaves the server's error in the context, because SQLite's own error says only that it failed.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

// What the functions of a connection and whoever runs its statements tell each other.
struct FunctionContext {
  std::optional<Error> error;                    // of the function that failed last
  std::optional<int64_t> fixedNow;               // what GETDATE() answers instead of the clock
  std::optional<int64_t> now;                    // what GETDATE() answered first within the statement
  const std::vector<Datum>* variables = nullptr; // of the batch or procedure that runs
  const Catalog* catalog = nullptr;
  std::vector<std::string> suspects; // names of foreign keys that the statement may have broken
};

// Registers the functions and the collation "tsql"; the context outlives the connection.
void RegisterFunctions(sqlite3* connection, FunctionContext& context);

} // namespace tsql
