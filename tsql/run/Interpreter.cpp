#include "tsql/run/Interpreter.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "tsql/run/Diagnostics.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

Error WithLine(const Error& error, int line) {
  return {error.number, error.severity, error.state, error.line > 0 ? error.line : line, error.what()};
}

// The server has numbers up to 50 for itself, and they are small integers.
int TakeSessionNumber() {
  constexpr int kFirst = 51;
  constexpr int kMost = 32000;
  static std::atomic<int> taken = 0;
  return kFirst + taken++ % kMost;
}

// Whether the label is the statement, or in it where a jump may go on.
bool Holds(const Statement& statement, const LabelStatement& label) {
  switch (statement.kind) {
  case StatementKind::Label: return &statement == &label;
  case StatementKind::If: {
    const auto& branch = static_cast<const IfStatement&>(statement);
    return Holds(*branch.thenBranch, label) || (branch.elseBranch && Holds(*branch.elseBranch, label));
  }
  case StatementKind::While: return Holds(*static_cast<const WhileStatement&>(statement).body, label);
  case StatementKind::Block: {
    const StatementList& statements = static_cast<const BlockStatement&>(statement).statements;
    return std::ranges::any_of(statements, [&](const StatementPtr& inner) { return Holds(*inner, label); });
  }
  default: return false;
  }
}

} // namespace

Interpreter::Interpreter(const Connection& connection, Catalog& catalog, Compiler& compiler,
                         Definitions& definitions, FunctionContext& context, Transaction& transaction)
    : connection_(connection), catalog_(catalog), compiler_(compiler), definitions_(definitions),
      context_(context), transaction_(transaction), limits_(connection, transaction),
      tableVariables_(connection, catalog, definitions, transaction), number_(TakeSessionNumber()) {}

void Interpreter::Reset() {
  SetNow(std::nullopt);
  limits_.Reset();
  compiler_.SetIdentityInsert({});
  identity_ = Datum();
  rowCount_ = 0;
  lastError_ = 0;
  noCount_ = false;
  locksReads_ = false;
  xactAbort_ = false;
  LimitRows(0);
  compiler_.SetOptions({});
  ansiPadding_ = true;
  context_.firstDay = kUsualFirstDay;
  cursors_.clear();
  cursorRows_ = 0;
  fetchStatus_ = 0;
  definitions_.givenNumbers().Clear();
}

void Interpreter::BeginWork() {
  limits_.Begin();
  caught_.reset(); // the batch before may have ended within a CATCH block
}

// ---- entry points

// The table variables of a batch, which end with it.
struct Interpreter::BatchScope {
  BatchScope(Interpreter& interpreter, const CompiledUnit& unit)
      : tables(unit.tables.empty() ? nullptr : &interpreter.tableVariables_) {
    if (tables != nullptr) tables->Make(unit.tables);
  }
  BatchScope(const BatchScope&) = delete;
  BatchScope& operator=(const BatchScope&) = delete;
  ~BatchScope() {
    if (tables == nullptr) return;
    try {
      tables->Drop();
    } catch (...) { // NOLINT(bugprone-empty-catch): the next batch that has some drops what is left
    }
  }
  TableVariables* tables;
};

bool Interpreter::RunBatch(CompiledUnit& unit, RunningUnit& running, ResultSink& sink) {
  sink_ = &sink;
  running_ = &running;
  running.unit = &unit;
  running.variables.resize(unit.variables.size());
  failed_ = false;
  TakeQuotedIdentifier(unit);
  const BatchScope scope(*this, unit);
  RunList(*unit.body);
  return !failed_;
}

bool Interpreter::EndWork(ResultSink& sink) {
  if (transaction_.State() >= 0) return true;
  transaction_.RollbackIfOpen();
  Report(MakeError(3998, 1, {}), sink);
  return false;
}

void Interpreter::Report(const Error& error, ResultSink& sink) {
  failed_ = true;
  lastError_ = error.number;
  sink.Failed(error);
}

Error Interpreter::Translate(const SqliteFailure& failure) {
  return TranslateFailure(failure, context_, catalog_, compiler_, target_, Verb());
}

// ---- statements

