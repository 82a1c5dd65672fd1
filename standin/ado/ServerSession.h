// ServerSession: one session with what serves a connection, below ADO. It runs batches and calls procedures,
// and its transactions are those that come from outside the batches.
//
// A failure of a statement is one of the results. What leaves nothing to go on with, such as a server that is
// not there, is thrown as a ServerFailure. A session is used by one thread at a time; it ends with its
// object, which rolls back what is open.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "standin/ado/ConnectionString.h"
#include "standin/ado/ProviderError.h"
#include "standin/ado/ResultCollector.h"
#include "tsql/tsql.h"

namespace standin::ado {

// What a session could not do at all.
struct ServerFailure {
  ErrorList errors;
};

class ServerSession {
 public:
  virtual ~ServerSession() = default;

  // Runs a batch. `parameters` serve its "?" markers in order.
  virtual void Execute(const std::wstring& batch, std::span<tsql::Parameter> parameters,
                       ResultCollector& results) = 0;
  // Calls a procedure with its arguments by position, writes its output parameters, and returns its status; 0
  // when it came to none.
  virtual int32_t Call(const std::wstring& procedure, std::span<tsql::Parameter> parameters,
                       ResultCollector& results) = 0;

  // How long a batch or call may take from now on; nullopt is no limit.
  virtual void SetTimeLimit(std::optional<std::chrono::seconds> limit) = 0;

  virtual void Begin() = 0;
  virtual void Commit() = 0;
  virtual void Rollback() = 0;

  // Fixes the server's clock for the session, where the server has one that can be; nullopt lets it run.
  virtual void SetNow(std::optional<tsql::DateTime> now) = 0;
  // The present stamp of the data; nullopt where the server has none, so that the data counts as changed.
  virtual std::optional<tsql::ChangeStamp> GetChangeStamp() = 0;
};

// A session with the server that the descriptor names, an idle one of the calling thread where there is one.
// Throws ServerFailure; ProviderNotFound when it names another server.
std::unique_ptr<ServerSession> OpenServerSession(const ConnectionString& descriptor);

} // namespace standin::ado
