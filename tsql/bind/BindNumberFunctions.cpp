#include "tsql/bind/Binder.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// POWER answers in the type of its first argument, with all the digits that this can have.
Type PowerType(const Type& type) {
  switch (type.id) {
  case TypeId::TinyInt:
  case TypeId::SmallInt:
  case TypeId::Int: return MakeType(TypeId::Int);
  case TypeId::BigInt: return MakeType(TypeId::BigInt);
  case TypeId::Decimal: return MakeDecimal(kMaxPrecision, type.scale);
  case TypeId::Money:
  case TypeId::SmallMoney: return MakeType(TypeId::Money);
  default: return MakeType(TypeId::Float);
  }
}

} // namespace

// SQRT, SQUARE, POWER, EXP, LOG, LOG10
BoundExprPtr Binder::BindFloatFunction(const Expr& expr, FunctionId function) {
  const bool isPower = function == FunctionId::Power;
  const size_t count = isPower ? 2 : 1;
  std::vector<BoundExprPtr> args = BindArguments(expr, count, count);
  const Type result = isPower ? PowerType(args[0]->type) : MakeType(TypeId::Float);
  for (BoundExprPtr& arg : args) arg = Convert(std::move(arg), MakeType(TypeId::Float));
  BoundExprPtr node = MakeFunction(function, MakeType(TypeId::Float), std::move(args));
  return Convert(std::move(node), result);
}

// ABS, SIGN, FLOOR, CEILING, ROUND
BoundExprPtr Binder::BindRounding(const Expr& expr, FunctionId function) {
  const bool isRound = function == FunctionId::Round;
  std::vector<BoundExprPtr> args = BindArguments(expr, isRound ? 2 : 1, isRound ? 3 : 1);
  if (IsText(args[0]->type)) args[0] = Convert(std::move(args[0]), MakeType(TypeId::Float));
  if (!IsNumeric(args[0]->type)) Fail(8117, {TypeName(args[0]->type.id), expr.text});
  if (args[0]->type.id == TypeId::TinyInt || args[0]->type.id == TypeId::SmallInt ||
      args[0]->type.id == TypeId::Bit)
    args[0] = Convert(std::move(args[0]), MakeType(TypeId::Int));
  Type type = args[0]->type;
  if (type.id == TypeId::Real) type = MakeType(TypeId::Float);
  if (FamilyOf(type.id) == Family::Integer) type.precision = 0;
  args[0] = Convert(std::move(args[0]), type);
  for (size_t i = 1; i < args.size(); ++i) args[i] = Convert(std::move(args[i]), MakeType(TypeId::Int));
  const bool isWhole = function == FunctionId::Floor || function == FunctionId::Ceiling;
  if (type.id == TypeId::Decimal && isWhole) type = MakeDecimal(type.precision, 0);
  return MakeFunction(function, type, std::move(args));
}

} // namespace tsql
