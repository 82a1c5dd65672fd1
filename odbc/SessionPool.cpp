#include "odbc/SessionPool.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <iterator>
#include <mutex>
#include <new>
#include <vector>

namespace odbc {
namespace {

// A thread rarely has more connections open at once; further idle sessions end.
constexpr ptrdiff_t kMostIdleOfAThread = 4;
// The owner of what ended threads have left.
constexpr DWORD kNobody = 0;

struct Idle {
  std::unique_ptr<Session> session;
  DWORD thread;
};

struct Pool {
  std::mutex mutex;
  std::vector<Idle> idle; // what was used last stands last
};

// It is never destroyed: when the process ends, the driver may have gone before it. Its memory is the
// module's own, so that nothing stays behind when the module is unloaded.
Pool& ThePool() {
  alignas(Pool) static std::array<std::byte, sizeof(Pool)> memory;
  static Pool& pool = *new (memory.data()) Pool;
  return pool;
}

// Sessions end outside of the lock: a server may let them wait.
std::unique_ptr<Session> TakeIdle(const std::wstring& connectionString) {
  const DWORD thread = GetCurrentThreadId();
  Pool& pool = ThePool();
  const std::lock_guard lock(pool.mutex);
  for (const DWORD owner : {thread, kNobody}) {
    const auto found = std::find_if(pool.idle.rbegin(), pool.idle.rend(), [&](const Idle& candidate) {
      return candidate.thread == owner && candidate.session->connectionString() == connectionString;
    });
    if (found == pool.idle.rend()) continue;
    std::unique_ptr<Session> session = std::move(found->session);
    pool.idle.erase(std::next(found).base());
    return session;
  }
  return nullptr;
}

} // namespace

PooledSession::~PooledSession() {
  std::unique_ptr<Session> tooMany;
  try {
    if (!session_ || !session_->Reset()) return;
    const DWORD thread = GetCurrentThreadId();
    Pool& pool = ThePool();
    const std::lock_guard lock(pool.mutex);
    const auto isOwn = [&](const Idle& idle) { return idle.thread == thread; };
    if (std::ranges::count_if(pool.idle, isOwn) >= kMostIdleOfAThread) {
      const auto oldest = std::ranges::find_if(pool.idle, isOwn);
      tooMany = std::move(oldest->session);
      pool.idle.erase(oldest);
    }
    pool.idle.push_back({std::move(session_), thread});
  } catch (const std::exception&) {
    // There is no memory: the session ends.
  }
}

PooledSession SessionPool::Take(const std::wstring& connectionString) {
  while (std::unique_ptr<Session> idle = TakeIdle(connectionString))
    if (idle->Answers()) return PooledSession(std::move(idle));
  return PooledSession(std::make_unique<Session>(connectionString));
}

void SessionPool::ReleaseThread() noexcept {
  const DWORD thread = GetCurrentThreadId();
  Pool& pool = ThePool();
  const std::lock_guard lock(pool.mutex);
  for (Idle& idle : pool.idle)
    if (idle.thread == thread) idle.thread = kNobody;
}

void SessionPool::Clear() noexcept {
  Pool& pool = ThePool();
  std::vector<Idle> out;
  const std::lock_guard lock(pool.mutex);
  out.swap(pool.idle);
}

} // namespace odbc
