// ALTER TABLE: works out what the table is to be, as the server checks it, and then makes it so. The caller
// encloses it in a StatementScope, so that a failure at any point leaves the table as it was.
#pragma once

#include "tsql/compile/TableShape.h"
#include "tsql/run/ForeignKeys.h"
#include "tsql/run/TableBuilder.h"

namespace tsql {

class TableAlteration {
 public:
  TableAlteration(const Connection& connection, Catalog& catalog, const Compiler& compiler,
                  const TableBuilder& builder, const TableShape& shape, const TablePtr& table);

  void Run(const AlterTableStatement& statement);
  // No statement of the dialect: the identity column is SQLite's rowid no more.
  void CountIdentity();

 private:
  // An object that a change of a column would break.
  struct Dependent {
    const char* kind; // "object", "index" or "column"
    std::string name;
  };

  void Add(const AlterTableStatement& statement);
  void AddColumns(const AlterTableStatement& statement);
  std::string NumbersOfRows() const;
  void AddConstraint(const ConstraintDefinition& constraint);
  void AlterColumn(const ColumnDefinition& definition);
  void Drop(const AlterTableStatement& statement);
  void DropConstraint(const DroppedElement& element);
  void DropColumn(const DroppedElement& element);
  void SwitchConstraints(const AlterTableStatement& statement);

  int FindKey(std::string_view name) const; // a constraint; -1 when absent
  // The foreign keys that refer to the table and are not dropped by the statement.
  std::vector<ForeignKey> Referrers() const;
  void CheckNotReferenced(const KeyInfo& key) const;
  bool Uses(const KeyInfo& key, int column) const;
  std::vector<Dependent> DependentsOf(int column) const;
  // Those that do not allow the column to become one of the type.
  std::vector<Dependent> DependentsOf(int column, const Type& type, bool changesOrder) const;
  void AddReferrers(int index, std::vector<Dependent>& dependents) const;
  void FailDependent(const char* verb, int column, const std::vector<Dependent>& dependents) const;

  void Carry(bool checksRows);
  void CheckRows(const KeyInfo& key) const;
  std::string_view DatabaseName() const { return catalog_.DatabaseName(); }

  const Connection& connection_;
  Catalog& catalog_;
  const Compiler& compiler_;
  const TableBuilder& builder_;
  const TableShape& shape_;
  const TablePtr before_;
  TableInfo after_;
  // What each column of the new table gets, in terms of the old one's columns.
  std::vector<std::string> values_;
  bool rebuilds_ = false;
  std::vector<bool> fills_; // of the columns that are added: whether rows that are there get the default
  std::vector<std::string> newKeys_;    // the constraints whose rows are to be looked at
  std::vector<std::string> newIndexes_; // the keys that get an index
};

} // namespace tsql
