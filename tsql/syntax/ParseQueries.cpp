#include <algorithm>
#include <array>
#include <utility>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Hints that say how to lock or to read; those that matter here ask for a lock of the writer.
bool IsTableHint(std::string_view word) {
  constexpr std::array<std::string_view, 20> kHints = {
      "nolock",   "updlock",      "holdlock",        "rowlock",        "tablock",
      "tablockx", "xlock",        "paglock",         "readpast",       "readcommitted",
      "nowait",   "serializable", "readuncommitted", "repeatableread", "readcommittedlock",
      "index",    "forceseek",    "forcescan",       "fastfirstrow",   "noexpand"};
  return std::any_of(kHints.begin(), kHints.end(),
                     [word](std::string_view hint) { return EqualNames(hint, word); });
}

// Functions that only stand in place of a table and have names that are reserved.
bool IsRowsetFunction(std::string_view word) {
  constexpr std::array<std::string_view, 9> kFunctions = {"containstable",
                                                          "freetexttable",
                                                          "opendatasource",
                                                          "openquery",
                                                          "openrowset",
                                                          "openxml",
                                                          "semantickeyphrasetable",
                                                          "semanticsimilaritydetailstable",
                                                          "semanticsimilaritytable"};
  return std::any_of(kFunctions.begin(), kFunctions.end(),
                     [word](std::string_view name) { return EqualNames(name, word); });
}

// Functions of the server that are called like those of users.
bool IsBuiltInTableFunction(std::string_view word) {
  constexpr std::array<std::string_view, 3> kFunctions = {"changetable", "generate_series", "openjson"};
  return std::any_of(kFunctions.begin(), kFunctions.end(),
                     [word](std::string_view name) { return EqualNames(name, word); });
}

// In a UNION only the first SELECT may have an INTO.
void CheckInto(const Query& query, bool isFirst) {
  if (query.op != SetOp::None) {
    CheckInto(*query.left, isFirst);
    CheckInto(*query.right, false);
  } else if (query.select->into && !isFirst) {
    Fail(196, {}, query.select->line);
  }
}

} // namespace

const ObjectName* IntoOf(const Query& query) {
  const Query* first = &query;
  while (first->op != SetOp::None) first = first->left.get();
  return first->select->into ? &*first->select->into : nullptr;
}

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
  const bool isStatement = std::exchange(startsQueryStatement_, false);
  const bool outer = std::exchange(isQueryStatement_, isStatement);
  if (IsWord("with")) commonTables = ParseCommonTables();
  QueryPtr query = ParseSetOperations();
  isQueryStatement_ = outer;
  if (query->op != SetOp::None) CheckInto(*query, true);
  query->commonTables = std::move(commonTables);
  if (IsWord("order")) {
    query->orderBy = ParseOrderBy();
    if (IsWord("offset")) ParseOffset(*query);
  }
  RefuseAfterQuery();
  if (isStatement) ParseQueryHints(query->maxRecursion);
  return query;
}

// OFFSET n ROWS [FETCH NEXT m ROWS ONLY]
void Parser::ParseOffset(Query& query) {
  const auto expectRows = [this] {
    if (!TakeWord("row")) ExpectWord("rows");
  };
  ExpectWord("offset");
  query.offset = ParseExpression();
  expectRows();
  if (!IsWord("fetch") || (!IsWordAt(1, "next") && !IsWordAt(1, "first"))) return;
  TakeWord("fetch");
  if (!TakeWord("next")) TakeWord("first");
  query.fetch = ParseExpression();
  expectRows();
  ExpectWord("only");
}

// OPTION (...) at the end of a statement.
void Parser::ParseQueryHints(int& maxRecursion) {
  if (!IsWord("option") || !IsSymbolAt(1, "(")) return;
  TakeWord("option");
  TakeSymbol("(");
  do ParseQueryHint(maxRecursion);
  while (TakeSymbol(","));
  ExpectSymbol(")");
}

