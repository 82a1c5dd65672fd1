#include "tsql/syntax/ParserRules.h"

#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

#include <array>

namespace tsql {

StatementPtr Parser::ParseStatement() {
  const Level level(*this);
  sources_ = 0;
  StatementPtr statement = ParseUnterminated();
  TakeSymbol(";");
  return statement;
}

StatementPtr Parser::ParseUnterminated() {
  using Rule = StatementPtr (Parser::*)();
  struct Entry {
    std::string_view word;
    Rule rule;
  };
  constexpr std::array<Entry, 25> kRules = {{{"select", &Parser::ParseQueryStatement},
                                             {"with", &Parser::ParseWith},
                                             {"insert", &Parser::ParseInsert},
                                             {"update", &Parser::ParseUpdate},
                                             {"delete", &Parser::ParseDelete},
                                             {"declare", &Parser::ParseDeclare},
                                             {"set", &Parser::ParseSet},
                                             {"if", &Parser::ParseIf},
                                             {"while", &Parser::ParseWhile},
                                             {"begin", &Parser::ParseBegin},
                                             {"break", &Parser::ParseControl},
                                             {"continue", &Parser::ParseControl},
                                             {"return", &Parser::ParseReturn},
                                             {"print", &Parser::ParsePrint},
                                             {"commit", &Parser::ParseTransaction},
                                             {"rollback", &Parser::ParseTransaction},
                                             {"save", &Parser::ParseTransaction},
                                             {"raiserror", &Parser::ParseRaiserror},
                                             {"throw", &Parser::ParseThrow},
                                             {"exec", &Parser::ParseExecute},
                                             {"execute", &Parser::ParseExecute},
                                             {"create", &Parser::ParseCreate},
                                             {"alter", &Parser::ParseAlter},
                                             {"drop", &Parser::ParseDrop},
                                             {"truncate", &Parser::ParseTruncate}}};
  constexpr std::array<std::string_view, 14> kUnsupported = {
      "merge",      "waitfor", "goto",   "use",  "open",   "fetch", "close",
      "deallocate", "grant",   "revoke", "deny", "backup", "dbcc",  "kill"};
  if (IsSymbol("(") && StartsQuery()) return ParseQueryStatement();
  if (Current().kind == TokenKind::Word) {
    for (const Entry& entry : kRules)
      if (IsWord(entry.word)) return (this->*entry.rule)();
    for (const std::string_view word : kUnsupported)
      if (IsWord(word)) FailUnsupported(ToUpper(word), Current().line);
  }
  // The first statement of a batch may be a procedure's name alone.
  if (at_ == 0 && IsName() && !IsSymbolAt(1, "=")) return ParseExecute();
  SyntaxError();
}

StatementPtr Parser::ParseControl() {
  const bool isBreak = IsWord("break");
  if (loops_ == 0) Fail(isBreak ? 135 : 136, {}, Current().line);
  auto statement =
      std::make_unique<SimpleStatement>(isBreak ? StatementKind::Break : StatementKind::Continue);
  statement->line = Current().line;
  ++at_;
  return statement;
}

StatementPtr Parser::ParseQueryStatement() {
  auto statement = MakeStatement<QueryStatement>(at_);
  statement->query = ParseQuery();
  return statement;
}

StatementPtr Parser::ParseDeclare() {
  auto statement = MakeStatement<DeclareStatement>(at_);
  ExpectWord("declare");
  if (IsName() && IsWordAt(1, "cursor")) FailUnsupported("A cursor", Current().line);
  do {
    VariableDeclaration variable;
    variable.name = TakeVariable();
    TakeWord("as");
    if (IsWord("table")) FailUnsupported("A table variable", Current().line);
    if (IsWord("cursor")) FailUnsupported("A cursor", Current().line);
    const int line = Current().line;
    variable.type = ParseType(1);
    if (IsLob(variable.type.id)) Fail(2739, {}, line);
    if (TakeSymbol("=")) variable.initial = ParseExpression();
    statement->variables.push_back(std::move(variable));
  } while (TakeSymbol(","));
  return statement;
}

StatementPtr Parser::ParseSet() {
  if (Next().kind != TokenKind::Variable) return ParseSetOption();
  auto statement = MakeStatement<SetVariableStatement>(at_);
  ExpectWord("set");
  ExprPtr target = MakeExpr(ExprKind::Variable);
  target->text = TakeVariable();
  statement->name = target->text;
  statement->value = CompoundValue(std::move(target));
  return statement;
}

StatementPtr Parser::ParseSetOption() {
  // The engine behaves as with this setting of an option and refuses the other one.
  struct FixedOption {
    std::string_view name;
    std::string_view value;
  };
  constexpr std::array<FixedOption, 8> kFixed = {{{"ansi_nulls", "ON"},
                                                  {"quoted_identifier", "ON"},
                                                  {"ansi_padding", "ON"},
                                                  {"ansi_warnings", "ON"},
                                                  {"ansi_null_dflt_on", "ON"},
                                                  {"concat_null_yields_null", "ON"},
                                                  {"arithabort", "ON"},
                                                  {"numeric_roundabort", "OFF"}}};
  auto statement = MakeStatement<SetOptionStatement>(at_);
  const int line = Current().line;
  ExpectWord("set");
  if (TakeWord("transaction")) {
    if (!TakeWord("isolation") || !TakeWord("level")) SyntaxError();
    statement->option = "isolation";
    if (TakeWord("read")) {
      if (!TakeWord("committed") && !TakeWord("uncommitted")) SyntaxError();
    } else {
      FailUnsupported("An isolation level other than READ COMMITTED", line);
    }
    return statement;
  }
  if (Current().kind != TokenKind::Word) SyntaxError();
  statement->option = ToLower(tokens_[at_++].text);
  if (statement->option == "identity_insert") statement->table = ParseObjectName();
  const bool isSwitch = IsWord("on") || IsWord("off");
  if (statement->option == "lock_timeout") {
    if (TakeSymbol("-")) statement->value = "-";
    if (Current().kind != TokenKind::Integer) SyntaxError();
  } else if (!isSwitch) {
    FailUnsupported("SET " + ToUpper(statement->option), line);
  }
  statement->value += ToUpper(tokens_[at_++].text);
  bool known = statement->option == "nocount" || statement->option == "xact_abort" ||
               statement->option == "identity_insert" || statement->option == "lock_timeout";
  for (const FixedOption& option : kFixed) {
    if (option.name != statement->option) continue;
    known = true;
    if (option.value != statement->value)
      FailUnsupported("SET " + ToUpper(statement->option) + " " + statement->value, line);
  }
  if (!known) FailUnsupported("SET " + ToUpper(statement->option), line);
  return statement;
}

StatementPtr Parser::ParseIf() {
  auto statement = MakeStatement<IfStatement>(at_);
  ExpectWord("if");
  statement->condition = ParseCondition();
  statement->thenBranch = ParseStatement();
  if (TakeWord("else")) statement->elseBranch = ParseStatement();
  return statement;
}

StatementPtr Parser::ParseWhile() {
  auto statement = MakeStatement<WhileStatement>(at_);
  ExpectWord("while");
  statement->condition = ParseCondition();
  ++loops_;
  statement->body = ParseStatement();
  --loops_;
  return statement;
}

StatementList Parser::ParseStatementsUntilEnd() {
  StatementList statements;
  while (true) {
    while (TakeSymbol(";")) {
    }
    if (IsWord("end")) break;
    if (IsAtEnd()) SyntaxError();
    statements.push_back(ParseStatement());
  }
  return statements;
}

StatementPtr Parser::ParseBegin() {
  if (IsWordAt(1, "tran") || IsWordAt(1, "transaction")) return ParseTransaction();
  if (IsWordAt(1, "try")) return ParseTryCatch();
  auto statement = MakeStatement<BlockStatement>(at_);
  ExpectWord("begin");
  statement->statements = ParseStatementsUntilEnd();
  if (statement->statements.empty()) SyntaxError();
  ExpectWord("end");
  return statement;
}

StatementPtr Parser::ParseTryCatch() {
  auto statement = MakeStatement<TryCatchStatement>(at_);
  ExpectWord("begin");
  ExpectWord("try");
  statement->tryBody = ParseStatementsUntilEnd();
  ExpectWord("end");
  ExpectWord("try");
  TakeSymbol(";");
  ExpectWord("begin");
  ExpectWord("catch");
  statement->catchBody = ParseStatementsUntilEnd();
  ExpectWord("end");
  ExpectWord("catch");
  return statement;
}

StatementPtr Parser::ParseTransaction() {
  auto statement = MakeStatement<TransactionStatement>(at_);
  if (IsWord("save")) FailUnsupported("SAVE TRANSACTION", Current().line);
  statement->action = IsWord("begin")    ? TransactionAction::Begin
                      : IsWord("commit") ? TransactionAction::Commit
                                         : TransactionAction::Rollback;
  ++at_;
  const bool full = TakeWord("tran") || TakeWord("transaction");
  if (!full) TakeWord("work");
  if (full && (IsName() || Current().kind == TokenKind::Variable)) ++at_;
  return statement;
}

StatementPtr Parser::ParseReturn() {
  auto statement = MakeStatement<ReturnStatement>(at_);
  ExpectWord("return");
  const bool hasValue = Current().kind != TokenKind::End && !IsSymbol(";") &&
                        (Current().kind != TokenKind::Word || IsWord("case") || IsWord("cast") ||
                         IsWord("null") || (IsName() && IsSymbolAt(1, "(")));
  if (!hasValue) return statement;
  if (!inProcedure_) Fail(178, {}, Current().line);
  statement->value = ParseExpression();
  return statement;
}

StatementPtr Parser::ParsePrint() {
  auto statement = MakeStatement<PrintStatement>(at_);
  ExpectWord("print");
  statement->value = ParseExpression();
  return statement;
}

StatementPtr Parser::ParseRaiserror() {
  auto statement = MakeStatement<RaiserrorStatement>(at_);
  ExpectWord("raiserror");
  ExpectSymbol("(");
  do statement->arguments.push_back(ParseExpression());
  while (TakeSymbol(","));
  ExpectSymbol(")");
  if (statement->arguments.size() < 3) SyntaxError();
  if (IsWord("with")) {
    ++at_;
    if (!TakeWord("nowait")) FailUnsupported("RAISERROR WITH LOG or SETERROR", Current().line);
  }
  return statement;
}

StatementPtr Parser::ParseThrow() {
  auto statement = MakeStatement<ThrowStatement>(at_);
  ExpectWord("throw");
  const bool bare = IsAtEnd() || IsSymbol(";") || Current().kind == TokenKind::Word;
  if (bare) return statement;
  do statement->arguments.push_back(ParseExpression());
  while (TakeSymbol(","));
  if (statement->arguments.size() != 3) SyntaxError();
  return statement;
}

ExecuteArgument Parser::ParseExecuteArgument() {
  ExecuteArgument argument;
  if (Current().kind == TokenKind::Variable && IsSymbolAt(1, "=")) {
    argument.name = TakeVariable();
    ExpectSymbol("=");
  }
  if (TakeWord("default")) {
    argument.useDefault = true;
    return argument;
  }
  // A bare word is a text here: EXEC p abc.
  if (IsName() && !IsSymbolAt(1, "(")) {
    ExprPtr word = MakeExpr(ExprKind::Literal);
    word->literal = TokenKind::UnicodeText;
    word->text = TakeName();
    argument.value = std::move(word);
    return argument;
  }
  const std::string variable = Current().kind == TokenKind::Variable ? Current().text : std::string();
  argument.value = ParseExpression();
  if (TakeWord("output") || TakeWord("out")) {
    if (variable.empty()) SyntaxErrorAt(at_ - 1);
    argument.outputVariable = variable;
  }
  return argument;
}

StatementPtr Parser::ParseExecute() {
  auto statement = MakeStatement<ExecuteStatement>(at_);
  if (IsWord("exec") || IsWord("execute")) ++at_;
  if (TakeSymbol("(")) {
    statement->text = ParseExpression();
    ExpectSymbol(")");
    return statement;
  }
  if (Current().kind == TokenKind::Variable) {
    if (!IsSymbolAt(1, "=")) FailUnsupported("EXEC with the procedure's name in a variable", Current().line);
    statement->returnVariable = TakeVariable();
    ExpectSymbol("=");
  }
  statement->procedure = ParseObjectName();
  const bool hasArguments =
      !IsAtEnd() && !IsSymbol(";") &&
      (Current().kind != TokenKind::Word || IsName() || IsWord("default") || IsWord("null"));
  if (!hasArguments) return statement;
  bool named = false;
  do {
    const int line = Current().line;
    statement->arguments.push_back(ParseExecuteArgument());
    const bool isNamed = !statement->arguments.back().name.empty();
    if (named && !isNamed) Fail(119, {std::to_string(statement->arguments.size())}, line);
    named = isNamed;
  } while (TakeSymbol(","));
  return statement;
}

} // namespace tsql
