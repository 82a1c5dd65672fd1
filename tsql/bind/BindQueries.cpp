#include <algorithm>
#include <cassert>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Whether the expression is the same for every row.
bool IsConstant(const BoundExpr& expr) {
  switch (expr.kind) {
  case BoundExpr::Kind::Constant:
  case BoundExpr::Kind::Variable:
  case BoundExpr::Kind::Marker: return true;
  case BoundExpr::Kind::Cast:
  case BoundExpr::Kind::Negate:
  case BoundExpr::Kind::BitNot:
  case BoundExpr::Kind::Arithmetic:
    return std::all_of(expr.args.begin(), expr.args.end(),
                       [](const BoundExprPtr& arg) { return IsConstant(*arg); });
  default: return false;
  }
}

bool HasVariable(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Variable || expr.kind == BoundExpr::Kind::Marker ||
         std::any_of(expr.args.begin(), expr.args.end(),
                     [](const BoundExprPtr& arg) { return HasVariable(*arg); });
}

const char* OperationName(SetOp op) {
  switch (op) {
  case SetOp::UnionAll: return "UNION ALL";
  case SetOp::Except: return "EXCEPT";
  case SetOp::Intersect: return "INTERSECT";
  default: return "UNION";
  }
}

bool IsUpdateLockWanted(const TableSource& source) {
  if (source.kind != TableSource::Kind::Join) return source.updateLock;
  return IsUpdateLockWanted(*source.left) || IsUpdateLockWanted(*source.right);
}

} // namespace

BoundQueryPtr Binder::BindStatementQuery(const Query& query) {
  maxRecursion_ = query.maxRecursion;
  const bool isInto = IntoOf(query) != nullptr;
  isUnionInto_ = isInto && query.op != SetOp::None;
  BoundQueryPtr bound = SortBeforeAssigning(BindQuery(query, false));
  return isInto && isLimited_ ? LimitRows(std::move(bound)) : std::move(bound);
}

// The rows of a query up to the limit of SET ROWCOUNT.
BoundQueryPtr Binder::LimitRows(BoundQueryPtr query) {
  auto outer = std::make_unique<BoundQuery>();
  outer->columns = query->columns;
  outer->identity = std::exchange(query->identity, std::nullopt);
  outer->select = std::make_unique<BoundSelect>();
  outer->select->top = MakeGlobal(GlobalValue::RowLimit, MakeType(TypeId::BigInt));
  auto source = std::make_unique<BoundSource>();
  source->kind = BoundSource::Kind::Query;
  source->id = nextSource_++;
  for (size_t i = 0; i < query->columns.size(); ++i) {
    BoundExprPtr column = MakeNode(BoundExpr::Kind::Column, query->columns[i].type);
    column->nullable = query->columns[i].nullable;
    column->source = source->id;
    column->name = ResultColumnName(i);
    TakeCollation(*column, FirstItem(*query, i));
    column->ownCollation = column->collation;
    outer->select->items.emplace_back().expr = std::move(column);
  }
  source->query = std::move(query);
  outer->select->from = std::move(source);
  return outer;
}

BoundQueryPtr Binder::BindViewQuery(const Query& query) {
  return BindQuery(query, true);
}

void Binder::RefreshColumns(BoundQuery& query) {
  query.columns.clear();
  for (const BoundItem& item : query.select->items) {
    Column column;
    column.name = item.name;
    column.type = item.expr->type;
    if (FamilyOf(column.type.id) == Family::Integer) column.type.precision = 0;
    column.nullable = item.expr->nullable;
    if (item.variable < 0) RequireCollation(*item.expr, "SELECT", query.columns.size() + 1);
    column.collation = item.expr->collationName;
    query.columns.push_back(std::move(column));
  }
}

