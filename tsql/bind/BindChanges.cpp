#include <algorithm>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/catalog/Schemas.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

bool IsOrderSensitive(const BoundQuery& query) {
  // A conversion inside the query would change what DISTINCT, UNION and ORDER BY work on.
  if (query.op != SetOp::None || query.select->distinct) return true;
  return std::any_of(query.orderBy.begin(), query.orderBy.end(),
                     [](const BoundOrder& order) { return order.ordinal >= 0; });
}

bool IsSameSchema(const std::string& left, const std::string& right) {
  return EqualNames(left, right) || ((left.empty() || IsDbo(left)) && (right.empty() || IsDbo(right)));
}

} // namespace

// The source in FROM that is the target, found by its alias or by its table's name.
const TableSource* Binder::FindTargetSource(const TableSource& from, const ObjectName& name,
                                            bool byAlias) const {
  if (from.kind == TableSource::Kind::Join) {
    const TableSource* found = FindTargetSource(*from.left, name, byAlias);
    return found != nullptr ? found : FindTargetSource(*from.right, name, byAlias);
  }
  if (from.kind == TableSource::Kind::Derived)
    return byAlias && EqualNames(from.alias, name.name) ? &from : nullptr;
  if (from.kind != TableSource::Kind::Named) return nullptr;
  if (byAlias && !from.alias.empty()) return EqualNames(from.alias, name.name) ? &from : nullptr;
  if (!EqualNames(from.name.name, name.name)) return nullptr;
  const bool isSame =
      EqualNames(from.name.schema, name.schema) || catalog_.KeyOf(from.name) == catalog_.KeyOf(name);
  return isSame ? &from : nullptr;
}

bool Binder::IsPending(const ObjectName& name) const {
  const auto isSame = [&](const ObjectName& table) {
    return EqualNames(table.name, name.name) && IsSameSchema(table.schema, name.schema);
  };
  return pending_ != nullptr && std::any_of(pending_->begin(), pending_->end(), isSame);
}

TablePtr Binder::FindTableVariable(const ObjectName& name) {
  const auto isSame = [&](const TablePtr& table) { return EqualNames(table->name, name.name); };
  if (tableVariables_ == nullptr) Fail(1087, {name.name});
  const auto found = std::find_if(tableVariables_->begin(), tableVariables_->end(), isSame);
  if (found == tableVariables_->end()) Fail(1087, {name.name});
  if (variablesAre_ == Variables::InCatalog) return catalog_.FindTable(name);
  if (variablesAre_ == Variables::Declared) isAhead_ = true;
  return *found;
}

TablePtr Binder::FindTable(const ObjectName& name) {
  if (name.variable) return FindTableVariable(name);
  if (inFunction_ && PlaceOf(name) != Place::Main) Fail(2772, {});
  return IsPending(name) ? nullptr : catalog_.FindTable(name);
}

TablePtr Binder::RequireTable(const ObjectName& name) {
  if (IsFired(name)) Fail(286, {});
  TablePtr table = FindTable(name);
  if (!table) {
    if (catalog_.FindView(name)) Refuse("Changing a view");
    Fail(208, {name.Written()});
  }
  dependencies_.push_back({name, table, nullptr});
  return table;
}

ModulePtr Binder::FindTarget(const ObjectName& name, TriggerEvent event) const {
  const ModulePtr view = IsFired(name) || catalog_.FindTable(name) ? nullptr : catalog_.FindView(name);
  return view && catalog_.HasTriggers(view->key, event) ? view : nullptr;
}

TablePtr Binder::RequireTarget(const ObjectName& name, TriggerEvent event) {
  const ModulePtr view = FindTarget(name, event);
  if (!view) return RequireTable(name);
  dependencies_.push_back({name, nullptr, view});
  return ViewTable(*view);
}

