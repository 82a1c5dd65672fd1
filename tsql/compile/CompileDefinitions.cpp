// What the compiler does for definitions: checks of modules, and the expressions within tables.
#include <algorithm>
#include <iterator>

#include "tsql/catalog/SchemaBinding.h"
#include "tsql/compile/Compiler.h"
#include "tsql/compile/FunctionRules.h"
#include "tsql/compile/Preparation.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

const std::vector<VariableInfo> kNoVariables;
const std::vector<Type> kNoMarkers;

bool ComparesNull(const BoundExpr& expr) {
  return expr.nullsEqual ||
         std::ranges::any_of(expr.args, [](const BoundExprPtr& arg) { return ComparesNull(*arg); });
}

// The catalog keeps no options with an expression.
void RefuseNullComparison(const BoundExpr& expr) {
  if (ComparesNull(expr))
    Refuse("A comparison with NULL in a CHECK constraint or computed column with ANSI_NULLS off");
}

void CollectColumns(const BoundExpr& expr, const TableInfo& table, std::vector<int>& columns) {
  for (const BoundExprPtr& arg : expr.args) CollectColumns(*arg, table, columns);
  if (expr.kind != BoundExpr::Kind::Column) return;
  const int column = table.FindColumn(expr.name);
  if (std::ranges::find(columns, column) == columns.end()) columns.push_back(column);
}

} // namespace

void Compiler::CheckTrigger(const CreateTriggerStatement& statement) const {
  const CompileOptions& options = context_.options;
  MakeTrigger(ParseBatch(statement.text, {options.quotedIdentifier, context_.catalog.DatabaseName()}),
              options.OfModule());
}

void Compiler::CheckFunction(const CreateFunctionStatement& statement) const {
  if (statement.function != FunctionKind::Inline) {
    CheckFunctionBody(statement.body);
    const CompileOptions& options = context_.options;
    MakeFunction(ParseBatch(statement.text, {options.quotedIdentifier, context_.catalog.DatabaseName()}), 0,
                 options.OfModule(), true);
    return;
  }
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  binder.SetOptions(context_.options.bind);
  binder.SetInFunction(true);
  if (statement.schemaBound) binder.SetSchemaBound("function", statement.name.name);
  const std::vector<Column> columns = binder.BindFunctionQuery(statement)->columns;
  for (size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].name.empty()) Fail(4514, {std::to_string(i + 1)});
    for (size_t j = 0; j < i; ++j)
      if (EqualNames(columns[i].name, columns[j].name)) Fail(4506, {columns[i].name, statement.name.name});
  }
}

std::vector<Dependency> Compiler::DependenciesOf(const ModuleInfo& module) const {
  std::unique_ptr<Batch> batch =
      ParseModule(module.text, module.schema, module.name,
                  {module.options.quotedIdentifier, context_.catalog.DatabaseName()});
  const Statement& statement = *batch->statements.front();
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  if (module.kind == ModuleKind::View) {
    binder.BindViewQuery(*static_cast<const CreateViewStatement&>(statement).query);
    return binder.Dependencies();
  }
  if (module.kind == ModuleKind::InlineFunction) {
    binder.SetInFunction(true);
    binder.BindFunctionQuery(static_cast<const CreateFunctionStatement&>(statement));
    return binder.Dependencies();
  }
  std::vector<Dependency> dependencies;
  const std::shared_ptr<CompiledUnit> unit = MakeFunction(std::move(batch), 0, module.options, false);
  for (const std::unique_ptr<Plan>& plan : unit->plans)
    if (plan) std::ranges::copy(plan->dependencies, std::back_inserter(dependencies));
  return dependencies;
}

std::vector<std::string> Compiler::SchemaBoundUsers(std::string_view key, const std::string* column) const {
  const auto isUsed = [&](const Dependency& dependency) {
    const std::string& used = dependency.table  ? dependency.table->storageName
                              : dependency.view ? dependency.view->key
                                                : dependency.function->key;
    return EqualNames(used, key);
  };
  std::vector<std::string> users;
  for (const ModulePtr& module : context_.catalog.AllModules()) {
    const bool mayBeBound = module->kind != ModuleKind::Procedure && module->kind != ModuleKind::Trigger;
    if (!mayBeBound || EqualNames(module->key, key) || !IsSchemaBound(*module)) continue;
    const std::vector<Dependency> dependencies = DependenciesOf(*module);
    if (std::ranges::none_of(dependencies, isUsed) || (column && !Names(*module, *column))) continue;
    const auto hasColumn = [&](const Dependency& other) {
      return !isUsed(other) && other.table && other.table->FindColumn(*column) >= 0;
    };
    if (column && std::ranges::any_of(dependencies, hasColumn))
      Refuse("Changing a column where a schema-bound module uses several tables with one of its name");
    users.push_back(module->name);
  }
  return users;
}

void Compiler::CheckView(const CreateViewStatement& statement) const {
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  binder.SetOptions(context_.options.bind);
  if (statement.schemaBound) binder.SetSchemaBound("view", statement.name.name);
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
  binder.SetOptions({.ansiNulls = context_.options.bind.ansiNulls});
  const BoundExprPtr check = binder.BindCheck(*expr, table);
  RefuseNullComparison(*check);
  if (table.place == Place::Main && HasFineType(*check))
    storage::RequireVersion(context_.connection, storage::kFineVersion);
  if (table.place == Place::Main && HasCollation(*check))
    storage::RequireVersion(context_.connection, storage::kCollationVersion);
  return Emitter().EmitExpression(*check);
}

std::vector<int> Compiler::ColumnsOfCheck(const TableInfo& table, const std::string& text) const {
  const ExprPtr expr = ParseCheck(text);
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  std::vector<int> columns;
  CollectColumns(*binder.BindCheck(*expr, table), table, columns);
  return columns;
}

std::string Compiler::CompileComputed(const TableInfo& table, const ColumnInfo& column) const {
  const ExprPtr expr = ParseDefault(column.computedText);
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  binder.SetOptions({.ansiNulls = context_.options.bind.ansiNulls});
  const BoundExprPtr computed = binder.BindComputed(*expr, table);
  RefuseNullComparison(*computed);
  if (table.place == Place::Main && HasCollation(*computed))
    storage::RequireVersion(context_.connection, storage::kCollationVersion);
  return Emitter().EmitExpression(*computed);
}

std::vector<int> Compiler::ColumnsOfComputed(const TableInfo& table, const ColumnInfo& column) const {
  const ExprPtr expr = ParseDefault(column.computedText);
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  std::vector<int> columns;
  CollectColumns(*binder.BindComputed(*expr, table), table, columns);
  return columns;
}

std::vector<Dependency> Compiler::DefaultDependencies(const std::string& text) const {
  const ExprPtr expr = ParseDefault(text);
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  binder.BindScalar(*expr);
  return binder.Dependencies();
}

std::string Compiler::CompileDefault(const ColumnInfo& column) const {
  const ExprPtr expr = ParseDefault(column.defaultText);
  Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  return Emitter().EmitExpression(*binder.Assign(binder.BindScalar(*expr), column.type));
}

std::string Compiler::EvaluateDefault(const ColumnInfo& column) const {
  PreparedStatement value = Prepare(context_.connection, "SELECT " + CompileDefault(column));
  value.Step();
  return Emitter().EmitExpression(*MakeConstant(value.ColumnDatum(0), column.type));
}

std::string Compiler::CompileConversion(const ColumnInfo& column, const Type& to) const {
  const Binder binder(context_.catalog, kNoVariables, kNoMarkers);
  return Emitter().EmitExpression(*binder.BindConversion(column, to));
}

} // namespace tsql
