#include <algorithm>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/catalog/SchemaBinding.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/CollationNames.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr int kMaxViewDepth = 32;
constexpr size_t kMostAppliedColumns = 256; // that t_rows has
constexpr char kSeveralMembers[] = "A common table expression with several recursive members";

// How the FROM of a recursive member uses the common table expression itself.
struct OwnUses {
  int direct = 0;
  int derived = 0; // within derived tables
  int source = -1; // the last direct one
  bool outerJoin = false;
};

void CountOwnUses(const BoundSource& source, int common, bool isDerived, OwnUses& uses);

void CountOwnUses(const BoundQuery& query, int common, bool isDerived, OwnUses& uses) {
  if (query.op != SetOp::None) {
    CountOwnUses(*query.left, common, isDerived, uses);
    CountOwnUses(*query.right, common, isDerived, uses);
  } else if (query.select->from) {
    CountOwnUses(*query.select->from, common, isDerived, uses);
  }
}

void CountOwnUses(const BoundSource& source, int common, bool isDerived, OwnUses& uses) {
  switch (source.kind) {
  case BoundSource::Kind::Join:
    uses.outerJoin =
        uses.outerJoin || (!isDerived && source.join != JoinKind::Inner && source.join != JoinKind::Cross);
    CountOwnUses(*source.left, common, isDerived, uses);
    CountOwnUses(*source.right, common, isDerived, uses);
    break;
  case BoundSource::Kind::Query: CountOwnUses(*source.query, common, true, uses); break;
  case BoundSource::Kind::Common:
    if (source.common != common) break;
    ++(isDerived ? uses.derived : uses.direct);
    if (!isDerived) uses.source = source.id;
    break;
  default: break;
  }
}

bool HasApplied(const BoundSource& source) {
  if (source.kind != BoundSource::Kind::Join) return source.applied;
  return HasApplied(*source.left) || HasApplied(*source.right);
}

} // namespace

std::vector<Binder::ScopeColumn> Binder::ColumnsOf(const TableInfo& table) {
  std::vector<ScopeColumn> columns;
  for (const ColumnInfo& column : table.columns)
    columns.push_back({column.name, column.name, column.type, column.nullable, column.collation});
  return columns;
}

std::vector<Binder::ScopeColumn> Binder::ColumnsOf(const BoundQuery& query,
                                                   const std::vector<std::string>& aliases,
                                                   const std::string& name, bool needNames) {
  if (!aliases.empty() && aliases.size() != query.columns.size())
    Fail(aliases.size() < query.columns.size() ? 8158 : 8159, {name});
  std::vector<ScopeColumn> columns;
  for (size_t i = 0; i < query.columns.size(); ++i) {
    const Column& column = query.columns[i];
    const std::string& columnName = aliases.empty() ? column.name : aliases[i];
    if (columnName.empty() && needNames) Fail(8155, {std::to_string(i + 1), name});
    for (const ScopeColumn& other : columns)
      if (EqualNames(other.name, columnName)) Fail(8156, {columnName, name});
    columns.push_back({columnName, ResultColumnName(i), column.type, column.nullable});
    if (!column.collation.empty()) columns.back().collation = FindCollation(column.collation).value();
  }
  return columns;
}

void Binder::AddSource(Scope& scope, ScopeSource source) const {
  for (const ScopeSource& other : scope.sources) {
    if (!EqualNames(other.exposed, source.exposed)) continue;
    if (source.isAlias || other.isAlias) Fail(1011, {source.exposed});
    if (!EqualNames(other.schema, source.schema)) continue;
    Fail(1013, {source.exposed, other.exposed});
  }
  scope.sources.push_back(std::move(source));
}

BoundSourcePtr Binder::BindSource(const TableSource& source, Scope& scope) {
  switch (source.kind) {
  case TableSource::Kind::Join: return BindJoin(source, scope);
  case TableSource::Kind::Derived: return BindDerived(source, scope, scope.outer);
  case TableSource::Kind::Values: return BindValues(source, scope, scope.outer);
  case TableSource::Kind::Function: return BindFunctionSource(source, scope, scope.outer);
  case TableSource::Kind::Merged: return BindMerged(source, scope);
  case TableSource::Kind::Named: break;
  }
  return BindNamed(source, scope);
}

