#include <array>
#include <cmath>
#include <limits>

#include "tsql/emit/Emitter.h"
#include "tsql/functions/ComputeProgram.h"
#include "tsql/functions/FunctionNames.h"
#include "tsql/values/PowersOfTen.h"

namespace tsql {
namespace {

const char* ArithmeticSymbol(ArithmeticOp op) {
  constexpr std::array<const char*, 8> kSymbols = {" + ", " - ", " * ", " / ", " % ", " & ", " | ", " ^ "};
  return kSymbols[static_cast<size_t>(op)];
}

bool IsNonZeroConstant(const BoundExpr& expr) {
  if (expr.kind != BoundExpr::Kind::Constant) return false;
  // Not -1, because the smallest integer divided by it is out of range.
  if (expr.constant.kind == Datum::Kind::Integer) return expr.constant.integer > 0;
  return expr.constant.kind == Datum::Kind::Real && expr.constant.real != 0;
}

// Whether it costs little to evaluate it twice.
bool IsLeaf(const BoundExpr& expr) {
  return expr.kind == BoundExpr::Kind::Column || expr.kind == BoundExpr::Kind::Variable ||
         expr.kind == BoundExpr::Kind::Marker || expr.kind == BoundExpr::Kind::Constant;
}

// Whether the expression is a step of a program for t_compute. Any other expression is an operand of one.
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

// Writes the steps for the sides of `expr` and then its own. A side with too many operands becomes an operand
// itself, with a program of its own.
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

// ---- programs that SQLite's own arithmetic can run

constexpr double kUnbounded = std::numeric_limits<double>::infinity();
// 64 bits hold a little more; what a double loses of it does not matter so.
constexpr double kMostUnits = 9.0e18;

int ScaleOf(const Type& type) {
  return FamilyOf(type.id) == Family::Integer ? 0 : type.scale;
}

double UnitsOfOperand(const BoundExpr& operand) {
  if (!IsLeaf(operand)) return kUnbounded; // it is computed twice
  const bool isNumber = operand.type.id == TypeId::Decimal || FamilyOf(operand.type.id) == Family::Integer;
  if (!isNumber || IsWide(operand.type)) return kUnbounded;
  if (operand.kind == BoundExpr::Kind::Constant)
    return operand.constant.kind == Datum::Kind::Integer
               ? std::abs(static_cast<double>(operand.constant.integer))
               : kUnbounded;
  switch (operand.type.id) {
  case TypeId::Decimal: return std::pow(10.0, operand.type.precision);
  case TypeId::Bit:
  case TypeId::TinyInt: return UINT8_MAX;
  case TypeId::SmallInt: return -static_cast<double>(INT16_MIN);
  case TypeId::Int: return -static_cast<double>(INT32_MIN);
  default: return kUnbounded;
  }
}

// How large the number may become that the expression is, in units of its scale: unbounded where 64 bits may
// not suffice for it, or where more is to be done than to add and to multiply.
double UnitsOf(const BoundExpr& expr, bool isOutermost = true) {
  if (!IsComputed(expr)) return UnitsOfOperand(expr);
  const int scale = ScaleOf(expr.type);
  const auto unitsAt = [](const BoundExpr& side, int wanted) {
    const int more = wanted - ScaleOf(side.type);
    return more < 0 || more > kMaxPowerOfTen ? kUnbounded : UnitsOf(side, false) * std::pow(10.0, more);
  };
  const BoundExpr& left = *expr.args[0];
  double units = kUnbounded;
  if (expr.kind == BoundExpr::Kind::Cast) {
    units = unitsAt(left, scale);
  } else if (expr.arithmetic == ArithmeticOp::Multiply) {
    const BoundExpr& right = *expr.args[1];
    if (scale == ScaleOf(left.type) + ScaleOf(right.type))
      units = UnitsOf(left, false) * UnitsOf(right, false);
  } else if (expr.arithmetic == ArithmeticOp::Add || expr.arithmetic == ArithmeticOp::Subtract) {
    units = unitsAt(left, scale) + unitsAt(*expr.args[1], scale);
  }
  // What is too large for its type on the way is an error, which a program finds.
  const bool fits = units < kMostUnits && (isOutermost || units < std::pow(10.0, expr.type.precision));
  return fits ? units : kUnbounded;
}

} // namespace

// The expression in units of the scale.
void Emitter::EmitUnits(const BoundExpr& expr, int scale) {
  const int64_t factor = PowerOfTen(scale - ScaleOf(expr.type));
  if (expr.kind == BoundExpr::Kind::Constant) return Number(expr.constant.integer * factor);
  if (factor != 1) Text("(");
  if (!IsComputed(expr)) {
    Emit(expr);
  } else if (expr.kind == BoundExpr::Kind::Cast) {
    EmitUnits(*expr.args[0], ScaleOf(expr.type));
  } else {
    const bool multiplies = expr.arithmetic == ArithmeticOp::Multiply;
    Text("(");
    for (size_t i = 0; i < expr.args.size(); ++i) {
      if (i > 0) Text(ArithmeticSymbol(expr.arithmetic));
      EmitUnits(*expr.args[i], multiplies ? ScaleOf(expr.args[i]->type) : ScaleOf(expr.type));
    }
    Text(")");
  }
  if (factor == 1) return;
  Text(" * ");
  Number(factor);
  Text(")");
}

// A program that needs no more than 64 bits is cheaper as arithmetic of SQLite, even where it is written
// twice to see whether its type holds the result. Only what it does not hold, and null, comes to the program.
bool Emitter::EmitInline(const BoundExpr& expr, const std::function<void()>& emitProgram) {
  constexpr size_t kMostOperands = 4;
  if (IsWide(expr.type) || CountOperands(expr) > kMostOperands) return false;
  const double units = UnitsOf(expr);
  if (units == kUnbounded) return false;
  const int scale = ScaleOf(expr.type);
  if (units < std::pow(10.0, expr.type.precision)) {
    EmitUnits(expr, scale);
    return true;
  }
  const int64_t largest = PowerOfTen(expr.type.precision) - 1;
  Text("iif(");
  EmitUnits(expr, scale);
  Text(" BETWEEN ");
  Number(-largest);
  Text(" AND ");
  Number(largest);
  Text(", ");
  EmitUnits(expr, scale);
  Text(", ");
  emitProgram();
  Text(")");
  return true;
}

void Emitter::EmitStaysInRange(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  const bool isAdditive = expr.arithmetic == ArithmeticOp::Add || expr.arithmetic == ArithmeticOp::Subtract;
  if (isAdditive && right.kind == BoundExpr::Kind::Constant && right.constant.integer >= 0) {
    // There is one end of the range to go over, and the other side tells how far it is.
    const bool isSum = expr.arithmetic == ArithmeticOp::Add;
    Emit(left);
    Text(isSum ? " <= " : " >= ");
    Number(isSum ? INT32_MAX - right.constant.integer : INT32_MIN + right.constant.integer);
    return;
  }
  EmitBinary(left, ArithmeticSymbol(expr.arithmetic), right);
  Text(" BETWEEN -2147483648 AND 2147483647");
}

void Emitter::EmitExpressioned(const BoundExpr& expr) {
  const TypeId type = expr.type.id;
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  const char* op = ArithmeticSymbol(expr.arithmetic);
  const bool isInline = type == TypeId::Int && IsLeaf(left) && IsLeaf(right);
  if (isInline) {
    // To compute it twice is cheaper than to call a function that checks the range.
    Text("iif(");
    EmitStaysInRange(expr);
    Text(", ");
    EmitBinary(left, op, right);
    Text(", ");
  }
  Open(names::kRange);
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
    Open(names::kRange);
    Text("-");
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
    if (IsMoney(expr.type.id)) {
      Open(names::kRange);
      Text("-");
      Emit(operand);
      Text(", ");
      Number(static_cast<int64_t>(expr.type.id));
      Text(")");
      break;
    }
    if (!IsWide(expr.type)) {
      Text("(-");
      Emit(operand);
      Text(")");
      break;
    }
    Open(names::kNegate);
    Emit(operand);
    Text(", ");
    TypeCode(expr.type);
    Text(")");
  }
}

