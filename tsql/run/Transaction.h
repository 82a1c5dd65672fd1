// A session's transaction as @@TRANCOUNT counts it, over SQLite's. SQLite's own begins at the first statement
// that writes: until then each statement reads what is committed, as under READ COMMITTED, and no old
// snapshot can stand in the way of the first write.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

class Transaction {
 public:
  Transaction(const Connection& connection, Catalog& catalog) : connection_(connection), catalog_(catalog) {}

  int Count() const { return count_; }
  void Begin() { ++count_; }
  void Commit();   // 3902 without a transaction
  void Rollback(); // all levels; 3903 without a transaction
  void RollbackIfOpen();
  // Takes the write lock when a counted transaction does not hold it yet.
  void BeforeWrite();
  // SQLite gives up a whole transaction on some failures: count accordingly.
  void Synchronize();
  void MarkSchemaChange() { schemaChanged_ = true; }
  // Whether a schema change has become visible to others (or has been undone) since the last call.
  bool TakeSchemaChange();

 private:
  friend class StatementScope;
  void LockMain() const;

  const Connection& connection_;
  Catalog& catalog_;
  int count_ = 0;
  bool open_ = false;
  bool schemaChanged_ = false;
  std::vector<Catalog::TempTable> tempTables_;
};

// A statement of several SQLite statements, undone as one unless Complete is reached.
class StatementScope {
 public:
  StatementScope(Transaction& transaction, Place place);
  StatementScope(const StatementScope&) = delete;
  StatementScope& operator=(const StatementScope&) = delete;
  ~StatementScope();
  void Complete();

 private:
  Transaction& transaction_;
  std::vector<Catalog::TempTable> tempTables_;
  bool done_ = false;
};

} // namespace tsql