BoundSourcePtr Binder::BindJoin(const TableSource& source, Scope& scope) {
  auto node = std::make_unique<BoundSource>();
  node->kind = BoundSource::Kind::Join;
  const bool isApply = source.join == JoinKind::CrossApply || source.join == JoinKind::OuterApply;
  node->join = source.join == JoinKind::CrossApply   ? JoinKind::Cross
               : source.join == JoinKind::OuterApply ? JoinKind::Left
                                                     : source.join;
  const size_t leftBegin = scope.sources.size();
  node->left = BindSource(*source.left, scope);
  const size_t rightBegin = scope.sources.size();
  node->right = isApply ? BindApplied(*source.right, scope, leftBegin) : BindSource(*source.right, scope);
  if (source.on) {
    // ON sees the tables of its own join only.
    Scope inner;
    inner.outer = scope.outer;
    inner.sources.assign(scope.sources.begin() + static_cast<std::ptrdiff_t>(leftBegin), scope.sources.end());
    Scope* saved = scope_;
    scope_ = &inner;
    node->on = Bind(*source.on);
    scope_ = saved;
  }
  const auto makeNullable = [&scope](size_t begin, size_t end) {
    for (size_t i = begin; i < end; ++i)
      for (ScopeColumn& column : scope.sources[i].columns) column.nullable = true;
  };
  const bool leftOuter = node->join == JoinKind::Right || node->join == JoinKind::Full;
  const bool rightOuter = node->join == JoinKind::Left || node->join == JoinKind::Full;
  if (leftOuter && (HasApplied(*node->left) || HasApplied(*node->right)))
    Refuse("APPLY beside a RIGHT or FULL JOIN");
  if (leftOuter) makeNullable(leftBegin, rightBegin);
  if (rightOuter) makeNullable(rightBegin, scope.sources.size());
  return node;
}

// The right side of an APPLY sees the sources of the left side.
BoundSourcePtr Binder::BindApplied(const TableSource& source, Scope& scope, size_t leftBegin) {
  Scope left;
  left.outer = scope.outer;
  left.sources.assign(scope.sources.begin() + static_cast<std::ptrdiff_t>(leftBegin), scope.sources.end());
  switch (source.kind) {
  case TableSource::Kind::Derived: return BindDerived(source, scope, &left);
  case TableSource::Kind::Values: return BindValues(source, scope, &left);
  case TableSource::Kind::Function: return BindFunctionSource(source, scope, &left);
  default: return BindSource(source, scope);
  }
}

const Binder::CommonInfo* Binder::FindCommon(const ObjectName& name) const {
  if (!name.schema.empty() || name.variable) return nullptr;
  const auto found = std::find_if(commons_.rbegin(), commons_.rend(), [&](const CommonInfo& common) {
    return EqualNames(common.name, name.name);
  });
  return found != commons_.rend() ? &*found : nullptr;
}

const Binder::CommonInfo* Binder::UseCommon(const ObjectName& name) {
  const CommonInfo* found = FindCommon(name);
  if (found == nullptr) return nullptr;
  if (found->misuse == kUnsupportedError) Refuse(kSeveralMembers);
  if (found->misuse != 0) Fail(found->misuse, {found->name});
  ++commons_[static_cast<size_t>(found - commons_.data())].uses;
  return found;
}

