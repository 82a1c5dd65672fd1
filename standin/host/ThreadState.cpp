#include "standin/host/ThreadState.h"

#include <windows.h>

#include <memory>
#include <mutex>
#include <unordered_map>

namespace standin {
namespace {

// One table for all threads and not thread-local storage: what is left goes with the DLL, whichever thread
// unloads it.
std::mutex g_mutex;
std::unordered_map<DWORD, std::unique_ptr<ThreadState>> g_threads;

} // namespace

ThreadState& CurrentThread() {
  const std::lock_guard lock(g_mutex);
  std::unique_ptr<ThreadState>& state = g_threads[GetCurrentThreadId()];
  if (!state) state = std::make_unique<ThreadState>();
  return *state;
}

void ReleaseThreadState() noexcept {
  const std::lock_guard lock(g_mutex);
  g_threads.erase(GetCurrentThreadId());
}

} // namespace standin
