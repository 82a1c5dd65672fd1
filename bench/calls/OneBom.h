// Calls that work on one BOM.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/calls/Caller.h"

namespace bench {

// A statement that takes away the BOMs with higher identifiers, which calls have made: the next one gets the
// same.
std::wstring NoneAbove(int32_t bom);

// Reading its lines, copying, auditing, and asking whether it may go. `bom` is the one with the number LARGE.
std::vector<Call> CallsOfOneBom(int32_t bom, const std::string& suffix, const Aim& aim);

} // namespace bench
