#include "tests/tsql/values/PlainConversion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <limits>
#include <regex>
#include <sstream>

namespace tsql::test::plain {
namespace {

constexpr int64_t kDay = 24 * 60 * 60 * 300; // in ticks
constexpr int kOverflow = 8115;

// The rows in the order of TypeId, a letter for each type in the same order.
constexpr std::array<std::string_view, 25> kAllowed = {
    "IIIIIIIIIIII-II-II-II----", // tinyint
    "IIIIIIIIIIII-II-II-II----", // smallint
    "IIIIIIIIIIII-II-II-II----", // int
    "IIIIIIIIIIII-II-II-II----", // bigint
    "IIIIIIIIIIII-II-II-II----", // bit
    "IIIIIIIIIIII-II-II-II----", // decimal
    "IIIIIIIIIIEE-EE-II-II----", // money
    "IIIIIIIIIIEE-EE-II-II----", // smallmoney
    "IIIIIIIIIIII-II-II-II----", // float
    "IIIIIIIIIIII-II-II-II----", // real
    "IIIIIIIIIIIIIIIIIIIEEIIII", // char
    "IIIIIIIIIIIIIIIIIIIEEIIII", // varchar
    "----------IIIEEI---------", // text
    "IIIIIIIIIIIIIIIIIIIEE-III", // nchar
    "IIIIIIIIIIIIIIIIIIIEE-III", // nvarchar
    "----------EEIIII---------", // ntext
    "EEEEEEEEEEII-II-IIIEE--II", // datetime
    "EEEEEEEEEEII-II-IIIEE--II", // smalldatetime
    "----------II-II-IIIEE---I", // date
    "IIIIIIII--II-II-IIEIIIIEE", // binary
    "IIIIIIII--II-II-IIEIIIIEE", // varbinary
    "-------------------III---", // image
    "----------II-II----II-I--", // uniqueidentifier
    "----------II-II-II-EE--II", // time
    "----------II-II-IIIEE--II", // datetime2
};

Wide Power10(int exponent) {
  Wide power = 1;
  while (exponent-- > 0) power *= 10;
  return power;
}

// Rounds halves away from zero.
Wide DivideRounded(Wide dividend, Wide divisor) {
  const Wide rest = dividend % divisor;
  const Wide away = dividend < 0 ? -1 : 1;
  return dividend / divisor + ((rest < 0 ? -rest : rest) * 2 >= divisor ? away : 0);
}

int64_t FloorDivide(int64_t dividend, int64_t divisor) {
  return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

std::string Digits(Wide number) {
  if (number < 0) return "-" + Digits(-number);
  std::string digits;
  do digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(number % 10)));
  while ((number /= 10) > 0);
  return digits;
}

std::string ExactText(const Exact& value) {
  std::string digits = Digits(value.units < 0 ? -value.units : value.units);
  const auto scale = static_cast<size_t>(value.scale);
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  if (scale > 0) digits.insert(digits.size() - scale, 1, '.');
  return value.units < 0 ? "-" + digits : digits;
}

// ---- texts

struct PageCharacter {
  char32_t character;
  const char* bytes;
};
// Those of the code page beyond ASCII that the values have; no other is in the page.
constexpr PageCharacter kPageCharacters[] = {{U'中', "\xD6\xD0"}, {U'物', "\xCE\xEF"}, {U'é', "\xA8\xA6"}};

bool IsUnicodeType(TypeId id) {
  return id == TypeId::NChar || id == TypeId::NVarChar || id == TypeId::NText;
}

std::string PageBytes(char32_t character) {
  if (character < 0x80) return {static_cast<char>(character)};
  for (const PageCharacter& entry : kPageCharacters)
    if (entry.character == character) return entry.bytes;
  return "?";
}

std::string BytesOf(const std::u32string& text, bool isUnicode) {
  std::string bytes;
  for (const char32_t character : text) {
    if (isUnicode) {
      bytes += static_cast<char>(character & 0xFFU);
      bytes += static_cast<char>(character >> 8U);
    } else {
      bytes += PageBytes(character);
    }
  }
  return bytes;
}

std::u32string TextOf(const std::string& bytes, bool isUnicode) {
  std::u32string text;
  const auto byteAt = [&](size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(bytes[i])); };
  if (isUnicode) {
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
      text += static_cast<char32_t>(byteAt(i) | byteAt(i + 1) << 8U);
    return text;
  }
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (byteAt(i) < 0x80) {
      text += byteAt(i);
      continue;
    }
    const auto* entry =
        std::find_if(std::begin(kPageCharacters), std::end(kPageCharacters),
                     [&](const PageCharacter& each) { return bytes.substr(i, 2) == each.bytes; });
    text += entry == std::end(kPageCharacters) ? U'?' : entry->character;
    if (entry != std::end(kPageCharacters)) ++i;
  }
  return text;
}

std::u32string FromAscii(const std::string& text) {
  return {text.begin(), text.end()};
}

// Cuts what is too long and pads what is too short.
std::u32string FitText(const std::u32string& text, const Type& to) {
  std::u32string fitted;
  int used = 0;
  for (const char32_t character : text) {
    const bool isUnicode = IsUnicodeType(to.id);
    const std::string bytes = PageBytes(character);
    const int needed = isUnicode ? 1 : static_cast<int>(bytes.size());
    if (to.length >= 0 && used + needed > to.length) break;
    used += needed;
    fitted += isUnicode || bytes != "?" ? character : U'?';
  }
  const bool isFixed = to.id == TypeId::Char || to.id == TypeId::NChar;
  if (isFixed) fitted.append(static_cast<size_t>(to.length - used), U' ');
  return fitted;
}

