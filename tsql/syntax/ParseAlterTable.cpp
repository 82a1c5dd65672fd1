#include "tsql/syntax/ParserRules.h"

namespace tsql {

StatementPtr Parser::ParseAlterTable(size_t start) {
  auto statement = MakeStatement<AlterTableStatement>(start);
  statement->table = ParseDefinedName();
  if (AreWordsAt(0, "ENABLE TRIGGER") || AreWordsAt(0, "DISABLE TRIGGER")) {
    std::unique_ptr<SwitchTriggersStatement> triggers = ParseTriggerSwitch(start);
    triggers->table = std::move(statement->table);
    triggers->alters = true;
    return triggers;
  }
  const bool isChecking = IsWordAt(1, "check");
  const bool saysCheck = IsWord("with") && (isChecking || IsWordAt(1, "nocheck"));
  if (saysCheck) at_ += 2;
  RefuseWords(RefusedKind::AlterTable);
  if (IsWord("check") || IsWord("nocheck")) {
    // A constraint that is switched on again looks at the rows only where it is asked to.
    statement->checksRows = saysCheck && isChecking;
    ParseConstraintSwitch(*statement);
  } else if (TakeWord("add")) {
    statement->checksRows = !saysCheck || isChecking;
    ParseAlterAdd(*statement);
  } else if (TakeWord("alter")) {
    ParseAlterColumn(*statement);
  } else {
    ExpectWord("drop");
    ParseAlterDrop(*statement);
  }
  return statement;
}

void Parser::ParseAlterAdd(AlterTableStatement& statement) {
  do {
    const bool isNamed = IsWord("constraint") && IsNameAt(1);
    if (IsWordAt(isNamed ? 2 : 0, "default")) {
      ParseDefaultFor(statement);
    } else {
      ParseTableElement(statement.columns, statement.constraints);
    }
  } while (TakeSymbol(","));
}

// DEFAULT value FOR column, as a constraint of the table.
void Parser::ParseDefaultFor(AlterTableStatement& statement) {
  ConstraintDefinition constraint;
  constraint.kind = ConstraintDefinition::Kind::Default;
  if (TakeWord("constraint")) constraint.name = TakeName();
  ColumnDefinition column;
  ParseDefaultClause(column);
  constraint.checkText = std::move(column.defaultText);
  ExpectWord("for");
  constraint.columns.push_back(TakeName());
  // The rows that are there have their values already.
  if (TakeWord("with")) ExpectWord("values");
  statement.constraints.push_back(std::move(constraint));
}

void Parser::ParseAlterColumn(AlterTableStatement& statement) {
  statement.action = AlterAction::AlterColumn;
  ExpectWord("column");
  ColumnDefinition column;
  column.line = Current().line;
  column.name = TakeName();
  if (IsWord("add") || IsWord("drop")) RefuseHere("ALTER COLUMN ADD or DROP of a property");
  if (IsWord("sysname")) column.nullable = false;
  column.type = ParseType(1);
  std::vector<ConstraintDefinition> none;
  while (IsWord("null") || IsWord("not") || IsWord("collate") || IsWord("sparse"))
    ParseColumnProperty(column, none);
  if (IsWord("with")) SkipStorageOptions();
  statement.columns.push_back(std::move(column));
}

void Parser::ParseAlterDrop(AlterTableStatement& statement) {
  statement.action = AlterAction::Drop;
  bool isColumn = false;
  do {
    DroppedElement element;
    // The word stands for the names behind it too.
    const bool saysColumn = TakeWord("column");
    const bool saysConstraint = !saysColumn && TakeWord("constraint");
    if (saysColumn || saysConstraint) isColumn = saysColumn;
    if (IsWord("period")) RefuseHere("A period of SYSTEM_TIME");
    if (TakeWord("if")) {
      ExpectWord("exists");
      element.ifExists = true;
    }
    element.isColumn = isColumn;
    element.name = TakeName();
    if (IsWord("with") && IsSymbolAt(1, "(")) SkipStorageOptions();
    statement.dropped.push_back(std::move(element));
  } while (TakeSymbol(","));
}

void Parser::ParseConstraintSwitch(AlterTableStatement& statement) {
  statement.action = AlterAction::SwitchConstraints;
  statement.enables = IsWord("check");
  ++at_;
  ExpectWord("constraint");
  if (TakeWord("all")) return;
  do statement.switched.push_back(TakeName());
  while (TakeSymbol(","));
}

} // namespace tsql
