// Statements for whoever looks after a server, of which the engine needs no more than that they are right.
#include <algorithm>

#include "tsql/syntax/ParserRules.h"
#include "tsql/syntax/Refusals.h"

namespace tsql {

void Parser::ParsePermissionName(AdministrationStatement& statement) {
  constexpr std::string_view kPermissions[] = {"ALTER",  "CONTROL",        "DELETE",         "EXECUTE",
                                               "EXEC",   "INSERT",         "SELECT",         "REFERENCES",
                                               "UPDATE", "TAKE OWNERSHIP", "VIEW DEFINITION"};
  if (TakeWord("all")) {
    TakeWord("privileges");
    return;
  }
  const auto* const found = std::ranges::find_if(
      kPermissions, [this](std::string_view permission) { return AreWordsAt(0, permission); });
  if (found == std::end(kPermissions) || IsWordAt(1, "any"))
    RefuseHere("A permission on something other than an object or a schema");
  at_ += 1 + static_cast<size_t>(std::ranges::count(*found, ' '));
  if (!IsSymbol("(")) return;
  const std::vector<std::string> columns = ParseNameList();
  statement.columns.insert(statement.columns.end(), columns.begin(), columns.end());
}

StatementPtr Parser::ParsePermission() {
  auto statement = MakeStatement<AdministrationStatement>(at_);
  statement->action = AdministrationStatement::Action::Permission;
  const bool revokes = IsWord("revoke");
  const bool grants = IsWord("grant");
  ++at_;
  if (revokes && TakeWord("grant")) {
    ExpectWord("option");
    ExpectWord("for");
  }
  do ParsePermissionName(*statement);
  while (TakeSymbol(","));
  if (!TakeWord("on")) RefuseHere("A permission on something other than an object or a schema");
  statement->isSchema = IsWord("schema") && IsSymbolAt(1, "::");
  if (statement->isSchema || (IsWord("object") && IsSymbolAt(1, "::"))) at_ += 2;
  if (IsSymbolAt(1, "::")) RefuseHere("A permission on something other than an object or a schema");
  statement->object = ParseObjectName();
  if (IsSymbol("(")) {
    const std::vector<std::string> columns = ParseNameList();
    statement->columns.insert(statement->columns.end(), columns.begin(), columns.end());
  }
  if (!revokes || !TakeWord("from")) ExpectWord("to");
  do
    if (!TakeWord("public")) TakeName();
  while (TakeSymbol(","));
  if (grants && TakeWord("with")) {
    ExpectWord("grant");
    ExpectWord("option");
  }
  if (!grants) TakeWord("cascade");
  if (TakeWord("as")) TakeName();
  return statement;
}

StatementPtr Parser::ParseUpdateStatistics() {
  auto statement = MakeStatement<AdministrationStatement>(at_);
  statement->action = AdministrationStatement::Action::Statistics;
  at_ += 2;
  statement->object = ParseObjectName();
  if (IsSymbol("(")) {
    statement->statistics = ParseNameList();
  } else if (IsName()) {
    statement->statistics.push_back(TakeName());
  }
  if (!TakeWord("with")) return statement;
  do {
    const bool takesValue = !TakeWord("fullscan") && !TakeWord("norecompute") && !TakeWord("resample") &&
                            !TakeWord("all") && !TakeWord("columns") && !TakeWord("index");
    if (!takesValue) continue;
    ExpectWord("sample");
    if (Current().kind != TokenKind::Integer) SyntaxError();
    ++at_;
    if (!TakeWord("percent")) ExpectWord("rows");
  } while (TakeSymbol(","));
  return statement;
}

StatementPtr Parser::ParseCheckpoint() {
  auto statement = MakeStatement<AdministrationStatement>(at_);
  ++at_;
  if (Current().kind == TokenKind::Integer) ++at_; // the seconds that it may take
  return statement;
}

} // namespace tsql