// The text without blanks at both ends. What is not ASCII is no part of a number or date.
std::string Trimmed(const std::u32string& text) {
  std::string ascii;
  for (const char32_t character : text) ascii += character < 0x80 ? static_cast<char>(character) : '?';
  const size_t first = ascii.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return ascii.substr(first, ascii.find_last_not_of(' ') - first + 1);
}

bool Matches(const std::string& text, const char* pattern) {
  return std::regex_match(text, std::regex(pattern, std::regex::ECMAScript | std::regex::icase));
}

std::string Utf8(const std::u32string& text) {
  std::string bytes;
  for (const char32_t c : text) {
    if (c < 0x80) {
      bytes += static_cast<char>(c);
    } else if (c < 0x800) {
      bytes += static_cast<char>(0xC0U | c >> 6U);
      bytes += static_cast<char>(0x80U | (c & 0x3FU));
    } else {
      bytes += static_cast<char>(0xE0U | c >> 12U);
      bytes += static_cast<char>(0x80U | (c >> 6U & 0x3FU));
      bytes += static_cast<char>(0x80U | (c & 0x3FU));
    }
  }
  return bytes;
}

// ---- moments

int64_t DaysOf(int year, unsigned month, unsigned day) {
  using namespace std::chrono;
  return (sys_days(
              year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day))) -
          sys_days(std::chrono::year(1900) / 1 / 1))
      .count();
}

std::chrono::year_month_day DateOf(int64_t days) {
  using namespace std::chrono;
  return sys_days(year(1900) / 1 / 1) + std::chrono::days(days);
}

bool IsInRange(int64_t ticks, TypeId id) {
  const int64_t first = id == TypeId::Date       ? DaysOf(1, 1, 1)
                        : id == TypeId::DateTime ? DaysOf(1753, 1, 1)
                                                 : 0;
  const int64_t last = id == TypeId::SmallDateTime ? DaysOf(2079, 6, 6) : DaysOf(9999, 12, 31);
  return ticks >= first * kDay && ticks < (last + 1) * kDay;
}

Outcome ToMoment(int64_t ticks, TypeId to, int outOfRange) {
  constexpr int64_t kMinute = kDay / (24 * 60);
  if (to == TypeId::Date) ticks = FloorDivide(ticks, kDay) * kDay;
  if (to == TypeId::SmallDateTime) ticks = FloorDivide(ticks + kMinute / 2, kMinute) * kMinute;
  if (!IsInRange(ticks, to)) return {{}, outOfRange};
  return {Moment{ticks}};
}

// ---- times and datetime2

constexpr int64_t kFineDay = 24 * 60 * 60 * int64_t{10000000};
constexpr int kFineDigits = 7;

std::string FineText(int64_t units, const Type& type) {
  const int64_t days = FloorDivide(units, kFineDay);
  const int64_t ofDay = units - days * kFineDay;
  const std::chrono::year_month_day date = DateOf(days);
  std::ostringstream text;
  text << std::setfill('0');
  if (type.id != TypeId::Time)
    text << std::setw(4) << static_cast<int>(date.year()) << '-' << std::setw(2)
         << static_cast<unsigned>(date.month()) << '-' << std::setw(2) << static_cast<unsigned>(date.day())
         << ' ';
  const int64_t seconds = ofDay / 10000000;
  text << std::setw(2) << seconds / 3600 << ':' << std::setw(2) << seconds / 60 % 60 << ':' << std::setw(2)
       << seconds % 60;
  if (type.scale == 0) return text.str();
  text << '.' << std::setw(kFineDigits) << ofDay % 10000000;
  const std::string all = text.str();
  return all.substr(0, all.size() - kFineDigits + type.scale);
}

// Halves are rounded up. A time goes round the clock, and the last moment of the year 9999 is cut.
Outcome ToFine(int64_t units, const Type& to) {
  const auto step = static_cast<int64_t>(Power10(kFineDigits - to.scale));
  if (to.id == TypeId::Time) units -= FloorDivide(units, kFineDay) * kFineDay;
  int64_t rounded = FloorDivide(units + step / 2, step) * step;
  if (to.id == TypeId::Time) return {Fine{rounded % kFineDay}};
  if (rounded >= (DaysOf(9999, 12, 31) + 1) * kFineDay) rounded -= step;
  return {Fine{rounded}};
}

// Of a tick the nearest millisecond counts.
int64_t FineOfTicks(int64_t ticks) {
  const int64_t days = FloorDivide(ticks, kDay);
  return days * kFineDay + static_cast<int64_t>(DivideRounded(Wide{ticks - days * kDay} * 10, 3)) * 10000;
}

Outcome FineToMoment(int64_t units, TypeId to) {
  if (to == TypeId::Date) return ToMoment(FloorDivide(units, kFineDay) * kDay, to, 242);
  const int64_t days = FloorDivide(units, kFineDay);
  const auto ticks = static_cast<int64_t>(DivideRounded(Wide{units - days * kFineDay} * 3, 100000));
  return ToMoment(days * kDay + ticks, to, 242);
}

bool IsFineType(TypeId id) {
  return id == TypeId::Time || id == TypeId::DateTime2;
}

