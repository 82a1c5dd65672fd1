// Makes and keeps up the plans of one compiled unit. A plan is bound and prepared when its statement first
// needs it, and it serves until the catalog answers differently about what it was bound to.
#pragma once

#include "tsql/compile/CompiledUnit.h"

namespace tsql {

// What compiling depends on beside the text.
struct CompileContext {
  const Connection& connection;
  const Catalog& catalog;
  std::string identityInsertTable; // of SET IDENTITY_INSERT; empty for none
};

class Planner {
 public:
  Planner(const CompileContext& context, CompiledUnit& unit) : context_(context), unit_(unit) {}

  // Declares the variables and binds what can be bound before anything runs. A statement on a table that does
  // not exist yet waits until it runs.
  void CompileAll();

  Plan& QueryPlan(const QueryStatement& statement);
  Plan& ChangePlan(const Statement& statement);
  // Puts the rows that an update would make into the table `into`, under their numbers in SQLite.
  Plan UpdatedRowsPlan(const UpdateStatement& statement, std::string_view into, std::string_view number);
  Plan& ConditionPlan(const Expr& condition);
  // The value of an expression as it is, or converted for a variable of the type.
  Plan& ValuePlan(const Expr& value, const Type* type);
  // The value that SET gives to a variable, which is the plan's `assigned`.
  Plan& AssignmentPlan(const SetVariableStatement& statement);

 private:
  void CompileList(const StatementList& statements);
  void Compile(const Statement& statement);
  void CompileBody(const Statement& statement);
  void CompileCondition(const Expr& condition);
  void Declare(const DeclareStatement& statement);
  void CompileExecute(const ExecuteStatement& statement);
  int RequireVariable(const std::string& name) const;
  bool IsCurrent(Plan& plan) const;
  void Finish(Plan& plan, const Binder& binder, EmittedSql emitted) const;
  Binder MakeBinder() const;
  Plan& PlanAt(uint32_t number);

  const CompileContext& context_;
  CompiledUnit& unit_;
  std::vector<std::string> pending_; // tables that the unit creates, while compiling ahead
};

} // namespace tsql
