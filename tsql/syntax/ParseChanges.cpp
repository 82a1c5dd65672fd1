#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Errors.h"

namespace tsql {

StatementPtr Parser::ParseWith() {
  const size_t start = at_;
  std::vector<CommonTable> tables = ParseCommonTables();
  if (IsWord("update") || IsWord("delete")) {
    StatementPtr statement = IsWord("update") ? ParseUpdate() : ParseDelete();
    if (statement->kind == StatementKind::Update) {
      static_cast<UpdateStatement&>(*statement).commonTables = std::move(tables);
    } else {
      static_cast<DeleteStatement&>(*statement).commonTables = std::move(tables);
    }
    return statement;
  }
  if (IsWord("merge")) {
    StatementPtr statement = ParseMerge();
    static_cast<MergeStatement&>(*statement).commonTables = std::move(tables);
    return statement;
  }
  if (IsWord("insert")) {
    StatementPtr statement = ParseInsert();
    if (statement->kind == StatementKind::InsertExecute) SyntaxErrorAt(start);
    auto& insert = static_cast<InsertStatement&>(*statement);
    if (!insert.query) Refuse("A common table expression with INSERT ... VALUES", insert.line);
    insert.query->commonTables = std::move(tables);
    return statement;
  }
  RefuseWords(RefusedKind::Statement);
  auto statement = MakeStatement<QueryStatement>(start);
  startsQueryStatement_ = true;
  statement->query = ParseQuery();
  statement->query->commonTables = std::move(tables);
  return statement;
}

// Null where no OUTPUT stands.
OutputPtr Parser::ParseOutput() {
  if (!IsWord("output")) return nullptr;
  auto output = std::make_unique<OutputClause>();
  output->select.line = Current().line;
  TakeWord("output");
  do output->select.items.push_back(ParseSelectItem());
  while (TakeSymbol(","));
  if (TakeWord("into")) {
    output->into = ParseTarget();
    if (IsSymbol("(") && !StartsQuery()) output->columns = ParseNameList();
  }
  if (IsWord("output")) RefuseHere("A second OUTPUT clause");
  return output;
}

StatementPtr Parser::ParseInsert() {
  auto statement = MakeStatement<InsertStatement>(at_);
  ExpectWord("insert");
  bool isPercent = false;
  statement->top = ParseChangeTop(isPercent);
  if (isPercent) Refuse("INSERT TOP PERCENT", statement->line);
  TakeWord("into");
  statement->table = ParseTarget();
  TableSource hints;
  if (IsWord("with")) ParseTableHints(hints);
  if (IsSymbol("(") && !StartsQuery()) {
    TakeSymbol("(");
    do {
      // A column may be written with its table's name.
      std::string column = TakeName();
      while (TakeSymbol(".")) column = TakeName();
      statement->columns.push_back(std::move(column));
    } while (TakeSymbol(","));
    ExpectSymbol(")");
  }
  statement->output = ParseOutput();
  const bool isExecute = IsWord("exec") || IsWord("execute");
  if (statement->top && (isExecute || IsWord("default")))
    RefuseHere("INSERT TOP with EXEC or DEFAULT VALUES");
  if (isExecute) {
    if (statement->output) Fail(483, {}, Current().line);
    return ParseInsertExecute(std::move(statement));
  }
  if (TakeWord("default")) {
    ExpectWord("values");
    statement->defaultValues = true;
    return statement;
  }
  if (!TakeWord("values")) {
    if (!StartsQuery() && !IsWord("with")) SyntaxError();
    statement->query = ParseQuery();
    ParseQueryHints(statement->query->maxRecursion);
    return statement;
  }
  const size_t first = at_;
  statement->rows = ParseRows();
  constexpr size_t kMostRows = 1000;
  if (statement->rows.size() > kMostRows) Fail(10738, {}, tokens_[first].line);
  for (const std::vector<ExprPtr>& row : statement->rows)
    for (const ExprPtr& value : row) RefuseColumns(*value);
  RefuseAfterQuery();
  int maxRecursion = kMaxRecursion;
  ParseQueryHints(maxRecursion);
  return statement;
}

StatementPtr Parser::ParseInsertExecute(std::unique_ptr<InsertStatement> insert) {
  auto statement = std::make_unique<InsertExecuteStatement>();
  statement->line = insert->line;
  statement->number = insert->number;
  statement->table = std::move(insert->table);
  statement->columns = std::move(insert->columns);
  statement->execute.reset(static_cast<ExecuteStatement*>(ParseExecute().release()));
  return statement;
}

namespace {

// The operation of a compound assignment such as +=.
std::optional<ArithmeticOp> CompoundOperation(const Token& token) {
  struct Entry {
    std::string_view symbol;
    ArithmeticOp op;
  };
  constexpr Entry kOps[] = {{"+=", ArithmeticOp::Add},      {"-=", ArithmeticOp::Subtract},
                            {"*=", ArithmeticOp::Multiply}, {"/=", ArithmeticOp::Divide},
                            {"%=", ArithmeticOp::Modulo},   {"&=", ArithmeticOp::BitAnd},
                            {"|=", ArithmeticOp::BitOr},    {"^=", ArithmeticOp::BitXor}};
  if (token.kind != TokenKind::Symbol) return std::nullopt;
  for (const Entry& entry : kOps)
    if (token.text == entry.symbol) return entry.op;
  return std::nullopt;
}

} // namespace

bool Parser::IsAssignmentAt(size_t ahead) const {
  return IsSymbolAt(ahead, "=") || CompoundOperation(Next(ahead));
}

ExprPtr Parser::CompoundValue(ExprPtr target) {
  if (const std::optional<ArithmeticOp> op = CompoundOperation(Current())) {
    ExprPtr node = MakeExpr(ExprKind::Arithmetic);
    ++at_;
    node->arithmetic = *op;
    node->args.push_back(std::move(target));
    node->args.push_back(ParseExpression());
    return node;
  }
  ExpectSymbol("=");
  return ParseExpression();
}

// Whether a column's name and the symbol of an assignment are there: SET @v = column = value.
bool Parser::StartsColumnAssignment(size_t ahead) const {
  while (IsNameAt(ahead) && IsSymbolAt(ahead + 1, ".")) ahead += 2;
  return IsNameAt(ahead) && IsAssignmentAt(ahead + 1);
}

Assignment Parser::ParseAssignment() {
  Assignment assignment;
  if (Current().kind == TokenKind::Variable) {
    ExprPtr variable = MakeExpr(ExprKind::Variable);
    assignment.variable = variable->text = TakeVariable();
    if (!IsSymbol("=") || !StartsColumnAssignment(1)) {
      assignment.value = CompoundValue(std::move(variable));
      return assignment;
    }
    TakeSymbol("=");
  }
  size_t last = 0;
  while (IsNameAt(last) && IsSymbolAt(last + 1, ".")) last += 2;
  if (last > 0 && IsNameAt(last) && IsSymbolAt(last + 1, "(")) RefuseHere("A method in the SET of an UPDATE");
  ExprPtr column = ParseColumn();
  assignment.column = column->parts;
  if (IsSymbol("=") && IsWordAt(1, "default")) {
    at_ += 1;
    assignment.value = MakeExpr(ExprKind::Default);
    ++at_;
    return assignment;
  }
  assignment.isCompound = !IsSymbol("=");
  assignment.value = CompoundValue(std::move(column));
  return assignment;
}

std::vector<Assignment> Parser::ParseAssignments() {
  std::vector<Assignment> assignments;
  do assignments.push_back(ParseAssignment());
  while (TakeSymbol(","));
  return assignments;
}

StatementPtr Parser::ParseUpdate() {
  auto statement = MakeStatement<UpdateStatement>(at_);
  ExpectWord("update");
  statement->top = ParseChangeTop(statement->topPercent);
  statement->target = ParseTarget();
  TableSource hints;
  ParseTableHints(hints);
  ExpectWord("set");
  statement->assignments = ParseAssignments();
  statement->output = ParseOutput();
  if (TakeWord("from")) statement->from = ParseFrom();
  statement->where = ParseChangeCondition(statement->currentOf, statement->maxRecursion);
  return statement;
}

ExprPtr Parser::ParseChangeCondition(CursorName& currentOf, int& maxRecursion) {
  ExprPtr condition;
  if (TakeWord("where")) {
    if (AreWordsAt(0, "CURRENT OF")) {
      at_ += 2;
      currentOf = ParseCursorName();
    } else {
      condition = ParseCondition();
    }
  }
  RefuseAfterQuery();
  ParseQueryHints(maxRecursion);
  return condition;
}

StatementPtr Parser::ParseDelete() {
  auto statement = MakeStatement<DeleteStatement>(at_);
  ExpectWord("delete");
  statement->top = ParseChangeTop(statement->topPercent);
  TakeWord("from");
  statement->target = ParseTarget();
  TableSource hints;
  ParseTableHints(hints);
  statement->output = ParseOutput();
  if (TakeWord("from")) statement->from = ParseFrom();
  statement->where = ParseChangeCondition(statement->currentOf, statement->maxRecursion);
  return statement;
}

} // namespace tsql
