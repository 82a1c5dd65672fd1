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

// DEGREES and RADIANS do the same, but a decimal gets 18 places.
Type AngleType(const Type& type) {
  constexpr int kPlaces = 18;
  return type.id == TypeId::Decimal ? MakeDecimal(kMaxPrecision, kPlaces) : PowerType(type);
}

} // namespace

// SQRT, SQUARE, POWER, EXP, LOG, LOG10, and those of trigonometry
BoundExprPtr Binder::BindFloatFunction(const Expr& expr, FunctionId function) {
  const bool isPower = function == FunctionId::Power;
  const size_t least = isPower || function == FunctionId::Atan2 ? 2 : 1;
  const size_t most = function == FunctionId::Log ? 2 : least; // LOG may have a base
  std::vector<BoundExprPtr> args = BindArguments(expr, least, most);
  const Type result = isPower ? PowerType(args[0]->type) : MakeType(TypeId::Float);
  for (BoundExprPtr& arg : args) arg = Convert(std::move(arg), MakeType(TypeId::Float));
  BoundExprPtr node = MakeFunction(function, MakeType(TypeId::Float), std::move(args));
  return Convert(std::move(node), result);
}

BoundExprPtr Binder::BindAngle(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  const Type result = AngleType(args[0]->type);
  args[0] = Convert(std::move(args[0]), MakeType(TypeId::Float));
  return Convert(MakeFunction(function, MakeType(TypeId::Float), std::move(args)), result);
}

// RAND has one value for each place in the statement where it stands, whatever the number of rows.
BoundExprPtr Binder::BindRandom(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 0, 1);
  if (!args.empty()) args[0] = Convert(std::move(args[0]), MakeType(TypeId::Int));
  args.insert(args.begin(), MakeConstant(Datum::OfInteger(expr.number), MakeType(TypeId::BigInt)));
  return MakeFunction(function, MakeType(TypeId::Float), std::move(args));
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
