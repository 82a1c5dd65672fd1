#include "tsql/compile/Compiler.h"

#include <algorithm>
#include <iterator>

#include "tsql/compile/Preparation.h"
#include "tsql/compile/SystemProcedures.h"
#include "tsql/sqlite/Values.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr size_t kMaxCachedBatches = 512;
// In the key of a batch that was read with QUOTED_IDENTIFIER off.
constexpr std::string_view kTextsInQuotes("\0\"", 2);

using TypeCode = decltype(EncodeType(Type()));

void AppendParameter(std::string& key, const Parameter& parameter) {
  const TypeCode code = EncodeType(parameter.type);
  key.append(1, '\0').append(parameter.name).append(1, ' ');
  key.append(reinterpret_cast<const char*>(&code), sizeof code);
}

// Takes the part off the front of the key; false when the key does not begin with it.
bool TakePart(std::string_view& key, std::string_view part) {
  using Bytes = std::char_traits<char>;
  if (key.size() < part.size() || Bytes::compare(key.data(), part.data(), part.size()) != 0) return false;
  key.remove_prefix(part.size());
  return true;
}

// Whether the key is what the parameters make of the text, which is quicker to see than to make another one.
bool IsKey(std::string_view key, std::string_view text, std::span<const Parameter> parameters,
           bool quotedIdentifier) {
  if (!TakePart(key, text)) return false;
  for (const Parameter& parameter : parameters) {
    const TypeCode code = EncodeType(parameter.type);
    if (!TakePart(key, {"\0", 1}) || !TakePart(key, parameter.name) || !TakePart(key, " ") ||
        !TakePart(key, {reinterpret_cast<const char*>(&code), sizeof code}))
      return false;
  }
  return quotedIdentifier ? key.empty() : key == kTextsInQuotes;
}

} // namespace

std::shared_ptr<CompiledUnit> Compiler::CompileBatch(std::string_view text,
                                                     std::span<const Parameter> parameters) {
  // The same batch again and again is the usual case.
  const bool quotedIdentifier = context_.options.quotedIdentifier;
  if (lastBatch_ != nullptr && IsKey(lastBatch_->first, text, parameters, quotedIdentifier))
    return lastBatch_->second;
  key_.assign(text);
  for (const Parameter& parameter : parameters) AppendParameter(key_, parameter);
  if (!quotedIdentifier) key_ += kTextsInQuotes;
  const auto found = batches_.find(key_);
  if (found != batches_.end()) {
    lastBatch_ = &*found;
    return found->second;
  }
  auto unit = std::make_shared<CompiledUnit>();
  unit->batch = ParseBatch(std::string(text), {quotedIdentifier, context_.catalog.DatabaseName()});
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
  if (batches_.size() >= kMaxCachedBatches) {
    lastBatch_ = nullptr;
    batches_.clear();
  }
  batches_.emplace(key_, unit);
  return unit;
}

// A procedure of the server comes before one of a user that has its name.
std::shared_ptr<CompiledUnit> Compiler::CompileSystemProcedure(const ObjectName& name) {
  const auto found = systemProcedures_.find(name.name);
  if (found != systemProcedures_.end()) return found->second;
  std::unique_ptr<Batch> batch = MakeSystemProcedure(name);
  if (!batch) return nullptr;
  std::shared_ptr<CompiledUnit> unit = MakeProcedure(std::move(batch), {});
  systemProcedures_.emplace(name.name, unit);
  return unit;
}

std::shared_ptr<CompiledUnit> Compiler::MakeProcedure(std::unique_ptr<Batch> batch,
                                                      const ModuleOptions& options) const {
  auto unit = std::make_shared<CompiledUnit>();
  unit->options = options;
  unit->batch = std::move(batch);
  unit->procedure = static_cast<const CreateProcedureStatement*>(unit->batch->statements.front().get());
  unit->body = &unit->procedure->body;
  for (const ProcedureParameter& parameter : unit->procedure->parameters)
    unit->variables.push_back({parameter.name, parameter.type});
  PlannerFor(*unit).CompileAll();
  return unit;
}

