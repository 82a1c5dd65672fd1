#include "tsql/run/Transaction.h"

#include <algorithm>
#include <utility>

#include "tsql/values/Errors.h"

namespace tsql {
namespace {

void RunOnce(PreparedStatement& statement) {
  const StatementUse use(statement);
  statement.Step();
}

// While it lives, SQLite commits because that is asked for.
class Commitment {
 public:
  explicit Commitment(bool& commits) : commits_(commits) { commits_ = true; }
  Commitment(const Commitment&) = delete;
  Commitment& operator=(const Commitment&) = delete;
  ~Commitment() { commits_ = false; }

 private:
  bool& commits_;
};

} // namespace

Transaction::Transaction(const Connection& connection, Catalog& catalog)
    : connection_(connection), catalog_(catalog), savepoint_(connection.Prepare("SAVEPOINT statement")),
      release_(connection.Prepare("RELEASE statement")) {
  sqlite3_commit_hook(connection_.Handle(), &ForbidsCommit, this);
}

Transaction::~Transaction() {
  sqlite3_commit_hook(connection_.Handle(), nullptr, nullptr);
}

// Before SQLite prepares a statement anew, because the schema has changed, it undoes what the statement has
// begun. Without the memory for that it undoes the whole transaction and says nothing: it runs the statement
// as one of its own, whose commit would leave a part of what belongs together behind.
int Transaction::ForbidsCommit(void* transaction) {
  const auto& self = *static_cast<const Transaction*>(transaction);
  const bool isWithinScope = self.innermost_ != nullptr && !self.innermost_->done_;
  return (self.open_ || isWithinScope) && !self.commits_ ? 1 : 0;
}

void Transaction::LockMain() const {
  // A write that changes no row takes the lock. It waits as long as the session waits for locks.
  connection_.Run(std::string("UPDATE main.") + storage::kTables + " SET seed = seed WHERE 0");
}

void Transaction::FailDoomed() {
  Fail(3930, {});
}

void Transaction::TakeLock() {
  if (count_ == 0 || open_) return;
  Catalog::SessionTables tables = catalog_.OwnTables();
  connection_.Run("BEGIN");
  try {
    LockMain();
  } catch (...) {
    RunOrRecoverLater("ROLLBACK");
    throw;
  }
  open_ = true;
  tables_ = std::move(tables);
  catalog_.BeginChanges();
}

void Transaction::Commit() {
  Recover();
  if (count_ == 0) Fail(3902, {});
  if (isDoomed_) FailDoomed();
  if (count_ == 1 && open_) {
    const Commitment commitment(commits_);
    connection_.Run("COMMIT");
    EndScopes(0);
    open_ = false;
    tables_ = {};
  }
  if (--count_ == 0) Forget();
}

void Transaction::Forget() {
  count_ = 0;
  isDoomed_ = false;
  name_.clear();
  savepoints_.clear();
}

void Transaction::Rollback() {
  if (count_ == 0) Fail(3903, {});
  RollbackIfOpen();
}

void Transaction::RollbackIfOpen() {
  if (open_ || needsRecovery_) UndoAll();
  Forget();
}

void Transaction::Save(const std::string& name) {
  if (count_ == 0) Fail(628, {});
  if (isDoomed_) Fail(3931, {});
  BeforeWrite();
  Savepoint savepoint{name, catalog_.OwnTables()};
  savepoints_.reserve(savepoints_.size() + 1);
  connection_.Run("SAVEPOINT \"save " + std::to_string(savepoints_.size()) + "\"");
  savepoints_.push_back(std::move(savepoint));
}

void Transaction::RollbackTo(const std::string& name) {
  if (count_ == 0) Fail(3903, {});
  const auto found = std::find_if(savepoints_.rbegin(), savepoints_.rend(),
                                  [&](const Savepoint& savepoint) { return savepoint.name == name; });
  if (found == savepoints_.rend()) {
    if (name_ != name) Fail(6401, {name});
    return Rollback();
  }
  if (isDoomed_) Fail(3931, {});
  if (survivors_ != nullptr) survivors_->Keep();
  const auto index = static_cast<size_t>(savepoints_.rend() - found) - 1;
  ++undone_;
  connection_.Run("ROLLBACK TO \"save " + std::to_string(index) + "\"");
  EndScopes(index + 1);
  savepoints_.resize(index + 1);
  catalog_.RestoreOwnTables(savepoints_.back().tables);
  catalog_.UndoChanges();
  if (survivors_ != nullptr) survivors_->Restore();
}

void Transaction::UndoAll() {
  const bool wasOpen = open_;
  ++undone_;
  if (wasOpen && survivors_ != nullptr) survivors_->Keep();
  if (sqlite3_get_autocommit(connection_.Handle()) == 0) connection_.Run("ROLLBACK");
  needsRecovery_ = false;
  EndScopes(0);
  if (std::exchange(open_, false)) catalog_.RestoreOwnTables(std::exchange(tables_, {}));
  catalog_.UndoChanges();
  if (wasOpen && survivors_ != nullptr) survivors_->Restore();
}

void Transaction::Recover() {
  if (!needsRecovery_) return;
  UndoAll();
  const bool wasCounted = count_ > 0;
  Forget();
  if (wasCounted) Fail(3930, {});
}

void Transaction::EndScopes(size_t savepoints) noexcept {
  for (StatementScope* scope = innermost_; scope != nullptr; scope = scope->outer_)
    if (scope->savepoints_ >= savepoints) scope->done_ = true;
}

void Transaction::RunOrRecoverLater(const char* sql) noexcept {
  try {
    connection_.Run(sql);
  } catch (...) {
    // Unless SQLite has undone all of it already.
    needsRecovery_ = sqlite3_get_autocommit(connection_.Handle()) == 0;
  }
}

void Transaction::Synchronize() {
  if (open_ && sqlite3_get_autocommit(connection_.Handle()) != 0) RollbackIfOpen();
}

bool Transaction::TakeSchemaChange() {
  return !open_ && std::exchange(schemaChanged_, false);
}

StatementScope::StatementScope(Transaction& transaction, Place place)
    : transaction_(transaction), tables_(transaction.catalog_.OwnTables()) {
  transaction_.BeforeWrite();
  if (!transaction_.open_) transaction_.catalog_.BeginChanges();
  RunOnce(transaction_.savepoint_);
  try {
    if (place == Place::Main) transaction_.LockMain();
  } catch (...) {
    transaction_.RunOrRecoverLater("RELEASE statement");
    throw;
  }
  Enter();
}

void StatementScope::Enter() {
  savepoints_ = transaction_.savepoints_.size();
  outer_ = std::exchange(transaction_.innermost_, this);
}

StatementScope::StatementScope(Transaction& transaction)
    : transaction_(transaction), tables_(transaction.catalog_.OwnTables()) {
  RunOnce(transaction_.savepoint_);
  Enter();
}

void StatementScope::Complete() {
  if (done_) return;
  {
    const Commitment commitment(transaction_.commits_);
    RunOnce(transaction_.release_);
  }
  done_ = true;
  // SQLite has released with the statement what was saved within it.
  if (transaction_.savepoints_.size() > savepoints_) transaction_.savepoints_.resize(savepoints_);
}

StatementScope::~StatementScope() {
  transaction_.innermost_ = outer_;
  if (done_) return;
  ++transaction_.undone_;
  if (transaction_.savepoints_.size() > savepoints_) transaction_.savepoints_.resize(savepoints_);
  transaction_.RunOrRecoverLater("ROLLBACK TO statement; RELEASE statement");
  transaction_.catalog_.RestoreOwnTables(std::move(tables_));
  transaction_.catalog_.UndoChanges();
}

} // namespace tsql
