#include <algorithm>

#include "tsql/run/Interpreter.h"
#include "tsql/sqlite/Values.h"

namespace tsql {

Interpreter::Flow Interpreter::RunQuery(const QueryStatement& statement) {
  if (IntoOf(*statement.query) != nullptr) {
    RunSelectInto(statement);
  } else {
    Plan& plan = MakePlanner().QueryPlan(statement);
    if (plan.wantsLock) transaction_.TakeLock();
    BindParameters(plan);
    if (plan.assigned.empty()) {
      ReturnRows(plan);
    } else {
      AssignRows(plan);
    }
  }
  lastError_ = 0;
  return Flow::Next;
}

void Interpreter::SendRowCount(int64_t count) {
  rowCount_ = count;
  if (!noCount_) sink_->RowCount(count);
}

void Interpreter::ReturnRows(Plan& plan) {
  const StatementUse use(plan.statement);
  // The first row is computed before anything is sent, so that a statement which fails there gives no result.
  bool hasRow = plan.statement.Step();
  sink_->BeginRows(plan.columns);
  row_.resize(plan.columns.size());
  texts_.resize(plan.columns.size());
  int64_t count = 0;
  for (; hasRow; hasRow = plan.statement.Step()) {
    ReadRow(plan.statement, plan.columns, row_, texts_);
    sink_->Row(row_);
    if (++count == rowLimit_) break;
  }
  rowCount_ = count;
  sink_->EndRows(count);
}

void Interpreter::AssignRows(Plan& plan) {
  const StatementUse use(plan.statement);
  // The statement reads the values that the variables had before it. Texts among them must live until it has
  // ended, though their variables take other values.
  int number = 1;
  for (const ParameterRef& ref : plan.parameters) {
    if (ref.kind == BoundExpr::Kind::Variable && std::ranges::count(plan.assigned, ref.index) > 0)
      plan.statement.BindCopy(number, running_->variables[static_cast<size_t>(ref.index)]);
    ++number;
  }
  int64_t count = 0;
  while (plan.statement.Step()) {
    int column = 0;
    for (const int variable : plan.assigned)
      ReadDatum(plan.statement.Column(column++), running_->variables[static_cast<size_t>(variable)]);
    if (++count == rowLimit_) break;
  }
  rowCount_ = count;
}

void Interpreter::RunSelectInto(const QueryStatement& statement) {
  const ObjectName& name = *IntoOf(*statement.query);
  StatementScope scope(transaction_, PlaceOf(name));
  std::vector<Dependency> dependencies;
  BoundQueryPtr query = compiler_.BindInto(statement, *running_->unit, dependencies);
  for (const Column& column : query->columns) CheckPadding(column.type);
  const bool isNumbered = query->identity && query->identity->isGenerated;
  definitions_.CreateTable(name, query->columns, query->identity);
  const TablePtr table = catalog_.FindTable(name);
  Plan plan = compiler_.PlanInto(std::move(query), table, std::move(dependencies));
  BindParameters(plan);
  const int64_t count = MakeChange(*table, [&] {
    const int64_t inserted = StepChange(plan);
    CheckIdentity(*table, inserted);
    return inserted;
  });
  if (isNumbered && count > 0) TakeIdentity(*table);
  const IdentityStore identities(connection_);
  if (!isNumbered && table->CountsIdentity()) identities.SetLast(*table, identities.Farthest(*table));
  scope.Complete();
  MarkSchemaChange(PlaceOf(name));
  SendRowCount(count);
}

} // namespace tsql
