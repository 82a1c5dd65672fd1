#include "tsql/emit/Emitter.h"
#include "tsql/functions/FunctionNames.h"
#include "tsql/values/PowersOfTen.h"

namespace tsql {

bool Emitter::EmitNativeCast(const BoundExpr& operand, const Type& to) {
  const Type& from = operand.type;
  const Family source = FamilyOf(from.id);
  const Family target = FamilyOf(to.id);
  const bool losesDigits = IsFine(to.id) && to.scale < from.scale;
  if (from.id == to.id && !losesDigits && source != Family::Decimal && source != Family::Text &&
      source != Family::Binary) {
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
    Number(PowerOfTen(from.scale));
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
      Number(PowerOfTen(to.scale - exact.scale));
    }
    Text(")");
    return true;
  }
  // A text of Unicode may lose characters in the code page.
  const bool keepsCharacters = source != Family::Text || IsUnicode(to.id) || !IsUnicode(from.id);
  const bool isString = source == Family::Text || source == Family::Binary;
  if (source == target && isString && keepsCharacters && !IsFixedLength(to.id) &&
      (to.length < 0 || (from.length >= 0 && from.length <= to.length))) {
    Emit(operand);
    return true;
  }
  const bool isSameMoment = (from.id == TypeId::SmallDateTime && to.id == TypeId::DateTime) ||
                            (from.id == TypeId::Time && to.id == TypeId::DateTime2 && !losesDigits);
  if (isSameMoment) {
    Emit(operand);
    return true;
  }
  return false;
}

void Emitter::EmitCast(const BoundExpr& expr) {
  const BoundExpr& operand = *expr.args[0];
  if (EmitNativeCast(operand, expr.type)) return;
  if (EmitComputed(expr)) return;
  EmitCastCall(names::kCast, expr);
}

void Emitter::EmitTryCast(const BoundExpr& expr) {
  // What SQLite does by itself cannot fail.
  if (!EmitNativeCast(*expr.args[0], expr.type)) EmitCastCall(names::kTryCast, expr);
}

void Emitter::EmitCastCall(const char* function, const BoundExpr& expr) {
  const BoundExpr& operand = *expr.args[0];
  Open(function);
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
  Open(names::kStore);
  Emit(operand);
  Text(", ");
  TypeCode(operand.type);
  Text(", ");
  TypeCode(expr.type);
  Text(")");
}

} // namespace tsql
