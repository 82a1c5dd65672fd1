#include <algorithm>
#include <array>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Decimal.h"
#include "tsql/values/Errors.h"

namespace tsql {

bool IsPredicate(const Expr& expr) {
  switch (expr.kind) {
  case ExprKind::Compare:
  case ExprKind::And:
  case ExprKind::Or:
  case ExprKind::Not:
  case ExprKind::IsNull:
  case ExprKind::Like:
  case ExprKind::Between:
  case ExprKind::InList:
  case ExprKind::InQuery:
  case ExprKind::Quantified:
  case ExprKind::Exists: return true;
  default: return false;
  }
}

ExprPtr Parser::MakeExpr(ExprKind kind) {
  auto expr = std::make_unique<Expr>();
  expr->kind = kind;
  expr->line = Current().line;
  expr->number = nodes_++;
  return expr;
}

ExprPtr Parser::RequirePredicate(ExprPtr expr) {
  if (IsPredicate(*expr)) return expr;
  const Token& near = IsAtEnd() && at_ > 0 ? tokens_[at_ - 1] : Current();
  Fail(4145, {near.source}, near.line);
}

ExprPtr Parser::RequireScalar(ExprPtr expr) {
  if (IsPredicate(*expr)) SyntaxError();
  return expr;
}

ExprPtr Parser::ParseCondition() {
  return RequirePredicate(ParseOr());
}

ExprPtr Parser::ParseExpression() {
  return RequireScalar(ParseAdditive());
}

ExprPtr Parser::ParseOr() {
  ExprPtr left = ParseAnd();
  while (IsWord("or")) {
    ExprPtr node = MakeExpr(ExprKind::Or);
    node->args.push_back(RequirePredicate(std::move(left)));
    TakeWord("or");
    node->args.push_back(RequirePredicate(ParseAnd()));
    left = Measured(std::move(node));
  }
  return left;
}

ExprPtr Parser::ParseAnd() {
  ExprPtr left = ParseNot();
  while (IsWord("and")) {
    ExprPtr node = MakeExpr(ExprKind::And);
    node->args.push_back(RequirePredicate(std::move(left)));
    TakeWord("and");
    node->args.push_back(RequirePredicate(ParseNot()));
    left = Measured(std::move(node));
  }
  return left;
}

ExprPtr Parser::ParseNot() {
  const Level level(*this);
  if (!IsWord("not")) return Measured(ParsePredicate());
  ExprPtr node = MakeExpr(ExprKind::Not);
  TakeWord("not");
  node->args.push_back(RequirePredicate(ParseNot()));
  return Measured(std::move(node));
}

ExprPtr Parser::ParsePredicate() {
  if (IsWord("exists")) {
    ExprPtr node = MakeExpr(ExprKind::Exists);
    TakeWord("exists");
    ExpectSymbol("(");
    const bool wasInExists = std::exchange(inExists_, true);
    node->query = ParseSubquery(*node);
    inExists_ = wasInExists;
    ExpectSymbol(")");
    return node;
  }
  if (IsWord("update") && IsSymbolAt(1, "(")) return ParseUpdatedColumn();
  return ParsePredicateTail(ParseAdditive());
}

std::optional<CompareOp> Parser::TakeCompareOp() {
  struct Entry {
    const char* symbol;
    CompareOp op;
  };
  constexpr Entry kOps[] = {
      {"=", CompareOp::Equal},         {"<>", CompareOp::NotEqual},     {"!=", CompareOp::NotEqual},
      {"<", CompareOp::Less},          {"<=", CompareOp::LessEqual},    {">", CompareOp::Greater},
      {">=", CompareOp::GreaterEqual}, {"!<", CompareOp::GreaterEqual}, {"!>", CompareOp::LessEqual}};
  for (const Entry& entry : kOps)
    if (TakeSymbol(entry.symbol)) return entry.op;
  return std::nullopt;
}

ExprPtr Parser::ParsePredicateTail(ExprPtr left) {
  if (IsPredicate(*left)) return left;
  if (const std::optional<CompareOp> op = TakeCompareOp()) return ParseComparison(std::move(left), *op);
  if (IsWord("is")) {
    ExprPtr node = MakeExpr(ExprKind::IsNull);
    TakeWord("is");
    node->negated = TakeWord("not");
    ExpectWord("null");
    node->args.push_back(std::move(left));
    return node;
  }
  const bool negated = IsWord("not") && (IsWordAt(1, "like") || IsWordAt(1, "between") || IsWordAt(1, "in"));
  if (negated) TakeWord("not");
  if (IsWord("like")) {
    ExprPtr node = MakeExpr(ExprKind::Like);
    TakeWord("like");
    node->negated = negated;
    node->args.push_back(std::move(left));
    node->args.push_back(ParseExpression());
    const bool isBraced = IsWordAt(1, "escape") && TakeSymbol("{");
    if (TakeWord("escape")) node->args.push_back(ParseExpression());
    if (isBraced) ExpectSymbol("}");
    return node;
  }
  if (IsWord("between")) {
    ExprPtr node = MakeExpr(ExprKind::Between);
    TakeWord("between");
    node->negated = negated;
    node->args.push_back(std::move(left));
    node->args.push_back(ParseExpression());
    ExpectWord("and");
    node->args.push_back(ParseExpression());
    return node;
  }
  return TakeWord("in") ? ParseIn(std::move(left), negated) : std::move(left);
}

ExprPtr Parser::ParseComparison(ExprPtr left, CompareOp op) {
  ExprPtr node = MakeExpr(ExprKind::Compare);
  node->compare = op;
  node->args.push_back(std::move(left));
  if (IsWord("all") || IsWord("any") || IsWord("some")) {
    node->kind = ExprKind::Quantified;
    node->negated = IsWord("all");
    ++at_;
    ExpectSymbol("(");
    if (!StartsQuery(true)) SyntaxError();
    node->query = ParseSubquery(*node);
    ExpectSymbol(")");
    return node;
  }
  node->args.push_back(ParseExpression());
  return node;
}

ExprPtr Parser::ParseIn(ExprPtr left, bool negated) {
  ExprPtr node = MakeExpr(ExprKind::InList);
  node->negated = negated;
  node->args.push_back(std::move(left));
  ExpectSymbol("(");
  if (StartsQuery(true)) {
    node->kind = ExprKind::InQuery;
    node->query = ParseSubquery(*node);
  } else {
    do node->args.push_back(ParseExpression());
    while (TakeSymbol(","));
  }
  ExpectSymbol(")");
  return node;
}

ExprPtr Parser::ParseAdditive() {
  struct Entry {
    const char* symbol;
    ArithmeticOp op;
  };
  constexpr Entry kOps[] = {{"+", ArithmeticOp::Add},
                            {"-", ArithmeticOp::Subtract},
                            {"&", ArithmeticOp::BitAnd},
                            {"|", ArithmeticOp::BitOr},
                            {"^", ArithmeticOp::BitXor}};
  ExprPtr left = ParseMultiplicative();
  while (true) {
    const Entry* found = nullptr;
    for (const Entry& entry : kOps)
      if (IsSymbol(entry.symbol)) found = &entry;
    if (found == nullptr) return left;
    ExprPtr node = MakeExpr(ExprKind::Arithmetic);
    node->arithmetic = found->op;
    node->args.push_back(RequireScalar(std::move(left)));
    TakeSymbol(found->symbol);
    node->args.push_back(RequireScalar(ParseMultiplicative()));
    left = Measured(std::move(node));
  }
}

ExprPtr Parser::ParseMultiplicative() {
  ExprPtr left = ParseUnary();
  while (IsSymbol("*") || IsSymbol("/") || IsSymbol("%")) {
    ExprPtr node = MakeExpr(ExprKind::Arithmetic);
    node->arithmetic = IsSymbol("*")   ? ArithmeticOp::Multiply
                       : IsSymbol("/") ? ArithmeticOp::Divide
                                       : ArithmeticOp::Modulo;
    node->args.push_back(RequireScalar(std::move(left)));
    ++at_;
    node->args.push_back(RequireScalar(ParseUnary()));
    left = Measured(std::move(node));
  }
  return left;
}

ExprPtr Parser::ParseUnary() {
  const Level level(*this);
  if (TakeSymbol("+")) return RequireScalar(ParseUnary());
  if (!IsSymbol("-") && !IsSymbol("~")) return Measured(ParsePrimary());
  ExprPtr node = MakeExpr(IsSymbol("-") ? ExprKind::Negate : ExprKind::BitNot);
  ++at_;
  node->args.push_back(RequireScalar(ParseUnary()));
  return Measured(std::move(node));
}

QueryPtr Parser::ParseSubquery(Expr& owner) {
  const int outer = deepest_;
  deepest_ = 0;
  QueryPtr query = ParseQuery();
  owner.depth = deepest_ + 1;
  deepest_ = std::max(outer, owner.depth);
  return query;
}

// What the server allows behind an operand and the engine lacks.
void Parser::RefuseAfterOperand() const {
  if (AreWordsAt(0, "AT TIME ZONE")) RefuseHere("AT TIME ZONE");
  if (IsSymbol(".") && IsNameAt(1)) RefuseHere("A method of a value");
}

ExprPtr Parser::ParsePrimary() {
  ExprPtr operand = ParseOperand();
  if (IsWord("collate")) {
    ExprPtr node = MakeExpr(ExprKind::Collate);
    NamedCollation collation = ParseCollation();
    node->collation = collation.id;
    node->text = std::move(collation.name);
    node->args.push_back(RequireScalar(std::move(operand)));
    operand = Measured(std::move(node));
  }
  RefuseAfterOperand();
  return operand;
}

ExprPtr Parser::ParseOperand() {
  switch (Current().kind) {
  case TokenKind::Text:
  case TokenKind::UnicodeText:
  case TokenKind::Integer:
  case TokenKind::Decimal:
  case TokenKind::Float:
  case TokenKind::Money:
  case TokenKind::Binary: return ParseLiteral();
  case TokenKind::Variable: {
    ExprPtr node = MakeExpr(ExprKind::Variable);
    node->text = TakeVariable();
    return node;
  }
  case TokenKind::QuotedName: return ParseColumn();
  case TokenKind::Symbol:
    if (IsSymbol("(")) return ParseParenthesis();
    if (IsSymbol("?")) {
      ExprPtr node = MakeExpr(ExprKind::Marker);
      node->marker = markers_++;
      ++at_;
      return node;
    }
    if (IsSymbol("{")) return ParseDateEscape();
    if (IsSymbol("::")) RefuseHere("A static method of a type");
    if (IsSymbol("$") && Next().kind == TokenKind::Word)
      RefuseHere("A name with a dollar sign, such as $IDENTITY");
    SyntaxError();
  case TokenKind::End: SyntaxError();
  case TokenKind::Word: break;
  }
  if (IsWord("null")) {
    ExprPtr node = MakeExpr(ExprKind::Null);
    ++at_;
    return node;
  }
  if (IsWord("case")) return ParseCase();
  if (IsSymbolAt(1, "(")) {
    if (IsWord("iif")) return ParseIif();
    if (IsWord("cast") || IsWord("try_cast")) return ParseCast();
    if (IsWord("convert") || IsWord("try_convert")) return ParseConvert();
  }
  constexpr std::pair<std::string_view, std::string_view> kFunctionsByWord[] = {
      {"current_timestamp", "getdate"},
      {"current_user", "user_name"},
      {"session_user", "user_name"},
      {"user", "user_name"},
      {"system_user", "suser_sname"}};
  for (const auto& [word, function] : kFunctionsByWord) {
    if (!IsWord(word)) continue;
    ExprPtr node = MakeExpr(ExprKind::Call);
    node->text = function;
    ++at_;
    return node;
  }
  if (AreWordsAt(0, "NEXT VALUE FOR")) RefuseHere("NEXT VALUE FOR");
  constexpr std::array<std::string_view, 4> kReservedFunctions = {"left", "right", "coalesce", "nullif"};
  bool isFunction = IsSymbolAt(1, "(");
  if (IsReserved(Current().text)) {
    if (IsWord("identitycol")) RefuseHere("IDENTITYCOL");
    if (IsWord("rowguidcol")) RefuseHere("ROWGUIDCOL");
    RefuseIfListed(RefusedKind::Function, Current().text, Current().line);
    const auto isCurrent = [this](std::string_view name) { return IsWord(name); };
    isFunction = isFunction && std::any_of(kReservedFunctions.begin(), kReservedFunctions.end(), isCurrent);
  }
  return isFunction ? ParseCall() : ParseColumn();
}

// {d '2020-01-31'}, {ts '2020-01-31 10:00:00'} and {t '10:00:00'}, the last of the present day: all of them
// are a datetime.
ExprPtr Parser::ParseDateEscape() {
  const bool isText = at_ + 2 < tokens_.size() && tokens_[at_ + 2].kind == TokenKind::Text;
  if (!isText || !(IsWordAt(1, "d") || IsWordAt(1, "ts") || IsWordAt(1, "t")))
    RefuseHere("An ODBC escape sequence other than of a date or time");
  const bool isTime = IsWordAt(1, "t");
  const auto castTo = [this](TypeId type, ExprPtr value) {
    ExprPtr cast = MakeExpr(ExprKind::Cast);
    cast->type = MakeType(type);
    cast->args.push_back(std::move(value));
    return cast;
  };
  at_ += 2;
  ExprPtr moment = castTo(TypeId::DateTime, ParseLiteral());
  ExpectSymbol("}");
  if (!isTime) return moment;
  // A time alone is one of 1900-01-01, which is the zero of the dates.
  ExprPtr clock = MakeExpr(ExprKind::Call);
  clock->text = "getdate";
  ExprPtr sum = MakeExpr(ExprKind::Arithmetic);
  sum->arithmetic = ArithmeticOp::Add;
  sum->args.push_back(castTo(TypeId::DateTime, castTo(TypeId::Date, std::move(clock))));
  sum->args.push_back(std::move(moment));
  return sum;
}

ExprPtr Parser::ParseParenthesis() {
  ExpectSymbol("(");
  if (StartsQuery(true)) {
    ExprPtr node = MakeExpr(ExprKind::Subquery);
    node->query = ParseSubquery(*node);
    ExpectSymbol(")");
    return node;
  }
  ExprPtr inner = ParseOr();
  ExpectSymbol(")");
  return inner;
}

ExprPtr Parser::ParseLiteral() {
  ExprPtr node = MakeExpr(ExprKind::Literal);
  node->literal = Current().kind;
  node->text = Current().text;
  ++at_;
  return node;
}

ExprPtr Parser::ParseCase() {
  ExprPtr node = MakeExpr(ExprKind::Case);
  ExpectWord("case");
  if (!IsWord("when")) {
    node->hasOperand = true;
    node->args.push_back(ParseExpression());
  }
  do {
    ExpectWord("when");
    node->args.push_back(node->hasOperand ? ParseExpression() : ParseCondition());
    ExpectWord("then");
    node->args.push_back(ParseExpression());
  } while (IsWord("when"));
  if (TakeWord("else")) {
    node->hasElse = true;
    node->args.push_back(ParseExpression());
  }
  ExpectWord("end");
  return node;
}

// IIF(condition, a, b) is CASE WHEN condition THEN a ELSE b END.
ExprPtr Parser::ParseIif() {
  ExprPtr node = MakeExpr(ExprKind::Case);
  ExpectWord("iif");
  ExpectSymbol("(");
  node->args.push_back(ParseCondition());
  ExpectSymbol(",");
  node->args.push_back(ParseExpression());
  ExpectSymbol(",");
  node->args.push_back(ParseExpression());
  node->hasElse = true;
  ExpectSymbol(")");
  return node;
}

constexpr int32_t kCastLength = 30;

ExprPtr Parser::ParseCast() {
  ExprPtr node = MakeExpr(ExprKind::Cast);
  node->attempt = TakeWord("try_cast");
  if (!node->attempt) ExpectWord("cast");
  ExpectSymbol("(");
  node->args.push_back(ParseExpression());
  ExpectWord("as");
  node->type = ParseType(kCastLength);
  ExpectSymbol(")");
  return node;
}

ExprPtr Parser::ParseConvert() {
  ExprPtr node = MakeExpr(ExprKind::Convert);
  node->attempt = TakeWord("try_convert");
  if (!node->attempt) ExpectWord("convert");
  ExpectSymbol("(");
  node->type = ParseType(kCastLength);
  ExpectSymbol(",");
  node->args.push_back(ParseExpression());
  if (TakeSymbol(",")) node->args.push_back(ParseExpression());
  ExpectSymbol(")");
  return node;
}

ExprPtr Parser::ParseCall() {
  ExprPtr node = MakeExpr(ExprKind::Call);
  node->text = ToLower(Current().text);
  RefuseIfListed(RefusedKind::Function, node->text, Current().line);
  ++at_;
  ExpectSymbol("(");
  if (!TakeSymbol(")")) {
    if (TakeSymbol("*")) {
      node->star = true;
    } else {
      node->distinct = TakeWord("distinct");
      if (!node->distinct) TakeWord("all");
      do node->args.push_back(ParseExpression());
      while (TakeSymbol(","));
      if (node->text == "trim") {
        // TRIM(characters FROM text) has the text first in the tree, as all functions of texts have.
        if (node->args.size() > 1) Fail(174, {node->text, "1"}, node->line);
        if (TakeWord("from")) node->args.insert(node->args.begin(), ParseExpression());
      }
    }
    ExpectSymbol(")");
  }
  if (AreWordsAt(0, "WITHIN GROUP")) node->within = ParseWithinGroup();
  if (IsWord("over")) node->over = ParseOver();
  return node;
}

std::vector<OrderItem> Parser::ParseWithinGroup() {
  ExpectWord("within");
  ExpectWord("group");
  ExpectSymbol("(");
  if (!IsWord("order")) SyntaxError();
  std::vector<OrderItem> items = ParseOrderBy();
  ExpectSymbol(")");
  return items;
}

std::unique_ptr<Window> Parser::ParseOver() {
  auto window = std::make_unique<Window>();
  ExpectWord("over");
  ExpectSymbol("(");
  if (TakeWord("partition")) {
    ExpectWord("by");
    do window->partitionBy.push_back(ParseExpression());
    while (TakeSymbol(","));
  }
  if (IsWord("order")) window->orderBy = ParseOrderBy();
  if (IsWord("rows") || IsWord("range")) window->frame = ParseFrame();
  ExpectSymbol(")");
  return window;
}

Frame Parser::ParseFrame() {
  Frame frame;
  frame.unit = TakeWord("rows") ? FrameUnit::Rows : FrameUnit::Range;
  if (frame.unit == FrameUnit::Range) ExpectWord("range");
  if (!TakeWord("between")) {
    frame.start = ParseFrameEdge(frame.startRows);
    return frame;
  }
  frame.start = ParseFrameEdge(frame.startRows);
  ExpectWord("and");
  frame.end = ParseFrameEdge(frame.endRows);
  return frame;
}

FrameEdge Parser::ParseFrameEdge(int64_t& rows) {
  if (TakeWord("current")) {
    ExpectWord("row");
    return FrameEdge::CurrentRow;
  }
  const bool isUnbounded = TakeWord("unbounded");
  if (!isUnbounded) {
    constexpr size_t kMostDigits = 9;
    if (Current().kind != TokenKind::Integer || Current().text.size() > kMostDigits) SyntaxError();
    rows = std::stoi(tokens_[at_++].text);
  }
  if (TakeWord("preceding")) return isUnbounded ? FrameEdge::UnboundedPreceding : FrameEdge::Preceding;
  ExpectWord("following");
  return isUnbounded ? FrameEdge::UnboundedFollowing : FrameEdge::Following;
}

ExprPtr Parser::ParseColumn() {
  ExprPtr node = MakeExpr(ExprKind::Column);
  node->parts.push_back(TakeName());
  while (IsSymbol(".") && (IsNameAt(1) || (node->parts.size() == 1 && IsSymbolAt(1, ".") && IsNameAt(2)))) {
    ++at_;
    node->parts.push_back(IsSymbol(".") ? "dbo" : TakeName());
  }
  if (IsSymbol("::")) RefuseHere("A static method of a type");
  const size_t ownParts = IsSymbol("(") ? 2 : 3; // a schema and a function; a schema, a table and a column
  if (node->parts.size() == ownParts + 1 && IsOwnDatabase(node->parts[0]))
    node->parts.erase(node->parts.begin());
  if (!IsSymbol("(") || node->parts.size() == 1) return node;
  if (EqualNames(node->parts[0], "sys")) RefuseHere("A function of the schema sys");
  if (node->parts.size() > 2) {
    // What looks like a database, a schema and a function may be a method of a column.
    std::string function = node->parts[0];
    for (size_t i = 1; i < node->parts.size(); ++i) function += "." + node->parts[i];
    Fail(4121, {node->parts[0], function}, node->line);
  }
  node->kind = ExprKind::UserCall;
  node->args = ParseFunctionArguments();
  return node;
}

std::vector<ExprPtr> Parser::ParseFunctionArguments() {
  std::vector<ExprPtr> args;
  ExpectSymbol("(");
  if (TakeSymbol(")")) return args;
  do {
    if (IsWord("default")) {
      args.push_back(MakeExpr(ExprKind::Default));
      ++at_;
    } else {
      args.push_back(ParseExpression());
    }
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  return args;
}

std::pair<int, int> Parser::ParseTypeArguments(bool& given) {
  std::pair<int, int> arguments{0, 0};
  given = TakeSymbol("(");
  if (!given) return arguments;
  const auto takeNumber = [this] {
    if (TakeWord("max")) return -1;
    if (Current().kind != TokenKind::Integer || Current().text.size() > 6) SyntaxError();
    return std::stoi(tokens_[at_++].text);
  };
  arguments.first = takeNumber();
  if (TakeSymbol(",")) arguments.second = takeNumber();
  ExpectSymbol(")");
  return arguments;
}

namespace {

// -1 stands for max.
void CheckLength(TypeId id, int length, int line) {
  constexpr int kMaxBytes = 8000;
  if (length == 0) Fail(1001, {std::to_string(line), "0"}, line);
  if (length < 0 && IsFixedLength(id)) Fail(102, {"max"}, line);
  if (length > kMaxBytes) Fail(131, {std::to_string(length), TypeName(id)}, line);
  if (IsUnicode(id) && length > kMaxBytes / 2) Fail(2717, {std::to_string(length), TypeName(id)}, line);
}

// NATIONAL CHAR is nchar, and so on; none where there is no such type.
std::optional<TypeId> NationalType(std::optional<TypeId> id) {
  if (id == TypeId::Char) return TypeId::NChar;
  if (id == TypeId::Text) return TypeId::NText;
  return std::nullopt;
}

// CHAR VARYING is varchar.
std::optional<TypeId> VaryingType(std::optional<TypeId> id) {
  if (id == TypeId::Char) return TypeId::VarChar;
  if (id == TypeId::NChar) return TypeId::NVarChar;
  if (id == TypeId::Binary) return TypeId::VarBinary;
  return std::nullopt;
}

} // namespace

Type Parser::ParseType(int32_t defaultLength) {
  const Token& token = Current();
  if (IsWord("cursor")) RefuseHere("A parameter or result that is a cursor");
  const bool isNational = TakeWord("national");
  const bool isDouble = IsWord("double") && IsWordAt(1, "precision");
  std::string name = isDouble ? tokens_[at_++].text : TakeName();
  if (TakeSymbol(".")) {
    // Only the server's own types are known.
    const std::string own = TakeName();
    name = EqualNames(name, "sys") ? own : name + "." + own;
  }
  std::optional<TypeId> id = FindType(name);
  if (isNational) id = NationalType(id);
  if (!id) RefuseIfListed(RefusedKind::Type, name, token.line);
  if (!id) Fail(2715, {"1", name}, token.line);
  if (isDouble) ExpectWord("precision");
  if (TakeWord("varying")) id = VaryingType(id);
  if (!id) SyntaxErrorAt(at_ - 1);
  if (EqualNames(name, "sysname")) return MakeType(*id, 128);
  bool given = false;
  const auto [first, second] = ParseTypeArguments(given);
  if (*id == TypeId::Decimal) {
    const int precision = given ? first : 18;
    if (precision < 1 || second < 0) Fail(102, {std::to_string(precision)}, token.line);
    if (precision > kMaxPrecision)
      Fail(2750, {"1", std::to_string(precision), std::to_string(kMaxPrecision)}, token.line);
    if (second > precision) Fail(2751, {"1", std::to_string(second), std::to_string(precision)}, token.line);
    return MakeDecimal(precision, second);
  }
  constexpr int kMostBits = 53; // of a float
  if (*id == TypeId::Float && given && (first < 1 || first > kMostBits))
    Fail(1001, {std::to_string(token.line), std::to_string(first)}, token.line);
  if (*id == TypeId::Float) return MakeType(given && first <= 24 ? TypeId::Real : TypeId::Float);
  if (IsFine(*id)) {
    if (given && (first < 0 || first > kMaxFraction))
      Fail(1002, {std::to_string(token.line), std::to_string(first)}, token.line);
    return given ? MakeFine(*id, first) : MakeType(*id);
  }
  if (!TakesLength(*id)) {
    if (given) Fail(2716, {"1", TypeName(*id)}, token.line);
    return MakeType(*id);
  }
  if (given) CheckLength(*id, first, token.line);
  return MakeType(*id, given ? first : defaultLength);
}

} // namespace tsql
