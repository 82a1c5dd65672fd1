#include <algorithm>
#include <optional>

#include "tsql/run/ForeignKeys.h"
#include "tsql/run/Interpreter.h"
#include "tsql/sqlite/Values.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

const OutputClause* OutputOf(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Insert: return static_cast<const InsertStatement&>(statement).output.get();
  case StatementKind::Update: return static_cast<const UpdateStatement&>(statement).output.get();
  default: return static_cast<const DeleteStatement&>(statement).output.get();
  }
}

// The target of the change that runs, while it runs.
class TargetUse {
 public:
  TargetUse(const TableInfo*& target, const TableInfo* table) : target_(target) { target = table; }
  TargetUse(const TargetUse&) = delete;
  TargetUse& operator=(const TargetUse&) = delete;
  ~TargetUse() { target_ = nullptr; }

 private:
  const TableInfo*& target_;
};

// Of WHERE CURRENT OF; null without it.
const CursorName* CursorOf(const Statement& statement) {
  const CursorName* name = nullptr;
  if (statement.kind == StatementKind::Update)
    name = &static_cast<const UpdateStatement&>(statement).currentOf;
  if (statement.kind == StatementKind::Delete)
    name = &static_cast<const DeleteStatement&>(statement).currentOf;
  return name == nullptr || name->name.empty() ? nullptr : name;
}

const char* VerbOf(StatementKind kind) {
  switch (kind) {
  case StatementKind::Insert: return "INSERT";
  case StatementKind::Update: return "UPDATE";
  case StatementKind::Delete: return "DELETE";
  default: return "";
  }
}

} // namespace

int64_t Interpreter::MakeCheckedChange(const TableInfo& target, const std::function<int64_t()>& change) {
  if (catalog_.TablesWithForeignKeys().empty() || target.place != Place::Main) return change();
  const std::vector<ForeignKey> foreignKeys = ForeignKeysOf(target, catalog_);
  if (foreignKeys.empty()) return change();
  context_.suspects.clear();
  StatementScope scope(transaction_, Place::Main);
  const int64_t count = change();
  CheckForeignKeys(foreignKeys, target, verb_ == VerbOf(StatementKind::Delete));
  scope.Complete();
  return count;
}

void Interpreter::CheckForeignKeys(const std::vector<ForeignKey>& foreignKeys, const TableInfo& changed,
                                   bool deletes) const {
  for (const ForeignKey& foreignKey : foreignKeys) {
    const bool isSuspected =
        std::find(context_.suspects.begin(), context_.suspects.end(),
                  foreignKey.child->ConstraintKey(*foreignKey.key)) != context_.suspects.end();
    if (!isSuspected || !IsViolated(connection_, *foreignKey.child, *foreignKey.key, *foreignKey.parent))
      continue;
    const bool isOfChild = !deletes && EqualNames(foreignKey.child->storageName, changed.storageName);
    throw Error(ForeignKeyError(foreignKey, isOfChild, Verb(), catalog_));
  }
}

int64_t Interpreter::StepChange(Plan& plan) {
  const StatementUse use(plan.statement);
  plan.statement.Step();
  return sqlite3_changes64(connection_.Handle());
}

int64_t Interpreter::RunStaged(const Statement& statement, Plan& plan, bool isOfCursor) {
  StagedPlan staged = MakePlanner().PlanStaged(statement);
  std::optional<StatementScope> scope;
  BeginScope(scope, *plan.target, staged.into.get());
  StagedRows rows;
  const StagedUse use(context_, rows);
  const int64_t count = MakeChange(*plan.target, [&] {
    StageChange(statement, plan, staged, rows);
    return static_cast<int64_t>(rows.size());
  });
  if (isOfCursor && count == 0) Fail(16947, {});
  if (statement.kind == StatementKind::Insert && count > 0) TakeIdentity(*plan.target);
  GiveOutput(staged);
  if (scope) scope->Complete();
  return count;
}

void Interpreter::FailChange(const SqliteFailure& failure, const TableInfo& target) {
  if (limits_.Ended(failure)) throw SqliteFailure(failure);
  if (failure.code == SQLITE_FULL && IsOutOfNumbers(target)) {
    const Type& type = target.columns[static_cast<size_t>(target.identityColumn)].type;
    Fail(8115, {"IDENTITY", TypeName(type.id)});
  }
  throw Error(Translate(failure)); // here, because the message needs the target
}

Interpreter::Flow Interpreter::RunChange(const Statement& statement) {
  int64_t count = 0;
  const Flow flow = Change(statement, count);
  if (flow != Flow::Next) return flow;
  const OutputClause* const output = OutputOf(statement);
  if (output != nullptr && !output->into) {
    rowCount_ = count; // its rows have been counted for the client
  } else {
    SendRowCount(count);
  }
  return flow;
}

