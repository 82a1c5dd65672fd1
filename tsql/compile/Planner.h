// Compiled batches: the tree, its variables and one plan a statement. A plan is bound and prepared when its
// statement first needs it and serves until the catalog answers differently about what it was bound to.
#pragma once

#include "tsql/bind/Binder.h"
#include "tsql/emit/Emitter.h"

namespace tsql {

struct Plan {
  uint64_t version = 0; // of the catalog; 0 while unbound
  bool identityInsert = false;
  bool wantsLock = false;
  std::vector<Dependency> dependencies;
  std::vector<ParameterRef> parameters;
  std::vector<Column> columns; // of a result
  std::vector<int> assigned;   // variables that a SELECT assigns, by item
  TablePtr target;             // of a change
  PreparedStatement statement;
};

struct CompiledUnit {
  std::unique_ptr<Batch> batch;
  const StatementList* body = nullptr;
  const CreateProcedureStatement* procedure = nullptr;
  std::vector<VariableInfo> variables;
  std::vector<Type> markers;
  std::vector<Plan> plans;
  ModulePtr module; // the procedure's text that this was compiled from
};

// Makes and keeps up plans for one unit.
class Planner {
 public:
  Planner(const Connection& connection, const Catalog& catalog, CompiledUnit& unit)
      : connection_(connection), catalog_(catalog), unit_(unit) {}

  // Declares the variables and binds what can be bound before anything runs; statements on tables that do
  // not exist yet wait for their turn.
  void CompileAll(std::string_view identityInsertTable);

  Plan& QueryPlan(const QueryStatement& statement);
  Plan& ChangePlan(const Statement& statement, std::string_view identityInsertTable);
  // The rows that an update would make, for the interpreter to put them in place at once.
  Plan UpdatedRowsPlan(const UpdateStatement& statement, std::string_view into, std::string_view number);
  Plan& ConditionPlan(const Evaluated& condition);
  // A value as it is, or converted for a variable of the type.
  Plan& ValuePlan(const Evaluated& value, const Type* type);

 private:
  void CompileList(const StatementList& statements, std::string_view identityInsertTable);
  void Compile(const Statement& statement, std::string_view identityInsertTable);
  void CompileBody(const Statement& statement, std::string_view identityInsertTable);
  void Declare(const DeclareStatement& statement);
  void CompileExecute(const ExecuteStatement& statement);
  void RequireVariable(const std::string& name) const;
  bool IsCurrent(Plan& plan) const;
  PreparedStatement Prepare(const std::string& sql) const;
  void Finish(Plan& plan, const Binder& binder, EmittedSql emitted) const;
  Binder MakeBinder() const;
  Plan& PlanAt(int slot) { return unit_.plans[static_cast<size_t>(slot)]; }

  const Connection& connection_;
  const Catalog& catalog_;
  CompiledUnit& unit_;
  std::vector<std::string> pending_; // tables that the unit creates, while compiling ahead
};

} // namespace tsql
