#include <algorithm>
#include <array>
#include <charconv>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

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
  constexpr std::array<Entry, 37> kRules = {{{"select", &Parser::ParseQueryStatement},
                                             {"with", &Parser::ParseWith},
                                             {"insert", &Parser::ParseInsert},
                                             {"update", &Parser::ParseUpdate},
                                             {"delete", &Parser::ParseDelete},
                                             {"merge", &Parser::ParseMerge},
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
                                             {"raiserror", &Parser::ParseRaiserror},
                                             {"throw", &Parser::ParseThrow},
                                             {"exec", &Parser::ParseExecute},
                                             {"execute", &Parser::ParseExecute},
                                             {"create", &Parser::ParseCreate},
                                             {"alter", &Parser::ParseAlter},
                                             {"drop", &Parser::ParseDrop},
                                             {"truncate", &Parser::ParseTruncate},
                                             {"save", &Parser::ParseTransaction},
                                             {"goto", &Parser::ParseGoto},
                                             {"waitfor", &Parser::ParseWaitFor},
                                             {"use", &Parser::ParseUse},
                                             {"grant", &Parser::ParsePermission},
                                             {"deny", &Parser::ParsePermission},
                                             {"revoke", &Parser::ParsePermission},
                                             {"checkpoint", &Parser::ParseCheckpoint},
                                             {"open", &Parser::ParseCursor},
                                             {"close", &Parser::ParseCursor},
                                             {"deallocate", &Parser::ParseCursor},
                                             {"fetch", &Parser::ParseFetch}}};
  if (IsSymbol("(") && StartsQuery()) return ParseQueryStatement();
  if (IsSymbol("{")) RefuseHere("An ODBC escape sequence other than of a date or time");
  if (Current().kind == TokenKind::Word) {
    if (AreWordsAt(0, "DBCC CHECKIDENT")) return ParseCheckIdentity();
    RefuseWords(RefusedKind::Statement);
    if (AreWordsAt(0, "UPDATE STATISTICS")) return ParseUpdateStatistics();
    if (AreWordsAt(0, "ENABLE TRIGGER") || AreWordsAt(0, "DISABLE TRIGGER")) return ParseSwitchTriggers();
    for (const Entry& entry : kRules)
      if (IsWord(entry.word)) return (this->*entry.rule)();
  }
  if (IsName() && IsSymbolAt(1, ":")) return ParseLabel();
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
  startsQueryStatement_ = true;
  statement->query = ParseQuery();
  return statement;
}

StatementPtr Parser::ParseDeclare() {
  const size_t start = at_;
  if (IsNameAt(1) && (IsWordAt(2, "cursor") || IsWordAt(2, "insensitive") || IsWordAt(2, "scroll"))) {
    ++at_;
    return ParseDeclareCursor(start, ParseCursorName());
  }
  auto statement = MakeStatement<DeclareStatement>(start);
  ExpectWord("declare");
  do {
    VariableDeclaration variable;
    variable.name = TakeVariable();
    const int line = Current().line;
    TakeWord("as");
    if (IsWord("table")) {
      statement->tables.push_back(ParseTableVariable(std::move(variable.name), line));
      continue;
    }
    if (TakeWord("cursor")) {
      statement->cursors.push_back(std::move(variable.name));
      continue;
    }
    variable.type = ParseType(1);
    if (IsLob(variable.type.id)) Fail(2739, {}, line);
    if (TakeSymbol("=")) variable.initial = ParseExpression();
    statement->variables.push_back(std::move(variable));
  } while (TakeSymbol(","));
  return statement;
}

// Its constraints have no names, and none is a foreign key.
TableVariable Parser::ParseTableVariable(std::string name, int line) {
  TableVariable table;
  table.name.name = std::move(name);
  table.name.variable = true;
  table.line = line;
  ExpectWord("table");
  ExpectSymbol("(");
  inTableVariable_ = true;
  do {
    if (IsSymbol(")") && !table.columns.empty()) break; // a trailing comma is allowed
    ParseTableElement(table.columns, table.constraints);
  } while (TakeSymbol(","));
  inTableVariable_ = false;
  ExpectSymbol(")");
  return table;
}

