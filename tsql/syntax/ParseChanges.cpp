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
    if (insert.query) insert.query->commonTables = std::move(tables);
    return statement;
  }
  auto statement = MakeStatement<QueryStatement>(start);
  statement->query = ParseQuery();
  statement->query->commonTables = std::move(tables);
  return statement;
}

StatementPtr Parser::ParseInsert() {
  auto statement = MakeStatement<InsertStatement>(at_);
  ExpectWord("insert");
  if (IsWord("top")) FailUnsupported("INSERT TOP", Current().line);
  TakeWord("into");
  statement->table = ParseObjectName();
  TableSource hints;
  ParseTableHints(hints);
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
  if (IsWord("output")) FailUnsupported("The OUTPUT clause", Current().line);
  if (IsWord("exec") || IsWord("execute")) FailUnsupported("INSERT ... EXEC", Current().line);
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
                            {"|=", ArithmeticOp::BitOr}};
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
  if (Current().kind == TokenKind::Variable)
    FailUnsupported("Assigning a variable in UPDATE", Current().line);
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
  statement->target = ParseObjectName();
  TableSource hints;
  ParseTableHints(hints);
  ExpectWord("set");
  do statement->assignments.push_back(ParseAssignment());
  while (TakeSymbol(","));
  if (IsWord("output")) FailUnsupported("The OUTPUT clause", Current().line);
  if (TakeWord("from")) statement->from = ParseFrom();
  if (TakeWord("where")) statement->where = ParseCondition();
  return statement;
}

StatementPtr Parser::ParseDelete() {
  auto statement = MakeStatement<DeleteStatement>(at_);
  ExpectWord("delete");
  if (IsWord("top")) statement->top = ParseTop();
  TakeWord("from");
  statement->target = ParseObjectName();
  TableSource hints;
  ParseTableHints(hints);
  if (IsWord("output")) FailUnsupported("The OUTPUT clause", Current().line);
  if (TakeWord("from")) statement->from = ParseFrom();
  if (TakeWord("where")) statement->where = ParseCondition();
  return statement;
}

} // namespace tsql
