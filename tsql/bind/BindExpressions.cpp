#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstdlib>

#include "tsql/bind/Binder.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/CodePage.h"
#include "tsql/values/Collation.h"
#include "tsql/values/CollationNames.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/ConversionRules.h"
#include "tsql/values/DateText.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

const char* OperatorName(ArithmeticOp op) {
  switch (op) {
  case ArithmeticOp::Add: return "add";
  case ArithmeticOp::Subtract: return "subtract";
  case ArithmeticOp::Multiply: return "multiply";
  case ArithmeticOp::Divide: return "divide";
  case ArithmeticOp::Modulo: return "modulo";
  case ArithmeticOp::BitAnd: return "'&'";
  case ArithmeticOp::BitOr: return "'|'";
  default: return "'^'";
  }
}

// Whether it asks the session, which answers differently each time.
bool HasGlobal(const BoundExpr& expr) {
  const bool isVolatile = expr.kind == BoundExpr::Kind::Function &&
                          (expr.function == FunctionId::Random || expr.function == FunctionId::NewId);
  return isVolatile || expr.kind == BoundExpr::Kind::Global ||
         std::any_of(expr.args.begin(), expr.args.end(),
                     [](const BoundExprPtr& arg) { return HasGlobal(*arg); });
}

bool AsksCatalog(const BoundExpr& expr) {
  constexpr FunctionId kFunctions[] = {
      FunctionId::ObjectId,          FunctionId::ObjectName,       FunctionId::ObjectSchemaName,
      FunctionId::SchemaName,        FunctionId::SchemaId,         FunctionId::ColLength,
      FunctionId::CursorStatus,      FunctionId::ObjectProperty,   FunctionId::ColumnProperty,
      FunctionId::ColumnName,        FunctionId::ObjectDefinition, FunctionId::IdentitySeed,
      FunctionId::IdentityIncrement, FunctionId::CurrentIdentity};
  const bool asks = expr.kind == BoundExpr::Kind::Function &&
                    std::ranges::find(kFunctions, expr.function) != std::end(kFunctions);
  return asks || std::ranges::any_of(expr.args, [](const BoundExprPtr& arg) { return AsksCatalog(*arg); });
}

void CheckNotComputed(const BoundExpr& expr, const TableInfo& table) {
  for (const BoundExprPtr& arg : expr.args) CheckNotComputed(*arg, table);
  if (expr.kind != BoundExpr::Kind::Column) return;
  const ColumnInfo& column = table.columns[static_cast<size_t>(table.FindColumn(expr.name))];
  if (column.IsComputed()) Fail(1759, {column.name, table.name});
}

// Whether the text that the expression makes has the collation of the argument.
bool GivesCollation(const BoundExpr& expr, size_t arg) {
  switch (expr.kind) {
  case BoundExpr::Kind::UserFunction: return false;
  case BoundExpr::Kind::Aggregate: return arg == 0;
  case BoundExpr::Kind::Window: return arg < OwnArguments(expr);
  case BoundExpr::Kind::Case: {
    const size_t first = expr.hasOperand ? 1 : 0;
    const bool isElse = expr.hasElse && arg + 1 == expr.args.size();
    return isElse || (arg >= first && (arg - first) % 2 == 1);
  }
  default: return true;
  }
}

// Whether it is an aggregate that compares the values of the rows.
bool ComparesRows(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Aggregate &&
         (expr.distinct || expr.aggregate == AggregateId::Min || expr.aggregate == AggregateId::Max);
}

bool IsSameCollation(const BoundExpr& left, const BoundExpr& right) {
  return left.collation == right.collation && EqualNames(left.collationName, right.collationName);
}

bool IsLaterMoment(TypeId id) {
  return id == TypeId::Date || IsFine(id);
}

// Only with datetime and smalldatetime can be computed.
void RefuseLaterMoments(ArithmeticOp op, const Type& left, const Type& right) {
  if (!IsLaterMoment(left.id) && !IsLaterMoment(right.id)) return;
  if (left.id == right.id) Fail(8117, {TypeName(left.id), OperatorName(op)});
  const auto isTextOrMoment = [](const Type& type) {
    return IsText(type) || FamilyOf(type.id) == Family::DateTime;
  };
  if (isTextOrMoment(left) && isTextOrMoment(right))
    Fail(402, {TypeName(left.id), TypeName(right.id), OperatorName(op)});
  Fail(206, {TypeName(left.id), TypeName(right.id)});
}

