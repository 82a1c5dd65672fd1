#include "tsql/bind/Binder.h"

#include <algorithm>

#include "tsql/catalog/Schemas.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/ConversionRules.h"
#include "tsql/values/Errors.h"

namespace tsql {
std::string JoinParts(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ".") + part;
  return text;
}

int FindVariable(const std::vector<VariableInfo>& variables, std::string_view name) {
  for (size_t i = 0; i < variables.size(); ++i)
    if (EqualNames(variables[i].name, name)) return static_cast<int>(i);
  return -1;
}

// ---- conversions

BoundExprPtr Binder::Convert(BoundExprPtr expr, const Type& to) const {
  if (expr->type == to) return expr;
  if (IsNullConstant(*expr)) {
    expr->type = to;
    return expr;
  }
  switch (FindConversion(expr->type.id, to.id)) {
  case Conversion::Impossible: Fail(206, {TypeName(expr->type.id), TypeName(to.id)});
  case Conversion::ExplicitOnly: Fail(257, {TypeName(expr->type.id), TypeName(to.id)});
  case Conversion::Implicit: break;
  }
  if (expr->kind == BoundExpr::Kind::Constant) {
    // A constant is converted here, once. One that cannot be converted is an error only if it is evaluated.
    try {
      BoundExprPtr constant =
          MakeConstant(tsql::Convert(expr->constant, expr->type, to, ConvertMode::Cast), to);
      TakeCollation(*constant, *expr);
      return constant;
    } catch (const Error&) { // NOLINT(bugprone-empty-catch)
    }
  }
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Cast, to);
  node->nullable = expr->nullable;
  if (IsText(to)) TakeCollation(*node, *expr);
  node->args.push_back(std::move(expr));
  return node;
}

BoundExprPtr Binder::ConvertText(BoundExprPtr expr) const {
  if (IsText(expr->type)) return expr;
  constexpr int32_t kNumberLength = 50;
  const bool isBinary = FamilyOf(expr->type.id) == Family::Binary;
  const Type type = MakeType(TypeId::VarChar, isBinary ? expr->type.length : kNumberLength);
  return Convert(std::move(expr), type);
}

BoundExprPtr Binder::Assign(BoundExprPtr expr, const Type& to) const {
  RequireCollation(*expr, to);
  if (expr->type == to) return expr;
  const Family family = FamilyOf(to.id);
  const bool isString = family == Family::Text || family == Family::Binary;
  if (!isString || FamilyOf(expr->type.id) != family) return Convert(std::move(expr), to);
  if (FindConversion(expr->type.id, to.id) != Conversion::Implicit || IsNullConstant(*expr))
    return Convert(std::move(expr), to);
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Store, to);
  node->nullable = expr->nullable;
  if (expr->kind == BoundExpr::Kind::Constant) {
    try {
      return MakeConstant(tsql::Convert(expr->constant, expr->type, to, ConvertMode::Assign), to);
    } catch (const Error&) { // NOLINT(bugprone-empty-catch)
    }
  }
  node->args.push_back(std::move(expr));
  return node;
}

BoundExprPtr Binder::BindConversion(const ColumnInfo& column, const Type& to) const {
  BoundExprPtr value = MakeNode(BoundExpr::Kind::Column, column.type);
  value->name = column.name;
  value->nullable = column.nullable;
  return Assign(std::move(value), to);
}

Type Binder::CommonTypeOf(const std::vector<const BoundExpr*>& exprs) {
  std::optional<Type> common;
  for (const BoundExpr* expr : exprs) {
    if (IsNullConstant(*expr)) continue;
    common = common ? CommonType(*common, expr->type) : expr->type;
  }
  if (!common) return MakeType(TypeId::Int);
  if (FamilyOf(common->id) == Family::Integer) common->precision = 0;
  return *common;
}

// ---- names

bool Binder::MatchesSource(const ScopeSource& source, const std::vector<std::string>& parts) {
  const std::string& prefix = parts[parts.size() - 2];
  if (!EqualNames(source.exposed, prefix)) return false;
  if (parts.size() == 2) return true;
  // In dbo.T.c, T is the name of a table and never an alias.
  const std::string& schema = parts[parts.size() - 3];
  return !source.isAlias && (source.schema.empty() ? IsDbo(schema) : EqualNames(schema, source.schema));
}

Binder::Resolved Binder::ResolveIn(const Scope& scope, const std::vector<std::string>& parts,
                                   bool& prefixFound) const {
  Resolved found;
  for (const ScopeSource& source : scope.sources) {
    if (parts.size() > 1) {
      if (!MatchesSource(source, parts)) continue;
      prefixFound = true;
    } else if (source.needsPrefix) {
      continue;
    }
    for (const ScopeColumn& column : source.columns) {
      if (!EqualNames(column.name, parts.back())) continue;
      if (found.column != nullptr) Fail(209, {parts.back()});
      found = {&source, &column};
    }
  }
  return found;
}

// A column that a system view has on the server and not here.
void Binder::RefuseSystemColumn(const Scope& scope, const std::vector<std::string>& parts) {
  for (const ScopeSource& source : scope.sources) {
    if (source.system == nullptr || (parts.size() > 1 && !MatchesSource(source, parts))) continue;
    const std::string schema =
        source.system->schema == nullptr ? "" : std::string(source.system->schema) + ".";
    RefuseIfListed(RefusedKind::SystemColumn, schema + source.system->name + "." + parts.back());
  }
}

Binder::Resolved Binder::Resolve(const std::vector<std::string>& parts) const {
  for (Scope* scope = scope_; scope != nullptr; scope = scope->outer) {
    bool prefixFound = false;
    const Resolved found = ResolveIn(*scope, parts, prefixFound);
    if (found.column != nullptr) {
      scope->isUsed = true;
      return found;
    }
    RefuseSystemColumn(*scope, parts);
    if (prefixFound) Fail(207, {parts.back()});
  }
  if (parts.size() > 1) Fail(4104, {JoinParts(parts)});
  Fail(207, {parts.back()});
}

BoundExprPtr Binder::MakeColumn(const ScopeSource& source, const ScopeColumn& column) const {
  const TypeId type = column.type.id;
  const bool isLongType = type == TypeId::Text || type == TypeId::NText || type == TypeId::Image;
  if (source.isFired && isLongType && !trigger_->insteadOf) Fail(311, {});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Column, column.type);
  node->nullable = column.nullable;
  node->source = source.id;
  node->name = column.sqlName;
  if (IsText(column.type)) {
    node->strength = CollationStrength::Implicit;
    node->collation = node->ownCollation = column.collation.id;
    node->collationName = column.collation.name;
  }
  node->baseColumn = source.isTable && node->collation == CollationId::Default;
  node->display = source.exposed.empty() ? column.name : source.exposed + "." + column.name;
  return node;
}

} // namespace tsql
