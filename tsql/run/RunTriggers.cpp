// Changes of tables that have triggers. The rows are staged, with the values before and after the change;
// when it is made and its constraints hold, the triggers run, which read them as inserted and deleted. All of
// it is one statement.
#include <algorithm>
#include <optional>
#include <utility>

#include "tsql/run/Interpreter.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

TriggerEvent EventOf(StatementKind kind) {
  switch (kind) {
  case StatementKind::Update: return TriggerEvent::Update;
  case StatementKind::Delete: return TriggerEvent::Delete;
  default: return TriggerEvent::Insert;
  }
}

// The columns of which UPDATE() says that the statement gives them values: all of an INSERT.
std::vector<bool> UpdatedColumns(StatementKind kind, const Plan& plan) {
  std::vector<bool> updated(plan.target->columns.size(), EventOf(kind) == TriggerEvent::Insert);
  for (const int column : plan.named) updated[static_cast<size_t>(column)] = true;
  return updated;
}

} // namespace

// A trigger while it runs.
struct Interpreter::RunningTrigger {
  RunningTrigger(Interpreter& interpreter, const TriggerInfo& info)
      : owner(interpreter), key(info.module->key), outer(std::exchange(interpreter.trigger_, this)) {
    ++owner.triggers_;
  }
  RunningTrigger(const RunningTrigger&) = delete;
  RunningTrigger& operator=(const RunningTrigger&) = delete;
  ~RunningTrigger() {
    --owner.triggers_;
    owner.trigger_ = outer;
  }
  Interpreter& owner;
  std::string key;
  const RunningTrigger* outer;
};

bool Interpreter::Fires(const TableInfo& target, StatementKind kind) const {
  if (catalog_.Triggers().empty() || target.place != Place::Main) return false;
  return catalog_.HasTriggers(target.storageName, EventOf(kind));
}

bool Interpreter::Cascades(StatementKind kind, const Plan& plan) const {
  const TableInfo& target = *plan.target;
  if (!catalog_.HasReferentialActions() || target.place != Place::Main) return false;
  const TriggerEvent event = EventOf(kind);
  return event != TriggerEvent::Insert &&
         !ActingKeys(target, event, UpdatedColumns(kind, plan), catalog_).empty();
}

void Interpreter::ReadComputed(const TableInfo& target, StagedRows& rows) const {
  std::vector<size_t> columns;
  std::string list;
  for (size_t i = 0; i < target.columns.size(); ++i) {
    if (!target.columns[i].IsComputed()) continue;
    list += (columns.empty() ? "" : ", ") + QuoteName(target.columns[i].name);
    columns.push_back(i);
  }
  if (columns.empty()) return;
  PreparedStatement read =
      connection_.Prepare("SELECT " + list + " FROM " + target.SqlName() + " WHERE _rowid_ = ?");
  for (std::vector<Datum>& row : rows) {
    // A row that got another key has got another number with it.
    const size_t number = target.rowidColumn < 0 ? 0 : 1 + 2 * static_cast<size_t>(target.rowidColumn);
    const StatementUse use(read);
    read.Bind(1, row[number]);
    if (!read.Step()) continue;
    for (size_t i = 0; i < columns.size(); ++i)
      row[1 + 2 * columns[i]] = read.ColumnDatum(static_cast<int>(i));
  }
}