std::string MomentText(int64_t ticks, TypeId from) {
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const int64_t days = FloorDivide(ticks, kDay);
  const std::chrono::year_month_day date = DateOf(days);
  const int minutes = static_cast<int>((ticks - days * kDay) / (kDay / (24 * 60)));
  const auto month = static_cast<unsigned>(date.month());
  std::ostringstream text;
  text << std::setfill('0');
  if (from == TypeId::Date) {
    text << std::setw(4) << static_cast<int>(date.year()) << '-' << std::setw(2) << month << '-'
         << std::setw(2) << static_cast<unsigned>(date.day());
    return text.str();
  }
  const int hour = minutes / 60 % 12 == 0 ? 12 : minutes / 60 % 12;
  text << kMonths[month - 1] << ' ' << std::setfill(' ') << std::setw(2) << static_cast<unsigned>(date.day())
       << ' ' << std::setw(4) << static_cast<int>(date.year()) << ' ' << std::setw(2) << hour << ':'
       << std::setfill('0') << std::setw(2) << minutes % 60 << (minutes / 60 < 12 ? "AM" : "PM");
  return text.str();
}

// ---- to integers

int IntegerBits(TypeId id) {
  return id == TypeId::TinyInt ? 8 : id == TypeId::SmallInt ? 16 : id == TypeId::Int ? 32 : 64;
}

bool FitsInteger(Wide value, TypeId id) {
  const int bits = IntegerBits(id);
  const Wide one = 1;
  if (id == TypeId::TinyInt) return value >= 0 && value < one << bits;
  return value >= -(one << (bits - 1)) && value < one << (bits - 1);
}

Outcome ToInteger(Wide value, TypeId to, int overflow) {
  if (to == TypeId::Bit) return {int64_t{value != 0 ? 1 : 0}};
  if (!FitsInteger(value, to)) return {{}, overflow};
  return {static_cast<int64_t>(value)};
}

uint64_t LastBytes(const std::string& bytes, size_t count) {
  uint64_t number = 0;
  for (size_t i = bytes.size() > count ? bytes.size() - count : 0; i < bytes.size(); ++i)
    number = number << 8U | static_cast<unsigned char>(bytes[i]);
  return number;
}

Outcome TextToInteger(const std::string& text, TypeId to) {
  if (to == TypeId::Bit && Matches(text, "true|false")) return {int64_t{Matches(text, "true")}};
  if (text.empty()) return {int64_t{0}};
  if (!Matches(text, "[+-]?[0-9]+")) return {{}, to == TypeId::BigInt ? 8114 : 245};
  Wide value = 0;
  for (const char digit : text)
    if (digit >= '0' && digit <= '9') value = value * 10 + (digit - '0');
  const int overflow = to == TypeId::BigInt ? kOverflow : to == TypeId::Int ? 248 : 244;
  return ToInteger(text[0] == '-' ? -value : value, to, overflow);
}

// ---- to decimals and money

Wide Limit(const Type& to) {
  const Wide one = 1;
  if (to.id == TypeId::Money) return one << 63;
  if (to.id == TypeId::SmallMoney) return one << 31;
  return Power10(to.precision);
}

Outcome ToExact(const Exact& value, const Type& to) {
  const int scale = to.id == TypeId::Decimal ? to.scale : 4;
  const bool isMoney = to.id != TypeId::Decimal;
  // No value has so many digits that 38 of them are not enough to say that it does not fit.
  if (scale > value.scale &&
      (value.units < 0 ? -value.units : value.units) >= Power10(38 - (scale - value.scale)))
    return {{}, kOverflow};
  const Wide units = scale >= value.scale ? value.units * Power10(scale - value.scale)
                                          : DivideRounded(value.units, Power10(value.scale - scale));
  const Wide limit = Limit(to);
  if (units >= limit || units < -limit || (!isMoney && units == -limit)) return {{}, kOverflow};
  return {Exact{units, scale}};
}

// A float that has at most nine binary places.
Exact ExactOf(double value) {
  return {static_cast<Wide>(value * 512) * 1953125, 9};
}

Outcome TextToExact(const std::string& text, const Type& to) {
  std::string digits = text;
  if (to.id == TypeId::Decimal) {
    if (!Matches(text, "[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)")) return {{}, 8114};
  } else {
    if (!Matches(text, "[+-]?\\$?[0-9,]*\\.?[0-9,]*")) return {{}, to.id == TypeId::Money ? 235 : 293};
  }
  Exact value;
  bool afterPoint = false;
  for (const char character : digits) {
    if (character == '.') afterPoint = true;
    if (character < '0' || character > '9') continue;
    value.units = value.units * 10 + (character - '0');
    value.scale += afterPoint ? 1 : 0;
  }
  if (text.starts_with('-')) value.units = -value.units;
  return ToExact(value, to);
}

size_t MagnitudeSize(int precision) {
  return precision <= 9 ? 4 : precision <= 19 ? 8 : precision <= 28 ? 12 : 16;
}

Outcome BytesToExact(const std::string& bytes, const Type& to) {
  if (to.id == TypeId::Money) return {Exact{static_cast<int64_t>(LastBytes(bytes, 8)), 4}};
  if (to.id == TypeId::SmallMoney) return {Exact{static_cast<int32_t>(LastBytes(bytes, 4)), 4}};
  constexpr int kMalformed = 8114;
  if (bytes.size() < 8) return {{}, kMalformed};
  const int precision = static_cast<unsigned char>(bytes[0]);
  const int scale = static_cast<unsigned char>(bytes[1]);
  const bool isHead = precision >= 1 && precision <= 38 && scale <= precision && bytes[2] == 0 &&
                      (bytes[3] == 0 || bytes[3] == 1) && bytes.size() == 4 + MagnitudeSize(precision);
  if (!isHead) return {{}, kMalformed};
  UnsignedWide magnitude = 0;
  for (size_t i = bytes.size(); i-- > 4;) magnitude = magnitude << 8U | static_cast<unsigned char>(bytes[i]);
  if (magnitude >= static_cast<UnsignedWide>(Power10(precision))) return {{}, kMalformed};
  const auto units = static_cast<Wide>(magnitude);
  return ToExact({bytes[3] == 0 ? -units : units, scale}, to);
}

