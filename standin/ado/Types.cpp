#include "standin/ado/Types.h"

#include <oleauto.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>

#include "com/ComError.h"
#include "com/Text.h"
#include "com/ValueText.h"

namespace standin::ado {
namespace {

using com::Variant;
using tsql::TypeId;
using Kind = tsql::Value::Kind;

// FieldAttributeEnum.
constexpr int32_t kMayDefer = 0x2;
constexpr int32_t kFixed = 0x10;
constexpr int32_t kLong = 0x80;

// What ADO says where a type has no precision or scale.
constexpr uint8_t kNone = 255;

constexpr int32_t kLongestText = 0x7FFFFFFF;
constexpr int32_t kLongestWideText = 0x3FFFFFFF;

constexpr int32_t kTicksPerDay = 300 * 86400;
// From Automation's first day, 1899-12-30, to the server's, 1900-01-01.
constexpr int32_t kDaysBetweenEpochs = 2;

// The provider is older than date, time and datetime2, and gives texts for them.
FieldType MomentText(int32_t size) {
  return {DataType::VarWChar, size, kNone, kNone, 0};
}

int32_t FractionSize(const tsql::Type& type) {
  return type.scale == 0 ? 0 : 1 + type.scale;
}

FieldType Variable(const tsql::Type& type, DataType shortType, DataType longType, int32_t longest) {
  if (type.length < 0) return {longType, longest, kNone, kNone, kLong | kMayDefer};
  return {shortType, type.length, kNone, kNone, 0};
}

} // namespace

FieldType FieldTypeOf(const tsql::Type& type) {
  switch (type.id) {
  case TypeId::TinyInt: return {DataType::UnsignedTinyInt, 1, 3, kNone, kFixed};
  case TypeId::SmallInt: return {DataType::SmallInt, 2, 5, kNone, kFixed};
  case TypeId::Int: return {DataType::Integer, 4, 10, kNone, kFixed};
  case TypeId::BigInt: return {DataType::BigInt, 8, 19, kNone, kFixed};
  case TypeId::Bit: return {DataType::Boolean, 2, kNone, kNone, kFixed};
  case TypeId::Decimal: return {DataType::Numeric, 19, type.precision, type.scale, kFixed};
  case TypeId::Money: return {DataType::Currency, 8, 19, kNone, kFixed};
  case TypeId::SmallMoney: return {DataType::Currency, 8, 10, kNone, kFixed};
  case TypeId::Float: return {DataType::Double, 8, 15, kNone, kFixed};
  case TypeId::Real: return {DataType::Single, 4, 7, kNone, kFixed};
  case TypeId::DateTime: return {DataType::DBTimeStamp, 16, 23, 3, kFixed};
  case TypeId::SmallDateTime: return {DataType::DBTimeStamp, 16, 16, 0, kFixed};
  case TypeId::Date: return MomentText(10);
  case TypeId::Time: return MomentText(8 + FractionSize(type));
  case TypeId::DateTime2: return MomentText(19 + FractionSize(type));
  case TypeId::UniqueIdentifier: return {DataType::Guid, 16, kNone, kNone, kFixed};
  case TypeId::Char: return {DataType::Char, type.length, kNone, kNone, kFixed};
  case TypeId::NChar: return {DataType::WChar, type.length, kNone, kNone, kFixed};
  case TypeId::Binary: return {DataType::Binary, type.length, kNone, kNone, kFixed};
  case TypeId::VarChar: return Variable(type, DataType::VarChar, DataType::LongVarChar, kLongestText);
  case TypeId::NVarChar: return Variable(type, DataType::VarWChar, DataType::LongVarWChar, kLongestWideText);
  case TypeId::VarBinary: return Variable(type, DataType::VarBinary, DataType::LongVarBinary, kLongestText);
  case TypeId::Text: return {DataType::LongVarChar, kLongestText, kNone, kNone, kLong | kMayDefer};
  case TypeId::NText: return {DataType::LongVarWChar, kLongestWideText, kNone, kNone, kLong | kMayDefer};
  case TypeId::Image: return {DataType::LongVarBinary, kLongestText, kNone, kNone, kLong | kMayDefer};
  }
  return {DataType::Empty, 0, kNone, kNone, 0};
}

bool IsText(TypeId type) {
  switch (type) {
  case TypeId::Char:
  case TypeId::VarChar:
  case TypeId::Text:
  case TypeId::UniqueIdentifier: return true;
  default: return IsWideText(type);
  }
}

bool IsWideText(TypeId type) {
  return type == TypeId::NChar || type == TypeId::NVarChar || type == TypeId::NText;
}

bool IsBinary(TypeId type) {
  return type == TypeId::Binary || type == TypeId::VarBinary || type == TypeId::Image;
}

bool IsMomentText(TypeId type) {
  return type == TypeId::Date || type == TypeId::Time || type == TypeId::DateTime2;
}

std::string ToDateText(tsql::DateTime moment) {
  using namespace std::chrono;
  const year_month_day date = sys_days(year(1900) / 1 / 1) + days(moment.days);
  std::array<char, 16> text{};
  const int size = std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(date.year()),
                                 static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return {text.data(), static_cast<size_t>(size)};
}

double ToDate(tsql::DateTime moment) {
  const double day = moment.days + kDaysBetweenEpochs;
  const double time = static_cast<double>(moment.ticks) / kTicksPerDay;
  // Before its first day Automation counts the days backwards, but the time of a day still forwards.
  return day < 0 ? day - time : day + time;
}

tsql::DateTime ToDateTime(double date) {
  const double day = std::trunc(date);
  const auto ticks = static_cast<int32_t>(std::lround(std::abs(date - day) * kTicksPerDay));
  const auto days = static_cast<int32_t>(day) - kDaysBetweenEpochs;
  return ticks == kTicksPerDay ? tsql::DateTime{days + 1, 0} : tsql::DateTime{days, ticks};
}

Variant FromDecimal(const tsql::Decimal& number, TypeId type) {
  Variant result;
  VARIANT& raw = result.raw();
  if (type == TypeId::Money || type == TypeId::SmallMoney) {
    raw.vt = VT_CY;
    raw.cyVal.int64 =
        number.negative ? static_cast<LONGLONG>(-number.low) : static_cast<LONGLONG>(number.low);
    return result;
  }
  // The client's type has 96 bits and 28 decimals, fewer than the server's. What does not fit is an overflow.
  constexpr uint64_t kMostHigh = 0xFFFFFFFF;
  constexpr uint8_t kMostDecimals = 28;
  if (number.high > kMostHigh || number.scale > kMostDecimals)
    throw com::ComError::FromSystem(DISP_E_OVERFLOW);
  raw.decVal.Lo64 = number.low;
  raw.decVal.Hi32 = static_cast<ULONG>(number.high);
  raw.decVal.scale = number.scale;
  raw.decVal.sign = number.negative ? DECIMAL_NEG : 0;
  raw.vt = VT_DECIMAL;
  return result;
}

Variant FromInteger(int64_t number, TypeId type) {
  Variant result;
  VARIANT& raw = result.raw();
  switch (type) {
  case TypeId::Bit: return {number != 0};
  case TypeId::SmallInt: return {static_cast<int16_t>(number)};
  case TypeId::TinyInt:
    raw.vt = VT_UI1;
    raw.bVal = static_cast<BYTE>(number);
    return result;
  case TypeId::BigInt:
    raw.vt = VT_I8;
    raw.llVal = number;
    return result;
  default: return {static_cast<int32_t>(number)};
  }
}

Variant FromBytes(const void* bytes, size_t size) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(size));
  if (!array) throw std::bad_alloc();
  Variant result;
  result.raw().vt = VT_ARRAY | VT_UI1;
  result.raw().parray = array;
  void* data = nullptr;
  com::Check(SafeArrayAccessData(array, &data));
  if (size != 0) std::memcpy(data, bytes, size);
  SafeArrayUnaccessData(array);
  return result;
}