std::shared_ptr<CompiledUnit> Compiler::CompileProcedure(const ObjectName& name) {
  const bool isSystem = name.name.size() > 3 && EqualNames(std::string_view(name.name).substr(0, 3), "sp_");
  if (isSystem)
    if (std::shared_ptr<CompiledUnit> unit = CompileSystemProcedure(name)) return unit;
  const ModulePtr module = context_.catalog.FindProcedure(name);
  if (!module) {
    RefuseIfListed(RefusedKind::Procedure, name.name);
    Fail(2812, {name.Written()});
  }
  std::shared_ptr<CompiledUnit>& cached = procedures_[module->key];
  if (cached && IsSameModule(*cached->module, *module)) return cached;
  std::shared_ptr<CompiledUnit> unit =
      MakeProcedure(ParseModule(module->text, module->schema, module->name,
                                {module->options.quotedIdentifier, context_.catalog.DatabaseName()}),
                    module->options);
  unit->module = module;
  cached = unit;
  return unit;
}

std::shared_ptr<CompiledUnit> Compiler::MakeTrigger(std::unique_ptr<Batch> batch,
                                                    const ModuleOptions& options) const {
  auto unit = std::make_shared<CompiledUnit>();
  unit->options = options;
  unit->batch = std::move(batch);
  unit->trigger = static_cast<const CreateTriggerStatement*>(unit->batch->statements.front().get());
  unit->procedure = unit->trigger;
  unit->body = &unit->trigger->body;
  PlannerFor(*unit).CompileAll();
  return unit;
}

std::shared_ptr<CompiledUnit> Compiler::CompileTrigger(const TriggerInfo& trigger) {
  const ModuleInfo& module = *trigger.module;
  std::shared_ptr<CompiledUnit>& cached = triggers_[module.key];
  if (cached && IsSameModule(*cached->module, module)) return cached;
  std::shared_ptr<CompiledUnit> unit =
      MakeTrigger(ParseModule(module.text, module.schema, module.name,
                              {module.options.quotedIdentifier, context_.catalog.DatabaseName()}),
                  module.options);
  unit->module = trigger.module;
  cached = std::move(unit);
  return cached;
}

std::shared_ptr<CompiledUnit> Compiler::MakeFunction(std::unique_ptr<Batch> batch, uint32_t number,
                                                     const ModuleOptions& options, bool isNew) const {
  auto unit = std::make_shared<CompiledUnit>();
  unit->options = options;
  unit->isNew = isNew;
  unit->number = number;
  unit->batch = std::move(batch);
  unit->function = static_cast<const CreateFunctionStatement*>(unit->batch->statements.front().get());
  unit->procedure = unit->function;
  unit->body = &unit->function->body;
  for (const ProcedureParameter& parameter : unit->function->parameters)
    unit->variables.push_back({parameter.name, parameter.type});
  PlannerFor(*unit).CompileAll();
  return unit;
}

Compiler::FunctionUnits& Compiler::UnitsOf(std::string_view key) {
  auto found = functions_.find(key);
  if (found == functions_.end()) found = functions_.emplace(std::string(key), FunctionUnits()).first;
  FunctionUnits& units = found->second;
  if (units.version == context_.catalog.Version()) return units;
  const ModulePtr module = context_.catalog.FunctionOfKey(key);
  if (!module) {
    const bool isOfDbo = !units.module || units.module->schema.empty();
    const std::string schema = isOfDbo ? "dbo" : units.module->schema;
    Fail(4121, {schema, schema + "." + (units.module ? units.module->name : found->first)});
  }
  const bool isSame = units.module && IsSameModule(*units.module, *module) &&
                      (units.idle.empty() || PlannerFor(*units.idle.back()).IsCurrent());
  if (!isSame) {
    units = FunctionUnits();
    units.module = module;
  }
  units.version = context_.catalog.Version();
  return units;
}

void Compiler::MakeUnit(FunctionUnits& units) {
  const ModuleInfo& module = *units.module;
  const std::shared_ptr<CompiledUnit> unit =
      MakeFunction(ParseModule(module.text, module.schema, module.name,
                               {module.options.quotedIdentifier, context_.catalog.DatabaseName()}),
                   ++lastUnit_, module.options, false);
  unit->module = units.module;
  if (units.made == 0) {
    for (const std::unique_ptr<Plan>& plan : unit->plans)
      if (plan) std::ranges::copy_if(plan->dependencies, std::back_inserter(units.calls), IsCall);
  }
  units.idle.reserve(++units.made); // so that a unit can be given back without memory
  units.idle.push_back(unit);
}

