#include "tsql/bind/BoundTree.h"

#include <algorithm>

namespace tsql {

BoundExprPtr MakeNode(BoundExpr::Kind kind, const Type& type) {
  auto node = std::make_unique<BoundExpr>();
  node->kind = kind;
  node->type = type;
  return node;
}

BoundExprPtr MakeConstant(Datum value, const Type& type) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Constant, type);
  node->nullable = value.IsNull();
  node->constant = std::move(value);
  return node;
}

BoundExprPtr MakeFunction(FunctionId function, const Type& type, std::vector<BoundExprPtr> args) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Function, type);
  node->function = function;
  node->args = std::move(args);
  return node;
}

BoundExprPtr MakeGlobal(GlobalValue value, const Type& type) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Global, type);
  node->index = static_cast<int>(value);
  return node;
}

bool IsNullConstant(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Constant && expr.constant.IsNull();
}

bool HasFineType(const BoundExpr& expr) {
  return IsFine(expr.type.id) || std::any_of(expr.args.begin(), expr.args.end(),
                                             [](const BoundExprPtr& arg) { return HasFineType(*arg); });
}

void TakeCollation(BoundExpr& expr, const BoundExpr& from) {
  if (from.strength == CollationStrength::Coercible) return;
  expr.strength = from.strength;
  expr.collation = from.collation;
  expr.collationName = from.collationName;
  expr.conflict = from.conflict;
  // For another collation an index of the column does not serve.
  if (expr.collation != CollationId::Default) expr.baseColumn = false;
}

bool HasCollation(const BoundExpr& expr) {
  return expr.collation != CollationId::Default || expr.ownCollation != CollationId::Default ||
         std::ranges::any_of(expr.args, [](const BoundExprPtr& arg) { return HasCollation(*arg); });
}

bool AsksClock(const BoundExpr& expr) {
  const bool isClock = expr.kind == BoundExpr::Kind::Function &&
                       (expr.function == FunctionId::GetDate || expr.function == FunctionId::GetUtcDate);
  return isClock || std::ranges::any_of(expr.args, [](const BoundExprPtr& arg) { return AsksClock(*arg); });
}

bool SameExpr(const BoundExpr& left, const BoundExpr& right) {
  if (left.kind != right.kind || left.query || right.query || left.type != right.type ||
      left.collation != right.collation || left.source != right.source || left.index != right.index ||
      left.name != right.name || left.negated != right.negated || left.distinct != right.distinct ||
      left.compare != right.compare || left.arithmetic != right.arithmetic ||
      left.function != right.function || left.aggregate != right.aggregate || left.style != right.style ||
      left.constant != right.constant || left.window != right.window || left.descending != right.descending ||
      (left.over == nullptr) != (right.over == nullptr) || (left.over && *left.over != *right.over) ||
      left.hasElse != right.hasElse || left.hasOperand != right.hasOperand ||
      left.args.size() != right.args.size())
    return false;
  for (size_t i = 0; i < left.args.size(); ++i)
    if (!SameExpr(*left.args[i], *right.args[i])) return false;
  return true;
}

size_t OwnArguments(const BoundExpr& expr) {
  return expr.args.size() - (expr.over ? expr.over->partitions + expr.over->descending.size() : 0);
}

std::vector<BoundExpr*> Pointers(const std::vector<BoundExprPtr>& exprs) {
  std::vector<BoundExpr*> pointers;
  pointers.reserve(exprs.size());
  for (const BoundExprPtr& expr : exprs) pointers.push_back(expr.get());
  return pointers;
}

std::string ResultColumnName(size_t index) {
  return "c" + std::to_string(index);
}

BoundExpr& FirstItem(BoundQuery& query, size_t column) {
  BoundQuery* first = &query;
  while (first->op != SetOp::None) first = first->left.get();
  return *first->select->items[column].expr;
}

std::string StagedRowName() {
  return ResultColumnName(0);
}

std::string StagedNewName(size_t column) {
  return ResultColumnName(1 + 2 * column);
}

std::string StagedOldName(size_t column) {
  return ResultColumnName(2 + 2 * column);
}

std::string StagedOtherName(const TableInfo& table, size_t index) {
  return ResultColumnName(1 + 2 * table.columns.size() + index);
}

} // namespace tsql
