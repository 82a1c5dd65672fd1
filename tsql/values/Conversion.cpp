#include "tsql/values/Conversion.h"

#include "tsql/values/Collation.h"
#include "tsql/values/DateText.h"
#include "tsql/values/Errors.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <limits>

namespace tsql {
namespace {

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return TrimTrailingBlanks(text);
}

// ---- to text

std::string PadText(std::string text, int32_t length) {
  const auto wanted = static_cast<size_t>(std::max(length, 0));
  const size_t count = CharCount(text);
  if (count < wanted) text.append(wanted - count, ' ');
  return text;
}

Datum FitText(std::string text, const Type& to, ConvertMode mode) {
  if (to.length < 0) return Datum::OfText(std::move(text));
  const auto limit = static_cast<size_t>(to.length);
  if (text.size() > limit && CharCount(text) > limit) {
    const size_t end = CharOffset(text, limit);
    // Blanks at the end are always cut.
    if (mode == ConvertMode::Assign && text.find_first_not_of(' ', end) != std::string::npos) Fail(8152, {});
    text.resize(end);
  }
  if (IsFixedLength(to.id)) text = PadText(std::move(text), to.length);
  return Datum::OfText(std::move(text));
}

// A number is never cut: an integer that is too long becomes "*", any other is an error.
Datum FitNumberText(std::string text, const Type& from, const Type& to) {
  if (to.length < 0 || text.size() <= static_cast<size_t>(to.length))
    return FitText(std::move(text), to, ConvertMode::Cast);
  if (FamilyOf(from.id) == Family::Integer && !IsUnicode(to.id)) return FitText("*", to, ConvertMode::Cast);
  const bool isExpression = FamilyOf(from.id) == Family::Integer || FamilyOf(from.id) == Family::Float;
  Fail(8115, {isExpression ? "expression" : TypeName(from.id), TypeName(to.id)});
}

std::string FloatText(double value, int style) {
  std::array<char, 40> buffer{};
  const char* format = style == 1 ? "%.7e" : style == 2 ? "%.15e" : "%.6g";
  const int length = std::snprintf(buffer.data(), buffer.size(), format, value);
  std::string text(buffer.data(), static_cast<size_t>(length));
  // The server writes exponents with three digits.
  const size_t mark = text.find('e');
  if (mark != std::string::npos) {
    const size_t digits = text.size() - mark - 2;
    if (digits < 3) text.insert(mark + 2, 3 - digits, '0');
  }
  return text == "-0" ? "0" : text;
}

std::string MoneyText(const Decimal& value, int style) {
  if (style == 2) return DecimalToText(value);
  std::string text = DecimalToText(*Rescale(value, 2));
  if (style == 1) {
    const size_t start = value.negative ? 1 : 0;
    for (size_t at = text.size() - 3; at > start + 3; at -= 3) text.insert(at - 3, 1, ',');
  }
  return text;
}

Datum ToText(const Datum& value, const Type& from, const Type& to, ConvertMode mode, int style) {
  switch (FamilyOf(from.id)) {
  case Family::Text: return FitText(value.text, to, mode);
  case Family::Integer: return FitNumberText(std::to_string(value.integer), from, to);
  case Family::Decimal: {
    const Decimal number = DecimalOf(value, from);
    return FitNumberText(IsMoney(from.id) ? MoneyText(number, style) : DecimalToText(number), from, to);
  }
  case Family::Float: return FitNumberText(FloatText(value.real, style), from, to);
  case Family::DateTime: {
    const std::optional<std::string> text = FormatDateTime(value.integer, from.id, style);
    if (!text) Fail(281, {std::to_string(style), TypeName(from.id)});
    return FitText(*text, to, mode);
  }
  case Family::Guid:
    if (to.length >= 0 && to.length < 36) Fail(8115, {"expression", TypeName(to.id)});
    return FitText(value.text, to, mode);
  case Family::Binary: return FitText(value.text, to, mode);
  }
  return {};
}

// ---- to numbers

[[noreturn]] void FailTextToInteger(const Datum& value, const Type& from, TypeId to) {
  if (to == TypeId::BigInt) Fail(8114, {TypeName(from.id), TypeName(to)});
  Fail(245, {TypeName(from.id), value.text, TypeName(to)});
}

Datum TextToInteger(const Datum& value, const Type& from, const Type& to) {
  std::string_view text = TrimBlanks(value.text);
  if (to.id == TypeId::Bit) {
    if (EqualNames(text, "true")) return Datum::OfInteger(1);
    if (EqualNames(text, "false")) return Datum::OfInteger(0);
  }
  if (text.empty()) return Datum::OfInteger(0);
  std::string_view digits = text;
  if (digits.front() == '+' || digits.front() == '-') digits.remove_prefix(1);
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos)
    FailTextToInteger(value, from, to.id);
  if (text.front() == '+') text.remove_prefix(1);
  int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (to.id == TypeId::Bit && error == std::errc()) return Datum::OfInteger(number != 0 ? 1 : 0);
  bool fits = error == std::errc();
  if (to.id == TypeId::Int) fits = fits && number >= INT32_MIN && number <= INT32_MAX;
  if (to.id == TypeId::SmallInt) fits = fits && number >= INT16_MIN && number <= INT16_MAX;
  if (to.id == TypeId::TinyInt) fits = fits && number >= 0 && number <= UINT8_MAX;
  if (fits) return Datum::OfInteger(number);
  if (to.id == TypeId::BigInt) Fail(8115, {"expression", TypeName(to.id)});
  if (to.id == TypeId::Int) Fail(248, {TypeName(from.id), value.text});
  Fail(244, {TypeName(from.id), value.text, to.id == TypeId::TinyInt ? "INT1" : "INT2"});
}

