#include <algorithm>
#include <utility>

#include "tsql/emit/Emitter.h"
#include "tsql/emit/SystemViewSql.h"
#include "tsql/functions/FunctionNames.h"

namespace tsql {
namespace {

// The column beside those of a recursive query that counts how deep it is: the server stops at 100, or where
// the statement says.
constexpr const char* kDepth = "depth";

// Whether the parentheses in "a CROSS JOIN (b LEFT JOIN c)" can be left out. Then SQLite may put the tables
// in any order.
bool IsSpliceable(const BoundSource& source) {
  if (source.kind != BoundSource::Kind::Join) return true;
  if (source.join == JoinKind::Right || source.join == JoinKind::Full) return false;
  return IsSpliceable(*source.left);
}

bool HasAggregate(const BoundExpr& expr) {
  return (expr.kind == BoundExpr::Kind::Aggregate && !expr.over) ||
         std::any_of(expr.args.begin(), expr.args.end(),
                     [](const BoundExprPtr& arg) { return HasAggregate(*arg); });
}

// To SQLite a query without GROUP BY is grouped only if one of its items has an aggregate. To the server one
// in HAVING or ORDER BY makes it grouped, and so does HAVING by itself.
bool LacksAggregate(const BoundSelect& select) {
  return select.grouped && (select.groupBy.empty() || !select.groupingSets.empty()) &&
         std::none_of(select.items.begin(), select.items.end(),
                      [](const BoundItem& item) { return HasAggregate(*item.expr); });
}

} // namespace

void Emitter::EmitCommonName(int common) {
  Text("w");
  Number(common);
}

void Emitter::EmitLeaf(const BoundSource& source) {
  // SQLite has no joins of which one side sees the other, but arguments of functions in FROM do.
  if (source.applied) EmitPacked(source);
  switch (source.kind) {
  case BoundSource::Kind::Table: Text(source.table->SqlName()); break;
  case BoundSource::Kind::System: Text("(" + SystemViewSql(*source.system) + ")"); break;
  case BoundSource::Kind::Common: EmitCommonName(source.common); break;
  case BoundSource::Kind::Values: EmitValues(source.rows); break;
  case BoundSource::Kind::Staged: Text(kStagedRows); break;
  case BoundSource::Kind::Merged:
    EmitColumnsOf(source);
    Text(kMergedRows);
    Text(")");
    break;
  case BoundSource::Kind::Fired:
    // It has as many columns as a table may have, and SQLite takes all of them into some joins.
    EmitColumnsOf(source);
    Text(source.isOld ? kDeletedRows : kInsertedRows);
    Text(")");
    break;
  case BoundSource::Kind::Function:
    // With a LIMIT the query stays one by itself, so that the function is called once and not for each row of
    // a join.
    EmitColumnsOf(source);
    Text("temp."); // where no table of a user has such a name
    EmitUserCall(names::kFunctionRows, source.function, source.args);
    Text(" LIMIT -1)");
    break;
  case BoundSource::Kind::Split:
    Text("(SELECT " + ResultColumnName(0) + " FROM temp.");
    Open(names::kRows);
    EmitCall(names::kSplit, *source.args[0], *source.args[1]);
    Text("))");
    break;
  default:
    Text("(");
    EmitQuery(*source.query);
    Text(")");
  }
  if (source.applied) Text("))");
  Text(" AS ");
  EmitAlias(source.id);
}

void Emitter::EmitColumnsOf(const BoundSource& source) {
  Text("(SELECT ");
  for (size_t i = 0; i < source.columns.size(); ++i) Text((i > 0 ? ", " : "") + ResultColumnName(i));
  Text(" FROM ");
}

// As far as to the table whose rows are packed into one value and unpacked again.
void Emitter::EmitPacked(const BoundSource& source) {
  size_t count = 0;
  switch (source.kind) {
  case BoundSource::Kind::Values: count = source.rows.front().size(); break;
  case BoundSource::Kind::Function:
  case BoundSource::Kind::Split: count = source.columns.size(); break;
  default: count = source.query->columns.size();
  }
  Text("temp.");
  Open(names::kRows);
  Text("(SELECT ");
  Open(names::kPack);
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) Text(", ");
    Text(ResultColumnName(i));
  }
  Text(") FROM ");
}

void Emitter::EmitValues(const std::vector<std::vector<BoundExprPtr>>& rows) {
  // SQLite names the columns of VALUES by itself, but not always in the same way.
  Text("(WITH v(");
  for (size_t i = 0; i < rows.front().size(); ++i) Text((i > 0 ? ", " : "") + ResultColumnName(i));
  Text(") AS (VALUES ");
  for (size_t row = 0; row < rows.size(); ++row) {
    Text(row > 0 ? ", (" : "(");
    for (size_t i = 0; i < rows[row].size(); ++i) {
      if (i > 0) Text(", ");
      Emit(*rows[row][i]);
    }
    Text(")");
  }
  Text(") SELECT * FROM v)");
}

