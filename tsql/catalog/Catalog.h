// What the database holds in the dialect's terms: schemas, tables with their types, defaults, identity and
// keys, views, procedures, functions and triggers. The definitions live in tables of their own inside the
// database file; each session keeps them in memory and reads them again when another session has changed the
// schema. Local temporary tables exist in the session's memory alone.
#pragma once

#include <map>

#include "tsql/catalog/DefinitionStore.h"

namespace tsql {

class Catalog {
 public:
  Catalog(const Connection& connection, std::string databaseName);

  // Reads the definitions again where they may have changed.
  void Refresh(uint64_t mainVersion, uint64_t globalVersion);
  // Every definition so far is committed: a rollback from here on undoes only what follows.
  void BeginChanges() { changed_ = false; }
  // A rollback has undone definitions: what is in memory counts no longer.
  void UndoChanges() { undone_ = undone_ || changed_; }
  // Reads the definitions again after a rollback that has undone some. Until then the lookups below must not
  // be asked.
  void Settle() {
    if (undone_) Reload();
  }
  // Becomes another number whenever the lookups below may answer differently.
  uint64_t Version() const { return version_; }
  const std::string& DatabaseName() const { return databaseName_; }

  // A name without a schema is looked for in its home, then in dbo.
  TablePtr FindTable(const ObjectName& name) const;
  ModulePtr FindView(const ObjectName& name) const;
  ModulePtr FindProcedure(const ObjectName& name) const;
  ModulePtr FindFunction(const ObjectName& name) const; // of a user
  ModulePtr FunctionOfKey(std::string_view key) const;
  TablePtr TableOfKey(std::string_view key) const; // of the main database
  TriggerPtr FindTrigger(const ObjectName& name) const;
  // All of them, in the order in which they were made.
  const std::vector<TriggerPtr>& Triggers() const { return main_.triggers; }
  // The triggers of a table or view are asked for by its key.
  // Whether some of the table fire at the event, after it or instead of it.
  bool HasTriggers(const std::string& table, TriggerEvent event) const;
  // Those of a table or view that fire at the event, in that order.
  std::vector<TriggerPtr> TriggersOf(const std::string& table, TriggerEvent event, bool insteadOf) const;
  bool Exists(const ObjectName& name) const;
  // All objects of the database, constraints at the end.
  struct Object {
    std::string key;
    std::string schema; // empty for dbo
    std::string name;
    std::string_view constraint; // the kind of a constraint, as OBJECT_ID takes it; empty for others
  };
  std::vector<Object> Objects() const;
  // The tables of the main database by their keys, and all views, procedures, functions and triggers.
  const std::map<std::string, TablePtr, NameLess>& Tables() const { return main_.tables; }
  std::vector<ModulePtr> AllModules() const;
  // The key of the table, view or function that the name means.
  std::string KeyOf(const ObjectName& name) const;
  const std::vector<TablePtr>& TablesWithForeignKeys() const { return main_.withForeignKeys; }
  // Whether some foreign key has a referential action.
  bool HasReferentialActions() const { return main_.hasActions; }
  bool ConstraintExists(const std::string& schema, const std::string& name) const;

  // Schemas: their numbers by their names, and the other way round. Those of the server are among them.
  std::optional<int64_t> FindSchema(std::string_view name) const;
  std::optional<std::string> SchemaName(int64_t id) const;
  const std::map<std::string, int64_t, NameLess>& Schemas() const { return main_.schemas; } // of users
  // The schema and name of the object of a key.
  storage::KeyParts PartsOf(std::string_view key) const;
  void AddSchema(const std::string& name);
  void RemoveSchema(const std::string& name);
  // Where a new object of the name goes. 2760 when there is no such schema.
  struct NewObject {
    std::string schema; // empty for dbo
    std::string key;
  };
  NewObject PlaceNew(const ObjectName& name) const;

