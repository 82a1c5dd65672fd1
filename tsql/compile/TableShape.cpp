#include "tsql/compile/TableShape.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/catalog/Schemas.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/NameHash.h"

namespace tsql {
namespace {

bool IsIntegerStored(const Type& type) {
  return FamilyOf(type.id) == Family::Integer ||
         (type.id == TypeId::Decimal && !IsWide(type) && type.scale == 0);
}

// Makes a name for a constraint without one, as the server does. It is unique within the table.
std::string GeneratedName(const char* prefix, const TableInfo& table) {
  const uint32_t hash = HashOfName(table.storageName);
  std::string name = std::string(prefix) + "__" + table.name.substr(0, 9) + "__";
  for (unsigned shift = 32; shift > 0; shift -= 8) AppendHex(name, static_cast<char>(hash >> (shift - 8)));
  // Dropped indexes leave gaps, so that the number of keys may be taken.
  size_t number = table.keys.size();
  const auto isTaken = [&](const std::string& candidate) {
    return std::any_of(table.keys.begin(), table.keys.end(),
                       [&](const KeyInfo& key) { return EqualNames(key.name, candidate); });
  };
  while (isTaken(name + std::to_string(number))) ++number;
  return name + std::to_string(number);
}

} // namespace

void TableShape::AddColumn(TableInfo& table, const ColumnDefinition& definition) const {
  if (table.FindColumn(definition.name) >= 0) Fail(2705, {definition.name, table.name});
  ColumnInfo column;
  column.name = definition.name;
  column.type = definition.type;
  column.nullable = definition.nullable.value_or(!definition.identity);
  column.identity = definition.identity;
  column.defaultText = definition.defaultText;
  column.computedText = definition.computedText;
  column.isPersisted = definition.isPersisted;
  SetCollation(column, definition);
  if (definition.identity) {
    if (table.identityColumn >= 0) Fail(2744, {table.name});
    if (!definition.defaultText.empty()) Fail(1754, {table.name, column.name});
    CheckIdentity(column);
    table.identityColumn = static_cast<int>(table.columns.size());
    table.seed = definition.seed;
    table.increment = definition.increment;
    const IdentityRange range = IdentityRangeOf(column.type);
    const auto isWithin = [&range](int64_t number) {
      return number >= range.smallest && number <= range.largest;
    };
    if (!isWithin(table.seed)) Fail(2752, {column.name});
    // A tinyint column may count down.
    if (table.increment == 0 || (table.increment > 0 && !isWithin(table.increment)))
      Fail(2753, {column.name});
  }
  table.columns.push_back(std::move(column));
  if (definition.defaultName.empty()) return;
  ConstraintDefinition named;
  named.kind = ConstraintDefinition::Kind::Default;
  named.name = definition.defaultName;
  named.columns.push_back(definition.name);
  named.checkText = std::exchange(table.columns.back().defaultText, {});
  AddDefault(table, named);
}

void TableShape::SetCollation(ColumnInfo& column, const ColumnDefinition& definition) {
  if (definition.collation && !IsText(definition.type)) Fail(447, {TypeName(definition.type.id)});
  column.collation = definition.collation.value_or(NamedCollation());
}

void TableShape::BindComputed(TableInfo& table, size_t first) const {
  if (std::ranges::all_of(table.columns, &ColumnInfo::IsComputed))
    Refuse("A table of computed columns alone");
  const std::vector<VariableInfo> noVariables;
  const std::vector<Type> noMarkers;
  for (size_t i = first; i < table.columns.size(); ++i) {
    ColumnInfo& column = table.columns[i];
    if (!column.IsComputed()) continue;
    const ExprPtr expr = ParseDefault(column.computedText);
    const BoundExprPtr bound = Binder(catalog_, noVariables, noMarkers).BindComputed(*expr, table);
    if (column.isPersisted && AsksClock(*bound)) Fail(4936, {column.name, table.name});
    column.type = bound->type;
    if (bound->strength == CollationStrength::Unresolved)
      Fail(451, {bound->conflict->first, bound->conflict->second, bound->conflict->operation, "CREATE TABLE",
                 std::to_string(i + 1)});
    column.collation = {bound->collation, bound->collationName};
    if (FamilyOf(column.type.id) == Family::Integer) column.type.precision = 0; // a constant's digits
    // What is computed may be out of range, and is null then under other settings.
    const bool replacesNull =
        bound->kind == BoundExpr::Kind::Function && bound->function == FunctionId::IsNull && !bound->nullable;
    if (replacesNull) column.nullable = false;
  }
}

void TableShape::CheckIndexed(const TableInfo& table, int column) const {
  const ColumnInfo& info = table.columns[static_cast<size_t>(column)];
  if (!info.IsComputed()) return;
  const std::vector<VariableInfo> noVariables;
  const std::vector<Type> noMarkers;
  const ExprPtr expr = ParseDefault(info.computedText);
  if (AsksClock(*Binder(catalog_, noVariables, noMarkers).BindComputed(*expr, table)))
    Fail(2729, {info.name, table.name});
}

void TableShape::CheckIdentity(const ColumnInfo& column) {
  if (IsWide(column.type) && column.type.scale == 0) Refuse("An identity column of more than 18 digits");
  if (column.nullable || !IsIntegerStored(column.type) || column.type.id == TypeId::Bit)
    Fail(2749, {column.name});
}

// A DEFAULT is the column's. Only a given name is kept beside it.
void TableShape::AddDefault(TableInfo& table, const ConstraintDefinition& definition) const {
  const std::string& name = definition.columns[0];
  const int found = table.FindColumn(name);
  if (found < 0) Fail(1752, {name, table.name});
  ColumnInfo& column = table.columns[static_cast<size_t>(found)];
  if (column.IsComputed()) Fail(1752, {name, table.name});
  if (column.identity) Fail(1754, {table.name, column.name});
  if (!column.defaultText.empty()) Fail(1781, {});
  column.defaultText = definition.checkText;
  if (definition.name.empty()) return;
  KeyInfo key;
  key.kind = KeyKind::Default;
  key.name = definition.name;
  key.columns.push_back(found);
  CheckKeyName(table, key);
  table.keys.push_back(std::move(key));
}

// A constraint's name is unique in its schema, and that of a key among the indexes of its table as well.
void TableShape::CheckKeyName(const TableInfo& table, const KeyInfo& key) const {
  for (const KeyInfo& other : table.keys) {
    if (!EqualNames(other.name, key.name)) continue;
    if (!other.IsIndexOnly()) Fail(2714, {key.name});
    if (key.kind == KeyKind::PrimaryKey || key.kind == KeyKind::Unique) Fail(1913, {key.name, table.name});
  }
  if (table.place != Place::Main) return;
  if (storage::SplitKey(key.name)) Refuse("A name that the storage has for itself");
  if (catalog_.ConstraintExists(table.schema, key.name)) Fail(2714, {key.name});
}

void TableShape::AddConstraint(TableInfo& table, const ConstraintDefinition& definition) const {
  KeyInfo key;
  key.name = definition.name;
  const char* prefix = "PK";
  switch (definition.kind) {
  case ConstraintDefinition::Kind::PrimaryKey: key.kind = KeyKind::PrimaryKey; break;
  case ConstraintDefinition::Kind::Unique:
    key.kind = KeyKind::Unique;
    prefix = "UQ";
    break;
  case ConstraintDefinition::Kind::Check:
    key.kind = KeyKind::Check;
    key.checkText = definition.checkText;
    prefix = "CK";
    break;
  case ConstraintDefinition::Kind::ForeignKey: AddForeignKey(table, definition); return;
  case ConstraintDefinition::Kind::Default: AddDefault(table, definition); return;
  }
  if (key.name.empty()) key.name = GeneratedName(prefix, table);
  CheckKeyName(table, key);
  for (const std::string& name : definition.columns) {
    const int column = table.FindColumn(name);
    if (column < 0) Fail(1911, {name});
    if (key.HasIndex()) CheckIndexed(table, column);
    key.columns.push_back(column);
  }
  if (key.kind == KeyKind::PrimaryKey) {
    for (const int index : key.columns) {
      const ColumnInfo& column = table.columns[static_cast<size_t>(index)];
      if (column.IsComputed() && (!column.isPersisted || column.nullable))
        Fail(1711, {column.name, table.name});
    }
    for (const KeyInfo& other : table.keys)
      if (other.kind == KeyKind::PrimaryKey) Fail(1779, {table.name});
  }
  table.keys.push_back(std::move(key));
}

// The table that the key refers to. That may be the table itself, which is not in the catalog yet.
TablePtr TableShape::FindReferenced(const TableInfo& table, const KeyInfo& key) const {
  if (EqualNames(key.referencedTable, table.storageName)) return std::make_shared<const TableInfo>(table);
  return catalog_.TableOfKey(key.referencedTable);
}

void TableShape::AddForeignKey(TableInfo& table, const ConstraintDefinition& definition) const {
  if (table.place != Place::Main) Refuse("A FOREIGN KEY constraint of a temporary table");
  KeyInfo key;
  key.kind = KeyKind::ForeignKey;
  key.name = definition.name.empty() ? GeneratedName("FK", table) : definition.name;
  CheckKeyName(table, key);
  const ObjectName& referenced = definition.referenced;
  const std::string schema = IsDbo(referenced.schema) ? std::string() : referenced.schema;
  const bool isOwn = EqualNames(referenced.name, table.name) && EqualNames(schema, table.schema);
  const TablePtr parent = isOwn ? std::make_shared<const TableInfo>(table) : catalog_.FindTable(referenced);
  if (!parent || parent->place != Place::Main) Fail(1767, {key.name, referenced.Written()});
  key.referencedTable = parent->storageName;
  for (const std::string& name : definition.columns) {
    const int column = table.FindColumn(name);
    if (column < 0) Fail(1769, {key.name, name, table.name});
    const ColumnInfo& own = table.columns[static_cast<size_t>(column)];
    if (own.IsComputed() && !own.isPersisted) Fail(1764, {own.name, table.name, "FOREIGN KEY"});
    key.columns.push_back(column);
  }
  std::vector<int> columns; // of the parent
  for (const std::string& name : definition.referencedColumns) {
    const int column = parent->FindColumn(name);
    if (column < 0) Fail(1770, {key.name, name, parent->name});
    columns.push_back(column);
  }
  const auto isWanted = [&](const KeyInfo& other) {
    if (columns.empty()) return other.kind == KeyKind::PrimaryKey;
    const bool isUnique = other.kind == KeyKind::PrimaryKey || other.kind == KeyKind::Unique ||
                          other.kind == KeyKind::UniqueIndex;
    return isUnique && other.columns.size() == columns.size() &&
           std::is_permutation(columns.begin(), columns.end(), other.columns.begin());
  };
  const auto found = std::find_if(parent->keys.begin(), parent->keys.end(), isWanted);
  if (found == parent->keys.end() && columns.empty()) Fail(1773, {key.name, parent->name});
  if (found != parent->keys.end() && columns.empty()) columns = found->columns;
  if (found == parent->keys.end() || columns.size() != key.columns.size())
    Fail(1776, {parent->name, key.name});
  for (size_t i = 0; i < columns.size(); ++i) {
    const ColumnInfo& other = parent->columns[static_cast<size_t>(columns[i])];
    const ColumnInfo& own = table.columns[static_cast<size_t>(key.columns[i])];
    const bool isSame = IsText(own.type) ? own.type.id == other.type.id : own.type == other.type;
    if (!isSame) Fail(1778, {parent->name, other.name, table.name, own.name, key.name});
    if (!EqualNames(own.collation.name, other.collation.name))
      Fail(1757, {parent->name, other.name, table.name, own.name, key.name});
    key.referencedColumns.push_back(other.name);
  }
  key.onDelete = definition.onDelete;
  key.onUpdate = definition.onUpdate;
  if (key.HasAction()) CheckActions(table, key);
  table.keys.push_back(std::move(key));
}

void TableShape::CheckActions(const TableInfo& table, const KeyInfo& key) const {
  const auto isSet = [](ReferentialAction action) { return action > ReferentialAction::Cascade; };
  const auto has = [&](ReferentialAction action) { return key.onDelete == action || key.onUpdate == action; };
  for (const int index : key.columns) {
    const ColumnInfo& column = table.columns[static_cast<size_t>(index)];
    if (column.IsComputed() && isSet(key.onDelete)) Fail(1765, {key.name, column.name});
    if (column.IsComputed() && key.onUpdate != ReferentialAction::NoAction)
      Fail(1715, {key.name, column.name});
    if (column.identity && (isSet(key.onDelete) || key.onUpdate != ReferentialAction::NoAction))
      Fail(1788, {key.name, table.name, column.name});
    if (!column.nullable && has(ReferentialAction::SetNull)) Fail(1761, {key.name});
    if (!column.nullable && column.defaultText.empty() && has(ReferentialAction::SetDefault))
      Fail(1762, {key.name});
  }
  for (const TriggerPtr& trigger : catalog_.Triggers()) {
    if (!trigger->insteadOf || !EqualNames(trigger->table, table.storageName)) continue;
    for (const TriggerEvent event : trigger->events)
      if (key.ActionOn(event) != ReferentialAction::NoAction) Fail(1787, {key.name, table.name});
  }
  if (HasSeveralPaths(table, key)) Fail(1785, {key.name, table.name});
}

// Whether one DELETE or UPDATE of some table could come to the rows of another, or its own, on two ways, once
// the key is there. What the actions would do with the rows does not count.
bool TableShape::HasSeveralPaths(const TableInfo& table, const KeyInfo& key) const {
  struct Edge {
    std::string parent;
    std::string child;
    const KeyInfo* key;
  };
  std::vector<Edge> edges = {{key.referencedTable, table.storageName, &key}};
  const auto addKeys = [&edges](const TableInfo& child) {
    for (const KeyInfo& other : child.keys)
      if (other.HasAction()) edges.push_back({other.referencedTable, child.storageName, &other});
  };
  addKeys(table); // which is not in the catalog as it is going to be
  for (const TablePtr& other : catalog_.TablesWithForeignKeys())
    if (!EqualNames(other->storageName, table.storageName)) addKeys(*other);
  std::set<std::string, NameLess> reached;
  const auto meetsAgain = [&](const auto& self, const std::string& from, TriggerEvent event) -> bool {
    return std::ranges::any_of(edges, [&](const Edge& edge) {
      const ReferentialAction action = edge.key->ActionOn(event);
      if (action == ReferentialAction::NoAction || !EqualNames(edge.parent, from)) return false;
      if (!reached.insert(edge.child).second) return true;
      return self(self, edge.child, action == ReferentialAction::Cascade ? event : TriggerEvent::Update);
    });
  };
  return std::ranges::any_of(edges, [&](const Edge& start) {
    return std::ranges::any_of(std::array{TriggerEvent::Delete, TriggerEvent::Update},
                               [&](TriggerEvent event) {
                                 reached = {start.parent};
                                 return meetsAgain(meetsAgain, start.parent, event);
                               });
  });
}

void TableShape::ChooseRowid(TableInfo& table) {
  table.rowidColumn = table.increment == 1 ? table.identityColumn : -1;
  if (table.rowidColumn >= 0) return;
  for (const KeyInfo& key : table.keys) {
    if (key.kind != KeyKind::PrimaryKey || key.columns.size() != 1) continue;
    const ColumnInfo& column = table.columns[static_cast<size_t>(key.columns[0])];
    if (FamilyOf(column.type.id) == Family::Integer && !column.IsComputed() && !column.identity)
      table.rowidColumn = key.columns[0];
  }
}

TableInfo TableShape::MakeEmpty(const ObjectName& name) const {
  TableInfo table;
  table.name = name.name;
  table.place = PlaceOf(name);
  Catalog::NewObject made = catalog_.PlaceNew(name);
  table.schema = std::move(made.schema);
  table.storageName = std::move(made.key);
  return table;
}

TableInfo TableShape::MakeTable(const ObjectName& name, const std::vector<ColumnDefinition>& columns,
                                const std::vector<ConstraintDefinition>& constraints) const {
  TableInfo table = MakeEmpty(name);
  for (const ColumnDefinition& column : columns) AddColumn(table, column);
  BindComputed(table, 0);
  const auto isForeign = [](const ConstraintDefinition& constraint) {
    return constraint.kind == ConstraintDefinition::Kind::ForeignKey;
  };
  if (std::ranges::count(constraints, ConstraintDefinition::Kind::PrimaryKey, &ConstraintDefinition::kind) >
      1)
    Fail(8110, {table.name});
  for (const ConstraintDefinition& constraint : constraints) {
    if (isForeign(constraint)) continue;
    AddConstraint(table, constraint);
    if (constraint.kind != ConstraintDefinition::Kind::PrimaryKey) continue;
    for (const int column : table.keys.back().columns) {
      const auto index = static_cast<size_t>(column);
      if (columns[index].nullable.value_or(false)) Fail(8111, {table.name});
      table.columns[index].nullable = false;
    }
  }
  // Foreign keys come last, because a table may refer to a key of its own.
  for (const ConstraintDefinition& constraint : constraints)
    if (isForeign(constraint)) AddConstraint(table, constraint);
  ChooseRowid(table);
  return table;
}

} // namespace tsql
