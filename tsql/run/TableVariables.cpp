#include "tsql/run/TableVariables.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tsql/catalog/IdentityStore.h"

namespace tsql {
namespace {

// What is written of all rows: their columns, with the row's number in front unless a column is that number.
std::string AllColumns(const TableInfo& table) {
  return (table.rowidColumn < 0 ? "_rowid_, " : "") + table.StoredColumns();
}

} // namespace

void TableVariables::Make(const std::vector<TablePtr>& declared) {
  Drop(); // what a batch left that had no memory to end properly
  StatementScope scope(transaction_);
  for (const TablePtr& table : declared) definitions_.CreateVariable(*table);
  scope.Complete();
}

void TableVariables::MakeForFunctions(const std::vector<TablePtr>& tables) {
  std::vector<TablePtr> missing;
  std::ranges::copy_if(tables, std::back_inserter(missing), [this](const TablePtr& table) {
    return std::ranges::count(catalog_.FunctionTables(), table) == 0;
  });
  if (missing.empty()) return;
  StatementScope scope(transaction_);
  for (const TablePtr& table : missing) {
    definitions_.BuildVariable(*table);
    catalog_.AddFunctionTable(table);
  }
  scope.Complete();
}

void TableVariables::DropOfFunction(const TablePtr& table) {
  connection_.Run("DROP TABLE " + table->SqlName());
  catalog_.RemoveFunctionTable(table);
}

void TableVariables::Drop() {
  for (const Catalog::TempTable& variable : catalog_.TableVariables())
    if (variable.depth == catalog_.Depth()) definitions_.DropTable(*variable.table);
}

void TableVariables::ReadRows(Kept& kept) const {
  const TableInfo& table = *kept.variable.table;
  PreparedStatement rows = connection_.Prepare("SELECT " + AllColumns(table) + " FROM " + table.SqlName());
  const int count = sqlite3_column_count(rows.Handle());
  while (rows.Step()) {
    std::vector<Datum>& row = kept.rows.emplace_back();
    for (int i = 0; i < count; ++i) row.push_back(rows.ColumnDatum(i));
  }
  if (table.identityColumn >= 0) kept.lastIdentity = IdentityStore(connection_).Last(table);
}

void TableVariables::Keep() {
  kept_.clear();
  const bool isThere = sqlite3_get_autocommit(connection_.Handle()) == 0;
  for (const Catalog::TempTable& variable : catalog_.TableVariables()) {
    Kept kept{variable, {}, std::nullopt};
    // After a failure SQLite may have rolled back by itself. Then the rows are lost.
    if (isThere) ReadRows(kept);
    kept_.push_back(std::move(kept));
  }
}

void TableVariables::WriteRows(const Kept& kept) const {
  const TableInfo& table = *kept.variable.table;
  connection_.Run("DELETE FROM " + table.SqlName());
  if (!kept.rows.empty()) {
    std::string values = "?";
    for (size_t i = 1; i < kept.rows.front().size(); ++i) values += ", ?";
    PreparedStatement insert = connection_.Prepare("INSERT INTO " + table.SqlName() + "(" +
                                                   AllColumns(table) + ") VALUES (" + values + ")");
    for (const std::vector<Datum>& row : kept.rows) {
      int number = 1;
      for (const Datum& value : row) insert.Bind(number++, value);
      insert.Step();
      insert.Reset();
    }
  }
  if (table.identityColumn >= 0) IdentityStore(connection_).SetLast(table, kept.lastIdentity);
}

void TableVariables::Restore() {
  if (kept_.empty() && catalog_.TableVariables().empty()) return;
  const std::vector<Kept> kept = std::exchange(kept_, {});
  StatementScope scope(transaction_);
  // What the rollback brought back are tables again that a unit may have no more: they become spare ones.
  for (const Catalog::TempTable& variable : catalog_.TableVariables())
    definitions_.DropTable(*variable.table);
  std::vector<Catalog::TempTable> variables;
  for (const Kept& entry : kept) {
    definitions_.BuildVariable(*entry.variable.table);
    WriteRows(entry);
    variables.push_back(entry.variable);
  }
  catalog_.SetTableVariables(variables);
  scope.Complete();
}

} // namespace tsql
