#include "tsql/run/AlterTable.h"

#include <algorithm>

#include "tsql/run/Diagnostics.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

// What fails while a constraint is made is told together with what it was for.
template <typename Work>
void FollowedBy(int number, Work work) {
  try {
    work();
  } catch (const Error& error) {
    throw ErrorSequence({error}, MakeError(number, 0, {}));
  }
}

bool IsVariableLength(const Type& type) {
  return type.id == TypeId::VarChar || type.id == TypeId::NVarChar || type.id == TypeId::VarBinary;
}

bool IsAtLeastAsLong(const Type& type, const Type& than) {
  return type.length == -1 || (than.length != -1 && type.length >= than.length);
}

bool CanBeSwitched(const KeyInfo& key) {
  return key.kind == KeyKind::Check || key.kind == KeyKind::ForeignKey;
}

// A column that a primary key makes one that cannot be null, unless it was said to be.
bool IsInNewPrimaryKey(const AlterTableStatement& statement, const std::string& column) {
  return std::ranges::any_of(statement.constraints, [&](const ConstraintDefinition& constraint) {
    return constraint.kind == ConstraintDefinition::Kind::PrimaryKey &&
           std::ranges::any_of(constraint.columns,
                               [&](const std::string& name) { return EqualNames(name, column); });
  });
}

} // namespace

TableAlteration::TableAlteration(const Connection& connection, Catalog& catalog, const Compiler& compiler,
                                 const TableBuilder& builder, const TableShape& shape, const TablePtr& table)
    : connection_(connection), catalog_(catalog), compiler_(compiler), builder_(builder), shape_(shape),
      before_(table), after_(*table) {
  for (const ColumnInfo& column : table->columns) values_.push_back(QuoteName(column.name));
}

void TableAlteration::Run(const AlterTableStatement& statement) {
  switch (statement.action) {
  case AlterAction::Add: Add(statement); break;
  case AlterAction::AlterColumn: AlterColumn(statement.columns.front()); break;
  case AlterAction::Drop: Drop(statement); break;
  case AlterAction::SwitchConstraints: SwitchConstraints(statement); break;
  }
  Carry(statement.checksRows);
}

void TableAlteration::CountIdentity() {
  after_.rowidColumn = -1;
  rebuilds_ = true;
  Carry(false);
}

// ---- ADD

void TableAlteration::Add(const AlterTableStatement& statement) {
  AddColumns(statement);
  for (const ConstraintDefinition& constraint : statement.constraints)
    FollowedBy(1750, [&] { AddConstraint(constraint); });
}

void TableAlteration::AddColumns(const AlterTableStatement& statement) {
  const bool hasRows = builder_.HasRows(*before_);
  for (const ColumnDefinition& written : statement.columns) {
    ColumnDefinition definition = written;
    const bool isOpen = !definition.nullable && definition.computedText.empty();
    if (isOpen && IsInNewPrimaryKey(statement, definition.name)) definition.nullable = false;
    shape_.AddColumn(after_, definition);
    const ColumnInfo& column = after_.columns.back();
    const bool needsValue = !column.nullable && !column.identity && !column.IsComputed();
    if (needsValue && column.defaultText.empty() && hasRows) Fail(4901, {column.name, after_.name});
    const bool fills = (needsValue || definition.withValues) && hasRows;
    fills_.push_back(fills);
    values_.push_back(fills ? compiler_.CompileDefault(column) : column.identity ? NumbersOfRows() : "NULL");
    if (column.identity && after_.increment == 1) after_.rowidColumn = after_.identityColumn;
    if (column.identity || column.IsComputed()) rebuilds_ = true;
  }
  shape_.BindComputed(after_, before_->columns.size());
}

// What numbers the rows that are there in their order; SQLite does it for its rowid itself.
std::string TableAlteration::NumbersOfRows() const {
  if (after_.increment == 1) return "NULL";
  return std::to_string(after_.seed) + " + (row_number() OVER (ORDER BY _rowid_) - 1) * " +
         std::to_string(after_.increment);
}

void TableAlteration::AddConstraint(const ConstraintDefinition& constraint) {
  shape_.AddConstraint(after_, constraint);
  // A DEFAULT may have no name, and then it is no key.
  if (constraint.kind == ConstraintDefinition::Kind::Default) return;
  const KeyInfo& key = after_.keys.back();
  if (key.kind == KeyKind::PrimaryKey) {
    for (const int column : key.columns)
      if (after_.columns[static_cast<size_t>(column)].nullable) Fail(8111, {after_.name});
  }
  if (key.kind == KeyKind::Check) {
    compiler_.ColumnsOfCheck(after_, key.checkText); // it must hold together
    rebuilds_ = true;
  }
  if (key.HasIndex()) {
    newIndexes_.push_back(key.name);
  } else {
    newKeys_.push_back(key.name);
  }
}

