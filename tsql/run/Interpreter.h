// Runs what the compiler made: control flow, variables, transactions, procedures, and what the server reports
// about each statement. An error of a statement goes to the sink and ends the statement or the batch as on
// the server.
#pragma once

#include <deque>
#include <functional>

#include "tsql/catalog/IdentityStore.h"
#include "tsql/compile/Compiler.h"
#include "tsql/compile/SystemProcedures.h"
#include "tsql/functions/Functions.h"
#include "tsql/run/Cursor.h"
#include "tsql/run/Definitions.h"
#include "tsql/run/ForeignKeys.h"
#include "tsql/run/Limits.h"
#include "tsql/run/RunningUnit.h"
#include "tsql/run/TableVariables.h"
#include "tsql/run/Transaction.h"
#include "tsql/values/Errors.h"

namespace tsql {

class Interpreter : public UserFunctions {
 public:
  Interpreter(const Connection& connection, Catalog& catalog, Compiler& compiler, Definitions& definitions,
              FunctionContext& context, Transaction& transaction);

  // Runs a batch; false when a statement failed.
  bool RunBatch(CompiledUnit& unit, RunningUnit& running, ResultSink& sink);
  // Runs a procedure whose state holds its parameters.
  bool RunProcedure(CompiledUnit& unit, RunningUnit& running, ResultSink& sink);

  // Gives the parameters of a procedure that were not given their defaults; 201 when one has none.
  void FillDefaults(CompiledUnit& unit, RunningUnit& running, const std::vector<bool>& given);
  // Rolls back what a batch has left of a transaction that can only be rolled back; false when it had to.
  bool EndWork(ResultSink& sink);
  // Functions of users, called by the statement that runs.
  Datum CallScalar(std::string_view name, std::vector<Datum> arguments) override;
  Rows CallTable(std::string_view name, std::vector<Datum> arguments) override;
  int CursorStatus(std::string_view kind, std::string_view name) const override;
  std::optional<int64_t> LastIdentity(const TableInfo& table) const override;

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
  enum class Flow : uint8_t { Next, Break, Continue, Return, Goto, Abort };
  // An error on its way to its CATCH block.
  struct Caught {
    Error error;
  };
  struct ProcedureScope;
  struct BatchScope;
  struct Operands;
  class FunctionUse;
  // Before a statement runs: the functions that it calls have all that they need.
  void MakeFunctionsReady(Plan& plan);
  void ClearTables(CompiledUnit& unit) const; // of a function
  template <typename Work>
  auto WithinStatement(Work work);

  Flow RunList(const StatementList& statements);
  Flow Run(const Statement& statement);
  Flow HandleError(Error error, const Statement& statement);
  Flow HandleErrors(const ErrorSequence& errors, const Statement& statement);
  Flow Dispatch(const Statement& statement);

  // queries (RunQueries.cpp)
  Flow RunQuery(const QueryStatement& statement);
  void RunSelectInto(const QueryStatement& statement);
  void ReturnRows(Plan& plan);
  void AssignRows(Plan& plan);
  void SendRowCount(int64_t count);

  // changes (RunChanges.cpp)
  Flow RunChange(const Statement& statement);
  // Makes the change of so many rows, and does not tell the client how many.
  Flow Change(const Statement& statement, int64_t& count);
  // Makes a change under the foreign keys of its table and returns the number of rows.
  template <typename Change>
  int64_t MakeChange(const TableInfo& target, Change change) {
    const bool givesNumbers = target.identityColumn >= 0 && verb_ == "INSERT";
    return givesNumbers || target.CountsIdentity() ? MakeNumberedChange(target, std::ref(change))
                                                   : MakeCheckedChange(target, std::ref(change));
  }
  int64_t MakeCheckedChange(const TableInfo& target, const std::function<int64_t()>& change);
  // 547 when the change of the table's rows has broken one of the constraints.
  void CheckForeignKeys(const std::vector<ForeignKey>& foreignKeys, const TableInfo& changed,
                        bool deletes) const;
  int64_t StepChange(Plan& plan);
  int64_t RunStaged(const Statement& statement, Plan& plan, bool isOfCursor);
  // A failure of the change that runs as the server's error.
  [[noreturn]] void FailChange(const SqliteFailure& failure, const TableInfo& target);
  Flow RunInsertExecute(const InsertExecuteStatement& statement);
  // Inserts what a procedure has given; stages the rows where something is to see them.
  struct KeptRows;
  int64_t InsertKept(const InsertExecuteStatement& statement, const KeptRows& kept, StagedRows* staged,
                     InsertForm form);
  static bool IsDuplicate(const SqliteFailure& failure);
  // changes whose rows are staged (RunOutput.cpp)
  void StageChange(const Statement& statement, Plan& plan, const StagedPlan& staged, StagedRows& rows);
  void ChangeStaged(const EmittedChange& change) const;
  // Makes several statements of SQLite one.
  void BeginScope(std::optional<StatementScope>& scope, const TableInfo& target, const TableInfo* into);
  static void ReadRows(Plan& plan, StagedRows& rows);
  void GiveOutput(StagedPlan& staged);
  void PutOutput(StagedPlan& staged); // into its table
  int64_t ReplaceRows(const Statement& statement, const TableInfo& table);

