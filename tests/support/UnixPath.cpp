#include "tests/support/UnixPath.h"

#include <windows.h>

#include "com/Text.h"

namespace com::test {
namespace {

using UnixNameOf = char* __cdecl(LPCWSTR);

// Wine's own function; null on Windows.
UnixNameOf* FindUnixNameOf() {
  const FARPROC function = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
  return reinterpret_cast<UnixNameOf*>(reinterpret_cast<void*>(function));
}

} // namespace

bool IsUnderWine() {
  return FindUnixNameOf() != nullptr;
}

std::wstring UnixPath(const std::wstring& path) {
  UnixNameOf* const unixNameOf = FindUnixNameOf();
  char* const converted = unixNameOf ? unixNameOf(path.c_str()) : nullptr;
  if (!converted) return path;
  std::wstring result = com::FromUtf8(converted);
  HeapFree(GetProcessHeap(), 0, converted);
  return result;
}

} // namespace com::test
