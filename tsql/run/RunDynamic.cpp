#include <algorithm>

#include "tsql/run/Interpreter.h"
#include "tsql/syntax/Parser.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr const char* kTextTypes = "ntext/nchar/nvarchar";

} // namespace

// ---- sp_executesql

std::string Interpreter::EvaluateDynamicText(const ExecuteArgument& argument, const char* parameter) {
  Type type;
  if (argument.useDefault) Fail(214, {parameter, kTextTypes});
  const Datum value = Evaluate(*argument.value, type);
  if (!IsUnicode(type.id) && !value.IsNull()) Fail(214, {parameter, kTextTypes});
  return value.text;
}

void Interpreter::BindDynamic(const ExecuteStatement& statement,
                              const std::vector<ProcedureParameter>& parameters, RunningUnit& callee,
                              std::vector<size_t>& positions) {
  std::vector<bool> given(parameters.size(), false);
  for (size_t i = 2; i < statement.arguments.size(); ++i) {
    const ExecuteArgument& argument = statement.arguments[i];
    size_t index = i - 2;
    if (!argument.name.empty()) {
      const auto found = std::ranges::find_if(parameters, [&](const ProcedureParameter& parameter) {
        return EqualNames(parameter.name, argument.name);
      });
      if (found == parameters.end()) Fail(8145, {argument.name, ""});
      index = static_cast<size_t>(found - parameters.begin());
    }
    if (index >= parameters.size()) Fail(8144, {""});
    positions.push_back(index);
    if (argument.useDefault) continue;
    Type type;
    const Datum value = Evaluate(*argument.value, type);
    callee.variables[index] = ConvertArgument(value, type, parameters[index].type);
    given[index] = true;
  }
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (given[i]) continue;
    if (!parameters[i].defaultValue)
      Fail(8178, {EvaluateText(*statement.arguments[1].value), EvaluateText(*statement.arguments[0].value),
                  parameters[i].name});
    CompiledUnit own; // the declarations are no part of the text
    callee.variables[i] =
        ReadValue(compiler_.PlannerFor(own).ValuePlan(*parameters[i].defaultValue, &parameters[i].type));
  }
}

Interpreter::Flow Interpreter::RunDynamic(const ExecuteStatement& statement) {
  if (statement.arguments.empty()) Fail(201, {"sp_executesql", "@statement"});
  const std::string text = EvaluateDynamicText(statement.arguments[0], "@statement");
  std::string declarations;
  if (statement.arguments.size() > 1) declarations = EvaluateDynamicText(statement.arguments[1], "@params");
  const std::vector<ProcedureParameter> declared = ParseParameters(declarations);
  std::vector<Parameter> parameters;
  for (const ProcedureParameter& parameter : declared) {
    Parameter& entry = parameters.emplace_back();
    entry.name = parameter.name;
    entry.type = parameter.type;
  }
  const std::shared_ptr<CompiledUnit> unit = compiler_.CompileBatch(text, parameters);
  RunningUnit callee;
  callee.variables.resize(unit->variables.size());
  std::vector<size_t> positions;
  BindDynamic(statement, declared, callee, positions);
  const Flow flow = RunNested(*unit, callee);
  if (flow == Flow::Abort) return flow;
  for (size_t i = 0; i < positions.size(); ++i) {
    const std::string& output = statement.arguments[i + 2].outputVariable;
    if (output.empty() || !declared[positions[i]].output) continue;
    const auto target = static_cast<size_t>(FindVariable(running_->unit->variables, output));
    running_->variables[target] = Convert(callee.variables[positions[i]], unit->variables[positions[i]].type,
                                          running_->unit->variables[target].type, ConvertMode::Cast);
  }
  if (!statement.returnVariable.empty()) {
    const auto target =
        static_cast<size_t>(FindVariable(running_->unit->variables, statement.returnVariable));
    running_->variables[target] = Convert(Datum::OfInteger(lastError_), MakeType(TypeId::Int),
                                          running_->unit->variables[target].type, ConvertMode::Cast);
  }
  return Flow::Next;
}

} // namespace tsql
