#include "tsql/values/DateText.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "tsql/values/Collation.h"

namespace tsql {
namespace {

// The order of a date's numbers.
enum class DateOrder : uint8_t { MonthFirst, DayFirst, YearFirst };

DateOrder OrderOf(int style) {
  switch (style % 100) {
  case 2:
  case 11:
  case 12:
  case 20:
  case 21:
  case 23:
  case 25:
  case 26:
  case 27: return DateOrder::YearFirst;
  case 3:
  case 4:
  case 5:
  case 13:
  case 31: return DateOrder::DayFirst;
  default: return DateOrder::MonthFirst;
  }
}

// Splits a date text into numbers, words and separators and assembles them as the server does for
// language us_english: y-m-d when the year comes first, otherwise m-d-y or what the style says.
class DateReader {
 public:
  DateReader(std::string_view text, bool isExact, DateOrder order)
      : text_(text), isExact_(isExact), order_(order) {}

  DateParse Read(TypeId type, int64_t& moment) {
    while (SkipBlanks()) {
      if (!ReadElement()) return DateParse::Malformed;
    }
    if (!AssembleDate()) return DateParse::Malformed;
    if (!IsValid()) return DateParse::OutOfRange;
    moment = MomentFromCivil(type, time_);
    return DateParse::Ok;
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
    switch (order_) {
    case DateOrder::YearFirst: return SetDate(FullYear(first, firstDigits), second, third);
    case DateOrder::DayFirst: return SetDate(FullYear(third, thirdDigits), second, first);
    case DateOrder::MonthFirst: break;
    }
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
    if (!Take('Z')) Take('z');
    return true;
  }

  // Z or +hh:mm behind a time.
  bool ReadOffset() {
    if (Take('Z') || Take('z')) return true;
    if (!Take('+') && !Take('-')) return true;
    int hours = 0;
    int minutes = 0;
    size_t digits = 0;
    const bool isRead = ReadNumber(hours, digits) && Take(':') && ReadNumber(minutes, digits);
    return isRead && minutes < 60 && hours * 60 + minutes <= 14 * 60;
  }

  bool ReadTime(int hour) {
    size_t digits = 0;
    if (hasTime_ || !ReadNumber(time_.minute, digits)) return false;
    if (Take(':')) {
      if (!ReadNumber(time_.second, digits)) return false;
      if (Take('.') || Take(':')) {
        int fraction = 0;
        constexpr size_t kAllDigits = kMaxFraction;
        const size_t most = isExact_ ? kAllDigits : 3;
        if (!ReadNumber(fraction, digits) || digits > most) return false;
        for (; digits < kAllDigits; ++digits) fraction *= 10;
        time_.fraction = fraction;
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
    SkipBlanks();
    return !isExact_ || ReadOffset();
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

  bool IsValid() const {
    return time_.month >= 1 && time_.month <= 12 && time_.day >= 1 && time_.year >= 1 && time_.year <= 9999 &&
           time_.day <= DaysInMonth(time_.year, time_.month) && time_.hour <= 23 && time_.minute <= 59 &&
           time_.second <= 59;
  }

  std::string_view text_;
  bool isExact_; // takes all digits of a fraction and an offset
  DateOrder order_;
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

// A type's digits of a second's fraction, with what is in front of them; nothing for none.
std::string FractionText(const CivilTime& time, const Type& type, const char* mark) {
  if (!IsFine(type.id)) return mark + Print("%03d", time.fraction / static_cast<int>(kFinePerMillisecond));
  if (type.scale == 0) return {};
  return mark + Print("%07d", time.fraction).substr(0, type.scale);
}

// Styles with a day and a time of day. The parts that the type lacks are left out; nullopt for other styles.
std::optional<std::string> FormatMoment(const CivilTime& t, const Type& type, int style) {
  const bool hasDate = type.id != TypeId::Time;
  const bool hasTime = type.id != TypeId::Date;
  const char* meridiem = t.hour < 12 ? "AM" : "PM";
  const std::string clock = Print("%02d:%02d:%02d", t.hour, t.minute, t.second);
  // Of a datetime the fraction stands behind a colon in most styles.
  const char* mark = IsFine(type.id) ? "." : ":";
  const auto join = [&](const std::string& date, const char* between, const std::string& time) {
    return (hasDate ? date : "") + (hasDate && hasTime ? between : "") + (hasTime ? time : "");
  };
  const std::string wordDate = Print("%.3s %2d %04d", MonthName(t.month), t.day, t.year);
  // A time alone has no blank in front.
  const std::string hour = Print(hasDate ? "%2d" : "%d", ClockHour(t.hour));
  switch (style) {
  case 0:
  case 100: return join(wordDate, " ", hour + Print(":%02d%s", t.minute, meridiem));
  case 9:
  case 109:
    return join(wordDate, " ",
                hour + Print(":%02d:%02d", t.minute, t.second) + FractionText(t, type, mark) + meridiem);
  case 8:
  case 24:
  case 108: return hasTime ? std::optional(clock) : std::nullopt;
  case 13:
  case 113:
    return join(Print("%02d %.3s %04d", t.day, MonthName(t.month), t.year), " ",
                clock + FractionText(t, type, mark));
  case 14:
  case 114: return hasTime ? std::optional(clock + FractionText(t, type, mark)) : std::nullopt;
  case 20:
  case 120: return join(DatePartText(t, 120), " ", clock);
  case 21:
  case 25:
  case 121: return join(DatePartText(t, 120), " ", clock + FractionText(t, type, "."));
  case 126:
  case 127:
    return join(DatePartText(t, 120), "T", clock + (t.fraction != 0 ? FractionText(t, type, ".") : ""));
  default: return std::nullopt;
  }
}

} // namespace

DateParse ParseDateTime(std::string_view text, TypeId type, int style, int64_t& moment) {
  const bool isExact = type == TypeId::Date || IsFine(type);
  return DateReader(text, isExact, OrderOf(style)).Read(type, moment);
}

std::optional<std::string> FormatDateTime(int64_t moment, const Type& type, int style) {
  constexpr int kOdbcStyle = 121; // the one that date, time and datetime2 have by default
  if (style == 0 && (type.id == TypeId::Date || IsFine(type.id))) style = kOdbcStyle;
  const CivilTime t = CivilFromMoment(type.id, moment);
  if (std::optional<std::string> text = FormatMoment(t, type, style)) return text;
  if (type.id == TypeId::Time) return std::nullopt;
  if (style == 23) return DatePartText(t, 120);
  const int kind = style % 100;
  if (style < 0 || style > 112 || (style > 12 && style < 101)) return std::nullopt;
  if ((kind >= 1 && kind <= 7) || (kind >= 10 && kind <= 12)) return DatePartText(t, style);
  return std::nullopt;
}

} // namespace tsql
