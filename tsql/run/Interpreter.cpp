#include "tsql/run/Interpreter.h"

#include <charconv>
#include <utility>

#include "tsql/run/Diagnostics.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

Error WithLine(const Error& error, int line) {
  return {error.number, error.severity, error.state, error.line > 0 ? error.line : line, error.what()};
}

} // namespace

Interpreter::Interpreter(const Connection& connection, Catalog& catalog, Compiler& compiler,
                         Definitions& definitions, FunctionContext& context, Transaction& transaction)
    : connection_(connection), catalog_(catalog), compiler_(compiler), definitions_(definitions),
      context_(context), transaction_(transaction), limits_(connection, transaction) {}

void Interpreter::Reset() {
  SetNow(std::nullopt);
  limits_.Reset();
  compiler_.SetIdentityInsert({});
  identity_ = Datum();
  rowCount_ = 0;
  lastError_ = 0;
  noCount_ = false;
  xactAbort_ = false;
}

void Interpreter::BeginWork() {
  limits_.Begin();
  caught_.reset(); // the batch before may have ended within a CATCH block
}

// ---- entry points

bool Interpreter::RunBatch(CompiledUnit& unit, RunningUnit& running, ResultSink& sink) {
  sink_ = &sink;
  running_ = &running;
  running.unit = &unit;
  running.variables.resize(unit.variables.size());
  failed_ = false;
  RunList(*unit.body);
  return !failed_;
}

void Interpreter::Report(const Error& error, ResultSink& sink) {
  failed_ = true;
  lastError_ = error.number;
  sink.Failed(error);
}

Error Interpreter::Translate(const SqliteFailure& failure) {
  return TranslateFailure(failure, context_, catalog_, target_, verb_);
}

// ---- statements

Interpreter::Flow Interpreter::RunList(const StatementList& statements) {
  for (const StatementPtr& statement : statements) {
    const Flow flow = Run(*statement);
    if (flow != Flow::Next) return flow;
  }
  return Flow::Next;
}

void Interpreter::BeginStatement() {
  transaction_.Recover();
  catalog_.Settle();
  if (catalog_.EndedTable() != nullptr) DropEndedTables();
  context_.now.reset();
  context_.variables = &running_->variables;
  context_.error.reset();
  target_ = nullptr;
  verb_ = "";
}

Interpreter::Flow Interpreter::Run(const Statement& statement) {
  try {
    if (!limits_.TakeStep()) throw limits_.CanceledAt(statement.line);
    BeginStatement();
    return Dispatch(statement);
  } catch (const SqliteFailure& failure) {
    if (limits_.Ended(failure)) throw limits_.CanceledAt(statement.line);
    return HandleError(Translate(failure), statement);
  } catch (const Error& error) {
    return HandleError(error, statement);
  }
}

Interpreter::Flow Interpreter::HandleError(Error error, const Statement& statement) {
  error = WithLine(error, statement.line);
  const bool endsTransaction = EndsTransaction(error) || (xactAbort_ && transaction_.Count() > 0);
  transaction_.Synchronize();
  if (tryDepth_ > 0) {
    caughtProcedure_ = running_->procedure;
    throw Caught{error};
  }
  if (endsTransaction) transaction_.RollbackIfOpen();
  rowCount_ = 0;
  Report(error, *sink_);
  abortsAll_ = endsTransaction || xactAbort_;
  return EndsBatch(error) || abortsAll_ ? Flow::Abort : Flow::Next;
}

Interpreter::Flow Interpreter::Dispatch(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Query: return RunQuery(static_cast<const QueryStatement&>(statement));
  case StatementKind::Insert:
  case StatementKind::Update:
  case StatementKind::Delete: RunChange(statement); break;
  case StatementKind::Declare: RunDeclare(static_cast<const DeclareStatement&>(statement)); return Flow::Next;
  case StatementKind::SetVariable: RunSet(static_cast<const SetVariableStatement&>(statement)); break;
  case StatementKind::SetOption: RunSetOption(static_cast<const SetOptionStatement&>(statement)); break;
  case StatementKind::If: return RunIf(static_cast<const IfStatement&>(statement));
  case StatementKind::While: return RunWhile(static_cast<const WhileStatement&>(statement));
  case StatementKind::Block: return RunList(static_cast<const BlockStatement&>(statement).statements);
  case StatementKind::Break: return Flow::Break;
  case StatementKind::Continue: return Flow::Continue;
  case StatementKind::Return: return RunReturn(static_cast<const ReturnStatement&>(statement));
  case StatementKind::Print: RunPrint(static_cast<const PrintStatement&>(statement)); break;
  case StatementKind::Transaction: RunTransaction(static_cast<const TransactionStatement&>(statement)); break;
  case StatementKind::TryCatch: return RunTryCatch(static_cast<const TryCatchStatement&>(statement));
  case StatementKind::Raiserror:
    RunRaiserror(static_cast<const RaiserrorStatement&>(statement));
    return Flow::Next;
  case StatementKind::Throw: return RunThrow(static_cast<const ThrowStatement&>(statement));
  case StatementKind::Execute: return RunExecute(static_cast<const ExecuteStatement&>(statement));
  default: RunDefinition(statement);
  }
  lastError_ = 0;
  return Flow::Next;
}

