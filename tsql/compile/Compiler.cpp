#include "tsql/compile/Compiler.h"

#include "tsql/compile/Preparation.h"
#include "tsql/sqlite/Values.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr size_t kMaxCachedBatches = 512;

const std::vector<VariableInfo> kNoVariables;
const std::vector<Type> kNoMarkers;

void AppendType(std::string& key, const Type& type) {
  const auto code = EncodeType(type);
  key.append(reinterpret_cast<const char*>(&code), sizeof code);
}

} // namespace

std::shared_ptr<CompiledUnit> Compiler::CompileBatch(std::string_view text,
                                                     std::span<const Parameter> parameters) {
  key_.assign(text);
  for (const Parameter& parameter : parameters) {
    key_.append(1, '\0').append(parameter.name).append(1, ' ');
    AppendType(key_, parameter.type);
  }
  const auto found = batches_.find(key_);
  if (found != batches_.end()) return found->second;
  auto unit = std::make_shared<CompiledUnit>();
  unit->batch = ParseBatch(std::string(text));
  unit->body = &unit->batch->statements;
  for (const Parameter& parameter : parameters) {
    const Type type = CompleteType(parameter.type);
    if (parameter.name.empty()) {
      unit->markers.push_back(type);
    } else {
      unit->variables.push_back({parameter.name, type});
    }
  }
  PlannerFor(*unit).CompileAll();
  if (batches_.size() >= kMaxCachedBatches) batches_.clear();
  batches_.emplace(key_, unit);
  return unit;
}

std::shared_ptr<CompiledUnit> Compiler::CompileProcedure(const ObjectName& name) {
  const ModulePtr module = context_.catalog.FindProcedure(name);
  if (!module) {
    RefuseIfListed(RefusedKind::Procedure, name.name);
    Fail(2812, {name.name});
  }
  std::shared_ptr<CompiledUnit>& cached = procedures_[name.name];
  if (cached && cached->module->text == module->text) return cached;
  auto unit = std::make_shared<CompiledUnit>();
  unit->batch = ParseBatch(module->text);
  unit->procedure = static_cast<const CreateProcedureStatement*>(unit->batch->statements.front().get());
  unit->body = &unit->procedure->body;
  unit->module = module;
  for (const ProcedureParameter& parameter : unit->procedure->parameters)
    unit->variables.push_back({parameter.name, parameter.type});
  PlannerFor(*unit).CompileAll();
  cached = unit;
  return unit;
}

BoundQueryPtr Compiler::BindInto(const QueryStatement& statement, const CompiledUnit& unit) const {
  return Binder(context_.catalog, unit.variables, unit.markers).BindStatementQuery(*statement.query);
}

Plan Compiler::PlanInto(BoundQueryPtr query, const TablePtr& table) const {
  BoundInsert insert;
  insert.query = std::move(query);
  insert.table = table;
  for (size_t i = 0; i < insert.query->columns.size(); ++i) insert.columns.push_back(static_cast<int>(i));
  EmittedSql emitted = Emitter().EmitInsert(insert);
  Plan plan;
  plan.statement = Prepare(context_.connection, emitted.sql);
  plan.parameters = std::move(emitted.parameters);
  return plan;
}

void Compiler::CheckView(const CreateViewStatement& statement) const {
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  const std::vector<Column> columns = binder.BindViewQuery(*statement.query)->columns;
  for (const Dependency& dependency : binder.Dependencies())
    if (dependency.table && dependency.table->place != Place::Main) Fail(4508, {});
  const std::vector<std::string>& names = statement.columns;
  if (!names.empty() && names.size() != columns.size())
    Fail(names.size() < columns.size() ? 8158 : 8159, {statement.name.name});
  const auto nameOf = [&](size_t column) { return names.empty() ? columns[column].name : names[column]; };
  for (size_t i = 0; i < columns.size(); ++i) {
    if (nameOf(i).empty()) Fail(4511, {std::to_string(i + 1)});
    for (size_t j = 0; j < i; ++j)
      if (EqualNames(nameOf(i), nameOf(j))) Fail(4506, {nameOf(i), statement.name.name});
  }
}

std::string Compiler::CompileCheck(const TableInfo& table, const std::string& text) const {
  const ExprPtr expr = ParseCheck(text);
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  return Emitter().EmitExpression(*binder.BindCheck(*expr, table));
}

std::string Compiler::CompileDefault(const ColumnInfo& column) const {
  const ExprPtr expr = ParseDefault(column.defaultText);
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  const BoundExprPtr bound = binder.Assign(binder.BindScalar(*expr), column.type);
  PreparedStatement value = Prepare(context_.connection, "SELECT " + Emitter().EmitExpression(*bound));
  value.Step();
  return Emitter().EmitExpression(*MakeConstant(value.ColumnDatum(0), column.type));
}

} // namespace tsql
