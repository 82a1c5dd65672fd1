#include <algorithm>
#include <utility>

#include "tsql/emit/Emitter.h"
#include "tsql/functions/FunctionNames.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

bool IsInnerOnly(const BoundSource& source) {
  if (source.kind != BoundSource::Kind::Join) return true;
  const bool inner = source.join == JoinKind::Inner || source.join == JoinKind::Cross;
  return inner && IsInnerOnly(*source.left) && IsInnerOnly(*source.right);
}

void CollectLeaves(const BoundSource& source, std::vector<const BoundSource*>& leaves,
                   std::vector<const BoundExpr*>& conditions) {
  if (source.kind != BoundSource::Kind::Join) {
    leaves.push_back(&source);
    return;
  }
  CollectLeaves(*source.left, leaves, conditions);
  CollectLeaves(*source.right, leaves, conditions);
  if (source.on) conditions.push_back(source.on.get());
}

} // namespace

std::string Emitter::EmitExtras(const std::vector<BoundExprPtr>& extras) {
  const std::string saved = std::exchange(sql_, {});
  for (const BoundExprPtr& extra : extras) {
    Text(", ");
    Emit(*extra);
  }
  std::string text = std::exchange(sql_, saved);
  return text;
}

EmittedSql Emitter::EmitInsert(const BoundInsert& insert) {
  EmitInsertion(insert);
  return Finish();
}

void Emitter::EmitInsertion(const BoundInsert& insert) {
  Text("INSERT INTO " + insert.table->SqlName());
  if (insert.columns.empty()) {
    Text(" DEFAULT VALUES");
    return;
  }
  Text("(");
  for (size_t i = 0; i < insert.columns.size(); ++i) {
    if (i > 0) Text(", ");
    Text(QuoteName(insert.table->columns[static_cast<size_t>(insert.columns[i])].name));
  }
  Text(") ");
  EmitInsertedValues(insert);
}

// The values of its columns, as a query or rows.
void Emitter::EmitInsertedValues(const BoundInsert& insert) {
  if (insert.query) {
    const std::string extras = EmitExtras(insert.extras);
    if (insert.wrapper < 0) {
      EmitQuery(*insert.query, extras);
      return;
    }
    Text("SELECT ");
    for (size_t i = 0; i < insert.conversions.size(); ++i) {
      if (i > 0) Text(", ");
      Emit(*insert.conversions[i]);
    }
    Text(extras + " FROM (");
    EmitQuery(*insert.query);
    Text(") AS ");
    EmitAlias(insert.wrapper);
    if (insert.limit) {
      Text(" LIMIT ");
      Emit(*insert.limit);
    }
    return;
  }
  Text(insert.limit ? "SELECT * FROM (VALUES " : "VALUES ");
  for (size_t row = 0; row < insert.rows.size(); ++row) {
    Text(row > 0 ? ", (" : "(");
    for (size_t i = 0; i < insert.rows[row].size(); ++i) {
      if (i > 0) Text(", ");
      Emit(*insert.rows[row][i]);
    }
    Text(")");
  }
  if (!insert.limit) return;
  Text(") LIMIT ");
  Emit(*insert.limit);
}

void Emitter::EmitAssignments(const BoundUpdate& update) {
  Text(" SET ");
  for (size_t i = 0; i < update.assignments.size(); ++i) {
    if (i > 0) Text(", ");
    Text(QuoteName(update.table->columns[static_cast<size_t>(update.assignments[i].first)].name));
    Text(" = ");
    Emit(*update.assignments[i].second);
  }
}

// The sources of the change, and the condition of its rows.
void Emitter::EmitChangedRows(const BoundChange& change) {
  Text(" FROM ");
  if (change.from) {
    EmitSource(*change.from);
  } else {
    Text(change.table->SqlName() + " AS ");
    EmitAlias(change.target);
  }
  if (change.where) {
    Text(" WHERE ");
    Emit(*change.where);
  }
}

