// What the database holds in the dialect's terms: T-SQL types, defaults, nullability, identity, keys, views
// and procedures. The definitions live in tables of their own inside the database file; each session keeps
// them in memory and reads them again when another session has changed the schema. Local temporary tables
// exist in the session's memory alone.
#pragma once

#include "tsql/sqlite/Connection.h"
#include "tsql/syntax/Tree.h"

#include <map>

namespace tsql {

// The SQLite schema that holds a table. Global temporary tables live in an in-memory database which all
// sessions of the process attach: they end with the process and never reach the file.
enum class Place : uint8_t { Main, Global, Temp };

struct ColumnInfo {
  std::string name;
  Type type;
  bool nullable = true;
  bool identity = false;
  std::string defaultText;
  bool operator==(const ColumnInfo&) const = default;
};

enum class KeyKind : uint8_t { PrimaryKey, Unique, UniqueIndex, Index, Check, ForeignKey };

struct KeyInfo {
  std::string name;
  KeyKind kind = KeyKind::Index;
  std::vector<int> columns;
  std::vector<bool> descending;
  std::string checkText;
  std::string referencedTable; // of a foreign key
  std::vector<std::string> referencedColumns;
  bool operator==(const KeyInfo&) const = default;
};

struct TableInfo {
  std::string name;
  std::string storageName; // the table's name in SQLite
  Place place = Place::Main;
  std::vector<ColumnInfo> columns;
  std::vector<KeyInfo> keys;
  // The column that is SQLite's rowid: the identity column, or an int primary key of one column.
  int rowidColumn = -1;
  int64_t seed = 1;
  int identityColumn = -1;

  int FindColumn(std::string_view columnName) const; // -1 when absent
  std::string SqlName() const;                       // quoted, with its schema
  bool operator==(const TableInfo&) const = default;
};
using TablePtr = std::shared_ptr<const TableInfo>;

struct ModuleInfo {
  std::string name;
  std::string text;
};
using ModulePtr = std::shared_ptr<const ModuleInfo>;

const char* PlaceName(Place place);
Place PlaceOf(const ObjectName& name);

// Compares names as the server does; for maps.
struct NameLess {
  bool operator()(const std::string& left, const std::string& right) const;
};

class Catalog {
 public:
  Catalog(const Connection& connection, std::string databaseName);

  static void CreateStorage(const Connection& connection, Place place);

  // Reads the definitions again where they may have changed.
  void Refresh(uint64_t mainVersion, uint64_t globalVersion);
  void Invalidate(Place place);
  // Changes with every change of what the lookups below may answer.
  uint64_t Version() const { return version_; }
  const std::string& DatabaseName() const { return databaseName_; }

  TablePtr FindTable(const ObjectName& name) const;
  ModulePtr FindView(const ObjectName& name) const;
  ModulePtr FindProcedure(const ObjectName& name) const;
  bool Exists(const ObjectName& name) const;
  // Tables, views and procedures of the database, by name.
  std::vector<std::string> ObjectNames() const;
  const std::vector<TablePtr>& TablesWithForeignKeys() const { return main_.withForeignKeys; }
  bool ConstraintExists(const std::string& name) const;

  void AddTable(const TableInfo& table);
  void ReplaceTable(const TableInfo& table);
  void RemoveTable(const TableInfo& table);
  void AddModule(ObjectKind kind, const ModuleInfo& module);
  void RemoveModule(const std::string& name);

  // Local temporary tables of procedures end with them: the depth counts nested scopes.
  void EnterScope() { ++depth_; }
  std::vector<TablePtr> LeaveScope(); // the tables to drop
  std::string TempStorageName(const std::string& name) const;

  // Global temporary tables that this session created and therefore takes with it.
  const std::vector<std::string>& OwnGlobalTables() const { return ownGlobal_; }

  // The temporary tables as they were, for a rollback.
  struct TempTable {
    TablePtr table;
    int depth = 0;
  };
  const std::vector<TempTable>& TempTables() const { return temp_; }
  void RestoreTempTables(std::vector<TempTable> tables);

 private:
  struct Contents {
    std::map<std::string, TablePtr, NameLess> tables;
    std::map<std::string, ModulePtr, NameLess> views;
    std::map<std::string, ModulePtr, NameLess> procedures;
    std::vector<TablePtr> withForeignKeys;
    uint64_t version = 0; // 0: must be read
  };

  static void FindForeignKeys(Contents& contents);
  void Load(Place place, Contents& contents) const;
  void LoadColumns(Place place, std::map<std::string, TableInfo, NameLess>& tables) const;
  void LoadKeys(Place place, std::map<std::string, TableInfo, NameLess>& tables) const;
  void WriteTable(const TableInfo& table) const;
  void EraseTable(const TableInfo& table) const;
  void TouchSchema() const;
  Contents& ContentsOf(Place place) { return place == Place::Global ? global_ : main_; }

  const Connection& connection_;
  std::string databaseName_;
  Contents main_;
  Contents global_;
  std::vector<TempTable> temp_;
  std::vector<std::string> ownGlobal_;
  int depth_ = 0;
  uint64_t version_ = 1;
};

} // namespace tsql
