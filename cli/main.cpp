// bomcall: calls any method of any class of the component by name.
#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include <cstdio>
#include <exception>

#include "cli/Batch.h"
#include "cli/Call.h"
#include "cli/Connections.h"
#include "cli/Console.h"
#include "cli/Machine.h"
#include "cli/Progress.h"
#include "cli/Show.h"
#include "cli/Usage.h"
#include "cli/bom/Reports.h"
#include "com/Text.h"

namespace {

using namespace bomcall;

constexpr int kRaised = 1;
constexpr int kUsageStatus = 2;
constexpr int kConditionHolds = 3;

void Print(std::FILE* stream, const std::wstring& text) {
  bomcall::Print(stream, com::ToUtf8(text));
}

int RunCall(const CommandLine& line, const Style& style) {
  const Outcome outcome = MakeCall(ReadClassDescriptions(), line);
  // An error is shown with the output, in the form that was asked for: it is what the call came to.
  Print(stdout, ShowOutcome(outcome, line, style));
  if (outcome.error) return kRaised;
  const auto condition = FirstHolding(line.failIf, outcome);
  if (!condition) return 0;
  Print(stderr, L"bomcall: " + condition->name + L" is " + condition->value + L"\n");
  return kConditionHolds;
}

std::wstring Counted(size_t number, const wchar_t* what) {
  return std::to_wstring(number) + L" " + what + (number == 1 ? L"" : L"s");
}

int RunBatchFile(const CommandLine& line, const Style& style) {
  if (line.format == Format::Csv) throw UsageError("--csv shows the rows of one call, not of a batch");
  Progress progress;
  bool held = false; // a condition of --fail-if
  bool raised = false;
  const BatchListener listener{
      [&](size_t number, const std::wstring& call, const Outcome& outcome) {
        progress.Hide();
        const std::wstring place = L"line " + std::to_wstring(number);
        if (line.format == Format::Json)
          Print(stdout, ShowAsJsonLine(outcome, number, call));
        else
          Print(stdout, L"-- " + place + L": " + call + L"\n" + ShowOutcome(outcome, line, style));
        raised = raised || outcome.error.has_value();
        if (const auto condition = FirstHolding(line.failIf, outcome); condition && !outcome.error) {
          held = true;
          Print(stderr, L"bomcall: " + place + L": " + condition->name + L" is " + condition->value + L"\n");
        }
      },
      [&](size_t done, size_t all) { progress.Show(done, all); }};
  const BatchCounts counts = RunBatch(ReadClassDescriptions(), line, listener);
  progress.Hide();
  Print(stderr, L"bomcall: " + Counted(counts.calls, L"call") + L" made, " + std::to_wstring(counts.failed) +
                    L" failed, " + std::to_wstring(counts.left) + L" left out" +
                    (counts.kept ? L"\n" : L"; nothing was kept\n"));
  if (counts.failed == 0) return 0;
  return held && !raised ? kConditionHolds : kRaised;
}

int Run(const CommandLine& line) {
  const Style style{TerminalWidth(), ShowsColours()};
  switch (line.action) {
  case Action::Help:
    if (line.helpTopic.empty())
      bomcall::Print(stdout, kUsage);
    else if (line.helpTopic == L"bom")
      bomcall::Print(stdout, kBomUsage);
    else
      Print(stdout, ShowHelp(ReadClassDescriptions(), line.helpTopic));
    return 0;
  case Action::Version: bomcall::Print(stdout, "bomcall " BOMCALL_VERSION "\n"); return 0;
  case Action::List: Print(stdout, ShowClasses(ReadClassDescriptions(), line.className)); return 0;
  case Action::Check: {
    const std::vector<TriedClass> classes = TryClasses();
    Print(stdout, ShowGrid(GridOf(classes), line.format, style));
    return AllThere(classes) ? 0 : kRaised;
  }
  case Action::Batch: return RunBatchFile(line, style);
  case Action::Bom: {
    const bom::ReportResult report = bom::MakeReport(line, DescriptorOf(line), style.width, style.coloured);
    Print(stdout, report.text);
    return report.clean ? 0 : kConditionHolds;
  }
  case Action::Call: break;
  }
  return RunCall(line, style);
}

int RunGuarded(const std::vector<std::wstring>& arguments) {
  try {
    return Run(ParseCommandLine(arguments));
  } catch (const UsageError& error) {
    bomcall::Print(stderr,
                   std::string("bomcall: ") + error.what() + "\nbomcall --help tells how it is used.\n");
    return kUsageStatus;
  } catch (const com::ComError& error) {
    Print(stderr, L"bomcall: " + error.description() + L"\n");
    return kRaised;
  } catch (const std::exception& error) {
    bomcall::Print(stderr, std::string("bomcall: ") + error.what() + "\n");
    return kRaised;
  }
}

} // namespace

int wmain(int argc, wchar_t** argv) {
  // UTF-8 as it is, without the runtime's own line ends.
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  const Utf8Console console;
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return kRaised;
  const int status = RunGuarded({argv + 1, argv + argc});
  CoUninitialize();
  return status;
}
