#include "tsql/compile/IntegerExpression.h"

#include <algorithm>
#include <limits>

#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

using Integer = std::optional<int64_t>;

bool IsLeaf(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Variable || expr.kind == BoundExpr::Kind::Marker ||
         expr.kind == BoundExpr::Kind::Global;
}

bool IsInteger(const BoundExpr& expr) {
  return FamilyOf(expr.type.id) == Family::Integer;
}

bool AreIntegerExpressions(const std::vector<BoundExprPtr>& exprs) {
  return std::ranges::all_of(exprs, [](const BoundExprPtr& expr) { return IsIntegerExpression(*expr); });
}

// Whether it gives the first of its arguments that is not null.
bool IsFirstNotNull(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Function &&
         (expr.function == FunctionId::IsNull || expr.function == FunctionId::Coalesce);
}

[[noreturn]] void FailRange(TypeId type) {
  Fail(8115, {"expression", TypeName(type)});
}

int64_t Quotient(int64_t left, int64_t right, TypeId type) {
  if (right == 0) Fail(8134, {});
  if (right == -1 && left == std::numeric_limits<int64_t>::min()) FailRange(type);
  return left / right;
}

int64_t Remainder(int64_t left, int64_t right) {
  if (right == 0) Fail(8134, {});
  return right == -1 ? 0 : left % right;
}

int64_t Calculate(ArithmeticOp op, int64_t left, int64_t right, TypeId type) {
  int64_t result = 0;
  bool isOver = false;
  switch (op) {
  case ArithmeticOp::Add: isOver = __builtin_add_overflow(left, right, &result); break;
  case ArithmeticOp::Subtract: isOver = __builtin_sub_overflow(left, right, &result); break;
  case ArithmeticOp::Multiply: isOver = __builtin_mul_overflow(left, right, &result); break;
  case ArithmeticOp::Divide: result = Quotient(left, right, type); break;
  case ArithmeticOp::Modulo: return Remainder(left, right);
  case ArithmeticOp::BitAnd: return left & right;
  case ArithmeticOp::BitOr: return left | right;
  case ArithmeticOp::BitXor: return left ^ right;
  }
  if (isOver) FailRange(type);
  return CheckInteger(result, type);
}

int64_t Complement(int64_t value, TypeId type) {
  switch (type) {
  case TypeId::Bit: return 1 - value;
  case TypeId::TinyInt: return 255 - value;
  default: return ~value;
  }
}

bool Compare(CompareOp op, int64_t left, int64_t right) {
  switch (op) {
  case CompareOp::Equal: return left == right;
  case CompareOp::NotEqual: return left != right;
  case CompareOp::Less: return left < right;
  case CompareOp::LessEqual: return left <= right;
  case CompareOp::Greater: return left > right;
  case CompareOp::GreaterEqual: return left >= right;
  }
  return false;
}

Integer ComputeUnary(const BoundExpr& expr, const IntegerOperands& operands) {
  const Integer value = ComputeInteger(*expr.args[0], operands);
  if (!value) return value;
  const TypeId type = expr.type.id;
  switch (expr.kind) {
  case BoundExpr::Kind::Negate: return Calculate(ArithmeticOp::Subtract, 0, *value, type);
  case BoundExpr::Kind::BitNot: return Complement(*value, type);
  default: // a conversion
    return type == TypeId::Bit ? static_cast<int64_t>(*value != 0) : CheckInteger(*value, type);
  }
}

Integer ComputeArithmetic(const BoundExpr& expr, const IntegerOperands& operands) {
  const Integer left = ComputeInteger(*expr.args[0], operands);
  const Integer right = ComputeInteger(*expr.args[1], operands);
  if (!left || !right) return std::nullopt;
  return Calculate(expr.arithmetic, *left, *right, expr.type.id);
}

Integer ComputeFirstNotNull(const BoundExpr& expr, const IntegerOperands& operands) {
  for (const BoundExprPtr& arg : expr.args)
    if (const Integer value = ComputeInteger(*arg, operands)) return value;
  return std::nullopt;
}

bool HoldsComparison(const BoundExpr& expr, const IntegerOperands& operands, bool unknown) {
  const Integer left = ComputeInteger(*expr.args[0], operands);
  const Integer right = ComputeInteger(*expr.args[1], operands);
  return left && right ? Compare(expr.compare, *left, *right) : unknown;
}

} // namespace

bool IsIntegerExpression(const BoundExpr& expr) {
  if (!IsInteger(expr)) return false;
  switch (expr.kind) {
  case BoundExpr::Kind::Constant: return true;
  case BoundExpr::Kind::Function: return IsFirstNotNull(expr) && AreIntegerExpressions(expr.args);
  case BoundExpr::Kind::Cast:
  case BoundExpr::Kind::Negate:
  case BoundExpr::Kind::BitNot:
  case BoundExpr::Kind::Arithmetic: return AreIntegerExpressions(expr.args);
  default: return IsLeaf(expr);
  }
}

Integer ComputeInteger(const BoundExpr& expr, const IntegerOperands& operands) {
  switch (expr.kind) {
  case BoundExpr::Kind::Constant:
    return expr.constant.IsNull() ? std::nullopt : Integer(expr.constant.integer);
  case BoundExpr::Kind::Variable:
  case BoundExpr::Kind::Marker:
  case BoundExpr::Kind::Global: return operands.Operand(expr.kind, expr.index);
  case BoundExpr::Kind::Function: return ComputeFirstNotNull(expr, operands);
  case BoundExpr::Kind::Arithmetic: return ComputeArithmetic(expr, operands);
  default: return ComputeUnary(expr, operands);
  }
}

bool IsIntegerCondition(const BoundExpr& expr) {
  switch (expr.kind) {
  case BoundExpr::Kind::Compare: return !expr.nullsEqual && AreIntegerExpressions(expr.args);
  case BoundExpr::Kind::IsNull: return IsLeaf(*expr.args[0]) || IsIntegerExpression(*expr.args[0]);
  case BoundExpr::Kind::And:
  case BoundExpr::Kind::Or:
  case BoundExpr::Kind::Not:
    return std::ranges::all_of(expr.args, [](const BoundExprPtr& arg) { return IsIntegerCondition(*arg); });
  default: return false;
  }
}

bool Holds(const BoundExpr& condition, const IntegerOperands& operands, bool unknown) {
  const auto holds = [&](size_t side) { return Holds(*condition.args[side], operands, unknown); };
  switch (condition.kind) {
  case BoundExpr::Kind::And: return holds(0) && holds(1);
  case BoundExpr::Kind::Or: return holds(0) || holds(1);
  case BoundExpr::Kind::Not: return !Holds(*condition.args[0], operands, !unknown);
  case BoundExpr::Kind::IsNull:
    return ComputeInteger(*condition.args[0], operands).has_value() == condition.negated;
  default: return HoldsComparison(condition, operands, unknown);
  }
}

} // namespace tsql
