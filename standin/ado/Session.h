// Session: one open session with a server, shared by a connection and the recordsets it filled.
//
// As the provider's, it is busy while a client has results to read. Inside a transaction it then refuses a
// further statement; outside of one the provider quietly opens another connection for it, which here makes no
// difference.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "standin/ado/ConnectionString.h"
#include "standin/ado/ProviderError.h"
#include "standin/ado/ResultCollector.h"
#include "standin/ado/Results.h"
#include "standin/ado/ServerSession.h"
#include "tsql/tsql.h"

namespace standin::ado {

class Session : public std::enable_shared_from_this<Session> {
 public:
  // The failures of the session go to `errors`, which stay readable when the connection is gone. Throws the
  // provider's error when the data source is not there.
  Session(const ConnectionString& connectionString, std::shared_ptr<ErrorList> errors);

  bool closed() const { return !session_; }
  bool inTransaction() const { return inTransaction_; }
  void Close() { session_ = nullptr; }

  // How often it has been used: by statements, and to begin and end transactions.
  uint64_t uses() const { return uses_; }

  // nullopt when the server cannot tell whether its data has changed.
  std::optional<tsql::ChangeStamp> GetChangeStamp() const { return session_->GetChangeStamp(); }

  // Sets the session's clock to the descriptor's "Now"; without one it runs.
  void SetClock(const ConnectionString& connectionString);

  // Both end a batch that runs for more than `timeout` seconds; 0 is no limit. Both throw an error that comes
  // before any result.
  Results Execute(const std::wstring& batch, int32_t timeout, std::span<tsql::Parameter> parameters = {});
  Results Call(const std::wstring& procedure, int32_t timeout, std::span<tsql::Parameter> parameters,
               int32_t& status);

  // As the provider sees transactions: one at a time.
  void Begin();
  void Commit();
  void Rollback();

  // Results that a client reads one after another hold the session.
  void AddReader() { ++readers_; }
  void RemoveReader() { --readers_; }

  // Throws the first of the errors; all of them are the connection's errors from now on.
  [[noreturn]] void Fail(ErrorList errors);

 private:
  template <class Work>
  void Guarded(Work work);
  void Prepare(int32_t timeout);
  Results ResultsOf(ResultCollector& collector);
  void End(void (ServerSession::*end)());

  std::shared_ptr<ErrorList> errors_;
  std::unique_ptr<ServerSession> session_;
  int readers_ = 0;
  uint64_t uses_ = 0;
  bool inTransaction_ = false;
};

} // namespace standin::ado
