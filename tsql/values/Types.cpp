#include "tsql/values/Types.h"

#include <algorithm>
#include <cassert>

#include "tsql/values/Collation.h"
#include "tsql/values/Decimal.h"

namespace tsql {
namespace {

struct TypeEntry {
  const char* name;
  int precedence;
  int digits; // of the decimal that holds every value
  int scale;
  TypeId id;
};

// In the order of TypeId.
constexpr TypeEntry kTypes[] = {
    {"tinyint", 9, 3, 0, TypeId::TinyInt},
    {"smallint", 10, 5, 0, TypeId::SmallInt},
    {"int", 11, 10, 0, TypeId::Int},
    {"bigint", 12, 19, 0, TypeId::BigInt},
    {"bit", 8, 1, 0, TypeId::Bit},
    {"numeric", 15, 0, 0, TypeId::Decimal},
    {"money", 14, 19, 4, TypeId::Money},
    {"smallmoney", 13, 10, 4, TypeId::SmallMoney},
    {"float", 17, 0, 0, TypeId::Float},
    {"real", 16, 0, 0, TypeId::Real},
    {"char", 2, 0, 0, TypeId::Char},
    {"varchar", 3, 0, 0, TypeId::VarChar},
    {"text", 6, 0, 0, TypeId::Text},
    {"nchar", 4, 0, 0, TypeId::NChar},
    {"nvarchar", 5, 0, 0, TypeId::NVarChar},
    {"ntext", 7, 0, 0, TypeId::NText},
    {"datetime", 21, 0, 0, TypeId::DateTime},
    {"smalldatetime", 20, 0, 0, TypeId::SmallDateTime},
    {"date", 19, 0, 0, TypeId::Date},
    {"binary", 0, 0, 0, TypeId::Binary},
    {"varbinary", 1, 0, 0, TypeId::VarBinary},
    {"image", 1, 0, 0, TypeId::Image},
    {"uniqueidentifier", 6, 0, 0, TypeId::UniqueIdentifier},
    {"time", 18, 0, 0, TypeId::Time},
    {"datetime2", 22, 0, 0, TypeId::DateTime2},
};

const TypeEntry& EntryOf(TypeId id) {
  const TypeEntry& entry = kTypes[static_cast<size_t>(id)];
  assert(entry.id == id);
  return entry;
}

constexpr int kMaxBytes = 8000;

int32_t CommonLength(const Type& left, const Type& right) {
  if (left.length < 0 || right.length < 0) return -1;
  return std::max(left.length, right.length);
}

Type CommonText(const Type& left, const Type& right) {
  Type type = Precedence(left.id) >= Precedence(right.id) ? left : right;
  // The common type of char and varchar is varchar, and its length is the longer one.
  type.length = IsLob(type.id) ? -1 : CommonLength(left, right);
  return type;
}

Type CommonDecimal(const Type& left, const Type& right) {
  const Type a = AsDecimal(left);
  const Type b = AsDecimal(right);
  const int scale = std::max(a.scale, b.scale);
  const int whole = std::max(a.precision - a.scale, b.precision - b.scale);
  if (whole + scale <= kMaxPrecision) return MakeDecimal(whole + scale, scale);
  return MakeDecimal(kMaxPrecision, std::max(kMaxPrecision - whole, std::min(scale, 6)));
}

// How many digits of a second's fraction a moment may need.
uint8_t FractionDigits(const Type& type) {
  constexpr uint8_t kOfDateTime = 3;
  if (IsFine(type.id)) return type.scale;
  return type.id == TypeId::DateTime ? kOfDateTime : 0;
}

Type LimitDecimal(int precision, int scale) {
  if (precision <= kMaxPrecision) return MakeDecimal(precision, scale);
  // The whole part has priority, but at least six decimal places stay.
  return MakeDecimal(kMaxPrecision, std::max(kMaxPrecision - (precision - scale), std::min(scale, 6)));
}

Type DecimalResult(ArithmeticOp op, const Type& left, const Type& right) {
  const int p1 = left.precision;
  const int s1 = left.scale;
  const int p2 = right.precision;
  const int s2 = right.scale;
  const int whole = std::max(p1 - s1, p2 - s2);
  const int scale = std::max(s1, s2);
  switch (op) {
  case ArithmeticOp::Multiply: return LimitDecimal(p1 + p2 + 1, s1 + s2);
  case ArithmeticOp::Divide: {
    const int quotient = std::max(6, s1 + p2 + 1);
    return LimitDecimal(p1 - s1 + s2 + quotient, quotient);
  }
  case ArithmeticOp::Modulo: return LimitDecimal(std::min(p1 - s1, p2 - s2) + scale, scale);
  default:
    if (whole + scale + 1 <= kMaxPrecision) return MakeDecimal(whole + scale + 1, scale);
    return MakeDecimal(kMaxPrecision, std::min(scale, kMaxPrecision - whole));
  }
}

} // namespace

bool IsUnicode(TypeId id) {
  return id == TypeId::NChar || id == TypeId::NVarChar || id == TypeId::NText;
}

bool IsFixedLength(TypeId id) {
  return id == TypeId::Char || id == TypeId::NChar || id == TypeId::Binary;
}

bool IsMoney(TypeId id) {
  return id == TypeId::Money || id == TypeId::SmallMoney;
}

bool IsLob(TypeId id) {
  return id == TypeId::Text || id == TypeId::NText || id == TypeId::Image;
}

bool IsFine(TypeId id) {
  return id == TypeId::Time || id == TypeId::DateTime2;
}

bool IsNumeric(const Type& type) {
  const Family family = FamilyOf(type.id);
  return family == Family::Integer || family == Family::Decimal || family == Family::Float;
}

bool IsWide(const Type& type) {
  return type.id == TypeId::Decimal && type.precision > 18;
}

Type MakeType(TypeId id, int32_t length) {
  Type type;
  type.id = id;
  type.length = IsLob(id) ? -1 : length;
  if (IsMoney(id)) {
    type.precision = static_cast<uint8_t>(EntryOf(id).digits);
    type.scale = 4;
  }
  if (IsFine(id)) type.scale = kMaxFraction;
  return type;
}

Type MakeDecimal(int precision, int scale) {
  Type type;
  type.id = TypeId::Decimal;
  type.precision = static_cast<uint8_t>(precision);
  type.scale = static_cast<uint8_t>(scale);
  return type;
}

Type MakeFine(TypeId id, int digits) {
  Type type = MakeType(id);
  type.scale = static_cast<uint8_t>(digits);
  return type;
}

Type AsDecimal(const Type& type) {
  if (type.id == TypeId::Decimal) return type;
  const TypeEntry& entry = EntryOf(type.id);
  // An integer constant carries the digits that it has.
  const int digits =
      type.precision != 0 && FamilyOf(type.id) == Family::Integer ? type.precision : entry.digits;
  return MakeDecimal(digits, entry.scale);
}

int Precedence(TypeId id) {
  return EntryOf(id).precedence;
}

Type CommonType(const Type& left, const Type& right) {
  if (IsText(left) && IsText(right)) return CommonText(left, right);
  const bool leftWins = Precedence(left.id) >= Precedence(right.id);
  Type type = leftWins ? left : right;
  const Type& other = leftWins ? right : left;
  const Family otherFamily = FamilyOf(other.id);
  if (FamilyOf(type.id) == Family::Binary && left.id != right.id)
    return MakeType(TypeId::VarBinary, CommonLength(left, right));
  if (type.id == TypeId::Decimal && (otherFamily == Family::Decimal || otherFamily == Family::Integer))
    return CommonDecimal(left, right);
  if (IsFine(type.id)) type.scale = std::max(FractionDigits(type), FractionDigits(other));
  // The digits of a constant do not describe the other operand.
  if (FamilyOf(type.id) == Family::Integer) type.precision = 0;
  if (type.id == other.id) type.length = CommonLength(left, right);
  return type;
}

Type ArithmeticType(ArithmeticOp op, const Type& left, const Type& right) {
  if (IsText(left) && IsText(right)) {
    Type type = CommonText(left, right);
    if (type.length >= 0) {
      const int32_t limit = IsUnicode(type.id) ? kMaxBytes / 2 : kMaxBytes;
      type.length = std::min(left.length + right.length, limit);
    }
    return type;
  }
  const Type common = CommonType(left, right);
  return common.id == TypeId::Decimal ? DecimalResult(op, AsDecimal(left), AsDecimal(right)) : common;
}

std::string TypeName(TypeId id) {
  return EntryOf(id).name;
}

std::optional<TypeId> FindType(std::string_view name) {
  struct Alias {
    const char* name;
    TypeId id;
  };
  constexpr Alias kAliases[] = {{"integer", TypeId::Int},      {"decimal", TypeId::Decimal},
                                {"dec", TypeId::Decimal},      {"character", TypeId::Char},
                                {"sysname", TypeId::NVarChar}, {"double", TypeId::Float}};
  for (const TypeEntry& entry : kTypes)
    if (EqualNames(entry.name, name)) return entry.id;
  for (const Alias& alias : kAliases)
    if (EqualNames(alias.name, name)) return alias.id;
  return std::nullopt;
}

bool TakesLength(TypeId id) {
  const Family family = FamilyOf(id);
  return (family == Family::Text || family == Family::Binary) && !IsLob(id);
}

int StorageBytes(const Type& type) {
  switch (type.id) {
  case TypeId::Bit:
  case TypeId::TinyInt: return 1;
  case TypeId::SmallInt: return 2;
  case TypeId::Int:
  case TypeId::Real:
  case TypeId::SmallMoney:
  case TypeId::SmallDateTime: return 4;
  case TypeId::Date: return 3;
  case TypeId::Time: return type.scale <= 2 ? 3 : type.scale <= 4 ? 4 : 5;
  case TypeId::DateTime2: return type.scale <= 2 ? 6 : type.scale <= 4 ? 7 : 8;
  case TypeId::BigInt:
  case TypeId::Float:
  case TypeId::Money:
  case TypeId::DateTime: return 8;
  case TypeId::Decimal:
    return type.precision <= 9 ? 5 : type.precision <= 19 ? 9 : type.precision <= 28 ? 13 : 17;
  default: return 16;
  }
}

int64_t EncodeType(const Type& type) {
  return static_cast<int64_t>(type.id) | (int64_t{type.precision} << 8) | (int64_t{type.scale} << 16) |
         (int64_t{type.length} * (int64_t{1} << 24));
}

Type DecodeType(int64_t code) {
  Type type;
  type.id = static_cast<TypeId>(code & 0xFF);
  type.precision = static_cast<uint8_t>((code >> 8) & 0xFF);
  type.scale = static_cast<uint8_t>((code >> 16) & 0xFF);
  type.length = static_cast<int32_t>(code >> 24);
  return type;
}

} // namespace tsql
