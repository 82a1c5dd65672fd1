#include "cli/CommandLine.h"

#include "com/Text.h"

namespace bomcall {

const char kUsage[] =
    R"(bomcall calls a method of QorvaneMBomBill by name.

  bomcall --list [CLASS]                          the classes, their methods and parameters
  bomcall [OPTION…] CLASS.METHOD [NAME=VALUE…]    calls the method and shows the result

A VALUE is a plain value, or JSON where the parameter is an object: {…} becomes a Dictionary,
[…] a Vector (of Dictionaries), null Nothing. NAME=@FILE reads the JSON from a file, NAME=@- from
the standard input. Arguments that the method changes are shown after the call.

  --dsn DESCRIPTOR  the connection descriptor, for the parameter sDsn or sToParse; else the
                    environment variable BOMCALL_DSN
  --lang LANGUAGE   chs, cht or en
  --json            the result as JSON
  --trace           the outside calls, statements and votes of the call
  --no-host         without a unit of work around the call
  --help, --version

Exit status: 0 the call was made, 1 it raised an error, 2 the command line is wrong.
)";

namespace {

using Arguments = std::vector<std::wstring>;

const std::wstring& ValueOf(const Arguments& arguments, size_t& i) {
  if (i + 1 >= arguments.size()) throw UsageError(arguments[i] + L" needs a value");
  return arguments[++i];
}

void ParseOption(CommandLine& line, const Arguments& arguments, size_t& i) {
  const std::wstring& option = arguments[i];
  if (option == L"--dsn") {
    line.descriptor = ValueOf(arguments, i);
  } else if (option == L"--lang") {
    line.language = ValueOf(arguments, i);
    if (line.language != L"chs" && line.language != L"cht" && line.language != L"en")
      throw UsageError(L"--lang is chs, cht or en, not " + line.language);
  } else if (option == L"--json") {
    line.json = true;
  } else if (option == L"--trace") {
    line.trace = true;
  } else if (option == L"--no-host") {
    line.host = false;
  } else if (option == L"--list") {
    line.action = Action::List;
  } else if (option == L"--help") {
    line.action = Action::Help;
  } else if (option == L"--version") {
    line.action = Action::Version;
  } else {
    throw UsageError(L"there is no option " + option);
  }
}

void ParseTarget(CommandLine& line, const std::wstring& target) {
  const size_t dot = target.find(L'.');
  line.className = target.substr(0, dot);
  if (line.action == Action::List && dot == std::wstring::npos) return;
  if (dot == std::wstring::npos || dot == 0 || dot + 1 == target.size())
    throw UsageError(L"\"" + target + L"\" is not CLASS.METHOD");
  line.methodName = target.substr(dot + 1);
}

} // namespace

CommandLine ParseCommandLine(const Arguments& arguments) {
  CommandLine line;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::wstring& argument = arguments[i];
    if (argument.starts_with(L"--")) {
      ParseOption(line, arguments, i);
    } else if (line.className.empty()) {
      ParseTarget(line, argument);
    } else {
      const size_t equals = argument.find(L'=');
      if (equals == std::wstring::npos || equals == 0)
        throw UsageError(L"\"" + argument + L"\" is not NAME=VALUE");
      line.values.push_back({argument.substr(0, equals), argument.substr(equals + 1)});
    }
  }
  if (line.action == Action::Call && line.className.empty()) throw UsageError("there is nothing to call");
  return line;
}

std::wstring WithLanguage(const std::wstring& descriptor, const std::wstring& language) {
  return language.empty() ? descriptor : L"Language=" + language + L";" + descriptor;
}

} // namespace bomcall
