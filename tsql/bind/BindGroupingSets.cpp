// GROUP BY. With grouping sets the query becomes two: one that makes the groups of all sets, and the query
// itself, which selects from them as from a table.
#include <algorithm>
#include <iterator>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr size_t kMostKeys = 32;

BoundExprPtr ColumnOf(int source, size_t column, const BoundExpr& value) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Column, value.type);
  node->nullable = value.nullable;
  TakeCollation(*node, value);
  node->ownCollation = value.collation;
  node->display = value.display;
  node->source = source;
  node->name = ResultColumnName(column);
  return node;
}

// The place of the expression among the items, behind which it is put if it is new.
size_t PlaceOf(BoundExprPtr& expr, std::vector<BoundItem>& items) {
  const auto found =
      std::ranges::find_if(items, [&](const BoundItem& item) { return SameExpr(*item.expr, *expr); });
  const auto place = static_cast<size_t>(found - items.begin());
  if (found == items.end()) items.emplace_back().expr = std::move(expr);
  return place;
}

bool IsFixed(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Constant || expr.kind == BoundExpr::Kind::Variable ||
         expr.kind == BoundExpr::Kind::Marker;
}

} // namespace

std::span<const std::string_view> Binder::GroupingFunctions() {
  static constexpr std::string_view kNames[] = {"grouping", "grouping_id"};
  return kNames;
}

void Binder::BindGroupBy(const Select& select, BoundSelect& bound, Grouping& grouping) {
  if (select.pivot == PivotKind::Pivot) return GroupByStar(select, bound);
  std::vector<size_t> keys; // of each expression of the list, in which one may stand repeatedly
  for (const ExprPtr& expr : select.groupBy) {
    BoundExprPtr key = Bind(*expr);
    int own = 0;
    int outer = 0;
    CountColumns(*key, own, outer);
    if (own == 0) Fail(164, {});
    RequireCollation(*key, "GROUP BY", keys.size() + 1);
    if (IsLob(key->type.id)) Fail(402, {TypeName(key->type.id), TypeName(key->type.id), "group by"});
    const auto found = std::ranges::find_if(
        bound.groupBy, [&](const BoundExprPtr& other) { return SameExpr(*other, *key); });
    const bool isRepeated = !select.groupingSets.empty() && found != bound.groupBy.end();
    keys.push_back(isRepeated ? static_cast<size_t>(found - bound.groupBy.begin()) : bound.groupBy.size());
    if (isRepeated) continue;
    bound.groupBy.push_back(std::move(key));
    grouping.kinds.push_back(expr->kind);
  }
  if (select.groupingSets.empty()) return;
  if (bound.groupBy.size() > kMostKeys) Fail(10706, {std::to_string(kMostKeys)});
  for (const std::vector<size_t>& places : select.groupingSets) {
    uint32_t set = 0;
    for (const size_t place : places) set |= uint32_t{1} << keys[place];
    grouping.sets.push_back(set);
  }
  grouping.rows = nextSource_++;
  grouping.groups = nextSource_++;
}

// GROUPING and GROUPING_ID. Their arguments become the places in GROUP BY.
BoundExprPtr Binder::BindGrouping(const Expr& expr) {
  EnterAggregate();
  const bool isSingle = expr.text == GroupingFunctions().front();
  if (expr.star) Fail(102, {"*"}, expr.line);
  if (isSingle && expr.args.size() != 1) Fail(174, {expr.text, "1"});
  if (expr.args.empty() || expr.args.size() > kMostKeys) Fail(189, {expr.text, "1 to 32"});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Grouping, MakeType(isSingle ? TypeId::TinyInt : TypeId::Int));
  node->nullable = false;
  const int groupings = std::exchange(groupings_, 0);
  for (size_t i = 0; i < expr.args.size(); ++i) {
    const BoundExprPtr arg = Bind(*expr.args[i]);
    const auto isArg = [&](const BoundExprPtr& key) { return SameExpr(*key, *arg); };
    const std::vector<BoundExprPtr>& keys = *scope_->groupBy;
    const auto found = std::ranges::find_if(keys, isArg);
    for (const Scope* outer = scope_->outer; found == keys.end() && outer != nullptr; outer = outer->outer)
      if (outer->groupBy != nullptr && std::ranges::any_of(*outer->groupBy, isArg))
        Refuse("An aggregate of a column of an outer query");
    if (found == keys.end()) Fail(8161, {std::to_string(i + 1), isSingle ? "GROUPING" : "GROUPING_ID"});
    node->args.push_back(MakeConstant(Datum::OfInteger(found - keys.begin()), MakeType(TypeId::Int)));
  }
  groupings_ = groupings;
  return node;
}

