#include "tsql/compile/Planner.h"

#include <algorithm>

#include "tsql/compile/IntegerExpression.h"
#include "tsql/compile/Preparation.h"
#include "tsql/compile/TableShape.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

bool IsSame(const TablePtr& left, const TablePtr& right) {
  return left == right || (left && right && *left == *right);
}

// Errors that depend on what runs before the statement: a missing object or function, IDENTITY_INSERT.
bool IsDeferred(const Error& error) {
  return error.number == 208 || error.number == 4121 || error.number == 544 || error.number == 545 ||
         error.number == 8101;
}

const ObjectName& TargetOf(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Insert: return static_cast<const InsertStatement&>(statement).table;
  case StatementKind::Update: return static_cast<const UpdateStatement&>(statement).target;
  default: return static_cast<const DeleteStatement&>(statement).target;
  }
}

const MergeRole& RoleOf(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Insert: return static_cast<const InsertStatement&>(statement).role;
  case StatementKind::Update: return static_cast<const UpdateStatement&>(statement).role;
  default: return static_cast<const DeleteStatement&>(statement).role;
  }
}

} // namespace

Plan& Planner::PlanAt(uint32_t number) {
  std::vector<std::unique_ptr<Plan>>& plans = unit_.plans;
  if (number >= plans.size()) plans.resize(number + 1);
  if (!plans[number]) plans[number] = std::make_unique<Plan>();
  return *plans[number];
}

bool Planner::AreCurrent(const std::vector<Dependency>& dependencies) const {
  return std::all_of(dependencies.begin(), dependencies.end(), [&](const Dependency& entry) {
    if (entry.function) {
      const ModulePtr function = context_.catalog.FindFunction(entry.name);
      return function && IsSameModule(*function, *entry.function);
    }
    if (entry.view) {
      const ModulePtr view = context_.catalog.FindView(entry.name);
      return !context_.catalog.FindTable(entry.name) && view && IsSameModule(*view, *entry.view);
    }
    // A function's table variables are always there.
    if (entry.name.variable && unit_.function != nullptr) return true;
    return IsSame(context_.catalog.FindTable(entry.name), entry.table);
  });
}

bool Planner::IsCurrent(Plan& plan) const {
  if (plan.version == 0 || plan.options != options_) return false;
  if (plan.version == context_.catalog.Version()) return true;
  const bool same = AreCurrent(plan.dependencies);
  if (same) plan.version = context_.catalog.Version();
  return same;
}

void Planner::Finish(Plan& plan, const Binder& binder, EmittedSql emitted) const {
  plan.dependencies = binder.Dependencies();
  plan.callsFunctions = std::ranges::any_of(plan.dependencies, IsCall);
  if (binder.IsAhead()) return; // it is right; it is prepared when its table is there
  plan.statement = Prepare(context_.connection, emitted.sql);
  plan.parameters = std::move(emitted.parameters);
  plan.wantsLock = binder.WantsUpdateLock();
  plan.version = context_.catalog.Version();
  plan.options = options_;
}

void Planner::FinishInteger(Plan& plan, BoundExprPtr integer) const {
  plan.integer = std::move(integer);
  plan.version = context_.catalog.Version(); // it depends on nothing there
  plan.options = options_;
}

Binder Planner::MakeBinder() const {
  Binder binder(context_.catalog, unit_.variables, unit_.markers);
  binder.SetOptions(options_);
  if (pending_ != nullptr) binder.SetPending(*pending_);
  const bool inFunction = unit_.function != nullptr;
  binder.SetTableVariables(unit_.tables, pending_ != nullptr ? Binder::Variables::Declared
                                         : inFunction        ? Binder::Variables::OfUnit
                                                             : Binder::Variables::InCatalog);
  binder.SetInFunction(inFunction);
  if (inFunction && unit_.isNew && unit_.function->schemaBound)
    binder.SetSchemaBound("function", unit_.function->name.name);
  if (unit_.trigger != nullptr) binder.SetTrigger(*unit_.trigger);
  return binder;
}

Binder Planner::MakeChangeBinder(const Statement& change) {
  Binder binder = MakeBinder();
  if (const MergeStatement* merge = RoleOf(change).merge) {
    binder.SetMerged(MergePlan(*merge).columns);
  } else {
    binder.SetLimited(context_.limitsChanges);
  }
  return binder;
}

