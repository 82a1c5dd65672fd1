#include <optional>
#include <utility>

#include "tsql/run/Interpreter.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"
#include "tsql/values/NameText.h"

namespace tsql {
namespace {

// Makes another unit the running one, until the end of the block.
class RunningSwap {
 public:
  RunningSwap(RunningUnit*& current, RunningUnit& other)
      : current_(current), saved_(std::exchange(current, &other)) {}
  RunningSwap(const RunningSwap&) = delete;
  RunningSwap& operator=(const RunningSwap&) = delete;
  ~RunningSwap() { current_ = saved_; }

 private:
  RunningUnit*& current_;
  RunningUnit* saved_;
};

} // namespace

// Holds a running procedure and its temporary tables, and ends them when the procedure ends, by an exception
// too. The SET options that it changes end with it as well.
struct Interpreter::ProcedureScope {
  ProcedureScope(Interpreter& interpreter, RunningUnit& running)
      : owner(interpreter), savedUnit(std::exchange(interpreter.running_, &running)), noCount(owner.noCount_),
        locksReads(owner.locksReads_), xactAbort(owner.xactAbort_), lockTimeout(owner.limits_.LockTimeout()),
        rowLimit(owner.rowLimit_), firstDay(owner.context_.firstDay), options(owner.compiler_.Options()),
        ansiPadding(owner.ansiPadding_), identityInsert(owner.compiler_.IdentityInsert()) {
    const std::optional<ModuleOptions>& own = running.unit->options;
    if (own) owner.compiler_.SetOptions({own->quotedIdentifier, {own->ansiNulls, options.bind.concatNull}});
    owner.TakeQuotedIdentifier(*running.unit);
    owner.catalog_.EnterScope();
    ++owner.nesting_;
  }
  ProcedureScope(const ProcedureScope&) = delete;
  ProcedureScope& operator=(const ProcedureScope&) = delete;
  ~ProcedureScope() {
    --owner.nesting_;
    owner.running_ = savedUnit;
    owner.noCount_ = noCount;
    owner.locksReads_ = locksReads;
    owner.xactAbort_ = xactAbort;
    owner.LimitRows(rowLimit);
    owner.compiler_.SetOptions(options);
    owner.ansiPadding_ = ansiPadding;
    owner.context_.firstDay = firstDay;
    if (lockTimeout != owner.limits_.LockTimeout()) owner.limits_.SetLockTimeout(lockTimeout);
    owner.compiler_.SetIdentityInsert(std::move(identityInsert));
    owner.catalog_.LeaveScope();
    try {
      owner.DropEndedTables();
    } catch (...) { // NOLINT(bugprone-empty-catch): the next statement drops what is left
    }
  }
  Interpreter& owner;
  RunningUnit* savedUnit;
  bool noCount;
  bool locksReads;
  bool xactAbort;
  int lockTimeout;
  int64_t rowLimit;
  int firstDay;
  CompileOptions options;
  bool ansiPadding;
  TablePtr identityInsert;
};

bool Interpreter::RunProcedure(CompiledUnit& unit, RunningUnit& running, ResultSink& sink) {
  sink_ = &sink;
  running_ = &running;
  running.unit = &unit;
  failed_ = false;
  BeginStatement();
  const ProcedureScope scope(*this, running);
  if (!unit.tables.empty()) tableVariables_.Make(unit.tables);
  RunList(*unit.body);
  return !failed_;
}

void Interpreter::FillDefaults(CompiledUnit& unit, RunningUnit& running, const std::vector<bool>& given) {
  running.unit = &unit;
  const RunningSwap swap(running_, running);
  const std::vector<ProcedureParameter>& parameters = unit.procedure->parameters;
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (given[i]) continue;
    if (!parameters[i].defaultValue) Fail(201, {unit.procedure->name.name, parameters[i].name});
    running.variables[i] =
        ReadValue(MakePlanner().ValuePlan(*parameters[i].defaultValue, &parameters[i].type));
  }
}

Interpreter::Flow Interpreter::RunNested(CompiledUnit& unit, RunningUnit& running) {
  if (nesting_ >= kMaxNesting) Fail(217, {});
  running.unit = &unit;
  running.variables.resize(unit.variables.size());
  Flow flow = Flow::Next;
  {
    const ProcedureScope scope(*this, running);
    if (unit.trigger != nullptr) xactAbort_ = true;
    if (!unit.tables.empty()) tableVariables_.Make(unit.tables);
    flow = RunList(*unit.body);
  }
  // An error that ends a procedure does not always end its caller, one that ends a trigger does.
  return flow == Flow::Abort && (abortsAll_ || unit.trigger != nullptr) ? Flow::Abort : Flow::Next;
}

