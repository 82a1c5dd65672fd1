// The server's errors: number, severity, state and text of each, in one table. A stage throws them with Fail
// and the interpreter gives them the line of the statement when the stage did not know a better one.
#pragma once

#include "tsql/tsql.h"

#include <initializer_list>
#include <string_view>

namespace tsql {

// The error with its text's placeholders (%1, %2 ...) replaced by the arguments in order.
Error MakeError(int number, int line, std::initializer_list<std::string_view> arguments);

[[noreturn]] void Fail(int number, std::initializer_list<std::string_view> arguments, int line = 0);

// What the dialect lacks, by its name.
[[noreturn]] void FailUnsupported(std::string_view what, int line = 0);

// Whether the server gives up the whole batch, not the statement alone, and whether it rolls back with it.
bool EndsBatch(const Error& error);
bool EndsTransaction(const Error& error);

} // namespace tsql
