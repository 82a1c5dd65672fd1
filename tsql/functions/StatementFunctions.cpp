// Conversions, and what a statement asks of its batch while it runs.
#include <algorithm>
#include <cmath>

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/CodePage.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

// Whether a text is already what the conversion makes of it, as most are.
bool IsAlready(const FunctionCall& call, const Type& from, const Type& to) {
  if (!IsText(from) || !IsText(to) || IsFixedLength(to.id)) return false;
  const std::string_view text = call.Text(0);
  if (to.length >= 0 && text.size() > static_cast<size_t>(to.length)) return false;
  // A text of Unicode may have characters that the code page lacks.
  return IsUnicode(to.id) || !IsUnicode(from.id) || IsAscii(text);
}

void Cast(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type from = call.TypeAt(1);
  const Type to = call.TypeAt(2);
  if (from.id == TypeId::Decimal && to.id == TypeId::Decimal) {
    // Most conversions that SQLite cannot do are between decimals; these need no copy of the value.
    const std::optional<Decimal> value = Rescale(call.DecimalAt(0, from), to.scale);
    return call.ReturnDecimal(CheckDecimal(value, to, "numeric"), to);
  }
  if (IsAlready(call, from, to)) return call.ReturnValue(0);
  call.Return(Convert(call.Value(0), from, to, ConvertMode::Cast, static_cast<int>(call.Integer(3))));
}

// A style that does not exist is an error all the same.
void TryCast(const FunctionCall& call) {
  constexpr int kUnknownStyle = 281;
  constexpr int kUnknownBinaryStyle = 9809;
  try {
    Cast(call);
  } catch (const Error& error) {
    if (error.number == kUnknownStyle || error.number == kUnknownBinaryStyle) throw;
    call.ReturnNull();
  }
}

void Store(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type from = call.TypeAt(1);
  const Type to = call.TypeAt(2);
  if (IsAlready(call, from, to)) return call.ReturnValue(0);
  call.Return(Convert(call.Value(0), from, to, ConvertMode::Assign));
}

void NotNull(const FunctionCall& call) {
  // Whoever runs the statement completes the message, which names the table.
  if (call.IsNull(0)) throw Error(515, 16, 2, 0, std::string(call.Text(1)));
  call.ReturnValue(0);
}

void RowLimit(const FunctionCall& call) {
  if (call.IsNull(0)) Fail(1060, {});
  if (call.Integer(0) < 0) Fail(127, {});
  call.ReturnValue(0);
}

// t_at_least(value, least, error, error of null)
void AtLeast(const FunctionCall& call) {
  if (call.IsNull(0)) Fail(static_cast<int>(call.Integer(3)), {});
  if (call.Integer(0) < call.Integer(1)) Fail(static_cast<int>(call.Integer(2)), {});
  call.ReturnValue(0);
}

// t_percent_of(share, total): how many of the rows that is; a part of a row is a whole one.
void PercentOf(const FunctionCall& call) {
  constexpr double kAll = 100;
  if (call.IsNull(0)) Fail(1060, {});
  const double share = call.Real(0);
  if (share < 0 || share > kAll) Fail(1031, {});
  call.ReturnInteger(static_cast<int64_t>(std::ceil(share * call.Real(1) / kAll)));
}

void Variable(const FunctionCall& call) {
  const FunctionContext& context = call.Context();
  call.Return((*context.variables)[static_cast<size_t>(call.Integer(0))]);
}

// t_assign(index, type, type of the value, value)
void AssignVariable(const FunctionCall& call) {
  Datum& variable = (*call.Context().variables)[static_cast<size_t>(call.Integer(0))];
  variable =
      call.IsNull(3) ? Datum() : Convert(call.Value(3), call.TypeAt(2), call.TypeAt(1), ConvertMode::Cast);
  call.ReturnValue(3);
}

void NextIdentity(const FunctionCall& call) {
  // Nobody but the engine can insert here.
  IdentityCounter* const counter = call.Context().counter;
  if (counter == nullptr) return call.ReturnNull();
  call.ReturnInteger(counter->Next());
}

// The number that a statement gives to a row itself. The rows of an INSTEAD OF trigger have no counter.
void GivenIdentity(const FunctionCall& call) {
  IdentityCounter* const counter = call.Context().counter;
  if (counter != nullptr && !call.IsNull(0)) counter->TakeGiven(call.Integer(0));
  call.ReturnValue(0);
}

// t_then(first, second): SQLite computes arguments from left to right.
void Then(const FunctionCall& call) {
  call.ReturnValue(1);
}

void Suspect(const FunctionCall& call) {
  std::vector<std::string>& suspects = call.Context().suspects;
  const std::string_view name = call.Text(0);
  if (std::find(suspects.begin(), suspects.end(), name) == suspects.end()) suspects.emplace_back(name);
}

// t_updated(column): what UPDATE() answers in the trigger that runs.
void Updated(const FunctionCall& call) {
  const FiredRows* const fired = call.Context().fired;
  const auto column = static_cast<size_t>(call.Integer(0));
  const bool isUpdated = fired != nullptr && column < fired->updated.size() && fired->updated[column];
  call.ReturnInteger(isUpdated ? 1 : 0);
}

// t_recursion(depth, most)
void Recursion(const FunctionCall& call) {
  const int64_t most = call.Integer(1);
  if (most > 0 && call.Integer(0) > most) Fail(530, {std::to_string(most)});
  call.ReturnValue(0);
}

} // namespace

void RegisterStatementFunctions(sqlite3* connection, FunctionContext& context) {
  Register<Cast>(connection, context, names::kCast, 4);
  Register<TryCast>(connection, context, names::kTryCast, 4);
  Register<Store>(connection, context, names::kStore, 3);
  Register<NotNull>(connection, context, names::kNotNull, 2);
  Register<RowLimit>(connection, context, names::kRowLimit, 1);
  Register<Variable>(connection, context, names::kVariable, 1, Purity::Volatile);
  Register<AssignVariable>(connection, context, names::kAssignVariable, 4, Purity::Volatile);
  Register<NextIdentity>(connection, context, names::kNextIdentity, 0, Purity::Volatile);
  Register<GivenIdentity>(connection, context, names::kGivenIdentity, 1, Purity::Volatile);
  Register<Then>(connection, context, names::kThen, 2, Purity::Volatile);
  Register<Suspect>(connection, context, names::kSuspect, 1, Purity::Volatile);
  Register<Recursion>(connection, context, names::kRecursion, 2);
  Register<Updated>(connection, context, names::kUpdated, 1, Purity::Volatile);
  Register<AtLeast>(connection, context, names::kAtLeast, 4);
  Register<PercentOf>(connection, context, names::kPercentOf, 2);
}

} // namespace tsql
