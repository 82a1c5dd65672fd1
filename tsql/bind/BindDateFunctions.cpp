#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
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
  if (EqualNames(name.parts[0], "tzoffset") || EqualNames(name.parts[0], "tz"))
    Refuse("The date part TZOFFSET");
  if (!part) Fail(155, {name.parts[0], call.text});
  return *part;
}

// A date has no parts of a day, a time has no others, and only the finer types have parts of a millisecond.
void CheckPart(DatePart part, const Type& type, const Expr& call) {
  const bool isFinePart = part == DatePart::Microsecond || part == DatePart::Nanosecond;
  const bool isLacking = type.id == TypeId::Date   ? IsPartOfDay(part)
                         : type.id == TypeId::Time ? !IsPartOfDay(part)
                                                   : isFinePart && !IsFine(type.id);
  if (isLacking) Fail(9810, {NameOf(part), call.text, TypeName(type.id)});
}

// The type of a moment to compute with: texts are read in full, numbers are days.
Type ComputedType(const Type& given) {
  if (IsText(given)) return MakeType(TypeId::DateTime2);
  return FamilyOf(given.id) == Family::DateTime ? given : MomentType();
}

// The functions of SQLite take ticks unless the type tells them otherwise.
void AddFineType(std::vector<BoundExprPtr>& args, const Type& type) {
  if (IsFine(type.id))
    args.push_back(MakeConstant(Datum::OfInteger(EncodeType(type)), MakeType(TypeId::BigInt)));
}

// How many digits of a fraction the last argument asks for.
int FractionDigits(const BoundExpr& argument, TypeId type) {
  const bool isInteger = argument.kind == BoundExpr::Kind::Constant && !argument.constant.IsNull() &&
                         FamilyOf(argument.type.id) == Family::Integer;
  if (!isInteger) Fail(10760, {TypeName(type)});
  const int64_t digits = argument.constant.integer;
  if (digits < 0 || digits > kMaxFraction) Fail(1002, {"1", std::to_string(digits)});
  return static_cast<int>(digits);
}

void RequireCount(const Expr& expr, size_t count) {
  if (expr.args.size() != count) Fail(174, {expr.text, std::to_string(count)});
}

} // namespace

// GETDATE, GETUTCDATE, SYSDATETIME, SYSUTCDATETIME
BoundExprPtr Binder::BindGetDate(const Expr& expr, FunctionId function) {
  BindArguments(expr, 0, 0);
  const bool isFine = function == FunctionId::SysDateTime || function == FunctionId::SysUtcDateTime;
  BoundExprPtr node = MakeFunction(function, isFine ? MakeType(TypeId::DateTime2) : MomentType(), {});
  node->nullable = false;
  return node;
}

// YEAR, MONTH, DAY
BoundExprPtr Binder::BindCalendarPart(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 1);
  const DatePart part = *FindDatePart(expr.text);
  const Type type = ComputedType(args[0]->type);
  CheckPart(part, type, expr);
  args[0] = Convert(std::move(args[0]), type);
  args.insert(args.begin(), PartConstant(part));
  AddFineType(args, type);
  return MakeFunction(function, MakeType(TypeId::Int), std::move(args));
}

// DATEFROMPARTS and the like: which type is made follows from the name.
BoundExprPtr Binder::BindDateFromParts(const Expr& expr, FunctionId function) {
  struct Form {
    std::string_view name;
    TypeId type;
    size_t parts;
  };
  constexpr Form kForms[] = {
      {"datefromparts", TypeId::Date, 3},         {"smalldatetimefromparts", TypeId::SmallDateTime, 5},
      {"datetimefromparts", TypeId::DateTime, 7}, {"datetime2fromparts", TypeId::DateTime2, 8},
      {"timefromparts", TypeId::Time, 5},
  };
  const Form* form = kForms;
  while (form->name != expr.text) ++form;
  std::vector<BoundExprPtr> args = BindArguments(expr, form->parts, form->parts);
  Type type = MakeType(form->type);
  if (IsFine(type.id)) {
    type = MakeFine(type.id, FractionDigits(*args.back(), type.id));
    args.pop_back();
  }
  for (BoundExprPtr& arg : args) arg = Convert(std::move(arg), MakeType(TypeId::Int));
  return MakeFunction(function, type, std::move(args));
}