  void AddTable(const TableInfo& table);
  void ReplaceTable(const TableInfo& table);
  void RemoveTable(const TableInfo& table);
  void AddModule(ModuleKind kind, const ModuleInfo& module);
  void RemoveModule(const std::string& key);
  // Gives an object of the main database another schema or name. What refers to a table by its key does so
  // afterwards; what SQLite has of it is left alone.
  void MoveTable(const TableInfo& from, const TableInfo& to);
  void MoveModule(const ModuleInfo& from, const ModuleInfo& to);

  // The scope of a procedure: the local temporary tables made in it end with it.
  void EnterScope() { ++depth_; }
  void LeaveScope() { --depth_; }
  // A local temporary table of a scope that was left, which is to be dropped; null when there is none. Each
  // statement asks.
  const TableInfo* EndedTable() const {
    for (const TempTable& entry : own_.local)
      if (entry.depth > depth_) return entry.table.get();
    return nullptr;
  }
  std::string TempStorageName(const std::string& name) const;

  // The global temporary tables that this session made. They end with it.
  const std::vector<std::string>& OwnGlobalTables() const { return own_.ownGlobal; }

  // The session's temporary tables as they were, for a rollback.
  struct TempTable {
    TablePtr table;
    int depth = 0;
  };
  struct SessionTables {
    std::vector<TempTable> local;
    std::vector<TablePtr> spare;
    std::vector<std::string> ownGlobal;
    std::vector<TablePtr> ofFunctions;
  };
  const std::vector<TempTable>& TempTables() const { return own_.local; }
  int Depth() const { return depth_; }
  // The table variables of the units that run. A rollback leaves them.
  std::vector<TempTable> TableVariables() const;
  void SetTableVariables(const std::vector<TempTable>& variables);
  // The tables that SQLite has for the table variables of functions. No name finds them.
  const std::vector<TablePtr>& FunctionTables() const { return own_.ofFunctions; }
  void AddFunctionTable(const TablePtr& table) { own_.ofFunctions.push_back(table); }
  void RemoveFunctionTable(const TablePtr& table) { std::erase(own_.ofFunctions, table); }

  // Makes a local temporary table a spare one: a dropped table that SQLite still has, without rows. Batches
  // make and drop the same tables with each run, and making one in SQLite takes longer than most of their
  // statements.
  void MakeSpare(const TableInfo& table);
  // The spare table that another one would be too many for; null while there is room.
  TablePtr SuperfluousSpare() const;
  // Takes the spare table of that name in SQLite out of the list; null when there is none.
  TablePtr TakeSpare(const std::string& storageName);
  const SessionTables& OwnTables() const { return own_; }
  void RestoreOwnTables(SessionTables tables);

 private:
  using Modules = std::map<std::string, ModulePtr, NameLess>;
  // Objects by their keys.
  struct Contents {
    std::map<std::string, int64_t, NameLess> schemas;
    std::map<std::string, TablePtr, NameLess> tables;
    Modules views;
    Modules procedures;
    Modules functions;
    Modules& ModulesOf(ModuleKind kind);
    std::vector<TablePtr> withForeignKeys;
    bool hasActions = false; // of foreign keys
    std::vector<TriggerPtr> triggers;
    uint64_t version = 0; // 0 when it must be read
  };

  template <typename Object, typename Find>
  Object Look(const ObjectName& name, Find find) const;
  ModulePtr FindModule(const Modules& modules, const ObjectName& name) const;
  std::string KeyIn(const std::string& schema, const std::string& name) const;
  bool HasRelation(const std::string& key) const;
  static void NameByKey(const Contents& contents, std::string_view key, std::string& schema,
                        std::string& name);
  static void AddConstraints(const TableInfo& table, std::vector<Object>& objects);
  static void FindForeignKeys(Contents& contents);
  Contents Load(Place place) const;
  void Reload();
  void TouchSchema() const;
  Contents& ContentsOf(Place place) { return place == Place::Global ? global_ : main_; }

  const Connection& connection_;
  DefinitionStore store_;
  std::string databaseName_;
  Contents main_;
  Contents global_;
  SessionTables own_;
  bool changed_ = false; // since BeginChanges
  bool undone_ = false;
  int depth_ = 0;
  uint64_t version_ = 1;
};

} // namespace tsql
