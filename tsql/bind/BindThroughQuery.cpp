// UPDATE and DELETE of what a query gives: a common table expression, a derived table or a view; and INSERT
// into a view.
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
  TablePtr table = ChangedTable(*query, entry->exposed, event);
  BoundSelect& select = *query->select;
  Through through;
  through.source = target;
  through.name = entry->exposed;
  for (size_t i = 0; i < entry->columns.size(); ++i)
    through.columns.emplace_back(entry->columns[i].name, ChangedColumn(*query, i));
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

// The one table that a query selects from, when its rows may be changed through it; `name` is the query's.
TablePtr Binder::ChangedTable(const BoundQuery& query, const std::string& name, TriggerEvent event) {
  if (query.op != SetOp::None) Fail(4426, {name});
  const BoundSelect& select = *query.select;
  if (select.distinct || select.grouped || select.selectsGroups) Fail(4403, {name});
  const bool isJoin = select.from && select.from->kind == BoundSource::Kind::Join;
  if (isJoin && event == TriggerEvent::Delete) Fail(4405, {name});
  if (!select.from || select.from->kind != BoundSource::Kind::Table)
    Refuse("Changing a query of several tables or of another query");
  return select.from->table;
}

int Binder::ChangedColumn(const BoundQuery& query, size_t index) {
  const BoundExpr& item = *query.select->items[index].expr;
  const bool isColumn = item.kind == BoundExpr::Kind::Column && item.source == query.select->from->id;
  return isColumn ? query.select->from->table->FindColumn(item.name) : -1;
}

TablePtr Binder::InsertThrough(const InsertStatement& statement, const ModuleInfo& view,
                               std::vector<std::string>& names) {
  if (statement.output) Refuse("OUTPUT of a change through a query or view");
  dependencies_.push_back({statement.table, nullptr, catalog_.FindView(statement.table)});
  Scope scope;
  TableSource source;
  source.name = statement.table;
  const BoundSourcePtr bound = BindView(view, source, scope);
  const std::vector<ScopeColumn>& columns = scope.sources.front().columns;
  TablePtr table = ChangedTable(*bound->query, view.name, TriggerEvent::Insert);
  std::vector<std::string> own;
  for (size_t i = 0; i < columns.size() && names.empty(); ++i) {
    const int column = ChangedColumn(*bound->query, i);
    if (column < 0) Fail(4406, {view.name});
    const ColumnInfo& info = table->columns[static_cast<size_t>(column)];
    if (!info.identity && !info.IsComputed()) own.push_back(info.name);
  }
  for (const std::string& name : names) {
    const auto found = std::ranges::find_if(
        columns, [&name](const ScopeColumn& column) { return EqualNames(column.name, name); });
    if (found == columns.end()) Fail(207, {name});
    const int column = ChangedColumn(*bound->query, static_cast<size_t>(found - columns.begin()));
    if (column < 0) Fail(4406, {view.name});
    own.push_back(table->columns[static_cast<size_t>(column)].name);
  }
  names = std::move(own);
  return table;
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
