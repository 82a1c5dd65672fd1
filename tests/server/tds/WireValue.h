// WireValue: the types of the dialect and their values as the protocol writes them.
#pragma once

#include <string_view>

#include "tests/server/tds/Bytes.h"
#include "tsql/tsql.h"

namespace tds {

// Chinese_PRC_CI_AS: the language, flags, and no number of an older order.
inline constexpr std::string_view kCollationBytes{"\x04\x08\xD0\x00\x00", 5};

// The description of a type, as columns and parameters have it.
void PutType(ByteWriter& out, const tsql::Type& type);
// A value of the type, or NULL.
void PutValue(ByteWriter& out, const tsql::Type& type, const tsql::Value& value);
// Whether the description of a column has the name of its table behind it.
bool HasTableName(const tsql::Type& type);

// Reads a type and a value of it, as a call has them for each of its parameters. The value's text is in
// `parameter.storage`. Throws Malformed, for types too that the engine has not.
void TakeTypeAndValue(ByteReader& in, tsql::Parameter& parameter);

} // namespace tds
