#include <algorithm>
#include <cassert>
#include <utility>

#include "tsql/catalog/Schemas.h"
#include "tsql/run/Interpreter.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {

void Interpreter::MarkSchemaChange(Place place) {
  if (place != Place::Temp) transaction_.MarkSchemaChange();
}

ModulePtr Interpreter::FindModule(const ObjectName& name, ModuleKind kind) const {
  switch (kind) {
  case ModuleKind::View: return catalog_.FindView(name);
  case ModuleKind::Procedure: return catalog_.FindProcedure(name);
  case ModuleKind::Trigger: {
    const TriggerPtr trigger = catalog_.FindTrigger(name);
    return trigger ? trigger->module : nullptr;
  }
  default: return catalog_.FindFunction(name);
  }
}

void Interpreter::RunCreateFunction(const CreateFunctionStatement& statement) {
  constexpr ModuleKind kKinds[] = {ModuleKind::ScalarFunction, ModuleKind::InlineFunction,
                                   ModuleKind::TableFunction};
  compiler_.CheckFunction(statement);
  RunModule(statement.name, kKinds[static_cast<size_t>(statement.function)], statement.text, statement.form);
}

void Interpreter::RunModule(const ObjectName& name, ModuleKind kind, const std::string& text,
                            DefinitionForm form) {
  StatementScope scope(transaction_, Place::Main);
  const ModulePtr existing = FindModule(name, kind);
  const bool alters = form == DefinitionForm::Alter || (form == DefinitionForm::CreateOrAlter && existing);
  if (!alters && catalog_.Exists(name)) Fail(2714, {name.name});
  if (alters && !existing) Fail(208, {name.Written()});
  // A function stays what it is.
  if (alters && existing->kind != kind) Fail(2010, {name.name});
  if (alters) CheckNoSchemaBoundUser("ALTER", existing->key, name);
  ModuleInfo module;
  if (existing) {
    module = *existing;
  } else {
    if (storage::SplitKey(name.name)) Refuse("A name that the storage has for itself");
    Catalog::NewObject place = catalog_.PlaceNew(name);
    module.name = name.name;
    module.schema = std::move(place.schema);
    module.key = std::move(place.key);
  }
  module.text = text;
  module.kind = kind;
  module.options = compiler_.Options().OfModule();
  catalog_.AddModule(kind, module);
  scope.Complete();
  MarkSchemaChange(Place::Main);
}

void Interpreter::RunCreateTrigger(const CreateTriggerStatement& statement) {
  const TablePtr table = catalog_.FindTable(statement.table);
  const ModulePtr view = statement.insteadOf && !table ? catalog_.FindView(statement.table) : nullptr;
  if (!view && (!table || table->place != Place::Main)) Fail(8197, {statement.table.Written()});
  const std::string& schema = view ? view->schema : table->schema;
  const std::string own = IsDbo(statement.name.schema) ? std::string() : statement.name.schema;
  if (!EqualNames(own, schema))
    Fail(2103, {statement.form == DefinitionForm::Alter ? "alter" : "create", statement.name.Written()});
  const std::string& key = view ? view->key : table->storageName;
  const TriggerPtr existing = catalog_.FindTrigger(statement.name);
  if (statement.form != DefinitionForm::Create && existing && !EqualNames(existing->table, key))
    Fail(2110, {statement.name.name, statement.table.name});
  if (statement.insteadOf) {
    const bool isCreated = statement.form != DefinitionForm::Alter;
    const auto hasAction = [&](const KeyInfo& other) {
      return std::ranges::any_of(statement.events, [&](TriggerEvent event) {
        return other.ActionOn(event) != ReferentialAction::NoAction;
      });
    };
    if (table && std::ranges::any_of(table->keys, hasAction))
      Fail(2113, {isCreated ? "CREATE" : "ALTER", statement.name.name, table->name});
    // One for each event.
    constexpr const char* kEvents[] = {"INSERT", "UPDATE", "DELETE"};
    for (const TriggerPtr& other : catalog_.Triggers()) {
      const bool isOther = other->insteadOf && EqualNames(other->table, key) && other != existing;
      for (const TriggerEvent event : statement.events)
        if (isOther && std::ranges::count(other->events, event) > 0)
          Fail(2111, {statement.form == DefinitionForm::Alter ? "alter" : "create", statement.name.name,
                      view ? "view" : "table", statement.table.name, kEvents[static_cast<size_t>(event)]});
    }
  }
  compiler_.CheckTrigger(statement);
  RunModule(statement.name, ModuleKind::Trigger, statement.text, statement.form);
}

