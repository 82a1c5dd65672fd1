// Moments as texts: those that the server can read, and those that CONVERT writes for each style.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tsql/values/DateTime.h"

namespace tsql {

enum class DateParse : uint8_t { Ok, Malformed, OutOfRange };
// A datetime takes three digits of a second's fraction, a date takes seven and forgets them.
DateParse ParseDateTime(std::string_view text, TypeId type, int64_t& ticks);
// What CONVERT writes for the style; nullopt for a style that does not exist.
std::optional<std::string> FormatDateTime(int64_t ticks, TypeId type, int style);

} // namespace tsql
