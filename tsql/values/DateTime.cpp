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

// Its number in a week that begins on `firstDay`. 1900-01-01 was a Monday.
int Weekday(int64_t days, int firstDay) {
  return static_cast<int>((days % 7 + 15 - firstDay) % 7) + 1;
}

// The nearest tick: 100,000 units of 100 ns are three of them.
int64_t TicksFromFine(int64_t fine) {
  return FloorDivide(fine * 3 + 50000, 100000);
}

// The nearest millisecond: three ticks are ten of them.
int64_t MillisecondsFromTicks(int64_t ticks) {
  return FloorDivide(ticks * 10 + 1, 3);
}

// One unit of the last of so many digits of a second's fraction, in 100 ns.
int64_t FineStep(int digits) {
  int64_t step = 1;
  for (; digits < kMaxFraction; ++digits) step *= 10;
  return step;
}

// ISO weeks begin on Monday, and the first has the year's first Thursday.
int IsoWeek(int64_t days) {
  const int64_t thursday = FloorDivide(days, 7) * 7 + 3; // 1900-01-01 was a Monday
  const CivilTime time = CivilFromMoment(TypeId::Date, thursday * kTicksPerDay);
  return static_cast<int>((thursday - DaysFromCivil(time.year, 1, 1)) / 7) + 1;
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

int64_t MomentFromCivil(TypeId type, const CivilTime& time) {
  const int64_t seconds = (time.hour * 60 + time.minute) * 60 + time.second;
  const int64_t ofDay = seconds * kFinePerSecond + time.fraction;
  const int64_t days = DaysFromCivil(time.year, time.month, time.day);
  return IsFine(type) ? days * kFinePerDay + ofDay : days * kTicksPerDay + TicksFromFine(ofDay);
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

CivilTime CivilFromMoment(TypeId type, int64_t moment) {
  CivilTime time;
  const bool isFine = IsFine(type);
  const int64_t perDay = isFine ? kFinePerDay : kTicksPerDay;
  const int64_t days = FloorDivide(moment, perDay);
  int64_t year = 1900 + days * 400 / 146097;
  while (DaysFromCivil(static_cast<int>(year), 1, 1) > days) --year;
  while (DaysFromCivil(static_cast<int>(year) + 1, 1, 1) <= days) ++year;
  time.year = static_cast<int>(year);
  int64_t rest = days - DaysFromCivil(time.year, 1, 1);
  while (rest >= DaysInMonth(time.year, time.month)) rest -= DaysInMonth(time.year, time.month++);
  time.day = static_cast<int>(rest) + 1;
  const int64_t ofDay = moment - days * perDay;
  const int64_t seconds = ofDay / UnitsPerSecond(isFine);
  time.hour = static_cast<int>(seconds / 3600);
  time.minute = static_cast<int>(seconds / 60 % 60);
  time.second = static_cast<int>(seconds % 60);
  const int64_t fraction = ofDay % UnitsPerSecond(isFine);
  time.fraction = static_cast<int>(isFine ? fraction : MillisecondsFromTicks(fraction) * kFinePerMillisecond);
  return time;
}

bool IsInRange(TypeId type, int64_t moment) {
  const int64_t end = DaysFromCivil(10000, 1, 1);
  switch (type) {
  case TypeId::Date: return moment >= DaysFromCivil(1, 1, 1) * kTicksPerDay && moment < end * kTicksPerDay;
  case TypeId::Time: return moment >= 0 && moment < kFinePerDay;
  case TypeId::DateTime2: return moment >= DaysFromCivil(1, 1, 1) * kFinePerDay && moment < end * kFinePerDay;
  case TypeId::SmallDateTime: return moment >= 0 && moment < (DaysFromCivil(2079, 6, 6) + 1) * kTicksPerDay;
  default: return moment >= DaysFromCivil(1753, 1, 1) * kTicksPerDay && moment < end * kTicksPerDay;
  }
}

int64_t RoundMoment(const Type& type, int64_t moment) {
  switch (type.id) {
  case TypeId::Date: return FloorDays(moment) * kTicksPerDay;
  case TypeId::SmallDateTime: // 29.998 seconds and less round down
    return FloorDivide(moment + kTicksPerMinute / 2, kTicksPerMinute) * kTicksPerMinute;
  case TypeId::Time:
  case TypeId::DateTime2: {
    const int64_t step = FineStep(type.scale);
    const int64_t rounded = FloorDivide(moment + step / 2, step) * step;
    if (type.id == TypeId::Time) return rounded - FloorDivide(rounded, kFinePerDay) * kFinePerDay;
    // The last moment of all has none after it.
    const bool isBeyond = IsInRange(type.id, moment) && !IsInRange(type.id, rounded);
    return isBeyond ? rounded - step : rounded;
  }
  default: return moment;
  }
}

int64_t ConvertMoment(int64_t moment, TypeId from, const Type& to) {
  const bool toFine = IsFine(to.id);
  if (IsFine(from) && !toFine) {
    moment = to.id == TypeId::Date ? FloorDivide(moment, kFinePerDay) * kTicksPerDay : TicksFromFine(moment);
  } else if (!IsFine(from) && toFine) {
    const int64_t days = FloorDays(moment);
    moment = days * kFinePerDay + MillisecondsFromTicks(moment - days * kTicksPerDay) * kFinePerMillisecond;
  }
  return RoundMoment(to, moment);
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
      {"ms", DatePart::Millisecond},  {"microsecond", DatePart::Microsecond},
      {"mcs", DatePart::Microsecond}, {"nanosecond", DatePart::Nanosecond},
      {"ns", DatePart::Nanosecond},   {"iso_week", DatePart::IsoWeek},
      {"isowk", DatePart::IsoWeek},   {"isoww", DatePart::IsoWeek},
  };
  for (const Name& entry : kNames)
    if (EqualNames(entry.text, name)) return entry.part;
  return std::nullopt;
}

const char* NameOf(DatePart part) {
  constexpr std::array<const char*, 14> kNames = {
      "year", "quarter", "month",  "dayofyear",   "day",         "week",       "weekday",
      "hour", "minute",  "second", "millisecond", "microsecond", "nanosecond", "iso_week"};
  return kNames[static_cast<size_t>(part)];
}

namespace {

int64_t AddMonths(int64_t months, TypeId type, int64_t moment, bool& isInCalendar) {
  const int64_t perDay = IsFine(type) ? kFinePerDay : kTicksPerDay;
  const CivilTime time = CivilFromMoment(type, moment);
  const int64_t sum = time.year * 12LL + time.month - 1 + months;
  const int64_t year = FloorDivide(sum, 12);
  isInCalendar = year >= 1 && year <= 9999;
  if (!isInCalendar) return 0;
  const int month = static_cast<int>(sum - year * 12) + 1;
  const int day = std::min(time.day, DaysInMonth(static_cast<int>(year), month));
  const int64_t ofDay = moment - FloorDivide(moment, perDay) * perDay;
  return DaysFromCivil(static_cast<int>(year), month, day) * perDay + ofDay;
}

} // namespace

std::optional<int64_t> DateAdd(DatePart part, int64_t number, TypeId type, int64_t moment) {
  constexpr int64_t kLimit = 400000000000000;
  if (number > kLimit || number < -kLimit) return std::nullopt;
  const bool isFine = IsFine(type);
  const int64_t second = UnitsPerSecond(isFine);
  int64_t unit = 24 * 60 * 60 * second;
  switch (part) {
  case DatePart::Year:
  case DatePart::Quarter:
  case DatePart::Month: {
    const int64_t step = part == DatePart::Year ? 12 : part == DatePart::Quarter ? 3 : 1;
    bool isInCalendar = false;
    const int64_t sum = AddMonths(number * step, type, moment, isInCalendar);
    return isInCalendar ? std::optional(sum) : std::nullopt;
  }
  case DatePart::Week: unit *= 7; break;
  case DatePart::Hour: unit = 60 * 60 * second; break;
  case DatePart::Minute: unit = 60 * second; break;
  case DatePart::Second: unit = second; break;
  case DatePart::Millisecond:
    if (!isFine) return moment + FloorDivide(number * 3 + 5, 10);
    unit = kFinePerMillisecond;
    break;
  case DatePart::Microsecond: unit = kFinePerMillisecond / 1000; break;
  case DatePart::Nanosecond: return moment + FloorDivide(number + 50, 100);
  default: break;
  }
  int64_t sum = 0;
  if (__builtin_mul_overflow(number, unit, &sum) || __builtin_add_overflow(sum, moment, &sum))
    return std::nullopt;
  return sum;
}

std::optional<int64_t> DateDiff(DatePart part, bool isFine, int64_t from, int64_t to) {
  const TypeId type = isFine ? TypeId::DateTime2 : TypeId::DateTime;
  const int64_t second = UnitsPerSecond(isFine);
  const auto count = [&](int64_t unit) { return FloorDivide(to, unit) - FloorDivide(from, unit); };
  const int64_t day = 24 * 60 * 60 * second;
  switch (part) {
  case DatePart::Year:
  case DatePart::Quarter:
  case DatePart::Month: {
    const CivilTime a = CivilFromMoment(type, from);
    const CivilTime b = CivilFromMoment(type, to);
    const int64_t years = b.year - a.year;
    if (part == DatePart::Year) return years;
    if (part == DatePart::Quarter) return years * 4 + (b.month - 1) / 3 - (a.month - 1) / 3;
    return years * 12 + b.month - a.month;
  }
  case DatePart::Week:
    // Weeks begin on Sunday; 1899-12-31 was one.
    return FloorDivide(FloorDivide(to, day) + 1, 7) - FloorDivide(FloorDivide(from, day) + 1, 7);
  case DatePart::Hour: return count(60 * 60 * second);
  case DatePart::Minute: return count(60 * second);
  case DatePart::Second: return count(second);
  case DatePart::Millisecond:
    if (isFine) return count(kFinePerMillisecond);
    return MillisecondsFromTicks(to) - MillisecondsFromTicks(from);
  case DatePart::Microsecond: return count(kFinePerMillisecond / 1000);
  case DatePart::Nanosecond: {
    int64_t difference = 0;
    if (__builtin_mul_overflow(to - from, int64_t{100}, &difference)) return std::nullopt;
    return difference;
  }
  default: return count(day);
  }
}

int GetDatePart(DatePart part, TypeId type, int64_t moment, int firstDay) {
  const CivilTime time = CivilFromMoment(type, moment);
  const int64_t yearStart = DaysFromCivil(time.year, 1, 1);
  const int64_t days = FloorDivide(moment, IsFine(type) ? kFinePerDay : kTicksPerDay);
  const int dayOfYear = static_cast<int>(days - yearStart) + 1;
  switch (part) {
  case DatePart::Year: return time.year;
  case DatePart::Quarter: return (time.month - 1) / 3 + 1;
  case DatePart::Month: return time.month;
  case DatePart::DayOfYear: return dayOfYear;
  case DatePart::Day: return time.day;
  case DatePart::Week: return (dayOfYear + Weekday(yearStart, firstDay) - 2) / 7 + 1;
  case DatePart::Weekday: return Weekday(days, firstDay);
  case DatePart::Hour: return time.hour;
  case DatePart::Minute: return time.minute;
  case DatePart::Second: return time.second;
  case DatePart::Millisecond: return time.fraction / static_cast<int>(kFinePerMillisecond);
  case DatePart::Microsecond: return time.fraction / 10;
  case DatePart::Nanosecond: return time.fraction * 100;
  case DatePart::IsoWeek: return IsoWeek(days);
  }
  return 0;
}

std::string GetDateName(DatePart part, TypeId type, int64_t moment, int firstDay) {
  const int value = GetDatePart(part, type, moment, part == DatePart::Weekday ? kUsualFirstDay : firstDay);
  if (part == DatePart::Month) return MonthName(value);
  if (part == DatePart::Weekday) return kWeekdays[static_cast<size_t>(value - 1)];
  return std::to_string(value);
}

namespace {

CivilTime CivilFromStandard(const std::tm& parts) {
  CivilTime time;
  time.year = parts.tm_year + 1900;
  time.month = parts.tm_mon + 1;
  time.day = parts.tm_mday;
  time.hour = parts.tm_hour;
  time.minute = parts.tm_min;
  time.second = std::min(parts.tm_sec, 59);
  return time;
}

// std::localtime and std::gmtime keep their result in shared storage; the reentrant forms are not portable.
CivilTime CivilOf(std::time_t seconds, std::tm* (*split)(const std::time_t*)) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  return CivilFromStandard(*split(&seconds));
}

} // namespace

int64_t LocalOffset() {
  const std::time_t now = std::time(nullptr);
  return MomentFromCivil(TypeId::DateTime2, CivilOf(now, std::localtime)) -
         MomentFromCivil(TypeId::DateTime2, CivilOf(now, std::gmtime));
}

int64_t LocalNow() {
  using std::chrono::system_clock;
  const auto now = system_clock::now();
  const std::time_t seconds = system_clock::to_time_t(now);
  const auto nanoseconds =
      std::chrono::duration_cast<std::chrono::nanoseconds>(now - system_clock::from_time_t(seconds)).count();
  CivilTime time = CivilOf(seconds, std::localtime);
  time.fraction = static_cast<int>(std::clamp<int64_t>(nanoseconds / 100, 0, kFinePerSecond - 1));
  return MomentFromCivil(TypeId::DateTime2, time);
}

} // namespace tsql
