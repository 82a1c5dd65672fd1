// Integers and conditions that are computed without SQLite: counters, flags, the conditions of loops. To run
// a statement of SQLite costs many times what they cost themselves.
#pragma once

#include <cstdint>
#include <optional>

#include "tsql/bind/BoundTree.h"

namespace tsql {

// What the variables, markers and global values of an expression are at the moment.
class IntegerOperands {
 public:
  // Nothing for null. Of a value that is no integer the number means nothing.
  virtual std::optional<int64_t> Operand(BoundExpr::Kind kind, int index) const = 0;

 protected:
  ~IntegerOperands() = default;
};

// Whether it is an integer, made of constants, variables and global values with operators, COALESCE and
// ISNULL.
bool IsIntegerExpression(const BoundExpr& expr);
// The value of such an expression, or nothing for null. 8115 or 220 for what a type cannot hold, 8134 for a
// division by zero. Of COALESCE and ISNULL nothing behind the first argument that is not null is computed.
std::optional<int64_t> ComputeInteger(const BoundExpr& expr, const IntegerOperands& operands);

// Whether it is a condition of such expressions: comparisons and IS NULL with AND, OR and NOT. IS NULL may
// ask a variable of any type.
bool IsIntegerCondition(const BoundExpr& expr);
// Whether the condition holds; `unknown` is what counts in place of a comparison with null. The right side of
// AND and OR is computed only if the left one does not decide.
bool Holds(const BoundExpr& condition, const IntegerOperands& operands, bool unknown = false);

} // namespace tsql
