#include <algorithm>

#include "tsql/catalog/SystemViews.h"
#include "tsql/run/Interpreter.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {

void Interpreter::CheckPermission(const AdministrationStatement& statement) const {
  const ObjectName& name = statement.object;
  if (statement.isSchema) {
    if (!catalog_.FindSchema(name.name)) Fail(15151, {"find", "schema", name.name});
    return;
  }
  const bool isThere = catalog_.Exists(name) || FindSystemView(name) != nullptr;
  if (!isThere) Fail(15151, {"find", "object", name.name});
  const TablePtr table = catalog_.FindTable(name);
  for (const std::string& column : statement.columns)
    if (table && table->FindColumn(column) < 0) Fail(207, {column});
}

void Interpreter::RunAdministration(const AdministrationStatement& statement) const {
  using Action = AdministrationStatement::Action;
  switch (statement.action) {
  case Action::Permission: return CheckPermission(statement);
  case Action::Statistics: {
    const TablePtr table = catalog_.FindTable(statement.object);
    if (!table && !catalog_.FindView(statement.object)) Fail(2706, {statement.object.name});
    // The only statistics that there could be are those of indexes.
    for (const std::string& name : statement.statistics) {
      const bool isKnown = table && std::ranges::any_of(table->keys, [&](const KeyInfo& key) {
                             return key.HasIndex() && EqualNames(key.name, name);
                           });
      if (!isKnown) Fail(2767, {name});
    }
    break;
  }
  case Action::Checkpoint: break;
  }
}

} // namespace tsql
