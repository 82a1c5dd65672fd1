#include "tsql/values/Conversion.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <limits>

#include "tsql/values/BinaryForm.h"
#include "tsql/values/CodePage.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Currency.h"
#include "tsql/values/DateText.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Hexadecimal.h"

namespace tsql {
namespace {

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return TrimTrailingBlanks(text);
}

// ---- to text

// The length of a text as the type counts it. No text has more bytes in the code page than in UTF-8.
size_t LengthAs(const std::string& text, const Type& type) {
  return IsUnicode(type.id) ? CharCount(text) : PageSize(text);
}

// The text holds only characters that the type can hold.
Datum FitText(std::string text, const Type& to, ConvertMode mode) {
  if (to.length < 0) return Datum::OfText(std::move(text));
  const auto limit = static_cast<size_t>(to.length);
  if (text.size() > limit && LengthAs(text, to) > limit) {
    const size_t end = IsUnicode(to.id) ? CharOffset(text, limit) : PageOffset(text, limit);
    // Blanks at the end are always cut.
    if (mode == ConvertMode::Assign && text.find_first_not_of(' ', end) != std::string::npos) Fail(8152, {});
    text.resize(end);
  }
  if (IsFixedLength(to.id)) text.append(limit - LengthAs(text, to), ' ');
  return Datum::OfText(std::move(text));
}

// In the code page a text of Unicode loses the characters that the page lacks.
Datum TextToText(const std::string& text, const Type& from, const Type& to, ConvertMode mode) {
  return FitText(IsUnicode(from.id) && !IsUnicode(to.id) ? KeepPage(text) : text, to, mode);
}

// How CONVERT between texts and binary values takes the text, by its style.
enum class BinaryStyle : uint8_t { Characters = 0, PrefixedDigits = 1, Digits = 2 };

BinaryStyle BinaryStyleOf(int style, const Type& from, const Type& to) {
  if (style < 0 || style > 2) Fail(9809, {std::to_string(style), TypeName(from.id), TypeName(to.id)});
  return static_cast<BinaryStyle>(style);
}

Datum BinaryToText(const std::string& bytes, const Type& from, const Type& to, int style) {
  const BinaryStyle form = BinaryStyleOf(style, from, to);
  if (form == BinaryStyle::Characters)
    return FitText(TextOfBytes(bytes, IsUnicode(to.id)), to, ConvertMode::Cast);
  std::string digits = form == BinaryStyle::PrefixedDigits ? "0x" : "";
  for (const char byte : bytes) AppendHex(digits, byte);
  return FitText(std::move(digits), to, ConvertMode::Cast);
}

// A number is never cut: an integer of up to 32 bits that is too long becomes "*", any other is an error.
Datum FitNumberText(std::string text, const Type& from, const Type& to) {
  if (to.length < 0 || text.size() <= static_cast<size_t>(to.length))
    return FitText(std::move(text), to, ConvertMode::Cast);
  const bool isShort = FamilyOf(from.id) == Family::Integer && from.id != TypeId::BigInt;
  if (isShort && !IsUnicode(to.id)) return FitText("*", to, ConvertMode::Cast);
  if (IsMoney(from.id)) Fail(234, {TypeName(to.id)});
  Fail(8115, {FamilyOf(from.id) == Family::Integer ? "expression" : TypeName(from.id), TypeName(to.id)});
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

// The error of a float that does not fit into another type.
[[noreturn]] void FailFloat(double value, TypeId to) {
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%f", value);
  Fail(232, {TypeName(to), text.data()});
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
  case Family::Text: return TextToText(value.text, from, to, mode);
  case Family::Integer: return FitNumberText(std::to_string(value.integer), from, to);
  case Family::Decimal: {
    const Decimal number = DecimalOf(value, from);
    return FitNumberText(IsMoney(from.id) ? MoneyText(number, style) : DecimalToText(number), from, to);
  }
  case Family::Float: {
    std::string text = FloatText(value.real, style);
    if (to.length >= 0 && text.size() > static_cast<size_t>(to.length)) FailFloat(value.real, to.id);
    return FitText(std::move(text), to, mode);
  }
  case Family::DateTime: {
    const std::optional<std::string> text = FormatDateTime(value.integer, from, style);
    if (!text) Fail(281, {std::to_string(style), TypeName(from.id)});
    return FitText(*text, to, mode);
  }
  case Family::Guid:
    if (to.length >= 0 && to.length < 36) Fail(8170, {});
    return FitText(value.text, to, mode);
  case Family::Binary: return BinaryToText(value.text, from, to, style);
  }
  return {};
}

// ---- to numbers

bool FitsInteger(int64_t value, TypeId type) {
  switch (type) {
  case TypeId::TinyInt: return value >= 0 && value <= UINT8_MAX;
  case TypeId::SmallInt: return value >= INT16_MIN && value <= INT16_MAX;
  case TypeId::Int:
  case TypeId::SmallMoney: return value >= INT32_MIN && value <= INT32_MAX;
  default: return true;
  }
}

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
  if (error == std::errc() && FitsInteger(number, to.id)) return Datum::OfInteger(number);
  if (to.id == TypeId::BigInt) Fail(8115, {"expression", TypeName(to.id)});
  if (to.id == TypeId::Int) Fail(248, {TypeName(from.id), value.text});
  Fail(244, {TypeName(from.id), value.text, to.id == TypeId::TinyInt ? "INT1" : "INT2"});
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
    if (!integer || !FitsInteger(*integer, to.id)) Fail(8115, {TypeName(from.id), TypeName(to.id)});
    return Datum::OfInteger(*integer);
  }
  case Family::Float: {
    if (to.id == TypeId::Bit) return Datum::OfInteger(value.real != 0 ? 1 : 0);
    constexpr double kLimit = 9223372036854775808.0;
    const double whole = std::trunc(value.real);
    const bool isWord = whole >= -kLimit && whole < kLimit;
    if (to.id == TypeId::BigInt && !isWord) Fail(8115, {"expression", TypeName(to.id)});
    if (!isWord || !FitsInteger(static_cast<int64_t>(whole), to.id)) FailFloat(value.real, to.id);
    return Datum::OfInteger(static_cast<int64_t>(whole));
  }
  case Family::DateTime:
    if (to.id == TypeId::Bit) return Datum::OfInteger(value.integer != 0 ? 1 : 0);
    return Datum::OfInteger(CheckInteger(MomentToDays(value.integer), to.id));
  case Family::Binary: return ValueOfBytes(value.text, from, to);
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