// ---- to binary

std::string HighFirst(uint64_t number, int size) {
  std::string bytes;
  for (int shift = size - 1; shift >= 0; --shift) bytes += static_cast<char>(number >> (8 * shift));
  return bytes;
}

std::string LowFirst(Wide number, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i));
  return bytes;
}

std::string GuidBytes(const std::string& digits) {
  // The first three groups of digits are shown from the high byte on and kept from the low byte on.
  constexpr size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  std::string bytes;
  for (const size_t place : kOrder)
    bytes += static_cast<char>(std::stoi(digits.substr(place * 2, 2), nullptr, 16));
  return bytes;
}

std::string StoredBytes(const Plain& value, const Type& from) {
  if (const auto* integer = std::get_if<int64_t>(&value))
    return HighFirst(static_cast<uint64_t>(*integer), from.id == TypeId::Bit ? 1 : IntegerBits(from.id) / 8);
  if (const auto* exact = std::get_if<Exact>(&value)) {
    if (from.id != TypeId::Decimal)
      return HighFirst(static_cast<uint64_t>(exact->units), from.id == TypeId::Money ? 8 : 4);
    const bool isNegative = exact->units < 0;
    std::string bytes = {static_cast<char>(from.precision), static_cast<char>(from.scale), 0,
                         static_cast<char>(isNegative ? 0 : 1)};
    return bytes + LowFirst(isNegative ? -exact->units : exact->units, MagnitudeSize(from.precision));
  }
  if (const auto* number = std::get_if<double>(&value)) {
    if (from.id == TypeId::Float) return HighFirst(std::bit_cast<uint64_t>(*number), 8);
    return HighFirst(std::bit_cast<uint32_t>(static_cast<float>(*number)), 4);
  }
  if (const auto* moment = std::get_if<Moment>(&value)) {
    const int64_t days = FloorDivide(moment->ticks, kDay);
    const auto rest = static_cast<uint64_t>(moment->ticks - days * kDay);
    if (from.id == TypeId::Date) return LowFirst(days - DaysOf(1, 1, 1), 3);
    if (from.id == TypeId::DateTime) return HighFirst(static_cast<uint64_t>(days), 4) + HighFirst(rest, 4);
    return HighFirst(static_cast<uint64_t>(days), 2) + HighFirst(rest / 18000, 2);
  }
  if (const auto* fine = std::get_if<Fine>(&value)) {
    // The number of digits, the time in units of the last of them, and the days since the year 1.
    const int64_t days = FloorDivide(fine->units, kFineDay);
    const auto unit = static_cast<int64_t>(Power10(kFineDigits - from.scale));
    const size_t size = from.scale < 3 ? 3 : from.scale < 5 ? 4 : 5;
    std::string bytes =
        static_cast<char>(from.scale) + LowFirst((fine->units - days * kFineDay) / unit, size);
    if (from.id == TypeId::DateTime2) bytes += LowFirst(days - DaysOf(1, 1, 1), 3);
    return bytes;
  }
  return GuidBytes(std::get<Guid>(value).digits);
}

Outcome ToBinary(const Plain& value, const Type& from, const Type& to) {
  const auto* text = std::get_if<std::u32string>(&value);
  const auto* binary = std::get_if<Bytes>(&value);
  const bool onRight = text != nullptr || binary != nullptr;
  std::string bytes = text != nullptr     ? BytesOf(*text, IsUnicodeType(from.id))
                      : binary != nullptr ? binary->bytes
                                          : StoredBytes(value, from);
  const auto length = static_cast<size_t>(std::max(to.length, 0));
  if (to.length >= 0 && bytes.size() > length)
    bytes = onRight ? bytes.substr(0, length) : bytes.substr(bytes.size() - length);
  if (to.id == TypeId::Binary && bytes.size() < length) {
    const std::string zeros(length - bytes.size(), '\0');
    bytes = onRight ? bytes + zeros : zeros + bytes;
  }
  return {Bytes{bytes}};
}

// ---- one function for each family that is wanted

Outcome CastToInteger(const Plain& value, const Type& from, const Type& to) {
  const bool isSmall = to.id == TypeId::TinyInt || to.id == TypeId::SmallInt;
  if (const auto* integer = std::get_if<int64_t>(&value))
    return ToInteger(*integer, to.id, isSmall ? 220 : kOverflow);
  if (const auto* exact = std::get_if<Exact>(&value)) {
    if (to.id == TypeId::Bit) return {int64_t{exact->units != 0}};
    const Wide power = Power10(exact->scale);
    const bool isMoney = from.id != TypeId::Decimal;
    return ToInteger(isMoney ? DivideRounded(exact->units, power) : exact->units / power, to.id, kOverflow);
  }
  if (const auto* number = std::get_if<double>(&value)) {
    if (to.id == TypeId::Bit) return {int64_t{*number != 0}};
    return ToInteger(static_cast<Wide>(*number), to.id, to.id == TypeId::BigInt ? kOverflow : 232);
  }
  if (const auto* text = std::get_if<std::u32string>(&value)) return TextToInteger(Trimmed(*text), to.id);
  if (const auto* moment = std::get_if<Moment>(&value)) {
    if (to.id == TypeId::Bit) return {int64_t{moment->ticks != 0}};
    return ToInteger(FloorDivide(moment->ticks + kDay / 2, kDay), to.id, isSmall ? 220 : kOverflow);
  }
  const std::string& bytes = std::get<Bytes>(value).bytes;
  if (to.id == TypeId::Bit) return {int64_t{LastBytes(bytes, 1) != 0}};
  const int bits = IntegerBits(to.id);
  const uint64_t number = LastBytes(bytes, static_cast<size_t>(bits / 8));
  if (bits == 8 || bits == 64) return {static_cast<int64_t>(number)};
  return {bits == 16 ? int64_t{static_cast<int16_t>(number)} : int64_t{static_cast<int32_t>(number)}};
}