// EOMONTH(date[, months])
BoundExprPtr Binder::BindEndOfMonth(const Expr& expr, FunctionId function) {
  std::vector<BoundExprPtr> args = BindArguments(expr, 1, 2);
  const Type& given = args[0]->type;
  const bool isMoment = FamilyOf(given.id) == Family::DateTime || IsText(given);
  if (!isMoment && !IsNullConstant(*args[0])) Fail(8116, {TypeName(given.id), "1", expr.text});
  args[0] = Convert(std::move(args[0]), MakeType(TypeId::Date));
  if (args.size() > 1) args[1] = Convert(std::move(args[1]), MakeType(TypeId::Int));
  return MakeFunction(function, MakeType(TypeId::Date), std::move(args));
}

BoundExprPtr Binder::BindDateAdd(const Expr& expr, FunctionId function) {
  RequireCount(expr, 3);
  std::vector<BoundExprPtr> args;
  const DatePart part = PartOf(expr);
  if (part == DatePart::IsoWeek) Fail(9806, {NameOf(part), expr.text});
  args.push_back(PartConstant(part));
  BoundExprPtr number = Bind(*expr.args[1]);
  BoundExprPtr date = Bind(*expr.args[2]);
  // A text becomes a datetime here, as the result has to have a type.
  const Type type = FamilyOf(date->type.id) == Family::DateTime ? date->type : MomentType();
  CheckPart(part, type, expr);
  // The number's fraction is cut off.
  const bool isWhole = FamilyOf(number->type.id) == Family::Integer;
  args.push_back(isWhole ? std::move(number) : Convert(std::move(number), MakeType(TypeId::BigInt)));
  args.push_back(Convert(std::move(date), type));
  return MakeFunction(function, type, std::move(args));
}

// DATEDIFF, DATEDIFF_BIG
BoundExprPtr Binder::BindDateDiff(const Expr& expr, FunctionId function) {
  RequireCount(expr, 3);
  const DatePart part = PartOf(expr);
  if (part == DatePart::IsoWeek) Fail(9806, {NameOf(part), expr.text});
  std::vector<BoundExprPtr> args;
  args.push_back(PartConstant(part));
  for (size_t i = 1; i < expr.args.size(); ++i) {
    args.push_back(Bind(*expr.args[i]));
    // A number is one of days, which a datetime2 does not take.
    const Type& given = args.back()->type;
    if (!IsText(given) && FamilyOf(given.id) != Family::DateTime)
      args.back() = Convert(std::move(args.back()), MomentType());
    // A date counts from midnight, but a time has no day.
    if (args.back()->type.id == TypeId::Time) CheckPart(part, args.back()->type, expr);
  }
  Type type = ComputedType(args[1]->type);
  const Type other = ComputedType(args[2]->type);
  const bool needsFine = part == DatePart::Microsecond || part == DatePart::Nanosecond;
  // Both count the same units.
  const bool isFine = needsFine || IsFine(type.id) || IsFine(other.id);
  if (isFine) type = MakeType(TypeId::DateTime2);
  args[1] = Convert(std::move(args[1]), type);
  args[2] = Convert(std::move(args[2]), isFine ? type : other);
  AddFineType(args, type);
  return MakeFunction(function, MakeType(function == FunctionId::DateDiff ? TypeId::Int : TypeId::BigInt),
                      std::move(args));
}

// DATEPART, DATENAME
BoundExprPtr Binder::BindDatePart(const Expr& expr, FunctionId function) {
  constexpr int32_t kLongestName = 30;
  RequireCount(expr, 2);
  const DatePart part = PartOf(expr);
  BoundExprPtr date = Bind(*expr.args[1]);
  Type type = ComputedType(date->type);
  // Parts that ticks do not have, and that functions of ticks do not know.
  const bool isOlder = type.id == TypeId::DateTime || type.id == TypeId::SmallDateTime;
  if (part >= DatePart::Microsecond && (isOlder || part == DatePart::IsoWeek) && type.id != TypeId::Time)
    type = MakeType(TypeId::DateTime2);
  CheckPart(part, type, expr);
  std::vector<BoundExprPtr> args;
  args.push_back(PartConstant(part));
  args.push_back(Convert(std::move(date), type));
  AddFineType(args, type);
  const bool isName = function == FunctionId::DateName;
  const Type result = isName ? MakeType(TypeId::NVarChar, kLongestName) : MakeType(TypeId::Int);
  return MakeFunction(function, result, std::move(args));
}

} // namespace tsql