bool IsBitwise(ArithmeticOp op) {
  return op == ArithmeticOp::BitAnd || op == ArithmeticOp::BitOr || op == ArithmeticOp::BitXor;
}

} // namespace

BoundExprPtr Binder::BindScalar(const Expr& expr) {
  return Bind(expr);
}

BoundExprPtr Binder::BindCondition(const Expr& expr) {
  assert(IsPredicate(expr));
  return Bind(expr);
}

BoundExprPtr Binder::BindValueFor(const Expr& expr, const Type& type) {
  // Variables cut what is too long, unlike columns.
  return Convert(Bind(expr), type);
}

BoundExprPtr Binder::BindCheck(const Expr& expr, const TableInfo& table) {
  return BindOverTable(expr, table);
}

BoundExprPtr Binder::BindComputed(const Expr& expr, const TableInfo& table) {
  BoundExprPtr bound = BindOverTable(expr, table);
  CheckNotComputed(*bound, table);
  // SQLite must be able to compute it from the row alone.
  if (AsksCatalog(*bound)) Refuse("A value of the session in a CHECK constraint or computed column");
  return bound;
}

BoundExprPtr Binder::BindOverTable(const Expr& expr, const TableInfo& table) {
  Scope scope;
  ScopeSource source;
  source.id = -1;
  source.exposed = table.name;
  source.isTable = true;
  source.columns = ColumnsOf(table);
  scope.sources.push_back(std::move(source));
  scope_ = &scope;
  inCheck_ = true;
  BoundExprPtr bound = Bind(expr);
  inCheck_ = false;
  scope_ = nullptr;
  if (HasGlobal(*bound)) Refuse("A value of the session in a CHECK constraint or computed column");
  return bound;
}

namespace {

// The functions that compare texts by themselves.
bool IsSearching(const BoundExpr& expr) {
  if (expr.kind != BoundExpr::Kind::Function) return false;
  switch (expr.function) {
  case FunctionId::NullIf:
  case FunctionId::PatIndex:
  case FunctionId::CharIndex:
  case FunctionId::Replace:
  case FunctionId::TrimCharacters:
  case FunctionId::Translate: return true;
  default: return false;
  }
}

} // namespace

BoundExprPtr Binder::Bind(const Expr& expr) {
  if (groupings_ > 0)
    if (BoundExprPtr key = FindKey(expr)) return key;
  BoundExprPtr node = BindKind(expr);
  // A variable may stand for an argument of an inline function, whose collation it has not.
  if (expr.kind != ExprKind::Variable) InheritCollation(*node);
  return groupings_ > 0 ? TakeGrouped(std::move(node)) : std::move(node);
}

void Binder::InheritCollation(BoundExpr& expr) {
  if (expr.strength != CollationStrength::Coercible || expr.args.empty()) return;
  if (IsSearching(expr)) UnifyCollations(Pointers(expr.args), OperationOf(expr));
  if (ComparesRows(expr)) RequireCollation(*expr.args[0], OperationOf(expr));
  if (!IsText(expr.type)) return;
  for (size_t i = 0; i < expr.args.size(); ++i)
    if (expr.args[i]->strength != CollationStrength::Coercible && GivesCollation(expr, i))
      CombineCollations(expr, *expr.args[i], OperationOf(expr));
}

// As messages about collations have it.
std::string_view Binder::OperationOf(const BoundExpr& expr) {
  switch (expr.kind) {
  case BoundExpr::Kind::Arithmetic: return OperatorName(expr.arithmetic);
  case BoundExpr::Kind::Aggregate:
    return expr.aggregate == AggregateId::Min ? "min" : expr.aggregate == AggregateId::Max ? "max" : "count";
  case BoundExpr::Kind::Window:
    for (const WindowEntry& entry : WindowTable())
      if (entry.window == expr.window) return entry.name;
    break;
  case BoundExpr::Kind::Function:
    // These are cases of CASE to the server.
    if (expr.function == FunctionId::Coalesce) break;
    if (expr.function == FunctionId::NullIf) return "equal to";
    for (const FunctionEntry& entry : FunctionTable())
      if (entry.function == expr.function) return entry.name;
    break;
  default: break;
  }
  return "CASE";
}

