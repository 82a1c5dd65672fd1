#include <cmath>
#include <limits>
#include <numbers>

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Checks an integer result of SQLite, whose arithmetic goes over to floating point beyond 64 bits.
void Range(const FunctionCall& call) {
  const auto type = static_cast<TypeId>(call.Integer(1));
  switch (sqlite3_value_type(call.Raw(0))) {
  case SQLITE_NULL: return call.ReturnNull();
  case SQLITE_INTEGER: return call.ReturnInteger(CheckInteger(call.Integer(0), type));
  default: Fail(8115, {"expression", TypeName(type)});
  }
}

void Divide(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const int64_t divisor = call.Integer(1);
  if (divisor == 0) Fail(8134, {});
  const int64_t dividend = call.Integer(0);
  if (divisor == -1 && dividend == std::numeric_limits<int64_t>::min()) Fail(8115, {"expression", "bigint"});
  call.ReturnInteger(dividend / divisor);
}

void Modulo(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const int64_t divisor = call.Integer(1);
  if (divisor == 0) Fail(8134, {});
  call.ReturnInteger(divisor == -1 ? 0 : call.Integer(0) % divisor);
}

void FloatDivide(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Real(1) == 0) Fail(8134, {});
  const double quotient = call.Real(0) / call.Real(1);
  if (!std::isfinite(quotient)) Fail(8115, {"expression", "float"});
  call.ReturnReal(quotient);
}

void FloatModulo(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Real(1) == 0) Fail(8134, {});
  call.ReturnReal(std::fmod(call.Real(0), call.Real(1)));
}

// ---- ABS, ROUND, FLOOR, CEILING, SIGN take the value, its type, the type of the result, and their other
// arguments.

void Abs(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  switch (FamilyOf(type.id)) {
  case Family::Integer: {
    const int64_t value = call.Integer(0);
    if (value == std::numeric_limits<int64_t>::min()) Fail(8115, {"expression", "bigint"});
    return call.ReturnInteger(CheckInteger(value < 0 ? -value : value, type.id));
  }
  case Family::Float: return call.ReturnReal(std::abs(call.Real(0)));
  default: {
    Decimal value = call.DecimalAt(0, type);
    value.negative = false;
    call.ReturnDecimal(CheckDecimal(value, type, "expression"), type);
  }
  }
}

void Sign(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  switch (FamilyOf(type.id)) {
  case Family::Integer: return call.ReturnInteger((call.Integer(0) > 0) - (call.Integer(0) < 0));
  case Family::Float: return call.ReturnReal((call.Real(0) > 0) - (call.Real(0) < 0));
  default: {
    const Decimal value = call.DecimalAt(0, type);
    Decimal sign = DecimalFromInteger(IsZero(value) ? 0 : value.negative ? -1 : 1);
    call.ReturnDecimal(CheckDecimal(Rescale(sign, type.scale), type, "expression"), type);
  }
  }
}

template <bool IsFloor>
void ToWhole(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  const Type to = call.TypeAt(2);
  switch (FamilyOf(type.id)) {
  case Family::Integer: return call.ReturnValue(0);
  case Family::Float: return call.ReturnReal(IsFloor ? std::floor(call.Real(0)) : std::ceil(call.Real(0)));
  default: {
    const Decimal value = call.DecimalAt(0, type);
    std::optional<Decimal> whole = Rescale(value, 0, Rounding::Truncate);
    const bool hasFraction = CompareDecimals(*whole, value) != 0;
    if (hasFraction && value.negative == IsFloor) {
      whole = IsFloor ? SubtractDecimals(*whole, DecimalFromInteger(1), 0)
                      : AddDecimals(*whole, DecimalFromInteger(1), 0);
    }
    call.ReturnDecimal(CheckDecimal(whole ? Rescale(*whole, to.scale) : whole, to, "expression"), to);
  }
  }
}

// Rounds at a position that may be left of the point: it divides by a power of ten, rounds and multiplies.
std::optional<Decimal> RoundDecimal(const Decimal& value, int64_t digits, Rounding rounding) {
  if (digits >= value.scale) return value;
  if (digits < -kMaxPrecision) return Rescale({}, value.scale);
  if (digits >= 0) {
    const std::optional<Decimal> rounded = Rescale(value, static_cast<uint8_t>(digits), rounding);
    return rounded ? Rescale(*rounded, value.scale) : rounded;
  }
  Decimal power = DecimalFromInteger(1);
  for (int64_t i = 0; i < -digits; ++i) {
    const std::optional<Decimal> next = MultiplyDecimals(power, DecimalFromInteger(10), 0);
    if (!next) return Rescale({}, value.scale);
    power = *next;
  }
  // One digit more than wanted, so that Rescale sees what is cut off.
  const std::optional<Decimal> scaled = DivideDecimals(value, power, kMaxPrecision / 2);
  if (!scaled) return std::nullopt;
  const std::optional<Decimal> rounded = Rescale(*scaled, 0, rounding);
  return rounded ? MultiplyDecimals(*rounded, power, value.scale) : rounded;
}

