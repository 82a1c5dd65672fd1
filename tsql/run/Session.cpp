#include <algorithm>
#include <cctype>

#include "tsql/run/Database.h"
#include "tsql/run/Interpreter.h"
#include "tsql/sqlite/Values.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

bool IsVariableName(std::string_view name) {
  return name.starts_with('@') && std::ranges::all_of(name.substr(1), [](unsigned char byte) {
           return byte >= 0x80 || std::isalnum(byte) != 0 || byte == '_' || byte == '@' || byte == '#' ||
                  byte == '$';
         });
}

class SessionImpl : public Session {
 public:
  explicit SessionImpl(std::shared_ptr<DatabaseImpl> database)
      : database_(std::move(database)), connection_(database_->Connect()),
        catalog_(connection_, database_->Name()), compiler_(connection_, catalog_),
        definitions_(connection_, catalog_, compiler_), transaction_(connection_, catalog_),
        interpreter_(connection_, catalog_, compiler_, definitions_, context_, transaction_) {
    context_.catalog = &catalog_;
    context_.userFunctions = &interpreter_;
    RegisterFunctions(connection_.Handle(), context_);
    dataVersion_ = connection_.Prepare("PRAGMA main.data_version");
    if (database_->IsFile()) schemaVersion_ = connection_.Prepare("PRAGMA main.schema_version");
  }
  SessionImpl(const SessionImpl&) = delete;
  SessionImpl& operator=(const SessionImpl&) = delete;
  ~SessionImpl() override;

  bool Execute(std::string_view batch, std::span<Parameter> parameters, ResultSink& sink) override;
  std::optional<int32_t> Call(std::string_view procedure, std::span<Parameter> parameters,
                              ResultSink& sink) override;
  void Begin() override { transaction_.Begin(); }
  void Commit() override;
  void Rollback() override;
  int TransactionCount() const override { return transaction_.Count(); }
  bool NoCount() const override { return interpreter_.NoCount(); }
  int ProcedureNesting() const override { return interpreter_.ProcedureNesting(); }
  void SetNow(std::optional<DateTime> now) override;
  ChangeStamp GetChangeStamp() override;
  void SetLockTimeout(int milliseconds) override { interpreter_.limits().SetLockTimeout(milliseconds); }
  void SetWorkLimit(std::optional<int64_t> steps) override { interpreter_.limits().SetWorkLimit(steps); }
  void Reset() override;
  void SetTimeLimit(std::optional<std::chrono::milliseconds> limit) override {
    interpreter_.limits().SetTimeLimit(limit);
  }
  void SetStopRequest(std::function<bool()> isStopWanted) override {
    interpreter_.limits().SetStopRequest(std::move(isStopWanted));
  }

 private:
  // sp_executesql, which is no procedure that is kept but a form of EXECUTE.
  std::optional<int32_t> CallDynamic(std::span<Parameter> parameters, ResultSink& sink);
  // The state of a batch, which keeps its memory for the next one.
  struct Lent {
    explicit Lent(RunningUnit& running) : unit(running) {}
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;
    ~Lent() { unit.Clear(); }
    RunningUnit& unit;
  };
  void Refresh();
  void DropLocalTables();
  void DropGlobalTables();
  void PublishSchema();
  static void ReadArguments(std::span<const Parameter> parameters, const CompiledUnit& unit,
                            RunningUnit& running);
  // `index` is that of the variable which the output parameter receives.
  static void WriteOutput(Parameter& parameter, const CompiledUnit& unit, const RunningUnit& running,
                          size_t index);
  std::vector<bool> FillParameters(std::span<Parameter> parameters, const CompiledUnit& unit,
                                   RunningUnit& running) const;
  template <typename Work>
  bool Guard(ResultSink& sink, Work work);
  void Cancel(const Canceled& canceled, ResultSink& sink);

  std::shared_ptr<DatabaseImpl> database_;
  FunctionContext context_;
  Connection connection_;
  Catalog catalog_;
  Compiler compiler_;
  Definitions definitions_;
  Transaction transaction_;
  PreparedStatement schemaVersion_;
  PreparedStatement dataVersion_;
  Interpreter interpreter_;
  RunningUnit running_; // of a batch
};

SessionImpl::~SessionImpl() {
  try {
    transaction_.RollbackIfOpen();
    DropGlobalTables();
    PublishSchema();
  } catch (...) { // NOLINT(bugprone-empty-catch): closing the connection rolls back too
  }
}

ChangeStamp SessionImpl::GetChangeStamp() {
  const StatementUse use(dataVersion_);
  dataVersion_.Step();
  return {sqlite3_total_changes64(connection_.Handle()), dataVersion_.ColumnInteger(0)};
}

