#include "tests/support/TdsServer.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "com/Module.h"
#include "com/Text.h"
#include "odbc/Session.h"
#include "tests/support/StartedProcess.h"
#include "tests/support/UnixPath.h"

namespace com::test {
namespace {

// In the native build beside that of the tests; empty when there is none.
const std::wstring& Program() {
  static const std::wstring program = [] {
    // build/x64/bin/standin_tests.exe
    std::wstring folder = com::ModulePath();
    for (int i = 0; i < 3; ++i) folder.resize(folder.find_last_of(L'\\'));
    for (const wchar_t* build : {L"native", L"native-release"}) {
      std::wstring path = folder + L"\\" + build + L"\\bin\\tds_server";
      if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return path;
    }
    return std::wstring();
  }();
  return program;
}

// Has the shell of Linux run a command. Wine starts its programs as it does its own, but hands out nothing to
// wait for them by. They must not keep the output of the tests open.
void RunInShell(const std::wstring& command) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  std::wstring line = L"sh -c \"" + command + L"\"";
  const bool started = HasStarted([&] {
    return CreateProcessW(L"Z:\\bin\\sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process);
  });
  if (!started) throw std::runtime_error("Wine does not start the shell of Linux");
}

// Keeps nothing of what a batch sends.
struct Silence : tsql::ResultSink {
  void BeginRows(std::span<const tsql::Column> /*columns*/) override {}
  void Row(std::span<const tsql::Value> /*values*/) override {}
  void EndRows(int64_t /*count*/) override {}
  void RowCount(int64_t /*count*/) override {}
  void Message(const tsql::Error& /*info*/) override {}
  void Failed(const tsql::Error& /*error*/) override {}
};

template <typename Condition>
void WaitFor(const char* what, Condition isTrue) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + std::chrono::seconds(20);
  while (!isTrue()) {
    if (Clock::now() > end) throw std::runtime_error(what);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

} // namespace

std::wstring WhyNoTdsServer() {
  static const std::wstring why = []() -> std::wstring {
    if (!IsUnderWine()) return L"tds_server is a program for Linux";
    if (Program().empty()) return L"tds_server is not built: tools/build native:tds_server";
    if (sizeof(void*) == 8) return {};
    try {
      const odbc::Session session(L"DRIVER={FreeTDS};Server=127.0.0.1;Port=1");
      return {};
    } catch (const odbc::Error& error) {
      const std::wstring text = com::FromUtf8(error.what());
      return text.find(L"Can't open lib") == std::wstring::npos ? L"" : L"no 32-bit FreeTDS: " + text;
    }
  }();
  return why;
}

TdsServer::TdsServer() {
  static std::atomic<int> last{0};
  std::wstring temporary(MAX_PATH, L'\0');
  temporary.resize(GetTempPathW(MAX_PATH, temporary.data()));
  folder_ = temporary + L"tds" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++last);
  CreateDirectoryW(folder_.c_str(), nullptr);
  const std::wstring folder = UnixPath(folder_);
  // It leaves by itself when a test has ended badly.
  RunInShell(L"exec '" + UnixPath(Program()) + L"' --restart --leave 60 --port-file '" + folder +
             L"/port' '" + folder + L"/data.db' </dev/null >/dev/null 2>&1");
  WaitFor("tds_server does not say where it listens",
          [&] { return static_cast<bool>(std::ifstream(com::ToUtf8(folder_ + L"\\port")) >> port_); });
}

void TdsServer::Signal(const std::wstring& name) const {
  int process = 0;
  std::ifstream(com::ToUtf8(folder_ + L"\\port")) >> process >> process;
  const std::wstring sent = folder_ + L"\\sent";
  std::wstring command = L"kill -" + name + L" " + std::to_wstring(process);
  // A thread may go on for a moment until the signal reaches it.
  if (name == L"STOP")
    command += L"; while grep -h ^State: /proc/" + std::to_wstring(process) +
               L"/task/*/status | grep -qv T; do sleep 0.01; done";
  RunInShell(command + L"; : >'" + UnixPath(folder_) + L"/sent'");
  WaitFor("nobody sends a signal", [&] { return DeleteFileW(sent.c_str()) != 0; });
}

TdsServer::~TdsServer() {
  try {
    odbc::Session session(ConnectionText());
    Silence sink;
    session.Execute(L"SHUTDOWN", {}, sink);
  } catch (const odbc::Error&) { // NOLINT(bugprone-empty-catch): it has ended already
  }
  for (const wchar_t* file : {L"data.db", L"data.db-wal", L"data.db-shm", L"port"})
    DeleteFileW((folder_ + L"\\" + file).c_str());
  RemoveDirectoryW(folder_.c_str());
}

std::wstring TdsServer::ConnectionText() const {
  return L"DRIVER={FreeTDS};Server=127.0.0.1;Port=" + std::to_wstring(port_) +
         L";UID=tester;PWD=open sesame;Database=scratch;TDS_Version=7.4;ClientCharset=UTF-8";
}

} // namespace com::test
