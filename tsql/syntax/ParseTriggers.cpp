#include <algorithm>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Errors.h"

namespace tsql {

StatementPtr Parser::ParseCreateTrigger(size_t start, DefinitionForm form) {
  auto statement = MakeStatement<CreateTriggerStatement>(start);
  statement->form = form;
  if (start != 0) SyntaxErrorAt(start + 1);
  statement->name = ParseModuleName("TRIGGER");
  ExpectWord("on");
  RefuseTriggerOfServer();
  statement->table = ParseDefinedName();
  // A trigger lies in the schema of its table.
  if (schema_) statement->table.schema = schema_->empty() ? "dbo" : *schema_;
  if (statement->name.schema.empty()) statement->name.schema = statement->table.schema;
  home_ = EqualNames(statement->table.schema, "dbo") ? std::string() : statement->table.schema;
  if (TakeWord("with")) {
    do {
      if (IsWord("execute") || IsWord("exec") || IsWord("native_compilation") || IsWord("schemabinding"))
        RefuseHere("A trigger WITH EXECUTE AS, NATIVE_COMPILATION or SCHEMABINDING");
      ExpectWord("encryption");
    } while (TakeSymbol(","));
  }
  if (TakeWord("instead")) {
    ExpectWord("of");
    statement->insteadOf = true;
  } else if (!TakeWord("after")) {
    ExpectWord("for");
  }
  ParseTriggerEvents(*statement);
  if (AreWordsAt(0, "WITH APPEND")) at_ += 2; // a table may have several triggers of an event anyway
  SkipNotForReplication();
  ExpectWord("as");
  statement->body = ParseModuleBody();
  statement->text = std::string(text_);
  return statement;
}

void Parser::ParseTriggerEvents(CreateTriggerStatement& trigger) {
  do {
    const int line = Current().line;
    const std::string word = Current().text;
    const TriggerEvent event = IsWord("insert")   ? TriggerEvent::Insert
                               : IsWord("update") ? TriggerEvent::Update
                                                  : TriggerEvent::Delete;
    if (event != TriggerEvent::Delete) {
      ++at_;
    } else {
      ExpectWord("delete");
    }
    if (std::ranges::count(trigger.events, event) > 0) Fail(1034, {word}, line);
    trigger.events.push_back(event);
  } while (TakeSymbol(","));
}

// Those that do not belong to a table.
void Parser::RefuseTriggerOfServer() const {
  if (IsWord("database") || AreWordsAt(0, "ALL SERVER")) RefuseHere("A trigger ON DATABASE or ALL SERVER");
}

StatementPtr Parser::ParseSwitchTriggers() {
  std::unique_ptr<SwitchTriggersStatement> statement = ParseTriggerSwitch(at_);
  ExpectWord("on");
  RefuseTriggerOfServer();
  statement->table = ParseDefinedName();
  return statement;
}

// As far as to the table.
std::unique_ptr<SwitchTriggersStatement> Parser::ParseTriggerSwitch(size_t start) {
  auto statement = MakeStatement<SwitchTriggersStatement>(start);
  statement->enables = TakeWord("enable");
  if (!statement->enables) ExpectWord("disable");
  ExpectWord("trigger");
  if (TakeWord("all")) return statement;
  do statement->triggers.push_back(ParseDefinedName());
  while (TakeSymbol(","));
  return statement;
}

// UPDATE(column), which is a condition: the function that asks for it is compared with 1.
ExprPtr Parser::ParseUpdatedColumn() {
  ExprPtr call = MakeExpr(ExprKind::Call);
  ExpectWord("update");
  call->text = "update";
  ExpectSymbol("(");
  call->args.push_back(MakeExpr(ExprKind::Column));
  call->args.back()->parts.push_back(TakeName());
  ExpectSymbol(")");
  ExprPtr one = MakeExpr(ExprKind::Literal);
  one->literal = TokenKind::Integer;
  one->text = "1";
  ExprPtr node = MakeExpr(ExprKind::Compare);
  node->args.push_back(std::move(call));
  node->args.push_back(std::move(one));
  return node;
}

} // namespace tsql