int64_t BinaryToInteger(std::string_view bytes) {
  uint64_t number = 0;
  for (const char byte : bytes.substr(bytes.size() > 8 ? bytes.size() - 8 : 0))
    number = (number << 8U) | static_cast<unsigned char>(byte);
  return static_cast<int64_t>(number);
}

int64_t MomentToDays(int64_t ticks) {
  return FloorDays(ticks + kTicksPerDay / 2);
}

Datum ToInteger(const Datum& value, const Type& from, const Type& to) {
  switch (FamilyOf(from.id)) {
  case Family::Text: return TextToInteger(value, from, to);
  case Family::Integer:
    return Datum::OfInteger(to.id == TypeId::Bit ? static_cast<int64_t>(value.integer != 0)
                                                 : CheckInteger(value.integer, to.id));
  case Family::Decimal: {
    const Decimal number = DecimalOf(value, from);
    if (to.id == TypeId::Bit) return Datum::OfInteger(IsZero(number) ? 0 : 1);
    // A money value is rounded, any other decimal is cut off.
    const std::optional<Decimal> whole =
        Rescale(number, 0, IsMoney(from.id) ? Rounding::HalfAwayFromZero : Rounding::Truncate);
    const std::optional<int64_t> integer = whole ? DecimalToInteger(*whole) : std::nullopt;
    const bool isInt = integer && (to.id != TypeId::Int || (*integer >= INT32_MIN && *integer <= INT32_MAX));
    if (!isInt) Fail(8115, {TypeName(from.id), TypeName(to.id)});
    return Datum::OfInteger(CheckInteger(*integer, to.id));
  }
  case Family::Float: {
    if (to.id == TypeId::Bit) return Datum::OfInteger(value.real != 0 ? 1 : 0);
    constexpr double kLimit = 9223372036854775808.0;
    const double whole = std::trunc(value.real);
    if (!(whole >= -kLimit && whole < kLimit)) Fail(8115, {"expression", TypeName(to.id)});
    return Datum::OfInteger(CheckInteger(static_cast<int64_t>(whole), to.id));
  }
  case Family::DateTime: return Datum::OfInteger(CheckInteger(MomentToDays(value.integer), to.id));
  case Family::Binary: {
    const int64_t number = BinaryToInteger(value.text);
    return Datum::OfInteger(to.id == TypeId::Int ? static_cast<int32_t>(number)
                                                 : CheckInteger(number, to.id));
  }
  case Family::Guid: break;
  }
  Fail(529, {TypeName(from.id), TypeName(to.id)});
}

std::optional<double> ParseDouble(std::string_view text) {
  text = TrimBlanks(text);
  if (text.empty()) return 0.0;
  if (text.front() == '+') text.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
  return number;
}

// The text of a money value without currency sign and thousands separators.
std::string MoneyDigits(std::string_view text) {
  std::string digits;
  for (const char character : TrimBlanks(text))
    if (character != ',' && character != '$') digits.push_back(character);
  return digits.empty() ? "0" : digits;
}

Datum TextToDecimal(const Datum& value, const Type& from, const Type& to) {
  if (IsMoney(to.id)) {
    const std::optional<Decimal> number = ParseDecimal(MoneyDigits(value.text));
    if (!number) Fail(235, {});
    return StoreDecimal(Rescale(*number, to.scale), to, TypeName(from.id));
  }
  const std::optional<Decimal> number = ParseDecimal(TrimBlanks(value.text));
  if (!number) Fail(8114, {TypeName(from.id), TypeName(to.id)});
  return StoreDecimal(Rescale(*number, to.scale), to, TypeName(from.id));
}