void Emitter::EmitSource(const BoundSource& source) {
  if (source.kind != BoundSource::Kind::Join) {
    EmitLeaf(source);
    return;
  }
  EmitSource(*source.left);
  switch (source.join) {
  case JoinKind::Left: Text(" LEFT JOIN "); break;
  case JoinKind::Right: Text(" RIGHT JOIN "); break;
  case JoinKind::Full: Text(" FULL JOIN "); break;
  default: Text(" JOIN "); // with CROSS JOIN, SQLite would not change the order of the tables
  }
  const bool nested = source.right->kind == BoundSource::Kind::Join;
  const bool splice = nested && source.join == JoinKind::Cross && IsSpliceable(*source.right);
  if (nested && !splice) Text("(");
  EmitSource(*source.right);
  if (nested && !splice) Text(")");
  if (source.on) {
    Text(" ON ");
    Emit(*source.on);
  }
}

void Emitter::EmitSelect(const BoundSelect& select, const std::vector<BoundOrder>& order,
                         const std::string& extra) {
  if (select.topPercent || select.topTies) return EmitPlacedSelect(select, order, extra);
  EmitRows(select, extra);
  EmitOrder(order);
  if (!select.top) return;
  Text(" LIMIT ");
  Emit(*select.top);
}

// TOP PERCENT must know the number of rows first, and WITH TIES which of them are equal to the last one. So
// each row gets its place in the order, and then those are taken whose place is not beyond the limit.
void Emitter::EmitPlacedSelect(const BoundSelect& select, const std::vector<BoundOrder>& order,
                               const std::string& extra) {
  constexpr const char* kPlace = "place";
  const std::string saved = std::exchange(sql_, {});
  std::string keys;
  for (size_t i = 0; i < order.size(); ++i) {
    keys += (i == 0 ? "ORDER BY " : ", ") +
            (order[i].ordinal >= 0 ? ResultColumnName(static_cast<size_t>(order[i].ordinal))
                                   : "k" + std::to_string(i)) +
            (order[i].descending ? " DESC" : "");
    if (order[i].ordinal >= 0) continue;
    Text(", ");
    EmitCollated(*order[i].expr);
    Text(" AS k" + std::to_string(i));
  }
  const std::string keyItems = std::exchange(sql_, saved);
  for (size_t i = 0; i < select.items.size(); ++i) Text((i == 0 ? "SELECT " : ", ") + ResultColumnName(i));
  Text(extra + " FROM (SELECT *, " + (select.topTies ? "rank" : "row_number") + "() OVER (" + keys + ") AS " +
       kPlace + ", count(*) OVER () AS total FROM (");
  EmitRows(select, keyItems);
  Text(std::string(")) WHERE ") + kPlace + " <= ");
  if (select.topPercent) {
    Open(names::kPercentOf);
    Emit(*select.top);
    Text(", total)");
  } else {
    Emit(*select.top);
  }
  Text(std::string(" ORDER BY ") + kPlace);
}

// A UNION of the groupings. SQLite allows a UNION only so many branches, so that many are a UNION of several.
void Emitter::EmitGroupingSets(const BoundSelect& select) {
  constexpr size_t kMostBranches = 64;
  const std::vector<uint32_t>& sets = select.groupingSets;
  const bool nests = sets.size() > kMostBranches;
  for (size_t i = 0; i < sets.size(); ++i) {
    const bool opens = nests && i % kMostBranches == 0;
    if (opens && i > 0) Text(")");
    if (i > 0) Text(" UNION ALL ");
    if (opens) Text("SELECT * FROM (");
    EmitGroupingSet(select, sets[i]);
  }
  if (nests) Text(")");
}

void Emitter::EmitGroupingSet(const BoundSelect& select, uint32_t set) {
  const auto has = [set](size_t key) { return (set >> key & 1) != 0; };
  // Without GROUP BY it needs an aggregate to be one group.
  const bool completes = set == 0 && LacksAggregate(select);
  for (size_t i = 0; i < select.items.size(); ++i) {
    const BoundExpr& expr = *select.items[i].expr;
    Text(i == 0 ? "SELECT " : ", ");
    if (completes && i == 0) Text("CASE WHEN count(*) >= 0 THEN ");
    if (i < select.groupBy.size() && !has(i)) {
      Text("NULL");
    } else if (expr.kind == BoundExpr::Kind::Grouping) {
      int64_t leftOut = 0;
      for (const BoundExprPtr& key : expr.args)
        leftOut = leftOut * 2 + (has(static_cast<size_t>(key->constant.integer)) ? 0 : 1);
      Number(leftOut);
    } else {
      EmitCollated(expr);
    }
    if (completes && i == 0) Text(" END");
    Text(" AS " + ResultColumnName(i));
  }
  Text(" FROM ");
  EmitSource(*select.from);
  bool isFirst = true;
  for (size_t i = 0; i < select.groupBy.size(); ++i) {
    if (!has(i)) continue;
    Text(std::exchange(isFirst, false) ? " GROUP BY " : ", ");
    EmitCollated(*select.groupBy[i]);
  }
}

