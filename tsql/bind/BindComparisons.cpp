// Comparisons, IN, BETWEEN, LIKE and the logical operators.
#include <algorithm>

#include "tsql/bind/Binder.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

const char* OperatorName(CompareOp op) {
  switch (op) {
  case CompareOp::Equal: return "equal to";
  case CompareOp::NotEqual: return "not equal to";
  case CompareOp::Less: return "less than";
  case CompareOp::LessEqual: return "less than or equal to";
  case CompareOp::Greater: return "greater than";
  default: return "greater than or equal to";
  }
}

} // namespace

void Binder::CheckComparable(const BoundExpr& expr, const BoundExpr& other, const char* op) const {
  const auto isDay = [](TypeId id) { return FamilyOf(id) == Family::DateTime && id != TypeId::Time; };
  const bool isTimeOfDay = (expr.type.id == TypeId::Time && isDay(other.type.id)) ||
                           (other.type.id == TypeId::Time && isDay(expr.type.id));
  if (isTimeOfDay || IsLob(expr.type.id) || IsLob(other.type.id))
    Fail(402, {TypeName(expr.type.id), TypeName(other.type.id), op});
}

// Whether what is compared with it may meet null as its equal: a variable or NULL itself, with ANSI_NULLS
// off.
bool Binder::MeetsNulls(const Expr& expr) const {
  return !options_.ansiNulls &&
         (expr.kind == ExprKind::Null || expr.kind == ExprKind::Variable || expr.kind == ExprKind::Marker);
}

BoundExprPtr Binder::BindComparison(const Expr& expr) {
  BoundExprPtr node = Compare(Bind(*expr.args[0]), Bind(*expr.args[1]), expr.compare);
  const bool isEquality = expr.compare == CompareOp::Equal || expr.compare == CompareOp::NotEqual;
  node->nullsEqual = isEquality && (MeetsNulls(*expr.args[0]) || MeetsNulls(*expr.args[1]));
  return node;
}

BoundExprPtr Binder::BindEquality(const Expr& left, const Expr& right) {
  BoundExprPtr node = Compare(Bind(left), Bind(right), CompareOp::Equal);
  node->nullsEqual = MeetsNulls(left) || MeetsNulls(right);
  return node;
}

BoundExprPtr Binder::Compare(BoundExprPtr left, BoundExprPtr right, CompareOp op) {
  CheckComparable(*left, *right, OperatorName(op));
  const Type common = CommonTypeOf({left.get(), right.get()});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Compare, MakeType(TypeId::Bit));
  node->compare = op;
  // Texts of different lengths can be compared without conversion.
  const bool isText = IsText(common) && IsText(left->type) && IsText(right->type);
  node->args.push_back(isText ? std::move(left) : Convert(std::move(left), common));
  node->args.push_back(isText ? std::move(right) : Convert(std::move(right), common));
  UnifyCollations({node->args[0].get(), node->args[1].get()}, OperatorName(op));
  return node;
}

BoundExprPtr Binder::BindLogical(const Expr& expr, BoundExpr::Kind kind) {
  BoundExprPtr node = MakeNode(kind, MakeType(TypeId::Bit));
  node->negated = expr.negated;
  for (const ExprPtr& arg : expr.args) node->args.push_back(Bind(*arg));
  return node;
}

BoundExprPtr Binder::BindLike(const Expr& expr) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Like, MakeType(TypeId::Bit));
  node->negated = expr.negated;
  for (const ExprPtr& arg : expr.args) node->args.push_back(ConvertText(Bind(*arg)));
  UnifyCollations({node->args[0].get(), node->args[1].get()}, "like");
  return node;
}

BoundExprPtr Binder::BindBetween(const Expr& expr) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Between, MakeType(TypeId::Bit));
  node->negated = expr.negated;
  std::vector<const BoundExpr*> operands;
  for (const ExprPtr& arg : expr.args) {
    node->args.push_back(Bind(*arg));
    operands.push_back(node->args.back().get());
    CheckComparable(*operands.back(), *operands.front(), "greater than or equal to");
  }
  const Type common = CommonTypeOf(operands);
  const bool isText = IsText(common);
  for (BoundExprPtr& arg : node->args)
    if (!isText || !IsText(arg->type)) arg = Convert(std::move(arg), common);
  UnifyCollations(Pointers(node->args), "between");
  return node;
}

