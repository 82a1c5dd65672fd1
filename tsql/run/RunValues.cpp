#include "tsql/compile/IntegerExpression.h"
#include "tsql/run/Interpreter.h"
#include "tsql/values/Conversion.h"

namespace tsql {

Datum Interpreter::GlobalDatum(GlobalValue value) const {
  switch (value) {
  case GlobalValue::RowCount: return Datum::OfInteger(rowCount_);
  case GlobalValue::Identity: return identity_;
  case GlobalValue::ScopeIdentity: return running_->scopeIdentity;
  case GlobalValue::Error: return Datum::OfInteger(lastError_);
  case GlobalValue::TransactionCount: return Datum::OfInteger(transaction_.Count());
  case GlobalValue::TriggerNesting: return Datum::OfInteger(triggers_);
  case GlobalValue::ProcedureNesting: return Datum::OfInteger(nesting_);
  case GlobalValue::TransactionState: return Datum::OfInteger(transaction_.State());
  case GlobalValue::SessionNumber: return Datum::OfInteger(number_);
  case GlobalValue::FirstDay: return Datum::OfInteger(context_.firstDay);
  case GlobalValue::LockTimeout:
    return Datum::OfInteger(limits_.LockTimeout() == INT32_MAX ? -1 : limits_.LockTimeout());
  case GlobalValue::Options: return Datum::OfInteger(OptionBits());
  case GlobalValue::FetchStatus: return Datum::OfInteger(fetchStatus_);
  case GlobalValue::CursorRows: return Datum::OfInteger(cursorRows_);
  case GlobalValue::CurrentRow: return currentRow_;
  case GlobalValue::RowLimit: return Datum::OfInteger(rowLimit_);
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

void Interpreter::BindParameters(Plan& plan) {
  // The one lock that there is keeps everybody else from changing anything.
  if (locksReads_) transaction_.TakeLock();
  if (plan.callsFunctions) MakeFunctionsReady(plan);
  int number = 1;
  for (const ParameterRef& ref : plan.parameters) {
    const auto index = static_cast<size_t>(ref.index);
    switch (ref.kind) {
    case BoundExpr::Kind::Variable: plan.statement.Bind(number, running_->variables[index]); break;
    case BoundExpr::Kind::Marker: plan.statement.Bind(number, running_->markers[index]); break;
    default: plan.statement.BindCopy(number, GlobalDatum(static_cast<GlobalValue>(ref.index)));
    }
    ++number;
  }
}

// Of the running unit.
struct Interpreter::Operands final : IntegerOperands {
  explicit Operands(const Interpreter& running) : interpreter(running) {}
  std::optional<int64_t> Operand(BoundExpr::Kind kind, int index) const override {
    const RunningUnit& unit = *interpreter.running_;
    switch (kind) {
    case BoundExpr::Kind::Variable: return IntegerOf(unit.variables[static_cast<size_t>(index)]);
    case BoundExpr::Kind::Marker: return IntegerOf(unit.markers[static_cast<size_t>(index)]);
    default: return IntegerOf(interpreter.GlobalDatum(static_cast<GlobalValue>(index)));
    }
  }
  static std::optional<int64_t> IntegerOf(const Datum& datum) {
    return datum.IsNull() ? std::nullopt : std::optional(datum.integer);
  }
  const Interpreter& interpreter;
};

Datum Interpreter::ReadValue(Plan& plan) {
  if (plan.integer) {
    const std::optional<int64_t> value = ComputeInteger(*plan.integer, Operands(*this));
    return value ? Datum::OfInteger(*value) : Datum();
  }
  BindParameters(plan);
  const StatementUse use(plan.statement);
  plan.statement.Step();
  return plan.statement.ColumnDatum(0);
}

Datum Interpreter::Evaluate(const Expr& value, Type& type) {
  Plan& plan = MakePlanner().ValuePlan(value, nullptr);
  type = plan.columns[0].type;
  return ReadValue(plan);
}

std::string Interpreter::EvaluateText(const Expr& value) {
  Type type;
  const Datum datum = Evaluate(value, type);
  if (datum.IsNull()) return {};
  return Convert(datum, type, MakeType(TypeId::NVarChar, -1), ConvertMode::Cast).text;
}

int64_t Interpreter::EvaluateInteger(const Expr& value) {
  Type type;
  const Datum datum = Evaluate(value, type);
  if (datum.IsNull()) return 0;
  return Convert(datum, type, MakeType(TypeId::Int), ConvertMode::Cast).integer;
}

bool Interpreter::Test(const Expr& condition) {
  Plan& plan = MakePlanner().ConditionPlan(condition);
  if (plan.integer) return Holds(*plan.integer, Operands(*this));
  if (plan.wantsLock) transaction_.TakeLock();
  BindParameters(plan);
  const StatementUse use(plan.statement);
  return plan.statement.Step();
}

} // namespace tsql
