// A day, or none, in a line for the time that it is valid.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace bomcall::bom {

// None comes before every day.
using Day = std::optional<std::chrono::sys_days>;

// The day of a DATE: whole days since 1899-12-30, with the time of day behind the point.
Day DayOf(double date);
// "yyyy-mm-dd", or an empty text.
std::wstring DayText(const Day& day);

} // namespace bomcall::bom