void Emitter::EmitArithmetic(const BoundExpr& expr) {
  switch (FamilyOf(expr.type.id)) {
  case Family::Text:
  case Family::Binary: EmitConcatenation(expr); break;
  case Family::DateTime:
    // The server adds days since 1900, and ticks since 1900 can be added in the same way.
    Open(names::kMoment);
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

void Emitter::EmitConcatenation(const BoundExpr& expr) {
  // What is longer than the type can be is cut.
  const int32_t left = expr.args[0]->type.length;
  const int32_t right = expr.args[1]->type.length;
  const bool isCut = expr.type.length >= 0 && left + right > expr.type.length;
  const bool isBinary = FamilyOf(expr.type.id) == Family::Binary;
  if (isCut) Open(names::kCast);
  if (isBinary) Text("CAST("); // SQLite takes the bytes together and calls that a text
  EmitBinary(*expr.args[0], " || ", *expr.args[1]);
  if (isBinary) Text(" AS BLOB)");
  if (!isCut) return;
  Text(", ");
  TypeCode(MakeType(expr.type.id, -1));
  Text(", ");
  TypeCode(expr.type);
  Text(", 0)");
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
  case ArithmeticOp::Multiply: EmitExpressioned(expr); break;
  case ArithmeticOp::Divide:
  case ArithmeticOp::Modulo:
    if (IsNonZeroConstant(right)) {
      EmitBinary(left, ArithmeticSymbol(expr.arithmetic), right);
    } else if (expr.arithmetic == ArithmeticOp::Modulo) {
      EmitCall(names::kModulo, left, right);
    } else {
      Open(names::kRange);
      EmitCall(names::kDivide, left, right);
      Text(", ");
      Number(static_cast<int64_t>(expr.type.id));
      Text(")");
    }
    break;
  default: EmitBitwise(expr);
  }
}

void Emitter::EmitFloatArithmetic(const BoundExpr& expr) {
  // SQLite computes in double precision.
  const bool isSingle = expr.type.id == TypeId::Real;
  if (isSingle) Open(names::kCast);
  EmitDoubleArithmetic(expr);
  if (!isSingle) return;
  Text(", ");
  TypeCode(MakeType(TypeId::Float));
  Text(", ");
  TypeCode(expr.type);
  Text(", 0)");
}

void Emitter::EmitDoubleArithmetic(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  if (expr.arithmetic == ArithmeticOp::Modulo) {
    EmitCall(names::kFloatModulo, left, right);
  } else if (expr.arithmetic == ArithmeticOp::Divide && !IsNonZeroConstant(right)) {
    EmitCall(names::kFloatDivide, left, right);
  } else {
    // Only an infinite result is greater than the largest double. To compute it twice is cheaper than a call.
    const char* op = ArithmeticSymbol(expr.arithmetic);
    const bool isInline = IsLeaf(left) && IsLeaf(right);
    if (isInline) {
      Text("iif(abs");
      EmitBinary(left, op, right);
      Text(" <= 1.7976931348623157e308, ");
      EmitBinary(left, op, right);
      Text(", ");
    }
    Open(names::kFinite);
    EmitBinary(left, op, right);
    Text(isInline ? "))" : ")");
  }
}

void Emitter::EmitDecimalArithmetic(const BoundExpr& expr) {
  const BoundExpr& left = *expr.args[0];
  const BoundExpr& right = *expr.args[1];
  const bool additive = expr.arithmetic == ArithmeticOp::Add || expr.arithmetic == ArithmeticOp::Subtract;
  if (additive && IsMoney(expr.type.id)) {
    EmitExpressioned(expr);
    return;
  }
  if (additive && !IsWide(expr.type)) {
    // The result's type has room for all digits of both sides, so that 64 bits cannot overflow.
    const auto emitScaled = [&](const BoundExpr& operand) {
      Emit(operand);
      if (operand.type.scale == expr.type.scale) return;
      Text(" * ");
      Number(PowerOfTen(expr.type.scale - operand.type.scale));
    };
    Text("(");
    emitScaled(left);
    Text(ArithmeticSymbol(expr.arithmetic));
    emitScaled(right);
    Text(")");
    return;
  }
  if (EmitComputed(expr)) return;
  Open(names::kDecimal);
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

bool Emitter::EmitComputed(const BoundExpr& expr) {
  if (!IsComputed(expr)) return false;
  const auto emitProgram = [&] {
    std::string program;
    std::vector<const BoundExpr*> operands;
    WriteProgram(expr, program, operands);
    Open(names::kCompute);
    Text("'" + program + "'");
    for (const BoundExpr* operand : operands) {
      Text(", ");
      Emit(*operand);
    }
    Text(")");
  };
  if (!EmitInline(expr, emitProgram)) emitProgram();
  return true;
}

} // namespace tsql
