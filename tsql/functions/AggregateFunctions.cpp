// Aggregates that SQLite lacks: exact sums and averages, and the only value of a subquery.
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/CodePage.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

struct SumState {
  uint64_t low;
  uint64_t high;
  int64_t count;
  bool negative;
  bool overflow;
};

void SumStep(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* state = static_cast<SumState*>(sqlite3_aggregate_context(context, sizeof(SumState)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  const FunctionCall call(context, count, values);
  if (call.IsNull(0)) return;
  const Type type = call.TypeAt(1);
  const Decimal sum{state->low, state->high, type.scale, state->negative};
  const std::optional<Decimal> next = AddDecimals(sum, call.DecimalAt(0, type), type.scale);
  ++state->count;
  state->overflow = state->overflow || !next;
  if (!next) return;
  state->low = next->low;
  state->high = next->high;
  state->negative = next->negative;
}

// The final call gets no arguments, so the steps keep the types in the state.
struct TypedSum {
  SumState sum;
  int64_t from;
  int64_t to;
};

void TypedStep(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* state = static_cast<TypedSum*>(sqlite3_aggregate_context(context, sizeof(TypedSum)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  state->from = sqlite3_value_int64(values[1]);
  state->to = sqlite3_value_int64(values[2]);
  SumStep(context, count, values);
}

// A row leaves the window.
void InverseStep(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* state = static_cast<TypedSum*>(sqlite3_aggregate_context(context, sizeof(TypedSum)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  const FunctionCall call(context, count, values);
  if (call.IsNull(0)) return;
  const Type type = call.TypeAt(1);
  const Decimal sum{state->sum.low, state->sum.high, type.scale, state->sum.negative};
  const std::optional<Decimal> next = SubtractDecimals(sum, call.DecimalAt(0, type), type.scale);
  --state->sum.count;
  state->sum.overflow = state->sum.overflow || !next;
  if (!next) return;
  state->sum.low = next->low;
  state->sum.high = next->high;
  state->sum.negative = next->negative;
}

template <bool IsAverage>
void SumFinal(sqlite3_context* context) {
  const auto* state = static_cast<TypedSum*>(sqlite3_aggregate_context(context, 0));
  if (state == nullptr || state->sum.count == 0) return sqlite3_result_null(context);
  const FunctionCall call(context, 0, nullptr);
  const Type from = DecodeType(state->from);
  const Type to = DecodeType(state->to);
  Protect(call, [&] {
    if (state->sum.overflow) Fail(8115, {"expression", TypeName(to.id)});
    std::optional<Decimal> sum = Decimal{state->sum.low, state->sum.high, from.scale, state->sum.negative};
    sum = IsAverage ? DivideDecimals(*sum, DecimalFromInteger(state->sum.count), to.scale)
                    : Rescale(*sum, to.scale);
    call.ReturnDecimal(CheckDecimal(sum, to, "expression"), to);
  });
}

// How far values lie from their mean: the sum of the squares, kept while values come and, in a window, go.
struct Spread {
  int64_t count;
  double mean;
  double squares;
};

void SpreadStep(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  auto* state = static_cast<Spread*>(sqlite3_aggregate_context(context, sizeof(Spread)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  const double value = sqlite3_value_double(values[0]);
  const double before = value - state->mean;
  ++state->count;
  state->mean += before / static_cast<double>(state->count);
  state->squares += before * (value - state->mean);
}

void SpreadInverse(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  auto* state = static_cast<Spread*>(sqlite3_aggregate_context(context, sizeof(Spread)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  if (--state->count == 0) {
    *state = {};
    return;
  }
  const double value = sqlite3_value_double(values[0]);
  const double after = value - state->mean;
  state->mean -= after / static_cast<double>(state->count);
  state->squares -= after * (value - state->mean);
}

// Of a sample one value is not free; without another one there is no answer.
template <bool IsPopulation, bool IsRoot>
void SpreadFinal(sqlite3_context* context) {
  const auto* state = static_cast<Spread*>(sqlite3_aggregate_context(context, 0));
  const int64_t free = state == nullptr ? 0 : state->count - (IsPopulation ? 0 : 1);
  if (free <= 0) return sqlite3_result_null(context);
  const double variance = std::max(state->squares, 0.0) / static_cast<double>(free);
  sqlite3_result_double(context, IsRoot ? std::sqrt(variance) : variance);
}

// The value of a subquery's only row. A second row is an error.
struct Single {
  sqlite3_value* value;
  bool seen;
};

void SingleStep(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* state = static_cast<Single*>(sqlite3_aggregate_context(context, sizeof(Single)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  if (state->seen) {
    const FunctionCall call(context, count, values);
    return Protect(call, [] { Fail(512, {}); });
  }
  state->seen = true;
  state->value = sqlite3_value_dup(values[0]);
  if (state->value == nullptr) sqlite3_result_error_nomem(context);
}

void SingleFinal(sqlite3_context* context) {
  auto* state = static_cast<Single*>(sqlite3_aggregate_context(context, 0));
  if (state == nullptr || state->value == nullptr) return sqlite3_result_null(context);
  sqlite3_result_value(context, state->value);
  sqlite3_value_free(state->value);
}

// t_string_agg(text, separator, type): the texts that are not null, one behind the other as they come.
struct JoinedTexts {
  std::string* text;
  int64_t type;
};

void JoinStep(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* state = static_cast<JoinedTexts*>(sqlite3_aggregate_context(context, sizeof(JoinedTexts)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  const FunctionCall call(context, count, values);
  if (call.IsNull(0)) return;
  Protect(call, [&] {
    if (state->text == nullptr) {
      state->text = new std::string();
      state->type = call.Integer(2);
    } else if (!call.IsNull(1)) {
      state->text->append(call.Text(1));
    }
    state->text->append(call.Text(0));
  });
}

void JoinFinal(sqlite3_context* context) {
  auto* state = static_cast<JoinedTexts*>(sqlite3_aggregate_context(context, 0));
  if (state == nullptr || state->text == nullptr) return sqlite3_result_null(context);
  const std::unique_ptr<std::string> text(std::exchange(state->text, nullptr));
  const FunctionCall call(context, 0, nullptr);
  Protect(call, [&] {
    const Type type = DecodeType(state->type);
    const size_t length = IsUnicode(type.id) ? CharCount(*text) : PageSize(*text);
    if (type.length >= 0 && length > static_cast<size_t>(type.length)) Fail(9829, {});
    call.ReturnText(*text);
  });
}

} // namespace

void RegisterAggregateFunctions(sqlite3* connection, FunctionContext& context) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_INNOCUOUS | SQLITE_DETERMINISTIC;
  const auto add = [&](const char* name, int arguments, int flags, auto step, auto final) {
    CheckRegistered(connection, sqlite3_create_function_v2(connection, name, arguments, flags, &context,
                                                           nullptr, step, final, nullptr));
  };
  const auto addWindow = [&](const char* name, int arguments, auto step, auto final, auto inverse) {
    CheckRegistered(connection, sqlite3_create_window_function(connection, name, arguments, kFlags, &context,
                                                               step, final, final, inverse, nullptr));
  };
  addWindow(names::kSum, 3, TypedStep, SumFinal<false>, InverseStep);
  addWindow(names::kAverage, 3, TypedStep, SumFinal<true>, InverseStep);
  addWindow(names::kDeviation, 1, SpreadStep, SpreadFinal<false, true>, SpreadInverse);
  addWindow(names::kPopulationDeviation, 1, SpreadStep, SpreadFinal<true, true>, SpreadInverse);
  addWindow(names::kVariance, 1, SpreadStep, SpreadFinal<false, false>, SpreadInverse);
  addWindow(names::kPopulationVariance, 1, SpreadStep, SpreadFinal<true, false>, SpreadInverse);
  add(names::kStringAggregate, 3, kFlags, JoinStep, JoinFinal);
  add(names::kSingle, 1, SQLITE_UTF8 | SQLITE_INNOCUOUS, SingleStep, SingleFinal);
}

} // namespace tsql
