// MERGE: the join of target and source, and for each WHEN a change from the merged rows.
#include <algorithm>

#include "tsql/syntax/ParserRules.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr const char* kPresent = "\x01"; // no column that is written has such a name

const char* ClauseName(MergeMatch match) {
  switch (match) {
  case MergeMatch::Both: return "WHEN MATCHED";
  case MergeMatch::Source: return "WHEN NOT MATCHED";
  case MergeMatch::Target: break;
  }
  return "WHEN NOT MATCHED BY SOURCE";
}

const std::string& ExposedName(const TableSource& source) {
  return source.alias.empty() ? source.name.name : source.alias;
}

// The target by the name that the statement gives it.
ObjectName ChangedName(const TableSource& target) {
  if (target.alias.empty()) return target.name;
  ObjectName name;
  name.name = target.alias;
  return name;
}

TableSourcePtr MergedRows(const MergeStatement& statement) {
  auto rows = std::make_unique<TableSource>();
  rows->kind = TableSource::Kind::Merged;
  rows->line = statement.source->line;
  rows->alias = statement.source->alias;
  return rows;
}

// Target and merged rows beside each other. Which belong together is the binder's to say.
TableSourcePtr ChangedRows(const MergeStatement& statement) {
  auto target = std::make_unique<TableSource>();
  target->line = statement.target->line;
  target->name = statement.target->name;
  target->alias = statement.target->alias;
  auto join = std::make_unique<TableSource>();
  join->kind = TableSource::Kind::Join;
  join->line = target->line;
  join->join = JoinKind::Cross;
  join->left = std::move(target);
  join->right = MergedRows(statement);
  return join;
}

} // namespace

StatementPtr Parser::ParseMerge() {
  auto statement = MakeStatement<MergeStatement>(at_);
  ExpectWord("merge");
  if (IsWord("top")) RefuseHere("MERGE TOP");
  TakeWord("into");
  statement->target = ParseMergeTarget();
  ExpectWord("using");
  statement->source = ParseMergeSource();
  ExpectWord("on");
  statement->on = ParseCondition();
  if (!IsWord("when")) SyntaxError();
  while (IsWord("when")) ParseMergeAction(*statement);
  if (IsWord("output")) RefuseHere("OUTPUT of a MERGE");
  ParseQueryHints(statement->maxRecursion);
  if (!IsSymbol(";")) Fail(10713, {}, statement->line);
  return statement;
}

TableSourcePtr Parser::ParseMergeTarget() {
  auto target = std::make_unique<TableSource>();
  target->line = Current().line;
  target->name = ParseTarget();
  ParseTableHints(*target);
  if (!IsWord("using")) ParseTableAlias(*target);
  return target;
}

// SELECT *, 1 FROM source, so that the join tells where there is no row of the source.
TableSourcePtr Parser::ParseMergeSource() {
  const int line = Current().line;
  TableSourcePtr rows = ParsePivoted();
  if (rows->kind == TableSource::Kind::Join || TakeJoin()) RefuseHere("A join as the source of a MERGE");
  auto source = std::make_unique<TableSource>();
  source->line = line;
  source->kind = TableSource::Kind::Derived;
  source->alias = ExposedName(*rows);
  source->query = std::make_unique<Query>();
  source->query->select = std::make_unique<Select>();
  Select& select = *source->query->select;
  select.line = line;
  select.from = std::move(rows);
  select.items.emplace_back();
  SelectItem& present = select.items.emplace_back();
  present.expr = MakeExpr(ExprKind::Literal);
  present.expr->literal = TokenKind::Integer;
  present.expr->text = "1";
  present.alias = kPresent;
  return source;
}

MergeMatch Parser::ParseMergeMatch() {
  if (!TakeWord("not")) {
    ExpectWord("matched");
    return MergeMatch::Both;
  }
  ExpectWord("matched");
  if (!TakeWord("by")) return MergeMatch::Source;
  if (TakeWord("source")) return MergeMatch::Target;
  ExpectWord("target");
  return MergeMatch::Source;
}

