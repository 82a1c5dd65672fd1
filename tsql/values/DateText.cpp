#include "tsql/values/DateText.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "tsql/values/Collation.h"

namespace tsql {
namespace {

// Splits a date text into numbers, words and separators and assembles them as the server does for
// language us_english: y-m-d when the year comes first, otherwise m-d-y.
class DateReader {
 public:
  DateReader(std::string_view text, size_t maxFraction) : text_(text), maxFraction_(maxFraction) {}

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

  static bool IsDigit(char character) { return character >= '0' && character <= '9'; }
  bool IsDigit() const { return at_ < text_.size() && IsDigit(text_[at_]); }
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
    SkipBlanks();
    const char behind = BehindSeparator();
    if (IsLetter(behind) || (wordMonth_ != 0 && IsDigit(behind))) {
      ++at_;
      return PutNumber(value, digits);
    }
    if (IsSeparator()) return ReadSeparated(value, digits);
    if (IsMeridiem()) {
      at_ = start;
      ReadNumber(value, digits);
      return ReadClockEnd(value);
    }
    return PutNumber(value, digits);
  }

  bool IsSeparator() const {
    return at_ < text_.size() && (text_[at_] == '-' || text_[at_] == '/' || text_[at_] == '.');
  }

  static bool IsLetter(char character) { return (character | 0x20) >= 'a' && (character | 0x20) <= 'z'; }

  // What stands behind this separator and the blanks that follow it; 0 for nothing, or if this is none.
  char BehindSeparator() const {
    const size_t next = IsSeparator() ? text_.find_first_not_of(' ', at_ + 1) : std::string_view::npos;
    return next != std::string_view::npos ? text_[next] : '\0';
  }

  bool ReadSeparated(int first, size_t firstDigits) {
    const char separator = text_[at_++];
    int second = 0;
    int third = 0;
    size_t secondDigits = 0;
    size_t thirdDigits = 0;
    SkipBlanks();
    if (!ReadNumber(second, secondDigits)) return false;
    SkipBlanks();
    if (!Take(separator)) return false;
    SkipBlanks();
    if (!ReadNumber(third, thirdDigits)) return false;
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
    if (!ReadNumber(hour, digits) || !Take(':') || !ReadTime(hour)) return false;
    Take('Z');
    return true;
  }

  bool ReadTime(int hour) {
    size_t digits = 0;
    if (hasTime_ || !ReadNumber(time_.minute, digits)) return false;
    if (Take(':')) {
      if (!ReadNumber(time_.second, digits)) return false;
      if (Take('.') || Take(':')) {
        int fraction = 0;
        if (!ReadNumber(fraction, digits) || digits > maxFraction_) return false;
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
    while (end < text_.size() && IsLetter(text_[end])) ++end;
    const std::string_view word = text_.substr(at_, end - at_);
    at_ = end;
    for (int month = 1; month <= 12; ++month) {
      const std::string_view name = MonthName(month);
      if (word.size() >= 3 && (EqualNames(word, name.substr(0, 3)) || EqualNames(word, name))) {
        if (wordMonth_ != 0) return false;
        wordMonth_ = month;
        SkipBlanks();
        if (!IsSeparator()) return true;
        if (!IsDigit(BehindSeparator())) return false;
        ++at_;
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
  size_t maxFraction_;
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
  case 6: return Print("%02d %.3s ", t.day, MonthName(t.month)) + yearText;
  case 7: return Print("%.3s %02d, ", MonthName(t.month), t.day) + yearText;
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

DateParse ParseDateTime(std::string_view text, TypeId type, int64_t& ticks) {
  constexpr size_t kMaxFractionOfDate = 7;
  constexpr size_t kMaxFraction = 3;
  return DateReader(text, type == TypeId::Date ? kMaxFractionOfDate : kMaxFraction).Read(ticks);
}

std::optional<std::string> FormatDateTime(int64_t ticks, TypeId type, int style) {
  const CivilTime t = CivilFromTicks(ticks);
  const bool dateOnly = type == TypeId::Date;
  if (style == 0 && dateOnly) style = 23;
  const char* meridiem = t.hour < 12 ? "AM" : "PM";
  const char* month = MonthName(t.month);
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

} // namespace tsql