Outcome CastToExact(const Plain& value, const Type& to) {
  if (const auto* integer = std::get_if<int64_t>(&value)) return ToExact({*integer, 0}, to);
  if (const auto* exact = std::get_if<Exact>(&value)) return ToExact(*exact, to);
  if (const auto* number = std::get_if<double>(&value)) return ToExact(ExactOf(*number), to);
  if (const auto* text = std::get_if<std::u32string>(&value)) return TextToExact(Trimmed(*text), to);
  // Moments have whole parts of 1/32 day.
  if (const auto* moment = std::get_if<Moment>(&value))
    return ToExact({Wide{moment->ticks / (kDay / 32)} * 3125, 5}, to);
  return BytesToExact(std::get<Bytes>(value).bytes, to);
}

Outcome CastToFloat(const Plain& value, const Type& to) {
  double number = 0;
  if (const auto* integer = std::get_if<int64_t>(&value)) number = static_cast<double>(*integer);
  if (const auto* exact = std::get_if<Exact>(&value)) number = std::stod(ExactText(*exact));
  if (const auto* real = std::get_if<double>(&value)) number = *real;
  if (const auto* text = std::get_if<std::u32string>(&value)) {
    const std::string trimmed = Trimmed(*text);
    if (!Matches(trimmed, "([+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)(e[+-]?[0-9]+)?)?")) return {{}, 8114};
    number = trimmed.empty() ? 0 : std::stod(trimmed);
  }
  if (const auto* moment = std::get_if<Moment>(&value))
    number = static_cast<double>(moment->ticks) / static_cast<double>(kDay);
  if (to.id == TypeId::Real) number = static_cast<double>(static_cast<float>(number));
  if (std::isinf(number)) return {{}, kOverflow};
  return {number};
}

std::string FloatText(double number) {
  std::ostringstream text;
  text << std::setprecision(6) << number;
  std::string digits = text.str();
  // The exponent has three digits.
  if (const size_t mark = digits.find('e'); mark != std::string::npos) digits.insert(mark + 2, 1, '0');
  return digits;
}

// A number is not cut.
Outcome NumberToText(const std::string& digits, const Type& to, int error) {
  if (to.length >= 0 && digits.size() > static_cast<size_t>(to.length)) return {{}, error};
  return {FitText(FromAscii(digits), to)};
}

Outcome CastToText(const Plain& value, const Type& from, const Type& to) {
  if (const auto* integer = std::get_if<int64_t>(&value)) {
    const std::string digits = std::to_string(*integer);
    const bool isStar = from.id != TypeId::BigInt && !IsUnicodeType(to.id);
    const bool fits = to.length < 0 || digits.size() <= static_cast<size_t>(to.length);
    return isStar && !fits ? Outcome{FitText(U"*", to)} : NumberToText(digits, to, kOverflow);
  }
  if (const auto* exact = std::get_if<Exact>(&value)) {
    if (from.id == TypeId::Decimal) return NumberToText(ExactText(*exact), to, kOverflow);
    return NumberToText(ExactText({DivideRounded(exact->units, 100), 2}), to, 234);
  }
  if (const auto* number = std::get_if<double>(&value)) return NumberToText(FloatText(*number), to, 232);
  if (const auto* text = std::get_if<std::u32string>(&value)) return {FitText(*text, to)};
  if (const auto* moment = std::get_if<Moment>(&value))
    return {FitText(FromAscii(MomentText(moment->ticks, from.id)), to)};
  if (const auto* fine = std::get_if<Fine>(&value))
    return {FitText(FromAscii(FineText(fine->units, from)), to)};
  if (const auto* binary = std::get_if<Bytes>(&value))
    return {FitText(TextOf(binary->bytes, IsUnicodeType(to.id)), to)};
  return NumberToText(Show(value, from), to, 8170);
}

// Days as units / 10^scale.
Outcome DaysToMoment(const Exact& days, TypeId to) {
  constexpr Wide kFarthest = 10000000;
  if (days.units / Power10(days.scale) > kFarthest || days.units / Power10(days.scale) < -kFarthest)
    return {{}, kOverflow};
  return ToMoment(static_cast<int64_t>(DivideRounded(days.units * kDay, Power10(days.scale))), to, kOverflow);
}

// A year; or a day, with or without a time that has up to so many digits of a fraction. The types that came
// later have one error for all texts that they do not take.
Outcome TextToMoment(const std::string& text, const Type& to) {
  const bool isOlder = to.id == TypeId::DateTime || to.id == TypeId::SmallDateTime;
  const int malformed = to.id == TypeId::SmallDateTime ? 295 : 241;
  const int outOfRange = isOlder ? 242 : 241;
  int64_t days = 0;
  int64_t ofDay = 0; // in 100 ns
  if (Matches(text, "[0-9]{4}")) {
    days = DaysOf(std::stoi(text), 1, 1);
  } else if (!text.empty()) {
    const std::regex form(
        "([0-9]{4})-([0-9]{2})-([0-9]{2})( ([0-9]{2}):([0-9]{2})(:([0-9]{2})([.]([0-9]*))?)?)?");
    std::smatch parts;
    if (!std::regex_match(text, parts, form)) return {{}, malformed};
    const auto number = [&](size_t i) { return parts[i].length() == 0 ? 0 : std::stoi(parts[i].str()); };
    std::string fraction = parts[10].str();
    if (parts[9].matched && (fraction.empty() || fraction.size() > (isOlder ? 3U : 7U)))
      return {{}, malformed};
    fraction.resize(kFineDigits, '0');
    const std::chrono::year_month_day date{std::chrono::year(number(1)),
                                           std::chrono::month(static_cast<unsigned>(number(2))),
                                           std::chrono::day(static_cast<unsigned>(number(3)))};
    if (!date.ok()) return {{}, outOfRange};
    days = DaysOf(number(1), static_cast<unsigned>(number(2)), static_cast<unsigned>(number(3)));
    ofDay = ((number(5) * int64_t{60} + number(6)) * 60 + number(8)) * 10000000 + std::stoi(fraction);
  }
  if (IsFineType(to.id)) return ToFine(days * kFineDay + ofDay, to);
  const auto ticks = static_cast<int64_t>(DivideRounded(Wide{ofDay} * 3, 100000));
  return ToMoment(days * kDay + ticks, to.id, outOfRange);
}