// ---- ALTER COLUMN

void TableAlteration::AlterColumn(const ColumnDefinition& definition) {
  const int index = after_.FindColumn(definition.name);
  if (index < 0) Fail(4924, {"ALTER", definition.name, after_.name});
  ColumnInfo& column = after_.columns[static_cast<size_t>(index)];
  const Type old = column.type;
  if (column.IsComputed()) Fail(4928, {column.name, "COMPUTED"});
  if (IsLob(definition.type.id)) Fail(4927, {column.name, TypeName(definition.type.id)});
  const bool widens = (old.id == TypeId::Text && definition.type.id == TypeId::VarChar) ||
                      (old.id == TypeId::NText && definition.type.id == TypeId::NVarChar) ||
                      (old.id == TypeId::Image && definition.type.id == TypeId::VarBinary);
  if (IsLob(old.id) && !(widens && definition.type.length == -1)) Fail(4928, {column.name, TypeName(old.id)});
  ColumnInfo altered = column;
  TableShape::SetCollation(altered, definition);
  const bool isCollated = IsText(column.type) && IsText(definition.type);
  const bool changesOrder = isCollated && !EqualNames(altered.collation.name, column.collation.name);
  FailDependent("ALTER", index, DependentsOf(index, definition.type, changesOrder));
  const bool becomesNull = column.identity && definition.nullable.value_or(false);
  if (becomesNull) Fail(8147, {column.name, after_.name});
  values_[static_cast<size_t>(index)] = compiler_.CompileConversion(column, definition.type);
  column.type = definition.type;
  column.collation = altered.collation;
  column.nullable = !column.identity && definition.nullable.value_or(true);
  if (column.identity) TableShape::CheckIdentity(column);
  rebuilds_ = true;
}

// ---- DROP

void TableAlteration::Drop(const AlterTableStatement& statement) {
  // A column may go together with the constraints that stand on it, wherever they are named.
  for (const DroppedElement& element : statement.dropped)
    if (!element.isColumn) FollowedBy(3727, [&] { DropConstraint(element); });
  for (const DroppedElement& element : statement.dropped)
    if (element.isColumn) DropColumn(element);
}

void TableAlteration::DropConstraint(const DroppedElement& element) {
  const int found = FindKey(element.name);
  if (found < 0) {
    for (size_t i = 0; i < after_.columns.size(); ++i) {
      ColumnInfo& column = after_.columns[i];
      if (column.defaultText.empty() || !EqualNames(after_.DefaultName(i), element.name)) continue;
      column.defaultText.clear();
      return;
    }
    if (element.ifExists) return;
    if (after_.place == Place::Main && catalog_.ConstraintExists(after_.schema, element.name))
      Fail(3733, {element.name, after_.name});
    Fail(3728, {element.name});
  }
  const auto at = after_.keys.begin() + found;
  const KeyInfo key = *at;
  CheckNotReferenced(key);
  if (key.kind == KeyKind::Default) after_.columns[static_cast<size_t>(key.columns[0])].defaultText.clear();
  if (key.kind == KeyKind::Check && !key.disabled) rebuilds_ = true;
  const bool isRowid = key.HasIndex() && key.columns.size() == 1 && key.columns[0] == after_.rowidColumn;
  if (isRowid && after_.identityColumn < 0) {
    after_.rowidColumn = -1; // its numbers need not be different any more
    rebuilds_ = true;
  }
  if (key.HasIndex() && !isRowid) builder_.DropIndex(*before_, key);
  after_.keys.erase(at);
}

void TableAlteration::DropColumn(const DroppedElement& element) {
  const int index = after_.FindColumn(element.name);
  if (index < 0) {
    if (element.ifExists) return;
    Fail(4924, {"DROP", element.name, after_.name});
  }
  FailDependent("DROP", index, DependentsOf(index));
  const ColumnInfo& dropped = after_.columns[static_cast<size_t>(index)];
  const auto isData = [](const ColumnInfo& column) { return !column.IsComputed(); };
  if (isData(dropped) && std::ranges::count_if(after_.columns, isData) == 1)
    Fail(4923, {dropped.name, after_.name});
  after_.columns.erase(after_.columns.begin() + index);
  values_.erase(values_.begin() + index);
  const auto move = [index](int& position) {
    if (position > index) --position;
  };
  for (KeyInfo& key : after_.keys)
    for (int& column : key.columns) move(column);
  if (after_.identityColumn == index) {
    after_.identityColumn = -1;
    after_.seed = after_.increment = 1;
  }
  if (after_.rowidColumn == index) after_.rowidColumn = -1;
  move(after_.identityColumn);
  move(after_.rowidColumn);
  rebuilds_ = true;
}

