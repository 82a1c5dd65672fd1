#include <algorithm>
#include <utility>

#include "tsql/run/Interpreter.h"
#include "tsql/values/Errors.h"

namespace tsql {

// A function while it is called: its unit, and what belongs to the statement that calls it, which comes back
// by an exception too.
class Interpreter::FunctionUse {
 public:
  FunctionUse(Interpreter& interpreter, std::string_view name, std::vector<Datum> arguments)
      : owner_(interpreter) {
    if (owner_.nesting_ >= kMaxNesting) Fail(217, {});
    unit_ = owner_.compiler_.TakeFunction(name);
    callee_.unit = unit_.get();
    callee_.variables = std::move(arguments);
    try {
      callee_.variables.resize(unit_->variables.size());
    } catch (...) {
      owner_.compiler_.GiveBack(std::move(unit_));
      throw;
    }
    running_ = std::exchange(owner_.running_, &callee_);
    variables_ = owner_.context_.variables;
    target_ = owner_.target_;
    verb_ = owner_.verb_;
    rowCount_ = owner_.rowCount_;
    lastError_ = owner_.lastError_;
    noCount_ = std::exchange(owner_.noCount_, true); // a function sends nothing
    ++owner_.nesting_;
    ++owner_.functions_;
  }
  FunctionUse(const FunctionUse&) = delete;
  FunctionUse& operator=(const FunctionUse&) = delete;
  ~FunctionUse() {
    try {
      if (hasRun_) owner_.ClearTables(*unit_);
    } catch (...) {
      unit_->clearsFirst = true;
    }
    --owner_.functions_;
    --owner_.nesting_;
    owner_.noCount_ = noCount_;
    owner_.lastError_ = lastError_;
    owner_.rowCount_ = rowCount_;
    owner_.verb_ = verb_;
    owner_.target_ = target_;
    owner_.context_.variables = variables_;
    owner_.running_ = running_;
    owner_.compiler_.GiveBack(std::move(unit_));
  }

  CompiledUnit& Unit() { return *unit_; }
  Datum& Result() { return callee_.result; }

  void Run() {
    if (unit_->clearsFirst) owner_.ClearTables(*unit_);
    hasRun_ = true;
    owner_.RunList(*unit_->body);
  }

 private:
  Interpreter& owner_;
  std::shared_ptr<CompiledUnit> unit_;
  RunningUnit callee_;
  RunningUnit* running_ = nullptr;
  std::vector<Datum>* variables_ = nullptr;
  const TableInfo* target_ = nullptr;
  std::string_view verb_;
  int64_t rowCount_ = 0;
  int lastError_ = 0;
  bool noCount_ = false;
  bool hasRun_ = false;
};

void Interpreter::MakeFunctionsReady(Plan& plan) {
  // What a function calls was made ready for the statement that calls the function.
  if (plan.ready == catalog_.Version() || functions_ > 0) return;
  const std::vector<TablePtr> tables = compiler_.MakeFunctionsReady(plan.dependencies);
  const std::vector<TablePtr> present = catalog_.FunctionTables();
  for (const TablePtr& table : present)
    if (!compiler_.IsFunctionTable(table)) tableVariables_.DropOfFunction(table);
  tableVariables_.MakeForFunctions(tables);
  plan.ready = catalog_.Version();
}

void Interpreter::ClearTables(CompiledUnit& unit) const {
  if (unit.clearing.empty()) {
    std::vector<PreparedStatement> clearing;
    for (const TablePtr& table : unit.tables)
      for (const std::string& sql : Definitions::TruncatingSql(*table))
        clearing.push_back(connection_.Prepare(sql));
    unit.clearing = std::move(clearing);
  }
  for (PreparedStatement& statement : unit.clearing) {
    const StatementUse use(statement);
    statement.Step();
  }
}

// Only errors of the server may get into SQLite. Where a limit was reached, whoever runs the calling
// statement sees that in the limits.
template <typename Work>
auto Interpreter::WithinStatement(Work work) {
  try {
    return work();
  } catch (const SqliteFailure& failure) {
    throw Error(Translate(failure));
  } catch (const Canceled& canceled) {
    throw Error(MakeError(canceled.error, canceled.line, {}));
  }
}

Datum Interpreter::CallScalar(std::string_view name, std::vector<Datum> arguments) {
  return WithinStatement([&]() -> Datum {
    const bool hasNull = std::ranges::any_of(arguments, [](const Datum& value) { return value.IsNull(); });
    FunctionUse use(*this, name, std::move(arguments));
    if (hasNull && use.Unit().function->isNullOfNull) return {};
    use.Run();
    return std::move(use.Result());
  });
}

UserFunctions::Rows Interpreter::CallTable(std::string_view name, std::vector<Datum> arguments) {
  return WithinStatement([&] {
    FunctionUse use(*this, name, std::move(arguments));
    use.Run();
    CompiledUnit& unit = use.Unit();
    const TableInfo& table = *unit.tables.front();
    if (!unit.result) unit.result = connection_.Prepare("SELECT * FROM " + table.SqlName());
    const StatementUse reading(unit.result);
    Rows rows;
    while (unit.result.Step()) {
      std::vector<Datum>& row = rows.emplace_back();
      for (size_t i = 0; i < table.columns.size(); ++i)
        row.push_back(unit.result.ColumnDatum(static_cast<int>(i)));
    }
    return rows;
  });
}

} // namespace tsql