tsql::Type TypeOf(DataType type, int32_t size, uint8_t precision, uint8_t scale) {
  constexpr uint8_t kWidestDecimal = 38;
  switch (type) {
  case DataType::TinyInt:
  case DataType::SmallInt: return {.id = TypeId::SmallInt};
  case DataType::UnsignedTinyInt: return {.id = TypeId::TinyInt};
  case DataType::Integer: return {.id = TypeId::Int};
  case DataType::BigInt: return {.id = TypeId::BigInt};
  case DataType::Boolean: return {.id = TypeId::Bit};
  case DataType::Single: return {.id = TypeId::Real};
  case DataType::Double: return {.id = TypeId::Float};
  case DataType::Currency: return {.id = TypeId::Money, .precision = 19, .scale = 4};
  case DataType::Decimal:
  case DataType::Numeric:
    return {.id = TypeId::Decimal, .precision = precision ? precision : kWidestDecimal, .scale = scale};
  case DataType::Date:
  case DataType::DBDate:
  case DataType::DBTimeStamp: return {.id = TypeId::DateTime};
  case DataType::Guid: return {.id = TypeId::UniqueIdentifier};
  case DataType::Char: return {.id = TypeId::Char, .length = size};
  case DataType::VarChar: return {.id = TypeId::VarChar, .length = size};
  case DataType::LongVarChar: return {.id = TypeId::VarChar, .length = -1};
  case DataType::WChar: return {.id = TypeId::NChar, .length = size};
  case DataType::VarWChar: return {.id = TypeId::NVarChar, .length = size};
  case DataType::Bstr:
  case DataType::LongVarWChar: return {.id = TypeId::NVarChar, .length = -1};
  case DataType::Binary: return {.id = TypeId::Binary, .length = size};
  case DataType::VarBinary: return {.id = TypeId::VarBinary, .length = size};
  case DataType::LongVarBinary: return {.id = TypeId::VarBinary, .length = -1};
  case DataType::Empty: break;
  }
  throw com::ComError::FromSystem(DISP_E_BADVARTYPE);
}

