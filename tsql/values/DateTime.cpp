#include "tsql/values/DateTime.h"

#include "tsql/values/Collation.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>

namespace tsql {
namespace {

constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                 "May",       "June",     "July",     "August",
                                                 "September", "October",  "November", "December"};
constexpr std::array<const char*, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                  "Thursday", "Friday", "Saturday"};

bool IsLeap(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int year, int month) {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[static_cast<size_t>(month - 1)];
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

// Splits a date text into numbers, words and separators and assembles them as the server does for
// language us_english: y-m-d when the year comes first, otherwise m-d-y.
class DateReader {
 public:
  explicit DateReader(std::string_view text) : text_(text) {}

  DateParse Read(int64_t& ticks) {
    while (SkipBlanks()) {
      if (!ReadElement()) return DateParse::Malformed;
    }
    if (!AssembleDate()) return DateParse::Malformed;
    return Check(ticks);
  }

 private:
  bool SkipBlanks() {
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
    return at_ < text_.size();
  }

  bool IsDigit() const { return at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9'; }
  bool Take(char character) {
    if (at_ >= text_.size() || text_[at_] != character) return false;
    ++at_;
    return true;
  }

  bool ReadNumber(int& value, size_t& digits) {
    const size_t start = at_;
    value = 0;
    while (IsDigit() && at_ - start < 9) value = value * 10 + (text_[at_++] - '0');
    digits = at_ - start;
    return digits > 0 && !IsDigit();
  }

  bool ReadElement() {
    if (!IsDigit()) return ReadWord();
    const size_t start = at_;
    int value = 0;
    size_t digits = 0;
    if (!ReadNumber(value, digits)) return false;
    if (Take(':')) return ReadTime(value);
    if (digits == 8 || digits == 6) return CompactDate(value, digits);
    if (at_ < text_.size() && (text_[at_] == '-' || text_[at_] == '/' || text_[at_] == '.'))
      return ReadSeparated(value, digits);
    SkipBlanks();
    if (IsMeridiem()) {
      at_ = start;
      ReadNumber(value, digits);
      return ReadClockEnd(value);
    }
    return PutNumber(value, digits);
  }

  bool ReadSeparated(int first, size_t firstDigits) {
    const char separator = text_[at_++];
    int second = 0;
    int third = 0;
    size_t secondDigits = 0;
    size_t thirdDigits = 0;
    if (!ReadNumber(second, secondDigits) || !Take(separator) || !ReadNumber(third, thirdDigits))
      return false;
    if (hasDate_) return false;
    hasDate_ = true;
    if (firstDigits == 4) return SetDate(first, second, third);
    return SetDate(FullYear(third, thirdDigits), first, second);
  }

  bool CompactDate(int value, size_t digits) {
    if (hasDate_) return false;
    hasDate_ = true;
    const int year = value / 10000;
    return SetDate(digits == 6 ? FullYear(year, 2) : year, value / 100 % 100, value % 100) &&
           (!Take('T') || ReadTimeAfterMark());
  }

  bool ReadTimeAfterMark() {
    int hour = 0;
    size_t digits = 0;
    return ReadNumber(hour, digits) && Take(':') && ReadTime(hour);
  }

  bool ReadTime(int hour) {
    size_t digits = 0;
    if (hasTime_ || !ReadNumber(time_.minute, digits)) return false;
    if (Take(':')) {
      if (!ReadNumber(time_.second, digits)) return false;
      if (Take('.') || Take(':')) {
        int fraction = 0;
        if (!ReadNumber(fraction, digits)) return false;
        for (; digits < 3; ++digits) fraction *= 10;
        for (; digits > 3; --digits) fraction /= 10;
        time_.millisecond = fraction;
      }
    }
    SkipBlanks();
    return ReadClockEnd(hour);
  }

  bool IsMeridiem() const {
    return at_ + 2 <= text_.size() &&
           (EqualNames(text_.substr(at_, 2), "AM") || EqualNames(text_.substr(at_, 2), "PM"));
  }

  bool ReadClockEnd(int hour) {
    hasTime_ = true;
    SkipBlanks();
    if (IsMeridiem()) {
      const bool afternoon = EqualNames(text_.substr(at_, 2), "PM");
      at_ += 2;
      if (hour > 12) return false;
      hour = hour % 12 + (afternoon ? 12 : 0);
    }
    time_.hour = hour;
    return true;
  }

  bool ReadWord() {
    if (Take(',')) return true;
    if ((text_[at_] == 'T' || text_[at_] == 't') && hasDate_ && !hasTime_) {
      ++at_;
      return ReadTimeAfterMark();
    }
    size_t end = at_;
    while (end < text_.size() && ((text_[end] | 0x20) >= 'a' && (text_[end] | 0x20) <= 'z')) ++end;
    const std::string_view word = text_.substr(at_, end - at_);
    at_ = end;
    for (size_t month = 0; month < kMonths.size(); ++month) {
      const std::string_view name = kMonths[month];
      if (word.size() >= 3 && (EqualNames(word, name.substr(0, 3)) || EqualNames(word, name))) {
        if (wordMonth_ != 0) return false;
        wordMonth_ = static_cast<int>(month) + 1;
        return true;
      }
    }
    return false;
  }

  // Numbers that stand alone: the day and the year beside a month's name, or a year alone.
  bool PutNumber(int value, size_t digits) {
    if (digits == 4 && year_ < 0) {
      year_ = value;
      return true;
    }
    if (loneDay_ < 0) {
      loneDay_ = value;
      return true;
    }
    if (year_ >= 0) return false;
    year_ = FullYear(value, digits);
    return true;
  }

  bool AssembleDate() {
    if (wordMonth_ != 0) return !hasDate_ && year_ >= 0 && SetDate(year_, wordMonth_, std::max(loneDay_, 1));
    if (loneDay_ >= 0) return false;
    if (year_ >= 0) return !hasDate_ && SetDate(year_, 1, 1);
    return true;
  }

  static int FullYear(int year, size_t digits) {
    if (digits > 2) return year;
    return year < 50 ? 2000 + year : 1900 + year;
  }

  bool SetDate(int year, int month, int day) {
    time_.year = year;
    time_.month = month;
    time_.day = day;
    return true;
  }

  DateParse Check(int64_t& ticks) const {
    if (time_.month < 1 || time_.month > 12 || time_.day < 1 || time_.year < 1 || time_.year > 9999 ||
        time_.day > DaysInMonth(time_.year, time_.month) || time_.hour > 23 || time_.minute > 59 ||
        time_.second > 59)
      return DateParse::OutOfRange;
    ticks = TicksFromCivil(time_);
    return DateParse::Ok;
  }

  std::string_view text_;
  size_t at_ = 0;
  CivilTime time_;
  bool hasDate_ = false;
  bool hasTime_ = false;
  int wordMonth_ = 0;
  int loneDay_ = -1;
  int year_ = -1;
};

template <typename... Arguments>
std::string Print(const char* format, Arguments... arguments) {
  std::array<char, 64> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), format, arguments...);
  return {buffer.data(), static_cast<size_t>(std::max(length, 0))};
}

