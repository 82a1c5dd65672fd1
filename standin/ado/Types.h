// Types and values between the engine and ADO.
#pragma once

#include <cstdint>
#include <string>

#include "com/Variant.h"
#include "standin/ado/Constants.h"
#include "tsql/tsql.h"

namespace standin::ado {

// How a column of the type shows itself as a Field.
struct FieldType {
  DataType type;
  int32_t definedSize;
  uint8_t precision;
  uint8_t scale;
  int32_t attributes; // without those of nullability
};

FieldType FieldTypeOf(const tsql::Type& type);

// Whether a value of the type is text to the client; a unique identifier is, in braces.
bool IsText(tsql::TypeId type);
bool IsWideText(tsql::TypeId type);
bool IsBinary(tsql::TypeId type);
// date, time and datetime2, which the client gets as texts.
bool IsMomentText(tsql::TypeId type);
std::string ToDateText(tsql::DateTime moment); // yyyy-mm-dd

double ToDate(tsql::DateTime moment);
tsql::DateTime ToDateTime(double date);

// A number of a Decimal or Money column.
com::Variant FromDecimal(const tsql::Decimal& number, tsql::TypeId type);

// A whole number of an integer or bit column, in the column's own Automation type. A bigint is VT_I8.
com::Variant FromInteger(int64_t number, tsql::TypeId type);

com::Variant FromBytes(const void* bytes, size_t size);

// The engine's type of a parameter. Throws DISP_E_BADVARTYPE for a type that no parameter has.
tsql::Type TypeOf(DataType type, int32_t size, uint8_t precision, uint8_t scale);

// The Automation type in which a parameter of the type holds its value; VT_EMPTY when the type is not set.
VARTYPE AutomationTypeOf(DataType type);

// The value in that type; Empty and Null stay. Throws what the conversion throws.
com::Variant Convert(const com::Variant& value, DataType type);

// A converted value for the engine; Empty and Null are null. Text and bytes lie in `storage`.
tsql::Value ToValue(const com::Variant& value, std::string& storage);

} // namespace standin::ado
