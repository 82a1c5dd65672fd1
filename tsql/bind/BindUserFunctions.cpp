// Functions of users. A scalar function and one that fills a table are called while the statement runs; the
// query of an inline function becomes a part of the statement, each of its parameters the argument.
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Parser.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

std::string FullName(const CreateFunctionStatement& function) {
  const ObjectName& name = function.name;
  return (name.schema.empty() ? "dbo" : name.schema) + "." + name.name;
}

} // namespace

// An inline function while its query is bound: its arguments, and what they are bound in.
struct Binder::Inlined {
  const CreateFunctionStatement& function;
  const std::vector<ExprPtr>& args;
  Scope* scope;
  const Inlined* outer;
  std::vector<CommonInfo>* commons;
};

const CreateFunctionStatement& Binder::ParsedFunction(const ModulePtr& module, const ObjectName& name) {
  dependencies_.push_back({name, nullptr, nullptr, module});
  functions_.push_back(ParseModule(module->text, module->schema, module->name,
                                   {module->options.quotedIdentifier, catalog_.DatabaseName()}));
  return static_cast<const CreateFunctionStatement&>(*functions_.back()->statements.front());
}

void Binder::CheckArgumentCount(const CreateFunctionStatement& function, size_t count) {
  if (count < function.parameters.size()) Fail(313, {FullName(function)});
  if (count > function.parameters.size()) Fail(8144, {FullName(function)});
}

std::vector<BoundExprPtr> Binder::BindFunctionArguments(const CreateFunctionStatement& function,
                                                        const std::vector<ExprPtr>& args) {
  CheckArgumentCount(function, args.size());
  std::vector<BoundExprPtr> bound;
  for (size_t i = 0; i < args.size(); ++i) {
    const ProcedureParameter& parameter = function.parameters[i];
    if (args[i]->kind != ExprKind::Default) {
      bound.push_back(Convert(Bind(*args[i]), parameter.type));
      continue;
    }
    // A parameter without a default is null.
    Scope* saved = std::exchange(scope_, nullptr);
    bound.push_back(parameter.defaultValue ? Convert(Bind(*parameter.defaultValue), parameter.type)
                                           : MakeConstant({}, parameter.type));
    scope_ = saved;
  }
  return bound;
}

BoundExprPtr Binder::BindUserCall(const Expr& expr) {
  ObjectName name;
  name.schema = expr.parts[0];
  name.name = expr.parts[1];
  if (inCheck_) Refuse("A function of a user in a CHECK constraint or computed column");
  if (EqualNames(name.schema, "sys")) Refuse("A function of the schema sys");
  const ModulePtr module = catalog_.FindFunction(name);
  if (!module || module->kind != ModuleKind::ScalarFunction)
    Fail(4121, {expr.parts[0], JoinParts(expr.parts)});
  CheckSchemaBound(name, module.get());
  const CreateFunctionStatement& function = ParsedFunction(module, name);
  BoundExprPtr node = MakeNode(BoundExpr::Kind::UserFunction, function.returns);
  node->name = module->key;
  node->args = BindFunctionArguments(function, expr.args);
  return node;
}

BoundExprPtr Binder::BindInlinedParameter(const Expr& expr) {
  const Inlined& inlined = *inlined_;
  for (size_t i = 0; i < inlined.function.parameters.size(); ++i) {
    const ProcedureParameter& parameter = inlined.function.parameters[i];
    if (!EqualNames(parameter.name, expr.text)) continue;
    const Expr* arg = inlined.args.empty() ? nullptr : inlined.args[i].get();
    const bool isDefault = arg != nullptr && arg->kind == ExprKind::Default;
    if (isDefault) arg = parameter.defaultValue.get();
    if (arg == nullptr) {
      // While the function is made, no arguments are known.
      BoundExprPtr unknown = MakeConstant({}, parameter.type);
      return unknown;
    }
    Scope* savedScope = std::exchange(scope_, isDefault ? nullptr : inlined.scope);
    std::swap(commons_, *inlined.commons);
    inlined_ = inlined.outer;
    BoundExprPtr value = Convert(Bind(*arg), parameter.type);
    inlined_ = &inlined;
    std::swap(commons_, *inlined.commons);
    scope_ = savedScope;
    // The parameter is like a variable, whatever it stands for.
    value->strength = CollationStrength::Coercible;
    value->collation = CollationId::Default;
    value->collationName.clear();
    return value;
  }
  Fail(137, {expr.text});
}

BoundQueryPtr Binder::BindInlined(const CreateFunctionStatement& function, const TableSource& source,
                                  Scope* outer) {
  std::vector<CommonInfo> savedCommons = std::exchange(commons_, {});
  const Inlined inlined{function, source.args, outer, inlined_, &savedCommons};
  Scope* savedScope = std::exchange(scope_, nullptr);
  const std::vector<TablePtr>* savedVariables = std::exchange(tableVariables_, nullptr);
  inlined_ = &inlined;
  BoundQueryPtr query = BindQuery(*function.query, true);
  inlined_ = inlined.outer;
  tableVariables_ = savedVariables;
  scope_ = savedScope;
  commons_ = std::move(savedCommons);
  return query;
}