void Binder::CombineCollations(BoundExpr& expr, const BoundExpr& other, std::string_view operation) {
  if (expr.strength < other.strength) return TakeCollation(expr, other);
  const bool isDecided = other.strength == CollationStrength::Coercible || expr.strength > other.strength ||
                         expr.strength == CollationStrength::Unresolved;
  if (isDecided || IsSameCollation(expr, other)) return;
  const std::string_view first = CollationName(other.collationName);
  const std::string_view second = CollationName(expr.collationName);
  if (expr.strength == CollationStrength::Explicit) Fail(468, {first, second, operation});
  expr.strength = CollationStrength::Unresolved;
  expr.conflict = std::make_shared<const CollationConflict>(
      CollationConflict{std::string(first), std::string(second), std::string(operation)});
}

void Binder::UnifyCollations(const std::vector<BoundExpr*>& operands, std::string_view operation) {
  const BoundExpr& named = **std::ranges::max_element(operands, {}, [](const BoundExpr* operand) {
    return operand->strength; // the first one of the strongest
  });
  if (named.strength == CollationStrength::Coercible) return;
  RequireCollation(named, operation);
  for (const BoundExpr* operand : operands)
    if (operand->strength == named.strength && !IsSameCollation(*operand, named))
      Fail(468, {CollationName(operand->collationName), CollationName(named.collationName), operation});
  if (&named != operands.front()) TakeCollation(*operands.front(), named);
}

void Binder::RequireCollation(const BoundExpr& expr, std::string_view operation) {
  if (expr.strength != CollationStrength::Unresolved) return;
  const CollationConflict& conflict = *expr.conflict;
  Fail(446, {conflict.first, conflict.second, conflict.operation, operation});
}

void Binder::RequireCollation(const BoundExpr& expr, const Type& to) {
  if (expr.strength != CollationStrength::Unresolved) return;
  const CollationConflict& conflict = *expr.conflict;
  Fail(457, {TypeName(expr.type.id), TypeName(to.id), conflict.first, conflict.second, conflict.operation});
}

void Binder::RequireCollation(const BoundExpr& expr, const char* clause, size_t position) {
  if (expr.strength != CollationStrength::Unresolved) return;
  const CollationConflict& conflict = *expr.conflict;
  Fail(451, {conflict.first, conflict.second, conflict.operation, clause, std::to_string(position)});
}

BoundExprPtr Binder::BindCollate(const Expr& expr) {
  BoundExprPtr operand = Bind(*expr.args[0]);
  if (IsNullConstant(*operand)) operand->type = MakeType(TypeId::VarChar, 1);
  if (!IsText(operand->type)) Fail(447, {TypeName(operand->type.id)});
  BoundExpr named;
  named.strength = CollationStrength::Explicit;
  named.collation = expr.collation;
  named.collationName = expr.text;
  TakeCollation(*operand, named);
  return operand;
}

BoundExprPtr Binder::BindKind(const Expr& expr) {
  switch (expr.kind) {
  case ExprKind::Null: return MakeConstant({}, MakeType(TypeId::Int));
  case ExprKind::Default: Fail(156, {"DEFAULT"}, expr.line);
  case ExprKind::Literal: return BindLiteral(expr);
  case ExprKind::Column: return BindColumn(expr);
  case ExprKind::UserCall: return BindUserCall(expr);
  case ExprKind::Variable: return BindVariable(expr);
  case ExprKind::Marker: return BindMarker(expr);
  case ExprKind::Negate:
  case ExprKind::BitNot: return BindNegation(expr);
  case ExprKind::Arithmetic: return BindArithmetic(expr);
  case ExprKind::Compare: return BindComparison(expr);
  case ExprKind::And: return BindLogical(expr, BoundExpr::Kind::And);
  case ExprKind::Or: return BindLogical(expr, BoundExpr::Kind::Or);
  case ExprKind::Not: return BindLogical(expr, BoundExpr::Kind::Not);
  case ExprKind::IsNull: return BindLogical(expr, BoundExpr::Kind::IsNull);
  case ExprKind::Like: return BindLike(expr);
  case ExprKind::Between: return BindBetween(expr);
  case ExprKind::InList: return BindInList(expr);
  case ExprKind::InQuery: return BindInQuery(expr);
  case ExprKind::Quantified: return BindQuantified(expr);
  case ExprKind::Exists:
  case ExprKind::Subquery: return BindSubquery(expr);
  case ExprKind::Case: return BindCase(expr);
  case ExprKind::Call: return expr.over ? BindWindow(expr) : BindCall(expr);
  case ExprKind::Cast:
  case ExprKind::Convert: return BindCast(expr);
  case ExprKind::Collate: return BindCollate(expr);
  }
  return nullptr;
}

