#include "tsql/compile/Planner.h"

#include <algorithm>

#include "tsql/compile/Preparation.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

bool IsSame(const TablePtr& left, const TablePtr& right) {
  return left == right || (left && right && *left == *right);
}

// Errors that depend on what runs before the statement: a missing object, IDENTITY_INSERT.
bool IsDeferred(const Error& error) {
  return error.number == 208 || error.number == 544 || error.number == 545 || error.number == 8101;
}

const ObjectName& TargetOf(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Insert: return static_cast<const InsertStatement&>(statement).table;
  case StatementKind::Update: return static_cast<const UpdateStatement&>(statement).target;
  default: return static_cast<const DeleteStatement&>(statement).target;
  }
}

} // namespace

Plan& Planner::PlanAt(uint32_t number) {
  std::vector<std::unique_ptr<Plan>>& plans = unit_.plans;
  if (number >= plans.size()) plans.resize(number + 1);
  if (!plans[number]) plans[number] = std::make_unique<Plan>();
  return *plans[number];
}

bool Planner::IsCurrent(Plan& plan) const {
  if (plan.version == 0) return false;
  if (plan.version == context_.catalog.Version()) return true;
  const bool same =
      std::all_of(plan.dependencies.begin(), plan.dependencies.end(), [&](const Dependency& entry) {
        if (entry.view) {
          const ModulePtr view = context_.catalog.FindView(entry.name);
          return !context_.catalog.FindTable(entry.name) && view && view->text == entry.view->text;
        }
        return IsSame(context_.catalog.FindTable(entry.name), entry.table);
      });
  if (same) plan.version = context_.catalog.Version();
  return same;
}

void Planner::Finish(Plan& plan, const Binder& binder, EmittedSql emitted) const {
  plan.statement = Prepare(context_.connection, emitted.sql);
  plan.parameters = std::move(emitted.parameters);
  plan.dependencies = binder.Dependencies();
  plan.wantsLock = binder.WantsUpdateLock();
  plan.version = context_.catalog.Version();
}

Binder Planner::MakeBinder() const {
  Binder binder(context_.catalog, unit_.variables, unit_.markers);
  binder.SetPending(pending_);
  return binder;
}

Plan& Planner::QueryPlan(const QueryStatement& statement) {
  Plan& plan = PlanAt(statement.number);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  const BoundQueryPtr query = binder.BindStatementQuery(*statement.query);
  plan.columns = query->columns;
  if (query->op == SetOp::None) {
    for (const BoundItem& item : query->select->items)
      if (item.variable >= 0) plan.assigned.push_back(item.variable);
  }
  Finish(plan, binder, Emitter().EmitStatement(*query));
  return plan;
}

Plan& Planner::ChangePlan(const Statement& statement) {
  Plan& plan = PlanAt(statement.number);
  const bool identityInsert = EqualNames(TargetOf(statement).name, context_.identityInsertTable);
  if (plan.identityInsert == identityInsert && IsCurrent(plan)) return plan;
  plan = Plan();
  plan.identityInsert = identityInsert;
  Binder binder = MakeBinder();
  switch (statement.kind) {
  case StatementKind::Insert: {
    const BoundInsert insert =
        binder.BindInsert(static_cast<const InsertStatement&>(statement), identityInsert);
    plan.target = insert.table;
    Finish(plan, binder, Emitter().EmitInsert(insert));
    break;
  }
  case StatementKind::Update: {
    const BoundUpdate update = binder.BindUpdate(static_cast<const UpdateStatement&>(statement));
    plan.target = update.table;
    Finish(plan, binder, Emitter().EmitUpdate(update));
    break;
  }
  default: {
    const BoundDelete bound = binder.BindDelete(static_cast<const DeleteStatement&>(statement));
    plan.target = bound.table;
    Finish(plan, binder, Emitter().EmitDelete(bound));
  }
  }
  return plan;
}

Plan Planner::UpdatedRowsPlan(const UpdateStatement& statement, std::string_view into,
                              std::string_view number) {
  Plan plan;
  Binder binder = MakeBinder();
  const BoundUpdate update = binder.BindUpdate(statement);
  Finish(plan, binder, Emitter().EmitUpdatedRows(update, into, number));
  return plan;
}

Plan& Planner::ConditionPlan(const Expr& condition) {
  Plan& plan = PlanAt(condition.number);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  const BoundExprPtr bound = binder.BindCondition(condition);
  Finish(plan, binder, Emitter().EmitCondition(*bound));
  return plan;
}

