// A session's transaction, as @@TRANCOUNT counts it. SQLite's transaction begins later, with the first
// statement that writes. Until then each statement reads what is committed, as under READ COMMITTED, and the
// first write cannot fail because of an old snapshot.
#pragma once

#include "tsql/catalog/Catalog.h"

namespace tsql {

// What a rollback leaves as it is.
class RollbackSurvivors {
 public:
  RollbackSurvivors() = default;
  RollbackSurvivors(const RollbackSurvivors&) = delete;
  RollbackSurvivors& operator=(const RollbackSurvivors&) = delete;
  virtual ~RollbackSurvivors() = default;
  virtual void Keep() = 0;    // before SQLite rolls back
  virtual void Restore() = 0; // afterwards
};

class StatementScope;

class Transaction {
 public:
  Transaction(const Connection& connection, Catalog& catalog);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();

  void SetSurvivors(RollbackSurvivors& survivors) { survivors_ = &survivors; }
  int Count() const { return count_; }
  void Begin(const std::string& name = {}) {
    if (++count_ == 1) name_ = name;
  }
  // 1 while there is a transaction, -1 when it can only be rolled back, otherwise 0: as XACT_STATE says.
  int State() const { return count_ == 0 ? 0 : isDoomed_ ? -1 : 1; }
  // An error was caught that ends transactions: this one can only be rolled back.
  void Doom() { isDoomed_ = count_ > 0; }
  void Commit();                      // 3902 without a transaction
  void Rollback();                    // all levels; 3903 without a transaction
  void Save(const std::string& name); // sets a savepoint; 628 without a transaction
  // To the last savepoint of the name, or all when it is the transaction's own name; 6401 when it is neither.
  void RollbackTo(const std::string& name);
  void RollbackIfOpen();
  // Takes the write lock when a counted transaction does not hold it yet.
  void TakeLock();
  // The same for what is going to write: 3930 when the transaction can only be rolled back.
  void BeforeWrite() {
    if (isDoomed_) FailDoomed();
    TakeLock();
  }
  // After some failures SQLite rolls the whole transaction back. Then the count becomes 0.
  void Synchronize();
  // Undoes what is left of a statement that could not be undone at its time, for want of memory. The whole
  // transaction goes with it: 3930 when it was a counted one.
  void Recover();
  // How often something was undone since the session began, from 1 on.
  uint64_t Undone() const { return undone_; }
  // Whether what is done now may yet be undone.
  bool MayUndo() const { return count_ > 0 || innermost_ != nullptr; }
  void MarkSchemaChange() { schemaChanged_ = true; }
  // Whether a change of the schema has been committed or undone since the last call.
  bool TakeSchemaChange();

 private:
  friend class StatementScope;
  struct Savepoint {
    std::string name;
    Catalog::SessionTables tables;
  };

  [[noreturn]] static void FailDoomed();
  // What SQLite asks before each commit; other than 0 undoes instead.
  static int ForbidsCommit(void* transaction);
  void LockMain() const;
  void UndoAll();
  void Forget();
  // Nothing is left of the scopes that began after so many savepoints.
  void EndScopes(size_t savepoints) noexcept;
  // For what undoes: a failure of it is left to Recover.
  void RunOrRecoverLater(const char* sql) noexcept;

  const Connection& connection_;
  Catalog& catalog_;
  // Prepared once, because each definition runs them.
  PreparedStatement savepoint_;
  PreparedStatement release_;
  int count_ = 0;
  uint64_t undone_ = 1;
  bool open_ = false;
  bool commits_ = false; // what is open is being committed, as it was asked for
  bool schemaChanged_ = false;
  bool needsRecovery_ = false;
  bool isDoomed_ = false;
  std::string name_; // of the outermost BEGIN TRANSACTION
  std::vector<Savepoint> savepoints_;
  Catalog::SessionTables tables_;
  StatementScope* innermost_ = nullptr;
  RollbackSurvivors* survivors_ = nullptr;
};

// Makes several SQLite statements one: all of them are undone unless Complete is called.
// What the statement runs may end the transaction, or go back to a savepoint from before the statement; then
// there is nothing left to be completed or undone.
class StatementScope {
 public:
  StatementScope(Transaction& transaction, Place place);
  // For what a rollback of the transaction leaves: it does not make the transaction begin.
  explicit StatementScope(Transaction& transaction);
  StatementScope(const StatementScope&) = delete;
  StatementScope& operator=(const StatementScope&) = delete;
  ~StatementScope();
  void Complete();

 private:
  friend class Transaction;
  void Enter();

  Transaction& transaction_;
  Catalog::SessionTables tables_;
  StatementScope* outer_ = nullptr;
  size_t savepoints_ = 0; // of the transaction when the scope began
  bool done_ = false;
};

// For a statement whose triggers run: they always do within a transaction. Where none is open, the statement
// has one of its own, which ends with it.
class OwnTransaction {
 public:
  explicit OwnTransaction(Transaction& transaction)
      : transaction_(transaction), isLeft_(transaction.Count() == 0) {
    if (isLeft_) transaction_.Begin();
  }
  OwnTransaction(const OwnTransaction&) = delete;
  OwnTransaction& operator=(const OwnTransaction&) = delete;
  ~OwnTransaction() {
    if (!isLeft_) return;
    try {
      transaction_.RollbackIfOpen();
    } catch (...) { // NOLINT(bugprone-empty-catch): the next statement recovers from what is left
    }
  }
  void Commit() {
    if (isLeft_ && transaction_.Count() > 0) transaction_.Commit();
    isLeft_ = false;
  }

 private:
  Transaction& transaction_;
  bool isLeft_;
};

} // namespace tsql