void Interpreter::RunSwitchTriggers(const SwitchTriggersStatement& statement) {
  const TablePtr table = catalog_.FindTable(statement.table);
  const ModulePtr view = statement.alters || table ? nullptr : catalog_.FindView(statement.table);
  if (!table && !view) Fail(statement.alters ? 4902 : 1088, {statement.table.Written()});
  const std::string key = table ? table->storageName : view->key;
  std::vector<TriggerPtr> triggers;
  for (const TriggerPtr& trigger : catalog_.Triggers())
    if (statement.triggers.empty() && EqualNames(trigger->table, key)) triggers.push_back(trigger);
  for (ObjectName name : statement.triggers) {
    const std::string written = name.Written();
    if (name.schema.empty()) name.schema = statement.table.schema;
    const TriggerPtr trigger = catalog_.FindTrigger(name);
    const bool isOfTable = trigger && EqualNames(trigger->table, key);
    if (!isOfTable && statement.alters) Fail(4920, {written, table->name});
    if (!isOfTable) Fail(1088, {written});
    triggers.push_back(trigger);
  }
  StatementScope scope(transaction_, Place::Main);
  for (const TriggerPtr& trigger : triggers) {
    ModuleInfo module = *trigger->module;
    module.disabled = !statement.enables;
    catalog_.AddModule(ModuleKind::Trigger, module);
  }
  scope.Complete();
  MarkSchemaChange(Place::Main);
}

// A table is left when its procedure's end had no memory for it, and there again after a rollback of that
// end.
void Interpreter::DropEndedTables() {
  while (const TableInfo* const ended = catalog_.EndedTable()) {
    const TableInfo table = *ended;
    try {
      definitions_.DropTable(table);
    } catch (const SqliteFailure& failure) {
      if ((failure.code & 0xFF) != SQLITE_ERROR) throw;
      catalog_.RemoveTable(table); // SQLite has it no more: the transaction that made it was undone
    }
  }
}

void Interpreter::RunDrop(const DropStatement& statement) {
  for (size_t i = 0; i < statement.names.size(); ++i) {
    const ObjectName& name = statement.names[i];
    const bool isIndex = statement.object == ObjectKind::Index;
    const Place place = PlaceOf(isIndex ? statement.tables[i] : name);
    StatementScope scope(transaction_, place);
    switch (statement.object) {
    case ObjectKind::Table: {
      const TablePtr table = catalog_.FindTable(name);
      if (!table && !statement.ifExists) Fail(3701, {"table", name.Written()});
      if (!table) break;
      if (table->place == Place::Main) CheckNoSchemaBoundUser("DROP TABLE", table->storageName, name);
      definitions_.DropTable(*table);
      break;
    }
    case ObjectKind::Index: definitions_.DropIndex(statement.tables[i], name.name, statement.ifExists); break;
    case ObjectKind::Schema: definitions_.DropSchema(name.name, statement.ifExists); break;
    default: DropModule(statement, name);
    }
    scope.Complete();
    MarkSchemaChange(place);
  }
}

void Interpreter::DropModule(const DropStatement& statement, const ObjectName& name) {
  const auto [kind, word] = [&]() -> std::pair<ModuleKind, const char*> {
    switch (statement.object) {
    case ObjectKind::View: return {ModuleKind::View, "view"};
    case ObjectKind::Procedure: return {ModuleKind::Procedure, "procedure"};
    case ObjectKind::Trigger: return {ModuleKind::Trigger, "trigger"};
    default: return {ModuleKind::ScalarFunction, "function"};
    }
  }();
  const ModulePtr module = FindModule(name, kind);
  if (!module && !statement.ifExists) Fail(3701, {word, name.Written()});
  if (!module) return;
  CheckNoSchemaBoundUser(kind == ModuleKind::View ? "DROP VIEW" : "DROP FUNCTION", module->key, name);
  if (kind == ModuleKind::View) definitions_.DropTriggers(module->key);
  catalog_.RemoveModule(std::string(module->key));
}

