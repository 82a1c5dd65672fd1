#include "odbc/ProcedureCall.h"

namespace odbc {
namespace {

// The name of the status in the last row, by which the row is known. A procedure's own columns have others.
constexpr char kStatusColumn[] = "_return";

} // namespace

std::wstring CallText(std::wstring_view procedure, std::span<const tsql::Parameter> parameters,
                      Dialect dialect) {
  std::wstring declarations = L"DECLARE @_return int";
  std::wstring call = L" EXEC @_return = " + std::wstring(procedure);
  std::wstring outputs = L" SELECT @_return AS _return";
  for (size_t i = 0; i < parameters.size(); ++i) {
    const tsql::Parameter& parameter = parameters[i];
    const std::wstring literal = LiteralOf(parameter.value, parameter.type, dialect);
    call += i == 0 ? L" " : L", ";
    if (parameter.output) {
      const std::wstring name = L"_" + std::to_wstring(i + 1);
      // A SET of its own would count as a statement on some servers.
      declarations.append(L", @").append(name).append(L" ");
      declarations.append(DeclarationOf(parameter.type)).append(L" = ").append(literal);
      call += L'@' + name + L" OUTPUT";
      outputs.append(L", @").append(name).append(L" AS ").append(name);
    } else {
      call += literal;
    }
  }
  return declarations + call + outputs;
}

void OutputCatcher::BeginRows(std::span<const tsql::Column> columns) {
  isLastRow_ = !columns.empty() && columns.front().name == kStatusColumn;
  if (!isLastRow_) sink_.BeginRows(columns);
}

void OutputCatcher::Row(std::span<const tsql::Value> values) {
  if (isLastRow_)
    Take(values);
  else
    sink_.Row(values);
}

void OutputCatcher::EndRows(int64_t count) {
  if (!isLastRow_) sink_.EndRows(count);
}

void OutputCatcher::Take(std::span<const tsql::Value> values) {
  // A call that failed on the way there has no status, but variables.
  if (values.front().kind == tsql::Value::Kind::Integer)
    status_ = static_cast<int32_t>(values.front().integer);
  size_t next = 1;
  for (tsql::Parameter& parameter : parameters_) {
    if (!parameter.output || next >= values.size()) continue;
    parameter.value = values[next++];
    parameter.storage.assign(parameter.value.text);
    parameter.value.text = parameter.storage;
  }
}

} // namespace odbc
