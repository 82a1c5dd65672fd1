// The functions that the emitter's SQL calls where SQLite's own operators mean something else than the
// dialect's: conversions, checked arithmetic, decimals, texts under the collation, dates. A function that
// fails leaves the server's error in the context, because SQLite's own error says only that it failed.
#pragma once

#include <map>
#include <utility>

#include "tsql/catalog/Catalog.h"
#include "tsql/functions/IdentityCounter.h"
#include "tsql/functions/RandomNumbers.h"
#include "tsql/values/DateTime.h"

namespace tsql {

// What whoever runs statements answers to them: cursors, identities, and the functions of users, which are
// batches like any other: whoever runs statements runs them too. A failure is thrown as the server's error.
class UserFunctions {
 public:
  using Rows = std::vector<std::vector<Datum>>;

  UserFunctions() = default;
  UserFunctions(const UserFunctions&) = delete;
  UserFunctions& operator=(const UserFunctions&) = delete;
  virtual ~UserFunctions() = default;
  virtual Datum CallScalar(std::string_view name, std::vector<Datum> arguments) = 0;
  virtual int CursorStatus(std::string_view kind, std::string_view name) const = 0;
  // The last number of a table's identity column; none before the first.
  virtual std::optional<int64_t> LastIdentity(const TableInfo& table) const = 0;
  virtual Rows CallTable(std::string_view name, std::vector<Datum> arguments) = 0;
};

// The rows that a change has staged: of each its number in SQLite, the new and the old values, others.
using StagedRows = std::vector<std::vector<Datum>>;

// What a trigger is told of the statement that fires it.
struct FiredRows {
  StagedRows rows;
  TriggerEvent event = TriggerEvent::Insert;
  std::vector<bool> updated; // by column, whether UPDATE() says so
};

// What the functions of a connection and whoever runs its statements tell each other.
struct FunctionContext {
  std::optional<Error> error;              // of the function that failed last
  std::optional<int64_t> fixedNow;         // what GETDATE() answers instead of the clock
  std::optional<int64_t> now;              // what the clock said first within the statement, in 100 ns
  int firstDay = kUsualFirstDay;           // of a week, as SET DATEFIRST says
  RandomNumbers random;                    // of the session
  std::map<int64_t, double> randomValues;  // what RAND() answered within the statement, by its place
  std::vector<Datum>* variables = nullptr; // of the batch or procedure that runs
  const Catalog* catalog = nullptr;
  UserFunctions* userFunctions = nullptr;
  const StagedRows* staged = nullptr; // of the change that runs
  const StagedRows* merged = nullptr; // of the MERGE that runs
  const FiredRows* fired = nullptr;   // of the trigger that runs
  IdentityCounter* counter = nullptr; // of the insert that runs
  std::vector<std::string> suspects;  // names of foreign keys that the statement may have broken
};

// Makes the rows those of the change that runs, as long as the object lives. Within it another change may
// run.
class StagedUse {
 public:
  StagedUse(FunctionContext& context, const StagedRows& rows)
      : context_(context), outer_(std::exchange(context.staged, &rows)) {}
  StagedUse(const StagedUse&) = delete;
  StagedUse& operator=(const StagedUse&) = delete;
  ~StagedUse() { context_.staged = outer_; }

 private:
  FunctionContext& context_;
  const StagedRows* outer_;
};

// The same for the rows that a MERGE has joined.
class MergedUse {
 public:
  MergedUse(FunctionContext& context, const StagedRows& rows)
      : context_(context), outer_(std::exchange(context.merged, &rows)) {}
  MergedUse(const MergedUse&) = delete;
  MergedUse& operator=(const MergedUse&) = delete;
  ~MergedUse() { context_.merged = outer_; }

 private:
  FunctionContext& context_;
  const StagedRows* outer_;
};

// The same for what a trigger is told, while it runs.
class FiredUse {
 public:
  FiredUse(FunctionContext& context, const FiredRows& fired)
      : context_(context), outer_(std::exchange(context.fired, &fired)) {}
  FiredUse(const FiredUse&) = delete;
  FiredUse& operator=(const FiredUse&) = delete;
  ~FiredUse() { context_.fired = outer_; }

 private:
  FunctionContext& context_;
  const FiredRows* outer_;
};

// The same for the counter of an insert.
class CounterUse {
 public:
  CounterUse(FunctionContext& context, IdentityCounter& counter)
      : context_(context), outer_(std::exchange(context.counter, &counter)) {}
  CounterUse(const CounterUse&) = delete;
  CounterUse& operator=(const CounterUse&) = delete;
  ~CounterUse() { context_.counter = outer_; }

 private:
  FunctionContext& context_;
  IdentityCounter* outer_;
};

// Registers the functions and the collation "tsql"; the context outlives the connection.
void RegisterFunctions(sqlite3* connection, FunctionContext& context);

} // namespace tsql