Outcome BytesToFine(const std::string& bytes, const Type& to) {
  const auto number = [&](size_t first, size_t count) {
    int64_t sum = 0;
    for (size_t i = first + count; i-- > first;) sum = sum * 256 + static_cast<unsigned char>(bytes[i]);
    return sum;
  };
  const int64_t digits = bytes.empty() ? 99 : number(0, 1);
  if (digits > kFineDigits) return {{}, kOverflow};
  const size_t size = digits < 3 ? 3 : digits < 5 ? 4 : 5;
  const bool hasDay = to.id == TypeId::DateTime2;
  if (bytes.size() != 1 + size + (hasDay ? 3 : 0)) return {{}, kOverflow};
  const auto unit = static_cast<int64_t>(Power10(kFineDigits - static_cast<int>(digits)));
  if (number(1, size) >= kFineDay / unit) return {{}, kOverflow};
  const int64_t days = hasDay ? number(1 + size, 3) + DaysOf(1, 1, 1) : 0;
  if (days > DaysOf(9999, 12, 31)) return {{}, kOverflow};
  return ToFine(days * kFineDay + number(1, size) * unit, to);
}

Outcome CastToMoment(const Plain& value, const Type& to) {
  if (const auto* integer = std::get_if<int64_t>(&value)) return DaysToMoment({*integer, 0}, to.id);
  if (const auto* exact = std::get_if<Exact>(&value)) return DaysToMoment(*exact, to.id);
  if (const auto* number = std::get_if<double>(&value)) return DaysToMoment(ExactOf(*number), to.id);
  if (const auto* moment = std::get_if<Moment>(&value))
    return IsFineType(to.id) ? ToFine(FineOfTicks(moment->ticks), to) : ToMoment(moment->ticks, to.id, 242);
  if (const auto* fine = std::get_if<Fine>(&value))
    return IsFineType(to.id) ? ToFine(fine->units, to) : FineToMoment(fine->units, to.id);
  if (const auto* text = std::get_if<std::u32string>(&value)) return TextToMoment(Trimmed(*text), to);
  if (IsFineType(to.id)) return BytesToFine(std::get<Bytes>(value).bytes, to);
  const std::string& bytes = std::get<Bytes>(value).bytes;
  if (to.id == TypeId::Date) {
    if (bytes.size() != 3) return {{}, kOverflow};
    const auto byteAt = [&](size_t i) { return int64_t{static_cast<unsigned char>(bytes[i])}; };
    return ToMoment((byteAt(0) + byteAt(1) * 256 + byteAt(2) * 65536 + DaysOf(1, 1, 1)) * kDay, to.id,
                    kOverflow);
  }
  if (to.id == TypeId::DateTime) {
    const uint64_t number = LastBytes(bytes, 8);
    const auto rest = static_cast<int64_t>(number & 0xFFFFFFFFU);
    if (rest >= kDay) return {{}, kOverflow};
    return ToMoment(static_cast<int32_t>(number >> 32U) * kDay + rest, to.id, kOverflow);
  }
  const auto number = static_cast<int64_t>(LastBytes(bytes, 4));
  if (number % 65536 >= 24 * 60) return {{}, kOverflow};
  return ToMoment(number / 65536 * kDay + number % 65536 * 18000, to.id, kOverflow);
}

Outcome CastToGuid(const Plain& value) {
  if (std::holds_alternative<Guid>(value)) return {value};
  if (const auto* text = std::get_if<std::u32string>(&value)) {
    const std::string trimmed = Trimmed(*text);
    if (!Matches(trimmed, "[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}")) return {{}, 8169};
    std::string digits;
    for (const char character : trimmed)
      if (character != '-') digits += static_cast<char>(std::toupper(character));
    return {Guid{digits}};
  }
  std::string bytes = std::get<Bytes>(value).bytes;
  bytes.resize(16, '\0');
  std::string hex;
  constexpr std::array<size_t, 16> kPlaces = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  for (const size_t place : kPlaces) {
    std::array<char, 3> pair{};
    std::snprintf(pair.data(), pair.size(), "%02X", static_cast<unsigned char>(bytes[place]));
    hex += pair.data();
  }
  return {Guid{hex}};
}

// ---- values

int64_t Between(std::mt19937_64& random, int64_t low, int64_t high) {
  return std::uniform_int_distribution<int64_t>(low, high)(random);
}

// Any number of bits, so that small and large values come alike; one of them is the lowest of all.
int64_t MakeInteger(TypeId id, std::mt19937_64& random) {
  if (id == TypeId::Bit) return Between(random, 0, 1);
  const int bits = IntegerBits(id) - (id == TypeId::TinyInt ? 0 : 1);
  const auto magnitude =
      static_cast<int64_t>(random() >> static_cast<unsigned>(64 - Between(random, 1, bits)));
  if (id == TypeId::TinyInt) return magnitude;
  return Between(random, 0, 1) == 0 ? magnitude : -magnitude - 1;
}

