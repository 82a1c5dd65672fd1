// The bytes that the server keeps for a number, a moment or a GUID, which are what converting it to binary
// gives and what converting from binary reads.
#pragma once

#include "tsql/values/Datum.h"

namespace tsql {

// `value` is not null and neither text nor binary.
std::string BytesOfValue(const Datum& value, const Type& type);

// 8114 when they are none of the type. Too many bytes lose those on the left, too few get zeros there; to a
// GUID both happens on the right.
Datum ValueOfBytes(std::string_view bytes, const Type& from, const Type& to);

// The bytes that hexadecimal digits write, with 0x in front when `hasPrefix`; nullopt when the text is
// something else.
std::optional<std::string> ParseHex(std::string_view text, bool hasPrefix);

} // namespace tsql
