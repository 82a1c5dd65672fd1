// Runs compiled batches: control flow, variables, transactions, procedures, and what the server reports about
// each. Errors of a statement go to the sink and end the statement or the batch as on the server.
#pragma once

#include "functions.h"
#include "plan.h"
#include "schema.h"
#include "transaction.h"

#include <chrono>
#include <unordered_map>

namespace tsql {

// What a running batch or procedure holds.
struct Frame {
  CompiledUnit* unit = nullptr;
  std::vector<Datum> variables;
  std::vector<Datum> markers;
  Datum scopeIdentity;
  std::string procedure;
  int32_t returnStatus = 0;
};

// Thrown through everything, CATCH blocks too, when a batch has used up its work or its time.
struct Canceled {
  int error;
  int line; // of the statement that was running
};

class Interpreter {
 public:
  static constexpr int kDefaultLockTimeout = 5000; // milliseconds

  Interpreter(const Connection& connection, Catalog& catalog, FunctionContext& context,
              Transaction& transaction);

  // Runs a batch; false when a statement failed.
  bool RunBatch(CompiledUnit& unit, Frame& frame, ResultSink& sink);
  // Runs a procedure whose frame holds its parameters.
  bool RunProcedure(CompiledUnit& unit, Frame& frame, ResultSink& sink);

  std::shared_ptr<CompiledUnit> CompileBatch(std::string_view text,
                                             const std::vector<VariableInfo>& variables,
                                             const std::vector<Type>& markers);
  std::shared_ptr<CompiledUnit> CompileProcedure(const ObjectName& name); // 2812 when there is none
  // Fills parameters that were not given with their defaults; 201 when one has none.
  void FillDefaults(CompiledUnit& unit, Frame& frame, const std::vector<bool>& given);
  void Report(const Error& error, ResultSink& sink);
  Error Translate(const SqliteFailure& failure);

  void SetNow(std::optional<int64_t> now) { context_.fixedNow = now; }
  void SetLockTimeout(int milliseconds);
  void SetWorkLimit(std::optional<int64_t> steps);
  void SetTimeLimit(std::optional<std::chrono::milliseconds> limit);
  void Reset();     // options, limits, clock and what the last statements left
  void BeginWork(); // a batch or call begins: all of the limits is left
  bool NoCount() const { return noCount_; }
  bool XactAbort() const { return xactAbort_; }
  // Whether a failure of SQLite comes from a limit that was reached.
  bool IsCanceled(const SqliteFailure& failure);
  Canceled CanceledAt(int line) const { return {canceled_, line}; }

 private:
  enum class Flow : uint8_t { Next, Break, Continue, Return, Abort };
  // An error on its way to the CATCH block that takes it.
  struct Caught {
    Error error;
  };
  struct ProcedureScope;

  Flow RunList(const StatementList& statements);
  Flow Run(const Statement& statement);
  Flow HandleError(Error error, const Statement& statement);
  Flow Dispatch(const Statement& statement);
  Flow RunQuery(const QueryStatement& statement);
  void RunSelectInto(const QueryStatement& statement);
  void ReturnRows(Plan& plan);
  void AssignRows(Plan& plan);
  void RunChange(const Statement& statement);
  // Makes a change under the foreign keys of its table; the number of rows.
  template <typename Change>
  int64_t MakeChange(const TableInfo& target, Change change);
  int64_t StepChange(Plan& plan);
  int64_t ReplaceRows(const UpdateStatement& statement, const TableInfo& table);
  void RunDeclare(const DeclareStatement& statement);
  void RunSet(const SetVariableStatement& statement);
  void RunSetOption(const SetOptionStatement& statement);
  Flow RunIf(const IfStatement& statement);
  Flow RunWhile(const WhileStatement& statement);
  Flow RunReturn(const ReturnStatement& statement);
  void RunPrint(const PrintStatement& statement);
  void RunTransaction(const TransactionStatement& statement);
  Flow RunTryCatch(const TryCatchStatement& statement);
  void RunRaiserror(const RaiserrorStatement& statement);
  Flow RunThrow(const ThrowStatement& statement);
  Flow RunExecute(const ExecuteStatement& statement);
  Flow RunText(const ExecuteStatement& statement);
  Flow RunNested(CompiledUnit& unit, Frame& frame);
  void BindArguments(const ExecuteStatement& statement, CompiledUnit& unit, Frame& callee);
  void TakeOutputs(const ExecuteStatement& statement, const CompiledUnit& unit, const Frame& callee);
  void RunDefinition(const Statement& statement);
  void RunDrop(const DropStatement& statement);
  void RunModule(const ObjectName& name, ObjectKind kind, const std::string& text, bool alter);
  void RunTruncate(const TruncateStatement& statement);

  using Clock = std::chrono::steady_clock;

  bool TakeStep() { return (!workLimit_ && !deadline_) || TakeLimitedStep(); }
  bool TakeLimitedStep();
  bool IsPastDeadline() const;
  bool IsChanging() const;
  void WatchLimits();
  Planner MakePlanner() { return {connection_, catalog_, *frame_->unit}; }
  void BindParameters(Plan& plan);
  const Datum& ParameterValue(const ParameterRef& ref);
  Datum GlobalDatum(GlobalValue value) const;
  Datum Evaluate(const Evaluated& value, Type& type);
  std::string EvaluateText(const Evaluated& value);
  int64_t EvaluateInteger(const Evaluated& value);
  bool Test(const Evaluated& condition);
  void BeginStatement();
  void SendRowCount(int64_t count);
  void BumpSchema(Place place);

  const Connection& connection_;
  Catalog& catalog_;
  FunctionContext& context_;
  Transaction& transaction_;
  SchemaEditor schema_;
  ResultSink* sink_ = nullptr;
  Frame* frame_ = nullptr;

  std::string identityInsertTable_;
  std::map<std::string, std::shared_ptr<CompiledUnit>, NameLess> procedures_;
  std::unordered_map<std::string, std::shared_ptr<CompiledUnit>> batches_;
  std::optional<Error> caught_; // of the CATCH block that runs
  std::string caughtProcedure_;
  std::vector<Datum> globals_; // values bound while a statement runs
  const TableInfo* target_ = nullptr;
  std::string_view verb_;
  Datum identity_;
  int64_t rowCount_ = 0;
  std::optional<int64_t> workLimit_;
  int64_t workLeft_ = 0;
  std::optional<std::chrono::milliseconds> timeLimit_;
  std::optional<Clock::time_point> deadline_;
  std::chrono::milliseconds lockTimeout_{kDefaultLockTimeout};
  int canceled_ = 0; // the error of the limit that was reached
  int lastError_ = 0;
  int tryDepth_ = 0;
  int nesting_ = 0;
  bool noCount_ = false;
  bool xactAbort_ = false;
  bool failed_ = false;
  bool abortsAll_ = false;
};

} // namespace tsql