Interpreter::Flow Interpreter::Change(const Statement& statement, int64_t& count) {
  Plan& plan = MakePlanner().ChangePlan(statement);
  const TablePtr target = plan.target;
  if (plan.identityInsert && LetsNumbersRepeat(target)) return Change(statement, count);
  const TargetUse use(target_, target.get());
  verb_ = VerbOf(statement.kind);
  const CursorName* const cursor = CursorOf(statement);
  if (cursor != nullptr) TakeCurrentRow(*cursor, *target);
  if (!target->IsVariable()) transaction_.BeforeWrite(); // a rollback leaves those
  BindParameters(plan);
  if (Fires(*target, statement.kind) || Cascades(statement.kind, plan))
    return RunFiring(statement, plan, cursor != nullptr, count);
  const bool hasOutput = OutputOf(statement) != nullptr;
  try {
    count = hasOutput ? RunStaged(statement, plan, cursor != nullptr) : MakeChange(*target, [&] {
      std::vector<Datum> before; // of the variables, for a second run of the statement
      if (!plan.assigned.empty()) before = running_->variables;
      try {
        const int64_t changed = StepChange(plan);
        if (statement.kind == StatementKind::Insert) CheckIdentity(*target, changed);
        return changed;
      } catch (const SqliteFailure& failure) {
        if (statement.kind != StatementKind::Update || !IsDuplicate(failure)) throw;
        if (!plan.assigned.empty()) running_->variables = std::move(before);
        return ReplaceRows(statement, *target);
      }
    });
  } catch (const SqliteFailure& failure) {
    FailChange(failure, *target);
  }
  if (hasOutput) return Flow::Next;
  if (cursor != nullptr && count == 0) Fail(16947, {});
  if (statement.kind == StatementKind::Insert && count > 0) TakeIdentity(*target);
  return Flow::Next;
}

bool Interpreter::IsDuplicate(const SqliteFailure& failure) {
  return failure.code == SQLITE_CONSTRAINT_UNIQUE || failure.code == SQLITE_CONSTRAINT_PRIMARYKEY ||
         failure.code == SQLITE_CONSTRAINT_ROWID;
}

// ---- INSERT ... EXEC

// Keeps the rows of a procedure for the INSERT that asked for them. Everything else goes on to the caller.
struct Interpreter::KeptRows : ResultSink {
  struct Result {
    std::vector<Type> types;
    std::vector<std::vector<Datum>> rows;
  };

  explicit KeptRows(ResultSink& outerSink) : outer(outerSink) {}

  void BeginRows(std::span<const Column> columns) override {
    Result& result = results.emplace_back();
    for (const Column& column : columns) result.types.push_back(column.type);
  }
  void Row(std::span<const Value> values) override {
    Result& result = results.back();
    std::vector<Datum>& row = result.rows.emplace_back();
    for (size_t i = 0; i < values.size(); ++i) row.push_back(DatumOfValue(values[i], result.types[i]));
  }
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const Error& info) override { outer.Message(info); }
  void Failed(const Error& error) override { outer.Failed(error); }

  ResultSink& outer;
  std::vector<Result> results;
};

Interpreter::Flow Interpreter::RunInsertExecute(const InsertExecuteStatement& statement) {
  if (takesRows_) Fail(8164, {});
  KeptRows kept(*sink_);
  Flow flow = Flow::Next;
  {
    struct Redirection {
      Redirection(Interpreter& interpreter, ResultSink& sink) : owner(interpreter), outer(interpreter.sink_) {
        owner.sink_ = &sink;
        owner.takesRows_ = true;
      }
      Redirection(const Redirection&) = delete;
      Redirection& operator=(const Redirection&) = delete;
      ~Redirection() {
        owner.sink_ = outer;
        owner.takesRows_ = false;
      }
      Interpreter& owner;
      ResultSink* outer;
    } const redirection(*this, kept);
    flow = RunExecute(*statement.execute);
  }
  if (flow != Flow::Next) return flow;
  BeginStatement();
  verb_ = "INSERT";
  const TablePtr written = catalog_.FindTable(statement.table);
  if (written && MakePlanner().InsertsIdentity(statement.table)) LetsNumbersRepeat(written);
  const TablePtr table = catalog_.FindTable(statement.table);
  if (table && Fires(*table, StatementKind::Insert)) {
    FiredRows fired;
    fired.updated.resize(table->columns.size(), true);
    const bool insteadOf = HasInsteadOf(*table, TriggerEvent::Insert);
    const InsertForm form = insteadOf ? InsertForm::RowsOnly : InsertForm::Returning;
    int64_t count = 0;
    flow = ChangeAndFire(*table, fired, insteadOf, {}, [&] {
      count = InsertKept(statement, kept, &fired.rows, form);
      return count;
    });
    if (flow == Flow::Next) SendRowCount(count);
  } else {
    StatementScope scope(transaction_, PlaceOf(statement.table));
    const int64_t count = InsertKept(statement, kept, nullptr, InsertForm::Plain);
    scope.Complete();
    SendRowCount(count);
  }
  lastError_ = 0;
  return flow;
}

int64_t Interpreter::InsertKept(const InsertExecuteStatement& statement, const KeptRows& kept,
                                StagedRows* staged, InsertForm form) {
  int64_t count = 0;
  for (const KeptRows::Result& result : kept.results) {
    Plan plan = MakePlanner().InsertedRowPlan(statement, result.types, form);
    const TablePtr target = plan.target;
    const TargetUse use(target_, target.get());
    if (plan.callsFunctions) MakeFunctionsReady(plan);
    const auto insertRows = [&] {
      for (const std::vector<Datum>& row : result.rows) {
        int number = 1;
        for (const ParameterRef& ref : plan.parameters) {
          const bool isMarker = ref.kind == BoundExpr::Kind::Marker;
          plan.statement.BindCopy(number++, isMarker ? row[static_cast<size_t>(ref.index)]
                                                     : GlobalDatum(static_cast<GlobalValue>(ref.index)));
        }
        if (staged != nullptr) {
          ReadRows(plan, *staged);
        } else {
          StepChange(plan);
        }
      }
      return static_cast<int64_t>(result.rows.size());
    };
    try {
      count += MakeChange(*target, insertRows);
      if (form != InsertForm::RowsOnly && !result.rows.empty()) TakeIdentity(*target);
    } catch (const SqliteFailure& failure) {
      if (limits_.Ended(failure)) throw;
      throw Error(Translate(failure)); // here, because the message needs the target
    }
  }
  return count;
}

} // namespace tsql
