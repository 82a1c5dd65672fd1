// Makes tables of the catalog in SQLite: the table, its indexes, and what becomes of its rows when it is
// changed. The catalog itself it leaves alone, and foreign keys too.
//
// SQLite can add a column to a table and little else. For all other changes the table is made anew under
// another name, its rows are copied, and it takes the place of the old one.
#pragma once

#include "tsql/catalog/IdentityStore.h"
#include "tsql/compile/Compiler.h"

namespace tsql {

class TableBuilder {
 public:
  TableBuilder(const Connection& connection, const Compiler& compiler)
      : connection_(connection), compiler_(compiler), identities_(connection) {}

  // The table with its indexes.
  void Build(const TableInfo& table) const;
  void BuildIndex(const TableInfo& table, const KeyInfo& key) const;
  // The same, with 1505 where rows have the same key.
  void BuildIndexOverRows(const TableInfo& table, const KeyInfo& key) const;
  void DropIndex(const TableInfo& table, const KeyInfo& key) const;
  // The table's last column. It may have a value in the rows that are there.
  void AddColumn(const TableInfo& table, bool fillsRows, std::string_view databaseName) const;
  // Makes the table anew, without indexes. `values` are those of its columns in terms of the old ones.
  // CHECK constraints are not asked about the rows.
  void Rebuild(const TableInfo& before, const TableInfo& after, const std::vector<std::string>& values,
               std::string_view databaseName) const;
  // Gives the table another name in SQLite. Its indexes and foreign keys are gone before.
  void Rename(const TableInfo& before, const TableInfo& after) const;
  bool HasRows(const TableInfo& table) const;

 private:
  void CreateBare(const TableInfo& table) const;
  std::string ColumnSql(const TableInfo& table, size_t column) const;
  std::string CheckSql(const TableInfo& table, const KeyInfo& key) const;
  void CopyRows(const TableInfo& before, const TableInfo& after,
                const std::vector<std::string>& values) const;

  const Connection& connection_;
  const Compiler& compiler_;
  const IdentityStore identities_;
};

} // namespace tsql
