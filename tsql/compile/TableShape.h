// What a table is to be: checks the columns and constraints of a definition as the server does, and makes the
// catalog's entry of them. Nothing is made in SQLite or written here.
#pragma once

#include "tsql/catalog/Catalog.h"
#include "tsql/syntax/StatementTree.h"

namespace tsql {

class TableShape {
 public:
  explicit TableShape(const Catalog& catalog) : catalog_(catalog) {}

  // 2760 when there is no schema for it. The name in SQLite is the table's key.
  TableInfo MakeTable(const ObjectName& name, const std::vector<ColumnDefinition>& columns,
                      const std::vector<ConstraintDefinition>& constraints) const;
  // The table without columns.
  TableInfo MakeEmpty(const ObjectName& name) const;
  void AddColumn(TableInfo& table, const ColumnDefinition& definition) const;
  // When all columns are added: finds the types of the computed ones from column number `first` on.
  void BindComputed(TableInfo& table, size_t first) const;
  // Refuses a column that no index can have.
  void CheckIndexed(const TableInfo& table, int column) const;
  // The collation of the definition, or the database's. 447 for what is no text.
  static void SetCollation(ColumnInfo& column, const ColumnDefinition& definition);
  void AddConstraint(TableInfo& table, const ConstraintDefinition& definition) const;
  // Refuses what an identity column cannot be.
  static void CheckIdentity(const ColumnInfo& column);
  // The table that a foreign key refers to. That may be the table itself, which is not in the catalog yet.
  TablePtr FindReferenced(const TableInfo& table, const KeyInfo& key) const;

  // Chooses the column that is SQLite's rowid, when the columns and keys are known.
  static void ChooseRowid(TableInfo& table);

 private:
  void AddDefault(TableInfo& table, const ConstraintDefinition& definition) const;
  void AddForeignKey(TableInfo& table, const ConstraintDefinition& definition) const;
  // Refuses referential actions that could not be carried out.
  void CheckActions(const TableInfo& table, const KeyInfo& key) const;
  bool HasSeveralPaths(const TableInfo& table, const KeyInfo& key) const;
  void CheckKeyName(const TableInfo& table, const KeyInfo& key) const;

  const Catalog& catalog_;
};

} // namespace tsql
