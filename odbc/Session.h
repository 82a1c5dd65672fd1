// Session: one session with the server of an ODBC driver.
//
// A batch goes to the server as one text, with its parameters as literals: the counts of its statements come
// one by one only so. A procedure is called by such a text too, whose last row has its status and outputs.
// What a statement sends goes to a sink; every error in it, and every one that is thrown, is an odbc::Error.
//
// A session that has lost its connection, or whose statement ran out of time, connects anew for the next
// batch, unless it is in a transaction: what belongs to one transaction does not run outside of it.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "odbc/Dialect.h"
#include "odbc/Error.h"
#include "odbc/Handle.h"
#include "tsql/tsql.h"

namespace odbc {

class Session {
 public:
  // Connects by a connection string of ODBC. Throws Error, in which no password is shown.
  explicit Session(std::wstring connectionString);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const std::wstring& connectionString() const { return connectionString_; }

  // False when any statement of the batch failed. `parameters` serve "?" markers.
  bool Execute(std::wstring_view batch, std::span<const tsql::Parameter> parameters, tsql::ResultSink& sink);
  // Calls a procedure with its arguments by position, writes the output ones, and returns its status; nullopt
  // when the call failed.
  std::optional<int32_t> Call(std::wstring_view procedure, std::span<tsql::Parameter> parameters,
                              tsql::ResultSink& sink);

  void Begin();
  void Commit();
  void Rollback();

  void SetTimeLimit(std::optional<std::chrono::seconds> limit) { limit_ = limit; }

  // Rolls back what is open. False when the next user could tell the session from a new one.
  bool Reset();
  // Whether the server still answers.
  bool Answers();

 private:
  void Connect();
  void Disconnect();
  bool Run(const std::wstring& text, tsql::ResultSink& sink);
  // Runs what gives no rows. Throws its failure.
  void RunAlone(std::wstring_view text);
  void End(std::wstring_view text);
  // The error as clients may see it.
  Error WithoutPassword(const Error& error) const;

  std::wstring connectionString_;
  Environment environment_;
  Connection connection_;
  Dialect dialect_ = Dialect::TransactSql;
  std::optional<std::chrono::seconds> limit_;
  bool isConnected_ = false;
  bool inTransaction_ = false;
  bool leavesTraces_ = false;
};

} // namespace odbc
