// The embedded T-SQL engine: what its users see.
//
// A Database is a file or a named in-memory database; a Session is one connection to it. Session::Execute
// runs a batch and pushes what comes out of it, in order, into a ResultSink. All text is UTF-8.
//
// Threads: a Database may be shared by many threads, a Session is used by one thread at a time. Sessions of
// one process may use one Database at the same time. A writer waits for another one. When that takes too
// long, the statement fails with the server's lock time-out error (1222) and changes nothing.
//
// Errors of a batch are the server's (number, severity, state, line, text) and go to ResultSink::Failed.
// Failures of the engine itself, such as a file that is not there, are thrown as tsql::Error. Where memory
// runs out, std::bad_alloc may be thrown as well; the running statement is undone, and the session goes on.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tsql {

// ---- types

// The code page whose bytes char and varchar count: simplified Chinese. The build makes the table of its
// characters from this number (CMakeLists.txt).
inline constexpr unsigned kCodePage = 936;

// The types of the dialect. Database files keep the numbers.
enum class TypeId : uint8_t {
  TinyInt = 0,
  SmallInt = 1,
  Int = 2,
  BigInt = 3,
  Bit = 4,
  Decimal = 5,
  Money = 6,
  SmallMoney = 7,
  Float = 8,
  Real = 9,
  Char = 10,
  VarChar = 11,
  Text = 12,
  NChar = 13,
  NVarChar = 14,
  NText = 15,
  DateTime = 16,
  SmallDateTime = 17,
  Date = 18,
  Binary = 19,
  VarBinary = 20,
  Image = 21,
  UniqueIdentifier = 22,
  Time = 23,
  DateTime2 = 24,
};

struct Type {
  TypeId id = TypeId::Int;
  int32_t length = 0; // bytes, of nchar and nvarchar characters; -1 for (max) and the text types; 0 for none
  uint8_t precision = 0; // decimal digits: decimal, money
  uint8_t scale = 0;     // decimal places: decimal, money; digits of a second's fraction: time, datetime2
  bool operator==(const Type&) const = default;
};

// An exact number: magnitude / 10^scale, at most 38 digits. The magnitude's low half comes first.
struct Decimal {
  uint64_t low = 0;
  uint64_t high = 0;
  uint8_t scale = 0;
  bool negative = false;
};

// A moment: days since 1900-01-01 and 1/300 seconds since midnight, as the server stores a datetime.
struct DateTime {
  int32_t days = 0;
  int32_t ticks = 0;
  auto operator<=>(const DateTime&) const = default;
};

// A value on its way in or out. Its text and bytes belong to whoever hands it over, and are valid only during
// the call.
struct Value {
  enum class Kind : uint8_t { Null, Integer, Float, Decimal, Text, Bytes, DateTime };
  Kind kind = Kind::Null;
  int64_t integer = 0; // all integer types, and Bit as 0 or 1
  double real = 0;     // Float, Real
  Decimal decimal;     // Decimal, Money (scale 4)
  DateTime datetime;   // DateTime, SmallDateTime, Date
  // Character types, UniqueIdentifier (36 characters); Time and DateTime2 as hh:mm:ss.fffffff and
  // yyyy-mm-dd hh:mm:ss.fffffff, with as many digits as the type has; binary types as bytes.
  std::string_view text;
};

// ---- errors

struct Error : std::runtime_error {
  Error(int errorNumber, int errorSeverity, int errorState, int errorLine, const std::string& text)
      : std::runtime_error(text), number(errorNumber), severity(errorSeverity), state(errorState),
        line(errorLine) {}
  int number;
  int severity; // information up to 10, an error from 11 on
  int state;
  int line; // 1-based, within the batch or the procedure
};

// The error of a batch that took longer than the session allows. The server has no number for it: it is the
// client who gives up.
constexpr int kTimeoutExpired = -2;

// ---- results

struct Column {
  std::string name; // empty where the query gives none
  Type type;
  bool nullable = true;
  std::string collation = {}; // of a text; empty for the database's
};

// Receives a batch's output in order. What a call hands over is valid during that call only. A sink may
// throw: then the running statement is undone, the batch ends, and the exception leaves Execute.
class ResultSink {
 public:
  virtual ~ResultSink() = default;
  virtual void BeginRows(std::span<const Column> columns) = 0;
  virtual void Row(std::span<const Value> values) = 0;
  virtual void EndRows(int64_t count) = 0;
  virtual void RowCount(int64_t count) = 0;    // a changing statement's count, while NOCOUNT is off
  virtual void Message(const Error& info) = 0; // PRINT and errors of severity 10 and less
  virtual void Failed(const Error& error) = 0; // after it the batch goes on or ends, as on the server
};

