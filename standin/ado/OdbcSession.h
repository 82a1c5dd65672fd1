// OdbcSession: a session with the server of an ODBC driver, as ADO uses a server.
#pragma once

#include "odbc/SessionPool.h"
#include "standin/ado/ServerSession.h"

namespace standin::ado {

class OdbcSession final : public ServerSession {
 public:
  // By the descriptor's Connection, which is a connection string of ODBC. Throws ServerFailure.
  explicit OdbcSession(const ConnectionString& descriptor);

  void Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters,
               ResultCollector& results) override;
  int32_t Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
               ResultCollector& results) override;
  void SetTimeLimit(std::optional<std::chrono::seconds> limit) override { session_->SetTimeLimit(limit); }
  void Begin() override;
  void Commit() override;
  void Rollback() override;
  // The server's clock is its own.
  void SetNow(std::optional<tsql::DateTime> /*now*/) override {}
  std::optional<tsql::ChangeStamp> GetChangeStamp() override { return std::nullopt; }

 private:
  odbc::PooledSession session_;
};

} // namespace standin::ado
