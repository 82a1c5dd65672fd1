#include "tsql/values/BinaryForm.h"

#include <bit>

#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"
#include "tsql/values/Hexadecimal.h"
#include "tsql/values/PowersOfTen.h"

namespace tsql {
namespace {

std::string BigEndian(uint64_t number, int size) {
  std::string bytes;
  for (int i = size; i-- > 0;) bytes.push_back(static_cast<char>(number >> (8U * static_cast<unsigned>(i))));
  return bytes;
}

void AppendLittleEndian(std::string& bytes, uint64_t number, size_t size) {
  for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<char>(number >> (8U * i)));
}

uint64_t ReadLittleEndian(std::string_view bytes) {
  uint64_t number = 0;
  for (size_t i = bytes.size(); i-- > 0;) number = (number << 8U) | static_cast<unsigned char>(bytes[i]);
  return number;
}

// The last `size` bytes as a number, the first of them being the highest.
uint64_t ReadBigEndian(std::string_view bytes, size_t size) {
  uint64_t number = 0;
  for (const char byte : bytes.substr(bytes.size() > size ? bytes.size() - size : 0))
    number = (number << 8U) | static_cast<unsigned char>(byte);
  return number;
}

// ---- decimals: precision, scale, a zero, 1 for a positive sign, and the magnitude from its low byte on

constexpr size_t kDecimalHead = 4;

size_t MagnitudeSize(int precision) {
  return static_cast<size_t>(StorageBytes(MakeDecimal(precision, 0))) - 1;
}

std::string BytesOfDecimal(const Decimal& value, const Type& type) {
  std::string bytes = {static_cast<char>(type.precision), static_cast<char>(type.scale), '\0',
                       static_cast<char>(value.negative ? 0 : 1)};
  std::string magnitude;
  AppendLittleEndian(magnitude, value.low, 8);
  AppendLittleEndian(magnitude, value.high, 8);
  return bytes + magnitude.substr(0, MagnitudeSize(type.precision));
}

std::optional<Decimal> DecimalOfBytes(std::string_view bytes) {
  if (bytes.size() <= kDecimalHead) return std::nullopt;
  const auto precision = static_cast<unsigned char>(bytes[0]);
  const auto scale = static_cast<unsigned char>(bytes[1]);
  const auto sign = static_cast<unsigned char>(bytes[3]);
  if (precision < 1 || precision > kMaxPrecision || scale > precision || bytes[2] != '\0' || sign > 1)
    return std::nullopt;
  const std::string_view magnitude = bytes.substr(kDecimalHead);
  if (magnitude.size() != MagnitudeSize(precision)) return std::nullopt;
  Decimal value;
  value.low = ReadLittleEndian(magnitude.substr(0, 8));
  value.high = magnitude.size() > 8 ? ReadLittleEndian(magnitude.substr(8)) : 0;
  value.scale = scale;
  value.negative = sign == 0 && !IsZero(value);
  if (!FitsPrecision(value, precision)) return std::nullopt;
  return value;
}

// ---- moments

// A time is the number of its digits and, from the low byte on, how often the unit of the last of them fits
// into it; behind that a datetime2 has its day.
constexpr size_t kDaySize = 3;

size_t TimeSize(int digits) {
  return static_cast<size_t>(StorageBytes(MakeFine(TypeId::Time, digits)));
}

int64_t UnitOfDigits(int digits) {
  return kFinePerSecond / PowerOfTen(digits);
}

std::string BytesOfFine(int64_t moment, const Type& type) {
  int64_t days = moment / kFinePerDay;
  if (days * kFinePerDay > moment) --days;
  std::string bytes = {static_cast<char>(type.scale)};
  AppendLittleEndian(bytes, static_cast<uint64_t>((moment - days * kFinePerDay) / UnitOfDigits(type.scale)),
                     TimeSize(type.scale));
  if (type.id == TypeId::DateTime2)
    AppendLittleEndian(bytes, static_cast<uint64_t>(days - DaysFromCivil(1, 1, 1)), kDaySize);
  return bytes;
}

std::optional<int64_t> FineOfBytes(std::string_view bytes, const Type& type) {
  const int digits = bytes.empty() ? kMaxFraction + 1 : static_cast<unsigned char>(bytes[0]);
  if (digits > kMaxFraction) return std::nullopt;
  const size_t timeSize = TimeSize(digits);
  const bool hasDay = type.id == TypeId::DateTime2;
  if (bytes.size() != 1 + timeSize + (hasDay ? kDaySize : 0)) return std::nullopt;
  const uint64_t units = ReadLittleEndian(bytes.substr(1, timeSize));
  const auto most = static_cast<uint64_t>(kFinePerDay / UnitOfDigits(digits));
  if (units >= most) return std::nullopt;
  const int64_t ofDay = static_cast<int64_t>(units) * UnitOfDigits(digits);
  if (!hasDay) return RoundMoment(type, ofDay);
  const auto days =
      static_cast<int64_t>(ReadLittleEndian(bytes.substr(1 + timeSize))) + DaysFromCivil(1, 1, 1);
  const int64_t moment = days * kFinePerDay + ofDay;
  return IsInRange(type.id, moment) ? std::optional(RoundMoment(type, moment)) : std::nullopt;
}

std::string BytesOfMoment(int64_t ticks, TypeId type) {
  const int64_t days = FloorDays(ticks);
  const int64_t rest = ticks - days * kTicksPerDay;
  switch (type) {
  case TypeId::DateTime:
    return BigEndian(static_cast<uint64_t>(days), 4) + BigEndian(static_cast<uint64_t>(rest), 4);
  case TypeId::SmallDateTime:
    return BigEndian(static_cast<uint64_t>(days), 2) +
           BigEndian(static_cast<uint64_t>(rest / kTicksPerMinute), 2);
  default: {
    std::string bytes;
    AppendLittleEndian(bytes, static_cast<uint64_t>(days - DaysFromCivil(1, 1, 1)), 3);
    return bytes;
  }
  }
}

// nullopt for bytes that are no moment.
std::optional<int64_t> MomentOfBytes(std::string_view bytes, TypeId type) {
  switch (type) {
  case TypeId::DateTime: {
    const uint64_t number = ReadBigEndian(bytes, 8);
    const auto days = static_cast<int32_t>(number >> 32U);
    const auto rest = static_cast<int64_t>(number & UINT32_MAX);
    if (rest >= kTicksPerDay) return std::nullopt;
    return days * kTicksPerDay + rest;
  }
  case TypeId::SmallDateTime: {
    const uint64_t number = ReadBigEndian(bytes, 4);
    constexpr uint64_t kMinutesOfDay = kTicksPerDay / kTicksPerMinute;
    if ((number & UINT16_MAX) >= kMinutesOfDay) return std::nullopt;
    return static_cast<int64_t>(number >> 16U) * kTicksPerDay +
           static_cast<int64_t>(number & UINT16_MAX) * kTicksPerMinute;
  }
  default:
    if (bytes.size() != 3) return std::nullopt;
    return (static_cast<int64_t>(ReadLittleEndian(bytes)) + DaysFromCivil(1, 1, 1)) * kTicksPerDay;
  }
}

// ---- GUIDs: the first three groups of digits are numbers with their low byte first

constexpr size_t kGuidSize = 16;
// Which byte of the value the pairs of digits show, from the left.
constexpr size_t kGuidOrder[kGuidSize] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

std::string BytesOfGuid(std::string_view text) {
  std::string digits;
  for (const char character : text)
    if (character != '-') digits.push_back(character);
  const std::optional<std::string> shown = ParseHex(digits, false);
  std::string bytes(kGuidSize, '\0');
  for (size_t i = 0; shown && i < kGuidSize; ++i) bytes[kGuidOrder[i]] = (*shown)[i];
  return bytes;
}

std::string GuidOfBytes(std::string_view bytes) {
  std::string text;
  for (size_t i = 0; i < kGuidSize; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    AppendHex(text, kGuidOrder[i] < bytes.size() ? bytes[kGuidOrder[i]] : '\0');
  }
  return text;
}

int DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  const char lower = static_cast<char>(digit | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

std::string BytesOfValue(const Datum& value, const Type& type) {
  switch (type.id) {
  case TypeId::Decimal: return BytesOfDecimal(DecimalOf(value, type), type);
  case TypeId::Float: return BigEndian(std::bit_cast<uint64_t>(value.real), 8);
  case TypeId::Real: return BigEndian(std::bit_cast<uint32_t>(static_cast<float>(value.real)), 4);
  case TypeId::DateTime:
  case TypeId::SmallDateTime:
  case TypeId::Date: return BytesOfMoment(value.integer, type.id);
  case TypeId::Time:
  case TypeId::DateTime2: return BytesOfFine(value.integer, type);
  case TypeId::UniqueIdentifier: return BytesOfGuid(value.text);
  default: return BigEndian(static_cast<uint64_t>(value.integer), StorageBytes(type));
  }
}

Datum ValueOfBytes(std::string_view bytes, const Type& from, const Type& to) {
  switch (to.id) {
  case TypeId::TinyInt: return Datum::OfInteger(static_cast<int64_t>(ReadBigEndian(bytes, 1)));
  case TypeId::SmallInt: return Datum::OfInteger(static_cast<int16_t>(ReadBigEndian(bytes, 2)));
  case TypeId::Int:
  case TypeId::SmallMoney: return Datum::OfInteger(static_cast<int32_t>(ReadBigEndian(bytes, 4)));
  case TypeId::BigInt:
  case TypeId::Money: return Datum::OfInteger(static_cast<int64_t>(ReadBigEndian(bytes, 8)));
  case TypeId::Bit: return Datum::OfInteger(ReadBigEndian(bytes, 1) != 0 ? 1 : 0);
  case TypeId::Decimal: {
    const std::optional<Decimal> value = DecimalOfBytes(bytes);
    if (!value) break;
    const std::optional<Decimal> scaled = Rescale(*value, to.scale);
    if (!scaled || !FitsPrecision(*scaled, to.precision)) Fail(8115, {TypeName(from.id), TypeName(to.id)});
    return DatumOfDecimal(*scaled, to);
  }
  case TypeId::DateTime:
  case TypeId::SmallDateTime:
  case TypeId::Date: {
    const std::optional<int64_t> ticks = MomentOfBytes(bytes, to.id);
    if (!ticks || !IsInRange(to.id, *ticks)) Fail(8115, {"expression", TypeName(to.id)});
    return Datum::OfInteger(*ticks);
  }
  case TypeId::Time:
  case TypeId::DateTime2: {
    const std::optional<int64_t> moment = FineOfBytes(bytes, to);
    if (!moment) Fail(8115, {"expression", TypeName(to.id)});
    return Datum::OfInteger(*moment);
  }
  case TypeId::UniqueIdentifier: return Datum::OfText(GuidOfBytes(bytes));
  default: break;
  }
  Fail(8114, {TypeName(from.id), TypeName(to.id)});
}

std::optional<std::string> ParseHex(std::string_view text, bool hasPrefix) {
  if (hasPrefix) {
    if (!text.starts_with("0x") && !text.starts_with("0X")) return std::nullopt;
    text.remove_prefix(2);
  }
  if (text.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (size_t i = 0; i < text.size(); i += 2) {
    const int high = DigitValue(text[i]);
    const int low = DigitValue(text[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<char>(high * 16 + low));
  }
  return bytes;
}

} // namespace tsql
