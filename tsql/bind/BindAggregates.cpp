#include <algorithm>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Sums and averages widen: small integers to int, decimals to 38 digits, real to float.
Type TotalType(const Type& type, bool isAverage) {
  constexpr int kAverageScale = 6;
  switch (type.id) {
  case TypeId::TinyInt:
  case TypeId::SmallInt: return MakeType(TypeId::Int);
  case TypeId::Decimal:
    return MakeDecimal(kMaxPrecision, isAverage ? std::max<int>(type.scale, kAverageScale) : type.scale);
  case TypeId::SmallMoney: return MakeType(TypeId::Money);
  case TypeId::Real: return MakeType(TypeId::Float);
  default: return type;
  }
}

bool HasQuery(const BoundExpr& expr) {
  return expr.query != nullptr || std::any_of(expr.args.begin(), expr.args.end(),
                                              [](const BoundExprPtr& arg) { return HasQuery(*arg); });
}

} // namespace

void Binder::CountColumns(const BoundExpr& expr, int& own, int& outer) const {
  if (expr.kind == BoundExpr::Kind::Column) {
    const bool isOwn = std::any_of(scope_->sources.begin(), scope_->sources.end(),
                                   [&](const ScopeSource& source) { return source.id == expr.source; });
    ++(isOwn ? own : outer);
  }
  for (const BoundExprPtr& arg : expr.args) CountColumns(*arg, own, outer);
}

void Binder::EnterAggregate() {
  if (scope_ != nullptr && scope_->inOutput) Fail(158, {});
  if (scope_ == nullptr || !scope_->aggregatesAllowed)
    Fail(scope_ != nullptr && scope_->inAggregate ? 130 : 147, {});
  scope_->hasAggregate = true;
}

// What an aggregate computes with, for each row.
BoundExprPtr Binder::BindAggregated(const Expr& argument) {
  scope_->aggregatesAllowed = false;
  scope_->inAggregate = true;
  const bool windowsAllowed = std::exchange(scope_->windowsAllowed, false);
  BoundExprPtr arg = Bind(argument);
  scope_->windowsAllowed = windowsAllowed;
  scope_->inAggregate = false;
  scope_->aggregatesAllowed = true;
  if (HasQuery(*arg)) Fail(130, {});
  int own = 0;
  int outer = 0;
  CountColumns(*arg, own, outer);
  if (own > 0 && outer > 0) Fail(8124, {});
  if (outer > 0) Refuse("An aggregate of a column of an outer query");
  return arg;
}

BoundExprPtr Binder::BindAggregate(const Expr& expr, AggregateId aggregate) {
  EnterAggregate();
  if (!expr.star && expr.args.size() != 1) Fail(174, {expr.text, "1"});
  return MakeAggregate(expr, aggregate, expr.star ? nullptr : BindAggregated(*expr.args[0]));
}

// STRING_AGG(value, separator) WITHIN GROUP (ORDER BY ...)
BoundExprPtr Binder::BindStringAggregate(const Expr& expr) {
  constexpr int32_t kLongestUnicode = 4000;
  constexpr int32_t kLongest = 8000;
  EnterAggregate();
  if (expr.distinct) Fail(102, {","}, expr.line);
  if (expr.star || expr.args.size() != 2) Fail(174, {expr.text, "2"});
  BoundExprPtr value = BindAggregated(*expr.args[0]);
  if (IsLob(value->type.id) || FamilyOf(value->type.id) == Family::Binary)
    Fail(8116, {TypeName(value->type.id), "1", expr.text});
  BoundExprPtr separator = Bind(*expr.args[1]);
  const bool isFixed = separator->kind == BoundExpr::Kind::Constant ||
                       separator->kind == BoundExpr::Kind::Variable ||
                       separator->kind == BoundExpr::Kind::Marker;
  if (!isFixed) Fail(8733, {});
  if (!IsText(separator->type) || IsLob(separator->type.id))
    Fail(8116, {TypeName(separator->type.id), "2", expr.text});
  const bool isUnicode = !IsText(value->type) || IsUnicode(value->type.id);
  const int32_t length = value->type.length < 0 ? -1 : isUnicode ? kLongestUnicode : kLongest;
  BoundExprPtr node =
      MakeNode(BoundExpr::Kind::Aggregate, MakeType(isUnicode ? TypeId::NVarChar : TypeId::VarChar, length));
  node->aggregate = AggregateId::StringAggregate;
  // Every type becomes a text here, even one that does so by CAST alone elsewhere.
  BoundExprPtr text = MakeNode(BoundExpr::Kind::Cast, node->type);
  TakeCollation(*text, *value);
  text->args.push_back(std::move(value));
  node->args.push_back(std::move(text));
  node->args.push_back(std::move(separator));
  for (const OrderItem& item : expr.within) {
    if (item.expr->kind == ExprKind::Literal)
      Fail(item.expr->literal == TokenKind::Integer ? 5308 : 5309, {});
    node->args.push_back(BindAggregated(*item.expr));
    node->descending.push_back(item.descending);
  }
  return node;
}

// Without an argument it counts rows.
BoundExprPtr Binder::MakeAggregate(const Expr& expr, AggregateId aggregate, BoundExprPtr arg) const {
  const bool isCount = aggregate == AggregateId::Count || aggregate == AggregateId::CountBig;
  const bool isTotal = aggregate == AggregateId::Sum || aggregate == AggregateId::Average;
  const bool isSpread = aggregate >= AggregateId::Deviation && aggregate <= AggregateId::PopulationVariance;
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Aggregate, {});
  node->aggregate = aggregate;
  node->distinct = expr.distinct;
  if (isCount) {
    node->type = MakeType(aggregate == AggregateId::Count ? TypeId::Int : TypeId::BigInt);
    node->nullable = false;
  }
  if (!arg) {
    if (!isCount) Fail(102, {"*"}, expr.line);
    return node;
  }
  const bool isNumeric = IsNumeric(arg->type) && arg->type.id != TypeId::Bit;
  if ((isTotal || isSpread) && !isNumeric) Fail(8117, {TypeName(arg->type.id), expr.text});
  if (!isCount && (IsLob(arg->type.id) || arg->type.id == TypeId::Bit))
    Fail(8117, {TypeName(arg->type.id), expr.text});
  if (isSpread) arg = Convert(std::move(arg), MakeType(TypeId::Float));
  if (!isCount) {
    node->type = arg->type;
    if (FamilyOf(node->type.id) == Family::Integer) node->type.precision = 0;
  }
  if (isTotal) node->type = TotalType(node->type, aggregate == AggregateId::Average);
  node->args.push_back(std::move(arg));
  return node;
}

} // namespace tsql