StatementPtr Parser::ParseSet() {
  if (Next().kind != TokenKind::Variable) return ParseSetOption();
  const size_t start = at_;
  if (IsSymbolAt(2, "=") && IsWordAt(3, "cursor")) {
    ++at_;
    CursorName cursor;
    cursor.name = TakeVariable();
    ExpectSymbol("=");
    return ParseDeclareCursor(start, std::move(cursor));
  }
  auto statement = MakeStatement<SetVariableStatement>(start);
  ExpectWord("set");
  ExprPtr target = MakeExpr(ExprKind::Variable);
  target->text = TakeVariable();
  if (IsSymbol(".")) RefuseHere("A method of a value");
  statement->name = target->text;
  statement->value = CompoundValue(std::move(target));
  return statement;
}

void Parser::ParseIsolationLevel(SetOptionStatement& statement) {
  ExpectWord("isolation");
  ExpectWord("level");
  if (IsWord("snapshot")) RefuseHere("The isolation level SNAPSHOT");
  const bool isRepeatable = TakeWord("repeatable");
  statement.value = isRepeatable || IsWord("serializable") ? "SERIALIZABLE" : "READ COMMITTED";
  if (!isRepeatable && TakeWord("serializable")) return;
  ExpectWord("read");
  if (!isRepeatable && !TakeWord("committed")) ExpectWord("uncommitted");
}

StatementPtr Parser::ParseSetOption() {
  auto statement = MakeStatement<SetOptionStatement>(at_);
  ExpectWord("set");
  if (TakeWord("transaction")) {
    statement->option = "isolation";
    ParseIsolationLevel(*statement);
    return statement;
  }
  if (Current().kind != TokenKind::Word) SyntaxError();
  if (IsSymbolAt(1, ",")) return ParseSwitches();
  const Token& name = tokens_[at_++];
  RefuseIfListed(RefusedKind::Option, name.text, name.line);
  statement->option = ToLower(name.text);
  ParseOptionValue(*statement, name);
  return statement;
}

// SET a, b ON: each is a statement of its own.
StatementPtr Parser::ParseSwitches() {
  auto block = MakeStatement<BlockStatement>(at_);
  std::vector<size_t> names;
  do {
    if (Current().kind != TokenKind::Word) SyntaxError();
    names.push_back(at_++);
  } while (TakeSymbol(","));
  const size_t end = at_;
  for (const size_t at : names) {
    const Token& name = tokens_[at];
    if (EqualNames(name.text, "identity_insert") || EqualNames(name.text, "statistics")) SyntaxErrorAt(at);
    RefuseIfListed(RefusedKind::Option, name.text, name.line);
    auto statement = MakeStatement<SetOptionStatement>(at);
    statement->option = ToLower(name.text);
    at_ = end;
    ParseOptionValue(*statement, name);
    block->statements.push_back(std::move(statement));
  }
  return block;
}

