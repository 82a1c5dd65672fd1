// Conversions between the values of the interface and the storage form.
#pragma once

#include "tsql/sqlite/Connection.h"

namespace tsql {

// A parameter's value in the storage form of its type. It may be of any kind that converts to the type.
Datum DatumOfValue(const Value& value, const Type& type);
// The same into a datum that is null.
void SetDatum(Datum& datum, const Value& value, const Type& type);
// Text and bytes of the result borrow from `datum`, or from `storage` where they are made here: a time or
// datetime2 leaves the engine as a text.
Value ValueOfDatum(const Datum& datum, const Type& type, std::string& storage);
// Makes the values those of the statement's current row, which has these columns. They borrow from the row or
// from `storage`. There is one of each for a column.
void ReadRow(const PreparedStatement& statement, std::span<const Column> columns, std::span<Value> values,
             std::span<std::string> storage);
// A parameter's type, completed where the caller left its length or precision open.
Type CompleteType(const Type& type);

} // namespace tsql