BoundExprPtr Binder::AssignColumn(BoundExprPtr expr, const TableInfo& table, int column) const {
  const ColumnInfo& info = table.columns[static_cast<size_t>(column)];
  BoundExprPtr value = Assign(std::move(expr), info.type);
  if (info.identity && table.CountsIdentity()) {
    const Type type = value->type;
    std::vector<BoundExprPtr> args;
    args.push_back(std::move(value));
    return MakeFunction(FunctionId::GivenIdentity, type, std::move(args));
  }
  // For a NULL in the rowid column SQLite would make up a number instead of refusing it.
  if (column != table.rowidColumn || info.identity || !value->nullable) return value;
  const Type type = value->type;
  std::vector<BoundExprPtr> args;
  args.push_back(std::move(value));
  args.push_back(MakeConstant(Datum::OfText(info.name), MakeType(TypeId::NVarChar, 128)));
  return MakeFunction(FunctionId::NotNull, type, std::move(args));
}

BoundExprPtr Binder::BindDefault(const TableInfo& table, int column) {
  const ColumnInfo& info = table.columns[static_cast<size_t>(column)];
  if (info.defaultText.empty()) return MakeConstant({}, info.type);
  const ExprPtr expr = ParseDefault(info.defaultText);
  Scope* saved = std::exchange(scope_, nullptr);
  BoundExprPtr value = Bind(*expr);
  scope_ = saved;
  return value;
}

// ---- INSERT

std::vector<int> Binder::InsertColumns(const std::vector<std::string>& names, const TableInfo& table,
                                       bool identityInsert) {
  std::vector<int> columns;
  if (names.empty()) {
    for (size_t i = 0; i < table.columns.size(); ++i)
      if (!table.columns[i].identity && !table.columns[i].IsComputed())
        columns.push_back(static_cast<int>(i));
    if (identityInsert) Fail(8101, {table.name});
    return columns;
  }
  for (const std::string& name : names) {
    const int column = table.FindColumn(name);
    if (column < 0) Fail(207, {name});
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) Fail(264, {name});
    const ColumnInfo& info = table.columns[static_cast<size_t>(column)];
    if (info.IsComputed()) Fail(271, {info.name});
    if (info.identity && !identityInsert) Fail(544, {table.name});
    columns.push_back(column);
  }
  const bool lacksIdentity = std::find(columns.begin(), columns.end(), table.identityColumn) == columns.end();
  if (identityInsert && table.identityColumn >= 0 && lacksIdentity) Fail(545, {table.name});
  return columns;
}

BoundInsert Binder::BindInsert(const InsertStatement& statement, bool identityInsert) {
  BoundInsert bound;
  const bool hasTable = IsFired(statement.table) || FindTable(statement.table) ||
                        FindTarget(statement.table, TriggerEvent::Insert);
  const ModulePtr view = hasTable ? nullptr : catalog_.FindView(statement.table);
  std::vector<std::string> names = statement.columns;
  bound.table =
      view ? InsertThrough(statement, *view, names) : RequireTarget(statement.table, TriggerEvent::Insert);
  if (!statement.defaultValues) bound.columns = InsertColumns(names, *bound.table, identityInsert);
  if (statement.query) {
    BindInsertQuery(statement, bound);
  } else {
    BindInsertRows(statement, bound);
  }
  AddDefaults(bound);
  bound.output = BindOutput(statement.output.get(), statement.kind, bound.table, -1, Scope());
  return bound;
}

BoundInsert Binder::BindInsertMarkers(const InsertExecuteStatement& statement, bool identityInsert) {
  BoundInsert bound;
  bound.table = RequireTable(statement.table);
  bound.columns = InsertColumns(statement.columns, *bound.table, identityInsert);
  if (bound.columns.size() != markers_.size()) Fail(213, {});
  std::vector<BoundExprPtr> values;
  for (size_t i = 0; i < markers_.size(); ++i) {
    BoundExprPtr marker = MakeNode(BoundExpr::Kind::Marker, markers_[i]);
    marker->index = static_cast<int>(i);
    values.push_back(AssignColumn(std::move(marker), *bound.table, bound.columns[i]));
  }
  bound.rows.push_back(std::move(values));
  AddDefaults(bound);
  return bound;
}