// a IN (b, c) as a = b OR a = c.
BoundExprPtr Binder::BindNullableList(const Expr& expr) {
  std::vector<BoundExprPtr> list;
  for (size_t i = 1; i < expr.args.size(); ++i) list.push_back(BindEquality(*expr.args[0], *expr.args[i]));
  // Joined by twos, so that a long list does not become a deep expression.
  while (list.size() > 1) {
    std::vector<BoundExprPtr> halves;
    for (size_t i = 0; i < list.size(); i += 2) {
      if (i + 1 == list.size()) {
        halves.push_back(std::move(list[i]));
        break;
      }
      halves.push_back(MakeNode(BoundExpr::Kind::Or, MakeType(TypeId::Bit)));
      halves.back()->args.push_back(std::move(list[i]));
      halves.back()->args.push_back(std::move(list[i + 1]));
    }
    list = std::move(halves);
  }
  if (!expr.negated) return std::move(list.front());
  BoundExprPtr none = MakeNode(BoundExpr::Kind::Not, MakeType(TypeId::Bit));
  none->args.push_back(std::move(list.front()));
  return none;
}

BoundExprPtr Binder::BindInList(const Expr& expr) {
  if (std::ranges::any_of(expr.args, [&](const ExprPtr& arg) { return MeetsNulls(*arg); }))
    return BindNullableList(expr);
  BoundExprPtr node = MakeNode(BoundExpr::Kind::In, MakeType(TypeId::Bit));
  node->negated = expr.negated;
  std::vector<const BoundExpr*> operands;
  for (const ExprPtr& arg : expr.args) {
    node->args.push_back(Bind(*arg));
    operands.push_back(node->args.back().get());
    CheckComparable(*operands.back(), *operands.front(), "equal to");
  }
  const Type common = CommonTypeOf(operands);
  const bool isText = IsText(common);
  for (BoundExprPtr& arg : node->args)
    if (!isText || !IsText(arg->type)) arg = Convert(std::move(arg), common);
  UnifyCollations(Pointers(node->args), "equal to");
  return node;
}

BoundExprPtr Binder::BindInQuery(const Expr& expr) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::InQuery, MakeType(TypeId::Bit));
  node->negated = expr.negated;
  BoundExprPtr left = Bind(*expr.args[0]);
  node->query = BindQuery(*expr.query, true);
  if (node->query->columns.size() != 1) Fail(116, {});
  BoundExpr item;
  item.kind = BoundExpr::Kind::Column;
  item.type = node->query->columns[0].type;
  TakeCollation(item, FirstItem(*node->query, 0));
  CheckComparable(*left, item, "equal to");
  const Type common = CommonTypeOf({left.get(), &item});
  if (!IsText(common) || !IsText(left->type)) left = Convert(std::move(left), common);
  if (!IsText(common) || !IsText(item.type)) ConvertColumns(*node->query, {common});
  if (IsText(common)) UnifyCollations({left.get(), &item}, "equal to");
  node->args.push_back(std::move(left));
  return node;
}

BoundExprPtr Binder::BindQuantified(const Expr& expr) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Quantified, MakeType(TypeId::Bit));
  node->negated = expr.negated;
  node->compare = expr.compare;
  BoundExprPtr left = Bind(*expr.args[0]);
  node->query = BindQuery(*expr.query, true);
  if (node->query->columns.size() != 1) Fail(116, {});
  node->source = nextSource_++;
  BoundExprPtr item = MakeNode(BoundExpr::Kind::Column, node->query->columns[0].type);
  item->source = node->source;
  item->name = ResultColumnName(0);
  TakeCollation(*item, FirstItem(*node->query, 0));
  item->ownCollation = item->collation;
  CheckComparable(*left, *item, OperatorName(expr.compare));
  const Type common = CommonTypeOf({left.get(), item.get()});
  const bool isText = IsText(common) && IsText(left->type) && IsText(item->type);
  node->args.push_back(isText ? std::move(left) : Convert(std::move(left), common));
  node->args.push_back(isText ? std::move(item) : Convert(std::move(item), common));
  UnifyCollations(Pointers(node->args), OperatorName(expr.compare));
  return node;
}

} // namespace tsql
