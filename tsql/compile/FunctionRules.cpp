#include "tsql/compile/FunctionRules.h"

#include <algorithm>

#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Whether the name in FROM stands for a table variable.
bool IsVariableIn(const TableSource& from, const ObjectName& name) {
  if (from.kind == TableSource::Kind::Join)
    return IsVariableIn(*from.left, name) || IsVariableIn(*from.right, name);
  return from.kind == TableSource::Kind::Named && from.name.variable && EqualNames(from.alias, name.name);
}

bool ChangesVariable(const ObjectName& target, const TableSource* from) {
  return target.variable || (from != nullptr && IsVariableIn(*from, target));
}

const OutputClause* OutputOf(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Insert: return static_cast<const InsertStatement&>(statement).output.get();
  case StatementKind::Update: return static_cast<const UpdateStatement&>(statement).output.get();
  case StatementKind::Delete: return static_cast<const DeleteStatement&>(statement).output.get();
  default: return nullptr;
  }
}

const char* TransactionName(TransactionAction action) {
  switch (action) {
  case TransactionAction::Begin: return "BEGIN TRANSACTION";
  case TransactionAction::Commit: return "COMMIT TRANSACTION";
  case TransactionAction::Save: return "SAVEPOINT";
  case TransactionAction::Rollback: break;
  }
  return "ROLLBACK TRANSACTION";
}

// The operator that the statement must not be, as the server names it; empty for none.
std::string SideEffect(const Statement& statement) {
  switch (statement.kind) {
  case StatementKind::Insert:
    return static_cast<const InsertStatement&>(statement).table.variable ? "" : "INSERT";
  case StatementKind::Update: {
    const auto& update = static_cast<const UpdateStatement&>(statement);
    return ChangesVariable(update.target, update.from.get()) ? "" : "UPDATE";
  }
  case StatementKind::Delete: {
    const auto& change = static_cast<const DeleteStatement&>(statement);
    return ChangesVariable(change.target, change.from.get()) ? "" : "DELETE";
  }
  case StatementKind::Merge:
    return static_cast<const MergeStatement&>(statement).target->name.variable ? "" : "MERGE";
  case StatementKind::InsertExecute: return "INSERT EXEC";
  case StatementKind::Execute:
    return static_cast<const ExecuteStatement&>(statement).text ? "EXECUTE STRING" : "";
  case StatementKind::SetOption:
    return "SET OPTION " + static_cast<const SetOptionStatement&>(statement).value;
  case StatementKind::Transaction:
    return TransactionName(static_cast<const TransactionStatement&>(statement).action);
  case StatementKind::Print: return "PRINT";
  case StatementKind::Raiserror: return "RAISERROR";
  case StatementKind::Throw: return "THROW";
  case StatementKind::TryCatch: return "BEGIN TRY";
  case StatementKind::WaitFor: return "WAITFOR";
  case StatementKind::Administration: return "GRANT";
  case StatementKind::CreateTable: return "CREATE TABLE";
  case StatementKind::CreateIndex: return "CREATE INDEX";
  case StatementKind::AlterTable: return "ALTER TABLE";
  case StatementKind::AlterSchema: return "ALTER SCHEMA";
  case StatementKind::Drop: return "DROP OBJECT";
  case StatementKind::Truncate: return "TRUNCATE TABLE";
  case StatementKind::CheckIdentity: return "DBCC";
  default: return "";
  }
}

void CheckStatement(const Statement& statement) {
  const std::string effect = SideEffect(statement);
  if (!effect.empty()) Fail(443, {effect}, statement.line);
  if (const OutputClause* output = OutputOf(statement)) {
    if (!output->into) Fail(444, {}, statement.line);
    if (!output->into->variable) Fail(443, {"INSERT"}, statement.line);
  }
  switch (statement.kind) {
  case StatementKind::Query: {
    const Query& query = *static_cast<const QueryStatement&>(statement).query;
    if (IntoOf(query) != nullptr) Fail(443, {"SELECT INTO"}, statement.line);
    const bool assigns = query.select && !query.select->items.front().variable.empty();
    if (!assigns) Fail(444, {}, statement.line);
    break;
  }
  case StatementKind::Fetch:
    if (static_cast<const FetchStatement&>(statement).into.empty()) Fail(444, {}, statement.line);
    break;
  case StatementKind::If: {
    const auto& branch = static_cast<const IfStatement&>(statement);
    CheckStatement(*branch.thenBranch);
    if (branch.elseBranch) CheckStatement(*branch.elseBranch);
    break;
  }
  case StatementKind::While: CheckStatement(*static_cast<const WhileStatement&>(statement).body); break;
  case StatementKind::Block:
    CheckFunctionBody(static_cast<const BlockStatement&>(statement).statements);
    break;
  default: break;
  }
}

} // namespace

void CheckFunctionBody(const StatementList& body) {
  for (const StatementPtr& statement : body) CheckStatement(*statement);
}

} // namespace tsql
