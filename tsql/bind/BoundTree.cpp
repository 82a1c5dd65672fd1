#include "tsql/bind/BoundTree.h"

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

bool SameExpr(const BoundExpr& left, const BoundExpr& right) {
  if (left.kind != right.kind || left.query || right.query || left.type != right.type ||
      left.source != right.source || left.index != right.index || left.name != right.name ||
      left.negated != right.negated || left.distinct != right.distinct || left.compare != right.compare ||
      left.arithmetic != right.arithmetic || left.function != right.function ||
      left.aggregate != right.aggregate || left.style != right.style || left.constant != right.constant ||
      left.hasElse != right.hasElse || left.hasOperand != right.hasOperand ||
      left.args.size() != right.args.size())
    return false;
  for (size_t i = 0; i < left.args.size(); ++i)
    if (!SameExpr(*left.args[i], *right.args[i])) return false;
  return true;
}

std::string ResultColumnName(size_t index) {
  return "c" + std::to_string(index);
}

} // namespace tsql