// The text of a money value without thousands separators and currency sign, on either side of which the sign
// may stand.
std::string MoneyDigits(std::string_view text) {
  text = TrimBlanks(text);
  std::string digits;
  const auto takeSign = [&] {
    if (!text.starts_with('-') && !text.starts_with('+')) return;
    digits = text.front();
    text.remove_prefix(1);
  };
  takeSign();
  if (TakeCurrency(text) && digits.empty()) takeSign();
  // The server takes an amount without digits for zero.
  if (text.find_first_not_of(".,") == std::string_view::npos &&
      std::count(text.begin(), text.end(), '.') <= 1)
    return "0";
  for (const char character : text)
    if (character != ',') digits.push_back(character);
  return digits;
}

Datum TextToDecimal(const Datum& value, const Type& from, const Type& to) {
  if (IsMoney(to.id)) {
    const std::optional<Decimal> number = ParseDecimal(MoneyDigits(value.text));
    if (!number) Fail(to.id == TypeId::Money ? 235 : 293, {});
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
  case Family::Binary: return ValueOfBytes(value.text, from, to);
  case Family::Guid: break;
  }
  Fail(529, {TypeName(from.id), TypeName(to.id)});
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

// A moment in the unit of `to`.
Datum StoreMoment(int64_t moment, const Type& from, const Type& to) {
  moment = RoundMoment(to, moment);
  if (IsInRange(to.id, moment)) return Datum::OfInteger(moment);
  if (IsText(from) || FamilyOf(from.id) == Family::DateTime) Fail(242, {TypeName(from.id), TypeName(to.id)});
  Fail(8115, {"expression", TypeName(to.id)});
}

Datum TextToMoment(const Datum& value, const Type& from, const Type& to, int style) {
  int64_t moment = 0;
  const DateParse outcome = ParseDateTime(value.text, to.id, style, moment);
  // date, time and datetime2 do not tell what no moment can be from what is out of their range.
  const bool isOlder = to.id == TypeId::DateTime || to.id == TypeId::SmallDateTime;
  if (outcome == DateParse::OutOfRange && isOlder) Fail(242, {TypeName(from.id), TypeName(to.id)});
  if (outcome != DateParse::Ok) Fail(to.id == TypeId::SmallDateTime ? 295 : 241, {});
  return StoreMoment(moment, from, to);
}

Datum ToDateTime(const Datum& value, const Type& from, const Type& to, int style) {
  constexpr double kFarthest = 4000000; // days
  switch (FamilyOf(from.id)) {
  case Family::DateTime: return StoreMoment(ConvertMoment(value.integer, from.id, to), from, to);
  case Family::Text: return TextToMoment(value, from, to, style);
  case Family::Integer:
  case Family::Decimal:
  case Family::Float: {
    if (to.id == TypeId::Date || IsFine(to.id)) Fail(529, {TypeName(from.id), TypeName(to.id)});
    const double days = ToFloat(value, from, MakeType(TypeId::Float)).real;
    if (std::abs(days) > kFarthest) Fail(8115, {"expression", TypeName(to.id)});
    return StoreMoment(std::llround(days * static_cast<double>(kTicksPerDay)), from, to);
  }
  case Family::Binary: return ValueOfBytes(value.text, from, to);
  case Family::Guid: break;
  }
  Fail(529, {TypeName(from.id), TypeName(to.id)});
}

// Texts and binary values are padded and cut on the right.
Datum FitBinary(std::string bytes, const Type& to, ConvertMode mode) {
  if (to.length >= 0) {
    const auto limit = static_cast<size_t>(to.length);
    if (bytes.size() > limit && mode == ConvertMode::Assign) Fail(8152, {});
    if (bytes.size() > limit || IsFixedLength(to.id)) bytes.resize(limit, '\0');
  }
  return Datum::OfBlob(std::move(bytes));
}

// All other values are padded and cut on the left.
Datum FitBinaryLeft(std::string bytes, const Type& to) {
  if (to.length >= 0) {
    const auto limit = static_cast<size_t>(to.length);
    if (bytes.size() > limit) bytes.erase(0, bytes.size() - limit);
    if (IsFixedLength(to.id)) bytes.insert(0, limit - bytes.size(), '\0');
  }
  return Datum::OfBlob(std::move(bytes));
}

Datum TextToBinary(const std::string& text, const Type& from, const Type& to, ConvertMode mode, int style) {
  const BinaryStyle form = BinaryStyleOf(style, from, to);
  if (form == BinaryStyle::Characters) return FitBinary(BytesOfText(text, IsUnicode(from.id)), to, mode);
  std::optional<std::string> bytes = ParseHex(text, form == BinaryStyle::PrefixedDigits);
  if (!bytes) Fail(8114, {TypeName(from.id), TypeName(to.id)});
  return FitBinary(std::move(*bytes), to, mode);
}

Datum ToBinary(const Datum& value, const Type& from, const Type& to, ConvertMode mode, int style) {
  switch (FamilyOf(from.id)) {
  case Family::Binary: return FitBinary(value.text, to, mode);
  case Family::Text: return TextToBinary(value.text, from, to, mode, style);
  default: return FitBinaryLeft(BytesOfValue(value, from), to);
  }
}

Datum ToGuid(const Datum& value, const Type& from, const Type& to) {
  if (FamilyOf(from.id) == Family::Guid) return value;
  if (FamilyOf(from.id) == Family::Binary) return ValueOfBytes(value.text, from, to);
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
  if (FitsInteger(value, type)) return value;
  const bool isSmall = type == TypeId::TinyInt || type == TypeId::SmallInt;
  if (isSmall) Fail(220, {TypeName(type), std::to_string(value)});
  Fail(8115, {"expression", TypeName(type)});
}

const Decimal& CheckDecimal(const std::optional<Decimal>& value, const Type& type, std::string_view source) {
  constexpr uint64_t kMoneyLimit = uint64_t{1} << 63U;
  constexpr uint64_t kSmallMoneyLimit = uint64_t{1} << 31U;
  bool fits = value.has_value();
  if (fits && IsMoney(type.id)) {
    // There is one value more below zero than above.
    const uint64_t limit = type.id == TypeId::Money ? kMoneyLimit : kSmallMoneyLimit;
    fits = value->high == 0 && value->low < limit + (value->negative ? 1 : 0);
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
  case Family::DateTime: return ToDateTime(value, from, to, style);
  case Family::Binary: return ToBinary(value, from, to, mode, style);
  case Family::Guid: return ToGuid(value, from, to);
  }
  return {};
}

} // namespace tsql
