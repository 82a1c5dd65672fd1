// Many calls from a file, one JSON object a line:
//
//   {"call": "CLASS.METHOD", "arguments": {"NAME": VALUE, …}, "as": "NAME"}
//
// All calls of a class go to one object, so that a method finds what the one before it has left there.
// {"$result": "NAME"} as an argument is the result of the earlier line that is called so.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/Call.h"
#include "cli/CommandLine.h"

namespace bomcall {

struct BatchCounts {
  size_t calls = 0;
  size_t failed = 0;
  size_t left = 0; // not made, because one before them failed
  bool kept = true;
};

struct BatchListener {
  // An outcome, the number of its line, and what was called.
  std::function<void(size_t line, const std::wstring& call, const Outcome& outcome)> onOutcome;
  // So many of the calls are made.
  std::function<void(size_t done, size_t all)> onProgress;
};

// Runs the batch. With --keep-going each call is a unit of work; without it all of them are one, which ends
// with the first call that raises an error, votes to abort or meets a condition of --fail-if, and then keeps
// nothing. Throws UsageError, which names the line, for what is wrong in any line, before anything is called,
// and where one unit of work is wanted but no host is there.
BatchCounts RunBatch(const ClassDescriptions& classes, const CommandLine& line,
                     const BatchListener& listener);

} // namespace bomcall