VARTYPE AutomationTypeOf(DataType type) {
  switch (type) {
  case DataType::TinyInt:
  case DataType::SmallInt: return VT_I2;
  case DataType::UnsignedTinyInt: return VT_UI1;
  case DataType::Integer: return VT_I4;
  case DataType::BigInt: return VT_I8;
  case DataType::Boolean: return VT_BOOL;
  case DataType::Single: return VT_R4;
  case DataType::Double: return VT_R8;
  case DataType::Currency: return VT_CY;
  case DataType::Decimal:
  case DataType::Numeric: return VT_DECIMAL;
  case DataType::Date:
  case DataType::DBDate:
  case DataType::DBTimeStamp: return VT_DATE;
  case DataType::Binary:
  case DataType::VarBinary:
  case DataType::LongVarBinary: return VT_ARRAY | VT_UI1;
  case DataType::Empty: return VT_EMPTY;
  default: return VT_BSTR;
  }
}

Variant Convert(const Variant& value, DataType type) {
  if (value.IsEmpty() || value.IsNull()) return value;
  const VARTYPE wanted = AutomationTypeOf(type);
  if (wanted == VT_EMPTY || value.type() == wanted) return value;
  return wanted == VT_BSTR ? Variant(com::ToText(value)) : value.As(wanted);
}

tsql::Value ToValue(const Variant& value, std::string& storage) {
  const VARIANT& raw = value.raw();
  tsql::Value result;
  const auto integer = [&](int64_t number) {
    result.kind = Kind::Integer;
    result.integer = number;
  };
  switch (raw.vt) {
  case VT_I2: integer(raw.iVal); break;
  case VT_UI1: integer(raw.bVal); break;
  case VT_I4: integer(raw.lVal); break;
  case VT_I8: integer(raw.llVal); break;
  case VT_BOOL: integer(raw.boolVal != VARIANT_FALSE); break;
  case VT_R4:
    result.kind = Kind::Float;
    result.real = raw.fltVal;
    break;
  case VT_R8:
    result.kind = Kind::Float;
    result.real = raw.dblVal;
    break;
  case VT_CY:
    result.kind = Kind::Decimal;
    result.decimal.negative = raw.cyVal.int64 < 0;
    result.decimal.low = static_cast<uint64_t>(raw.cyVal.int64);
    if (result.decimal.negative) result.decimal.low = 0 - result.decimal.low;
    result.decimal.scale = 4;
    break;
  case VT_DECIMAL:
    result.kind = Kind::Decimal;
    result.decimal = {raw.decVal.Lo64, raw.decVal.Hi32, raw.decVal.scale, raw.decVal.sign == DECIMAL_NEG};
    break;
  case VT_DATE:
    result.kind = Kind::DateTime;
    result.datetime = ToDateTime(raw.date);
    break;
  case VT_BSTR:
    storage = com::ToUtf8(com::FromBstr(raw.bstrVal));
    result.kind = Kind::Text;
    result.text = storage;
    break;
  case VT_ARRAY | VT_UI1: {
    void* data = nullptr;
    com::Check(SafeArrayAccessData(raw.parray, &data));
    storage.assign(static_cast<const char*>(data), raw.parray->rgsabound[0].cElements);
    SafeArrayUnaccessData(raw.parray);
    result.kind = Kind::Bytes;
    result.text = storage;
    break;
  }
  default: break;
  }
  return result;
}

} // namespace standin::ado
