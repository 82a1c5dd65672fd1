// The OUTPUT clause of INSERT, UPDATE and DELETE.
#include <algorithm>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

bool HasSubquery(const BoundExpr& expr) {
  return expr.query != nullptr || std::any_of(expr.args.begin(), expr.args.end(),
                                              [](const BoundExprPtr& arg) { return HasSubquery(*arg); });
}

} // namespace

std::unique_ptr<BoundOutput> Binder::BindOutput(const OutputClause* clause, StatementKind kind,
                                                const TablePtr& table, int target, const Scope& from) {
  if (clause == nullptr) return nullptr;
  auto output = std::make_unique<BoundOutput>();
  auto source = std::make_unique<BoundSource>();
  source->id = nextSource_++;
  source->kind = BoundSource::Kind::Staged;
  Scope scope;
  scope.inOutput = true;
  const auto addRows = [&](const char* name, std::string (*columnName)(size_t)) {
    ScopeSource entry;
    entry.id = source->id;
    entry.exposed = name;
    entry.isAlias = true;
    entry.needsPrefix = true;
    entry.columns = ColumnsOf(*table);
    for (size_t i = 0; i < entry.columns.size(); ++i) entry.columns[i].sqlName = columnName(i);
    scope.sources.push_back(std::move(entry));
  };
  if (kind != StatementKind::Delete) addRows("inserted", StagedNewName);
  if (kind != StatementKind::Insert) addRows("deleted", StagedOldName);
  for (const ScopeSource& each : from.sources)
    if (each.id != target) scope.sources.push_back(each);
  output->query = std::make_unique<BoundQuery>();
  output->query->select = std::make_unique<BoundSelect>();
  BoundSelect& select = *output->query->select;
  Scope* saved = std::exchange(scope_, &scope);
  for (const SelectItem& item : clause->select.items)
    if (!item.expr && item.starPrefix.empty()) Fail(102, {"*"}, clause->select.line);
  BindItems(clause->select, select);
  scope_ = saved;
  for (BoundItem& item : select.items) {
    if (HasSubquery(*item.expr)) Fail(10705, {});
    StageOthers(*item.expr, source->id, *table, output->others);
  }
  select.from = std::move(source);
  RefreshColumns(*output->query);
  if (clause->into) BindOutputInto(*clause, *output);
  return output;
}

// Makes columns of other sources those of the staged rows.
void Binder::StageOthers(BoundExpr& expr, int staging, const TableInfo& table,
                         std::vector<BoundExprPtr>& others) {
  for (const BoundExprPtr& arg : expr.args) StageOthers(*arg, staging, table, others);
  if (expr.kind != BoundExpr::Kind::Column || expr.source == staging) return;
  BoundExprPtr copy = MakeNode(BoundExpr::Kind::Column, expr.type);
  copy->source = expr.source;
  copy->name = std::exchange(expr.name, StagedOtherName(table, others.size()));
  copy->baseColumn = std::exchange(expr.baseColumn, false);
  expr.source = staging;
  others.push_back(std::move(copy));
}

void Binder::BindOutputInto(const OutputClause& clause, BoundOutput& output) {
  BoundInsert into;
  into.table = RequireTable(*clause.into);
  const bool hasTriggers = std::ranges::any_of(catalog_.Triggers(), [&](const TriggerPtr& trigger) {
    return !trigger->module->disabled && EqualNames(trigger->table, into.table->name);
  });
  if (hasTriggers) Fail(331, {into.table->name});
  into.columns = InsertColumns(clause.columns, *into.table, false);
  std::vector<BoundItem>& items = output.query->select->items;
  if (items.size() != into.columns.size()) {
    if (clause.columns.empty()) Fail(213, {});
    Fail(items.size() < into.columns.size() ? 120 : 121, {});
  }
  for (size_t i = 0; i < items.size(); ++i)
    items[i].expr = AssignColumn(std::move(items[i].expr), *into.table, into.columns[i]);
  into.query = std::move(output.query);
  AddDefaults(into);
  output.into = std::move(into);
}

} // namespace tsql
