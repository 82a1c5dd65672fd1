#include <algorithm>

#include "tsql/run/Interpreter.h"
#include "tsql/sqlite/Values.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/ConversionRules.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

using CursorList = std::vector<std::shared_ptr<Cursor>>;

CursorList::const_iterator FindCursor(const CursorList& cursors, std::string_view name) {
  return std::ranges::find_if(cursors, [&](const std::shared_ptr<Cursor>& cursor) {
    return EqualNames(cursor->statement->cursor.name, name);
  });
}

// Where a fetch goes. What is outside counts as in front of the first row or behind the last.
int64_t PositionOf(const FetchStatement& statement, const Cursor& cursor, int64_t row) {
  const int64_t count = cursor.rows.Count();
  int64_t position = 0;
  switch (statement.fetch) {
  case FetchKind::Next: position = cursor.position + 1; break;
  case FetchKind::Prior: position = cursor.position - 1; break;
  case FetchKind::First: break;
  case FetchKind::Last: position = count - 1; break;
  case FetchKind::Absolute: position = row > 0 ? row - 1 : row < 0 ? count + row : -1; break;
  case FetchKind::Relative: position = cursor.position + row; break;
  }
  return std::clamp<int64_t>(position, -1, count);
}

} // namespace

std::shared_ptr<Cursor> Interpreter::FindCursorOf(const CursorName& name) const {
  if (!name.isGlobal) {
    const auto local = FindCursor(running_->cursors, name.name);
    if (local != running_->cursors.end()) return *local;
  }
  const auto found = FindCursor(cursors_, name.name);
  return found != cursors_.end() ? *found : nullptr;
}

std::shared_ptr<Cursor> Interpreter::RequireCursor(const CursorName& name) const {
  std::shared_ptr<Cursor> cursor = FindCursorOf(name);
  if (!cursor) Fail(name.name.starts_with('@') ? 16950 : 16916, {name.name});
  return cursor;
}

int Interpreter::CursorStatus(std::string_view kind, std::string_view name) const {
  constexpr int kMissing = -3;
  constexpr int kNotAllocated = -2;
  const bool isVariable = EqualNames(kind, "variable");
  const CursorList& cursors = EqualNames(kind, "global") ? cursors_ : running_->cursors;
  const auto found = FindCursor(cursors, name);
  if (found == cursors.end()) {
    const std::vector<std::string>& declared = running_->unit->cursors;
    const bool isDeclared = std::ranges::any_of(
        declared, [&](const std::string& variable) { return EqualNames(variable, name); });
    return isVariable && isDeclared ? kNotAllocated : kMissing;
  }
  const Cursor& cursor = **found;
  if (!cursor.isOpen) return -1;
  return cursor.statement->isCounted && cursor.rows.Count() == 0 ? 0 : 1;
}

void Interpreter::RunDeclareCursor(const DeclareCursorStatement& statement) {
  const std::string& name = statement.cursor.name;
  const bool isVariable = name.starts_with('@');
  CursorList& cursors = statement.isLocal || isVariable ? running_->cursors : cursors_;
  const auto existing = FindCursor(cursors, name);
  if (existing != cursors.end() && !isVariable) Fail(16915, {name});
  MakePlanner().CursorPlan(statement); // what is wrong with the query is said now
  auto cursor = std::make_shared<Cursor>();
  cursor->statement = &statement;
  cursor->unit = running_->unit->shared_from_this();
  cursor->declared.unit = running_->unit;
  cursor->declared.variables = running_->variables;
  cursor->declared.markers = running_->markers;
  if (existing != cursors.end()) cursors.erase(existing);
  cursors.push_back(std::move(cursor));
}

void Interpreter::OpenCursor(Cursor& cursor) {
  if (cursor.isOpen) Fail(16905, {});
  Plan& plan = compiler_.PlannerFor(*cursor.unit).CursorPlan(*cursor.statement);
  if (plan.callsFunctions) MakeFunctionsReady(plan);
  int number = 1;
  for (const ParameterRef& ref : plan.parameters) {
    const auto index = static_cast<size_t>(ref.index);
    switch (ref.kind) {
    case BoundExpr::Kind::Variable: plan.statement.Bind(number, cursor.declared.variables[index]); break;
    case BoundExpr::Kind::Marker: plan.statement.Bind(number, cursor.declared.markers[index]); break;
    default: plan.statement.BindCopy(number, GlobalDatum(static_cast<GlobalValue>(ref.index)));
    }
    ++number;
  }
  const StatementUse use(plan.statement);
  const auto width = static_cast<int>(plan.columns.size() + plan.changeable.size());
  cursor.rows.Clear();
  while (plan.statement.Step()) cursor.rows.Append(plan.statement, width);
  cursor.columns = plan.columns;
  cursor.changeable = plan.changeable;
  cursor.position = -1;
  cursor.isOpen = true;
  cursorRows_ = cursor.statement->isCounted ? cursor.rows.Count() : -1;
}

