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
  if (IsWord("insert")) {
    StatementPtr statement = ParseInsert();
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

StatementPtr Parser::ParseInsert() {
  auto statement = MakeStatement<InsertStatement>(at_);
  ExpectWord("insert");
  if (IsWord("top")) RefuseHere("INSERT TOP");
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
  if (IsWord("output")) RefuseHere("The OUTPUT clause");
  if (IsWord("exec") || IsWord("execute")) RefuseHere("INSERT ... EXEC");
  if (TakeWord("default")) {
    ExpectWord("values");
    statement->defaultValues = true;
    return statement;
  }
  if (!TakeWord("values")) {
    if (!StartsQuery() && !IsWord("with")) SyntaxError();
    statement->query = ParseQuery();
    return statement;
  }
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
    statement->rows.push_back(std::move(row));
  } while (TakeSymbol(","));
  RefuseAfterQuery();
  return statement;
}

ExprPtr Parser::CompoundValue(ExprPtr target) {
  struct Entry {
    const char* symbol;
    ArithmeticOp op;
  };
  constexpr Entry kOps[] = {{"+=", ArithmeticOp::Add},      {"-=", ArithmeticOp::Subtract},
                            {"*=", ArithmeticOp::Multiply}, {"/=", ArithmeticOp::Divide},
                            {"%=", ArithmeticOp::Modulo},   {"&=", ArithmeticOp::BitAnd},
                            {"|=", ArithmeticOp::BitOr},    {"^=", ArithmeticOp::BitXor}};
  for (const Entry& entry : kOps) {
    if (!IsSymbol(entry.symbol)) continue;
    ExprPtr node = MakeExpr(ExprKind::Arithmetic);
    ++at_;
    node->arithmetic = entry.op;
    node->args.push_back(std::move(target));
    node->args.push_back(ParseExpression());
    return node;
  }
  ExpectSymbol("=");
  return ParseExpression();
}

Assignment Parser::ParseAssignment() {
  Assignment assignment;
  if (Current().kind == TokenKind::Variable) RefuseHere("Assigning a variable in UPDATE");
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
  assignment.value = CompoundValue(std::move(column));
  return assignment;
}

StatementPtr Parser::ParseUpdate() {
  auto statement = MakeStatement<UpdateStatement>(at_);
  ExpectWord("update");
  if (IsWord("top")) statement->top = ParseTop();
  statement->target = ParseTarget();
  TableSource hints;
  ParseTableHints(hints);
  ExpectWord("set");
  do statement->assignments.push_back(ParseAssignment());
  while (TakeSymbol(","));
  if (IsWord("output")) RefuseHere("The OUTPUT clause");
  if (TakeWord("from")) statement->from = ParseFrom();
  statement->where = ParseChangeCondition();
  return statement;
}

ExprPtr Parser::ParseChangeCondition() {
  ExprPtr condition;
  if (TakeWord("where")) {
    if (AreWordsAt(0, "CURRENT OF")) RefuseHere("WHERE CURRENT OF");
    condition = ParseCondition();
  }
  RefuseAfterQuery();
  return condition;
}

StatementPtr Parser::ParseDelete() {
  auto statement = MakeStatement<DeleteStatement>(at_);
  ExpectWord("delete");
  if (IsWord("top")) statement->top = ParseTop();
  TakeWord("from");
  statement->target = ParseTarget();
  TableSource hints;
  ParseTableHints(hints);
  if (IsWord("output")) RefuseHere("The OUTPUT clause");
  if (TakeWord("from")) statement->from = ParseFrom();
  statement->where = ParseChangeCondition();
  return statement;
}

} // namespace tsql
