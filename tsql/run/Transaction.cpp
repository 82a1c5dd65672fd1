#include "tsql/run/Transaction.h"

#include <utility>

#include "tsql/values/Errors.h"

namespace tsql {
namespace {

void RunOnce(PreparedStatement& statement) {
  const StatementUse use(statement);
  statement.Step();
}

} // namespace

Transaction::Transaction(const Connection& connection, Catalog& catalog)
    : connection_(connection), catalog_(catalog), savepoint_(connection.Prepare("SAVEPOINT statement")),
      release_(connection.Prepare("RELEASE statement")) {}

void Transaction::LockMain() const {
  // A write that changes no row takes the lock. It waits as long as the session waits for locks.
  connection_.Run(std::string("UPDATE main.") + storage::kTables + " SET seed = seed WHERE 0");
}

void Transaction::BeforeWrite() {
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
  if (count_ == 1 && open_) {
    connection_.Run("COMMIT");
    open_ = false;
    tables_ = {};
  }
  --count_;
}

void Transaction::Rollback() {
  if (count_ == 0) Fail(3903, {});
  RollbackIfOpen();
}

void Transaction::RollbackIfOpen() {
  if (open_ || needsRecovery_) UndoAll();
  count_ = 0;
}

void Transaction::UndoAll() {
  if (sqlite3_get_autocommit(connection_.Handle()) == 0) connection_.Run("ROLLBACK");
  needsRecovery_ = false;
  if (std::exchange(open_, false)) catalog_.RestoreOwnTables(std::exchange(tables_, {}));
  catalog_.UndoChanges();
}

void Transaction::Recover() {
  if (!needsRecovery_) return;
  UndoAll();
  if (std::exchange(count_, 0) > 0) Fail(3930, {});
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
  if (place != Place::Main) return;
  try {
    transaction_.LockMain();
  } catch (...) {
    transaction_.RunOrRecoverLater("RELEASE statement");
    throw;
  }
}

void StatementScope::Complete() {
  RunOnce(transaction_.release_);
  done_ = true;
}

StatementScope::~StatementScope() {
  if (done_) return;
  transaction_.RunOrRecoverLater("ROLLBACK TO statement; RELEASE statement");
  transaction_.catalog_.RestoreOwnTables(std::move(tables_));
  transaction_.catalog_.UndoChanges();
}

} // namespace tsql
