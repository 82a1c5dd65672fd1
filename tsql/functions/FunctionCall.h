// What the functions' source files share: a call's arguments and result, and the registration that turns an
// exception of a function into its error.
#pragma once

#include <new>

#include "tsql/functions/FunctionNames.h"
#include "tsql/functions/Functions.h"
#include "tsql/sqlite/PreparedStatement.h"

namespace tsql {

// One call of a function by SQLite: its arguments, counted from 0, and its result.
class FunctionCall {
 public:
  FunctionCall(sqlite3_context* context, int count, sqlite3_value** values)
      : context_(context), count_(count), values_(values) {}

  int Count() const { return count_; }
  sqlite3_context* Handle() const { return context_; }
  FunctionContext& Context() const { return *static_cast<FunctionContext*>(sqlite3_user_data(context_)); }
  bool IsNull(int i) const { return sqlite3_value_type(values_[i]) == SQLITE_NULL; }
  bool AnyNull() const {
    for (int i = 0; i < count_; ++i)
      if (IsNull(i)) return true;
    return false;
  }
  bool IsBlob(int i) const { return sqlite3_value_type(values_[i]) == SQLITE_BLOB; }
  sqlite3_value* Raw(int i) const { return values_[i]; }
  int64_t Integer(int i) const { return sqlite3_value_int64(values_[i]); }
  double Real(int i) const { return sqlite3_value_double(values_[i]); }
  std::string_view Text(int i) const { return BytesOf(values_[i]); }
  Datum Value(int i) const { return DatumOf(values_[i]); }
  Type TypeAt(int i) const { return DecodeType(Integer(i)); }

  // A value of a decimal type in either form.
  Decimal DecimalAt(int i, const Type& type) const { return DecimalOf(values_[i], type); }
  void ReturnDecimal(const Decimal& value, const Type& type) const;

  void ReturnNull() const { sqlite3_result_null(context_); }
  void ReturnInteger(int64_t value) const { sqlite3_result_int64(context_, value); }
  void ReturnReal(double value) const { sqlite3_result_double(context_, value); }
  // SQLite would take a pointer to nothing for a null.
  void ReturnText(std::string_view text) const {
    const char* start = text.empty() ? "" : text.data();
    sqlite3_result_text64(context_, start, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  }
  void ReturnBytes(std::string_view bytes) const {
    const char* start = bytes.empty() ? "" : bytes.data();
    sqlite3_result_blob64(context_, start, bytes.size(), SQLITE_TRANSIENT);
  }
  void ReturnValue(int i) const { sqlite3_result_value(context_, values_[i]); }
  void Return(const Datum& value) const;
  void ReturnError(const Error& error) const;

 private:
  sqlite3_context* context_;
  int count_;
  sqlite3_value** values_;
};

using FunctionBody = void (*)(const FunctionCall&);

// Runs `body`, of which no exception gets into SQLite.
template <typename Function>
void Protect(const FunctionCall& call, const Function& body) {
  try {
    body();
  } catch (const Error& error) {
    call.ReturnError(error);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(call.Handle());
  }
}

template <FunctionBody Body>
void Guarded(sqlite3_context* context, int count, sqlite3_value** values) {
  const FunctionCall call(context, count, values);
  Protect(call, [&] { Body(call); });
}

// Declares the columns c0, c1 ... of a virtual table, and behind them a hidden name and so many hidden
// arguments; -1 for neither. No exception gets into SQLite.
inline int DeclareColumns(sqlite3* connection, int columns, int hiddenArguments = -1) {
  try {
    std::string definition = "CREATE TABLE x(c0";
    for (int i = 1; i < columns; ++i) definition += ", c" + std::to_string(i);
    if (hiddenArguments >= 0) definition += ", name HIDDEN";
    for (int i = 0; i < hiddenArguments; ++i) definition += ", a" + std::to_string(i) + " HIDDEN";
    return sqlite3_declare_vtab(connection, (definition + ")").c_str());
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

// Throws SqliteFailure when a function could not be registered.
inline void CheckRegistered(sqlite3* connection, int result) {
  if (result != SQLITE_OK) ThrowFailure(connection);
}

// The result of an operation on decimals as a value of `type`; 8134 and 8115 as the server has them.
Decimal OperateDecimals(ArithmeticOp op, const Decimal& left, const Decimal& right, const Type& type);

// A pure function always answers the same to the same arguments, so that SQLite may call it once for many
// rows.
enum class Purity : uint8_t { Pure, Volatile };

template <FunctionBody Body>
void Register(sqlite3* connection, FunctionContext& context, const char* name, int arguments,
              Purity purity = Purity::Pure) {
  const int flags = SQLITE_UTF8 | SQLITE_INNOCUOUS | (purity == Purity::Pure ? SQLITE_DETERMINISTIC : 0);
  CheckRegistered(connection, sqlite3_create_function_v2(connection, name, arguments, flags, &context,
                                                         Guarded<Body>, nullptr, nullptr, nullptr));
}

void RegisterAggregateFunctions(sqlite3* connection, FunctionContext& context);
void RegisterCatalogFunctions(sqlite3* connection, FunctionContext& context);
void RegisterComputeFunction(sqlite3* connection, FunctionContext& context);
void RegisterDecimalFunctions(sqlite3* connection, FunctionContext& context);
void RegisterNumericFunctions(sqlite3* connection, FunctionContext& context);
void RegisterPackedRows(sqlite3* connection, FunctionContext& context);
void RegisterPropertyFunctions(sqlite3* connection, FunctionContext& context);
void RegisterServerFunctions(sqlite3* connection, FunctionContext& context);
void RegisterStagedRows(sqlite3* connection, FunctionContext& context);
void RegisterStatementFunctions(sqlite3* connection, FunctionContext& context);
void RegisterTextCodes(sqlite3* connection, FunctionContext& context);
void RegisterTextFunctions(sqlite3* connection, FunctionContext& context);
void RegisterUserFunctions(sqlite3* connection, FunctionContext& context);
void RegisterDateFunctions(sqlite3* connection, FunctionContext& context);

} // namespace tsql