// ---- CHECK and NOCHECK CONSTRAINT

void TableAlteration::SwitchConstraints(const AlterTableStatement& statement) {
  const auto switchKey = [&](KeyInfo& key) {
    if (statement.enables && statement.checksRows) newKeys_.push_back(key.name);
    if (key.disabled == !statement.enables) return;
    key.disabled = !statement.enables;
    if (key.kind == KeyKind::Check) rebuilds_ = true;
  };
  for (const std::string& name : statement.switched) {
    FollowedBy(4916, [&] {
      const int found = FindKey(name);
      if (found < 0) Fail(4917, {name});
      KeyInfo& key = after_.keys[static_cast<size_t>(found)];
      if (!CanBeSwitched(key)) Fail(11415, {key.name});
      switchKey(key);
    });
  }
  if (!statement.switched.empty()) return;
  for (KeyInfo& key : after_.keys)
    if (CanBeSwitched(key)) switchKey(key);
}

// ---- what depends on what

int TableAlteration::FindKey(std::string_view name) const {
  const auto found = std::ranges::find_if(
      after_.keys, [&](const KeyInfo& key) { return !key.IsIndexOnly() && EqualNames(key.name, name); });
  return found == after_.keys.end() ? -1 : static_cast<int>(found - after_.keys.begin());
}

std::vector<ForeignKey> TableAlteration::Referrers() const {
  std::vector<ForeignKey> referrers = ForeignKeysOf(after_, catalog_);
  std::erase_if(referrers, [&](const ForeignKey& foreignKey) {
    const bool isOwn = EqualNames(foreignKey.child->storageName, after_.storageName);
    return !EqualNames(foreignKey.key->referencedTable, after_.storageName) ||
           (isOwn && FindKey(foreignKey.key->name) < 0);
  });
  return referrers;
}

// A foreign key needs the key of the table that it refers to, unless there is another one over the columns.
void TableAlteration::CheckNotReferenced(const KeyInfo& key) const {
  if (key.kind != KeyKind::PrimaryKey && key.kind != KeyKind::Unique) return;
  for (const ForeignKey& foreignKey : Referrers()) {
    const std::vector<std::string>& names = foreignKey.key->referencedColumns;
    const bool isOver =
        names.size() == key.columns.size() && std::ranges::all_of(names, [&](const std::string& name) {
          return std::ranges::count(key.columns, after_.FindColumn(name)) > 0;
        });
    if (isOver) Fail(3725, {key.name, foreignKey.child->name, foreignKey.key->name});
  }
}

bool TableAlteration::Uses(const KeyInfo& key, int column) const {
  if (key.kind != KeyKind::Check) return std::ranges::count(key.columns, column) > 0;
  return std::ranges::count(compiler_.ColumnsOfCheck(after_, key.checkText), column) > 0;
}

// Those that no kind of change allows: computed columns, and foreign keys of whatever table.
void TableAlteration::AddReferrers(int index, std::vector<Dependent>& dependents) const {
  for (const ColumnInfo& other : after_.columns)
    if (other.IsComputed() && std::ranges::count(compiler_.ColumnsOfComputed(after_, other), index) > 0)
      dependents.push_back({"column", other.name});
  const std::string& name = after_.columns[static_cast<size_t>(index)].name;
  for (const std::string& user : compiler_.SchemaBoundUsers(after_.storageName, &name))
    dependents.push_back({"object", user});
  for (const ForeignKey& foreignKey : Referrers()) {
    const std::string& key = foreignKey.key->name;
    // One within the table may be there already.
    const bool isKnown =
        std::ranges::any_of(dependents, [&](const Dependent& other) { return other.name == key; });
    const bool isReferred =
        std::ranges::any_of(foreignKey.key->referencedColumns,
                            [&](const std::string& column) { return EqualNames(column, name); });
    if (isReferred && !isKnown) dependents.push_back({"object", key});
  }
}

