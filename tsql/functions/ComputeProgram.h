// What the emitter and the function t_compute agree on: how several operations on decimals are written as one
// program.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tsql {

// A program is a text of numbers, in the order of their execution on a stack:
//   kComputeOperand and the type of the next operand;
//   kComputeCast, the type that is cast and the type wanted;
//   an ArithmeticOp with the types of its left side, its right side and its result.
// Integer operands count as decimals without a fraction. Database files keep programs, within the SQL of
// CHECK constraints.
constexpr int64_t kComputeOperand = -1;
constexpr int64_t kComputeCast = -2;
constexpr size_t kMaxComputeOperands = 16;

} // namespace tsql