void Parser::ParseOptionValue(SetOptionStatement& statement, const Token& name) {
  // Most of the switches have one value here. The other is in the list of what is refused.
  constexpr std::array<std::string_view, 23> kSwitches = {"nocount",
                                                          "xact_abort",
                                                          "identity_insert",
                                                          "ansi_nulls",
                                                          "quoted_identifier",
                                                          "ansi_padding",
                                                          "ansi_warnings",
                                                          "ansi_null_dflt_on",
                                                          "ansi_null_dflt_off",
                                                          "concat_null_yields_null",
                                                          "arithabort",
                                                          "arithignore",
                                                          "numeric_roundabort",
                                                          "cursor_close_on_commit",
                                                          "fmtonly",
                                                          "forceplan",
                                                          "implicit_transactions",
                                                          "noexec",
                                                          "parseonly",
                                                          "remote_proc_transactions",
                                                          "showplan_all",
                                                          "showplan_text",
                                                          "showplan_xml"};
  const std::string& option = statement.option;
  if (ParseFixedOption(statement)) return;
  if (option == "deadlock_priority") {
    // Whoever waits too long for a lock gives up, so that nobody is chosen to.
    if (TakeWord("low") || TakeWord("normal") || TakeWord("high")) return;
    const bool isNegative = TakeSymbol("-");
    const bool isVariable = !isNegative && Current().kind == TokenKind::Variable;
    if (!isVariable && (Current().kind != TokenKind::Integer || std::stol(Current().text) > 10))
      SyntaxError();
    ++at_;
    return;
  }
  if (option == "lock_timeout") {
    if (TakeSymbol("-")) statement.value = "-";
    if (Current().kind != TokenKind::Integer) SyntaxError();
    statement.value += tokens_[at_++].text;
    return;
  }
  if (option == "rowcount" || option == "datefirst") {
    if (Current().kind != TokenKind::Integer && Current().kind != TokenKind::Variable) SyntaxError();
    statement.value = ToUpper(tokens_[at_++].text);
    return;
  }
  const bool isStatistics = option == "statistics";
  if (!isStatistics && std::find(kSwitches.begin(), kSwitches.end(), option) == kSwitches.end())
    throw Error(195, 15, 5, name.line, "'" + name.text + "' is not a recognized SET option.");
  if (option == "identity_insert") statement.table = ParseDefinedName();
  std::string what = option;
  if (isStatistics) {
    do {
      what = option + " " + Current().text;
      if (!TakeWord("io") && !TakeWord("time") && !TakeWord("profile")) ExpectWord("xml");
    } while (TakeSymbol(","));
  }
  if (!IsWord("on") && !IsWord("off")) SyntaxError();
  statement.value = ToUpper(tokens_[at_++].text);
  RefuseIfListed(RefusedKind::Option, what + " " + statement.value, name.line);
  // A module is read as the session has it that makes it.
  if (option == "quoted_identifier" && !inModule_) {
    quotedIdentifier_ = statement.value == "ON";
    SetQuotedIdentifier(*quotedIdentifier_);
  }
}

// An option whose value is no switch and that has one value here.
bool Parser::ParseFixedOption(SetOptionStatement& statement) {
  struct FixedOption {
    std::string_view name;
    std::array<std::string_view, 3> values;
    RefusedConstruct refusal;
  };
  constexpr FixedOption kOptions[] = {
      {"language", {"us_english", "english"}, "SET LANGUAGE of another one than us_english"},
      {"dateformat", {"mdy"}, "SET DATEFORMAT of another one than mdy"},
      {"textsize", {"-1", "2147483647"}, "SET TEXTSIZE that cuts texts"},
      {"query_governor_cost_limit", {"0"}, "SET QUERY_GOVERNOR_COST_LIMIT of another one than 0"}};
  const auto found = std::ranges::find(kOptions, statement.option, &FixedOption::name);
  if (found == std::end(kOptions)) return false;
  const int line = Current().line;
  if (TakeSymbol("-")) statement.value = "-";
  const TokenKind kind = Current().kind;
  if (kind == TokenKind::End || kind == TokenKind::Symbol) SyntaxError();
  statement.value += tokens_[at_++].text;
  const auto isValue = [&](std::string_view value) {
    return !value.empty() && EqualNames(value, statement.value);
  };
  if (std::ranges::none_of(found->values, isValue)) Refuse(found->refusal, line);
  return true;
}

StatementPtr Parser::ParseCheckIdentity() {
  auto statement = MakeStatement<CheckIdentityStatement>(at_);
  at_ += 2;
  ExpectSymbol("(");
  if (IsName()) {
    statement->table = ParseDefinedName();
  } else {
    statement->nameText = ParseExpression();
  }
  if (TakeSymbol(",")) {
    statement->reseeds = !TakeWord("noreseed");
    if (statement->reseeds) {
      ExpectWord("reseed");
      if (TakeSymbol(",")) statement->newSeed = ParseExpression();
    }
  }
  ExpectSymbol(")");
  if (TakeWord("with")) {
    ExpectWord("no_infomsgs");
    statement->isSilent = true;
  }
  return statement;
}

