// Moments of the datetime types as one integer: the units since 1900-01-01. datetime, smalldatetime and date
// have ticks of 1/300 s, time and datetime2 have 100 ns; a time is a moment of 1900-01-01. So moments of
// types with the same unit compare, index and convert natively, by rounding alone.
#pragma once

#include "tsql/values/Types.h"

namespace tsql {

constexpr int64_t kTicksPerSecond = 300;
constexpr int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr int64_t kTicksPerDay = 24 * 60 * kTicksPerMinute;
constexpr int64_t kFinePerSecond = 10000000;
constexpr int64_t kFinePerMillisecond = kFinePerSecond / 1000;
constexpr int64_t kFinePerDay = 24 * 60 * 60 * kFinePerSecond;

constexpr int64_t UnitsPerSecond(bool isFine) {
  return isFine ? kFinePerSecond : kTicksPerSecond;
}

struct CivilTime {
  int year = 1900;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int fraction = 0; // of the second, in 100 ns; of a tick the nearest millisecond
};

int DaysInMonth(int year, int month);
const char* MonthName(int month);                    // in English, from 1
int64_t DaysFromCivil(int year, int month, int day); // since 1900-01-01, Gregorian
int64_t FloorDays(int64_t ticks);                    // whole days, rounded down

// In the unit of the type.
int64_t MomentFromCivil(TypeId type, const CivilTime& time);
CivilTime CivilFromMoment(TypeId type, int64_t moment);

bool IsInRange(TypeId type, int64_t moment);
// To what the type holds: whole minutes, days, digits of a second's fraction. A time begins again after
// midnight.
int64_t RoundMoment(const Type& type, int64_t moment);
// The moment in the unit of another type, rounded to what that holds; it may be out of its range.
int64_t ConvertMoment(int64_t moment, TypeId from, const Type& to);

// Database files keep the numbers, within the SQL of CHECK constraints.
enum class DatePart : uint8_t {
  Year = 0,
  Quarter = 1,
  Month = 2,
  DayOfYear = 3,
  Day = 4,
  Week = 5,
  Weekday = 6,
  Hour = 7,
  Minute = 8,
  Second = 9,
  Millisecond = 10,
  Microsecond = 11,
  Nanosecond = 12,
  IsoWeek = 13,
};
std::optional<DatePart> FindDatePart(std::string_view name);
const char* NameOf(DatePart part); // the full one
inline bool IsPartOfDay(DatePart part) {
  return part >= DatePart::Hour && part <= DatePart::Nanosecond;
}

// Of moments of one type. nullopt: out of range.
std::optional<int64_t> DateAdd(DatePart part, int64_t number, TypeId type, int64_t moment);
// The units are those of both moments. nullopt: more than 64 bits.
std::optional<int64_t> DateDiff(DatePart part, bool isFine, int64_t from, int64_t to);
// The day of the week on which weeks begin: Monday is 1, Sunday 7.
inline constexpr int kUsualFirstDay = 7;
int GetDatePart(DatePart part, TypeId type, int64_t moment, int firstDay = kUsualFirstDay);
std::string GetDateName(DatePart part, TypeId type, int64_t moment, int firstDay = kUsualFirstDay);

// In 100 ns, as a datetime2.
int64_t LocalNow();
int64_t LocalOffset(); // how far the local time is ahead of UTC now

} // namespace tsql
