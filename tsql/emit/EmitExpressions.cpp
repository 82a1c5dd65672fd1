#include <array>

#include "tsql/emit/Emitter.h"
#include "tsql/functions/FunctionNames.h"
#include "tsql/values/Quotation.h"

namespace tsql {
namespace {

// Whether the query can give no more than one row.
bool IsSingleRow(const BoundQuery& query) {
  if (query.op != SetOp::None) return false;
  const BoundSelect& select = *query.select;
  if (!select.from || (select.grouped && select.groupBy.empty())) return true;
  if (select.topPercent || select.topTies) return false;
  return select.top && select.top->kind == BoundExpr::Kind::Constant && select.top->constant.integer <= 1;
}

const char* CompareSymbol(CompareOp op) {
  constexpr std::array<const char*, 6> kSymbols = {" = ", " <> ", " < ", " <= ", " > ", " >= "};
  return kSymbols[static_cast<size_t>(op)];
}

} // namespace

void Emitter::Emit(const BoundExpr& expr) {
  switch (expr.kind) {
  case BoundExpr::Kind::Constant: EmitConstant(expr.constant); break;
  case BoundExpr::Kind::Column: EmitColumn(expr); break;
  case BoundExpr::Kind::Variable:
  case BoundExpr::Kind::Marker:
  case BoundExpr::Kind::Global: EmitParameter(expr); break;
  case BoundExpr::Kind::Cast: EmitCast(expr); break;
  case BoundExpr::Kind::TryCast: EmitTryCast(expr); break;
  case BoundExpr::Kind::Store: EmitStore(expr); break;
  case BoundExpr::Kind::Negate:
  case BoundExpr::Kind::BitNot: EmitNegation(expr); break;
  case BoundExpr::Kind::Arithmetic: EmitArithmetic(expr); break;
  case BoundExpr::Kind::Compare: EmitComparison(expr); break;
  case BoundExpr::Kind::And: EmitLogical(expr, " AND "); break;
  case BoundExpr::Kind::Or: EmitLogical(expr, " OR "); break;
  case BoundExpr::Kind::Not:
    Text("(NOT ");
    Emit(*expr.args[0]);
    Text(")");
    break;
  case BoundExpr::Kind::IsNull:
    Text("(");
    Emit(*expr.args[0]);
    Text(expr.negated ? " IS NOT NULL)" : " IS NULL)");
    break;
  case BoundExpr::Kind::Like: EmitLike(expr); break;
  case BoundExpr::Kind::Between:
    Text("(");
    EmitComparable(*expr.args[0]);
    EmitCollationBeside(expr);
    Text(expr.negated ? " NOT BETWEEN " : " BETWEEN ");
    EmitComparable(*expr.args[1]);
    Text(" AND ");
    EmitComparable(*expr.args[2]);
    Text(")");
    break;
  case BoundExpr::Kind::In:
  case BoundExpr::Kind::InQuery: EmitIn(expr); break;
  case BoundExpr::Kind::Quantified: EmitQuantified(expr); break;
  case BoundExpr::Kind::Exists:
    Text("EXISTS (");
    EmitQuery(*expr.query);
    Text(")");
    break;
  case BoundExpr::Kind::Subquery: EmitSubquery(expr); break;
  case BoundExpr::Kind::Case: EmitCase(expr); break;
  case BoundExpr::Kind::Function: EmitFunction(expr); break;
  case BoundExpr::Kind::UserFunction: EmitUserCall(names::kCallFunction, expr.name, expr.args); break;
  case BoundExpr::Kind::Aggregate: EmitAggregate(expr); break;
  case BoundExpr::Kind::Window: EmitWindowFunction(expr); break;
  case BoundExpr::Kind::Grouping: Text("0"); break; // a plain GROUP BY leaves no key out
  }
}

void Emitter::EmitColumn(const BoundExpr& expr) {
  EmitAlias(expr.source);
  if (expr.source >= 0) Text(".");
  Text(QuoteName(expr.name));
}

void Emitter::EmitComparison(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  Text("(");
  EmitComparable(left);
  // Where SQLite knows the collation of a column, it must not find another one.
  const bool isKnown = (left.baseColumn || right.baseColumn) && !HasCollation(left) && !HasCollation(right);
  if (IsText(left.type) && !isKnown) EmitCollation(left.collation);
  if (expr.nullsEqual) {
    Text(expr.compare == CompareOp::Equal ? " IS " : " IS NOT ");
  } else {
    Text(CompareSymbol(expr.compare));
  }
  EmitComparable(right);
  Text(")");
}

// One side of a comparison. Of two binary values the shorter one counts as if zeros followed it.
void Emitter::EmitComparable(const BoundExpr& expr) {
  const bool mayDiffer = expr.type.id == TypeId::VarBinary;
  if (mayDiffer) Open(names::kBinaryKey);
  Emit(expr);
  if (mayDiffer) Text(")");
}

void Emitter::EmitLogical(const BoundExpr& expr, const char* op) {
  EmitBinary(*expr.args[0], op, *expr.args[1]);
}

void Emitter::EmitLike(const BoundExpr& expr) {
  if (expr.negated) Text("(NOT ");
  // Trailing blanks of the text do not count unless it or the pattern is Unicode.
  const bool isUnicode = IsUnicode(expr.args[0]->type.id) || IsUnicode(expr.args[1]->type.id);
  const CollationId collation = expr.args[0]->collation;
  if (collation == CollationId::Default) {
    Open(isUnicode ? names::kLike : names::kLikePadded);
  } else {
    Open(names::kLikeCollated);
    Number(static_cast<int64_t>(collation));
    Text(isUnicode ? ", 0, " : ", 1, ");
  }
  for (size_t i = 0; i < expr.args.size(); ++i) {
    if (i > 0) Text(", ");
    Emit(*expr.args[i]);
  }
  Text(expr.negated ? "))" : ")");
}

void Emitter::EmitIn(const BoundExpr& expr) {
  Text("(");
  const auto emitSide = [&](const BoundExpr& side) { return expr.query ? Emit(side) : EmitComparable(side); };
  emitSide(*expr.args[0]);
  EmitCollationOf(*expr.args[0]);
  Text(expr.negated ? " NOT IN (" : " IN (");
  if (expr.query) {
    EmitQuery(*expr.query);
  } else {
    for (size_t i = 1; i < expr.args.size(); ++i) {
      if (i > 1) Text(", ");
      emitSide(*expr.args[i]);
    }
  }
  Text("))");
}

// One row decides where it is known to; else the result is unknown if it is so of any row. Without rows ALL
// is true, and ANY is not.
void Emitter::EmitQuantified(const BoundExpr& expr) {
  Text(expr.negated ? "(SELECT CASE WHEN min(p) = 0 THEN 0" : "(SELECT CASE WHEN max(p) = 1 THEN 1");
  Text(" WHEN count(*) > count(p) THEN NULL ELSE ");
  Text(expr.negated ? "1" : "0");
  Text(" END FROM (SELECT ");
  EmitComparison(expr);
  Text(" AS p FROM (");
  EmitQuery(*expr.query);
  Text(") AS ");
  EmitAlias(expr.source);
  Text("))");
}

void Emitter::EmitSubquery(const BoundExpr& expr) {
  if (IsSingleRow(*expr.query)) {
    Text("(");
    EmitQuery(*expr.query);
    Text(")");
    return;
  }
  // Of several rows SQLite would take the first; the server refuses them.
  Text("(SELECT ");
  Open(names::kSingle);
  Text(ResultColumnName(0) + ") FROM (");
  EmitQuery(*expr.query);
  Text("))");
}

void Emitter::EmitUserCall(const char* call, const std::string& name, const std::vector<BoundExprPtr>& args) {
  Open(call);
  Text(QuoteText(name));
  for (const BoundExprPtr& arg : args) {
    Text(", ");
    Emit(*arg);
  }
  Text(")");
}

void Emitter::EmitCase(const BoundExpr& expr) {
  Text("CASE");
  size_t at = 0;
  if (expr.hasOperand) {
    Text(" ");
    EmitComparable(*expr.args[at++]);
    EmitCollationBeside(expr);
  }
  const size_t pairsEnd = expr.args.size() - (expr.hasElse ? 1 : 0);
  for (; at < pairsEnd; at += 2) {
    Text(" WHEN ");
    EmitComparable(*expr.args[at]);
    Text(" THEN ");
    Emit(*expr.args[at + 1]);
  }
  if (expr.hasElse) {
    Text(" ELSE ");
    Emit(*expr.args.back());
  }
  Text(" END");
}

} // namespace tsql