void Emitter::EmitRows(const BoundSelect& select, const std::string& extra) {
  if (!select.groupingSets.empty()) return EmitGroupingSets(select);
  Text(select.distinct ? "SELECT DISTINCT " : "SELECT ");
  const bool lacksAggregate = LacksAggregate(select);
  for (size_t i = 0; i < select.items.size(); ++i) {
    if (i > 0) Text(", ");
    const bool completes = lacksAggregate && i == 0;
    if (completes) Text("CASE WHEN count(*) >= 0 THEN ");
    EmitCollated(*select.items[i].expr);
    if (completes) Text(" END");
    Text(" AS " + ResultColumnName(i));
  }
  Text(extra);
  if (select.from) {
    Text(" FROM ");
    EmitSource(*select.from);
  }
  if (select.where) {
    Text(" WHERE ");
    Emit(*select.where);
  }
  for (size_t i = 0; i < select.groupBy.size(); ++i) {
    Text(i == 0 ? " GROUP BY " : ", ");
    EmitCollated(*select.groupBy[i]);
  }
  if (select.having) {
    Text(" HAVING ");
    Emit(*select.having);
  }
}

void Emitter::EmitOrder(const std::vector<BoundOrder>& order) {
  for (size_t i = 0; i < order.size(); ++i) {
    Text(i == 0 ? " ORDER BY " : ", ");
    if (order[i].ordinal >= 0) {
      Number(order[i].ordinal + 1);
    } else {
      EmitCollated(*order[i].expr);
    }
    if (order[i].descending) Text(" DESC");
  }
}

void Emitter::EmitCommons(const std::vector<BoundCommon>& commons) {
  for (size_t i = 0; i < commons.size(); ++i) {
    const BoundCommon& common = commons[i];
    Text(i == 0 ? "WITH RECURSIVE " : ", ");
    EmitCommonName(common.id);
    if (common.recursive) {
      EmitRecursive(common);
      continue;
    }
    Text(" AS (");
    EmitQuery(*common.query);
    Text(")");
  }
  if (!commons.empty()) Text(" ");
}

void Emitter::EmitRecursive(const BoundCommon& common) {
  const BoundQuery& member = *common.query->right;
  Text("(");
  for (size_t i = 0; i < common.query->columns.size(); ++i) Text(ResultColumnName(i) + ", ");
  Text(std::string(kDepth) + ") AS (");
  EmitBranch(*common.query->left, ", 0", false);
  Text(" UNION ALL ");
  EmitBody(member, std::string(", ") + names::kRecursion + "(" + AliasOf(common.own) + "." + kDepth +
                       " + 1, " + std::to_string(common.maxRecursion) + ")");
  Text(")");
}

void Emitter::EmitBranch(const BoundQuery& query, const std::string& extra, bool isRight) {
  // As a branch of a UNION, SQLite accepts neither LIMIT nor, on the right, another UNION.
  const bool wrap = query.op == SetOp::None ? query.select->top != nullptr : isRight;
  if (wrap) Text("SELECT * FROM (");
  EmitBody(query, extra);
  if (wrap) Text(")");
}

void Emitter::EmitBody(const BoundQuery& query, const std::string& extra) {
  if (query.op == SetOp::None) {
    EmitSelect(*query.select, query.orderBy, extra);
    EmitOffset(query);
    return;
  }
  EmitBranch(*query.left, extra, false);
  switch (query.op) {
  case SetOp::UnionAll: Text(" UNION ALL "); break;
  case SetOp::Except: Text(" EXCEPT "); break;
  case SetOp::Intersect: Text(" INTERSECT "); break;
  default: Text(" UNION ");
  }
  EmitBranch(*query.right, extra, true);
  EmitOrder(query.orderBy);
  EmitOffset(query);
}

void Emitter::EmitOffset(const BoundQuery& query) {
  if (!query.offset) return;
  Text(" LIMIT ");
  if (query.fetch) {
    Emit(*query.fetch);
  } else {
    Text("-1"); // all of them
  }
  Text(" OFFSET ");
  Emit(*query.offset);
}

void Emitter::EmitQuery(const BoundQuery& query, const std::string& extra) {
  EmitCommons(query.commons);
  EmitBody(query, extra);
}

} // namespace tsql
