// Runs what the compiler made: control flow, variables, transactions, procedures, and what the server reports
// about each statement. An error of a statement goes to the sink and ends the statement or the batch as on
// the server.
#pragma once

#include "tsql/compile/Compiler.h"
#include "tsql/functions/Functions.h"
#include "tsql/run/Definitions.h"
#include "tsql/run/Limits.h"
#include "tsql/run/RunningUnit.h"
#include "tsql/run/Transaction.h"

namespace tsql {

class Interpreter {
 public:
  Interpreter(const Connection& connection, Catalog& catalog, Compiler& compiler, Definitions& definitions,
              FunctionContext& context, Transaction& transaction);

  // Runs a batch; false when a statement failed.
  bool RunBatch(CompiledUnit& unit, RunningUnit& running, ResultSink& sink);
  // Runs a procedure whose state holds its parameters.
  bool RunProcedure(CompiledUnit& unit, RunningUnit& running, ResultSink& sink);

  // Gives the parameters of a procedure that were not given their defaults; 201 when one has none.
  void FillDefaults(CompiledUnit& unit, RunningUnit& running, const std::vector<bool>& given);
  // Sends an error to the sink; the batch has failed.
  void Report(const Error& error, ResultSink& sink);
  // A failure of SQLite as the server's error.
  Error Translate(const SqliteFailure& failure);

  void SetNow(std::optional<int64_t> now) { context_.fixedNow = now; }
  Limits& limits() { return limits_; }
  void Reset();     // options, limits, clock and what the last statements left
  void BeginWork(); // a batch or call begins, and the whole limit is left
  bool NoCount() const { return noCount_; }
  int ProcedureNesting() const { return nesting_; }
  bool XactAbort() const { return xactAbort_; }

 private:
  enum class Flow : uint8_t { Next, Break, Continue, Return, Abort };
  // An error on its way to its CATCH block.
  struct Caught {
    Error error;
  };
  struct ProcedureScope;

  Flow RunList(const StatementList& statements);
  Flow Run(const Statement& statement);
  Flow HandleError(Error error, const Statement& statement);
  Flow Dispatch(const Statement& statement);

  // queries (RunQueries.cpp)
  Flow RunQuery(const QueryStatement& statement);
  void RunSelectInto(const QueryStatement& statement);
  void ReturnRows(Plan& plan);
  void AssignRows(Plan& plan);
  void SendRowCount(int64_t count);

  // changes (RunChanges.cpp)
  void RunChange(const Statement& statement);
  // Makes a change under the foreign keys of its table and returns the number of rows.
  template <typename Change>
  int64_t MakeChange(const TableInfo& target, Change change);
  int64_t StepChange(Plan& plan);
  // 8115 when the insert of so many rows has run out of the identity column's type; then it is undone.
  void CheckIdentity(const TableInfo& table, int64_t count) const;
  bool IsOutOfNumbers(const TableInfo& table) const;
  int64_t ReplaceRows(const UpdateStatement& statement, const TableInfo& table);

  // control flow (Interpreter.cpp)
  void RunDeclare(const DeclareStatement& statement);
  void RunSet(const SetVariableStatement& statement);
  void RunSetOption(const SetOptionStatement& statement);
  void SetIdentityInsert(const ObjectName& name, bool on);
  Flow RunIf(const IfStatement& statement);
  Flow RunWhile(const WhileStatement& statement);
  Flow RunReturn(const ReturnStatement& statement);
  void RunPrint(const PrintStatement& statement);
  void RunTransaction(const TransactionStatement& statement);

  // errors on purpose (RunErrors.cpp)
  Flow RunTryCatch(const TryCatchStatement& statement);
  void RunRaiserror(const RaiserrorStatement& statement);
  Flow RunThrow(const ThrowStatement& statement);

  // procedures (RunProcedures.cpp)
  Flow RunExecute(const ExecuteStatement& statement);
  Flow RunText(const ExecuteStatement& statement);
  Flow RunNested(CompiledUnit& unit, RunningUnit& running);
  void BindArguments(const ExecuteStatement& statement, CompiledUnit& unit, RunningUnit& callee);
  void TakeOutputs(const ExecuteStatement& statement, const CompiledUnit& unit, const RunningUnit& callee);

  // definitions (RunDefinitions.cpp)
  void RunDefinition(const Statement& statement);
  void RunDrop(const DropStatement& statement);
  void RunModule(const ObjectName& name, ModuleKind kind, const std::string& text, bool alter);
  void RunTruncate(const TruncateStatement& statement);
  void MarkSchemaChange(Place place);

  void BeginStatement();
  // Drops the temporary tables of procedures that have ended.
  void DropEndedTables();
  Planner MakePlanner() const { return compiler_.PlannerFor(*running_->unit); }

  // parameters and values (RunValues.cpp)
  void BindParameters(Plan& plan);
  Datum GlobalDatum(GlobalValue value) const;
  Datum ReadValue(Plan& plan); // of a plan for one value
  Datum Evaluate(const Expr& value, Type& type);
  std::string EvaluateText(const Expr& value);
  int64_t EvaluateInteger(const Expr& value);
  bool Test(const Expr& condition);

  const Connection& connection_;
  Catalog& catalog_;
  Compiler& compiler_;
  Definitions& definitions_;
  FunctionContext& context_;
  Transaction& transaction_;
  ResultSink* sink_ = nullptr;
  RunningUnit* running_ = nullptr; // of the innermost procedure or the batch

  std::optional<Error> caught_; // of the CATCH block that runs
  std::string caughtProcedure_;
  const TableInfo* target_ = nullptr; // of the change that runs
  std::string_view verb_;             // and its word, as messages have it
  Datum identity_;
  std::vector<Value> row_; // that a result set is sent by; it keeps its memory
  int64_t rowCount_ = 0;
  Limits limits_;
  int lastError_ = 0;
  int tryDepth_ = 0; // open TRY blocks, the callers' included
  int nesting_ = 0;  // procedures within procedures
  bool noCount_ = false;
  bool xactAbort_ = false;
  bool failed_ = false;
  bool abortsAll_ = false; // what ended a procedure ends its callers too
};

} // namespace tsql
