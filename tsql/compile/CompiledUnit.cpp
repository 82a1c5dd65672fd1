#include "tsql/compile/CompiledUnit.h"

#include "tsql/values/Errors.h"

namespace tsql {

bool IsCall(const Dependency& dependency) {
  return dependency.function && dependency.function->kind != ModuleKind::InlineFunction;
}

size_t ParameterIndex(const CompiledUnit& procedure, const std::string& name, size_t position) {
  const size_t count = procedure.procedure->parameters.size();
  const std::string& procedureName = procedure.procedure->name.name;
  if (name.empty()) {
    if (position >= count) Fail(8144, {procedureName});
    return position;
  }
  const int found = FindVariable(procedure.variables, name);
  if (found < 0 || static_cast<size_t>(found) >= count) Fail(8145, {name, procedureName});
  return static_cast<size_t>(found);
}

} // namespace tsql
