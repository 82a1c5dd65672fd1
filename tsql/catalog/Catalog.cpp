#include "tsql/catalog/Catalog.h"

#include <algorithm>
#include <iterator>

#include "tsql/catalog/Schemas.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr size_t kMaxSpareTables = 16;

bool FiresAt(const TriggerInfo& trigger, const std::string& table, TriggerEvent event) {
  return !trigger.module->disabled && EqualNames(trigger.table, table) &&
         std::ranges::count(trigger.events, event) > 0;
}

// A trigger lies in the schema of its table, whatever its text says since it was moved there.
std::string KeyBeside(const ModuleInfo& module, const std::string& name) {
  return module.key.substr(0, module.key.size() - module.name.size()) + name;
}

TriggerPtr ReadTrigger(ModulePtr module) {
  try {
    const std::unique_ptr<Batch> batch =
        ParseModule(module->text, module->schema, module->name, {module->options.quotedIdentifier});
    const bool isTrigger =
        !batch->statements.empty() && batch->statements.front()->kind == StatementKind::CreateTrigger;
    if (!isTrigger) throw SqliteFailure(SQLITE_CORRUPT, "database disk image is malformed: a trigger's text");
    auto& statement = static_cast<CreateTriggerStatement&>(*batch->statements.front());
    auto trigger = std::make_shared<TriggerInfo>();
    trigger->table = KeyBeside(*module, statement.table.name);
    trigger->module = std::move(module);
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

void Catalog::NameByKey(const Contents& contents, std::string_view key, std::string& schema,
                        std::string& name) {
  const std::optional<storage::KeyParts> parts = storage::SplitKey(key);
  if (!parts) return;
  for (const auto& [known, id] : contents.schemas) {
    if (id != parts->schema) continue;
    schema = known;
    name = parts->name;
  }
}

Catalog::Contents Catalog::Load(Place place) const {
  Contents contents;
  if (place == Place::Main)
    for (DefinitionStore::Schema& schema : store_.ReadSchemas())
      contents.schemas.emplace(std::move(schema.name), schema.id);
  for (TableInfo& table : store_.ReadTables(place)) {
    std::string key = table.storageName;
    NameByKey(contents, key, table.schema, table.name);
    contents.tables.emplace(std::move(key), std::make_shared<const TableInfo>(std::move(table)));
  }
  FindForeignKeys(contents);
  for (DefinitionStore::Module& module : store_.ReadModules(place)) {
    std::string key = module.info.key;
    NameByKey(contents, key, module.info.schema, module.info.name);
    auto kept = std::make_shared<const ModuleInfo>(std::move(module.info));
    if (kept->kind == ModuleKind::Trigger) {
      contents.triggers.push_back(ReadTrigger(std::move(kept)));
    } else {
      contents.ModulesOf(kept->kind).emplace(std::move(key), std::move(kept));
    }
  }
  return contents;
}

void Catalog::FindForeignKeys(Contents& contents) {
  contents.withForeignKeys.clear();
  contents.hasActions = false;
  for (const auto& entry : contents.tables) {
    const std::vector<KeyInfo>& keys = entry.second->keys;
    if (std::any_of(keys.begin(), keys.end(),
                    [](const KeyInfo& key) { return key.kind == KeyKind::ForeignKey; }))
      contents.withForeignKeys.push_back(entry.second);
    contents.hasActions = contents.hasActions || std::ranges::any_of(keys, &KeyInfo::HasAction);
  }
}

// ---- schemas

std::optional<int64_t> Catalog::FindSchema(std::string_view name) const {
  if (const ServerSchema* const own = FindServerSchema(name)) return own->id;
  const auto found = main_.schemas.find(std::string(name));
  return found != main_.schemas.end() ? std::optional<int64_t>(found->second) : std::nullopt;
}

std::optional<std::string> Catalog::SchemaName(int64_t id) const {
  for (const ServerSchema& own : ServerSchemas())
    if (own.id == id) return std::string(own.name);
  for (const auto& [name, number] : main_.schemas)
    if (number == id) return name;
  return std::nullopt;
}

storage::KeyParts Catalog::PartsOf(std::string_view key) const {
  const std::optional<storage::KeyParts> parts = storage::SplitKey(key);
  const bool isKnown = parts && std::ranges::any_of(main_.schemas, [&parts](const auto& entry) {
                         return entry.second == parts->schema;
                       });
  return isKnown ? *parts : storage::KeyParts{kDboSchema, key};
}

void Catalog::AddSchema(const std::string& name) {
  // A file from before there were schemas may have a name that would be a key then.
  const auto isTaken = [this](int64_t id) {
    return std::ranges::any_of(Objects(), [id](const Object& object) {
      const std::optional<storage::KeyParts> parts = storage::SplitKey(object.key);
      return parts && parts->schema == id;
    });
  };
  int64_t id = kFirstUserSchema;
  for (const auto& entry : main_.schemas) id = std::max(id, entry.second + 1);
  while (isTaken(id)) ++id;
  if (id == kFirstRoleSchema) id = kLastRoleSchema + 1;
  ++version_;
  changed_ = true;
  TouchSchema();
  store_.WriteSchema({id, name});
  main_.schemas.emplace(name, id);
}

void Catalog::RemoveSchema(const std::string& name) {
  const auto found = main_.schemas.find(name);
  ++version_;
  changed_ = true;
  TouchSchema();
  store_.EraseSchema({found->second, found->first});
  main_.schemas.erase(found);
}

Catalog::NewObject Catalog::PlaceNew(const ObjectName& name) const {
  if (PlaceOf(name) != Place::Main || name.schema.empty() || IsDbo(name.schema)) return {{}, name.name};
  const auto found = main_.schemas.find(name.schema);
  if (found != main_.schemas.end()) return {found->first, storage::ObjectKey(found->second, name.name)};
  const ServerSchema* const own = FindServerSchema(name.schema);
  if (own == nullptr || own->isClosed) Fail(2760, {name.schema});
  Refuse("An object in a schema that the server makes itself");
}

// Empty where there is no such schema.
std::string Catalog::KeyIn(const std::string& schema, const std::string& name) const {
  const auto found = main_.schemas.find(schema);
  return found != main_.schemas.end() ? storage::ObjectKey(found->second, name) : std::string();
}

bool Catalog::HasRelation(const std::string& key) const {
  return main_.tables.contains(key) || main_.views.contains(key) || main_.functions.contains(key);
}

// `find` looks for a key. What a name means in its home hides what it means in dbo, of whatever kind it is.
template <typename Object, typename Find>
Object Catalog::Look(const ObjectName& name, Find find) const {
  const bool isWritten = !name.schema.empty();
  if (isWritten && !IsDbo(name.schema)) {
    const std::string key = KeyIn(name.schema, name.name);
    return key.empty() ? nullptr : find(key);
  }
  if (!isWritten && !name.home.empty()) {
    const std::string key = KeyIn(name.home, name.name);
    if (!key.empty()) {
      Object found = find(key);
      if (found || HasRelation(key)) return found;
    }
  }
  Object found = find(name.name);
  return found && found->schema.empty() ? found : nullptr; // the key of another schema is no name
}

std::string Catalog::KeyOf(const ObjectName& name) const {
  if (const TablePtr table = FindTable(name)) return table->storageName;
  if (const ModulePtr view = FindView(name)) return view->key;
  const ModulePtr function = FindFunction(name);
  return function ? function->key : name.name;
}

// ---- lookups

TablePtr Catalog::FindTable(const ObjectName& name) const {
  const Place place = PlaceOf(name);
  if (place == Place::Temp) {
    // A procedure's own table hides those of its callers. Their table variables it does not see.
    const auto found = std::find_if(own_.local.rbegin(), own_.local.rend(), [&](const TempTable& entry) {
      return EqualNames(entry.table->name, name.name) && (!name.variable || entry.depth == depth_);
    });
    return found != own_.local.rend() ? found->table : nullptr;
  }
  if (place == Place::Global) {
    const auto found = global_.tables.find(name.name);
    return found != global_.tables.end() ? found->second : nullptr;
  }
  return Look<TablePtr>(name, [this](const std::string& key) -> TablePtr {
    const auto found = main_.tables.find(key);
    return found != main_.tables.end() ? found->second : nullptr;
  });
}

TablePtr Catalog::TableOfKey(std::string_view key) const {
  const auto found = main_.tables.find(std::string(key));
  return found != main_.tables.end() ? found->second : nullptr;
}

ModulePtr Catalog::FindModule(const Modules& modules, const ObjectName& name) const {
  return Look<ModulePtr>(name, [&modules](const std::string& key) -> ModulePtr {
    const auto found = modules.find(key);
    return found != modules.end() ? found->second : nullptr;
  });
}

ModulePtr Catalog::FindView(const ObjectName& name) const {
  return FindModule(main_.views, name);
}

ModulePtr Catalog::FindProcedure(const ObjectName& name) const {
  return FindModule(main_.procedures, name);
}

ModulePtr Catalog::FindFunction(const ObjectName& name) const {
  return FindModule(main_.functions, name);
}

ModulePtr Catalog::FunctionOfKey(std::string_view key) const {
  const auto found = main_.functions.find(std::string(key));
  return found != main_.functions.end() ? found->second : nullptr;
}

TriggerPtr Catalog::FindTrigger(const ObjectName& name) const {
  const std::string schema = IsDbo(name.schema) ? std::string() : name.schema;
  const auto found = std::ranges::find_if(main_.triggers, [&](const TriggerPtr& trigger) {
    return EqualNames(trigger->module->name, name.name) && EqualNames(trigger->module->schema, schema);
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

Catalog::Modules& Catalog::Contents::ModulesOf(ModuleKind kind) {
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

std::vector<ModulePtr> Catalog::AllModules() const {
  std::vector<ModulePtr> all;
  for (const Modules* const modules : {&main_.views, &main_.procedures, &main_.functions})
    for (const auto& entry : *modules) all.push_back(entry.second);
  for (const TriggerPtr& trigger : main_.triggers) all.push_back(trigger->module);
  return all;
}

void Catalog::AddConstraints(const TableInfo& table, std::vector<Object>& objects) {
  const auto add = [&](const KeyInfo& key, std::string_view kind) {
    objects.push_back({table.ConstraintKey(key), table.schema, key.name, kind});
  };
  for (const KeyInfo& key : table.keys) {
    switch (key.kind) {
    case KeyKind::PrimaryKey: add(key, "PK"); break;
    case KeyKind::Unique: add(key, "UQ"); break;
    case KeyKind::Check: add(key, "C"); break;
    case KeyKind::ForeignKey: add(key, "F"); break;
    default: break;
    }
  }
  for (size_t i = 0; i < table.columns.size(); ++i) {
    if (table.columns[i].defaultText.empty()) continue;
    KeyInfo key;
    key.name = table.DefaultName(i);
    add(key, "D");
  }
}

std::vector<Catalog::Object> Catalog::Objects() const {
  std::vector<Object> objects;
  for (const auto& [key, table] : main_.tables)
    objects.push_back({table->storageName, table->schema, table->name, {}});
  for (const ModulePtr& module : AllModules())
    objects.push_back({module->key, module->schema, module->name, {}});
  for (const auto& [key, table] : main_.tables) AddConstraints(*table, objects);
  return objects;
}

bool Catalog::ConstraintExists(const std::string& schema, const std::string& name) const {
  return std::any_of(main_.tables.begin(), main_.tables.end(), [&](const auto& entry) {
    if (!EqualNames(entry.second->schema, schema)) return false;
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
  ContentsOf(table.place).tables[table.storageName] = std::move(shared);
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
  ContentsOf(table.place).tables[table.storageName] = std::move(shared);
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
  ContentsOf(table.place).tables.erase(table.storageName);
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
    main_.ModulesOf(kind)[module.key] = std::move(kept);
    return;
  }
  TriggerPtr trigger = ReadTrigger(std::move(kept));
  const auto present = std::ranges::find_if(
      main_.triggers, [&](const TriggerPtr& other) { return EqualNames(other->module->key, module.key); });
  if (present != main_.triggers.end()) {
    *present = std::move(trigger);
  } else {
    main_.triggers.push_back(std::move(trigger));
  }
}

void Catalog::RemoveModule(const std::string& key) {
  ++version_;
  changed_ = true;
  TouchSchema();
  store_.EraseModule(key);
  main_.views.erase(key);
  main_.procedures.erase(key);
  main_.functions.erase(key);
  std::erase_if(main_.triggers,
                [&](const TriggerPtr& trigger) { return EqualNames(trigger->module->key, key); });
}

void Catalog::MoveTable(const TableInfo& from, const TableInfo& to) {
  RemoveTable(from);
  AddTable(to);
  const std::vector<TablePtr> children = main_.withForeignKeys;
  for (const TablePtr& child : children) {
    TableInfo changed = *child;
    bool refers = false;
    for (KeyInfo& key : changed.keys) {
      if (key.kind != KeyKind::ForeignKey || !EqualNames(key.referencedTable, from.storageName)) continue;
      key.referencedTable = to.storageName;
      refers = true;
    }
    if (refers) ReplaceTable(changed);
  }
}

void Catalog::MoveModule(const ModuleInfo& from, const ModuleInfo& to) {
  ++version_;
  changed_ = true;
  TouchSchema();
  store_.RenameModule(from.key, to.key);
  auto kept = std::make_shared<const ModuleInfo>(to);
  if (to.kind != ModuleKind::Trigger) {
    main_.ModulesOf(to.kind).erase(from.key);
    main_.ModulesOf(to.kind)[to.key] = std::move(kept);
    return;
  }
  for (TriggerPtr& trigger : main_.triggers)
    if (EqualNames(trigger->module->key, from.key)) trigger = ReadTrigger(kept);
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
