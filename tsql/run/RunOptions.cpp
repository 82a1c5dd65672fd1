// SET of options, and USE.
#include <charconv>

#include "tsql/run/Interpreter.h"
#include "tsql/syntax/Refusals.h"
#include "tsql/values/Collation.h"
#include "tsql/values/Conversion.h"
#include "tsql/values/DateTime.h"
#include "tsql/values/Errors.h"

namespace tsql {

void Interpreter::RunSetOption(const SetOptionStatement& statement) {
  const bool on = statement.value == "ON";
  if (statement.option == "nocount") {
    noCount_ = on;
  } else if (statement.option == "xact_abort") {
    xactAbort_ = on;
  } else if (statement.option == "ansi_padding") {
    ansiPadding_ = on;
  } else if (statement.option == "ansi_nulls" || statement.option == "concat_null_yields_null") {
    SetCompileOption(statement);
  } else if (statement.option == "identity_insert") {
    SetIdentityInsert(statement.table, on);
  } else if (statement.option == "lock_timeout") {
    int milliseconds = 0;
    std::from_chars(statement.value.data(), statement.value.data() + statement.value.size(), milliseconds);
    limits_.SetLockTimeout(milliseconds < 0 ? INT32_MAX : milliseconds);
  } else if (statement.option == "rowcount") {
    SetRowLimit(statement);
  } else if (statement.option == "datefirst") {
    SetFirstDay(statement);
  } else if (statement.option == "isolation") {
    locksReads_ = statement.value == "SERIALIZABLE";
  } else if (statement.option == "language") {
    sink_->Message(MakeError(5703, statement.line, {"us_english"}));
    context_.firstDay = kUsualFirstDay;
  }
  rowCount_ = 0;
}

// A module has the ANSI_NULLS that it was made with, whatever it sets.
void Interpreter::SetCompileOption(const SetOptionStatement& statement) {
  const bool on = statement.value == "ON";
  CompileOptions options = compiler_.Options();
  if (statement.option == "concat_null_yields_null") {
    options.bind.concatNull = on;
  } else if (!running_->unit->options) {
    options.bind.ansiNulls = on;
  }
  compiler_.SetOptions(options);
}

// What a batch or dynamic text sets of QUOTED_IDENTIFIER holds from its beginning on, for it was read so.
void Interpreter::TakeQuotedIdentifier(const CompiledUnit& unit) {
  if (unit.options || !unit.batch->quotedIdentifier) return;
  CompileOptions options = compiler_.Options();
  options.quotedIdentifier = *unit.batch->quotedIdentifier;
  compiler_.SetOptions(options);
}

// A session has one database.
void Interpreter::RunUse(const UseStatement& statement) {
  const std::string& name = statement.database;
  if (EqualNames(name, catalog_.DatabaseName())) return;
  for (const char* system : {"master", "model", "msdb", "tempdb"})
    if (EqualNames(name, system)) Refuse("USE of a system database");
  Fail(911, {name});
}

// It is on for one table at a time.
void Interpreter::SetIdentityInsert(const ObjectName& name, bool on) {
  const TablePtr table = catalog_.FindTable(name);
  if (!table) Fail(1088, {name.Written()});
  if (table->identityColumn < 0) Fail(8106, {table->name});
  const TablePtr present = compiler_.IdentityInsert();
  const bool isOn = present && EqualNames(present->storageName, table->storageName);
  if (on && !isOn && present) Fail(8107, {present->name, table->name});
  if (on != isOn) compiler_.SetIdentityInsert(on ? table : nullptr);
}

// The number that an option is set to, which a variable may hold.
int64_t Interpreter::OptionNumber(const SetOptionStatement& statement) const {
  int64_t number = 0;
  const std::string& value = statement.value;
  if (!value.starts_with('@')) {
    std::from_chars(value.data(), value.data() + value.size(), number);
    return number;
  }
  const int variable = FindVariable(running_->unit->variables, value);
  if (variable < 0) Fail(137, {value});
  const auto index = static_cast<size_t>(variable);
  return Convert(running_->variables[index], running_->unit->variables[index].type, MakeType(TypeId::BigInt),
                 ConvertMode::Cast)
      .integer;
}

void Interpreter::SetFirstDay(const SetOptionStatement& statement) {
  const int64_t day = OptionNumber(statement);
  if (day < 1 || day > 7) Fail(2742, {std::to_string(day)});
  context_.firstDay = static_cast<int>(day);
}

void Interpreter::SetRowLimit(const SetOptionStatement& statement) {
  const int64_t limit = OptionNumber(statement);
  if (limit < 0) Fail(1014, {});
  LimitRows(limit);
}

void Interpreter::LimitRows(int64_t limit) {
  rowLimit_ = limit;
  compiler_.SetLimitsChanges(limit > 0);
}

int64_t Interpreter::OptionBits() const {
  // ANSI_WARNINGS, ARITHABORT, ANSI_NULL_DFLT_ON
  constexpr int64_t kAlwaysOn = 8 + 64 + 1024;
  constexpr int64_t kAnsiPadding = 16;
  constexpr int64_t kAnsiNulls = 32;
  constexpr int64_t kQuotedIdentifier = 256;
  constexpr int64_t kNoCount = 512;
  constexpr int64_t kConcatNull = 4096;
  constexpr int64_t kXactAbort = 16384;
  const CompileOptions& options = compiler_.Options();
  return kAlwaysOn + (ansiPadding_ ? kAnsiPadding : 0) + (options.bind.ansiNulls ? kAnsiNulls : 0) +
         (options.quotedIdentifier ? kQuotedIdentifier : 0) + (noCount_ ? kNoCount : 0) +
         (options.bind.concatNull ? kConcatNull : 0) + (xactAbort_ ? kXactAbort : 0);
}

} // namespace tsql