BoundQueryPtr Binder::BindQuery(const Query& query, bool isInner) {
  const size_t outerCommons = commons_.size();
  std::vector<BoundCommon> commons;
  BindCommonTables(query.commonTables, commons);
  const bool hasTop = query.select && query.select->top;
  if (isInner && !query.orderBy.empty() && !hasTop && !query.offset) Fail(1033, {});
  if (hasTop && query.offset) Fail(10741, {});
  BoundQueryPtr bound;
  if (query.op == SetOp::None) {
    bound = std::make_unique<BoundQuery>();
    bound->select = BindSelect(*query.select, query.orderBy, bound->orderBy);
    if (query.select->into) bound->identity = std::exchange(intoIdentity_, std::nullopt);
    RefreshColumns(*bound);
  } else {
    bound = BindSetOperation(query);
    BindCompoundOrder(query.orderBy, *bound);
  }
  if (query.offset) bound->offset = BindRowCount(*query.offset, 0, 10742, 10743);
  if (query.fetch) bound->fetch = BindRowCount(*query.fetch, 1, 10744, 10745);
  bound->commons = std::move(commons);
  commons_.resize(outerCommons);
  return bound;
}

BoundQueryPtr Binder::BindSetOperation(const Query& query) {
  auto bound = std::make_unique<BoundQuery>();
  bound->op = query.op;
  bound->left = BindQuery(*query.left, false);
  bound->right = BindQuery(*query.right, false);
  for (const BoundQuery* branch : {bound->left.get(), bound->right.get()}) {
    if (branch->op != SetOp::None) continue;
    if (branch->select->items.front().variable >= 0) Fail(10734, {});
  }
  const std::vector<Column>& left = bound->left->columns;
  const std::vector<Column>& right = bound->right->columns;
  if (left.size() != right.size()) Fail(205, {});
  std::vector<Type> types;
  for (size_t i = 0; i < left.size(); ++i) {
    // A column that is only NULL takes the type of the other branch.
    const auto isNull = [i](const BoundQuery& branch) {
      return branch.op == SetOp::None && IsNullConstant(*branch.select->items[i].expr);
    };
    types.push_back(isNull(*bound->left)    ? right[i].type
                    : isNull(*bound->right) ? left[i].type
                                            : CommonType(left[i].type, right[i].type));
  }
  ConvertColumns(*bound->left, types);
  ConvertColumns(*bound->right, types);
  UnifyColumns(*bound->left, *bound->right, query.op);
  for (size_t i = 0; i < left.size(); ++i)
    bound->columns.push_back(
        {left[i].name, types[i], left[i].nullable || right[i].nullable, left[i].collation});
  return bound;
}

// The collations of the columns of both go to those of the first one.
void Binder::UnifyColumns(BoundQuery& left, BoundQuery& right, SetOp op) {
  for (size_t i = 0; i < left.columns.size(); ++i) {
    if (!IsText(left.columns[i].type)) continue;
    BoundExpr& item = FirstItem(left, i);
    // UNION ALL compares nothing, so that the column is in want of a collation only where it is used.
    if (op == SetOp::UnionAll) {
      CombineCollations(item, FirstItem(right, i), OperationName(op));
      RequireCollation(item, "SELECT", i + 1);
    } else {
      UnifyCollations({&item, &FirstItem(right, i)}, OperationName(op));
    }
    left.columns[i].collation = item.collationName;
  }
}

void Binder::ConvertColumns(BoundQuery& query, const std::vector<Type>& types) const {
  assert(query.columns.size() == types.size());
  if (query.op != SetOp::None) {
    ConvertColumns(*query.left, types);
    ConvertColumns(*query.right, types);
    for (size_t i = 0; i < types.size(); ++i) query.columns[i].type = types[i];
    return;
  }
  for (size_t i = 0; i < types.size(); ++i) {
    BoundExprPtr& expr = query.select->items[i].expr;
    // Texts of different lengths need no conversion.
    if (IsText(expr->type) && IsText(types[i]) && !IsFixedLength(types[i].id)) {
      query.columns[i].type = types[i];
      continue;
    }
    expr = Convert(std::move(expr), types[i]);
    query.columns[i].type = types[i];
  }
}

