// Conversions between the values of the interface and the storage form.
#pragma once

#include "tsql/sqlite/Connection.h"

namespace tsql {

// A parameter's value in the storage form of its type. It may be of any kind that converts to the type.
Datum DatumOfValue(const Value& value, const Type& type);
// Text and bytes of the result borrow from `datum`, or from `storage` where they are made here: a time or
// datetime2 leaves the engine as a text.
Value ValueOfDatum(const Datum& datum, const Type& type, std::string& storage);
// Makes `value` that of a result column, borrowing from the statement's current row or from `storage`. Only
// what its kind is about is written: a row has many values, and there are many rows.
void ReadColumn(const PreparedStatement& statement, int index, const Type& type, Value& value,
                std::string& storage);
// A parameter's type, completed where the caller left its length or precision open.
Type CompleteType(const Type& type);

} // namespace tsql