BoundQueryPtr Binder::BindFunctionQuery(const CreateFunctionStatement& function) {
  const TableSource none;
  return BindInlined(function, none, nullptr);
}

// STRING_SPLIT(text, separator) in place of a table.
BoundSourcePtr Binder::BindSplit(const TableSource& source, Scope& scope, Scope* visible) {
  constexpr const char* kName = "string_split";
  constexpr const char* kColumn = "value";
  if (source.args.size() != 2) Fail(174, {kName, "2"});
  auto node = std::make_unique<BoundSource>();
  node->kind = BoundSource::Kind::Split;
  Scope* saved = std::exchange(scope_, visible);
  for (const ExprPtr& arg : source.args) {
    node->args.push_back(Bind(*arg));
    const Type& type = node->args.back()->type;
    if (!IsText(type) && !IsNullConstant(*node->args.back()))
      Fail(8116, {TypeName(type.id), std::to_string(node->args.size()), kName});
  }
  scope_ = saved;
  const Type& text = node->args[0]->type;
  const bool isUnicode = IsUnicode(text.id) || IsUnicode(node->args[1]->type.id);
  const Type type = MakeType(isUnicode ? TypeId::NVarChar : TypeId::VarChar, IsText(text) ? text.length : 1);
  const std::vector<std::string>& aliases = source.columnAliases;
  ScopeSource entry;
  entry.isAlias = !source.alias.empty();
  entry.exposed = entry.isAlias ? source.alias : kName;
  if (aliases.size() > 1) Fail(8159, {entry.exposed});
  node->columns.push_back({kColumn, type, false});
  // The separator is found whatever its collation, but that of the text is its parts' too.
  RequireCollation(*node->args[0], kName);
  entry.columns.push_back({aliases.empty() ? kColumn : aliases[0],
                           ResultColumnName(0),
                           type,
                           false,
                           {node->args[0]->collation, node->args[0]->collationName}});
  MarkApplied(*node, entry.columns.size(), scope, visible);
  node->id = nextSource_++;
  entry.id = node->id;
  AddSource(scope, std::move(entry));
  return node;
}

BoundSourcePtr Binder::BindFunctionSource(const TableSource& source, Scope& scope, Scope* visible) {
  if (source.name.schema.empty() && EqualNames(source.name.name, "string_split"))
    return BindSplit(source, scope, visible);
  constexpr int kMaxDepth = 32;
  const ModulePtr module = catalog_.FindFunction(source.name);
  if (!module || module->kind == ModuleKind::ScalarFunction) Fail(208, {source.name.Written()});
  CheckSchemaBound(source.name, module.get());
  const CreateFunctionStatement& function = ParsedFunction(module, source.name);
  CheckArgumentCount(function, source.args.size());
  auto node = std::make_unique<BoundSource>();
  ScopeSource entry;
  entry.isAlias = !source.alias.empty();
  entry.exposed = entry.isAlias ? source.alias : source.name.name;
  entry.schema = module->schema;
  if (function.function == FunctionKind::Inline) {
    if (++viewDepth_ > kMaxDepth) Fail(217, {});
    node->kind = BoundSource::Kind::Query;
    const bool savedNulls = std::exchange(options_.ansiNulls, module->options.ansiNulls);
    node->query = BindInlined(function, source, visible);
    options_.ansiNulls = savedNulls;
    --viewDepth_;
    entry.columns = ColumnsOf(*node->query, source.columnAliases, module->name, true);
  } else {
    node->kind = BoundSource::Kind::Function;
    node->function = module->key;
    Scope* saved = std::exchange(scope_, visible);
    node->args = BindFunctionArguments(function, source.args);
    scope_ = saved;
    const std::vector<ColumnDefinition>& columns = function.result.columns;
    const std::vector<std::string>& aliases = source.columnAliases;
    if (!aliases.empty() && aliases.size() != columns.size())
      Fail(aliases.size() < columns.size() ? 8158 : 8159, {entry.exposed});
    for (size_t i = 0; i < columns.size(); ++i) {
      node->columns.push_back({columns[i].name, columns[i].type, true});
      entry.columns.push_back({aliases.empty() ? columns[i].name : aliases[i], ResultColumnName(i),
                               columns[i].type, true, columns[i].collation.value_or(NamedCollation())});
    }
  }
  MarkApplied(*node, entry.columns.size(), scope, visible);
  node->id = nextSource_++;
  entry.id = node->id;
  AddSource(scope, std::move(entry));
  return node;
}

} // namespace tsql
