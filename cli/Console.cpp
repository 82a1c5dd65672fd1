#include "cli/Console.h"

#include <io.h>
#include <windows.h>

#include <atomic>
#include <cstdlib>

namespace bomcall {
namespace {

// The code page that the console had; 0 when there is nothing to bring back.
std::atomic<UINT> g_before = 0;

void BringBack() {
  const UINT before = g_before.exchange(0);
  if (before != 0) SetConsoleOutputCP(before);
}

// Runs on a thread of its own; the next handler ends the process.
BOOL WINAPI OnInterrupt(DWORD /*event*/) {
  BringBack();
  return FALSE;
}

} // namespace

Utf8Console::Utf8Console() {
  const UINT before = GetConsoleOutputCP();
  if (before == 0 || before == CP_UTF8) return;
  // The handler first: an interruption may come as soon as the code page is another one.
  g_before = before;
  SetConsoleCtrlHandler(OnInterrupt, TRUE);
  if (!SetConsoleOutputCP(CP_UTF8)) g_before = 0;
}

Utf8Console::~Utf8Console() {
  SetConsoleCtrlHandler(OnInterrupt, FALSE);
  BringBack();
}

bool IsTerminal(std::FILE* stream) {
  DWORD mode = 0;
  // The runtime numbers the handles of streams.
  HANDLE handle =
      reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))); // NOLINT(performance-no-int-to-ptr)
  return GetConsoleMode(handle, &mode) != 0;
}

size_t TerminalWidth() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 0;
  return static_cast<size_t>(info.srWindow.Right - info.srWindow.Left) + 1;
}

bool ShowsColours() {
  const wchar_t* noColour = _wgetenv(L"NO_COLOR");
  if (noColour && *noColour != L'\0') return false;
  HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(output, &mode) && SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

void Print(std::FILE* stream, std::string_view utf8) {
  std::fwrite(utf8.data(), 1, utf8.size(), stream);
}

} // namespace bomcall