Plan& Planner::ValuePlan(const Expr& value, const Type* type) {
  Plan& plan = PlanAt(value.number);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  const BoundExprPtr bound = type != nullptr ? binder.BindValueFor(value, *type) : binder.BindScalar(value);
  Column column;
  column.type = bound->type;
  plan.columns.push_back(column);
  Finish(plan, binder, Emitter().EmitValue(*bound));
  return plan;
}

Plan& Planner::AssignmentPlan(const SetVariableStatement& statement) {
  Plan& plan = PlanAt(statement.value->number);
  if (IsCurrent(plan)) return plan;
  const int variable = RequireVariable(statement.name);
  ValuePlan(*statement.value, &unit_.variables[static_cast<size_t>(variable)].type);
  plan.assigned.push_back(variable);
  return plan;
}

// ---- ahead of execution

int Planner::RequireVariable(const std::string& name) const {
  const int found = FindVariable(unit_.variables, name);
  if (found < 0) Fail(137, {name});
  return found;
}

void Planner::Declare(const DeclareStatement& statement) {
  for (const VariableDeclaration& variable : statement.variables) {
    if (FindVariable(unit_.variables, variable.name) >= 0) Fail(134, {variable.name});
    unit_.variables.push_back({variable.name, variable.type});
  }
}

void Planner::CompileAll() {
  CompileList(*unit_.body);
}

void Planner::CompileList(const StatementList& statements) {
  for (const StatementPtr& statement : statements) Compile(*statement);
}

void Planner::Compile(const Statement& statement) {
  try {
    CompileBody(statement);
  } catch (const Error& error) {
    if (IsDeferred(error)) return;
    throw Error(error.number, error.severity, error.state, error.line > 0 ? error.line : statement.line,
                error.what());
  }
}

void Planner::CompileExecute(const ExecuteStatement& statement) {
  if (!statement.returnVariable.empty()) RequireVariable(statement.returnVariable);
  for (const ExecuteArgument& argument : statement.arguments)
    if (!argument.outputVariable.empty()) RequireVariable(argument.outputVariable);
}

void Planner::CompileCondition(const Expr& condition) {
  try {
    ConditionPlan(condition);
  } catch (const Error& error) {
    if (!IsDeferred(error)) throw;
  }
}

void Planner::CompileBody(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Query: {
    const auto& query = static_cast<const QueryStatement&>(statement);
    if (query.query->select && query.query->select->into) {
      pending_.push_back(query.query->select->into->name);
    } else {
      QueryPlan(query);
    }
    break;
  }
  case StatementKind::CreateTable:
    pending_.push_back(static_cast<const CreateTableStatement&>(statement).table.name);
    break;
  case StatementKind::Insert:
  case StatementKind::Update:
  case StatementKind::Delete: ChangePlan(statement); break;
  case StatementKind::Declare: {
    const auto& declare = static_cast<const DeclareStatement&>(statement);
    Declare(declare);
    for (const VariableDeclaration& variable : declare.variables)
      if (variable.initial) ValuePlan(*variable.initial, &variable.type);
    break;
  }
  case StatementKind::SetVariable: AssignmentPlan(static_cast<const SetVariableStatement&>(statement)); break;
  case StatementKind::If: {
    const auto& branch = static_cast<const IfStatement&>(statement);
    CompileCondition(*branch.condition);
    Compile(*branch.thenBranch);
    if (branch.elseBranch) Compile(*branch.elseBranch);
    break;
  }
  case StatementKind::While: {
    const auto& loop = static_cast<const WhileStatement&>(statement);
    CompileCondition(*loop.condition);
    Compile(*loop.body);
    break;
  }
  case StatementKind::Block: CompileList(static_cast<const BlockStatement&>(statement).statements); break;
  case StatementKind::TryCatch: {
    const auto& tryCatch = static_cast<const TryCatchStatement&>(statement);
    CompileList(tryCatch.tryBody);
    CompileList(tryCatch.catchBody);
    break;
  }
  case StatementKind::Print: ValuePlan(*static_cast<const PrintStatement&>(statement).value, nullptr); break;
  case StatementKind::Execute: CompileExecute(static_cast<const ExecuteStatement&>(statement)); break;
  default: break;
  }
}

} // namespace tsql
