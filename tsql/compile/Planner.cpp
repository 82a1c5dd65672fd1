#include "tsql/compile/Planner.h"

#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

#include <algorithm>

namespace tsql {
namespace {

bool IsSame(const TablePtr& left, const TablePtr& right) {
  return left == right || (left && right && *left == *right);
}

// Errors that depend on what runs before the statement: a missing object, IDENTITY_INSERT.
bool IsDeferred(const Error& error) {
  return error.number == 208 || error.number == 544 || error.number == 8101;
}

const ObjectName& TargetOf(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Insert: return static_cast<const InsertStatement&>(statement).table;
  case StatementKind::Update: return static_cast<const UpdateStatement&>(statement).target;
  default: return static_cast<const DeleteStatement&>(statement).target;
  }
}

} // namespace

bool Planner::IsCurrent(Plan& plan) const {
  if (plan.version == 0) return false;
  if (plan.version == catalog_.Version()) return true;
  const bool same =
      std::all_of(plan.dependencies.begin(), plan.dependencies.end(), [&](const Dependency& entry) {
        if (entry.view) {
          const ModulePtr view = catalog_.FindView(entry.name);
          return !catalog_.FindTable(entry.name) && view && view->text == entry.view->text;
        }
        return IsSame(catalog_.FindTable(entry.name), entry.table);
      });
  if (same) plan.version = catalog_.Version();
  return same;
}

PreparedStatement Planner::Prepare(const std::string& sql) const {
  try {
    return connection_.Prepare(sql);
  } catch (const SqliteFailure& failure) {
    // SQLite's own limits, in the server's terms.
    const std::string_view message = failure.what();
    if (message == "at most 64 tables in a join") Fail(106, {"64"});
    constexpr std::string_view kTooDeep[] = {"Expression tree is too large", "parser stack overflow",
                                             "too many terms in compound SELECT"};
    for (const std::string_view text : kTooDeep)
      if (message.starts_with(text)) Fail(191, {});
    throw;
  }
}

void Planner::Finish(Plan& plan, const Binder& binder, EmittedSql emitted) const {
  plan.statement = Prepare(emitted.sql);
  plan.parameters = std::move(emitted.parameters);
  plan.dependencies = binder.Dependencies();
  plan.wantsLock = binder.WantsUpdateLock();
  plan.version = catalog_.Version();
}

Binder Planner::MakeBinder() const {
  Binder binder(catalog_, unit_.variables, unit_.markers);
  binder.SetPending(pending_);
  return binder;
}

Plan& Planner::QueryPlan(const QueryStatement& statement) {
  Plan& plan = PlanAt(statement.slot);
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

Plan& Planner::ChangePlan(const Statement& statement, std::string_view identityInsertTable) {
  Plan& plan = PlanAt(statement.slot);
  const bool identityInsert = EqualNames(TargetOf(statement).name, identityInsertTable);
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

Plan& Planner::ConditionPlan(const Evaluated& condition) {
  Plan& plan = PlanAt(condition.slot);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  const BoundExprPtr bound = binder.BindCondition(*condition.expr);
  Finish(plan, binder, Emitter().EmitCondition(*bound));
  return plan;
}

Plan& Planner::ValuePlan(const Evaluated& value, const Type* type) {
  Plan& plan = PlanAt(value.slot);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  const BoundExprPtr bound =
      type != nullptr ? binder.BindValueFor(*value.expr, *type) : binder.BindScalar(*value.expr);
  Column column;
  column.type = bound->type;
  plan.columns.push_back(column);
  Finish(plan, binder, Emitter().EmitValue(*bound));
  return plan;
}

// ---- ahead of execution

void Planner::RequireVariable(const std::string& name) const {
  if (FindVariable(unit_.variables, name) < 0) Fail(137, {name});
}

void Planner::Declare(const DeclareStatement& statement) {
  for (const VariableDeclaration& variable : statement.variables) {
    if (FindVariable(unit_.variables, variable.name) >= 0) Fail(134, {variable.name});
    unit_.variables.push_back({variable.name, variable.type});
  }
}

void Planner::CompileAll(std::string_view identityInsertTable) {
  CompileList(*unit_.body, identityInsertTable);
}

void Planner::CompileList(const StatementList& statements, std::string_view identityInsertTable) {
  for (const StatementPtr& statement : statements) Compile(*statement, identityInsertTable);
}

void Planner::Compile(const Statement& statement, std::string_view identityInsertTable) {
  try {
    CompileBody(statement, identityInsertTable);
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

void Planner::CompileBody(const Statement& statement, std::string_view identityInsertTable) {
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
  case StatementKind::Delete: ChangePlan(statement, identityInsertTable); break;
  case StatementKind::Declare: {
    const auto& declare = static_cast<const DeclareStatement&>(statement);
    Declare(declare);
    for (const VariableDeclaration& variable : declare.variables)
      if (variable.initial.expr) ValuePlan(variable.initial, &variable.type);
    break;
  }
  case StatementKind::SetVariable: {
    const auto& set = static_cast<const SetVariableStatement&>(statement);
    RequireVariable(set.name);
    const auto index = static_cast<size_t>(FindVariable(unit_.variables, set.name));
    const Type type = unit_.variables[index].type;
    ValuePlan(set.value, &type);
    break;
  }
  case StatementKind::If: {
    const auto& branch = static_cast<const IfStatement&>(statement);
    try {
      ConditionPlan(branch.condition);
    } catch (const Error& error) {
      if (!IsDeferred(error)) throw;
    }
    Compile(*branch.thenBranch, identityInsertTable);
    if (branch.elseBranch) Compile(*branch.elseBranch, identityInsertTable);
    break;
  }
  case StatementKind::While: {
    const auto& loop = static_cast<const WhileStatement&>(statement);
    try {
      ConditionPlan(loop.condition);
    } catch (const Error& error) {
      if (!IsDeferred(error)) throw;
    }
    Compile(*loop.body, identityInsertTable);
    break;
  }
  case StatementKind::Block:
    CompileList(static_cast<const BlockStatement&>(statement).statements, identityInsertTable);
    break;
  case StatementKind::TryCatch: {
    const auto& tryCatch = static_cast<const TryCatchStatement&>(statement);
    CompileList(tryCatch.tryBody, identityInsertTable);
    CompileList(tryCatch.catchBody, identityInsertTable);
    break;
  }
  case StatementKind::Print: ValuePlan(static_cast<const PrintStatement&>(statement).value, nullptr); break;
  case StatementKind::Execute: CompileExecute(static_cast<const ExecuteStatement&>(statement)); break;
  default: break;
  }
}

} // namespace tsql