BoundExprPtr Binder::BindLiteral(const Expr& expr) const {
  const std::string& text = expr.text;
  switch (expr.literal) {
  case TokenKind::Text:
  case TokenKind::UnicodeText: {
    const bool isUnicode = expr.literal == TokenKind::UnicodeText;
    const int32_t limit = isUnicode ? 4000 : 8000;
    const auto length =
        static_cast<int32_t>(std::max<size_t>(isUnicode ? CharCount(text) : PageSize(text), 1));
    return MakeConstant(
        Datum::OfText(isUnicode ? text : KeepPage(text)),
        MakeType(isUnicode ? TypeId::NVarChar : TypeId::VarChar, length > limit ? -1 : length));
  }
  case TokenKind::Integer: {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && value <= INT32_MAX) {
      Type type = MakeType(TypeId::Int);
      type.precision = static_cast<uint8_t>(std::max(DigitCount(DecimalFromInteger(value)), 1));
      return MakeConstant(Datum::OfInteger(value), type);
    }
    [[fallthrough]];
  }
  case TokenKind::Decimal: {
    const std::optional<Decimal> value = ParseDecimal(text);
    if (!value) Fail(8115, {"expression", "numeric"});
    const Type type = MakeDecimal(std::max({DigitCount(*value), int{value->scale}, 1}), value->scale);
    return MakeConstant(DatumOfDecimal(*value, type), type);
  }
  case TokenKind::Money: {
    const Type type = MakeType(TypeId::Money);
    const std::optional<Decimal> value = ParseDecimal(text);
    return MakeConstant(StoreDecimal(value ? Rescale(*value, 4) : value, type, "expression"), type);
  }
  case TokenKind::Float:
    return MakeConstant(Datum::OfReal(std::strtod(text.c_str(), nullptr)), MakeType(TypeId::Float));
  default:
    return MakeConstant(Datum::OfBlob(text),
                        MakeType(TypeId::VarBinary, static_cast<int32_t>(std::max<size_t>(text.size(), 1))));
  }
}

BoundExprPtr Binder::BindColumn(const Expr& expr) {
  if (&expr == ownColumn_) {
    for (const ScopeSource& source : scope_->sources) {
      if (source.id != ownSource_) continue;
      for (const ScopeColumn& column : source.columns)
        if (EqualNames(column.name, expr.parts.back())) return MakeColumn(source, column);
    }
  }
  const Resolved found = Resolve(expr.parts);
  return MakeColumn(*found.source, *found.column);
}

// What does not change here; null when it is none of these.
BoundExprPtr Binder::BindConstantVariable(std::string_view name) {
  constexpr int32_t kNameLength = 128;
  const Type text = MakeType(TypeId::NVarChar, kNameLength);
  const std::tuple<std::string_view, Datum, Type> kConstants[] = {
      {"@@langid", Datum::OfInteger(0), MakeType(TypeId::SmallInt)},
      {"@@language", Datum::OfText("us_english"), text},
      {"@@max_precision", Datum::OfInteger(kMaxPrecision), MakeType(TypeId::TinyInt)},
      {"@@servername", Datum::OfText("localhost"), text},
      {"@@textsize", Datum::OfInteger(INT32_MAX), MakeType(TypeId::Int)}};
  for (const auto& [known, value, type] : kConstants)
    if (EqualNames(known, name)) return MakeConstant(value, type);
  return nullptr;
}