// All of them say how to find the rows, and not which, but for the limit of recursion.
void Parser::ParseQueryHint(int& maxRecursion) {
  constexpr std::array<std::string_view, 18> kWords = {"HASH GROUP",
                                                       "ORDER GROUP",
                                                       "CONCAT UNION",
                                                       "HASH UNION",
                                                       "MERGE UNION",
                                                       "LOOP JOIN",
                                                       "MERGE JOIN",
                                                       "HASH JOIN",
                                                       "EXPAND VIEWS",
                                                       "FORCE ORDER",
                                                       "KEEP PLAN",
                                                       "KEEPFIXED PLAN",
                                                       "ROBUST PLAN",
                                                       "RECOMPILE",
                                                       "OPTIMIZE FOR UNKNOWN",
                                                       "PARAMETERIZATION SIMPLE",
                                                       "PARAMETERIZATION FORCED",
                                                       "IGNORE_NONCLUSTERED_COLUMNSTORE_INDEX"};
  constexpr std::array<std::string_view, 4> kWithNumber = {"FAST", "MAXDOP", "MAXRECURSION", "QUERYTRACEON"};
  constexpr std::array<std::string_view, 2> kWithList = {"OPTIMIZE FOR", "USE HINT"};
  for (const std::string_view words : kWords) {
    if (!AreWordsAt(0, words)) continue;
    at_ += 1 + static_cast<size_t>(std::count(words.begin(), words.end(), ' '));
    return;
  }
  for (const std::string_view word : kWithNumber) {
    if (!AreWordsAt(0, word)) continue;
    constexpr int kMost = 32767;
    const Token& number = Next();
    if (number.kind != TokenKind::Integer) SyntaxErrorAt(at_ + 1);
    const int value = number.text.size() > 6 ? kMost + 1 : std::stoi(number.text);
    if (word == "MAXRECURSION") {
      if (value > kMost) Fail(310, {number.text}, number.line);
      maxRecursion = value;
    }
    at_ += 2;
    return;
  }
  for (const std::string_view words : kWithList) {
    if (!AreWordsAt(0, words) || !IsSymbolAt(2, "(")) continue;
    at_ += AfterParenthesis(2);
    return;
  }
  SyntaxError();
}

void Parser::RefuseAfterQuery() const {
  if (IsWord("compute")) RefuseHere("The COMPUTE clause");
  if (IsWord("for") && (IsWordAt(1, "xml") || IsWordAt(1, "json") || IsWordAt(1, "browse")))
    RefuseHere("FOR XML, JSON or BROWSE");
}

std::vector<CommonTable> Parser::ParseCommonTables() {
  ExpectWord("with");
  if (IsSymbolAt(1, "(") && (IsWord("xmlnamespaces") || IsWord("change_tracking_context")))
    RefuseHere("WITH XMLNAMESPACES or CHANGE_TRACKING_CONTEXT");
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
  if (IsWord("top")) ParseTop(*select);
  do select->items.push_back(ParseSelectItem());
  while (TakeSymbol(","));
  if (isQueryStatement_ && TakeWord("into")) {
    select->into = ParseDefinedName();
    if (IsWord("on")) RefuseHere("SELECT INTO a filegroup");
  }
  if (TakeWord("from")) select->from = ParseFrom();
  if (TakeWord("where")) select->where = ParseCondition();
  if (IsWord("group")) ParseGroupBy(*select);
  if (TakeWord("having")) select->having = ParseCondition();
  return select;
}

ExprPtr Parser::ParseTopCount() {
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
  return count;
}

void Parser::ParseTop(Select& select) {
  select.top = ParseTopCount();
  select.topPercent = TakeWord("percent");
  if (!AreWordsAt(0, "WITH TIES")) return;
  at_ += 2;
  select.topTies = true;
}

ExprPtr Parser::ParseChangeTop(bool& isPercent) {
  if (!IsWord("top")) return nullptr;
  ExprPtr count = ParseTopCount();
  isPercent = TakeWord("percent");
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
  const int line = Current().line;
  if (std::optional<SelectItem> star = ParseStar()) {
    // A file may have a module from before this was checked.
    if (schemaBound_ && !schema_ && !inExists_) Fail(1054, {"*"}, line);
    return std::move(*star);
  }
  SelectItem item;
  if (Current().kind == TokenKind::Variable && IsAssignmentAt(1)) {
    ExprPtr variable = MakeExpr(ExprKind::Variable);
    item.variable = variable->text = TakeVariable();
    if (!isQueryStatement_) SyntaxError();
    item.expr = CompoundValue(std::move(variable));
    return item;
  }
  const bool named = IsName() || Current().kind == TokenKind::Text;
  if (named && IsSymbolAt(1, "=")) {
    item.alias = TakeAlias();
    ExpectSymbol("=");
    if (IsIdentityItem()) {
      ParseIdentityItem(item);
    } else {
      item.expr = ParseExpression();
    }
    return item;
  }
  if (IsIdentityItem()) {
    ParseIdentityItem(item);
  } else {
    item.expr = ParseExpression();
  }
  if (TakeWord("as") || IsName() || Current().kind == TokenKind::Text) item.alias = TakeAlias();
  return item;
}