std::string DatePartText(const CivilTime& t, int style) {
  const int year = style >= 100 || style == 20 || style == 21 ? t.year : t.year % 100;
  const char* pad = year == t.year ? "%04d" : "%02d";
  const std::string yearText = Print(pad, year);
  switch (style % 100) {
  case 1: return Print("%02d/%02d/", t.month, t.day) + yearText;
  case 2: return yearText + Print(".%02d.%02d", t.month, t.day);
  case 3: return Print("%02d/%02d/", t.day, t.month) + yearText;
  case 4: return Print("%02d.%02d.", t.day, t.month) + yearText;
  case 5: return Print("%02d-%02d-", t.day, t.month) + yearText;
  case 6: return Print("%02d %.3s ", t.day, kMonths[static_cast<size_t>(t.month - 1)]) + yearText;
  case 7: return Print("%.3s %02d, ", kMonths[static_cast<size_t>(t.month - 1)], t.day) + yearText;
  case 10: return Print("%02d-%02d-", t.month, t.day) + yearText;
  case 11: return yearText + Print("/%02d/%02d", t.month, t.day);
  case 12: return yearText + Print("%02d%02d", t.month, t.day);
  default: return yearText + Print("-%02d-%02d", t.month, t.day);
  }
}

int ClockHour(int hour) {
  return hour % 12 == 0 ? 12 : hour % 12;
}

} // namespace

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

DateParse ParseDateTime(std::string_view text, int64_t& ticks) {
  return DateReader(text).Read(ticks);
}

std::optional<std::string> FormatDateTime(int64_t ticks, TypeId type, int style) {
  const CivilTime t = CivilFromTicks(ticks);
  const bool dateOnly = type == TypeId::Date;
  if (style == 0 && dateOnly) style = 23;
  const char* meridiem = t.hour < 12 ? "AM" : "PM";
  const char* month = kMonths[static_cast<size_t>(t.month - 1)];
  const std::string clock = Print("%02d:%02d:%02d", t.hour, t.minute, t.second);
  const std::string fraction = Print("%03d", t.millisecond);
  switch (style) {
  case 0:
  case 100:
    if (dateOnly) return Print("%.3s %2d %04d", month, t.day, t.year);
    return Print("%.3s %2d %04d %2d:%02d%s", month, t.day, t.year, ClockHour(t.hour), t.minute, meridiem);
  case 9:
  case 109:
    return Print("%.3s %2d %04d %2d:%02d:%02d:%03d%s", month, t.day, t.year, ClockHour(t.hour), t.minute,
                 t.second, t.millisecond, meridiem);
  case 8:
  case 24:
  case 108: return clock;
  case 13:
  case 113: return Print("%02d %.3s %04d ", t.day, month, t.year) + clock + ":" + fraction;
  case 14:
  case 114: return clock + ":" + fraction;
  case 20:
  case 120: return dateOnly ? DatePartText(t, 120) : DatePartText(t, 120) + " " + clock;
  case 21:
  case 25:
  case 121: return dateOnly ? DatePartText(t, 120) : DatePartText(t, 120) + " " + clock + "." + fraction;
  case 23: return DatePartText(t, 120);
  case 126:
    if (dateOnly) return DatePartText(t, 120);
    return DatePartText(t, 120) + "T" + clock + (t.millisecond != 0 ? "." + fraction : "");
  default: break;
  }
  const int kind = style % 100;
  if (style < 0 || style > 112 || (style > 12 && style < 101)) return std::nullopt;
  if ((kind >= 1 && kind <= 7) || (kind >= 10 && kind <= 12)) return DatePartText(t, style);
  return std::nullopt;
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
  if (part == DatePart::Month) return kMonths[static_cast<size_t>(value - 1)];
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
