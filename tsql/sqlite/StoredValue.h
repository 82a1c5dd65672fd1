// A value as SQLite holds it: a column of the current row, or what a function is called with. A connection is
// used by one thread at a time, so a column's value can be looked at as any other, which is cheaper than to
// ask its statement for each thing about it.
#pragma once

#include <sqlite3.h>

#include "tsql/values/Datum.h"

namespace tsql {

// A text or blob; it lasts as long as the value.
std::string_view BytesOf(sqlite3_value* value);
Datum DatumOf(sqlite3_value* value);
// The same into a datum that is there, which keeps the memory of its text.
void ReadDatum(sqlite3_value* value, Datum& datum);
// The number that a value which is not null is in storage form. The type is a decimal or an integer.
Decimal DecimalOf(sqlite3_value* value, const Type& type);

} // namespace tsql
