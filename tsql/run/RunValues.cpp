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
  if (ref.kind == BoundExpr::Kind::Variable) return running_->variables[index];
  if (ref.kind == BoundExpr::Kind::Marker) return running_->markers[index];
  return globals_.emplace_back(GlobalDatum(static_cast<GlobalValue>(ref.index)));
}

void Interpreter::BindParameters(Plan& plan) {
  globals_.clear();
  // The bound values must not move while the statement runs.
  globals_.reserve(plan.parameters.size());
  int index = 1;
  for (const ParameterRef& ref : plan.parameters) plan.statement.Bind(index++, ParameterValue(ref));
}

Datum Interpreter::Evaluate(const Expr& value, Type& type) {
  Plan& plan = MakePlanner().ValuePlan(value, nullptr);
  type = plan.columns[0].type;
  BindParameters(plan);
  const StatementUse use(plan.statement);
  plan.statement.Step();
  return plan.statement.ColumnDatum(0);
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
  if (plan.wantsLock) transaction_.BeforeWrite();
  BindParameters(plan);
  const StatementUse use(plan.statement);
  return plan.statement.Step();
}

} // namespace tsql