void Interpreter::RunCursor(const CursorStatement& statement) {
  const std::shared_ptr<Cursor> cursor = RequireCursor(statement.cursor);
  switch (statement.action) {
  case CursorAction::Open: OpenCursor(*cursor); break;
  case CursorAction::Close:
    if (!cursor->isOpen) Fail(16917, {});
    cursor->isOpen = false;
    cursor->rows.Clear();
    cursorRows_ = 0;
    break;
  case CursorAction::Deallocate:
    if (std::erase(running_->cursors, cursor) == 0) std::erase(cursors_, cursor);
    break;
  }
}

void Interpreter::RunFetch(const FetchStatement& statement) {
  const std::shared_ptr<Cursor> held = RequireCursor(statement.cursor);
  Cursor& cursor = *held;
  if (!cursor.isOpen) Fail(16917, {});
  if (statement.fetch != FetchKind::Next && !cursor.statement->scrolls) {
    constexpr const char* kNames[] = {"next", "prior", "first", "last", "absolute", "relative"};
    Fail(16911, {kNames[static_cast<size_t>(statement.fetch)]});
  }
  if (statement.fetch == FetchKind::Absolute && cursor.statement->isDynamic) Fail(16925, {"absolute"});
  if (!statement.into.empty() && statement.into.size() != cursor.columns.size()) Fail(16924, {});
  cursor.position = PositionOf(statement, cursor, statement.row ? EvaluateInteger(*statement.row) : 0);
  const bool hasRow = cursor.IsOnRow();
  fetchStatus_ = hasRow ? 0 : -1;
  rowCount_ = hasRow ? 1 : 0;
  if (statement.into.empty()) return SendFetched(cursor);
  if (!hasRow) return;
  const std::vector<VariableInfo>& variables = running_->unit->variables;
  const std::vector<int>& assigned = MakePlanner().FetchPlan(statement).assigned;
  for (size_t i = 0; i < assigned.size(); ++i) {
    const auto index = static_cast<size_t>(assigned[i]);
    const Type& from = cursor.columns[i].type;
    const Type& to = variables[index].type;
    if (from == to) {
      cursor.Read(i, running_->variables[index]);
      continue;
    }
    if (FindConversion(from.id, to.id) != Conversion::Implicit && from.id != to.id)
      Fail(16922, {TypeName(from.id), TypeName(to.id)});
    Datum value;
    cursor.Read(i, value);
    running_->variables[index] = Convert(value, from, to, ConvertMode::Cast);
  }
}

void Interpreter::SendFetched(const Cursor& cursor) {
  sink_->BeginRows(cursor.columns);
  if (cursor.IsOnRow()) {
    std::vector<Datum> row(cursor.columns.size());
    row_.clear();
    texts_.resize(row.size());
    for (size_t i = 0; i < row.size(); ++i) {
      cursor.Read(i, row[i]);
      row_.push_back(ValueOfDatum(row[i], cursor.columns[i].type, texts_[i]));
    }
    sink_->Row(row_);
  }
  sink_->EndRows(rowCount_);
}

void Interpreter::TakeCurrentRow(const CursorName& name, const TableInfo& target) {
  const std::shared_ptr<Cursor> cursor = RequireCursor(name);
  if (!cursor->isOpen) Fail(16917, {});
  if (cursor->statement->isReadOnly) Fail(16929, {});
  if (!cursor->IsOnRow()) Fail(16931, {});
  const auto found = std::ranges::find_if(
      cursor->changeable, [&](const TablePtr& table) { return table->SqlName() == target.SqlName(); });
  if (found == cursor->changeable.end()) Fail(16933, {});
  const auto index = static_cast<size_t>(found - cursor->changeable.begin());
  cursor->Read(cursor->columns.size() + index, currentRow_);
}

} // namespace tsql