Datum ToDecimal(const Datum& value, const Type& from, const Type& to) {
  switch (FamilyOf(from.id)) {
  case Family::Text: return TextToDecimal(value, from, to);
  case Family::Integer:
    return StoreDecimal(Rescale(DecimalFromInteger(value.integer), to.scale), to,
                        from.id == TypeId::Int ? "expression" : TypeName(from.id));
  case Family::Decimal: return StoreDecimal(Rescale(DecimalOf(value, from), to.scale), to, TypeName(from.id));
  case Family::Float: return StoreDecimal(DecimalFromDouble(value.real, to.scale), to, TypeName(from.id));
  case Family::DateTime:
    return StoreDecimal(DecimalFromDouble(static_cast<double>(value.integer) / kTicksPerDay, to.scale), to,
                        TypeName(from.id));
  default: Fail(529, {TypeName(from.id), TypeName(to.id)});
  }
}

Datum ToFloat(const Datum& value, const Type& from, const Type& to) {
  double number = 0;
  switch (FamilyOf(from.id)) {
  case Family::Text: {
    const std::optional<double> parsed = ParseDouble(value.text);
    if (!parsed) Fail(8114, {TypeName(from.id), TypeName(to.id)});
    number = *parsed;
    break;
  }
  case Family::Integer: number = static_cast<double>(value.integer); break;
  case Family::Decimal: number = DecimalToDouble(DecimalOf(value, from)); break;
  case Family::Float: number = value.real; break;
  case Family::DateTime: number = static_cast<double>(value.integer) / kTicksPerDay; break;
  default: Fail(529, {TypeName(from.id), TypeName(to.id)});
  }
  if (to.id == TypeId::Real) {
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
      Fail(8115, {"expression", TypeName(to.id)});
    number = static_cast<double>(static_cast<float>(number));
  }
  return Datum::OfReal(number);
}

// ---- to the other families

Datum StoreMoment(int64_t ticks, const Type& from, const Type& to) {
  ticks = RoundMoment(to.id, ticks);
  if (IsInRange(to.id, ticks)) return Datum::OfInteger(ticks);
  if (IsText(from) || FamilyOf(from.id) == Family::DateTime) Fail(242, {TypeName(from.id), TypeName(to.id)});
  Fail(8115, {"expression", TypeName(to.id)});
}

Datum ToDateTime(const Datum& value, const Type& from, const Type& to) {
  constexpr double kFarthest = 4000000; // days
  switch (FamilyOf(from.id)) {
  case Family::DateTime: return StoreMoment(value.integer, from, to);
  case Family::Text: {
    int64_t ticks = 0;
    const DateParse outcome = ParseDateTime(value.text, to.id, ticks);
    if (outcome == DateParse::Malformed) Fail(241, {});
    if (outcome == DateParse::OutOfRange) Fail(242, {TypeName(from.id), TypeName(to.id)});
    return StoreMoment(ticks, from, to);
  }
  case Family::Integer:
  case Family::Decimal:
  case Family::Float: {
    if (to.id == TypeId::Date) Fail(529, {TypeName(from.id), TypeName(to.id)});
    const double days = ToFloat(value, from, MakeType(TypeId::Float)).real;
    if (std::abs(days) > kFarthest) Fail(8115, {"expression", TypeName(to.id)});
    return StoreMoment(std::llround(days * static_cast<double>(kTicksPerDay)), from, to);
  }
  default: Fail(529, {TypeName(from.id), TypeName(to.id)});
  }
}

Datum FitBinary(std::string bytes, const Type& to, ConvertMode mode) {
  if (to.length >= 0) {
    const auto limit = static_cast<size_t>(to.length);
    if (bytes.size() > limit && mode == ConvertMode::Assign) Fail(8152, {});
    if (bytes.size() > limit || IsFixedLength(to.id)) bytes.resize(limit, '\0');
  }
  return Datum::OfBlob(std::move(bytes));
}

Datum ToBinary(const Datum& value, const Type& from, const Type& to, ConvertMode mode) {
  switch (FamilyOf(from.id)) {
  case Family::Binary:
  case Family::Text: return FitBinary(value.text, to, mode);
  case Family::Integer: {
    const unsigned size = from.id == TypeId::BigInt     ? 8
                          : from.id == TypeId::Int      ? 4
                          : from.id == TypeId::SmallInt ? 2
                                                        : 1;
    std::string bytes;
    for (unsigned i = size; i-- > 0;)
      bytes.push_back(static_cast<char>(static_cast<uint64_t>(value.integer) >> (8 * i)));
    return FitBinary(std::move(bytes), to, mode);
  }
  default: Fail(529, {TypeName(from.id), TypeName(to.id)});
  }
}

