// The server's errors: number, severity, state and text of each, in one table. Every stage throws them with
// Fail. An error without a line gets that of the statement which runs.
#pragma once

#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "tsql/tsql.h"

namespace tsql {

// The error with its text's placeholders (%1, %2 ...) replaced by the arguments in order.
Error MakeError(int number, int line, std::initializer_list<std::string_view> arguments);

[[noreturn]] void Fail(int number, std::initializer_list<std::string_view> arguments, int line = 0);

// The error of what the engine does not know.
inline constexpr int kUnsupportedError = 40510;

// Several errors of one statement, as the server reports them. The last one is the error itself: it is all
// that a CATCH block sees. The first one decides whether the batch ends.
struct ErrorSequence : Error {
  ErrorSequence(std::vector<Error> earlier, const Error& last) : Error(last), before(std::move(earlier)) {}
  std::vector<Error> before; // not empty
};

// Whether the server ends the whole batch after the error and not only the statement, and whether it rolls
// the transaction back as well.
bool EndsBatch(const Error& error);
bool EndsTransaction(const Error& error);

} // namespace tsql
