#include "tsql/values/DateTime.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <mutex>

#include "tsql/values/Collation.h"

namespace tsql {
namespace {

constexpr std::array<const char*, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

bool IsLeap(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int64_t FloorDivide(int64_t value, int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// Sunday is 1, as DATEFIRST 7 counts. 1900-01-01 was a Monday.
int Weekday(int64_t days) {
  return static_cast<int>((days % 7 + 8) % 7) + 1;
}

int64_t TicksFromMilliseconds(int64_t milliseconds) {
  return (milliseconds * 3 + 5) / 10;
}

} // namespace

int DaysInMonth(int year, int month) {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[static_cast<size_t>(month - 1)];
}

int64_t DaysFromCivil(int year, int month, int day) {
  // Counted from March, so that the leap day is the last of its year.
  const int64_t y = month <= 2 ? year - 1 : year;
  const int64_t m = (month + 9) % 12;
  const int64_t days =
      365 * y + FloorDivide(y, 4) - FloorDivide(y, 100) + FloorDivide(y, 400) + (m * 306 + 5) / 10 + day - 1;
  constexpr int64_t kOrigin = 693901; // 1900-01-01 in that count
  return days - kOrigin;
}

int64_t TicksFromCivil(const CivilTime& time) {
  const int64_t seconds = (time.hour * 60 + time.minute) * 60 + time.second;
  return DaysFromCivil(time.year, time.month, time.day) * kTicksPerDay +
         TicksFromMilliseconds(seconds * 1000 + time.millisecond);
}

const char* MonthName(int month) {
  constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
  return kMonths[static_cast<size_t>(month - 1)];
}

int64_t FloorDays(int64_t ticks) {
  return FloorDivide(ticks, kTicksPerDay);
}

CivilTime CivilFromTicks(int64_t ticks) {
  CivilTime time;
  const int64_t days = FloorDays(ticks);
  int64_t year = 1900 + days * 400 / 146097;
  while (DaysFromCivil(static_cast<int>(year), 1, 1) > days) --year;
  while (DaysFromCivil(static_cast<int>(year) + 1, 1, 1) <= days) ++year;
  time.year = static_cast<int>(year);
  int64_t rest = days - DaysFromCivil(time.year, 1, 1);
  while (rest >= DaysInMonth(time.year, time.month)) rest -= DaysInMonth(time.year, time.month++);
  time.day = static_cast<int>(rest) + 1;
  const int64_t ofDay = ticks - days * kTicksPerDay;
  const int64_t seconds = ofDay / kTicksPerSecond;
  time.hour = static_cast<int>(seconds / 3600);
  time.minute = static_cast<int>(seconds / 60 % 60);
  time.second = static_cast<int>(seconds % 60);
  time.millisecond = static_cast<int>((ofDay % kTicksPerSecond * 10 + 1) / 3);
  return time;
}

bool IsInRange(TypeId type, int64_t ticks) {
  const int64_t end = DaysFromCivil(10000, 1, 1) * kTicksPerDay;
  switch (type) {
  case TypeId::Date: return ticks >= DaysFromCivil(1, 1, 1) * kTicksPerDay && ticks < end;
  case TypeId::SmallDateTime: return ticks >= 0 && ticks < (DaysFromCivil(2079, 6, 6) + 1) * kTicksPerDay;
  default: return ticks >= DaysFromCivil(1753, 1, 1) * kTicksPerDay && ticks < end;
  }
}

int64_t RoundMoment(TypeId type, int64_t ticks) {
  if (type == TypeId::Date) return FloorDays(ticks) * kTicksPerDay;
  // 29.998 seconds and less round down.
  if (type == TypeId::SmallDateTime)
    return FloorDivide(ticks + kTicksPerMinute / 2, kTicksPerMinute) * kTicksPerMinute;
  return ticks;
}

std::optional<DatePart> FindDatePart(std::string_view name) {
  struct Name {
    const char* text;
    DatePart part;
  };
  constexpr Name kNames[] = {
      {"year", DatePart::Year},       {"yy", DatePart::Year},
      {"yyyy", DatePart::Year},       {"quarter", DatePart::Quarter},
      {"qq", DatePart::Quarter},      {"q", DatePart::Quarter},
      {"month", DatePart::Month},     {"mm", DatePart::Month},
      {"m", DatePart::Month},         {"dayofyear", DatePart::DayOfYear},
      {"dy", DatePart::DayOfYear},    {"y", DatePart::DayOfYear},
      {"day", DatePart::Day},         {"dd", DatePart::Day},
      {"d", DatePart::Day},           {"week", DatePart::Week},
      {"wk", DatePart::Week},         {"ww", DatePart::Week},
      {"weekday", DatePart::Weekday}, {"dw", DatePart::Weekday},
      {"w", DatePart::Weekday},       {"hour", DatePart::Hour},
      {"hh", DatePart::Hour},         {"minute", DatePart::Minute},
      {"mi", DatePart::Minute},       {"n", DatePart::Minute},
      {"second", DatePart::Second},   {"ss", DatePart::Second},
      {"s", DatePart::Second},        {"millisecond", DatePart::Millisecond},
      {"ms", DatePart::Millisecond},
  };
  for (const Name& entry : kNames)
    if (EqualNames(entry.text, name)) return entry.part;
  return std::nullopt;
}

const char* NameOf(DatePart part) {
  constexpr std::array<const char*, 11> kNames = {"year",   "quarter", "month",      "dayofyear",
                                                  "day",    "week",    "weekday",    "hour",
                                                  "minute", "second",  "millisecond"};
  return kNames[static_cast<size_t>(part)];
}

std::optional<int64_t> DateAdd(DatePart part, int64_t number, int64_t ticks) {
  constexpr int64_t kLimit = 400000000000000;
  if (number > kLimit || number < -kLimit) return std::nullopt;
  int64_t unit = kTicksPerDay;
  switch (part) {
  case DatePart::Year:
  case DatePart::Quarter:
  case DatePart::Month: {
    CivilTime time = CivilFromTicks(ticks);
    const int64_t step = part == DatePart::Year ? 12 : part == DatePart::Quarter ? 3 : 1;
    const int64_t months = time.year * 12LL + time.month - 1 + number * step;
    const int64_t year = FloorDivide(months, 12);
    if (year < 1 || year > 9999) return std::nullopt;
    time.year = static_cast<int>(year);
    time.month = static_cast<int>(months - year * 12) + 1;
    const int day = std::min(time.day, DaysInMonth(time.year, time.month));
    return DaysFromCivil(time.year, time.month, day) * kTicksPerDay + ticks - FloorDays(ticks) * kTicksPerDay;
  }
  case DatePart::Week: unit = 7 * kTicksPerDay; break;
  case DatePart::Hour: unit = 60 * kTicksPerMinute; break;
  case DatePart::Minute: unit = kTicksPerMinute; break;
  case DatePart::Second: unit = kTicksPerSecond; break;
  case DatePart::Millisecond: return ticks + FloorDivide(number * 3 + 5, 10);
  default: break;
  }
  if (number > kLimit / unit * 100 || number < -(kLimit / unit * 100)) return std::nullopt;
  return ticks + number * unit;
}

int64_t DateDiff(DatePart part, int64_t from, int64_t to) {
  const CivilTime a = CivilFromTicks(from);
  const CivilTime b = CivilFromTicks(to);
  switch (part) {
  case DatePart::Year: return b.year - a.year;
  case DatePart::Quarter: return (b.year - a.year) * 4 + (b.month - 1) / 3 - (a.month - 1) / 3;
  case DatePart::Month: return (b.year - a.year) * 12 + b.month - a.month;
  case DatePart::Week:
    // Weeks begin on Sunday; 1899-12-31 was one.
    return FloorDivide(FloorDays(to) + 1, 7) - FloorDivide(FloorDays(from) + 1, 7);
  case DatePart::Hour: return FloorDivide(to, 60 * kTicksPerMinute) - FloorDivide(from, 60 * kTicksPerMinute);
  case DatePart::Minute: return FloorDivide(to, kTicksPerMinute) - FloorDivide(from, kTicksPerMinute);
  case DatePart::Second: return FloorDivide(to, kTicksPerSecond) - FloorDivide(from, kTicksPerSecond);
  case DatePart::Millisecond: return FloorDivide(to * 10 + 1, 3) - FloorDivide(from * 10 + 1, 3);
  default: return FloorDays(to) - FloorDays(from);
  }
}

int GetDatePart(DatePart part, int64_t ticks) {
  const CivilTime time = CivilFromTicks(ticks);
  const int64_t yearStart = DaysFromCivil(time.year, 1, 1);
  const int dayOfYear = static_cast<int>(FloorDays(ticks) - yearStart) + 1;
  switch (part) {
  case DatePart::Year: return time.year;
  case DatePart::Quarter: return (time.month - 1) / 3 + 1;
  case DatePart::Month: return time.month;
  case DatePart::DayOfYear: return dayOfYear;
  case DatePart::Day: return time.day;
  case DatePart::Week: return (dayOfYear + Weekday(yearStart) - 2) / 7 + 1;
  case DatePart::Weekday: return Weekday(FloorDays(ticks));
  case DatePart::Hour: return time.hour;
  case DatePart::Minute: return time.minute;
  case DatePart::Second: return time.second;
  default: return time.millisecond;
  }
}

std::string GetDateName(DatePart part, int64_t ticks) {
  const int value = GetDatePart(part, ticks);
  if (part == DatePart::Month) return MonthName(value);
  if (part == DatePart::Weekday) return kWeekdays[static_cast<size_t>(value - 1)];
  return std::to_string(value);
}

int64_t LocalNow() {
  using std::chrono::system_clock;
  const auto now = system_clock::now();
  const std::time_t seconds = system_clock::to_time_t(now);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now - system_clock::from_time_t(seconds)).count();
  // std::localtime keeps its result in shared storage; the reentrant forms are not portable.
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  const std::tm* local = std::localtime(&seconds);
  CivilTime time;
  time.year = local->tm_year + 1900;
  time.month = local->tm_mon + 1;
  time.day = local->tm_mday;
  time.hour = local->tm_hour;
  time.minute = local->tm_min;
  time.second = std::min(local->tm_sec, 59);
  time.millisecond = static_cast<int>(std::clamp<int64_t>(milliseconds, 0, 999));
  return TicksFromCivil(time);
}

} // namespace tsql
