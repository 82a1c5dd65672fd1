#include "tsql/bind/Binder.h"
#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

Type MomentType() {
  return MakeType(TypeId::DateTime);
}

BoundExprPtr PartConstant(DatePart part) {
  return MakeConstant(Datum::OfInteger(static_cast<int64_t>(part)), MakeType(TypeId::BigInt));
}

// The first argument is the name of a part, which looks like a column's name.
DatePart PartOf(const Expr& call) {
  const Expr& name = *call.args[0];
  if (name.kind != ExprKind::Column || name.parts.size() != 1) Fail(1023, {"1", call.text});
  const std::optional<DatePart> part = FindDatePart(name.parts[0]);
  if (!part) Fail(155, {name.parts[0], call.text});
  return *part;
}

// A date has no parts of a day.
void CheckPart(DatePart part, const Type& type, const Expr& call) {
  if (type.id == TypeId::Date && part >= DatePart::Hour)
    Fail(9810, {NameOf(part), call.text, TypeName(type.id)});
}

void RequireCount(const Expr& expr, size_t count) {
  if (expr.args.size() != count) Fail(174, {expr.text, std::to_string(count)});
}

} // namespace

// GETDATE, SYSDATETIME
BoundExprPtr Binder::BindGetDate(const Expr& expr, FunctionId function) {
  BindArguments(expr, 0, 0);
  BoundExprPtr node = MakeFunction(function, MomentType(), {});
  node->nullable = false;
  return node;
}

// YEAR, MONTH, DAY
BoundExprPtr Binder::BindCalendarPart(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  args[0] = Convert(std::move(args[0]), MomentType());
  args.insert(args.begin(), PartConstant(*FindDatePart(expr.text)));
  return MakeFunction(function, MakeType(TypeId::Int), std::move(args));
}

BoundExprPtr Binder::BindDateAdd(const Expr& expr, FunctionId function) {
  RequireCount(expr, 3);
  std::vector<BoundExprPtr> args;
  const DatePart part = PartOf(expr);
  args.push_back(PartConstant(part));
  BoundExprPtr number = Bind(*expr.args[1]);
  BoundExprPtr date = Bind(*expr.args[2]);
  CheckPart(part, date->type, expr);
  const Type type = FamilyOf(date->type.id) == Family::DateTime ? date->type : MomentType();
  // The number's fraction is cut off.
  const bool isWhole = FamilyOf(number->type.id) == Family::Integer;
  args.push_back(isWhole ? std::move(number) : Convert(std::move(number), MakeType(TypeId::BigInt)));
  args.push_back(Convert(std::move(date), type));
  return MakeFunction(function, type, std::move(args));
}

BoundExprPtr Binder::BindDateDiff(const Expr& expr, FunctionId function) {
  RequireCount(expr, 3);
  std::vector<BoundExprPtr> args;
  args.push_back(PartConstant(PartOf(expr)));
  args.push_back(Convert(Bind(*expr.args[1]), MomentType()));
  args.push_back(Convert(Bind(*expr.args[2]), MomentType()));
  return MakeFunction(function, MakeType(TypeId::Int), std::move(args));
}

// DATEPART, DATENAME
BoundExprPtr Binder::BindDatePart(const Expr& expr, FunctionId function) {
  constexpr int32_t kLongestName = 30;
  RequireCount(expr, 2);
  std::vector<BoundExprPtr> args;
  const DatePart part = PartOf(expr);
  BoundExprPtr date = Bind(*expr.args[1]);
  CheckPart(part, date->type, expr);
  args.push_back(PartConstant(part));
  args.push_back(Convert(std::move(date), MomentType()));
  const bool isName = function == FunctionId::DateName;
  const Type type = isName ? MakeType(TypeId::NVarChar, kLongestName) : MakeType(TypeId::Int);
  return MakeFunction(function, type, std::move(args));
}

} // namespace tsql
