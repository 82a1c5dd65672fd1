// Makes and keeps up the plans of one compiled unit. A plan is bound and prepared when its statement first
// needs it, and it serves until the catalog answers differently about what it was bound to.
#pragma once

#include "tsql/compile/CompiledUnit.h"

namespace tsql {

// The SET options of the session that compiling depends on.
struct CompileOptions {
  bool quotedIdentifier = true;
  BindOptions bind;
  // Those of a module that is made now.
  ModuleOptions OfModule() const { return {quotedIdentifier, bind.ansiNulls}; }
};

// What compiling depends on beside the text.
struct CompileContext {
  const Connection& connection;
  const Catalog& catalog;
  TablePtr identityInsertTable; // of SET IDENTITY_INSERT; null for none
  bool limitsChanges = false;   // SET ROWCOUNT is on
  CompileOptions options;
};

class Planner {
 public:
  Planner(const CompileContext& context, CompiledUnit& unit)
      : context_(context), unit_(unit), options_(OptionsOf(context, unit)) {}
  // A module has the options of its own where there are such.
  static BindOptions OptionsOf(const CompileContext& context, const CompiledUnit& unit) {
    BindOptions options = context.options.bind;
    if (unit.options) options.ansiNulls = unit.options->ansiNulls;
    return options;
  }

  // Declares the variables and binds what can be bound before anything runs. A statement on a table that does
  // not exist yet waits until it runs.
  void CompileAll();
  // Whether what was bound of the unit is what would be bound now.
  bool IsCurrent() const;

  Plan& QueryPlan(const QueryStatement& statement) {
    Plan* const present = PresentPlan(statement.number);
    return present != nullptr ? *present : MakeQueryPlan(statement);
  }
  Plan& ChangePlan(const Statement& statement);
  // Of a changing statement with OUTPUT or triggers, or of an update.
  StagedPlan PlanStaged(const Statement& statement);
  // A statement that serves once.
  Plan PlanOnce(EmittedSql emitted) const;
  // The rows of an INSERT that triggers are run in place of.
  Plan PlanInsertedRows(const InsertStatement& statement);
  // Inserts one row of values of the types, which are its markers.
  Plan InsertedRowPlan(const InsertExecuteStatement& statement, const std::vector<Type>& types,
                       InsertForm form) const;
  // Of the rows that it joins.
  Plan& MergePlan(const MergeStatement& statement);
  Plan& CursorPlan(const DeclareCursorStatement& statement);
  // The variables that a FETCH assigns.
  Plan& FetchPlan(const FetchStatement& statement);
  // Loops ask for these three with each turn, so what is current is found here.
  Plan& ConditionPlan(const Expr& condition) {
    Plan* const present = PresentPlan(condition.number);
    return present != nullptr ? *present : MakeConditionPlan(condition);
  }
  // The value of an expression as it is, or converted for a variable of the type.
  Plan& ValuePlan(const Expr& value, const Type* type) {
    Plan* const present = PresentPlan(value.number);
    return present != nullptr ? *present : MakeValuePlan(value, type);
  }
  // The value that SET gives to a variable, which is the plan's `assigned`.
  Plan& AssignmentPlan(const SetVariableStatement& statement) {
    Plan* const present = PresentPlan(statement.value->number);
    return present != nullptr ? *present : MakeAssignmentPlan(statement);
  }

  // Whether SET IDENTITY_INSERT is on for it.
  bool InsertsIdentity(const ObjectName& target) const;

 private:
  void CompileList(const StatementList& statements);
  void Compile(const Statement& statement);
  void CompileBody(const Statement& statement);
  void CompileCondition(const Expr& condition);
  void Declare(const DeclareStatement& statement);
  void DeclareTable(const TableVariable& variable);
  void CompileExecute(const ExecuteStatement& statement);
  int RequireVariable(const std::string& name) const;
  bool Fires(const Statement& statement) const;
  bool AreCurrent(const std::vector<Dependency>& dependencies) const;
  bool IsCurrent(Plan& plan) const;
  // The plan of the number if neither catalog nor options have changed since it was last current; else null.
  Plan* PresentPlan(uint32_t number) const {
    if (number >= unit_.plans.size()) return nullptr;
    Plan* const plan = unit_.plans[number].get();
    const bool isCurrent =
        plan != nullptr && plan->version == context_.catalog.Version() && plan->options == options_;
    return isCurrent ? plan : nullptr;
  }
  Plan& MakeQueryPlan(const QueryStatement& statement);
  Plan& MakeConditionPlan(const Expr& condition);
  Plan& MakeValuePlan(const Expr& value, const Type* type);
  Plan& MakeAssignmentPlan(const SetVariableStatement& statement);
  void Finish(Plan& plan, const Binder& binder, EmittedSql emitted) const;
  void FinishInteger(Plan& plan, BoundExprPtr integer) const;
  Binder MakeBinder() const;
  Binder MakeChangeBinder(const Statement& change);
  Plan& PlanAt(uint32_t number);

  const CompileContext& context_;
  CompiledUnit& unit_;
  BindOptions options_;
  // The tables that the unit creates, while it is compiled ahead of execution; null when it runs.
  std::vector<ObjectName>* pending_ = nullptr;
};

} // namespace tsql
