#include "tsql/functions/Functions.h"

#include "tsql/functions/FunctionCall.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/Errors.h"

#include <algorithm>
#include <random>

namespace tsql {

std::string_view FunctionCall::Text(int i) const {
  const void* bytes = sqlite3_value_blob(values_[i]);
  const int size = sqlite3_value_bytes(values_[i]);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<size_t>(size)};
}

Datum FunctionCall::Value(int i) const {
  switch (sqlite3_value_type(values_[i])) {
  case SQLITE_INTEGER: return Datum::OfInteger(Integer(i));
  case SQLITE_FLOAT: return Datum::OfReal(Real(i));
  case SQLITE_TEXT: return Datum::OfText(std::string(Text(i)));
  case SQLITE_BLOB: return Datum::OfBlob(std::string(Text(i)));
  default: return {};
  }
}

Decimal FunctionCall::DecimalAt(int i, const Type& type) const {
  if (sqlite3_value_type(values_[i]) == SQLITE_BLOB) return DecodeWide(Text(i), type.scale);
  Decimal value = DecimalFromInteger(Integer(i));
  value.scale = type.scale;
  return value;
}

void FunctionCall::ReturnDecimal(const Decimal& value, const Type& type) const {
  if (!IsWide(type)) {
    ReturnInteger(DatumOfDecimal(value, type).integer);
    return;
  }
  const std::array<char, kWideSize> bytes = EncodeWide(value);
  sqlite3_result_blob64(context_, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

void FunctionCall::Return(const Datum& value) const {
  switch (value.kind) {
  case Datum::Kind::Null: ReturnNull(); break;
  case Datum::Kind::Integer: ReturnInteger(value.integer); break;
  case Datum::Kind::Real: ReturnReal(value.real); break;
  case Datum::Kind::Text: ReturnText(value.text); break;
  case Datum::Kind::Blob:
    sqlite3_result_blob64(context_, value.text.data(), value.text.size(), SQLITE_TRANSIENT);
    break;
  }
}

void FunctionCall::ReturnError(const Error& error) const {
  Context().error = error;
  sqlite3_result_error(context_, error.what(), -1);
}

namespace {

void Cast(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type from = call.TypeAt(1);
  const Type to = call.TypeAt(2);
  if (from.id == TypeId::Decimal && to.id == TypeId::Decimal) {
    // The commonest conversion that is not native, without a copy of the value.
    const std::optional<Decimal> value = Rescale(call.DecimalAt(0, from), to.scale);
    return call.ReturnDecimal(CheckDecimal(value, to, "numeric"), to);
  }
  call.Return(Convert(call.Value(0), from, to, ConvertMode::Cast, static_cast<int>(call.Integer(3))));
}

void Store(const FunctionCall& call) {
  if (call.IsNull(0)) return call.ReturnNull();
  const Type to = call.TypeAt(2);
  // Most texts fit as they are.
  const bool isVariable = IsText(call.TypeAt(1)) && IsText(to) && !IsFixedLength(to.id);
  if (isVariable && call.Text(0).size() <= static_cast<size_t>(to.length)) return call.ReturnValue(0);
  call.Return(Convert(call.Value(0), call.TypeAt(1), to, ConvertMode::Assign));
}

void NotNull(const FunctionCall& call) {
  // The interpreter completes the message, which names the table.
  if (call.IsNull(0)) throw Error(515, 16, 2, 0, std::string(call.Text(1)));
  call.ReturnValue(0);
}

void Variable(const FunctionCall& call) {
  const FunctionContext& context = call.Context();
  call.Return((*context.variables)[static_cast<size_t>(call.Integer(0))]);
}

void Suspect(const FunctionCall& call) {
  std::vector<std::string>& suspects = call.Context().suspects;
  const std::string_view name = call.Text(0);
  if (std::find(suspects.begin(), suspects.end(), name) == suspects.end()) suspects.emplace_back(name);
}

void Recursion(const FunctionCall& call) {
  constexpr int64_t kMaxRecursion = 100;
  if (call.Integer(0) > kMaxRecursion) Fail(530, {});
  call.ReturnValue(0);
}

void NewId(const FunctionCall& call) {
  static thread_local std::mt19937_64 generator{std::random_device{}()};
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text;
  for (int i = 0; i < 36; ++i) {
    if (i == 8 || i == 13 || i == 18 || i == 23) {
      text += '-';
    } else if (i == 14) {
      text += '4';
    } else {
      const auto digit = static_cast<size_t>(generator() & 0xFU);
      text += i == 19 ? kDigits[8 + digit % 4] : kDigits[digit];
    }
  }
  call.ReturnText(text);
}

// The last part of a written name, without its brackets.
ObjectName LastPart(std::string_view text) {
  ObjectName name;
  std::string part;
  bool bracketed = false;
  for (const char character : text) {
    if (character == '[' && !bracketed) {
      bracketed = true;
    } else if (character == ']' && bracketed) {
      bracketed = false;
    } else if (character == '.' && !bracketed) {
      part.clear();
    } else {
      part.push_back(character);
    }
  }
  name.name = part;
  return name;
}

// A number that is the same for the same name, and positive.
int64_t IdOfName(std::string_view name) {
  uint32_t id = 2166136261U;
  for (const char character : ToLower(name)) id = (id ^ static_cast<unsigned char>(character)) * 16777619U;
  return static_cast<int64_t>(id & 0x7FFFFFFFU) | 1;
}

void ObjectId(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const Catalog& catalog = *call.Context().catalog;
  const ObjectName name = LastPart(call.Text(0));
  const std::string_view kind = call.Count() > 1 ? TrimTrailingBlanks(call.Text(1)) : std::string_view();
  const auto isWanted = [kind](std::string_view own) { return kind.empty() || EqualNames(kind, own); };
  const bool found = (isWanted("U") && catalog.FindTable(name)) ||
                     (isWanted("V") && catalog.FindView(name)) ||
                     (isWanted("P") && catalog.FindProcedure(name));
  if (!found) return call.ReturnNull();
  call.ReturnInteger(IdOfName(name.name));
}

void ColLength(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  const TablePtr table = call.Context().catalog->FindTable(LastPart(call.Text(0)));
  const int column = table ? table->FindColumn(call.Text(1)) : -1;
  if (column < 0) return call.ReturnNull();
  const Type& type = table->columns[static_cast<size_t>(column)].type;
  const bool hasLength = TakesLength(type.id) && !IsLob(type.id);
  if (!hasLength) return call.ReturnInteger(StorageBytes(type));
  call.ReturnInteger(IsUnicode(type.id) && type.length > 0 ? type.length * 2 : type.length);
}

void TypeNameOf(const FunctionCall& call) {
  call.ReturnText(TypeName(call.TypeAt(0).id));
}

void CharLengthOf(const FunctionCall& call) {
  const Type type = call.TypeAt(0);
  if (!TakesLength(type.id) || type.length == 0) return call.ReturnNull();
  call.ReturnInteger(type.length);
}

void ObjectNameOf(const FunctionCall& call) {
  if (call.AnyNull()) return call.ReturnNull();
  for (const std::string& name : call.Context().catalog->ObjectNames())
    if (IdOfName(name) == call.Integer(0)) return call.ReturnText(name);
  call.ReturnNull();
}

// A subquery that stands for a value: its only row's.
struct Single {
  sqlite3_value* value;
  bool seen;
};

void SingleStep(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* state = static_cast<Single*>(sqlite3_aggregate_context(context, sizeof(Single)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  if (state->seen) {
    const FunctionCall call(context, count, values);
    return call.ReturnError(MakeError(512, 0, {}));
  }
  state->seen = true;
  state->value = sqlite3_value_dup(values[0]);
}

void SingleFinal(sqlite3_context* context) {
  auto* state = static_cast<Single*>(sqlite3_aggregate_context(context, 0));
  if (state == nullptr || state->value == nullptr) return sqlite3_result_null(context);
  sqlite3_result_value(context, state->value);
  sqlite3_value_free(state->value);
}

int Collate(void*, int leftSize, const void* left, int rightSize, const void* right) {
  return CompareText({static_cast<const char*>(left), static_cast<size_t>(leftSize)},
                     {static_cast<const char*>(right), static_cast<size_t>(rightSize)});
}

} // namespace

void RegisterFunctions(sqlite3* connection, FunctionContext& context) {
  sqlite3_create_collation_v2(connection, "tsql", SQLITE_UTF8, nullptr, Collate, nullptr);
  Register<Cast>(connection, context, "t_cast", 4);
  Register<Store>(connection, context, "t_store", 3);
  Register<NotNull>(connection, context, "t_not_null", 2);
  Register<Variable>(connection, context, "t_variable", 1, Purity::Volatile);
  Register<Suspect>(connection, context, "t_suspect", 1, Purity::Volatile);
  Register<Recursion>(connection, context, "t_recursion", 1);
  Register<NewId>(connection, context, "t_newid", 0, Purity::Volatile);
  Register<ObjectId>(connection, context, "t_object_id", -1, Purity::Volatile);
  Register<ObjectNameOf>(connection, context, "t_object_name", 1, Purity::Volatile);
  Register<TypeNameOf>(connection, context, "t_type_name", 1);
  Register<CharLengthOf>(connection, context, "t_char_length", 1);
  Register<ColLength>(connection, context, "t_col_length", 2, Purity::Volatile);
  sqlite3_create_function_v2(connection, "t_single", 1, SQLITE_UTF8 | SQLITE_INNOCUOUS, &context, nullptr,
                             SingleStep, SingleFinal, nullptr);
  RegisterDecimalFunctions(connection, context);
  RegisterNumericFunctions(connection, context);
  RegisterTextFunctions(connection, context);
  RegisterDateFunctions(connection, context);
}

} // namespace tsql
