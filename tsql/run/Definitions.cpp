#include "tsql/run/Definitions.h"

#include <algorithm>
#include <iterator>

#include "tsql/run/AlterTable.h"
#include "tsql/run/ForeignKeys.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/CollationNames.h"
#include "tsql/values/Errors.h"

namespace tsql {
void Definitions::CheckNew(const ObjectName& name) const {
  catalog_.PlaceNew(name); // there must be one
  if (PlaceOf(name) == Place::Main && storage::IsOwnName(name.name))
    Refuse("A name that the storage has for itself");
  if (catalog_.Exists(name)) Fail(2714, {name.name});
}

void Definitions::CreateTable(const CreateTableStatement& statement) {
  CheckNew(statement.table);
  TableInfo table = shape_.MakeTable(statement.table, statement.columns, statement.constraints);
  if (table.place == Place::Temp) table.storageName = catalog_.TempStorageName(table.name);
  Build(table);
  for (const KeyInfo& key : table.keys)
    if (key.kind == KeyKind::ForeignKey)
      CreateForeignKeyTriggers(connection_, table, key, *shape_.FindReferenced(table, key));
  catalog_.AddTable(table);
}

void Definitions::CreateVariable(const TableInfo& declared) {
  TableInfo table = declared;
  table.storageName = catalog_.TempStorageName(table.name);
  Build(table);
  catalog_.AddTable(table);
}

void Definitions::CreateTable(const ObjectName& name, const std::vector<Column>& columns,
                              const std::optional<IntoIdentity>& identity) {
  CheckNew(name);
  TableInfo table = shape_.MakeEmpty(name);
  if (table.place == Place::Temp) table.storageName = catalog_.TempStorageName(table.name);
  const auto add = [&](const std::string& columnName, const Type& type, bool nullable,
                       const std::string& collation = {}) {
    if (columnName.empty()) Fail(1038, {});
    ColumnDefinition definition;
    definition.name = columnName;
    definition.type = type;
    definition.nullable = nullable;
    if (!collation.empty()) definition.collation = FindCollation(collation);
    if (identity && table.columns.size() == identity->column) {
      definition.identity = true;
      definition.nullable = false;
      definition.seed = identity->numbers.seed;
      definition.increment = identity->numbers.increment;
    }
    shape_.AddColumn(table, definition);
  };
  const auto addGenerated = [&] {
    if (identity && identity->isGenerated && table.columns.size() == identity->column)
      add(identity->name, identity->type, false);
  };
  for (const Column& column : columns) {
    addGenerated();
    add(column.name, column.type, column.nullable, column.collation);
  }
  addGenerated();
  if (identity && !identity->mayRepeat) TableShape::ChooseRowid(table);
  Build(table);
  catalog_.AddTable(table);
}

// Uses a dropped table of the same definition again. One of the same name and another definition makes room.
bool Definitions::BuildFromSpare(const TableInfo& table) {
  if (table.place != Place::Temp) return false;
  const TablePtr spare = catalog_.TakeSpare(table.storageName);
  if (!spare) return false;
  if (*spare == table) return true;
  connection_.Run("DROP TABLE " + spare->SqlName());
  return false;
}

void Definitions::Build(const TableInfo& table) {
  givenNumbers_.Forget(table);
  if (!BuildFromSpare(table)) builder_.Build(table);
}

void Definitions::DropTable(const TableInfo& table) {
  for (const ForeignKey& foreignKey : ForeignKeysOf(table, catalog_)) {
    if (!EqualNames(foreignKey.child->storageName, table.storageName)) Fail(3726, {table.name});
    DropForeignKeyTriggers(connection_, table, *foreignKey.key);
  }
  if (table.place == Place::Temp) return DropTempTable(table);
  if (table.place == Place::Main) DropTriggers(table.storageName);
  if (table.CountsIdentity()) IdentityStore(connection_).SetLast(table, std::nullopt);
  catalog_.RemoveTable(table);
  connection_.Run("DROP TABLE " + table.SqlName());
}

void Definitions::DropTriggers(const std::string& key) {
  const std::vector<TriggerPtr> triggers = catalog_.Triggers();
  for (const TriggerPtr& trigger : triggers)
    if (EqualNames(trigger->table, key)) catalog_.RemoveModule(std::string(trigger->module->key));
}

// Until all is done that may fail the table keeps its name, so that it can be dropped once more.
void Definitions::DropTempTable(const TableInfo& table) {
  TruncateTable(table);
  if (const TablePtr superfluous = catalog_.SuperfluousSpare()) {
    connection_.Run("DROP TABLE " + superfluous->SqlName());
    catalog_.TakeSpare(superfluous->storageName);
  }
  catalog_.MakeSpare(table);
}

std::vector<std::string> Definitions::TruncatingSql(const TableInfo& table) {
  std::vector<std::string> statements = {"DELETE FROM " + table.SqlName()};
  if (table.identityColumn < 0) return statements;
  std::ranges::move(IdentityStore::SetLastSql(table, std::nullopt), std::back_inserter(statements));
  return statements;
}

void Definitions::TruncateTable(const TableInfo& table) {
  for (const ForeignKey& foreignKey : ForeignKeysOf(table, catalog_))
    if (EqualNames(foreignKey.parent->storageName, table.storageName)) Fail(4712, {table.name});
  for (const std::string& statement : TruncatingSql(table)) connection_.Run(statement);
  givenNumbers_.Forget(table);
}

void Definitions::CountIdentity(const TablePtr& table) {
  TableAlteration(connection_, catalog_, compiler_, builder_, shape_, table).CountIdentity();
}

void Definitions::AlterTable(const AlterTableStatement& statement) {
  const TablePtr found = catalog_.FindTable(statement.table);
  if (!found && catalog_.FindView(statement.table)) Fail(4909, {statement.table.Written()});
  if (!found) Fail(4902, {statement.table.Written()});
  TableAlteration(connection_, catalog_, compiler_, builder_, shape_, found).Run(statement);
}

void Definitions::CreateIndex(const CreateIndexStatement& statement) {
  const TablePtr found = catalog_.FindTable(statement.table);
  if (!found) Fail(4902, {statement.table.Written()});
  TableInfo table = *found;
  KeyInfo key;
  key.name = statement.name;
  key.kind = statement.unique ? KeyKind::UniqueIndex : KeyKind::Index;
  key.descending = statement.descending;
  for (const KeyInfo& other : table.keys)
    if (EqualNames(other.name, key.name)) Fail(1913, {key.name, table.name});
  for (const std::string& name : statement.columns) {
    const int column = table.FindColumn(name);
    if (column < 0) Fail(1911, {name});
    shape_.CheckIndexed(table, column);
    key.columns.push_back(column);
  }
  for (const std::string& name : statement.included)
    if (table.FindColumn(name) < 0) Fail(1911, {name});
  builder_.BuildIndexOverRows(table, key);
  table.keys.push_back(std::move(key));
  catalog_.ReplaceTable(table);
}

void Definitions::DropIndex(const ObjectName& tableName, const std::string& name, bool ifExists) {
  const TablePtr found = catalog_.FindTable(tableName);
  const std::string shown = tableName.Written() + "." + name;
  if (!found && !ifExists) Fail(3701, {"index", shown});
  if (!found) return;
  TableInfo table = *found;
  const auto key = std::find_if(table.keys.begin(), table.keys.end(), [&](const KeyInfo& entry) {
    return entry.IsIndexOnly() && EqualNames(entry.name, name);
  });
  if (key == table.keys.end()) {
    if (!ifExists) Fail(3701, {"index", shown});
    return;
  }
  builder_.DropIndex(table, *key);
  table.keys.erase(key);
  catalog_.ReplaceTable(table);
}

} // namespace tsql