void Binder::BindInsertRows(const InsertStatement& statement, BoundInsert& bound) {
  if (statement.defaultValues) {
    bound.rows.emplace_back();
    return;
  }
  for (const std::vector<ExprPtr>& row : statement.rows) {
    if (row.size() != statement.rows.front().size()) Fail(10709, {});
    if (row.size() != bound.columns.size()) {
      if (statement.columns.empty()) Fail(213, {});
      Fail(row.size() < bound.columns.size() ? 109 : 110, {});
    }
    std::vector<BoundExprPtr> values;
    for (size_t i = 0; i < row.size(); ++i) {
      const int column = bound.columns[i];
      BoundExprPtr value =
          row[i]->kind == ExprKind::Default ? BindDefault(*bound.table, column) : Bind(*row[i]);
      values.push_back(AssignColumn(std::move(value), *bound.table, column));
    }
    bound.rows.push_back(std::move(values));
  }
  if (statement.top) bound.limit = BindChangeTop(statement.top);
}

void Binder::BindInsertQuery(const InsertStatement& statement, BoundInsert& bound) {
  maxRecursion_ = statement.query->maxRecursion;
  bound.query = BindQuery(*statement.query, false);
  if (statement.role.merge != nullptr) {
    BoundSelect& select = *bound.query->select;
    select.where = BindAction(select.from->id, statement.role.action);
  }
  const size_t given = bound.query->columns.size();
  if (given != bound.columns.size()) {
    if (statement.columns.empty()) Fail(213, {});
    Fail(given < bound.columns.size() ? 120 : 121, {});
  }
  bound.limit = BindChangeTop(statement.top);
  if (!bound.limit && !IsOrderSensitive(*bound.query)) {
    for (size_t i = 0; i < given; ++i) {
      BoundExprPtr& expr = bound.query->select->items[i].expr;
      expr = AssignColumn(std::move(expr), *bound.table, bound.columns[i]);
    }
    return;
  }
  bound.wrapper = nextSource_++;
  for (size_t i = 0; i < given; ++i) {
    auto column = std::make_unique<BoundExpr>();
    column->kind = BoundExpr::Kind::Column;
    column->type = bound.query->columns[i].type;
    column->nullable = bound.query->columns[i].nullable;
    column->source = bound.wrapper;
    column->name = ResultColumnName(i);
    bound.conversions.push_back(AssignColumn(std::move(column), *bound.table, bound.columns[i]));
  }
}

void Binder::AddDefaults(BoundInsert& bound) {
  const TableInfo& table = *bound.table;
  for (size_t i = 0; i < table.columns.size(); ++i) {
    const int column = static_cast<int>(i);
    const bool given = std::find(bound.columns.begin(), bound.columns.end(), column) != bound.columns.end();
    if (given || table.columns[i].identity || table.columns[i].IsComputed()) continue;
    // For a column that must have a value SQLite might know one of its own.
    if (table.columns[i].defaultText.empty() && table.columns[i].nullable) continue;
    bound.columns.push_back(column);
    const auto value = [&] { return AssignColumn(BindDefault(table, column), table, column); };
    for (std::vector<BoundExprPtr>& row : bound.rows) row.push_back(value());
    if (bound.query) bound.extras.push_back(value());
  }
}

// ---- UPDATE and DELETE