BoundExprPtr Binder::FindKey(const BoundExpr& expr, const Scope& scope) const {
  for (size_t i = 0; i < scope.groupBy->size(); ++i) {
    const BoundExpr& key = *(*scope.groupBy)[i];
    if (!SameExpr(key, expr)) continue;
    BoundExprPtr column = ColumnOf(scope.grouping->groups, i, key);
    const auto lacks = [i](uint32_t set) { return (set >> i & 1) == 0; };
    column->nullable = key.nullable || std::ranges::any_of(scope.grouping->sets, lacks);
    return column;
  }
  return nullptr;
}

// An expression of GROUP BY is found as a whole, before what it is made of, which may be one itself.
BoundExprPtr Binder::FindKey(const Expr& expr) {
  if (expr.kind == ExprKind::Column) return nullptr; // as which it is bound in any case
  for (const Scope* scope = scope_; scope != nullptr; scope = scope->outer) {
    if (scope->grouping == nullptr || scope->inAggregate) continue;
    if (std::ranges::find(scope->grouping->kinds, expr.kind) == scope->grouping->kinds.end()) continue;
    const int groupings = std::exchange(groupings_, 0);
    const BoundExprPtr node = Bind(expr);
    groupings_ = groupings;
    if (BoundExprPtr key = FindKey(*node, *scope)) return key;
  }
  return nullptr;
}

// Puts the column of the groups in place of an aggregate or an expression of GROUP BY.
BoundExprPtr Binder::TakeGrouped(BoundExprPtr node) {
  for (const Scope* scope = scope_; scope != nullptr; scope = scope->outer) {
    if (scope->grouping == nullptr || scope->inAggregate) continue;
    if (BoundExprPtr key = FindKey(*node, *scope)) return key;
    const bool isOwnColumn = node->kind == BoundExpr::Kind::Column &&
                             std::ranges::any_of(scope->sources, [&](const ScopeSource& source) {
                               return source.id == node->source;
                             });
    if (isOwnColumn) Fail(scope->grouping->error, {node->display});
    const bool isResult =
        (node->kind == BoundExpr::Kind::Aggregate && !node->over) || node->kind == BoundExpr::Kind::Grouping;
    if (isResult && scope == scope_) return TakeResult(std::move(node));
  }
  return node;
}

BoundExprPtr Binder::TakeResult(BoundExprPtr node) const {
  Grouping& grouping = *scope_->grouping;
  const size_t keys = scope_->groupBy->size();
  if (node->kind == BoundExpr::Kind::Aggregate) {
    for (BoundExprPtr& arg : node->args) {
      if (IsFixed(*arg)) continue;
      BoundExprPtr column = ColumnOf(grouping.rows, 0, *arg);
      column->name = ResultColumnName(keys + PlaceOf(arg, grouping.taken));
      arg = std::move(column);
    }
  }
  BoundExprPtr column = ColumnOf(grouping.groups, 0, *node);
  column->name = ResultColumnName(keys + PlaceOf(node, grouping.result));
  return column;
}

// Makes the query of the groups and lets `bound` select from it. The rows that are grouped are a common table
// expression, so that they are found once for all sets.
void Binder::SplitGroups(BoundSelect& bound, Grouping& grouping) {
  --groupings_;
  const Type number = MakeType(TypeId::Int);
  auto rows = std::make_unique<BoundQuery>();
  rows->select = std::make_unique<BoundSelect>();
  rows->select->from = std::move(bound.from);
  rows->select->where = std::move(bound.where);
  auto groups = std::make_unique<BoundQuery>();
  groups->select = std::make_unique<BoundSelect>();
  BoundSelect& select = *groups->select;
  for (size_t i = 0; i < bound.groupBy.size(); ++i) {
    select.groupBy.push_back(ColumnOf(grouping.rows, i, *bound.groupBy[i]));
    select.items.emplace_back().expr = ColumnOf(grouping.rows, i, *bound.groupBy[i]);
    rows->select->items.emplace_back().expr = std::move(bound.groupBy[i]);
  }
  bound.groupBy.clear();
  std::ranges::move(grouping.taken, std::back_inserter(rows->select->items));
  std::ranges::move(grouping.result, std::back_inserter(select.items));
  // A query must have a column.
  if (rows->select->items.empty())
    rows->select->items.emplace_back().expr = MakeConstant(Datum::OfInteger(0), number);
  if (select.items.empty()) select.items.emplace_back().expr = MakeConstant(Datum::OfInteger(0), number);
  RefreshColumns(*rows);
  RefreshColumns(*groups);
  select.grouped = true;
  select.groupingSets = std::move(grouping.sets);

  BoundCommon& common = groups->commons.emplace_back();
  common.id = nextCommon_++;
  common.query = std::move(rows);
  select.from = std::make_unique<BoundSource>();
  select.from->kind = BoundSource::Kind::Common;
  select.from->common = common.id;
  select.from->id = grouping.rows;
  bound.from = std::make_unique<BoundSource>();
  bound.from->kind = BoundSource::Kind::Query;
  bound.from->id = grouping.groups;
  bound.from->query = std::move(groups);
  bound.where = std::move(bound.having);
  bound.grouped = false;
  bound.selectsGroups = true;
}

} // namespace tsql
