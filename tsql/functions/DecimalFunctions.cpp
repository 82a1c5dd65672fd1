// Single operations on exact decimals.
#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
Decimal OperateDecimals(ArithmeticOp op, const Decimal& left, const Decimal& right, const Type& type) {
  if ((op == ArithmeticOp::Divide || op == ArithmeticOp::Modulo) && IsZero(right)) Fail(8134, {});
  std::optional<Decimal> result;
  switch (op) {
  case ArithmeticOp::Add: result = AddDecimals(left, right, type.scale); break;
  case ArithmeticOp::Subtract: result = SubtractDecimals(left, right, type.scale); break;
  case ArithmeticOp::Multiply: result = MultiplyDecimals(left, right, type.scale); break;
  case ArithmeticOp::Divide: result = DivideDecimals(left, right, type.scale); break;
  default: result = DecimalRemainder(left, right, type.scale);
  }
  return CheckDecimal(result, type, "expression");
}

namespace {

// t_decimal(op, left, type, right, type, result type)
void DecimalArithmetic(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Type type = call.TypeAt(5);
  const Decimal left = call.DecimalAt(1, call.TypeAt(2));
  const Decimal right = call.DecimalAt(3, call.TypeAt(4));
  call.ReturnDecimal(OperateDecimals(static_cast<ArithmeticOp>(call.Integer(0)), left, right, type), type);
}

void Negate(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  Decimal value = call.DecimalAt(0, type);
  value.negative = !value.negative && !IsZero(value);
  call.ReturnDecimal(value, type);
}

} // namespace

void RegisterDecimalFunctions(sqlite3* connection, FunctionContext& context) {
  Register<DecimalArithmetic>(connection, context, names::kDecimal, 6);
  Register<Negate>(connection, context, names::kNegate, 2);
}

} // namespace tsql
