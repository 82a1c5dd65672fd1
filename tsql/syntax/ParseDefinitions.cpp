#include <algorithm>
#include <array>
#include <charconv>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {

StatementPtr Parser::ParseCreate() {
  const size_t start = at_;
  ExpectWord("create");
  RefuseWords(RefusedKind::Create);
  if (TakeWord("or")) {
    ExpectWord("alter");
    if (StatementPtr module = ParseModuleDefinition(start, DefinitionForm::CreateOrAlter)) return module;
    SyntaxError();
  }
  if (StatementPtr module = ParseModuleDefinition(start, DefinitionForm::Create)) return module;
  if (TakeWord("table")) return ParseCreateTable(start);
  if (TakeWord("schema")) return ParseCreateSchema(start);
  if (IsWord("unique") || IsWord("clustered") || IsWord("nonclustered") || IsWord("index"))
    return ParseCreateIndex(start);
  UnknownObject();
}

// Null where it is something else that is made or changed.
StatementPtr Parser::ParseModuleDefinition(size_t start, DefinitionForm form) {
  if (TakeWord("view")) return ParseCreateView(start, form);
  if (TakeWord("procedure") || TakeWord("proc")) return ParseCreateProcedure(start, form);
  if (TakeWord("function")) return ParseCreateFunction(start, form);
  if (TakeWord("trigger")) return ParseCreateTrigger(start, form);
  return nullptr;
}

void Parser::UnknownObject() const {
  if (IsName()) Fail(343, {Current().text}, Current().line);
  SyntaxError();
}

// Where and how the server stores the object does not matter here.
void Parser::SkipStorageOptions() {
  while (true) {
    if (IsWord("with") && IsSymbolAt(1, "(")) {
      at_ += 2;
      SkipOptionList();
    } else if (IsWord("with") && StartsOldOption(1)) {
      ++at_;
      SkipOldOptions();
    } else if (IsWord("on") || IsWord("textimage_on") || IsWord("filestream_on")) {
      ++at_;
      if (!IsName() && !IsWord("primary")) SyntaxError();
      ++at_;
      if (IsSymbol("(")) RefuseHere("A partitioned table or index");
    } else {
      return;
    }
  }
}

// Index options as they were written before version 2005: WITH PAD_INDEX, FILLFACTOR = 90.
bool Parser::StartsOldOption(size_t ahead) const {
  constexpr std::array<std::string_view, 6> kOptions = {
      "pad_index",     "fillfactor", "ignore_dup_key", "drop_existing", "statistics_norecompute",
      "sort_in_tempdb"};
  return std::ranges::any_of(kOptions, [&](std::string_view name) { return IsWordAt(ahead, name); });
}

void Parser::SkipOldOptions() {
  do {
    if (IsWord("ignore_dup_key") || IsWord("drop_existing")) RefuseHere("A table or index option");
    if (TakeWord("fillfactor")) {
      ExpectSymbol("=");
      if (Current().kind != TokenKind::Integer) SyntaxError();
    } else if (!StartsOldOption(0)) {
      SyntaxError();
    }
    ++at_;
  } while (TakeSymbol(","));
}

void Parser::SkipOptionList() {
  do SkipOption();
  while (TakeSymbol(","));
  ExpectSymbol(")");
}

// Some options are about how the server stores or builds something; others change what a statement does.
void Parser::SkipOption() {
  constexpr std::array<std::string_view, 12> kStorage = {"pad_index",
                                                         "fillfactor",
                                                         "sort_in_tempdb",
                                                         "online",
                                                         "maxdop",
                                                         "statistics_norecompute",
                                                         "allow_row_locks",
                                                         "allow_page_locks",
                                                         "statistics_incremental",
                                                         "compression_delay",
                                                         "data_compression",
                                                         "optimize_for_sequential_key"};
  constexpr std::array<std::string_view, 4> kSwitches = {"ignore_dup_key", "drop_existing", "resumable",
                                                         "xml_compression"};
  if (Current().kind != TokenKind::Word) SyntaxError();
  const auto isCurrent = [this](std::string_view name) { return IsWord(name); };
  const bool isStorage = std::any_of(kStorage.begin(), kStorage.end(), isCurrent);
  const bool isSwitch = std::any_of(kSwitches.begin(), kSwitches.end(), isCurrent);
  const bool isOff = IsSymbolAt(1, "=") && IsWordAt(2, "off");
  if (!isStorage && !(isSwitch && isOff)) RefuseHere("A table or index option");
  ++at_;
  ExpectSymbol("=");
  if (Current().kind != TokenKind::Word && Current().kind != TokenKind::Integer) SyntaxError();
  ++at_;
  if (IsSymbol("(") || IsWord("on")) RefuseHere("A table or index option");
}