std::unique_ptr<BoundSelect> Binder::BindSelect(const Select& select, const std::vector<OrderItem>& orderBy,
                                                std::vector<BoundOrder>& order) {
  auto bound = std::make_unique<BoundSelect>();
  Scope scope;
  scope.outer = scope_;
  if (select.from) {
    wantsUpdateLock_ = wantsUpdateLock_ || IsUpdateLockWanted(*select.from);
    bound->from = BindSource(*select.from, scope);
  }
  Scope* saved = std::exchange(scope_, &scope);
  bound->distinct = select.distinct;
  if (select.topPercent) {
    bound->top = BindTopPercent(*select.top);
  } else if (select.top) {
    bound->top = BindTop(*select.top);
  }
  bound->topPercent = select.topPercent;
  bound->topTies = select.topTies;
  if (select.topTies && orderBy.empty()) Fail(1062, {});
  if (select.where) bound->where = Bind(*select.where);
  if (select.pivot == PivotKind::Unpivot) CheckUnpivoted(select.items.front());
  Grouping grouping;
  BindGroupBy(select, *bound, grouping);
  scope.groupBy = &bound->groupBy;
  if (!grouping.sets.empty()) {
    scope.grouping = &grouping;
    ++groupings_;
  }
  scope.aggregatesAllowed = true;
  scope.windowsAllowed = true;
  BindItems(select, *bound);
  scope.windowsAllowed = false;
  grouping.error = 8121;
  if (select.having) bound->having = Bind(*select.having);
  grouping.error = 8127;
  scope.windowsAllowed = true;
  BindOrder(orderBy, *bound, order);
  bound->windowed = scope.hasWindow;
  bound->grouped = scope.hasAggregate || !bound->groupBy.empty() || bound->having;
  if (bound->grouped) CheckGrouping(*bound, order);
  if (select.into && !isUnionInto_) InheritIdentity(select, *bound);
  if (scope.grouping != nullptr) SplitGroups(*bound, grouping);
  scope_ = saved;
  return bound;
}

// SQLite evaluates the limit before there is a row, so that it may name no column, not even one of an outer
// query, which the server allows.
BoundExprPtr Binder::BindWithoutRows(const Expr& expr) {
  if (expr.kind == ExprKind::Column && scope_ != nullptr) {
    bool prefixFound = false;
    if (ResolveIn(*scope_, expr.parts, prefixFound).column != nullptr) Fail(4115, {expr.parts.back()});
    Refuse("A column of an outer query in TOP, OFFSET or FETCH");
  }
  Scope* saved = std::exchange(scope_, nullptr);
  BoundExprPtr bound = Bind(expr);
  scope_ = saved;
  return bound;
}

// The share of TOP ... PERCENT.
BoundExprPtr Binder::BindTopPercent(const Expr& expr) {
  constexpr double kAll = 100;
  BoundExprPtr share = BindWithoutRows(expr);
  if (IsNullConstant(*share)) Fail(1060, {});
  share = Convert(std::move(share), MakeType(TypeId::Float));
  const bool isConstant = share->kind == BoundExpr::Kind::Constant;
  if (isConstant && (share->constant.real < 0 || share->constant.real > kAll)) Fail(1031, {});
  return share;
}

// The numbers of OFFSET and FETCH.
BoundExprPtr Binder::BindRowCount(const Expr& expr, int64_t least, int error, int typeError) {
  BoundExprPtr count = BindWithoutRows(expr);
  if (FamilyOf(count->type.id) != Family::Integer) Fail(typeError, {});
  return AtLeast(Convert(std::move(count), MakeType(TypeId::BigInt)), least, error, typeError);
}

BoundExprPtr Binder::BindTop(const Expr& expr) {
  BoundExprPtr top = BindWithoutRows(expr);
  if (IsNullConstant(*top)) Fail(1060, {});
  const Type type = MakeType(TypeId::BigInt);
  top = Convert(std::move(top), type);
  if (top->kind == BoundExpr::Kind::Constant) {
    if (top->constant.integer < 0) Fail(127, {});
    return top;
  }
  std::vector<BoundExprPtr> args;
  args.push_back(std::move(top));
  return MakeFunction(FunctionId::RowLimit, type, std::move(args));
}

