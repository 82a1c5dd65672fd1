#include "standin/ado/SessionPool.h"

#include <windows.h>
#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <iterator>
#include <mutex>
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

// NtQueryDirectoryFile, which Windows documents but has in no header of its SDK: unlike the functions of
// kernel32 it gives the number of one file by its name, without reading the whole folder.
using QueryDirectory = LONG(NTAPI*)(HANDLE folder, HANDLE event, void* routine, void* context,
                                    IO_STATUS_BLOCK* status, void* buffer, ULONG size, ULONG informationClass,
                                    BOOLEAN onlyOne, UNICODE_STRING* name, BOOLEAN restart);
constexpr ULONG kFileIdBothDirectoryInformation = 37;

QueryDirectory FindQueryDirectory() {
  return reinterpret_cast<QueryDirectory>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryDirectoryFile")));
}

// The number that the file system has for the file of this name; 0 when there is none. It is read out of the
// folder: under Wine, whoever opens and closes a file that others keep locked leaves a descriptor behind.
uint64_t FileIdOf(const std::string& fullPath) {
  static const QueryDirectory query = FindQueryDirectory();
  const std::wstring path = com::FromUtf8(fullPath);
  const size_t slash = path.find_last_of(L'\\');
  std::wstring name = path.substr(slash + 1);
  HANDLE folder = CreateFileW(path.substr(0, slash + 1).c_str(), FILE_LIST_DIRECTORY | SYNCHRONIZE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (folder == INVALID_HANDLE_VALUE) return 0;
  UNICODE_STRING mask{};
  mask.Buffer = name.data();
  mask.Length = mask.MaximumLength = static_cast<USHORT>(name.size() * sizeof(wchar_t));
  IO_STATUS_BLOCK status{};
  // Room for one entry with the longest name, and its short one.
  alignas(FILE_ID_BOTH_DIR_INFO)
      std::array<std::byte, sizeof(FILE_ID_BOTH_DIR_INFO) + MAX_PATH * sizeof(wchar_t)>
          buffer;
  const LONG result = query(folder, nullptr, nullptr, nullptr, &status, buffer.data(), buffer.size(),
                            kFileIdBothDirectoryInformation, TRUE, &mask, TRUE);
  CloseHandle(folder);
  if (result < 0) return 0;
  return static_cast<uint64_t>(
      reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(buffer.data())->FileId.QuadPart);
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
  const DWORD thread = GetCurrentThreadId();
  const std::string full = FullPath(path);
  const uint64_t fileId = FileIdOf(full);
  TakeOut([&](const SessionOfThread& idle) {
    return idle.thread == thread && idle.path == full && idle.fileId != fileId;
  });
  {
    const std::lock_guard lock(g_mutex);
    const auto idle = std::find_if(g_idle.rbegin(), g_idle.rend(), [&](const SessionOfThread& candidate) {
      return candidate.thread == thread && candidate.path == full;
    });
    if (idle != g_idle.rend()) {
      PooledSession session(std::move(*idle));
      g_idle.erase(std::next(idle).base());
      return session;
    }
  }
  return PooledSession(
      {tsql::Session::Open(tsql::Database::Open(path, tsql::OpenMode::Existing)), full, fileId, thread});
}

void SessionPool::ClearThread() noexcept {
  const DWORD thread = GetCurrentThreadId();
  TakeOut([&](const SessionOfThread& idle) { return idle.thread == thread; });
}

void SessionPool::ClearAll() noexcept {
  TakeOut([](const SessionOfThread&) { return true; });
}

} // namespace standin::ado
