// Changes whose rows are staged: those with OUTPUT, and updates that move keys from row to row.
#include <algorithm>

#include "tsql/emit/Emitter.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

// The new values of the columns that are written.
std::string NewList(const TableInfo& table) {
  std::string columns;
  for (size_t i = 0; i < table.columns.size(); ++i)
    if (!table.columns[i].IsComputed()) columns += (columns.empty() ? "" : ", ") + StagedNewName(i);
  return columns;
}

std::string DeleteStaged(const TableInfo& table) {
  return "DELETE FROM " + table.SqlName() + " WHERE _rowid_ IN (SELECT " + StagedRowName() + " FROM " +
         kStagedRows + ")";
}

} // namespace

EmittedSql Emitter::EmitReturningInsert(const BoundInsert& insert) {
  EmitInsertion(insert);
  Text(" RETURNING _rowid_");
  for (const ColumnInfo& column : insert.table->columns) Text(", " + QuoteName(column.name) + ", NULL");
  return Finish();
}

EmittedSql Emitter::EmitRowsOf(const BoundInsert& insert) {
  if (!insert.columns.empty()) {
    Text("WITH given(");
    for (size_t i = 0; i < insert.columns.size(); ++i) Text((i > 0 ? ", " : "") + ResultColumnName(i));
    Text(") AS (");
    EmitInsertedValues(insert);
    Text(") ");
  }
  Text("SELECT NULL");
  for (size_t i = 0; i < insert.table->columns.size(); ++i) {
    const auto given = std::ranges::find(insert.columns, static_cast<int>(i));
    if (given != insert.columns.end()) {
      Text(", " + ResultColumnName(static_cast<size_t>(given - insert.columns.begin())));
    } else {
      Text(insert.table->columns[i].identity ? ", 0" : ", NULL");
    }
    Text(", NULL");
  }
  if (!insert.columns.empty()) Text(" FROM given");
  return Finish();
}

EmittedChange Emitter::EmitStaged(const BoundUpdate& update) {
  std::vector<int> columns;
  for (const auto& [column, value] : update.assignments) columns.push_back(column);
  EmittedChange emitted = EmitStagedUpdate(*update.table, columns);
  emitted.rows = Emitter().EmitRowsOf(update, &update);
  return emitted;
}

EmittedChange Emitter::EmitStagedUpdate(const TableInfo& table, const std::vector<int>& columns) {
  EmittedChange emitted;
  std::string assignments;
  for (const int column : columns) {
    const auto index = static_cast<size_t>(column);
    assignments += (assignments.empty() ? "" : ", ") + QuoteName(table.columns[index].name) + " = q." +
                   StagedNewName(index);
  }
  emitted.change = "UPDATE " + table.SqlName() + " AS u SET " + assignments + " FROM " + kStagedRows +
                   " AS q WHERE u._rowid_ = q." + StagedRowName();
  // Where no column is the rowid, the rows keep the rowid that they had.
  const bool hasOwn = table.rowidColumn >= 0;
  emitted.replacements = {DeleteStaged(table), "INSERT INTO " + table.SqlName() + "(" +
                                                   (hasOwn ? "" : "_rowid_, ") + table.StoredColumns() +
                                                   ") SELECT " + (hasOwn ? "" : StagedRowName() + ", ") +
                                                   NewList(table) + " FROM " + kStagedRows};
  return emitted;
}

EmittedChange Emitter::EmitStaged(const BoundDelete& statement) {
  EmittedChange emitted = EmitStagedDelete(*statement.table);
  emitted.rows = Emitter().EmitRowsOf(statement, nullptr);
  return emitted;
}

EmittedChange Emitter::EmitStagedDelete(const TableInfo& table) {
  EmittedChange emitted;
  emitted.change = DeleteStaged(table);
  return emitted;
}

// The rows that change, the new values of an update among them.
template <typename Change>
EmittedSql Emitter::EmitRowsOf(const Change& change, const BoundUpdate* update) {
  const bool isView = change.table->isView;
  if (update != nullptr) assigned_ = update->variables;
  EmitCommons(change.commons);
  Text("SELECT ");
  if (isView) {
    Text("NULL");
  } else {
    EmitAlias(change.target);
    Text("._rowid_");
  }
  for (size_t i = 0; i < change.table->columns.size(); ++i) {
    const auto emitOld = [&] {
      EmitAlias(change.target);
      Text("." + (isView ? ResultColumnName(i) : QuoteName(change.table->columns[i].name)));
    };
    Text(", ");
    const BoundExpr* assigned = nullptr;
    if (update != nullptr) {
      for (const auto& [column, value] : update->assignments)
        if (column == static_cast<int>(i)) assigned = value.get();
    }
    if (assigned != nullptr) {
      Emit(*assigned);
    } else {
      emitOld();
    }
    Text(", ");
    emitOld();
  }
  if (change.output) {
    for (const BoundExprPtr& other : change.output->others) {
      Text(", ");
      Emit(*other);
    }
  }
  EmitChangedRows(change);
  // A row that a join finds several times is changed once, and TOP counts it once. Those of a view have no
  // number, and are not joined.
  if (!isView) Text(" GROUP BY 1");
  if (change.top) EmitChangeLimit(change);
  return Finish();
}

EmittedSql Emitter::EmitOutputRows(const BoundOutput& output) {
  if (output.into) return EmitInsert(*output.into);
  return EmitStatement(*output.query);
}

} // namespace tsql
