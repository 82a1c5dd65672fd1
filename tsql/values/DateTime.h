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

int64_t DaysFromCivil(int year, int month, int day); // since 1900-01-01, Gregorian
int64_t TicksFromCivil(const CivilTime& time);
CivilTime CivilFromTicks(int64_t ticks);
int64_t FloorDays(int64_t ticks); // whole days, towards the past

bool IsInRange(TypeId type, int64_t ticks);
int64_t RoundMoment(TypeId type, int64_t ticks); // to minutes or days as the type has them

enum class DateParse : uint8_t { Ok, Malformed, OutOfRange };
DateParse ParseDateTime(std::string_view text, int64_t& ticks);
// CONVERT's text for the style; nullopt for a style number that does not exist.
std::optional<std::string> FormatDateTime(int64_t ticks, TypeId type, int style);

enum class DatePart : uint8_t {
  Year,
  Quarter,
  Month,
  DayOfYear,
  Day,
  Week,
  Weekday,
  Hour,
  Minute,
  Second,
  Millisecond,
};
std::optional<DatePart> FindDatePart(std::string_view name);
std::optional<int64_t> DateAdd(DatePart part, int64_t number, int64_t ticks); // nullopt: out of range
int64_t DateDiff(DatePart part, int64_t from, int64_t to);
int GetDatePart(DatePart part, int64_t ticks);
std::string GetDateName(DatePart part, int64_t ticks);

int64_t LocalNow();

} // namespace tsql
