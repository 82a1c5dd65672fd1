// SessionPool: engine sessions that nobody uses at the moment, for the next connection to the same file.
//
// A connection opens and ends with every call, and opening a file takes many times longer than its statement.
// So a session goes back to the pool when its connection lets it go, and is reset for the next user, who
// cannot tell it from a new one. Each thread has sessions of its own. They end with the thread, when the
// module is free to be unloaded, and when their file was changed meanwhile, because it may be another one by
// now. In-memory databases are not pooled: they end with their last session.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "tsql/tsql.h"

namespace standin::ado {

// What a file shows of itself without being opened. Opening it would be no good: under Wine, whoever closes a
// file that others keep locked leaves a descriptor behind.
struct FileStamp {
  uint64_t size = 0;
  uint64_t written = 0; // 0: there is no such file
  bool operator==(const FileStamp&) const = default;
};

// A session, its file, and the thread that it belongs to.
struct SessionOfThread {
  std::unique_ptr<tsql::Session> session;
  std::string path; // the full one; empty when the session is not for the pool
  FileStamp file;   // when the session went to the pool
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
