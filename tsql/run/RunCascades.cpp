// The referential actions of foreign keys. They are carried out table by table, when the statement has
// changed its own rows: those that refer to them are staged and changed in one go, so that keys may move from
// row to row, and then what refers to those. No table is met twice on the way, for no key may make that
// possible.
#include <algorithm>
#include <utility>

#include "tsql/run/Interpreter.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

// A column of a foreign key: its position in the child, and that of the one which it refers to.
struct Pair {
  size_t own;
  size_t other;
};

std::vector<Pair> PairsOf(const ForeignKey& foreignKey) {
  const KeyInfo& key = *foreignKey.key;
  std::vector<Pair> pairs;
  for (size_t i = 0; i < key.columns.size(); ++i)
    pairs.push_back({static_cast<size_t>(key.columns[i]),
                     static_cast<size_t>(foreignKey.parent->FindColumn(key.referencedColumns[i]))});
  return pairs;
}

} // namespace

// The rows that refer to what was changed, with the values that the action gives them.
void Interpreter::ReadReferring(const ForeignKey& foreignKey, const FiredRows& changed, StagedRows& rows) {
  const TableInfo& child = *foreignKey.child;
  const std::vector<Pair> pairs = PairsOf(foreignKey);
  const bool isDeleted = changed.event == TriggerEvent::Delete;
  const ReferentialAction action = foreignKey.key->ActionOn(changed.event);
  std::vector<std::string> values;
  for (const ColumnInfo& column : child.columns) values.push_back("c." + QuoteName(column.name));
  const std::vector<std::string> old = values;
  std::string refers;
  std::string differs;
  for (const auto& [own, other] : pairs) {
    const ColumnInfo& column = child.columns[own];
    refers += (refers.empty() ? "" : " AND ") + old[own] + " = q." + StagedOldName(other);
    differs.append(differs.empty() ? "q." : " OR q.").append(StagedNewName(other));
    differs.append(" IS NOT q.").append(StagedOldName(other));
    if (action == ReferentialAction::SetNull) values[own] = "NULL";
    if (action == ReferentialAction::Cascade && !isDeleted) values[own] = "q." + StagedNewName(other);
    if (action != ReferentialAction::SetDefault) continue;
    values[own] = column.defaultText.empty() ? "NULL" : compiler_.CompileDefault(column);
    if (column.defaultText.empty()) continue;
    Plan plan;
    plan.dependencies = compiler_.DefaultDependencies(column.defaultText);
    MakeFunctionsReady(plan);
  }
  std::string sql = "SELECT c._rowid_";
  for (size_t i = 0; i < values.size(); ++i) sql += ", " + values[i] + ", " + old[i];
  sql += std::string(" FROM ") + kStagedRows + " AS q, " + child.SqlName() + " AS c WHERE " + refers;
  // What keeps its key is not changed for those that refer to it.
  if (!isDeleted) sql += " AND (" + differs + ")";
  const StagedUse use(context_, changed.rows);
  Plan plan = MakePlanner().PlanOnce({std::move(sql), {}});
  ReadRows(plan, rows);
  if (action != ReferentialAction::Cascade || isDeleted) return;
  // A text may be too long for the column that refers to it.
  for (const auto& [own, other] : pairs) {
    const Type& from = foreignKey.parent->columns[other].type;
    const Type& to = child.columns[own].type;
    if (from == to) continue;
    for (std::vector<Datum>& row : rows)
      row[1 + 2 * own] = Convert(row[1 + 2 * own], from, to, ConvertMode::Assign);
  }
}

void Interpreter::CascadeFrom(const TableInfo& parent, const FiredRows& changed,
                              std::deque<CascadedRows>& cascaded) {
  if (changed.rows.empty()) return;
  const TableInfo* const outer = target_;
  for (const ForeignKey& foreignKey : ActingKeys(parent, changed.event, changed.updated, catalog_)) {
    const TableInfo& child = *foreignKey.child;
    const std::vector<int>& columns = foreignKey.key->columns;
    target_ = &child; // which an error is about
    CascadedRows next{foreignKey.child, {}};
    const bool deletes = changed.event == TriggerEvent::Delete &&
                         foreignKey.key->ActionOn(changed.event) == ReferentialAction::Cascade;
    next.fired.event = deletes ? TriggerEvent::Delete : TriggerEvent::Update;
    next.fired.updated.resize(child.columns.size());
    for (const int column : columns) next.fired.updated[static_cast<size_t>(column)] = !deletes;
    ReadReferring(foreignKey, changed, next.fired.rows);
    // What the parent's change has made suspect is settled by the child's own.
    std::erase(context_.suspects, child.ConstraintKey(*foreignKey.key));
    if (next.fired.rows.empty()) continue;
    {
      const StagedUse use(context_, next.fired.rows);
      ChangeStaged(deletes ? Emitter::EmitStagedDelete(child) : Emitter::EmitStagedUpdate(child, columns));
    }
    if (!deletes) ReadComputed(child, next.fired.rows);
    cascaded.push_back(std::move(next));
    CascadeFrom(child, cascaded.back().fired, cascaded);
  }
  target_ = outer;
}

// The statement's own table is checked with the statement.
void Interpreter::Cascade(const TableInfo& target, const FiredRows& changed,
                          std::deque<CascadedRows>& cascaded) {
  if (!catalog_.HasReferentialActions()) return;
  CascadeFrom(target, changed, cascaded);
  for (const CascadedRows& made : cascaded)
    CheckForeignKeys(ForeignKeysOf(*made.table, catalog_), *made.table,
                     made.fired.event == TriggerEvent::Delete);
}

} // namespace tsql