  // MERGE (RunMerge.cpp)
  // The word of the statement that changes rows, as messages have it.
  std::string_view Verb() const { return isOfMerge_ ? "MERGE" : verb_; }
  Flow RunMerge(const MergeStatement& statement);
  StagedRows JoinRows(const MergeStatement& statement, Plan& plan);

  // identity columns (RunIdentities.cpp)
  // The rows of an INSERT get numbers that were never given before.
  int64_t MakeNumberedChange(const TableInfo& target, const std::function<int64_t()>& change);
  int64_t MakeCountedChange(const TableInfo& target, const std::function<int64_t()>& change);
  // The insert has failed. The server has given its rows numbers nevertheless, up to this one.
  void NoteLostNumber(const TableInfo& table, int64_t number);
  // The same where SQLite gives the numbers: `failing` rows had none yet when it failed.
  void NoteLostRows(const TableInfo& table, int failing);
  // SQLite counts on from the numbers that were given.
  void CountOn(const TableInfo& table);
  // 8115 when the insert of so many rows has run out of the identity column's type; then it is undone.
  void CheckIdentity(const TableInfo& table, int64_t count) const;
  bool IsOutOfNumbers(const TableInfo& table) const;
  // Before numbers are given to an identity column; true when its table was made anew for that.
  bool LetsNumbersRepeat(const TablePtr& table);
  void TakeIdentity(const TableInfo& table);
  void RunCheckIdentity(const CheckIdentityStatement& statement);
  void Reseed(const TablePtr& table, const std::optional<int64_t>& last, int64_t number);

  // changes of tables with triggers (RunTriggers.cpp)
  struct RunningTrigger;
  // Whether triggers wait for the change of the table.
  bool Fires(const TableInfo& target, StatementKind kind) const;
  Flow RunFiring(const Statement& statement, Plan& plan, bool isOfCursor, int64_t& count);
  // What foreign keys change beside the rows of a statement, in the order in which it is done.
  struct CascadedRows {
    TablePtr table;
    FiredRows fired;
  };
  // Makes a change that stages its rows and returns their number, and lets the triggers run.
  Flow ChangeAndFire(const TableInfo& target, const FiredRows& fired, bool insteadOf,
                     const std::deque<CascadedRows>& cascaded, const std::function<int64_t()>& change);
  // Those that run now, one after the other.
  Flow FireTriggers(const TableInfo& target, const FiredRows& fired, bool insteadOf, int64_t count);
  // Whether a trigger runs in place of the change, which then is not made.
  bool HasInsteadOf(const TableInfo& target, TriggerEvent event) const;
  bool IsInnermost(const TriggerInfo& trigger) const;
  Flow RunTrigger(const TriggerInfo& trigger, const FiredRows& fired);
  // referential actions (RunCascades.cpp)
  // Whether a foreign key does something with other rows when the statement is made.
  bool Cascades(StatementKind kind, const Plan& plan) const;
  // Carries out what follows from the change of the target's rows, and checks what came of it.
  void Cascade(const TableInfo& target, const FiredRows& changed, std::deque<CascadedRows>& cascaded);
  void CascadeFrom(const TableInfo& parent, const FiredRows& changed, std::deque<CascadedRows>& cascaded);
  void ReadReferring(const ForeignKey& foreignKey, const FiredRows& changed, StagedRows& rows);
  // An update knows the values of its computed columns when it is made.
  void ReadComputed(const TableInfo& target, StagedRows& rows) const;

  // procedures of the server (RunSystemProcedures.cpp)
  void RunSystemProcedure(const SystemStatement& statement);
  void Rename(const std::vector<Datum>& arguments);
  void HelpText(const std::vector<Datum>& arguments);

  // control flow (Interpreter.cpp)
  void RunDeclare(const DeclareStatement& statement);
  void RunSet(const SetVariableStatement& statement);
  void RunSetOption(const SetOptionStatement& statement);
  void RunUse(const UseStatement& statement);
  void SetIdentityInsert(const ObjectName& name, bool on);
  Flow RunIf(const IfStatement& statement);
  Flow RunWhile(const WhileStatement& statement);
  Flow RunReturn(const ReturnStatement& statement);
  int64_t OptionNumber(const SetOptionStatement& statement) const;
  void SetFirstDay(const SetOptionStatement& statement);
  void SetCompileOption(const SetOptionStatement& statement);
  void TakeQuotedIdentifier(const CompiledUnit& unit);
  void SetRowLimit(const SetOptionStatement& statement);
  void LimitRows(int64_t limit);
  void RunPrint(const PrintStatement& statement);
  void RunTransaction(const TransactionStatement& statement);
  void RunWaitFor(const WaitForStatement& statement);