TablePtr Binder::BindTarget(const ObjectName& name, TriggerEvent event, const TableSource* from, Scope& scope,
                            BoundSourcePtr& source, int& target) {
  if (from == nullptr) {
    const ModulePtr fired = FindCommon(name) == nullptr ? FindTarget(name, event) : nullptr;
    if (fired || FindCommon(name) != nullptr ||
        (!FindTable(name) && (catalog_.FindView(name) || FindSystemView(name) != nullptr))) {
      TableSource own;
      own.name = name;
      source = BindNamed(own, scope);
      target = source->id;
      return fired ? ViewTable(*fired) : nullptr;
    }
    TablePtr table = RequireTable(name);
    ScopeSource entry;
    entry.id = target = nextSource_++;
    entry.exposed = name.name;
    entry.schema = table->schema;
    entry.isTable = true;
    entry.table = table;
    entry.columns = ColumnsOf(*table);
    scope.sources.push_back(std::move(entry));
    return table;
  }
  const TableSource* targetSource = name.schema.empty() ? FindTargetSource(*from, name, true) : nullptr;
  if (targetSource == nullptr) targetSource = FindTargetSource(*from, name, false);
  if (targetSource == nullptr) {
    // A target that is not in FROM is joined to it without a condition.
    TableSource own;
    own.name = name;
    source = std::make_unique<BoundSource>();
    source->kind = BoundSource::Kind::Join;
    source->join = JoinKind::Cross;
    source->left = BindNamed(own, scope);
    source->right = BindSource(*from, scope);
    target = source->left->id;
    if (IsFired(name)) Fail(286, {});
    return source->left->table;
  }
  source = BindSource(*from, scope);
  const std::string& exposed = targetSource->alias.empty() ? targetSource->name.name : targetSource->alias;
  for (const ScopeSource& entry : scope.sources) {
    if (!EqualNames(entry.exposed, exposed)) continue;
    if (targetSource->alias.empty() && entry.table && entry.table != catalog_.FindTable(targetSource->name))
      continue;
    if (entry.isFired) Fail(286, {});
    target = entry.id;
    return entry.table;
  }
  Fail(208, {name.name});
}

// The lower one of TOP and SET ROWCOUNT; null without both.
BoundExprPtr Binder::BindChangeTop(const ExprPtr& top) {
  if (!isLimited_) return top ? BindTop(*top) : nullptr;
  BoundExprPtr limit = MakeGlobal(GlobalValue::RowLimit, MakeType(TypeId::BigInt));
  if (!top) return limit;
  const Type type = MakeType(TypeId::BigInt);
  BoundExprPtr compare = MakeNode(BoundExpr::Kind::Compare, {});
  compare->compare = CompareOp::Less;
  compare->args.push_back(BindTop(*top));
  compare->args.push_back(MakeGlobal(GlobalValue::RowLimit, type));
  BoundExprPtr lower = MakeNode(BoundExpr::Kind::Case, type);
  lower->hasElse = true;
  lower->args.push_back(std::move(compare));
  lower->args.push_back(BindTop(*top));
  lower->args.push_back(std::move(limit));
  return lower;
}

void Binder::BindChangeLimit(const ExprPtr& top, bool isPercent, BoundChange& bound) {
  if (!isPercent) {
    bound.top = BindChangeTop(top);
    return;
  }
  bound.top = BindTopPercent(*top);
  bound.topPercent = true;
  if (isLimited_) bound.limit = MakeGlobal(GlobalValue::RowLimit, MakeType(TypeId::BigInt));
}

BoundExprPtr Binder::RowNumberOf(int source) {
  BoundExprPtr number = MakeNode(BoundExpr::Kind::Column, MakeType(TypeId::BigInt));
  number->source = source;
  number->name = "_rowid_";
  return number;
}

BoundExprPtr Binder::BindCurrentOf(int target) {
  BoundExprPtr compare = MakeNode(BoundExpr::Kind::Compare, {});
  compare->args.push_back(RowNumberOf(target));
  compare->args.push_back(MakeGlobal(GlobalValue::CurrentRow, MakeType(TypeId::BigInt)));
  return compare;
}