// How many rows TOP allows; a share is one of the rows that the change would have without it.
void Emitter::EmitChangeLimit(const BoundChange& change) {
  Text(" LIMIT ");
  if (!change.topPercent) {
    Emit(*change.top);
    return;
  }
  if (change.limit) {
    Text("min(");
    Emit(*change.limit);
    Text(", ");
  }
  Open(names::kPercentOf);
  Emit(*change.top);
  Text(", (SELECT count(");
  if (change.table->isView) {
    Text("*");
  } else {
    Text("DISTINCT ");
    EmitAlias(change.target);
    Text("._rowid_");
  }
  Text(")");
  EmitChangedRows(change);
  Text("))");
  if (change.limit) Text(")");
}

void Emitter::EmitTargetRows(const BoundChange& change) {
  // TOP counts rows of the target, however often the join finds them.
  Text(change.from && change.top ? "SELECT DISTINCT " : "SELECT ");
  EmitAlias(change.target);
  Text("._rowid_");
  EmitChangedRows(change);
  if (change.top) EmitChangeLimit(change);
}

bool Emitter::EmitUpdateDirect(const BoundUpdate& update) {
  std::vector<const BoundSource*> leaves;
  std::vector<const BoundExpr*> conditions;
  if (update.from) {
    if (update.top || !IsInnerOnly(*update.from)) return false;
    CollectLeaves(*update.from, leaves, conditions);
    std::erase_if(leaves, [&](const BoundSource* leaf) { return leaf->id == update.target; });
  }
  if (update.where) conditions.push_back(update.where.get());
  Text("UPDATE " + update.table->SqlName() + " AS ");
  EmitAlias(update.target);
  EmitAssignments(update);
  for (size_t i = 0; i < leaves.size(); ++i) {
    Text(i == 0 ? " FROM " : " JOIN ");
    EmitLeaf(*leaves[i]);
  }
  if (update.top) {
    Text(" WHERE _rowid_ IN (");
    EmitTargetRows(update);
    Text(")");
    return true;
  }
  for (size_t i = 0; i < conditions.size(); ++i) {
    Text(i == 0 ? " WHERE " : " AND ");
    Emit(*conditions[i]);
  }
  return true;
}

void Emitter::EmitUpdateFromTree(const BoundUpdate& update) {
  // SQLite's UPDATE cannot join the target outside: a subquery gives each of its rows with the new values.
  Text("UPDATE " + update.table->SqlName() + " AS u SET ");
  for (size_t i = 0; i < update.assignments.size(); ++i) {
    if (i > 0) Text(", ");
    Text(QuoteName(update.table->columns[static_cast<size_t>(update.assignments[i].first)].name));
    Text(" = q.v" + std::to_string(i));
  }
  Text(" FROM (SELECT ");
  EmitAlias(update.target);
  Text("._rowid_ AS r");
  for (size_t i = 0; i < update.assignments.size(); ++i) {
    Text(", ");
    Emit(*update.assignments[i].second);
    Text(" AS v" + std::to_string(i));
  }
  EmitChangedRows(update);
  if (update.top) {
    Text(" GROUP BY r");
    EmitChangeLimit(update);
  }
  Text(") AS q WHERE u._rowid_ = q.r");
}

EmittedSql Emitter::EmitUpdate(const BoundUpdate& update) {
  assigned_ = update.variables;
  EmitCommons(update.commons);
  if (!EmitUpdateDirect(update)) EmitUpdateFromTree(update);
  return Finish();
}

EmittedSql Emitter::EmitDelete(const BoundDelete& statement) {
  EmitCommons(statement.commons);
  Text("DELETE FROM " + statement.table->SqlName());
  if (statement.from || statement.top) {
    Text(" WHERE _rowid_ IN (");
    EmitTargetRows(statement);
    Text(")");
    return Finish();
  }
  Text(" AS ");
  EmitAlias(statement.target);
  if (statement.where) {
    Text(" WHERE ");
    Emit(*statement.where);
  }
  return Finish();
}

} // namespace tsql
