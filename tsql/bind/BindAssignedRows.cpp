// SELECT @s = @s + name ... ORDER BY name. SQLite computes the items before it sorts the rows, and the server
// after. So the rows are sorted in an inner query, and the items are computed outside of it.
#include <algorithm>
#include <utility>

#include "tsql/bind/Binder.h"

namespace tsql {
namespace {

bool ReadsVariable(const BoundExpr& expr, const std::vector<BoundItem>& assigning) {
  const bool isRead =
      expr.kind == BoundExpr::Kind::Variable &&
      std::ranges::any_of(assigning, [&](const BoundItem& item) { return item.variable == expr.index; });
  return isRead || std::ranges::any_of(
                       expr.args, [&](const BoundExprPtr& arg) { return ReadsVariable(*arg, assigning); });
}

// Moves what an item takes from the rows into the inner query, and puts its columns in place.
void TakeFromRows(BoundExprPtr& expr, int source, std::vector<BoundItem>& taken) {
  const bool isOfRows = expr->query || expr->kind == BoundExpr::Kind::Column ||
                        expr->kind == BoundExpr::Kind::Aggregate || expr->kind == BoundExpr::Kind::Window;
  if (!isOfRows) {
    for (BoundExprPtr& arg : expr->args) TakeFromRows(arg, source, taken);
    return;
  }
  const auto found =
      std::ranges::find_if(taken, [&](const BoundItem& item) { return SameExpr(*item.expr, *expr); });
  BoundExprPtr column = MakeNode(BoundExpr::Kind::Column, expr->type);
  column->nullable = expr->nullable;
  TakeCollation(*column, *expr);
  column->ownCollation = expr->collation;
  column->source = source;
  column->name = ResultColumnName(static_cast<size_t>(found - taken.begin()));
  if (found == taken.end()) {
    BoundItem item;
    item.expr = std::move(expr);
    taken.push_back(std::move(item));
  }
  expr = std::move(column);
}

BoundExprPtr FirstRow() {
  return MakeConstant(Datum::OfInteger(0), MakeType(TypeId::BigInt));
}

} // namespace

BoundQueryPtr Binder::SortBeforeAssigning(BoundQueryPtr query) {
  if (query->op != SetOp::None || query->orderBy.empty()) return query;
  BoundSelect& select = *query->select;
  const auto reads = [&](const BoundItem& item) { return ReadsVariable(*item.expr, select.items); };
  if (select.distinct || std::ranges::none_of(select.items, reads)) return query;
  // Who sorts by what the items assign gets what SQLite makes of it.
  for (const BoundOrder& order : query->orderBy)
    if (order.ordinal >= 0 && reads(select.items[static_cast<size_t>(order.ordinal)])) return query;

  auto outer = std::make_unique<BoundQuery>();
  outer->select = std::make_unique<BoundSelect>();
  outer->columns = query->columns;
  auto source = std::make_unique<BoundSource>();
  source->kind = BoundSource::Kind::Query;
  source->id = nextSource_++;
  std::vector<BoundItem> taken;
  // Items that rows are sorted by stay in the inner query as they are.
  for (BoundOrder& order : query->orderBy) {
    if (order.ordinal < 0) continue;
    BoundExprPtr& expr = select.items[static_cast<size_t>(order.ordinal)].expr;
    const bool isTaken = expr->kind == BoundExpr::Kind::Column && expr->source == source->id;
    if (!isTaken) {
      BoundExprPtr column = MakeNode(BoundExpr::Kind::Column, expr->type);
      column->nullable = expr->nullable;
      TakeCollation(*column, *expr);
      column->ownCollation = expr->collation;
      column->source = source->id;
      column->name = ResultColumnName(taken.size());
      BoundItem item;
      item.expr = std::exchange(expr, std::move(column));
      taken.push_back(std::move(item));
    }
    for (size_t i = 0; i < taken.size(); ++i)
      if (ResultColumnName(i) == expr->name) order.ordinal = static_cast<int>(i);
  }
  for (BoundItem& item : select.items) {
    const bool isTaken = item.expr->kind == BoundExpr::Kind::Column && item.expr->source == source->id;
    if (!isTaken) TakeFromRows(item.expr, source->id, taken);
  }
  // A query must have a column.
  if (taken.empty()) taken.emplace_back().expr = FirstRow();
  outer->select->items = std::exchange(select.items, std::move(taken));
  // SQLite would make one query of the two again, unless both have a limit.
  if (!select.top && !query->offset) query->offset = FirstRow();
  outer->offset = FirstRow();
  RefreshColumns(*query);
  source->query = std::move(query);
  outer->select->from = std::move(source);
  return outer;
}

} // namespace tsql
