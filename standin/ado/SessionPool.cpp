#include "standin/ado/SessionPool.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "com/Text.h"

namespace standin::ado {
namespace {

constexpr char kMemoryPrefix[] = ":memory:";
// A thread rarely has more connections open at once; further idle sessions are closed.
constexpr ptrdiff_t kMostIdleOfAThread = 4;

std::string FullPath(const std::string& path) {
  const std::wstring name = com::FromUtf8(path);
  std::wstring full(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return com::ToUtf8(com::Lower(full));
}

// One list for all threads and not thread-local storage: what is left ends with the DLL, whichever thread
// unloads it. The sessions that were used last stand last.
std::mutex g_mutex;
std::vector<SessionOfThread> g_idle;

// Takes the sessions out of the list that the condition names. They end when the result does, which is not
// while the list is locked: closing a file takes its time.
template <class Condition>
std::vector<SessionOfThread> TakeOut(Condition condition) {
  const std::lock_guard lock(g_mutex);
  const auto end = std::stable_partition(g_idle.begin(), g_idle.end(),
                                         [&](const SessionOfThread& idle) { return !condition(idle); });
  std::vector<SessionOfThread> out(std::make_move_iterator(end), std::make_move_iterator(g_idle.end()));
  g_idle.erase(end, g_idle.end());
  return out;
}

// The calling thread's idle session on the file that was used last. Nothing when there is none.
std::optional<SessionOfThread> TakeIdle(const std::string& fullPath) {
  const std::lock_guard lock(g_mutex);
  const auto idle = std::find_if(g_idle.rbegin(), g_idle.rend(), [&](const SessionOfThread& candidate) {
    return candidate.thread == GetCurrentThreadId() && candidate.path == fullPath;
  });
  if (idle == g_idle.rend()) return std::nullopt;
  std::optional<SessionOfThread> taken(std::move(*idle));
  g_idle.erase(std::next(idle).base());
  return taken;
}

void Keep(SessionOfThread session) {
  SessionOfThread oldest; // ends after the lock has been given back
  const std::lock_guard lock(g_mutex);
  const auto isOfThread = [&](const SessionOfThread& idle) { return idle.thread == session.thread; };
  if (std::ranges::count_if(g_idle, isOfThread) >= kMostIdleOfAThread) {
    const auto first = std::ranges::find_if(g_idle, isOfThread);
    oldest = std::move(*first);
    g_idle.erase(first);
  }
  g_idle.push_back(std::move(session));
}

} // namespace

PooledSession& PooledSession::operator=(PooledSession&& other) noexcept {
  if (this == &other) return *this;
  GiveBack();
  own_ = std::move(other.own_);
  return *this;
}

void PooledSession::GiveBack() noexcept {
  SessionOfThread session = std::move(own_);
  if (!session.session || session.path.empty() || session.thread != GetCurrentThreadId()) return;
  try {
    session.session->Reset();
    Keep(std::move(session));
  } catch (const std::exception&) {
    // A session that cannot be reset, or for which there is no memory, ends here.
  }
}

PooledSession SessionPool::Take(const std::string& path) {
  if (path.starts_with(kMemoryPrefix))
    return PooledSession(
        {tsql::Session::Open(tsql::Database::Open(path, tsql::OpenMode::Create)), {}, {}, 0});
  const std::string full = FullPath(path);
  while (std::optional<SessionOfThread> idle = TakeIdle(full))
    if (idle->file.Holds()) return PooledSession(std::move(*idle));
  const FileIdentity file(com::FromUtf8(full));
  return PooledSession({tsql::Session::Open(tsql::Database::Open(path, tsql::OpenMode::Existing)), full, file,
                        GetCurrentThreadId()});
}

void SessionPool::ClearThread() noexcept {
  const DWORD thread = GetCurrentThreadId();
  TakeOut([&](const SessionOfThread& idle) { return idle.thread == thread; });
}

void SessionPool::ClearAll() noexcept {
  TakeOut([](const SessionOfThread&) { return true; });
}

} // namespace standin::ado
