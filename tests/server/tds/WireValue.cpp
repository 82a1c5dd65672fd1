#include "tests/server/tds/WireValue.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "tsql/values/Hexadecimal.h"

namespace tds {
namespace {

using tsql::TypeId;
using Kind = tsql::Value::Kind;

// The protocol's types. Those that end in N may be NULL and say how many bytes they have; those without it
// come only from clients.
enum Wire : uint8_t {
  kImage = 0x22,
  kText = 0x23,
  kGuid = 0x24,
  kIntN = 0x26,
  kDateN = 0x28,
  kTimeN = 0x29,
  kDateTime2N = 0x2A,
  kInt1 = 0x30,
  kBit = 0x32,
  kInt2 = 0x34,
  kInt4 = 0x38,
  kDateTime4 = 0x3A,
  kFloat4 = 0x3B,
  kMoney = 0x3C,
  kDateTime = 0x3D,
  kFloat8 = 0x3E,
  kNText = 0x63,
  kBitN = 0x68,
  kDecimalN = 0x6A,
  kNumericN = 0x6C,
  kFloatN = 0x6D,
  kMoneyN = 0x6E,
  kDateTimeN = 0x6F,
  kMoney4 = 0x7A,
  kInt8 = 0x7F,
  kBigVarBinary = 0xA5,
  kBigVarChar = 0xA7,
  kBigBinary = 0xAD,
  kBigChar = 0xAF,
  kNVarChar = 0xE7,
  kNChar = 0xEF,
};

constexpr uint16_t kNoLimit = 0xFFFF;
constexpr uint16_t kNullLength = 0xFFFF;
constexpr uint64_t kNullLong = std::numeric_limits<uint64_t>::max();
constexpr uint64_t kUnknownLong = kNullLong - 1;
constexpr int32_t kTicksPerDay = 300 * 86400;
constexpr int32_t kTicksPerMinute = 300 * 60;
// From 0001-01-01 to 1900-01-01.
constexpr int32_t kDaysBefore1900 = 693595;

bool IsUnicode(TypeId id) {
  return id == TypeId::NChar || id == TypeId::NVarChar || id == TypeId::NText;
}

bool IsBinary(TypeId id) {
  return id == TypeId::Binary || id == TypeId::VarBinary || id == TypeId::Image;
}

uint8_t SizeOfDecimal(uint8_t precision) {
  return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

// The protocol's type of one that has a length of two bytes.
Wire WireOfText(TypeId id) {
  switch (id) {
  case TypeId::Char: return kBigChar;
  case TypeId::NChar: return kNChar;
  case TypeId::NVarChar: return kNVarChar;
  case TypeId::Binary: return kBigBinary;
  case TypeId::VarBinary: return kBigVarBinary;
  default: return kBigVarChar;
  }
}

std::string BytesOf(const tsql::Value& value, TypeId id) {
  return IsBinary(id) ? std::string(value.text) : tsql::BytesOfText(value.text, IsUnicode(id));
}

// The order of the bytes of a unique identifier in its text.
constexpr std::array<uint8_t, 16> kGuidOrder{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

std::string BytesOfGuid(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 2) {
    if (text[i] == '-') ++i;
    const auto digit = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
    bytes += static_cast<char>(digit(text[i]) << 4 | digit(text[i + 1]));
  }
  bytes.resize(kGuidOrder.size());
  std::string ordered;
  for (const uint8_t index : kGuidOrder) ordered += bytes[index];
  return ordered;
}

std::string TextOfGuid(std::string_view bytes) {
  std::string text;
  for (size_t i = 0; i < kGuidOrder.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    tsql::AppendHex(text, bytes[kGuidOrder[i]]);
  }
  return text;
}

void PutInteger(ByteWriter& out, size_t size, int64_t number) {
  out.Put(static_cast<uint8_t>(size));
  out.PutBytes({reinterpret_cast<const char*>(&number), size});
}

void PutDecimal(ByteWriter& out, const tsql::Type& type, const tsql::Decimal& number) {
  const uint8_t size = SizeOfDecimal(type.precision);
  const std::array<uint64_t, 2> halves{number.low, number.high};
  out.Put(size);
  out.Put(static_cast<uint8_t>(number.negative ? 0 : 1));
  out.PutBytes({reinterpret_cast<const char*>(halves.data()), size - 1U});
}

// Four decimals, in two halves of which the high one comes first.
void PutMoney(ByteWriter& out, bool isSmall, const tsql::Decimal& number) {
  const auto amount = static_cast<int64_t>(number.negative ? ~number.low + 1 : number.low);
  if (isSmall) return PutInteger(out, 4, amount);
  out.Put(uint8_t{8});
  out.Put(static_cast<int32_t>(amount >> 32));
  out.Put(static_cast<uint32_t>(amount));
}

void PutMoment(ByteWriter& out, TypeId id, tsql::DateTime moment) {
  if (id == TypeId::Date) return PutInteger(out, 3, moment.days + kDaysBefore1900);
  if (id == TypeId::SmallDateTime) {
    out.Put(uint8_t{4});
    out.Put(static_cast<uint16_t>(moment.days));
    out.Put(static_cast<uint16_t>(moment.ticks / kTicksPerMinute));
    return;
  }
  out.Put(uint8_t{8});
  out.Put(moment.days);
  out.Put(moment.ticks);
}

// A (max) text: its length, its pieces, and an empty piece.
void PutLong(ByteWriter& out, std::string_view bytes) {
  out.Put(static_cast<uint64_t>(bytes.size()));
  if (!bytes.empty()) {
    out.Put(static_cast<uint32_t>(bytes.size()));
    out.PutBytes(bytes);
  }
  out.Put(uint32_t{0});
}

// A text of the old kind, which has a pointer and a time stamp that nobody uses.
void PutOldLong(ByteWriter& out, std::string_view bytes) {
  constexpr size_t kPointer = 16;
  constexpr size_t kStamp = 8;
  out.Put(static_cast<uint8_t>(kPointer));
  out.PutBytes(std::string(kPointer + kStamp, 'x'));
  out.Put(static_cast<uint32_t>(bytes.size()));
  out.PutBytes(bytes);
}

void PutNull(ByteWriter& out, const tsql::Type& type) {
  const bool isText = type.id >= TypeId::Char && type.id <= TypeId::NVarChar && type.id != TypeId::Text;
  const bool isBytes = type.id == TypeId::Binary || type.id == TypeId::VarBinary;
  if (!isText && !isBytes) return out.Put(uint8_t{0});
  if (type.length < 0) return out.Put(kNullLong);
  out.Put(kNullLength);
}

tsql::Value Number(int64_t number) {
  tsql::Value value;
  value.kind = Kind::Integer;
  value.integer = number;
  return value;
}

tsql::Value Exact(tsql::Decimal number) {
  tsql::Value value;
  value.kind = Kind::Decimal;
  value.decimal = number;
  return value;
}

tsql::Value Moment(int32_t days, int32_t ticks) {
  // To the end of the year 9999.
  constexpr int32_t kLastDay = 2958463;
  if (days < -kDaysBefore1900 || days > kLastDay) throw Malformed("a moment is in a year that none has");
  tsql::Value value;
  value.kind = Kind::DateTime;
  value.datetime = {days, ticks};
  return value;
}

int64_t TakeInteger(ByteReader& in, size_t size) {
  switch (size) {
  case 1: return in.Take<uint8_t>();
  case 2: return in.Take<int16_t>();
  case 4: return in.Take<int32_t>();
  case 8: return in.Take<int64_t>();
  default: throw Malformed("an integer has a size that none has");
  }
}

TypeId IntegerOf(size_t size) {
  return size == 1   ? TypeId::TinyInt
         : size == 2 ? TypeId::SmallInt
         : size == 4 ? TypeId::Int
                     : TypeId::BigInt;
}

tsql::Value TakeFloat(ByteReader& in, size_t size) {
  tsql::Value value;
  value.kind = Kind::Float;
  if (size == sizeof(float))
    value.real = in.Take<float>();
  else if (size == sizeof(double))
    value.real = in.Take<double>();
  else
    throw Malformed("a float has a size that none has");
  if (!std::isfinite(value.real)) throw Malformed("a float is no number");
  return value;
}

tsql::Value TakeMoney(ByteReader& in, size_t size) {
  int64_t amount = 0;
  if (size == 4) {
    amount = in.Take<int32_t>();
  } else if (size == 8) {
    const auto high = in.Take<int32_t>();
    amount = static_cast<int64_t>(high) * (int64_t{1} << 32) + in.Take<uint32_t>();
  } else {
    throw Malformed("an amount of money has a size that none has");
  }
  const auto magnitude = static_cast<uint64_t>(amount);
  return Exact({amount < 0 ? ~magnitude + 1 : magnitude, 0, 4, amount < 0});
}

tsql::Value TakeMoment(ByteReader& in, size_t size) {
  if (size == 4) {
    const auto days = in.Take<uint16_t>();
    return Moment(days, in.Take<uint16_t>() * kTicksPerMinute);
  }
  if (size != 8) throw Malformed("a moment has a size that none has");
  const auto days = in.Take<int32_t>();
  const auto ticks = in.Take<uint32_t>();
  if (ticks >= kTicksPerDay) throw Malformed("a moment has no time of the day");
  return Moment(days, static_cast<int32_t>(ticks));
}

uint64_t TakeUnsigned(ByteReader& in, size_t size) {
  uint64_t number = 0;
  const std::string_view bytes = in.Bytes(size);
  for (size_t i = size; i-- > 0;) number = number << 8 | static_cast<uint8_t>(bytes[i]);
  return number;
}

int32_t TakeDays(ByteReader& in) {
  return static_cast<int32_t>(TakeUnsigned(in, 3)) - kDaysBefore1900;
}

// A moment in parts of a second of which the scale is the exponent, rounded to the engine's.
tsql::Value TakeFineMoment(ByteReader& in, uint8_t scale, size_t size) {
  constexpr uint8_t kFinest = 7;
  if (scale > kFinest || size < 6 || size > 8) throw Malformed("a moment has a size that none has");
  uint64_t parts = TakeUnsigned(in, size - 3);
  for (; scale < kFinest; ++scale) parts *= 10;
  constexpr uint64_t kPartsPerSecond = 10'000'000;
  const auto ticks = static_cast<int64_t>((parts * 300 + kPartsPerSecond / 2) / kPartsPerSecond);
  if (ticks > kTicksPerDay) throw Malformed("a moment has no time of the day");
  const int32_t days = TakeDays(in);
  return ticks == kTicksPerDay ? Moment(days + 1, 0) : Moment(days, static_cast<int32_t>(ticks));
}

tsql::Value TakeDecimal(ByteReader& in, uint8_t scale, size_t size) {
  // Servers send whole words, some drivers no more bytes than there are.
  if (size < 2 || size > 17) throw Malformed("a decimal has a size that none has");
  tsql::Decimal number;
  number.negative = in.Take<uint8_t>() == 0;
  number.low = TakeUnsigned(in, std::min<size_t>(size - 1, 8));
  if (size > 9) number.high = TakeUnsigned(in, size - 9);
  number.scale = scale;
  // 10^38 - 1.
  constexpr uint64_t kMostHigh = 0x4B3B4CA85A86C47A;
  constexpr uint64_t kMostLow = 0x098A223FFFFFFFFF;
  if (number.high > kMostHigh || (number.high == kMostHigh && number.low > kMostLow))
    throw Malformed("a decimal has digits that none has");
  return Exact(number);
}

std::string TakeLong(ByteReader& in) {
  std::string bytes;
  while (const auto size = in.Take<uint32_t>()) bytes += in.Bytes(size);
  return bytes;
}

void SetText(tsql::Parameter& parameter, std::string_view bytes) {
  const TypeId id = parameter.type.id;
  parameter.storage = IsBinary(id) ? std::string(bytes) : tsql::TextOfBytes(bytes, IsUnicode(id));
  parameter.value.kind = IsBinary(id) ? Kind::Bytes : Kind::Text;
  parameter.value.text = parameter.storage;
}

// A type whose length takes two bytes, and a value of it.
void TakeText(ByteReader& in, Wire wire, tsql::Parameter& parameter) {
  parameter.type.id = wire == kBigChar      ? TypeId::Char
                      : wire == kBigVarChar ? TypeId::VarChar
                      : wire == kNChar      ? TypeId::NChar
                      : wire == kNVarChar   ? TypeId::NVarChar
                      : wire == kBigBinary  ? TypeId::Binary
                                            : TypeId::VarBinary;
  const TypeId id = parameter.type.id;
  const auto most = in.Take<uint16_t>();
  if (!IsBinary(id)) in.Bytes(kCollationBytes.size());
  if (most == kNoLimit) {
    parameter.type.length = -1;
    const auto length = in.Take<uint64_t>();
    if (length == kNullLong) return;
    const std::string bytes = TakeLong(in);
    if (length != kUnknownLong && length != bytes.size())
      throw Malformed("a text has another length than it says");
    return SetText(parameter, bytes);
  }
  parameter.type.length = std::max(IsUnicode(id) ? most / 2 : most, 1);
  const auto length = in.Take<uint16_t>();
  if (length == kNullLength) return;
  if (length > most) throw Malformed("a text is longer than its type");
  SetText(parameter, in.Bytes(length));
}

void TakeOldLong(ByteReader& in, Wire wire, tsql::Parameter& parameter) {
  parameter.type.id = wire == kText ? TypeId::Text : wire == kNText ? TypeId::NText : TypeId::Image;
  parameter.type.length = -1;
  in.Take<uint32_t>();
  if (wire != kImage) in.Bytes(kCollationBytes.size());
  constexpr uint32_t kNullOldLong = 0xFFFFFFFF;
  const auto length = in.Take<uint32_t>();
  if (length != kNullOldLong) SetText(parameter, in.Bytes(length));
}

// The types that cannot be NULL have no sizes before them.
bool TakeFixed(ByteReader& in, Wire wire, tsql::Parameter& parameter) {
  tsql::Type& type = parameter.type;
  const auto integer = [&](size_t size) {
    type.id = IntegerOf(size);
    parameter.value = Number(TakeInteger(in, size));
  };
  switch (wire) {
  case kInt1: integer(1); return true;
  case kInt2: integer(2); return true;
  case kInt4: integer(4); return true;
  case kInt8: integer(8); return true;
  case kBit:
    type.id = TypeId::Bit;
    parameter.value = Number(in.Take<uint8_t>() != 0 ? 1 : 0);
    return true;
  case kFloat4:
    type.id = TypeId::Real;
    parameter.value = TakeFloat(in, 4);
    return true;
  case kFloat8:
    type.id = TypeId::Float;
    parameter.value = TakeFloat(in, 8);
    return true;
  case kMoney4:
  case kMoney:
    type = {.id = wire == kMoney ? TypeId::Money : TypeId::SmallMoney, .precision = 19, .scale = 4};
    parameter.value = TakeMoney(in, wire == kMoney ? 8 : 4);
    return true;
  case kDateTime4:
  case kDateTime:
    type.id = wire == kDateTime ? TypeId::DateTime : TypeId::SmallDateTime;
    parameter.value = TakeMoment(in, wire == kDateTime ? 8 : 4);
    return true;
  default: return false;
  }
}

} // namespace

bool HasTableName(const tsql::Type& type) {
  return type.id == TypeId::Text || type.id == TypeId::NText || type.id == TypeId::Image;
}

namespace {

// Clients of the protocol's older versions get the later types as texts.
bool IsSentAsText(const tsql::Type& type) {
  return type.id == TypeId::Time || type.id == TypeId::DateTime2;
}

tsql::Type MomentText() {
  constexpr int32_t kLongest = 27; // yyyy-mm-dd hh:mm:ss.fffffff
  return {.id = TypeId::NVarChar, .length = kLongest};
}

} // namespace

void PutType(ByteWriter& out, const tsql::Type& type) {
  if (IsSentAsText(type)) return PutType(out, MomentText());
  const auto sized = [&](Wire wire, uint8_t size) {
    out.Put(static_cast<uint8_t>(wire));
    out.Put(size);
  };
  switch (type.id) {
  case TypeId::TinyInt: return sized(kIntN, 1);
  case TypeId::SmallInt: return sized(kIntN, 2);
  case TypeId::Int: return sized(kIntN, 4);
  case TypeId::BigInt: return sized(kIntN, 8);
  case TypeId::Bit: return sized(kBitN, 1);
  case TypeId::Money: return sized(kMoneyN, 8);
  case TypeId::SmallMoney: return sized(kMoneyN, 4);
  case TypeId::Float: return sized(kFloatN, 8);
  case TypeId::Real: return sized(kFloatN, 4);
  case TypeId::DateTime: return sized(kDateTimeN, 8);
  case TypeId::SmallDateTime: return sized(kDateTimeN, 4);
  case TypeId::UniqueIdentifier: return sized(kGuid, 16);
  case TypeId::Date: return out.Put(static_cast<uint8_t>(kDateN));
  case TypeId::Decimal:
    sized(kDecimalN, SizeOfDecimal(type.precision));
    out.Put(type.precision);
    out.Put(type.scale);
    return;
  case TypeId::Text:
  case TypeId::NText:
  case TypeId::Image:
    out.Put(static_cast<uint8_t>(type.id == TypeId::Text    ? kText
                                 : type.id == TypeId::NText ? kNText
                                                            : kImage));
    out.Put(std::numeric_limits<int32_t>::max());
    break;
  default:
    out.Put(static_cast<uint8_t>(WireOfText(type.id)));
    out.Put(type.length < 0 ? kNoLimit
                            : static_cast<uint16_t>(std::max(type.length, 1) * (IsUnicode(type.id) ? 2 : 1)));
  }
  if (!IsBinary(type.id)) out.PutBytes(kCollationBytes);
}

void PutValue(ByteWriter& out, const tsql::Type& type, const tsql::Value& value) {
  if (IsSentAsText(type)) return PutValue(out, MomentText(), value);
  if (value.kind == Kind::Null) return PutNull(out, type);
  switch (type.id) {
  case TypeId::TinyInt:
  case TypeId::Bit: return PutInteger(out, 1, value.integer);
  case TypeId::SmallInt: return PutInteger(out, 2, value.integer);
  case TypeId::Int: return PutInteger(out, 4, value.integer);
  case TypeId::BigInt: return PutInteger(out, 8, value.integer);
  case TypeId::Decimal: return PutDecimal(out, type, value.decimal);
  case TypeId::Money: return PutMoney(out, false, value.decimal);
  case TypeId::SmallMoney: return PutMoney(out, true, value.decimal);
  case TypeId::Float: out.Put(uint8_t{8}); return out.Put(value.real);
  case TypeId::Real: out.Put(uint8_t{4}); return out.Put(static_cast<float>(value.real));
  case TypeId::DateTime:
  case TypeId::SmallDateTime:
  case TypeId::Date: return PutMoment(out, type.id, value.datetime);
  case TypeId::UniqueIdentifier: out.Put(uint8_t{16}); return out.PutBytes(BytesOfGuid(value.text));
  case TypeId::Text:
  case TypeId::NText:
  case TypeId::Image: return PutOldLong(out, BytesOf(value, type.id));
  default: break;
  }
  const std::string bytes = BytesOf(value, type.id);
  if (type.length < 0) return PutLong(out, bytes);
  out.Put(static_cast<uint16_t>(bytes.size()));
  out.PutBytes(bytes);
}

void TakeTypeAndValue(ByteReader& in, tsql::Parameter& parameter) {
  const auto wire = static_cast<Wire>(in.Take<uint8_t>());
  tsql::Type& type = parameter.type;
  switch (wire) {
  case kBigChar:
  case kBigVarChar:
  case kNChar:
  case kNVarChar:
  case kBigBinary:
  case kBigVarBinary: return TakeText(in, wire, parameter);
  case kText:
  case kNText:
  case kImage: return TakeOldLong(in, wire, parameter);
  default: break;
  }
  if (TakeFixed(in, wire, parameter)) return;

  // The type's size or scale; then the value's size, which is 0 for NULL.
  const uint8_t most = wire == kDateN ? uint8_t{3} : in.Take<uint8_t>();
  if (wire == kDecimalN || wire == kNumericN) {
    type.precision = in.Take<uint8_t>();
    type.scale = in.Take<uint8_t>();
    constexpr uint8_t kMostDigits = 38;
    if (type.precision < 1 || type.precision > kMostDigits || type.scale > type.precision)
      throw Malformed("a decimal has digits that none has");
  }
  const auto size = in.Take<uint8_t>();
  const bool isNull = size == 0;
  switch (wire) {
  case kIntN:
    type.id = IntegerOf(most);
    if (!isNull) parameter.value = Number(TakeInteger(in, size));
    return;
  case kBitN:
    type.id = TypeId::Bit;
    if (!isNull) parameter.value = Number(TakeInteger(in, size) != 0 ? 1 : 0);
    return;
  case kFloatN:
    type.id = most == sizeof(float) ? TypeId::Real : TypeId::Float;
    if (!isNull) parameter.value = TakeFloat(in, size);
    return;
  case kMoneyN:
    type = {.id = most == 4 ? TypeId::SmallMoney : TypeId::Money, .precision = 19, .scale = 4};
    if (!isNull) parameter.value = TakeMoney(in, size);
    return;
  case kDateTimeN:
    type.id = most == 4 ? TypeId::SmallDateTime : TypeId::DateTime;
    if (!isNull) parameter.value = TakeMoment(in, size);
    return;
  case kDateTime2N:
    type.id = TypeId::DateTime;
    if (!isNull) parameter.value = TakeFineMoment(in, most, size);
    return;
  case kDateN:
    type.id = TypeId::Date;
    if (!isNull) parameter.value = Moment(TakeDays(in), 0);
    return;
  case kDecimalN:
  case kNumericN:
    type.id = TypeId::Decimal;
    if (!isNull) parameter.value = TakeDecimal(in, type.scale, size);
    return;
  case kGuid:
    type.id = TypeId::UniqueIdentifier;
    if (isNull) return;
    if (size != kGuidOrder.size()) throw Malformed("a unique identifier has a size that none has");
    parameter.storage = TextOfGuid(in.Bytes(size));
    parameter.value.kind = Kind::Text;
    parameter.value.text = parameter.storage;
    return;
  default: throw Malformed("a parameter has a type that the server does not know");
  }
}

} // namespace tds
