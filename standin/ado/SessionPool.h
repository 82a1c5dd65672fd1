// SessionPool: engine sessions that nobody uses at the moment, for the next connection to the same file.
//
// A connection opens and ends with every call, and opening a file takes many times longer than its statement.
// So a session goes back to the pool when its connection lets it go, and is reset for the next user, who
// cannot tell it from a new one. Each thread has sessions of its own. They end with the thread, when the
// module is free to be unloaded, and when their file is gone or another one has its name. In-memory databases
// are not pooled: they end with their last session.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <utility>

#include "standin/ado/FileIdentity.h"
#include "tsql/tsql.h"

namespace standin::ado {

// A session, its file, and the thread that it belongs to.
struct SessionOfThread {
  std::unique_ptr<tsql::Session> session;
  std::string path; // the full one; empty when the session is not for the pool
  FileIdentity file;
  DWORD thread = 0;
};

// A session in use. It goes back to the pool when this object ends.
class PooledSession {
 public:
  PooledSession() = default;
  explicit PooledSession(SessionOfThread session) : own_(std::move(session)) {}
  PooledSession(PooledSession&& other) noexcept = default;
  PooledSession& operator=(PooledSession&& other) noexcept;
  ~PooledSession() { GiveBack(); }

  explicit operator bool() const { return own_.session != nullptr; }
  tsql::Session* get() const { return own_.session.get(); }
  tsql::Session* operator->() const { return get(); }

 private:
  void GiveBack() noexcept;

  SessionOfThread own_;
};

class SessionPool {
 public:
  // A session on the data source: the calling thread's idle one, or a new one. Throws tsql::Error.
  static PooledSession Take(const std::string& path);

  // Ends the idle sessions of the calling thread, or of all.
  static void ClearThread() noexcept;
  static void ClearAll() noexcept;
};

} // namespace standin::ado