Plan& Planner::MakeQueryPlan(const QueryStatement& statement) {
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

// Whether triggers wait for the change of what it names. Then an INSERT has another plan, and a view may be
// the target.
bool Planner::Fires(const Statement& statement) const {
  const Catalog& catalog = context_.catalog;
  if (catalog.Triggers().empty()) return false;
  const TriggerEvent event = statement.kind == StatementKind::Insert   ? TriggerEvent::Insert
                             : statement.kind == StatementKind::Update ? TriggerEvent::Update
                                                                       : TriggerEvent::Delete;
  const ObjectName& target = TargetOf(statement);
  if (catalog.HasTriggers(catalog.KeyOf(target), event)) return true;
  // Rows that are inserted into a view may come into a table with triggers.
  return statement.kind == StatementKind::Insert && !catalog.FindTable(target) && catalog.FindView(target);
}

bool Planner::InsertsIdentity(const ObjectName& target) const {
  const TablePtr& allowed = context_.identityInsertTable;
  if (!allowed) return false;
  const TablePtr table = context_.catalog.FindTable(target);
  return table && EqualNames(table->storageName, allowed->storageName);
}

Plan& Planner::ChangePlan(const Statement& statement) {
  Plan& plan = PlanAt(statement.number);
  const bool identityInsert = InsertsIdentity(TargetOf(statement));
  const bool fires = Fires(statement);
  const bool isSame =
      plan.identityInsert == identityInsert && plan.limited == context_.limitsChanges && plan.fires == fires;
  if (isSame && IsCurrent(plan)) return plan;
  Binder binder = MakeChangeBinder(statement);
  plan = Plan();
  plan.identityInsert = identityInsert;
  plan.limited = context_.limitsChanges;
  plan.fires = fires;
  switch (statement.kind) {
  case StatementKind::Insert: {
    const BoundInsert insert =
        binder.BindInsert(static_cast<const InsertStatement&>(statement), identityInsert);
    plan.target = insert.table;
    Finish(plan, binder,
           insert.table->isView     ? Emitter().EmitRowsOf(insert)
           : insert.output || fires ? Emitter().EmitReturningInsert(insert)
                                    : Emitter().EmitInsert(insert));
    break;
  }
  case StatementKind::Update: {
    const BoundUpdate update = binder.BindUpdate(static_cast<const UpdateStatement&>(statement));
    plan.target = update.table;
    plan.assigned = update.variables;
    plan.named = update.named;
    Finish(plan, binder,
           update.table->isView ? Emitter::EmitStaged(update).rows : Emitter().EmitUpdate(update));
    break;
  }
  default: {
    const BoundDelete bound = binder.BindDelete(static_cast<const DeleteStatement&>(statement));
    plan.target = bound.table;
    Finish(plan, binder, bound.table->isView ? Emitter::EmitStaged(bound).rows : Emitter().EmitDelete(bound));
  }
  }
  return plan;
}

StagedPlan Planner::PlanStaged(const Statement& statement) {
  Binder binder = MakeChangeBinder(statement);
  StagedPlan plan;
  const auto take = [&plan](const std::unique_ptr<BoundOutput>& output) {
    if (!output) return;
    plan.outputSql = Emitter().EmitOutputRows(*output);
    if (output->into) {
      plan.into = output->into->table;
    } else {
      plan.columns = output->query->columns;
    }
  };
  switch (statement.kind) {
  case StatementKind::Insert: {
    const auto& insert = static_cast<const InsertStatement&>(statement);
    take(binder.BindInsert(insert, InsertsIdentity(insert.table)).output);
    break;
  }
  case StatementKind::Update: {
    const BoundUpdate update = binder.BindUpdate(static_cast<const UpdateStatement&>(statement));
    plan.sql = Emitter::EmitStaged(update);
    take(update.output);
    break;
  }
  default: {
    const BoundDelete bound = binder.BindDelete(static_cast<const DeleteStatement&>(statement));
    plan.sql = Emitter::EmitStaged(bound);
    take(bound.output);
  }
  }
  return plan;
}

Plan Planner::PlanInsertedRows(const InsertStatement& statement) {
  Binder binder = MakeChangeBinder(statement);
  return PlanOnce(Emitter().EmitRowsOf(binder.BindInsert(statement, InsertsIdentity(statement.table))));
}

Plan Planner::PlanOnce(EmittedSql emitted) const {
  Plan plan;
  plan.statement = Prepare(context_.connection, emitted.sql);
  plan.parameters = std::move(emitted.parameters);
  return plan;
}

Plan Planner::InsertedRowPlan(const InsertExecuteStatement& statement, const std::vector<Type>& types,
                              InsertForm form) const {
  Plan plan;
  Binder binder(context_.catalog, unit_.variables, types);
  binder.SetTableVariables(unit_.tables, Binder::Variables::InCatalog);
  const BoundInsert insert = binder.BindInsertMarkers(statement, InsertsIdentity(statement.table));
  plan.target = insert.table;
  switch (form) {
  case InsertForm::Plain: Finish(plan, binder, Emitter().EmitInsert(insert)); break;
  case InsertForm::Returning: Finish(plan, binder, Emitter().EmitReturningInsert(insert)); break;
  case InsertForm::RowsOnly: Finish(plan, binder, Emitter().EmitRowsOf(insert)); break;
  }
  return plan;
}

Plan& Planner::MergePlan(const MergeStatement& statement) {
  Plan& plan = PlanAt(statement.number);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  // The actions are bound to the columns.
  for (const MergeAction& action : statement.actions) PlanAt(action.change->number) = Plan();
  Binder binder = MakeBinder();
  const BoundQueryPtr query = binder.BindMerge(statement, plan.target);
  plan.columns = query->columns;
  Finish(plan, binder, Emitter().EmitStatement(*query));
  return plan;
}

Plan& Planner::CursorPlan(const DeclareCursorStatement& statement) {
  Plan& plan = PlanAt(statement.number);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  const BoundQueryPtr query = binder.BindCursorQuery(*statement.query, plan.changeable);
  plan.columns = query->columns;
  Finish(plan, binder, Emitter().EmitStatement(*query));
  return plan;
}

Plan& Planner::FetchPlan(const FetchStatement& statement) {
  Plan& plan = PlanAt(statement.number);
  if (plan.assigned.size() == statement.into.size()) return plan;
  plan.assigned.clear();
  for (const std::string& name : statement.into) plan.assigned.push_back(RequireVariable(name));
  return plan;
}

Plan& Planner::MakeConditionPlan(const Expr& condition) {
  Plan& plan = PlanAt(condition.number);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  BoundExprPtr bound = binder.BindCondition(condition);
  if (IsIntegerCondition(*bound)) {
    FinishInteger(plan, std::move(bound));
  } else {
    Finish(plan, binder, Emitter().EmitCondition(*bound));
  }
  return plan;
}

Plan& Planner::MakeValuePlan(const Expr& value, const Type* type) {
  Plan& plan = PlanAt(value.number);
  if (IsCurrent(plan)) return plan;
  plan = Plan();
  Binder binder = MakeBinder();
  BoundExprPtr bound = type != nullptr ? binder.BindValueFor(value, *type) : binder.BindScalar(value);
  Column column;
  column.type = bound->type;
  plan.columns.push_back(column);
  if (IsIntegerExpression(*bound)) {
    FinishInteger(plan, std::move(bound));
  } else {
    Finish(plan, binder, Emitter().EmitValue(*bound));
  }
  return plan;
}

Plan& Planner::MakeAssignmentPlan(const SetVariableStatement& statement) {
  Plan& plan = PlanAt(statement.value->number);
  if (IsCurrent(plan)) return plan;
  const int variable = RequireVariable(statement.name);
  ValuePlan(*statement.value, &unit_.variables[static_cast<size_t>(variable)].type);
  plan.assigned.push_back(variable);
  return plan;
}

// ---- ahead of execution

bool Planner::IsCurrent() const {
  return !unit_.isDeferred && std::ranges::all_of(unit_.plans, [this](const std::unique_ptr<Plan>& plan) {
    return !plan || AreCurrent(plan->dependencies);
  });
}

int Planner::RequireVariable(const std::string& name) const {
  const int found = FindVariable(unit_.variables, name);
  if (found < 0) Fail(137, {name});
  return found;
}

void Planner::Declare(const DeclareStatement& statement) {
  for (const VariableDeclaration& variable : statement.variables) {
    const bool isTable = std::ranges::any_of(
        unit_.tables, [&](const TablePtr& table) { return EqualNames(table->name, variable.name); });
    if (isTable || FindVariable(unit_.variables, variable.name) >= 0) Fail(134, {variable.name});
    unit_.variables.push_back({variable.name, variable.type});
  }
  for (const TableVariable& variable : statement.tables) DeclareTable(variable);
  for (const std::string& cursor : statement.cursors) unit_.cursors.push_back(cursor);
}

void Planner::DeclareTable(const TableVariable& variable) {
  const std::string& name = variable.name.name;
  const bool isTaken =
      std::ranges::any_of(unit_.tables, [&](const TablePtr& table) { return EqualNames(table->name, name); });
  if (isTaken || FindVariable(unit_.variables, name) >= 0) Fail(134, {name}, variable.line);
  const TableShape shape(context_.catalog);
  TableInfo table = shape.MakeTable(variable.name, variable.columns, variable.constraints);
  if (unit_.function != nullptr) table.storageName += "~" + std::to_string(unit_.number);
  unit_.tables.push_back(std::make_shared<const TableInfo>(std::move(table)));
}

void Planner::CompileAll() {
  std::vector<ObjectName> pending;
  pending_ = &pending;
  if (unit_.function != nullptr && unit_.function->function == FunctionKind::Table)
    DeclareTable(unit_.function->result);
  CompileList(*unit_.body);
  pending_ = nullptr;
}

void Planner::CompileList(const StatementList& statements) {
  for (const StatementPtr& statement : statements) Compile(*statement);
}

void Planner::Compile(const Statement& statement) {
  try {
    CompileBody(statement);
  } catch (const Error& error) {
    if (IsDeferred(error)) {
      unit_.isDeferred = true;
      return;
    }
    throw Error(error.number, error.severity, error.state, error.line > 0 ? error.line : statement.line,
                error.what());
  }
}

void Planner::CompileExecute(const ExecuteStatement& statement) {
  if (!statement.returnVariable.empty()) RequireVariable(statement.returnVariable);
  if (!statement.nameVariable.empty()) RequireVariable(statement.nameVariable);
  for (const ExecuteArgument& argument : statement.arguments)
    if (!argument.outputVariable.empty()) RequireVariable(argument.outputVariable);
}

void Planner::CompileCondition(const Expr& condition) {
  try {
    ConditionPlan(condition);
  } catch (const Error& error) {
    if (!IsDeferred(error)) throw;
    unit_.isDeferred = true;
  }
}

void Planner::CompileBody(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Query: {
    const auto& query = static_cast<const QueryStatement&>(statement);
    if (const ObjectName* into = IntoOf(*query.query)) {
      pending_->push_back(*into);
    } else {
      QueryPlan(query);
    }
    break;
  }
  case StatementKind::CreateTable:
    pending_->push_back(static_cast<const CreateTableStatement&>(statement).table);
    break;
  case StatementKind::Insert:
  case StatementKind::Update:
  case StatementKind::Delete: ChangePlan(statement); break;
  case StatementKind::Merge: {
    const auto& merge = static_cast<const MergeStatement&>(statement);
    MergePlan(merge);
    for (const MergeAction& action : merge.actions) Compile(*action.change);
    break;
  }
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
  case StatementKind::DeclareCursor: {
    const auto& declare = static_cast<const DeclareCursorStatement&>(statement);
    const std::string& name = declare.cursor.name;
    const auto isSame = [&](const std::string& cursor) { return EqualNames(cursor, name); };
    if (name.starts_with('@') && std::ranges::none_of(unit_.cursors, isSame)) Fail(137, {name});
    CursorPlan(declare);
    break;
  }
  case StatementKind::Fetch: FetchPlan(static_cast<const FetchStatement&>(statement)); break;
  case StatementKind::Return: {
    const auto& end = static_cast<const ReturnStatement&>(statement);
    if (unit_.function != nullptr && end.value) ValuePlan(*end.value, &unit_.function->returns);
    break;
  }
  case StatementKind::Print: ValuePlan(*static_cast<const PrintStatement&>(statement).value, nullptr); break;
  case StatementKind::Execute: CompileExecute(static_cast<const ExecuteStatement&>(statement)); break;
  case StatementKind::InsertExecute: {
    const auto& insert = static_cast<const InsertExecuteStatement&>(statement);
    MakeBinder().CheckTarget(insert.table);
    CompileExecute(*insert.execute);
    break;
  }
  default: break;
  }
}

} // namespace tsql
