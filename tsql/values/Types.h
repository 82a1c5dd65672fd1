// T-SQL types: families, precedence, the types of arithmetic, and how each type is stored in SQLite.
//
// Storage is chosen so that comparisons, ordering and indexes work natively in SQLite:
//   integers, bit             INTEGER
//   money, decimal(<= 18)     INTEGER, the value times 10^scale; the scale is in the type, never in the value
//   decimal(> 18)             BLOB of 16 bytes whose byte order is the numeric order (Decimal.h)
//   float, real               REAL
//   character types, guid     TEXT in UTF-8; character columns carry the collation, char, varchar and text
//                             have only characters of the code page (CodePage.h)
//   datetime types, date      INTEGER, 1/300 s ticks since 1900-01-01 (DateTime.h)
//   time, datetime2           INTEGER, 100 ns since midnight and since 1900-01-01
//   binary types              BLOB
#pragma once

#include "tsql/tsql.h"

namespace tsql {

enum class Family : uint8_t { Integer, Decimal, Float, Text, DateTime, Binary, Guid };

// Database files keep the numbers, within the SQL of CHECK constraints.
enum class ArithmeticOp : uint8_t {
  Add = 0,
  Subtract = 1,
  Multiply = 2,
  Divide = 3,
  Modulo = 4,
  BitAnd = 5,
  BitOr = 6,
  BitXor = 7,
};

// Each value that is read or bound asks for it.
constexpr Family FamilyOf(TypeId id) {
  switch (id) {
  case TypeId::TinyInt:
  case TypeId::SmallInt:
  case TypeId::Int:
  case TypeId::BigInt:
  case TypeId::Bit: return Family::Integer;
  case TypeId::Decimal:
  case TypeId::Money:
  case TypeId::SmallMoney: return Family::Decimal;
  case TypeId::Float:
  case TypeId::Real: return Family::Float;
  case TypeId::Char:
  case TypeId::VarChar:
  case TypeId::Text:
  case TypeId::NChar:
  case TypeId::NVarChar:
  case TypeId::NText: return Family::Text;
  case TypeId::DateTime:
  case TypeId::SmallDateTime:
  case TypeId::Date:
  case TypeId::Time:
  case TypeId::DateTime2: return Family::DateTime;
  case TypeId::Binary:
  case TypeId::VarBinary:
  case TypeId::Image: return Family::Binary;
  case TypeId::UniqueIdentifier: break;
  }
  return Family::Guid;
}
inline bool IsText(const Type& type) {
  return FamilyOf(type.id) == Family::Text;
}
bool IsUnicode(TypeId id);
bool IsFixedLength(TypeId id); // char, nchar and binary, whose values are padded
bool IsMoney(TypeId id);
bool IsLob(TypeId id);  // text, ntext, image
bool IsFine(TypeId id); // time and datetime2, which count 100 ns
bool IsNumeric(const Type& type);
// Whether values are stored as a blob of 16 bytes.
bool IsWide(const Type& type);

Type MakeType(TypeId id, int32_t length = 0);
Type MakeDecimal(int precision, int scale);
// A time or datetime2 with so many digits of a second's fraction; MakeType gives it all of them.
constexpr int kMaxFraction = 7;
Type MakeFine(TypeId id, int digits);
// The decimal that holds every value of an integer or money type.
Type AsDecimal(const Type& type);

int Precedence(TypeId id);
// The type to which both sides of a comparison, branches of CASE and columns of UNION are converted.
Type CommonType(const Type& left, const Type& right);
// The result of an operator on numeric operands that are already of one family.
Type ArithmeticType(ArithmeticOp op, const Type& left, const Type& right);

std::string TypeName(TypeId id); // as messages have it: "varchar", "numeric"
std::optional<TypeId> FindType(std::string_view name);
bool TakesLength(TypeId id);

// How many bytes the server needs for a value of a type of fixed size.
int StorageBytes(const Type& type);

// A type as one integer, as the functions registered with SQLite take it and as database files keep it: the
// number of its TypeId, its precision, its scale (8 bits each) and its length, from the lowest bits on.
int64_t EncodeType(const Type& type);
Type DecodeType(int64_t code);

} // namespace tsql
