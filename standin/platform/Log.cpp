#include "standin/platform/Log.h"

#include <array>
#include <atomic>
#include <cstdio>

#include "com/ComError.h"
#include "com/DispatchObject.h"
#include "com/Text.h"
#include "standin/host/EventLog.h"

namespace standin {
namespace {

std::atomic<int32_t> g_lastHandle{0};

std::wstring FileName() {
  std::wstring name(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length =
        GetEnvironmentVariableW(L"ERP_STANDIN_LOG", name.data(), static_cast<DWORD>(name.size()));
    const bool fits = length < name.size();
    name.resize(length);
    if (fits) return name;
  }
}

// One call of the system for the whole line, so that the lines of several processes do not mix.
void Append(const std::wstring& text) {
  HANDLE file = CreateFileW(FileName().c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw com::ComError::FromSystem(HRESULT_FROM_WIN32(GetLastError()));
  SYSTEMTIME now{};
  GetLocalTime(&now);
  std::array<char, 64> prefix{};
  std::snprintf(prefix.data(), prefix.size(), "%04d-%02d-%02d %02d:%02d:%02d.%03d [%lu] ", now.wYear,
                now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds,
                GetCurrentThreadId());
  const std::string line = prefix.data() + com::ToUtf8(text) + "\r\n";
  DWORD written = 0;
  const BOOL succeeded = WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
  const DWORD error = GetLastError();
  CloseHandle(file);
  if (!succeeded) throw com::ComError::FromSystem(HRESULT_FROM_WIN32(error));
}

} // namespace

bool Log::IsEnabled() const {
  return !FileName().empty();
}

int32_t Log::LogStart(const std::wstring& procedure) {
  Event(EventKind::LogStart, procedure);
  const int32_t handle = ++g_lastHandle;
  Append(L"start " + procedure + L" #" + std::to_wstring(handle));
  running_[handle] = {procedure, GetTickCount64()};
  return handle;
}

void Log::LogEnd(int32_t handle, int32_t value) {
  Event(EventKind::LogEnd, std::to_wstring(handle));
  const auto running = running_.find(handle);
  std::wstring line = L"end   ";
  if (running != running_.end()) line += running->second.procedure + L" ";
  line += L"#" + std::to_wstring(handle) + L" value " + std::to_wstring(value);
  if (running != running_.end()) {
    line += L", " + std::to_wstring(GetTickCount64() - running->second.since) + L" ms";
    running_.erase(running);
  }
  Append(line);
}

} // namespace standin

template <>
const com::DispatchTable& com::TableOf<standin::Log>() {
  using standin::Log;
  static const DispatchTable table(IID_NULL,
                                   {
                                       Method<&Log::IsEnabled>(kNextId, L"IsEnabled"),
                                       Method<&Log::LogStart>(kNextId, L"LogStart", {L"Procedure"}),
                                       Method<&Log::LogEnd>(kNextId, L"LogEnd", {L"Handle", L"Value"}),
                                   });
  return table;
}