StatementPtr Parser::ParseUse() {
  auto statement = MakeStatement<UseStatement>(at_);
  ExpectWord("use");
  if (inModule_) Fail(154, {"a USE database statement"}, statement->line);
  statement->database = TakeName();
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
    if (IsWord("end") && !IsWordAt(1, "conversation")) break;
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
  tryBlocks_.push_back(++lastTryBlock_);
  statement->tryBody = ParseStatementsUntilEnd();
  tryBlocks_.back() = ++lastTryBlock_;
  ExpectWord("end");
  ExpectWord("try");
  TakeSymbol(";");
  ExpectWord("begin");
  ExpectWord("catch");
  ++catches_;
  statement->catchBody = ParseStatementsUntilEnd();
  --catches_;
  tryBlocks_.pop_back();
  ExpectWord("end");
  ExpectWord("catch");
  return statement;
}

StatementPtr Parser::ParseTransaction() {
  auto statement = MakeStatement<TransactionStatement>(at_);
  statement->action = IsWord("begin")    ? TransactionAction::Begin
                      : IsWord("commit") ? TransactionAction::Commit
                      : IsWord("save")   ? TransactionAction::Save
                                         : TransactionAction::Rollback;
  ++at_;
  const bool full = TakeWord("tran") || TakeWord("transaction");
  if (!full) TakeWord("work");
  if (full && Current().kind == TokenKind::Variable) {
    statement->nameValue = MakeExpr(ExprKind::Variable);
    statement->nameValue->text = TakeVariable();
  } else if (full && IsName() && !IsSymbolAt(1, ":")) {
    statement->name = TakeName();
  }
  const bool isNamed = statement->nameValue || !statement->name.empty();
  if (statement->action == TransactionAction::Save && !isNamed) SyntaxError();
  if (isNamed && statement->action == TransactionAction::Begin && AreWordsAt(0, "WITH MARK")) {
    // There is no log to be restored from.
    at_ += 2;
    if (Current().kind == TokenKind::Text || Current().kind == TokenKind::UnicodeText) ++at_;
  }
  if (statement->action == TransactionAction::Commit && IsWord("with")) ParseDurability();
  return statement;
}

// A commit is as durable as the database makes it.
void Parser::ParseDurability() {
  ExpectWord("with");
  ExpectSymbol("(");
  ExpectWord("delayed_durability");
  ExpectSymbol("=");
  if (!TakeWord("on")) ExpectWord("off");
  ExpectSymbol(")");
}

// ---- jumps

StatementPtr Parser::ParseLabel() {
  auto statement = MakeStatement<LabelStatement>(at_);
  const Place place{tryBlocks_, Current().line};
  statement->name = TakeName();
  ExpectSymbol(":");
  for (const auto& entry : labels_)
    if (EqualNames(entry.first->name, statement->name)) Fail(132, {statement->name}, place.line);
  labels_.emplace_back(statement.get(), place);
  return statement;
}

StatementPtr Parser::ParseGoto() {
  auto statement = MakeStatement<GotoStatement>(at_);
  const Place place{tryBlocks_, Current().line};
  ExpectWord("goto");
  statement->label = TakeName();
  gotos_.emplace_back(statement.get(), place);
  return statement;
}

void Parser::ResolveLabels() {
  for (const auto& [jump, from] : gotos_) {
    const std::string& label = jump->label;
    const auto found = std::ranges::find_if(
        labels_, [&](const auto& entry) { return EqualNames(entry.first->name, label); });
    if (found == labels_.end()) Fail(133, {label}, from.line);
    // One may jump out of a TRY or CATCH block, and not into one.
    const std::vector<int>& into = found->second.blocks;
    const bool isOutwards =
        into.size() <= from.blocks.size() && std::equal(into.begin(), into.end(), from.blocks.begin());
    if (!isOutwards) Fail(1026, {}, from.line);
    jump->target = found->first;
  }
  labels_.clear();
  gotos_.clear();
}

StatementPtr Parser::ParseWaitFor() {
  auto statement = MakeStatement<WaitForStatement>(at_);
  ExpectWord("waitfor");
  if (IsSymbol("(")) RefuseHere("WAITFOR of a statement");
  statement->untilTime = TakeWord("time");
  if (!statement->untilTime) ExpectWord("delay");
  const TokenKind kind = Current().kind;
  if (kind != TokenKind::Text && kind != TokenKind::UnicodeText && kind != TokenKind::Variable) SyntaxError();
  statement->time = ParseExpression();
  return statement;
}