BoundQueryPtr Binder::BindCursorQuery(const Query& query, std::vector<TablePtr>& tables) {
  BoundQueryPtr bound = BindStatementQuery(query);
  if (bound->op != SetOp::None) return bound;
  BoundSelect& select = *bound->select;
  if (select.distinct || select.grouped || select.top || !select.from) return bound;
  std::vector<const BoundSource*> left{select.from.get()};
  while (!left.empty()) {
    const BoundSource& source = *left.back();
    left.pop_back();
    if (source.kind == BoundSource::Kind::Join) {
      left.push_back(source.left.get());
      left.push_back(source.right.get());
    } else if (source.kind == BoundSource::Kind::Table) {
      tables.push_back(source.table);
      BoundItem item;
      item.expr = RowNumberOf(source.id);
      select.items.push_back(std::move(item));
    }
  }
  return bound;
}

BoundUpdate Binder::BindUpdate(const UpdateStatement& statement) {
  BoundUpdate bound;
  maxRecursion_ = statement.maxRecursion;
  BindCommonTables(statement.commonTables, bound.commons);
  Scope scope;
  bound.table = BindTarget(statement.target, TriggerEvent::Update, statement.from.get(), scope, bound.from,
                           bound.target);
  if (!bound.table)
    bound.table = BindThroughQuery(TriggerEvent::Update, scope, bound.commons, bound.from, bound.target);
  if (through_ && statement.output) Refuse("OUTPUT of a change through a query or view");
  scope_ = &scope;
  BindAssignments(statement, bound);
  if (statement.where) bound.where = Bind(*statement.where);
  if (!statement.currentOf.name.empty()) bound.where = BindCurrentOf(bound.target);
  if (statement.role.merge != nullptr)
    bound.where = BindMergedRow(bound.target, *bound.from, statement.role.action);
  BindChangeLimit(statement.top, statement.topPercent, bound);
  scope_ = nullptr;
  if (statement.output && std::ranges::any_of(bound.table->columns, &ColumnInfo::IsComputed))
    Refuse("OUTPUT of an UPDATE of a table with computed columns");
  bound.output = BindOutput(statement.output.get(), statement.kind, bound.table, bound.target, scope);
  return bound;
}

// The value, given to the variable too; 137 where there is none, 206 where it cannot have it.
BoundExprPtr Binder::AssignVariable(const std::string& name, BoundExprPtr value, BoundUpdate& bound) const {
  const int index = FindVariable(variables_, name);
  if (index < 0) Fail(137, {name});
  const Type& to = variables_[static_cast<size_t>(index)].type;
  const Type from = value->type;
  Convert(MakeNode(BoundExpr::Kind::Column, from), to); // for its errors
  bound.variables.push_back(index);
  const Type number = MakeType(TypeId::BigInt);
  std::vector<BoundExprPtr> args;
  args.push_back(MakeConstant(Datum::OfInteger(index), number));
  args.push_back(MakeConstant(Datum::OfInteger(EncodeType(to)), number));
  args.push_back(MakeConstant(Datum::OfInteger(EncodeType(from)), number));
  args.push_back(std::move(value));
  return MakeFunction(FunctionId::AssignVariable, from, std::move(args));
}

// Variables without a column are assigned before the value of the column that is computed first.
void Binder::JoinAssignments(std::vector<BoundExprPtr> variables, BoundUpdate& bound) {
  const TableInfo& table = *bound.table;
  if (bound.assignments.empty()) {
    int column = 0;
    while (table.columns[static_cast<size_t>(column)].IsComputed()) ++column;
    ScopeSource own; // of a change through a query, whose table nobody can name
    own.id = bound.target;
    own.columns = ColumnsOf(table);
    const ScopeSource* target = &own;
    for (const ScopeSource& source : scope_->sources)
      if (source.id == bound.target) target = &source;
    bound.assignments.emplace_back(column, MakeColumn(*target, target->columns[static_cast<size_t>(column)]));
  }
  const auto isBefore = [&](const auto& left, const auto& right) {
    if (left.first == table.rowidColumn || right.first == table.rowidColumn)
      return left.first == table.rowidColumn && right.first != table.rowidColumn;
    return left.first < right.first;
  };
  BoundExprPtr& first = std::ranges::min_element(bound.assignments, isBefore)->second;
  std::ranges::reverse(variables); // each is put in front
  for (BoundExprPtr& variable : variables) {
    const Type type = first->type;
    std::vector<BoundExprPtr> args;
    args.push_back(std::move(variable));
    args.push_back(std::move(first));
    first = MakeFunction(FunctionId::Then, type, std::move(args));
  }
}

