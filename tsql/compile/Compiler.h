// Compiles for one session: batches, procedures, views, SELECT ... INTO, and the expressions within
// definitions. It keeps what it has compiled, so that a batch or procedure that runs again is not compiled
// again.
#pragma once

#include <map>
#include <span>
#include <unordered_map>

#include "tsql/compile/Planner.h"

namespace tsql {

class Compiler {
 public:
  Compiler(const Connection& connection, const Catalog& catalog)
      : context_{connection, catalog, {}, false, {}} {}

  // The names and types of the parameters are part of what a batch means. Those with a name are the first of
  // the unit's variables, those without are its markers, both in their order.
  std::shared_ptr<CompiledUnit> CompileBatch(std::string_view text, std::span<const Parameter> parameters);
  std::shared_ptr<CompiledUnit> CompileProcedure(const ObjectName& name); // 2812 when there is none
  std::shared_ptr<CompiledUnit> CompileTrigger(const TriggerInfo& trigger);

  // A function of a user, to be given back when the call has ended. Calls within calls need units of their
  // own, because a statement of SQLite cannot run twice at once. 4121 when there is none of the key.
  std::shared_ptr<CompiledUnit> TakeFunction(std::string_view key);
  void GiveBack(std::shared_ptr<CompiledUnit> function);
  // Makes units enough for all calls that can be open at once in a statement with these dependencies, and
  // returns their tables, which SQLite must have before the statement runs.
  std::vector<TablePtr> MakeFunctionsReady(const std::vector<Dependency>& dependencies);
  // Whether the table is one of a function's unit.
  bool IsFunctionTable(const TablePtr& table) const;
  // Throws what is wrong with a trigger.
  void CheckTrigger(const CreateTriggerStatement& statement) const;
  // Throws what is wrong with a function.
  void CheckFunction(const CreateFunctionStatement& statement) const;

  // For the plans of one unit.
  Planner PlannerFor(CompiledUnit& unit) const { return {context_, unit}; }

  // SELECT ... INTO is compiled in two steps, because its table is made between them: the first gives the
  // query with its columns, the second the plan that fills the table from it.
  BoundQueryPtr BindInto(const QueryStatement& statement, const CompiledUnit& unit,
                         std::vector<Dependency>& dependencies) const;
  Plan PlanInto(BoundQueryPtr query, const TablePtr& table, std::vector<Dependency> dependencies) const;

  // The names of the modules WITH SCHEMABINDING that use the table, view or function of the key, or that
  // column of the table.
  std::vector<std::string> SchemaBoundUsers(std::string_view key, const std::string* column = nullptr) const;

  // Throws what is wrong with a view's query.
  void CheckView(const CreateViewStatement& statement) const;

  // A CHECK condition of the table in SQLite's terms.
  std::string CompileCheck(const TableInfo& table, const std::string& text) const;
  // The expression of a computed column of the table in SQLite's terms.
  std::string CompileComputed(const TableInfo& table, const ColumnInfo& column) const;
  // The columns of the table that a CHECK condition or a computed column looks at, by position, each once.
  std::vector<int> ColumnsOfCheck(const TableInfo& table, const std::string& text) const;
  std::vector<int> ColumnsOfComputed(const TableInfo& table, const ColumnInfo& column) const;
  // What a DEFAULT is bound to.
  std::vector<Dependency> DefaultDependencies(const std::string& text) const;
  // A column's DEFAULT in SQLite's terms: as an expression, and its present value as a constant.
  std::string CompileDefault(const ColumnInfo& column) const;
  std::string EvaluateDefault(const ColumnInfo& column) const;
  // The values of a column as they go into a column of the type, in SQLite's terms.
  std::string CompileConversion(const ColumnInfo& column, const Type& to) const;

  // The table that SET IDENTITY_INSERT allows explicit values for; null for none.
  const TablePtr& IdentityInsert() const { return context_.identityInsertTable; }
  void SetIdentityInsert(TablePtr table) { context_.identityInsertTable = std::move(table); }
  // Changes are limited to the rows of SET ROWCOUNT.
  void SetLimitsChanges(bool limits) { context_.limitsChanges = limits; }
  const CompileOptions& Options() const { return context_.options; }
  void SetOptions(const CompileOptions& options) { context_.options = options; }

 private:
  struct FunctionUnits {
    uint64_t version = 0; // of the catalog when it was asked for the function
    ModulePtr module;
    std::vector<Dependency> calls; // the functions that it calls itself
    std::vector<std::shared_ptr<CompiledUnit>> idle;
    size_t made = 0; // units, those in use included
  };
  struct TextHash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::shared_ptr<CompiledUnit> CompileSystemProcedure(const ObjectName& name);
  std::shared_ptr<CompiledUnit> MakeProcedure(std::unique_ptr<Batch> batch,
                                              const ModuleOptions& options) const;
  std::shared_ptr<CompiledUnit> MakeFunction(std::unique_ptr<Batch> batch, uint32_t number,
                                             const ModuleOptions& options, bool isNew) const;
  std::shared_ptr<CompiledUnit> MakeTrigger(std::unique_ptr<Batch> batch, const ModuleOptions& options) const;
  std::vector<Dependency> DependenciesOf(const ModuleInfo& module) const;
  FunctionUnits& UnitsOf(std::string_view key);
  void MakeUnit(FunctionUnits& units);
  void CollectCalls(const std::vector<Dependency>& dependencies, std::vector<FunctionUnits*>& found);

  CompileContext context_;
  std::unordered_map<std::string, FunctionUnits, TextHash, std::equal_to<>> functions_;
  uint32_t lastUnit_ = 0; // number of a function's unit
  std::map<std::string, std::shared_ptr<CompiledUnit>, NameLess> procedures_;
  std::map<std::string, std::shared_ptr<CompiledUnit>, NameLess> systemProcedures_;
  std::map<std::string, std::shared_ptr<CompiledUnit>, NameLess> triggers_;
  using Batches = std::unordered_map<std::string, std::shared_ptr<CompiledUnit>>;
  Batches batches_;
  const Batches::value_type* lastBatch_ = nullptr; // that was found
  std::string key_;                                // of the batch that is looked for; it keeps its memory
};

} // namespace tsql
