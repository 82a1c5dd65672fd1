#include "interpreter.h"

#include "collation.h"
#include "convert.h"
#include "datetime.h"
#include "diagnostics.h"
#include "errors.h"
#include "foreign_keys.h"
#include "parser.h"
#include "values.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <limits>
#include <utility>

namespace tsql {
namespace {

constexpr int kMaxNesting = 32;
constexpr size_t kMaxCachedBatches = 512;
constexpr int kWorkLimitReached = 8649;

const char* VerbOf(StatementKind kind) {
  switch (kind) {
  case StatementKind::Insert: return "INSERT";
  case StatementKind::Update: return "UPDATE";
  case StatementKind::Delete: return "DELETE";
  default: return "";
  }
}

Error WithLine(const Error& error, int line) {
  return {error.number, error.severity, error.state, error.line > 0 ? error.line : line, error.what()};
}

// Another frame for a while, however that ends.
class FrameSwap {
 public:
  FrameSwap(Frame*& current, Frame& other) : current_(current), saved_(std::exchange(current, &other)) {}
  FrameSwap(const FrameSwap&) = delete;
  FrameSwap& operator=(const FrameSwap&) = delete;
  ~FrameSwap() { current_ = saved_; }

 private:
  Frame*& current_;
  Frame* saved_;
};

} // namespace

// A procedure's own frame and temporary tables, ended however the procedure ends.
struct Interpreter::ProcedureScope {
  ProcedureScope(Interpreter& interpreter, Frame& frame)
      : owner(interpreter), savedFrame(std::exchange(interpreter.frame_, &frame)) {
    owner.catalog_.EnterScope();
    ++owner.nesting_;
  }
  ProcedureScope(const ProcedureScope&) = delete;
  ProcedureScope& operator=(const ProcedureScope&) = delete;
  ~ProcedureScope() {
    --owner.nesting_;
    owner.frame_ = savedFrame;
    for (const TablePtr& table : owner.catalog_.LeaveScope()) {
      try {
        owner.schema_.DropTable(*table);
      } catch (const SqliteFailure&) { // NOLINT(bugprone-empty-catch): the table went with a rollback
      }
    }
  }
  Interpreter& owner;
  Frame* savedFrame;
};

Interpreter::Interpreter(const Connection& connection, Catalog& catalog, FunctionContext& context,
                         Transaction& transaction)
    : connection_(connection), catalog_(catalog), context_(context), transaction_(transaction),
      schema_(connection, catalog) {}

void Interpreter::SetLockTimeout(int milliseconds) {
  lockTimeout_ = std::chrono::milliseconds(milliseconds);
  WatchLimits();
}

void Interpreter::SetWorkLimit(std::optional<int64_t> steps) {
  workLimit_ = steps;
  WatchLimits();
}

void Interpreter::SetTimeLimit(std::optional<std::chrono::milliseconds> limit) {
  timeLimit_ = limit;
  WatchLimits();
}

void Interpreter::WatchLimits() {
  constexpr int kInstructions = 1000;
  const auto step = [](void* self) { return static_cast<Interpreter*>(self)->TakeStep() ? 0 : 1; };
  sqlite3_progress_handler(connection_.Handle(), workLimit_ || timeLimit_ ? kInstructions : 0, step, this);
  // Waiting for a lock takes time, too.
  const std::chrono::milliseconds wait = timeLimit_ ? std::min(lockTimeout_, *timeLimit_) : lockTimeout_;
  sqlite3_busy_timeout(connection_.Handle(), static_cast<int>(wait.count()));
}

// A limit that was reached is taken away: what runs now clears up.
bool Interpreter::TakeLimitedStep() {
  if (workLimit_ && --workLeft_ < 0) {
    workLeft_ = std::numeric_limits<int64_t>::max();
    canceled_ = kWorkLimitReached;
    return false;
  }
  if (!IsPastDeadline()) return true;
  // A changing statement that is stopped takes the transaction with it. A short one is let through: the next
  // statement is then the one that does not run.
  constexpr std::chrono::seconds kGrace{1};
  if (transaction_.Count() > 0 && Clock::now() < *deadline_ + kGrace && IsChanging()) return true;
  deadline_.reset();
  canceled_ = kTimeoutExpired;
  return false;
}

bool Interpreter::IsPastDeadline() const {
  return deadline_ && Clock::now() >= *deadline_;
}

bool Interpreter::IsChanging() const {
  sqlite3_stmt* statement = nullptr;
  while ((statement = sqlite3_next_stmt(connection_.Handle(), statement)) != nullptr)
    if (sqlite3_stmt_busy(statement) != 0 && sqlite3_stmt_readonly(statement) == 0) return true;
  return false;
}

bool Interpreter::IsCanceled(const SqliteFailure& failure) {
  if ((failure.code & 0xFF) == SQLITE_BUSY && IsPastDeadline()) {
    deadline_.reset();
    canceled_ = kTimeoutExpired;
  }
  return canceled_ != 0;
}

void Interpreter::Reset() {
  SetNow(std::nullopt);
  workLimit_.reset();
  timeLimit_.reset();
  SetLockTimeout(kDefaultLockTimeout);
  identityInsertTable_.clear();
  identity_ = Datum();
  rowCount_ = 0;
  lastError_ = 0;
  noCount_ = false;
  xactAbort_ = false;
}

void Interpreter::BeginWork() {
  workLeft_ = workLimit_.value_or(0);
  deadline_.reset();
  if (timeLimit_) deadline_ = Clock::now() + *timeLimit_;
  canceled_ = 0;
  caught_.reset(); // a batch that was cut short inside a CATCH block has left it
}

// ---- compiling

std::shared_ptr<CompiledUnit> Interpreter::CompileBatch(std::string_view text,
                                                        const std::vector<VariableInfo>& variables,
                                                        const std::vector<Type>& markers) {
  // The parameters' types are part of what a batch means.
  std::string key(text);
  for (const VariableInfo& variable : variables)
    key += '\0' + variable.name + ' ' + std::to_string(EncodeType(variable.type));
  for (const Type& marker : markers) key += '\0' + std::to_string(EncodeType(marker));
  const auto found = batches_.find(key);
  if (found != batches_.end()) return found->second;
  auto unit = std::make_shared<CompiledUnit>();
  unit->batch = ParseBatch(std::string(text));
  unit->body = &unit->batch->statements;
  unit->variables = variables;
  unit->markers = markers;
  unit->plans.resize(static_cast<size_t>(unit->batch->slots));
  Planner(connection_, catalog_, *unit).CompileAll(identityInsertTable_);
  if (batches_.size() >= kMaxCachedBatches) batches_.clear();
  batches_.emplace(std::move(key), unit);
  return unit;
}

std::shared_ptr<CompiledUnit> Interpreter::CompileProcedure(const ObjectName& name) {
  const ModulePtr module = catalog_.FindProcedure(name);
  if (!module) Fail(2812, {name.name});
  std::shared_ptr<CompiledUnit>& cached = procedures_[name.name];
  if (cached && cached->module->text == module->text) return cached;
  auto unit = std::make_shared<CompiledUnit>();
  unit->batch = ParseBatch(module->text);
  unit->procedure = static_cast<const CreateProcedureStatement*>(unit->batch->statements.front().get());
  unit->body = &unit->procedure->body;
  unit->module = module;
  for (const ProcedureParameter& parameter : unit->procedure->parameters)
    unit->variables.push_back({parameter.name, parameter.type});
  unit->plans.resize(static_cast<size_t>(unit->batch->slots));
  Planner(connection_, catalog_, *unit).CompileAll(identityInsertTable_);
  cached = unit;
  return unit;
}

// ---- entry points

bool Interpreter::RunBatch(CompiledUnit& unit, Frame& frame, ResultSink& sink) {
  sink_ = &sink;
  frame_ = &frame;
  frame.unit = &unit;
  frame.variables.resize(unit.variables.size());
  failed_ = false;
  RunList(*unit.body);
  return !failed_;
}

bool Interpreter::RunProcedure(CompiledUnit& unit, Frame& frame, ResultSink& sink) {
  sink_ = &sink;
  frame.unit = &unit;
  failed_ = false;
  const ProcedureScope scope(*this, frame);
  RunList(*unit.body);
  return !failed_;
}

void Interpreter::FillDefaults(CompiledUnit& unit, Frame& frame, const std::vector<bool>& given) {
  frame.unit = &unit;
  const FrameSwap swap(frame_, frame);
  const std::vector<ProcedureParameter>& parameters = unit.procedure->parameters;
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (given[i]) continue;
    if (!parameters[i].defaultValue.expr) Fail(201, {unit.procedure->name.name, parameters[i].name});
    Plan& plan = MakePlanner().ValuePlan(parameters[i].defaultValue, &parameters[i].type);
    const StatementUse use(plan.statement);
    plan.statement.Step();
    frame.variables[i] = plan.statement.ColumnDatum(0);
  }
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
  context_.now.reset();
  context_.variables = &frame_->variables;
  context_.error.reset();
  target_ = nullptr;
  verb_ = "";
}

