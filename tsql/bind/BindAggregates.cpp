#include <algorithm>

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

BoundExprPtr Binder::BindAggregate(const Expr& expr, AggregateId aggregate) {
  if (scope_ == nullptr || !scope_->aggregatesAllowed)
    Fail(scope_ != nullptr && scope_->inAggregate ? 130 : 147, {});
  scope_->hasAggregate = true;
  const bool isCount = aggregate == AggregateId::Count || aggregate == AggregateId::CountBig;
  const bool isTotal = aggregate == AggregateId::Sum || aggregate == AggregateId::Average;
  if (!expr.star && expr.args.size() != 1) Fail(174, {expr.text, "1"});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Aggregate, {});
  node->aggregate = aggregate;
  node->distinct = expr.distinct;
  if (isCount) {
    node->type = MakeType(aggregate == AggregateId::Count ? TypeId::Int : TypeId::BigInt);
    node->nullable = false;
  }
  if (expr.star) {
    if (!isCount) Fail(102, {"*"}, expr.line);
    return node;
  }
  scope_->aggregatesAllowed = false;
  scope_->inAggregate = true;
  BoundExprPtr arg = Bind(*expr.args[0]);
  scope_->inAggregate = false;
  scope_->aggregatesAllowed = true;
  if (HasQuery(*arg)) Fail(130, {});
  int own = 0;
  int outer = 0;
  CountColumns(*arg, own, outer);
  if (own > 0 && outer > 0) Fail(8124, {});
  if (outer > 0) Refuse("An aggregate of a column of an outer query");
  const bool isNumeric = IsNumeric(arg->type) && arg->type.id != TypeId::Bit;
  if (isTotal && !isNumeric) Fail(8117, {TypeName(arg->type.id), expr.text});
  if (!isCount && (IsLob(arg->type.id) || arg->type.id == TypeId::Bit))
    Fail(8117, {TypeName(arg->type.id), expr.text});
  if (!isCount) {
    node->type = arg->type;
    if (FamilyOf(node->type.id) == Family::Integer) node->type.precision = 0;
  }
  if (isTotal) node->type = TotalType(node->type, aggregate == AggregateId::Average);
  node->args.push_back(std::move(arg));
  return node;
}

} // namespace tsql