StatementPtr Parser::ParseReturn() {
  auto statement = MakeStatement<ReturnStatement>(at_);
  ExpectWord("return");
  const bool hasValue = Current().kind != TokenKind::End && !IsSymbol(";") &&
                        (Current().kind != TokenKind::Word || IsWord("case") || IsWord("cast") ||
                         IsWord("null") || IsWord("convert") || IsWord("coalesce") || IsWord("nullif") ||
                         (IsName() && (IsSymbolAt(1, "(") || IsSymbolAt(1, "."))));
  const bool isScalar = function_ == FunctionKind::Scalar;
  if (!hasValue && !isScalar) return statement;
  if (!inProcedure_ && !isScalar) Fail(178, {}, Current().line);
  statement->value = ParseExpression();
  return statement;
}

StatementPtr Parser::ParsePrint() {
  auto statement = MakeStatement<PrintStatement>(at_);
  ExpectWord("print");
  statement->value = ParseExpression();
  RefuseColumns(*statement->value);
  return statement;
}

StatementPtr Parser::ParseRaiserror() {
  auto statement = MakeStatement<RaiserrorStatement>(at_);
  ExpectWord("raiserror");
  if (Current().kind == TokenKind::Integer) {
    const std::string& number = tokens_[at_].text;
    const auto parsed = std::from_chars(number.data(), number.data() + number.size(), statement->errorNumber);
    if (parsed.ec != std::errc() || statement->errorNumber == 0) SyntaxError();
    ++at_;
    statement->arguments.push_back(ParseExpression());
    return statement;
  }
  ExpectSymbol("(");
  do statement->arguments.push_back(ParseExpression());
  while (TakeSymbol(","));
  ExpectSymbol(")");
  if (statement->arguments.size() < 3) SyntaxError();
  if (TakeWord("with")) {
    do {
      if (TakeWord("log")) {
        statement->isLogged = true;
      } else if (TakeWord("seterror")) {
        statement->setsError = true;
      } else {
        ExpectWord("nowait");
      }
    } while (TakeSymbol(","));
  }
  return statement;
}

StatementPtr Parser::ParseThrow() {
  auto statement = MakeStatement<ThrowStatement>(at_);
  ExpectWord("throw");
  const bool bare = IsAtEnd() || IsSymbol(";") || Current().kind == TokenKind::Word;
  if (bare && catches_ == 0) Fail(10704, {}, statement->line);
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

void Parser::ParseExecuteOption() {
  if (AreWordsAt(0, "WITH RESULT")) RefuseHere("EXEC WITH RESULT SETS");
  if (AreWordsAt(0, "WITH RECOMPILE")) at_ += 2; // whatever has changed is compiled anew anyway
}

StatementPtr Parser::ParseExecute() {
  auto statement = MakeStatement<ExecuteStatement>(at_);
  if (IsWord("exec") || IsWord("execute")) ++at_;
  if (TakeSymbol("(")) {
    statement->text = ParseExpression();
    ExpectSymbol(")");
    if (IsWord("at") || IsWord("as")) RefuseHere("EXEC of a text AT a server or AS a user");
    ParseExecuteOption();
    return statement;
  }
  if (Current().kind == TokenKind::Variable && IsSymbolAt(1, "=")) {
    statement->returnVariable = TakeVariable();
    ExpectSymbol("=");
  }
  if (Current().kind == TokenKind::Variable) {
    statement->nameVariable = TakeVariable();
    statement->procedure.home = home_;
  } else {
    statement->procedure = ParseObjectName();
    statement->isDynamic = EqualNames(statement->procedure.name, kDynamicProcedure);
  }
  if (IsSymbol(";") && Next().kind == TokenKind::Integer) RefuseHere("A procedure with a number");
  ParseExecuteOption();
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
  ParseExecuteOption();
  return statement;
}

} // namespace tsql
