// Carries out data definition: checks it as the server does, makes SQLite's tables and indexes, and records
// the definition in the catalog. The caller encloses each call in a StatementScope.
#pragma once

#include "tsql/compile/Compiler.h"
#include "tsql/compile/TableShape.h"
#include "tsql/run/GivenNumbers.h"
#include "tsql/run/TableBuilder.h"

namespace tsql {

class Definitions {
 public:
  Definitions(const Connection& connection, Catalog& catalog, const Compiler& compiler)
      : connection_(connection), catalog_(catalog), compiler_(compiler), shape_(catalog),
        builder_(connection, compiler) {}

  void CreateTable(const CreateTableStatement& statement);
  // The table of SELECT ... INTO, which has no keys.
  void CreateTable(const ObjectName& name, const std::vector<Column>& columns,
                   const std::optional<IntoIdentity>& identity);
  // A table variable of the unit that begins to run, as it was declared.
  void CreateVariable(const TableInfo& declared);
  // The same without an entry in the catalog.
  void BuildVariable(const TableInfo& table) { Build(table); }
  void DropTable(const TableInfo& table);    // `table` is not a reference into the catalog
  void DropTriggers(const std::string& key); // of a table or view
  void TruncateTable(const TableInfo& table);
  // The statements that empty a table.
  static std::vector<std::string> TruncatingSql(const TableInfo& table);
  // Makes the identity column of a table one that the engine counts, so that numbers may be there twice.
  void CountIdentity(const TablePtr& table);
  void AlterTable(const AlterTableStatement& statement);
  void CreateIndex(const CreateIndexStatement& statement);
  void DropIndex(const ObjectName& tableName, const std::string& name, bool ifExists);
  void CreateSchema(const CreateSchemaStatement& statement);
  void DropSchema(const std::string& name, bool ifExists);
  // ALTER SCHEMA ... TRANSFER.
  void TransferObject(const AlterSchemaStatement& statement);
  // The view, procedure, function or trigger of the name; null when there is none.
  ModulePtr FindModule(const ObjectName& name) const;
  // What sp_rename does. `written` is what was to be renamed, for messages.
  void RenameObject(const ObjectName& name, const std::string& newName);
  void RenameColumn(const TableInfo& table, const std::string& name, const std::string& newName,
                    const std::string& written);
  void RenameIndex(const TableInfo& table, const std::string& name, const std::string& newName);
  // Of the identity columns; definitions let their counts begin.
  GivenNumbers& givenNumbers() { return givenNumbers_; }
  const GivenNumbers& givenNumbers() const { return givenNumbers_; }

 private:
  void DropTempTable(const TableInfo& table);
  void Build(const TableInfo& table);
  bool BuildFromSpare(const TableInfo& table);
  void CheckNew(const ObjectName& name) const;
  void TransferModule(const ModuleInfo& module, const Catalog::NewObject& to);
  void TransferTriggers(const std::string& from, const std::string& schema);
  // Of the main database: gives it another name in SQLite and in the catalog.
  void MoveTable(const TableInfo& table, const TableInfo& moved);

  const Connection& connection_;
  Catalog& catalog_;
  const Compiler& compiler_;
  TableShape shape_;
  TableBuilder builder_;
  GivenNumbers givenNumbers_;
};

} // namespace tsql
