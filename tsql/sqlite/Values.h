// Conversions between the values of the interface and the storage form.
#pragma once

#include "tsql/sqlite/Connection.h"

namespace tsql {

// A parameter's value in the storage form of its type. It may be of any kind that converts to the type.
Datum DatumOfValue(const Value& value, const Type& type);
// Text and bytes of the result borrow from `datum`.
Value ValueOfDatum(const Datum& datum, const Type& type);
// Makes `value` that of a result column, borrowing from the statement's current row. Only what its kind is
// about is written: a row has many values, and there are many rows.
void ReadColumn(const PreparedStatement& statement, int index, const Type& type, Value& value);
// A parameter's type, completed where the caller left its length or precision open.
Type CompleteType(const Type& type);

} // namespace tsql