std::shared_ptr<CompiledUnit> Compiler::TakeFunction(std::string_view key) {
  FunctionUnits& units = UnitsOf(key);
  if (units.idle.empty()) MakeUnit(units);
  std::shared_ptr<CompiledUnit> unit = std::move(units.idle.back());
  units.idle.pop_back();
  return unit;
}

void Compiler::GiveBack(std::shared_ptr<CompiledUnit> function) {
  const auto found = functions_.find(std::string_view(function->module->key));
  if (found != functions_.end() && found->second.module == function->module)
    found->second.idle.push_back(std::move(function));
}

void Compiler::CollectCalls(const std::vector<Dependency>& dependencies, std::vector<FunctionUnits*>& found) {
  for (const Dependency& dependency : dependencies) {
    if (!IsCall(dependency)) continue;
    try {
      FunctionUnits& units = UnitsOf(dependency.function->key);
      if (std::ranges::count(found, &units) > 0) continue;
      if (units.idle.empty()) MakeUnit(units);
      found.push_back(&units);
      CollectCalls(units.calls, found);
    } catch (const Error&) { // NOLINT(bugprone-empty-catch): whoever calls the function fails in the same way
    }
  }
}

std::vector<TablePtr> Compiler::MakeFunctionsReady(const std::vector<Dependency>& dependencies) {
  std::vector<FunctionUnits*> found;
  CollectCalls(dependencies, found);
  std::vector<TablePtr> tables;
  for (FunctionUnits* const units : found) {
    if (units->idle.front()->tables.empty()) continue;
    // A function that does not come back to itself is open once, whoever calls it.
    std::vector<FunctionUnits*> callees;
    CollectCalls(units->calls, callees);
    const bool isRecursive = std::ranges::count(callees, units) > 0;
    while (isRecursive && units->idle.size() < kMaxNesting) MakeUnit(*units);
    for (const std::shared_ptr<CompiledUnit>& unit : units->idle)
      tables.insert(tables.end(), unit->tables.begin(), unit->tables.end());
  }
  return tables;
}

bool Compiler::IsFunctionTable(const TablePtr& table) const {
  return std::ranges::any_of(functions_, [&](const auto& entry) {
    return std::ranges::any_of(entry.second.idle, [&](const std::shared_ptr<CompiledUnit>& unit) {
      return std::ranges::count(unit->tables, table) > 0;
    });
  });
}

BoundQueryPtr Compiler::BindInto(const QueryStatement& statement, const CompiledUnit& unit,
                                 std::vector<Dependency>& dependencies) const {
  Binder binder(context_.catalog, unit.variables, unit.markers);
  binder.SetOptions(Planner::OptionsOf(context_, unit));
  binder.SetTableVariables(unit.tables, Binder::Variables::InCatalog);
  binder.SetLimited(context_.limitsChanges);
  BoundQueryPtr query = binder.BindStatementQuery(*statement.query);
  dependencies = binder.Dependencies();
  return query;
}

Plan Compiler::PlanInto(BoundQueryPtr query, const TablePtr& table,
                        std::vector<Dependency> dependencies) const {
  BoundInsert insert;
  insert.query = std::move(query);
  insert.table = table;
  const std::optional<IntoIdentity>& identity = insert.query->identity;
  for (size_t i = 0; i < table->columns.size(); ++i)
    if (!identity || !identity->isGenerated || i != identity->column)
      insert.columns.push_back(static_cast<int>(i));
  EmittedSql emitted = Emitter().EmitInsert(insert);
  Plan plan;
  plan.callsFunctions = std::ranges::any_of(dependencies, IsCall);
  plan.dependencies = std::move(dependencies);
  plan.statement = Prepare(context_.connection, emitted.sql);
  plan.parameters = std::move(emitted.parameters);
  return plan;
}

} // namespace tsql
