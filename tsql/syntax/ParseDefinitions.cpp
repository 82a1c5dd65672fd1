#include "tsql/syntax/ParserRules.h"

#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

#include <charconv>

namespace tsql {

StatementPtr Parser::ParseCreate() {
  const size_t start = at_;
  ExpectWord("create");
  if (TakeWord("table")) return ParseCreateTable(start);
  if (TakeWord("view")) return ParseCreateView(start, false);
  if (TakeWord("procedure") || TakeWord("proc")) return ParseCreateProcedure(start, false);
  if (IsWord("unique") || IsWord("clustered") || IsWord("nonclustered") || IsWord("index"))
    return ParseCreateIndex(start);
  if (IsWord("function") || IsWord("trigger") || IsWord("database") || IsWord("type") || IsWord("schema"))
    FailUnsupported("CREATE " + ToUpper(Current().text), Current().line);
  SyntaxError();
}

void Parser::SkipStorageOptions() {
  // Where and how the server stores the object does not matter here.
  if (IsWord("with") && IsSymbolAt(1, "(")) {
    while (!TakeSymbol(")")) {
      if (IsAtEnd()) SyntaxError();
      ++at_;
    }
  }
  if (TakeWord("on")) {
    if (Current().kind != TokenKind::QuotedName && !IsWord("primary")) SyntaxError();
    ++at_;
  }
  if (IsWord("textimage_on")) at_ += 2;
}

StatementPtr Parser::ParseCreateTable(size_t start) {
  auto statement = MakeStatement<CreateTableStatement>(start);
  statement->table = ParseObjectName();
  ExpectSymbol("(");
  do {
    if (IsSymbol(")") && !statement->columns.empty()) break; // a trailing comma is allowed
    ParseTableElement(statement->columns, statement->constraints);
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  SkipStorageOptions();
  return statement;
}

void Parser::ParseTableElement(std::vector<ColumnDefinition>& columns,
                               std::vector<ConstraintDefinition>& constraints) {
  std::string name;
  if (TakeWord("constraint")) name = TakeName();
  const bool isConstraint =
      !name.empty() || IsWord("primary") || IsWord("unique") || IsWord("check") || IsWord("foreign");
  if (isConstraint) {
    constraints.push_back(ParseConstraint(std::move(name)));
  } else {
    columns.push_back(ParseColumn(constraints));
  }
}

ColumnDefinition Parser::ParseColumn(std::vector<ConstraintDefinition>& constraints) {
  ColumnDefinition column;
  column.line = Current().line;
  column.name = TakeName();
  if (IsWord("as")) FailUnsupported("A computed column", Current().line);
  // A sysname is not null unless it is said to be.
  if (IsWord("sysname")) column.nullable = false;
  column.type = ParseType(1);
  while (ParseColumnProperty(column, constraints)) {
  }
  return column;
}

void Parser::ParseCollation() {
  ExpectWord("collate");
  const int line = Current().line;
  const std::string name = ToLower(TakeName());
  if (name != "database_default" && name.find("_ci_as") == std::string::npos)
    FailUnsupported("The collation " + name, line);
}

bool Parser::ParseColumnProperty(ColumnDefinition& column, std::vector<ConstraintDefinition>& constraints) {
  if (IsWord("collate")) {
    ParseCollation();
    return true;
  }
  if (TakeWord("null")) {
    column.nullable = true;
    return true;
  }
  if (IsWord("not") && IsWordAt(1, "null")) {
    at_ += 2;
    column.nullable = false;
    return true;
  }
  if (IsWord("identity")) {
    ParseIdentity(column);
    return true;
  }
  std::string name;
  if (TakeWord("constraint")) name = TakeName();
  if (IsWord("default")) {
    ParseDefaultClause(column);
    return true;
  }
  if (IsWord("primary") || IsWord("unique") || IsWord("check") || IsWord("foreign") || IsWord("references")) {
    ConstraintDefinition constraint = ParseConstraint(std::move(name));
    if (constraint.kind != ConstraintDefinition::Kind::Check && constraint.columns.empty())
      constraint.columns.push_back(column.name);
    constraints.push_back(std::move(constraint));
    return true;
  }
  if (!name.empty()) SyntaxError();
  return false;
}

void Parser::ParseIdentity(ColumnDefinition& column) {
  const int line = Current().line;
  ExpectWord("identity");
  column.identity = true;
  if (!TakeSymbol("(")) return;
  const auto takeInteger = [this] {
    const bool negative = TakeSymbol("-");
    if (Current().kind != TokenKind::Integer) SyntaxError();
    int64_t value = 0;
    const std::string& text = tokens_[at_++].text;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return negative ? -value : value;
  };
  column.seed = takeInteger();
  ExpectSymbol(",");
  if (takeInteger() != 1) FailUnsupported("An IDENTITY increment other than 1", line);
  ExpectSymbol(")");
}

void Parser::ParseDefaultClause(ColumnDefinition& column) {
  ExpectWord("default");
  const size_t first = at_;
  ParseExpression();
  column.defaultText = SourceFrom(first);
  if (TakeWord("with")) ExpectWord("values");
}

std::vector<std::string> Parser::ParseKeyColumns(std::vector<bool>* descending) {
  std::vector<std::string> columns;
  ExpectSymbol("(");
  do {
    columns.push_back(TakeName());
    const bool isDescending = TakeWord("desc");
    if (!isDescending) TakeWord("asc");
    if (descending != nullptr) descending->push_back(isDescending);
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  return columns;
}

ConstraintDefinition Parser::ParseConstraint(std::string name) {
  ConstraintDefinition constraint;
  constraint.name = std::move(name);
  if (TakeWord("check")) {
    constraint.kind = ConstraintDefinition::Kind::Check;
    const size_t first = at_;
    ExpectSymbol("(");
    ParseCondition();
    ExpectSymbol(")");
    constraint.checkText = SourceFrom(first);
    return constraint;
  }
  if (IsWord("foreign") || IsWord("references")) {
    constraint.kind = ConstraintDefinition::Kind::ForeignKey;
    if (TakeWord("foreign")) {
      ExpectWord("key");
      if (IsSymbol("(")) constraint.columns = ParseNameList();
    }
    ExpectWord("references");
    constraint.referenced = ParseObjectName();
    if (IsSymbol("(")) constraint.referencedColumns = ParseNameList();
    while (IsWord("on") && (IsWordAt(1, "delete") || IsWordAt(1, "update"))) {
      if (!IsWordAt(2, "no") || !IsWordAt(3, "action"))
        FailUnsupported("A referential action other than NO ACTION", Current().line);
      at_ += 4;
    }
    return constraint;
  }
  if (TakeWord("primary")) {
    ExpectWord("key");
  } else {
    ExpectWord("unique");
    constraint.kind = ConstraintDefinition::Kind::Unique;
  }
  if (!TakeWord("clustered")) TakeWord("nonclustered");
  if (IsSymbol("(")) constraint.columns = ParseKeyColumns(nullptr);
  SkipStorageOptions();
  return constraint;
}

StatementPtr Parser::ParseCreateIndex(size_t start) {
  auto statement = MakeStatement<CreateIndexStatement>(start);
  statement->unique = TakeWord("unique");
  if (!TakeWord("clustered")) TakeWord("nonclustered");
  ExpectWord("index");
  statement->name = TakeName();
  ExpectWord("on");
  statement->table = ParseObjectName();
  statement->columns = ParseKeyColumns(&statement->descending);
  if (IsWord("include") || IsWord("where")) FailUnsupported("INCLUDE or WHERE of an index", Current().line);
  SkipStorageOptions();
  return statement;
}

StatementPtr Parser::ParseCreateView(size_t start, bool alter) {
  auto statement = MakeStatement<CreateViewStatement>(start);
  statement->alter = alter;
  if (start != 0) SyntaxErrorAt(start + 1);
  statement->name = ParseObjectName();
  if (IsSymbol("(")) statement->columns = ParseNameList();
  ExpectWord("as");
  statement->query = ParseQuery();
  TakeSymbol(";");
  if (!IsAtEnd()) SyntaxError();
  statement->text = std::string(text_);
  return statement;
}

ProcedureParameter Parser::ParseProcedureParameter() {
  ProcedureParameter parameter;
  parameter.name = TakeVariable();
  TakeWord("as");
  parameter.type = ParseType(1);
  if (TakeSymbol("=")) parameter.defaultValue = ParseExpression();
  parameter.output = TakeWord("output") || TakeWord("out");
  return parameter;
}

StatementPtr Parser::ParseCreateProcedure(size_t start, bool alter) {
  auto statement = MakeStatement<CreateProcedureStatement>(start);
  statement->alter = alter;
  if (start != 0) SyntaxErrorAt(start + 1);
  statement->name = ParseObjectName();
  const bool parenthesized = TakeSymbol("(");
  if (Current().kind == TokenKind::Variable) {
    do statement->parameters.push_back(ParseProcedureParameter());
    while (TakeSymbol(","));
  }
  if (parenthesized) ExpectSymbol(")");
  if (TakeWord("with")) {
    if (!TakeWord("recompile") && !TakeWord("encryption")) SyntaxError();
  }
  ExpectWord("as");
  inProcedure_ = true;
  while (true) {
    while (TakeSymbol(";")) {
    }
    if (IsAtEnd()) break;
    statement->body.push_back(ParseStatement());
  }
  inProcedure_ = false;
  statement->text = std::string(text_);
  return statement;
}

StatementPtr Parser::ParseAlter() {
  const size_t start = at_;
  ExpectWord("alter");
  if (TakeWord("view")) return ParseCreateView(start, true);
  if (TakeWord("procedure") || TakeWord("proc")) return ParseCreateProcedure(start, true);
  if (!IsWord("table")) FailUnsupported("ALTER " + ToUpper(Current().text), Current().line);
  ExpectWord("table");
  auto statement = MakeStatement<AlterTableStatement>(start);
  statement->table = ParseObjectName();
  if (IsWord("with") && (IsWordAt(1, "check") || IsWordAt(1, "nocheck"))) {
    statement->checksRows = IsWordAt(1, "check");
    at_ += 2;
  }
  if (IsWord("alter") || IsWord("drop") || IsWord("check") || IsWord("nocheck"))
    FailUnsupported("ALTER TABLE " + ToUpper(Current().text), Current().line);
  ExpectWord("add");
  do ParseTableElement(statement->columns, statement->constraints);
  while (TakeSymbol(","));
  return statement;
}

StatementPtr Parser::ParseDrop() {
  auto statement = MakeStatement<DropStatement>(at_);
  ExpectWord("drop");
  if (TakeWord("table")) {
    statement->object = ObjectKind::Table;
  } else if (TakeWord("view")) {
    statement->object = ObjectKind::View;
  } else if (TakeWord("procedure") || TakeWord("proc")) {
    statement->object = ObjectKind::Procedure;
  } else if (TakeWord("index")) {
    statement->object = ObjectKind::Index;
  } else {
    FailUnsupported("DROP " + ToUpper(Current().text), Current().line);
  }
  if (TakeWord("if")) {
    ExpectWord("exists");
    statement->ifExists = true;
  }
  do {
    ObjectName name = ParseObjectName();
    if (statement->object == ObjectKind::Index && TakeWord("on")) name.schema = ParseObjectName().name;
    statement->names.push_back(std::move(name));
  } while (TakeSymbol(","));
  return statement;
}

StatementPtr Parser::ParseTruncate() {
  auto statement = MakeStatement<TruncateStatement>(at_);
  ExpectWord("truncate");
  ExpectWord("table");
  statement->table = ParseObjectName();
  return statement;
}

} // namespace tsql
