// Moments as texts: what the server reads from one, and what CONVERT writes for each style.
#pragma once

#include "tsql/values/DateTime.h"

#include <optional>
#include <string>
#include <string_view>

namespace tsql {

enum class DateParse : uint8_t { Ok, Malformed, OutOfRange };
DateParse ParseDateTime(std::string_view text, int64_t& ticks);
// CONVERT's text for the style; nullopt for a style number that does not exist.
std::optional<std::string> FormatDateTime(int64_t ticks, TypeId type, int style);

} // namespace tsql
