// MERGE: the rows of target and source are joined once; then each action makes its change from them. All of
// it is one statement.
#include <algorithm>
#include <optional>
#include <set>

#include "tsql/run/Interpreter.h"
#include "tsql/values/Errors.h"

namespace tsql {

// The joined rows that an action is for. 8672 when one row of the target is to be changed twice.
StagedRows Interpreter::JoinRows(const MergeStatement& statement, Plan& plan) {
  StagedRows rows;
  ReadRows(plan, rows);
  std::erase_if(rows, [](const std::vector<Datum>& row) { return row[0].IsNull(); });
  if (rowLimit_ > 0 && rows.size() > static_cast<size_t>(rowLimit_))
    rows.resize(static_cast<size_t>(rowLimit_));
  std::set<int64_t> changed;
  for (const std::vector<Datum>& row : rows) {
    const MergeAction& action = statement.actions[static_cast<size_t>(row[0].integer - 1)];
    if (action.match != MergeMatch::Source && !changed.insert(row[1].integer).second) Fail(8672, {});
  }
  return rows;
}

Interpreter::Flow Interpreter::RunMerge(const MergeStatement& statement) {
  Plan& plan = MakePlanner().MergePlan(statement);
  const TablePtr target = plan.target;
  if (!target->IsVariable()) transaction_.BeforeWrite();
  BindParameters(plan);
  const bool fires = std::ranges::any_of(
      statement.actions, [&](const MergeAction& action) { return Fires(*target, action.change->kind); });
  std::optional<OwnTransaction> transaction;
  if (fires) transaction.emplace(transaction_);
  std::optional<StatementScope> scope;
  BeginScope(scope, *target, nullptr);
  const StagedRows rows = JoinRows(statement, plan);
  const MergedUse use(context_, rows);
  int64_t count = 0;
  // A row may get the key of one that goes.
  for (const StatementKind kind : {StatementKind::Delete, StatementKind::Update, StatementKind::Insert}) {
    for (const MergeAction& action : statement.actions) {
      if (action.change->kind != kind) continue;
      int64_t changed = 0;
      isOfMerge_ = true;
      const Flow flow = Change(*action.change, changed);
      if (flow != Flow::Next) return flow;
      count += changed;
    }
  }
  if (scope) scope->Complete();
  if (transaction) transaction->Commit();
  SendRowCount(count);
  return Flow::Next;
}

} // namespace tsql