BoundExprPtr Binder::BindVariable(const Expr& expr) {
  struct Entry {
    const char* name;
    GlobalValue value;
    Type type;
  };
  static const Entry kGlobals[] = {{"@@rowcount", GlobalValue::RowCount, MakeType(TypeId::Int)},
                                   {"@@identity", GlobalValue::Identity, MakeDecimal(38, 0)},
                                   {"@@error", GlobalValue::Error, MakeType(TypeId::Int)},
                                   {"@@trancount", GlobalValue::TransactionCount, MakeType(TypeId::Int)},
                                   {"@@nestlevel", GlobalValue::ProcedureNesting, MakeType(TypeId::Int)},
                                   {"@@fetch_status", GlobalValue::FetchStatus, MakeType(TypeId::Int)},
                                   {"@@cursor_rows", GlobalValue::CursorRows, MakeType(TypeId::Int)},
                                   {"@@spid", GlobalValue::SessionNumber, MakeType(TypeId::SmallInt)},
                                   {"@@datefirst", GlobalValue::FirstDay, MakeType(TypeId::TinyInt)},
                                   {"@@lock_timeout", GlobalValue::LockTimeout, MakeType(TypeId::Int)},
                                   {"@@options", GlobalValue::Options, MakeType(TypeId::Int)}};
  for (const Entry& entry : kGlobals) {
    if (EqualNames(entry.name, expr.text)) return MakeGlobal(entry.value, entry.type);
  }
  if (BoundExprPtr constant = BindConstantVariable(expr.text)) return constant;
  RefuseIfListed(RefusedKind::Global, expr.text);
  if (inlined_ != nullptr) return BindInlinedParameter(expr);
  const int index = FindVariable(variables_, expr.text);
  if (index < 0) Fail(137, {expr.text});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Variable, variables_[static_cast<size_t>(index)].type);
  node->index = index;
  return node;
}

BoundExprPtr Binder::BindMarker(const Expr& expr) const {
  const auto index = static_cast<size_t>(expr.marker);
  if (index >= markers_.size()) Fail(180, {std::to_string(index + 1)});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Marker, markers_[index]);
  node->index = expr.marker;
  return node;
}

BoundExprPtr Binder::BindNegation(const Expr& expr) {
  BoundExprPtr operand = Bind(*expr.args[0]);
  const bool bitwise = expr.kind == ExprKind::BitNot;
  const char* name = bitwise ? "'~'" : "minus";
  if (!bitwise && IsText(operand->type)) Fail(8117, {TypeName(operand->type.id), name});
  if (!IsNumeric(operand->type) || (bitwise && FamilyOf(operand->type.id) != Family::Integer))
    Fail(8117, {TypeName(operand->type.id), name});
  if (!bitwise && operand->type.id == TypeId::Bit) Fail(8117, {"bit", name});
  if (!bitwise && operand->kind == BoundExpr::Kind::Constant &&
      operand->constant.kind == Datum::Kind::Integer) {
    // -2147483648 is written as the negation of a decimal constant.
    operand->constant.integer = -operand->constant.integer;
    return operand;
  }
  BoundExprPtr node = MakeNode(bitwise ? BoundExpr::Kind::BitNot : BoundExpr::Kind::Negate, operand->type);
  node->nullable = operand->nullable;
  node->args.push_back(std::move(operand));
  return node;
}

BoundExprPtr Binder::BindDateArithmetic(ArithmeticOp op, BoundExprPtr left, BoundExprPtr right) const {
  RefuseLaterMoments(op, left->type, right->type);
  const bool isAdditive = op == ArithmeticOp::Add || op == ArithmeticOp::Subtract;
  const bool leftIsDate = FamilyOf(left->type.id) == Family::DateTime;
  const Type common = CommonType(left->type, right->type);
  if (!isAdditive || (op == ArithmeticOp::Subtract && !leftIsDate && !IsText(left->type) &&
                      FamilyOf(right->type.id) != Family::DateTime))
    Fail(8117, {TypeName(common.id), OperatorName(op)});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Arithmetic, common);
  node->arithmetic = op;
  node->nullable = left->nullable || right->nullable;
  node->args.push_back(Convert(std::move(left), common));
  node->args.push_back(Convert(std::move(right), common));
  return node;
}

