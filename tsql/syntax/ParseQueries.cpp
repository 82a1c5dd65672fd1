#include "tsql/syntax/ParserRules.h"

#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

#include <array>

namespace tsql {

size_t Parser::AfterParenthesis(size_t ahead) const {
  int depth = 0;
  for (; Next(ahead).kind != TokenKind::End; ++ahead) {
    if (IsSymbolAt(ahead, "(")) ++depth;
    if (IsSymbolAt(ahead, ")") && --depth == 0) return ahead + 1;
  }
  return ahead;
}

bool Parser::ContinuesQuery(size_t ahead) const {
  return IsWordAt(ahead, "union") || IsWordAt(ahead, "except") || IsWordAt(ahead, "intersect");
}

// Parentheses may stand around a query, but one that follows them may also begin an expression or a join:
// "((SELECT 1) + 1)", "((SELECT 1 AS a) x JOIN t ON ...)".
bool Parser::StartsQuery(bool endsHere) const {
  size_t opened = 0;
  while (IsSymbolAt(opened, "(")) ++opened;
  if (!IsWordAt(opened, "select")) return false;
  if (opened == 0) return true;
  size_t after = AfterParenthesis(opened - 1);
  for (; opened > 1; --opened) {
    if (ContinuesQuery(after)) return true;
    if (!IsSymbolAt(after, ")")) return false;
    ++after;
  }
  return !endsHere || IsSymbolAt(after, ")") || ContinuesQuery(after);
}

QueryPtr Parser::ParseQuery() {
  std::vector<CommonTable> commonTables;
  if (IsWord("with")) commonTables = ParseCommonTables();
  QueryPtr query = ParseSetOperations();
  query->commonTables = std::move(commonTables);
  if (IsWord("order")) query->orderBy = ParseOrderBy();
  if (IsWord("for")) FailUnsupported("The FOR clause", Current().line);
  if (IsWord("option")) FailUnsupported("The OPTION clause", Current().line);
  return query;
}

std::vector<CommonTable> Parser::ParseCommonTables() {
  ExpectWord("with");
  std::vector<CommonTable> tables;
  do {
    CommonTable table;
    table.name = TakeName();
    if (IsSymbol("(")) table.columns = ParseNameList();
    ExpectWord("as");
    ExpectSymbol("(");
    table.query = ParseQuery();
    ExpectSymbol(")");
    tables.push_back(std::move(table));
  } while (TakeSymbol(","));
  return tables;
}

QueryPtr Parser::ParseSetOperations() {
  QueryPtr left = ParseIntersections();
  while (IsWord("union") || IsWord("except")) {
    auto node = std::make_unique<Query>();
    if (TakeWord("except")) {
      node->op = SetOp::Except;
    } else {
      TakeWord("union");
      node->op = TakeWord("all") ? SetOp::UnionAll : SetOp::Union;
    }
    CountSources(); // each branch makes the tree deeper, as a table does
    node->left = std::move(left);
    node->right = ParseIntersections();
    left = std::move(node);
  }
  return left;
}

QueryPtr Parser::ParseIntersections() {
  QueryPtr left = ParseQueryTerm();
  while (TakeWord("intersect")) {
    auto node = std::make_unique<Query>();
    node->op = SetOp::Intersect;
    CountSources();
    node->left = std::move(left);
    node->right = ParseQueryTerm();
    left = std::move(node);
  }
  return left;
}

QueryPtr Parser::ParseQueryTerm() {
  const Level level(*this);
  if (TakeSymbol("(")) {
    QueryPtr query = ParseSetOperations();
    ExpectSymbol(")");
    return query;
  }
  auto query = std::make_unique<Query>();
  query->select = ParseSelect();
  return query;
}

std::unique_ptr<Select> Parser::ParseSelect() {
  auto select = std::make_unique<Select>();
  select->line = Current().line;
  ExpectWord("select");
  select->distinct = TakeWord("distinct");
  if (!select->distinct) TakeWord("all");
  if (IsWord("top")) select->top = ParseTop();
  do select->items.push_back(ParseSelectItem());
  while (TakeSymbol(","));
  if (TakeWord("into")) select->into = ParseObjectName();
  if (TakeWord("from")) select->from = ParseFrom();
  if (TakeWord("where")) select->where = ParseCondition();
  if (TakeWord("group")) {
    ExpectWord("by");
    do select->groupBy.push_back(ParseExpression());
    while (TakeSymbol(","));
    if (IsWord("with")) FailUnsupported("GROUP BY WITH ROLLUP or CUBE", Current().line);
  }
  if (TakeWord("having")) select->having = ParseCondition();
  return select;
}

ExprPtr Parser::ParseTop() {
  ExpectWord("top");
  ExprPtr count;
  if (TakeSymbol("(")) {
    count = ParseExpression();
    ExpectSymbol(")");
  } else if (Current().kind == TokenKind::Integer) {
    count = ParseLiteral();
  } else {
    SyntaxError();
  }
  if (IsWord("percent")) FailUnsupported("TOP PERCENT", Current().line);
  if (IsWord("with") && IsWordAt(1, "ties")) FailUnsupported("TOP WITH TIES", Current().line);
  return count;
}

std::optional<SelectItem> Parser::ParseStar() {
  SelectItem item;
  size_t ahead = 0;
  while (IsNameAt(ahead) && IsSymbolAt(ahead + 1, ".")) {
    item.starPrefix.push_back(tokens_[at_ + ahead].text);
    ahead += 2;
  }
  if (!IsSymbolAt(ahead, "*")) return std::nullopt;
  at_ += ahead + 1;
  return item;
}

SelectItem Parser::ParseSelectItem() {
  if (std::optional<SelectItem> star = ParseStar()) return std::move(*star);
  SelectItem item;
  if (Current().kind == TokenKind::Variable && IsSymbolAt(1, "=")) {
    item.variable = TakeVariable();
    ExpectSymbol("=");
    item.expr = ParseExpression();
    return item;
  }
  const bool named = IsName() || Current().kind == TokenKind::Text;
  if (named && IsSymbolAt(1, "=")) {
    item.alias = TakeAlias();
    ExpectSymbol("=");
    item.expr = ParseExpression();
    return item;
  }
  item.expr = ParseExpression();
  if (TakeWord("as") || IsName() || Current().kind == TokenKind::Text) item.alias = TakeAlias();
  return item;
}

std::vector<OrderItem> Parser::ParseOrderBy() {
  ExpectWord("order");
  ExpectWord("by");
  std::vector<OrderItem> items;
  do {
    OrderItem item;
    item.expr = ParseExpression();
    item.descending = TakeWord("desc");
    if (!item.descending) TakeWord("asc");
    items.push_back(std::move(item));
  } while (TakeSymbol(","));
  return items;
}

TableSourcePtr Parser::ParseFrom() {
  TableSourcePtr left = ParseJoins();
  while (IsSymbol(",")) {
    auto node = std::make_unique<TableSource>();
    node->kind = TableSource::Kind::Join;
    node->line = Current().line;
    node->join = JoinKind::Cross;
    TakeSymbol(",");
    node->left = std::move(left);
    node->right = ParseJoins();
    left = std::move(node);
  }
  return left;
}

std::optional<JoinKind> Parser::TakeJoin() {
  struct Entry {
    const char* word;
    JoinKind kind;
  };
  constexpr Entry kJoins[] = {{"inner", JoinKind::Inner},
                              {"left", JoinKind::Left},
                              {"right", JoinKind::Right},
                              {"full", JoinKind::Full},
                              {"cross", JoinKind::Cross}};
  if (TakeWord("join")) return JoinKind::Inner;
  for (const Entry& entry : kJoins) {
    if (!TakeWord(entry.word)) continue;
    if (IsWord("apply")) FailUnsupported("APPLY", Current().line);
    if (entry.kind != JoinKind::Inner && entry.kind != JoinKind::Cross) TakeWord("outer");
    ExpectWord("join");
    return entry.kind;
  }
  return std::nullopt;
}

TableSourcePtr Parser::ParseJoins() {
  const Level level(*this);
  TableSourcePtr left = ParseTablePrimary();
  while (true) {
    const int line = Current().line;
    const std::optional<JoinKind> kind = TakeJoin();
    if (!kind) return left;
    auto node = std::make_unique<TableSource>();
    node->kind = TableSource::Kind::Join;
    node->line = line;
    node->join = *kind;
    node->left = std::move(left);
    // In "a JOIN b JOIN c ON ... ON ..." the first ON belongs to the second join.
    node->right = *kind == JoinKind::Cross ? ParseTablePrimary() : ParseJoins();
    if (*kind != JoinKind::Cross) {
      ExpectWord("on");
      node->on = ParseCondition();
    }
    left = std::move(node);
  }
}

TableSourcePtr Parser::ParseTablePrimary() {
  CountSources();
  auto source = std::make_unique<TableSource>();
  source->line = Current().line;
  if (IsSymbol("(")) {
    if (!StartsQuery()) {
      TakeSymbol("(");
      TableSourcePtr inner = ParseFrom();
      ExpectSymbol(")");
      return inner;
    }
    TakeSymbol("(");
    source->kind = TableSource::Kind::Derived;
    source->query = ParseQuery();
    ExpectSymbol(")");
    ParseTableAlias(*source);
    if (source->alias.empty()) SyntaxError();
    if (IsSymbol("(")) source->columnAliases = ParseNameList();
    return source;
  }
  if (Current().kind == TokenKind::Variable) FailUnsupported("A table variable", Current().line);
  source->name = ParseObjectName();
  ParseTableHints(*source);
  ParseTableAlias(*source);
  ParseTableHints(*source);
  return source;
}

void Parser::ParseTableAlias(TableSource& source) {
  if (TakeWord("as") || IsName()) source.alias = TakeName();
}

void Parser::ParseTableHints(TableSource& source) {
  constexpr std::array<std::string_view, 17> kHints = {
      "nolock",          "updlock",        "holdlock", "rowlock",           "tablock",
      "tablockx",        "xlock",          "paglock",  "readpast",          "readcommitted",
      "readuncommitted", "repeatableread", "nowait",   "readcommittedlock", "serializable",
      "nolock",          "index"};
  const bool withHints = IsWord("with") && IsSymbolAt(1, "(");
  const size_t first = withHints ? 2 : 1;
  if (!withHints && !IsSymbol("(")) return;
  bool known = false;
  for (const std::string_view hint : kHints) known = known || IsWordAt(first, hint);
  if (!known) {
    if (!withHints) return;
    at_ += first;
    SyntaxError();
  }
  at_ += first;
  do {
    if (IsWord("index")) FailUnsupported("The INDEX hint", Current().line);
    source.updateLock = source.updateLock || IsWord("updlock") || IsWord("xlock") || IsWord("tablockx");
    ++at_;
    TakeSymbol(",");
  } while (!TakeSymbol(")"));
}

ObjectName Parser::ParseObjectName() {
  ObjectName name;
  const int line = Current().line;
  std::vector<std::string> parts;
  parts.push_back(TakeName());
  while (TakeSymbol(".")) parts.push_back(IsSymbol(".") ? std::string() : TakeName());
  name.name = parts.back();
  if (parts.size() > 1) name.schema = parts[parts.size() - 2];
  const bool isTempdb = parts.size() == 3 && EqualNames(parts[0], "tempdb") && name.name[0] == '#';
  if (parts.size() > 2 && !isTempdb) FailUnsupported("A name with a database part", line);
  return name;
}

std::vector<std::string> Parser::ParseNameList() {
  std::vector<std::string> names;
  ExpectSymbol("(");
  do names.push_back(TakeName());
  while (TakeSymbol(","));
  ExpectSymbol(")");
  return names;
}

} // namespace tsql
