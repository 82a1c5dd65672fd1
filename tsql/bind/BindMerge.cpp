// MERGE: the join of its target and source, and what its actions see of it.
#include <algorithm>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/CollationNames.h"

namespace tsql {
namespace {

// The columns of the merged rows in front of those of the source.
constexpr size_t kAction = 0;
constexpr size_t kRowNumber = 1;
constexpr size_t kFirstOfSource = 2;

JoinKind JoinOf(const MergeStatement& statement) {
  const auto has = [&](MergeMatch match) {
    return std::ranges::any_of(statement.actions,
                               [match](const MergeAction& action) { return action.match == match; });
  };
  if (has(MergeMatch::Source)) return has(MergeMatch::Target) ? JoinKind::Full : JoinKind::Left;
  return has(MergeMatch::Target) ? JoinKind::Right : JoinKind::Inner;
}

BoundExprPtr IsThere(BoundExprPtr value, bool isThere) {
  BoundExprPtr test = MakeNode(BoundExpr::Kind::IsNull, {});
  test->negated = isThere;
  test->args.push_back(std::move(value));
  return test;
}

BoundExprPtr Both(BoundExprPtr left, BoundExprPtr right) {
  BoundExprPtr both = MakeNode(BoundExpr::Kind::And, {});
  both->args.push_back(std::move(left));
  both->args.push_back(std::move(right));
  return both;
}

BoundExprPtr AreEqual(BoundExprPtr left, BoundExprPtr right) {
  BoundExprPtr compare = MakeNode(BoundExpr::Kind::Compare, {});
  compare->args.push_back(std::move(left));
  compare->args.push_back(std::move(right));
  return compare;
}

BoundExprPtr MergedColumn(int rows, size_t column) {
  BoundExprPtr value = MakeNode(BoundExpr::Kind::Column, MakeType(TypeId::BigInt));
  value->source = rows;
  value->name = ResultColumnName(column);
  return value;
}

} // namespace

// A row for each of the join: the number of the action that it is for, null for none, the row's number in the
// target, and the source's columns.
BoundQueryPtr Binder::BindMerge(const MergeStatement& statement, TablePtr& target) {
  maxRecursion_ = statement.maxRecursion;
  auto query = std::make_unique<BoundQuery>();
  const size_t outerCommons = commons_.size();
  BindCommonTables(statement.commonTables, query->commons);
  query->select = std::make_unique<BoundSelect>();
  BoundSelect& select = *query->select;
  Scope scope;
  auto join = std::make_unique<BoundSource>();
  join->kind = BoundSource::Kind::Join;
  join->join = JoinOf(statement);
  // SQLite looks for the rows of the right side.
  join->left = BindSource(*statement.source, scope);
  join->right = BindSource(*statement.target, scope);
  if (join->right->kind != BoundSource::Kind::Table) Refuse("MERGE into anything but a table");
  target = join->right->table;
  const int targetId = join->right->id;
  const ScopeSource source = scope.sources.front();
  const ScopeColumn& present = source.columns.back();
  scope_ = &scope;
  join->on = Bind(*statement.on);
  BoundItem& number = select.items.emplace_back();
  number.expr = MakeNode(BoundExpr::Kind::Case, MakeType(TypeId::Int));
  for (const MergeAction& action : statement.actions) {
    BoundExprPtr applies = Both(IsThere(MakeColumn(source, present), action.match != MergeMatch::Target),
                                IsThere(RowNumberOf(targetId), action.match != MergeMatch::Source));
    if (action.condition) applies = Both(std::move(applies), Bind(*action.condition));
    number.expr->args.push_back(std::move(applies));
    const auto place = static_cast<int64_t>(number.expr->args.size() / 2 + 1);
    number.expr->args.push_back(MakeConstant(Datum::OfInteger(place), MakeType(TypeId::Int)));
  }
  select.items.emplace_back().expr = RowNumberOf(targetId);
  for (const ScopeColumn& column : source.columns) {
    if (&column == &present) continue;
    BoundItem& item = select.items.emplace_back();
    item.name = column.name;
    item.expr = MakeColumn(source, column);
  }
  scope_ = nullptr;
  select.from = std::move(join);
  RefreshColumns(*query);
  commons_.resize(outerCommons);
  return query;
}

BoundSourcePtr Binder::BindMerged(const TableSource& source, Scope& scope) {
  auto node = std::make_unique<BoundSource>();
  node->kind = BoundSource::Kind::Merged;
  node->id = nextSource_++;
  node->columns = *merged_;
  ScopeSource entry;
  entry.id = node->id;
  entry.isAlias = true;
  entry.exposed = source.alias;
  for (size_t i = kFirstOfSource; i < merged_->size(); ++i) {
    const Column& column = (*merged_)[i];
    entry.columns.push_back({column.name, ResultColumnName(i), column.type, true});
    if (!column.collation.empty()) entry.columns.back().collation = FindCollation(column.collation).value();
  }
  AddSource(scope, std::move(entry));
  return node;
}

// That the merged row is for the action.
BoundExprPtr Binder::BindAction(int rows, int action) {
  return AreEqual(MergedColumn(rows, kAction),
                  MakeConstant(Datum::OfInteger(action), MakeType(TypeId::BigInt)));
}

// That it is, and is of the target's row.
BoundExprPtr Binder::BindMergedRow(int target, const BoundSource& from, int action) {
  const int rows = from.right->id;
  return Both(BindAction(rows, action), AreEqual(RowNumberOf(target), MergedColumn(rows, kRowNumber)));
}

} // namespace tsql
