#include "tsql/functions/FunctionCall.h"
#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"
#include "tsql/values/PowersOfTen.h"

namespace tsql {
namespace {

// In 100 ns.
int64_t NowOf(FunctionContext& context) {
  if (!context.now)
    context.now = context.fixedNow
                      ? ConvertMoment(*context.fixedNow, TypeId::DateTime, MakeType(TypeId::DateTime2))
                      : LocalNow();
  return *context.now;
}

void GetDate(const FunctionCall& call) {
  call.ReturnInteger(ConvertMoment(NowOf(call.Context()), TypeId::DateTime2, MakeType(TypeId::DateTime)));
}

void GetUtcDate(const FunctionCall& call) {
  const int64_t now = NowOf(call.Context()) - LocalOffset();
  call.ReturnInteger(ConvertMoment(now, TypeId::DateTime2, MakeType(TypeId::DateTime)));
}

void SysDateTime(const FunctionCall& call) {
  call.ReturnInteger(NowOf(call.Context()));
}

void SysUtcDateTime(const FunctionCall& call) {
  call.ReturnInteger(NowOf(call.Context()) - LocalOffset());
}

// The type of the moments, the last argument behind so many others. Without it they are ticks.
TypeId UnitsAt(const FunctionCall& call, int i) {
  return i < call.Count() ? call.TypeAt(i).id : TypeId::DateTime;
}

DatePart PartAt(const FunctionCall& call, int i) {
  return static_cast<DatePart>(call.Integer(i));
}

// A moment computed by adding ticks: t_moment(ticks, type).
void Moment(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  const int64_t ticks = RoundMoment(type, call.Integer(0));
  if (!IsInRange(type.id, ticks)) Fail(8115, {"expression", TypeName(type.id)});
  call.ReturnInteger(ticks);
}

// t_dateadd(part, number, moment, type)
void AddToDate(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Type type = call.TypeAt(3);
  const std::optional<int64_t> sum = DateAdd(PartAt(call, 0), call.Integer(1), type.id, call.Integer(2));
  if (!sum || !IsInRange(type.id, RoundMoment(type, *sum))) Fail(517, {TypeName(type.id)});
  call.ReturnInteger(RoundMoment(type, *sum));
}

// t_datediff(part, from, to[, type])
int64_t DifferenceOf(const FunctionCall& call) {
  const bool isFine = IsFine(UnitsAt(call, 3));
  const std::optional<int64_t> difference =
      DateDiff(PartAt(call, 0), isFine, call.Integer(1), call.Integer(2));
  if (!difference) Fail(535, {});
  return *difference;
}

void DateDifference(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const int64_t difference = DifferenceOf(call);
  if (difference < INT32_MIN || difference > INT32_MAX) Fail(535, {});
  call.ReturnInteger(difference);
}

void BigDateDifference(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  call.ReturnInteger(DifferenceOf(call));
}

// The parts of a moment as the functions that make one take them: those of the day first, if the type has a
// day, then those of the time.
struct GivenParts {
  int64_t year = 1900;
  int64_t month = 1;
  int64_t day = 1;
  int64_t hour = 0;
  int64_t minute = 0;
  int64_t second = 0;
  int64_t fraction = 0;
};

GivenParts ReadParts(const FunctionCall& call, const Type& type) {
  GivenParts parts;
  int next = 0;
  const auto read = [&](int64_t& part) {
    if (next + 1 < call.Count()) part = call.Integer(next++);
  };
  if (type.id != TypeId::Time) {
    read(parts.year);
    read(parts.month);
    read(parts.day);
  }
  read(parts.hour);
  read(parts.minute);
  read(parts.second);
  read(parts.fraction);
  return parts;
}

// t_datefromparts(parts ..., type), where the last part is a fraction in milliseconds or in the unit of the
// type's digits.
void DateFromParts(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  constexpr int kMillisecondDigits = 3;
  const Type type = call.TypeAt(call.Count() - 1);
  const GivenParts parts = ReadParts(call, type);
  const int64_t unit = kFinePerSecond / PowerOfTen(IsFine(type.id) ? type.scale : kMillisecondDigits);
  const auto isWithin = [](int64_t part, int64_t least, int64_t most) {
    return part >= least && part <= most;
  };
  bool isValid = isWithin(parts.year, 1, 9999) && isWithin(parts.month, 1, 12);
  isValid = isValid &&
            isWithin(parts.day, 1, DaysInMonth(static_cast<int>(parts.year), static_cast<int>(parts.month)));
  isValid = isValid && isWithin(parts.hour, 0, 23) && isWithin(parts.minute, 0, 59) &&
            isWithin(parts.second, 0, 59) && isWithin(parts.fraction, 0, kFinePerSecond / unit - 1);
  if (isValid) {
    const auto number = [](int64_t part) { return static_cast<int>(part); };
    const int64_t moment = MomentFromCivil(
        type.id, {number(parts.year), number(parts.month), number(parts.day), number(parts.hour),
                  number(parts.minute), number(parts.second), number(parts.fraction * unit)});
    if (IsInRange(type.id, moment)) return call.ReturnInteger(moment);
  }
  Fail(289, {TypeName(type.id)});
}

// t_eomonth(date[, months])
void EndOfMonth(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const int64_t months = call.Count() > 1 ? call.Integer(1) : 0;
  const std::optional<int64_t> moved = DateAdd(DatePart::Month, months, TypeId::Date, call.Integer(0));
  if (!moved) Fail(517, {"date"});
  const CivilTime time = CivilFromMoment(TypeId::Date, *moved);
  const int day = DaysInMonth(time.year, time.month);
  call.ReturnInteger(MomentFromCivil(TypeId::Date, {time.year, time.month, day}));
}

// t_datepart(part, moment[, type])
void DatePartNumber(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  call.ReturnInteger(
      GetDatePart(PartAt(call, 0), UnitsAt(call, 2), call.Integer(1), call.Context().firstDay));
}

void DatePartName(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  call.ReturnText(GetDateName(PartAt(call, 0), UnitsAt(call, 2), call.Integer(1), call.Context().firstDay));
}

} // namespace

void RegisterDateFunctions(sqlite3* connection, FunctionContext& context) {
  Register<GetDate>(connection, context, names::kGetDate, 0);
  Register<GetUtcDate>(connection, context, names::kGetUtcDate, 0);
  Register<SysDateTime>(connection, context, names::kSysDateTime, 0);
  Register<SysUtcDateTime>(connection, context, names::kSysUtcDateTime, 0);
  Register<BigDateDifference>(connection, context, names::kDateDiffBig, -1);
  Register<DateFromParts>(connection, context, names::kDateFromParts, -1);
  Register<EndOfMonth>(connection, context, names::kEndOfMonth, -1);
  Register<Moment>(connection, context, names::kMoment, 2);
  Register<AddToDate>(connection, context, names::kDateAdd, 4);
  Register<DateDifference>(connection, context, names::kDateDiff, -1);
  Register<DatePartNumber>(connection, context, names::kDatePart, -1);
  Register<DatePartName>(connection, context, names::kDateName, -1);
}

} // namespace tsql
