#include "tsql/sqlite/Values.h"

#include <cassert>

#include "tsql/values/Conversion.h"
#include "tsql/values/DateText.h"

namespace tsql {
namespace {

Datum NaturalDatum(const Value& value, Type& type) {
  switch (value.kind) {
  case Value::Kind::Integer: type = MakeType(TypeId::BigInt); return Datum::OfInteger(value.integer);
  case Value::Kind::Float: type = MakeType(TypeId::Float); return Datum::OfReal(value.real);
  case Value::Kind::Decimal:
    type = MakeDecimal(kMaxPrecision, value.decimal.scale);
    return DatumOfDecimal(value.decimal, type);
  case Value::Kind::Text:
    type = MakeType(TypeId::NVarChar, -1);
    return Datum::OfText(std::string(value.text));
  case Value::Kind::Bytes:
    type = MakeType(TypeId::VarBinary, -1);
    return Datum::OfBlob(std::string(value.text));
  case Value::Kind::DateTime:
    type = MakeType(TypeId::DateTime);
    return Datum::OfInteger(value.datetime.days * kTicksPerDay + value.datetime.ticks);
  case Value::Kind::Null: break;
  }
  return {};
}

void SetMoment(Value& value, int64_t moment, const Type& type, std::string& storage) {
  constexpr int kOdbcStyle = 121;
  if (IsFine(type.id)) {
    storage = *FormatDateTime(moment, type, kOdbcStyle);
    value.kind = Value::Kind::Text;
    value.text = storage;
    return;
  }
  value.kind = Value::Kind::DateTime;
  const int64_t days = FloorDays(moment);
  value.datetime.days = static_cast<int32_t>(days);
  value.datetime.ticks = static_cast<int32_t>(moment - days * kTicksPerDay);
}

void SetDecimal(Value& value, const Decimal& decimal) {
  value.kind = Value::Kind::Decimal;
  value.decimal = decimal;
}

void SetValue(Value& value, sqlite3_value* stored, const Type& type, std::string& storage) {
  value = {};
  if (sqlite3_value_type(stored) == SQLITE_NULL) return;
  switch (FamilyOf(type.id)) {
  case Family::Integer:
    value.kind = Value::Kind::Integer;
    value.integer = sqlite3_value_int64(stored);
    break;
  case Family::Decimal: SetDecimal(value, DecimalOf(stored, type)); break;
  case Family::Float:
    value.kind = Value::Kind::Float;
    value.real = sqlite3_value_double(stored);
    break;
  case Family::DateTime: SetMoment(value, sqlite3_value_int64(stored), type, storage); break;
  case Family::Binary:
    value.kind = Value::Kind::Bytes;
    value.text = BytesOf(stored);
    break;
  case Family::Text:
  case Family::Guid:
    value.kind = Value::Kind::Text;
    value.text = BytesOf(stored);
    break;
  }
}

} // namespace

Datum DatumOfValue(const Value& value, const Type& type) {
  if (value.kind == Value::Kind::Null) return {};
  Type natural;
  Datum datum = NaturalDatum(value, natural);
  return natural == type ? datum : Convert(datum, natural, type, ConvertMode::Cast);
}

void SetDatum(Datum& datum, const Value& value, const Type& type) {
  if (value.kind == Value::Kind::Integer && type.id == TypeId::Int &&
      value.integer == static_cast<int32_t>(value.integer)) { // the usual parameter
    datum.kind = Datum::Kind::Integer;
    datum.integer = value.integer;
  } else {
    datum = DatumOfValue(value, type);
  }
}

Value ValueOfDatum(const Datum& datum, const Type& type, std::string& storage) {
  Value value;
  if (datum.IsNull()) return value;
  switch (FamilyOf(type.id)) {
  case Family::Integer:
    value.kind = Value::Kind::Integer;
    value.integer = datum.integer;
    break;
  case Family::Decimal: SetDecimal(value, DecimalOf(datum, type)); break;
  case Family::Float:
    value.kind = Value::Kind::Float;
    value.real = datum.real;
    break;
  case Family::DateTime: SetMoment(value, datum.integer, type, storage); break;
  case Family::Binary:
    value.kind = Value::Kind::Bytes;
    value.text = datum.text;
    break;
  case Family::Text:
  case Family::Guid:
    value.kind = Value::Kind::Text;
    value.text = datum.text;
    break;
  }
  return value;
}

void ReadRow(const PreparedStatement& statement, std::span<const Column> columns, std::span<Value> values,
             std::span<std::string> storage) {
  assert(values.size() == columns.size() && storage.size() == columns.size());
  for (size_t i = 0; i < columns.size(); ++i)
    SetValue(values[i], statement.Column(static_cast<int>(i)), columns[i].type, storage[i]);
}

Type CompleteType(const Type& type) {
  Type complete = MakeType(type.id, type.length);
  if (type.id == TypeId::Decimal)
    complete = MakeDecimal(type.precision == 0 ? kMaxPrecision : type.precision, type.scale);
  if (IsFine(type.id)) complete = MakeFine(type.id, type.scale);
  if (TakesLength(type.id) && type.length == 0) {
    // Without a length nothing can be padded or cut, so the type becomes one of varying length.
    const TypeId varying = FamilyOf(type.id) == Family::Binary ? TypeId::VarBinary
                           : IsUnicode(type.id)                ? TypeId::NVarChar
                                                               : TypeId::VarChar;
    complete = MakeType(varying, IsUnicode(type.id) ? 4000 : 8000);
  }
  return complete;
}

} // namespace tsql