void Binder::BindAssignments(const UpdateStatement& statement, BoundUpdate& bound) {
  std::vector<BoundExprPtr> variables;
  for (const Assignment& assignment : statement.assignments) {
    if (assignment.column.empty()) {
      const int index = FindVariable(variables_, assignment.variable);
      if (index < 0) Fail(137, {assignment.variable});
      const Type& to = variables_[static_cast<size_t>(index)].type;
      BoundExprPtr value = Bind(*assignment.value);
      RequireCollation(*value, to);
      value = Convert(std::move(value), to);
      variables.push_back(AssignVariable(assignment.variable, std::move(value), bound));
      continue;
    }
    const std::string& name = assignment.column.back();
    const int column = FindAssigned(name, *bound.table);
    if (assignment.column.size() > 1) {
      bool prefixFound = false;
      const Resolved found = ResolveIn(*scope_, assignment.column, prefixFound);
      if (!prefixFound) Fail(4104, {assignment.column[assignment.column.size() - 2] + "." + name});
      if (found.source != nullptr && found.source->id != (through_ ? through_->source : bound.target))
        Fail(4104, {assignment.column[assignment.column.size() - 2] + "." + name});
    }
    if (column < 0) Fail(207, {name});
    const ColumnInfo& info = bound.table->columns[static_cast<size_t>(column)];
    if (info.IsComputed()) Fail(271, {info.name});
    if (info.identity) Fail(8102, {info.name});
    for (const auto& other : bound.assignments)
      if (other.first == column) Fail(264, {info.name});
    BoundExprPtr value = assignment.value->kind == ExprKind::Default ? BindDefault(*bound.table, column)
                                                                     : BindAssigned(assignment, bound);
    value = AssignColumn(std::move(value), *bound.table, column);
    if (!assignment.variable.empty()) value = AssignVariable(assignment.variable, std::move(value), bound);
    bound.assignments.emplace_back(column, std::move(value));
    bound.named.push_back(column);
  }
  if (!variables.empty()) JoinAssignments(std::move(variables), bound);
}

BoundExprPtr Binder::BindAssigned(const Assignment& assignment, const BoundUpdate& bound) {
  if (!assignment.isCompound) return Bind(*assignment.value);
  ownColumn_ = assignment.value->args.front().get();
  ownSource_ = through_ ? through_->source : bound.target;
  BoundExprPtr value = Bind(*assignment.value);
  ownColumn_ = nullptr;
  return value;
}

BoundDelete Binder::BindDelete(const DeleteStatement& statement) {
  BoundDelete bound;
  maxRecursion_ = statement.maxRecursion;
  BindCommonTables(statement.commonTables, bound.commons);
  Scope scope;
  bound.table = BindTarget(statement.target, TriggerEvent::Delete, statement.from.get(), scope, bound.from,
                           bound.target);
  if (!bound.table)
    bound.table = BindThroughQuery(TriggerEvent::Delete, scope, bound.commons, bound.from, bound.target);
  if (through_ && statement.output) Refuse("OUTPUT of a change through a query or view");
  scope_ = &scope;
  if (statement.where) bound.where = Bind(*statement.where);
  if (!statement.currentOf.name.empty()) bound.where = BindCurrentOf(bound.target);
  if (statement.role.merge != nullptr)
    bound.where = BindMergedRow(bound.target, *bound.from, statement.role.action);
  BindChangeLimit(statement.top, statement.topPercent, bound);
  scope_ = nullptr;
  bound.output = BindOutput(statement.output.get(), statement.kind, bound.table, bound.target, scope);
  return bound;
}

} // namespace tsql
