// bomcall: calls any method of any class of the component by name.
#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include <cstdio>

#include "cli/Call.h"
#include "com/Text.h"

namespace {

using namespace bomcall;

constexpr int kRaised = 1;
constexpr int kUsageStatus = 2;

void Print(std::FILE* stream, const std::string& utf8) {
  std::fwrite(utf8.data(), 1, utf8.size(), stream);
}

int Run(const CommandLine& line) {
  switch (line.action) {
  case Action::Help: Print(stdout, kUsage); return 0;
  case Action::Version: Print(stdout, "bomcall 1.0.0\n"); return 0;
  case Action::List:
    Print(stdout, com::ToUtf8(ShowClasses(ReadClassDescriptions(), line.className)));
    return 0;
  case Action::Call: break;
  }
  const Outcome outcome = MakeCall(ReadClassDescriptions(), line);
  // An error is shown with the output, in the form that was asked for: it is what the call came to.
  Print(stdout, com::ToUtf8(line.json ? ShowAsJson(outcome) : ShowAsText(outcome)));
  return outcome.error ? kRaised : 0;
}

int RunGuarded(const std::vector<std::wstring>& arguments) {
  try {
    return Run(ParseCommandLine(arguments));
  } catch (const UsageError& error) {
    Print(stderr, std::string("bomcall: ") + error.what() + "\nbomcall --help tells how it is used.\n");
    return kUsageStatus;
  } catch (const com::ComError& error) {
    Print(stderr, "bomcall: the component is not registered: " + com::ToUtf8(error.description()) + "\n");
    return kRaised;
  }
}

} // namespace

int wmain(int argc, wchar_t** argv) {
  // UTF-8 as it is, without the runtime's own line ends.
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return kRaised;
  const int status = RunGuarded({argv + 1, argv + argc});
  CoUninitialize();
  return status;
}