void SessionImpl::Reset() {
  try {
    transaction_.RollbackIfOpen();
    DropLocalTables();
    DropGlobalTables();
  } catch (const SqliteFailure& failure) {
    throw interpreter_.Translate(failure);
  }
  PublishSchema();
  interpreter_.Reset();
}

void SessionImpl::DropLocalTables() {
  const std::vector<Catalog::TempTable> tables = catalog_.TempTables();
  for (const Catalog::TempTable& entry : tables) definitions_.DropTable(TableInfo(*entry.table));
}

// Global temporary tables end with the session that created them.
void SessionImpl::DropGlobalTables() {
  if (catalog_.OwnGlobalTables().empty()) return;
  Refresh();
  const std::vector<std::string> names = catalog_.OwnGlobalTables();
  for (const std::string& name : names) {
    ObjectName object;
    object.name = name;
    const TablePtr table = catalog_.FindTable(object);
    if (!table) continue;
    StatementScope scope(transaction_, Place::Global);
    definitions_.DropTable(*table);
    scope.Complete();
    transaction_.MarkSchemaChange();
  }
}

void SessionImpl::Refresh() {
  uint64_t version = database_->schemaVersion.load();
  if (schemaVersion_) {
    // Other processes may change a file too. SQLite counts the changes of all of them.
    const StatementUse use(schemaVersion_);
    schemaVersion_.Step();
    version = static_cast<uint64_t>(schemaVersion_.ColumnInteger(0)) + 1;
  }
  catalog_.Refresh(version, DatabaseImpl::globalVersion.load());
}

void SessionImpl::PublishSchema() {
  if (!transaction_.TakeSchemaChange()) return;
  ++database_->schemaVersion;
  ++DatabaseImpl::globalVersion;
}

void SessionImpl::ReadArguments(std::span<const Parameter> parameters, const CompiledUnit& unit,
                                RunningUnit& running) {
  for (const Parameter& parameter : parameters) {
    const bool isMarker = parameter.name.empty();
    std::vector<Datum>& values = isMarker ? running.markers : running.variables;
    const Type& type = isMarker ? unit.markers[values.size()] : unit.variables[values.size()].type;
    SetDatum(values.emplace_back(), parameter.value, type);
  }
}

void SessionImpl::WriteOutput(Parameter& parameter, const CompiledUnit& unit, const RunningUnit& running,
                              size_t index) {
  const Type type = CompleteType(parameter.type);
  const Datum value = Convert(running.variables[index], unit.variables[index].type, type, ConvertMode::Cast);
  std::string made;
  parameter.value = ValueOfDatum(value, type, made);
  parameter.storage = IsFine(type.id) ? made : value.text;
  const bool isText = parameter.value.kind == Value::Kind::Text || parameter.value.kind == Value::Kind::Bytes;
  if (isText) parameter.value.text = parameter.storage;
}

template <typename Work>
bool SessionImpl::Guard(ResultSink& sink, Work work) {
  bool succeeded = false;
  try {
    interpreter_.BeginWork();
    Refresh();
    succeeded = work();
    if (!interpreter_.EndWork(sink)) succeeded = false;
  } catch (const Canceled& canceled) {
    Cancel(canceled, sink);
  } catch (const SqliteFailure& failure) {
    if (interpreter_.limits().Ended(failure)) {
      Cancel(interpreter_.limits().CanceledAt(0), sink);
    } else {
      interpreter_.Report(interpreter_.Translate(failure), sink);
    }
  } catch (const Error& error) {
    interpreter_.Report(error, sink);
  }
  PublishSchema();
  return succeeded;
}

void SessionImpl::Cancel(const Canceled& canceled, ResultSink& sink) {
  if (canceled.error == kTimeoutExpired && !interpreter_.XactAbort()) {
    transaction_.Synchronize();
  } else {
    transaction_.RollbackIfOpen();
  }
  interpreter_.Report(MakeError(canceled.error, canceled.line, {}), sink);
}

bool SessionImpl::Execute(std::string_view batch, std::span<Parameter> parameters, ResultSink& sink) {
  return Guard(sink, [&] {
    const std::shared_ptr<CompiledUnit> unit = compiler_.CompileBatch(batch, parameters);
    const Lent lent(running_);
    RunningUnit& running = lent.unit;
    ReadArguments(parameters, *unit, running);
    if (static_cast<size_t>(unit->batch->markers) > running.markers.size())
      Fail(180, {std::to_string(running.markers.size() + 1)});
    const bool succeeded = interpreter_.RunBatch(*unit, running, sink);
    for (Parameter& parameter : parameters) {
      const int variable = parameter.output ? FindVariable(unit->variables, parameter.name) : -1;
      if (variable >= 0) WriteOutput(parameter, *unit, running, static_cast<size_t>(variable));
    }
    return succeeded;
  });
}

