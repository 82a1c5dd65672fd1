// Carries out data definition: checks it as the server does, makes SQLite's tables and indexes, and records
// the definition in the catalog. The caller encloses each call in a StatementScope.
#pragma once

#include "tsql/compile/Compiler.h"
#include "tsql/compile/TableShape.h"
#include "tsql/run/TableBuilder.h"

namespace tsql {

class Definitions {
 public:
  Definitions(const Connection& connection, Catalog& catalog, const Compiler& compiler)
      : connection_(connection), catalog_(catalog), compiler_(compiler), shape_(catalog),
        builder_(connection, compiler) {}

  void CreateTable(const CreateTableStatement& statement);
  // The table of SELECT ... INTO, which has no keys.
  void CreateTable(const ObjectName& name, const std::vector<Column>& columns);
  // A table variable of the unit that begins to run, as it was declared.
  void CreateVariable(const TableInfo& declared);
  // The same without an entry in the catalog.
  void BuildVariable(const TableInfo& table) { Build(table); }
  void DropTable(const TableInfo& table);      // `table` is not a reference into the catalog
  void DropTriggers(const std::string& table); // or of a view
  void TruncateTable(const TableInfo& table);
  // The statements that empty a table.
  static std::vector<std::string> TruncatingSql(const TableInfo& table);
  void AlterTable(const AlterTableStatement& statement);
  void CreateIndex(const CreateIndexStatement& statement);
  // The table stands in the place of the schema.
  void DropIndex(const ObjectName& name, bool ifExists);

 private:
  void DropTempTable(const TableInfo& table);
  void Build(const TableInfo& table);
  bool BuildFromSpare(const TableInfo& table);
  void CheckNew(const ObjectName& name) const;

  const Connection& connection_;
  Catalog& catalog_;
  const Compiler& compiler_;
  TableShape shape_;
  TableBuilder builder_;
};

} // namespace tsql
