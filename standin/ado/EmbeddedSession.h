// EmbeddedSession: a session of the embedded engine, as ADO uses a server.
#pragma once

#include "standin/ado/ServerSession.h"
#include "standin/ado/SessionPool.h"

namespace standin::ado {

class EmbeddedSession final : public ServerSession {
 public:
  // On the descriptor's data source. Throws ServerFailure when it is not there.
  explicit EmbeddedSession(const ConnectionString& descriptor);

  void Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters,
               ResultCollector& results) override;
  int32_t Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
               ResultCollector& results) override;
  void SetTimeLimit(std::optional<std::chrono::seconds> limit) override { session_->SetTimeLimit(limit); }
  void Begin() override;
  void Commit() override;
  void Rollback() override;
  void SetNow(std::optional<tsql::DateTime> now) override { session_->SetNow(now); }
  std::optional<tsql::ChangeStamp> GetChangeStamp() override { return session_->GetChangeStamp(); }

 private:
  PooledSession session_;
};

} // namespace standin::ado