void Parser::ParseIdentityItem(SelectItem& item) {
  ExpectWord("identity");
  ExpectSymbol("(");
  item.identityType = ParseType(1);
  item.identity.emplace();
  if (TakeSymbol(",")) item.identity = ParseIdentityNumbers(item.alias);
  ExpectSymbol(")");
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
  if (AreWordsAt(0, "OUTER APPLY")) {
    at_ += 2;
    return JoinKind::OuterApply;
  }
  for (const Entry& entry : kJoins) {
    if (!TakeWord(entry.word)) continue;
    if (entry.kind == JoinKind::Cross && TakeWord("apply")) return JoinKind::CrossApply;
    if (entry.kind != JoinKind::Inner && entry.kind != JoinKind::Cross) TakeWord("outer");
    const bool isHint = IsWord("loop") || IsWord("hash") || IsWord("merge") || IsWord("remote");
    if (isHint && entry.kind != JoinKind::Cross && IsWordAt(1, "join")) ++at_; // how, and not what
    ExpectWord("join");
    return entry.kind;
  }
  return std::nullopt;
}

TableSourcePtr Parser::ParseJoins() {
  const Level level(*this);
  TableSourcePtr left = ParsePivoted();
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
    const bool hasCondition =
        *kind != JoinKind::Cross && *kind != JoinKind::CrossApply && *kind != JoinKind::OuterApply;
    node->right = hasCondition ? ParseJoins() : ParsePivoted();
    if (hasCondition) {
      ExpectWord("on");
      node->on = ParseCondition();
      if (IsWord("pivot") || IsWord("unpivot")) RefuseHere("PIVOT and UNPIVOT of a join");
    }
    left = std::move(node);
  }
}

TableSourcePtr Parser::ParseTablePrimary() {
  CountSources();
  auto source = std::make_unique<TableSource>();
  source->line = Current().line;
  if (IsSymbol("(") && IsWordAt(1, "values")) return ParseValuesSource();
  if (IsSymbol("(")) {
    if (!StartsQuery()) return ParseParenthesizedSource();
    TakeSymbol("(");
    source->kind = TableSource::Kind::Derived;
    source->query = ParseQuery();
    ExpectSymbol(")");
    ParseTableAlias(*source);
    if (source->alias.empty()) SyntaxError();
    if (IsSymbol("(")) source->columnAliases = ParseNameList();
    RefuseAfterSource();
    return source;
  }
  source->name = ParseTarget();
  ParseTableHints(*source);
  if (IsSymbol("(") && !source->name.variable) {
    if (source->name.schema.empty() && IsBuiltInTableFunction(source->name.name))
      RefuseHere("A function in place of a table");
    source->kind = TableSource::Kind::Function;
    source->args = ParseFunctionArguments();
    ParseTableAlias(*source);
    if (IsSymbol("(")) source->columnAliases = ParseNameList();
    RefuseAfterSource();
    return source;
  }
  RefuseAfterSource();
  ParseTableAlias(*source);
  ParseTableHints(*source);
  RefuseAfterSource();
  return source;
}

// (VALUES (...), (...)) AS alias (names)
TableSourcePtr Parser::ParseValuesSource() {
  auto source = std::make_unique<TableSource>();
  source->line = Current().line;
  source->kind = TableSource::Kind::Values;
  ExpectSymbol("(");
  ExpectWord("values");
  source->rows = ParseRows();
  ExpectSymbol(")");
  ParseTableAlias(*source);
  if (source->alias.empty()) SyntaxError();
  if (IsSymbol("(")) source->columnAliases = ParseNameList();
  RefuseAfterSource();
  return source;
}

std::vector<std::vector<ExprPtr>> Parser::ParseRows() {
  std::vector<std::vector<ExprPtr>> rows;
  do {
    ExpectSymbol("(");
    std::vector<ExprPtr> row;
    do {
      if (IsWord("default")) {
        row.push_back(MakeExpr(ExprKind::Default));
        ++at_;
      } else {
        row.push_back(ParseExpression());
      }
    } while (TakeSymbol(","));
    ExpectSymbol(")");
    rows.push_back(std::move(row));
  } while (TakeSymbol(","));
  return rows;
}