Interpreter::Flow Interpreter::Run(const Statement& statement) {
  try {
    if (!TakeStep()) throw CanceledAt(statement.line);
    BeginStatement();
    return Dispatch(statement);
  } catch (const SqliteFailure& failure) {
    if (IsCanceled(failure)) throw CanceledAt(statement.line);
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
    caughtProcedure_ = frame_->procedure;
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

// ---- parameters and values

Datum Interpreter::GlobalDatum(GlobalValue value) const {
  switch (value) {
  case GlobalValue::RowCount: return Datum::OfInteger(rowCount_);
  case GlobalValue::Identity: return identity_;
  case GlobalValue::ScopeIdentity: return frame_->scopeIdentity;
  case GlobalValue::Error: return Datum::OfInteger(lastError_);
  case GlobalValue::TransactionCount: return Datum::OfInteger(transaction_.Count());
  case GlobalValue::ProcedureNesting: return Datum::OfInteger(nesting_);
  default: break;
  }
  if (!caught_) return {};
  switch (value) {
  case GlobalValue::ErrorNumber: return Datum::OfInteger(caught_->number);
  case GlobalValue::ErrorMessage: return Datum::OfText(caught_->what());
  case GlobalValue::ErrorSeverity: return Datum::OfInteger(caught_->severity);
  case GlobalValue::ErrorState: return Datum::OfInteger(caught_->state);
  case GlobalValue::ErrorLine: return Datum::OfInteger(caught_->line);
  default: return caughtProcedure_.empty() ? Datum() : Datum::OfText(caughtProcedure_);
  }
}

const Datum& Interpreter::ParameterValue(const ParameterRef& ref) {
  const auto index = static_cast<size_t>(ref.index);
  if (ref.kind == BoundExpr::Kind::Variable) return frame_->variables[index];
  if (ref.kind == BoundExpr::Kind::Marker) return frame_->markers[index];
  return globals_.emplace_back(GlobalDatum(static_cast<GlobalValue>(ref.index)));
}

void Interpreter::BindParameters(Plan& plan) {
  globals_.clear();
  // The bound values must not move while the statement runs.
  globals_.reserve(plan.parameters.size());
  int index = 1;
  for (const ParameterRef& ref : plan.parameters) plan.statement.Bind(index++, ParameterValue(ref));
}

Datum Interpreter::Evaluate(const Evaluated& value, Type& type) {
  Plan& plan = MakePlanner().ValuePlan(value, nullptr);
  type = plan.columns[0].type;
  BindParameters(plan);
  const StatementUse use(plan.statement);
  plan.statement.Step();
  return plan.statement.ColumnDatum(0);
}

std::string Interpreter::EvaluateText(const Evaluated& value) {
  Type type;
  const Datum datum = Evaluate(value, type);
  if (datum.IsNull()) return {};
  return Convert(datum, type, MakeType(TypeId::NVarChar, -1), ConvertMode::Cast).text;
}

int64_t Interpreter::EvaluateInteger(const Evaluated& value) {
  Type type;
  const Datum datum = Evaluate(value, type);
  if (datum.IsNull()) return 0;
  return Convert(datum, type, MakeType(TypeId::Int), ConvertMode::Cast).integer;
}

bool Interpreter::Test(const Evaluated& condition) {
  Plan& plan = MakePlanner().ConditionPlan(condition);
  if (plan.wantsLock) transaction_.BeforeWrite();
  BindParameters(plan);
  const StatementUse use(plan.statement);
  return plan.statement.Step();
}

// ---- queries and changes

void Interpreter::SendRowCount(int64_t count) {
  rowCount_ = count;
  if (!noCount_) sink_->RowCount(count);
}

Interpreter::Flow Interpreter::RunQuery(const QueryStatement& statement) {
  if (statement.query->select && statement.query->select->into) {
    RunSelectInto(statement);
  } else {
    Plan& plan = MakePlanner().QueryPlan(statement);
    if (plan.wantsLock) transaction_.BeforeWrite();
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

void Interpreter::ReturnRows(Plan& plan) {
  const StatementUse use(plan.statement);
  // The first row is computed before anything is sent: a statement that fails at once gives no result.
  bool hasRow = plan.statement.Step();
  sink_->BeginRows(plan.columns);
  std::vector<Value> values(plan.columns.size());
  int64_t count = 0;
  for (; hasRow; hasRow = plan.statement.Step()) {
    for (size_t i = 0; i < values.size(); ++i)
      values[i] = ValueOfColumn(plan.statement, static_cast<int>(i), plan.columns[i].type);
    sink_->Row(values);
    ++count;
  }
  rowCount_ = count;
  sink_->EndRows(count);
}

void Interpreter::AssignRows(Plan& plan) {
  const StatementUse use(plan.statement);
  // The parameters stay bound to the variables' former values, which therefore must outlive the steps.
  const std::vector<Datum> former = frame_->variables;
  int index = 1;
  for (const ParameterRef& ref : plan.parameters) {
    if (ref.kind == BoundExpr::Kind::Variable)
      plan.statement.Bind(index, former[static_cast<size_t>(ref.index)]);
    ++index;
  }
  int64_t count = 0;
  while (plan.statement.Step()) {
    for (size_t i = 0; i < plan.assigned.size(); ++i)
      frame_->variables[static_cast<size_t>(plan.assigned[i])] =
          plan.statement.ColumnDatum(static_cast<int>(i));
    ++count;
  }
  rowCount_ = count;
}

void Interpreter::RunSelectInto(const QueryStatement& statement) {
  const ObjectName& name = *statement.query->select->into;
  StatementScope scope(transaction_, PlaceOf(name));
  CompiledUnit& unit = *frame_->unit;
  Binder binder(catalog_, unit.variables, unit.markers);
  BoundInsert insert;
  insert.query = binder.BindStatementQuery(*statement.query);
  schema_.CreateTable(name, insert.query->columns);
  insert.table = catalog_.FindTable(name);
  for (size_t i = 0; i < insert.query->columns.size(); ++i) insert.columns.push_back(static_cast<int>(i));
  EmittedSql emitted = Emitter().EmitInsert(insert);
  Plan plan;
  plan.statement = connection_.Prepare(emitted.sql);
  plan.parameters = std::move(emitted.parameters);
  BindParameters(plan);
  plan.statement.Step();
  scope.Complete();
  BumpSchema(PlaceOf(name));
  SendRowCount(sqlite3_changes64(connection_.Handle()));
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

// SQLite looks for duplicates row by row, the server when all rows are changed: an update that shifts keys is
// made by taking its rows out and putting the new ones in.
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
  // Where no column is SQLite's row number, the rows keep theirs all the same.
  const bool hasOwn = table.rowidColumn >= 0;
  connection_.Run("INSERT INTO " + table.SqlName() + "(" + (hasOwn ? "" : "_rowid_, ") + columns +
                  ") SELECT " + (hasOwn ? columns : all) + " FROM " + kRows);
  const int64_t count = sqlite3_changes64(connection_.Handle());
  connection_.Run(std::string("DROP TABLE ") + kRows);
  scope.Complete();
  return count;
}

void Interpreter::RunChange(const Statement& statement) {
  Plan& plan = MakePlanner().ChangePlan(statement, identityInsertTable_);
  const TablePtr target = plan.target;
  target_ = target.get();
  verb_ = VerbOf(statement.kind);
  transaction_.BeforeWrite();
  BindParameters(plan);
  int64_t count = 0;
  try {
    count = MakeChange(*target, [&] {
      try {
        return StepChange(plan);
      } catch (const SqliteFailure& failure) {
        const bool isDuplicate = failure.code == SQLITE_CONSTRAINT_UNIQUE ||
                                 failure.code == SQLITE_CONSTRAINT_PRIMARYKEY ||
                                 failure.code == SQLITE_CONSTRAINT_ROWID;
        if (statement.kind != StatementKind::Update || !isDuplicate) throw;
        return ReplaceRows(static_cast<const UpdateStatement&>(statement), *target);
      }
    });
  } catch (const SqliteFailure& failure) {
    if (IsCanceled(failure)) throw;
    // The table's name in the message needs the target, which must not outlive the statement here.
    Error error = Translate(failure);
    target_ = nullptr;
    throw Error(std::move(error));
  }
  target_ = nullptr;
  if (statement.kind == StatementKind::Insert && count > 0 && target->identityColumn >= 0) {
    const int64_t last = sqlite3_last_insert_rowid(connection_.Handle());
    identity_ = Convert(Datum::OfInteger(last), MakeType(TypeId::BigInt), MakeDecimal(kMaxPrecision, 0),
                        ConvertMode::Cast);
    frame_->scopeIdentity = identity_;
  }
  SendRowCount(count);
}

// ---- variables and control flow

void Interpreter::RunDeclare(const DeclareStatement& statement) {
  for (const VariableDeclaration& variable : statement.variables) {
    const auto index = static_cast<size_t>(FindVariable(frame_->unit->variables, variable.name));
    if (!variable.initial.expr) {
      // Passing the declaration again in a loop keeps the value, as on the server.
      continue;
    }
    Plan& plan = MakePlanner().ValuePlan(variable.initial, &variable.type);
    BindParameters(plan);
    const StatementUse use(plan.statement);
    plan.statement.Step();
    Datum value = plan.statement.ColumnDatum(0);
    frame_->variables[index] = std::move(value);
  }
}

void Interpreter::RunSet(const SetVariableStatement& statement) {
  // The plan remembers the variable, so that a loop does not look for its name.
  const std::vector<int>& known = frame_->unit->plans[static_cast<size_t>(statement.value.slot)].assigned;
  const int found = known.empty() ? FindVariable(frame_->unit->variables, statement.name) : known.front();
  const auto index = static_cast<size_t>(found);
  Plan& plan = MakePlanner().ValuePlan(statement.value, &frame_->unit->variables[index].type);
  if (plan.assigned.empty()) plan.assigned.push_back(found);
  Datum value;
  {
    BindParameters(plan);
    const StatementUse use(plan.statement);
    plan.statement.Step();
    value = plan.statement.ColumnDatum(0);
  }
  frame_->variables[index] = std::move(value);
  rowCount_ = 1;
}

void Interpreter::RunSetOption(const SetOptionStatement& statement) {
  const bool on = statement.value == "ON";
  if (statement.option == "nocount") {
    noCount_ = on;
  } else if (statement.option == "xact_abort") {
    xactAbort_ = on;
  } else if (statement.option == "identity_insert") {
    if (!catalog_.FindTable(statement.table)) Fail(208, {statement.table.name});
    identityInsertTable_ = on ? statement.table.name : std::string();
  } else if (statement.option == "lock_timeout") {
    int milliseconds = 0;
    std::from_chars(statement.value.data(), statement.value.data() + statement.value.size(), milliseconds);
    SetLockTimeout(milliseconds < 0 ? INT32_MAX : milliseconds);
  }
}

Interpreter::Flow Interpreter::RunIf(const IfStatement& statement) {
  if (Test(statement.condition)) return Run(*statement.thenBranch);
  return statement.elseBranch ? Run(*statement.elseBranch) : Flow::Next;
}

Interpreter::Flow Interpreter::RunWhile(const WhileStatement& statement) {
  while (Test(statement.condition)) {
    const Flow flow = Run(*statement.body);
    if (!TakeStep()) throw CanceledAt(statement.line); // a body may be empty
    if (flow == Flow::Break) break;
    if (flow == Flow::Return || flow == Flow::Abort) return flow;
    BeginStatement();
  }
  return Flow::Next;
}

Interpreter::Flow Interpreter::RunReturn(const ReturnStatement& statement) {
  if (statement.value.expr) frame_->returnStatus = static_cast<int32_t>(EvaluateInteger(statement.value));
  return Flow::Return;
}

void Interpreter::RunPrint(const PrintStatement& statement) {
  sink_->Message(Error(0, 0, 1, statement.line, EvaluateText(statement.value)));
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

// ---- errors on purpose

Interpreter::Flow Interpreter::RunTryCatch(const TryCatchStatement& statement) {
  Frame* frame = frame_;
  ++tryDepth_;
  try {
    const Flow flow = RunList(statement.tryBody);
    --tryDepth_;
    return flow;
  } catch (const Caught& caught) {
    --tryDepth_;
    frame_ = frame;
    const std::optional<Error> outer = std::exchange(caught_, caught.error);
    lastError_ = caught.error.number;
    const Flow flow = RunList(statement.catchBody);
    caught_ = outer;
    return flow;
  } catch (...) {
    --tryDepth_;
    throw;
  }
}

void Interpreter::RunRaiserror(const RaiserrorStatement& statement) {
  Type type;
  const Datum message = Evaluate(statement.arguments[0], type);
  if (!IsText(type)) FailUnsupported("RAISERROR with a message number");
  std::string text;
  size_t argument = 3;
  for (size_t i = 0; i < message.text.size(); ++i) {
    const char next = i + 1 < message.text.size() ? message.text[i + 1] : '\0';
    if (message.text[i] != '%' || (next != 's' && next != 'd' && next != 'i' && next != '%')) {
      text += message.text[i];
      continue;
    }
    ++i;
    if (next == '%') {
      text += '%';
    } else if (argument < statement.arguments.size()) {
      text += EvaluateText(statement.arguments[argument++]);
    } else {
      text += "(null)";
    }
  }
  constexpr int kUserError = 50000;
  const Error error(kUserError, static_cast<int>(EvaluateInteger(statement.arguments[1])),
                    static_cast<int>(EvaluateInteger(statement.arguments[2])), statement.line, text);
  if (error.severity > 10) throw Error(error);
  sink_->Message(error);
}

Interpreter::Flow Interpreter::RunThrow(const ThrowStatement& statement) {
  std::optional<Error> error = caught_;
  if (!statement.arguments.empty()) {
    const auto number = static_cast<int>(EvaluateInteger(statement.arguments[0]));
    error.emplace(number, 16, static_cast<int>(EvaluateInteger(statement.arguments[2])), statement.line,
                  EvaluateText(statement.arguments[1]));
  }
  if (!error) FailUnsupported("THROW without arguments outside a CATCH block");
  if (tryDepth_ > 0) throw Caught{*error};
  Report(*error, *sink_);
  abortsAll_ = true;
  return Flow::Abort;
}

// ---- procedures

Interpreter::Flow Interpreter::RunNested(CompiledUnit& unit, Frame& frame) {
  if (nesting_ >= kMaxNesting) Fail(217, {});
  frame.unit = &unit;
  frame.variables.resize(unit.variables.size());
  Flow flow = Flow::Next;
  {
    const ProcedureScope scope(*this, frame);
    flow = RunList(*unit.body);
  }
  // An error that ends a procedure does not always end its caller.
  return flow == Flow::Abort && abortsAll_ ? Flow::Abort : Flow::Next;
}

void Interpreter::BindArguments(const ExecuteStatement& statement, CompiledUnit& unit, Frame& callee) {
  const std::vector<ProcedureParameter>& parameters = unit.procedure->parameters;
  std::vector<bool> given(parameters.size(), false);
  callee.variables.resize(unit.variables.size());
  size_t position = 0;
  for (const ExecuteArgument& argument : statement.arguments) {
    size_t index = position++;
    if (!argument.name.empty()) {
      const int found = FindVariable(unit.variables, argument.name);
      if (found < 0 || static_cast<size_t>(found) >= parameters.size())
        Fail(8145, {argument.name, statement.procedure.name});
      index = static_cast<size_t>(found);
    }
    if (index >= parameters.size()) Fail(8144, {statement.procedure.name});
    if (argument.useDefault) continue;
    Type type;
    const Datum value = Evaluate(argument.value, type);
    callee.variables[index] = Convert(value, type, parameters[index].type, ConvertMode::Cast);
    given[index] = true;
  }
  FillDefaults(unit, callee, given);
}

void Interpreter::TakeOutputs(const ExecuteStatement& statement, const CompiledUnit& unit,
                              const Frame& callee) {
  size_t position = 0;
  for (const ExecuteArgument& argument : statement.arguments) {
    size_t index = position++;
    if (argument.outputVariable.empty()) continue;
    if (!argument.name.empty()) index = static_cast<size_t>(FindVariable(unit.variables, argument.name));
    if (!unit.procedure->parameters[index].output) continue;
    const auto target = static_cast<size_t>(FindVariable(frame_->unit->variables, argument.outputVariable));
    frame_->variables[target] = Convert(callee.variables[index], unit.variables[index].type,
                                        frame_->unit->variables[target].type, ConvertMode::Cast);
  }
}

Interpreter::Flow Interpreter::RunExecute(const ExecuteStatement& statement) {
  if (statement.text.expr) return RunText(statement);
  const std::shared_ptr<CompiledUnit> unit = CompileProcedure(statement.procedure);
  Frame callee;
  callee.procedure = unit->procedure->name.name;
  BindArguments(statement, *unit, callee);
  const Flow flow = RunNested(*unit, callee);
  if (flow == Flow::Abort) return flow;
  TakeOutputs(statement, *unit, callee);
  if (!statement.returnVariable.empty()) {
    const auto target = static_cast<size_t>(FindVariable(frame_->unit->variables, statement.returnVariable));
    frame_->variables[target] = Convert(Datum::OfInteger(callee.returnStatus), MakeType(TypeId::Int),
                                        frame_->unit->variables[target].type, ConvertMode::Cast);
  }
  return Flow::Next;
}

Interpreter::Flow Interpreter::RunText(const ExecuteStatement& statement) {
  const std::shared_ptr<CompiledUnit> unit = CompileBatch(EvaluateText(statement.text), {}, {});
  Frame callee;
  return RunNested(*unit, callee);
}

// ---- definitions

void Interpreter::BumpSchema(Place place) {
  if (place != Place::Temp) transaction_.MarkSchemaChange();
}

void Interpreter::RunModule(const ObjectName& name, ObjectKind kind, const std::string& text, bool alter) {
  StatementScope scope(transaction_, Place::Main);
  const bool isView = kind == ObjectKind::View;
  const ModulePtr existing = isView ? catalog_.FindView(name) : catalog_.FindProcedure(name);
  if (!alter && catalog_.Exists(name)) Fail(2714, {name.name});
  if (alter && !existing) Fail(208, {name.name});
  catalog_.AddModule(kind, {existing ? existing->name : name.name, text});
  scope.Complete();
  BumpSchema(Place::Main);
}

void Interpreter::RunDrop(const DropStatement& statement) {
  for (const ObjectName& name : statement.names) {
    const Place place = PlaceOf(name);
    StatementScope scope(transaction_, place);
    switch (statement.object) {
    case ObjectKind::Table: {
      const TablePtr table = catalog_.FindTable(name);
      if (!table && !statement.ifExists) Fail(3701, {"table", name.name});
      if (table) schema_.DropTable(*table);
      break;
    }
    case ObjectKind::Index: schema_.DropIndex(name, statement.ifExists); break;
    default: {
      const bool isView = statement.object == ObjectKind::View;
      const ModulePtr module = isView ? catalog_.FindView(name) : catalog_.FindProcedure(name);
      if (!module && !statement.ifExists) Fail(3701, {isView ? "view" : "procedure", name.name});
      if (module) catalog_.RemoveModule(std::string(module->name));
    }
    }
    scope.Complete();
    BumpSchema(place);
  }
}

void Interpreter::RunTruncate(const TruncateStatement& statement) {
  const TablePtr table = catalog_.FindTable(statement.table);
  if (!table) Fail(4701, {statement.table.name});
  StatementScope scope(transaction_, table->place);
  schema_.TruncateTable(*table);
  scope.Complete();
}

void Interpreter::RunDefinition(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::CreateTable: {
    const auto& create = static_cast<const CreateTableStatement&>(statement);
    StatementScope scope(transaction_, PlaceOf(create.table));
    schema_.CreateTable(create);
    scope.Complete();
    BumpSchema(PlaceOf(create.table));
    break;
  }
  case StatementKind::CreateIndex: {
    const auto& create = static_cast<const CreateIndexStatement&>(statement);
    StatementScope scope(transaction_, PlaceOf(create.table));
    schema_.CreateIndex(create);
    scope.Complete();
    BumpSchema(PlaceOf(create.table));
    break;
  }
  case StatementKind::AlterTable: {
    const auto& alter = static_cast<const AlterTableStatement&>(statement);
    StatementScope scope(transaction_, PlaceOf(alter.table));
    schema_.AlterTable(alter);
    scope.Complete();
    BumpSchema(PlaceOf(alter.table));
    break;
  }
  case StatementKind::Drop: RunDrop(static_cast<const DropStatement&>(statement)); break;
  case StatementKind::Truncate: RunTruncate(static_cast<const TruncateStatement&>(statement)); break;
  case StatementKind::CreateView: {
    const auto& view = static_cast<const CreateViewStatement&>(statement);
    // The view must hold together now, not only when it is used.
    CompiledUnit& unit = *frame_->unit;
    Binder(catalog_, unit.variables, unit.markers).BindStatementQuery(*view.query);
    RunModule(view.name, ObjectKind::View, view.text, view.alter);
    break;
  }
  default: {
    assert(statement.kind == StatementKind::CreateProcedure);
    const auto& procedure = static_cast<const CreateProcedureStatement&>(statement);
    RunModule(procedure.name, ObjectKind::Procedure, procedure.text, procedure.alter);
  }
  }
}

} // namespace tsql