  // cursors (RunCursors.cpp)
  std::shared_ptr<Cursor> FindCursorOf(const CursorName& name) const; // null when there is none
  std::shared_ptr<Cursor> RequireCursor(const CursorName& name) const;
  void RunDeclareCursor(const DeclareCursorStatement& statement);
  void OpenCursor(Cursor& cursor);
  void RunCursor(const CursorStatement& statement);
  void RunFetch(const FetchStatement& statement);
  void SendFetched(const Cursor& cursor);
  // Of a change WHERE CURRENT OF the cursor.
  void TakeCurrentRow(const CursorName& name, const TableInfo& target);

  // errors on purpose (RunErrors.cpp)
  Flow RunTryCatch(const TryCatchStatement& statement);
  void RunRaiserror(const RaiserrorStatement& statement);
  Flow RunThrow(const ThrowStatement& statement);

  // procedures (RunProcedures.cpp)
  Flow RunExecute(const ExecuteStatement& statement);
  Flow RunText(const ExecuteStatement& statement);
  ObjectName ProcedureName(const ExecuteStatement& statement) const;
  // sp_executesql (RunDynamic.cpp)
  Flow RunDynamic(const ExecuteStatement& statement);
  std::string EvaluateDynamicText(const ExecuteArgument& argument, const char* parameter);
  void BindDynamic(const ExecuteStatement& statement, const std::vector<ProcedureParameter>& parameters,
                   RunningUnit& callee, std::vector<size_t>& positions);
  Flow RunNested(CompiledUnit& unit, RunningUnit& running);
  // A value for a parameter of a procedure.
  static Datum ConvertArgument(const Datum& value, const Type& from, const Type& to);
  void BindArguments(const ExecuteStatement& statement, CompiledUnit& unit, RunningUnit& callee);
  void TakeOutputs(const ExecuteStatement& statement, const CompiledUnit& unit, const RunningUnit& callee);

  // definitions (RunDefinitions.cpp)
  void RunDefinition(const Statement& statement);
  void RunDrop(const DropStatement& statement);
  void RunCreateTrigger(const CreateTriggerStatement& statement);
  void RunAdministration(const AdministrationStatement& statement) const;
  void CheckPermission(const AdministrationStatement& statement) const;
  void RunSwitchTriggers(const SwitchTriggersStatement& statement);
  void RunCreateFunction(const CreateFunctionStatement& statement);
  ModulePtr FindModule(const ObjectName& name, ModuleKind kind) const;
  void CheckPadding(const Type& type) const;
  void CheckNoSchemaBoundUser(const char* verb, std::string_view key, const ObjectName& name) const;
  void RunModule(const ObjectName& name, ModuleKind kind, const std::string& text, DefinitionForm form);
  void DropModule(const DropStatement& statement, const ObjectName& name);
  void RunTruncate(const TruncateStatement& statement);
  void MarkSchemaChange(Place place);

  void BeginStatement();
  // Drops the temporary tables of procedures that have ended.
  void DropEndedTables();
  Planner MakePlanner() const { return compiler_.PlannerFor(*running_->unit); }

  // parameters and values (RunValues.cpp)
  void BindParameters(Plan& plan);
  Datum GlobalDatum(GlobalValue value) const;
  int64_t OptionBits() const;
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
  std::string_view verb_;             // and its word
  bool isOfMerge_ = false;            // it is an action of a MERGE
  Datum identity_;
  std::optional<int64_t> counted_; // the identity of the last row of the last change that was counted
  std::vector<Value> row_;         // that a result set is sent by; it keeps its memory
  std::vector<std::string> texts_; // of its values, where they are made for it
  int64_t rowCount_ = 0;
  Limits limits_;
  TableVariables tableVariables_;
  const LabelStatement* jump_ = nullptr; // the label that a GOTO looks for
  int64_t rowLimit_ = 0;                 // of SET ROWCOUNT; 0 for none
  int lastError_ = 0;
  int tryDepth_ = 0;                        // open TRY blocks, the callers' included
  int nesting_ = 0;                         // procedures within procedures
  int functions_ = 0;                       // that are being called
  int triggers_ = 0;                        // triggers within triggers
  const RunningTrigger* trigger_ = nullptr; // the innermost one
  bool noCount_ = false;
  bool locksReads_ = false; // what a transaction reads stays as it is until its end
  bool xactAbort_ = false;
  bool ansiPadding_ = true;
  bool failed_ = false;
  std::vector<std::shared_ptr<Cursor>> cursors_; // the global ones
  Datum currentRow_;                             // of WHERE CURRENT OF
  int64_t cursorRows_ = 0;
  int fetchStatus_ = 0;
  const int number_;       // of the session, as @@SPID gives it
  bool takesRows_ = false; // an INSERT ... EXEC runs
  bool abortsAll_ = false; // what ended a procedure ends its callers too
};

} // namespace tsql
