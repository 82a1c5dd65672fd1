#include "tsql/catalog/Catalog.h"

#include <algorithm>
#include <iterator>

#include "tsql/syntax/Parser.h"
#include "tsql/values/Collation.h"

namespace tsql {
namespace {

constexpr size_t kMaxSpareTables = 16;

bool FiresAt(const TriggerInfo& trigger, const std::string& table, TriggerEvent event) {
  return !trigger.module->disabled && EqualNames(trigger.table, table) &&
         std::ranges::count(trigger.events, event) > 0;
}

TriggerPtr ReadTrigger(ModulePtr module) {
  try {
    const std::unique_ptr<Batch> batch = ParseBatch(module->text);
    const bool isTrigger =
        !batch->statements.empty() && batch->statements.front()->kind == StatementKind::CreateTrigger;
    if (!isTrigger) throw SqliteFailure(SQLITE_CORRUPT, "database disk image is malformed: a trigger's text");
    auto& statement = static_cast<CreateTriggerStatement&>(*batch->statements.front());
    auto trigger = std::make_shared<TriggerInfo>();
    trigger->module = std::move(module);
    trigger->table = std::move(statement.table.name);
    trigger->events = std::move(statement.events);
    trigger->insteadOf = statement.insteadOf;
    return trigger;
  } catch (const Error&) {
    throw SqliteFailure(SQLITE_CORRUPT, "database disk image is malformed: a trigger's text");
  }
}

} // namespace

Catalog::Catalog(const Connection& connection, std::string databaseName)
    : connection_(connection), store_(connection), databaseName_(std::move(databaseName)) {}

void Catalog::Refresh(uint64_t mainVersion, uint64_t globalVersion) {
  if (undone_) {
    main_.version = 0;
    global_.version = 0;
    undone_ = false;
  }
  if (main_.version != mainVersion) {
    main_ = Load(Place::Main);
    main_.version = mainVersion;
    ++version_;
  }
  if (global_.version != globalVersion) {
    global_ = Load(Place::Global);
    global_.version = globalVersion;
    ++version_;
  }
}

void Catalog::Reload() {
  // The version stays unknown: what a rollback brought back is an old one, which others may have replaced.
  main_ = Load(Place::Main);
  global_ = Load(Place::Global);
  undone_ = false;
  ++version_;
}

Catalog::Contents Catalog::Load(Place place) const {
  Contents contents;
  for (TableInfo& table : store_.ReadTables(place)) {
    std::string name = table.name;
    contents.tables.emplace(std::move(name), std::make_shared<const TableInfo>(std::move(table)));
  }
  FindForeignKeys(contents);
  for (DefinitionStore::Module& module : store_.ReadModules(place)) {
    std::string name = module.info.name;
    auto kept = std::make_shared<const ModuleInfo>(std::move(module.info));
    if (kept->kind == ModuleKind::Trigger) {
      contents.triggers.push_back(ReadTrigger(std::move(kept)));
    } else {
      contents.ModulesOf(kept->kind).emplace(std::move(name), std::move(kept));
    }
  }
  return contents;
}

void Catalog::FindForeignKeys(Contents& contents) {
  contents.withForeignKeys.clear();
  for (const auto& entry : contents.tables) {
    const std::vector<KeyInfo>& keys = entry.second->keys;
    if (std::any_of(keys.begin(), keys.end(),
                    [](const KeyInfo& key) { return key.kind == KeyKind::ForeignKey; }))
      contents.withForeignKeys.push_back(entry.second);
  }
}

TablePtr Catalog::FindTable(const ObjectName& name) const {
  const Place place = PlaceOf(name);
  if (place == Place::Temp) {
    // A procedure's own table hides those of its callers. Their table variables it does not see.
    const auto found = std::find_if(own_.local.rbegin(), own_.local.rend(), [&](const TempTable& entry) {
      return EqualNames(entry.table->name, name.name) && (!name.variable || entry.depth == depth_);
    });
    return found != own_.local.rend() ? found->table : nullptr;
  }
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const Contents& contents = place == Place::Global ? global_ : main_;
  const auto found = contents.tables.find(name.name);
  return found != contents.tables.end() ? found->second : nullptr;
}

ModulePtr Catalog::FindView(const ObjectName& name) const {
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const auto found = main_.views.find(name.name);
  return found != main_.views.end() ? found->second : nullptr;
}

ModulePtr Catalog::FindProcedure(const ObjectName& name) const {
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const auto found = main_.procedures.find(name.name);
  return found != main_.procedures.end() ? found->second : nullptr;
}

ModulePtr Catalog::FindFunction(const ObjectName& name) const {
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const auto found = main_.functions.find(name.name);
  return found != main_.functions.end() ? found->second : nullptr;
}

TriggerPtr Catalog::FindTrigger(const ObjectName& name) const {
  if (!name.schema.empty() && !EqualNames(name.schema, "dbo")) return nullptr;
  const auto found = std::ranges::find_if(main_.triggers, [&](const TriggerPtr& trigger) {
    return EqualNames(trigger->module->name, name.name);
  });
  return found != main_.triggers.end() ? *found : nullptr;
}

bool Catalog::HasTriggers(const std::string& table, TriggerEvent event) const {
  return std::ranges::any_of(main_.triggers,
                             [&](const TriggerPtr& trigger) { return FiresAt(*trigger, table, event); });
}

std::vector<TriggerPtr> Catalog::TriggersOf(const std::string& table, TriggerEvent event,
                                            bool insteadOf) const {
  std::vector<TriggerPtr> triggers;
  std::ranges::copy_if(main_.triggers, std::back_inserter(triggers), [&](const TriggerPtr& trigger) {
    return trigger->insteadOf == insteadOf && FiresAt(*trigger, table, event);
  });
  return triggers;
}

std::map<std::string, ModulePtr, NameLess>& Catalog::Contents::ModulesOf(ModuleKind kind) {
  switch (kind) {
  case ModuleKind::View: return views;
  case ModuleKind::Procedure: return procedures;
  default: return functions;
  }
}

bool Catalog::Exists(const ObjectName& name) const {
  if (PlaceOf(name) == Place::Temp)
    return std::any_of(own_.local.begin(), own_.local.end(), [&](const TempTable& entry) {
      return entry.depth == depth_ && EqualNames(entry.table->name, name.name);
    });
  return FindTable(name) || FindView(name) || FindProcedure(name) || FindFunction(name) || FindTrigger(name);
}

std::vector<std::string> Catalog::ObjectNames() const {
  std::vector<std::string> names;
  for (const auto& entry : main_.tables) names.push_back(entry.second->name);
  for (const auto& entry : main_.views) names.push_back(entry.second->name);
  for (const auto& entry : main_.procedures) names.push_back(entry.second->name);
  for (const auto& entry : main_.functions) names.push_back(entry.second->name);
  for (const TriggerPtr& trigger : main_.triggers) names.push_back(trigger->module->name);
  return names;
}

bool Catalog::ConstraintExists(const std::string& name) const {
  return std::any_of(main_.tables.begin(), main_.tables.end(), [&](const auto& entry) {
    const std::vector<KeyInfo>& keys = entry.second->keys;
    return std::any_of(keys.begin(), keys.end(),
                       [&](const KeyInfo& key) { return !key.IsIndexOnly() && EqualNames(key.name, name); });
  });
}

void Catalog::AddTable(const TableInfo& table) {
  ++version_;
  auto shared = std::make_shared<const TableInfo>(table);
  if (table.place == Place::Temp) {
    own_.local.push_back({std::move(shared), depth_});
    return;
  }
  changed_ = true;
  store_.WriteTable(table);
  if (table.place == Place::Global) own_.ownGlobal.push_back(table.name);
  ContentsOf(table.place).tables[table.name] = std::move(shared);
  FindForeignKeys(ContentsOf(table.place));
}

void Catalog::ReplaceTable(const TableInfo& table) {
  ++version_;
  auto shared = std::make_shared<const TableInfo>(table);
  if (table.place == Place::Temp) {
    for (TempTable& entry : own_.local)
      if (entry.table->storageName == table.storageName) entry.table = shared;
    return;
  }
  changed_ = true;
  if (table.place == Place::Main) TouchSchema();
  store_.EraseTable(table);
  store_.WriteTable(table);
  ContentsOf(table.place).tables[table.name] = std::move(shared);
  FindForeignKeys(ContentsOf(table.place));
}

void Catalog::RemoveTable(const TableInfo& table) {
  ++version_;
  if (table.place == Place::Temp) {
    std::erase_if(own_.local,
                  [&](const TempTable& entry) { return entry.table->storageName == table.storageName; });
    return;
  }
  changed_ = true;
  store_.EraseTable(table);
  std::erase(own_.ownGlobal, table.name);
  ContentsOf(table.place).tables.erase(table.name);
  FindForeignKeys(ContentsOf(table.place));
}

void Catalog::TouchSchema() const {
  // To SQLite definitions are only rows, but other sessions watch its count of schema changes.
  PreparedStatement read = connection_.Prepare("PRAGMA main.schema_version");
  read.Step();
  const int64_t next = read.ColumnInteger(0) + 1;
  read.Reset();
  connection_.Run("PRAGMA main.schema_version = " + std::to_string(next));
}

void Catalog::AddModule(ModuleKind kind, const ModuleInfo& module) {
  ++version_;
  changed_ = true;
  TouchSchema();
  store_.WriteModule(kind, module);
  auto kept = std::make_shared<ModuleInfo>(module);
  kept->kind = kind;
  if (kind != ModuleKind::Trigger) {
    main_.ModulesOf(kind)[module.name] = std::move(kept);
    return;
  }
  TriggerPtr trigger = ReadTrigger(std::move(kept));
  const auto present = std::ranges::find_if(
      main_.triggers, [&](const TriggerPtr& other) { return EqualNames(other->module->name, module.name); });
  if (present != main_.triggers.end()) {
    *present = std::move(trigger);
  } else {
    main_.triggers.push_back(std::move(trigger));
  }
}

void Catalog::RemoveModule(const std::string& name) {
  ++version_;
  changed_ = true;
  TouchSchema();
  store_.EraseModule(name);
  main_.views.erase(name);
  main_.procedures.erase(name);
  main_.functions.erase(name);
  std::erase_if(main_.triggers,
                [&](const TriggerPtr& trigger) { return EqualNames(trigger->module->name, name); });
}

std::string Catalog::TempStorageName(const std::string& name) const {
  return depth_ == 0 ? name : name + ":" + std::to_string(depth_);
}

TablePtr Catalog::TakeSpare(const std::string& storageName) {
  const auto found = std::ranges::find_if(
      own_.spare, [&](const TablePtr& table) { return EqualNames(table->storageName, storageName); });
  if (found == own_.spare.end()) return nullptr;
  TablePtr table = std::move(*found);
  own_.spare.erase(found);
  return table;
}

void Catalog::MakeSpare(const TableInfo& table) {
  own_.spare.push_back(std::make_shared<const TableInfo>(table));
  RemoveTable(table);
}

TablePtr Catalog::SuperfluousSpare() const {
  return own_.spare.size() < kMaxSpareTables ? nullptr : own_.spare.front();
}

void Catalog::RestoreOwnTables(SessionTables tables) {
  ++version_;
  own_ = std::move(tables);
}

std::vector<Catalog::TempTable> Catalog::TableVariables() const {
  std::vector<TempTable> variables;
  std::ranges::copy_if(own_.local, std::back_inserter(variables),
                       [](const TempTable& entry) { return entry.table->IsVariable(); });
  return variables;
}

void Catalog::SetTableVariables(const std::vector<TempTable>& variables) {
  ++version_;
  std::erase_if(own_.local, [](const TempTable& entry) { return entry.table->IsVariable(); });
  own_.local.insert(own_.local.end(), variables.begin(), variables.end());
}

} // namespace tsql