Datum Interpreter::ConvertArgument(const Datum& value, const Type& from, const Type& to) {
  try {
    return Convert(value, from, to, ConvertMode::Cast);
  } catch (const Error&) {
    Fail(8114, {TypeName(from.id), TypeName(to.id)}); // whatever is wrong with it
  }
}

void Interpreter::BindArguments(const ExecuteStatement& statement, CompiledUnit& unit, RunningUnit& callee) {
  const std::vector<ProcedureParameter>& parameters = unit.procedure->parameters;
  std::vector<bool> given(parameters.size(), false);
  callee.variables.resize(unit.variables.size());
  size_t position = 0;
  for (const ExecuteArgument& argument : statement.arguments) {
    const size_t index = ParameterIndex(unit, argument.name, position++);
    if (argument.useDefault) continue;
    Type type;
    const Datum value = Evaluate(*argument.value, type);
    callee.variables[index] = ConvertArgument(value, type, parameters[index].type);
    given[index] = true;
  }
  FillDefaults(unit, callee, given);
}

void Interpreter::TakeOutputs(const ExecuteStatement& statement, const CompiledUnit& unit,
                              const RunningUnit& callee) {
  size_t position = 0;
  for (const ExecuteArgument& argument : statement.arguments) {
    const size_t index = ParameterIndex(unit, argument.name, position++);
    if (argument.outputVariable.empty()) continue;
    if (!unit.procedure->parameters[index].output) continue;
    const auto target = static_cast<size_t>(FindVariable(running_->unit->variables, argument.outputVariable));
    running_->variables[target] = Convert(callee.variables[index], unit.variables[index].type,
                                          running_->unit->variables[target].type, ConvertMode::Cast);
  }
}

// The name as it is written, or as a variable has it now. No procedure has a name that is none.
ObjectName Interpreter::ProcedureName(const ExecuteStatement& statement) const {
  if (statement.nameVariable.empty()) return statement.procedure;
  const auto index = static_cast<size_t>(FindVariable(running_->unit->variables, statement.nameVariable));
  const Datum text = Convert(running_->variables[index], running_->unit->variables[index].type,
                             MakeType(TypeId::NVarChar, -1), ConvertMode::Cast);
  const std::string written(TrimTrailingBlanks(text.text));
  const std::optional<std::vector<std::string>> parts = NameParts(written);
  if (!parts) Fail(2812, {written});
  const size_t count = parts->size();
  const bool isHere = count < 3 || (count == 3 && EqualNames(parts->front(), catalog_.DatabaseName()));
  if (!isHere) Refuse("A name with the part of another database");
  ObjectName name = statement.procedure;
  name.name = parts->back();
  if (count > 2) name.database = parts->front();
  if (count > 1) name.schema = (*parts)[count - 2];
  if (count > 1) name.home.clear();
  return name;
}

Interpreter::Flow Interpreter::RunExecute(const ExecuteStatement& statement) {
  if (functions_ > 0) Fail(557, {});
  if (statement.text) return RunText(statement);
  const ObjectName name = ProcedureName(statement);
  if (statement.isDynamic || EqualNames(name.name, kDynamicProcedure)) return RunDynamic(statement);
  const std::shared_ptr<CompiledUnit> unit = compiler_.CompileProcedure(name);
  RunningUnit callee;
  callee.procedure = unit->procedure->name.name;
  BindArguments(statement, *unit, callee);
  const Flow flow = RunNested(*unit, callee);
  if (flow == Flow::Abort) return flow;
  TakeOutputs(statement, *unit, callee);
  if (!statement.returnVariable.empty()) {
    const auto target =
        static_cast<size_t>(FindVariable(running_->unit->variables, statement.returnVariable));
    running_->variables[target] = Convert(Datum::OfInteger(callee.returnStatus), MakeType(TypeId::Int),
                                          running_->unit->variables[target].type, ConvertMode::Cast);
  }
  return Flow::Next;
}

Interpreter::Flow Interpreter::RunText(const ExecuteStatement& statement) {
  const std::shared_ptr<CompiledUnit> unit = compiler_.CompileBatch(EvaluateText(*statement.text), {});
  RunningUnit callee;
  return RunNested(*unit, callee);
}

} // namespace tsql