Datum ToGuid(const Datum& value, const Type& from, const Type& to) {
  if (FamilyOf(from.id) == Family::Guid) return value;
  if (!IsText(from)) Fail(529, {TypeName(from.id), TypeName(to.id)});
  std::string_view text = TrimBlanks(value.text);
  if (text.size() == 38 && text.front() == '{' && text.back() == '}') text = text.substr(1, 36);
  text = text.substr(0, 36);
  if (text.size() != 36) Fail(8169, {});
  std::string guid = ToUpper(text);
  for (size_t i = 0; i < guid.size(); ++i) {
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    const bool hexadecimal = (guid[i] >= '0' && guid[i] <= '9') || (guid[i] >= 'A' && guid[i] <= 'F');
    if (dash ? guid[i] != '-' : !hexadecimal) Fail(8169, {});
  }
  return Datum::OfText(std::move(guid));
}

} // namespace

int64_t CheckInteger(int64_t value, TypeId type) {
  switch (type) {
  case TypeId::TinyInt:
    if (value < 0 || value > UINT8_MAX) Fail(220, {"tinyint", std::to_string(value)});
    break;
  case TypeId::SmallInt:
    if (value < INT16_MIN || value > INT16_MAX) Fail(220, {"smallint", std::to_string(value)});
    break;
  case TypeId::Int:
    if (value < INT32_MIN || value > INT32_MAX) Fail(8115, {"expression", "int"});
    break;
  default: break;
  }
  return value;
}

const Decimal& CheckDecimal(const std::optional<Decimal>& value, const Type& type, std::string_view source) {
  constexpr uint64_t kMoneyLimit = uint64_t{1} << 63U;
  constexpr uint64_t kSmallMoneyLimit = uint64_t{1} << 31U;
  bool fits = value.has_value();
  if (fits && IsMoney(type.id)) {
    const uint64_t limit = type.id == TypeId::Money ? kMoneyLimit : kSmallMoneyLimit;
    fits = value->high == 0 && value->low < limit;
  } else if (fits) {
    fits = FitsPrecision(*value, type.precision);
  }
  if (!fits) Fail(8115, {source, TypeName(type.id)});
  return *value;
}

Datum StoreDecimal(const std::optional<Decimal>& value, const Type& type, std::string_view source) {
  return DatumOfDecimal(CheckDecimal(value, type, source), type);
}

Datum Convert(const Datum& value, const Type& from, const Type& to, ConvertMode mode, int style) {
  if (value.IsNull()) return value;
  switch (FamilyOf(to.id)) {
  case Family::Integer: return ToInteger(value, from, to);
  case Family::Decimal: return ToDecimal(value, from, to);
  case Family::Float: return ToFloat(value, from, to);
  case Family::Text: return ToText(value, from, to, mode, style);
  case Family::DateTime: return ToDateTime(value, from, to);
  case Family::Binary: return ToBinary(value, from, to, mode);
  case Family::Guid: return ToGuid(value, from, to);
  }
  return {};
}

Conversion FindConversion(TypeId from, TypeId to) {
  const Family source = FamilyOf(from);
  const Family target = FamilyOf(to);
  if (source == target) return Conversion::Implicit;
  const bool numericSource =
      source == Family::Integer || source == Family::Decimal || source == Family::Float;
  const bool numericTarget =
      target == Family::Integer || target == Family::Decimal || target == Family::Float;
  if (numericSource && numericTarget) return Conversion::Implicit;
  if (IsLob(from) || IsLob(to)) {
    // The large types convert only to and from character types.
    if (target == Family::Binary && source == Family::Integer) return Conversion::Impossible;
    return source == Family::Text && target != Family::Binary && !IsLob(from) ? Conversion::Implicit
                                                                              : Conversion::Impossible;
  }
  if (source == Family::Text)
    return target == Family::Binary ? Conversion::ExplicitOnly : Conversion::Implicit;
  if (target == Family::Text) return IsMoney(from) ? Conversion::ExplicitOnly : Conversion::Implicit;
  if (source == Family::DateTime)
    return from == TypeId::Date || !numericTarget ? Conversion::Impossible : Conversion::ExplicitOnly;
  if (target == Family::DateTime)
    return to == TypeId::Date || !numericSource ? Conversion::Impossible : Conversion::Implicit;
  if (source == Family::Integer && target == Family::Binary) return Conversion::Implicit;
  if (source == Family::Binary && target == Family::Integer) return Conversion::Implicit;
  return Conversion::Impossible;
}

} // namespace tsql
