#include "tsql/emit/Emitter.h"

#include "tsql/functions/Functions.h"
#include "tsql/values/Decimal.h"
#include "tsql/values/Errors.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

namespace tsql {
namespace {

constexpr const char* kCollate = " COLLATE tsql";

int64_t Power10(int exponent) {
  int64_t power = 1;
  while (exponent-- > 0) power *= 10;
  return power;
}

// Whether the query can give no more than one row.
bool IsSingleRow(const BoundQuery& query) {
  if (query.op != SetOp::None) return false;
  const BoundSelect& select = *query.select;
  if (!select.from || (select.grouped && select.groupBy.empty())) return true;
  return select.top && select.top->kind == BoundExpr::Kind::Constant && select.top->constant.integer <= 1;
}

bool IsNonZeroConstant(const BoundExpr& expr) {
  if (expr.kind != BoundExpr::Kind::Constant) return false;
  // -1 is left out: the smallest integer divided by it does not fit.
  if (expr.constant.kind == Datum::Kind::Integer) return expr.constant.integer > 0;
  return expr.constant.kind == Datum::Kind::Real && expr.constant.real != 0;
}

// Whether evaluating it again costs next to nothing.
bool IsLeaf(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Column || expr.kind == BoundExpr::Kind::Variable ||
         expr.kind == BoundExpr::Kind::Marker || expr.kind == BoundExpr::Kind::Constant;
}

// What a program of t_compute can do itself; the rest are its operands.
bool IsComputed(const BoundExpr& expr) {
  if (expr.type.id != TypeId::Decimal) return false;
  if (expr.kind == BoundExpr::Kind::Arithmetic)
    return expr.args[0]->type.id == TypeId::Decimal && expr.args[1]->type.id == TypeId::Decimal;
  const TypeId from = expr.kind == BoundExpr::Kind::Cast ? expr.args[0]->type.id : TypeId::Text;
  return from == TypeId::Decimal || FamilyOf(from) == Family::Integer;
}

size_t CountOperands(const BoundExpr& expr) {
  if (!IsComputed(expr)) return 1;
  size_t count = 0;
  for (const BoundExprPtr& arg : expr.args) count += CountOperands(*arg);
  return count;
}

// The last step of `expr` and what leads to it; what is too long becomes an operand, with a program of its
// own.
void WriteProgram(const BoundExpr& expr, std::string& program, std::vector<const BoundExpr*>& operands) {
  const auto write = [&program](int64_t number) {
    program += (program.empty() ? "" : " ") + std::to_string(number);
  };
  for (const BoundExprPtr& arg : expr.args) {
    if (IsComputed(*arg) && CountOperands(*arg) <= kMaxComputeOperands / 2) {
      WriteProgram(*arg, program, operands);
      continue;
    }
    operands.push_back(arg.get());
    write(kComputeOperand);
    write(EncodeType(arg->type));
  }
  const bool isCast = expr.kind == BoundExpr::Kind::Cast;
  write(isCast ? kComputeCast : static_cast<int64_t>(expr.arithmetic));
  for (const BoundExprPtr& arg : expr.args) write(EncodeType(arg->type));
  write(EncodeType(expr.type));
}

bool IsInnerOnly(const BoundSource& source) {
  if (source.kind != BoundSource::Kind::Join) return true;
  const bool inner = source.join == JoinKind::Inner || source.join == JoinKind::Cross;
  return inner && IsInnerOnly(*source.left) && IsInnerOnly(*source.right);
}

// a x (b LEFT JOIN c) is (a x b) LEFT JOIN c: no parentheses, and SQLite may order the tables freely.
bool IsSpliceable(const BoundSource& source) {
  if (source.kind != BoundSource::Kind::Join) return true;
  if (source.join == JoinKind::Right || source.join == JoinKind::Full) return false;
  return IsSpliceable(*source.left);
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

const BoundSource* FindCommonLeaf(const BoundSource& source, int common) {
  if (source.kind == BoundSource::Kind::Common) return source.common == common ? &source : nullptr;
  if (source.kind != BoundSource::Kind::Join) return nullptr;
  const BoundSource* found = FindCommonLeaf(*source.left, common);
  return found != nullptr ? found : FindCommonLeaf(*source.right, common);
}

const char* CompareSymbol(CompareOp op) {
  constexpr std::array<const char*, 6> kSymbols = {" = ", " <> ", " < ", " <= ", " > ", " >= "};
  return kSymbols[static_cast<size_t>(op)];
}

const char* ArithmeticSymbol(ArithmeticOp op) {
  constexpr std::array<const char*, 8> kSymbols = {" + ", " - ", " * ", " / ", " % ", " & ", " | ", " ^ "};
  return kSymbols[static_cast<size_t>(op)];
}

} // namespace

EmittedSql Emitter::Finish() {
  return {std::move(sql_), std::move(parameters_)};
}

// ---- expressions

void Emitter::Emit(const BoundExpr& expr) {
  switch (expr.kind) {
  case BoundExpr::Kind::Constant: EmitConstant(expr.constant); break;
  case BoundExpr::Kind::Column: EmitColumn(expr); break;
  case BoundExpr::Kind::Variable:
  case BoundExpr::Kind::Marker:
  case BoundExpr::Kind::Global: EmitParameter(expr); break;
  case BoundExpr::Kind::Cast: EmitCast(expr); break;
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
    EmitCollated(*expr.args[0]);
    Text(expr.negated ? " NOT BETWEEN " : " BETWEEN ");
    Emit(*expr.args[1]);
    Text(" AND ");
    Emit(*expr.args[2]);
    Text(")");
    break;
  case BoundExpr::Kind::In:
  case BoundExpr::Kind::InQuery: EmitIn(expr); break;
  case BoundExpr::Kind::Exists:
    Text("EXISTS (");
    EmitQuery(*expr.query);
    Text(")");
    break;
  case BoundExpr::Kind::Subquery: EmitSubquery(expr); break;
  case BoundExpr::Kind::Case: EmitCase(expr); break;
  case BoundExpr::Kind::Function: EmitFunction(expr); break;
  case BoundExpr::Kind::Aggregate: EmitAggregate(expr); break;
  }
}

void Emitter::EmitCollated(const BoundExpr& expr) {
  Emit(expr);
  // Columns of tables carry the collation themselves, which keeps their indexes usable.
  if (IsText(expr.type) && !expr.baseColumn) Text(kCollate);
}

void Emitter::EmitConstant(const Datum& value) {
  switch (value.kind) {
  case Datum::Kind::Null: Text("NULL"); break;
  case Datum::Kind::Integer:
    // SQLite reads the smallest integer's digits as a float.
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
  case Datum::Kind::Blob: {
    constexpr const char* kDigits = "0123456789ABCDEF";
    Text("x'");
    for (const char byte : value.text) {
      sql_ += kDigits[static_cast<unsigned char>(byte) >> 4U];
      sql_ += kDigits[static_cast<unsigned char>(byte) & 0xFU];
    }
    Text("'");
    break;
  }
  }
}

void Emitter::EmitParameter(const BoundExpr& expr) {
  const bool isAssigned = expr.kind == BoundExpr::Kind::Variable &&
                          std::find(assigned_.begin(), assigned_.end(), expr.index) != assigned_.end();
  if (isAssigned) {
    Text("t_variable(");
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

void Emitter::EmitAlias(int source) {
  if (source < 0) return;
  Text("s");
  Number(source);
}

void Emitter::EmitColumn(const BoundExpr& expr) {
  EmitAlias(expr.source);
  if (expr.source >= 0) Text(".");
  Text(QuoteName(expr.name));
}

bool Emitter::EmitNativeCast(const BoundExpr& operand, const Type& to) {
  const Type& from = operand.type;
  const Family source = FamilyOf(from.id);
  const Family target = FamilyOf(to.id);
  if (from.id == to.id && source != Family::Decimal && source != Family::Text && source != Family::Binary) {
    Emit(operand);
    return true;
  }
  if (source == Family::Integer && target == Family::Integer && to.id != TypeId::Bit &&
      (from.id == TypeId::Bit || Precedence(from.id) <= Precedence(to.id))) {
    Emit(operand);
    return true;
  }
  if (source == Family::Integer && to.id == TypeId::Float) {
    Text("CAST(");
    Emit(operand);
    Text(" AS REAL)");
    return true;
  }
  if (from.id == TypeId::Real && to.id == TypeId::Float) {
    Emit(operand);
    return true;
  }
  const bool exactSource = source == Family::Integer || source == Family::Decimal;
  if (exactSource && to.id == TypeId::Float && !IsWide(from)) {
    Text("(");
    Emit(operand);
    Text(" / ");
    Number(Power10(from.scale));
    Text(".0)");
    return true;
  }
  if (exactSource && to.id == TypeId::Decimal && !IsWide(from) && !IsWide(to)) {
    const Type exact = AsDecimal(from);
    const bool fits = to.scale >= exact.scale && to.precision - to.scale >= exact.precision - exact.scale;
    if (!fits || IsWide(exact)) return false;
    Text("(");
    Emit(operand);
    if (to.scale > exact.scale) {
      Text(" * ");
      Number(Power10(to.scale - exact.scale));
    }
    Text(")");
    return true;
  }
  if (source == Family::Text && target == Family::Text && !IsFixedLength(to.id) &&
      (to.length < 0 || (from.length >= 0 && from.length <= to.length))) {
    Emit(operand);
    return true;
  }
  if (from.id == TypeId::SmallDateTime && to.id == TypeId::DateTime) {
    Emit(operand);
    return true;
  }
  return false;
}

void Emitter::EmitCast(const BoundExpr& expr) {
  const BoundExpr& operand = *expr.args[0];
  if (EmitNativeCast(operand, expr.type)) return;
  if (IsComputed(expr)) {
    EmitComputed(expr);
    return;
  }
  Text("t_cast(");
  Emit(operand);
  Text(", ");
  TypeCode(operand.type);
  Text(", ");
  TypeCode(expr.type);
  Text(", ");
  Number(expr.style);
  Text(")");
}

void Emitter::EmitStore(const BoundExpr& expr) {
  const BoundExpr& operand = *expr.args[0];
  if (EmitNativeCast(operand, expr.type)) return;
  Text("t_store(");
  Emit(operand);
  Text(", ");
  TypeCode(operand.type);
  Text(", ");
  TypeCode(expr.type);
  Text(")");
}

void Emitter::EmitBinary(const BoundExpr& left, const char* op, const BoundExpr& right) {
  Text("(");
  Emit(left);
  Text(op);
  Emit(right);
  Text(")");
}

void Emitter::EmitCall(std::string_view name, const BoundExpr& left, const BoundExpr& right) {
  Text(name);
  Text("(");
  Emit(left);
  Text(", ");
  Emit(right);
  Text(")");
}

void Emitter::EmitChecked(TypeId type, const BoundExpr& left, const char* op, const BoundExpr& right) {
  const bool isInline = type == TypeId::Int && IsLeaf(left) && IsLeaf(right);
  if (isInline) {
    // Computing twice is cheaper than calling a function to check.
    Text("iif(");
    EmitBinary(left, op, right);
    Text(" BETWEEN -2147483648 AND 2147483647, ");
    EmitBinary(left, op, right);
    Text(", ");
  }
  Text("t_range(");
  EmitBinary(left, op, right);
  Text(", ");
  Number(static_cast<int64_t>(type));
  Text(isInline ? "))" : ")");
}

void Emitter::EmitNegation(const BoundExpr& expr) {
  const BoundExpr& operand = *expr.args[0];
  if (expr.kind == BoundExpr::Kind::BitNot) {
    const char* form = expr.type.id == TypeId::Bit       ? "(1 - "
                       : expr.type.id == TypeId::TinyInt ? "(255 - "
                                                         : "(~";
    Text(form);
    Emit(operand);
    Text(")");
    return;
  }
  switch (FamilyOf(expr.type.id)) {
  case Family::Integer:
    Text("t_range(-");
    Emit(operand);
    Text(", ");
    Number(static_cast<int64_t>(expr.type.id));
    Text(")");
    break;
  case Family::Float:
    Text("(-");
    Emit(operand);
    Text(")");
    break;
  default:
    if (!IsWide(expr.type)) {
      Text("(-");
      Emit(operand);
      Text(")");
      break;
    }
    Text("t_negate(");
    Emit(operand);
    Text(", ");
    TypeCode(expr.type);
    Text(")");
  }
}

void Emitter::EmitArithmetic(const BoundExpr& expr) {
  switch (FamilyOf(expr.type.id)) {
  case Family::Text: EmitBinary(*expr.args[0], " || ", *expr.args[1]); break;
  case Family::DateTime:
    // Ticks since 1900 add like the day numbers that the server adds.
    Text("t_moment(");
    EmitBinary(*expr.args[0], ArithmeticSymbol(expr.arithmetic), *expr.args[1]);
    Text(", ");
    TypeCode(expr.type);
    Text(")");
    break;
  case Family::Float: EmitFloatArithmetic(expr); break;
  case Family::Decimal: EmitDecimalArithmetic(expr); break;
  default: EmitIntegerArithmetic(expr);
  }
}

void Emitter::EmitBitwise(const BoundExpr& expr) {
  if (expr.arithmetic != ArithmeticOp::BitXor) {
    EmitBinary(*expr.args[0], ArithmeticSymbol(expr.arithmetic), *expr.args[1]);
    return;
  }
  Text("(");
  EmitBinary(*expr.args[0], " | ", *expr.args[1]);
  Text(" - ");
  EmitBinary(*expr.args[0], " & ", *expr.args[1]);
  Text(")");
}

void Emitter::EmitIntegerArithmetic(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  switch (expr.arithmetic) {
  case ArithmeticOp::Add:
  case ArithmeticOp::Subtract:
  case ArithmeticOp::Multiply:
    EmitChecked(expr.type.id, left, ArithmeticSymbol(expr.arithmetic), right);
    break;
  case ArithmeticOp::Divide:
  case ArithmeticOp::Modulo:
    if (IsNonZeroConstant(right)) {
      EmitBinary(left, ArithmeticSymbol(expr.arithmetic), right);
    } else if (expr.arithmetic == ArithmeticOp::Modulo) {
      EmitCall("t_modulo", left, right);
    } else {
      Text("t_range(");
      EmitCall("t_divide", left, right);
      Text(", ");
      Number(static_cast<int64_t>(expr.type.id));
      Text(")");
    }
    break;
  default: EmitBitwise(expr);
  }
}

void Emitter::EmitFloatArithmetic(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  if (expr.arithmetic == ArithmeticOp::Modulo) {
    EmitCall("t_float_modulo", left, right);
  } else if (expr.arithmetic == ArithmeticOp::Divide && !IsNonZeroConstant(right)) {
    EmitCall("t_float_divide", left, right);
  } else {
    // The largest double divides the finite from the infinite; computing leaves twice is cheaper than a call.
    const char* op = ArithmeticSymbol(expr.arithmetic);
    const bool isInline = IsLeaf(left) && IsLeaf(right);
    if (isInline) {
      Text("iif(abs");
      EmitBinary(left, op, right);
      Text(" <= 1.7976931348623157e308, ");
      EmitBinary(left, op, right);
      Text(", ");
    }
    Text("t_finite(");
    EmitBinary(left, op, right);
    Text(isInline ? "))" : ")");
  }
}

void Emitter::EmitDecimalArithmetic(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  const bool additive = expr.arithmetic == ArithmeticOp::Add || expr.arithmetic == ArithmeticOp::Subtract;
  if (additive && IsMoney(expr.type.id)) {
    EmitChecked(expr.type.id, left, ArithmeticSymbol(expr.arithmetic), right);
    return;
  }
  if (additive && !IsWide(expr.type)) {
    // The result has digits enough for both operands, so that 64 bits cannot overflow.
    const auto emitScaled = [&](const BoundExpr& operand) {
      Emit(operand);
      if (operand.type.scale == expr.type.scale) return;
      Text(" * ");
      Number(Power10(expr.type.scale - operand.type.scale));
    };
    Text("(");
    emitScaled(left);
    Text(ArithmeticSymbol(expr.arithmetic));
    emitScaled(right);
    Text(")");
    return;
  }
  if (IsComputed(expr)) {
    EmitComputed(expr);
    return;
  }
  Text("t_decimal(");
  Number(static_cast<int64_t>(expr.arithmetic));
  Text(", ");
  Emit(left);
  Text(", ");
  TypeCode(left.type);
  Text(", ");
  Emit(right);
  Text(", ");
  TypeCode(right.type);
  Text(", ");
  TypeCode(expr.type);
  Text(")");
}

void Emitter::EmitComputed(const BoundExpr& expr) {
  std::string program;
  std::vector<const BoundExpr*> operands;
  WriteProgram(expr, program, operands);
  Text("t_compute('" + program + "'");
  for (const BoundExpr* operand : operands) {
    Text(", ");
    Emit(*operand);
  }
  Text(")");
}

void Emitter::EmitComparison(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  Text("(");
  Emit(left);
  if (IsText(left.type) && !left.baseColumn && !right.baseColumn) Text(kCollate);
  Text(CompareSymbol(expr.compare));
  Emit(right);
  Text(")");
}

void Emitter::EmitLogical(const BoundExpr& expr, const char* op) {
  EmitBinary(*expr.args[0], op, *expr.args[1]);
}

void Emitter::EmitLike(const BoundExpr& expr) {
  Text(expr.negated ? "(NOT t_like(" : "t_like(");
  for (size_t i = 0; i < expr.args.size(); ++i) {
    if (i > 0) Text(", ");
    Emit(*expr.args[i]);
  }
  Text(expr.negated ? "))" : ")");
}

void Emitter::EmitIn(const BoundExpr& expr) {
  Text("(");
  EmitCollated(*expr.args[0]);
  Text(expr.negated ? " NOT IN (" : " IN (");
  if (expr.query) {
    EmitQuery(*expr.query);
  } else {
    for (size_t i = 1; i < expr.args.size(); ++i) {
      if (i > 1) Text(", ");
      Emit(*expr.args[i]);
    }
  }
  Text("))");
}

void Emitter::EmitSubquery(const BoundExpr& expr) {
  if (IsSingleRow(*expr.query)) {
    Text("(");
    EmitQuery(*expr.query);
    Text(")");
    return;
  }
  // SQLite takes the first of several rows; the server refuses them.
  Text("(SELECT t_single(c0) FROM (");
  EmitQuery(*expr.query);
  Text("))");
}

void Emitter::EmitCase(const BoundExpr& expr) {
  Text("CASE");
  size_t at = 0;
  if (expr.hasOperand) {
    Text(" ");
    EmitCollated(*expr.args[at++]);
  }
  const size_t pairsEnd = expr.args.size() - (expr.hasElse ? 1 : 0);
  for (; at < pairsEnd; at += 2) {
    Text(" WHEN ");
    Emit(*expr.args[at]);
    Text(" THEN ");
    Emit(*expr.args[at + 1]);
  }
  if (expr.hasElse) {
    Text(" ELSE ");
    Emit(*expr.args.back());
  }
  Text(" END");
}

void Emitter::EmitFunction(const BoundExpr& expr) {
  Text(expr.name);
  Text("(");
  for (size_t i = 0; i < expr.args.size(); ++i) {
    if (i > 0) Text(", ");
    if (i == 0) {
      EmitCollated(*expr.args[i]); // NULLIF compares under its first argument's collation
    } else {
      Emit(*expr.args[i]);
    }
  }
  Text(")");
}

void Emitter::EmitAggregate(const BoundExpr& expr) {
  if (expr.args.empty()) {
    Text("count(*)");
    return;
  }
  const BoundExpr& arg = *expr.args[0];
  const auto emitCall = [&](std::string_view name) {
    Text(name);
    Text(expr.distinct ? "(DISTINCT " : "(");
    EmitCollated(arg);
    Text(")");
  };
  const bool isSum = expr.name == "sum";
  const bool isAverage = expr.name == "avg";
  if (!isSum && !isAverage) {
    emitCall(expr.name == "count_big" ? "count" : expr.name);
  } else if (FamilyOf(expr.type.id) == Family::Float) {
    Text("t_finite(");
    emitCall(expr.name);
    Text(")");
  } else if (FamilyOf(expr.type.id) == Family::Integer) {
    Text("t_range(");
    emitCall("sum");
    if (isAverage) {
      Text(" / ");
      emitCall("count");
    }
    Text(", ");
    Number(static_cast<int64_t>(expr.type.id));
    Text(")");
  } else if (expr.distinct) {
    FailUnsupported("SUM or AVG with DISTINCT of a decimal");
  } else {
    Text(isSum ? "t_sum(" : "t_average(");
    Emit(arg);
    Text(", ");
    TypeCode(arg.type);
    Text(", ");
    TypeCode(expr.type);
    Text(")");
  }
}

// ---- queries

void Emitter::EmitLeaf(const BoundSource& source) {
  switch (source.kind) {
  case BoundSource::Kind::Table: Text(source.table->SqlName()); break;
  case BoundSource::Kind::System: Text("(" + source.sql + ")"); break;
  case BoundSource::Kind::Common:
    Text("w");
    Number(source.common);
    break;
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
  default: Text(" JOIN "); // CROSS JOIN would fix the order of the tables
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
  for (size_t i = 0; i < select.items.size(); ++i) {
    if (i > 0) Text(", ");
    EmitCollated(*select.items[i].expr);
    Text(" AS c");
    Number(static_cast<int64_t>(i));
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
    Text(i == 0 ? "WITH RECURSIVE w" : ", w");
    Number(common.id);
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
  // A column beside the query's own counts the depth: the server stops at 100.
  const BoundQuery& member = *common.query->right;
  const BoundSource* own = member.op == SetOp::None && member.select->from
                               ? FindCommonLeaf(*member.select->from, common.id)
                               : nullptr;
  assert(own != nullptr);
  Text("(");
  for (size_t i = 0; i < common.query->columns.size(); ++i) Text("c" + std::to_string(i) + ", ");
  Text("depth) AS (");
  EmitBody(*common.query->left, ", 0");
  Text(" UNION ALL ");
  EmitBody(member, ", t_recursion(s" + std::to_string(own->id) + ".depth + 1)");
  Text(")");
}

void Emitter::EmitBranch(const BoundQuery& query, const std::string& extra, bool isRight) {
  // Within a compound SQLite takes neither LIMIT nor a nested compound on the right.
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

// ---- statements

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

std::string Emitter::EmitCheck(const BoundExpr& expr) {
  Emit(expr);
  return Finish().sql;
}

std::string EmitExtras(Emitter& emitter, const std::vector<BoundExprPtr>& extras) {
  const std::string saved = std::exchange(emitter.sql_, {});
  for (const BoundExprPtr& extra : extras) {
    emitter.Text(", ");
    emitter.Emit(*extra);
  }
  std::string text = std::exchange(emitter.sql_, saved);
  return text;
}

EmittedSql Emitter::EmitInsert(const BoundInsert& insert) {
  Text("INSERT INTO " + insert.table->SqlName());
  if (insert.columns.empty()) {
    Text(" DEFAULT VALUES");
    return Finish();
  }
  Text("(");
  for (size_t i = 0; i < insert.columns.size(); ++i) {
    if (i > 0) Text(", ");
    Text(QuoteName(insert.table->columns[static_cast<size_t>(insert.columns[i])].name));
  }
  Text(") ");
  if (insert.query) {
    const std::string extras = EmitExtras(*this, insert.extras);
    if (insert.wrapper < 0) {
      EmitQuery(*insert.query, extras);
      return Finish();
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
    return Finish();
  }
  Text("VALUES ");
  for (size_t row = 0; row < insert.rows.size(); ++row) {
    Text(row > 0 ? ", (" : "(");
    for (size_t i = 0; i < insert.rows[row].size(); ++i) {
      if (i > 0) Text(", ");
      Emit(*insert.rows[row][i]);
    }
    Text(")");
  }
  return Finish();
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

void Emitter::EmitTargetRows(int target, const BoundSource* from, const TableInfo& table,
                             const BoundExpr* where, const BoundExpr* top) {
  Text("SELECT ");
  EmitAlias(target);
  Text("._rowid_ FROM ");
  if (from != nullptr) {
    EmitSource(*from);
  } else {
    Text(table.SqlName() + " AS ");
    EmitAlias(target);
  }
  if (where != nullptr) {
    Text(" WHERE ");
    Emit(*where);
  }
  if (top != nullptr) {
    Text(" LIMIT ");
    Emit(*top);
  }
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
    EmitTargetRows(update.target, nullptr, *update.table, update.where.get(), update.top.get());
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
  // Outer joins keep their shape in a subquery that gives each target row with its new values.
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
  Text(" FROM ");
  EmitSource(*update.from);
  if (update.where) {
    Text(" WHERE ");
    Emit(*update.where);
  }
  if (update.top) {
    Text(" LIMIT ");
    Emit(*update.top);
  }
  Text(") AS q WHERE u._rowid_ = q.r");
}

EmittedSql Emitter::EmitUpdate(const BoundUpdate& update) {
  EmitCommons(update.commons);
  if (!EmitUpdateDirect(update)) EmitUpdateFromTree(update);
  return Finish();
}

EmittedSql Emitter::EmitUpdatedRows(const BoundUpdate& update, std::string_view into,
                                    std::string_view number) {
  EmitCommons(update.commons);
  Text("INSERT INTO ");
  Text(into);
  // A row that a join finds several times is taken once.
  Text(" SELECT * FROM (SELECT ");
  EmitAlias(update.target);
  Text("._rowid_ AS ");
  Text(number);
  for (size_t column = 0; column < update.table->columns.size(); ++column) {
    const auto assigned =
        std::find_if(update.assignments.begin(), update.assignments.end(),
                     [&](const auto& entry) { return entry.first == static_cast<int>(column); });
    Text(", ");
    if (assigned != update.assignments.end()) {
      Emit(*assigned->second);
      Text(" AS ");
    } else {
      EmitAlias(update.target);
      Text(".");
    }
    Text(QuoteName(update.table->columns[column].name));
  }
  Text(" FROM ");
  if (update.from) {
    EmitSource(*update.from);
  } else {
    Text(update.table->SqlName() + " AS ");
    EmitAlias(update.target);
  }
  if (update.where) {
    Text(" WHERE ");
    Emit(*update.where);
  }
  if (update.top) {
    Text(" LIMIT ");
    Emit(*update.top);
  }
  Text(") GROUP BY ");
  Text(number);
  return Finish();
}

EmittedSql Emitter::EmitDelete(const BoundDelete& statement) {
  EmitCommons(statement.commons);
  Text("DELETE FROM " + statement.table->SqlName());
  if (statement.from || statement.top) {
    Text(" WHERE _rowid_ IN (");
    EmitTargetRows(statement.target, statement.from.get(), *statement.table, statement.where.get(),
                   statement.top.get());
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
