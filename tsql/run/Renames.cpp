// What sp_rename does: objects, columns and indexes get other names. The texts of modules stay as they are.
#include <algorithm>

#include "tsql/run/Definitions.h"
#include "tsql/run/ForeignKeys.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

bool HasTriggers(const Catalog& catalog, const std::string& key) {
  return std::ranges::any_of(catalog.Triggers(),
                             [&](const TriggerPtr& trigger) { return EqualNames(trigger->table, key); });
}

} // namespace

void Definitions::RenameObject(const ObjectName& name, const std::string& newName) {
  const TablePtr table = catalog_.FindTable(name);
  const ModulePtr module = table ? nullptr : FindModule(name);
  ObjectName target;
  target.schema = name.schema;
  target.name = newName;
  if (newName.starts_with('#') || storage::IsOwnName(newName))
    Refuse("A name that the storage has for itself");
  if (catalog_.Exists(target) && !EqualNames(name.name, newName)) Fail(15335, {newName, "object"});
  const Catalog::NewObject to = catalog_.PlaceNew(target);
  const std::string key = table ? table->storageName : module->key;
  if (!compiler_.SchemaBoundUsers(key).empty()) Fail(15336, {name.Written()});
  if (HasTriggers(catalog_, key)) Refuse("sp_rename of a table or view with triggers");
  if (table) {
    TableInfo renamed = *table;
    renamed.name = newName;
    renamed.storageName = to.key;
    return MoveTable(*table, renamed);
  }
  ModuleInfo renamed = *module;
  renamed.name = newName;
  renamed.key = to.key;
  catalog_.MoveModule(*module, renamed);
}

ModulePtr Definitions::FindModule(const ObjectName& name) const {
  if (ModulePtr view = catalog_.FindView(name)) return view;
  if (ModulePtr procedure = catalog_.FindProcedure(name)) return procedure;
  if (ModulePtr function = catalog_.FindFunction(name)) return function;
  const TriggerPtr trigger = catalog_.FindTrigger(name);
  return trigger ? trigger->module : nullptr;
}

void Definitions::RenameColumn(const TableInfo& table, const std::string& name, const std::string& newName,
                               const std::string& written) {
  const int position = table.FindColumn(name);
  const ColumnInfo& column = table.columns[static_cast<size_t>(position)];
  if (column.IsComputed()) Fail(4928, {column.name, "COMPUTED"});
  const int taken = table.FindColumn(newName);
  if (taken >= 0 && taken != position) Fail(15335, {newName, "COLUMN"});
  // Conditions and expressions name their columns.
  const auto uses = [position](const std::vector<int>& columns) {
    return std::ranges::count(columns, position) > 0;
  };
  for (const KeyInfo& key : table.keys)
    if (key.kind == KeyKind::Check && uses(compiler_.ColumnsOfCheck(table, key.checkText)))
      Fail(15336, {written});
  if (!compiler_.SchemaBoundUsers(table.storageName, &column.name).empty()) Fail(15336, {written});
  for (const ColumnInfo& other : table.columns)
    if (other.IsComputed() && uses(compiler_.ColumnsOfComputed(table, other))) Fail(15336, {written});
  for (const ForeignKey& foreignKey : ForeignKeysOf(table, catalog_))
    DropForeignKeyTriggers(connection_, *foreignKey.child, *foreignKey.key);
  connection_.Run("ALTER TABLE " + table.SqlName() + " RENAME COLUMN " + QuoteName(column.name) + " TO " +
                  QuoteName(newName));
  const std::string old = column.name;
  TableInfo renamed = table;
  renamed.columns[static_cast<size_t>(position)].name = newName;
  catalog_.ReplaceTable(renamed);
  const std::vector<TablePtr> children = catalog_.TablesWithForeignKeys();
  for (const TablePtr& child : children) {
    TableInfo changed = *child;
    for (KeyInfo& key : changed.keys)
      if (key.kind == KeyKind::ForeignKey && EqualNames(key.referencedTable, renamed.storageName))
        for (std::string& referenced : key.referencedColumns)
          if (EqualNames(referenced, old)) referenced = newName;
    if (changed != *child) catalog_.ReplaceTable(changed);
  }
  for (const ForeignKey& foreignKey : ForeignKeysOf(renamed, catalog_))
    if (!foreignKey.key->disabled)
      CreateForeignKeyTriggers(connection_, *foreignKey.child, *foreignKey.key, *foreignKey.parent);
}

void Definitions::RenameIndex(const TableInfo& table, const std::string& name, const std::string& newName) {
  TableInfo renamed = table;
  const auto isNamed = [](const std::string& wanted) {
    return [&wanted](const KeyInfo& key) { return key.HasIndex() && EqualNames(key.name, wanted); };
  };
  const auto found = std::ranges::find_if(renamed.keys, isNamed(name));
  const auto taken = std::ranges::find_if(renamed.keys, isNamed(newName));
  if (taken != renamed.keys.end() && taken != found) Fail(15335, {newName, "INDEX"});
  const bool isConstraint = !found->IsIndexOnly();
  if (isConstraint && storage::SplitKey(newName)) Refuse("A name that the storage has for itself");
  if (isConstraint && taken == renamed.keys.end() && catalog_.ConstraintExists(table.schema, newName))
    Fail(15335, {newName, "object"});
  builder_.DropIndex(table, *found);
  found->name = newName;
  builder_.BuildIndex(renamed, *found);
  catalog_.ReplaceTable(renamed);
}

} // namespace tsql