StatementPtr Parser::ParseCreateTable(size_t start) {
  auto statement = MakeStatement<CreateTableStatement>(start);
  statement->table = ParseDefinedName();
  if (AreWordsAt(0, "AS FILETABLE")) RefuseHere("A file table or a graph table");
  ExpectSymbol("(");
  do {
    if (IsSymbol(")") && !statement->columns.empty()) break; // a trailing comma is allowed
    ParseTableElement(statement->columns, statement->constraints);
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  if (AreWordsAt(0, "AS NODE") || AreWordsAt(0, "AS EDGE")) RefuseHere("A file table or a graph table");
  SkipStorageOptions();
  return statement;
}

void Parser::ParseTableElement(std::vector<ColumnDefinition>& columns,
                               std::vector<ConstraintDefinition>& constraints) {
  std::string name;
  if (IsWord("index")) RefuseHere("An index within CREATE TABLE");
  if (AreWordsAt(0, "PERIOD FOR")) RefuseHere("A period of SYSTEM_TIME");
  if (inTableVariable_ && (IsWord("constraint") || IsWord("foreign"))) SyntaxError();
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
  if (IsWord("as")) {
    ParseComputedColumn(column, constraints);
    return column;
  }
  // A sysname is not null unless it is said to be.
  if (IsWord("sysname")) column.nullable = false;
  column.type = ParseType(1);
  while (ParseColumnProperty(column, constraints)) {
  }
  return column;
}

// name AS expression [PERSISTED [NOT NULL]] and a key or, where its values are kept, another constraint.
void Parser::ParseComputedColumn(ColumnDefinition& column, std::vector<ConstraintDefinition>& constraints) {
  ExpectWord("as");
  const size_t first = at_;
  ParseExpression();
  RefuseSubqueries(first, 1046);
  column.computedText = SourceFrom(first);
  column.isPersisted = TakeWord("persisted");
  while (true) {
    if (IsWord("constraint") || IsWord("primary") || IsWord("unique") || IsWord("check") ||
        IsWord("foreign") || IsWord("references") || AreWordsAt(0, "NOT NULL")) {
      const size_t word = IsWord("constraint") ? 2 : 0;
      const bool isKey = IsWordAt(word, "primary") || IsWordAt(word, "unique");
      if (!isKey && !column.isPersisted) Fail(8183, {}, Current().line);
      if (IsWordAt(word, "default")) SyntaxErrorAt(at_ + word);
      ParseColumnProperty(column, constraints);
      continue;
    }
    return;
  }
}

NamedCollation Parser::ParseCollation() {
  ExpectWord("collate");
  const int line = Current().line;
  const std::string name = TakeName();
  if (std::optional<NamedCollation> known = FindCollation(name)) return std::move(*known);
  if (IgnoresAccents(name)) Refuse("A collation that ignores accents", line);
  Fail(448, {name}, line);
}

// There is no replication here that it would make an exception for.
void Parser::SkipNotForReplication() {
  if (AreWordsAt(0, "NOT FOR REPLICATION")) at_ += 3;
}

void Parser::RefuseColumnProperty() const {
  if (IsWord("index")) RefuseHere("An index within CREATE TABLE");
  constexpr std::array<std::string_view, 9> kProperties = {
      "SPARSE",         "FILESTREAM",       "ROWGUIDCOL", "MASKED WITH", "ENCRYPTED WITH",
      "COLUMN_SET FOR", "GENERATED ALWAYS", "HIDDEN",     "PERSISTED"};
  for (const std::string_view property : kProperties)
    if (AreWordsAt(0, property)) RefuseHere("A property of a column such as SPARSE or ROWGUIDCOL");
}

bool Parser::ParseColumnProperty(ColumnDefinition& column, std::vector<ConstraintDefinition>& constraints) {
  RefuseColumnProperty();
  if (IsWord("collate")) {
    column.collation = ParseCollation();
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
    SkipNotForReplication();
    return true;
  }
  if (inTableVariable_ && (IsWord("constraint") || IsWord("foreign") || IsWord("references"))) SyntaxError();
  std::string name;
  if (TakeWord("constraint")) name = TakeName();
  if (IsWord("default")) {
    ParseDefaultClause(column);
    column.defaultName = std::move(name);
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
  ExpectWord("identity");
  column.identity = true;
  if (!TakeSymbol("(")) return;
  const IdentityDefinition numbers = ParseIdentityNumbers(column.name);
  column.seed = numbers.seed;
  column.increment = numbers.increment;
  ExpectSymbol(")");
}

IdentityDefinition Parser::ParseIdentityNumbers(const std::string& column) {
  const auto takeInteger = [&](int errorOfRange) {
    const bool negative = TakeSymbol("-");
    if (Current().kind != TokenKind::Integer) SyntaxError();
    int64_t value = 0;
    const Token& number = tokens_[at_++];
    const char* const end = number.text.data() + number.text.size();
    if (std::from_chars(number.text.data(), end, value).ec != std::errc())
      Fail(errorOfRange, {column}, number.line);
    return negative ? -value : value;
  };
  IdentityDefinition numbers;
  numbers.seed = takeInteger(2752);
  ExpectSymbol(",");
  numbers.increment = takeInteger(2753);
  return numbers;
}

void Parser::RefuseSubqueries(size_t firstToken, int error) const {
  for (size_t i = firstToken; i < at_; ++i)
    if (tokens_[i].kind == TokenKind::Word && EqualNames(tokens_[i].text, "select"))
      Fail(error, {}, tokens_[i].line);
}

void Parser::RefuseColumns(const Expr& expr) {
  if (expr.kind == ExprKind::Column && expr.parts.size() == 1) Fail(128, {expr.parts.front()}, expr.line);
  // The first argument of these is the name of a part of a date.
  constexpr std::array<std::string_view, 5> kOfParts = {"dateadd", "datediff", "datediff_big", "datename",
                                                        "datepart"};
  const bool isOfPart =
      expr.kind == ExprKind::Call && std::find(kOfParts.begin(), kOfParts.end(), expr.text) != kOfParts.end();
  for (size_t i = isOfPart ? 1 : 0; i < expr.args.size(); ++i) RefuseColumns(*expr.args[i]);
}

void Parser::ParseDefaultClause(ColumnDefinition& column) {
  ExpectWord("default");
  const size_t first = at_;
  const ExprPtr value = ParseExpression();
  RefuseSubqueries(first, 1046);
  RefuseColumns(*value);
  column.defaultText = SourceFrom(first);
  if (!TakeWord("with")) return;
  ExpectWord("values");
  column.withValues = true;
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

void Parser::ParseReferentialActions(ConstraintDefinition& constraint) {
  bool isDeleteKnown = false;
  bool isUpdateKnown = false;
  while (IsWord("on") && (IsWordAt(1, "delete") || IsWordAt(1, "update"))) {
    const bool isDelete = IsWordAt(1, "delete");
    bool& isKnown = isDelete ? isDeleteKnown : isUpdateKnown;
    if (isKnown) SyntaxError();
    isKnown = true;
    at_ += 2;
    ReferentialAction& action = isDelete ? constraint.onDelete : constraint.onUpdate;
    if (TakeWord("cascade")) {
      action = ReferentialAction::Cascade;
    } else if (TakeWord("set")) {
      const bool isNull = TakeWord("null");
      if (!isNull) ExpectWord("default");
      action = isNull ? ReferentialAction::SetNull : ReferentialAction::SetDefault;
    } else {
      ExpectWord("no");
      ExpectWord("action");
    }
  }
}

ConstraintDefinition Parser::ParseConstraint(std::string name) {
  ConstraintDefinition constraint;
  constraint.name = std::move(name);
  if (TakeWord("check")) {
    constraint.kind = ConstraintDefinition::Kind::Check;
    SkipNotForReplication();
    const size_t first = at_;
    ExpectSymbol("(");
    ParseCondition();
    RefuseSubqueries(first, 1046);
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
    constraint.referenced = ParseDefinedName();
    if (IsSymbol("(")) constraint.referencedColumns = ParseNameList();
    ParseReferentialActions(constraint);
    SkipNotForReplication();
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
  statement->table = ParseDefinedName();
  statement->columns = ParseKeyColumns(&statement->descending);
  if (TakeWord("include")) statement->included = ParseNameList();
  if (IsWord("where")) RefuseHere("WHERE of an index");
  SkipStorageOptions();
  return statement;
}

StatementPtr Parser::ParseCreateView(size_t start, DefinitionForm form) {
  auto statement = MakeStatement<CreateViewStatement>(start);
  statement->form = form;
  if (start != 0) SyntaxErrorAt(start + 1);
  statement->name = ParseModuleName("VIEW");
  if (IsSymbol("(")) statement->columns = ParseNameList();
  if (TakeWord("with")) {
    do {
      if (IsWord("encryption")) RefuseHere("A view WITH ENCRYPTION");
      statement->schemaBound = statement->schemaBound || IsWord("schemabinding");
      if (!TakeWord("schemabinding")) ExpectWord("view_metadata");
    } while (TakeSymbol(","));
  }
  ExpectWord("as");
  schemaBound_ = statement->schemaBound;
  statement->query = ParseQuery();
  if (AreWordsAt(0, "WITH CHECK OPTION")) RefuseHere("A view WITH CHECK OPTION");
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
  if (IsWord("null") || AreWordsAt(0, "NOT NULL") || IsWord("readonly"))
    RefuseHere("NULL, NOT NULL or READONLY of a parameter");
  if (TakeSymbol("=")) parameter.defaultValue = ParseExpression();
  parameter.output = TakeWord("output") || TakeWord("out");
  return parameter;
}

std::vector<ProcedureParameter> Parser::ParseParameterList() {
  std::vector<ProcedureParameter> parameters;
  if (IsAtEnd()) return parameters;
  do parameters.push_back(ParseProcedureParameter());
  while (TakeSymbol(","));
  if (!IsAtEnd()) SyntaxError();
  return parameters;
}

StatementPtr Parser::ParseCreateProcedure(size_t start, DefinitionForm form) {
  auto statement = MakeStatement<CreateProcedureStatement>(start);
  statement->form = form;
  if (start != 0) SyntaxErrorAt(start + 1);
  statement->name = ParseModuleName("PROCEDURE");
  if (IsSymbol(";") && Next().kind == TokenKind::Integer) RefuseHere("A procedure with a number");
  const bool parenthesized = TakeSymbol("(");
  if (Current().kind == TokenKind::Variable) {
    do statement->parameters.push_back(ParseProcedureParameter());
    while (TakeSymbol(","));
  }
  if (parenthesized) ExpectSymbol(")");
  if (TakeWord("with")) {
    do {
      if (IsWord("execute") || IsWord("exec") || IsWord("native_compilation") || IsWord("schemabinding"))
        RefuseHere("A procedure WITH EXECUTE AS or NATIVE_COMPILATION");
      if (!TakeWord("recompile")) ExpectWord("encryption");
    } while (TakeSymbol(","));
  }
  if (AreWordsAt(0, "FOR REPLICATION")) RefuseHere("A procedure FOR REPLICATION");
  ExpectWord("as");
  if (AreWordsAt(0, "EXTERNAL NAME")) RefuseHere("A procedure with an external name");
  inProcedure_ = true;
  statement->body = ParseModuleBody();
  inProcedure_ = false;
  statement->text = std::string(text_);
  return statement;
}

// The statements of a procedure or trigger, which are the rest of the batch.
StatementList Parser::ParseModuleBody() {
  StatementList body;
  if (IsAtEnd()) SyntaxError();
  inModule_ = true; // to the end of the batch
  while (true) {
    while (TakeSymbol(";")) {
    }
    if (IsAtEnd()) return body;
    body.push_back(ParseStatement());
  }
}

StatementPtr Parser::ParseCreateFunction(size_t start, DefinitionForm form) {
  auto statement = MakeStatement<CreateFunctionStatement>(start);
  statement->form = form;
  if (start != 0) SyntaxErrorAt(start + 1);
  statement->name = ParseModuleName("FUNCTION");
  ExpectSymbol("(");
  if (!IsSymbol(")")) {
    do {
      statement->parameters.push_back(ParseProcedureParameter());
      if (statement->parameters.back().output) SyntaxErrorAt(at_ - 1);
    } while (TakeSymbol(","));
  }
  ExpectSymbol(")");
  ExpectWord("returns");
  if (Current().kind == TokenKind::Variable) {
    const int line = Current().line;
    statement->function = FunctionKind::Table;
    std::string name = TakeVariable();
    statement->result = ParseTableVariable(std::move(name), line);
  } else if (TakeWord("table")) {
    statement->function = FunctionKind::Inline;
  } else {
    statement->returns = ParseType(1);
  }
  if (TakeWord("with")) ParseFunctionOptions(*statement);
  TakeWord("as");
  if (AreWordsAt(0, "EXTERNAL NAME")) RefuseHere("A function with an external name");
  ParseFunctionBody(*statement);
  TakeSymbol(";");
  if (!IsAtEnd()) SyntaxError();
  statement->text = std::string(text_);
  return statement;
}

void Parser::ParseFunctionOptions(CreateFunctionStatement& function) {
  do {
    if (IsWord("execute") || IsWord("exec") || IsWord("inline") || IsWord("native_compilation"))
      RefuseHere("A function WITH EXECUTE AS or INLINE");
    if (AreWordsAt(0, "RETURNS NULL ON NULL INPUT") || AreWordsAt(0, "CALLED ON NULL INPUT")) {
      function.isNullOfNull = IsWord("returns");
      at_ += function.isNullOfNull ? 5 : 4;
      continue;
    }
    function.schemaBound = function.schemaBound || IsWord("schemabinding");
    if (!TakeWord("schemabinding")) ExpectWord("encryption");
  } while (TakeSymbol(","));
  schemaBound_ = function.schemaBound;
}

void Parser::ParseFunctionBody(CreateFunctionStatement& function) {
  if (function.function == FunctionKind::Inline) {
    ExpectWord("return");
    const bool isEnclosed = IsSymbol("(") && IsWordAt(1, "with");
    if (isEnclosed) TakeSymbol("(");
    function.query = ParseQuery();
    if (isEnclosed) ExpectSymbol(")");
    return;
  }
  ExpectWord("begin");
  function_ = function.function;
  function.body = ParseStatementsUntilEnd();
  function_.reset();
  const int line = Current().line;
  ExpectWord("end");
  const bool endsWithReturn = !function.body.empty() && function.body.back()->kind == StatementKind::Return;
  if (!endsWithReturn) Fail(455, {}, line);
}

StatementPtr Parser::ParseAlter() {
  const size_t start = at_;
  ExpectWord("alter");
  if (StatementPtr module = ParseModuleDefinition(start, DefinitionForm::Alter)) return module;
  RefuseWords(RefusedKind::Alter);
  if (TakeWord("table")) return ParseAlterTable(start);
  if (TakeWord("schema")) return ParseAlterSchema(start);
  UnknownObject();
}

StatementPtr Parser::ParseDrop() {
  auto statement = MakeStatement<DropStatement>(at_);
  ExpectWord("drop");
  RefuseWords(RefusedKind::Drop);
  const std::string kind = IsWord("proc") ? "PROCEDURE" : ToUpper(Current().text);
  if (TakeWord("table")) {
    statement->object = ObjectKind::Table;
  } else if (TakeWord("view")) {
    statement->object = ObjectKind::View;
  } else if (TakeWord("procedure") || TakeWord("proc")) {
    statement->object = ObjectKind::Procedure;
  } else if (TakeWord("function")) {
    statement->object = ObjectKind::Function;
  } else if (TakeWord("trigger")) {
    statement->object = ObjectKind::Trigger;
  } else if (TakeWord("index")) {
    statement->object = ObjectKind::Index;
  } else if (TakeWord("schema")) {
    return ParseDropSchema(std::move(statement));
  } else {
    UnknownObject();
  }
  if (TakeWord("if")) {
    ExpectWord("exists");
    statement->ifExists = true;
  }
  do {
    if (statement->object == ObjectKind::Index) {
      ParseDroppedIndex(*statement);
    } else {
      statement->names.push_back(ParseDefinedName());
      const bool isModule = statement->object != ObjectKind::Table;
      if (isModule && !statement->names.back().database.empty()) Fail(166, {"DROP " + kind}, statement->line);
    }
  } while (TakeSymbol(","));
  if (statement->object == ObjectKind::Index) SkipStorageOptions();
  if (statement->object == ObjectKind::Trigger && TakeWord("on")) RefuseTriggerOfServer();
  return statement;
}

// "index ON table" or "table.index".
void Parser::ParseDroppedIndex(DropStatement& statement) {
  const bool hasSchema = IsSymbolAt(1, ".") && IsSymbolAt(3, ".");
  const std::string schema = hasSchema ? TakeName() : std::string();
  if (hasSchema) ExpectSymbol(".");
  ObjectName written = ParseDefinedName();
  ObjectName index;
  index.name = written.name;
  statement.names.push_back(std::move(index));
  ObjectName table;
  if (TakeWord("on")) {
    table = ParseDefinedName();
  } else {
    table.schema = schema;
    table.name = written.schema;
  }
  statement.tables.push_back(std::move(table));
}

StatementPtr Parser::ParseTruncate() {
  auto statement = MakeStatement<TruncateStatement>(at_);
  ExpectWord("truncate");
  ExpectWord("table");
  statement->table = ParseDefinedName();
  if (IsWord("with") && IsSymbolAt(1, "(")) RefuseHere("TRUNCATE TABLE WITH PARTITIONS");
  return statement;
}

} // namespace tsql
