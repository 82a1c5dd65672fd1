// A session's transaction, as @@TRANCOUNT counts it. SQLite's transaction begins later, with the first
// statement that writes. Until then each statement reads what is committed, as under READ COMMITTED, and the
// first write cannot fail because of an old snapshot.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

class Transaction {
 public:
  Transaction(const Connection& connection, Catalog& catalog);

  int Count() const { return count_; }
  void Begin() { ++count_; }
  void Commit();   // 3902 without a transaction
  void Rollback(); // all levels; 3903 without a transaction
  void RollbackIfOpen();
  // Takes the write lock when a counted transaction does not hold it yet.
  void BeforeWrite();
  // After some failures SQLite rolls the whole transaction back. Then the count becomes 0.
  void Synchronize();
  // Undoes what is left of a statement that could not be undone at its time, for want of memory. The whole
  // transaction goes with it: 3930 when it was a counted one.
  void Recover();
  void MarkSchemaChange() { schemaChanged_ = true; }
  // Whether a change of the schema has been committed or undone since the last call.
  bool TakeSchemaChange();

 private:
  friend class StatementScope;
  void LockMain() const;
  void UndoAll();
  // For what undoes: a failure of it is left to Recover.
  void RunOrRecoverLater(const char* sql) noexcept;

  const Connection& connection_;
  Catalog& catalog_;
  // Prepared once, because each definition runs them.
  PreparedStatement savepoint_;
  PreparedStatement release_;
  int count_ = 0;
  bool open_ = false;
  bool schemaChanged_ = false;
  bool needsRecovery_ = false;
  Catalog::SessionTables tables_;
};

// Makes several SQLite statements one: all of them are undone unless Complete is called.
class StatementScope {
 public:
  StatementScope(Transaction& transaction, Place place);
  StatementScope(const StatementScope&) = delete;
  StatementScope& operator=(const StatementScope&) = delete;
  ~StatementScope();
  void Complete();

 private:
  Transaction& transaction_;
  Catalog::SessionTables tables_;
  bool done_ = false;
};

} // namespace tsql
