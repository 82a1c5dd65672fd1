#include "tsql/functions/FunctionCall.h"
#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

void GetDate(const FunctionCall& call) {
  FunctionContext& context = call.Context();
  if (!context.now) context.now = context.fixedNow ? *context.fixedNow : LocalNow();
  call.ReturnInteger(*context.now);
}

DatePart PartAt(const FunctionCall& call, int i) {
  return static_cast<DatePart>(call.Integer(i));
}

// A moment computed by adding ticks: t_moment(ticks, type).
void Moment(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type type = call.TypeAt(1);
  const int64_t ticks = RoundMoment(type.id, call.Integer(0));
  if (!IsInRange(type.id, ticks)) Fail(8115, {"expression", TypeName(type.id)});
  call.ReturnInteger(ticks);
}

// t_dateadd(part, number, moment, type)
void AddToDate(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Type type = call.TypeAt(3);
  const std::optional<int64_t> ticks = DateAdd(PartAt(call, 0), call.Integer(1), call.Integer(2));
  if (!ticks || !IsInRange(type.id, RoundMoment(type.id, *ticks))) Fail(517, {TypeName(type.id)});
  call.ReturnInteger(RoundMoment(type.id, *ticks));
}

void DateDifference(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const int64_t difference = DateDiff(PartAt(call, 0), call.Integer(1), call.Integer(2));
  if (difference < INT32_MIN || difference > INT32_MAX) Fail(535, {});
  call.ReturnInteger(difference);
}

void DatePartNumber(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  call.ReturnInteger(GetDatePart(PartAt(call, 0), call.Integer(1)));
}

void DatePartName(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  call.ReturnText(GetDateName(PartAt(call, 0), call.Integer(1)));
}

} // namespace

void RegisterDateFunctions(sqlite3* connection, FunctionContext& context) {
  Register<GetDate>(connection, context, names::kGetDate, 0);
  Register<Moment>(connection, context, names::kMoment, 2);
  Register<AddToDate>(connection, context, names::kDateAdd, 4);
  Register<DateDifference>(connection, context, names::kDateDiff, 3);
  Register<DatePartNumber>(connection, context, names::kDatePart, 2);
  Register<DatePartName>(connection, context, names::kDateName, 2);
}

} // namespace tsql