// ---- variables and control flow

void Interpreter::RunDeclare(const DeclareStatement& statement) {
  for (const VariableDeclaration& variable : statement.variables) {
    const auto index = static_cast<size_t>(FindVariable(running_->unit->variables, variable.name));
    // Passing the declaration again in a loop keeps the value, as on the server.
    if (!variable.initial) continue;
    running_->variables[index] = ReadValue(MakePlanner().ValuePlan(*variable.initial, &variable.type));
  }
}

void Interpreter::RunSet(const SetVariableStatement& statement) {
  Plan& plan = MakePlanner().AssignmentPlan(statement);
  running_->variables[static_cast<size_t>(plan.assigned.front())] = ReadValue(plan);
  rowCount_ = 1;
}

void Interpreter::RunSetOption(const SetOptionStatement& statement) {
  const bool on = statement.value == "ON";
  if (statement.option == "nocount") {
    noCount_ = on;
  } else if (statement.option == "xact_abort") {
    xactAbort_ = on;
  } else if (statement.option == "identity_insert") {
    SetIdentityInsert(statement.table, on);
  } else if (statement.option == "lock_timeout") {
    int milliseconds = 0;
    std::from_chars(statement.value.data(), statement.value.data() + statement.value.size(), milliseconds);
    limits_.SetLockTimeout(milliseconds < 0 ? INT32_MAX : milliseconds);
  }
  rowCount_ = 0;
}

// It is on for one table at a time.
void Interpreter::SetIdentityInsert(const ObjectName& name, bool on) {
  const TablePtr table = catalog_.FindTable(name);
  if (!table) Fail(1088, {name.name});
  if (table->identityColumn < 0) Fail(8106, {table->name});
  const std::string& present = compiler_.IdentityInsert();
  const bool isOn = EqualNames(present, table->name);
  if (on && !isOn && !present.empty()) Fail(8107, {present, table->name});
  if (on != isOn) compiler_.SetIdentityInsert(on ? table->name : std::string());
}

Interpreter::Flow Interpreter::RunIf(const IfStatement& statement) {
  const bool holds = Test(*statement.condition);
  rowCount_ = 0;
  if (holds) return Run(*statement.thenBranch);
  return statement.elseBranch ? Run(*statement.elseBranch) : Flow::Next;
}

Interpreter::Flow Interpreter::RunWhile(const WhileStatement& statement) {
  while (Test(*statement.condition)) {
    rowCount_ = 0;
    const Flow flow = Run(*statement.body);
    if (!limits_.TakeStep()) throw limits_.CanceledAt(statement.line); // a body may be empty
    if (flow == Flow::Break) break;
    if (flow == Flow::Return || flow == Flow::Abort) return flow;
    BeginStatement();
  }
  rowCount_ = 0;
  return Flow::Next;
}

Interpreter::Flow Interpreter::RunReturn(const ReturnStatement& statement) {
  if (statement.value) running_->returnStatus = static_cast<int32_t>(EvaluateInteger(*statement.value));
  rowCount_ = 0;
  return Flow::Return;
}

void Interpreter::RunPrint(const PrintStatement& statement) {
  sink_->Message(Error(0, 0, 1, statement.line, EvaluateText(*statement.value)));
  rowCount_ = 0;
}

void Interpreter::RunTransaction(const TransactionStatement& statement) {
  switch (statement.action) {
  case TransactionAction::Begin: transaction_.Begin(); break;
  case TransactionAction::Commit: transaction_.Commit(); break;
  case TransactionAction::Rollback: transaction_.Rollback(); break;
  }
  rowCount_ = 0;
}

} // namespace tsql