Exact MakeExact(const Type& type, std::mt19937_64& random) {
  if (type.id != TypeId::Decimal)
    return {MakeInteger(type.id == TypeId::Money ? TypeId::BigInt : TypeId::Int, random), 4};
  Wide units = 0;
  for (int64_t digits = Between(random, 1, type.precision); digits > 0; --digits)
    units = units * 10 + Between(random, 0, 9);
  return {Between(random, 0, 1) == 0 ? units : -units, type.scale};
}

int64_t MakeTicks(TypeId id, std::mt19937_64& random) {
  const bool isSmall = id == TypeId::SmallDateTime;
  const int64_t first = isSmall ? 0 : id == TypeId::Date ? DaysOf(1, 1, 1) : DaysOf(1753, 1, 1);
  const int64_t last = isSmall ? DaysOf(2079, 6, 6) : DaysOf(9999, 12, 31);
  const bool isNear = Between(random, 0, 2) > 0;
  const int64_t days = Between(random, isNear ? std::max<int64_t>(first, -40) : first, isNear ? 300 : last);
  return days * kDay + (id == TypeId::Date ? 0 : Between(random, 0, 31) * (kDay / 32));
}

int64_t MakeFine(const Type& type, std::mt19937_64& random) {
  const auto step = static_cast<int64_t>(Power10(kFineDigits - type.scale));
  const int64_t ofDay = Between(random, 0, kFineDay / step - 1) * step;
  if (type.id == TypeId::Time) return ofDay;
  const bool isNear = Between(random, 0, 2) > 0;
  return Between(random, isNear ? -40 : DaysOf(1, 1, 1), isNear ? 300 : DaysOf(9999, 12, 31)) * kFineDay +
         ofDay;
}

std::string MakeGuid(std::mt19937_64& random) {
  std::string digits;
  for (int i = 0; i < 32; ++i) digits += "0123456789ABCDEF"[Between(random, 0, 15)];
  return digits;
}

std::string GuidText(const std::string& digits) {
  return digits.substr(0, 8) + "-" + digits.substr(8, 4) + "-" + digits.substr(12, 4) + "-" +
         digits.substr(16, 4) + "-" + digits.substr(20);
}

std::u32string MakeText(const Type& type, std::mt19937_64& random) {
  std::u32string text;
  // A GUID that is cut may read as a float of any size.
  const bool holdsGuid = type.length < 0 || type.length >= 36;
  switch (Between(random, holdsGuid ? 0 : 1, 6)) {
  case 0: text = FromAscii(GuidText(MakeGuid(random))); break;
  case 4: text = FromAscii(std::to_string(Between(random, -999, 999))); break;
  case 1:
    text = FromAscii(ExactText({Between(random, -99999, 99999), static_cast<int>(Between(random, 1, 4))}));
    break;
  case 2:
    text = FromAscii((Between(random, 0, 1) == 0 ? "$" : "-$") + std::to_string(Between(random, 1, 99)) +
                     ",500.25");
    break;
  case 3: {
    std::array<char, 16> date{};
    std::snprintf(date.data(), date.size(), "%04d-%02d-%02d", static_cast<int>(Between(random, 1700, 2100)),
                  static_cast<int>(Between(random, 1, 12)), static_cast<int>(Between(random, 1, 31)));
    const Type clock{TypeId::Time, 0, 0, static_cast<uint8_t>(Between(random, 0, 7))};
    const bool hasTime = Between(random, 0, 2) == 0;
    text = FromAscii(date.data() + (hasTime ? " " + FineText(MakeFine(clock, random), clock) : ""));
    break;
  }
  case 5: text = FromAscii(Between(random, 0, 1) == 0 ? "True" : " 98765432109 "); break;
  default:
    for (int64_t count = Between(random, 0, 9); count > 0; --count)
      text += U"xyz B中物éÄ한"[Between(random, 0, 9)];
  }
  return FitText(text, type);
}

std::string MakeBytes(const Type& type, std::mt19937_64& random) {
  std::string bytes;
  switch (Between(random, 0, 4)) {
  case 0:
    bytes = HighFirst(random() >> static_cast<unsigned>(Between(random, 0, 60)),
                      static_cast<int>(Between(random, 1, 8)));
    break;
  case 1: {
    const Type decimal{TypeId::Decimal, 0, static_cast<uint8_t>(Between(random, 1, 30)), 1};
    bytes = StoredBytes(MakeExact(decimal, random), decimal);
    break;
  }
  case 2: {
    const Type moment{Between(random, 0, 1) == 0 ? TypeId::DateTime : TypeId::Date};
    const Type fine{Between(random, 0, 1) == 0 ? TypeId::Time : TypeId::DateTime2, 0, 0,
                    static_cast<uint8_t>(Between(random, 0, 7))};
    bytes = Between(random, 0, 1) == 0 ? StoredBytes(Moment{MakeTicks(moment.id, random)}, moment)
                                       : StoredBytes(Fine{MakeFine(fine, random)}, fine);
    break;
  }
  default:
    for (int64_t count = Between(random, 0, 6); count > 0; --count)
      bytes += PageBytes(U"xyz B\0中物é"[Between(random, 0, 8)]);
  }
  // Bytes that are no characters of the values here stay out.
  for (size_t i = 0; i < bytes.size(); ++i) {
    const bool isPair =
        std::any_of(std::begin(kPageCharacters), std::end(kPageCharacters),
                    [&](const PageCharacter& each) { return bytes.substr(i, 2) == each.bytes; });
    if (isPair) {
      ++i;
    } else {
      bytes[i] = static_cast<char>(bytes[i] & 0x7F);
    }
  }
  return std::get<Bytes>(ToBinary(Bytes{bytes}, type, type).value).bytes;
}

} // namespace

