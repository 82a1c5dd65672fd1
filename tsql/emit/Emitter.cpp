#include "tsql/emit/Emitter.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "tsql/functions/FunctionNames.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/Quotation.h"

namespace tsql {

// ---- whole statements

EmittedSql Emitter::EmitStatement(const BoundQuery& query) {
  if (query.op == SetOp::None)
    for (const BoundItem& item : query.select->items)
      if (item.variable >= 0) assigned_.push_back(item.variable);
  EmitQuery(query);
  return Finish();
}

EmittedSql Emitter::EmitValue(const BoundExpr& expr) {
  Text("SELECT ");
  Emit(expr);
  return Finish();
}

EmittedSql Emitter::EmitCondition(const BoundExpr& expr) {
  Text("SELECT 1 WHERE ");
  Emit(expr);
  return Finish();
}

std::string Emitter::EmitExpression(const BoundExpr& expr) {
  Emit(expr);
  return Finish().sql;
}

// ---- what all parts use

EmittedSql Emitter::Finish() {
  return {std::move(sql_), std::move(parameters_)};
}

void Emitter::EmitBinary(const BoundExpr& left, const char* op, const BoundExpr& right) {
  Text("(");
  Emit(left);
  Text(op);
  Emit(right);
  Text(")");
}

void Emitter::EmitCall(std::string_view name, const BoundExpr& left, const BoundExpr& right) {
  Open(name);
  Emit(left);
  Text(", ");
  Emit(right);
  Text(")");
}

void Emitter::EmitAlias(int source) {
  if (source >= 0) Text(AliasOf(source));
}

std::string Emitter::AliasOf(int source) {
  return "s" + std::to_string(source);
}

void Emitter::EmitCollation(CollationId collation) {
  Text(" COLLATE ");
  Text(storage::CollationOf(collation));
}

void Emitter::EmitParameter(const BoundExpr& expr) {
  const bool isAssigned = expr.kind == BoundExpr::Kind::Variable &&
                          std::find(assigned_.begin(), assigned_.end(), expr.index) != assigned_.end();
  if (isAssigned) {
    Open(names::kVariable);
    Number(expr.index);
    Text(")");
    return;
  }
  const ParameterRef ref{expr.kind, expr.index};
  auto found = std::find(parameters_.begin(), parameters_.end(), ref);
  if (found == parameters_.end()) found = parameters_.insert(parameters_.end(), ref);
  Text("?");
  Number(found - parameters_.begin() + 1);
}

void Emitter::EmitConstant(const Datum& value) {
  switch (value.kind) {
  case Datum::Kind::Null: Text("NULL"); break;
  case Datum::Kind::Integer:
    // SQLite would read the digits of the smallest integer as a float.
    if (value.integer == INT64_MIN) {
      Text("(-9223372036854775807 - 1)");
    } else if (value.integer < 0) {
      Text("(");
      Number(value.integer);
      Text(")");
    } else {
      Number(value.integer);
    }
    break;
  case Datum::Kind::Real: {
    std::array<char, 40> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), "(%.17g", value.real);
    std::string text(buffer.data(), static_cast<size_t>(length));
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    Text(text + ")");
    break;
  }
  case Datum::Kind::Text:
    if (value.text.find('\0') == std::string::npos) {
      Text(QuoteText(value.text));
      break;
    }
    Text("CAST(");
    EmitConstant(Datum::OfBlob(value.text));
    Text(" AS TEXT)");
    break;
  case Datum::Kind::Blob:
    Text("x'");
    for (const char byte : value.text) AppendHex(sql_, byte);
    Text("'");
    break;
  }
}

void Emitter::EmitCollated(const BoundExpr& expr) {
  Emit(expr);
  EmitCollationOf(expr);
}

// The collation of the first argument, which is compared with others. SQLite takes a collation from within
// those, even from what they only compare by themselves, before it takes that of a column.
void Emitter::EmitCollationBeside(const BoundExpr& expr) {
  const BoundExpr& first = *expr.args[0];
  const bool isMisled = first.baseColumn && IsText(first.type) &&
                        std::any_of(expr.args.begin() + 1, expr.args.end(),
                                    [](const BoundExprPtr& arg) { return HasCollation(*arg); });
  return isMisled ? EmitCollation(first.collation) : EmitCollationOf(first);
}

void Emitter::EmitCollationOf(const BoundExpr& expr) {
  // For a column of a table SQLite knows the collation, and it would not use an index if it were named here.
  if (IsText(expr.type) && !expr.baseColumn) EmitCollation(expr.collation);
}

} // namespace tsql