Interpreter::Flow Interpreter::RunList(const StatementList& statements) {
  // The statement at which a jump goes on: the label, or one that holds it.
  const auto landing = [&] {
    return std::ranges::find_if(statements,
                                [&](const StatementPtr& statement) { return Holds(*statement, *jump_); });
  };
  auto at = jump_ == nullptr ? statements.begin() : landing();
  while (at != statements.end()) {
    const Flow flow = Run(**at);
    if (flow == Flow::Next) {
      ++at;
      continue;
    }
    if (flow != Flow::Goto) return flow;
    at = landing();
    if (at == statements.end()) return flow;
  }
  return Flow::Next;
}

void Interpreter::BeginStatement() {
  if (functions_ == 0) { // a function has the moment of its statement
    transaction_.Recover();
    catalog_.Settle();
    if (catalog_.EndedTable() != nullptr) DropEndedTables();
    context_.now.reset();
    context_.randomValues.clear();
  }
  context_.variables = &running_->variables;
  context_.error.reset();
  target_ = nullptr;
  verb_ = "";
  isOfMerge_ = false;
}

Interpreter::Flow Interpreter::Run(const Statement& statement) {
  try {
    if (!limits_.TakeStep()) throw limits_.CanceledAt(statement.line);
    BeginStatement();
    return Dispatch(statement);
  } catch (const SqliteFailure& failure) {
    if (limits_.Ended(failure)) throw limits_.CanceledAt(statement.line);
    return HandleError(Translate(failure), statement);
  } catch (const ErrorSequence& errors) {
    return HandleErrors(errors, statement);
  } catch (const Error& error) {
    return HandleError(error, statement);
  }
}

Interpreter::Flow Interpreter::HandleErrors(const ErrorSequence& errors, const Statement& statement) {
  if (tryDepth_ == 0 && functions_ == 0)
    for (const Error& error : errors.before) Report(WithLine(error, statement.line), *sink_);
  const Flow flow = HandleError(errors, statement);
  return EndsBatch(errors.before.front()) ? Flow::Abort : flow;
}

Interpreter::Flow Interpreter::HandleError(Error error, const Statement& statement) {
  error = WithLine(error, statement.line);
  if (functions_ > 0) throw Error(error); // it is the calling statement's
  // XACT_ABORT does not count for what RAISERROR reports, unless it is caught.
  constexpr int kRaised = 50000;
  const bool isRaised =
      statement.kind == StatementKind::Raiserror && error.number >= kRaised && tryDepth_ == 0;
  const bool aborts = xactAbort_ && !isRaised;
  const bool endsTransaction = EndsTransaction(error) || (aborts && transaction_.Count() > 0);
  transaction_.Synchronize();
  if (tryDepth_ > 0) {
    if (endsTransaction) transaction_.Doom();
    caughtProcedure_ = running_->procedure;
    throw Caught{error};
  }
  if (endsTransaction) transaction_.RollbackIfOpen();
  rowCount_ = 0;
  Report(error, *sink_);
  abortsAll_ = endsTransaction || aborts;
  return EndsBatch(error) || abortsAll_ ? Flow::Abort : Flow::Next;
}

