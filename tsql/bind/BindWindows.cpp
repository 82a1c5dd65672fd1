// Functions with OVER: aggregates over a window, and those that need one.
#include <algorithm>
#include <utility>

#include "tsql/bind/Binder.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

const char* EdgeName(FrameEdge edge) {
  switch (edge) {
  case FrameEdge::UnboundedPreceding:
  case FrameEdge::Preceding: return "PRECEDING";
  case FrameEdge::CurrentRow: return "CURRENT ROW";
  default: return "FOLLOWING";
  }
}

void CheckFrame(const Frame& frame, bool isOrdered) {
  if (frame.unit == FrameUnit::None) return;
  if (!isOrdered) Fail(10756, {});
  const bool isBackward = frame.start > frame.end || frame.start == FrameEdge::UnboundedFollowing ||
                          frame.end == FrameEdge::UnboundedPreceding;
  if (isBackward) Fail(4193, {EdgeName(frame.start), EdgeName(frame.end)});
  const auto hasRows = [](FrameEdge edge) {
    return edge == FrameEdge::Preceding || edge == FrameEdge::Following;
  };
  if (frame.unit == FrameUnit::Range && (hasRows(frame.start) || hasRows(frame.end))) Fail(4194, {});
}

} // namespace

std::span<const Binder::WindowEntry> Binder::WindowTable() {
  static constexpr WindowEntry kFunctions[] = {
      {"row_number", WindowId::RowNumber, 0, 0, false},
      {"rank", WindowId::Rank, 0, 0, false},
      {"dense_rank", WindowId::DenseRank, 0, 0, false},
      {"ntile", WindowId::NTile, 1, 1, false},
      {"cume_dist", WindowId::CumulativeDistribution, 0, 0, false},
      {"percent_rank", WindowId::PercentRank, 0, 0, false},
      {"lag", WindowId::Lag, 1, 3, false},
      {"lead", WindowId::Lead, 1, 3, false},
      {"first_value", WindowId::FirstValue, 1, 1, true},
      {"last_value", WindowId::LastValue, 1, 1, true},
  };
  return kFunctions;
}

const Binder::WindowEntry* Binder::FindWindowFunction(std::string_view name) {
  for (const WindowEntry& entry : WindowTable())
    if (entry.name == name) return &entry;
  return nullptr;
}

BoundExprPtr Binder::BindWindow(const Expr& expr) {
  if (FindAggregate(expr.text) == AggregateId::StringAggregate) Fail(4113, {expr.text});
  if (!expr.within.empty()) Fail(10757, {expr.text});
  if (scope_ == nullptr || !scope_->windowsAllowed) {
    const bool isNested = scope_ != nullptr && (scope_->inAggregate || scope_->inWindow);
    Fail(isNested ? 4109 : 4108, {});
  }
  scope_->hasWindow = true;
  scope_->windowsAllowed = false;
  scope_->inWindow = true;
  BoundExprPtr node;
  if (const std::optional<AggregateId> aggregate = FindAggregate(expr.text)) {
    if (expr.distinct) Fail(10759, {});
    if (!expr.star && expr.args.size() != 1) Fail(174, {expr.text, "1"});
    node = MakeAggregate(expr, *aggregate, expr.star ? nullptr : Bind(*expr.args[0]));
  } else {
    node = BindWindowFunction(expr);
  }
  BindOver(expr, *node);
  scope_->inWindow = false;
  scope_->windowsAllowed = true;
  return node;
}

BoundExprPtr Binder::BindWindowFunction(const Expr& expr) {
  const WindowEntry* entry = FindWindowFunction(expr.text);
  if (entry == nullptr) {
    const std::vector<std::string_view> known = FunctionNames();
    const bool isKnown = std::find(known.begin(), known.end(), expr.text) != known.end();
    Fail(isKnown ? 4113 : 195, {expr.text});
  }
  if (expr.over->orderBy.empty()) Fail(4112, {expr.text});
  if (expr.over->frame.unit != FrameUnit::None && !entry->framed) Fail(10752, {expr.text});
  std::vector<BoundExprPtr> args = BindArguments(expr, entry->least, entry->most);
  const Type wide = MakeType(TypeId::BigInt);
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Window, wide);
  node->window = entry->window;
  switch (entry->window) {
  case WindowId::NTile:
    if (FamilyOf(args[0]->type.id) != Family::Integer) Fail(4116, {});
    args[0] = AtLeast(Convert(std::move(args[0]), wide), 1, 4116, 4116);
    break;
  case WindowId::CumulativeDistribution:
  case WindowId::PercentRank: node->type = MakeType(TypeId::Float); break;
  case WindowId::Lag:
  case WindowId::Lead:
    node->type = args[0]->type;
    if (args.size() > 1) args[1] = AtLeast(Convert(std::move(args[1]), wide), 0, 8730, 8730);
    if (args.size() > 2) args[2] = Convert(std::move(args[2]), node->type);
    break;
  case WindowId::FirstValue:
  case WindowId::LastValue: node->type = args[0]->type; break;
  default: node->nullable = false;
  }
  if (FamilyOf(node->type.id) == Family::Integer) node->type.precision = 0;
  node->args = std::move(args);
  return node;
}

void Binder::BindOver(const Expr& expr, BoundExpr& node) {
  const Window& window = *expr.over;
  node.over = std::make_unique<BoundWindow>();
  node.over->partitions = window.partitionBy.size();
  node.over->frame = window.frame;
  for (const ExprPtr& each : window.partitionBy) {
    node.args.push_back(Bind(*each));
    RequireCollation(*node.args.back(), "PARTITION BY");
  }
  for (const OrderItem& item : window.orderBy) {
    if (item.expr->kind == ExprKind::Literal)
      Fail(item.expr->literal == TokenKind::Integer ? 5308 : 5309, {});
    node.args.push_back(Bind(*item.expr));
    RequireCollation(*node.args.back(), "ORDER BY");
    node.over->descending.push_back(item.descending);
  }
  CheckFrame(window.frame, !window.orderBy.empty());
}

BoundExprPtr Binder::AtLeast(BoundExprPtr count, int64_t least, int error, int nullError) const {
  if (IsNullConstant(*count)) Fail(nullError, {});
  if (count->kind == BoundExpr::Kind::Constant) {
    if (count->constant.integer < least) Fail(error, {});
    return count;
  }
  const Type type = count->type;
  std::vector<BoundExprPtr> args;
  args.push_back(std::move(count));
  for (const int64_t number : {least, int64_t{error}, int64_t{nullError}})
    args.push_back(MakeConstant(Datum::OfInteger(number), type));
  return MakeFunction(FunctionId::AtLeast, type, std::move(args));
}

} // namespace tsql