BoundSourcePtr Binder::BindNamed(const TableSource& source, Scope& scope) {
  auto node = std::make_unique<BoundSource>();
  ScopeSource entry;
  entry.isAlias = !source.alias.empty();
  entry.exposed = entry.isAlias ? source.alias : source.name.name;
  if (const CommonInfo* common = UseCommon(source.name)) {
    node->kind = BoundSource::Kind::Common;
    node->common = common->id;
    entry.columns = common->columns;
  } else if (IsFired(source.name)) {
    return BindFired(source, scope);
  } else if (TablePtr table = FindTable(source.name)) {
    dependencies_.push_back({source.name, table, nullptr});
    if (!source.name.variable) CheckSchemaBound(source.name, nullptr);
    node->table = table;
    entry.table = table;
    entry.schema = table->schema;
    entry.isTable = true;
    entry.columns = ColumnsOf(*table);
  } else if (const ModulePtr view = catalog_.FindView(source.name)) {
    dependencies_.push_back({source.name, nullptr, view});
    CheckSchemaBound(source.name, view.get());
    return BindView(*view, source, scope);
  } else if (const SystemView* system = FindSystemView(source.name)) {
    node->kind = BoundSource::Kind::System;
    node->system = system;
    entry.system = system;
    if (system->schema != nullptr) entry.schema = system->schema;
    for (const Column& column : system->columns)
      entry.columns.push_back({column.name, column.name, column.type, column.nullable});
  } else {
    if (!IsPending(source.name)) RefuseIfListed(RefusedKind::SystemView, source.name.Written());
    Fail(208, {source.name.Written()});
  }
  node->id = nextSource_++;
  entry.id = node->id;
  AddSource(scope, std::move(entry));
  return node;
}

void Binder::CheckSchemaBound(const ObjectName& name, const ModuleInfo* module) const {
  if (boundKind_ == nullptr || viewDepth_ > 0) return;
  if (name.schema.empty() || !name.database.empty()) Fail(4512, {boundKind_, boundName_, name.Written()});
  if (module != nullptr && !IsSchemaBound(*module)) Fail(4513, {boundKind_, boundName_, name.Written()});
}

bool Binder::IsFired(const ObjectName& name) const {
  // A view or function does not see the trigger that uses it.
  if (trigger_ == nullptr || viewDepth_ > 0 || inlined_ != nullptr || !name.schema.empty()) return false;
  return EqualNames(name.name, "inserted") || EqualNames(name.name, "deleted");
}

TablePtr Binder::TriggerTable() {
  const ObjectName& name = trigger_->table;
  if (TablePtr table = catalog_.FindTable(name)) {
    dependencies_.push_back({name, table, nullptr});
    return table;
  }
  const ModulePtr view = catalog_.FindView(name);
  if (!view) Fail(208, {name.Written()});
  dependencies_.push_back({name, nullptr, view});
  return ViewTable(*view);
}

TablePtr Binder::ViewTable(const ModuleInfo& view) {
  TableSource source;
  source.name.name = view.name;
  Scope scope;
  BindView(view, source, scope);
  TableInfo table;
  table.name = view.name;
  table.schema = view.schema;
  table.storageName = view.key;
  table.isView = true;
  for (const ScopeColumn& column : scope.sources.back().columns) {
    ColumnInfo& info = table.columns.emplace_back();
    info.name = column.name;
    info.type = column.type;
    info.collation = column.collation;
  }
  return std::make_shared<const TableInfo>(std::move(table));
}

BoundSourcePtr Binder::BindFired(const TableSource& source, Scope& scope) {
  const TablePtr table = TriggerTable();
  auto node = std::make_unique<BoundSource>();
  node->kind = BoundSource::Kind::Fired;
  node->isOld = EqualNames(source.name.name, "deleted");
  node->id = nextSource_++;
  ScopeSource entry;
  entry.id = node->id;
  entry.isAlias = !source.alias.empty();
  entry.exposed = entry.isAlias ? source.alias : source.name.name;
  entry.isFired = true;
  entry.columns = ColumnsOf(*table);
  for (size_t i = 0; i < entry.columns.size(); ++i) {
    entry.columns[i].sqlName = ResultColumnName(i);
    node->columns.push_back({entry.columns[i].name, entry.columns[i].type, entry.columns[i].nullable});
  }
  AddSource(scope, std::move(entry));
  return node;
}

void Binder::MarkApplied(BoundSource& source, size_t columns, const Scope& scope, const Scope* visible) {
  source.applied = visible != scope.outer && visible->isUsed;
  if (source.applied && columns > kMostAppliedColumns) Refuse("APPLY of more than 256 columns");
}

