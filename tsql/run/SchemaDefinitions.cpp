// Schemas, and objects that move from one to another.
#include "tsql/catalog/Schemas.h"
#include "tsql/run/Definitions.h"
#include "tsql/run/ForeignKeys.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Whether the server has a principal of the name that may own a schema. There are no users beside them.
bool IsPrincipal(const std::string& name) {
  const ServerSchema* const schema = FindServerSchema(name);
  return schema != nullptr || EqualNames(name, "public");
}

} // namespace

void Definitions::CreateSchema(const CreateSchemaStatement& statement) {
  const std::string& owner = statement.owner;
  if (!owner.empty() && !IsPrincipal(owner)) Fail(15151, {"find", "principal", owner});
  if (!owner.empty() && !IsDbo(owner)) Refuse("An owner of a schema other than dbo");
  if (catalog_.FindSchema(statement.name))
    throw ErrorSequence({MakeError(2714, 0, {statement.name})}, MakeError(2759, 0, {}));
  catalog_.AddSchema(statement.name);
}

void Definitions::DropSchema(const std::string& name, bool ifExists) {
  const std::optional<int64_t> id = catalog_.FindSchema(name);
  if (!id && ifExists) return;
  if (!id) Fail(15151, {"drop", "schema", name});
  if (FindServerSchema(name) != nullptr) Fail(15150, {"drop", "schema", name});
  for (const Catalog::Object& object : catalog_.Objects())
    if (EqualNames(object.schema, name)) Fail(3729, {"drop schema", name, object.name});
  catalog_.RemoveSchema(name);
}

void Definitions::TransferObject(const AlterSchemaStatement& statement) {
  if (!catalog_.FindSchema(statement.schema)) Fail(15151, {"alter", "schema", statement.schema});
  ObjectName target;
  target.schema = statement.schema;
  target.name = statement.object.name;
  const TablePtr table = catalog_.FindTable(statement.object);
  const ModulePtr module = FindModule(statement.object);
  if (module && module->kind == ModuleKind::Trigger) Fail(15347, {});
  const bool isTable = table && table->place == Place::Main;
  if (!isTable && !module) Fail(15151, {"find", "object", statement.object.name});
  const Catalog::NewObject to = catalog_.PlaceNew(target);
  const std::string& from = isTable ? table->schema : module->schema;
  if (EqualNames(from, to.schema)) return;
  if (catalog_.Exists(target)) Fail(15530, {target.name});
  if (!isTable) return TransferModule(*module, to);
  for (const KeyInfo& key : table->keys)
    if (!key.IsIndexOnly() && catalog_.ConstraintExists(to.schema, key.name)) Fail(15530, {key.name});
  TableInfo moved = *table;
  moved.schema = to.schema;
  moved.storageName = to.key;
  const TableInfo& before = *table; // which the pointer keeps
  MoveTable(before, moved);
  TransferTriggers(before.storageName, to.schema);
}

void Definitions::MoveTable(const TableInfo& table, const TableInfo& moved) {
  for (const ForeignKey& foreignKey : ForeignKeysOf(table, catalog_))
    DropForeignKeyTriggers(connection_, *foreignKey.child, *foreignKey.key);
  for (const KeyInfo& key : table.keys)
    if (key.HasIndex()) builder_.DropIndex(table, key);
  builder_.Rename(table, moved);
  for (const KeyInfo& key : moved.keys) builder_.BuildIndex(moved, key);
  catalog_.MoveTable(table, moved);
  for (const ForeignKey& foreignKey : ForeignKeysOf(moved, catalog_))
    if (!foreignKey.key->disabled)
      CreateForeignKeyTriggers(connection_, *foreignKey.child, *foreignKey.key, *foreignKey.parent);
}

void Definitions::TransferModule(const ModuleInfo& module, const Catalog::NewObject& to) {
  const ModuleInfo before = module;
  ModuleInfo moved = module;
  moved.schema = to.schema;
  moved.key = to.key;
  catalog_.MoveModule(before, moved);
  if (before.kind == ModuleKind::View) TransferTriggers(before.key, to.schema);
}

// Triggers go where their table or view has gone.
void Definitions::TransferTriggers(const std::string& from, const std::string& schema) {
  const std::vector<TriggerPtr> triggers = catalog_.Triggers();
  for (const TriggerPtr& trigger : triggers) {
    if (!EqualNames(trigger->table, from)) continue;
    ObjectName name;
    name.schema = schema;
    name.name = trigger->module->name;
    if (catalog_.Exists(name)) Fail(15530, {name.name});
    TransferModule(*trigger->module, catalog_.PlaceNew(name));
  }
}

} // namespace tsql
