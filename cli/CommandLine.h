// The command line of bomcall.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "com/Text.h"

namespace bomcall {

// What the user typed wrongly, in words; bomcall ends with exit status 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
  explicit UsageError(const std::wstring& text) : std::runtime_error(com::ToUtf8(text)) {}
};

enum class Action { Call, List, Help, Version };

struct NamedText {
  std::wstring name;
  std::wstring value;
};

struct CommandLine {
  Action action = Action::Call;
  std::wstring className;                 // of Call; of List: the one class to show, or empty
  std::wstring methodName;                // of Call
  std::vector<NamedText> values;          // of Call: name=value
  std::optional<std::wstring> descriptor; // --dsn
  std::wstring language;                  // --lang, or empty
  bool json = false;
  bool trace = false;
  bool host = true;
};

// Parses the arguments after the program's name. Throws UsageError.
CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

// The descriptor that a call gets: `language` is put in front, where the component finds it first.
std::wstring WithLanguage(const std::wstring& descriptor, const std::wstring& language);

extern const char kUsage[];

} // namespace bomcall
