// A compiled batch or procedure: the tree, its variables, and the plans of its statements and expressions.
#pragma once

#include <memory>
#include <vector>

#include "tsql/bind/Binder.h"
#include "tsql/emit/Emitter.h"

namespace tsql {

// One statement or expression as SQLite runs it.
struct Plan {
  uint64_t version = 0; // of the catalog when it was bound; 0 for never
  bool identityInsert = false;
  bool wantsLock = false;
  std::vector<Dependency> dependencies;
  std::vector<ParameterRef> parameters;
  std::vector<Column> columns; // of a result
  std::vector<int> assigned;   // variables that a SELECT or SET assigns, by item
  TablePtr target;             // of a change
  PreparedStatement statement;
};

struct CompiledUnit {
  std::unique_ptr<Batch> batch;
  const StatementList* body = nullptr;
  const CreateProcedureStatement* procedure = nullptr; // null for a batch
  std::vector<VariableInfo> variables;                 // a procedure's parameters come first
  std::vector<Type> markers;
  // By the number of the statement or expression. The planner makes them when they are first needed.
  std::vector<std::unique_ptr<Plan>> plans;
  ModulePtr module; // the procedure's text that this was compiled from
};

// Which parameter of a procedure an argument is for: that of its name, or without a name the one at its
// position. 8145 when the procedure has none of the name, 8144 when it has not so many.
size_t ParameterIndex(const CompiledUnit& procedure, const std::string& name, size_t position);

} // namespace tsql
