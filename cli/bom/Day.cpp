#include "cli/bom/Day.h"

#include <cmath>

namespace bomcall::bom {
namespace {

using std::chrono::days;
using std::chrono::sys_days;

// Behind `text`, with zeros in front.
void AppendDigits(std::wstring& text, unsigned number, size_t width) {
  const std::wstring digits = std::to_wstring(number);
  if (digits.size() < width) text.append(width - digits.size(), L'0');
  text += digits;
}

} // namespace

Day DayOf(double date) {
  constexpr sys_days kFirst{std::chrono::year(1899) / 12 / 30};
  // The time of day counts upwards before the first day too.
  return kFirst + days(static_cast<int>(std::trunc(date)));
}

std::wstring DayText(const Day& day) {
  if (!day) return {};
  const std::chrono::year_month_day parts(*day);
  std::wstring text;
  AppendDigits(text, static_cast<unsigned>(static_cast<int>(parts.year())), 4);
  text += L'-';
  AppendDigits(text, static_cast<unsigned>(parts.month()), 2);
  text += L'-';
  AppendDigits(text, static_cast<unsigned>(parts.day()), 2);
  return text;
}

} // namespace bomcall::bom
