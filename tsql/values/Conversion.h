// Conversion of a value from one T-SQL type to another, with the server's rounding, text forms and errors.
#pragma once

#include "tsql/values/Datum.h"

namespace tsql {

// What happens to a text that is too long: Cast cuts it, Assign (storing into a column) refuses it with 8152.
enum class ConvertMode : uint8_t { Cast, Assign };

Datum Convert(const Datum& value, const Type& from, const Type& to, ConvertMode mode, int style = 0);

// The exact result of arithmetic as a value of `type`; an overflow (nullopt or too many digits) is 8115.
const Decimal& CheckDecimal(const std::optional<Decimal>& value, const Type& type, std::string_view source);
Datum StoreDecimal(const std::optional<Decimal>& value, const Type& type, std::string_view source);

// Returns the value if it is within the range of the type; 8115 or 220 if it is not.
int64_t CheckInteger(int64_t value, TypeId type);

} // namespace tsql
