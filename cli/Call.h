// One call of a method, as a command line asks for it, and how its outcome is shown.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/ClassDescriptions.h"
#include "cli/CommandLine.h"
#include "com/ComError.h"
#include "com/Variant.h"

namespace bomcall {

struct NamedValue {
  std::wstring name;
  com::Variant value;
};

struct Outcome {
  com::Variant result;
  bool hasResult = false;
  std::vector<NamedValue> changed;    // the in/out arguments after the call
  std::vector<std::wstring> trace;    // an event each: kind, TAB, detail
  std::optional<com::ComError> error; // what the call raised
};

// Makes the call. What the command line got wrong (an unknown name, a value that does not fit, JSON that does
// not parse, a file that cannot be read) throws UsageError before anything is called.
Outcome MakeCall(const ClassDescriptions& classes, const CommandLine& line);

// UTF-16 text for the terminal: lines ending with LF.
std::wstring ShowAsText(const Outcome& outcome);
std::wstring ShowAsJson(const Outcome& outcome);

// The classes of the classes, or the one that is named; throws UsageError when it does not exist.
std::wstring ShowClasses(const ClassDescriptions& classes, const std::wstring& className);

} // namespace bomcall
