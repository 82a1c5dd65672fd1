// Carries out data definition: checks it as the server does, makes SQLite's tables and indexes, and records
// the definition in the catalog. The caller encloses each call in a StatementScope.
#pragma once

#include "tsql/compile/Compiler.h"

namespace tsql {

// The largest number that an identity column of the type can have.
int64_t LargestIdentity(const Type& type);

class Definitions {
 public:
  Definitions(const Connection& connection, Catalog& catalog, const Compiler& compiler)
      : connection_(connection), catalog_(catalog), compiler_(compiler) {}

  void CreateTable(const CreateTableStatement& statement);
  // The table of SELECT ... INTO, which has no keys.
  void CreateTable(const ObjectName& name, const std::vector<Column>& columns);
  void DropTable(const TableInfo& table); // `table` is not a reference into the catalog
  void TruncateTable(const TableInfo& table);
  void AlterTable(const AlterTableStatement& statement);
  void CreateIndex(const CreateIndexStatement& statement);
  // The table stands in the place of the schema.
  void DropIndex(const ObjectName& name, bool ifExists);

 private:
  void DropTempTable(const TableInfo& table);
  void AddColumn(TableInfo& table, const ColumnDefinition& definition) const;
  void AddForeignKey(TableInfo& table, const ConstraintDefinition& definition) const;
  TablePtr FindReferenced(const TableInfo& table, const KeyInfo& key) const;
  void AddConstraint(TableInfo& table, const ConstraintDefinition& definition) const;
  void CheckKeyName(const TableInfo& table, const KeyInfo& key) const;
  void ChooseRowid(TableInfo& table) const;
  void Build(const TableInfo& table);
  bool BuildFromSpare(const TableInfo& table);
  void BuildIndex(const TableInfo& table, const KeyInfo& key) const;
  std::string ColumnSql(const TableInfo& table, size_t column) const;
  std::string CheckSql(const TableInfo& table, const KeyInfo& key) const;
  void AlterAddColumn(TableInfo& table, const ColumnDefinition& definition) const;
  void CheckNew(const ObjectName& name) const;

  const Connection& connection_;
  Catalog& catalog_;
  const Compiler& compiler_;
};

} // namespace tsql