void Binder::BindItems(const Select& select, BoundSelect& bound) {
  constexpr size_t kMostItems = 4096;
  bool assigns = false;
  bool returns = false;
  for (const SelectItem& item : select.items) {
    (item.variable.empty() ? returns : assigns) = true;
    if (item.identity) {
      BindIdentityItem(item, select, bound);
    } else if (!item.expr) {
      ExpandStar(item, bound);
    } else if (!item.variable.empty()) {
      BindAssignmentItem(item, bound);
    } else {
      BoundItem target;
      target.expr = Bind(*item.expr);
      target.name = item.alias;
      if (target.name.empty() && item.expr->kind == ExprKind::Column) target.name = item.expr->parts.back();
      bound.items.push_back(std::move(target));
    }
    if (bound.items.size() > kMostItems) Fail(1056, {});
  }
  if (assigns && returns) Fail(141, {});
}

void Binder::BindIdentityItem(const SelectItem& item, const Select& select, const BoundSelect& bound) {
  if (!select.into) Fail(177, {});
  if (isUnionInto_) Refuse("IDENTITY() in a SELECT INTO of a UNION, EXCEPT or INTERSECT");
  if (intoIdentity_) Fail(2744, {select.into->name});
  intoIdentity_.emplace();
  intoIdentity_->isGenerated = true;
  intoIdentity_->column = bound.items.size();
  intoIdentity_->name = item.alias;
  intoIdentity_->type = item.identityType;
  intoIdentity_->numbers = *item.identity;
}

// A column that is taken as it is from the only table. One that is there twice is an ordinary one.
void Binder::InheritIdentity(const Select& select, const BoundSelect& bound) {
  if (scope_->sources.size() != 1 || select.distinct || bound.grouped) return;
  const TablePtr table = scope_->sources.front().isTable ? scope_->sources.front().table : nullptr;
  if (!table || table->identityColumn < 0) return;
  const std::string& column = table->columns[static_cast<size_t>(table->identityColumn)].name;
  const auto isIdentity = [&](const BoundItem& item) {
    return item.expr->kind == BoundExpr::Kind::Column && EqualNames(item.expr->name, column);
  };
  if (std::ranges::count_if(bound.items, isIdentity) != 1) return;
  const auto found = std::ranges::find_if(bound.items, isIdentity);
  if (intoIdentity_) Fail(8108, {select.into->name, found->name});
  intoIdentity_.emplace();
  intoIdentity_->column = static_cast<size_t>(found - bound.items.begin());
  intoIdentity_->numbers = {table->seed, table->increment};
  intoIdentity_->mayRepeat = table->CountsIdentity();
}

void Binder::BindAssignmentItem(const SelectItem& item, BoundSelect& bound) {
  const int index = FindVariable(variables_, item.variable);
  if (index < 0) Fail(137, {item.variable});
  BoundItem target;
  target.variable = index;
  target.expr = Bind(*item.expr);
  RequireCollation(*target.expr, variables_[static_cast<size_t>(index)].type);
  target.expr = Convert(std::move(target.expr), variables_[static_cast<size_t>(index)].type);
  bound.items.push_back(std::move(target));
}

void Binder::ExpandStar(const SelectItem& item, BoundSelect& bound) {
  bool found = false;
  for (const ScopeSource& source : scope_->sources) {
    if (!item.starPrefix.empty()) {
      std::vector<std::string> parts = item.starPrefix;
      parts.emplace_back("*");
      if (!MatchesSource(source, parts)) continue;
    }
    found = true;
    for (const ScopeColumn& column : source.columns) {
      if (ContainsName(item.starWithout, column.name)) continue;
      BoundItem target;
      target.name = column.name;
      target.expr = MakeColumn(source, column);
      if (groupings_ > 0) target.expr = TakeGrouped(std::move(target.expr));
      bound.items.push_back(std::move(target));
    }
  }
  if (!found && !item.starPrefix.empty()) Fail(107, {JoinParts(item.starPrefix)});
  if (!found) Fail(102, {"*"});
}

// ---- ORDER BY

