#include <algorithm>

#include "tsql/emit/Emitter.h"
#include "tsql/emit/SystemViewSql.h"
#include "tsql/functions/FunctionNames.h"

namespace tsql {
namespace {

// The column beside those of a recursive query that counts how deep it is: the server stops at 100.
constexpr const char* kDepth = "depth";

// Whether the parentheses in "a CROSS JOIN (b LEFT JOIN c)" can be left out. Then SQLite may put the tables
// in any order.
bool IsSpliceable(const BoundSource& source) {
  if (source.kind != BoundSource::Kind::Join) return true;
  if (source.join == JoinKind::Right || source.join == JoinKind::Full) return false;
  return IsSpliceable(*source.left);
}

bool HasAggregate(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Aggregate ||
         std::any_of(expr.args.begin(), expr.args.end(),
                     [](const BoundExprPtr& arg) { return HasAggregate(*arg); });
}

// To SQLite a query without GROUP BY is grouped only if one of its items has an aggregate. To the server one
// in HAVING or ORDER BY makes it grouped, and so does HAVING by itself.
bool LacksAggregate(const BoundSelect& select) {
  return select.grouped && select.groupBy.empty() &&
         std::none_of(select.items.begin(), select.items.end(),
                      [](const BoundItem& item) { return HasAggregate(*item.expr); });
}

} // namespace

void Emitter::EmitCommonName(int common) {
  Text("w");
  Number(common);
}

void Emitter::EmitLeaf(const BoundSource& source) {
  switch (source.kind) {
  case BoundSource::Kind::Table: Text(source.table->SqlName()); break;
  case BoundSource::Kind::System: Text("(" + SystemViewSql(*source.system) + ")"); break;
  case BoundSource::Kind::Common: EmitCommonName(source.common); break;
  default:
    Text("(");
    EmitQuery(*source.query);
    Text(")");
  }
  Text(" AS ");
  EmitAlias(source.id);
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
  EmitOrder(order);
  if (select.top) {
    Text(" LIMIT ");
    Emit(*select.top);
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
  EmitBody(member,
           std::string(", ") + names::kRecursion + "(" + AliasOf(common.own) + "." + kDepth + " + 1)");
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
}

void Emitter::EmitQuery(const BoundQuery& query, const std::string& extra) {
  EmitCommons(query.commons);
  EmitBody(query, extra);
}

} // namespace tsql
