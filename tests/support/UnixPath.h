// Paths for what belongs to the Linux machine on which Wine runs: ODBC drivers, and programs that a test
// starts.
#pragma once

#include <string>

namespace com::test {

bool IsUnderWine();

// A path of Windows as the machine under Wine knows it; on Windows the path itself.
std::wstring UnixPath(const std::wstring& path);

} // namespace com::test