// A derived table does not see the other tables of its FROM, only what the whole query sees, unless it is
// applied to some of them.
BoundSourcePtr Binder::BindDerived(const TableSource& source, Scope& scope, Scope* visible) {
  auto node = std::make_unique<BoundSource>();
  node->kind = BoundSource::Kind::Query;
  Scope* saved = std::exchange(scope_, visible);
  node->query = BindQuery(*source.query, true);
  scope_ = saved;
  node->id = nextSource_++;
  MarkApplied(*node, node->query->columns.size(), scope, visible);
  ScopeSource entry;
  entry.id = node->id;
  entry.exposed = source.alias;
  entry.isAlias = true;
  entry.columns = ColumnsOf(*node->query, source.columnAliases, source.alias, true);
  AddSource(scope, std::move(entry));
  return node;
}

BoundSourcePtr Binder::BindValues(const TableSource& source, Scope& scope, Scope* visible) {
  auto node = std::make_unique<BoundSource>();
  node->kind = BoundSource::Kind::Values;
  Scope own; // in which there are no aggregates
  own.outer = visible;
  Scope* saved = std::exchange(scope_, &own);
  const size_t count = source.rows.front().size();
  for (const std::vector<ExprPtr>& row : source.rows) {
    if (row.size() != count) Fail(10709, {});
    node->rows.emplace_back();
    for (const ExprPtr& value : row) node->rows.back().push_back(Bind(*value));
  }
  scope_ = saved;
  node->id = nextSource_++;
  MarkApplied(*node, count, scope, visible);
  const std::vector<std::string>& names = source.columnAliases;
  if (names.empty()) Fail(8155, {"1", source.alias});
  if (names.size() != count) Fail(names.size() < count ? 8158 : 8159, {source.alias});
  ScopeSource entry;
  entry.id = node->id;
  entry.exposed = source.alias;
  entry.isAlias = true;
  for (size_t i = 0; i < count; ++i) {
    for (const ScopeColumn& other : entry.columns)
      if (EqualNames(other.name, names[i])) Fail(8156, {names[i], source.alias});
    entry.columns.push_back(UnifyValues(node->rows, i));
    entry.columns.back().name = names[i];
  }
  AddSource(scope, std::move(entry));
  return node;
}

// Gives a column of VALUES one type, as UNION ALL of its rows would.
Binder::ScopeColumn Binder::UnifyValues(std::vector<std::vector<BoundExprPtr>>& rows, size_t column) const {
  std::vector<const BoundExpr*> values;
  values.reserve(rows.size());
  for (const std::vector<BoundExprPtr>& row : rows) values.push_back(row[column].get());
  const Type type = CommonTypeOf(values);
  ScopeColumn result;
  result.sqlName = ResultColumnName(column);
  result.type = type;
  result.nullable = false;
  for (std::vector<BoundExprPtr>& row : rows) {
    BoundExprPtr& value = row[column];
    result.nullable = result.nullable || value->nullable;
    // Texts of different lengths need no conversion.
    const bool isAlike = IsText(value->type) && IsText(type) && !IsFixedLength(type.id);
    if (!isAlike) value = Convert(std::move(value), type);
    if (IsText(type)) CombineCollations(*rows.front()[column], *value, "UNION ALL");
  }
  const BoundExpr& first = *rows.front()[column];
  RequireCollation(first, "SELECT", column + 1);
  result.collation = {first.collation, first.collationName};
  return result;
}

BoundSourcePtr Binder::BindView(const ModuleInfo& view, const TableSource& source, Scope& scope) {
  if (++viewDepth_ > kMaxViewDepth) Fail(217, {});
  std::vector<std::string> columns;
  const QueryPtr query = ParseView(view.text, view.schema, view.name,
                                   {view.options.quotedIdentifier, catalog_.DatabaseName()}, columns);
  auto node = std::make_unique<BoundSource>();
  node->kind = BoundSource::Kind::Query;
  // A view does not see the statement that uses it.
  Scope* savedScope = std::exchange(scope_, nullptr);
  std::vector<CommonInfo> savedCommons = std::exchange(commons_, {});
  const bool savedNulls = std::exchange(options_.ansiNulls, view.options.ansiNulls);
  node->query = BindQuery(*query, true);
  options_.ansiNulls = savedNulls;
  commons_ = std::move(savedCommons);
  scope_ = savedScope;
  --viewDepth_;
  node->id = nextSource_++;
  ScopeSource entry;
  entry.id = node->id;
  entry.isAlias = !source.alias.empty();
  entry.exposed = entry.isAlias ? source.alias : source.name.name;
  entry.schema = view.schema;
  entry.columns = ColumnsOf(*node->query, columns, view.name, true);
  AddSource(scope, std::move(entry));
  return node;
}

