// What the body of a function must not do: it changes nothing outside, and returns nothing but its result.
#pragma once

#include "tsql/syntax/StatementTree.h"

namespace tsql {

// 443 or 444 for the first statement that a function must not have.
void CheckFunctionBody(const StatementList& body);

} // namespace tsql
