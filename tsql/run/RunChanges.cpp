#include <algorithm>

#include "tsql/run/ForeignKeys.h"
#include "tsql/run/Interpreter.h"
#include "tsql/sqlite/Quotation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

const char* VerbOf(StatementKind kind) {
  switch (kind) {
  case StatementKind::Insert: return "INSERT";
  case StatementKind::Update: return "UPDATE";
  case StatementKind::Delete: return "DELETE";
  default: return "";
  }
}

} // namespace

void Interpreter::CheckIdentity(const TableInfo& table, int64_t count) const {
  const Type& type = table.columns[static_cast<size_t>(table.identityColumn)].type;
  const int64_t last = sqlite3_last_insert_rowid(connection_.Handle());
  if (count == 0 || last <= LargestIdentity(type)) return;
  // The rows of one statement have consecutive numbers, and no others are as great.
  connection_.Run("DELETE FROM " + table.SqlName() + " WHERE _rowid_ > " + std::to_string(last - count));
  Fail(8115, {"IDENTITY", TypeName(type.id)});
}

// Behind the largest number that SQLite has, it takes the file for full.
bool Interpreter::IsOutOfNumbers(const TableInfo& table) const {
  if (table.identityColumn < 0) return false;
  PreparedStatement last =
      connection_.Prepare(std::string("SELECT seq FROM ") + PlaceName(table.place) +
                          ".sqlite_sequence WHERE name = " + QuoteText(table.storageName));
  return last.Step() && last.ColumnInteger(0) == INT64_MAX;
}

template <typename Change>
int64_t Interpreter::MakeChange(const TableInfo& target, Change change) {
  if (catalog_.TablesWithForeignKeys().empty() || target.place != Place::Main) return change();
  const std::vector<ForeignKey> foreignKeys = ForeignKeysOf(target, catalog_);
  if (foreignKeys.empty()) return change();
  context_.suspects.clear();
  StatementScope scope(transaction_, Place::Main);
  const int64_t count = change();
  for (const ForeignKey& foreignKey : foreignKeys) {
    const bool isSuspected = std::find(context_.suspects.begin(), context_.suspects.end(),
                                       foreignKey.key->name) != context_.suspects.end();
    if (isSuspected && IsViolated(connection_, *foreignKey.child, *foreignKey.key, *foreignKey.parent))
      throw Error(ForeignKeyError(foreignKey, target, verb_, catalog_));
  }
  scope.Complete();
  return count;
}

int64_t Interpreter::StepChange(Plan& plan) {
  const StatementUse use(plan.statement);
  plan.statement.Step();
  return sqlite3_changes64(connection_.Handle());
}

// SQLite looks for duplicates after each row, the server when all rows are changed. So an update that moves
// keys is made by deleting its rows and inserting the new ones.
int64_t Interpreter::ReplaceRows(const UpdateStatement& statement, const TableInfo& table) {
  constexpr const char* kRows = "temp.\"~updated\"";
  constexpr const char* kNumber = "\"~row\"";
  std::string columns;
  for (const ColumnInfo& column : table.columns)
    columns += (columns.empty() ? "" : ", ") + QuoteName(column.name);
  const std::string all = std::string(kNumber) + ", " + columns;
  StatementScope scope(transaction_, table.place);
  connection_.Run(std::string("CREATE TABLE ") + kRows + "(" + all + ")");
  Plan rows = MakePlanner().UpdatedRowsPlan(statement, kRows, kNumber);
  BindParameters(rows);
  StepChange(rows);
  connection_.Run("DELETE FROM " + table.SqlName() + " WHERE _rowid_ IN (SELECT " + kNumber + " FROM " +
                  kRows + ")");
  // Where no column is the rowid, the rows keep the rowid that they had.
  const bool hasOwn = table.rowidColumn >= 0;
  connection_.Run("INSERT INTO " + table.SqlName() + "(" + (hasOwn ? "" : "_rowid_, ") + columns +
                  ") SELECT " + (hasOwn ? columns : all) + " FROM " + kRows);
  const int64_t count = sqlite3_changes64(connection_.Handle());
  connection_.Run(std::string("DROP TABLE ") + kRows);
  scope.Complete();
  return count;
}

void Interpreter::RunChange(const Statement& statement) {
  Plan& plan = MakePlanner().ChangePlan(statement);
  const TablePtr target = plan.target;
  const struct ValidDuringTheStatement {
    explicit ValidDuringTheStatement(const TableInfo*& pointer) : target(pointer) {}
    ~ValidDuringTheStatement() { target = nullptr; }
    ValidDuringTheStatement(const ValidDuringTheStatement&) = delete;
    ValidDuringTheStatement& operator=(const ValidDuringTheStatement&) = delete;
    const TableInfo*& target;
  } valid(target_);
  target_ = target.get();
  verb_ = VerbOf(statement.kind);
  transaction_.BeforeWrite();
  BindParameters(plan);
  int64_t count = 0;
  try {
    count = MakeChange(*target, [&] {
      try {
        const int64_t changed = StepChange(plan);
        if (statement.kind == StatementKind::Insert && target->identityColumn >= 0)
          CheckIdentity(*target, changed);
        return changed;
      } catch (const SqliteFailure& failure) {
        const bool isDuplicate = failure.code == SQLITE_CONSTRAINT_UNIQUE ||
                                 failure.code == SQLITE_CONSTRAINT_PRIMARYKEY ||
                                 failure.code == SQLITE_CONSTRAINT_ROWID;
        if (statement.kind != StatementKind::Update || !isDuplicate) throw;
        return ReplaceRows(static_cast<const UpdateStatement&>(statement), *target);
      }
    });
  } catch (const SqliteFailure& failure) {
    if (limits_.Ended(failure)) throw;
    if (failure.code == SQLITE_FULL && IsOutOfNumbers(*target)) {
      const Type& type = target->columns[static_cast<size_t>(target->identityColumn)].type;
      Fail(8115, {"IDENTITY", TypeName(type.id)});
    }
    throw Error(Translate(failure)); // here, because the message needs the target
  }
  if (statement.kind == StatementKind::Insert && count > 0 && target->identityColumn >= 0) {
    const int64_t last = sqlite3_last_insert_rowid(connection_.Handle());
    identity_ = Convert(Datum::OfInteger(last), MakeType(TypeId::BigInt), MakeDecimal(kMaxPrecision, 0),
                        ConvertMode::Cast);
    running_->scopeIdentity = identity_;
  }
  SendRowCount(count);
}

} // namespace tsql
