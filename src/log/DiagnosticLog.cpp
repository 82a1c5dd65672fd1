#include "src/log/DiagnosticLog.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "com/ObservedCall.h"
#include "com/Passwords.h"
#include "com/Text.h"
#include "src/log/RotatingFile.h"

namespace mbom {
namespace {

using com::ObservedCall;
using Json = nlohmann::ordered_json;

struct Log {
  Log(const LogSettings& settings, std::span<const com::ClassEntry> named)
      : file(settings.path, settings.mostBytes), classes(named) {}

  RotatingFile file;
  std::span<const com::ClassEntry> classes;
};

std::unique_ptr<Log> g_owned;
constinit std::atomic<Log*> g_log{nullptr};

std::string TimeText() {
  SYSTEMTIME now;
  GetSystemTime(&now);
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
  return text.data();
}

std::string CodeText(HRESULT code) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(code));
  return text.data();
}

long long Now() noexcept {
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  return now.QuadPart;
}

// To the microsecond.
double MillisecondsSince(long long start) noexcept {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  const long long microseconds = (Now() - start) * 1'000'000 / frequency.QuadPart;
  return static_cast<double>(microseconds) / 1000;
}

std::string ClassName(const Log& log, REFCLSID classId) {
  for (const com::ClassEntry& entry : log.classes) {
    if (entry.classId != classId) continue;
    const std::wstring_view progId = entry.progId;
    return com::ToUtf8(progId.substr(progId.find(L'.') + 1));
  }
  return {};
}

Json Begun(const Log& log, const wchar_t* event, const ObservedCall* call) {
  Json line;
  line["time"] = TimeText();
  line["process"] = GetCurrentProcessId();
  line["thread"] = GetCurrentThreadId();
  if (call) {
    line["class"] = ClassName(log, call->classId());
    line["method"] = com::ToUtf8(call->member());
  }
  line["event"] = com::ToUtf8(event);
  return line;
}

void AddText(Json& line, std::wstring_view text) {
  line["text"] = com::ToUtf8(com::Masked(text));
}

// Writes a line, to which `add` adds what only this event has. Lines are written for their own sake: one that
// cannot be made is left out.
template <class Add>
void WriteLine(const wchar_t* event, const ObservedCall* call, const Add& add) noexcept {
  Log* const log = g_log.load(std::memory_order_acquire);
  if (!log) return;
  try {
    Json line = Begun(*log, event, call);
    add(line);
    log->file.Append(line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
  } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): a call does not fail with its log
  }
}

void WriteBegin(const ObservedCall& call) noexcept {
  WriteLine(L"begin", &call, [](Json&) {});
}

void WriteEnd(const ObservedCall& call, HRESULT answer, const EXCEPINFO* error) noexcept {
  WriteLine(L"end", &call, [&](Json& line) {
    if (error && error->bstrDescription)
      AddText(line, {error->bstrDescription, SysStringLen(error->bstrDescription)});
    line["ms"] = MillisecondsSince(call.start());
    if (answer != S_OK) line["code"] = CodeText(error && error->scode != 0 ? error->scode : answer);
  });
}

constexpr com::CallObserver kCalls{WriteBegin, WriteEnd};

std::wstring Environment(const wchar_t* name) {
  std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
  value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return value;
}

constexpr wchar_t kKey[] = L"SOFTWARE\\QorvaneMBomBill";

std::wstring RegistryText(const wchar_t* name) {
  constexpr size_t kLongestPath = 32767;
  std::wstring text(kLongestPath + 1, L'\0');
  auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  const LSTATUS status =
      RegGetValueW(HKEY_LOCAL_MACHINE, kKey, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
  // What is read ends with a NUL, which is added where the registry has none.
  return status == ERROR_SUCCESS ? text.substr(0, text.find(L'\0')) : std::wstring();
}

uint64_t RegistryNumber(const wchar_t* name) {
  DWORD value = 0;
  DWORD bytes = sizeof value;
  RegGetValueW(HKEY_LOCAL_MACHINE, kKey, name, RRF_RT_REG_DWORD, nullptr, &value, &bytes);
  return value;
}

uint64_t BytesOf(uint64_t kilobytes) {
  constexpr uint64_t kKilobyte = 1024;
  constexpr uint64_t kDefault = 10240;
  return (kilobytes > 0 ? kilobytes : kDefault) * kKilobyte;
}

} // namespace

LogSettings LogSettingsOfProcess() {
  if (const std::wstring path = Environment(L"QORVANEMBOMBILL_LOG"); !path.empty())
    return {path, BytesOf(std::wcstoul(Environment(L"QORVANEMBOMBILL_LOG_KB").c_str(), nullptr, 10))};
  return {RegistryText(L"Log"), BytesOf(RegistryNumber(L"LogKB"))};
}

void StartLog(const LogSettings& settings, std::span<const com::ClassEntry> classes) {
  StopLog();
  if (settings.path.empty()) return;
  g_owned = std::make_unique<Log>(settings, classes);
  g_log.store(g_owned.get());
  com::ObserveCalls(&kCalls);
}

void StartLogOfProcess(std::span<const com::ClassEntry> classes) noexcept {
  static constinit std::atomic_flag asked{};
  if (asked.test_and_set()) return;
  try {
    StartLog(LogSettingsOfProcess(), classes);
  } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): a host without memory has no log
  }
}

void StopLog() noexcept {
  com::ObserveCalls(nullptr);
  g_log.store(nullptr);
  g_owned.reset();
}

bool LogIsOn() noexcept {
  return g_log.load(std::memory_order_acquire) != nullptr;
}

void LogTrapped(const std::exception& failure) noexcept {
  WriteLine(L"trapped", ObservedCall::Current(),
            [&](Json& line) { AddText(line, com::FromUtf8(failure.what())); });
}

LoggedStep::LoggedStep(const wchar_t* event, std::wstring_view text) noexcept
    : on_(LogIsOn()), event_(event), text_(text), failures_(on_ ? std::uncaught_exceptions() : 0) {
  if (on_) start_ = Now();
}

LoggedStep::~LoggedStep() {
  if (!on_) return;
  WriteLine(event_, ObservedCall::Current(), [&](Json& line) {
    AddText(line, text_);
    line["ms"] = MillisecondsSince(start_);
    if (rows_ >= 0) line["rows"] = rows_;
    if (std::uncaught_exceptions() > failures_) line["failed"] = true;
  });
}

} // namespace mbom
