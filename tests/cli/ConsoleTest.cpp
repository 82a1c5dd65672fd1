#include "cli/Console.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <string>

#include "tests/support/StartedProcess.h"

namespace bomcall {
namespace {

std::atomic<bool> g_heard = false;

// Every process of the console hears of the event, on a thread of its own.
BOOL WINAPI GoOn(DWORD event) {
  if (event != CTRL_C_EVENT) return FALSE;
  g_heard = true;
  return TRUE;
}

// bomcall, which waits for the JSON of an argument that it reads from a pipe.
class WaitingBomcall {
 public:
  WaitingBomcall() {
    HANDLE input = nullptr;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    CreatePipe(&input, &writeEnd_, &inherited, 0);
    SetHandleInformation(writeEnd_, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input;
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const std::wstring own = self;
    std::wstring line =
        L"\"" + own.substr(0, own.rfind(L'\\')) + L"\\bomcall.exe\" --dsn none BomUpdate.EndSave SaveVect=@-";
    EXPECT_TRUE(com::test::HasStarted([&] {
      return CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                            &process_);
    }));
    CloseHandle(input);
  }
  WaitingBomcall(const WaitingBomcall&) = delete;
  WaitingBomcall& operator=(const WaitingBomcall&) = delete;
  ~WaitingBomcall() {
    TerminateProcess(process_.hProcess, 1);
    for (HANDLE handle : {process_.hProcess, process_.hThread, writeEnd_}) CloseHandle(handle);
  }
  bool HasEnded(DWORD milliseconds) const {
    return WaitForSingleObject(process_.hProcess, milliseconds) == WAIT_OBJECT_0;
  }

 private:
  HANDLE writeEnd_ = nullptr;
  PROCESS_INFORMATION process_{};
};

TEST(Console, HasItsOwnCodePageAgainAtTheEnd) {
  AllocConsole(); // fails where the program has one already
  const UINT before = GetConsoleOutputCP();
  if (!SetConsoleOutputCP(437)) GTEST_SKIP() << "there is no console here";
  {
    const Utf8Console console;
    EXPECT_EQ(GetConsoleOutputCP(), static_cast<UINT>(CP_UTF8));
  }
  EXPECT_EQ(GetConsoleOutputCP(), 437u);
  SetConsoleOutputCP(before);
}

TEST(Console, HasItsOwnCodePageAgainWhenBomcallIsInterrupted) {
  constexpr DWORD kLong = 60000;
  AllocConsole();
  const UINT before = GetConsoleOutputCP();
  if (!SetConsoleOutputCP(437)) GTEST_SKIP() << "there is no console here";
  SetConsoleCtrlHandler(GoOn, TRUE);
  {
    const WaitingBomcall bomcall;
    for (DWORD waited = 0; waited < kLong && GetConsoleOutputCP() != CP_UTF8; waited += 10) Sleep(10);
    EXPECT_EQ(GetConsoleOutputCP(), static_cast<UINT>(CP_UTF8));
    EXPECT_FALSE(bomcall.HasEnded(0));
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    EXPECT_TRUE(bomcall.HasEnded(kLong));
    EXPECT_EQ(GetConsoleOutputCP(), 437u);
  }
  // bomcall may have heard of it first. Without the handler this process would end as well.
  for (DWORD waited = 0; waited < kLong && !g_heard; waited += 10) Sleep(10);
  EXPECT_TRUE(g_heard);
  SetConsoleCtrlHandler(GoOn, FALSE);
  SetConsoleOutputCP(before);
}

TEST(Console, IsColouredUnlessTheUserDoesNotWantIt) {
  if (!IsTerminal(stdout)) GTEST_SKIP() << "the output is no terminal";
  EXPECT_GT(TerminalWidth(), 0u);
  _wputenv_s(L"NO_COLOR", L"");
  EXPECT_TRUE(ShowsColours());
  _wputenv_s(L"NO_COLOR", L"1");
  EXPECT_FALSE(ShowsColours());
  _wputenv_s(L"NO_COLOR", L"");
}

} // namespace
} // namespace bomcall