BoundExprPtr Binder::BindConcatenation(BoundExprPtr left, BoundExprPtr right) {
  const bool isMax = left->type.length < 0 || right->type.length < 0;
  constexpr int32_t kMost = 8000;
  const int32_t length = isMax ? -1 : std::min(left->type.length + right->type.length, kMost);
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Arithmetic, MakeType(TypeId::VarBinary, length));
  node->arithmetic = ArithmeticOp::Add;
  node->nullable = left->nullable || right->nullable;
  node->args.push_back(std::move(left));
  node->args.push_back(std::move(right));
  return node;
}

// A text, or the empty one in place of null.
BoundExprPtr Binder::TextOrEmpty(BoundExprPtr text) const {
  const Type type = text->type;
  const BoundExpr& own = *text;
  std::vector<BoundExprPtr> args;
  args.push_back(std::move(text));
  args.push_back(MakeConstant(Datum::OfText(""), type));
  BoundExprPtr node = MakeFunction(FunctionId::IsNull, type, std::move(args));
  TakeCollation(*node, own);
  node->nullable = false;
  return node;
}

BoundExprPtr Binder::BindArithmetic(const Expr& expr) {
  const ArithmeticOp op = expr.arithmetic;
  BoundExprPtr left = Bind(*expr.args[0]);
  BoundExprPtr right = Bind(*expr.args[1]);
  if (IsNullConstant(*left)) left = Convert(std::move(left), right->type);
  if (IsNullConstant(*right)) right = Convert(std::move(right), left->type);
  const bool bothText = IsText(left->type) && IsText(right->type);
  if (IsLob(left->type.id) || IsLob(right->type.id))
    Fail(402, {TypeName(left->type.id), TypeName(right->type.id), OperatorName(op)});
  if (bothText && op != ArithmeticOp::Add)
    Fail(bothText && !IsBitwise(op) ? 8117 : 402, {TypeName(left->type.id), OperatorName(op), ""});
  if (FamilyOf(left->type.id) == Family::DateTime || FamilyOf(right->type.id) == Family::DateTime)
    return BindDateArithmetic(op, std::move(left), std::move(right));
  const bool bothBinary =
      FamilyOf(left->type.id) == Family::Binary && FamilyOf(right->type.id) == Family::Binary;
  if (bothBinary && op == ArithmeticOp::Add) return BindConcatenation(std::move(left), std::move(right));
  if (!bothText && IsText(left->type)) left = Convert(std::move(left), right->type);
  if (!bothText && IsText(right->type)) right = Convert(std::move(right), left->type);
  const Type common = CommonType(left->type, right->type);
  if (!bothText && (!IsNumeric(common) || common.id == TypeId::Bit) &&
      !(IsBitwise(op) && common.id == TypeId::Bit))
    Fail(402, {TypeName(left->type.id), TypeName(right->type.id), OperatorName(op)});
  if (IsBitwise(op) && FamilyOf(common.id) != Family::Integer)
    Fail(402, {TypeName(left->type.id), TypeName(right->type.id), OperatorName(op)});
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Arithmetic, ArithmeticType(op, left->type, right->type));
  node->arithmetic = op;
  node->nullable = left->nullable || right->nullable;
  if (common.id == TypeId::Decimal) {
    // Both sides keep their scales, because the scale of the result follows from them.
    const Type leftType = AsDecimal(left->type);
    const Type rightType = AsDecimal(right->type);
    left = Convert(std::move(left), leftType);
    right = Convert(std::move(right), rightType);
  } else if (bothText && !options_.concatNull) {
    left = TextOrEmpty(std::move(left));
    right = TextOrEmpty(std::move(right));
  } else if (!bothText) {
    left = Convert(std::move(left), common);
    right = Convert(std::move(right), common);
  }
  node->args.push_back(std::move(left));
  node->args.push_back(std::move(right));
  return node;
}

BoundExprPtr Binder::BindSubquery(const Expr& expr) {
  const bool isExists = expr.kind == ExprKind::Exists;
  BoundExprPtr node =
      MakeNode(isExists ? BoundExpr::Kind::Exists : BoundExpr::Kind::Subquery, MakeType(TypeId::Bit));
  node->query = BindQuery(*expr.query, true);
  if (isExists) return node;
  if (node->query->columns.size() != 1) Fail(116, {});
  node->type = node->query->columns[0].type;
  TakeCollation(*node, FirstItem(*node->query, 0));
  return node;
}