void Round(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  const int64_t digits = call.Integer(3);
  const bool truncate = call.Count() > 4 && call.Integer(4) != 0;
  const Rounding rounding = truncate ? Rounding::Truncate : Rounding::HalfAwayFromZero;
  switch (FamilyOf(type.id)) {
  case Family::Float: {
    const double power = std::pow(10.0, static_cast<double>(digits));
    const double scaled = call.Real(0) * power;
    const double rounded = (truncate ? std::trunc(scaled) : std::round(scaled)) / power;
    return call.ReturnReal(std::isfinite(rounded) ? rounded : call.Real(0));
  }
  case Family::Integer: {
    const std::optional<Decimal> rounded =
        RoundDecimal(DecimalFromInteger(call.Integer(0)), digits, rounding);
    const std::optional<int64_t> value = rounded ? DecimalToInteger(*rounded) : std::nullopt;
    if (!value) Fail(8115, {"expression", TypeName(type.id)});
    return call.ReturnInteger(CheckInteger(*value, type.id));
  }
  default:
    call.ReturnDecimal(
        CheckDecimal(RoundDecimal(call.DecimalAt(0, type), digits, rounding), type, "expression"), type);
  }
}

void ReturnFinite(const FunctionCall& call, double value) {
  if (std::isnan(value)) Fail(3623, {});
  if (!std::isfinite(value)) Fail(8115, {"expression", "float"});
  call.ReturnReal(value);
}

void SquareRoot(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  ReturnFinite(call, std::sqrt(call.Real(0)));
}

void Power(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  ReturnFinite(call, std::pow(call.Real(0), call.Real(1)));
}

void Exp(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  ReturnFinite(call, std::exp(call.Real(0)));
}

// t_log(number[, base])
void Log(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  if (call.Real(0) <= 0) Fail(3623, {});
  if (call.Count() == 1) return ReturnFinite(call, std::log(call.Real(0)));
  if (call.Real(1) <= 0 || call.Real(1) == 1) Fail(3623, {});
  ReturnFinite(call, std::log(call.Real(0)) / std::log(call.Real(1)));
}

template <double (*Function)(double)>
void OfFloat(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  ReturnFinite(call, Function(call.Real(0)));
}

double Cotangent(double angle) {
  return angle == 0 ? std::nan("") : 1 / std::tan(angle);
}

double DegreesOf(double radians) {
  return radians * (180 / std::numbers::pi);
}

double RadiansOf(double degrees) {
  return degrees * (std::numbers::pi / 180);
}

void Arctangent(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  ReturnFinite(call, std::atan2(call.Real(0), call.Real(1)));
}

// t_rand(place[, seed]). Without a seed each place in a statement keeps the value that it had first.
void Random(const FunctionCall& call) {
  RandomNumbers& numbers = call.Context().random;
  if (call.Count() > 1) {
    if (call.IsNull(1)) return call.ReturnNull();
    numbers.Seed(call.Integer(1));
    return call.ReturnReal(numbers.Next());
  }
  std::map<int64_t, double>& values = call.Context().randomValues;
  const auto found = values.find(call.Integer(0));
  if (found != values.end()) return call.ReturnReal(found->second);
  call.ReturnReal(values.emplace(call.Integer(0), numbers.Next()).first->second);
}

void Log10(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  if (call.Real(0) <= 0) Fail(3623, {});
  ReturnFinite(call, std::log10(call.Real(0)));
}

void Square(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  ReturnFinite(call, call.Real(0) * call.Real(0));
}

// Refuses an infinite result, which SQLite computes without an error.
void Finite(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  ReturnFinite(call, call.Real(0));
}

} // namespace

void RegisterNumericFunctions(sqlite3* connection, FunctionContext& context) {
  Register<Range>(connection, context, names::kRange, 2);
  Register<Divide>(connection, context, names::kDivide, 2);
  Register<Modulo>(connection, context, names::kModulo, 2);
  Register<FloatDivide>(connection, context, names::kFloatDivide, 2);
  Register<FloatModulo>(connection, context, names::kFloatModulo, 2);
  Register<Abs>(connection, context, names::kAbs, 3);
  Register<Sign>(connection, context, names::kSign, 3);
  Register<ToWhole<true>>(connection, context, names::kFloor, 3);
  Register<ToWhole<false>>(connection, context, names::kCeiling, 3);
  Register<Round>(connection, context, names::kRound, -1);
  Register<SquareRoot>(connection, context, names::kSqrt, 1);
  Register<Power>(connection, context, names::kPower, 2);
  Register<Exp>(connection, context, names::kExp, 1);
  Register<Log>(connection, context, names::kLog, 1);
  Register<Log>(connection, context, names::kLog, 2);
  Register<OfFloat<std::acos>>(connection, context, names::kAcos, 1);
  Register<OfFloat<std::asin>>(connection, context, names::kAsin, 1);
  Register<OfFloat<std::atan>>(connection, context, names::kAtan, 1);
  Register<Arctangent>(connection, context, names::kAtan2, 2);
  Register<OfFloat<std::cos>>(connection, context, names::kCos, 1);
  Register<OfFloat<Cotangent>>(connection, context, names::kCot, 1);
  Register<OfFloat<std::sin>>(connection, context, names::kSin, 1);
  Register<OfFloat<std::tan>>(connection, context, names::kTan, 1);
  Register<OfFloat<DegreesOf>>(connection, context, names::kDegrees, 1);
  Register<OfFloat<RadiansOf>>(connection, context, names::kRadians, 1);
  Register<Random>(connection, context, names::kRandom, -1, Purity::Volatile);
  Register<Log10>(connection, context, names::kLog10, 1);
  Register<Square>(connection, context, names::kSquare, 1);
  Register<Finite>(connection, context, names::kFinite, 1);
}

} // namespace tsql
