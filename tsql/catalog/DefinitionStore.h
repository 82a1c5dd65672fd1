// Reads and writes definitions in the engine's own tables of a database. Tables in Place::Temp are not kept.
#pragma once

#include <map>

#include "tsql/catalog/TableInfo.h"

namespace tsql {

class DefinitionStore {
 public:
  struct Module {
    ModuleKind kind = ModuleKind::View;
    ModuleInfo info;
  };

  // A schema other than dbo. Files keep its number in the keys of its objects.
  struct Schema {
    int64_t id = 0;
    std::string name;
  };

  explicit DefinitionStore(const Connection& connection) : connection_(connection) {}

  // The definitions that are read have keys for names; whose they are, the schemas say.
  std::vector<Schema> ReadSchemas() const;
  void WriteSchema(const Schema& schema) const;
  void EraseSchema(const Schema& schema) const;
  std::vector<TableInfo> ReadTables(Place place) const;
  std::vector<Module> ReadModules(Place place) const;
  void WriteTable(const TableInfo& table) const;
  void EraseTable(const TableInfo& table) const;
  // Views and procedures are in the main database alone. Writing replaces what has the same name.
  void WriteModule(ModuleKind kind, const ModuleInfo& module) const;
  void RenameModule(const std::string& from, const std::string& to) const; // it keeps its row
  void EraseModule(const std::string& key) const;

 private:
  using TablesByName = std::map<std::string, TableInfo, NameLess>;
  void ReadColumns(Place place, TablesByName& tables) const;
  void ReadCollations(Place place, TablesByName& tables) const;
  void WriteCollations(const TableInfo& table) const;
  void ReadKeys(Place place, TablesByName& tables) const;

  const Connection& connection_;
};

} // namespace tsql