std::vector<TableAlteration::Dependent> TableAlteration::DependentsOf(int column) const {
  std::vector<Dependent> dependents;
  for (const KeyInfo& key : after_.keys)
    if (key.kind != KeyKind::Default && Uses(key, column))
      dependents.push_back({key.IsIndexOnly() ? "index" : "object", key.name});
  const auto index = static_cast<size_t>(column);
  if (!after_.columns[index].defaultText.empty()) dependents.push_back({"object", after_.DefaultName(index)});
  AddReferrers(column, dependents);
  return dependents;
}

std::vector<TableAlteration::Dependent> TableAlteration::DependentsOf(int column, const Type& type,
                                                                      bool changesOrder) const {
  const auto index = static_cast<size_t>(column);
  const Type& old = after_.columns[index].type;
  const bool isSame = old.id == type.id;
  const bool isLength = isSame && IsVariableLength(old) && !changesOrder;
  const auto allows = [&](const KeyInfo& key) {
    switch (key.kind) {
    case KeyKind::PrimaryKey:
    case KeyKind::ForeignKey: return false;
    case KeyKind::Unique:
    case KeyKind::Check: return isLength;
    case KeyKind::Default: return isSame;
    default: return isLength && IsAtLeastAsLong(type, old);
    }
  };
  std::vector<Dependent> dependents;
  for (const KeyInfo& key : after_.keys)
    if (key.kind != KeyKind::Default && !allows(key) && Uses(key, column))
      dependents.push_back({key.IsIndexOnly() ? "index" : "object", key.name});
  if (!isSame && !after_.columns[index].defaultText.empty())
    dependents.push_back({"object", after_.DefaultName(index)});
  AddReferrers(column, dependents);
  return dependents;
}

void TableAlteration::FailDependent(const char* verb, int column,
                                    const std::vector<Dependent>& dependents) const {
  if (dependents.empty()) return;
  const std::string& name = after_.columns[static_cast<size_t>(column)].name;
  std::vector<Error> errors;
  errors.reserve(dependents.size());
  for (const Dependent& dependent : dependents)
    errors.push_back(MakeError(5074, 0, {dependent.kind, dependent.name, name}));
  throw ErrorSequence(std::move(errors), MakeError(4922, 0, {verb, name}));
}

// ---- carrying it out

void TableAlteration::Carry(bool checksRows) {
  // The triggers of foreign keys name the columns and tables of both sides.
  for (const ForeignKey& foreignKey : ForeignKeysOf(*before_, catalog_))
    DropForeignKeyTriggers(connection_, *foreignKey.child, *foreignKey.key);
  if (rebuilds_) {
    builder_.Rebuild(*before_, after_, values_, DatabaseName());
  } else {
    TableInfo grown = *before_;
    for (size_t i = grown.columns.size(); i < after_.columns.size(); ++i) {
      grown.columns.push_back(after_.columns[i]);
      builder_.AddColumn(grown, fills_[i - before_->columns.size()], DatabaseName());
    }
  }
  for (const KeyInfo& key : after_.keys) {
    const bool isNew = std::ranges::count(newIndexes_, key.name) > 0;
    const auto build = [&] { builder_.BuildIndexOverRows(after_, key); };
    if (isNew) {
      FollowedBy(1750, build);
    } else if (rebuilds_) {
      build();
    }
  }
  catalog_.ReplaceTable(after_);
  for (const ForeignKey& foreignKey : ForeignKeysOf(after_, catalog_))
    if (!foreignKey.key->disabled)
      CreateForeignKeyTriggers(connection_, *foreignKey.child, *foreignKey.key, *foreignKey.parent);
  if (!checksRows) return;
  for (const KeyInfo& key : after_.keys)
    if (std::ranges::count(newKeys_, key.name) > 0) CheckRows(key);
}

void TableAlteration::CheckRows(const KeyInfo& key) const {
  if (key.kind == KeyKind::ForeignKey) {
    for (const ForeignKey& foreignKey : ForeignKeysOf(after_, catalog_)) {
      const bool isSame = foreignKey.key->name == key.name;
      if (isSame && IsViolated(connection_, *foreignKey.child, *foreignKey.key, *foreignKey.parent))
        throw Error(ForeignKeyError(foreignKey, true, "ALTER TABLE", catalog_));
    }
    return;
  }
  PreparedStatement violating =
      connection_.Prepare("SELECT 1 FROM " + after_.SqlName() + " WHERE NOT (" +
                          compiler_.CompileCheck(after_, key.checkText) + ") LIMIT 1");
  if (violating.Step()) throw Error(CheckError(key, after_, "ALTER TABLE", catalog_, compiler_));
}

} // namespace tsql
