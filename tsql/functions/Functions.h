// The functions that the emitter's SQL calls where SQLite's own semantics differ from the dialect's:
// conversions, checked arithmetic, decimals, texts under the collation, dates. One that fails leaves the
// server's error in the context, for SQLite's own error says only that a function failed.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

struct FunctionContext {
  std::optional<Error> error;
  std::optional<int64_t> fixedNow;
  std::optional<int64_t> now; // what GETDATE() answers throughout a statement, once it was asked
  const std::vector<Datum>* variables = nullptr;
  const Catalog* catalog = nullptr;
  std::vector<std::string> suspects; // foreign keys that the statement may have broken
};

// A program of t_compute is a text of numbers, in the order of their execution on a stack: kComputeOperand
// and the type of the next operand; kComputeCast, the type that is cast and the type wanted; or an
// ArithmeticOp with the types of its left and right side and of its result. Integer operands count as
// decimals.
constexpr int64_t kComputeOperand = -1;
constexpr int64_t kComputeCast = -2;
constexpr size_t kMaxComputeOperands = 16;

// Registers the functions and the collation "tsql"; the context outlives the connection.
void RegisterFunctions(sqlite3* connection, FunctionContext& context);

} // namespace tsql
