// UPDATE and DELETE of what a query gives: a common table expression, a derived table or a view.
#include <algorithm>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {

// A query's rows are changed in the table that it selects from: the query gives their numbers as one more
// column, by which the table is joined to it.
TablePtr Binder::BindThroughQuery(TriggerEvent event, const Scope& scope, std::vector<BoundCommon>& commons,
                                  BoundSourcePtr& source, int& target) {
  const BoundSource* const node = FindSource(*source, target);
  const auto isTarget = [target](const ScopeSource& entry) { return entry.id == target; };
  const auto entry = std::find_if(scope.sources.begin(), scope.sources.end(), isTarget);
  if (entry->system != nullptr) Fail(259, {});
  BoundQuery* query = node->query.get();
  if (node->kind == BoundSource::Kind::Common)
    for (const BoundCommon& common : commons)
      if (common.id == node->common) query = common.query.get();
  if (query == nullptr) Refuse("Changing a query of several tables or of another query");
  if (query->op != SetOp::None) Fail(4426, {entry->exposed});
  BoundSelect& select = *query->select;
  if (select.distinct || select.grouped || select.selectsGroups) Fail(4403, {entry->exposed});
  const bool isJoin = select.from && select.from->kind == BoundSource::Kind::Join;
  if (isJoin && event == TriggerEvent::Delete) Fail(4405, {entry->exposed});
  if (!select.from || select.from->kind != BoundSource::Kind::Table)
    Refuse("Changing a query of several tables or of another query");
  TablePtr table = select.from->table;
  Through through;
  through.source = target;
  through.name = entry->exposed;
  for (size_t i = 0; i < entry->columns.size(); ++i) {
    const BoundExpr& item = *select.items[i].expr;
    const bool isColumn = item.kind == BoundExpr::Kind::Column && item.source == select.from->id;
    through.columns.emplace_back(entry->columns[i].name, isColumn ? table->FindColumn(item.name) : -1);
  }
  through_ = std::move(through);
  BoundItem number;
  number.expr = RowNumberOf(select.from->id);
  select.items.push_back(std::move(number));

  auto own = std::make_unique<BoundSource>();
  own->kind = BoundSource::Kind::Table;
  own->table = table;
  own->id = nextSource_++;
  BoundExprPtr given = RowNumberOf(target);
  given->name = ResultColumnName(select.items.size() - 1);
  BoundExprPtr compare = MakeNode(BoundExpr::Kind::Compare, {});
  compare->args.push_back(RowNumberOf(own->id));
  compare->args.push_back(std::move(given));
  target = own->id;
  auto join = std::make_unique<BoundSource>();
  join->kind = BoundSource::Kind::Join;
  join->join = JoinKind::Inner;
  join->left = std::move(source);
  join->right = std::move(own);
  join->on = std::move(compare);
  source = std::move(join);
  return table;
}

const BoundSource* Binder::FindSource(const BoundSource& tree, int id) {
  if (tree.kind != BoundSource::Kind::Join) return tree.id == id ? &tree : nullptr;
  const BoundSource* const found = FindSource(*tree.left, id);
  return found != nullptr ? found : FindSource(*tree.right, id);
}

// The column of the table that is changed; -1 when there is none of the name.
int Binder::FindAssigned(const std::string& name, const TableInfo& table) const {
  if (!through_) return table.FindColumn(name);
  for (const auto& [own, column] : through_->columns) {
    if (!EqualNames(own, name)) continue;
    if (column < 0) Fail(4406, {through_->name});
    return column;
  }
  return -1;
}

} // namespace tsql