// ---- common table expressions

void Binder::BindCommonTables(const std::vector<CommonTable>& tables, std::vector<BoundCommon>& bound) {
  for (size_t i = 0; i < tables.size(); ++i) {
    for (size_t j = 0; j < i; ++j)
      if (EqualNames(tables[i].name, tables[j].name)) Fail(239, {tables[i].name});
    bound.push_back(BindCommonTable(tables[i]));
  }
}

BoundCommon Binder::BindCommonTable(const CommonTable& table) {
  BoundCommon bound;
  bound.id = nextCommon_++;
  bound.maxRecursion = maxRecursion_;
  Scope* saved = std::exchange(scope_, nullptr);
  if (!BindRecursive(table, bound)) {
    // Within its own query the name means the expression itself, never a table of that name.
    commons_.push_back({table.name, bound.id, {}, 0, 252});
    bound.query = BindQuery(*table.query, true);
    commons_.back() = {table.name, bound.id, ColumnsOf(*bound.query, table.columns, table.name, true)};
  }
  scope_ = saved;
  return bound;
}

bool Binder::BindRecursive(const CommonTable& table, BoundCommon& bound) {
  const Query& query = *table.query;
  if (query.op != SetOp::UnionAll) return false;
  const bool hasSeveral = query.left->op != SetOp::None;
  commons_.push_back({table.name, bound.id, {}, 0, hasSeveral ? kUnsupportedError : 246});
  BoundQueryPtr anchor = BindQuery(*query.left, true);
  std::vector<ScopeColumn> columns = ColumnsOf(*anchor, table.columns, table.name, true);
  for (ScopeColumn& column : columns) column.nullable = true;
  commons_.back() = {table.name, bound.id, std::move(columns)};
  BoundQueryPtr member = BindQuery(*query.right, true);
  if (commons_.back().uses == 0) {
    commons_.pop_back();
    return false;
  }
  if (query.offset) Fail(461, {table.name});
  if (!query.orderBy.empty()) Fail(1033, {});
  CheckRecursive(*member, commons_.back(), bound);
  if (member->columns.size() != anchor->columns.size()) Fail(205, {});
  // The types of the columns are those of the first query, to the length.
  std::vector<Type> types;
  for (const Column& column : anchor->columns) {
    const size_t index = types.size();
    const BoundExpr& item = FirstItem(*member, index);
    const bool isCollated =
        item.strength == CollationStrength::Coercible || EqualNames(item.collationName, column.collation);
    if (!(member->columns[index].type == column.type) || !isCollated)
      Fail(240, {commons_.back().columns[index].name, table.name});
    types.push_back(column.type);
  }
  ConvertColumns(*member, types);
  bound.recursive = true;
  bound.query = std::make_unique<BoundQuery>();
  bound.query->op = SetOp::UnionAll;
  bound.query->columns = anchor->columns;
  bound.query->left = std::move(anchor);
  bound.query->right = std::move(member);
  return true;
}

// What a recursive member must not contain, and where it uses the expression itself.
void Binder::CheckRecursive(const BoundQuery& member, const CommonInfo& common, BoundCommon& bound) {
  if (member.op != SetOp::None) Refuse(kSeveralMembers);
  if (member.select->distinct) Fail(460, {common.name});
  if (member.select->top) Fail(461, {common.name});
  if (member.select->grouped || member.select->selectsGroups) Fail(467, {common.name});
  if (member.select->windowed) Refuse("A window function in a recursive member");
  OwnUses uses;
  CountOwnUses(member, common.id, false, uses);
  if (uses.outerJoin) Fail(462, {common.name});
  if (uses.direct + uses.derived < common.uses) Fail(465, {});
  if (common.uses > 1) Fail(253, {common.name});
  if (uses.derived > 0) Refuse("A recursive reference within a derived table");
  bound.own = uses.source;
}

} // namespace tsql