Interpreter::Flow Interpreter::Dispatch(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Query: return RunQuery(static_cast<const QueryStatement&>(statement));
  case StatementKind::Insert:
  case StatementKind::Update:
  case StatementKind::Delete: {
    const Flow flow = RunChange(statement);
    if (flow != Flow::Next) return flow;
    break;
  }
  case StatementKind::Merge: {
    const Flow flow = RunMerge(static_cast<const MergeStatement&>(statement));
    if (flow != Flow::Next) return flow;
    break;
  }
  case StatementKind::InsertExecute:
    return RunInsertExecute(static_cast<const InsertExecuteStatement&>(statement));
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
  case StatementKind::Label:
    if (jump_ == &statement) jump_ = nullptr;
    return Flow::Next;
  case StatementKind::Goto: jump_ = static_cast<const GotoStatement&>(statement).target; return Flow::Goto;
  case StatementKind::DeclareCursor:
    RunDeclareCursor(static_cast<const DeclareCursorStatement&>(statement));
    break;
  case StatementKind::Cursor: RunCursor(static_cast<const CursorStatement&>(statement)); break;
  case StatementKind::Fetch: RunFetch(static_cast<const FetchStatement&>(statement)); break;
  case StatementKind::CheckIdentity:
    RunCheckIdentity(static_cast<const CheckIdentityStatement&>(statement));
    break;
  case StatementKind::Use: RunUse(static_cast<const UseStatement&>(statement)); break;
  case StatementKind::WaitFor: RunWaitFor(static_cast<const WaitForStatement&>(statement)); break;
  case StatementKind::TryCatch: return RunTryCatch(static_cast<const TryCatchStatement&>(statement));
  case StatementKind::Raiserror:
    RunRaiserror(static_cast<const RaiserrorStatement&>(statement));
    return Flow::Next;
  case StatementKind::Throw: return RunThrow(static_cast<const ThrowStatement&>(statement));
  case StatementKind::System:
    RunSystemProcedure(static_cast<const SystemStatement&>(statement));
    lastError_ = 0;
    return Flow::Return;
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

Interpreter::Flow Interpreter::RunIf(const IfStatement& statement) {
  if (jump_ != nullptr)
    return Run(Holds(*statement.thenBranch, *jump_) ? *statement.thenBranch : *statement.elseBranch);
  const bool holds = Test(*statement.condition);
  rowCount_ = 0;
  if (holds) return Run(*statement.thenBranch);
  return statement.elseBranch ? Run(*statement.elseBranch) : Flow::Next;
}

Interpreter::Flow Interpreter::RunWhile(const WhileStatement& statement) {
  // A jump into the body does not ask for the condition first.
  while (jump_ != nullptr || Test(*statement.condition)) {
    rowCount_ = 0;
    const Flow flow = Run(*statement.body);
    if (!limits_.TakeStep()) throw limits_.CanceledAt(statement.line); // a body may be empty
    if (flow == Flow::Break) break;
    if (flow == Flow::Return || flow == Flow::Abort) return flow;
    if (flow == Flow::Goto && !Holds(*statement.body, *jump_)) return flow;
    BeginStatement();
  }
  rowCount_ = 0;
  return Flow::Next;
}

Interpreter::Flow Interpreter::RunReturn(const ReturnStatement& statement) {
  if (const CreateFunctionStatement* function = running_->unit->function) {
    if (statement.value)
      running_->result = ReadValue(MakePlanner().ValuePlan(*statement.value, &function->returns));
    return Flow::Return;
  }
  if (statement.value) running_->returnStatus = static_cast<int32_t>(EvaluateInteger(*statement.value));
  rowCount_ = 0;
  return Flow::Return;
}

void Interpreter::RunPrint(const PrintStatement& statement) {
  sink_->Message(Error(0, 0, 1, statement.line, EvaluateText(*statement.value)));
  rowCount_ = 0;
}

void Interpreter::RunTransaction(const TransactionStatement& statement) {
  const std::string name = statement.nameValue ? EvaluateText(*statement.nameValue) : statement.name;
  switch (statement.action) {
  case TransactionAction::Begin: transaction_.Begin(name); break;
  case TransactionAction::Commit: transaction_.Commit(); break;
  case TransactionAction::Save: transaction_.Save(name); break;
  case TransactionAction::Rollback:
    if (takesRows_) Fail(3915, {});
    if (name.empty()) {
      transaction_.Rollback();
    } else {
      transaction_.RollbackTo(name);
    }
    break;
  }
  rowCount_ = 0;
}

// How long to wait: DELAY is a time of the day that passes, TIME one that comes.
void Interpreter::RunWaitFor(const WaitForStatement& statement) {
  Type type;
  const Datum value = Evaluate(*statement.time, type);
  if (value.IsNull()) return;
  int64_t ticks = -1;
  try {
    ticks = Convert(value, type, MakeType(TypeId::DateTime), ConvertMode::Cast).integer;
  } catch (const Error&) {
    Fail(148, {value.text});
  }
  // A text with a date in it is none.
  if (IsText(type) && (ticks < 0 || ticks >= kTicksPerDay)) Fail(148, {value.text});
  ticks = (ticks % kTicksPerDay + kTicksPerDay) % kTicksPerDay;
  if (statement.untilTime) {
    const int64_t now = context_.fixedNow
                            ? *context_.fixedNow
                            : ConvertMoment(LocalNow(), TypeId::DateTime2, MakeType(TypeId::DateTime));
    ticks = (ticks - now % kTicksPerDay + kTicksPerDay) % kTicksPerDay;
  }
  if (!limits_.Wait(std::chrono::milliseconds(ticks * 1000 / kTicksPerSecond)))
    throw limits_.CanceledAt(statement.line);
}

} // namespace tsql