TableSourcePtr Parser::ParseParenthesizedSource() {
  ExpectSymbol("(");
  if (IsWord("insert") || IsWord("update") || IsWord("delete") || IsWord("merge"))
    RefuseHere("A changing statement in FROM");
  TableSourcePtr inner = ParseFrom();
  ExpectSymbol(")");
  return inner;
}

void Parser::RefuseAfterSource() const {
  if (IsWord("tablesample")) RefuseHere("TABLESAMPLE");
  if (AreWordsAt(0, "FOR SYSTEM_TIME")) RefuseHere("FOR SYSTEM_TIME");
}

void Parser::ParseTableAlias(TableSource& source) {
  if (TakeWord("as") || IsName()) source.alias = TakeName();
}

void Parser::ParseTableHints(TableSource& source) {
  const bool withHints = IsWord("with") && IsSymbolAt(1, "(");
  if (!withHints && !IsSymbol("(")) return;
  const size_t first = withHints ? 2 : 1;
  const std::string& word = Next(first).text;
  if (!withHints && !IsTableHint(word) && !IsRefused(RefusedKind::TableHint, word)) return;
  at_ += first;
  do {
    ParseTableHint(source);
    TakeSymbol(",");
  } while (!TakeSymbol(")"));
}

void Parser::ParseTableHint(TableSource& source) {
  const Token& token = Current();
  if (token.kind != TokenKind::Word) SyntaxError();
  RefuseIfListed(RefusedKind::TableHint, token.text, token.line);
  if (!IsTableHint(token.text)) Fail(321, {token.text}, token.line);
  source.updateLock = source.updateLock || IsWord("updlock") || IsWord("xlock") || IsWord("tablockx");
  const bool isIndex = IsWord("index");
  const bool mayHaveList = isIndex || IsWord("forceseek");
  ++at_;
  // INDEX (a, b), INDEX = a, FORCESEEK (a (b)): which index to use does not matter here.
  if (mayHaveList && IsSymbol("(")) {
    at_ += AfterParenthesis(0);
  } else if (isIndex) {
    ExpectSymbol("=");
    if (IsSymbol("(")) {
      at_ += AfterParenthesis(0);
    } else if (Current().kind == TokenKind::Integer) {
      ++at_;
    } else {
      TakeName();
    }
  }
}

// The table that a statement reads or changes.
ObjectName Parser::ParseTarget() {
  if (Current().kind == TokenKind::Variable) {
    ObjectName name;
    name.name = TakeVariable();
    name.variable = true;
    return name;
  }
  if (Current().kind == TokenKind::Word && IsRowsetFunction(Current().text))
    RefuseHere("A function in place of a table");
  if (IsSymbol("::")) RefuseHere("A function in place of a table");
  if (IsSymbol("{")) RefuseHere("An ODBC escape sequence other than of a date or time");
  return ParseObjectName();
}

// What a statement reads, changes or calls. In a module it is looked for in the module's schema first.
ObjectName Parser::ParseObjectName() {
  ObjectName name = ParseDefinedName();
  if (name.schema.empty() && name.database.empty()) name.home = home_;
  return name;
}

// What a statement defines, which is dbo's where no schema is written, in a module too.
ObjectName Parser::ParseDefinedName() {
  ObjectName name;
  const int line = Current().line;
  std::vector<std::string> parts;
  parts.push_back(TakeName());
  while (TakeSymbol(".")) parts.push_back(IsSymbol(".") ? std::string() : TakeName());
  name.name = parts.back();
  if (parts.size() > 1) name.schema = parts[parts.size() - 2];
  if (parts.size() < 3) return name;
  const bool isTempdb = EqualNames(parts[0], "tempdb") && name.name[0] == '#';
  const bool isHere = parts.size() == 3 && (isTempdb || IsOwnDatabase(parts[0]));
  if (!isHere) Refuse("A name with the part of another database", line);
  if (!isTempdb) name.database = parts[0];
  return name;
}

// The name of the module that is parsed.
ObjectName Parser::ParseModuleName(const char* kind) {
  const int line = Current().line;
  ObjectName name = ParseDefinedName();
  if (!name.database.empty()) Fail(166, {std::string("CREATE/ALTER ") + kind}, line);
  if (schema_) name.name = moduleName_;
  if (schema_) name.schema = schema_->empty() && !name.schema.empty() ? "dbo" : *schema_;
  home_ = EqualNames(name.schema, "dbo") ? std::string() : name.schema;
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