Interpreter::Flow Interpreter::RunFiring(const Statement& statement, Plan& plan, bool isOfCursor,
                                         int64_t& count) {
  const TablePtr target = plan.target;
  StagedPlan staged = MakePlanner().PlanStaged(statement);
  const bool returnsRows = !staged.columns.empty();
  if (returnsRows && Fires(*target, statement.kind)) Fail(334, {target->name});
  FiredRows fired;
  fired.event = EventOf(statement.kind);
  fired.updated = UpdatedColumns(statement.kind, plan);
  const bool insteadOf = HasInsteadOf(*target, fired.event);
  if (target->isView && !insteadOf) Refuse("Changing a view"); // the trigger's own change of it
  std::deque<CascadedRows> cascaded;
  return ChangeAndFire(*target, fired, insteadOf, cascaded, [&] {
    const StagedUse use(context_, fired.rows);
    if (insteadOf) {
      Plan rows = statement.kind == StatementKind::Insert
                      ? MakePlanner().PlanInsertedRows(static_cast<const InsertStatement&>(statement))
                      : MakePlanner().PlanOnce(staged.sql.rows);
      BindParameters(rows);
      ReadRows(rows, fired.rows);
    } else {
      MakeChange(*target, [&] {
        StageChange(statement, plan, staged, fired.rows);
        Cascade(*target, fired, cascaded);
        return static_cast<int64_t>(fired.rows.size());
      });
      if (statement.kind == StatementKind::Update) ReadComputed(*target, fired.rows);
    }
    count = static_cast<int64_t>(fired.rows.size());
    if (isOfCursor && count == 0) Fail(16947, {});
    if (!insteadOf && statement.kind == StatementKind::Insert && count > 0) TakeIdentity(*target);
    if (staged.into || returnsRows) GiveOutput(staged);
    return count;
  });
}

bool Interpreter::HasInsteadOf(const TableInfo& target, TriggerEvent event) const {
  return std::ranges::any_of(catalog_.TriggersOf(target.storageName, event, true),
                             [this](const TriggerPtr& trigger) { return !IsInnermost(*trigger); });
}

Interpreter::Flow Interpreter::ChangeAndFire(const TableInfo& target, const FiredRows& fired, bool insteadOf,
                                             const std::deque<CascadedRows>& cascaded,
                                             const std::function<int64_t()>& change) {
  OwnTransaction transaction(transaction_);
  StatementScope scope(transaction_, Place::Main);
  const bool isOfMerge = isOfMerge_;
  int64_t count = 0;
  try {
    count = change();
    if (isOfMerge) count = static_cast<int64_t>(context_.merged->size()); // of all its actions
  } catch (const SqliteFailure& failure) {
    FailChange(failure, target);
  }
  // The triggers of what was changed last come first.
  for (size_t left = cascaded.size(); left > 0; --left) {
    const CascadedRows& changed = cascaded[left - 1];
    const auto rows = static_cast<int64_t>(changed.fired.rows.size());
    if (FireTriggers(*changed.table, changed.fired, false, rows) == Flow::Abort) return Flow::Abort;
  }
  if (FireTriggers(target, fired, insteadOf, count) == Flow::Abort) return Flow::Abort;
  scope.Complete();
  transaction.Commit();
  return Flow::Next;
}

// The statements of a trigger do not fire it themselves.
bool Interpreter::IsInnermost(const TriggerInfo& trigger) const {
  return trigger_ != nullptr && EqualNames(trigger_->key, trigger.module->key);
}

Interpreter::Flow Interpreter::FireTriggers(const TableInfo& target, const FiredRows& fired, bool insteadOf,
                                            int64_t count) {
  for (const TriggerPtr& trigger : catalog_.TriggersOf(target.storageName, fired.event, insteadOf)) {
    if (IsInnermost(*trigger)) continue;
    rowCount_ = count;
    lastError_ = 0;
    if (RunTrigger(*trigger, fired) == Flow::Abort) return Flow::Abort;
    if (transaction_.Count() == 0) Fail(3609, {});
    if (transaction_.State() < 0) Fail(3616, {});
  }
  return Flow::Next;
}

Interpreter::Flow Interpreter::RunTrigger(const TriggerInfo& trigger, const FiredRows& fired) {
  const std::shared_ptr<CompiledUnit> unit = compiler_.CompileTrigger(trigger);
  RunningUnit callee;
  callee.procedure = trigger.module->name;
  const FiredUse use(context_, fired);
  const RunningTrigger running(*this, trigger);
  const Flow flow = RunNested(*unit, callee);
  if (flow != Flow::Abort) return flow;
  transaction_.RollbackIfOpen();
  abortsAll_ = true;
  return flow;
}

} // namespace tsql
