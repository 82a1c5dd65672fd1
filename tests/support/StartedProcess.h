// Starting processes in tests.
#pragma once

#include <windows.h>

namespace com::test {

// Calls `start`, a CreateProcess, and says whether it has started something; if not, GetLastError knows why.
// Now and then Wine ends a new process before its first instruction and calls that an error of its own: then
// nothing has run, and it is started again.
template <class Start>
bool HasStarted(const Start& start) {
  constexpr int kMostTimes = 5;
  constexpr DWORD kPauseMilliseconds = 100;
  for (int time = 1; !start(); ++time) {
    if (GetLastError() != ERROR_INTERNAL_ERROR || time == kMostTimes) return false;
    Sleep(kPauseMilliseconds);
  }
  return true;
}

} // namespace com::test
