// Moments as texts: those that the server can read, and those that CONVERT writes for each style.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tsql/values/DateTime.h"

namespace tsql {

enum class DateParse : uint8_t { Ok, Malformed, OutOfRange };
// A moment in the unit of the type, not yet rounded to what the type holds. A datetime takes three digits of
// a second's fraction. date, time and datetime2 take seven, and an offset from UTC, and forget what they do
// not hold. The style says in which order the numbers of a date stand where the year is not in front.
DateParse ParseDateTime(std::string_view text, TypeId type, int style, int64_t& moment);
// What CONVERT writes for the style; nullopt for a style that does not exist.
std::optional<std::string> FormatDateTime(int64_t moment, const Type& type, int style);

// Styles of the Hijri calendar.
inline bool IsHijriStyle(int style) {
  return style == 130 || style == 131;
}

} // namespace tsql