void Parser::ParseMergeAction(MergeStatement& statement) {
  const int line = Current().line;
  ExpectWord("when");
  MergeAction action;
  action.match = ParseMergeMatch();
  if (TakeWord("and")) action.condition = ParseCondition();
  ExpectWord("then");
  action.change = ParseMergeChange(statement, action.match);
  for (const MergeAction& other : statement.actions) {
    if (other.match != action.match) continue;
    const char* const clause = ClauseName(action.match);
    if (!other.condition) Fail(5324, {clause}, line);
    const bool isInsert = action.change->kind == StatementKind::Insert;
    const bool isUpdate = action.change->kind == StatementKind::Update;
    if (other.change->kind == action.change->kind)
      Fail(10714, {isInsert ? "INSERT" : isUpdate ? "UPDATE" : "DELETE", clause}, line);
  }
  statement.actions.push_back(std::move(action));
}

StatementPtr Parser::ParseMergeChange(const MergeStatement& statement, MergeMatch match) {
  const int line = Current().line;
  const MergeRole role{&statement, static_cast<int>(statement.actions.size()) + 1};
  const char* const clause = ClauseName(match);
  if (IsWord("insert")) {
    if (match != MergeMatch::Source) Fail(10711, {"INSERT", clause}, line);
    StatementPtr insert = ParseMergeInsert(statement);
    static_cast<InsertStatement&>(*insert).role = role;
    return insert;
  }
  if (IsWord("update")) {
    if (match == MergeMatch::Source) Fail(10711, {"UPDATE", clause}, line);
    auto update = MakeStatement<UpdateStatement>(at_);
    TakeWord("update");
    ExpectWord("set");
    update->target = ChangedName(*statement.target);
    update->from = ChangedRows(statement);
    update->assignments = ParseAssignments();
    update->role = role;
    return update;
  }
  auto change = MakeStatement<DeleteStatement>(at_);
  ExpectWord("delete");
  if (match == MergeMatch::Source) Fail(10711, {"DELETE", clause}, line);
  change->target = ChangedName(*statement.target);
  change->from = ChangedRows(statement);
  change->role = role;
  return change;
}

// INSERT ... VALUES of one row, as a query of the merged rows.
StatementPtr Parser::ParseMergeInsert(const MergeStatement& statement) {
  auto insert = MakeStatement<InsertStatement>(at_);
  ExpectWord("insert");
  insert->table = statement.target->name;
  if (IsSymbol("(")) insert->columns = ParseNameList();
  if (IsWord("default")) RefuseHere("INSERT DEFAULT VALUES of a MERGE");
  ExpectWord("values");
  const int line = Current().line;
  std::vector<std::vector<ExprPtr>> rows = ParseRows();
  if (rows.size() > 1) SyntaxError();
  std::vector<ExprPtr>& values = rows.front();
  if (!insert->columns.empty() && values.size() != insert->columns.size())
    Fail(values.size() < insert->columns.size() ? 109 : 110, {}, line);
  // A column that gets its default is left out.
  const auto isDefault = [](const ExprPtr& value) { return value->kind == ExprKind::Default; };
  const bool hasDefault = std::ranges::any_of(values, isDefault);
  if (hasDefault && (insert->columns.empty() || std::ranges::all_of(values, isDefault)))
    Refuse("INSERT DEFAULT VALUES of a MERGE", line);
  insert->query = std::make_unique<Query>();
  insert->query->select = std::make_unique<Select>();
  Select& select = *insert->query->select;
  select.line = line;
  select.from = MergedRows(statement);
  std::vector<std::string> columns;
  for (size_t i = 0; i < values.size(); ++i) {
    if (isDefault(values[i])) continue;
    if (!insert->columns.empty()) columns.push_back(insert->columns[i]);
    select.items.emplace_back().expr = std::move(values[i]);
  }
  insert->columns = std::move(columns);
  return insert;
}

} // namespace tsql