int Binder::FindOutput(const std::vector<BoundItem>& items, const std::string& name) {
  int found = -1;
  for (size_t i = 0; i < items.size(); ++i) {
    if (!EqualNames(items[i].name, name) || items[i].name.empty()) continue;
    if (found >= 0 && !SameExpr(*items[i].expr, *items[static_cast<size_t>(found)].expr)) Fail(209, {name});
    if (found < 0) found = static_cast<int>(i);
  }
  return found;
}

BoundOrder Binder::BindOrderItem(const OrderItem& item, size_t position, const BoundSelect& select) {
  BoundOrder order;
  order.descending = item.descending;
  const Expr& expr = *item.expr;
  if (expr.kind == ExprKind::Literal && expr.literal == TokenKind::Integer) {
    const size_t number = expr.text.size() > 6 ? 0 : static_cast<size_t>(std::stoi(expr.text));
    if (number < 1 || number > select.items.size()) Fail(108, {expr.text});
    order.ordinal = static_cast<int>(number) - 1;
    return order;
  }
  if (expr.kind == ExprKind::Column && expr.parts.size() == 1) {
    order.ordinal = FindOutput(select.items, expr.parts[0]);
    if (order.ordinal >= 0) return order;
  }
  order.expr = Bind(expr);
  RequireCollation(*order.expr, "ORDER BY", position);
  if (IsConstant(*order.expr)) Fail(HasVariable(*order.expr) ? 1008 : 408, {std::to_string(position)});
  for (size_t i = 0; i < select.items.size() && order.ordinal < 0; ++i)
    if (SameExpr(*order.expr, *select.items[i].expr)) order.ordinal = static_cast<int>(i);
  if (order.ordinal < 0 && select.distinct) Fail(145, {});
  return order;
}

void Binder::BindOrder(const std::vector<OrderItem>& orderBy, const BoundSelect& select,
                       std::vector<BoundOrder>& order) {
  for (const OrderItem& item : orderBy) order.push_back(BindOrderItem(item, order.size() + 1, select));
}

void Binder::BindCompoundOrder(const std::vector<OrderItem>& orderBy, BoundQuery& query) {
  for (const OrderItem& item : orderBy) {
    BoundOrder order;
    order.descending = item.descending;
    const Expr& expr = *item.expr;
    const std::string text = expr.kind == ExprKind::Column ? expr.parts.back() : expr.text;
    if (expr.kind == ExprKind::Literal && expr.literal == TokenKind::Integer && text.size() < 6) {
      order.ordinal = std::stoi(text) - 1;
      if (order.ordinal < 0 || order.ordinal >= static_cast<int>(query.columns.size())) Fail(108, {text});
    } else if (expr.kind == ExprKind::Column) {
      for (size_t i = 0; i < query.columns.size() && order.ordinal < 0; ++i)
        if (EqualNames(query.columns[i].name, text)) order.ordinal = static_cast<int>(i);
      if (order.ordinal < 0) Fail(207, {text});
    } else {
      Fail(104, {});
    }
    query.orderBy.push_back(std::move(order));
  }
}

// ---- grouping

void Binder::CheckGrouped(const BoundExpr& expr, const BoundSelect& select, int error) const {
  if (expr.kind == BoundExpr::Kind::Aggregate && !expr.over) return;
  for (const BoundExprPtr& group : select.groupBy)
    if (SameExpr(*group, expr)) return;
  if (expr.kind == BoundExpr::Kind::Column) {
    const bool isOwn = std::any_of(scope_->sources.begin(), scope_->sources.end(),
                                   [&](const ScopeSource& source) { return source.id == expr.source; });
    if (isOwn) Fail(error, {expr.display});
  }
  for (const BoundExprPtr& arg : expr.args) CheckGrouped(*arg, select, error);
}

void Binder::CheckGrouping(const BoundSelect& select, const std::vector<BoundOrder>& order) const {
  for (const BoundItem& item : select.items) CheckGrouped(*item.expr, select, 8120);
  if (select.having) CheckGrouped(*select.having, select, 8121);
  for (const BoundOrder& entry : order)
    if (entry.ordinal < 0) CheckGrouped(*entry.expr, select, 8127);
}

} // namespace tsql