Allowed IsAllowed(TypeId from, TypeId to) {
  const char letter = kAllowed[static_cast<size_t>(from)][static_cast<size_t>(to)];
  return letter == 'I' ? Allowed::Implicitly : letter == 'E' ? Allowed::Explicitly : Allowed::Never;
}

Outcome Cast(const Plain& value, const Type& from, const Type& to) {
  switch (to.id) {
  case TypeId::TinyInt:
  case TypeId::SmallInt:
  case TypeId::Int:
  case TypeId::BigInt:
  case TypeId::Bit: return CastToInteger(value, from, to);
  case TypeId::Decimal:
  case TypeId::Money:
  case TypeId::SmallMoney: return CastToExact(value, to);
  case TypeId::Float:
  case TypeId::Real: return CastToFloat(value, to);
  case TypeId::DateTime:
  case TypeId::SmallDateTime:
  case TypeId::Date:
  case TypeId::Time:
  case TypeId::DateTime2: return CastToMoment(value, to);
  case TypeId::Binary:
  case TypeId::VarBinary:
  case TypeId::Image: return ToBinary(value, from, to);
  case TypeId::UniqueIdentifier: return CastToGuid(value);
  default: return CastToText(value, from, to);
  }
}

Plain MakeValue(const Type& type, std::mt19937_64& random) {
  switch (type.id) {
  case TypeId::Decimal:
  case TypeId::Money:
  case TypeId::SmallMoney: return MakeExact(type, random);
  case TypeId::Float:
  case TypeId::Real:
    if (Between(random, 0, 5) == 0) return type.id == TypeId::Float ? 1e20 : 1048576e10;
    return static_cast<double>(Between(random, -(1 << 19), 1 << 19)) / 512;
  case TypeId::DateTime:
  case TypeId::SmallDateTime:
  case TypeId::Date: return Moment{MakeTicks(type.id, random)};
  case TypeId::Time:
  case TypeId::DateTime2: return Fine{MakeFine(type, random)};
  case TypeId::Binary:
  case TypeId::VarBinary:
  case TypeId::Image: return Bytes{MakeBytes(type, random)};
  case TypeId::UniqueIdentifier: return Guid{MakeGuid(random)};
  case TypeId::TinyInt:
  case TypeId::SmallInt:
  case TypeId::Int:
  case TypeId::BigInt:
  case TypeId::Bit: return MakeInteger(type.id, random);
  default: return MakeText(type, random);
  }
}

std::string Show(const Plain& value, const Type& type) {
  if (const auto* integer = std::get_if<int64_t>(&value)) return std::to_string(*integer);
  if (const auto* exact = std::get_if<Exact>(&value)) return ExactText(*exact);
  if (const auto* number = std::get_if<double>(&value)) {
    // As many digits as are the same however the number was computed.
    std::ostringstream text;
    text << std::setprecision(type.id == TypeId::Real ? 7 : 14) << *number;
    return text.str();
  }
  if (const auto* text = std::get_if<std::u32string>(&value)) return Utf8(*text);
  if (const auto* moment = std::get_if<Moment>(&value)) return std::to_string(moment->ticks);
  if (const auto* fine = std::get_if<Fine>(&value)) return FineText(fine->units, type);
  if (const auto* guid = std::get_if<Guid>(&value)) return GuidText(guid->digits);
  std::string hex = "0x";
  for (const char byte : std::get<Bytes>(value).bytes) {
    std::array<char, 3> pair{};
    std::snprintf(pair.data(), pair.size(), "%02X", static_cast<unsigned char>(byte));
    hex += pair.data();
  }
  return hex;
}

Value ToValue(const Plain& value, std::string& storage) {
  Value result;
  if (const auto* integer = std::get_if<int64_t>(&value)) {
    result.kind = Value::Kind::Integer;
    result.integer = *integer;
  } else if (const auto* exact = std::get_if<Exact>(&value)) {
    const auto magnitude = static_cast<UnsignedWide>(exact->units < 0 ? -exact->units : exact->units);
    result.kind = Value::Kind::Decimal;
    result.decimal = {static_cast<uint64_t>(magnitude), static_cast<uint64_t>(magnitude >> 64U),
                      static_cast<uint8_t>(exact->scale), exact->units < 0};
  } else if (const auto* number = std::get_if<double>(&value)) {
    result.kind = Value::Kind::Float;
    result.real = *number;
  } else if (const auto* moment = std::get_if<Moment>(&value)) {
    const int64_t days = FloorDivide(moment->ticks, kDay);
    result.kind = Value::Kind::DateTime;
    result.datetime = {static_cast<int32_t>(days), static_cast<int32_t>(moment->ticks - days * kDay)};
  } else if (const auto* fine = std::get_if<Fine>(&value)) {
    storage = FineText(fine->units, {TypeId::DateTime2, 0, 0, kFineDigits});
    result.kind = Value::Kind::Text;
    result.text = storage;
  } else if (const auto* binary = std::get_if<Bytes>(&value)) {
    storage = binary->bytes;
    result.kind = Value::Kind::Bytes;
    result.text = storage;
  } else {
    const auto* guid = std::get_if<Guid>(&value);
    storage = guid != nullptr ? GuidText(guid->digits) : Utf8(std::get<std::u32string>(value));
    result.kind = Value::Kind::Text;
    result.text = storage;
  }
  return result;
}

} // namespace tsql::test::plain