struct Parameter {
  std::string name; // "@TableName"; empty for the markers "?", which are taken in order
  Type type;
  bool output = false;
  Value value; // on the way out, its text lives in `storage`
  std::string storage;
};

// ---- databases and sessions

enum class OpenMode : uint8_t { Existing, Create };

class Database {
 public:
  // `path` is a file, or ":memory:NAME" for an in-memory database that lives as long as any handle of that
  // name. Throws 4060 when the file is not a database of this engine, or with Existing is not there, and 948
  // when a newer version of the engine has written it.
  // The process has one object for a database, whatever path leads to it.
  static std::shared_ptr<Database> Open(const std::string& path, OpenMode mode);
  virtual ~Database() = default;
};

// A stamp of a database's data, as a session sees it: while two stamps of one session are equal, nothing has
// changed.
struct ChangeStamp {
  int64_t own = 0;    // the rows that the session itself has changed
  int64_t others = 0; // what others have committed
  bool operator==(const ChangeStamp&) const = default;
};

class Session {
 public:
  // Throws 1222 when others keep the database locked, 4060 when its file has gone.
  static std::unique_ptr<Session> Open(std::shared_ptr<Database> database);
  // Rolls back an open transaction and drops the session's temporary tables.
  virtual ~Session() = default;

  // Runs one batch. `parameters` serve "?" markers by position and @names by name; output ones are written
  // back. False when any statement of it failed (each failure went to the sink).
  virtual bool Execute(std::string_view batch, std::span<Parameter> parameters, ResultSink& sink) = 0;

  // Calls a stored procedure by name and returns its return status; nullopt when the call failed.
  virtual std::optional<int32_t> Call(std::string_view procedure, std::span<Parameter> parameters,
                                      ResultSink& sink) = 0;

  // Transactions from outside the batches, such as a host's unit of work. They and those of the batches nest
  // in each other, and @@TRANCOUNT counts both.
  virtual void Begin() = 0;
  virtual void Commit() = 0;
  virtual void Rollback() = 0;
  virtual int TransactionCount() const = 0;

  // Whether SET NOCOUNT ON is in effect. Then nobody wants the row count of a result either.
  virtual bool NoCount() const = 0;
  // How many procedures are running within each other, for a sink that wants to know what sends to it.
  virtual int ProcedureNesting() const = 0;

  // Fixes what GETDATE() answers; nullopt goes back to the clock (local time).
  virtual void SetNow(std::optional<DateTime> now) = 0;
  // The present stamp of the data. It costs little.
  virtual ChangeStamp GetChangeStamp() = 0;
  // Ends a batch or call that takes more than so many steps, with error 8649: its open transaction is rolled
  // back, and no CATCH block catches the error. A step is a statement, or a thousand instructions of SQLite's
  // machine. There is no limit by default, and with nullopt.
  virtual void SetWorkLimit(std::optional<int64_t> steps) = 0;
  // Ends a batch or call that takes longer, with error kTimeoutExpired: the running statement's own changes
  // are undone and no CATCH block is asked. An open transaction stays open unless XACT_ABORT is on, or a
  // changing statement had to be stopped on its way; SQLite then undoes all of the transaction. nullopt, the
  // default: no limit.
  virtual void SetTimeLimit(std::optional<std::chrono::milliseconds> limit) = 0;
  // Asks now and then, while a batch or call runs or waits for a lock, whether somebody wants it to end. Then
  // it ends as at its time limit. An empty function, the default: nobody is asked.
  virtual void SetStopRequest(std::function<bool()> isStopWanted) = 0;
  // How long a statement waits for another session's lock. The default is 5,000 ms.
  virtual void SetLockTimeout(int milliseconds) = 0;

  // Makes the session one that a next user cannot tell from a new one: an open transaction is rolled back,
  // temporary tables are dropped, and clock, limits and options have their defaults.
  virtual void Reset() = 0;
};

// Gives back what the engine's storage keeps for the process, before its module is unloaded. No database is
// open then; the next one that is opened begins anew.
void ReleaseStorage();

} // namespace tsql