BoundExprPtr Binder::BindCase(const Expr& expr) {
  BoundExprPtr node = MakeNode(BoundExpr::Kind::Case, {});
  node->hasElse = expr.hasElse;
  const size_t expressions = expr.args.size() - (expr.hasElse ? 1 : 0);
  bool meetsNulls = expr.hasOperand && MeetsNulls(*expr.args[0]);
  for (size_t i = 1; expr.hasOperand && i < expressions; i += 2)
    meetsNulls = meetsNulls || MeetsNulls(*expr.args[i]);
  if (meetsNulls) {
    // CASE a WHEN b as CASE WHEN a = b.
    for (size_t i = 1; i < expressions; i += 2) {
      node->args.push_back(BindEquality(*expr.args[0], *expr.args[i]));
      node->args.push_back(Bind(*expr.args[i + 1]));
    }
    if (expr.hasElse) node->args.push_back(Bind(*expr.args.back()));
  } else {
    node->hasOperand = expr.hasOperand;
    for (const ExprPtr& arg : expr.args) node->args.push_back(Bind(*arg));
  }
  std::vector<size_t> results;
  std::vector<size_t> tested;
  const size_t first = node->hasOperand ? 1 : 0;
  if (node->hasOperand) tested.push_back(0);
  const size_t pairsEnd = node->args.size() - (expr.hasElse ? 1 : 0);
  for (size_t i = first; i < pairsEnd; i += 2) {
    if (node->hasOperand) tested.push_back(i);
    results.push_back(i + 1);
  }
  if (expr.hasElse) results.push_back(node->args.size() - 1);
  const auto unify = [&](const std::vector<size_t>& indexes) {
    std::vector<const BoundExpr*> operands;
    operands.reserve(indexes.size());
    for (const size_t i : indexes) operands.push_back(node->args[i].get());
    const Type common = CommonTypeOf(operands);
    for (const size_t i : indexes) node->args[i] = Convert(std::move(node->args[i]), common);
    return common;
  };
  if (node->hasOperand) {
    unify(tested);
    std::vector<BoundExpr*> operands;
    operands.reserve(tested.size());
    for (const size_t i : tested) operands.push_back(node->args[i].get());
    UnifyCollations(operands, "equal to");
  }
  const auto isNull = [&](size_t i) { return IsNullConstant(*node->args[i]); };
  if (std::all_of(results.begin(), results.end(), isNull)) Fail(8133, {});
  node->type = unify(results);
  node->nullable = !expr.hasElse;
  for (const size_t i : results) node->nullable = node->nullable || node->args[i]->nullable;
  return node;
}

BoundExprPtr Binder::BindCast(const Expr& expr) {
  BoundExprPtr operand = Bind(*expr.args[0]);
  int style = 0;
  if (expr.args.size() > 1) {
    const BoundExprPtr styleExpr = Bind(*expr.args[1]);
    if (styleExpr->kind != BoundExpr::Kind::Constant || FamilyOf(styleExpr->type.id) != Family::Integer)
      Refuse("A CONVERT style that is not an integer constant");
    style = static_cast<int>(styleExpr->constant.integer);
    const bool isOfMoment =
        FamilyOf(operand->type.id) == Family::DateTime || FamilyOf(expr.type.id) == Family::DateTime;
    if (isOfMoment && IsHijriStyle(style)) Refuse("A CONVERT style of the Hijri calendar");
    // Style 0 is style 100, but no style is another one for the types that came later.
    if (isOfMoment && style == 0) style = 100;
  }
  const bool isImpossible = FindConversion(operand->type.id, expr.type.id) == Conversion::Impossible;
  if (!IsNullConstant(*operand) && isImpossible)
    Fail(529, {TypeName(operand->type.id), TypeName(expr.type.id)});
  BoundExprPtr node = MakeNode(expr.attempt ? BoundExpr::Kind::TryCast : BoundExpr::Kind::Cast, expr.type);
  node->style = style;
  node->nullable = operand->nullable || expr.attempt;
  node->args.push_back(std::move(operand));
  return node;
}

} // namespace tsql
