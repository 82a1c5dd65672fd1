// Session: one open session of the embedded engine, shared by a connection and the recordsets it filled.
//
// A batch is run to its end at once and its results are kept; an error anywhere in it fails the call, and
// what the batch returned is dropped. (A real provider raises an error that comes after a first result only
// when the client moves on to it; no client here waits for that.)
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "standin/ado/AdoError.h"
#include "standin/ado/ConnectionString.h"
#include "standin/ado/RowSet.h"
#include "tsql/tsql.h"

namespace standin::ado {

// One result of a batch: rows, or a statement's row count.
struct Result {
  std::shared_ptr<const RowSet> rows;
  int64_t count = -1; // unknown for rows
};
using Results = std::deque<Result>;

// A connection's errors of the last call that failed; they stay readable when the connection is gone.
using ErrorList = std::vector<ProviderError>;

class Session {
 public:
  // Throws the provider's error when the data source is not there.
  Session(const ConnectionString& connectionString, std::shared_ptr<ErrorList> errors);

  bool closed() const { return !session_; }
  bool inTransaction() const { return inTransaction_; }
  void Close() { session_.reset(); }

  tsql::ChangeStamp GetChangeStamp() const { return session_->GetChangeStamp(); }

  // Sets the session's clock to the descriptor's "Now"; without one it runs.
  void SetClock(const ConnectionString& connectionString);

  // Both throw the first error of the batch; all of them go to the error list.
  Results Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters = {});
  Results Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters, int32_t& status);

  // As the provider sees transactions: one at a time.
  void Begin();
  void Commit();
  void Rollback();

 private:
  class Collector;

  Results Finish(Collector& collector, bool succeeded);
  void End(void (tsql::Session::*end)());
  [[noreturn]] void Fail(const tsql::Error& error);

  std::shared_ptr<ErrorList> errors_;
  std::unique_ptr<tsql::Session> session_;
  bool inTransaction_ = false;
};

} // namespace standin::ado
