// Moments of the datetime types as one integer: 1/300 s ticks since 1900-01-01. All three types (datetime,
// smalldatetime, date) use it, so that they compare and index natively and convert by rounding alone.
#pragma once

#include "tsql/tsql.h"

namespace tsql {

constexpr int64_t kTicksPerSecond = 300;
constexpr int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr int64_t kTicksPerDay = 24 * 60 * kTicksPerMinute;

struct CivilTime {
  int year = 1900;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
};

int DaysInMonth(int year, int month);
const char* MonthName(int month);                    // in English, from 1
int64_t DaysFromCivil(int year, int month, int day); // since 1900-01-01, Gregorian
int64_t TicksFromCivil(const CivilTime& time);
CivilTime CivilFromTicks(int64_t ticks);
int64_t FloorDays(int64_t ticks); // whole days, rounded down

bool IsInRange(TypeId type, int64_t ticks);
int64_t RoundMoment(TypeId type, int64_t ticks); // to what the type holds: whole minutes or days

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
};
std::optional<DatePart> FindDatePart(std::string_view name);
const char* NameOf(DatePart part);                                            // the full one
std::optional<int64_t> DateAdd(DatePart part, int64_t number, int64_t ticks); // nullopt: out of range
int64_t DateDiff(DatePart part, int64_t from, int64_t to);
int GetDatePart(DatePart part, int64_t ticks);
std::string GetDateName(DatePart part, int64_t ticks);

int64_t LocalNow();

} // namespace tsql
