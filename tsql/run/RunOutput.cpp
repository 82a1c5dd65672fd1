// Changes whose rows are staged: of those with OUTPUT, what the clause gives is read from there when the
// change is made.
#include <optional>

#include "tsql/run/Diagnostics.h"
#include "tsql/run/Interpreter.h"

namespace tsql {

// Within a function the statement that calls it undoes all. SQLite sets no savepoint there.
void Interpreter::BeginScope(std::optional<StatementScope>& scope, const TableInfo& target,
                             const TableInfo* into) {
  if (functions_ > 0) return;
  const bool isMain = target.place == Place::Main || (into != nullptr && into->place == Place::Main);
  const bool isVariable = target.IsVariable() && (into == nullptr || into->IsVariable());
  if (isVariable) {
    scope.emplace(transaction_);
  } else {
    scope.emplace(transaction_, isMain ? Place::Main : target.place);
  }
}

void Interpreter::ReadRows(Plan& plan, StagedRows& rows) {
  const StatementUse use(plan.statement);
  const int count = sqlite3_column_count(plan.statement.Handle());
  while (plan.statement.Step()) {
    std::vector<Datum>& row = rows.emplace_back();
    row.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) row.push_back(plan.statement.ColumnDatum(i));
  }
}

// SQLite looks for duplicates after each row, the server when all rows are changed. So an update that moves
// keys is made by deleting its rows and inserting the new ones.
int64_t Interpreter::ReplaceRows(const Statement& statement, const TableInfo& table) {
  std::optional<StatementScope> scope;
  BeginScope(scope, table, nullptr);
  const StagedPlan staged = MakePlanner().PlanStaged(statement);
  Plan query = MakePlanner().PlanOnce(staged.sql.rows);
  BindParameters(query);
  StagedRows rows;
  ReadRows(query, rows);
  const StagedUse use(context_, rows);
  for (const std::string& replacement : staged.sql.replacements) connection_.Run(replacement);
  if (scope) scope->Complete();
  return static_cast<int64_t>(rows.size());
}

void Interpreter::StageChange(const Statement& statement, Plan& plan, const StagedPlan& staged,
                              StagedRows& rows) {
  if (statement.kind == StatementKind::Insert) {
    ReadRows(plan, rows);
    CheckIdentity(*plan.target, static_cast<int64_t>(rows.size()));
    return;
  }
  Plan query = MakePlanner().PlanOnce(staged.sql.rows);
  BindParameters(query);
  ReadRows(query, rows);
  ChangeStaged(staged.sql);
}

void Interpreter::ChangeStaged(const EmittedChange& change) const {
  try {
    connection_.Run(change.change);
  } catch (const SqliteFailure& failure) {
    if (!IsDuplicate(failure) || change.replacements.empty()) throw;
    for (const std::string& replacement : change.replacements) connection_.Run(replacement);
  }
}

void Interpreter::GiveOutput(StagedPlan& staged) {
  if (staged.into) return PutOutput(staged);
  Plan rows = MakePlanner().PlanOnce(staged.outputSql);
  rows.columns = staged.columns;
  BindParameters(rows);
  ReturnRows(rows);
}

void Interpreter::PutOutput(StagedPlan& staged) {
  Plan rows = MakePlanner().PlanOnce(staged.outputSql);
  BindParameters(rows);
  target_ = staged.into.get();
  MakeChange(*target_, [&] { return StepChange(rows); });
}

} // namespace tsql