std::vector<bool> SessionImpl::FillParameters(std::span<Parameter> parameters, const CompiledUnit& unit,
                                              RunningUnit& running) const {
  const std::vector<ProcedureParameter>& declared = unit.procedure->parameters;
  running.variables.resize(unit.variables.size());
  std::vector<bool> given(declared.size(), false);
  size_t position = 0;
  for (const Parameter& parameter : parameters) {
    const size_t index = ParameterIndex(unit, parameter.name, position++);
    const Type type = CompleteType(parameter.type);
    running.variables[index] =
        Convert(DatumOfValue(parameter.value, type), type, declared[index].type, ConvertMode::Cast);
    given[index] = true;
  }
  return given;
}

std::optional<int32_t> SessionImpl::CallDynamic(std::span<Parameter> parameters, ResultSink& sink) {
  std::vector<Parameter> values(parameters.begin(), parameters.end());
  std::string batch = "EXEC @status = sp_executesql";
  for (size_t i = 0; i < values.size(); ++i) {
    values[i].name = "@value" + std::to_string(i);
    batch += i == 0 ? " " : ", ";
    // The text and the declarations are the first two under whatever names.
    const std::string& name = parameters[i].name;
    if (i >= 2 && !name.empty()) {
      if (!IsVariableName(name)) {
        interpreter_.Report(MakeError(8145, 0, {name, "sp_executesql"}), sink);
        return std::nullopt;
      }
      batch += name + " = ";
    }
    batch += values[i].name;
    if (values[i].output) batch += " OUTPUT";
  }
  Parameter& status = values.emplace_back();
  status.name = "@status";
  status.type = MakeType(TypeId::Int);
  status.output = true;
  if (!Execute(batch, values, sink)) return std::nullopt;
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (!parameters[i].output) continue;
    Parameter& parameter = parameters[i];
    parameter.storage = values[i].storage;
    parameter.value = values[i].value;
    if (parameter.value.kind == Value::Kind::Text || parameter.value.kind == Value::Kind::Bytes)
      parameter.value.text = parameter.storage;
  }
  return static_cast<int32_t>(values.back().value.integer);
}

std::optional<int32_t> SessionImpl::Call(std::string_view procedure, std::span<Parameter> parameters,
                                         ResultSink& sink) {
  ObjectName name;
  name.name = std::string(procedure);
  const size_t dot = name.name.rfind('.');
  if (dot != std::string::npos) {
    name.schema = name.name.substr(0, dot);
    name.name.erase(0, dot + 1);
  }
  if (EqualNames(name.name, kDynamicProcedure)) return CallDynamic(parameters, sink);
  RunningUnit running;
  const bool succeeded = Guard(sink, [&] {
    const std::shared_ptr<CompiledUnit> unit = compiler_.CompileProcedure(name);
    running.procedure = unit->procedure->name.name;
    interpreter_.FillDefaults(*unit, running, FillParameters(parameters, *unit, running));
    const bool ran = interpreter_.RunProcedure(*unit, running, sink);
    size_t position = 0;
    for (Parameter& parameter : parameters) {
      const size_t index = ParameterIndex(*unit, parameter.name, position++);
      if (parameter.output) WriteOutput(parameter, *unit, running, index);
    }
    return ran;
  });
  return succeeded ? std::optional<int32_t>(running.returnStatus) : std::nullopt;
}

void SessionImpl::Commit() {
  try {
    transaction_.Commit();
  } catch (const SqliteFailure& failure) {
    throw interpreter_.Translate(failure);
  }
  PublishSchema();
}

void SessionImpl::Rollback() {
  try {
    transaction_.Rollback();
  } catch (const SqliteFailure& failure) {
    throw interpreter_.Translate(failure);
  }
  PublishSchema();
}

void SessionImpl::SetNow(std::optional<DateTime> now) {
  interpreter_.SetNow(now ? std::optional<int64_t>(now->days * kTicksPerDay + now->ticks) : std::nullopt);
}

} // namespace

std::unique_ptr<Session> Session::Open(std::shared_ptr<Database> database) {
  auto own = std::dynamic_pointer_cast<DatabaseImpl>(std::move(database));
  if (!own) Fail(4060, {""});
  try {
    return std::make_unique<SessionImpl>(own);
  } catch (const SqliteFailure& failure) {
    own->FailOpening(failure);
  }
}

} // namespace tsql
