// SessionPool: sessions that nobody uses at the moment, for the next user of the same connection string.
//
// Connecting takes many times longer than a statement. So a session goes back when its user lets it go, and
// is reset for the next one, who cannot tell it from a new one; one that cannot be reset ends. Each thread
// has a few of its own. What a thread leaves behind when it ends is for any other: a thread that is ending
// must not wait for a server.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "odbc/Session.h"

namespace odbc {

// A session in use. It goes back to the pool when this object ends.
class PooledSession {
 public:
  explicit PooledSession(std::unique_ptr<Session> session) : session_(std::move(session)) {}
  PooledSession(PooledSession&& other) noexcept = default;
  PooledSession& operator=(PooledSession&& other) = delete;
  ~PooledSession();

  Session* get() const { return session_.get(); }
  Session* operator->() const { return get(); }

 private:
  std::unique_ptr<Session> session_;
};

class SessionPool {
 public:
  // The calling thread's idle session for the connection string, if its server still answers, or a new one.
  // Throws Error.
  static PooledSession Take(const std::wstring& connectionString);

  // The calling thread ends: its idle sessions are anybody's.
  static void ReleaseThread() noexcept;
  // Ends all idle sessions.
  static void Clear() noexcept;
};

} // namespace odbc
