#include "tests/standin/TdsServer.h"

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
#include "tests/standin/DataFile.h"
#include "tests/standin/UnixPath.h"

namespace standin::test {
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

// Wine starts a program for Linux as it does its own, but hands out nothing to wait for it by.
void Start(std::wstring command) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(Program().c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &process))
    throw std::runtime_error("tds_server does not start");
}

int PortOf(const std::wstring& file) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + std::chrono::seconds(20);
  while (Clock::now() < end) {
    int port = 0;
    if (std::ifstream(com::ToUtf8(file)) >> port) return port;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  throw std::runtime_error("tds_server does not say where it listens");
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

TdsServer::TdsServer(const std::wstring& options) {
  static std::atomic<int> last{0};
  std::wstring temporary(MAX_PATH, L'\0');
  temporary.resize(GetTempPathW(MAX_PATH, temporary.data()));
  folder_ = temporary + L"tds" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++last);
  CreateDirectoryW(folder_.c_str(), nullptr);
  const std::wstring portFile = folder_ + L"\\port";
  const std::wstring folder = UnixPath(folder_);
  // It leaves by itself when a test has ended badly.
  Start(L"tds_server --leave 60 --port-file \"" + folder + L"/port\" " + options + L" \"" + folder +
        L"/data.db\"");
  port_ = PortOf(portFile);
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

std::wstring TdsServer::ConnectionText(const std::wstring& changed) const {
  return L"DRIVER={FreeTDS};" + changed + L"Server=127.0.0.1;Port=" + std::to_wstring(port_) +
         L";UID=tester;PWD=open sesame;Database=scratch;TDS_Version=7.4;ClientCharset=UTF-8";
}

std::wstring TdsServer::Dsn(const std::wstring& changed) const {
  return L"Provider=ODBC;Connection={" + ConnectionText(changed) + L"}";
}

} // namespace standin::test
