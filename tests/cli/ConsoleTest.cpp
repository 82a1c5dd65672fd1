#include "cli/Console.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace bomcall {
namespace {

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