void Interpreter::RunTruncate(const TruncateStatement& statement) {
  const TablePtr table = catalog_.FindTable(statement.table);
  if (!table) Fail(4701, {statement.table.name});
  StatementScope scope(transaction_, table->place);
  definitions_.TruncateTable(*table);
  scope.Complete();
}

void Interpreter::CheckNoSchemaBoundUser(const char* verb, std::string_view key,
                                         const ObjectName& name) const {
  const std::vector<std::string> users = compiler_.SchemaBoundUsers(key);
  if (!users.empty()) Fail(3729, {verb, name.Written(), users.front()});
}

// Values of such a column would be cut of their trailing blanks or zeros.
void Interpreter::CheckPadding(const Type& type) const {
  const bool isPadded = type.id == TypeId::Char || type.id == TypeId::VarChar || type.id == TypeId::Binary ||
                        type.id == TypeId::VarBinary;
  if (isPadded && !ansiPadding_)
    Refuse("A column of char, varchar, binary or varbinary with ANSI_PADDING off");
}

void Interpreter::RunDefinition(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::CreateTable: {
    const auto& create = static_cast<const CreateTableStatement&>(statement);
    for (const ColumnDefinition& column : create.columns) CheckPadding(column.type);
    StatementScope scope(transaction_, PlaceOf(create.table));
    definitions_.CreateTable(create);
    scope.Complete();
    MarkSchemaChange(PlaceOf(create.table));
    break;
  }
  case StatementKind::CreateIndex: {
    const auto& create = static_cast<const CreateIndexStatement&>(statement);
    StatementScope scope(transaction_, PlaceOf(create.table));
    definitions_.CreateIndex(create);
    scope.Complete();
    MarkSchemaChange(PlaceOf(create.table));
    break;
  }
  case StatementKind::AlterTable: {
    const auto& alter = static_cast<const AlterTableStatement&>(statement);
    for (const ColumnDefinition& column : alter.columns) CheckPadding(column.type);
    StatementScope scope(transaction_, PlaceOf(alter.table));
    if (catalog_.FindTable(alter.table)) {
      for (const ColumnDefinition& column : alter.columns) {
        if (column.nullable.value_or(true) || column.defaultText.empty()) continue;
        Plan plan; // the rows that are there get the value
        plan.dependencies = compiler_.DefaultDependencies(column.defaultText);
        MakeFunctionsReady(plan);
      }
    }
    definitions_.AlterTable(alter);
    scope.Complete();
    MarkSchemaChange(PlaceOf(alter.table));
    break;
  }
  case StatementKind::Drop: RunDrop(static_cast<const DropStatement&>(statement)); break;
  case StatementKind::Truncate: RunTruncate(static_cast<const TruncateStatement&>(statement)); break;
  case StatementKind::CreateView: {
    const auto& view = static_cast<const CreateViewStatement&>(statement);
    // The view must hold together now, not only when it is used.
    compiler_.CheckView(view);
    RunModule(view.name, ModuleKind::View, view.text, view.form);
    break;
  }
  case StatementKind::CreateTrigger:
    RunCreateTrigger(static_cast<const CreateTriggerStatement&>(statement));
    break;
  case StatementKind::CreateSchema:
  case StatementKind::AlterSchema: {
    StatementScope scope(transaction_, Place::Main);
    if (statement.kind == StatementKind::CreateSchema) {
      definitions_.CreateSchema(static_cast<const CreateSchemaStatement&>(statement));
    } else {
      definitions_.TransferObject(static_cast<const AlterSchemaStatement&>(statement));
    }
    scope.Complete();
    MarkSchemaChange(Place::Main);
    break;
  }
  case StatementKind::SwitchTriggers:
    RunSwitchTriggers(static_cast<const SwitchTriggersStatement&>(statement));
    break;
  case StatementKind::Administration:
    RunAdministration(static_cast<const AdministrationStatement&>(statement));
    break;
  case StatementKind::CreateFunction:
    RunCreateFunction(static_cast<const CreateFunctionStatement&>(statement));
    break;
  default: {
    assert(statement.kind == StatementKind::CreateProcedure);
    const auto& procedure = static_cast<const CreateProcedureStatement&>(statement);
    RunModule(procedure.name, ModuleKind::Procedure, procedure.text, procedure.form);
  }
  }
}

} // namespace tsql
