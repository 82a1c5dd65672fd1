// The table variables of the batches and procedures that run. In SQLite they are temporary tables, which a
// rollback empties or takes away; on the server it leaves them. So their rows are carried over it.
#pragma once

#include "tsql/run/Definitions.h"
#include "tsql/run/Transaction.h"

namespace tsql {

class TableVariables : public RollbackSurvivors {
 public:
  TableVariables(const Connection& connection, Catalog& catalog, Definitions& definitions,
                 Transaction& transaction)
      : connection_(connection), catalog_(catalog), definitions_(definitions), transaction_(transaction) {
    transaction.SetSurvivors(*this);
  }

  // Makes those that the unit declares, empty, in the present scope.
  void Make(const std::vector<TablePtr>& declared);
  // Makes those of functions that are not there, before a statement runs that calls these: SQLite lets no
  // table be made while a statement runs.
  void MakeForFunctions(const std::vector<TablePtr>& tables);
  // Drops one of a function that has changed.
  void DropOfFunction(const TablePtr& table);
  // Drops those of the present scope.
  void Drop();

  void Keep() override;
  void Restore() override;

 private:
  struct Kept {
    Catalog::TempTable variable;
    std::vector<std::vector<Datum>> rows; // with the row's number in SQLite in front
    std::optional<int64_t> lastIdentity;
  };

  void ReadRows(Kept& kept) const;
  void WriteRows(const Kept& kept) const;

  const Connection& connection_;
  Catalog& catalog_;
  Definitions& definitions_;
  Transaction& transaction_;
  std::vector<Kept> kept_;
};

} // namespace tsql
