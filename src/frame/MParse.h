// MParse: the connection descriptor taken apart into its keys and values. The result is kept per thread,
// until the next descriptor is parsed on it.
#pragma once

#include <string>

namespace mbom {

// Parses key=value pairs separated by ";"; keys and values are trimmed, a value in braces may hold ";". Stops
// at the first empty key. Returns True. A key that occurs twice (in any case) throws run-time error 457; what
// was parsed before it stays.
bool ParseDsn(const std::wstring& sDsn);

// The parsed value of `sKey`, in any case. An absent key throws run-time error 5.
std::wstring GetParsedValue(const std::wstring& sKey);

} // namespace mbom
